#include "htcore/document/html_colours.h"
#include "htcore/style/css_sheet.h"
#include "htcore/style/element_style.h"
#include "htcore/style/styled_node.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>

using namespace ht;

namespace {

// A document styled by the default sheet and one author sheet; every element
// is given its values the way a driver would.
struct TDoc {
  TStyledHTMLNode root;
  TCSSStyleSheet sheet;

  TDoc(const char16_t* html, const char16_t* css) {
    root.Parse(hstring(html));
    sheet.Parse(hstring(css));
    Cascade();
  }

  void Cascade() {
    for (THtNode* n = &root; n; n = n->NextNode()) {
      auto* e = dynamic_cast<TStyledHTMLNode*>(n);
      if (!e || e->Tag().empty())
        continue;
      TBaseElementStyle* s = e->EnsureStyle();
      s->Reset(true);
      TCSSWeightList list;
      HTML4StyleSheet()->GetElementSelectors(e, list, &HTML4StyleSheet()->Main, 0);
      sheet.GetElementSelectors(e, list, &sheet.Main, 0);
      if (TCSSStyleSheet* own = e->PrepareSelfStyle())
        own->GetAllSelectors(list);
      s->ApplyValue(list, false);
      if (TBaseElementStyle* p = s->ParentStyle())
        s->Inherit(p);
    }
  }

