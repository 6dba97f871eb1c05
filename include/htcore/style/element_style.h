// TBaseElementStyle: an element's computed style, resolved when asked.
//
// The cascade leaves in FProps pointers to the winning declarations, heaviest
// first; each getter looks its property up there and, for an inherited
// property, walks up the tree. Only a few hot values (display, position,
// white-space ...) are applied into fields while the cascade runs.
//
//   ht::TBaseElementStyle* s = node->FStyle.get();   // after the cascade
//   s->FontSize().GetFPixels();                      // 16
//   s->TextColor();                                  // 0xFF000000
//   s->MarginLeftPx();                               // 8
//
// A host derives its own style class (TStyledHTMLNode::CreateStyle makes it)
// and reaches the rest through the virtual operations.
#pragma once

#include "htcore/foundation/enum_info.h"
#include "htcore/foundation/hstring.h"
#include "htcore/foundation/string_list.h"
#include "htcore/graphics/font_style.h"
#include "htcore/style/animation.h"
#include "htcore/style/css_cascade.h"
#include "htcore/style/css_properties.h"
#include "htcore/style/css_selector.h"
#include "htcore/style/css_sheet.h"
#include "htcore/style/css_tokenizer.h"
#include "htcore/style/measure.h"
#include "htcore/style/style_values.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace ht {

class TStyledHTMLNode;

HT_ENUM(TCSSGeneralProperty, cgBorder, cgMargin, cgPadding, cgBackground)
// A set of TCSSGeneralProperty: bit n is the member of ordinal n.
using TCSSGeneralProperties = uint8_t;
constexpr TCSSGeneralProperties CGBit(TCSSGeneralProperty p) noexcept {
  return static_cast<TCSSGeneralProperties>(1u << p);
}

// The font size of a root element that nothing sized.
inline constexpr float kDefaultFontSize = 16;

HT_ENUM(TElementClear, ecLeft, ecRight)
using TElementClears = uint8_t;

class TBaseElementStyle : public TMeasureContext {
public:
  explicit TBaseElementStyle(TStyledHTMLNode* AElement);
  ~TBaseElementStyle() override;
  TBaseElementStyle(const TBaseElementStyle&) = delete;
  TBaseElementStyle& operator=(const TBaseElementStyle&) = delete;

  TStyledHTMLNode* FElement = nullptr; // the owner
  // IntFontSize and Zoom live in TMeasureContext.
  std::unique_ptr<TElementBackground> FBackground; // made by GetBackground
  std::vector<const TCSSValue*> FProps;            // the winning values, heaviest first
  std::vector<TCSSPropValueRec> FLastProps;        // snapshot for change detection
  TCSSGeneralProperties GeneralProps = 0;
  TCSSGeneralProperties RelativeProps = 0; // those holding a percentage or em
  TDisplayStyle FDisplay = dsInline;
  TElementPosition FPosition = epStatic;
  int32_t ZIndex = 0;
  TElementClears Clear = 0;
  THtFontStyles CalculatedTextStyle = 0;
  TWhiteSpace WhiteSpace = wsNormal;
  TCSSWordBreak CalculatedWordBreak = wbNormal;
  TCSSDirection CalculatedDirection = cdLTR;
  float CalculatedOpacity = 1; // product along the ancestors, kept by a host
  TCSSVisibility Visibility = cvVisible;
  // The element's state lives on the node (TCSSElement::CurrentPC), where the
  // selectors read it; ApplyPseudoClass edits it there.
  TFastStringList Transitions; // property name to its transition, owning
  std::unique_ptr<TCSSAnimation> Animation;
  TCSSproperties PropertySet;     // which properties FProps holds with an effective value
  bool FFontSizeResolved = false; // IntFontSize holds FontSize in pixels
  // Percentage bases that are no node field: the viewport, for the root.
  float FViewPortWidth = 0, FViewPortHeight = 0;

  // Virtual operations.
  virtual void DoApplyValue(const TCSSValue* Value, TCSSTokenSequence& Seq);
  // Whether cached drawing of Other can be reused for this style.
  virtual bool Same(const TBaseElementStyle* Other, bool Force) const;
  // Replaces Seq (standing on a var( function) by the variable's tokens.
  virtual void GetCSSVariable(TCSSTokenSequence& Seq);
  virtual void Inherit(const TBaseElementStyle* Parent);
  virtual void Reset(bool KeepLast = false);
  virtual hstring FontFamily();

