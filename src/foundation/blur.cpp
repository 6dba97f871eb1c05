// Gaussian kernels and the row blur.
#include "htcore/foundation/blur.h"

#include "foundation/blur_internal.h"
#include "htcore/foundation/exception.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace ht {

namespace detail {
std::atomic<bool> g_blur_allow_vector{true};
}

void MakeGaussianKernel(TKernel& K, double Radius, int MaxData, int DataGranularity) {
  HT_ASSERT(Radius >= 0.1 && Radius <= 1000);
  constexpr int M = TKernel::MaxSize;
  double total = 0;
  for (int j = -M; j <= M; ++j) {
    // The quotient is taken at single precision on purpose: kernels must match
    // those made elsewhere bit for bit.
    float t = static_cast<float>(j / Radius);
    K.Weight(j) = static_cast<float>(std::exp(-static_cast<double>(t) * t / 2));
    total += K.Weight(j);
  }
  for (float& w : K.Weights)
    w = static_cast<float>(w / total);

  double limit;
  if (DataGranularity != 0)
    limit = MaxData / (2.0 * DataGranularity);
  else
    limit = MaxData > 0 ? std::numeric_limits<double>::infinity() : 0;
  double cut = 0;
  int j = M;
  while (cut < limit && j > 1) {
    cut += 2.0 * K.Weight(j);
    --j;
  }
  K.Size = j;

  double sum = 0;
  for (int i = -j; i <= j; ++i)
    sum += K.Weight(i);
  // Rounding every weight up keeps the integer sum at or above 2^24, so the
  // final >> 24 never darkens a flat area.
  for (int i = -M; i <= M; ++i) {
    if (i < -j || i > j) {
      K.Weight(i) = 0;
      K.IWeight(i) = 0;
    } else {
      K.IWeight(i) = static_cast<int>(std::ceil(K.Weight(i) * 16777215.0 / sum));
      K.Weight(i) = static_cast<float>(K.Weight(i) / sum);
    }
  }
}

namespace {

// A pixel spread over two words, b | r << 32 and g | a << 32: one 64-bit
// multiply then weights two channels, and a lane cannot carry into the next
// while the weights sum to less than 2^32 / 255.
inline void spread(uint32_t px, uint64_t* out) noexcept {
  out[0] = (px & 0xFF) | static_cast<uint64_t>(px >> 16 & 0xFF) << 32;
  out[1] = (px >> 8 & 0xFF) | static_cast<uint64_t>(px >> 24) << 32;
}

inline uint32_t gather(uint64_t br, uint64_t ga) noexcept {
  return static_cast<uint32_t>((br >> 24 & 0xFF) | (ga >> 24 & 0xFF) << 8 | (br >> 56) << 16 |
                               (ga >> 56) << 24);
}

// Dst[0..n) from the spread pixels p (2 words each), where p[0] is the pixel
// `size` places left of the first output.
void blur_symmetric(const uint64_t* p, int n, const uint64_t* w, int size, uint32_t* dst) noexcept {
  for (int i = 0; i < n; ++i, p += 2) {
    const uint64_t* c = p + 2 * size;
    uint64_t br = w[0] * c[0], ga = w[0] * c[1];
    for (int k = 1; k <= size; ++k) {
      br += w[k] * (c[2 * k] + c[-2 * k]);
      ga += w[k] * (c[2 * k + 1] + c[-2 * k + 1]);
    }
    dst[i] = gather(br, ga);
  }
}

void blur_general(const uint64_t* p, int n, const uint64_t* w, int size, uint32_t* dst) noexcept {
  int taps = 2 * size + 1;
  for (int i = 0; i < n; ++i, p += 2) {
    uint64_t br = 0, ga = 0;
    for (int k = 0; k < taps; ++k) {
      br += w[k] * p[2 * k];
      ga += w[k] * p[2 * k + 1];
    }
    dst[i] = gather(br, ga);
  }
}

} // namespace

