// The computed style: its link to the element and the lookup primitives the
// getters are built on.
#include "htcore/style/element_style.h"

#include "element_style_util.h"
#include "htcore/style/styled_node.h"

namespace ht {

TBaseElementStyle::TBaseElementStyle(TStyledHTMLNode* AElement) : FElement(AElement) {
  Transitions.OwnsObjects = true;
}

TBaseElementStyle::~TBaseElementStyle() = default;

TBaseElementStyle* TBaseElementStyle::ParentStyle() const {
  TStyledHTMLNode* p = FElement ? FElement->ParentElement() : nullptr;
  return p ? p->Style() : nullptr;
}

bool TBaseElementStyle::HasParentElement() const { return ParentStyle() != nullptr; }

float TBaseElementStyle::RootFontSize() const {
  TBaseElementStyle* root = const_cast<TBaseElementStyle*>(this);
  if (TStyledHTMLNode* r = FElement ? FElement->RootNodeElement() : nullptr; r && r->Style()) {
    root = r->Style();
  } else {
    while (TBaseElementStyle* p = root->ParentStyle())
      root = p;
  }
  // The root's own rem would ask itself: it falls back to the default.
  if (root == this && !FFontSizeResolved)
    return kDefaultRootFontSize;
  return root->ResolveFontSize();
}

TRectF TBaseElementStyle::DrawRect() const { return FElement ? FElement->GetDrawRect() : TRectF{0, 0, 0, 0}; }

float TBaseElementStyle::ScaleFactor() const { return FElement ? FElement->ScaleFactor() : 1; }

const TCSSValue* TBaseElementStyle::InternalFindProp(TCSSProperty Prop) const {
  for (const TCSSValue* v : FProps)
    if (v->Prop->Prop == Prop)
      return v;
  return nullptr;
}

const TCSSValue* TBaseElementStyle::FindProp(TCSSProperty Prop, bool Inherit) const {
  for (const TBaseElementStyle* s = this; s; s = s->ParentStyle()) {
    if (s->PropertySet.Contains(Prop))
      return s->InternalFindProp(Prop);
    if (!Inherit)
      break;
  }
  return nullptr;
}

const TCSSValue* TBaseElementStyle::FindEffective(TCSSProperty Prop, bool Inherit) const {
  for (const TBaseElementStyle* s = this; s; s = s->ParentStyle()) {
    if (s->PropertySet.Contains(Prop)) {
      const TCSSValue* v = s->InternalFindProp(Prop);
      if (v && !v->IsInherit)
        return v;
      continue; // "inherit" asks the parent, inherited property or not
    }
    if (!Inherit)
      break;
  }
  return nullptr;
}

const float* TBaseElementStyle::ContainerWidth() {
  TStyledHTMLNode* c = FElement ? FElement->Container : nullptr;
  if (!c && FElement)
    c = FElement->ParentElement();
  if (c && c->Style())
    return &c->InnerWidth;
  FViewPortWidth = FElement ? FElement->GetViewPortWidth() : 0;
  return &FViewPortWidth;
}

const float* TBaseElementStyle::ContainerHeight() {
  TStyledHTMLNode* c = FElement ? FElement->Container : nullptr;
  if (!c && FElement)
    c = FElement->ParentElement();
  if (c && c->Style())
    return &c->InnerHeight;
  FViewPortHeight = FElement ? FElement->GetViewPortHeight() : 0;
  return &FViewPortHeight;
}

const float* TBaseElementStyle::GetPropParent(const TCSSPropRec* PropRec, const float* Parent) const {
  auto* self = const_cast<TBaseElementStyle*>(this);
  switch (PropRec->ParentType) {
  case cpptWidth:
    return FElement ? &FElement->InnerWidth : Parent;
  case cpptHeight:
    return FElement ? &FElement->InnerHeight : Parent;
  case cpptFontSize:
    return &IntFontSize;
  case cpptContainerWidth:
    return self->ContainerWidth();
  case cpptContainerHeight:
    return self->ContainerHeight();
  }
  return Parent;
}

bool TBaseElementStyle::GetMeasureProp(TCSSProperty Prop, TMeasure& Measure, bool UseTransition, bool Inherit,
                                       const float* Parent) {
  Measure.Init(this);
  Measure.Parent = Parent;
  // A running transition answers first: a key-frame animation moves values
  // the element does not declare.
  if (UseTransition && Transitions.Count() && GetTransitionMeasure(Prop, Measure)) {
    Measure.Parent = Parent;
    return true;
  }
  if (!Inherit && !PropertySet.Contains(Prop))
    return false;
  ResolveFontSize(); // em reads it
  const TCSSValue* v = FindEffective(Prop, Inherit);
  if (!v)
    return false;
  Measure.Assign(v->Measure.Value1);
  Measure.Style = this;
  Measure.Parent = Parent;
  return true;
}

bool TBaseElementStyle::GetColorProp(TCSSProperty Prop, uint32_t& Color, bool UseTransition, bool Inherit) {
  for (TBaseElementStyle* s = this; s; s = s->ParentStyle()) {
    if (UseTransition && s->Transitions.Count() && s->GetTransitionColor(Prop, Color))
      return true;
    if (s->PropertySet.Contains(Prop)) {
      const TCSSValue* v = s->InternalFindProp(Prop);
      if (v && !v->IsInherit) {
        const uint32_t c = detail::value_colour(*s, *v);
        if (c != HtInvalidColor) {
          Color = c;
          return true;
        }
        if (detail::is_current_colour(*v) && Prop != cspColor) {
          Color = s->TextColor();
          return true;
        }
        // An unknown name reads as no declaration: the colour comes from above, if it inherits.
        if (!Inherit && !detail::is_current_colour(*v))
          break;
      }
      continue;
    }
    if (!Inherit)
      break;
  }
  if (Prop == cspColor && FElement)
    Color = FElement->GetDefaultTextColor();
  return false;
}

bool TBaseElementStyle::GetNumberProp(TCSSProperty Prop, float& Number, bool UseTransition, bool Inherit) {
  for (TBaseElementStyle* s = this; s; s = s->ParentStyle()) {
    if (UseTransition && s->Transitions.Count() && s->GetTransitionNumber(Prop, Number))
      return true;
    if (s->PropertySet.Contains(Prop)) {
      const TCSSValue* v = s->InternalFindProp(Prop);
      if (v && !v->IsInherit) {
        Number = detail::value_number(*v);
        return true;
      }
      continue;
    }
    if (!Inherit)
      break;
  }
  return false;
}

int TBaseElementStyle::GetEnumProp(TCSSProperty Prop, bool Inherit, int Default) const {
  for (const TBaseElementStyle* s = this; s; s = s->ParentStyle()) {
    if (s->PropertySet.Contains(Prop)) {
      const TCSSValue* v = s->InternalFindProp(Prop);
      const uint32_t slot = v ? v->Slot() : kCSSSlotUnknownKeyword;
      if (slot != kCSSSlotInherit)
        return slot == kCSSSlotUnknownKeyword ? Default : static_cast<int>(slot);
      continue;
    }
    if (!Inherit)
      break;
  }
  return Default;
}

float TBaseElementStyle::ResolveFontSize() {
  if (FFontSizeResolved)
    return IntFontSize;
  // Top-down over the ancestors not yet resolved, so a deep tree costs no stack.
  std::vector<TBaseElementStyle*> chain;
  for (TBaseElementStyle* s = this; s && !s->FFontSizeResolved; s = s->ParentStyle())
    chain.push_back(s);
  for (auto it = chain.rbegin(); it != chain.rend(); ++it) {
    TBaseElementStyle* s = *it;
    // Set first: a rem inside the root's own size must not come back here.
    s->FFontSizeResolved = true;
    TMeasure m = s->FontSize();
    s->IntFontSize = m.GetFPixels();
  }
  return IntFontSize;
}

hstring TBaseElementStyle::FontFamily() {
  const TCSSValue* v = FindEffective(cspFontFamily, true);
  hstring name = v ? detail::first_family(*v) : hstring();
  if (name.empty() && FElement)
    return FElement->DefaultFontFamily();
  return name;
}

} // namespace ht
