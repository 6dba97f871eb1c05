#include "foundation/dictionary_test_util.h"
#include "htcore/foundation/exception.h"
#include "htcore/foundation/virtual_dictionary.h"

#include <cctype>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace ht;
using dict_test::RobinHoodOrdered;

namespace {

struct TName {
  int Id;
  THtTextSlice Key;
};
constexpr std::ptrdiff_t kNameKey = offsetof(TName, Key) + THtTextSlice::TextOffset;

struct TWord {
  int Id;
  THtShortUTF8<> Key;
};
constexpr std::ptrdiff_t kWordKey = offsetof(TWord, Key) + THtShortUTF8<>::TextOffset;

TWord MakeWord(int id, std::string_view s) {
  TWord w{id, {}};
  w.Key.Assign(s);
  return w;
}

} // namespace

TEST(VirtualStringDictionary, KeysAreSlicesOfASourceText) {
  const std::u16string src = u"alpha beta gamma beta alpha delta";
  THtVirtualStringDictionary d(0, kNameKey);
  std::vector<TName> names;
  names.reserve(16);
  // Intern every word: find by slice, add with the probe's outcome.
  size_t pos = 0;
  int next_id = 0;
  std::vector<int> ids;
  while (pos < src.size()) {
    size_t end = src.find(u' ', pos);
    if (end == std::u16string::npos)
      end = src.size();
    const char16_t* p = src.data() + pos;
    const int len = static_cast<int>(end - pos);
    const uint32_t h = d.HashOf(p, len);
    const int i = d.FindHashedVirtual(h, p, len);
    if (i >= 0) {
      ids.push_back(static_cast<TName*>(d.Items()[i].Value)->Id);
    } else {
      names.push_back(TName{next_id, {0, len, p}});
      const int slot = d.AddHashedVirtual(h, i, &names.back(), p, len);
      EXPECT_EQ(d.Items()[slot].Value, &names.back());
      ids.push_back(next_id++);
    }
    pos = end + 1;
  }
  EXPECT_EQ(ids, (std::vector<int>{0, 1, 2, 1, 0, 3}));
  EXPECT_EQ(d.Count(), 4);
  EXPECT_EQ(d.KeyOf(&names[2]), u"gamma");
  // Another text finds the same entries.
  const char16_t probe[] = u"[delta]";
  EXPECT_EQ(static_cast<TName*>(d.Get(probe + 1, 5))->Id, 3);
  EXPECT_EQ(d.Get(probe + 1, 4), nullptr);
  EXPECT_EQ(d.Extract(u"beta", 4), &names[1]);
  EXPECT_EQ(d.Get(u"beta", 4), nullptr);
  EXPECT_EQ(d.Count(), 3);
}

TEST(VirtualStringDictionary, GrowthBetweenProbeAndAddProbesAgain) {
  std::vector<std::u16string> texts;
  for (int i = 0; i < 4; ++i)
    texts.push_back(u"w" + std::u16string(1, static_cast<char16_t>(u'a' + i)));
  std::vector<TName> names;
  for (int i = 0; i < 4; ++i)
    names.push_back(TName{i, {0, 2, texts[i].data()}});
  THtVirtualStringDictionary d(0, kNameKey);
  for (int i = 0; i < 3; ++i)
    d.AddPointer(&names[i]);
  ASSERT_EQ(d.Count(), d.GrowAt());
  const uint32_t h = d.HashOf(texts[3].data(), 2);
  const int stale = d.FindHashedVirtual(h, texts[3].data(), 2); // an index into the 4-slot table
  d.AddHashedVirtual(h, stale, &names[3], texts[3].data(), 2);
  EXPECT_EQ(d.Capacity(), 8);
  EXPECT_TRUE(RobinHoodOrdered(d));
  for (int i = 0; i < 4; ++i)
    EXPECT_EQ(d.Get(texts[i].data(), 2), &names[i]) << i;
}

