#include "htcore/style/styled_node.h"

#include <gtest/gtest.h>
#include <string>

using namespace ht;

namespace {

TStyledHTMLNode* find(TStyledHTMLNode& doc, const char16_t* tag) {
  return static_cast<TStyledHTMLNode*>(doc.FindNode(hstring(tag)));
}

// Gives every element of the tree a style with display Display.
void style_all(TStyledHTMLNode& doc, TDisplayStyle Display) {
  for (THtNode* n = doc.FirstChild(); n; n = n->NextNode())
    if (auto* s = static_cast<TStyledHTMLNode*>(n); s->EnsureStyle())
      s->FStyle->FDisplay = Display;
}

void set_box(TStyledHTMLNode* n, float Margin, float Border, float Padding) {
  n->MarginTop = n->MarginRight = n->MarginBottom = n->MarginLeft = Margin;
  n->BorderTop = n->BorderRight = n->BorderBottom = n->BorderLeft = Border;
  n->PaddingTop = n->PaddingBottom = Padding;
  n->FPaddingLeft = n->FPaddingRight = Padding;
  n->FStyle->GeneralProps = CGBit(cgMargin) | CGBit(cgBorder) | CGBit(cgPadding);
}

} // namespace

TEST(StyledNodeBox, RectsAndDeltas) {
  TStyledHTMLNode doc;
  doc.Parse(u"<div>x</div>");
  style_all(doc, dsBlock);
  TStyledHTMLNode* d = find(doc, u"div");
  set_box(d, 10, 1, 5);
  d->OuterRect = TRectF{0, 0, 200, 100};
  d->CalcRects();
  EXPECT_EQ(d->InnerWidth, 200 - 20 - 2 - 10);
  EXPECT_EQ(d->InnerHeight, 100 - 20 - 2 - 10);
  EXPECT_EQ(d->OuterDeltaX(), 22);
  EXPECT_EQ(d->InnerDeltaY(), 10);
  EXPECT_EQ(d->LeftDelta(), 16);
  EXPECT_EQ(d->BottomDelta(), 16);
  TRectF b = d->BorderRect(), p = d->PaddingRect(), i = d->InnerRect();
  EXPECT_EQ(b.Left, 10);
  EXPECT_EQ(b.Bottom, 90);
  EXPECT_EQ(p.Top, 11);
  EXPECT_EQ(p.Right, 189);
  EXPECT_EQ(i.Left, 16);
  EXPECT_EQ(i.Right, 16 + d->InnerWidth);
  // Only what the style has counts: without padding the padding fields do not.
  d->FStyle->GeneralProps = CGBit(cgMargin);
  d->CalcRects();
  EXPECT_EQ(d->InnerWidth, 180);
  EXPECT_EQ(d->OuterDeltaX(), 20);
  // A table cell's margins never narrow it.
  d->FStyle->FDisplay = dsTableCell;
  d->CalcRects();
  EXPECT_EQ(d->InnerWidth, 200);
  // Right to left: the paddings trade sides.
  d->FStyle->FDisplay = dsBlock;
  d->FPaddingRight = 7;
  d->FStyle->CalculatedDirection = cdRTL;
  EXPECT_EQ(d->LeftDelta(), 10 + 1 + 7);
  EXPECT_EQ(d->RightDelta(), 10 + 1 + 5);
  EXPECT_EQ(d->RTLInc(), -1);
  // Text has no box.
  auto* text = static_cast<TStyledHTMLNode*>(d->FirstChild());
  EXPECT_TRUE(text->IsText());
  EXPECT_EQ(text->OuterDeltaX(), 0);
  EXPECT_EQ(text->InnerDeltaX(), 0);
}

TEST(StyledNodeBox, OffsetRectsMovesTheSubtree) {
  TStyledHTMLNode doc;
  doc.Parse(u"<div><p>x</p></div>");
  style_all(doc, dsBlock);
  TStyledHTMLNode* d = find(doc, u"div");
  TStyledHTMLNode* p = find(doc, u"p");
  p->CreatePseudo(pcBefore)->OuterRect = TRectF{1, 1, 2, 2};
  p->OuterRect = TRectF{0, 0, 10, 10};
  d->OffsetRects(5, 7);
  EXPECT_EQ(p->OuterRect.Left, 5);
  EXPECT_EQ(p->OuterRect.Bottom, 17);
  EXPECT_EQ(p->Before->OuterRect.Top, 8);
}

