// Placeholder bodies: each operation answers its "nothing declared" value
// until the computed style is filled in.
#include "htcore/style/element_style.h"

#include "htcore/style/styled_node.h"

namespace ht {

namespace {

TMeasure AutoMeasure() {
  TMeasure m;
  m.Init(nullptr);
  return m;
}

} // namespace

TBaseElementStyle::TBaseElementStyle(TStyledHTMLNode* AElement) : FElement(AElement) {}

TBaseElementStyle::~TBaseElementStyle() = default;

TBaseElementStyle* TBaseElementStyle::ParentStyle() const {
  TStyledHTMLNode* p = FElement ? FElement->ParentElement() : nullptr;
  return p ? p->Style() : nullptr;
}

bool TBaseElementStyle::GetMeasureProp(TCSSProperty, TMeasure& Measure, bool, bool, const float* Parent) {
  Measure.Init(this);
  Measure.Parent = Parent;
  return false;
}

void TBaseElementStyle::DoApplyValue(const TCSSValue*, TCSSTokenSequence&) {}
bool TBaseElementStyle::Same(const TBaseElementStyle*, bool) const { return false; }
void TBaseElementStyle::GetCSSVariable(TCSSTokenSequence&) {}
void TBaseElementStyle::Inherit(const TBaseElementStyle*) {}
void TBaseElementStyle::Reset(bool) {}
hstring TBaseElementStyle::FontFamily() { return hstring(); }
bool TBaseElementStyle::HasParentElement() const { return ParentStyle() != nullptr; }
float TBaseElementStyle::RootFontSize() const { return IntFontSize; }
TRectF TBaseElementStyle::DrawRect() const { return TRectF{0, 0, 0, 0}; }
float TBaseElementStyle::ScaleFactor() const { return 1; }
const TCSSValue* TBaseElementStyle::InternalFindProp(TCSSProperty) const { return nullptr; }
const TCSSValue* TBaseElementStyle::FindProp(TCSSProperty, bool) const { return nullptr; }
const float* TBaseElementStyle::GetPropParent(const TCSSPropRec*, const float*) const { return nullptr; }
bool TBaseElementStyle::GetColorProp(TCSSProperty, uint32_t&, bool, bool) { return false; }
bool TBaseElementStyle::GetNumberProp(TCSSProperty, float&, bool, bool) { return false; }
int TBaseElementStyle::GetEnumProp(TCSSProperty, bool, int) const { return 0; }
TMeasure TBaseElementStyle::Width() { return AutoMeasure(); }
TMeasure TBaseElementStyle::Height() { return AutoMeasure(); }
TMeasure TBaseElementStyle::MinWidth() { return AutoMeasure(); }
TMeasure TBaseElementStyle::MaxWidth() { return AutoMeasure(); }
TMeasure TBaseElementStyle::MinHeight() { return AutoMeasure(); }
TMeasure TBaseElementStyle::MaxHeight() { return AutoMeasure(); }
TMeasure TBaseElementStyle::Left() { return AutoMeasure(); }
TMeasure TBaseElementStyle::Top() { return AutoMeasure(); }
TMeasure TBaseElementStyle::Right() { return AutoMeasure(); }
TMeasure TBaseElementStyle::Bottom() { return AutoMeasure(); }
TMeasure TBaseElementStyle::MarginLeft() { return AutoMeasure(); }
TMeasure TBaseElementStyle::MarginTop() { return AutoMeasure(); }
TMeasure TBaseElementStyle::MarginRight() { return AutoMeasure(); }
TMeasure TBaseElementStyle::MarginBottom() { return AutoMeasure(); }
TMeasure TBaseElementStyle::PaddingLeft() { return AutoMeasure(); }
TMeasure TBaseElementStyle::PaddingTop() { return AutoMeasure(); }
TMeasure TBaseElementStyle::PaddingRight() { return AutoMeasure(); }
TMeasure TBaseElementStyle::PaddingBottom() { return AutoMeasure(); }
TMeasure TBaseElementStyle::BorderLeftWidth() { return AutoMeasure(); }
TMeasure TBaseElementStyle::BorderTopWidth() { return AutoMeasure(); }
TMeasure TBaseElementStyle::BorderRightWidth() { return AutoMeasure(); }
TMeasure TBaseElementStyle::BorderBottomWidth() { return AutoMeasure(); }
TMeasure TBaseElementStyle::BorderTopLeftRadius() { return AutoMeasure(); }
TMeasure TBaseElementStyle::BorderTopRightRadius() { return AutoMeasure(); }
TMeasure TBaseElementStyle::BorderBottomLeftRadius() { return AutoMeasure(); }
TMeasure TBaseElementStyle::BorderBottomRightRadius() { return AutoMeasure(); }
TMeasure TBaseElementStyle::BorderRadius() { return AutoMeasure(); }
TMeasure TBaseElementStyle::ColumnGap() { return AutoMeasure(); }
TMeasure TBaseElementStyle::ColumnWidth() { return AutoMeasure(); }
TMeasure TBaseElementStyle::FlexBasis() { return AutoMeasure(); }
TMeasure TBaseElementStyle::TextIndent() { return AutoMeasure(); }
TMeasure TBaseElementStyle::LetterSpacing() { return AutoMeasure(); }
TMeasure TBaseElementStyle::WordSpacing() { return AutoMeasure(); }
TMeasure TBaseElementStyle::BorderSpacingX() { return AutoMeasure(); }
TMeasure TBaseElementStyle::BorderSpacingY() { return AutoMeasure(); }
TMeasure TBaseElementStyle::BackgroundPositionX() { return AutoMeasure(); }
TMeasure TBaseElementStyle::BackgroundPositionY() { return AutoMeasure(); }
TMeasure TBaseElementStyle::FontSize() { return AutoMeasure(); }
TMeasure TBaseElementStyle::LineHeight() { return AutoMeasure(); }
TMeasure TBaseElementStyle::TabInterval() { return AutoMeasure(); }
float TBaseElementStyle::MarginLeftPx() { return 0; }
float TBaseElementStyle::MarginTopPx() { return 0; }
float TBaseElementStyle::MarginRightPx() { return 0; }
float TBaseElementStyle::MarginBottomPx() { return 0; }
float TBaseElementStyle::PaddingLeftPx() { return 0; }
float TBaseElementStyle::PaddingTopPx() { return 0; }
float TBaseElementStyle::PaddingRightPx() { return 0; }
float TBaseElementStyle::PaddingBottomPx() { return 0; }
float TBaseElementStyle::BorderLeftWidthPx() { return 0; }
float TBaseElementStyle::BorderTopWidthPx() { return 0; }
float TBaseElementStyle::BorderRightWidthPx() { return 0; }
float TBaseElementStyle::BorderBottomWidthPx() { return 0; }
float TBaseElementStyle::GetMeasurePx(TCSSProperty) { return 0; }
uint32_t TBaseElementStyle::TextColor() { return 0xFF000000; }
uint32_t TBaseElementStyle::BackgroundColor() { return 0; }
uint32_t TBaseElementStyle::BorderSideColor(int) { return 0; }
uint32_t TBaseElementStyle::BorderLeftColor() { return 0; }
uint32_t TBaseElementStyle::BorderTopColor() { return 0; }
uint32_t TBaseElementStyle::BorderRightColor() { return 0; }
uint32_t TBaseElementStyle::BorderBottomColor() { return 0; }
uint32_t TBaseElementStyle::OutlineColor() { return 0; }
uint32_t TBaseElementStyle::TextDecorationColor() { return 0; }
TCSSAlignItems TBaseElementStyle::AlignItems() const { return static_cast<TCSSAlignItems>(0); }
TCSSAlignItems TBaseElementStyle::AlignSelf() const { return static_cast<TCSSAlignItems>(0); }
TCSSAppearance TBaseElementStyle::Appearance() const { return static_cast<TCSSAppearance>(0); }
TBackgroundAttachment TBaseElementStyle::BackgroundAttachment() const { return static_cast<TBackgroundAttachment>(0); }
TBackgroundOrigin TBaseElementStyle::BackgroundOrigin() const { return static_cast<TBackgroundOrigin>(0); }
TBackgroundRepeat TBaseElementStyle::BackgroundRepeat() const { return static_cast<TBackgroundRepeat>(0); }
TBorderCollapse TBaseElementStyle::BorderCollapse() const { return static_cast<TBorderCollapse>(0); }
TLineStyle TBaseElementStyle::BorderSideStyle(int) const { return static_cast<TLineStyle>(0); }
TLineStyle TBaseElementStyle::BorderLeftStyle() const { return static_cast<TLineStyle>(0); }
TLineStyle TBaseElementStyle::BorderTopStyle() const { return static_cast<TLineStyle>(0); }
TLineStyle TBaseElementStyle::BorderRightStyle() const { return static_cast<TLineStyle>(0); }
TLineStyle TBaseElementStyle::BorderBottomStyle() const { return static_cast<TLineStyle>(0); }
TBoxSizing TBaseElementStyle::BoxSizing() const { return static_cast<TBoxSizing>(0); }
TCSSBreakAfter TBaseElementStyle::BreakAfter() const { return static_cast<TCSSBreakAfter>(0); }
TCSSCursor TBaseElementStyle::Cursor() const { return static_cast<TCSSCursor>(0); }
TCSSDirection TBaseElementStyle::Direction() const { return static_cast<TCSSDirection>(0); }
TCSSDraggable TBaseElementStyle::Draggable() const { return static_cast<TCSSDraggable>(0); }
TCSSFlexDirection TBaseElementStyle::FlexDirection() const { return static_cast<TCSSFlexDirection>(0); }
TCSSFlexWrap TBaseElementStyle::FlexWrap() const { return static_cast<TCSSFlexWrap>(0); }
TFloat TBaseElementStyle::Float() const { return static_cast<TFloat>(0); }
TCSSHyphens TBaseElementStyle::Hyphens() const { return static_cast<TCSSHyphens>(0); }
TCSSJustifyContent TBaseElementStyle::JustifyContent() const { return static_cast<TCSSJustifyContent>(0); }
TCSSListStylePosition TBaseElementStyle::ListStylePosition() const { return static_cast<TCSSListStylePosition>(0); }
TListStyleType TBaseElementStyle::ListStyleType() const { return static_cast<TListStyleType>(0); }
TLineStyle TBaseElementStyle::OutlineStyle() const { return static_cast<TLineStyle>(0); }
TElementOverflow TBaseElementStyle::OverflowX() const { return static_cast<TElementOverflow>(0); }
TElementOverflow TBaseElementStyle::OverflowY() const { return static_cast<TElementOverflow>(0); }
TCSSPageBreak TBaseElementStyle::PageBreakAfter() const { return static_cast<TCSSPageBreak>(0); }
TCSSPageBreak TBaseElementStyle::PageBreakBefore() const { return static_cast<TCSSPageBreak>(0); }
TCSSPageBreak TBaseElementStyle::PageBreakInside() const { return static_cast<TCSSPageBreak>(0); }
TCSSPointerEvents TBaseElementStyle::PointerEvents() const { return static_cast<TCSSPointerEvents>(0); }
TElementResize TBaseElementStyle::Resize() const { return static_cast<TElementResize>(0); }
TCSSTableLayout TBaseElementStyle::TableLayout() const { return static_cast<TCSSTableLayout>(0); }
THAlign TBaseElementStyle::TextAlign() const { return static_cast<THAlign>(0); }
TCSSTextDecorationLine TBaseElementStyle::TextDecorationLine() const { return static_cast<TCSSTextDecorationLine>(0); }
TCSSTextDecorationStyle TBaseElementStyle::TextDecorationStyle() const { return static_cast<TCSSTextDecorationStyle>(0); }
TCSSTextOverflow TBaseElementStyle::TextOverflow() const { return static_cast<TCSSTextOverflow>(0); }
TCSSTextTransform TBaseElementStyle::TextTransform() const { return static_cast<TCSSTextTransform>(0); }
TCSSUnicodeBidi TBaseElementStyle::UnicodeBidi() const { return static_cast<TCSSUnicodeBidi>(0); }
TVAlign TBaseElementStyle::VerticalAlign() const { return static_cast<TVAlign>(0); }
TCSSWordBreak TBaseElementStyle::WordBreak() const { return static_cast<TCSSWordBreak>(0); }
TCSSWordWrap TBaseElementStyle::WordWrap() const { return static_cast<TCSSWordWrap>(0); }
TCSSWritingMode TBaseElementStyle::WritingMode() const { return static_cast<TCSSWritingMode>(0); }
int TBaseElementStyle::ColumnCount() const { return 0; }
bool TBaseElementStyle::ColumnRule(TCSSColumnRule&) { return false; }
bool TBaseElementStyle::ContentEditable() const { return false; }
hstring TBaseElementStyle::Filter() const { return hstring(); }
float TBaseElementStyle::FlexGrow() { return 0; }
float TBaseElementStyle::FlexShrink() { return 0; }
TCSSFontStyle TBaseElementStyle::FontStyle() const { return static_cast<TCSSFontStyle>(0); }
int TBaseElementStyle::FontWeight() const { return 400; }
TElementBackground* TBaseElementStyle::GetBackground() { return nullptr; }
void TBaseElementStyle::GetTransform(TTransform&, bool) {}
bool TBaseElementStyle::HasTransform() const { return false; }
bool TBaseElementStyle::BoxShadow(TElementShadow&) { return false; }
bool TBaseElementStyle::TextShadow(TElementShadow&) { return false; }
bool TBaseElementStyle::NoShadow() const { return false; }
bool TBaseElementStyle::NoTextShadow() const { return false; }
bool TBaseElementStyle::BoxReflect(TBoxReflect&) { return false; }
float TBaseElementStyle::Opacity() { return 1; }
int TBaseElementStyle::Page() const { return 0; }
hstring TBaseElementStyle::PageSize() const { return hstring(); }
bool TBaseElementStyle::RunningBlock() const { return false; }
hstring TBaseElementStyle::TabStops() const { return hstring(); }
THtFontStyles TBaseElementStyle::TextStyle() const { return 0; }
float TBaseElementStyle::TransitionDelay() const { return 0; }
void TBaseElementStyle::ApplyValue(const TCSSWeightList&, bool) {}
void TBaseElementStyle::ApplyValueCaller(const TCSSValue*) {}
bool TBaseElementStyle::ApplyPseudoClass(TCSSPseudoClass, bool) { return false; }
void TBaseElementStyle::CalcGeneralProps() {}
bool TBaseElementStyle::StyleChanged(bool&, bool&) { return false; }
void TBaseElementStyle::SaveLastProps() {}
void TBaseElementStyle::SetLastPropValue(const hstring&, const hstring&) {}
bool TBaseElementStyle::GetLastColorProp(TCSSProperty, uint32_t&) const { return false; }
bool TBaseElementStyle::GetLastNumberProp(TCSSProperty, float&) const { return false; }
void TBaseElementStyle::DeleteProps(const TCSSproperties&) {}
bool TBaseElementStyle::GetTransitionColor(TCSSProperty, uint32_t&) { return false; }
bool TBaseElementStyle::GetTransitionMeasure(TCSSProperty, TMeasure&) { return false; }
bool TBaseElementStyle::GetTransitionNumber(TCSSProperty, float&) { return false; }
void TBaseElementStyle::AddTransition(TCSSTokenSequence&) {}
void TBaseElementStyle::AddAnimation(TCSSTokenSequence&) {}
TCSSAnimation* TBaseElementStyle::CreateAnimation() { return nullptr; }

} // namespace ht
