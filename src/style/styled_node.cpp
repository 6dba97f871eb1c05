// Placeholder bodies: the node answers as an element without style until the
// styled node is filled in.
#include "htcore/style/styled_node.h"

#include "htcore/foundation/text_utils.h"
#include "htcore/style/css_sheet.h"

namespace ht {

// Until the float engine lands.
class TBlockFloats {};

hstring ListCountertoString(TListStyleType, int Value) { return IntToStr(static_cast<int32_t>(Value)); }

TStyledHTMLNode::TStyledHTMLNode() = default;

TStyledHTMLNode::~TStyledHTMLNode() { ClearSelfStyleSheet(); }

TStyledHTMLNode* TStyledHTMLNode::ParentElement() const { return dynamic_cast<TStyledHTMLNode*>(Parent()); }

std::unique_ptr<TBaseElementStyle> TStyledHTMLNode::CreateStyle() {
  return std::make_unique<TBaseElementStyle>(this);
}

TBaseElementStyle* TStyledHTMLNode::EnsureStyle() {
  if (!FStyle && !FTag.empty())
    FStyle = CreateStyle();
  return FStyle.get();
}

void TStyledHTMLNode::CSS(const hstring& Text) { TCSSElement::CSS(Text); }
void TStyledHTMLNode::AddClass(const hstring& CSSClass) { TCSSElement::AddClass(CSSClass); }
void TStyledHTMLNode::RemoveClass(const hstring& CSSClass) { TCSSElement::RemoveClass(CSSClass); }
bool TStyledHTMLNode::HasClass(const hstring& CSSClass) { return TCSSElement::HasClass(CSSClass); }
bool TStyledHTMLNode::SetAttribute(const hstring& Name, const hstring& Value) {
  return TCSSElement::SetAttribute(Name, Value);
}
void TStyledHTMLNode::ParseAttributes(THtmlParser& HP) { TCSSElement::ParseAttributes(HP); }
THtNode* TStyledHTMLNode::InternalParse(THtmlParser& HP) { return TCSSElement::InternalParse(HP); }
void TStyledHTMLNode::SetOuterHTML(const hstring& Value) { TCSSElement::SetOuterHTML(Value); }
void TStyledHTMLNode::SetStyleClass(const hstring& Value) { TCSSElement::SetStyleClass(Value); }
hstring TStyledHTMLNode::GetInnerText() { return TCSSElement::GetInnerText(); }
float TStyledHTMLNode::ScaleFactor() const { return 1; }
uint32_t TStyledHTMLNode::GetDefaultTextColor() const { return 0xFF000000; }
hstring TStyledHTMLNode::DefaultFontFamily() const { return u"Times New Roman"_hs; }
THAlign TStyledHTMLNode::DefaultTextAlign() const { return thLeft; }
float TStyledHTMLNode::GetViewPortWidth() const { return 1024; }
float TStyledHTMLNode::GetViewPortHeight() const { return 768; }
void TStyledHTMLNode::ClearSelfStyleSheet() {}

TRectF TStyledHTMLNode::GetDrawRect() const { return TRectF{0, 0, 0, 0}; }
float TStyledHTMLNode::GetUserWidth() const { return 0; }
float TStyledHTMLNode::GetUserHeight() const { return 0; }
void TStyledHTMLNode::SetUserWidth(float) {}
void TStyledHTMLNode::SetUserHeight(float) {}
hstring TStyledHTMLNode::GetStyleClass() const { return hstring(); }
float TStyledHTMLNode::GetRealLeft() const { return 0; }
float TStyledHTMLNode::GetRealTop() const { return 0; }
float TStyledHTMLNode::GetSurfaceLeft() const { return 0; }
float TStyledHTMLNode::GetSurfaceTop() const { return 0; }
TStyledHTMLNode* TStyledHTMLNode::FindContainer() { return nullptr; }
void TStyledHTMLNode::SetContainer(TStyledHTMLNode*) {}
void TStyledHTMLNode::ResetStyle(bool) {}
hstring TStyledHTMLNode::GetCSSContent(const hstring&) { return hstring(); }
TStyledHTMLNode* TStyledHTMLNode::RootNodeElement() { return nullptr; }
uint32_t TStyledHTMLNode::DefaultBorderColor() const { return 0; }
void TStyledHTMLNode::UpdatePseudo() {}
void TStyledHTMLNode::CalcRects() {}
float TStyledHTMLNode::VScrollBarWidth() const { return 0; }
float TStyledHTMLNode::HScrollBarHeight() const { return 0; }
float TStyledHTMLNode::MinContentWidth() { return 0; }
float TStyledHTMLNode::MaxContentWidth() { return 0; }
void TStyledHTMLNode::ParseAttribute(const hstring&, const hstring&) {}
void TStyledHTMLNode::StyleChanged(bool) {}
TRectF TStyledHTMLNode::Rects() const { return TRectF{0, 0, 0, 0}; }
TRectF TStyledHTMLNode::InnerRect() const { return TRectF{0, 0, 0, 0}; }
bool TStyledHTMLNode::RelativeWidth() { return false; }
int TStyledHTMLNode::StartLine() const { return 0; }
int TStyledHTMLNode::EndLine() const { return 0; }
bool TStyledHTMLNode::Visible() const { return false; }
bool TStyledHTMLNode::IsText() const { return false; }
bool TStyledHTMLNode::IsReplacedElement() const { return false; }
float TStyledHTMLNode::StyleHeight() { return 0; }
void* TStyledHTMLNode::InternalObject() const { return nullptr; }
void TStyledHTMLNode::OffsetRects(float, float) {}
void TStyledHTMLNode::CalcWidth() {}
void TStyledHTMLNode::CalcHeight() {}
void TStyledHTMLNode::CalcNonRelativeProps() {}
void TStyledHTMLNode::CalcRelativeProps() {}
void TStyledHTMLNode::CalcSizeFlags(bool) {}
TRectF TStyledHTMLNode::BorderRect() const { return TRectF{0, 0, 0, 0}; }
TRectF TStyledHTMLNode::PaddingRect() const { return TRectF{0, 0, 0, 0}; }
float TStyledHTMLNode::InnerDeltaX() const { return 0; }
float TStyledHTMLNode::InnerDeltaY() const { return 0; }
float TStyledHTMLNode::OuterDeltaX() const { return 0; }
float TStyledHTMLNode::OuterDeltaY() const { return 0; }
float TStyledHTMLNode::LeftDelta() const { return 0; }
float TStyledHTMLNode::TopDelta() const { return 0; }
float TStyledHTMLNode::RightDelta() const { return 0; }
float TStyledHTMLNode::BottomDelta() const { return 0; }
float TStyledHTMLNode::MinWidth() { return 0; }
float TStyledHTMLNode::MaxWidth() { return 0; }
float TStyledHTMLNode::MinHeight() { return 0; }
float TStyledHTMLNode::MaxHeight() { return 0; }
void TStyledHTMLNode::GrowtoContainer() {}
float TStyledHTMLNode::RTLInc() const { return 0; }
bool TStyledHTMLNode::IsBlock() const { return false; }
bool TStyledHTMLNode::IsBlockOrInlineBlock() const { return false; }
bool TStyledHTMLNode::IsBlockContainer() const { return false; }
bool TStyledHTMLNode::IsAbsoluteContainer() const { return false; }
bool TStyledHTMLNode::OutofFlow() const { return false; }
bool TStyledHTMLNode::IsRunning() const { return false; }
bool TStyledHTMLNode::IsAbsoluteOrRunning() const { return false; }
bool TStyledHTMLNode::IsTransformed() const { return false; }
bool TStyledHTMLNode::IsLineBreak() const { return false; }
bool TStyledHTMLNode::SameLine(const TStyledHTMLNode*) const { return false; }
bool TStyledHTMLNode::MarginCollapsibleSibling() const { return false; }
TStyledHTMLNode* TStyledHTMLNode::PreviousMarginElement() const { return nullptr; }
TStyledHTMLNode* TStyledHTMLNode::AbsoluteParent() const { return nullptr; }
TStyledHTMLNode* TStyledHTMLNode::NearestBlockParent() const { return nullptr; }
TStyledHTMLNode* TStyledHTMLNode::BlockContainer() const { return nullptr; }
TStyledHTMLNode* TStyledHTMLNode::FirstNonEmptyChild() const { return nullptr; }
TStyledHTMLNode* TStyledHTMLNode::LastNonEmptyChild() const { return nullptr; }
hstring TStyledHTMLNode::Lang() const { return hstring(); }
int TStyledHTMLNode::ColumnCount() const { return 0; }
void TStyledHTMLNode::SetFlag(TElementFlag, bool, bool, bool, const TStyledHTMLNode*) {}
void TStyledHTMLNode::AddCSS(const hstring&, bool, uint32_t) {}
void TStyledHTMLNode::AddVirtualCSS(const hstring&) {}
void TStyledHTMLNode::AddVirtualCSS2(const hstring&, const hstring&) {}
void TStyledHTMLNode::ClearCSS(const hstring&, bool) {}
void TStyledHTMLNode::AddCSSRecursive(const hstring&, bool) {}
void TStyledHTMLNode::ClearCSSRecursive(const hstring&, bool) {}
void TStyledHTMLNode::UniqueSelfStyle() {}
TCSSStyleSheet* TStyledHTMLNode::PrepareSelfStyle() { return SelfStyleSheet; }
void TStyledHTMLNode::ResetCSSCounter(const hstring&, int) {}
void TStyledHTMLNode::IncrementCSSCounter(const hstring&) {}
int TStyledHTMLNode::CSSCounterValue(const hstring&) const { return 0; }

} // namespace ht