TEST(StyledNodeBox, Classification) {
  struct {
    TDisplayStyle display;
    bool block, block_or_inline_block, block_container;
  } cases[] = {
      {dsInline, false, false, false},     {dsBlock, true, true, true},        {dsInlineBlock, false, true, true},
      {dsTable, true, true, false},        {dsTableRow, true, true, false},    {dsTableCell, false, false, true},
      {dsListItem, true, true, true},      {dsFlex, true, true, true},         {dsInlineFlex, false, false, true},
      {dsNone, false, false, false},
  };
  TStyledHTMLNode doc;
  doc.Parse(u"<div>x</div>");
  TStyledHTMLNode* d = find(doc, u"div");
  d->EnsureStyle();
  for (const auto& c : cases) {
    d->FStyle->FDisplay = c.display;
    EXPECT_EQ(d->IsBlock(), c.block) << c.display;
    EXPECT_EQ(d->IsBlockOrInlineBlock(), c.block_or_inline_block) << c.display;
    EXPECT_EQ(d->IsBlockContainer(), c.block_container) << c.display;
  }
  struct {
    TElementPosition position;
    bool out_of_flow, running, absolute_or_running, absolute_container;
  } positions[] = {
      {epStatic, false, false, false, false},  {epRelative, false, false, false, true},
      {epAbsolute, true, false, true, true},   {epFixed, true, true, true, true},
      {epRunning, true, true, true, true},     {epSticky, false, false, false, true},
  };
  for (const auto& c : positions) {
    d->FStyle->FPosition = c.position;
    EXPECT_EQ(d->OutofFlow(), c.out_of_flow) << c.position;
    EXPECT_EQ(d->InFlow(), !c.out_of_flow) << c.position;
    EXPECT_EQ(d->IsRunning(), c.running) << c.position;
    EXPECT_EQ(d->IsAbsoluteOrRunning(), c.absolute_or_running) << c.position;
    EXPECT_EQ(d->IsAbsoluteContainer(), c.absolute_container) << c.position;
  }
}

TEST(StyledNodeBox, ContainersSkipInlineAncestors) {
  TStyledHTMLNode doc;
  doc.Parse(u"<html><body><div><span><b>x</b></span></div></body></html>");
  style_all(doc, dsBlock);
  for (const char16_t* t : {u"span", u"b"})
    find(doc, t)->FStyle->FDisplay = dsInline;
  TStyledHTMLNode* b = find(doc, u"b");
  TStyledHTMLNode* div = find(doc, u"div");
  EXPECT_EQ(b->FindContainer(), div);
  EXPECT_EQ(b->Container, div);
  EXPECT_EQ(b->NearestBlockParent(), div);
  EXPECT_EQ(b->BlockContainer(), div);
  // No block above: the root.
  for (const char16_t* t : {u"html", u"body", u"div"})
    find(doc, t)->FStyle->FDisplay = dsInline;
  EXPECT_EQ(b->FindContainer(), b->RootNodeElement());
  // A positioned ancestor is the base of absolute boxes.
  find(doc, u"body")->FStyle->FPosition = epRelative;
  EXPECT_EQ(b->AbsoluteParent(), find(doc, u"body"));
}

TEST(StyledNodeBox, GrowtoContainerStopsAtAFixedWidth) {
  TStyledHTMLNode doc;
  doc.Parse(u"<div><section><p>x</p></section></div>");
  style_all(doc, dsBlock);
  TStyledHTMLNode* div = find(doc, u"div");
  TStyledHTMLNode* section = find(doc, u"section");
  TStyledHTMLNode* p = find(doc, u"p");
  p->FindContainer();
  section->FindContainer();
  div->FindContainer();
  div->SizeFlags = SFBit(sfFixedWidth);
  p->GrowtoContainer();
  EXPECT_TRUE(p->HasSizeFlag(sfGrowToContainer));
  EXPECT_TRUE(section->HasSizeFlag(sfGrowToContainer));
  EXPECT_FALSE(div->HasSizeFlag(sfGrowToContainer));
  // A later size pass keeps the mark unless asked for everything anew.
  section->CalcSizeFlags(false);
  EXPECT_TRUE(section->HasSizeFlag(sfGrowToContainer));
  section->CalcSizeFlags(true);
  EXPECT_FALSE(section->HasSizeFlag(sfGrowToContainer));
}

TEST(StyledNodeBox, MarginsMeetAcrossEmptyBlocks) {
  TStyledHTMLNode doc;
  doc.Parse(u"<div><p>a</p> <!-- c --> <hr><p>b</p><span>i</span><p>c</p></div>");
  style_all(doc, dsBlock);
  find(doc, u"span")->FStyle->FDisplay = dsInline;
  auto* div = find(doc, u"div");
  auto* p1 = static_cast<TStyledHTMLNode*>(div->NodebyNameIndex(u"p"_hs, 0));
  auto* p2 = static_cast<TStyledHTMLNode*>(div->NodebyNameIndex(u"p"_hs, 1));
  auto* p3 = static_cast<TStyledHTMLNode*>(div->NodebyNameIndex(u"p"_hs, 2));
  EXPECT_EQ(p2->PreviousMarginElement(), p1); // past the blank text, comment and empty hr
  EXPECT_TRUE(p2->MarginCollapsibleSibling());
  EXPECT_EQ(p3->PreviousMarginElement(), nullptr); // an inline box stands between
  EXPECT_EQ(p1->PreviousMarginElement(), nullptr);
  EXPECT_TRUE(p1->MarginCollapsible(0));
  p1->BorderTop = 1;
  EXPECT_FALSE(p1->MarginCollapsible(0));
  EXPECT_TRUE(p1->MarginCollapsible(2));
  EXPECT_EQ(div->FirstNonEmptyChild(), p1);
  EXPECT_EQ(div->LastNonEmptyChild(), p3);
}
