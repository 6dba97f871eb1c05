#include "htcore/style/computed_css.h"

#include "htcore/foundation/enum_info.h"
#include "htcore/foundation/text_utils.h"
#include "htcore/style/css_properties.h"
#include "htcore/style/element_style.h"
#include "htcore/style/styled_node.h"

#include <cmath>
#include <cstdio>
#include <string>

namespace ht {

namespace {

hstring ascii(const std::string& s) { return hstring::FromUtf8(s); }

std::string decimals(double v, int digits) {
  char buf[64];
  std::snprintf(buf, sizeof buf, "%.*f", digits, v);
  std::string s = buf;
  if (s.find('.') != std::string::npos) {
    while (s.back() == '0')
      s.pop_back();
    if (s.back() == '.')
      s.pop_back();
  }
  if (s == "-0")
    s = "0";
  return s;
}

// "dsInlineBlock" without its prefix, hyphenated: "inline-block".
hstring keyword(PTypeInfo Info, int Value) {
  if (!Info)
    return hstring();
  hstring name = Info->NameOf(Value);
  std::u16string_view v = name.view();
  size_t i = 0;
  while (i < v.size() && v[i] >= u'a' && v[i] <= u'z')
    ++i;
  std::u16string out;
  for (size_t k = i; k < v.size(); ++k) {
    char16_t c = v[k];
    if (c >= u'A' && c <= u'Z') {
      // "XCenter" is one word: a hyphen only where a lower-case letter ends a word.
      if (k > i && v[k - 1] >= u'a' && v[k - 1] <= u'z')
        out += u'-';
      c = static_cast<char16_t>(c + 32);
    }
    out += c;
  }
  // Members whose capitals do not fall where CSS puts its hyphens.
  static const struct {
    std::u16string_view from, to;
  } kFix[] = {{u"base-line", u"baseline"},     {u"lower-case", u"lowercase"},  {u"upper-case", u"uppercase"},
              {u"contentbox", u"content-box"}, {u"borderbox", u"border-box"},  {u"paddingbox", u"padding-box"},
              {u"over-line", u"overline"},     {u"cross-hair", u"crosshair"}};
  for (const auto& f : kFix)
    if (out == f.from)
      return hstring(f.to);
  return hstring(out.data(), out.size());
}

template <class E> hstring keyword_of(E Value) { return keyword(TypeInfo<E>(), static_cast<int>(Value)); }

// A length: pixels, or what only layout can resolve as it was declared.
hstring length_text(TMeasure M) {
  if (M.GetAuto())
    return u"auto"_hs;
  if (M.FMUnit == muPercent && !M.Calc)
    return ascii(decimals(M.FValue, 2) + "%");
  if (M.Calc && !M.Parent)
    return M.AsString();
  return CSSPixelText(M.GetFPixels());
}

hstring font_family(TBaseElementStyle& S) {
  hstring f = Trim(S.FontFamily());
  std::u16string_view v = f.view();
  if (v.size() >= 2 && (v.front() == u'"' || v.front() == u'\'') && v.back() == v.front())
    return hstring(v.substr(1, v.size() - 2));
  return f;
}

hstring line_height(TBaseElementStyle& S) {
  TMeasure m = S.LineHeight();
  if (m.GetAuto() || m.FMUnit == muNone) {
    float factor = m.GetAuto() ? 1.2f : m.FValue;
    return CSSPixelText(factor * S.IntFontSize);
  }
  return CSSPixelText(m.GetFPixels());
}

hstring border_width(TBaseElementStyle& S, int Side) {
  TLineStyle ls = S.BorderSideStyle(Side);
  if (ls == lsNone || ls == lsHidden)
    return u"0px"_hs;
  switch (Side) {
  case 0:
    return length_text(S.BorderTopWidth());
  case 1:
    return length_text(S.BorderRightWidth());
  case 2:
    return length_text(S.BorderBottomWidth());
  default:
    return length_text(S.BorderLeftWidth());
  }
}

// The properties answered by their own getters; others go by the table.
bool named_value(TStyledHTMLNode* N, TBaseElementStyle& S, std::u16string_view Name, hstring& Text) {
  using M = TMeasure (TBaseElementStyle::*)();
  static const struct {
    const char16_t* name;
    M getter;
  } kLengths[] = {
      {u"width", &TBaseElementStyle::Width},
      {u"height", &TBaseElementStyle::Height},
      {u"min-width", &TBaseElementStyle::MinWidth},
      {u"max-width", &TBaseElementStyle::MaxWidth},
      {u"min-height", &TBaseElementStyle::MinHeight},
      {u"max-height", &TBaseElementStyle::MaxHeight},
      {u"left", &TBaseElementStyle::Left},
      {u"top", &TBaseElementStyle::Top},
      {u"right", &TBaseElementStyle::Right},
      {u"bottom", &TBaseElementStyle::Bottom},
      {u"margin-top", &TBaseElementStyle::MarginTop},
      {u"margin-right", &TBaseElementStyle::MarginRight},
      {u"margin-bottom", &TBaseElementStyle::MarginBottom},
      {u"margin-left", &TBaseElementStyle::MarginLeft},
      {u"padding-top", &TBaseElementStyle::PaddingTop},
      {u"padding-right", &TBaseElementStyle::PaddingRight},
      {u"padding-bottom", &TBaseElementStyle::PaddingBottom},
      {u"padding-left", &TBaseElementStyle::PaddingLeft},
      {u"text-indent", &TBaseElementStyle::TextIndent},
      {u"letter-spacing", &TBaseElementStyle::LetterSpacing},
      {u"word-spacing", &TBaseElementStyle::WordSpacing},
  };
  for (const auto& l : kLengths)
    if (Name == l.name) {
      Text = length_text((S.*l.getter)());
      return true;
    }
  // border-SIDE-width, -style and -color.
  static const std::u16string_view kSides[] = {u"top", u"right", u"bottom", u"left"};
  if (Name.starts_with(u"border-"))
    for (int side = 0; side < 4; ++side) {
      std::u16string_view rest = Name.substr(7);
      if (!rest.starts_with(kSides[side]) || rest.substr(kSides[side].size(), 1) != u"-")
        continue;
      rest.remove_prefix(kSides[side].size() + 1);
      if (rest == u"width")
        Text = border_width(S, side);
      else if (rest == u"style")
        Text = keyword_of(S.BorderSideStyle(side));
      else if (rest == u"color")
        Text = CSSColorText(S.BorderSideColor(side));
      else
        return false;
      return true;
    }
  if (Name == u"display")
    Text = keyword_of(S.FDisplay);
  else if (Name == u"position")
    Text = keyword_of(S.FPosition);
  else if (Name == u"float")
    Text = keyword_of(S.Float());
  else if (Name == u"color")
    Text = CSSColorText(S.TextColor());
  else if (Name == u"background-color")
    Text = CSSColorText(S.BackgroundColor());
  else if (Name == u"font-family")
    Text = font_family(S);
  else if (Name == u"font-size")
    Text = CSSPixelText(S.IntFontSize);
  else if (Name == u"font-weight")
    Text = IntToStr(static_cast<int32_t>(S.FontWeight()));
  else if (Name == u"font-style")
    Text = keyword_of(S.FontStyle());
  else if (Name == u"line-height")
    Text = line_height(S);
  else if (Name == u"text-align")
    Text = keyword_of(S.TextAlign());
  else if (Name == u"white-space")
    Text = keyword_of(S.WhiteSpace);
  else if (Name == u"visibility")
    Text = keyword_of(S.Visibility);
  else if (Name == u"direction")
    Text = keyword_of(S.CalculatedDirection);
  else if (Name == u"z-index")
    Text = S.FPosition == epStatic ? u"auto"_hs : IntToStr(S.ZIndex);
  else if (Name == u"opacity")
    Text = ascii(decimals(S.Opacity(), 3));
  else if (Name == u"overflow-x")
    Text = keyword_of(S.OverflowX());
  else if (Name == u"overflow-y")
    Text = keyword_of(S.OverflowY());
  else if (Name == u"vertical-align")
    Text = keyword_of(S.VerticalAlign());
  else if (Name == u"list-style-type")
    Text = keyword_of(S.ListStyleType());
  else if (Name == u"box-sizing")
    Text = keyword_of(S.BoxSizing());
  else if (Name == u"text-transform")
    Text = keyword_of(S.TextTransform());
  else
    return false;
  (void)N;
  return true;
}

} // namespace

hstring CSSColorText(uint32_t Color) {
  unsigned a = Color >> 24, r = (Color >> 16) & 0xFF, g = (Color >> 8) & 0xFF, b = Color & 0xFF;
  // Whatever its channels, a colour of no alpha is "transparent", which CSS writes so.
  if (a == 0)
    return u"rgba(0, 0, 0, 0)"_hs;
  std::string s = std::to_string(r) + ", " + std::to_string(g) + ", " + std::to_string(b);
  if (a == 255)
    return ascii("rgb(" + s + ")");
  return ascii("rgba(" + s + ", " + decimals(a / 255.0, 3) + ")");
}

hstring CSSPixelText(float Pixels) {
  if (!std::isfinite(Pixels))
    Pixels = 0;
  return ascii(decimals(Pixels, 2) + "px");
}

bool ComputedCSSValue(TStyledHTMLNode* Node, const hstring& Name, hstring& Text) {
  Text.clear();
  TBaseElementStyle* s = Node ? Node->Style() : nullptr;
  if (!s)
    return false;
  hstring name = Trim(Name);
  hLower(name);
  if (named_value(Node, *s, name.view(), Text))
    return true;
  // The rest by the property table: the declared value's kind decides.
  const TCSSPropRec* rec = CSSPropDictionary().Find(name.view());
  if (!rec || rec->Prop == cspUnknown)
    return false;
  switch (rec->PropType) {
  case cptLength: {
    TMeasure m;
    s->GetMeasureProp(rec->Prop, m, true, rec->Inherited, nullptr);
    Text = length_text(m);
    return true;
  }
  case cptColor: {
    uint32_t c = 0;
    s->GetColorProp(rec->Prop, c, true, rec->Inherited);
    Text = CSSColorText(c);
    return true;
  }
  case cptNumber: {
    float f = rec->DefaultValue();
    s->GetNumberProp(rec->Prop, f, true, rec->Inherited);
    Text = ascii(decimals(f, 3));
    return true;
  }
  case cptEnum:
    Text = keyword(rec->EnumInfo, s->GetEnumProp(rec->Prop, rec->Inherited, 0));
    return true;
  default:
    return false;
  }
}

hstring TStyledHTMLNode::ComputedCSS(const hstring& Name) {
  hstring text;
  ComputedCSSValue(this, Name, text);
  return text;
}

} // namespace ht
