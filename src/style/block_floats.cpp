// Float bands of a block's edges and the placement queries over them.
#include "htcore/style/block_floats.h"

#include "htcore/style/element_style.h"
#include "htcore/style/styled_node.h"

#include <algorithm>
#include <cmath>

namespace ht {

namespace {

// Two bands that only touch do not meet: the band's end is taken one unit short.
bool meets(const TBlockSideRec& b, float Top, float Bottom) noexcept {
  return b.Top < Bottom && b.Bottom - 1 >= Top;
}

// Non-finite input (a layout gone wrong) must not poison the sorted bands.
bool finite(float a, float b, float c) noexcept { return std::isfinite(a) && std::isfinite(b) && std::isfinite(c); }

// How far a search may go below its start before it gives up.
constexpr float kSearchLimit = 3000;

} // namespace

// --- TBlockSide ---

size_t TBlockSide::FirstBelow(float Top) const noexcept {
  // Bands are sorted and disjoint, so their Bottoms rise too.
  auto it = std::upper_bound(Items.begin(), Items.end(), Top,
                             [](float t, const TBlockSideRec& b) { return t < b.Bottom; });
  return static_cast<size_t>(it - Items.begin());
}

void TBlockSide::AddBlock(float Top, float Bottom, float Offset, THtNode* Block) {
  if (!finite(Top, Bottom, Offset))
    return;
  if (Top < 0)
    Top = 0;
  if (Bottom <= Top)
    return;
  MaxTop = std::max(MaxTop, Top);
  const TBlockSideRec rec{Top, Bottom, Offset, Block};
  if (Items.empty() || Bottom <= Items.front().Top) {
    Items.insert(Items.begin(), rec);
    return;
  }
  size_t i = FirstBelow(Top);
  if (i == Items.size()) {
    Items.push_back(rec);
    return;
  }
  TBlockSideRec& at = Items[i];
  if (at.Top == Top && at.Bottom == Bottom) {
    if (Offset > at.Offset) {
      at.Offset = Offset;
      at.Block = Block;
    }
    return;
  }
  if (Bottom <= at.Top) {
    Items.insert(Items.begin() + static_cast<ptrdiff_t>(i), rec);
    return;
  }
  // The new band overlaps: it replaces what it covers.
  if (at.Top < Top) {
    TBlockSideRec head = at;
    head.Bottom = Top;
    Items[i].Top = Top;
    Items.insert(Items.begin() + static_cast<ptrdiff_t>(i), head);
    ++i;
  }
  Items.insert(Items.begin() + static_cast<ptrdiff_t>(i), rec);
  size_t j = i + 1, end = j;
  while (end < Items.size() && Items[end].Top < Bottom && Items[end].Bottom <= Bottom)
    ++end;
  Items.erase(Items.begin() + static_cast<ptrdiff_t>(j), Items.begin() + static_cast<ptrdiff_t>(end));
  if (j < Items.size() && Items[j].Top < Bottom)
    Items[j].Top = Bottom; // the rest of a band that reaches beyond the new one
}

void TBlockSide::Assign(const TBlockSide& Other) {
  Items = Other.Items;
  MaxTop = Other.MaxTop;
}

void TBlockSide::Clear() {
  Items.clear();
  MaxTop = 0;
}

float TBlockSide::MaxOffsetExcept(float Top, float Bottom, const THtNode* Skip) const noexcept {
  float m = 0;
  for (size_t i = FirstBelow(Top); i < Items.size() && Items[i].Top < Bottom; ++i)
    if (meets(Items[i], Top, Bottom) && (!Skip || Items[i].Block != Skip))
      m = std::max(m, Items[i].Offset);
  return m;
}

float TBlockSide::MaxOffset(float Top, float Bottom) const noexcept { return MaxOffsetExcept(Top, Bottom, nullptr); }

THtNode* TBlockSide::MaxOffsetBlock(float Top, float Bottom) const noexcept {
  const TBlockSideRec* best = nullptr;
  for (size_t i = FirstBelow(Top); i < Items.size() && Items[i].Top < Bottom; ++i)
    if (meets(Items[i], Top, Bottom) && (!best || Items[i].Offset > best->Offset))
      best = &Items[i];
  return best ? best->Block : nullptr;
}

float TBlockSide::Y(float Top, float Height, float Width, const THtNode* Block, float Space,
                    float& Available) const {
  Available = 0;
  if (Items.empty() || Top >= ClearTop())
    return Top;
  if (Width > Space)
    return std::max(ClearTop(), Top);
  const float room = Space - Width;
  for (size_t i = FirstBelow(Top); i < Items.size(); ++i) {
    const TBlockSideRec& b = Items[i];
    if (Block && b.Block == Block)
      return Top;
    if (Height > 0 && b.Top >= Top + Height)
      return Top;
    if (b.Top <= Top && b.Offset <= room) {
      Available = b.Offset;
      return Top;
    }
    Available = MaxOffset(Top, Top + Height);
    if (Available <= room)
      return Top;
    Top = std::max(Top, b.Bottom);
  }
  Available = 0;
  return Top;
}

// --- TBlockFloats ---

bool TBlockFloats::FormsContext(const TStyledHTMLNode* Block) {
  if (!Block || !Block->ParentElement())
    return true;
  const TBaseElementStyle* s = Block->Style();
  if (!s)
    return false;
  switch (s->FDisplay) {
  case dsInlineBlock:
  case dsTableRow:
  case dsTableRowGroup:
  case dsTableCell:
  case dsFlex:
  case dsInlineFlex:
  case dsInlineTable:
    return true;
  default:
    break;
  }
  if (s->FPosition == epAbsolute || s->FPosition == epFixed || s->FPosition == epRunning)
    return true;
  if (s->Float() != fNone || s->OverflowX() != eoVisible || s->OverflowY() != eoVisible)
    return true;
  return Block->FTag == u"body";
}

float TBlockFloats::Space() const noexcept { return Element ? Element->InnerWidth : 0; }

void TBlockFloats::AddBlock(TStyledHTMLNode* Node, bool UseOffsets) {
  if (!Node || !Node->Style())
    return;
  TRectF r = Node->OuterRect;
  if (RW(r) <= 0 || RH(r) <= 0)
    return;
  TBaseElementStyle* s = Node->Style();
  if (UseOffsets && s->FPosition == epRelative) {
    TMeasure l = s->Left(), t = s->Top();
    float dx = 0, dy = 0;
    if (!l.GetAuto()) {
      dx = l.GetFPixels();
    } else if (TMeasure rm = s->Right(); !rm.GetAuto()) {
      dx = -rm.GetFPixels();
    }
    if (!t.GetAuto()) {
      dy = t.GetFPixels();
    } else if (TMeasure bm = s->Bottom(); !bm.GetAuto()) {
      dy = -bm.GetFPixels();
    }
    if (std::isfinite(dx) && std::isfinite(dy))
      ROffset(r, dx, dy);
  }
  float left = 0, right = 0;
  switch (s->Float()) {
  case fLeft:
    left = r.Right;
    Left.AddBlock(r.Top, r.Bottom, left, Node);
    break;
  case fRight:
    right = Space() - r.Left;
    Right.AddBlock(r.Top, r.Bottom, right, Node);
    break;
  default:
    return;
  }
  if (Element)
    Element->Flags |= EFBit(efHasFloatElements);
  Propagate(left, right, r.Top, r.Bottom, Node);
}

void TBlockFloats::AddRange(float ALeft, float ARight, float Top, float Bottom, THtNode* Block) {
  if (ALeft > 0)
    Left.AddBlock(Top, Bottom, ALeft, Block);
  if (ARight > 0)
    Right.AddBlock(Top, Bottom, ARight, Block);
  Propagate(ALeft, ARight, Top, Bottom, Block);
}

void TBlockFloats::Propagate(float ALeft, float ARight, float Top, float Bottom, THtNode* Block) {
  // A loop rather than AddRange's recursion: nesting depth costs no stack.
  TStyledHTMLNode* b = Element;
  while (b && b->ParentElement() && !b->IsText() && !FormsContext(b)) {
    TStyledHTMLNode* c = b->Container ? b->Container : b->FindContainer();
    if (!c || c == b)
      return;
    const TRectF in = b->InnerRect();
    Top += in.Top;
    Bottom += in.Top;
    // The edges of the container's inner box lie outside b's by b's position
    // and its padding, border and margin.
    if (ALeft > 0)
      ALeft += in.Left;
    if (ARight > 0)
      ARight += c->InnerWidth - in.Right;
    TBlockFloats* m = c->GetFloatMap();
    if (ALeft > 0)
      m->Left.AddBlock(Top, Bottom, ALeft, Block);
    if (ARight > 0)
      m->Right.AddBlock(Top, Bottom, ARight, Block);
    c->Flags |= EFBit(efHasFloatElements);
    b = c;
  }
}

void TBlockFloats::AddContainerFloats(TStyledHTMLNode* From) {
  if (!Element)
    return;
  if (!From)
    From = Element->Container ? Element->Container : Element->FindContainer();
  if (!From || From == Element || !From->FFloatMap)
    return;
  const TBlockFloats& src = *From->FFloatMap;
  const TRectF in = Element->InnerRect();
  const float right_gap = From->InnerWidth - in.Right;
  for (size_t i = src.Left.FirstBelow(in.Top); i < src.Left.Items.size(); ++i) {
    const TBlockSideRec& b = src.Left.Items[i];
    if (b.Offset - in.Left > 0)
      Left.AddBlock(b.Top - in.Top, b.Bottom - in.Top, b.Offset - in.Left, b.Block);
  }
  for (size_t i = src.Right.FirstBelow(in.Top); i < src.Right.Items.size(); ++i) {
    const TBlockSideRec& b = src.Right.Items[i];
    if (b.Offset - right_gap > 0)
      Right.AddBlock(b.Top - in.Top, b.Bottom - in.Top, b.Offset - right_gap, b.Block);
  }
}

void TBlockFloats::Clear() {
  Left.Clear();
  Right.Clear();
}

float TBlockFloats::MaxTop() const noexcept { return std::max(Left.ClearTop(), Right.ClearTop()); }

float TBlockFloats::MaxWidth(float Top, float Bottom) const noexcept {
  return std::max(0.0f, Space() - Left.MaxOffset(Top, Bottom) - Right.MaxOffset(Top, Bottom));
}

float TBlockFloats::Y(float Top, float Height, float Width, const THtNode* Block, float& LeftOffset,
                      float& RightOffset) const {
  LeftOffset = RightOffset = 0;
  if (!std::isfinite(Top))
    return Top;
  if (Top < 0)
    Top = 0;
  const float space = Space();
  const float clear = MaxTop();
  if (Top >= clear)
    return Top;
  if (Width > space)
    return clear;
  const float limit = Top + kSearchLimit;
  // Where the box does not fit the next try is the nearest band end below:
  // the free width only changes there.
  while (Top < clear && Top <= limit) {
    const float bottom = Top + std::max(Height, 0.0f);
    const float l = Left.MaxOffsetExcept(Top, std::max(bottom, Top + 1), Block);
    const float r = Right.MaxOffsetExcept(Top, std::max(bottom, Top + 1), Block);
    if (l + r + Width <= space) {
      LeftOffset = l;
      RightOffset = r;
      return Top;
    }
    float next = clear;
    for (const TBlockSide* side : {&Left, &Right}) {
      size_t i = side->FirstBelow(Top);
      if (i < side->Items.size())
        next = std::min(next, side->Items[i].Bottom);
    }
    Top = std::max(next, std::nextafter(Top, clear));
  }
  return clear;
}

// --- The styled node's queries ---

TBlockFloats* TStyledHTMLNode::GetFloatMap() {
  if (!FFloatMap)
    FFloatMap = std::make_unique<TBlockFloats>(this);
  return FFloatMap.get();
}

float TStyledHTMLNode::GetLeft(float Top, float Bottom) const {
  return FFloatMap ? FFloatMap->Left.MaxOffset(Top, Bottom) : 0;
}

float TStyledHTMLNode::GetRight(float Top, float Bottom) const {
  return FFloatMap ? FFloatMap->Right.MaxOffset(Top, Bottom) : 0;
}

float TStyledHTMLNode::GetLeftClearTop() const { return FFloatMap ? FFloatMap->Left.ClearTop() : 0; }

float TStyledHTMLNode::GetRightClearTop() const { return FFloatMap ? FFloatMap->Right.ClearTop() : 0; }

} // namespace ht
