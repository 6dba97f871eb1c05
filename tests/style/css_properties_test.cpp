#include "htcore/foundation/startup.h"
#include "htcore/foundation/text_utils.h"
#include "htcore/style/css_properties.h"

#include <gtest/gtest.h>
#include <set>
#include <string>

using namespace ht;

namespace {

const TCSSPropRec* Row(const char16_t* name) { return CSSPropDictionary().Find(name); }

std::string Names(const std::vector<TCSSPropRec*>& rows) {
  std::string r;
  for (const TCSSPropRec* p : rows)
    r += (r.empty() ? "" : " ") + p->Name.toUtf8();
  return r;
}

TEST(CSSPropTable, EveryMemberButTheSvgOnesHasOneRowNamedAfterIt) {
  int rows = 0;
  std::set<std::u16string> names;
  for (int p = 0; p < kCSSPropertyCount; ++p) {
    const TCSSPropRec* r = CSSPropRow(static_cast<TCSSProperty>(p));
    if (!r)
      continue;
    ++rows;
    EXPECT_EQ(r->Prop, p);
    EXPECT_EQ(Row(r->Name.c_str()), r);
    EXPECT_TRUE(names.insert(std::u16string(r->Name.view())).second);
  }
  EXPECT_EQ(rows, 150);
  EXPECT_EQ(kCSSPropertyCount, 166);
  for (TCSSProperty svg : {cspClipPath, cspFill, cspStroke, cspStrokeWidth, cspTextAnchor, cspStopOpacity})
    EXPECT_EQ(CSSPropRow(svg), nullptr);
  EXPECT_EQ(Row(u"fill"), nullptr);
  EXPECT_EQ(CSSPropDictionary().FindOrUnknown(u"fill")->Prop, cspUnknown);
}

TEST(CSSPropTable, NamesThatAreNotTheMemberHyphenated) {
  struct {
    const char16_t* name;
    TCSSProperty prop;
  } cases[] = {
      {u"unknown", cspUnknown},
      {u"contenteditable", cspContentEditable},
      {u"z-index", cspZIndex},
      {u"tab-stops", cspTabStops},
      {u"border-top-left-radius", cspBorderTopLeftradius},
      {u"background-position-y", cspbackgroundPositionY},
      {u"box-reflect", cspBoxReflect},
      {u"font-feature-settings", cspFontFeatureSettings},
      {u"animation-timing-function", cspAnimationTimingFunction},
  };
  for (auto& c : cases) {
    ASSERT_NE(Row(c.name), nullptr) << std::u16string(c.name).size();
    EXPECT_EQ(Row(c.name)->Prop, c.prop);
  }
}

TEST(CSSPropTable, LookupByNameIsExactButTheFoldingFormIgnoresCase) {
  EXPECT_EQ(Row(u"DISPLAY"), nullptr);
  EXPECT_EQ(CSSPropByName(u"DISPLAY")->Prop, cspDisplay);
  EXPECT_EQ(CSSPropByName(u"Margin-Left")->Prop, cspMarginLeft);
  EXPECT_EQ(CSSPropByName(u""), nullptr);
  EXPECT_EQ(CSSPropByName(std::u16string(100000, u'a')), nullptr);
}

TEST(CSSPropTable, TypesDefaultsAndParentTypes) {
  struct {
    const char16_t* name;
    TCSSPropertyType type;
    TCSSPropertyParentType parent;
    float def;
  } cases[] = {
      {u"width", cptLength, cpptContainerWidth, 0},
      {u"height", cptLength, cpptContainerHeight, 0},
      {u"top", cptLength, cpptContainerHeight, 0},
      {u"left", cptLength, cpptContainerWidth, 0},
      {u"text-indent", cptLength, cpptWidth, 0},
      {u"line-height", cptLength, cpptFontSize, 0},
      {u"word-spacing", cptLength, cpptFontSize, 0},
      {u"font", cptComplex, cpptFontSize, 0},
      {u"background-position-y", cptLength, cpptHeight, 0},
      {u"background-position-x", cptLength, cpptWidth, 0},
      {u"opacity", cptNumber, cpptWidth, 1},
      {u"zoom", cptNumber, cpptWidth, 1},
      {u"z-index", cptNumber, cpptWidth, 0},
      {u"unknown", cptNumber, cpptWidth, 0},
      {u"color", cptColor, cpptWidth, 0},
      {u"outline-color", cptColor, cpptWidth, 0},
      {u"clear", cptString, cpptWidth, 0},
      {u"counter-reset", cptComplex, cpptWidth, 0},
      {u"contenteditable", cptEnum, cpptWidth, 0},
      {u"display", cptEnum, cpptWidth, 0},
  };
  for (auto& c : cases) {
    const TCSSPropRec* r = Row(c.name);
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(r->PropType, c.type) << r->Name.toUtf8();
    EXPECT_EQ(r->ParentType, c.parent) << r->Name.toUtf8();
    EXPECT_EQ(r->DefaultValue(), c.def) << r->Name.toUtf8();
  }
  EXPECT_EQ(Row(u"contenteditable")->EnumInfo, nullptr);
}

TEST(CSSPropTable, InheritedAndLayoutColumns) {
  int inherited = 0, layout = 0;
  CSSPropDictionary().ForEach([&](TCSSPropRec* r) {
    inherited += r->Inherited;
    layout += r->AffectsLayout;
  });
  EXPECT_EQ(inherited, 25);
  EXPECT_EQ(layout, 73);
  for (const char16_t* n : {u"color", u"font-size", u"contenteditable", u"white-space", u"list-style"})
    EXPECT_TRUE(Row(n)->Inherited) << Row(n)->Name.toUtf8();
  for (const char16_t* n : {u"letter-spacing", u"word-spacing", u"text-decoration", u"margin", u"opacity"})
    EXPECT_FALSE(Row(n)->Inherited) << Row(n)->Name.toUtf8();
  EXPECT_TRUE(Row(u"border-left")->AffectsLayout);
  for (const char16_t* n : {u"border-top", u"border-right", u"border-bottom", u"color", u"opacity"})
    EXPECT_FALSE(Row(n)->AffectsLayout) << Row(n)->Name.toUtf8();
}

TEST(CSSPropTable, LonghandsInOrder) {
  struct {
    const char16_t* name;
    const char* subs;
  } cases[] = {
      {u"font", "font-style font-weight font-size font-family"},
      {u"margin", "margin-top margin-right margin-bottom margin-left"},
      {u"border-radius",
       "border-top-left-radius border-top-right-radius border-bottom-right-radius border-bottom-left-radius"},
      {u"border", "border-color border-style border-width"},
      {u"flex", "flex-grow flex-shrink flex-basis"},
      {u"list-style", "list-style-type"},
      {u"text-decoration", "text-decoration-line text-decoration-color text-decoration-style"},
      {u"overflow", "overflow-x overflow-y"},
      {u"background-position", "background-position-x background-position-y"},
      {u"outline", "outline-style outline-color outline-width"},
      {u"background", ""},
      {u"border-top", ""},
  };
  for (auto& c : cases)
    EXPECT_EQ(Names(Row(c.name)->SubProps), c.subs);
}

TEST(CSSPropTable, KeywordsByPrefixWithoutHyphensIgnoringCase) {
  struct {
    const char16_t* prop;
    const char16_t* keyword;
    int expected; // -1: not a keyword
  } cases[] = {
      {u"display", u"inline-block", dsInlineBlock},
      {u"display", u"Inline-Block", dsInlineBlock},
      {u"display", u"INLINE-TABLE", dsInlineTable},
      {u"display", u"banana", -1},
      {u"display", u"", -1},
      {u"text-align", u"-moz-center", -1},
      {u"text-align", u"xcenter", thXCenter},
      {u"text-align", u"justify", thJustify},
      {u"cursor", u"not-allowed", -1},
      {u"cursor", u"w-resize", ecWResize},
      {u"cursor", u"crosshair", ecCrossHair},
      {u"font-weight", u"bold", fwBold},
      {u"font-weight", u"700", fw700},
      {u"font-weight", u"350", -1},
      {u"flex-wrap", u"wrap", fwWrap},
      {u"flex-wrap", u"bold", -1},
      {u"list-style-type", u"lower-roman", lstLowerRoman},
      {u"border-style", u"solid", lsSolid},
      {u"outline-style", u"dashed", lsDashed},
      {u"border-top-style", u"dis-c", -1},
      {u"white-space", u"pre-wrap", wsPreWrap},
      {u"white-space", u"no-wrap", wsNowrap}, // hyphens never matter
      {u"box-sizing", u"border-box", bsBorderbox},
      {u"writing-mode", u"horizontal-tb", wmHorizontalTB},
      {u"animation-timing-function", u"ease-in-out", tmEaseInOut},
      {u"unicode-bidi", u"bidi-override", ubBidiOverride},
      {u"break-after", u"avoid-column", cbaAvoidColumn},
      {u"text-decoration-line", u"line-through", tlLineThrough},
      {u"table-layout", u"fixed", tlFixed},
      {u"background-repeat", u"no-repeat", brNoRepeat},
      {u"overflow-y", u"scroll", eoScroll},
      {u"float", u"footnote", fFootNote},
      {u"contenteditable", u"true", -1},
      {u"width", u"auto", -1},
  };
  for (auto& c : cases) {
    int v = 42;
    bool ok = Row(c.prop)->IsKeyword(c.keyword, v);
    EXPECT_EQ(ok, c.expected >= 0) << Row(c.prop)->Name.toUtf8() << " " << hstring(c.keyword).toUtf8();
    EXPECT_EQ(v, c.expected) << Row(c.prop)->Name.toUtf8() << " " << hstring(c.keyword).toUtf8();
  }
}

TEST(CSSPropTable, KeywordLookupAgreesWithIsEnum2) {
  int checked = 0;
  CSSPropDictionary().ForEach([&](TCSSPropRec* r) {
    if (!r->EnumInfo)
      return;
    for (int i = 0; i < r->EnumInfo->Count(); ++i) {
      std::u16string bare(r->EnumInfo->NameOf(i).view().substr(r->EnumPrefix.size()));
      for (std::u16string text :
           {bare, u"-" + bare + u"-", bare + u"x", bare.substr(1), std::u16string(u"Z") + bare}) {
        for (char16_t& c : text)
          if (c >= u'a' && c <= u'z' && (checked & 1))
            c = static_cast<char16_t>(c - 32);
        int expected, got;
        bool e = IsEnum2(r->EnumPrefix.view(), text, r->EnumInfo, expected);
        EXPECT_EQ(r->IsKeyword(text, got), e) << r->Name.toUtf8() << " " << hstring(text).toUtf8();
        EXPECT_EQ(got, expected);
        ++checked;
      }
    }
  });
  EXPECT_GT(checked, 1000);
}

TEST(CSSPropTable, AppliedSetHoldsTheSvgMembersAndTheOwnRoutines) {
  const TCSSproperties& s = CSSAppliedProperties();
  EXPECT_EQ(s.Count(), 45);
  for (TCSSProperty p :
       {cspPosition, cspFill, cspTextAnchor, cspTransitionDuration, cspDisplay, cspWhiteSpace})
    EXPECT_TRUE(s.Contains(p));
  for (TCSSProperty p : {cspWidth, cspColor, cspFontSize, cspOpacity, cspFillOpacity})
    EXPECT_FALSE(s.Contains(p));
}

TEST(CSSPropTable, HostRowsForTheSvgMembers) {
  TCSSPropRec* fill = CSSPropDictionary().AddProperty(u"fill"_hs, cspFill, cptColor);
  EXPECT_EQ(CSSPropDictionary().Find(u"fill"), fill);
  EXPECT_EQ(CSSPropRow(cspFill), fill);
  TCSSPropRec* rule = CSSPropDictionary().AddProperty(u"fill-rule"_hs, cspFillRule, cptEnum);
  rule->SetEnumInfo(u"br"_hs, TypeInfo<TBackgroundRepeat>())->Add(u"fill"_hs);
  int v;
  EXPECT_TRUE(rule->IsKeyword(u"repeat-x", v));
  EXPECT_EQ(v, brRepeatX);
  EXPECT_EQ(rule->SubProps.size(), 1u);
  Finalize(); // the next use starts a table without the host's rows
  EXPECT_EQ(CSSPropRow(cspFill), nullptr);
  EXPECT_EQ(CSSPropDictionary().Find(u"fill"), nullptr);
}

TEST(CSSPropTable, PageSizes) {
  ASSERT_NE(FindPageSize(u"a4"), nullptr);
  EXPECT_EQ(FindPageSize(u"A4")->Width, 210);
  EXPECT_EQ(FindPageSize(u"A4")->Height, 297);
  EXPECT_EQ(FindPageSize(u"Executive")->Width, 184);
  EXPECT_EQ(FindPageSize(u"10x11")->Height, 279);
  EXPECT_EQ(FindPageSize(u"A6"), nullptr);
}

} // namespace
