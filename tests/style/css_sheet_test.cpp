#include "htcore/foundation/string_list.h"
#include "htcore/foundation/text_utils.h"
#include "htcore/style/css_sheet.h"

#include <gtest/gtest.h>
#include <string>

using namespace ht;

namespace {

std::string u8(const hstring& s) { return s.toUtf8(); }

// "name=text text;" for each compiled value of the first section.
std::string compiled(const TCSSStyleSheet& sheet, size_t section = 0) {
  std::string out;
  if (section >= sheet.fSections.size())
    return "<none>";
  for (const TCSSValue& v : sheet.fSections[section]->CompiledValues) {
    out += u8(v.Name) + "=";
    for (size_t i = 0; i < v.Tokens.size(); ++i)
      out += (i ? " " : "") + u8(v.Tokens[i].Name);
    out += ";";
  }
  return out;
}

std::string values(const TCSSStyleSheet& sheet, size_t section = 0) {
  if (section >= sheet.fSections.size())
    return "<none>";
  return u8(sheet.fSections[section]->AsInlineString());
}

} // namespace

TEST(CSSSheet, DeclarationsWinAndLose) {
  struct {
    const char16_t* css;
    const char* values;
  } cases[] = {
      {u"a { color: #xyz; color: red }", "color:red;"},
      {u"a { color: red; color: #xyz }", "color:red;"},
      {u"a { color: red; color: nonsense }", "color:nonsense;"},
      {u"a { float: sideways }", "<none>"},
      {u"a { float: left; float: sideways }", "float:left;"},
      {u"a { font-weight: 350 }", "font-weight:350;"},
      {u"a { display: banana; margin: 0 }", "margin:0;"},
      {u"a { text-align: -moz-center; cursor: not-allowed; text-align: xcenter }", "text-align:xcenter;"},
      {u"a { color: red !IMPORTANT }", "color:red!important;"},
      {u"a { color: red ! important; color: blue }", "color:blue;"},
      {u"a { *zoom: 1; color: red }", "color:red;"},
      {u"a { color red; margin: 1px }", "margin:1px;"},
      {u"a { b: { c } }", "<none>"},
      {u"a { color: rgb(1, 2, 3) }", "color:rgb( 1, 2, 3);"},
      {u"a { color: hsl(1, 2%, 3%) }", "<none>"},
      {u"a { width: 12px; /* x */ height: 1em }", "width:12px;height:1em;"},
  };
  for (auto& c : cases) {
    TCSSStyleSheet sheet;
    sheet.Parse(hstring(c.css));
    EXPECT_EQ(values(sheet), c.values) << u8(hstring(c.css));
  }
  TCSSStyleSheet imp;
  imp.Parse(u"a { color: red !IMPORTANT }"_hs);
  EXPECT_TRUE(imp.fSections[0]->Values[0].Important);
  TCSSStyleSheet nonsense;
  nonsense.Parse(u"a { color: nonsense }"_hs);
  EXPECT_EQ(nonsense.fSections[0]->Values[0].Slot(), 1u); // the marker colour
}

TEST(CSSSheet, SlotsAndVendorValues) {
  TCSSStyleSheet sheet;
  sheet.Parse(u"a { -webkit-foo: 1; display: Inline-Block; color: inherit; opacity: .5; "
              u"text-decoration: underline; background: red; font-weight: bold }"_hs);
  const TCSSSection& s = *sheet.fSections[0];
  ASSERT_TRUE(const_cast<TCSSSection&>(s).ValuebyName(u"-webkit-foo"_hs));
  EXPECT_FALSE(const_cast<TCSSSection&>(s).CompiledValuebyName(u"-webkit-foo"_hs));
  auto* d = const_cast<TCSSSection&>(s).CompiledValuebyName(u"display"_hs);
  ASSERT_TRUE(d);
  EXPECT_EQ(d->Slot(), static_cast<uint32_t>(dsInlineBlock));
  EXPECT_EQ(d->Apply, cakDisplay);
  auto* c = const_cast<TCSSSection&>(s).CompiledValuebyName(u"color"_hs);
  EXPECT_TRUE(c->IsInherit);
  EXPECT_EQ(c->Slot(), kCSSSlotInherit);
  EXPECT_FLOAT_EQ(const_cast<TCSSSection&>(s).CompiledValuebyName(u"opacity"_hs)->Tokens[0].AsFloat, 0.5f);
  auto* td = const_cast<TCSSSection&>(s).ValuebyName(u"text-decoration"_hs);
  EXPECT_EQ(td->Slot(), 4u);
  EXPECT_EQ(td->Apply, cakGeneral);
  EXPECT_EQ(const_cast<TCSSSection&>(s).CompiledValuebyName(u"background-color"_hs)->Slot(), 0xFFFF0000u);
  EXPECT_EQ(const_cast<TCSSSection&>(s).CompiledValuebyName(u"font-weight"_hs)->Apply, cakFontWeight);
  EXPECT_EQ(const_cast<TCSSSection&>(s).CompiledValuebyName(u"opacity"_hs)->Apply, cakNone);
}

