// FastBlur: a box blur run twice over rows and columns, which comes close to
// a Gaussian. Each line keeps a running sum per channel; results wait in a
// ring of r + 1 pixels until the pixel they replace has left the window, so
// the blur works in place. The SSE4.1 path does the same arithmetic on four
// channels at once, and on whole rows for the column pass.
#include "graphics/fast_blur_internal.h"
#include "htcore/foundation/cpu.h"
#include "htcore/graphics/bitmap_data.h"

#include <algorithm>
#include <cstring>
#include <vector>

#if (defined(__x86_64__) || defined(__i386__)) && defined(__GNUC__)
#include <immintrin.h>
#define HT_FAST_BLUR_SSE4 1
#endif

namespace ht {

namespace detail {
std::atomic<bool> g_fast_blur_allow_vector{true};
}

namespace {

// The radius never exceeds this, so 255 * (2r + 1) + r stays below 2^24 and
// a float holds every sum exactly.
constexpr int kMaxRadius = 32000;

struct TSums {
  uint32_t c[4];
  void Add(uint32_t px, uint32_t times = 1) noexcept {
    for (int k = 0; k < 4; ++k)
      c[k] += (px >> 8 * k & 0xFF) * times;
  }
  void Step(uint32_t in, uint32_t out) noexcept {
    for (int k = 0; k < 4; ++k)
      c[k] += (in >> 8 * k & 0xFF) - (out >> 8 * k & 0xFF);
  }
  // The rounded mean: w is odd, so no sum lies half way.
  uint32_t Mean(uint32_t r, uint32_t w) const noexcept {
    uint32_t px = 0;
    for (int k = 0; k < 4; ++k)
      px |= (c[k] + r) / w << 8 * k;
    return px;
  }
};

// One line of n pixels, `step` pixels apart.
void BlurLine(uint32_t* p, int n, ptrdiff_t step, int r, uint32_t* ring) {
  uint32_t w = 2 * r + 1;
  uint32_t first = p[0], last = p[(n - 1) * step];
  TSums s{};
  s.Add(first, r + 1);
  for (int i = 0; i < r; ++i)
    s.Add(p[i * step]);
  int slot = 0;
  auto emit = [&](int i, uint32_t out) {
    if (i > r)
      p[(i - r - 1) * step] = ring[slot];
    ring[slot] = out;
    slot = slot == r ? 0 : slot + 1;
  };
  int i = 0;
  for (; i <= r; ++i) {
    s.Step(p[(i + r) * step], first);
    emit(i, s.Mean(r, w));
  }
  for (; i < n - r; ++i) {
    s.Step(p[(i + r) * step], p[(i - r - 1) * step]);
    emit(i, s.Mean(r, w));
  }
  for (; i < n; ++i) {
    s.Step(last, p[(i - r - 1) * step]);
    emit(i, s.Mean(r, w));
  }
  for (int j = n - r - 1; j < n; ++j) { // the ring holds the last r + 1 results
    p[j * step] = ring[slot];
    slot = slot == r ? 0 : slot + 1;
  }
}

void PortablePass(uint32_t* base, int w, int h, ptrdiff_t pitch, int r, std::vector<uint32_t>& ring) {
  for (int y = 0; y < h; ++y)
    BlurLine(base + y * pitch, w, 1, r, ring.data());
  for (int x = 0; x < w; ++x)
    BlurLine(base + x, h, pitch, r, ring.data());
}

#ifdef HT_FAST_BLUR_SSE4

#define HT_SSE4 __attribute__((target("sse4.1")))

HT_SSE4 inline __m128i Unpack(uint32_t px) {
  return _mm_cvtepu8_epi32(_mm_cvtsi32_si128(static_cast<int>(px)));
}

HT_SSE4 inline uint32_t Pack(__m128i v) {
  return static_cast<uint32_t>(_mm_cvtsi128_si32(_mm_packus_epi16(_mm_packus_epi32(v, v), v)));
}

// The rounded mean (sum + r) / w for sums below 2^24: a float estimate, then
// one correction each way makes it exact, equal to the integer division.
struct TMean {
  __m128 inv;
  __m128i w, r;
  HT_SSE4 explicit TMean(int radius) {
    int wi = 2 * radius + 1;
    inv = _mm_set1_ps(1.0f / static_cast<float>(wi));
    w = _mm_set1_epi32(wi);
    r = _mm_set1_epi32(radius);
  }
  HT_SSE4 uint32_t operator()(__m128i sum) const {
    __m128i n = _mm_add_epi32(sum, r);
    __m128i q = _mm_cvttps_epi32(_mm_mul_ps(_mm_cvtepi32_ps(n), inv));
    __m128i t = _mm_mullo_epi32(q, w);
    __m128i over = _mm_cmpgt_epi32(t, n);
    q = _mm_add_epi32(q, over);
    t = _mm_sub_epi32(t, _mm_and_si128(over, w));
    __m128i under = _mm_cmpgt_epi32(_mm_add_epi32(t, w), n); // all ones where q is right
    q = _mm_sub_epi32(q, _mm_andnot_si128(under, _mm_set1_epi32(-1)));
    return Pack(q);
  }
};

HT_SSE4 void RowSSE4(uint32_t* p, int n, int r, uint32_t* ring, const TMean& mean) {
  __m128i first = Unpack(p[0]), last = Unpack(p[n - 1]);
  __m128i s = _mm_mullo_epi32(first, _mm_set1_epi32(r + 1));
  for (int i = 0; i < r; ++i)
    s = _mm_add_epi32(s, Unpack(p[i]));
  int slot = 0;
  for (int i = 0; i < n; ++i) {
    __m128i in = i + r < n ? Unpack(p[i + r]) : last;
    __m128i out = i > r ? Unpack(p[i - r - 1]) : first;
    s = _mm_add_epi32(s, _mm_sub_epi32(in, out));
    if (i > r)
      p[i - r - 1] = ring[slot];
    ring[slot] = mean(s);
    slot = slot == r ? 0 : slot + 1;
  }
  for (int j = n - r - 1; j < n; ++j) {
    p[j] = ring[slot];
    slot = slot == r ? 0 : slot + 1;
  }
}

// The column pass a row at a time: one running sum per column, a ring of
// r + 1 result rows.
HT_SSE4 void ColumnsSSE4(uint32_t* base, int w, int h, ptrdiff_t pitch, int r, const TMean& mean) {
  std::vector<uint32_t> sumWords(4 * static_cast<size_t>(w));
  __m128i* sums = reinterpret_cast<__m128i*>(sumWords.data()); // the allocator aligns to 16
  std::vector<uint32_t> first(base, base + w), last(base + (h - 1) * pitch, base + (h - 1) * pitch + w);
  std::vector<uint32_t> ring(static_cast<size_t>(r + 1) * w);
  __m128i times = _mm_set1_epi32(r + 1);
  for (int x = 0; x < w; ++x)
    sums[x] = _mm_mullo_epi32(Unpack(first[x]), times);
  for (int i = 0; i < r; ++i)
    for (int x = 0; x < w; ++x)
      sums[x] = _mm_add_epi32(sums[x], Unpack(base[i * pitch + x]));
  int slot = 0;
  for (int i = 0; i < h; ++i) {
    const uint32_t* in = i + r < h ? base + (i + r) * pitch : last.data();
    const uint32_t* out = i > r ? base + (i - r - 1) * pitch : first.data();
    uint32_t* done = i > r ? base + (i - r - 1) * pitch : nullptr; // the row `out` reads
    uint32_t* keep = ring.data() + static_cast<size_t>(slot) * w;
    for (int x = 0; x < w; ++x) {
      sums[x] = _mm_add_epi32(sums[x], _mm_sub_epi32(Unpack(in[x]), Unpack(out[x])));
      if (done)
        done[x] = keep[x];
      keep[x] = mean(sums[x]);
    }
    slot = slot == r ? 0 : slot + 1;
  }
  for (int j = h - r - 1; j < h; ++j) {
    std::memcpy(base + j * pitch, ring.data() + static_cast<size_t>(slot) * w, w * sizeof(uint32_t));
    slot = slot == r ? 0 : slot + 1;
  }
}

HT_SSE4 void VectorPass(uint32_t* base, int w, int h, ptrdiff_t pitch, int r, std::vector<uint32_t>& ring) {
  TMean mean(r);
  for (int y = 0; y < h; ++y)
    RowSSE4(base + y * pitch, w, r, ring.data(), mean);
  ColumnsSSE4(base, w, h, pitch, r, mean);
}

#endif

} // namespace

void FastBlur(uint32_t* Data, int Width, int Height, int Radius, const TRect& Rect, int Stride) {
  if (!Data || Width <= 0 || Height <= 0)
    return;
  HT_ASSERT(Stride % 4 == 0 && Stride / 4 >= Width);
  int left = std::max(0, Rect.Left), top = std::max(0, Rect.Top);
  int right = std::min(Width, Rect.Right), bottom = std::min(Height, Rect.Bottom);
  int w = right - left, h = bottom - top;
  if (w <= 0 || h <= 0)
    return;
  int r = std::min({Radius, w / 2 - 1, h / 2 - 1, kMaxRadius});
  if (r < 1)
    return;
  ptrdiff_t pitch = Stride / 4;
  uint32_t* base = Data + top * pitch + left;
  std::vector<uint32_t> ring(static_cast<size_t>(r + 1));
#ifdef HT_FAST_BLUR_SSE4
  if (detail::g_fast_blur_allow_vector.load(std::memory_order_relaxed) && SSE4Enabled()) {
    VectorPass(base, w, h, pitch, r, ring);
    VectorPass(base, w, h, pitch, r, ring);
    return;
  }
#endif
  PortablePass(base, w, h, pitch, r, ring);
  PortablePass(base, w, h, pitch, r, ring);
}

} // namespace ht