  // TMeasureContext.
  bool HasParentElement() const override;
  float RootFontSize() const override;
  TRectF DrawRect() const override;
  float ScaleFactor() const override;

  // The parent element's style, or null at the root.
  TBaseElementStyle* ParentStyle() const;

  // Lookup primitives.
  const TCSSValue* InternalFindProp(TCSSProperty Prop) const;
  const TCSSValue* FindProp(TCSSProperty Prop, bool Inherit) const;
  const float* GetPropParent(const TCSSPropRec* PropRec, const float* Parent) const;
  bool GetMeasureProp(TCSSProperty Prop, TMeasure& Measure, bool UseTransition, bool Inherit,
                      const float* Parent);
  bool GetColorProp(TCSSProperty Prop, uint32_t& Color, bool UseTransition, bool Inherit);
  bool GetNumberProp(TCSSProperty Prop, float& Number, bool UseTransition, bool Inherit);
  // The first token's slot of an enumeration property; Default when absent.
  int GetEnumProp(TCSSProperty Prop, bool Inherit, int Default) const;
  // The value that answers for Prop: "inherit" goes on to the parent whatever
  // Inherit says; null when none does.
  const TCSSValue* FindEffective(TCSSProperty Prop, bool Inherit) const;
  // IntFontSize, computed first (for the ancestors too) when not yet known.
  float ResolveFontSize();

  // Measures.
  TMeasure Width();
  TMeasure Height();
  TMeasure MinWidth();
  TMeasure MaxWidth();
  TMeasure MinHeight();
  TMeasure MaxHeight();
  TMeasure Left();
  TMeasure Top();
  TMeasure Right();
  TMeasure Bottom();
  TMeasure MarginLeft();
  TMeasure MarginTop();
  TMeasure MarginRight();
  TMeasure MarginBottom();
  TMeasure PaddingLeft();
  TMeasure PaddingTop();
  TMeasure PaddingRight();
  TMeasure PaddingBottom();
  TMeasure BorderLeftWidth();
  TMeasure BorderTopWidth();
  TMeasure BorderRightWidth();
  TMeasure BorderBottomWidth();
  TMeasure BorderTopLeftRadius();
  TMeasure BorderTopRightRadius();
  TMeasure BorderBottomLeftRadius();
  TMeasure BorderBottomRightRadius();
  TMeasure BorderRadius();
  TMeasure ColumnGap();
  TMeasure ColumnWidth();
  TMeasure FlexBasis();
  TMeasure TextIndent();
  TMeasure LetterSpacing();
  TMeasure WordSpacing();
  TMeasure BorderSpacingX();
  TMeasure BorderSpacingY();
  TMeasure BackgroundPositionX();
  TMeasure BackgroundPositionY();
  TMeasure FontSize();
  TMeasure LineHeight();
  TMeasure TabInterval();
  float MarginLeftPx();
  float MarginTopPx();
  float MarginRightPx();
  float MarginBottomPx();
  float PaddingLeftPx();
  float PaddingTopPx();
  float PaddingRightPx();
  float PaddingBottomPx();
  float BorderLeftWidthPx();
  float BorderTopWidthPx();
  float BorderRightWidthPx();
  float BorderBottomWidthPx();
  float GetMeasurePx(TCSSProperty Prop);

  // Colours (0xAARRGGBB).
  uint32_t TextColor();
  uint32_t BackgroundColor();
  // Side 0..3: top, right, bottom, left.
  uint32_t BorderSideColor(int Side);
  uint32_t BorderLeftColor();
  uint32_t BorderTopColor();
  uint32_t BorderRightColor();
  uint32_t BorderBottomColor();
  uint32_t OutlineColor();
  uint32_t TextDecorationColor();