TEST(CSSSheet, ShorthandExpansion) {
  struct {
    const char16_t* decl;
    const char* compiled;
  } cases[] = {
      {u"margin: 1px 2px 3px", "margin=1px 2px 3px;margin-top=1px;margin-right=2px;margin-bottom=3px;"},
      {u"padding: 1px", "padding=1px;padding-top=1px;padding-right=1px;padding-bottom=1px;padding-left=1px;"},
      {u"margin: 1px 2px",
       "margin=1px 2px;margin-top=1px;margin-right=2px;margin-bottom=1px;margin-left=2px;"},
      {u"margin: calc(1px + 2px) 0", "margin=calc ( 1px + 2px ) 0;margin-top=calc ( 1px + 2px "
                                     ");margin-right=0;margin-bottom=calc ( 1px + 2px );"
                                     "margin-left=0;"},
      {u"font: italic bold 12px/14px serif",
       "font=italic bold 12px / 14px "
       "serif;font-style=italic;font-weight=bold;font-size=12px;line-height=14px;"
       "font-family=serif;"},
      {u"font: 12px Arial",
       "font=12px Arial;font-size=12px;font-family=Arial;font-style=normal;font-weight=normal;"},
      {u"border: 1px solid red",
       "border=1px solid "
       "red;border-width=1px;border-top-width=1px;border-right-width=1px;border-bottom-width=1px;"
       "border-left-width=1px;border-top-style=solid;border-right-style=solid;border-bottom-style=solid;"
       "border-left-style=solid;border-color=red;border-top-color=red;border-right-color=red;"
       "border-bottom-color=red;border-left-color=red;"},
      {u"background: url(a.png) no-repeat left top #fff",
       "background=a.png no-repeat left top fff;background-image=a.png;background-repeat=no-repeat;"
       "background-position-x=left;background-position-y=top;background-color=fff;"},
      {u"background: none", "background=none;background-color=none;background-image=none;"},
      {u"background: linear-gradient(to bottom, red, rgb(0,0,0))",
       "background=linear-gradient ( to bottom , red , rgb ( 0 , 0 , 0 ) );"
       "background-image=linear-gradient ( to bottom , red , rgb ( 0 , 0 , 0 ) );"},
      {u"flex: 1 1 0", "flex=1 1 0;flex-grow=1;flex-shrink=1;"},
      {u"overflow: hidden", "overflow=hidden;overflow-x=hidden;overflow-y=hidden;"},
      {u"overflow: hidden scroll", "overflow=hidden scroll;overflow-x=hidden;overflow-y=scroll;"},
      {u"text-decoration: underline #f00 wavy",
       "text-decoration=underline f00 wavy;text-decoration-line=underline;text-decoration-color=f00;"
       "text-decoration-style=wavy;"},
      {u"list-style: square", "list-style=square;list-style-type=square;"},
      {u"margin: inherit",
       "margin=inherit;margin-top=inherit;margin-right=inherit;margin-bottom=inherit;margin-left=inherit;"},
  };
  for (auto& c : cases) {
    TCSSStyleSheet sheet;
    sheet.Parse(u"a{" + hstring(c.decl) + u"}");
    EXPECT_EQ(compiled(sheet), c.compiled) << u8(hstring(c.decl));
  }
}

