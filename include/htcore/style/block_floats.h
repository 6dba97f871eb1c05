// Floats and block geometry: what has been placed at the left and right
// edges of a block, and where a box of a given size finds room beside it.
//
// A TBlockSide keeps one edge as bands sorted by Top that never overlap; each
// band intrudes Offset units from its edge between Top and Bottom. A block's
// TBlockFloats (TStyledHTMLNode::GetFloatMap) holds both edges in the block's
// inner coordinates. A float registers in the block that hosts it and pushes
// itself outward into each enclosing block without a float context of its own:
//
//   float_node->OuterRect = {0, 0, 100, 50};         // laid out by the host
//   block->GetFloatMap()->AddBlock(float_node, true); // float: left
//   float l, r;
//   float y = block->GetFloatMap()->Y(0, 20, 300, nullptr, l, r);  // a 300-wide line
//   // y == 0 and l == 100 when the block is 400 wide; y == 50, l == 0 when 350
#pragma once

#include "htcore/foundation/geometry.h"

#include <vector>

namespace ht {

class THtNode;
class TStyledHTMLNode;

struct TBlockSideRec {
  float Top = 0, Bottom = 0;
  float Offset = 0;          // horizontal intrusion from the edge
  THtNode* Block = nullptr;  // the float that made the band, not owned
};

class TBlockSide {
public:
  std::vector<TBlockSideRec> Items; // sorted by Top, not overlapping
  float MaxTop = 0;                 // the largest Top ever added

  void AddBlock(float Top, float Bottom, float Offset, THtNode* Block);
  void Assign(const TBlockSide& Other);
  void Clear();
  // The Bottom of the last band; 0 when empty.
  float ClearTop() const noexcept { return Items.empty() ? 0 : Items.back().Bottom; }
  bool Empty() const noexcept { return Items.empty(); }
  // The largest Offset of the bands that meet Top..Bottom (bands that only
  // touch the span do not); 0 when none does.
  float MaxOffset(float Top, float Bottom) const noexcept;
  // The float whose band has that largest Offset, or null.
  THtNode* MaxOffsetBlock(float Top, float Bottom) const noexcept;
  // The first position at or below Top where a box of Width and Height fits
  // beside this side in a block Space wide; Available is the intrusion there.
  // Bands of Block itself stop the search at once.
  float Y(float Top, float Height, float Width, const THtNode* Block, float Space, float& Available) const;

  // The first band whose Bottom is beyond Top (Items.size() when none).
  size_t FirstBelow(float Top) const noexcept;
  // MaxOffset leaving out the bands of Skip.
  float MaxOffsetExcept(float Top, float Bottom, const THtNode* Skip) const noexcept;
};

class TBlockFloats {
public:
  explicit TBlockFloats(TStyledHTMLNode* AElement) : Element(AElement) {}

  TBlockSide Left, Right;
  TStyledHTMLNode* Element; // the block, not owned

  // Registers the float Node (its OuterRect, in Element's inner coordinates)
  // and pushes it into the enclosing blocks. UseOffsets moves a relatively
  // positioned float by its left and top.
  void AddBlock(TStyledHTMLNode* Node, bool UseOffsets);
  // Adds a band to each side with a positive intrusion, then pushes it on.
  void AddRange(float ALeft, float ARight, float Top, float Bottom, THtNode* Block);
  // Copies in the bands of From (Element's container by default) that reach
  // into Element, in Element's coordinates: for a block that starts beside
  // floats placed before it.
  void AddContainerFloats(TStyledHTMLNode* From = nullptr);
  void Clear();
  // The larger ClearTop of the two sides: below it nothing floats.
  float MaxTop() const noexcept;
  // The first position at or below Top where a box of Width and Height fits
  // between the floats, and the intrusions there. A box wider than the block
  // lands below all floats; the search gives up 3000 units down and does the
  // same. Bands of Block itself are left out.
  float Y(float Top, float Height, float Width, const THtNode* Block, float& LeftOffset, float& RightOffset) const;
  // The width left free between the floats over Top..Bottom.
  float MaxWidth(float Top, float Bottom) const noexcept;
  float Space() const noexcept;

  // Whether Block keeps its floats to itself: the root, inline blocks, table
  // parts, flex boxes, out-of-flow and floating boxes, overflow other than
  // visible, and body.
  static bool FormsContext(const TStyledHTMLNode* Block);

private:
  // Carries a band of Element outward, block by block, until a float context.
  void Propagate(float ALeft, float ARight, float Top, float Bottom, THtNode* Block);
};

} // namespace ht
