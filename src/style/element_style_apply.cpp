// The cascade's side of the style: taking the winning values, the routines
// that apply a few of them at once, and the summary flags of the box.
#include "element_style_util.h"
#include "htcore/style/element_style.h"
#include "htcore/style/styled_node.h"

#include <algorithm>
#include <cmath>

namespace ht {

namespace {

bool is_margin(TCSSProperty p) {
  return p == cspMargin || p == cspMarginLeft || p == cspMarginTop || p == cspMarginRight ||
         p == cspMarginBottom;
}

// A duration or delay: seconds times 1000, any other unit as it stands;
// rounded, and held in 0 .. kMaxAnimationTime.
int animation_ms(const TCSSToken& t) {
  double v = t.AsFloat;
  if (t.CType == ctDimension && t.MUnit == muS)
    v *= 1000;
  if (!(v > 0))
    return 0;
  return v >= kMaxAnimationTime ? kMaxAnimationTime : static_cast<int>(std::lround(v));
}

// A keyword field takes the slot, or the parent's value for "inherit".
template <class E> void take_slot(E& field, uint32_t slot, bool inherit, const E* parent, E initial, E last) {
  if (inherit)
    field = parent ? *parent : initial;
  else if (slot <= static_cast<uint32_t>(last))
    field = static_cast<E>(slot);
}

constexpr THtFontStyles kWeightBits = HtFontStyleBit(hfsBold) | HtFontStyleBit(hfsBlack) |
                                      HtFontStyleBit(hfsSemibold) | HtFontStyleBit(hfsLight) |
                                      HtFontStyleBit(hfsUltraLight);
constexpr THtFontStyles kLineBits = HtFontStyleBit(hfsUnderline) | HtFontStyleBit(hfsStrikeOut);

} // namespace

void TBaseElementStyle::ApplyValue(const TCSSWeightList& List, bool Append) {
  const size_t count = static_cast<size_t>(List.Count());
  FFontSizeResolved = false;
  std::vector<const TCSSValue*> old;
  if (!Append) {
    FProps.clear();
    FProps.reserve(count);
    PropertySet.Clear();
    if (count == 0) {
      CalcGeneralProps();
      return;
    }
  } else {
    old.swap(FProps);
    FProps.reserve(count + old.size());
  }
  // Heaviest first; the first value of a property seen wins.
  for (int i = List.Count() - 1; i >= 0; --i) {
    const TCSSValue* v = List.GetValue(i);
    if (!v || !v->Prop)
      continue;
    const TCSSProperty p = v->Prop->Prop;
    if (!Append) {
      if (PropertySet.Contains(p))
        continue;
      PropertySet.Include(p);
    }
    FProps.push_back(v);
  }
  FProps.insert(FProps.end(), old.begin(), old.end());
  // Lightest first, so a heavier value applied to a field overwrites a lighter one.
  for (int i = 0; i < List.Count(); ++i) {
    const TCSSValue* v = List.GetValue(i);
    if (!v || !v->Prop)
      continue;
    const TCSSProperty p = v->Prop->Prop;
    const bool function = !v->Tokens.empty() && v->Tokens[0].CType == ctFunction;
    // An auto length reads as absent, except for margins, where auto centres.
    if (v->Prop->PropType == cptLength && !is_margin(p) && v->Measure.Value1.GetAuto() && !function)
      PropertySet.Exclude(p);
    else
      PropertySet.Include(p);
    if (v->Apply != cakNone)
      ApplyValueCaller(v);
  }
  CalcGeneralProps();
}

void TBaseElementStyle::ApplyValueCaller(const TCSSValue* Value) {
  TCSSTokenSequence seq = detail::value_seq(*Value);
  switch (Value->Apply) {
  case cakGeneral:
    DoApplyValue(Value, seq);
    break;
  case cakBackground:
    DoApplyBackground(Value, seq);
    break;
  case cakDisplay:
    DoApplyDisplay(Value);
    break;
  case cakFontWeight:
    DoApplyFontWeight(Value);
    break;
  case cakWhiteSpace:
    DoApplyWhiteSpace(Value);
    break;
  default:
    break;
  }
}

void TBaseElementStyle::DoApplyDisplay(const TCSSValue* Value) {
  const TBaseElementStyle* p = ParentStyle();
  const uint32_t slot = Value->Slot();
  take_slot(FDisplay, slot, slot == kCSSSlotInherit, p ? &p->FDisplay : nullptr, dsInline, dsInlineTable);
}

void TBaseElementStyle::DoApplyBackground(const TCSSValue* Value, TCSSTokenSequence& Seq) {
  TElementBackground* bg = GetBackground();
  bg->Parse(Seq);
  if (Value->Section)
    bg->BaseURL = Value->Section->URL;
}

void TBaseElementStyle::DoApplyWhiteSpace(const TCSSValue* Value) {
  const TBaseElementStyle* p = ParentStyle();
  const uint32_t slot = Value->Slot();
  take_slot(WhiteSpace, slot, slot == kCSSSlotInherit, p ? &p->WhiteSpace : nullptr, wsNormal, wsPreWrap);
}

void TBaseElementStyle::DoApplyFontWeight(const TCSSValue* Value) {
  if (Value->Tokens.empty())
    return;
  const TCSSToken& t = Value->Tokens[0];
  const uint32_t slot = Value->Slot();
  if (slot == kCSSSlotInherit) {
    const TBaseElementStyle* p = ParentStyle();
    CalculatedTextStyle =
        (CalculatedTextStyle & ~kWeightBits) | (p ? p->CalculatedTextStyle & kWeightBits : 0);
    return;
  }
  CalculatedTextStyle &= static_cast<THtFontStyles>(~kWeightBits);
  if (t.CType == ctIdent) {
    if (slot == fwBold || slot == fwBolder)
      CalculatedTextStyle |= HtFontStyleBit(hfsBold);
    else if (slot == fwLighter)
      CalculatedTextStyle |= HtFontStyleBit(hfsUltraLight);
    return;
  }
  if (t.CType != ctNumber)
    return;
  const float n = detail::token_text_number(t);
  if (n > 700)
    CalculatedTextStyle |= HtFontStyleBit(hfsBlack);
  else if (n > 600)
    CalculatedTextStyle |= HtFontStyleBit(hfsBold);
  else if (n > 500)
    CalculatedTextStyle |= HtFontStyleBit(hfsSemibold);
  else if (n < 300)
    CalculatedTextStyle |= HtFontStyleBit(hfsUltraLight);
  else if (n < 400)
    CalculatedTextStyle |= HtFontStyleBit(hfsLight);
}

void TBaseElementStyle::DoApplyValue(const TCSSValue* Value, TCSSTokenSequence& Seq) {
  if (!Value->Prop || Value->Prop->Prop < 2 || Value->Tokens.empty())
    return;
  if (Seq.T && Seq.T->CType == ctFunction && Seq.T->Name == u"var")
    GetCSSVariable(Seq);
  if (!Seq.T)
    return;
  const TCSSToken& t = *Seq.T;
  const uint32_t slot = Value->Slot();
  const bool inherit = slot == kCSSSlotInherit && Value->IsInherit;
  const TBaseElementStyle* parent = ParentStyle();
  switch (Value->Prop->Prop) {
  case cspPosition:
    if (inherit)
      FPosition = parent ? parent->FPosition : epStatic;
    else if (slot <= epSticky)
      FPosition = slot == epSticky ? epStatic : static_cast<TElementPosition>(slot);
    break;
  case cspTransition:
    AddTransition(Seq);
    break;
  case cspTextDecoration:
    if (inherit) {
      if (parent)
        CalculatedTextStyle = parent->CalculatedTextStyle;
    } else {
      CalculatedTextStyle = (CalculatedTextStyle & ~kLineBits) | (slot & kLineBits);
    }
    break;
  case cspTextDecorationLine:
    if (inherit) {
      if (parent && (parent->CalculatedTextStyle & HtFontStyleBit(hfsUnderline)))
        CalculatedTextStyle |= HtFontStyleBit(hfsUnderline);
    } else if (slot == tlNone) {
      CalculatedTextStyle &= static_cast<THtFontStyles>(~kLineBits);
    } else if (slot == tlUnderline) {
      CalculatedTextStyle |= HtFontStyleBit(hfsUnderline);
    } else if (slot == tlLineThrough) {
      CalculatedTextStyle |= HtFontStyleBit(hfsStrikeOut);
    }
    break;
  case cspFontStyle:
    if (inherit) {
      CalculatedTextStyle = (CalculatedTextStyle & ~HtFontStyleBit(hfsItalic)) |
                            (parent ? parent->CalculatedTextStyle & HtFontStyleBit(hfsItalic) : 0);
    } else if (slot == cfsItalic) {
      CalculatedTextStyle |= HtFontStyleBit(hfsItalic);
    } else {
      CalculatedTextStyle &= static_cast<THtFontStyles>(~HtFontStyleBit(hfsItalic));
    }
    break;
  case cspBackgroundColor:
    // A colour replaces a gradient of a lighter rule, not one declared beside it.
    if (FBackground) {
      const TCSSValue* image = InternalFindProp(cspBackgroundImage);
      if (!image || image->Section != Value->Section)
        FBackground->Gradient.Stops.clear();
    }
    break;
  case cspBackgroundImage: {
    TElementBackground* bg = GetBackground();
    bg->Parse(Seq);
    if (Value->Section)
      bg->BaseURL = Value->Section->URL;
    break;
  }
  case cspBackgroundPositionX:
    GetBackground()->PositionX.Decode(Seq);
    GetBackground()->PositionX.Style = this;
    break;
  case cspbackgroundPositionY:
    GetBackground()->PositionY.Decode(Seq);
    GetBackground()->PositionY.Style = this;
    break;
  case cspBackgroundPosition: {
    TElementBackground* bg = GetBackground();
    TMeasure first, second;
    first.Init(this);
    second.Init(this);
    first.Decode(Seq);
    const bool vertical_first = first.Flags.Contains(mfTop) || first.Flags.Contains(mfBottom);
    bool two = Seq.Next();
    if (two)
      second.Decode(Seq);
    else {
      second = first; // one value: the other axis is centred
      second.Flags = {mfNotAuto, mfCenter};
      second.FMUnit = muPercent;
      second.FValue = 50;
    }
    bg->PositionX = vertical_first ? second : first;
    bg->PositionY = vertical_first ? first : second;
    break;
  }
  case cspBackgroundAttachment: {
    TBackgroundAttachment a;
    if (t.CType == ctIdent && IsEnum2(u"ba", t.Name.view(), a))
      GetBackground()->Attachment = a;
    break;
  }
  case cspBackgroundSize: {
    TElementBackground* bg = GetBackground();
    if (detail::is_word(t, u"cover")) {
      bg->SizeKind = bsCover;
    } else if (detail::is_word(t, u"contain")) {
      bg->SizeKind = bsContain;
    } else {
      bg->SizeKind = bsSize;
      bg->SizeX.Init(this);
      bg->SizeX.Decode(Seq);
      bg->SizeY.Init(this);
      if (Seq.Next())
        bg->SizeY.Decode(Seq);
      if (bg->SizeX.GetAuto() && bg->SizeY.GetAuto())
        bg->SizeKind = bsAuto;
    }
    break;
  }
  case cspVisibility:
    take_slot(Visibility, slot, inherit, parent ? &parent->Visibility : nullptr, cvVisible, cvHidden);
    break;
  case cspZIndex:
    ZIndex = static_cast<int32_t>(std::min(detail::value_number(*Value), 100000000.0f));
    break;
  case cspDirection:
    take_slot(CalculatedDirection, slot, inherit, parent ? &parent->CalculatedDirection : nullptr, cdLTR,
              cdRTL);
    break;
  case cspWordWrap:
    if (slot == wwBreakWord)
      CalculatedWordBreak = wbBreakWord;
    break;
  case cspWordBreak:
    take_slot(CalculatedWordBreak, slot, inherit, parent ? &parent->CalculatedWordBreak : nullptr, wbNormal,
              wbHyphens);
    break;
  case cspZoom: {
    float z = detail::value_number(*Value);
    if (t.CType == ctPercentage)
      z /= 100;
    if (z > 0)
      Zoom = z;
    break;
  }
  case cspHyphens:
    if (slot == chAuto)
      CalculatedWordBreak = wbHyphens;
    break;
  case cspAnimation:
    AddAnimation(Seq);
    break;
  case cspAnimationName:
    CreateAnimation()->Name = t.Name;
    break;
  case cspAnimationDuration:
    CreateAnimation()->Duration = animation_ms(t);
    break;
  case cspAnimationTimingFunction: {
    TCSSTiming tm;
    if (t.CType == ctIdent && IsEnum2(u"tm", t.Name.view(), tm))
      CreateAnimation()->Timing = tm;
    break;
  }
  case cspClear:
    if (detail::is_word(t, u"left"))
      Clear = 1;
    else if (detail::is_word(t, u"right"))
      Clear = 2;
    else if (detail::is_word(t, u"both"))
      Clear = 3;
    break;
  case cspCounterReset:
    if (FElement && t.CType == ctIdent && !detail::is_word(t, u"none")) {
      const int n = Value->Tokens.size() > 1 && Value->Tokens[1].CType == ctNumber
                        ? static_cast<int>(Value->Tokens[1].AsFloat)
                        : 0;
      FElement->ResetCSSCounter(t.Name, n);
    }
    break;
  case cspCounterIncrement:
    if (FElement && t.CType == ctIdent && !detail::is_word(t, u"none"))
      FElement->IncrementCSSCounter(t.Name);
    break;
  case cspTransitionDuration:
    for (int i = 0; i < Transitions.Count(); ++i)
      if (auto* tr = static_cast<TCSSTransition*>(Transitions.Objects(i)))
        tr->Duration = animation_ms(t);
    break;
  default:
    break; // the presentation properties of SVG are a host's
  }
}

void TBaseElementStyle::CalcGeneralProps() {
  GeneralProps = 0;
  RelativeProps = 0;
  auto mark = [this](TCSSGeneralProperty g, const TMeasure& m) {
    GeneralProps |= CGBit(g);
    if (m.FMUnit == muPercent || m.FMUnit == muEM)
      RelativeProps |= CGBit(g);
  };
  for (const TCSSValue* v : FProps) {
    const TCSSProperty p = v->Prop->Prop;
    const TMeasure& m = v->Measure.Value1;
    switch (p) {
    case cspBorderTopStyle:
    case cspBorderRightStyle:
    case cspBorderBottomStyle:
    case cspBorderLeftStyle:
      if (v->Slot() > 0 && v->Slot() != kCSSSlotUnknownKeyword)
        GeneralProps |= CGBit(cgBorder);
      break;
    case cspBorderRadius:
      GeneralProps |= CGBit(cgBorder);
      break;
    case cspMarginLeft:
    case cspMarginTop:
    case cspMarginRight:
    case cspMarginBottom:
      if (m.FValue != 0 || m.Calc)
        mark(cgMargin, m);
      break;
    case cspPaddingLeft:
    case cspPaddingTop:
    case cspPaddingRight:
    case cspPaddingBottom: {
      const bool function = !v->Tokens.empty() && v->Tokens[0].CType == ctFunction;
      if (!m.GetAuto() && (m.FValue != 0 || m.Calc || function))
        mark(cgPadding, m);
      break;
    }
    case cspBackgroundColor: {
      if (v->Tokens.empty())
        break;
      const TCSSToken& t = v->Tokens[0];
      if (v->IsInherit) {
        const TBaseElementStyle* parent = ParentStyle();
        if (parent && (parent->GeneralProps & CGBit(cgBackground)))
          GeneralProps |= CGBit(cgBackground);
      } else if (!detail::is_word(t, u"none") && !detail::is_word(t, u"transparent")) {
        GeneralProps |= CGBit(cgBackground);
      }
      break;
    }
    case cspBackground:
      if (v->IsInherit) {
        const TBaseElementStyle* parent = ParentStyle();
        if (parent && (parent->GeneralProps & CGBit(cgBackground)))
          GeneralProps |= CGBit(cgBackground);
      }
      break;
    case cspBackgroundImage:
      // The shorthand always names an image, "none" when it has none.
      if (!v->Tokens.empty() && !detail::is_word(v->Tokens[0], u"none"))
        GeneralProps |= CGBit(cgBackground);
      break;
    default:
      break;
    }
  }
  if (!(GeneralProps & CGBit(cgBorder)) &&
      (PropertySet.Contains(cspBorder) || PropertySet.Contains(cspBorderTop) ||
       PropertySet.Contains(cspBorderRight) || PropertySet.Contains(cspBorderBottom) ||
       PropertySet.Contains(cspBorderLeft))) {
    // The side shorthands have no longhands: the getters read them.
    if (BorderTopWidthPx() > 0 || BorderRightWidthPx() > 0 || BorderBottomWidthPx() > 0 ||
        BorderLeftWidthPx() > 0)
      GeneralProps |= CGBit(cgBorder);
  }
}

void TBaseElementStyle::Reset(bool KeepLast) {
  FBackground.reset();
  FDisplay = dsInline;
  FPosition = epStatic;
  ZIndex = 0;
  Clear = 0;
  CalculatedTextStyle = 0;
  Zoom = 1;
  WhiteSpace = wsNormal;
  CalculatedWordBreak = wbNormal;
  CalculatedDirection = cdLTR;
  CalculatedOpacity = 1;
  Visibility = cvVisible;
  if (Animation)
    Animation->Active = false;
  // Transitions stay (animations may point into them); the next cascade
  // declares again the ones that still apply.
  for (int i = 0; i < Transitions.Count(); ++i)
    if (auto* t = static_cast<TCSSTransition*>(Transitions.Objects(i)))
      t->Duration = 0;
  PropertySet.Clear();
  FProps.clear();
  GeneralProps = 0;
  RelativeProps = 0;
  FFontSizeResolved = false;
  if (!KeepLast)
    FLastProps.clear();
}

void TBaseElementStyle::Inherit(const TBaseElementStyle* Parent) {
  if (!Parent)
    return;
  // What the element declares itself stays; the rest comes from the parent.
  if (!PropertySet.Contains(cspDirection))
    CalculatedDirection = Parent->CalculatedDirection;
  if (FElement && FElement->QuirksMode() && FElement->Tag() == u"table")
    return;
  if (Parent->Zoom != 1 && !PropertySet.Contains(cspZoom))
    Zoom = Parent->Zoom;
  if (!PropertySet.Contains(cspWhiteSpace))
    WhiteSpace = Parent->WhiteSpace;
  if (!PropertySet.Contains(cspWordBreak) && !PropertySet.Contains(cspWordWrap) &&
      !PropertySet.Contains(cspHyphens))
    CalculatedWordBreak = Parent->CalculatedWordBreak;
  THtFontStyles from_parent = 0;
  if (!PropertySet.Contains(cspFontWeight))
    from_parent |= kWeightBits;
  if (!PropertySet.Contains(cspFontStyle))
    from_parent |= HtFontStyleBit(hfsItalic);
  if (!PropertySet.Contains(cspTextDecoration) && !PropertySet.Contains(cspTextDecorationLine))
    from_parent |= kLineBits;
  CalculatedTextStyle = (CalculatedTextStyle & ~from_parent) | (Parent->CalculatedTextStyle & from_parent);
}

bool TBaseElementStyle::ApplyPseudoClass(TCSSPseudoClass Pseudo, bool Active) {
  if (!FElement)
    return false;
  const TCSSPseudoClasses before = FElement->CurrentPC;
  if (Active)
    FElement->CurrentPC |= PCBit(Pseudo);
  else
    FElement->CurrentPC &= ~PCBit(Pseudo);
  if (FElement->CurrentPC == before)
    return false;
  if (TStyledHTMLNode* p = FElement->ParentElement())
    p->StyleChanged(true);
  FElement->StyleChanged(true);
  return true;
}

void TBaseElementStyle::DeleteProps(const TCSSproperties& Props) {
  std::erase_if(FProps, [&](const TCSSValue* v) { return Props.Contains(v->Prop->Prop); });
  for (int p = 0; p < kCSSPropertyCount; ++p)
    if (Props.Contains(static_cast<TCSSProperty>(p)))
      PropertySet.Exclude(static_cast<TCSSProperty>(p));
}

bool TBaseElementStyle::Same(const TBaseElementStyle* Other, bool Force) const {
  if (Force)
    return true;
  if (!Other || FProps.size() != Other->FProps.size())
    return false;
  if (!FBackground && !Other->FBackground)
    return true;
  if (!FBackground || !Other->FBackground)
    return false;
  return FBackground->Gradient.Stops == Other->FBackground->Gradient.Stops &&
         FBackground->Image == Other->FBackground->Image;
}

void TBaseElementStyle::GetCSSVariable(TCSSTokenSequence&) {}

// --- transitions and animations: the declarations and the values in flight ---

TCSSTransition* TBaseElementStyle::FindTransition(TCSSProperty Prop) const {
  const TCSSPropRec* row = CSSPropRow(Prop);
  TCSSTransition* all = nullptr;
  for (int i = 0; i < Transitions.Count(); ++i) {
    auto* t = static_cast<TCSSTransition*>(Transitions.Objects(i));
    if (!t)
      continue;
    if (row && t->Name == row->Name)
      return t;
    if (t->Name == u"all")
      all = t;
  }
  return all;
}

TCSSTransition* TBaseElementStyle::ActiveTransition(TCSSProperty Prop) const {
  const TCSSPropRec* row = CSSPropRow(Prop);
  if (!row)
    return nullptr;
  for (int i = 0; i < Transitions.Count(); ++i) {
    auto* t = static_cast<TCSSTransition*>(Transitions.Objects(i));
    if (t && t->Prop == row && t->Active.load(std::memory_order_relaxed))
      return t;
  }
  return nullptr;
}

TCSSTransition* TBaseElementStyle::StartTransition(TCSSProperty Prop, bool Force) {
  const TCSSPropRec* row = CSSPropRow(Prop);
  if (!row)
    return nullptr;
  TCSSTransition* t = FindTransition(Prop);
  if (t && t->Prop == row)
    return t;
  if (!Force && (!t || t->Duration <= 0))
    return nullptr;
  // Entries live as long as the style: a running animation points into them.
  auto own = std::make_unique<TCSSTransition>();
  if (t)
    own->Assign(*t);
  own->Active.store(false);
  own->Name = row->Name;
  own->Prop = row;
  TCSSTransition* made = own.get();
  Transitions.AddObject(row->Name, own.release());
  return made;
}

bool TBaseElementStyle::GetTransitionColor(TCSSProperty Prop, uint32_t& Color) {
  const TCSSTransition* t = ActiveTransition(Prop);
  if (!t || !t->IsColor)
    return false;
  Color = t->GetColor();
  return true;
}

bool TBaseElementStyle::GetTransitionMeasure(TCSSProperty Prop, TMeasure& Measure) {
  const TCSSTransition* t = ActiveTransition(Prop);
  if (!t || t->IsColor)
    return false;
  const float px = t->GetNumber();
  Measure.Init(this);
  Measure.SetFPixels(Zoom > 0 ? px / Zoom : px);
  return true;
}

bool TBaseElementStyle::GetTransitionNumber(TCSSProperty Prop, float& Number) {
  const TCSSTransition* t = ActiveTransition(Prop);
  if (!t || t->IsColor)
    return false;
  Number = t->GetNumber();
  return true;
}

void TBaseElementStyle::AddTransition(TCSSTokenSequence& Seq) {
  // Entries are never freed here: an animation may be moving their values.
  // One declared again is updated; the first of a name in a list wins.
  std::vector<hstring> seen;
  auto add = [&](const hstring& name, int duration, int delay, TCSSTiming timing) {
    if (std::find(seen.begin(), seen.end(), name) != seen.end())
      return;
    seen.push_back(name);
    TCSSTransition* t = nullptr;
    if (int i = Transitions.IndexOf(name); i >= 0)
      t = static_cast<TCSSTransition*>(Transitions.Objects(i));
    if (!t) {
      auto own = std::make_unique<TCSSTransition>();
      own->Name = name;
      if (const TCSSPropRec* row = CSSPropDictionary().Find(name.view()); row && row->Prop != cspUnknown)
        own->Prop = row;
      t = own.get();
      Transitions.AddObject(name, own.release());
    }
    t->Duration = duration;
    t->Delay = delay;
    t->Timing = timing;
  };
  while (Seq.T) {
    hstring name;
    int duration = -1, delay = -1;
    TCSSTiming timing = tmEase;
    for (; Seq.T && Seq.T->CType != ctComma; Seq.Next()) {
      const TCSSToken& t = *Seq.T;
      TCSSTiming tm;
      if (t.CType == ctIdent && IsEnum2(u"tm", t.Name.view(), tm)) {
        timing = tm;
      } else if (t.CType == ctIdent && name.empty()) {
        name = LowerCase(t.Name.view());
      } else if (t.CType == ctFunction) {
        SkipCSSFunction(Seq); // cubic-bezier(), steps(): the timing stays ease
        if (!Seq.T)
          break;
      } else if (t.CType == ctDimension) {
        (duration < 0 ? duration : delay) = animation_ms(t);
      }
    }
    if (duration < 0)
      break; // a group without a duration ends the list
    if (name.empty())
      name = u"all"_hs;
    if (name == u"background") {
      add(u"background-color"_hs, duration, delay, timing);
      add(u"background-image"_hs, duration, delay, timing);
    } else if (name != u"none") {
      add(name, duration, delay, timing);
    }
    if (Seq.T)
      Seq.Next();
  }
}

TCSSAnimation* TBaseElementStyle::CreateAnimation() {
  if (!Animation)
    Animation = std::make_unique<TCSSAnimation>();
  return Animation.get();
}

void TBaseElementStyle::AddAnimation(TCSSTokenSequence& Seq) {
  hstring name;
  int duration = -1, delay = 0, count = 1;
  TCSSTiming timing = tmEase;
  for (; Seq.T && Seq.T->CType != ctComma; Seq.Next()) {
    const TCSSToken& t = *Seq.T;
    TCSSTiming tm;
    if (t.CType == ctIdent && IsEnum2(u"tm", t.Name.view(), tm)) {
      timing = tm;
    } else if (t.CType == ctIdent && detail::is_word(t, u"infinite")) {
      count = -1;
    } else if ((t.CType == ctIdent || t.CType == ctString) && name.empty() &&
               !detail::is_word(t, u"alternate") && !detail::is_word(t, u"forwards") &&
               !detail::is_word(t, u"backwards") && !detail::is_word(t, u"both") && !detail::is_word(t, u"normal") &&
               !detail::is_word(t, u"reverse") && !detail::is_word(t, u"running") &&
               !detail::is_word(t, u"paused")) {
      name = t.Name;
    } else if (t.CType == ctDimension) {
      (duration < 0 ? duration : delay) = animation_ms(t);
    } else if (t.CType == ctNumber && count > 0 && t.AsFloat >= 1) {
      // An iteration count; a huge one runs as long as "infinite" would.
      count = t.AsFloat >= 1e9 ? -1 : static_cast<int>(t.AsFloat);
    } else if (t.CType == ctFunction) {
      SkipCSSFunction(Seq);
      if (!Seq.T)
        break;
    }
  }
  const bool fresh = !Animation;
  TCSSAnimation* a = CreateAnimation();
  // The same animation declared again (a restyle) runs on where it is.
  if (fresh || a->Name != name || a->Duration != std::max(duration, 0)) {
    a->Name = name;
    a->Duration = std::max(duration, 0);
    a->Timing = timing;
    a->IterationCount = count;
    a->Restart(delay);
    a->Steps.clear();
  }
  a->Active = !name.empty() && name != u"none";
}

} // namespace ht
