// Box numbers and size flags of small documents after a cascade.
#include "htcore/style/css_cascade.h"
#include "htcore/style/css_sheet.h"
#include "htcore/style/styled_node.h"

#include <gtest/gtest.h>
#include <string>

using namespace ht;

namespace {

std::string u8(const hstring& s) { return s.toUtf8(); }

// The cascade as a host runs it: default sheet, the document's rules, the
// element's own sheet; then the numbers that need no container.
void cascade(TStyledHTMLNode& Doc, const char16_t* CSS) {
  TCSSStyleSheet sheet;
  sheet.Parse(hstring(CSS));
  TCSSStyleSheet* defaults = HTML4StyleSheet();
  TCSSWeightList list;
  for (THtNode* n = Doc.FirstChild(); n; n = n->NextNode()) {
    auto* e = static_cast<TStyledHTMLNode*>(n);
    TBaseElementStyle* s = e->EnsureStyle();
    if (!s)
      continue;
    s->Reset();
    list.Clear();
    defaults->GetElementSelectors(e, list, &defaults->Main, 0);
    sheet.GetElementSelectors(e, list, &sheet.Main, 0);
    if (TCSSStyleSheet* own = e->PrepareSelfStyle())
      own->GetAllSelectors(list);
    s->ApplyValue(list, false);
    if (TStyledHTMLNode* p = e->ParentElement(); p && p->Style())
      s->Inherit(p->Style());
    e->FindContainer();
    e->CalcNonRelativeProps();
    e->Flags |= EFBit(efStyleCalculated);
  }
}

// What a layout loop does before it measures: size flags top down, and the
// boxes of blocks as wide as their containers, so that percentages resolve.
void lay_out(TStyledHTMLNode& Doc, float Width) {
  for (THtNode* n = Doc.FirstChild(); n; n = n->NextNode()) {
    auto* e = static_cast<TStyledHTMLNode*>(n);
    if (!e->Style())
      continue;
    e->CalcSizeFlags(true);
    float w = e->Container ? e->Container->InnerWidth : Width;
    e->OuterRect = TRectF{0, 0, w, 100};
    e->CalcWidth();
    e->CalcRects();
  }
}

TStyledHTMLNode* by_id(TStyledHTMLNode& Doc, const char* Id) {
  const hstring id = hstring::FromUtf8(Id);
  for (THtNode* n = Doc.FirstChild(); n; n = n->NextNode())
    if (n->GetAttribute(u"id"_hs) == id)
      return static_cast<TStyledHTMLNode*>(n);
  ADD_FAILURE() << "no element " << Id;
  static TStyledHTMLNode none;
  return &none;
}

std::string sides(const TStyledHTMLNode* n) {
  auto f = [](float v) { return std::to_string(static_cast<int>(v * 10) / 10.0).substr(0, 4); };
  return "m " + f(n->MarginTop) + " " + f(n->MarginRight) + " " + f(n->MarginBottom) + " " + f(n->MarginLeft) +
         " | b " + f(n->BorderTop) + " " + f(n->BorderRight) + " " + f(n->BorderBottom) + " " + f(n->BorderLeft) +
         " | p " + f(n->PaddingTop) + " " + f(n->FPaddingRight) + " " + f(n->PaddingBottom) + " " +
         f(n->FPaddingLeft);
}

} // namespace