TEST(VirtualDictionary, CallbacksDefineTheKeys) {
  // Case-insensitive ASCII names.
  auto hash = [](const void* v) {
    uint32_t h = 0;
    for (char c : *static_cast<const std::string*>(v))
      h = h * 31 + static_cast<uint32_t>(std::tolower(static_cast<unsigned char>(c)));
    return h;
  };
  auto equal = [](const void* a, const void* b) {
    const auto& x = *static_cast<const std::string*>(a);
    const auto& y = *static_cast<const std::string*>(b);
    if (x.size() != y.size())
      return false;
    for (size_t i = 0; i < x.size(); ++i)
      if (std::tolower(static_cast<unsigned char>(x[i])) != std::tolower(static_cast<unsigned char>(y[i])))
        return false;
    return true;
  };
  THtVirtualDictionary d(hash, equal);
  std::string a = "Color", b = "Width", c = "COLOR", probe = "width";
  const int s = d.Add(&a);
  EXPECT_GE(s, 0);
  d.Add(&b);
  EXPECT_EQ(d.Find(&probe), &b);
  EXPECT_EQ(d.Add(&c), ~s); // equal to a: overwritten, complement answered
  EXPECT_EQ(d.Find(&a), &c);
  EXPECT_EQ(d.FindHashed(d.HashOf(&probe), &probe) >= 0, true);
  EXPECT_EQ(d.Extract(&probe), &b);
  EXPECT_EQ(d.Find(&probe), nullptr);
  EXPECT_EQ(d.Count(), 1);
}

TEST(UTF8Dictionary, KeysUpTo255Bytes) {
  THtUTF8Dictionary d(0, kWordKey);
  const std::string longest(255, 'x');
  const std::string too_long(256, 'x');
  TWord w255 = MakeWord(1, longest), wdiv = MakeWord(2, "div"), wempty = MakeWord(3, "");
  d.Add(&w255);
  d.Add(&wdiv);
  d.Add(&wempty);
  EXPECT_EQ(d.Get(longest), &w255);
  EXPECT_EQ(d.Get(too_long), nullptr); // cannot be stored, so never found
  void* v = &wdiv;
  EXPECT_FALSE(d.Find(too_long.data(), 256, v));
  EXPECT_EQ(v, nullptr);
  EXPECT_EQ(d.Extract(too_long.data(), 256), nullptr);
  EXPECT_TRUE(d.Find(UTF8String("div"), v));
  EXPECT_EQ(v, &wdiv);
  EXPECT_EQ(d.Get(""), &wempty);
  EXPECT_EQ(d.HashOf("div", 3), ShaPerfectHash(u"div", 3)); // ASCII hashes alike in both forms
  EXPECT_THROW(d.AddHashed(0, too_long.data(), &w255, 256), EAssertionFailed);
  EXPECT_EQ(d.Count(), 3);
}

TEST(UTF8Dictionary, AddUniqueLetsEqualKeysCoexist) {
  THtUTF8Dictionary d(0, kWordKey);
  std::vector<TWord> words;
  for (int i = 0; i < 6; ++i)
    words.push_back(MakeWord(i, i % 2 ? "odd" : "even"));
  for (auto& w : words)
    d.AddUnique(&w);
  EXPECT_EQ(d.Count(), 6);
  EXPECT_TRUE(RobinHoodOrdered(d));
  EXPECT_EQ(static_cast<TWord*>(d.Get("even"))->Id, 0); // the first one added
  EXPECT_EQ(static_cast<TWord*>(d.Get("odd"))->Id, 1);
  // A plain Add replaces the first of them.
  TWord again = MakeWord(9, "odd");
  d.Put(&again);
  EXPECT_EQ(d.Count(), 6);
  EXPECT_EQ(d.Get("odd"), &again);
  // Removing one equal key uncovers the next.
  EXPECT_EQ(d.Extract("even", 4), &words[0]);
  EXPECT_EQ(static_cast<TWord*>(d.Get("even"))->Id, 2);
}

TEST(UTF8Dictionary, AddWithIndexKeepsOrRedoesTheProbe) {
  THtUTF8Dictionary d(0, kWordKey);
  std::vector<TWord> words;
  for (int i = 0; i < 10; ++i)
    words.push_back(MakeWord(i, "k" + std::to_string(i)));
  for (auto& w : words) {
    const std::string_view k = w.Key.View();
    const int len = static_cast<int>(k.size());
    const uint32_t h = d.HashOf(k.data(), len);
    const int i = d.FindHashed(h, k.data(), len);
    ASSERT_LT(i, 0);
    d.AddWithIndex(h, i, &w, k.data(), len);
  }
  EXPECT_TRUE(RobinHoodOrdered(d));
  for (auto& w : words)
    EXPECT_EQ(d.Get(w.Key.View()), &w);
  // A found index replaces in place.
  TWord other = MakeWord(99, "k3");
  const uint32_t h = d.HashOf("k3", 2);
  const int i = d.FindHashed(h, "k3", 2);
  EXPECT_EQ(d.AddWithIndex(h, i, &other, "k3", 2), i);
  EXPECT_EQ(d.Get("k3"), &other);
  std::vector<void*> seen;
  d.Traverse(&seen, [](void* data, void* v) { static_cast<std::vector<void*>*>(data)->push_back(v); });
  EXPECT_EQ(seen.size(), 10u);
}
