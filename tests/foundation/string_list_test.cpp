#include "htcore/foundation/exception.h"
#include "htcore/foundation/string_list.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <string>

using namespace ht;

namespace {

struct TCounted : TObject {
  static inline int alive = 0;
  TCounted() { ++alive; }
  ~TCounted() override { --alive; }
};

std::string Joined(const TStringList& l) {
  std::string s;
  for (const TStringItem& it : l)
    s += it.FString.toUtf8() + "|";
  return s;
}

std::string ErrorOf(auto&& f) {
  try {
    f();
  } catch (const EListError& e) {
    return e.what();
  }
  return "";
}

} // namespace

TEST(StringList, UnsortedKeepsOrder) {
  TStringList l;
  EXPECT_EQ(l.Add(u"b"), 0);
  EXPECT_EQ(l.Add(u"a"), 1);
  EXPECT_EQ(l.Add(u"b"), 2); // duplicates are only checked when sorted
  l.Insert(0, u"z");
  EXPECT_EQ(Joined(l), "z|b|a|b|");
  EXPECT_EQ(l.IndexOf(u"b"), 1);
  EXPECT_EQ(l.IndexOf(u"q"), -1);
  l.Delete(1);
  l.Exchange(0, 2);
  EXPECT_EQ(Joined(l), "b|a|z|");
  l.Move(2, 0);
  EXPECT_EQ(Joined(l), "z|b|a|");
  l.SetString(1, u"B");
  EXPECT_EQ(l.Strings(1), u"B");
}

TEST(StringList, SortedPlacesAndFinds) {
  TStringList l;
  l.SetSorted(true);
  for (const char16_t* s : {u"pear", u"Apple", u"apple", u"fig", u"\u00E9clair", u"fig"})
    l.Add(s);
  EXPECT_EQ(Joined(l), "Apple|apple|fig|pear|\xC3\xA9"
                       "clair|"); // ordinal: capitals first
  int i;
  EXPECT_TRUE(l.Find(u"fig", i));
  EXPECT_EQ(i, 2);
  EXPECT_FALSE(l.Find(u"grape", i));
  EXPECT_EQ(i, 3);
  EXPECT_EQ(l.IndexOf(u"pear"), 3);
  EXPECT_EQ(l.Add(u"fig"), 2); // dupIgnore answers the present item

  l.SetDuplicates(dupAccept);
  l.Add(u"fig");
  EXPECT_EQ(l.Count(), 6);
  l.SetDuplicates(dupError);
  EXPECT_EQ(ErrorOf([&] { l.Add(u"fig"); }), "String list does not allow duplicates");
  EXPECT_EQ(ErrorOf([&] { l.Insert(0, u"a"); }), "Operation not allowed on sorted list");
  EXPECT_EQ(ErrorOf([&] { l.SetString(0, u"a"); }), "Operation not allowed on sorted list");
  EXPECT_EQ(ErrorOf([&] { l.Delete(6); }), "List index out of bounds (6)");
  EXPECT_EQ(ErrorOf([&] { l.Objects(-1); }), "List index out of bounds (-1)");

  TStringList u;
  u.Add(u"c");
  u.Add(u"a");
  u.Add(u"b");
  u.SetSorted(true); // sorting happens when switched on
  EXPECT_EQ(Joined(u), "a|b|c|");
}

TEST(StringList, TextLinesAndValues) {
  TStringList l;
  l.SetText(u"one\r\ntwo\nthree\rfour");
  EXPECT_EQ(Joined(l), "one|two|three|four|");
  EXPECT_EQ(l.Text(), u"one\r\ntwo\r\nthree\r\nfour\r\n");
  l.SetText(u"a\r\n\r\nb\r\n");
  EXPECT_EQ(Joined(l), "a||b|");
  l.SetText(u"");
  EXPECT_EQ(l.Count(), 0);
  EXPECT_TRUE(l.Text().empty());

  l.Add(u"width=10");
  l.Add(u"height=20");
  l.Add(u"flag");
  EXPECT_EQ(l.Names(0), u"width");
  EXPECT_EQ(l.ValueFromIndex(1), u"20");
  EXPECT_TRUE(l.Names(2).empty());
  EXPECT_EQ(l.Values(u"height"), u"20");
  EXPECT_TRUE(l.Values(u"depth").empty());
  l.SetValue(u"width", u"11");
  l.SetValue(u"depth", u"5");
  l.SetValue(u"height", hstring());
  EXPECT_EQ(Joined(l), "width=11|flag|depth=5|");
}

TEST(FastStringList, FindPCharAgreesWithFind) {
  TFastStringList l;
  l.SetSorted(true);
  std::mt19937 rng(3);
  for (int n = 0; n < 300; ++n) {
    std::u16string s(1 + rng() % 4, u'a');
    for (auto& c : s)
      c = static_cast<char16_t>(u'a' + rng() % 3);
    if (rng() % 10 == 0)
      s += static_cast<char16_t>(0xE000); // above every ASCII unit
    l.Add(hstring(s));
  }
  for (int n = 0; n < 300; ++n) {
    std::u16string key(1 + rng() % 5, u'a');
    for (auto& c : key)
      c = static_cast<char16_t>(u'a' + rng() % 4);
    int i1, i2;
    bool f1 = l.Find(key, i1);
    bool f2 = l.FindPChar(key.data(), static_cast<int>(key.size()), i2);
    ASSERT_EQ(f1, f2);
    ASSERT_EQ(i1, i2);
  }
  int i;
  std::u16string_view text = u"abcdef";
  EXPECT_EQ(l.FindPChar(text.data(), 1, i), l.IndexOf(u"a") >= 0); // a key inside a longer text
}

TEST(FastStringList, FindPCharWithDuplicatesFindsFirst) {
  TFastStringList l;
  l.SetSorted(true);
  l.SetDuplicates(dupAccept);
  for (const char16_t* s : {u"b", u"a", u"b", u"c", u"b"})
    l.Add(s);
  int i;
  EXPECT_TRUE(l.FindPChar(u"b", 1, i));
  EXPECT_EQ(i, 1);
  EXPECT_FALSE(l.FindPChar(u"bb", 2, i));
  EXPECT_EQ(i, 4);
  EXPECT_FALSE(l.FindPChar(u"", 0, i));
  EXPECT_EQ(i, 0);
}

TEST(FastStringList, OwnsObjects) {
  {
    TFastStringList l(true);
    l.AddObject(u"a", new TCounted);
    l.AddObject(u"b", new TCounted);
    l.AddObject(u"c", nullptr);
    EXPECT_EQ(TCounted::alive, 2);
  }
  EXPECT_EQ(TCounted::alive, 0);
  TCounted keep;
  {
    TFastStringList l; // not owning: objects survive
    l.AddObject(u"a", &keep);
  }
  EXPECT_EQ(TCounted::alive, 1);
  TFastStringList l;
  l.AddObject(u"x", new TCounted);
  l.FreeListObjects();
  EXPECT_EQ(l.Count(), 0);
  EXPECT_EQ(TCounted::alive, 1);
}
