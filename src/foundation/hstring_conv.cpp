#include "htcore/foundation/hstring_conv.h"

#include "htcore/foundation/cpu.h"

#include <cstring>

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#define HT_X86 1
#endif

namespace ht {

namespace {

void WidenScalar(const uint8_t* s, char16_t* d, size_t n) {
  for (size_t i = 0; i < n; ++i)
    d[i] = s[i];
}

#ifdef HT_X86
// Eight bytes per step: a shuffle puts each byte in the low half of a unit
// and zeroes the high half.
__attribute__((target("sse4.2"))) void WidenSse(const uint8_t* s, char16_t* d, size_t n) {
  const __m128i spread =
      _mm_setr_epi8(0, -128, 1, -128, 2, -128, 3, -128, 4, -128, 5, -128, 6, -128, 7, -128);
  size_t i = 0;
  for (; i + 8 <= n; i += 8) {
    __m128i v = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(s + i));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d + i), _mm_shuffle_epi8(v, spread));
  }
  WidenScalar(s + i, d + i, n - i);
}
#endif

void Widen(const uint8_t* s, char16_t* d, size_t n) {
#ifdef HT_X86
  if (n >= 8 && SSE4Enabled()) {
    WidenSse(s, d, n);
    return;
  }
#endif
  WidenScalar(s, d, n);
}

} // namespace

void THString::ANSIBytestoString(const TBytes& Source, hstring& Res, int AFirst, int ALength) {
  size_t size = Source.size();
  size_t first = AFirst < 0 ? 0 : static_cast<size_t>(AFirst);
  if (first >= size) {
    Res.clear();
    return;
  }
  size_t n = size - first;
  if (ALength >= 0 && static_cast<size_t>(ALength) < n)
    n = static_cast<size_t>(ALength);
  Res = ANSIBytestoString(Source.data() + first, n);
}

hstring THString::ANSIBytestoString(const TBytes& Source, int AFirst, int ALength) {
  hstring r;
  ANSIBytestoString(Source, r, AFirst, ALength);
  return r;
}

hstring THString::ANSIBytestoString(const void* Source, size_t Count) {
  hstring r;
  if (Count == 0)
    return r;
  Widen(static_cast<const uint8_t*>(Source), r.SetLength(Count), Count);
  return r;
}

hstring THString::UnicodeBytestoString(const TBytes& Source) {
  hstring r;
  if (Source.empty())
    return r;
  char16_t* d = r.SetLength(Source.size());
  std::memcpy(d, Source.data(), Source.size());
  // Zero rather than leave the upper half undefined.
  std::memset(reinterpret_cast<char*>(d) + Source.size(), 0, Source.size());
  return r;
}

hstring THString::BEUnicodeBytestoString(const TBytes& Source) {
  size_t n = Source.size() / 2;
  hstring r;
  if (n == 0)
    return r;
  char16_t* d = r.SetLength(n);
  for (size_t i = 0; i < n; ++i)
    d[i] = static_cast<char16_t>((Source[2 * i] << 8) | Source[2 * i + 1]);
  return r;
}

TBytes THString::StringtoANSIBytes(std::u16string_view Source) {
  TBytes b(Source.size());
  for (size_t i = 0; i < Source.size(); ++i)
    b[i] = static_cast<uint8_t>(Source[i]);
  return b;
}

} // namespace ht