  // Enumerations.
  TCSSAlignItems AlignItems() const;
  TCSSAlignItems AlignSelf() const;
  TCSSAppearance Appearance() const;
  TBackgroundAttachment BackgroundAttachment() const;
  TBackgroundOrigin BackgroundOrigin() const;
  TBackgroundRepeat BackgroundRepeat() const;
  TBorderCollapse BorderCollapse() const;
  TLineStyle BorderSideStyle(int Side) const;
  TLineStyle BorderLeftStyle() const;
  TLineStyle BorderTopStyle() const;
  TLineStyle BorderRightStyle() const;
  TLineStyle BorderBottomStyle() const;
  TBoxSizing BoxSizing() const;
  TCSSBreakAfter BreakAfter() const;
  TCSSCursor Cursor() const;
  TCSSDirection Direction() const;
  TCSSDraggable Draggable() const;
  TCSSFlexDirection FlexDirection() const;
  TCSSFlexWrap FlexWrap() const;
  TFloat Float() const;
  TCSSHyphens Hyphens() const;
  TCSSJustifyContent JustifyContent() const;
  TCSSListStylePosition ListStylePosition() const;
  TListStyleType ListStyleType() const;
  TLineStyle OutlineStyle() const;
  TElementOverflow OverflowX() const;
  TElementOverflow OverflowY() const;
  TCSSPageBreak PageBreakAfter() const;
  TCSSPageBreak PageBreakBefore() const;
  TCSSPageBreak PageBreakInside() const;
  TCSSPointerEvents PointerEvents() const;
  TElementResize Resize() const;
  TCSSTableLayout TableLayout() const;
  THAlign TextAlign() const;
  TCSSTextDecorationLine TextDecorationLine() const;
  TCSSTextDecorationStyle TextDecorationStyle() const;
  TCSSTextOverflow TextOverflow() const;
  TCSSTextTransform TextTransform() const;
  TCSSUnicodeBidi UnicodeBidi() const;
  TVAlign VerticalAlign() const;
  TCSSWordBreak WordBreak() const;
  TCSSWordWrap WordWrap() const;
  TCSSWritingMode WritingMode() const;

  // Others.
  int ColumnCount() const;
  bool ColumnRule(TCSSColumnRule& Rule);
  bool ContentEditable() const;
  hstring Filter() const;
  float FlexGrow();
  float FlexShrink();
  TCSSFontStyle FontStyle() const;
  // 100 .. 900; normal 400, bold 700.
  int FontWeight() const;
  TElementBackground* GetBackground();
  void GetTransform(TTransform& T, bool UseTransitions);
  bool HasTransform() const;
  bool BoxShadow(TElementShadow& Shadow);
  bool TextShadow(TElementShadow& Shadow);
  bool NoShadow() const;
  bool NoTextShadow() const;
  bool BoxReflect(TBoxReflect& Reflect);
  float Opacity();
  int Page() const;
  hstring PageSize() const;
  bool RunningBlock() const;
  hstring TabStops() const;
  THtFontStyles TextStyle() const;
  float TransitionDelay() const;

  // Cascade machinery.
  // List is sorted by ascending weight; Append keeps the present values behind the new.
  void ApplyValue(const TCSSWeightList& List, bool Append);
  void ApplyValueCaller(const TCSSValue* Value);
  bool ApplyPseudoClass(TCSSPseudoClass Pseudo, bool Active);
  void CalcGeneralProps();
  // Compares with the snapshot: Layout when a changed property affects layout.
  bool StyleChanged(bool& Layout, bool& Repaint);
  void SaveLastProps();
  void SetLastPropValue(const hstring& Name, const hstring& Value);
  bool GetLastColorProp(TCSSProperty Prop, uint32_t& Color) const;
  bool GetLastNumberProp(TCSSProperty Prop, float& Number) const;
  void DeleteProps(const TCSSproperties& Props);
  bool GetTransitionColor(TCSSProperty Prop, uint32_t& Color);
  bool GetTransitionMeasure(TCSSProperty Prop, TMeasure& Measure);
  bool GetTransitionNumber(TCSSProperty Prop, float& Number);
  // The transition of a property (or "all"), or null.
  TCSSTransition* FindTransition(TCSSProperty Prop) const;
  // The running transition of Prop, or null.
  TCSSTransition* ActiveTransition(TCSSProperty Prop) const;
  // The transition entry of Prop itself, made from the "all" entry when only
  // that one covers it; null when no transition covers Prop. With Force an
  // entry is made anyway (key-frame animations move values through it).
  TCSSTransition* StartTransition(TCSSProperty Prop, bool Force = false);
  void AddTransition(TCSSTokenSequence& Seq);
  void AddAnimation(TCSSTokenSequence& Seq);
  TCSSAnimation* CreateAnimation();
  // The eager routines of ApplyValue beside DoApplyValue.
  void DoApplyDisplay(const TCSSValue* Value);
  void DoApplyBackground(const TCSSValue* Value, TCSSTokenSequence& Seq);
  void DoApplyFontWeight(const TCSSValue* Value);
  void DoApplyWhiteSpace(const TCSSValue* Value);

private:
  const float* ContainerWidth();
  const float* ContainerHeight();
};

} // namespace ht
