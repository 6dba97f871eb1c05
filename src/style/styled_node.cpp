// The styled node: tag renames, presentational attributes, classes, flags and
// the host hooks with their defaults.
#include "htcore/style/styled_node.h"

#include "htcore/foundation/convert.h"
#include "htcore/foundation/number_format.h"
#include "htcore/foundation/text_utils.h"
#include "htcore/style/block_floats.h"
#include "htcore/style/css_sheet.h"
#include "style/styled_node_walk.h"

#include <algorithm>
#include <vector>

namespace ht {

namespace {

// The px text of a <font size>: 1..7 name the seven sizes, "+n" is n steps
// above the default 3 and "-n" below it, "12pt" is 12; 0 when nothing fits.
float font_size_px(const hstring& Value) {
  hstring v = Trim(Value);
  if (AnsiEndsWith(v.view(), u"pt") || AnsiEndsWith(v.view(), u"PT"))
    return static_cast<float>(iStrtoFloat(v.view()));
  std::u16string_view t = v.view();
  int n = 0;
  if (!t.empty() && (t[0] == u'+' || t[0] == u'-')) {
    bool plus = t[0] == u'+';
    t.remove_prefix(1);
    if (t.empty() || t[0] < u'0' || t[0] > u'9')
      return 10;
    n = plus ? 3 + iStrtoInt(t) : 3 - iStrtoInt(t);
    n = n < 1 ? 1 : n > 7 ? 7 : n;
  } else if (!t.empty() && t[0] >= u'0' && t[0] <= u'9') {
    n = iStrtoInt(t);
  } else {
    return 10;
  }
  switch (n) {
  case 1:
    return 10;
  case 2:
    return 13;
  case 3:
    return 16;
  case 4:
    return 18;
  case 5:
    return 24;
  case 6:
    return 32;
  case 7:
    return 48;
  default:
    return static_cast<float>(n);
  }
}

// A bare number is a pixel count in an attribute ("120"); anything else goes as written.
hstring attr_length(const hstring& Value) {
  hstring v = Trim(Value);
  std::u16string_view t = v.view();
  if (t.empty())
    return v;
  for (char16_t c : t)
    if ((c < u'0' || c > u'9') && c != u'.')
      return v;
  return v + u"px";
}

} // namespace

// --- Life ---

TStyledHTMLNode::TStyledHTMLNode() = default;

TStyledHTMLNode::~TStyledHTMLNode() {
  Flags |= EFBit(efDestroying);
  ClearSelfStyleSheet();
}

TStyledHTMLNode* TStyledHTMLNode::ParentElement() const { return dynamic_cast<TStyledHTMLNode*>(Parent()); }

std::unique_ptr<TBaseElementStyle> TStyledHTMLNode::CreateStyle() {
  return std::make_unique<TBaseElementStyle>(this);
}

TBaseElementStyle* TStyledHTMLNode::EnsureStyle() {
  if (!FStyle && !FTag.empty())
    FStyle = CreateStyle();
  return FStyle.get();
}

// --- Parsing ---

THtNode* TStyledHTMLNode::InternalParse(THtmlParser& HP) {
  THtNode* result = TCSSElement::InternalParse(HP);
  // Renamed only once the element is built: its end tag still has to find it
  // under the name it was opened with.
  if (FTag.size() > 2 && FTag[0] == u'c' && FTag[1] == u':') {
    hstring colour = FTag.substr(2);
    SetTag(u"span"_hs);
    SetAttribute(u"color"_hs, colour);
  } else if (FParent && FTag == u"body") {
    if (FParent->FTag != u"foreignobject" && (Root()->FTag == u"body" || HasParentTag(u"body"_hs)))
      SetTag(u"xbody"_hs);
  } else if (FParent && FTag == u"html") {
    if (HasParentTag(u"html"_hs) || HasParentTag(u"body"_hs))
      SetTag(u"xhtml"_hs);
  }
  return result;
}

void TStyledHTMLNode::ParseAttributes(THtmlParser& HP) {
  // The class entry of ParseAttribute hashes the classes, so the element's
  // own hashing is passed over.
  THtmlNode::ParseAttributes(HP);
  if (!FAttributes)
    return;
  if (!FClassHashes.empty() && !FAttributes->HasAttribute(u"class"_hs))
    GetClassesHashes();
  for (int i = 0; i < FAttributes->Count; ++i) {
    const THtAttribute& a = FAttributes->GetItem(i);
    hstring name = a.Name, value = a.Value; // ParseAttribute may change the set
    ParseAttribute(name, value);
  }
}

bool TStyledHTMLNode::SetAttribute(const hstring& Name, const hstring& Value) {
  bool changed = THtmlNode::SetAttribute(Name, Value);
  if (!changed)
    return false;
  // The set keeps names in lower case unless it is case-sensitive; the table does too.
  bool upper = FAttributes && !FAttributes->CaseSensitive &&
               std::any_of(Name.begin(), Name.end(), [](char16_t c) { return c >= u'A' && c <= u'Z'; });
  ParseAttribute(upper ? LowerCase(Name.view()) : Name, Value);
  return true;
}

void TStyledHTMLNode::ParseAttribute(const hstring& Name, const hstring& Value) {
  std::u16string_view n = Name.view();
  if (n.empty())
    return;
  const bool empty = Value.empty();
  // An attribute set to an empty text takes its declaration back.
  auto set = [&](std::u16string_view prop, const hstring& v) {
    if (v.empty())
      RemoveVirtualCSS(prop);
    else
      AddVirtualCSS2(hstring(prop), v);
  };
  auto is_body = [&] { return FTag == u"body"; };
  switch (n[0]) {
  case u'a':
    if (n == u"align" && FTag != u"table") {
      if (!empty && (Value[0] == u'c' || Value[0] == u'C'))
        AddVirtualCSS2(u"text-align"_hs, u"xcenter"_hs); // centres blocks too, unlike "center"
      else
        set(u"text-align", Value);
    }
    break;
  case u'b':
    if (n == u"background")
      set(u"background-image", empty ? Value : u"url(\""_hs + Value + u"\")");
    else if (n == u"bgcolor")
      set(u"background-color", Value);
    else if (n == u"bottommargin" && is_body())
      set(u"margin-bottom", empty ? Value : Value + u"px");
    break;
  case u'c':
    if (n == u"color") {
      set(u"color", Value);
    } else if (n == u"class") {
      GetClassesHashes();
      StyleChanged(true);
    } else if (n == u"contenteditable") {
      AddVirtualCSS2(u"contenteditable"_hs, empty ? u"true"_hs : Value);
    }
    break;
  case u'd':
    if (n == u"dir")
      set(u"direction", Value);
    break;
  case u'f':
    if (n == u"face" || n == u"family") {
      set(u"font-family", Value);
    }
    break;
  case u'h':
    if (n == u"height")
      set(u"height", attr_length(Value));
    break;
  case u'l':
    if (n == u"leftmargin" && is_body())
      set(u"margin-left", empty ? Value : Value + u"px");
    break;
  case u'm':
    if (n == u"marginwidth" && is_body()) {
      set(u"margin-left", empty ? Value : Value + u"px");
      set(u"margin-right", empty ? Value : Value + u"px");
    } else if (n == u"marginheight" && is_body()) {
      set(u"margin-top", empty ? Value : Value + u"px");
      set(u"margin-bottom", empty ? Value : Value + u"px");
    }
    break;
  case u'n':
    if (n == u"nowrap")
      AddVirtualCSS2(u"white-space"_hs, u"nowrap"_hs);
    break;
  case u'r':
    if (n == u"rightmargin" && is_body())
      set(u"margin-right", empty ? Value : Value + u"px");
    break;
  case u's':
    if (n == u"style") {
      Flags &= ~EFBit(efSelfStyleProcessed);
      StyleChanged(true);
    } else if (n == u"size" && FTag == u"font") {
      float px = empty ? 0 : font_size_px(Value);
      if (px >= 2)
        AddVirtualCSS2(u"font-size"_hs, HtFormatDecimal(px, 2) + u"px");
      else
        RemoveVirtualCSS(u"font-size");
    }
    break;
  case u't':
    if (n == u"text" && is_body())
      set(u"color", Value);
    else if (n == u"topmargin" && is_body())
      set(u"margin-top", empty ? Value : Value + u"px");
    break;
  case u'v':
    if (n == u"valign") {
      TVAlign va;
      if (IsEnum2(u"va", Trim(Value).view(), va))
        AddVirtualCSS2(u"vertical-align"_hs, Trim(Value));
      else
        RemoveVirtualCSS(u"vertical-align");
    }
    break;
  case u'w':
    if (n == u"width")
      set(u"width", attr_length(Value));
    else if (n == u"wrap") {
      if (SameText(Value.view(), u"soft"))
        AddVirtualCSS2(u"white-space"_hs, u"pre-wrap"_hs);
      else
        RemoveVirtualCSS(u"white-space");
    }
    break;
  default:
    break; // id and the rest: the attribute itself is all there is
  }
}

// --- Classes ---

void TStyledHTMLNode::AddClass(const hstring& CSSClass) { TCSSElement::AddClass(CSSClass); }
void TStyledHTMLNode::RemoveClass(const hstring& CSSClass) { TCSSElement::RemoveClass(CSSClass); }
bool TStyledHTMLNode::HasClass(const hstring& CSSClass) { return TCSSElement::HasClass(CSSClass); }
hstring TStyledHTMLNode::GetStyleClass() const { return GetAttribute(u"class"_hs); }
void TStyledHTMLNode::SetStyleClass(const hstring& Value) { SetAttribute(u"class"_hs, Value); }

void TStyledHTMLNode::SetOuterHTML(const hstring& Value) {
  // The node is parsed anew: what came from its old attributes goes.
  ClearSelfStyleSheet();
  FVirtualSelfStyle.clear();
  Flags &= ~EFBit(efSelfStyleProcessed);
  FClassHashes.clear();
  MultiClass = false;
  TCSSElement::SetOuterHTML(Value);
  StyleChanged(true);
}

hstring TStyledHTMLNode::GetInnerText() { return TCSSElement::GetInnerText(); }

// --- Style state ---

void TStyledHTMLNode::StyleChanged(bool) { Flags &= ~EFBit(efStyleCalculated); }

void TStyledHTMLNode::ResetStyle(bool Recalc) {
  // A recalculation keeps the snapshot, so that its changes can be told.
  if (FStyle)
    FStyle->Reset(Recalc);
  Flags &= ~(EFBit(efStyleCalculated) | EFBit(efPseudoCalculated));
}

// --- Flags ---

namespace {

void apply_flag(TStyledHTMLNode* N, TElementFlag Flag, bool Value) {
  if (Value)
    N->Flags |= EFBit(Flag);
  else
    N->Flags &= ~EFBit(Flag);
}

// A subtree drawn completely is not walked down again.
bool drawn_already(const TStyledHTMLNode* N, TElementFlag Flag, bool Value) {
  return Flag == efCompletelyDrawn && Value && N->HasFlag(efCompletelyDrawn);
}

} // namespace

void TStyledHTMLNode::SetFlag(TElementFlag Flag, bool Value, bool Up, bool Down, const TStyledHTMLNode* Stop) {
  if (Down && !Up && drawn_already(this, Flag, Value))
    return;
  apply_flag(this, Flag, Value);
  if (this == Stop)
    return;
  if (Up)
    for (TStyledHTMLNode* p = ParentElement(); p; p = p->ParentElement()) {
      apply_flag(p, Flag, Value);
      if (p == Stop)
        break;
    }
  if (!Down)
    return;
  // The pseudo elements go down only: their owner has gone up already.
  std::vector<TStyledHTMLNode*> stack;
  detail::PushStyledChildren(stack, this, true);
  while (!stack.empty()) {
    TStyledHTMLNode* n = stack.back();
    stack.pop_back();
    if (drawn_already(n, Flag, Value))
      continue;
    apply_flag(n, Flag, Value);
    if (n != Stop)
      detail::PushStyledChildren(stack, n, true);
  }
}

// --- Host hooks ---

float TStyledHTMLNode::ScaleFactor() const { return 1; }
uint32_t TStyledHTMLNode::GetDefaultTextColor() const { return 0xFF000000; }
hstring TStyledHTMLNode::DefaultFontFamily() const { return u"Times New Roman"_hs; }
THAlign TStyledHTMLNode::DefaultTextAlign() const { return thLeft; }

// The viewport is the root's: a host overrides these in its root class.
float TStyledHTMLNode::GetViewPortWidth() const {
  if (FParent)
    if (auto* root = dynamic_cast<const TStyledHTMLNode*>(const_cast<TStyledHTMLNode*>(this)->Root()))
      return root->GetViewPortWidth();
  return 1024;
}

float TStyledHTMLNode::GetViewPortHeight() const {
  if (FParent)
    if (auto* root = dynamic_cast<const TStyledHTMLNode*>(const_cast<TStyledHTMLNode*>(this)->Root()))
      return root->GetViewPortHeight();
  return 768;
}

TRectF TStyledHTMLNode::GetDrawRect() const { return TRectF{0, 0, GetViewPortWidth(), GetViewPortHeight()}; }

uint32_t TStyledHTMLNode::DefaultBorderColor() const {
  return FStyle ? FStyle->TextColor() : GetDefaultTextColor();
}

TStyledHTMLNode* TStyledHTMLNode::RootNodeElement() { return dynamic_cast<TStyledHTMLNode*>(Root()); }

float TStyledHTMLNode::GetUserWidth() const { return 0; }
float TStyledHTMLNode::GetUserHeight() const { return 0; }
void TStyledHTMLNode::SetUserWidth(float) {}
void TStyledHTMLNode::SetUserHeight(float) {}
void TStyledHTMLNode::UpdatePseudo() {}
float TStyledHTMLNode::VScrollBarWidth() const { return 0; }
float TStyledHTMLNode::HScrollBarHeight() const { return 0; }
float TStyledHTMLNode::MinContentWidth() { return 0; }
float TStyledHTMLNode::MaxContentWidth() { return 0; }
int TStyledHTMLNode::StartLine() const { return 0; }
int TStyledHTMLNode::EndLine() const { return 0; }
void* TStyledHTMLNode::InternalObject() const { return nullptr; }
hstring TStyledHTMLNode::GetCSSContent(const hstring& Text) { return Text; }

bool TStyledHTMLNode::IsText() const { return FTag.empty() || (Flags & EFBit(efText)); }

bool TStyledHTMLNode::IsReplacedElement() const {
  return StrIn(FTag.view(), {u"img", u"input", u"textarea", u"select", u"button", u"iframe", u"object",
                             u"embed", u"video", u"audio", u"canvas", u"svg"});
}

bool TStyledHTMLNode::Visible() const {
  if (IsText())
    return true;
  return FStyle && FStyle->FDisplay != dsNone && FStyle->Visibility == cvVisible;
}

hstring TStyledHTMLNode::Lang() const {
  for (const THtNode* n = this; n; n = n->Parent())
    if (n->Attributes()) {
      hstring l = n->GetAttribute(u"lang"_hs);
      if (l.empty())
        l = n->GetAttribute(u"xml:lang"_hs);
      if (!l.empty())
        return l;
    }
  return hstring();
}

int TStyledHTMLNode::ColumnCount() const { return FStyle ? FStyle->ColumnCount() : 0; }

} // namespace ht