TEST(CSSSheet, RulesAndAtRules) {
  TCSSStyleSheet s;
  s.Parse(u"@charset \"utf-8\"; @import url(x.css) screen; @supports (x) { a { b: c } } d { color: red } "
          u"p, div { margin: 0 } } q { color: blue }"_hs);
  ASSERT_EQ(s.fSections.size(), 3u);
  EXPECT_EQ(u8(s.fSections[0]->Selectors.GetSelector(0)->AsString()), "d");
  EXPECT_EQ(s.fSections[1]->Selectors.Count(), 2);
  EXPECT_EQ(u8(s.fSections[2]->Selectors.GetSelector(0)->AsString()), "q");
  ASSERT_EQ(s.Imports().size(), 2u);
  EXPECT_EQ(u8(s.Imports()[0]), "x.css");
  EXPECT_EQ(u8(s.Imports()[1]), "screen");

  TCSSStyleSheet stray;
  stray.Parse(u"a } p { color: red }"_hs);
  ASSERT_EQ(stray.fSections.size(), 1u);
  EXPECT_EQ(u8(stray.fSections[0]->Selectors.GetSelector(0)->AsString()), "p");

  TCSSStyleSheet vars;
  vars.Parse(u":root { --main: #fff; --pad: 1px 2px } a { color: var(--main) }"_hs);
  ASSERT_EQ(vars.Variables.count(u"main"_hs), 1u);
  EXPECT_EQ(vars.Variables[u"pad"_hs].Tokens.size(), 2u);
  EXPECT_TRUE(vars.fSections[1]->CompiledValuebyName(u"color"_hs));
}

TEST(CSSSheet, MediaQueries) {
  TCSSStyleSheet s;
  s.Parse(u"@media print { a { color: red } } @media foo { b { color: red } } "
          u"@media screen and (min-width: 100px) and (max-width: 200px) { c { color: red } } "
          u"@media (max-device-width:50px){ d { color: red } } e { color: blue }"_hs);
  ASSERT_EQ(s.fSections.size(), 5u);
  TCSSMediaSet* print = s.fSections[0]->MediaSet;
  EXPECT_TRUE(print->Has(cmPrint));
  EXPECT_TRUE(s.fSections[1]->MediaSet->Has(cmUnknown));
  TCSSMediaSet* sized = s.fSections[2]->MediaSet;
  EXPECT_TRUE(sized->Has(cmScreen));
  EXPECT_EQ(sized->MinWidth, 100);
  EXPECT_EQ(sized->MaxWidth, 200);
  EXPECT_TRUE(sized->HasSizeQuery);
  TCSSMediaSet* device = s.fSections[3]->MediaSet;
  EXPECT_EQ(device->MaxDeviceWidth, 50);
  EXPECT_TRUE(device->Has(cmAll));
  EXPECT_EQ(s.fSections[4]->MediaSet, CSSDefaultMediaSet());
  EXPECT_TRUE(s.HasMediaQueries);
  EXPECT_TRUE(s.HasMediaSizeQueries);

  struct {
    TCSSMedia media;
    int64_t width, device;
    bool print, sized, device_ok;
  } cases[] = {
      {cmScreen, 150, 0, false, true, false},
      {cmScreen, 250, 0, false, false, false},
      {cmScreen, 50, 0, false, false, true},
      {cmPrint, 150, 40, true, false, true},
  };
  for (auto& c : cases) {
    s.TestMediaSets(c.media, c.width, c.device);
    EXPECT_EQ(!print->Disabled, c.print) << c.width;
    EXPECT_EQ(!sized->Disabled, c.sized) << c.width;
    EXPECT_EQ(!device->Disabled, c.device_ok) << c.width;
  }
  EXPECT_FALSE(s.TestMediaSets(cmPrint, 150, 40)); // nothing changed
  EXPECT_EQ(u8(s.AsString()).substr(0, 26), "@media print{\r\na{\r\n  color");
}

