#include "htcore/style/css_style_set.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>

using namespace ht;

namespace {

TCSSStyleSet Set(const char16_t* text) {
  TCSSStyleSet s;
  s.SetAsString(text);
  return s;
}

TEST(CSSStyleSet, ReadsDeclarationTextIntoSortedLowerCaseNames) {
  struct {
    const char16_t* text;
    const char* expected; // GetAsString
  } cases[] = {
      {u"color:red", "color:red;"},
      {u"  Color : red ; MARGIN-left:4px;", "color:red;margin-left:4px;"},
      {u"b:1;a:2;c:3", "a:2;b:1;c:3;"},
      {u"a:1;a:2", "a:2;"}, // the last one wins
      {u"background:url(data:image/png;base64,AA==) no-repeat",
       "background:url(data:image/png;base64,AA==) no-repeat;"},
      {u"content:'a;b';x:y", "content:'a;b';x:y;"},
      {u"content:\"it\\\"s;\";x:y", "content:\"it\\\"s;\";x:y;"},
      {u"font-family:\"A B\", serif !important", "font-family:\"A B\", serif !important;"},
      {u"novalue; :nameless; empty: ; x:1", "x:1;"},
      {u";;;", ""},
      {u"", ""},
      {u"a:calc(1px + (2px", "a:calc(1px + (2px;"},
      {u"a:'open", "a:'open;"},
      {u"a:b:c", "a:b:c;"},
  };
  for (auto& c : cases)
    EXPECT_EQ(Set(c.text).GetAsString().toUtf8(), c.expected) << hstring(c.text).toUtf8();
}

TEST(CSSStyleSet, RoundTripsThroughItsOwnText) {
  TCSSStyleSet s = Set(u"z-index: 3; background: url(a;b.png); color: rgb(1, 2, 3); margin: 0 auto");
  EXPECT_EQ(Set(s.GetAsString().c_str()), s);
  EXPECT_EQ(s.AsStyleAttr().toUtf8(),
            "background: url(a;b.png); color: rgb(1, 2, 3); margin: 0 auto; z-index: 3");
  EXPECT_EQ(Set(s.AsStyleAttr().c_str()), s);
}

TEST(CSSStyleSet, EditsByName) {
  TCSSStyleSet s = Set(u"color:red; width:10px");
  int i = -1;
  EXPECT_TRUE(s.Find(u"width"_hs, i));
  EXPECT_EQ(i, 1);
  EXPECT_FALSE(s.Find(u"margin"_hs, i));
  EXPECT_EQ(i, 1); // where it would go
  EXPECT_FALSE(s.Find(u"zoom"_hs, i));
  EXPECT_EQ(i, 2);
  EXPECT_TRUE(s.HasProperty(u"COLOR"_hs));
  EXPECT_TRUE(s.CheckValue(u"color"_hs, u"red"_hs));
  EXPECT_FALSE(s.CheckValue(u"color"_hs, u"Red"_hs));
  s.SetValue(u"Margin"_hs, u"0"_hs);
  EXPECT_EQ(s.GetAsString().toUtf8(), "color:red;margin:0;width:10px;");
  s.SetValue(u"margin"_hs, {});
  EXPECT_FALSE(s.HasProperty(u"margin"_hs));
  s.AddValue(u"empty"_hs, {});
  EXPECT_TRUE(s.HasProperty(u"empty"_hs));
  s.Delete(u"empty"_hs);
  s.Delete(99);
  s.Delete(0);
  EXPECT_EQ(s.GetAsString().toUtf8(), "width:10px;");
  EXPECT_EQ(s.GetValue(u"nothing"_hs), hstring());
  s.Clear();
  EXPECT_EQ(s.Count(), 0);
}

TEST(CSSStyleSet, MergesWithAnotherSet) {
  TCSSStyleSet base = Set(u"a:1; b:2; c:3");
  TCSSStyleSet other = Set(u"b:20; c:3; d:4");

  TCSSStyleSet inherited = base;
  inherited.AddInherited(other);
  EXPECT_EQ(inherited.GetAsString().toUtf8(), "a:1;b:2;c:3;d:4;");

  TCSSStyleSet overridden;
  overridden.Assign(base);
  overridden.AddOverride(other);
  EXPECT_EQ(overridden.GetAsString().toUtf8(), "a:1;b:20;c:3;d:4;");

  // Removes the pairs the argument shares: the name says otherwise, and stays.
  TCSSStyleSet diff = base;
  diff.IntersectWith(other);
  EXPECT_EQ(diff.GetAsString().toUtf8(), "a:1;b:2;");
}

TEST(CSSStyleSet, ManyNamesReadInOneSortedMerge) {
  std::u16string text;
  for (int i = 30000; i-- > 0;)
    text += u"n" + std::u16string(hstring::FromUtf8(std::to_string(i)).view()) + u":v;";
  TCSSStyleSet s = Set(text.c_str());
  EXPECT_EQ(s.Count(), 30000);
  EXPECT_TRUE(
      std::is_sorted(s.Items.begin(), s.Items.end(), [](auto& a, auto& b) { return a.Name < b.Name; }));
  s.AddString(u"n5:w; n5:x; zz:1");
  EXPECT_EQ(s.GetValue(u"n5"_hs).toUtf8(), "x");
  EXPECT_EQ(s.Count(), 30001);
  TCSSStyleSet copy = s;
  s.AddInherited(s);
  s.AddOverride(s);
  EXPECT_EQ(s, copy);
}

TEST(CSSStyleSet, PixelsOfAValue) {
  TCSSStyleSet s = Set(u"a:12px; b:1in; c:50%; d:auto; e:calc(2px * 3); f:thin; g:red; h:1.5");
  struct {
    const char16_t* name;
    float expected;
  } cases[] = {{u"a", 12}, {u"b", 96}, {u"c", 0},    {u"d", 0},      {u"e", 6},
               {u"f", 1},  {u"g", 0},  {u"h", 1.5f}, {u"missing", 0}};
  for (auto& c : cases)
    EXPECT_FLOAT_EQ(s.GetPixels(c.name), c.expected) << hstring(c.name).toUtf8();
}

} // namespace
