// UTF-8 bytes into UTF-16 units: the decoder behind Utf8ToHString, for
// readers that decode slices of their input into buffers of their own.
#pragma once

#include <cstdint>

namespace ht::detail {

// Decodes s..end into d, which has room for end - s units (never more units
// than bytes), and returns the end of what it wrote. Invalid bytes become
// U+FFFD; a bad sequence never swallows the ASCII byte that cut it short, so
// slices cut at ASCII bytes decode as the whole text would.
char16_t* DecodeUtf8(const uint8_t* s, const uint8_t* end, char16_t* d) noexcept;

} // namespace ht::detail
