// Small readers of compiled values shared by the element style's files.
#pragma once

#include "htcore/document/html_colours.h"
#include "htcore/foundation/text_utils.h"
#include "htcore/style/element_style.h"

namespace ht::detail {

// A cursor over a value's tokens. Reading a colour may fill a token's colour
// cache, which is what that cache is for.
inline TCSSTokenSequence value_seq(const TCSSValue& V) {
  TCSSTokenSequence seq;
  seq.Init(const_cast<TCSSTokens*>(&V.Tokens));
  return seq;
}

inline bool is_word(const TCSSToken& T, std::u16string_view Word) {
  return T.CType == ctIdent && SameText(T.Name.view(), Word);
}

inline bool is_current_colour(const TCSSValue& V) {
  return !V.Tokens.empty() && is_word(V.Tokens[0], u"currentcolor");
}

// The colour a value gives: var() through the style's variables, a name
// through its cache (system colours looked up anew), else the prepared slot.
inline uint32_t value_colour(TBaseElementStyle& Style, const TCSSValue& V) {
  if (V.Tokens.empty())
    return HtInvalidColor;
  const TCSSToken& first = V.Tokens[0];
  if (first.CType == ctFunction && first.Name == u"var") {
    TCSSTokenSequence seq = value_seq(V);
    Style.GetCSSVariable(seq);
    uint32_t c = HtInvalidColor;
    return seq.ReadColor(c) ? c : HtInvalidColor;
  }
  if (first.CType == ctIdent) {
    TCSSTokenSequence seq = value_seq(V);
    uint32_t c = HtInvalidColor;
    seq.ReadColor(c);
    return c;
  }
  return first.Color;
}

// A number value as written (a percentage keeps its 0..100).
inline float value_number(const TCSSValue& V) {
  if (V.Tokens.empty())
    return 0;
  const TCSSToken& t = V.Tokens[0];
  switch (t.CType) {
  case ctNumber:
  case ctPercentage:
  case ctDimension:
    return t.AsFloat;
  default:
    return 0;
  }
}

// The number a token's text spells ("650"); its slot may hold something else.
inline float token_text_number(const TCSSToken& T) {
  double v = 0;
  bool any = false;
  for (char16_t c : T.Name.view()) {
    if (c < u'0' || c > u'9')
      break;
    v = v * 10 + (c - u'0');
    any = true;
  }
  return any ? static_cast<float>(v) : 0;
}

// The first family of a font-family list: a string, or the words up to the comma.
inline hstring first_family(const TCSSValue& V) {
  if (V.Tokens.empty())
    return hstring();
  if (V.Tokens[0].CType == ctString)
    return V.Tokens[0].Name;
  hstring out;
  for (const TCSSToken& t : V.Tokens) {
    if (t.CType != ctIdent)
      break;
    if (!out.empty())
      out += u" ";
    out += t.Name;
  }
  return out;
}

// The tokens' texts joined by blanks.
inline hstring tokens_text(const TCSSValue& V) {
  hstring out;
  TCSSTokenType prev = ctUnknown;
  for (const TCSSToken& t : V.Tokens) {
    if (!out.empty() && t.CType != ctComma && t.CType != ctClosePar && t.CType != ctOpenPar &&
        prev != ctOpenPar && prev != ctFunction)
      out += u" ";
    out += t.Name;
    prev = t.CType;
  }
  return out;
}

} // namespace ht::detail
