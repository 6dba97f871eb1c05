// The getters: each resolves one property from the winning values, walking up
// the tree where the property inherits.
#include "element_style_util.h"
#include "htcore/style/element_style.h"
#include "htcore/style/styled_node.h"

#include <algorithm>

namespace ht {

namespace {

TMeasure fresh(const TMeasureContext* style, const float* parent) {
  TMeasure m;
  m.Init(style);
  m.Parent = parent;
  return m;
}

bool is_inline(const TBaseElementStyle* s) { return s->FDisplay == dsInline; }

// "normal": mfNotAuto and mfInitial alone.
bool is_normal(const TMeasure& m) { return m.Flags == TMeasureFlags{mfNotAuto, mfInitial}; }

} // namespace

// --- measures ---

namespace {

// The declared size, with em and % against the parent.
TMeasure declared_font_size(TBaseElementStyle* self) {
  TBaseElementStyle* parent = self->ParentStyle();
  // em and % of a font size refer to the parent's size.
  TBaseElementStyle* base = parent ? parent : self;
  if (parent)
    parent->ResolveFontSize();
  else if (self->IntFontSize == 0)
    self->IntFontSize = kDefaultFontSize;
  TMeasure r = fresh(base, &base->IntFontSize);
  r.Flags = {mfInitial};
  if (!self->PropertySet.Contains(cspFont) && !self->PropertySet.Contains(cspFontSize)) {
    r.Flags.Include(mfNotAuto);
    r.FMUnit = muPX;
    r.FValue = base->IntFontSize;
    return r;
  }
  for (const TCSSValue* v : self->FProps) {
    if (v->Prop->Prop == cspFont) {
      for (const TCSSToken& t : v->Tokens) {
        if (t.CType == ctSlash)
          break;
        if (t.CType == ctNumber || t.CType == ctPercentage || t.CType == ctDimension) {
          TCSSTokens one{t};
          TCSSTokenSequence seq;
          seq.Init(&one);
          r.Decode(seq);
          r.Style = t.MUnit == muREM ? self : base;
          r.Parent = &base->IntFontSize;
          return r;
        }
      }
    } else if (v->Prop->Prop == cspFontSize) {
      if (v->IsInherit || v->Measure.Value1.Flags.Contains(mfInherit)) {
        r.Flags = {mfNotAuto};
        r.FMUnit = muPX;
        r.FValue = base->IntFontSize;
        return r;
      }
      r.Assign(v->Measure.Value1);
      // rem asks the element itself, whose parent makes it no root.
      r.Style = r.FMUnit == muREM ? self : base;
      r.Parent = &base->IntFontSize;
      if (r.GetAuto()) { // "initial", an unknown word: the parent's size
        r.Flags = {mfNotAuto};
        r.FMUnit = muPX;
        r.FValue = base->IntFontSize;
      }
      return r;
    }
  }
  r.Flags.Include(mfNotAuto);
  r.FMUnit = muPX;
  r.FValue = base->IntFontSize;
  return r;
}

} // namespace

TMeasure TBaseElementStyle::FontSize() {
  TMeasure r = declared_font_size(this);
  // At the root a relative size refers to the initial size, not to what the
  // root computed last time.
  if (!ParentStyle() && !r.Calc && !r.GetAuto() &&
      (r.FMUnit == muEM || r.FMUnit == muPercent || r.FMUnit == muREM)) {
    r.FValue *= r.FMUnit == muPercent ? kDefaultFontSize / 100 : kDefaultFontSize;
    r.FMUnit = muPX;
    r.Style = this;
  }
  return r;
}

TMeasure TBaseElementStyle::LineHeight() {
  ResolveFontSize();
  const bool quirks = FElement && FElement->QuirksMode();
  const bool inline_element = is_inline(this);
  const TCSSValue* found = nullptr;
  TMeasure from_font;
  bool have_font = false;
  TBaseElementStyle* owner = this;
  for (TBaseElementStyle* s = this; s && !found && !have_font; s = s->ParentStyle()) {
    if (!s->PropertySet.Contains(cspLineHeight) && !s->PropertySet.Contains(cspFont)) {
      if (quirks && inline_element && s != this && !is_inline(s))
        break;
      continue;
    }
    for (const TCSSValue* v : s->FProps) {
      if (v->Prop->Prop == cspLineHeight) {
        if (v->IsInherit || v->Measure.Value1.Flags.Contains(mfInherit))
          break;
        found = v;
        owner = s;
        break;
      }
      if (v->Prop->Prop == cspFont) {
        auto slash = std::find_if(v->Tokens.begin(), v->Tokens.end(),
                                  [](const TCSSToken& t) { return t.CType == ctSlash; });
        if (slash != v->Tokens.end() && slash + 1 != v->Tokens.end()) {
          TCSSTokens one{*(slash + 1)};
          TCSSTokenSequence seq;
          seq.Init(&one);
          from_font.Init(s);
          from_font.Decode(seq);
          if (one[0].CType == ctNumber)
            from_font.FMUnit = muNone;
          have_font = true;
          owner = s;
          break;
        }
      }
    }
    if (quirks && inline_element && s != this && !is_inline(s))
      break;
  }
  TMeasure r = fresh(this, &IntFontSize);
  if (found)
    r.Assign(found->Measure.Value1);
  else if (have_font)
    r.Assign(from_font);
  if ((!found && !have_font) || is_normal(r) || r.GetAuto()) {
    r.Flags = {mfNotAuto};
    r.FMUnit = muNone;
    r.FValue = 1.2f;
  }
  // A factor follows this element's font; a length or percentage was fixed
  // where it was declared.
  if (r.FMUnit == muPercent || r.FMUnit == muEM) {
    owner->ResolveFontSize();
    r.Style = owner;
    r.Parent = &owner->IntFontSize;
  } else {
    r.Style = this;
    r.Parent = &IntFontSize;
  }
  if (inline_element && !quirks && r.FMUnit == muNone && r.Calc == nullptr && r.FValue < 1.2f)
    r.FValue = 1.2f;
  return r;
}

TMeasure TBaseElementStyle::Width() {
  TMeasure m;
  GetMeasureProp(cspWidth, m, true, false, ContainerWidth());
  return m;
}

TMeasure TBaseElementStyle::Height() {
  const float* base = nullptr;
  if (!FElement || !FElement->ParentElement() || !FElement->ParentElement()->Style() ||
      FPosition == epFixed) {
    FViewPortHeight = FElement ? FElement->GetViewPortHeight() : 0;
    base = &FViewPortHeight;
  } else if (FDisplay == dsTableCell) {
    TStyledHTMLNode* c = FElement->Container ? FElement->Container : FElement->ParentElement();
    while (c && c->Style() && (c->Style()->FDisplay == dsTableRow || c->Style()->FDisplay == dsTableRowGroup))
      c = c->Container ? c->Container : c->ParentElement();
    base = c && c->Style() ? &c->InnerHeight : ContainerHeight();
  } else {
    base = ContainerHeight();
  }
  TMeasure m;
  GetMeasureProp(cspHeight, m, true, false, base);
  return m;
}

#define HT_MEASURE_GETTER(Name, Prop, Base)                                                                  \
  TMeasure TBaseElementStyle::Name() {                                                                       \
    TMeasure m;                                                                                              \
    GetMeasureProp(Prop, m, true, false, Base);                                                              \
    return m;                                                                                                \
  }

HT_MEASURE_GETTER(MinWidth, cspMinWidth, ContainerWidth())
HT_MEASURE_GETTER(MaxWidth, cspMaxWidth, ContainerWidth())
HT_MEASURE_GETTER(MinHeight, cspMinHeight, ContainerHeight())
HT_MEASURE_GETTER(MaxHeight, cspMaxHeight, ContainerHeight())
HT_MEASURE_GETTER(Left, cspLeft, ContainerWidth())
HT_MEASURE_GETTER(Top, cspTop, ContainerHeight())
HT_MEASURE_GETTER(Right, cspRight, ContainerWidth())
HT_MEASURE_GETTER(Bottom, cspBottom, ContainerHeight())
HT_MEASURE_GETTER(BorderTopLeftRadius, cspBorderTopLeftradius, FElement ? &FElement->InnerWidth : nullptr)
HT_MEASURE_GETTER(BorderTopRightRadius, cspBorderTopRightRadius, FElement ? &FElement->InnerWidth : nullptr)
HT_MEASURE_GETTER(BorderBottomLeftRadius, cspBorderBottomLeftRadius,
                  FElement ? &FElement->InnerWidth : nullptr)
HT_MEASURE_GETTER(BorderBottomRightRadius, cspBorderBottomRightRadius,
                  FElement ? &FElement->InnerWidth : nullptr)
HT_MEASURE_GETTER(BorderRadius, cspBorderRadius, FElement ? &FElement->InnerWidth : nullptr)
HT_MEASURE_GETTER(ColumnGap, cspColumnGap, FElement ? &FElement->InnerWidth : nullptr)
HT_MEASURE_GETTER(ColumnWidth, cspColumnWidth, FElement ? &FElement->InnerWidth : nullptr)
HT_MEASURE_GETTER(FlexBasis, cspFlexBasis, ContainerWidth())
HT_MEASURE_GETTER(TabInterval, cspTabInterval, nullptr)

#undef HT_MEASURE_GETTER

// Inherited lengths walk up; their percentages follow the declaring element.
TMeasure TBaseElementStyle::TextIndent() {
  TMeasure m;
  GetMeasureProp(cspTextIndent, m, true, true, ContainerWidth());
  return m;
}

TMeasure TBaseElementStyle::LetterSpacing() {
  TMeasure m;
  GetMeasureProp(cspLetterSpacing, m, true, false, &IntFontSize);
  return m;
}

TMeasure TBaseElementStyle::WordSpacing() {
  TMeasure m;
  GetMeasureProp(cspWordSpacing, m, true, false, &IntFontSize);
  return m;
}

TMeasure TBaseElementStyle::BorderSpacingX() {
  TMeasure m;
  GetMeasureProp(cspBorderSpacing, m, false, false, nullptr);
  return m;
}

TMeasure TBaseElementStyle::BorderSpacingY() {
  TMeasure m = fresh(this, nullptr);
  if (const TCSSValue* v = FindEffective(cspBorderSpacing, false)) {
    // "a b": the second is vertical; a single value serves both.
    const TMeasure& second = v->Measure.Value2;
    const bool has_second = !(second.Flags == TMeasureFlags{mfInitial});
    m.Assign(has_second ? second : v->Measure.Value1);
    if (!has_second && v->Tokens.size() > 1) {
      TCSSTokenSequence seq = detail::value_seq(*v);
      seq.Next();
      m.Decode(seq);
    }
    m.Style = this;
    m.Parent = nullptr;
  }
  return m;
}

TMeasure TBaseElementStyle::BackgroundPositionX() {
  TMeasure m;
  GetMeasureProp(cspBackgroundPositionX, m, true, false, FElement ? &FElement->InnerWidth : nullptr);
  return m;
}

TMeasure TBaseElementStyle::BackgroundPositionY() {
  TMeasure m;
  GetMeasureProp(cspbackgroundPositionY, m, true, false, FElement ? &FElement->InnerHeight : nullptr);
  return m;
}

namespace {

constexpr TCSSProperty kBorderWidth[4] = {cspBorderTopWidth, cspBorderRightWidth, cspBorderBottomWidth,
                                          cspBorderLeftWidth};
constexpr TCSSProperty kBorderStyle[4] = {cspBorderTopStyle, cspBorderRightStyle, cspBorderBottomStyle,
                                          cspBorderLeftStyle};
constexpr TCSSProperty kBorderColor[4] = {cspBorderTopColor, cspBorderRightColor, cspBorderBottomColor,
                                          cspBorderLeftColor};
constexpr TCSSProperty kBorderSide[4] = {cspBorderTop, cspBorderRight, cspBorderBottom, cspBorderLeft};

// The heaviest value that sets one side: its longhand, the four-side
// shorthand, or the side's own shorthand (border-top ...). The shorthands
// count because a three-value form leaves the left longhand out and the side
// shorthands have no longhands at all.
const TCSSValue* side_value(const TBaseElementStyle& s, TCSSProperty longhand, TCSSProperty four,
                            TCSSProperty side = cspUnknown) {
  const bool own = side != cspUnknown && s.PropertySet.Contains(side);
  if (!s.PropertySet.Contains(longhand) && !s.PropertySet.Contains(four) && !own)
    return nullptr;
  for (const TCSSValue* v : s.FProps) {
    const TCSSProperty p = v->Prop->Prop;
    if (p == longhand || p == four || (own && p == side))
      return v;
  }
  return nullptr;
}

// The index of the token that gives a side in a four-side shorthand:
// "a" all, "a b" vertical and horizontal, "a b c" top, sides, bottom.
int four_token(const TCSSValue& v, int side) {
  std::vector<int> groups;
  const TCSSTokens& t = v.Tokens;
  for (size_t i = 0; i < t.size() && groups.size() < 4;) {
    groups.push_back(static_cast<int>(i));
    if (t[i].CType != ctFunction) {
      ++i;
      continue;
    }
    int depth = 0;
    for (; i < t.size(); ++i)
      if (t[i].CType == ctOpenPar)
        ++depth;
      else if (t[i].CType == ctClosePar && --depth <= 0)
        break;
    ++i;
  }
  static const int kFrom[5][4] = {{}, {0, 0, 0, 0}, {0, 1, 0, 1}, {0, 1, 2, 1}, {0, 1, 2, 3}};
  return groups.empty() ? -1 : groups[static_cast<size_t>(kFrom[groups.size()][side & 3])];
}

// Decodes the token at Index of a value (a calc() only as the first token,
// where its tokens begin).
bool decode_at(const TCSSValue& v, int index, TMeasure& m) {
  if (index < 0 || static_cast<size_t>(index) >= v.Tokens.size())
    return false;
  if (index > 0 && v.Tokens[static_cast<size_t>(index)].CType == ctFunction)
    return false;
  const TMeasureContext* style = m.Style;
  const float* parent = m.Parent;
  TCSSTokenSequence seq = detail::value_seq(v);
  seq.Next(index);
  m.Decode(seq);
  m.Style = style;
  m.Parent = parent;
  return true;
}

bool is_width_word(const TCSSToken& t) {
  return detail::is_word(t, u"thin") || detail::is_word(t, u"medium") || detail::is_word(t, u"thick");
}

void zero_px(TMeasure& m) {
  m.Flags = {mfNotAuto, mfZero};
  m.FMUnit = muPX;
  m.FValue = 0;
}

} // namespace

// Box sides: 0 px unless declared; margins keep "auto".
#define HT_BOX_GETTER(Name, Longhand, Four, Side)                                                            \
  TMeasure TBaseElementStyle::Name() {                                                                       \
    const float* base = ContainerWidth();                                                                    \
    TMeasure m = fresh(this, base);                                                                          \
    const TCSSValue* v = side_value(*this, Longhand, Four);                                                  \
    if (v && v->Prop->Prop != Longhand && !v->IsInherit) {                                                   \
      if (!decode_at(*v, four_token(*v, Side), m))                                                           \
        zero_px(m);                                                                                          \
    } else if (v) {                                                                                          \
      GetMeasureProp(Longhand, m, true, false, base);                                                        \
    } else {                                                                                                 \
      zero_px(m);                                                                                            \
    }                                                                                                        \
    return m;                                                                                                \
  }

HT_BOX_GETTER(MarginTop, cspMarginTop, cspMargin, 0)
HT_BOX_GETTER(MarginRight, cspMarginRight, cspMargin, 1)
HT_BOX_GETTER(MarginBottom, cspMarginBottom, cspMargin, 2)
HT_BOX_GETTER(MarginLeft, cspMarginLeft, cspMargin, 3)
HT_BOX_GETTER(PaddingTop, cspPaddingTop, cspPadding, 0)
HT_BOX_GETTER(PaddingRight, cspPaddingRight, cspPadding, 1)
HT_BOX_GETTER(PaddingBottom, cspPaddingBottom, cspPadding, 2)
HT_BOX_GETTER(PaddingLeft, cspPaddingLeft, cspPadding, 3)

#undef HT_BOX_GETTER

// A side without a visible style has no width, whatever was declared; one
// with a style and no width has the initial "medium", 3 px as browsers draw it.
static TMeasure border_width(TBaseElementStyle& s, int side) {
  TMeasure m;
  m.Init(&s);
  const TLineStyle ls = s.BorderSideStyle(side);
  if (ls == lsNone || ls == lsHidden) {
    zero_px(m);
    return m;
  }
  const TCSSValue* v = side_value(s, kBorderWidth[side], cspBorderWidth, kBorderSide[side]);
  bool found = false;
  if (v && v->Prop->Prop == kBorderWidth[side]) {
    found = s.GetMeasureProp(kBorderWidth[side], m, true, false, nullptr);
  } else if (v && v->Prop->Prop == cspBorderWidth) {
    found = decode_at(*v, four_token(*v, side), m);
  } else if (v) {
    for (size_t i = 0; i < v->Tokens.size() && !found; ++i) {
      const TCSSToken& t = v->Tokens[i];
      if (t.CType == ctNumber || t.CType == ctDimension || is_width_word(t))
        found = decode_at(*v, static_cast<int>(i), m);
    }
  }
  if (!found || m.GetAuto()) {
    m.Flags = {mfNotAuto};
    m.FMUnit = muPX;
    m.FValue = 3;
  }
  return m;
}

TMeasure TBaseElementStyle::BorderTopWidth() { return border_width(*this, 0); }
TMeasure TBaseElementStyle::BorderRightWidth() { return border_width(*this, 1); }
TMeasure TBaseElementStyle::BorderBottomWidth() { return border_width(*this, 2); }
TMeasure TBaseElementStyle::BorderLeftWidth() { return border_width(*this, 3); }

float TBaseElementStyle::MarginLeftPx() { return MarginLeft().GetFPixels(); }
float TBaseElementStyle::MarginTopPx() { return MarginTop().GetFPixels(); }
float TBaseElementStyle::MarginRightPx() { return MarginRight().GetFPixels(); }
float TBaseElementStyle::MarginBottomPx() { return MarginBottom().GetFPixels(); }
float TBaseElementStyle::PaddingLeftPx() { return PaddingLeft().GetFPixels(); }
float TBaseElementStyle::PaddingTopPx() { return PaddingTop().GetFPixels(); }
float TBaseElementStyle::PaddingRightPx() { return PaddingRight().GetFPixels(); }
float TBaseElementStyle::PaddingBottomPx() { return PaddingBottom().GetFPixels(); }
float TBaseElementStyle::BorderLeftWidthPx() { return BorderLeftWidth().GetFPixels(); }
float TBaseElementStyle::BorderTopWidthPx() { return BorderTopWidth().GetFPixels(); }
float TBaseElementStyle::BorderRightWidthPx() { return BorderRightWidth().GetFPixels(); }
float TBaseElementStyle::BorderBottomWidthPx() { return BorderBottomWidth().GetFPixels(); }

float TBaseElementStyle::GetMeasurePx(TCSSProperty Prop) {
  switch (Prop) {
  case cspWidth:
    return Width().GetFPixels();
  case cspHeight:
    return Height().GetFPixels();
  case cspFontSize:
    return ResolveFontSize();
  case cspLineHeight:
    return LineHeight().GetFPixels();
  case cspMarginLeft:
    return MarginLeftPx();
  case cspMarginTop:
    return MarginTopPx();
  case cspMarginRight:
    return MarginRightPx();
  case cspMarginBottom:
    return MarginBottomPx();
  case cspPaddingLeft:
    return PaddingLeftPx();
  case cspPaddingTop:
    return PaddingTopPx();
  case cspPaddingRight:
    return PaddingRightPx();
  case cspPaddingBottom:
    return PaddingBottomPx();
  case cspBorderTopWidth:
    return BorderTopWidthPx();
  case cspBorderRightWidth:
    return BorderRightWidthPx();
  case cspBorderBottomWidth:
    return BorderBottomWidthPx();
  case cspBorderLeftWidth:
    return BorderLeftWidthPx();
  default:
    break;
  }
  const TCSSPropRec* row = CSSPropRow(Prop);
  if (!row)
    return 0;
  TMeasure m;
  GetMeasureProp(Prop, m, true, row->Inherited, GetPropParent(row, nullptr));
  return m.GetFPixels();
}

// --- colours ---

uint32_t TBaseElementStyle::TextColor() {
  uint32_t c = 0;
  if (!GetColorProp(cspColor, c, true, true) && FElement)
    c = FElement->GetDefaultTextColor();
  return c;
}

uint32_t TBaseElementStyle::BackgroundColor() {
  uint32_t c = HtTransparentColor;
  if (GetColorProp(cspBackgroundColor, c, true, false))
    return c;
  // "background: inherit" has no longhands to carry it.
  if (const TCSSValue* v = InternalFindProp(cspBackground); v && v->IsInherit)
    if (TBaseElementStyle* p = ParentStyle())
      return p->BackgroundColor();
  return c;
}

uint32_t TBaseElementStyle::BorderSideColor(int Side) {
  Side &= 3;
  uint32_t c = 0;
  const TCSSValue* v = side_value(*this, kBorderColor[Side], cspBorderColor, kBorderSide[Side]);
  if (v && v->Prop->Prop == kBorderColor[Side]) {
    if (GetColorProp(kBorderColor[Side], c, true, false))
      return c;
  } else if (v) {
    // The four-side form by position; a side shorthand: its one colour, if any.
    const int at = v->Prop->Prop == cspBorderColor ? four_token(*v, Side) : -1;
    for (size_t i = 0; i < v->Tokens.size(); ++i) {
      if (at >= 0 && static_cast<int>(i) != at)
        continue;
      const TCSSToken& t = v->Tokens[i];
      int ls;
      if (is_width_word(t) ||
          (t.CType == ctIdent && IsEnum2(u"ls", t.Name.view(), TypeInfo<TLineStyle>(), ls)))
        continue;
      TCSSTokenSequence seq = detail::value_seq(*v);
      seq.Next(static_cast<int>(i));
      if ((t.CType == ctIdent || t.CType == ctHash || t.CType == ctFunction) && ReadCSSColor(seq, c))
        return c;
    }
  }
  if (FElement && (c = FElement->DefaultBorderColor()) != 0)
    return c;
  return TextColor();
}

uint32_t TBaseElementStyle::BorderTopColor() { return BorderSideColor(0); }
uint32_t TBaseElementStyle::BorderRightColor() { return BorderSideColor(1); }
uint32_t TBaseElementStyle::BorderBottomColor() { return BorderSideColor(2); }
uint32_t TBaseElementStyle::BorderLeftColor() { return BorderSideColor(3); }

uint32_t TBaseElementStyle::OutlineColor() {
  uint32_t c = 0;
  return GetColorProp(cspOutlineColor, c, true, false) ? c : TextColor();
}

uint32_t TBaseElementStyle::TextDecorationColor() {
  uint32_t c = 0;
  return GetColorProp(cspTextDecorationColor, c, true, false) ? c : TextColor();
}

// --- enumerations ---

#define HT_ENUM_GETTER(Type, Name, Prop, Default)                                                            \
  Type TBaseElementStyle::Name() const {                                                                     \
    return static_cast<Type>(GetEnumProp(Prop, CSSPropRow(Prop)->Inherited, Default));                       \
  }

HT_ENUM_GETTER(TCSSAlignItems, AlignItems, cspAlignItems, aiNormal)
HT_ENUM_GETTER(TCSSAlignItems, AlignSelf, cspAlignSelf, aiNormal)
HT_ENUM_GETTER(TCSSAppearance, Appearance, cspAppearance, caNone)
HT_ENUM_GETTER(TBackgroundAttachment, BackgroundAttachment, cspBackgroundAttachment, baScroll)
HT_ENUM_GETTER(TBackgroundOrigin, BackgroundOrigin, cspBackgroundOrigin, boPaddingBox)
HT_ENUM_GETTER(TBackgroundRepeat, BackgroundRepeat, cspBackgroundRepeat, brRepeat)
HT_ENUM_GETTER(TBorderCollapse, BorderCollapse, cspBorderCollapse, bcSeparate)
HT_ENUM_GETTER(TBoxSizing, BoxSizing, cspBoxSizing, bsContentbox)
HT_ENUM_GETTER(TCSSBreakAfter, BreakAfter, cspBreakAfter, cbaAuto)
HT_ENUM_GETTER(TCSSCursor, Cursor, cspCursor, ecAuto)
HT_ENUM_GETTER(TCSSDirection, Direction, cspDirection, cdLTR)
HT_ENUM_GETTER(TCSSDraggable, Draggable, cspDraggable, dgAuto)
HT_ENUM_GETTER(TCSSFlexDirection, FlexDirection, cspFlexDirection, fdRow)
HT_ENUM_GETTER(TCSSFlexWrap, FlexWrap, cspFlexWrap, fwNowrap)
HT_ENUM_GETTER(TFloat, Float, cspFloat, fNone)
HT_ENUM_GETTER(TCSSHyphens, Hyphens, cspHyphens, chNone)
HT_ENUM_GETTER(TCSSJustifyContent, JustifyContent, cspJustifyContent, jcFlexStart)
HT_ENUM_GETTER(TCSSListStylePosition, ListStylePosition, cspListStylePosition, lspOutside)
HT_ENUM_GETTER(TListStyleType, ListStyleType, cspListStyleType, lstDisc)
HT_ENUM_GETTER(TLineStyle, OutlineStyle, cspOutlineStyle, lsNone)
HT_ENUM_GETTER(TCSSPageBreak, PageBreakAfter, cspPageBreakAfter, pbAuto)
HT_ENUM_GETTER(TCSSPageBreak, PageBreakBefore, cspPageBreakBefore, pbAuto)
HT_ENUM_GETTER(TCSSPageBreak, PageBreakInside, cspPageBreakInside, pbAuto)
HT_ENUM_GETTER(TCSSPointerEvents, PointerEvents, cspPointerEvents, peAuto)
HT_ENUM_GETTER(TElementResize, Resize, cspResize, erNone)
HT_ENUM_GETTER(TCSSTableLayout, TableLayout, cspTableLayout, tlAuto)
HT_ENUM_GETTER(TCSSTextDecorationLine, TextDecorationLine, cspTextDecorationLine, tlNone)
HT_ENUM_GETTER(TCSSTextDecorationStyle, TextDecorationStyle, cspTextDecorationStyle, tsSolid)
HT_ENUM_GETTER(TCSSTextOverflow, TextOverflow, cspTextOverflow, toClip)
HT_ENUM_GETTER(TCSSTextTransform, TextTransform, cspTextTransform, cttNone)
HT_ENUM_GETTER(TCSSUnicodeBidi, UnicodeBidi, cspUnicodeBidi, ubNormal)
HT_ENUM_GETTER(TVAlign, VerticalAlign, cspVerticalAlign, vaBaseLine)
HT_ENUM_GETTER(TCSSWordBreak, WordBreak, cspWordBreak, wbNormal)
HT_ENUM_GETTER(TCSSWordWrap, WordWrap, cspWordWrap, wwNormal)
HT_ENUM_GETTER(TCSSWritingMode, WritingMode, cspWritingMode, wmHorizontalTB)
HT_ENUM_GETTER(TCSSFontStyle, FontStyle, cspFontStyle, cfsNormal)

#undef HT_ENUM_GETTER

TLineStyle TBaseElementStyle::BorderSideStyle(int Side) const {
  Side &= 3;
  const TCSSValue* v = side_value(*this, kBorderStyle[Side], cspBorderStyle, kBorderSide[Side]);
  if (!v || v->Prop->Prop == kBorderStyle[Side])
    return static_cast<TLineStyle>(GetEnumProp(kBorderStyle[Side], false, lsNone));
  const int at = v->Prop->Prop == cspBorderStyle ? four_token(*v, Side) : -1;
  for (size_t i = 0; i < v->Tokens.size(); ++i) {
    TLineStyle ls;
    if ((at < 0 || static_cast<int>(i) == at) && v->Tokens[i].CType == ctIdent &&
        IsEnum2(u"ls", v->Tokens[i].Name.view(), ls))
      return ls;
  }
  return lsNone; // a side shorthand without a style resets it
}
TLineStyle TBaseElementStyle::BorderTopStyle() const { return BorderSideStyle(0); }
TLineStyle TBaseElementStyle::BorderRightStyle() const { return BorderSideStyle(1); }
TLineStyle TBaseElementStyle::BorderBottomStyle() const { return BorderSideStyle(2); }
TLineStyle TBaseElementStyle::BorderLeftStyle() const { return BorderSideStyle(3); }

// overflow and overflow-x (or -y) answer alike; the heavier one wins.
static TElementOverflow overflow(const TBaseElementStyle& s, TCSSProperty side) {
  if (!s.PropertySet.Contains(side) && !s.PropertySet.Contains(cspOverflow))
    return eoVisible;
  for (const TCSSValue* v : s.FProps)
    if (v->Prop->Prop == side || v->Prop->Prop == cspOverflow) {
      const uint32_t slot = v->Slot();
      if (slot == kCSSSlotInherit) {
        const TBaseElementStyle* p = s.ParentStyle();
        return p ? overflow(*p, side) : eoVisible;
      }
      return slot < 4 ? static_cast<TElementOverflow>(slot) : eoVisible;
    }
  return eoVisible;
}

TElementOverflow TBaseElementStyle::OverflowX() const { return overflow(*this, cspOverflowX); }
TElementOverflow TBaseElementStyle::OverflowY() const { return overflow(*this, cspOverflowY); }

THAlign TBaseElementStyle::TextAlign() const {
  int found = -1;
  bool passed_table = false;
  for (const TBaseElementStyle* s = this; s; s = s->ParentStyle()) {
    if (s->PropertySet.Contains(cspTextAlign)) {
      const TCSSValue* v = s->InternalFindProp(cspTextAlign);
      const uint32_t slot = v ? v->Slot() : kCSSSlotInherit;
      // A centred block above a table does not centre the table's text.
      if (slot != kCSSSlotInherit && slot != kCSSSlotUnknownKeyword && !(slot == thXCenter && passed_table)) {
        found = static_cast<int>(slot);
        break;
      }
    }
    if (s->FDisplay == dsTable)
      passed_table = true;
  }
  const THAlign host = FElement ? FElement->DefaultTextAlign() : thLeft;
  THAlign a = found < 0 ? host : static_cast<THAlign>(found);
  if (Direction() == cdRTL) {
    if (a == thStart)
      a = thRight;
    else if (a == thEnd)
      a = host;
  } else {
    if (a == thStart)
      a = host;
    else if (a == thEnd)
      a = thRight;
  }
  if (a == thInherit)
    a = thLeft;
  else if (a == thStart)
    a = thRight;
  return a;
}

// --- others ---

int TBaseElementStyle::ColumnCount() const {
  const TCSSValue* v = FindEffective(cspColumnCount, false);
  return v ? static_cast<int>(detail::value_number(*v)) : 0;
}

bool TBaseElementStyle::ColumnRule(TCSSColumnRule& Rule) {
  const TCSSValue* v = FindEffective(cspColumnRule, false);
  if (!v)
    return false;
  TCSSTokenSequence seq = detail::value_seq(*v);
  Rule.Decode(seq, this);
  if (Rule.Color == 0)
    Rule.Color = TextColor();
  return Rule.Style != lsNone && Rule.Style != lsHidden;
}

bool TBaseElementStyle::ContentEditable() const {
  const TCSSValue* v = FindEffective(cspContentEditable, true);
  if (!v || v->Tokens.empty())
    return false;
  const TCSSToken& t = v->Tokens[0];
  return detail::is_word(t, u"true") || detail::is_word(t, u"plaintext-only") ||
         (t.CType == ctString && t.Name.empty());
}

hstring TBaseElementStyle::Filter() const {
  const TCSSValue* v = FindEffective(cspFilter, false);
  return v ? detail::tokens_text(*v) : hstring();
}

float TBaseElementStyle::FlexGrow() {
  float n = 0;
  GetNumberProp(cspFlexGrow, n, true, false);
  return n;
}

float TBaseElementStyle::FlexShrink() {
  float n = 1;
  GetNumberProp(cspFlexShrink, n, true, false);
  return n;
}

int TBaseElementStyle::FontWeight() const {
  // bolder and lighter count from the parent's weight: gather them on the way
  // up to the first absolute weight, then apply them on the way down.
  std::vector<uint32_t> relative;
  int weight = 400;
  for (const TBaseElementStyle* s = this; s; s = s->ParentStyle()) {
    if (!s->PropertySet.Contains(cspFontWeight))
      continue;
    const TCSSValue* v = s->InternalFindProp(cspFontWeight);
    if (!v || v->Tokens.empty() || v->Slot() == kCSSSlotInherit)
      continue;
    const uint32_t slot = v->Slot();
    if (slot == fwBolder || slot == fwLighter) {
      relative.push_back(slot);
      continue;
    }
    if (slot == fwBold)
      weight = 700;
    else if (slot >= fw100 && slot <= fw900)
      weight = static_cast<int>(slot - fw100 + 1) * 100;
    else if (slot == kCSSSlotUnknownKeyword) {
      const float n = detail::token_text_number(v->Tokens[0]);
      weight = n >= 1 && n <= 1000 ? static_cast<int>(n) : 400;
    }
    break;
  }
  for (auto it = relative.rbegin(); it != relative.rend(); ++it)
    weight = *it == fwBolder ? (weight < 400   ? 400
                                : weight < 600 ? 700
                                               : 900)
                             : (weight < 600   ? 100
                                : weight < 800 ? 400
                                               : 700);
  return weight;
}

TElementBackground* TBaseElementStyle::GetBackground() {
  if (!FBackground)
    FBackground = std::make_unique<TElementBackground>(this);
  return FBackground.get();
}

bool TBaseElementStyle::HasTransform() const {
  if (const TCSSValue* v = FindEffective(cspTransform, false))
    if (!v->Tokens.empty() && v->Tokens[0].CType == ctFunction)
      return true;
  for (int i = 0; i < Transitions.Count(); ++i) {
    const auto* t = static_cast<const TCSSTransition*>(Transitions.Objects(i));
    if (t && t->Active && AnsiStartsWith(t->Name.view(), u"transform"))
      return true;
  }
  return false;
}

void TBaseElementStyle::GetTransform(TTransform& T, bool UseTransitions) {
  T.Style = this;
  T.Clear();
  T.OriginX.Flags = {mfNotAuto, mfCenter};
  T.OriginX.FMUnit = muPercent;
  T.OriginX.FValue = 50;
  T.OriginY = T.OriginX;
  if (const TCSSValue* v = FindEffective(cspTransform, false)) {
    TCSSTokenSequence seq = detail::value_seq(*v);
    T.Decode(seq);
  }
  if (const TCSSValue* v = FindEffective(cspTransformOrigin, false)) {
    TCSSTokenSequence seq = detail::value_seq(*v);
    T.DecodeOrigin(seq);
  }
  // Transform components animate one by one ("transform.x" ...); nothing
  // runs until an animation engine sets a transition going.
  (void)UseTransitions;
}

// A shadow without a colour takes the text colour.
static bool read_shadow(TBaseElementStyle& s, TCSSProperty prop, bool inherit, TElementShadow& shadow,
                        void (TElementShadow::*parse)(TCSSTokenSequence&)) {
  shadow.Style = &s;
  shadow.Reset();
  const TCSSValue* v = s.FindEffective(prop, inherit);
  if (!v)
    return false;
  TCSSTokenSequence seq = detail::value_seq(*v);
  (shadow.*parse)(seq);
  if (shadow.Color == 0)
    shadow.Color = s.TextColor();
  return !shadow.NoShadow();
}

bool TBaseElementStyle::BoxShadow(TElementShadow& Shadow) {
  return read_shadow(*this, cspBoxShadow, false, Shadow, &TElementShadow::Parse);
}

bool TBaseElementStyle::TextShadow(TElementShadow& Shadow) {
  return read_shadow(*this, cspTextShadow, true, Shadow, &TElementShadow::ParseTextShadow);
}

bool TBaseElementStyle::NoShadow() const {
  const TCSSValue* v = FindEffective(cspBoxShadow, false);
  return !v || v->Tokens.empty() || detail::is_word(v->Tokens[0], u"none");
}

bool TBaseElementStyle::NoTextShadow() const {
  const TCSSValue* v = FindEffective(cspTextShadow, true);
  return !v || v->Tokens.empty() || detail::is_word(v->Tokens[0], u"none");
}

bool TBaseElementStyle::BoxReflect(TBoxReflect& Reflect) {
  Reflect.Style = this;
  const TCSSValue* v = FindEffective(cspBoxReflect, false);
  if (!v) {
    Reflect.Direction = brNone;
    return false;
  }
  TCSSTokenSequence seq = detail::value_seq(*v);
  return Reflect.Decode(seq);
}

float TBaseElementStyle::Opacity() {
  float n = 1;
  if (Transitions.Count() && GetTransitionNumber(cspOpacity, n))
    return n;
  const TCSSValue* v = FindEffective(cspOpacity, false);
  if (!v || v->Tokens.empty())
    return 1;
  n = detail::value_number(*v);
  if (v->Tokens[0].CType == ctPercentage)
    n /= 100;
  else if (v->Tokens[0].CType == ctIdent)
    return 1;
  return std::clamp(n, 0.0f, 1.0f);
}

int TBaseElementStyle::Page() const {
  const TCSSValue* v = FindProp(cspPage, false);
  if (!v || v->Tokens.empty())
    return 0;
  const TCSSToken& t = v->Tokens[0];
  if (t.CType == ctIdent) {
    if (SameText(t.Name.view(), u"first"))
      return 1;
    if (SameText(t.Name.view(), u"last"))
      return -9991;
    if (AnsiStartsWith(LowerCase(t.Name.view()).view(), u"last-"))
      return -9994;
    if (SameText(t.Name.view(), u"odd"))
      return -9992;
    if (SameText(t.Name.view(), u"even"))
      return -9993;
    return 0;
  }
  if (t.CType != ctNumber)
    return 0;
  const int n = static_cast<int>(t.AsFloat);
  return v->Tokens.size() > 1 ? -n : n;
}

hstring TBaseElementStyle::PageSize() const {
  const TCSSValue* v = FindProp(cspSize, false);
  if (!v)
    return hstring();
  hstring out;
  for (const TCSSToken& t : v->Tokens) {
    if (!out.empty())
      out += u" ";
    out += t.Name;
  }
  return out;
}

bool TBaseElementStyle::RunningBlock() const { return FPosition == epRunning; }

hstring TBaseElementStyle::TabStops() const {
  const TCSSValue* v = FindEffective(cspTabStops, false);
  return v ? detail::tokens_text(*v) : hstring();
}

THtFontStyles TBaseElementStyle::TextStyle() const { return CalculatedTextStyle; }

float TBaseElementStyle::TransitionDelay() const {
  const TCSSValue* v = FindEffective(cspTransitionDelay, false);
  if (!v || v->Tokens.empty())
    return 0;
  const TCSSToken& t = v->Tokens[0];
  return t.CType == ctDimension && t.MUnit == muS ? t.AsFloat * 1000 : detail::value_number(*v);
}

} // namespace ht
