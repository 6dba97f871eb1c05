// Preparing declarations (decoding each value once) and expanding shorthands
// into the longhands the cascade reads.
#include "htcore/document/html_colours.h"
#include "htcore/foundation/crc32.h"
#include "htcore/foundation/text_utils.h"
#include "htcore/style/css_sheet.h"

namespace ht {

namespace {

const TCSSPropRec* row(std::u16string_view name) { return CSSPropDictionary().Find(name); }

bool keyword_of(std::u16string_view prop, const TCSSToken& t) {
  int v;
  const TCSSPropRec* r = row(prop);
  return r && t.CType == ctIdent && r->IsKeyword(t.Name.view(), v);
}

bool is_colour_name(const TCSSToken& t) {
  if (t.CType != ctIdent)
    return false;
  int sys;
  return htmlHextoColorSys(CSSLowerName(t).view(), sys) != HtInvalidColor;
}

// The index behind the ctClosePar that matches the function at i.
size_t past_function(const TCSSTokens& t, size_t i) {
  int depth = 0;
  for (size_t j = i; j < t.size(); ++j) {
    if (t[j].CType == ctOpenPar)
      ++depth;
    else if (t[j].CType == ctClosePar && --depth <= 0)
      return j + 1;
  }
  return t.size();
}

TCSSTokens slice(const TCSSTokens& t, size_t b, size_t e) {
  return TCSSTokens(t.begin() + static_cast<std::ptrdiff_t>(b), t.begin() + static_cast<std::ptrdiff_t>(e));
}

TCSSToken ident(std::u16string_view text) {
  TCSSToken t;
  t.CType = ctIdent;
  t.Name = hstring(text);
  return t;
}

// Values of one shorthand in the making.
struct TExpander {
  TCSSSection* section;
  const TCSSValue& from;
  TCSSValues& out;

  void emit(std::u16string_view name, TCSSTokens tokens, bool expand = true) {
    TCSSValue v;
    v.Name = hstring(name);
    v.NameToken = from.NameToken;
    v.Tokens = std::move(tokens);
    v.Important = from.Important;
    v.Section = section;
    for (TCSSToken& t : v.Tokens)
      if (t.CType == ctIdent)
        t.Color = 0; // a shorthand's slot is no colour of the longhand
    if (!TCSSParser::PrepareValue(v, section))
      return;
    if (v.Prop->PropType == cptEnum && v.Slot() == kCSSSlotUnknownKeyword && v.Name != u"font-weight")
      return;
    out.push_back(std::move(v));
    if (expand && out.back().Prop->SubProps.size() == 4)
      four(out.back().Prop, TCSSValue(out.back()));
  }
  void emit1(std::u16string_view name, const TCSSToken& t) { emit(name, TCSSTokens{t}); }

  void four(const TCSSPropRec* p, const TCSSValue& v) {
    const TCSSTokens& t = v.Tokens;
    if (t.size() == 3 && t[1].CType == ctDelimiter)
      return;
    std::vector<std::pair<size_t, size_t>> groups;
    for (size_t i = 0; i < t.size() && groups.size() < 4;) {
      size_t e = t[i].CType == ctFunction ? past_function(t, i) : i + 1;
      groups.emplace_back(i, e);
      i = e;
    }
    static const int kFrom[5][4] = {{}, {0, 0, 0, 0}, {0, 1, 0, 1}, {0, 1, 2, -1}, {0, 1, 2, 3}};
    TExpander sub{section, v, out};
    for (int side = 0; side < 4; ++side) {
      int g = kFrom[groups.size()][side];
      if (g >= 0 && !groups.empty())
        sub.emit(p->SubProps[static_cast<size_t>(side)]->Name.view(),
                 slice(t, groups[static_cast<size_t>(g)].first, groups[static_cast<size_t>(g)].second),
                 false);
    }
  }

  void two(const TCSSPropRec* p) {
    const TCSSTokens& t = from.Tokens;
    emit1(p->SubProps[0]->Name.view(), t[0]);
    emit1(p->SubProps[1]->Name.view(), t.size() > 1 ? t[1] : t[0]);
  }

