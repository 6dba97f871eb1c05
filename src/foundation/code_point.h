// Appending a code point from a character reference to UTF-16 text.
#pragma once

#include <cstdint>
#include <string>

namespace ht::detail {

// One unit, or a surrogate pair above U+FFFF. A value no text may hold (a
// lone surrogate or beyond U+10FFFF) becomes two blanks, so what the
// reference took up stays the same width.
inline void AppendCodePoint(std::u16string& buf, uint32_t c) {
  if (c >= 0x110000 || (c >= 0xD800 && c <= 0xDFFF)) {
    buf += u"  ";
  } else if (c > 0xFFFF) {
    c -= 0x10000;
    buf += static_cast<char16_t>(0xD800 + (c >> 10));
    buf += static_cast<char16_t>(0xDC00 + (c & 0x3FF));
  } else {
    buf += static_cast<char16_t>(c);
  }
}

} // namespace ht::detail
