// Scans of UTF-16 text for one unit, sixteen bytes at a time where SSE2 is
// there (always on x86-64) and unit by unit elsewhere.
#pragma once

#include <cstddef>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace ht::detail {

// The first unit equal to c in [p, end), or end.
inline const char16_t* FindUnit(const char16_t* p, const char16_t* end, char16_t c) noexcept {
#ifdef __SSE2__
  const __m128i needle = _mm_set1_epi16(static_cast<short>(c));
  while (end - p >= 8) {
    __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    unsigned m = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi16(v, needle)));
    if (m)
      return p + (__builtin_ctz(m) >> 1);
    p += 8;
  }
#endif
  while (p < end && *p != c)
    ++p;
  return p;
}

} // namespace ht::detail
