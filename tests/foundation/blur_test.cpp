#include "../../src/foundation/blur_internal.h"
#include "htcore/foundation/blur.h"
#include "htcore/foundation/exception.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <vector>

using namespace ht;

namespace {

// Per channel, index by index, clamped to [left, right): the plain definition.
std::vector<uint32_t> reference_blur(const std::vector<uint32_t>& src, const TKernel& k, int left, int right,
                                     int skipFrom, int skipTo) {
  std::vector<uint32_t> out = src;
  for (int i = left; i < right; ++i) {
    if (skipFrom >= 0 && i >= skipFrom && i < skipTo)
      continue;
    uint32_t px = 0;
    for (int ch = 0; ch < 32; ch += 8) {
      uint64_t sum = 0;
      for (int j = -k.Size; j <= k.Size; ++j) {
        int at = std::clamp(i + j, left, right - 1);
        sum += static_cast<uint64_t>(k.IWeight(j)) * (src[at] >> ch & 0xFF);
      }
      px |= static_cast<uint32_t>(sum >> 24 & 0xFF) << ch;
    }
    out[i] = px;
  }
  return out;
}

// Runs body once on the vector kernel (where the machine has one) and once on
// the portable loops.
template <class F> void on_both_paths(F body) {
  for (bool vector : {true, false}) {
    SCOPED_TRACE(vector ? "vector path" : "portable path");
    detail::g_blur_allow_vector = vector;
    body();
  }
  detail::g_blur_allow_vector = true;
}

TKernel kernel(double radius) {
  TKernel k;
  MakeGaussianKernel(k, radius, 1, 255);
  return k;
}

} // namespace

TEST(GaussianKernel, RadiusOutsideRangeAsserts) {
  TKernel k;
  for (double bad : {0.09, 0.0, -1.0, 1000.5, std::nan("")})
    EXPECT_THROW(MakeGaussianKernel(k, bad, 1, 255), EAssertionFailed) << bad;
  try {
    MakeGaussianKernel(k, 0.05, 1, 255);
  } catch (const Exception& e) {
    EXPECT_STREQ(e.what(), "Assertion failure");
  }
  EXPECT_NO_THROW(MakeGaussianKernel(k, 0.1, 1, 255));
  EXPECT_NO_THROW(MakeGaussianKernel(k, 1000, 1, 255));
}

TEST(GaussianKernel, IntegerWeightsCoverTwoToThe24AndAreSymmetric) {
  for (double radius : {0.1, 0.5, 1.0, 2.0, 3.7, 10.0, 50.0, 1000.0})
    for (auto [maxData, granularity] : {std::pair{1, 255}, {255, 1}, {0, 1}, {1, 1000}, {5, 0}}) {
      TKernel k;
      MakeGaussianKernel(k, radius, maxData, granularity);
      SCOPED_TRACE(testing::Message() << "radius " << radius << " limit " << maxData << "/" << granularity);
      ASSERT_GE(k.Size, 1);
      ASSERT_LE(k.Size, TKernel::MaxSize);
      int64_t isum = 0;
      double fsum = 0;
      for (int j = -TKernel::MaxSize; j <= TKernel::MaxSize; ++j) {
        EXPECT_EQ(k.IWeight(j), k.IWeight(-j));
        EXPECT_EQ(k.Weight(j), k.Weight(-j));
        if (std::abs(j) > k.Size) {
          EXPECT_EQ(k.IWeight(j), 0);
          EXPECT_EQ(k.Weight(j), 0.0f);
        }
        isum += k.IWeight(j);
        fsum += k.Weight(j);
      }
      EXPECT_GE(isum, int64_t(1) << 24);
      EXPECT_LE(isum, (int64_t(1) << 24) + 2 * k.Size); // ceilings add less than 1 each
      EXPECT_NEAR(fsum, 1.0, 1e-5);
      for (int j = 1; j <= k.Size; ++j)
        EXPECT_LE(k.IWeight(j), k.IWeight(j - 1));
    }
}

TEST(GaussianKernel, TailCutLimitIsMaxDataOverTwiceTheGranularity) {
  TKernel k;
  // Limit 1/510 for radius 2: tails from 30 down to 7 weigh about 0.001, and
  // the step to 6 crosses the limit; that weight is cut as well.
  MakeGaussianKernel(k, 2.0, 1, 255);
  EXPECT_EQ(k.Size, 5);
  MakeGaussianKernel(k, 2.0, 255, 1); // limit 127.5: everything but the core goes
  EXPECT_EQ(k.Size, 1);
  MakeGaussianKernel(k, 2.0, 0, 1); // no limit: nothing is cut
  EXPECT_EQ(k.Size, 30);
  MakeGaussianKernel(k, 1000.0, 1, 255); // flat: the first tail step already crosses
  EXPECT_EQ(k.Size, 29);
  MakeGaussianKernel(k, 0.1, 1, 255);
  EXPECT_EQ(k.Size, 1);
  EXPECT_EQ(k.IWeight(0), 16777215); // the neighbours weigh exp(-50): ceil gives 1
  EXPECT_EQ(k.IWeight(1), 1);
}