  void font() {
    const TCSSTokens& t = from.Tokens;
    bool style = false, weight = false, size = false;
    for (size_t i = 0; i < t.size(); ++i) {
      const TCSSToken& k = t[i];
      switch (k.CType) {
      case ctIdent:
        if (!style && keyword_of(u"font-style", k)) {
          style = true;
          emit1(u"font-style", k);
        } else if (!weight && keyword_of(u"font-weight", k)) {
          weight = true;
          emit1(u"font-weight", k);
        } else {
          emit1(u"font-family", k);
        }
        break;
      case ctString:
        emit1(u"font-family", k);
        break;
      case ctNumber:
        // "font: 700 1rem serif": a bare hundred before the size is a weight.
        if (!weight && !size && k.AsFloat >= 100 && k.AsFloat <= 900 &&
            static_cast<int>(k.AsFloat) % 100 == 0 && k.AsFloat == static_cast<int>(k.AsFloat)) {
          weight = true;
          emit1(u"font-weight", k);
          break;
        }
        [[fallthrough]];
      case ctPercentage:
      case ctDimension:
        size = true;
        emit1(u"font-size", k);
        if (i + 2 < t.size() && t[i + 1].CType == ctSlash) {
          emit1(u"line-height", t[i + 2]);
          i += 2;
        }
        break;
      default:
        break;
      }
    }
    if (!style)
      emit1(u"font-style", ident(u"normal"));
    if (!weight)
      emit1(u"font-weight", ident(u"normal"));
  }

  void border() {
    const TCSSTokens& t = from.Tokens;
    for (size_t i = 0; i < t.size(); ++i) {
      const TCSSToken& k = t[i];
      switch (k.CType) {
      case ctIdent:
        if (keyword_of(u"border-style", k)) {
          for (auto side :
               {u"border-top-style", u"border-right-style", u"border-bottom-style", u"border-left-style"})
            emit1(side, k);
        } else if (SameText(k.Name, u"thin") || SameText(k.Name, u"medium") || SameText(k.Name, u"thick")) {
          emit1(u"border-width", k);
        } else {
          emit1(u"border-color", k);
        }
        break;
      case ctHash:
        emit1(u"border-color", k);
        break;
      case ctNumber:
      case ctDimension:
        emit1(u"border-width", k);
        break;
      case ctFunction: {
        size_t e = past_function(t, i);
        emit(u"border-color", slice(t, i, e));
        i = e - 1;
        break;
      }
      default:
        break;
      }
    }
  }

  void background() {
    const TCSSTokens& t = from.Tokens;
    bool image = false, x = false;
    for (size_t i = 0; i < t.size(); ++i) {
      const TCSSToken& k = t[i];
      switch (k.CType) {
      case ctIdent:
        if (SameText(k.Name, u"none")) {
          emit1(u"background-color", k);
          emit1(u"background-image", k);
          image = true;
        } else if (is_colour_name(k) && !SameText(k.Name, u"none")) {
          emit1(u"background-color", k);
        } else if (keyword_of(u"background-repeat", k)) {
          emit1(u"background-repeat", k);
        } else if (keyword_of(u"background-origin", k)) {
          emit1(u"background-origin", k);
        } else if (keyword_of(u"background-attachment", k)) {
          emit1(u"background-attachment", k);
        } else if (SameText(k.Name, u"left") || SameText(k.Name, u"right")) {
          emit1(u"background-position-x", k);
          x = true;
        } else if (SameText(k.Name, u"top") || SameText(k.Name, u"bottom")) {
          emit1(u"background-position-y", k);
        } else if (SameText(k.Name, u"center") || SameText(k.Name, u"middle")) {
          emit1(x ? u"background-position-y" : u"background-position-x", k);
          x = true;
        } else {
          emit1(u"background-color", k);
        }
        break;
      case ctHash:
        emit1(u"background-color", k);
        break;
      case ctNumber:
      case ctDimension:
      case ctPercentage:
        emit1(x ? u"background-position-y" : u"background-position-x", k);
        x = true;
        break;
      case ctURI:
        emit1(u"background-image", k);
        image = true;
        break;
      case ctFunction: {
        size_t e = past_function(t, i);
        if (k.Name == u"linear-gradient" || k.Name == u"radial-gradient") {
          emit(u"background-image", slice(t, i, e));
          image = true;
        } else if (k.Name.view().starts_with(u"rgb") || k.Name == u"var") {
          emit(u"background-color", slice(t, i, e));
        }
        i = e - 1;
        break;
      }
      default:
        break;
      }
    }
    if (!image)
      emit1(u"background-image", ident(u"none"));
  }