TEST(CSSSheet, FontFaceAndKeyFrames) {
  TCSSStyleSheet s;
  s.Parse(u"@font-face { font-family: 'Open Sans'; src: local('Open Sans'), url(a.woff2) format('woff2'), "
          u"url(a.woff) format('woff'); font-weight: bold; font-style: italic }"
          u"@font-face { font-family: x; src: url(x.ttf) }"
          u"@keyframes spin { from { opacity: 0 } 50% { opacity: .5 } to { opacity: 1 } bad { opacity: 2 } }"
          u"p { color: red }"_hs);
  ASSERT_EQ(s.CustomFonts.size(), 1u);
  TCSSCustomFontFamily* f = s.CustomFonts[u"open sans"_hs].get();
  ASSERT_TRUE(f);
  ASSERT_EQ(f->Fonts.size(), 1u);
  TCSSCustomFont* font = f->Fonts[0].get();
  EXPECT_EQ(u8(font->URL), "a.woff");
  EXPECT_EQ(u8(font->Local), "Open Sans");
  EXPECT_EQ(font->NumWeight, 700);
  EXPECT_EQ(font->CSSFontWeight, fwBold);
  EXPECT_EQ(font->CSSFontStyle, cfsItalic);
  EXPECT_EQ(font->FontStyles, HtFontStyleBit(hfsBold) | HtFontStyleBit(hfsItalic));
  EXPECT_EQ(f->GetFont(HtFontStyleBit(hfsBlack)), font);
  EXPECT_THROW(f->GetFontByIndex(1), ERangeError);

  std::vector<int> steps;
  s.GetAnimationSteps(u"spin"_hs, steps);
  EXPECT_EQ(steps, (std::vector<int>{0, 50, 100}));
  TCSSKeyFrameList* l = s.KeyFrames.Get(u"spin"_hs);
  EXPECT_EQ(l->FindSection(-1), static_cast<TCSSSection*>(l->GetObject(0)));
  EXPECT_EQ(l->FindSection(0), l->FindSection(50)); // the search starts at the second step
  EXPECT_EQ(l->FindSection(30), l->FindSection(50));
  EXPECT_EQ(l->FindSection(70), l->FindSection(100));
  std::vector<std::pair<uint32_t, const TCSSValue*>> list;
  s.GetAnimationSelectors(u"spin"_hs, 50, list);
  ASSERT_EQ(list.size(), 1u);
  EXPECT_EQ(list[0].first, 0xFF000000u);
  // The rule behind the block is an ordinary one again.
  ASSERT_TRUE(s.Main.Tags->Get(u"p"_hs));

  hstring fam, weight;
  ParseFontFamilyName(u"Open Sans SemiBold"_hs, fam, weight);
  EXPECT_EQ(u8(fam), "Open Sans");
  EXPECT_EQ(u8(weight), "semibold");
  ParseFontFamilyName(u"Arial"_hs, fam, weight);
  EXPECT_EQ(u8(fam), "Arial");
  EXPECT_TRUE(weight.empty());
}

TEST(CSSSheet, Buckets) {
  TCSSStyleSheet s;
  s.Parse(u".a { x: 1 } .a { y: 2 } .a.b { z: 3 } #i { x: 1 } p { x: 1 } [type=A] { x: 1 } :hover { x: 1 } "
          u"p::before { x: 1 } a:after { x: 1 } li::marker { x: 1 } * { x: 1 }"_hs);
  ASSERT_TRUE(s.Main.Classes);
  EXPECT_EQ(s.Main.Classes->Get(u"a"_hs)->Count(), 3);
  EXPECT_EQ(s.Main.IDs->Get(u"i"_hs)->Count(), 1);
  EXPECT_EQ(s.Main.Tags->Get(u"p"_hs)->Count(), 1);
  EXPECT_EQ(s.Main.Conditions->Get(u"type=a"_hs)->Count(), 1);
  EXPECT_TRUE(s.Main.PseudoClasses->PseudoMask & PCBit(pcHover));
  EXPECT_EQ(s.Before->Tags->Get(u"p"_hs)->Count(), 1);
  EXPECT_EQ(s.After->Tags->Get(u"a"_hs)->Count(), 1);
  EXPECT_EQ(s.Marker->Tags->Get(u"li"_hs)->Count(), 1);
  EXPECT_EQ(s.Main.Tags->Get(u"*"_hs)->Count(), 1);
  // Orders follow the counter from 10000.
  EXPECT_EQ(s.Main.Classes->Get(u"a"_hs)->GetSelector(0)->Order, 10001);

  TStringList classes, ids;
  s.GetAllClasses(classes);
  s.GetAllIds(ids);
  EXPECT_EQ(classes.Count(), 2);
  EXPECT_EQ(ids.Count(), 1);

  // Universal rules of one weight merge into one section.
  TCSSStyleSheet inl;
  inl.ParseValues(u"color: red; margin: 0"_hs);
  inl.ParseValues(u"color: blue"_hs);
  EXPECT_EQ(inl.Main.Tags->Get(u"*"_hs)->Count(), 1);
  EXPECT_EQ(u8(inl.AsInlineString()), "color:blue;margin:0;");
}

