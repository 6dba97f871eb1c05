// What the two JSON readers share: the units of an identifier and the
// decoding of a backslash escape.
#pragma once

#include "foundation/hex_digit.h"

namespace ht::detail {

// Units that continue an identifier (and an unknown token).
inline bool IsJSONIdentUnit(char16_t c) noexcept {
  return c >= 256 || (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') ||
         c == u'_' || c == u'-';
}

enum class TJSONEscape { Ok, Unterminated, Bad };

inline bool IsHighSurrogate(char16_t c) noexcept { return c >= 0xD800 && c <= 0xDBFF; }
inline bool IsLowSurrogate(char16_t c) noexcept { return c >= 0xDC00 && c <= 0xDFFF; }

// Whether p starts a "\u" escape of a low surrogate; reads no further than
// the first unit that does not fit, so the NUL behind the text stops it.
// Unit is char16_t, or uint8_t for UTF-8 text.
template <class Unit> bool StartsLowSurrogateEscape(const Unit* p) noexcept {
  if (p[0] != u'\\' || p[1] != u'u')
    return false;
  unsigned v = 0;
  for (int i = 2; i < 6; ++i) {
    int d = HexDigitValue(p[i]);
    if (d < 0)
      return false;
    v = v << 4 | static_cast<unsigned>(d);
  }
  return IsLowSurrogate(static_cast<char16_t>(v));
}

// q stands on the unit behind the backslash and end behind the text, which
// ends in a NUL; prev is the unit stored before the escape (0 at the start).
// On Ok, c is the unit the escape stands for and q is left on the escape's
// last unit; otherwise q does not move.
//
// The halves of a pair are stored one by one and so combine, escaped or not.
// A half without its partner next to it becomes U+FFFD: left alone, the UTF-8
// writers would pair it with whatever unit follows and lose that one.
template <class Unit>
TJSONEscape DecodeJSONEscape(const Unit*& q, const Unit* end, char16_t prev, char16_t& c) noexcept {
  if (q >= end)
    return TJSONEscape::Unterminated;
  c = static_cast<char16_t>(*q);
  switch (c) {
  case u'"':
  case u'\\':
  case u'/':
    return TJSONEscape::Ok;
  case u'b':
    c = 8;
    return TJSONEscape::Ok;
  case u'f':
    c = 12;
    return TJSONEscape::Ok;
  case u'n':
    c = 10;
    return TJSONEscape::Ok;
  case u'r':
    c = 13;
    return TJSONEscape::Ok;
  case u't':
    c = 9;
    return TJSONEscape::Ok;
  case u'u': {
    unsigned v = 0;
    for (int i = 1; i <= 4; ++i) {
      int d = HexDigitValue(q[i]); // stops at the NUL behind the text
      if (d < 0)
        return TJSONEscape::Bad;
      v = v << 4 | static_cast<unsigned>(d);
    }
    c = static_cast<char16_t>(v);
    if (IsHighSurrogate(c) && !IsLowSurrogate(q[5]) && !StartsLowSurrogateEscape(q + 5))
      c = 0xFFFD;
    else if (IsLowSurrogate(c) && !IsHighSurrogate(prev))
      c = 0xFFFD;
    q += 4;
    return TJSONEscape::Ok;
  }
  case u'x': {
    if (end - q < 3)
      return TJSONEscape::Unterminated;
    // Deliberately unchecked: a unit that is no hex digit gives its low bits.
    auto nibble = [](Unit u) {
      return static_cast<unsigned>(HexDigitValue(u) >= 0 ? HexDigitValue(u) : u & 15);
    };
    c = static_cast<char16_t>(nibble(q[1]) << 4 | nibble(q[2]));
    q += 2;
    return TJSONEscape::Ok;
  }
  default:
    return TJSONEscape::Bad;
  }
}

} // namespace ht::detail
