#include "htcore/document/attributes.h"
#include "htcore/foundation/exception.h"
#include "htcore/foundation/fast_string.h"

#include <gtest/gtest.h>
#include <string>

using namespace ht;

namespace {

std::string names(const THtAttributes& a) {
  std::string r;
  for (const THtAttribute& at : a) {
    if (!r.empty())
      r += ' ';
    r += at.Name.toUtf8() + "=" + at.Value.toUtf8();
  }
  return r;
}

}  // namespace

TEST(HtAttributes, KeptSortedByNameNotSourceOrder) {
  THtAttributes a;
  a.Add(u"b"_hs, u"2"_hs);
  a.Add(u"a"_hs, u"1"_hs);
  a.Add(u"c"_hs, u"3"_hs);
  a.Add(u"ab"_hs, u"4"_hs);
  EXPECT_EQ(names(a), "a=1 ab=4 b=2 c=3");
  EXPECT_EQ(a.Count, 4);
}

TEST(HtAttributes, CaseInsensitiveLowersStoredNames) {
  THtAttributes a;
  hstring lower = u"href"_hs;
  a.SetAttribute(u"HRef"_hs, u"x"_hs);
  a.SetAttribute(lower, u"y"_hs);  // same attribute
  EXPECT_EQ(a.Count, 1);
  EXPECT_EQ(a.GetName(0), u"href");
  EXPECT_EQ(a.GetAttribute(u"HREF"_hs), u"y");
  // A name already in lower case is stored shared, not copied.
  a.Clear();
  a.Add(lower, u"z"_hs);
  EXPECT_EQ(a.GetName(0).Pointer(), lower.Pointer());
}

TEST(HtAttributes, CaseSensitiveKeepsNamesApart) {
  THtAttributes a(true);
  a.SetAttribute(u"Id"_hs, u"1"_hs);
  a.SetAttribute(u"id"_hs, u"2"_hs);
  a.SetAttribute(u"ID"_hs, u"3"_hs);
  EXPECT_EQ(names(a), "ID=3 Id=1 id=2");  // ordinal order: capitals first
  EXPECT_EQ(a.Indexof(u"iD"_hs), -1);
}

TEST(HtAttributes, FindGivesInsertionPlace) {
  THtAttributes a;
  int i = -5;
  EXPECT_FALSE(a.Find(u"x"_hs, i));
  EXPECT_EQ(i, 0);
  for (const char16_t* n : {u"b", u"d", u"f"})
    a.Add(n, u"v"_hs);
  struct {
    const char16_t* name;
    bool found;
    int index;
  } cases[] = {{u"a", false, 0}, {u"b", true, 0}, {u"c", false, 1}, {u"D", true, 1},
               {u"e", false, 2}, {u"f", true, 2}, {u"g", false, 3}, {u"", false, 0}};
  for (auto& c : cases) {
    EXPECT_EQ(a.Find(c.name, i), c.found) << ToUtf8(c.name);
    EXPECT_EQ(i, c.index) << ToUtf8(c.name);
  }
}

TEST(HtAttributes, AddDoesNotTestForDuplicates) {
  THtAttributes a;
  a.Add(u"x"_hs, u"1"_hs);
  a.Add(u"X"_hs, u"2"_hs);
  EXPECT_EQ(a.Count, 2);
  EXPECT_EQ(a.GetName(1), u"x");
}

TEST(HtAttributes, SetAttributeExTellsChange) {
  THtAttributes a;
  EXPECT_TRUE(a.SetAttributeEx(u"a"_hs, u"1"_hs));
  EXPECT_FALSE(a.SetAttributeEx(u"A"_hs, u"1"_hs));
  EXPECT_TRUE(a.SetAttributeEx(u"a"_hs, u"2"_hs));
  EXPECT_TRUE(a.SetAttributeEx(u"b"_hs, hstring()));  // an empty value is a value
  EXPECT_TRUE(a.HasAttribute(u"b"_hs));
  EXPECT_EQ(a.GetAttribute(u"missing"_hs), hstring());
}