TEST(CSSSheet, Writers) {
  struct {
    const char16_t* css;
    const char* out;
  } cases[] = {
      {u"a, b>c { color: #fff; font-family: 'Open Sans'; background: url(x.png) }",
       "a, b>c{\r\n  color: #fff;\r\n  font-family:'Open Sans';\r\n  background:url('x.png');\r\n}\r\n"},
      {u"p { margin: 1px 2px !important; width: calc(100% - 2px) }",
       "p{\r\n  margin:1px 2px!important;\r\n  width:calc( 100% - 2px);\r\n}\r\n"},
      {u"@media print { a { color: red } } b { color: red }",
       "@media print{\r\na{\r\n  color:red;\r\n}\r\n}\r\nb{\r\n  color:red;\r\n}\r\n"},
  };
  for (auto& c : cases) {
    TCSSStyleSheet s;
    s.Parse(hstring(c.css));
    EXPECT_EQ(u8(s.AsString()), c.out);
  }
  TCSSStyleSheet m;
  m.Parse(
      u"a { padding-top: 1px; padding-right: 1px; padding-bottom: 1px; padding-left: 1px; "
      u"border-top: 1px solid; border-right: 1px solid; border-bottom: 1px solid; border-left: 2px solid }"_hs);
  m.Minify();
  EXPECT_EQ(u8(m.AsInlineString()), "padding:1px;border-top:1px solid;border-right:1px "
                                    "solid;border-bottom:1px solid;border-left:2px solid;");
  EXPECT_TRUE(m.fSections[0]->CompiledValuebyName(u"padding-left"_hs));
  EXPECT_EQ(u8(m.Write(true)),
            "a{padding:1px;border-top:1px solid;border-right:1px solid;border-bottom:1px solid;"
            "border-left:2px solid;}");
}

TEST(CSSSheet, HostileSheetsStayLinear) {
  std::u16string nested(100000, u'{');
  std::u16string closed = std::u16string(100000, u'}');
  std::u16string group;
  for (int i = 0; i < 100000; ++i)
    group += u"a,";
  group += u"b{color:red}";
  std::u16string calc = u"a{width:";
  for (int i = 0; i < 100000; ++i)
    calc += u"calc(";
  std::u16string decls = u"a{", conds = u"a", medias;
  for (int i = 0; i < 50000; ++i) {
    std::u16string n = hstring(IntToStr(i)).view().data();
    decls += u"x" + n + u":1;";
    conds += u"[x" + n + u"]";
    medias += u"@media m" + n + u"{}";
  }
  decls += u"}";
  conds += u"{color:red}";
  for (const std::u16string& t :
       {nested, closed, group, calc, decls, conds, medias, std::u16string(u"a{b:'open"),
        std::u16string(u"a{b:url(open"), std::u16string(u"/* open"), std::u16string(u"@media (")}) {
    TCSSStyleSheet s;
    s.Parse(hstring(t.data(), t.size()));
    s.Minify();
    s.AsString();
  }
  TCSSStyleSheet s;
  s.Parse(hstring(group.data(), group.size()));
  EXPECT_EQ(s.fSections[0]->Selectors.Count(), 100001);
}

TEST(CSSSheet, LengthsAreDecodedOnce) {
  TCSSStyleSheet s;
  s.Parse(u"a { width: 12px; line-height: 1.5; font-size: medium; border-radius: 1px / 2px; "
          u"height: calc(100% - 10px); margin: auto }"_hs);
  TCSSSection& sec = *s.fSections[0];
  const TMeasure2& w = sec.CompiledValuebyName(u"width"_hs)->Measure;
  EXPECT_FLOAT_EQ(w.Value1.FValue, 12);
  EXPECT_EQ(w.Value1.FMUnit, muPX);
  EXPECT_EQ(w.Value2.Flags.Bits, TMeasureFlags{mfInitial}.Bits);
  EXPECT_EQ(sec.CompiledValuebyName(u"line-height"_hs)->Measure.Value1.FMUnit, muNone);
  const TMeasure& fs = sec.CompiledValuebyName(u"font-size"_hs)->Measure.Value1;
  EXPECT_FLOAT_EQ(fs.FValue, 18);
  EXPECT_EQ(fs.FMUnit, muPX);
  const TMeasure2& r = sec.CompiledValuebyName(u"border-radius"_hs)->Measure;
  EXPECT_FLOAT_EQ(r.Value2.FValue, 2);
  TMeasure h = sec.CompiledValuebyName(u"height"_hs)->Measure.Value1;
  ASSERT_TRUE(h.Calc);
  float base = 200;
  h.Parent = &base;
  EXPECT_FLOAT_EQ(h.GetFPixels(), 190);
  EXPECT_TRUE(sec.CompiledValuebyName(u"margin-left"_hs)->Measure.Value1.GetAuto());
}

