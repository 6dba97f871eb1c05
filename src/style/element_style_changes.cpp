// Change detection: a snapshot of the winning values, compared after the
// cascade ran again, tells a host whether to lay out or only to repaint.
#include "element_style_util.h"
#include "htcore/foundation/crc32.h"
#include "htcore/style/element_style.h"
#include "htcore/style/styled_node.h"

#include <bit>
#include <cmath>

namespace ht {

namespace {

uint32_t float_bits(float f) { return std::bit_cast<uint32_t>(f); }
float bits_float(uint32_t u) { return std::bit_cast<float>(u); }

bool same_value(float a, float b) {
  const float scale = std::max(std::fabs(a), std::fabs(b));
  return std::fabs(a - b) <= std::max(scale * 1e-5f, 1e-4f);
}

bool is_calc(const TCSSValue& v) { return v.Measure.Value1.Calc != nullptr; }

// The snapshot of one value. Old values are never read again through their
// pointer: a sheet edited by a script may have changed them in place.
TCSSPropValueRec snapshot(TBaseElementStyle& style, const TCSSValue* v) {
  TCSSPropValueRec r;
  r.Value = v;
  r.Prop = v->Prop;
  switch (v->Prop->PropType) {
  case cptLength:
    if (is_calc(*v)) {
      // calc(): the token count and the text of the first operand
      r.AsUnit = static_cast<uint32_t>(v->Tokens.size());
      r.AsNumber = v->Tokens.size() > 2 ? CalcStrCRC32(v->Tokens[2].Name.view()) : 0;
    } else {
      TMeasure m = v->Measure.Value1;
      m.Style = &style;
      m.Parent = style.GetPropParent(v->Prop, nullptr);
      r.AsNumber = float_bits(m.GetAuto() ? 0 : m.GetFPixels());
      r.AsUnit = float_bits(v->Measure.Value1.FValue);
    }
    break;
  case cptNumber:
    r.AsNumber = float_bits(detail::value_number(*v));
    break;
  case cptColor:
    r.AsNumber = v->IsInherit ? kCSSSlotInherit : detail::value_colour(style, *v);
    break;
  case cptEnum:
    r.AsNumber = v->Slot();
    break;
  default:
    r.AsNumber = v->Hash();
    break;
  }
  return r;
}

bool changed(const TCSSPropValueRec& now, const TCSSPropValueRec& last) {
  switch (now.Prop->PropType) {
  case cptLength:
    if (now.Value && is_calc(*now.Value))
      return now.AsUnit != last.AsUnit || now.AsNumber != last.AsNumber;
    return !same_value(bits_float(now.AsUnit), bits_float(last.AsUnit)) ||
           !same_value(bits_float(now.AsNumber), bits_float(last.AsNumber));
  case cptNumber:
    return !same_value(bits_float(now.AsNumber), bits_float(last.AsNumber));
  default:
    return now.AsNumber != last.AsNumber;
  }
}

} // namespace

void TBaseElementStyle::SaveLastProps() {
  FLastProps.clear();
  FLastProps.reserve(FProps.size());
  for (const TCSSValue* v : FProps)
    FLastProps.push_back(snapshot(*this, v));
}

bool TBaseElementStyle::StyleChanged(bool& Layout, bool& Repaint) {
  TCSSproperties seen;
  auto note = [&](const TCSSPropRec* prop) {
    Repaint = true;
    if (prop->AffectsLayout)
      Layout = true;
    return Layout; // once layout is due, nothing more can be learnt
  };
  for (const TCSSValue* v : FProps) {
    const TCSSProperty p = v->Prop->Prop;
    if (seen.Contains(p))
      continue;
    seen.Include(p);
    const TCSSPropValueRec* last = nullptr;
    for (const TCSSPropValueRec& r : FLastProps)
      if (r.Prop && r.Prop->Prop == p) {
        last = &r;
        break;
      }
    if ((!last || changed(snapshot(*this, v), *last)) && note(v->Prop))
      return true;
  }
  for (const TCSSPropValueRec& r : FLastProps)
    if (r.Prop && !seen.Contains(r.Prop->Prop)) {
      seen.Include(r.Prop->Prop); // each once
      if (note(r.Prop))
        return true;
    }
  return Layout || Repaint;
}

void TBaseElementStyle::SetLastPropValue(const hstring& Name, const hstring& Value) {
  const TCSSPropRec* row = CSSPropByName(Name.view());
  if (!row)
    return;
  TCSSPropValueRec* rec = nullptr;
  for (TCSSPropValueRec& r : FLastProps)
    if (r.Prop == row) {
      rec = &r;
      break;
    }
  if (!rec) {
    FLastProps.push_back(TCSSPropValueRec{nullptr, 0, 0, row});
    rec = &FLastProps.back();
  }
  rec->Value = nullptr;
  TCSSValue v;
  v.Name = row->Name;
  v.Tokens = CSSValueTokens(Value);
  if (v.Tokens.empty())
    return;
  TCSSParser::PrepareValue(v, nullptr);
  const TCSSPropValueRec r = snapshot(*this, &v);
  rec->AsNumber = r.AsNumber;
  rec->AsUnit = r.AsUnit;
}

bool TBaseElementStyle::GetLastColorProp(TCSSProperty Prop, uint32_t& Color) const {
  for (const TBaseElementStyle* s = this; s; s = s->ParentStyle()) {
    for (const TCSSPropValueRec& r : s->FLastProps)
      if (r.Prop && r.Prop->Prop == Prop && r.AsNumber != kCSSSlotInherit) {
        Color = r.AsNumber;
        return true;
      }
    if (!s->ParentStyle() && Prop == cspColor && s->FElement) {
      Color = s->FElement->GetDefaultTextColor();
      return true;
    }
  }
  return false;
}

bool TBaseElementStyle::GetLastNumberProp(TCSSProperty Prop, float& Number) const {
  for (const TBaseElementStyle* s = this; s; s = s->ParentStyle())
    for (const TCSSPropValueRec& r : s->FLastProps)
      if (r.Prop && r.Prop->Prop == Prop) {
        Number = bits_float(r.AsNumber);
        return true;
      }
  return false;
}

} // namespace ht
