// AVX2 kernel of BlurRow: two pixels per register, all four channels in
// 32-bit lanes, so one multiply weights eight channel values.
#include "foundation/blur_internal.h"
#include "htcore/foundation/cpu.h"

#if (defined(__x86_64__) || defined(__i386__)) && defined(__GNUC__)
#include <immintrin.h>
#define HT_BLUR_AVX2 1
#endif

namespace ht::detail {

#ifdef HT_BLUR_AVX2

bool BlurAVX2Available() noexcept { return AVX2Enabled(); }

namespace {

__attribute__((target("avx2"))) inline __m256i load(const uint32_t* p) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}

__attribute__((target("avx2"))) inline __m128i load1(const uint32_t* p) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}

} // namespace

// A lane sum stays below 2^32 while the weights sum to less than 2^32 / 255,
// and a pair's weight is below half the sum, so adding the pair's two pixels
// before the multiply cannot wrap either. Byte 3 of each lane is then the
// channel's sum >> 24.
__attribute__((target("avx2"))) void BlurSymmetricAVX2(const uint32_t* lanes, int n, const uint32_t* w,
                                                       int size, uint32_t* dst) noexcept {
  const __m256i pick = _mm256_setr_epi8(3, 7, 11, 15, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, 3, 7,
                                        11, 15, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
  int i = 0;
  for (; i + 4 <= n; i += 4) {
    const uint32_t* c = lanes + 4 * (i + size);
    __m256i w0 = _mm256_set1_epi32(static_cast<int>(w[0]));
    __m256i a0 = _mm256_mullo_epi32(load(c), w0);
    __m256i a1 = _mm256_mullo_epi32(load(c + 8), w0);
    for (int k = 1; k <= size; ++k) {
      __m256i wk = _mm256_set1_epi32(static_cast<int>(w[k]));
      __m256i s0 = _mm256_add_epi32(load(c + 4 * k), load(c - 4 * k));
      __m256i s1 = _mm256_add_epi32(load(c + 8 + 4 * k), load(c + 8 - 4 * k));
      a0 = _mm256_add_epi32(a0, _mm256_mullo_epi32(s0, wk));
      a1 = _mm256_add_epi32(a1, _mm256_mullo_epi32(s1, wk));
    }
    a0 = _mm256_shuffle_epi8(a0, pick);
    a1 = _mm256_shuffle_epi8(a1, pick);
    dst[i] = static_cast<uint32_t>(_mm256_extract_epi32(a0, 0));
    dst[i + 1] = static_cast<uint32_t>(_mm256_extract_epi32(a0, 4));
    dst[i + 2] = static_cast<uint32_t>(_mm256_extract_epi32(a1, 0));
    dst[i + 3] = static_cast<uint32_t>(_mm256_extract_epi32(a1, 4));
  }
  const __m128i pick1 = _mm_setr_epi8(3, 7, 11, 15, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
  for (; i < n; ++i) {
    const uint32_t* c = lanes + 4 * (i + size);
    __m128i a = _mm_mullo_epi32(load1(c), _mm_set1_epi32(static_cast<int>(w[0])));
    for (int k = 1; k <= size; ++k) {
      __m128i s = _mm_add_epi32(load1(c + 4 * k), load1(c - 4 * k));
      a = _mm_add_epi32(a, _mm_mullo_epi32(s, _mm_set1_epi32(static_cast<int>(w[k]))));
    }
    dst[i] = static_cast<uint32_t>(_mm_cvtsi128_si32(_mm_shuffle_epi8(a, pick1)));
  }
}

#else

bool BlurAVX2Available() noexcept { return false; }

void BlurSymmetricAVX2(const uint32_t*, int, const uint32_t*, int, uint32_t*) noexcept {}

#endif

} // namespace ht::detail