  TBaseElementStyle* S(const char16_t* id) {
    for (THtNode* n = &root; n; n = n->NextNode())
      if (n->GetAttribute(u"id"_hs) == id)
        return static_cast<TStyledHTMLNode*>(n)->Style();
    ADD_FAILURE() << "no element with that id";
    return nullptr;
  }
};

float Px(TMeasure m) { return m.GetFPixels(); }

TEST(ElementStyle, InheritedPropertiesWalkUpOthersDoNot) {
  TDoc d(u"<div id=a><p id=b><span id=c>x</span></p></div>",
         u"#a { color: #123456; font-family: 'Open Sans', Arial; text-align: right; margin-left: 7px;"
         u" background-color: red; white-space: pre; font-style: italic; cursor: pointer }");
  for (const char16_t* id : {u"a", u"b", u"c"}) {
    SCOPED_TRACE(std::string(1, static_cast<char>(id[0])));
    EXPECT_EQ(d.S(id)->TextColor(), 0xFF123456u);
    EXPECT_EQ(d.S(id)->FontFamily(), u"Open Sans");
    EXPECT_EQ(d.S(id)->TextAlign(), thRight);
    EXPECT_EQ(d.S(id)->Cursor(), ecPointer);
    EXPECT_EQ(d.S(id)->WhiteSpace, wsPre);
    EXPECT_TRUE(d.S(id)->TextStyle() & HtFontStyleBit(hfsItalic));
  }
  EXPECT_EQ(d.S(u"a")->MarginLeftPx(), 7);
  EXPECT_EQ(d.S(u"a")->BackgroundColor(), 0xFFFF0000u);
  // Not inherited: p gets the default-sheet margins, span nothing, neither the background.
  EXPECT_EQ(d.S(u"c")->MarginLeftPx(), 0);
  EXPECT_EQ(d.S(u"b")->BackgroundColor(), HtTransparentColor);
  // An unknown colour name reads as no declaration; currentcolor is the text colour.
  TDoc u(u"<div id=a><p id=b>x</p></div>",
         u"#a { color: #123456 } #b { color: banana; background-color: currentColor; border: 1px solid }");
  EXPECT_EQ(u.S(u"b")->TextColor(), 0xFF123456u);
  EXPECT_EQ(u.S(u"b")->BackgroundColor(), 0xFF123456u);
  EXPECT_EQ(u.S(u"b")->BorderTopColor(), 0xFF123456u);
  // "inherit" reaches a property that does not inherit by itself.
  TDoc e(u"<div id=a><p id=b style='margin-left: inherit; background-color: inherit'>x</p></div>",
         u"#a { margin-left: 12px; background-color: #00ff00 }");
  EXPECT_EQ(e.S(u"b")->MarginLeftPx(), 12);
  EXPECT_EQ(e.S(u"b")->BackgroundColor(), 0xFF00FF00u);
}

TEST(ElementStyle, PresentationalAttributesReachTheGetters) {
  TDoc d(u"<div id=a align=center bgcolor=#0000ff><font id=b size=5 color=red face='Courier New'>x</font>"
         u"<c:lime id=c>y</c:lime><p id=d width=50 nowrap>z</p></div>",
         u"");
  EXPECT_EQ(d.S(u"a")->TextAlign(), thXCenter);
  EXPECT_EQ(d.S(u"a")->BackgroundColor(), 0xFF0000FFu);
  EXPECT_TRUE(d.S(u"a")->GeneralProps & CGBit(cgBackground));
  EXPECT_EQ(d.S(u"b")->ResolveFontSize(), 24);
  EXPECT_EQ(d.S(u"b")->TextColor(), 0xFFFF0000u);
  EXPECT_EQ(d.S(u"b")->FontFamily(), u"Courier New");
  EXPECT_EQ(d.S(u"c")->TextColor(), 0xFF00FF00u);
  EXPECT_EQ(Px(d.S(u"d")->Width()), 50);
  EXPECT_EQ(d.S(u"d")->WhiteSpace, wsNowrap);
}

TEST(ElementStyle, DefaultsWithoutDeclarations) {
  TDoc d(u"<div id=a><span id=b>x</span></div>", u"");
  TBaseElementStyle* s = d.S(u"b");
  EXPECT_EQ(s->TextColor(), 0xFF000000u); // the host's default
  EXPECT_EQ(s->Opacity(), 1);
  EXPECT_EQ(s->FontWeight(), 400);
  EXPECT_EQ(s->FDisplay, dsInline);
  EXPECT_EQ(d.S(u"a")->FDisplay, dsBlock);
  EXPECT_EQ(s->ListStyleType(), lstDisc);
  EXPECT_EQ(s->OverflowX(), eoVisible);
  EXPECT_EQ(s->TextAlign(), thLeft);
  EXPECT_EQ(s->FontFamily(), d.root.DefaultFontFamily());
  EXPECT_EQ(s->BorderLeftWidthPx(), 0);
  EXPECT_TRUE(s->Width().GetAuto());
  EXPECT_EQ(s->GeneralProps, 0);
  EXPECT_EQ(Px(s->FontSize()), kDefaultFontSize);
}

TEST(ElementStyle, FontSizeAgainstTheParent) {
  TDoc d(u"<div id=a><p id=b><span id=c>x</span><i id=d>y</i><b id=e>z</b><u id=f>w</u></p></div>",
         u"#a { font-size: 20px } #b { font-size: 150% } #c { font-size: 0.5em } #d { font-size: inherit }"
         u" #e { font: bold 2em/3 serif } #f { font-size: 2rem }");
  struct {
    const char16_t* id;
    float px;
  } cases[] = {{u"a", 20}, {u"b", 30}, {u"c", 15}, {u"d", 30}, {u"e", 60}, {u"f", 2 * kDefaultFontSize}};
  for (const auto& c : cases)
    EXPECT_EQ(d.S(c.id)->ResolveFontSize(), c.px) << static_cast<char>(c.id[0]);
  // em in other properties follows the element's own size.
  TDoc e(u"<div id=a style='font-size: 20px'><p id=b style='font-size: 150%; margin-left: 2em'>x</p></div>",
         u"");
  EXPECT_EQ(e.S(u"b")->MarginLeftPx(), 60);
  // rem follows the root element.
  TDoc f(u"<html style='font-size: 10px'><body><p id=p style='padding-top: 3rem; font-size: 2rem'>x</p>"
         u"</body></html>",
         u"");
  EXPECT_EQ(f.S(u"p")->ResolveFontSize(), 20);
  EXPECT_EQ(f.S(u"p")->PaddingTopPx(), 30);
  // A relative size at the root refers to the initial size, cascade after cascade.
  TDoc g(u"<html id=h style='font-size: 150%'><body><p id=p style='font-size: 1rem'>x</p></body></html>",
         u"");
  for (int i = 0; i < 2; ++i) {
    g.Cascade();
    EXPECT_EQ(g.S(u"h")->ResolveFontSize(), 1.5f * kDefaultFontSize);
    EXPECT_EQ(g.S(u"p")->ResolveFontSize(), 1.5f * kDefaultFontSize);
  }
}

TEST(ElementStyle, LineHeight) {
  TDoc d(u"<div id=a><p id=b><span id=c>x</span></p><p id=d>y</p><p id=e>z</p><p id=f>w</p></div>",
         u"#a { font-size: 10px; line-height: 2 } #b { font-size: 20px } #c { line-height: normal }"
         u" #d { line-height: 150%; font-size: 30px } #e { font: 12px/15px serif } #f { line-height: 1em }");
  EXPECT_EQ(Px(d.S(u"a")->LineHeight()), 20);
  EXPECT_EQ(Px(d.S(u"b")->LineHeight()), 40); // a factor follows the element's own size
  EXPECT_FLOAT_EQ(Px(d.S(u"c")->LineHeight()), 24);
  EXPECT_EQ(Px(d.S(u"d")->LineHeight()), 45);
  EXPECT_EQ(Px(d.S(u"e")->LineHeight()), 15);
  EXPECT_EQ(Px(d.S(u"f")->LineHeight()), 10);
  TDoc e(u"<p id=a>x</p>", u"");
  TMeasure m = e.S(u"a")->LineHeight();
  EXPECT_EQ(m.FMUnit, muNone);
  EXPECT_FLOAT_EQ(m.FValue, 1.2f);
}

TEST(ElementStyle, BoxSides) {
  TDoc d(u"<div id=a><p id=b>x</p><p id=c>y</p><p id=d>z</p></div>",
         u"#a { width: auto; margin: auto; padding: 1px 2px 3px 4px; border: 3px solid red }"
         u" #b { margin: 5% 0; width: 50%; padding-left: calc(10px + 5%) }"
         u" #c { border-width: 5px; border-left-style: dotted } #d { border-style: solid; border-top-style: "
         u"none }");
  TBaseElementStyle* a = d.S(u"a");
  // Margins keep auto; an auto width reads as absent.
  EXPECT_TRUE(a->MarginLeft().GetAuto());
  EXPECT_FALSE(a->PropertySet.Contains(cspWidth));
  EXPECT_TRUE(a->PropertySet.Contains(cspMarginLeft));
  EXPECT_EQ(a->PaddingTopPx(), 1);
  EXPECT_EQ(a->PaddingRightPx(), 2);
  EXPECT_EQ(a->PaddingBottomPx(), 3);
  EXPECT_EQ(a->PaddingLeftPx(), 4);
  EXPECT_EQ(a->BorderTopWidthPx(), 3);
  EXPECT_EQ(a->BorderLeftColor(), 0xFFFF0000u);
  EXPECT_EQ(a->GeneralProps, CGBit(cgBorder) | CGBit(cgPadding));
  EXPECT_EQ(a->RelativeProps, 0);
  TStyledHTMLNode* an = a->FElement;
  an->InnerWidth = 200;
  TBaseElementStyle* b = d.S(u"b");
  b->FElement->Container = an;
  EXPECT_EQ(b->MarginTopPx(), 10);
  EXPECT_EQ(b->MarginLeftPx(), 0);
  EXPECT_EQ(Px(b->Width()), 100);
  EXPECT_EQ(b->PaddingLeftPx(), 20);
  EXPECT_EQ(b->GeneralProps, CGBit(cgMargin) | CGBit(cgPadding));
  EXPECT_EQ(b->RelativeProps, CGBit(cgMargin));
  // A width without a style draws nothing; a style without a width has "medium".
  TBaseElementStyle* c = d.S(u"c");
  EXPECT_EQ(c->BorderTopWidthPx(), 0);
  EXPECT_EQ(c->BorderLeftWidthPx(), 5);
  EXPECT_EQ(c->BorderLeftColor(), c->TextColor());
  TBaseElementStyle* e = d.S(u"d");
  EXPECT_EQ(e->BorderTopWidthPx(), 0);
  EXPECT_EQ(e->BorderRightWidthPx(), 3);
}

TEST(ElementStyle, SidesFromShorthands) {
  // Three values leave the left longhand out; the side shorthands have none.
  TDoc d(u"<p id=a>x</p><p id=b>y</p><p id=c>z</p>",
         u"#a { margin-left: 9px; margin: 1px 2px 3px; padding: 4px 5px 6px }"
         u" #b { border-top: 4px solid red; border-bottom: 6px dotted; border-left: solid blue thin }"
         u" #c { border-width: 1px 2px 3px; border-style: solid dashed; border-color: red lime blue }");
  TBaseElementStyle* a = d.S(u"a");
  EXPECT_EQ(a->MarginTopPx(), 1);
  EXPECT_EQ(a->MarginRightPx(), 2);
  EXPECT_EQ(a->MarginBottomPx(), 3);
  EXPECT_EQ(a->MarginLeftPx(), 2);
  EXPECT_EQ(a->PaddingLeftPx(), 5);
  TBaseElementStyle* b = d.S(u"b");
  EXPECT_EQ(b->BorderTopWidthPx(), 4);
  EXPECT_EQ(b->BorderTopStyle(), lsSolid);
  EXPECT_EQ(b->BorderTopColor(), 0xFFFF0000u);
  EXPECT_EQ(b->BorderBottomWidthPx(), 6);
  EXPECT_EQ(b->BorderBottomStyle(), lsDotted);
  EXPECT_EQ(b->BorderBottomColor(), b->TextColor());
  EXPECT_EQ(b->BorderLeftWidthPx(), 1);
  EXPECT_EQ(b->BorderLeftColor(), 0xFF0000FFu);
  EXPECT_EQ(b->BorderRightWidthPx(), 0);
  EXPECT_TRUE(b->GeneralProps & CGBit(cgBorder));
  TBaseElementStyle* c = d.S(u"c");
  EXPECT_EQ(c->BorderLeftWidthPx(), 2);
  EXPECT_EQ(c->BorderLeftStyle(), lsDashed);
  EXPECT_EQ(c->BorderBottomStyle(), lsSolid);
  EXPECT_EQ(c->BorderLeftColor(), 0xFF00FF00u);
  EXPECT_EQ(c->BorderBottomColor(), 0xFF0000FFu);
}

TEST(ElementStyle, BackgroundSetsTheGeneralBit) {
  TDoc d(u"<div id=a><p id=b>x</p></div><div id=c><p id=d>y</p></div><p id=e>z</p><p id=f>w</p>",
         u"#a { background: red } #b { background: inherit } #c { background: transparent }"
         u" #d { background-color: inherit } #e { background: url(a.png) no-repeat 5px 6px }"
         u" #f { background-image: linear-gradient(to right, red, blue); background-color: #eee }");
  EXPECT_TRUE(d.S(u"a")->GeneralProps & CGBit(cgBackground));
  EXPECT_TRUE(d.S(u"b")->GeneralProps & CGBit(cgBackground));
  EXPECT_FALSE(d.S(u"c")->GeneralProps & CGBit(cgBackground));
  EXPECT_FALSE(d.S(u"d")->GeneralProps & CGBit(cgBackground));
  EXPECT_EQ(d.S(u"b")->BackgroundColor(), 0xFFFF0000u);
  TBaseElementStyle* e = d.S(u"e");
  EXPECT_TRUE(e->GeneralProps & CGBit(cgBackground));
  EXPECT_EQ(e->GetBackground()->Image, u"a.png");
  EXPECT_EQ(e->GetBackground()->Repeat, brNoRepeat);
  EXPECT_EQ(Px(e->GetBackground()->PositionY), 6);
  TBaseElementStyle* f = d.S(u"f");
  EXPECT_EQ(f->GetBackground()->Gradient.Direction, gsRight);
  EXPECT_EQ(f->GetBackground()->Gradient.Stops.size(), 2u);
  EXPECT_EQ(f->BackgroundColor(), 0xFFEEEEEEu);
}

TEST(ElementStyle, TextAlignRules) {
  TDoc d(u"<div id=a><table id=t><tr><td id=td>x</td></tr></table><p id=p>y</p></div>"
         u"<div id=r><p id=rs>x</p><p id=re>y</p></div><p id=le>z</p>",
         u"#a { text-align: xcenter } #r { direction: rtl } #rs { text-align: start } #re { text-align: end }"
         u" #le { text-align: end }");
  EXPECT_EQ(d.S(u"p")->TextAlign(), thXCenter);
  EXPECT_EQ(d.S(u"td")->TextAlign(), thLeft); // the centred block above the table is passed over
  EXPECT_EQ(d.S(u"rs")->TextAlign(), thRight);
  EXPECT_EQ(d.S(u"re")->TextAlign(), thLeft); // the host's default
  EXPECT_EQ(d.S(u"le")->TextAlign(), thRight);
}

TEST(ElementStyle, AppliedFields) {
  TDoc d(u"<p id=a>x</p><p id=b>y</p><p id=c>z</p>",
         u"#a { position: sticky; z-index: 2000000000; font-weight: bold; text-decoration: underline;"
         u" visibility: hidden; zoom: 50%; word-wrap: break-word; clear: both; direction: rtl }"
         u" #b { position: absolute; font-weight: 650; display: inline-block; white-space: nowrap }"
         u" #c { font-weight: 300; text-decoration-line: line-through; float: left; overflow: hidden;"
         u" overflow-y: scroll }");
  TBaseElementStyle* a = d.S(u"a");
  EXPECT_EQ(a->FPosition, epStatic);
  EXPECT_EQ(a->ZIndex, 100000000);
  EXPECT_EQ(a->CalculatedTextStyle, HtFontStyleBit(hfsBold) | HtFontStyleBit(hfsUnderline));
  EXPECT_EQ(a->Visibility, cvHidden);
  EXPECT_FLOAT_EQ(a->Zoom, 0.5f);
  EXPECT_EQ(a->CalculatedWordBreak, wbBreakWord);
  EXPECT_EQ(a->Clear, 3);
  EXPECT_EQ(a->CalculatedDirection, cdRTL);
  EXPECT_EQ(a->FontWeight(), 700);
  TBaseElementStyle* b = d.S(u"b");
  EXPECT_EQ(b->FPosition, epAbsolute);
  EXPECT_EQ(b->FontWeight(), 650);
  EXPECT_EQ(b->CalculatedTextStyle, HtFontStyleBit(hfsBold));
  EXPECT_EQ(b->FDisplay, dsInlineBlock);
  EXPECT_EQ(b->WhiteSpace, wsNowrap);
  TBaseElementStyle* c = d.S(u"c");
  EXPECT_EQ(c->CalculatedTextStyle, HtFontStyleBit(hfsLight) | HtFontStyleBit(hfsStrikeOut));
  EXPECT_EQ(c->Float(), fLeft);
  EXPECT_EQ(c->OverflowX(), eoHidden);
  EXPECT_EQ(c->OverflowY(), eoScroll);
}

TEST(ElementStyle, FontWeightAndOpacity) {
  TDoc d(u"<div id=a><p id=b><span id=c>x</span></p></div><p id=d>y</p><p id=e>z</p>",
         u"#a { font-weight: bold } #b { font-weight: bolder } #c { font-weight: lighter }"
         u" #d { opacity: .25 } #e { opacity: 50% }");
  EXPECT_EQ(d.S(u"a")->FontWeight(), 700);
  EXPECT_EQ(d.S(u"b")->FontWeight(), 900);
  EXPECT_EQ(d.S(u"c")->FontWeight(), 700);
  EXPECT_EQ(d.S(u"d")->Opacity(), 0.25f);
  EXPECT_EQ(d.S(u"e")->Opacity(), 0.5f);
}

TEST(ElementStyle, PageAndPageSize) {
  struct {
    const char16_t* css;
    int page;
  } cases[] = {{u"page: first", 1}, {u"page: last", -9991}, {u"page: odd", -9992}, {u"page: even", -9993},
               {u"page: 3", 3},     {u"page: 4 2", -4},     {u"page: banana", 0}};
  for (const auto& c : cases) {
    TDoc d(u"<p id=a>x</p>", (u"#a { " + std::u16string(c.css) + u"; size: A4 landscape }").c_str());
    EXPECT_EQ(d.S(u"a")->Page(), c.page) << std::string(c.css, c.css + 10);
    EXPECT_EQ(d.S(u"a")->PageSize(), u"A4 landscape");
  }
}

TEST(ElementStyle, ComplexValuesThroughTheStyle) {
  TDoc d(u"<p id=a>x</p>",
         u"#a { color: blue; transform: rotate(45deg) translate(10px); transform-origin: top left;"
         u" box-shadow: 1px 2px 3px; text-shadow: 1px 1px red; column-rule: 1px solid;"
         u" transition: opacity .3s ease-in 100ms, color 2s; filter: blur(2px) }");
  TBaseElementStyle* s = d.S(u"a");
  TTransform t;
  s->GetTransform(t, true);
  ASSERT_EQ(t.Items.size(), 2u);
  EXPECT_EQ(t.Rotate(), 45);
  EXPECT_EQ(t.OriginY.FValue, 0);
  EXPECT_TRUE(s->HasTransform());
  TElementShadow sh;
  EXPECT_TRUE(s->BoxShadow(sh));
  EXPECT_EQ(sh.Color, 0xFF0000FFu); // no colour: the text colour
  EXPECT_FALSE(s->NoShadow());
  EXPECT_TRUE(s->TextShadow(sh));
  EXPECT_EQ(sh.Color, 0xFFFF0000u);
  TCSSColumnRule r;
  EXPECT_TRUE(s->ColumnRule(r));
  EXPECT_EQ(r.Color, 0xFF0000FFu);
  ASSERT_EQ(s->Transitions.Count(), 2);
  const auto* tr = static_cast<const TCSSTransition*>(s->Transitions.Objects(0));
  EXPECT_EQ(tr->Name, u"opacity");
  EXPECT_EQ(tr->Duration, 300);
  EXPECT_EQ(tr->Delay, 100);
  EXPECT_EQ(tr->Timing, tmEaseIn);
  EXPECT_EQ(s->FindTransition(cspColor)->Duration, 2000);
  EXPECT_EQ(s->Filter(), u"blur(2px)");
  EXPECT_EQ(s->Opacity(), 1); // nothing runs without the animation engine
}

TEST(ElementStyle, ChangeDetection) {
  TDoc d(u"<p id=a>x</p>", u"#a { color: red; width: 10px; opacity: .5 }");
  TBaseElementStyle* s = d.S(u"a");
  s->SaveLastProps();
  bool layout = false, repaint = false;
  d.Cascade();
  EXPECT_FALSE(s->StyleChanged(layout, repaint));
  struct {
    const char16_t* css;
    bool layout, repaint;
  } cases[] = {
      {u"#a { color: blue; width: 10px; opacity: .5 }", false, true},
      {u"#a { color: red; width: 11px; opacity: .5 }", true, true},
      {u"#a { color: red; width: 10px; opacity: .6 }", false, true},
      {u"#a { color: red; width: 10px }", false, true},
      {u"#a { color: red; width: 10px; opacity: .5; display: inline }", true, true},
  };
  for (const auto& c : cases) {
    d.sheet.Clear();
    d.sheet.Parse(u"#a { color: red; width: 10px; opacity: .5 }"_hs);
    d.Cascade();
    s->SaveLastProps();
    d.sheet.Clear();
    d.sheet.Parse(hstring(c.css));
    d.Cascade();
    layout = repaint = false;
    s->StyleChanged(layout, repaint);
    EXPECT_EQ(layout, c.layout) << std::string(c.css, c.css + 30);
    EXPECT_EQ(repaint, c.repaint) << std::string(c.css, c.css + 30);
  }
  s->SetLastPropValue(u"color"_hs, u"#010203"_hs);
  uint32_t colour = 0;
  EXPECT_TRUE(s->GetLastColorProp(cspColor, colour));
  EXPECT_EQ(colour, 0xFF010203u);
}

TEST(ElementStyle, ApplyAppendAndDelete) {
  TDoc d(u"<p id=a>x</p>", u"#a { color: red; margin-left: 3px }");
  TBaseElementStyle* s = d.S(u"a");
  TCSSStyleSheet extra;
  extra.Parse(u"* { color: blue; padding-left: 4px }"_hs);
  TCSSWeightList list;
  extra.GetAllSelectors(list);
  s->ApplyValue(list, true);
  EXPECT_EQ(s->InternalFindProp(cspColor)->Tokens[0].Name, u"blue");
  EXPECT_EQ(s->PaddingLeftPx(), 4);
  EXPECT_EQ(s->MarginLeftPx(), 3);
  s->DeleteProps({cspPaddingLeft, cspColor});
  EXPECT_EQ(s->PaddingLeftPx(), 0);
  EXPECT_EQ(s->TextColor(), 0xFF000000u);
  EXPECT_TRUE(s->ApplyPseudoClass(pcHover, true));
  EXPECT_FALSE(s->ApplyPseudoClass(pcHover, true));
  EXPECT_TRUE(s->FElement->CurrentPC & PCBit(pcHover));
  s->Reset();
  EXPECT_TRUE(s->FProps.empty());
  EXPECT_EQ(s->FDisplay, dsInline);
}

TEST(ElementStyle, DeepTreeResolvesWithoutRecursion) {
  std::u16string html;
  constexpr int kDepth = 1000;
  for (int i = 0; i < kDepth; ++i)
    html += u"<div>";
  html += u"<span id=z>x</span>";
  TDoc d(html.c_str(), u"div { font-size: 100%; line-height: 1.5; color: inherit }");
  TBaseElementStyle* s = d.S(u"z");
  EXPECT_EQ(s->ResolveFontSize(), kDefaultFontSize);
  EXPECT_EQ(s->TextColor(), 0xFF000000u);
  EXPECT_EQ(Px(s->LineHeight()), 1.5f * kDefaultFontSize);
}

} // namespace