TEST(HtAttributes, ClearKeepsSpareEntriesAndReusesThem) {
  THtAttributes a;
  a.Add(u"a"_hs, u"1"_hs);
  a.Add(u"b"_hs, u"2"_hs);
  a.Clear();
  EXPECT_EQ(a.Count, 0);
  EXPECT_EQ(a.List.size(), 2u);
  EXPECT_EQ(a.GetAttribute(u"a"_hs), hstring());
  EXPECT_EQ(a.begin(), a.end());
  a.Add(u"z"_hs, u"3"_hs);
  a.Add(u"y"_hs, u"4"_hs);
  a.Add(u"x"_hs, u"5"_hs);
  EXPECT_EQ(names(a), "x=5 y=4 z=3");
  EXPECT_EQ(a.List.size(), 3u);
}

TEST(HtAttributes, DeleteAndClearAttr) {
  THtAttributes a;
  for (const char16_t* n : {u"a", u"b", u"c", u"d"})
    a.Add(n, n);
  EXPECT_TRUE(a.ClearAttr(u"B"_hs));
  EXPECT_FALSE(a.ClearAttr(u"b"_hs));
  a.Delete(0);
  EXPECT_EQ(names(a), "c=c d=d");
  a.Delete(1);
  EXPECT_EQ(names(a), "c=c");
  EXPECT_THROW(a.Delete(1), EAssertionFailed);
  EXPECT_THROW(a.GetItem(-1), EAssertionFailed);
}

TEST(HtAttributes, IndexedAccessAndAssign) {
  THtAttributes a;
  a.Add(u"k"_hs, u"v"_hs);
  a.SetValue(0, u"w"_hs);
  EXPECT_EQ(a.GetValue(0), u"w");
  EXPECT_EQ(a.GetItem(0).Name, u"k");
  THtAttributes b(true);
  b.Add(u"Q"_hs, u"1"_hs);
  b.Assign(a);
  EXPECT_FALSE(b.CaseSensitive);
  EXPECT_EQ(names(b), "k=w");
}

TEST(HtAttributes, ManyNamesStaySorted) {
  THtAttributes a;
  for (int i = 999; i >= 0; --i)
    a.SetAttribute(hstring(std::to_string(i * 7919 % 1000)), hstring(std::to_string(i)));
  ASSERT_EQ(a.Count, 1000);
  for (int i = 1; i < a.Count; ++i)
    EXPECT_LT(a.GetName(i - 1).view(), a.GetName(i).view());
  EXPECT_EQ(a.GetAttribute(u"0"_hs), u"0");
}

TEST(HtAttributes, TextForms) {
  THtAttributes a;
  a.Add(u"title"_hs, u"a<b> & \"c\"\u00A0\t"_hs);
  a.Add(u"checked"_hs, u"checked"_hs);
  a.Add(u"b"_hs, u"x"_hs);
  EXPECT_EQ(a.AsString().toUtf8(),
            "b=\"x\" checked=\"checked\" title=\"a&lt;b&gt; &amp; &quot;c&quot;&nbsp;&#9;\"");
  TFastString fs(4096);
  a.FastAsString(fs);
  EXPECT_EQ(fs.GetAsString().toUtf8(), " b=\"x\" checked title=\"a&lt;b&gt; &amp; &quot;c&quot;&nbsp;&#9;\"");
  TFastRawString raw(4096);
  a.FastAsUTF8String(raw);
  RawByteString bytes;
  raw.ToString(bytes);
  EXPECT_EQ(bytes.toUtf8(), " b=\"x\" checked=\"checked\" title=\"a&lt;b&gt; &amp; &quot;c&quot;&nbsp;&#9;\"");
  // XML sets keep name="name" and write a no-break space by number.
  THtAttributes x(true);
  x.Add(u"Sel"_hs, u"Sel"_hs);
  x.Add(u"v"_hs, u"1\u00A02"_hs);
  TFastString xs(4096);
  x.FastAsString(xs);
  EXPECT_EQ(xs.GetAsString().toUtf8(), " Sel=\"Sel\" v=\"1&#160;2\"");
  EXPECT_EQ(THtAttributes().AsString(), hstring());
}