TEST(StyledNodeNumbers, SidesFromTheStyle) {
  struct {
    const char16_t* style;
    float top, right, bottom, left; // margins
    float border_left, padding_left;
  } cases[] = {
      {u"margin: 4px 3px", 4, 3, 4, 3, 0, 0},
      {u"margin: 1px 2px 3px 4px; padding: 5px; border: 2px solid", 1, 2, 3, 4, 2, 5},
      {u"border-width: 5px", 0, 0, 0, 0, 0, 0}, // no style, no border
      {u"border-left-style: dotted; border-left-width: 3px; padding-left: 1px", 0, 0, 0, 0, 3, 1},
      {u"font-size: 20px; margin-left: 2em", 0, 0, 0, 40, 0, 0}, // em waits for the relative pass
      {u"padding: 10%", 0, 0, 0, 0, 0, 20},                      // of the 200 px container
  };
  for (const auto& c : cases) {
    TStyledHTMLNode doc;
    doc.Parse(u"<html><body><div style='width:200px'><div id=t style=\""_hs + c.style + u"\">x</div></div></body></html>");
    cascade(doc, u"");
    lay_out(doc, 1000);
    TStyledHTMLNode* t = by_id(doc, "t");
    t->CalcRelativeProps();
    EXPECT_EQ(t->MarginTop, c.top) << u8(hstring(c.style)) << " " << sides(t);
    EXPECT_EQ(t->MarginRight, c.right) << u8(hstring(c.style));
    EXPECT_EQ(t->MarginBottom, c.bottom) << u8(hstring(c.style));
    EXPECT_EQ(t->MarginLeft, c.left) << u8(hstring(c.style));
    EXPECT_EQ(t->BorderLeft, c.border_left) << u8(hstring(c.style));
    EXPECT_EQ(t->FPaddingLeft, c.padding_left) << u8(hstring(c.style));
  }
}

TEST(StyledNodeNumbers, VerticalTradesSidesAndRowsHaveNoMargins) {
  TStyledHTMLNode doc;
  doc.Parse(u"<div id=v style='margin: 1px 2px 3px 4px; border: solid; border-width: 5px 6px 7px 8px'>x</div>"
            u"<table><tr id=r style='margin: 9px'><td>x</td></tr></table>");
  cascade(doc, u"");
  TStyledHTMLNode* v = by_id(doc, "v");
  v->Flags |= EFBit(efVertical);
  v->CalcNonRelativeProps();
  EXPECT_EQ(sides(v), "m 4.00 3.00 2.00 1.00 | b 8.00 7.00 6.00 5.00 | p 0.00 0.00 0.00 0.00");
  EXPECT_EQ(by_id(doc, "r")->MarginLeft, 0);
  EXPECT_TRUE(v->HasFlag(efHasBorder));
  EXPECT_FALSE(v->HasFlag(efHasBackground));
}

TEST(StyledNodeNumbers, WidthsAndInnerSizes) {
  TStyledHTMLNode doc;
  doc.Parse(u"<div id=a style='width:100px; padding:10px; border:1px solid; margin:5px'>x</div>"
            u"<div id=b style='width:100px; padding:10px; border:1px solid; box-sizing:border-box'>x</div>"
            u"<div id=c style='width:50px; min-width:80px'>x</div>");
  cascade(doc, u"");
  lay_out(doc, 1000);
  TStyledHTMLNode* a = by_id(doc, "a");
  EXPECT_EQ(RW(a->OuterRect), 100 + 20 + 2 + 10);
  EXPECT_EQ(a->InnerWidth, 100);
  TStyledHTMLNode* b = by_id(doc, "b");
  EXPECT_EQ(RW(b->OuterRect), 100);
  EXPECT_EQ(b->InnerWidth, 78);
  EXPECT_EQ(by_id(doc, "c")->InnerWidth, 80);
}

