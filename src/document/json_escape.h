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

// q stands on the unit behind the backslash and end behind the text. On Ok,
// c is the unit the escape stands for and q is left on the escape's last
// unit; otherwise q does not move.
inline TJSONEscape DecodeJSONEscape(const char16_t*& q, const char16_t* end, char16_t& c) noexcept {
  if (q >= end)
    return TJSONEscape::Unterminated;
  c = *q;
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
    q += 4;
    c = static_cast<char16_t>(v);
    return TJSONEscape::Ok;
  }
  case u'x': {
    if (end - q < 3)
      return TJSONEscape::Unterminated;
    // Deliberately unchecked: a unit that is no hex digit gives its low bits.
    auto nibble = [](char16_t u) {
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
