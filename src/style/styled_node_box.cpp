// Box numbers of a styled node: margins, borders and paddings in pixels, the
// rectangles and deltas derived from them, the node's place in the flow and
// the size flags a layout loop reads.
#include "htcore/style/styled_node.h"

#include "htcore/foundation/text_utils.h"
#include "style/styled_node_walk.h"

#include <limits>
#include <utility>

namespace ht {

namespace {

bool has(TCSSGeneralProperties Set, TCSSGeneralProperty P) { return (Set & CGBit(P)) != 0; }

bool is_row_level(TDisplayStyle D) { return D == dsTableRow || D == dsTableRowGroup || D == dsTableCell; }

// Zero, never minus zero: hosts compare borders with 0.
float px(float V) { return V == 0 ? 0.0f : V; }

// Top, right, bottom, left into the fields; a vertical writing mode trades
// top with left and bottom with right.
void put_sides(const float (&V)[4], bool Vertical, float& Top, float& Right, float& Bottom, float& Left) {
  Top = V[0], Right = V[1], Bottom = V[2], Left = V[3];
  if (Vertical) {
    std::swap(Top, Left);
    std::swap(Bottom, Right);
  }
}

// A measure that the container's size decides: a percentage or a calc().
bool container_relative(const TMeasure& M) { return !M.GetAuto() && (M.FMUnit == muPercent || M.Calc); }

bool same_measure(const TMeasure& A, const TMeasure& B) {
  return !A.GetAuto() && !B.GetAuto() && !A.Calc && !B.Calc && A.FValue == B.FValue && A.FMUnit == B.FMUnit;
}

} // namespace

// --- From the style ---

void TStyledHTMLNode::CalcNonRelativeProps() {
  TBaseElementStyle* s = FStyle.get();
  if (!s)
    return;
  // The base of em for this element and of the font size of its children.
  float size = s->FontSize().GetFPixels();
  if (!(size > 0) && !ParentElement())
    size = 16; // a root that no sheet gives a size: the medium size
  if (size > 0)
    s->IntFontSize = size;
  const TCSSGeneralProperties gp = s->GeneralProps, rel = s->RelativeProps;
  const bool vertical = HasFlag(efVertical);
  // What a painter asks before it looks at the style.
  Flags &= ~(EFBit(efHasBackground) | EFBit(efHasBorder));
  if (has(gp, cgBackground))
    Flags |= EFBit(efHasBackground);
  if (has(gp, cgBorder))
    Flags |= EFBit(efHasBorder);
  // Vertical margins are the layout's to collapse; they start as declared.
  if (!has(gp, cgMargin) || is_row_level(s->FDisplay)) {
    MarginTop = MarginRight = MarginBottom = MarginLeft = 0;
  } else if (!has(rel, cgMargin)) {
    float m[4] = {s->MarginTopPx(), s->MarginRightPx(), s->MarginBottomPx(), s->MarginLeftPx()};
    put_sides(m, vertical, MarginTop, MarginRight, MarginBottom, MarginLeft);
  }
  if (has(gp, cgPadding) && !has(rel, cgPadding)) {
    float p[4] = {s->PaddingTopPx(), s->PaddingRightPx(), s->PaddingBottomPx(), s->PaddingLeftPx()};
    put_sides(p, vertical, PaddingTop, FPaddingRight, PaddingBottom, FPaddingLeft);
  } else {
    PaddingTop = FPaddingRight = PaddingBottom = FPaddingLeft = 0;
  }
  if (has(gp, cgBorder) && !has(rel, cgBorder)) {
    float b[4] = {px(s->BorderTopWidthPx()), px(s->BorderRightWidthPx()), px(s->BorderBottomWidthPx()),
                  px(s->BorderLeftWidthPx())};
    put_sides(b, vertical, BorderTop, BorderRight, BorderBottom, BorderLeft);
  } else {
    BorderTop = BorderRight = BorderBottom = BorderLeft = 0;
  }
}

void TStyledHTMLNode::CalcRelativeProps() {
  TBaseElementStyle* s = FStyle.get();
  if (!s || !s->RelativeProps)
    return;
  const TCSSGeneralProperties gp = s->GeneralProps, rel = s->RelativeProps;
  const bool vertical = HasFlag(efVertical);
  if (has(gp, cgMargin) && has(rel, cgMargin) && !is_row_level(s->FDisplay)) {
    float m[4] = {s->MarginTopPx(), s->MarginRightPx(), s->MarginBottomPx(), s->MarginLeftPx()};
    put_sides(m, vertical, MarginTop, MarginRight, MarginBottom, MarginLeft);
  }
  if (has(gp, cgPadding) && has(rel, cgPadding)) {
    float p[4] = {s->PaddingTopPx(), s->PaddingRightPx(), s->PaddingBottomPx(), s->PaddingLeftPx()};
    put_sides(p, vertical, PaddingTop, FPaddingRight, PaddingBottom, FPaddingLeft);
  }
  if (has(gp, cgBorder) && has(rel, cgBorder)) {
    float b[4] = {px(s->BorderTopWidthPx()), px(s->BorderRightWidthPx()), px(s->BorderBottomWidthPx()),
                  px(s->BorderLeftWidthPx())};
    put_sides(b, vertical, BorderTop, BorderRight, BorderBottom, BorderLeft);
  }
}

// --- Rectangles and deltas ---

void TStyledHTMLNode::CalcRects() {
  const TCSSGeneralProperties gp = FStyle ? FStyle->GeneralProps : 0;
  float w = RW(OuterRect) - VScrollBarWidth();
  float h = RH(OuterRect) - HScrollBarHeight();
  if (FStyle && FStyle->FDisplay != dsTableCell && has(gp, cgMargin)) {
    w -= MarginLeft + MarginRight;
    h -= MarginTop + MarginBottom;
  }
  if (has(gp, cgPadding)) {
    w -= FPaddingLeft + FPaddingRight;
    h -= PaddingTop + PaddingBottom;
  }
  if (has(gp, cgBorder)) {
    w -= BorderLeft + BorderRight;
    h -= BorderTop + BorderBottom;
  }
  InnerWidth = w;
  InnerHeight = h;
}

float TStyledHTMLNode::OuterDeltaX() const {
  if (IsText() || !FStyle)
    return 0;
  const TCSSGeneralProperties gp = FStyle->GeneralProps;
  return (has(gp, cgMargin) ? MarginLeft + MarginRight : 0) + (has(gp, cgBorder) ? BorderLeft + BorderRight : 0);
}

float TStyledHTMLNode::OuterDeltaY() const {
  if (IsText() || !FStyle)
    return 0;
  const TCSSGeneralProperties gp = FStyle->GeneralProps;
  return (has(gp, cgMargin) ? MarginTop + MarginBottom : 0) + (has(gp, cgBorder) ? BorderTop + BorderBottom : 0);
}

float TStyledHTMLNode::InnerDeltaX() const {
  if (IsText())
    return 0;
  return VScrollBarWidth() + (FStyle && has(FStyle->GeneralProps, cgPadding) ? FPaddingLeft + FPaddingRight : 0);
}

float TStyledHTMLNode::InnerDeltaY() const {
  if (IsText())
    return 0;
  return HScrollBarHeight() + (FStyle && has(FStyle->GeneralProps, cgPadding) ? PaddingTop + PaddingBottom : 0);
}

// A right-to-left list keeps its marker room on the right: the paddings trade sides.
float TStyledHTMLNode::LeftDelta() const {
  bool rtl = FStyle && FStyle->CalculatedDirection == cdRTL;
  return (rtl ? FPaddingRight : FPaddingLeft) + MarginLeft + BorderLeft;
}

float TStyledHTMLNode::RightDelta() const {
  bool rtl = FStyle && FStyle->CalculatedDirection == cdRTL;
  return (rtl ? FPaddingLeft : FPaddingRight) + MarginRight + BorderRight;
}

float TStyledHTMLNode::TopDelta() const { return PaddingTop + MarginTop + BorderTop; }
float TStyledHTMLNode::BottomDelta() const { return PaddingBottom + MarginBottom + BorderBottom; }

float TStyledHTMLNode::RTLInc() const { return FStyle && FStyle->CalculatedDirection == cdRTL ? -1.0f : 1.0f; }

TRectF TStyledHTMLNode::Rects() const { return OuterRect; }

TRectF TStyledHTMLNode::BorderRect() const {
  return TRectF{OuterRect.Left + MarginLeft, OuterRect.Top + MarginTop, OuterRect.Right - MarginRight,
                OuterRect.Bottom - MarginBottom};
}

TRectF TStyledHTMLNode::PaddingRect() const {
  TRectF r = BorderRect();
  return TRectF{r.Left + BorderLeft, r.Top + BorderTop, r.Right - BorderRight, r.Bottom - BorderBottom};
}

TRectF TStyledHTMLNode::InnerRect() const {
  float l = OuterRect.Left + LeftDelta(), t = OuterRect.Top + TopDelta();
  return TRectF{l, t, l + InnerWidth, t + InnerHeight};
}

void TStyledHTMLNode::OffsetRects(float DX, float DY) {
  std::vector<TStyledHTMLNode*> stack{this};
  while (!stack.empty()) {
    TStyledHTMLNode* n = stack.back();
    stack.pop_back();
    ROffset(n->OuterRect, DX, DY);
    detail::PushStyledChildren(stack, n, true);
  }
}

namespace {

// A size from its measure, held between the min and max measures; NaN when auto.
float clamp_size(float Size, float Min, float Max) {
  if (Size > Max)
    Size = Max;
  return Size < Min ? Min : Size;
}

} // namespace

void TStyledHTMLNode::CalcWidth() {
  if (!FStyle)
    return;
  TMeasure m = FStyle->Width();
  if (m.GetAuto())
    return;
  float w = clamp_size(m.GetFPixels(), MinWidth(), MaxWidth());
  // The border box holds the padding and border; the content box does not.
  w += FStyle->BoxSizing() == bsBorderbox ? 0 : InnerDeltaX() - VScrollBarWidth() + BorderLeft + BorderRight;
  OuterRect.Right = OuterRect.Left + w + MarginLeft + MarginRight;
  CalcRects();
}

void TStyledHTMLNode::CalcHeight() {
  if (!FStyle)
    return;
  float h = StyleHeight();
  if (h < 0)
    return;
  h = clamp_size(h, MinHeight(), MaxHeight());
  h += FStyle->BoxSizing() == bsBorderbox ? 0 : InnerDeltaY() - HScrollBarHeight() + BorderTop + BorderBottom;
  OuterRect.Bottom = OuterRect.Top + h + MarginTop + MarginBottom;
  CalcRects();
}

float TStyledHTMLNode::StyleHeight() {
  if (!FStyle)
    return -1;
  TMeasure m = FStyle->Height();
  return m.GetAuto() ? -1 : m.GetFPixels();
}

namespace {

// The pixels of a min or max measure; Auto when it is auto (or "none").
float limit_px(TMeasure M, float Auto) { return M.GetAuto() ? Auto : M.GetFPixels(); }

constexpr float kNoLimit = std::numeric_limits<float>::max();

} // namespace

float TStyledHTMLNode::MinWidth() { return FStyle ? limit_px(FStyle->MinWidth(), 0) : 0; }
float TStyledHTMLNode::MaxWidth() { return FStyle ? limit_px(FStyle->MaxWidth(), kNoLimit) : kNoLimit; }
float TStyledHTMLNode::MinHeight() { return FStyle ? limit_px(FStyle->MinHeight(), 0) : 0; }
float TStyledHTMLNode::MaxHeight() { return FStyle ? limit_px(FStyle->MaxHeight(), kNoLimit) : kNoLimit; }

// --- The containing block ---

TStyledHTMLNode* TStyledHTMLNode::FindContainer() {
  TStyledHTMLNode* found = nullptr;
  for (THtNode* p = FParent; p; p = p->FParent) {
    auto* s = dynamic_cast<TStyledHTMLNode*>(p);
    if (s && s->FStyle && (s->FStyle->FDisplay != dsInline || s->FStyle->Float() != fNone)) {
      found = s;
      break;
    }
  }
  if (!found && FParent)
    found = RootNodeElement();
  if (found != Container)
    SetContainer(found);
  return Container;
}

void TStyledHTMLNode::SetContainer(TStyledHTMLNode* Value) { Container = Value; }

TStyledHTMLNode* TStyledHTMLNode::AbsoluteParent() const {
  for (TStyledHTMLNode* p = ParentElement(); p; p = p->ParentElement())
    if (p->IsAbsoluteContainer() || !p->ParentElement())
      return p;
  return nullptr;
}

TStyledHTMLNode* TStyledHTMLNode::NearestBlockParent() const {
  for (TStyledHTMLNode* p = ParentElement(); p; p = p->ParentElement())
    if (p->IsBlockOrInlineBlock() || p->Display() == dsTableCell)
      return p;
  return nullptr;
}

TStyledHTMLNode* TStyledHTMLNode::BlockContainer() const {
  TStyledHTMLNode* last = nullptr;
  for (TStyledHTMLNode* p = ParentElement(); p; p = p->ParentElement()) {
    if (p->IsBlockContainer())
      return p;
    last = p;
  }
  return last;
}

// --- Classification ---

bool TStyledHTMLNode::IsBlock() const {
  if (IsText() || !FStyle)
    return false;
  switch (FStyle->FDisplay) {
  case dsBlock:
  case dsTable:
  case dsTableRow:
  case dsTableRowGroup:
  case dsListItem:
  case dsFlex:
    return true;
  default:
    return false;
  }
}

bool TStyledHTMLNode::IsBlockOrInlineBlock() const {
  return IsBlock() || (!IsText() && FStyle && FStyle->FDisplay == dsInlineBlock);
}

bool TStyledHTMLNode::IsBlockContainer() const {
  if (IsText() || !FStyle)
    return false;
  switch (FStyle->FDisplay) {
  case dsBlock:
  case dsInlineBlock:
  case dsTableCell:
  case dsListItem:
  case dsFlex:
  case dsInlineFlex:
    return true;
  default:
    return false;
  }
}

bool TStyledHTMLNode::OutofFlow() const {
  if (!FStyle)
    return false;
  const TElementPosition p = FStyle->FPosition;
  return p == epAbsolute || p == epFixed || p == epRunning || FStyle->Float() != fNone;
}

bool TStyledHTMLNode::IsRunning() const {
  return FStyle && (FStyle->FPosition == epFixed || FStyle->FPosition == epRunning);
}

bool TStyledHTMLNode::IsAbsoluteOrRunning() const {
  return FStyle && (FStyle->FPosition == epAbsolute || IsRunning());
}

bool TStyledHTMLNode::IsTransformed() const { return FStyle && FStyle->HasTransform(); }

bool TStyledHTMLNode::IsAbsoluteContainer() const {
  if (!FParent || !FStyle)
    return false;
  return FStyle->FPosition != epStatic || FStyle->Float() != fNone || IsTransformed();
}

bool TStyledHTMLNode::IsLineBreak() const { return HasFlag(efLineBreak) || FTag == u"br"; }

bool TStyledHTMLNode::SameLine(const TStyledHTMLNode* Other) const {
  if (!Other || NearestBlockParent() != Other->NearestBlockParent())
    return false;
  return Other->OuterRect.Top < OuterRect.Bottom && OuterRect.Top < Other->OuterRect.Bottom;
}

bool TStyledHTMLNode::MarginCollapsible(int Side) const {
  if (!IsBlock() || OutofFlow())
    return false;
  switch (Side) {
  case 0:
    return BorderTop == 0 && PaddingTop == 0;
  case 1:
    return BorderRight == 0 && FPaddingRight == 0;
  case 2:
    return BorderBottom == 0 && PaddingBottom == 0;
  case 3:
    return BorderLeft == 0 && FPaddingLeft == 0;
  default:
    return false;
  }
}

namespace {

bool blank_text(const THtNode* N) { return N->FTag.empty() && BlankOrNBSP(N->FContent.view()); }

bool is_comment(const THtNode* N) { return !N->FTag.empty() && (N->FTag[0] == u'!' || N->FTag[0] == u'?'); }

// A block with nothing in it that takes room: margins pass through it.
bool empty_block(const TStyledHTMLNode* N) {
  if (!N->MarginCollapsible(0) || !N->MarginCollapsible(2))
    return false;
  if (N->FStyle && !N->FStyle->Height().GetAuto())
    return false;
  for (const THtNode* c = N->FirstChild(); c; c = c->NextSibling())
    if (!blank_text(c) && !is_comment(c))
      return false;
  return true;
}

} // namespace

TStyledHTMLNode* TStyledHTMLNode::PreviousMarginElement() const {
  if (!FParent || !FParent->FNodes)
    return nullptr;
  THtNodeList* list = FParent->FNodes;
  TStyledHTMLNode* through = nullptr; // an empty block passed over
  for (int i = list->IndexOf(this) - 1; i >= 0; --i) {
    THtNode* c = list->GetNode(i);
    if (blank_text(c) || is_comment(c))
      continue;
    auto* s = dynamic_cast<TStyledHTMLNode*>(c);
    if (!s || s->IsText())
      return nullptr;
    if (s->Display() == dsNone || s->OutofFlow())
      continue;
    if (!s->IsBlock())
      return nullptr;
    if (!empty_block(s))
      return s;
    if (!through)
      through = s;
  }
  return through;
}

bool TStyledHTMLNode::MarginCollapsibleSibling() const {
  return MarginCollapsible(0) && PreviousMarginElement() != nullptr;
}

TStyledHTMLNode* TStyledHTMLNode::FirstNonEmptyChild() const {
  for (THtNode* c = FirstChild(); c; c = c->NextSibling())
    if (!blank_text(c) && !is_comment(c))
      if (auto* s = dynamic_cast<TStyledHTMLNode*>(c); s && s->Display() != dsNone)
        return s;
  return nullptr;
}

TStyledHTMLNode* TStyledHTMLNode::LastNonEmptyChild() const {
  TStyledHTMLNode* last = nullptr;
  for (THtNode* c = FirstChild(); c; c = c->NextSibling())
    if (!blank_text(c) && !is_comment(c))
      if (auto* s = dynamic_cast<TStyledHTMLNode*>(c); s && s->Display() != dsNone)
        last = s;
  return last;
}

// --- Real positions: OuterRect is in the inner coordinates of the container ---

float TStyledHTMLNode::GetRealLeft() const {
  float x = OuterRect.Left;
  for (const TStyledHTMLNode* c = Container; c; c = c->Container)
    x += c->OuterRect.Left + c->LeftDelta();
  return x;
}

float TStyledHTMLNode::GetRealTop() const {
  float y = OuterRect.Top;
  for (const TStyledHTMLNode* c = Container; c; c = c->Container)
    y += c->OuterRect.Top + c->TopDelta();
  return y;
}

float TStyledHTMLNode::GetSurfaceLeft() const { return GetRealLeft(); }
float TStyledHTMLNode::GetSurfaceTop() const { return GetRealTop(); }

// --- Size flags ---

bool TStyledHTMLNode::RelativeWidth() {
  // Iterative: a chain of containers may be as deep as the document.
  for (TStyledHTMLNode* n = this; n;) {
    if (!n->FStyle)
      return true;
    TMeasure w = n->FStyle->Width();
    if (!w.GetAuto()) {
      if (!w.Relative())
        return false;
    } else if (!(n->IsBlock() && n->InFlow())) {
      return false;
    }
    TStyledHTMLNode* c = n->Container ? n->Container : n->FindContainer();
    if (!c || c == n)
      return true; // the viewport's width
    n = c;
  }
  return true;
}

void TStyledHTMLNode::GrowtoContainer() {
  for (TStyledHTMLNode* n = this; n && !n->HasSizeFlag(sfFixedWidth); n = n->Container) {
    if (n->HasSizeFlag(sfGrowToContainer))
      break; // the rest of the chain has it already
    n->SizeFlags |= SFBit(sfGrowToContainer);
  }
}

namespace {

// The flags of one axis of a block-level box.
struct TAxisFlags {
  TCSSSizeFlag Fixed, Definite, FixedMin, DefiniteMin, FixedMax, DefiniteMax;
};

constexpr TAxisFlags kWidthFlags{sfFixedWidth,    sfDefiniteWidth,    sfFixedMinWidth,
                                 sfDefiniteMinWidth, sfFixedMaxWidth, sfDefiniteMaxWidth};
constexpr TAxisFlags kHeightFlags{sfFixedHeight,    sfDefiniteHeight,    sfFixedMinHeight,
                                  sfDefiniteMinHeight, sfFixedMaxHeight, sfDefiniteMaxHeight};

// Fixed and definite for a size measure: a length of its own is both; a
// percentage or calc() is definite when the container's size is.
TCSSSizeFlags size_flags(const TMeasure& M, bool ContainerDefinite, TCSSSizeFlag Fixed, TCSSSizeFlag Definite) {
  if (M.GetAuto())
    return 0;
  if (!M.Relative())
    return SFBit(Fixed) | SFBit(Definite);
  return ContainerDefinite ? SFBit(Definite) : 0;
}

TCSSSizeFlags axis_flags(const TMeasure& Size, const TMeasure& Min, const TMeasure& Max, bool ContainerDefinite,
                         const TAxisFlags& F) {
  TCSSSizeFlags r = size_flags(Size, ContainerDefinite, F.Fixed, F.Definite);
  if (same_measure(Min, Max))
    r |= size_flags(Min, ContainerDefinite, F.Fixed, F.Definite);
  r |= size_flags(Min, ContainerDefinite, F.FixedMin, F.DefiniteMin);
  r |= size_flags(Max, ContainerDefinite, F.FixedMax, F.DefiniteMax);
  return r;
}

// Fixed and definite for the margins and paddings of one axis: percentages
// (and auto side margins, which share the room left) follow the container's
// width, lengths are fixed.
TCSSSizeFlags delta_flags(std::initializer_list<TMeasure> Sides, bool AutoRelative, bool ContainerDefinite,
                          TCSSSizeFlag Fixed, TCSSSizeFlag Definite) {
  bool relative = false;
  for (const TMeasure& m : Sides)
    relative |= (AutoRelative && m.GetAuto()) || container_relative(m);
  if (!relative)
    return SFBit(Fixed) | SFBit(Definite);
  return ContainerDefinite ? SFBit(Definite) : 0;
}

} // namespace

void TStyledHTMLNode::CalcSizeFlags(bool Recalc) {
  // A grown box stays grown unless everything is asked for anew.
  SizeFlags &= Recalc ? 0 : SFBit(sfGrowToContainer);
  TBaseElementStyle* s = FStyle.get();
  if (!s || IsText() || s->FDisplay == dsNone)
    return;
  CalcRelativeProps();
  TDisplayStyle d = s->FDisplay;
  if (d == dsInline && IsReplacedElement())
    d = dsInlineBlock;
  TStyledHTMLNode* c = Container ? Container : FindContainer();
  // Without a styled container the box stands in the viewport, whose size is known.
  const bool viewport = !c || c == this || !c->Style();
  const bool cw = viewport || c->HasSizeFlag(sfDefiniteWidth);
  const bool ch = viewport || c->HasSizeFlag(sfDefiniteHeight);
  // Auto margins are read too: they leave no mark in GeneralProps.
  const TCSSSizeFlags hdelta = delta_flags({s->MarginLeft(), s->MarginRight(), s->PaddingLeft(), s->PaddingRight()},
                                           true, cw, sfFixedOuterDelta, sfDefiniteOuterDelta);
  switch (d) {
  case dsInline:
    SizeFlags |= hdelta;
    return;
  case dsBlock:
  case dsInlineBlock:
  case dsTable:
  case dsListItem:
  case dsFlex:
  case dsInlineFlex:
  case dsInlineTable:
    break;
  default:
    return; // rows and row groups: the table decides; cells likewise
  }
  const bool absolute = s->FPosition == epAbsolute || s->FPosition == epFixed;
  TMeasure w = s->Width();
  SizeFlags |= axis_flags(w, s->MinWidth(), s->MaxWidth(), cw, kWidthFlags);
  if (w.GetAuto()) {
    // An auto width is the container's less the margins for a block in the
    // flow, and the space between left and right for an absolute box.
    bool stretches = (d == dsBlock || d == dsListItem || d == dsFlex) && !OutofFlow() && cw;
    if (absolute && !s->Left().GetAuto() && !s->Right().GetAuto())
      stretches = true;
    if (stretches)
      SizeFlags |= SFBit(sfDefiniteWidth);
  }
  TMeasure h = s->Height();
  SizeFlags |= axis_flags(h, s->MinHeight(), s->MaxHeight(), ch, kHeightFlags);
  if (h.GetAuto() && absolute && !s->Top().GetAuto() && !s->Bottom().GetAuto())
    SizeFlags |= SFBit(sfDefiniteHeight);
  SizeFlags |= hdelta;
  // Vertical percentages refer to the container's width too.
  SizeFlags |= delta_flags({s->MarginTop(), s->MarginBottom(), s->PaddingTop(), s->PaddingBottom()}, false, cw,
                           sfFixedOuterVDelta, sfDefiniteOuterVDelta);
}

} // namespace ht