TEST(StyledNodeNumbers, SizeFlags) {
  const TCSSSizeFlags fixed_w = SFBit(sfFixedWidth) | SFBit(sfDefiniteWidth);
  struct {
    const char16_t* container; // style of the container div
    const char16_t* style;     // style of the element
    TCSSSizeFlags all, none;   // flags that must be set and must be clear
  } cases[] = {
      {u"", u"width: 100px", fixed_w, 0},
      {u"", u"width: 50%", SFBit(sfDefiniteWidth), SFBit(sfFixedWidth)}, // a block container in the viewport
      {u"display:inline-block", u"width: 50%", 0, fixed_w},             // shrinks to its content
      {u"display:inline-block; width: 300px", u"width: 50%", SFBit(sfDefiniteWidth), SFBit(sfFixedWidth)},
      {u"", u"min-width: 100px; max-width: 100px", fixed_w | SFBit(sfFixedMinWidth) | SFBit(sfFixedMaxWidth), 0},
      {u"display:inline-block", u"min-width: 10%", 0, SFBit(sfDefiniteMinWidth)},
      {u"", u"", SFBit(sfDefiniteWidth), SFBit(sfFixedWidth)}, // an auto block fills its container
      {u"", u"display: inline-block", 0, SFBit(sfDefiniteWidth)},
      {u"", u"position: absolute; left: 0; right: 10px", SFBit(sfDefiniteWidth), 0},
      {u"", u"height: 50px", SFBit(sfFixedHeight) | SFBit(sfDefiniteHeight), 0},
      {u"", u"height: 50%", 0, SFBit(sfDefiniteHeight)}, // the container's height is its content's
      {u"height: 200px", u"height: 50%", SFBit(sfDefiniteHeight), SFBit(sfFixedHeight)},
      {u"", u"margin: 0 5px; padding: 1px", SFBit(sfFixedOuterDelta) | SFBit(sfFixedOuterVDelta), 0},
      {u"", u"margin-left: 5%", SFBit(sfDefiniteOuterDelta), SFBit(sfFixedOuterDelta)},
      {u"display:inline-block", u"padding-right: 5%", 0, SFBit(sfDefiniteOuterDelta) | SFBit(sfFixedOuterDelta)},
      {u"", u"margin: 0 auto", SFBit(sfDefiniteOuterDelta), SFBit(sfFixedOuterDelta)},
      {u"", u"margin: auto 0", SFBit(sfFixedOuterDelta) | SFBit(sfFixedOuterVDelta), 0},
      {u"", u"display: table-row", 0, ~0u},
      {u"", u"display: none; width: 10px", 0, ~0u},
      {u"", u"display: inline; margin-left: 3px; width: 10px", SFBit(sfFixedOuterDelta), fixed_w},
  };
  for (const auto& c : cases) {
    TStyledHTMLNode doc;
    doc.Parse(u"<html><body><div style='"_hs + c.container + u"'><div id=t style='" + c.style +
              u"'>x</div></div></body></html>");
    cascade(doc, u"");
    lay_out(doc, 1000);
    TCSSSizeFlags f = by_id(doc, "t")->SizeFlags;
    EXPECT_EQ(f & c.all, c.all) << u8(hstring(c.container)) << " / " << u8(hstring(c.style)) << " " << f;
    EXPECT_EQ(f & c.none, 0u) << u8(hstring(c.container)) << " / " << u8(hstring(c.style)) << " " << f;
  }
}

TEST(StyledNodeNumbers, RelativeWidthFollowsTheContainers) {
  TStyledHTMLNode doc;
  doc.Parse(u"<html><body><div id=f style='width:300px'><p id=a style='width:50%'>x</p><p id=b>y</p></div>"
            u"<div id=g><p id=c style='width:50%'>z</p><span id=d>w</span></div></body></html>");
  cascade(doc, u"");
  EXPECT_FALSE(by_id(doc, "a")->RelativeWidth());
  EXPECT_FALSE(by_id(doc, "b")->RelativeWidth());
  EXPECT_TRUE(by_id(doc, "c")->RelativeWidth()); // up to the viewport
  EXPECT_TRUE(by_id(doc, "g")->RelativeWidth());
  EXPECT_FALSE(by_id(doc, "d")->RelativeWidth());
}

TEST(StyledNodeNumbers, PresentationalAttributesReachTheStyle) {
  TStyledHTMLNode doc;
  doc.Parse(u"<html><body><div id=a align=center>x</div><table id=t align=center><tr><td>y</td></tr></table>"
            u"<p><c:red id=r>z</c:red></p><font id=f size=5>big</font></body></html>");
  cascade(doc, u"");
  EXPECT_EQ(by_id(doc, "a")->Style()->TextAlign(), thXCenter);
  EXPECT_EQ(by_id(doc, "t")->Style()->TextAlign(), thLeft);
  EXPECT_EQ(by_id(doc, "r")->Style()->TextColor(), 0xFFFF0000u);
  EXPECT_EQ(by_id(doc, "f")->Style()->IntFontSize, 24);
}
