// TStyledHTMLNode: the document node that carries a computed style and the
// box numbers a layout loop reads.
//
// A tree whose root is a TStyledHTMLNode (or a host class derived from it) is
// made of them. The parser renames tags the single-root design cannot hold
// (a nested body becomes "xbody", <c:red> a span in red), turns
// presentational attributes (bgcolor, align, width ...) into inline
// declarations, and keeps class names hashed. Once a cascade has run
// (TStyleDriver does it for a whole document), each element answers its style
// and its margin, border and padding widths:
//
//   ht::TStyledHTMLNode doc;
//   doc.Parse(u"<p style='margin: 4px'>x</p>");
//   ht::TStyleDriver driver(&doc);
//   driver.Run();
//   auto* p = static_cast<ht::TStyledHTMLNode*>(doc.FindNode(u"p"_hs));
//   p->MarginLeft;                  // 4
//   p->Style()->TextColor();        // the host's default text colour
//   p->AddCSS(u"color: red"_hs, true);   // style="margin:4px;color:red"; restyle pending
//
// The layout loop itself is the host's; this class offers its numbers and
// virtual hooks.
#pragma once

#include "htcore/foundation/enum_info.h"
#include "htcore/foundation/geometry.h"
#include "htcore/foundation/hstring.h"
#include "htcore/style/css_properties.h"
#include "htcore/style/css_selector.h"
#include "htcore/style/element_style.h"

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace ht {

class TCSSStyleSheet;
class TBlockFloats;

HT_ENUM(TElementFlag, efDrag, efDragMoved, efHasFloatElements, efHasAnimatedImages, efHSizeTracking,
        efVSizeTracking, efPBBeforeProcessed, efPBAfterProcessed, efPBInsideProcessed, efDrawn,
        efCompletelyDrawn, efSelfStyleProcessed, efDesignerSelected, efChecked, efMultiClass, efLineBreak,
        efNeedRecalc, efHasBlockElements, efHasBackground, efHasBorder, efVisible, efStyleCalculated,
        efHasCounters, efHasOutOfFlowElements, efText, efSpellChecked, efDestroying, efStackingContext,
        efTableCell, efVertical, efVMProcessed, efHasOverflow, efPseudoCalculated)
// A set of TElementFlag: bit n is the member of ordinal n.
using TElementFlags = uint64_t;
constexpr TElementFlags EFBit(TElementFlag f) noexcept { return TElementFlags{1} << f; }

HT_ENUM(TCSSSizeFlag, sfFixedWidth, sfDefiniteWidth, sfFixedOuterDelta, sfDefiniteOuterDelta, sfFixedMinWidth,
        sfDefiniteMinWidth, sfFixedMaxWidth, sfDefiniteMaxWidth, sfFixedHeight, sfDefiniteHeight,
        sfFixedOuterVDelta, sfDefiniteOuterVDelta, sfFixedMinHeight, sfDefiniteMinHeight, sfFixedMaxHeight,
        sfDefiniteMaxHeight, sfGrowToContainer)
using TCSSSizeFlags = uint32_t;
constexpr TCSSSizeFlags SFBit(TCSSSizeFlag f) noexcept { return TCSSSizeFlags{1} << f; }

// A CSS counter of an element: the name's hash and its value.
struct TCSSCounter {
  uint32_t NameHash = 0; // RSHash of the name
  int32_t Value = 0;
};

// "a" .. for lower-alpha, Roman numerals, decimal otherwise.
hstring ListCountertoString(TListStyleType ListType, int Value);

class TStyledHTMLNode : public TCSSElement {
  HT_NODE_CLASS(TStyledHTMLNode)

public:
  TStyledHTMLNode();
  ~TStyledHTMLNode() override;

  std::unique_ptr<TBaseElementStyle> FStyle; // made by CreateStyle; null for text
  std::unique_ptr<TBlockFloats> FFloatMap;   // on demand, by the float engine
  hstring FVirtualSelfStyle;                 // style text that is not in the document
  float FPaddingRight = 0, FPaddingLeft = 0;
  bool FIgnorePageBreakInside = false;
  TCSSStyleSheet* SelfStyleSheet = nullptr; // shared copy-on-write (RefCounter)
  int64_t Index = 0;                        // document order key
  TRectF OuterRect{0, 0, 0, 0};             // box including margins
  float MarginTop = 0, MarginRight = 0, MarginBottom = 0, MarginLeft = 0;
  float BorderTop = 0, BorderRight = 0, BorderBottom = 0, BorderLeft = 0;
  float PaddingTop = 0, PaddingBottom = 0;
  float ContentWidth = 0, ContentHeight = 0;
  float VDelta = 0;
  TStyledHTMLNode* Container = nullptr; // containing block, not owned
  TElementFlags Flags = 0;
  TCSSSizeFlags SizeFlags = 0;
  int32_t StartPage = 0;
  std::unique_ptr<TStyledHTMLNode> Before, After, Marker; // pseudo elements, not in the child list
  std::vector<TCSSCounter> Counters;
  float InnerWidth = 0, InnerHeight = 0; // base of children's percentages

  TBaseElementStyle* Style() const noexcept { return FStyle.get(); }
  // The style, made by CreateStyle on first need; null for a text node.
  TBaseElementStyle* EnsureStyle();
  // efMultiClass is not kept in Flags: MultiClass, which GetClassesHashes
  // derives from the class attribute, answers it.
  bool HasFlag(TElementFlag F) const noexcept {
    return F == efMultiClass ? MultiClass : (Flags & EFBit(F)) != 0;
  }
  bool HasSizeFlag(TCSSSizeFlag F) const noexcept { return (SizeFlags & SFBit(F)) != 0; }
  // The parent as a styled node, or null.
  TStyledHTMLNode* ParentElement() const;
  // The display applied by the cascade; dsInline without a style.
  TDisplayStyle Display() const noexcept { return FStyle ? FStyle->FDisplay : dsInline; }
  // The padding of a side that the layout may change (RTL lists).
  float PaddingLeft() const noexcept { return FPaddingLeft; }
  float PaddingRight() const noexcept { return FPaddingRight; }

  // Virtual operations.
  void CSS(const hstring& Text) override;
  void AddClass(const hstring& CSSClass) override;
  void RemoveClass(const hstring& CSSClass) override;
  bool HasClass(const hstring& CSSClass) override;
  virtual TRectF GetDrawRect() const;
  virtual float GetViewPortWidth() const;
  virtual float GetViewPortHeight() const;
  virtual float GetUserWidth() const;
  virtual float GetUserHeight() const;
  virtual void SetUserWidth(float Value);
  virtual void SetUserHeight(float Value);
  virtual std::unique_ptr<TBaseElementStyle> CreateStyle();
  virtual hstring GetStyleClass() const;
  virtual float GetRealLeft() const;
  virtual float GetRealTop() const;
  virtual float GetSurfaceLeft() const;
  virtual float GetSurfaceTop() const;
  virtual TStyledHTMLNode* FindContainer();
  virtual void SetContainer(TStyledHTMLNode* Value);
  virtual void ResetStyle(bool Recalc);
  virtual hstring GetCSSContent(const hstring& Text);
  virtual void ClearSelfStyleSheet();
  virtual TStyledHTMLNode* RootNodeElement();
  virtual hstring DefaultFontFamily() const;
  virtual THAlign DefaultTextAlign() const;
  virtual uint32_t DefaultBorderColor() const;
  virtual uint32_t GetDefaultTextColor() const;
  virtual void UpdatePseudo();
  virtual float ScaleFactor() const;
  virtual void CalcRects();
  virtual float VScrollBarWidth() const;
  virtual float HScrollBarHeight() const;
  virtual float MinContentWidth();
  virtual float MaxContentWidth();
  virtual void ParseAttribute(const hstring& Name, const hstring& Value);
  virtual void StyleChanged(bool Recalc);
  virtual TRectF Rects() const;
  virtual TRectF InnerRect() const;
  virtual bool RelativeWidth();
  virtual int StartLine() const;
  virtual int EndLine() const;
  virtual bool Visible() const;
  virtual bool IsText() const;
  virtual bool IsReplacedElement() const;
  virtual float StyleHeight();
  virtual void* InternalObject() const;
  // Overrides of THtmlNode.
  using TCSSElement::ParseAttributes;
  bool SetAttribute(const hstring& Name, const hstring& Value) override;
  void ParseAttributes(THtmlParser& HP) override;
  THtNode* InternalParse(THtmlParser& HP) override;
  void SetOuterHTML(const hstring& Value) override;
  void SetStyleClass(const hstring& Value) override;
  hstring GetInnerText() override;
  // The computed value as CSS text (computed_css.h); empty before the cascade.
  hstring ComputedCSS(const hstring& Name) override;

  // Geometry.
  void OffsetRects(float DX, float DY);
  void CalcWidth();
  void CalcHeight();
  void CalcNonRelativeProps();
  void CalcRelativeProps();
  void CalcSizeFlags(bool Recalc);
  TRectF BorderRect() const;
  TRectF PaddingRect() const;
  float InnerDeltaX() const;
  float InnerDeltaY() const;
  float OuterDeltaX() const;
  float OuterDeltaY() const;
  float LeftDelta() const;
  float TopDelta() const;
  float RightDelta() const;
  float BottomDelta() const;
  float MinWidth();
  float MaxWidth();
  float MinHeight();
  float MaxHeight();
  void GrowtoContainer();
  float RTLInc() const;

  // Classification.
  bool IsBlock() const;
  bool IsBlockOrInlineBlock() const;
  bool IsBlockContainer() const;
  bool IsAbsoluteContainer() const;
  bool OutofFlow() const;
  bool InFlow() const { return !OutofFlow(); }
  bool IsRunning() const;
  bool IsAbsoluteOrRunning() const;
  bool IsTransformed() const;
  bool IsLineBreak() const;
  bool SameLine(const TStyledHTMLNode* Other) const;
  bool MarginCollapsible(int Side) const; // 0..3: top, right, bottom, left
  bool MarginCollapsibleSibling() const;
  TStyledHTMLNode* PreviousMarginElement() const;
  TStyledHTMLNode* AbsoluteParent() const;
  TStyledHTMLNode* NearestBlockParent() const;
  TStyledHTMLNode* BlockContainer() const;
  TStyledHTMLNode* FirstNonEmptyChild() const;
  TStyledHTMLNode* LastNonEmptyChild() const;
  hstring Lang() const;
  int ColumnCount() const;

  // Flags: Up to the parents, Down to children and pseudo elements; Stop ends the walk there.
  void SetFlag(TElementFlag Flag, bool Value, bool Up, bool Down, const TStyledHTMLNode* Stop = nullptr);

  // Style editing.
  void AddCSS(const hstring& Text, bool Persist = false, uint32_t Weight = 0);
  void AddVirtualCSS(const hstring& Text);
  void AddVirtualCSS2(const hstring& Name, const hstring& Value);
  void ClearCSS(const hstring& Name, bool Persist = false);
  void AddCSSRecursive(const hstring& Text, bool Persist = false);
  void ClearCSSRecursive(const hstring& Name, bool Persist = false);
  void UniqueSelfStyle();
  // The element's own sheet for the cascade (GetAllSelectors reads it): when
  // efSelfStyleProcessed is clear it is built anew from the style attribute
  // and FVirtualSelfStyle. Null when the element has no style of its own.
  TCSSStyleSheet* PrepareSelfStyle();

  // Shares Source's own sheet (copy on write): for elements with the same
  // style text, so that one parse serves all of them.
  void ShareSelfStyleSheet(TStyledHTMLNode& Source);

  // Pseudo elements: Before, After or Marker by pseudo-class (null for any
  // other). CreatePseudo makes the node on first need, of this node's class,
  // with this node as parent so that it inherits, but outside the child list.
  TStyledHTMLNode* PseudoElement(TCSSPseudoClass Pseudo) const;
  TStyledHTMLNode* CreatePseudo(TCSSPseudoClass Pseudo);
  void FreePseudo(TCSSPseudoClass Pseudo);

  // Floats (block_floats.h): the block's float map, made on first need, and
  // the intrusions of its left and right floats over Top..Bottom, in its
  // inner coordinates; the ClearTop forms are where each side's floats end.
  TBlockFloats* GetFloatMap();
  float GetLeft(float Top, float Bottom) const;
  float GetRight(float Top, float Bottom) const;
  float GetLeftClearTop() const;
  float GetRightClearTop() const;

  // Counters.
  void ResetCSSCounter(const hstring& Name, int Value);
  void IncrementCSSCounter(const hstring& Name, int By = 1);
  // The value of the nearest counter of that name, or 0.
  int CSSCounterValue(const hstring& Name) const;
  // Whether a child holds counters, so that a counter search looks at siblings.
  bool HasChildCounters() const noexcept { return FChildCounters; }

private:
  bool FChildCounters = false; // a child holds counters: IncrementCSSCounter scans the siblings

  // A new own sheet from the style attribute and FVirtualSelfStyle (may be empty).
  void BuildSelfStyleSheet();
  // Ends an edit of the own sheet: the style attribute with Persist, then a restyle.
  void SelfStyleEdited(bool Persist);
  void SnapshotStyle();
  // Appends declarations to FVirtualSelfStyle in place of those of Names.
  void AddVirtualText(std::u16string_view Added, const std::vector<std::u16string_view>& Names);
  // Takes the declaration of Name out of FVirtualSelfStyle; true when there was one.
  bool RemoveVirtualCSS(std::u16string_view Name);
};

} // namespace ht
