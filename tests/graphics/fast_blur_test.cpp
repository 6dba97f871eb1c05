#include "graphics/fast_blur_internal.h"
#include "htcore/graphics/bitmap_data.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <vector>

using namespace ht;

namespace {

// The blur written the plain way: a fresh sum for every pixel over the
// window with clamped reads, rows then columns, twice.
void NaiveBlur(std::vector<uint32_t>& img, int stride, TRect R, int radius) {
  int w = R.Right - R.Left, h = R.Bottom - R.Top;
  int r = std::min({radius, w / 2 - 1, h / 2 - 1});
  if (r < 1)
    return;
  auto line = [&](int n, auto at) {
    std::vector<uint32_t> src(n);
    for (int i = 0; i < n; ++i)
      src[i] = at(i);
    for (int i = 0; i < n; ++i) {
      uint32_t out = 0;
      for (int ch = 0; ch < 4; ++ch) {
        uint32_t sum = 0;
        for (int j = i - r; j <= i + r; ++j)
          sum += src[std::clamp(j, 0, n - 1)] >> 8 * ch & 0xFF;
        out |= (sum + r) / (2 * r + 1) << 8 * ch;
      }
      at(i) = out;
    }
  };
  for (int pass = 0; pass < 2; ++pass) {
    for (int y = R.Top; y < R.Bottom; ++y)
      line(w, [&](int i) -> uint32_t& { return img[y * stride + R.Left + i]; });
    for (int x = R.Left; x < R.Right; ++x)
      line(h, [&](int i) -> uint32_t& { return img[(R.Top + i) * stride + x]; });
  }
}

std::vector<uint32_t> RandomImage(int n, unsigned seed) {
  std::mt19937 rng(seed);
  std::vector<uint32_t> v(n);
  for (auto& p : v)
    p = rng();
  return v;
}

struct TBlurCase {
  int w, h, radius;
  TRect rect;
};

} // namespace

TEST(FastBlur, MatchesTheNaiveBlurOnBothPaths) {
  const TBlurCase cases[] = {
      {16, 16, 1, {0, 0, 16, 16}}, {37, 23, 3, {0, 0, 37, 23}},       {40, 30, 50, {0, 0, 40, 30}},
      {40, 30, 4, {5, 3, 33, 29}}, {40, 30, 6, {-10, -10, 100, 100}}, {9, 64, 2, {0, 0, 9, 64}},
      {64, 5, 9, {0, 0, 64, 5}},   {6, 6, 2, {0, 0, 6, 6}},
  };
  for (const auto& c : cases)
    for (bool vector : {false, true}) {
      detail::g_fast_blur_allow_vector = vector;
      int stride = c.w + 3; // rows padded: the blur must keep to the rectangle
      std::vector<uint32_t> img = RandomImage(stride * c.h, c.w * 31 + c.radius), expect = img;
      TRect clipped{std::max(0, c.rect.Left), std::max(0, c.rect.Top), std::min(c.w, c.rect.Right),
                    std::min(c.h, c.rect.Bottom)};
      NaiveBlur(expect, stride, clipped, c.radius);
      FastBlur(img.data(), c.w, c.h, c.radius, c.rect, stride * 4);
      EXPECT_EQ(img, expect) << c.w << "x" << c.h << " r" << c.radius << (vector ? " vector" : " portable");
    }
  detail::g_fast_blur_allow_vector = true;
}

TEST(FastBlur, SmallRectanglesAndFlatAreasStay) {
  std::vector<uint32_t> img = RandomImage(10 * 10, 7), before = img;
  FastBlur(img.data(), 10, 10, 5, {2, 0, 4, 10}, 40); // 2 pixels wide: the radius becomes 0
  EXPECT_EQ(img, before);
  FastBlur(img.data(), 10, 10, 0, {0, 0, 10, 10}, 40);
  EXPECT_EQ(img, before);
  FastBlur(img.data(), 10, 10, 3, {20, 20, 30, 30}, 40); // outside
  EXPECT_EQ(img, before);
  std::vector<uint32_t> flat(50 * 40, 0x80FF4010u);
  FastBlur(flat.data(), 50, 40, 7, {0, 0, 50, 40}, 200);
  EXPECT_EQ(flat, std::vector<uint32_t>(50 * 40, 0x80FF4010u));
  EXPECT_THROW(FastBlur(img.data(), 10, 10, 3, {0, 0, 10, 10}, 39), EAssertionFailed);
}