  void text_decoration() {
    for (const TCSSToken& k : from.Tokens) {
      if (k.CType == ctIdent && SameText(k.Name, u"inherit")) {
        emit1(u"text-decoration-line", k);
      } else if (keyword_of(u"text-decoration-line", k)) {
        emit1(u"text-decoration-line", k);
      } else if (keyword_of(u"text-decoration-style", k)) {
        emit1(u"text-decoration-style", k);
      } else if (k.CType == ctHash) {
        emit1(u"text-decoration-color", k);
      }
    }
  }

  static bool fits(const TCSSPropRec* sp, const TCSSToken& k) {
    switch (k.CType) {
    case ctIdent:
      if (sp->PropType == cptColor)
        return is_colour_name(k);
      int v;
      return sp->PropType == cptEnum && sp->IsKeyword(k.Name.view(), v);
    case ctHash:
      return sp->PropType == cptColor;
    case ctNumber:
      return sp->PropType == cptNumber;
    case ctPercentage:
    case ctDimension:
      return sp->PropType == cptLength;
    default:
      return false;
    }
  }

  void sub_walk(const TCSSPropRec* p) {
    const TCSSTokens& t = from.Tokens;
    size_t cur = 0;
    for (const TCSSPropRec* sp : p->SubProps)
      if (cur < t.size() && fits(sp, t[cur]))
        emit1(sp->Name.view(), t[cur++]);
  }
};

} // namespace

uint32_t TCSSValue::Hash() const {
  uint32_t h = 0;
  for (const TCSSToken& t : Tokens)
    h ^= CalcStrCRC32(t.Name.view());
  return h;
}

namespace {

void decode_length(TCSSValue& V, TCSSSection* Section) {
  TCSSTokenSequence seq;
  PCSSTokens toks = &V.Tokens;
  if (V.Tokens[0].CType == ctFunction && V.Tokens[0].Name == u"calc" && Section) {
    auto calc = std::make_unique<TCSSCalcValueObject>();
    calc->Tokens = V.Tokens;
    toks = &calc->Tokens;
    Section->FCalcValues.push_back(std::move(calc));
  }
  seq.Init(toks);
  TMeasure2& m = V.Measure;
  m.Value1.Init(nullptr);
  m.Value2.Init(nullptr);
  m.Value1.Decode(seq);
  const TCSSToken& first = V.Tokens[0];
  if (first.CType == ctNumber && V.Name == u"line-height")
    m.Value1.FMUnit = muNone;
  else if (first.CType == ctIdent && V.Name == u"font-size" && SameText(first.Name, u"medium"))
    m.Value1.FMUnit = muPX, m.Value1.FValue = 18, m.Value1.Flags = {mfNotAuto};
  size_t next = first.CType == ctFunction ? past_function(*toks, 0) : 1;
  if (next + 1 < toks->size() && (*toks)[next].CType == ctSlash) {
    seq.Next(static_cast<int>(next + 1));
    m.Value2.Decode(seq);
  } else {
    m.Value2.Flags = {mfInitial};
  }
}

} // namespace

bool TCSSParser::PrepareValue(TCSSValue& V, TCSSSection* Section) {
  if (V.Name.empty())
    V.Name = V.NameToken.Name;
  hLower(V.Name);
  V.Apply = cakNone;
  if (V.Name.empty() || V.Tokens.empty()) {
    if (!V.Prop)
      V.Prop = CSSPropDictionary().FindOrUnknown(V.Name.view());
    return true;
  }
  for (TCSSToken& t : V.Tokens)
    if (t.CType == ctHash && t.Color == 0) {
      uint32_t c = htmlHextoColor(LowerCase(u"#" + t.Name).view());
      if (c != HtInvalidColor)
        t.Color = c;
    }
  TCSSToken& first = V.Tokens[0];
  V.Apply = cakGeneral;
  if (V.Name == u"background")
    V.Apply = cakBackground;
  else if (V.Name == u"display")
    V.Apply = cakDisplay;
  else if (V.Name == u"font-weight")
    V.Apply = cakFontWeight;
  else if (V.Name == u"white-space")
    V.Apply = cakWhiteSpace;
  else if (V.Name == u"text-decoration" || V.Name == u"text-decoration-line") {
    std::u16string_view s = first.Name.view();
    if (s == u"none")
      first.Color = 0;
    else if (s == u"underline")
      first.Color = 4;
    else if (s == u"line-through")
      first.Color = 8;
    else if (s == u"underline line-through" || s == u"line-through underline ")
      first.Color = 12;
  }
  V.Vendor = V.Name[0] == u'-';
  V.IsInherit = SameText(first.Name, u"inherit");
  V.Prop = CSSPropDictionary().FindOrUnknown(V.Name.view());
  if (V.Apply == cakGeneral && !CSSAppliedProperties().Contains(V.Prop->Prop))
    V.Apply = cakNone;
  if (V.IsInherit) {
    first.Color = kCSSSlotInherit;
    return true;
  }
  switch (V.Prop->PropType) {
  case cptColor: {
    TCSSTokenSequence seq;
    seq.Init(&V.Tokens);
    uint32_t c = 0;
    bool ok = seq.ReadColor(c);
    if (ok && first.CType == ctFunction && V.Tokens.size() > 1)
      first.Color = c;
    return ok;
  }
  case cptEnum:
    if (V.Prop->EnumInfo) {
      int v;
      if (V.Prop->IsKeyword(first.Name.view(), v)) {
        first.Color = static_cast<uint32_t>(v);
        return true;
      }
      first.Color = kCSSSlotUnknownKeyword;
      return V.Prop->Prop == cspFontWeight;
    }
    first.Color = 0;
    return true;
  case cptLength:
    decode_length(V, Section);
    return true;
  default:
    return true;
  }
}

void TCSSSection::Compile() {
  CompiledValues.clear();
  for (const TCSSValue& v : Values) {
    if (v.Vendor || !v.Prop || v.Prop->Prop == cspUnknown || v.Tokens.empty())
      continue;
    if (!(v.Prop->PropType == cptEnum && v.Slot() == kCSSSlotUnknownKeyword && v.Prop->Prop != cspFontWeight))
      CompiledValues.push_back(v);
    TExpander x{this, v, CompiledValues};
    const TCSSPropRec* p = v.Prop;
    if (v.IsInherit) {
      for (const TCSSPropRec* sp : p->SubProps)
        x.emit1(sp->Name.view(), v.Tokens[0]);
      continue;
    }
    switch (p->Prop) {
    case cspFont:
      x.font();
      break;
    case cspBorder:
      x.border();
      break;
    case cspBackground:
      x.background();
      break;
    case cspTextDecoration:
      x.text_decoration();
      break;
    default:
      if (p->SubProps.size() == 4)
        x.four(p, v);
      else if (p->SubProps.size() == 2 && p->PropType != cptComplex)
        x.two(p);
      else if (!p->SubProps.empty() && p->PropType == cptComplex)
        x.sub_walk(p);
      else if (p->SubProps.size() == 2)
        x.two(p);
      break;
    }
  }
}

} // namespace ht
