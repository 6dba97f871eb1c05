#include "htcore/foundation/crc32.h"

#include "foundation/crc32_internal.h"
#include "htcore/foundation/startup.h"

#include <bit>
#include <cstring>

#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#define HT_CRC32_CLMUL 1
#endif

namespace ht {
namespace detail {

namespace {

// Slicing by eight: g_table[k][b] is the CRC step of byte b followed by k zero bytes.
uint32_t g_table[8][256];
bool g_clmul = false;

inline uint32_t Step(uint32_t crc, uint8_t b) { return g_table[0][(crc ^ b) & 0xFF] ^ (crc >> 8); }

#ifdef HT_CRC32_CLMUL
// Folds 64-byte blocks with carry-less multiplication, then a Barrett reduction
// (the reflected-domain method of Gopal et al., "Fast CRC Computation for
// Generic Polynomials Using PCLMULQDQ"). n is a multiple of 16, at least 64.
#define HT_CLMUL __attribute__((target("pclmul,sse4.1")))

HT_CLMUL inline __m128i load(const uint8_t* q) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(q));
}

// x * k (both 64-bit halves) folded onto next.
HT_CLMUL inline __m128i fold(__m128i x, __m128i k, __m128i next) {
  __m128i lo = _mm_clmulepi64_si128(x, k, 0x00);
  __m128i hi = _mm_clmulepi64_si128(x, k, 0x11);
  return _mm_xor_si128(_mm_xor_si128(hi, lo), next);
}

HT_CLMUL uint32_t FoldClmul(uint32_t crc, const uint8_t* p, size_t n) {
  const __m128i k1k2 = _mm_set_epi64x(0x01c6e41596, 0x0154442bd4);
  const __m128i k3k4 = _mm_set_epi64x(0x00ccaa009e, 0x01751997d0);
  const __m128i k5k0 = _mm_set_epi64x(0, 0x0163cd6124);
  const __m128i poly = _mm_set_epi64x(0x01f7011641, 0x01db710641);
  __m128i x1 = _mm_xor_si128(load(p), _mm_cvtsi32_si128(static_cast<int>(crc)));
  __m128i x2 = load(p + 16), x3 = load(p + 32), x4 = load(p + 48);
  p += 64;
  n -= 64;
  while (n >= 64) {
    x1 = fold(x1, k1k2, load(p));
    x2 = fold(x2, k1k2, load(p + 16));
    x3 = fold(x3, k1k2, load(p + 32));
    x4 = fold(x4, k1k2, load(p + 48));
    p += 64;
    n -= 64;
  }
  x1 = fold(x1, k3k4, x2);
  x1 = fold(x1, k3k4, x3);
  x1 = fold(x1, k3k4, x4);
  while (n >= 16) {
    x1 = fold(x1, k3k4, load(p));
    p += 16;
    n -= 16;
  }

  // 128 bits to 64.
  const __m128i mask32 = _mm_setr_epi32(~0, 0, ~0, 0);
  __m128i x2b = _mm_clmulepi64_si128(x1, k3k4, 0x10);
  x1 = _mm_xor_si128(_mm_srli_si128(x1, 8), x2b);
  x2b = _mm_srli_si128(x1, 4);
  x1 = _mm_and_si128(x1, mask32);
  x1 = _mm_xor_si128(_mm_clmulepi64_si128(x1, k5k0, 0x00), x2b);

  // Barrett reduction to 32 bits.
  x2b = _mm_and_si128(x1, mask32);
  x2b = _mm_clmulepi64_si128(x2b, poly, 0x10);
  x2b = _mm_and_si128(x2b, mask32);
  x2b = _mm_clmulepi64_si128(x2b, poly, 0x00);
  x1 = _mm_xor_si128(x1, x2b);
  return static_cast<uint32_t>(_mm_extract_epi32(x1, 1));
}
#endif

} // namespace

void StartCRC32() {
  for (uint32_t i = 0; i < 256; ++i) {
    uint32_t c = i;
    for (int k = 0; k < 8; ++k)
      c = c & 1 ? 0xEDB88320u ^ (c >> 1) : c >> 1;
    g_table[0][i] = c;
  }
  for (uint32_t i = 0; i < 256; ++i)
    for (int k = 1; k < 8; ++k)
      g_table[k][i] = (g_table[k - 1][i] >> 8) ^ g_table[0][g_table[k - 1][i] & 0xFF];
#ifdef HT_CRC32_CLMUL
  __builtin_cpu_init();
  g_clmul = __builtin_cpu_supports("pclmul") && __builtin_cpu_supports("sse4.1");
#endif
}

bool CRC32HasClmul() noexcept {
  EnsureStarted();
  return g_clmul;
}

uint32_t UpdateCRC32Table(uint32_t crc, const uint8_t* p, size_t n) noexcept {
  if constexpr (std::endian::native == std::endian::little) {
    while (n >= 8) {
      uint64_t v;
      std::memcpy(&v, p, 8);
      uint32_t lo = static_cast<uint32_t>(v) ^ crc;
      uint32_t hi = static_cast<uint32_t>(v >> 32);
      crc = g_table[7][lo & 0xFF] ^ g_table[6][(lo >> 8) & 0xFF] ^ g_table[5][(lo >> 16) & 0xFF] ^
            g_table[4][lo >> 24] ^ g_table[3][hi & 0xFF] ^ g_table[2][(hi >> 8) & 0xFF] ^
            g_table[1][(hi >> 16) & 0xFF] ^ g_table[0][hi >> 24];
      p += 8;
      n -= 8;
    }
  }
  while (n--)
    crc = Step(crc, *p++);
  return crc;
}

} // namespace detail

uint32_t UpdateCRC32(uint32_t Crc, const void* P, size_t Len) noexcept {
  EnsureStarted();
  auto* p = static_cast<const uint8_t*>(P);
#ifdef HT_CRC32_CLMUL
  if (Len >= 64 && detail::g_clmul) {
    size_t bulk = Len & ~size_t(15);
    Crc = detail::FoldClmul(Crc, p, bulk);
    p += bulk;
    Len -= bulk;
  }
#endif
  return detail::UpdateCRC32Table(Crc, p, Len);
}

uint32_t CalcCRC32(const void* P, size_t Len) noexcept { return UpdateCRC32(0xFFFFFFFFu, P, Len); }

uint32_t CalcBytesCRC32(const TBytes& Bytes) noexcept { return CalcCRC32(Bytes.data(), Bytes.size()); }

uint32_t CalcStrCRC32(std::u16string_view S) noexcept {
  EnsureStarted();
  uint32_t crc = 0xFFFFFFFFu;
  const char16_t* p = S.data();
  size_t n = S.size();
  // Short text steps unit by unit; longer text is narrowed in slices and summed in bulk.
  if (n < 32) {
    for (size_t i = 0; i < n && p[i]; ++i)
      crc = detail::Step(crc, static_cast<uint8_t>(p[i]));
    return crc;
  }
  uint8_t buf[1024];
  while (n) {
    size_t take = n < sizeof buf ? n : sizeof buf;
    size_t k = 0;
    for (; k < take && p[k]; ++k)
      buf[k] = static_cast<uint8_t>(p[k]);
    crc = UpdateCRC32(crc, buf, k);
    if (k < take)
      break;
    p += take;
    n -= take;
  }
  return crc;
}

} // namespace ht
