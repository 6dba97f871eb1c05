// The value of one hexadecimal digit, shared by the readers of URLs, colours
// and JSON escapes.
#pragma once

namespace ht::detail {

// 0-15, or -1 for a unit that is no hex digit (the NUL behind a text
// included, so a scan may stop there).
constexpr int HexDigitValue(char16_t c) noexcept {
  if (c >= u'0' && c <= u'9')
    return c - u'0';
  if (c >= u'a' && c <= u'f')
    return c - u'a' + 10;
  if (c >= u'A' && c <= u'F')
    return c - u'A' + 10;
  return -1;
}

} // namespace ht::detail