TEST(BlurRow, FlatRowsStayExactlyTheSame) {
  on_both_paths([&] {
    for (double radius : {0.5, 1.0, 3.0, 12.0, 1000.0}) {
      TKernel k = kernel(radius);
      for (uint32_t colour : {0xFFFFFFFFu, 0x00000000u, 0x80FF0001u, 0x12345678u, 0xFEFEFEFEu}) {
        std::vector<uint32_t> src(97, colour), dst(97, 0xDEADBEEF);
        BlurRow(src.data(), 97, k, dst.data(), 0, 97, -1, -1);
        EXPECT_EQ(dst, src) << radius << " " << std::hex << colour;
      }
    }
  });
}

TEST(BlurRow, EdgesExtendTheLimitPixels) {
  on_both_paths([&] {
    TKernel k = kernel(3.0);
    ASSERT_GE(k.Size, 5);
    std::vector<uint32_t> src(40, 0xFF000000u), dst(40);
    for (int i = 20; i < 40; ++i)
      src[i] = 0xFFFFFFFFu;
    BlurRow(src.data(), 40, k, dst.data(), 0, 40, -1, -1);
    EXPECT_EQ(dst[0], 0xFF000000u); // clamped reads see only black
    EXPECT_EQ(dst[39], 0xFFFFFFFFu);
    for (int i = 1; i < 40; ++i)
      EXPECT_GE(dst[i] & 0xFF, dst[i - 1] & 0xFF) << i;
    EXPECT_EQ(dst, reference_blur(src, k, 0, 40, -1, -1));

    // Limits inside the row: a white pixel just outside must not leak in, and
    // the pixels outside are copied.
    std::vector<uint32_t> spot(30, 0xFF000000u);
    spot[9] = spot[20] = 0xFFFFFFFFu;
    std::vector<uint32_t> out(30, 0);
    BlurRow(spot.data(), 30, k, out.data(), 10, 20, -1, -1);
    for (int i = 10; i < 20; ++i)
      EXPECT_EQ(out[i], 0xFF000000u) << i;
    EXPECT_EQ(out[9], 0xFFFFFFFFu);
    EXPECT_EQ(out[20], 0xFFFFFFFFu);
  });
}

TEST(BlurRow, SkipRangeIsCopiedAndMinusOneMeansNone) {
  on_both_paths([&] {
    TKernel k = kernel(2.0);
    std::mt19937 rng(7);
    std::vector<uint32_t> src(64);
    for (auto& p : src)
      p = rng();
    std::vector<uint32_t> full(64), skipped(64);
    BlurRow(src.data(), 64, k, full.data(), 0, 64, -1, -1);
    BlurRow(src.data(), 64, k, skipped.data(), 0, 64, 20, 30);
    for (int i = 0; i < 64; ++i)
      EXPECT_EQ(skipped[i], i >= 20 && i < 30 ? src[i] : full[i]) << i;
    // Skipped pixels still feed their neighbours.
    EXPECT_EQ(skipped[19], full[19]);
    EXPECT_EQ(skipped[30], full[30]);
  });
}

TEST(BlurRow, MatchesThePlainDefinition) {
  on_both_paths([&] {
    std::mt19937 rng(12345);
    for (int round = 0; round < 300; ++round) {
      int width = 1 + static_cast<int>(rng() % 90);
      TKernel k = kernel(0.3 + (rng() % 1000) / 40.0);
      std::vector<uint32_t> src(width);
      for (auto& p : src)
        p = rng();
      int left = static_cast<int>(rng() % (width + 1));
      int right = left + static_cast<int>(rng() % (width - left + 1));
      int skipFrom = -1, skipTo = -1;
      if (rng() % 2 && right > left) {
        skipFrom = left + static_cast<int>(rng() % (right - left));
        skipTo = skipFrom + static_cast<int>(rng() % (right - skipFrom + 1));
      }
      std::vector<uint32_t> dst(width, 0xDEADBEEF);
      BlurRow(src.data(), width, k, dst.data(), left, right, skipFrom, skipTo);
      ASSERT_EQ(dst, reference_blur(src, k, left, right, skipFrom, skipTo))
          << "width " << width << " size " << k.Size << " [" << left << "," << right << ") skip [" << skipFrom
          << "," << skipTo << ")";
    }
  });
}

TEST(BlurRow, AsymmetricKernelsAndDegenerateLimits) {
  // A hand-made kernel that takes the right neighbour: shows the direction of j.
  TKernel k{};
  k.Size = 1;
  k.IWeight(1) = 1 << 24;
  std::vector<uint32_t> src{1, 2, 3, 4}, dst(4);
  BlurRow(src.data(), 4, k, dst.data(), 0, 4, -1, -1);
  EXPECT_EQ(dst, (std::vector<uint32_t>{2, 3, 4, 4})); // last reads itself: the edge extends

  TKernel g = kernel(2.0);
  std::vector<uint32_t> copy(4);
  BlurRow(src.data(), 4, g, copy.data(), 3, 3, -1, -1); // empty range copies
  EXPECT_EQ(copy, src);
  BlurRow(src.data(), 4, g, copy.data(), -10, 100, -1, -1); // limits clipped to the row
  EXPECT_EQ(copy, reference_blur(src, g, 0, 4, -1, -1));
  BlurRow(src.data(), 0, g, nullptr, 0, 0, -1, -1); // nothing to do
}