TEST(CSSSheet, DefaultSheets) {
  TCSSStyleSheet* ua = HTML4StyleSheet();
  ASSERT_EQ(ua, HTML4StyleSheet());
  ASSERT_GT(ua->fSections.size(), 80u);
  int order = 0;
  for (const auto& sec : ua->fSections)
    for (const TCSSSelector* sel : sec->Selectors) {
      EXPECT_EQ(sel->Weight, 0u);
      EXPECT_GT(sel->Order, order); // source order
      order = sel->Order;
    }
  TCSSSelectors* li = ua->Main.Tags->Get(u"li"_hs);
  ASSERT_TRUE(li);
  EXPECT_TRUE(li->GetSelector(0)->Section->CompiledValuebyName(u"display"_hs));
  EXPECT_TRUE(ua->Main.Tags->Get(u"_body"_hs));
  EXPECT_TRUE(ua->Before->Tags->Get(u"summary"_hs));

  TCSSStyleSheet* q = HTML4QuirkStyleSheet();
  TCSSSelectors* table = q->Main.Tags->Get(u"table"_hs);
  ASSERT_TRUE(table);
  TCSSValue* pad = table->GetSelector(0)->Section->ValuebyName(u"padding"_hs);
  ASSERT_TRUE(pad);
  EXPECT_TRUE(pad->Important);
  EXPECT_GT(table->GetSelector(0)->Order, 100);
}

TEST(CSSSheet, StringsAndDarkColours) {
  struct {
    const char16_t* css;
    const char* inl;
  } strings[] = {
      {u"a { content: \"x\" }", "content:'x';"},
      {u"a { font-family: \"Open Sans\" }", "font-family:'Open Sans';"},
      {u"a { font-family: 'it\\'s', serif }", "font-family:'it\\'s', serif;"},
  };
  for (auto& c : strings) {
    TCSSStyleSheet s;
    s.Parse(hstring(c.css));
    EXPECT_EQ(u8(s.AsInlineString()), c.inl);
  }
  struct {
    const char16_t* css;
    const char* inl;
  } dark[] = {
      {u"a { color: #000 }", "color: #F2F2F2;"}, // L 0 -> 1.1, capped at 1 and then .95
      {u"a { color: white }", "color: #999999;"},
      {u"a { color: rgb(255, 0, 0) }", "color: #E05252;"},
      {u"a { background-color: #fff }", "background-color: #262626;"},
      {u"a { background-color: #ff0000 }", "background-color:transparent;"},
      {u"a { background-color: transparent; border-color: inherit }",
       "background-color:transparent;border-color:inherit;"},
      {u"a { background: #fafafa url(x.png) no-repeat }", "background: #262626 url('x.png') no-repeat;"},
  };
  for (auto& c : dark) {
    TCSSStyleSheet s;
    s.Parse(hstring(c.css));
    s.ConvertLighttoDark();
    EXPECT_EQ(u8(s.AsInlineString()), c.inl) << u8(hstring(c.css));
  }
  EXPECT_EQ(u8(TCSSStyleSheet::LighttoDark(u"p{color:#111}"_hs)), "p{\r\n  color: #F2F2F2;\r\n}\r\n");
}

TEST(CSSSheet, Extensions) {
  TCSSExtension::RegisterExtension({u"tooltip"_hs, u"tip"_hs}, u".tooltip { color: red }"_hs);
  TCSSExtension::RegisterExtension({u"menu"_hs}, u".menu { color: blue }"_hs);
  std::vector<TCSSStyleSheet*> sheets;
  TCSSExtension::AddExtensions({u"tip"_hs, u"tooltip"_hs, u"other"_hs}, sheets);
  ASSERT_EQ(sheets.size(), 1u); // one extension, however many of its keys are present
  EXPECT_TRUE(sheets[0]->Main.Classes->Get(u"tooltip"_hs));
  TCSSExtension::ClearExtensions();
  sheets.clear();
  TCSSExtension::AddExtensions({u"menu"_hs}, sheets);
  EXPECT_TRUE(sheets.empty());
}