void BlurRow(const uint32_t* Src, int Width, const TKernel& K, uint32_t* Dst, int Left, int Right,
             int SkipFrom, int SkipTo) {
  if (Width <= 0 || !Src || !Dst)
    return;
  Left = Left < 0 ? 0 : Left;
  Right = Right > Width ? Width : Right;
  if (Left >= Right) {
    std::memcpy(Dst, Src, Width * sizeof(uint32_t));
    return;
  }
  if (SkipFrom < 0 || SkipTo <= SkipFrom) {
    SkipFrom = SkipTo = Right;
  } else {
    SkipFrom = SkipFrom < Left ? Left : SkipFrom > Right ? Right : SkipFrom;
    SkipTo = SkipTo < SkipFrom ? SkipFrom : SkipTo > Right ? Right : SkipTo;
  }
  std::memcpy(Dst, Src, Left * sizeof(uint32_t));
  std::memcpy(Dst + Right, Src + Right, (Width - Right) * sizeof(uint32_t));
  std::memcpy(Dst + SkipFrom, Src + SkipFrom, (SkipTo - SkipFrom) * sizeof(uint32_t));

  int size = K.Size < 0 ? 0 : K.Size > TKernel::MaxSize ? TKernel::MaxSize : K.Size;
  bool symmetric = true;
  for (int k = 1; k <= size; ++k)
    symmetric = symmetric && K.IWeight(k) == K.IWeight(-k);
  int n = Right - Left;

  // The working copy of [Left, Right) carries `size` copies of each edge pixel
  // on its sides; that is the edge clamping, so the loops never test an
  // index. Kept per thread to spare an allocation per row.
  if (symmetric && detail::g_blur_allow_vector.load(std::memory_order_relaxed) &&
      detail::BlurAVX2Available()) {
    uint32_t w[TKernel::MaxSize + 1];
    for (int k = 0; k <= size; ++k)
      w[k] = static_cast<uint32_t>(K.IWeight(k));
    thread_local std::vector<uint32_t> lanes;
    lanes.resize(4 * static_cast<size_t>(n + 2 * size));
    uint32_t* p = lanes.data();
    auto unpack = [&](uint32_t px) {
      p[0] = px & 0xFF, p[1] = px >> 8 & 0xFF, p[2] = px >> 16 & 0xFF, p[3] = px >> 24;
      p += 4;
    };
    for (int i = 0; i < size; ++i)
      unpack(Src[Left]);
    for (int i = Left; i < Right; ++i)
      unpack(Src[i]);
    for (int i = 0; i < size; ++i)
      unpack(Src[Right - 1]);
    auto run = [&](int from, int to) {
      if (from < to)
        detail::BlurSymmetricAVX2(lanes.data() + 4 * static_cast<size_t>(from - Left), to - from, w, size,
                                  Dst + from);
    };
    run(Left, SkipFrom);
    run(SkipTo, Right);
    return;
  }

  uint64_t w[2 * TKernel::MaxSize + 1];
  for (int k = -size; k <= size; ++k)
    w[k + size] = static_cast<uint32_t>(K.IWeight(k));
  thread_local std::vector<uint64_t> spread_row;
  spread_row.resize(2 * static_cast<size_t>(n + 2 * size));
  uint64_t* row = spread_row.data();
  uint64_t edge[2];
  spread(Src[Left], edge);
  for (int i = 0; i < size; ++i, row += 2)
    row[0] = edge[0], row[1] = edge[1];
  for (int i = Left; i < Right; ++i, row += 2)
    spread(Src[i], row);
  spread(Src[Right - 1], edge);
  for (int i = 0; i < size; ++i, row += 2)
    row[0] = edge[0], row[1] = edge[1];

  const uint64_t* base = spread_row.data();
  auto run = [&](int from, int to) {
    if (from >= to)
      return;
    const uint64_t* p = base + 2 * static_cast<size_t>(from - Left);
    if (symmetric)
      blur_symmetric(p, to - from, w + size, size, Dst + from);
    else
      blur_general(p, to - from, w, size, Dst + from);
  };
  run(Left, SkipFrom);
  run(SkipTo, Right);
}

} // namespace ht
