// One step of the UTF-8 test behind IsUTF8Bytes, shared with the XML
// reader's test that narrows its text slice by slice.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ht::detail {

enum class TUtf8Step {
  Ok,   // a valid two- or three-byte sequence; i moved behind it
  Bad,  // a sequence that cannot be UTF-8: the text is not
  Stop, // a stray continuation byte or a four-byte form ends the test
  Cut,  // the sequence runs past n
};

// Judges the sequence whose lead byte b[i] is at least 0x80.
inline TUtf8Step Utf8CheckStep(const uint8_t* b, size_t n, size_t& i) noexcept {
  uint8_t c = b[i];
  size_t need;
  uint8_t lo = 0x80, hi = 0xBF;
  if (c == 0xC0 || c == 0xC1)
    return TUtf8Step::Bad;
  if (c >= 0xC2 && c <= 0xDF) {
    need = 1;
  } else if (c == 0xE0) {
    need = 2;
    lo = 0xA0;
  } else if (c == 0xED) {
    need = 2;
    hi = 0x9F;
  } else if ((c >= 0xE1 && c <= 0xEC) || c == 0xEE || c == 0xEF) {
    need = 2;
  } else {
    return TUtf8Step::Stop;
  }
  if (i + need >= n)
    return TUtf8Step::Cut;
  auto cont = [&](size_t k, uint8_t l, uint8_t h) { return k < n && b[k] >= l && b[k] <= h; };
  if (!cont(i + 1, lo, hi) || (need == 2 && !cont(i + 2, 0x80, 0xBF)))
    return TUtf8Step::Bad;
  i += need + 1;
  return TUtf8Step::Ok;
}

} // namespace ht::detail
