#include "htcore/foundation/geometry.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace ht;

TEST(Geometry, SizeAndMoves) {
  TRect r{10, 20, 110, 70};
  EXPECT_EQ(RW(r), 100);
  EXPECT_EQ(RH(r), 50);
  RSetLocation(r, -5, 0);
  EXPECT_EQ(r, (TRect{-5, 0, 95, 50}));
  ROffset(r, 5, -10);
  EXPECT_EQ(r, (TRect{0, -10, 100, 40}));
  RInflate(r, 2, -3);
  EXPECT_EQ(r, (TRect{-2, -7, 102, 37}));

  TRectF f{0.5f, 1.5f, 10.5f, 4.0f};
  EXPECT_FLOAT_EQ(RW(f), 10.0f);
  EXPECT_FLOAT_EQ(RH(f), 2.5f);
  RSetLocation(f, 2.0f, 2.0f);
  EXPECT_EQ(f, (TRectF{2.0f, 2.0f, 12.0f, 4.5f}));
  ROffset(f, -2.0f, 0.5f);
  EXPECT_EQ(f, (TRectF{0.0f, 2.5f, 10.0f, 5.0f}));
}

TEST(Geometry, IntersectIsNotNormalised) {
  EXPECT_EQ(RIntersect(TRect{0, 0, 10, 10}, TRect{5, -5, 20, 8}), (TRect{5, 0, 10, 8}));
  // Disjoint inputs keep their crossed edges: callers test the size.
  TRect none = RIntersect(TRect{0, 0, 10, 10}, TRect{20, 30, 40, 50});
  EXPECT_EQ(none, (TRect{20, 30, 10, 10}));
  EXPECT_LT(RW(none), 0);
  EXPECT_EQ(RIntersect(TRectF{0, 0, 1.5f, 1}, TRectF{1, -1, 3, 0.5f}), (TRectF{1, 0, 1.5f, 0.5f}));
}

TEST(Geometry, ContainsExcludesRightAndBottom) {
  TRect r{0, 0, 10, 10};
  TRectF rf{0, 0, 10, 10};
  struct {
    TPoint p;
    bool inside;
  } cases[] = {
      {{0, 0}, true}, {{9, 9}, true}, {{10, 5}, false}, {{5, 10}, false}, {{-1, 5}, false}, {{5, -1}, false},
  };
  for (auto& c : cases) {
    EXPECT_EQ(RContains(r, c.p), c.inside) << c.p.X << "," << c.p.Y;
    EXPECT_EQ(RContains(rf, c.p), c.inside) << c.p.X << "," << c.p.Y;
  }
  EXPECT_TRUE(RContains(rf, TPointF{9.999f, 0.0f}));
  EXPECT_FALSE(RContains(rf, TPointF{10.0f, 0.0f}));
  EXPECT_FALSE(RContains(rf, TPointF{-0.001f, 0.0f}));
  EXPECT_FALSE(RContains(TRect{5, 5, 5, 5}, TPoint{5, 5})); // empty holds nothing
}

TEST(Geometry, ConversionsRoundTiesToEven) {
  struct {
    float in;
    int out;
  } cases[] = {{0.5f, 0},   {1.5f, 2},  {2.5f, 2},  {-0.5f, 0},
               {-1.5f, -2}, {2.49f, 2}, {2.51f, 3}, {-2.51f, -3}};
  for (auto& c : cases) {
    EXPECT_EQ(P2P(TPointF{c.in, -c.in}), (TPoint{c.out, -c.out})) << c.in;
    EXPECT_EQ(R2R(TRectF{c.in, 0, 0, c.in}), (TRect{c.out, 0, 0, c.out})) << c.in;
  }
  // Out of range saturates and NaN gives 0 instead of undefined conversions.
  EXPECT_EQ(P2P(TPointF{3e9f, -3e9f}), (TPoint{INT32_MAX, INT32_MIN}));
  EXPECT_EQ(P2P(TPointF{NAN, INFINITY}), (TPoint{0, INT32_MAX}));
  EXPECT_EQ(R2F(TRect{-3, 0, 7, 16777216}), (TRectF{-3.0f, 0.0f, 7.0f, 16777216.0f}));
  EXPECT_EQ(P2F(TPoint{-1, 2}), (TPointF{-1.0f, 2.0f}));
}

TEST(Geometry, IntersectsNeedsACommonArea) {
  struct {
    TRect a, b;
    bool overlap;
  } cases[] = {
      {{0, 0, 10, 10}, {5, 5, 15, 15}, true},    {{0, 0, 10, 10}, {2, 2, 3, 3}, true}, // contained
      {{0, 0, 10, 10}, {10, 0, 20, 10}, false}, // touching at the right edge
      {{0, 0, 10, 10}, {0, 10, 10, 20}, false}, // touching at the bottom edge
      {{0, 0, 10, 10}, {20, 20, 30, 30}, false}, {{0, 0, 10, 10}, {5, 5, 5, 5}, false}, // empty inside
      {{0, 0, 10, 10}, {5, 5, 4, 8}, false},                                            // inverted
  };
  for (auto& c : cases) {
    EXPECT_EQ(RectIntersects(c.a, c.b), c.overlap);
    EXPECT_EQ(RectIntersects(c.b, c.a), c.overlap);
    EXPECT_EQ(RectIntersects(R2F(c.a), R2F(c.b)), c.overlap);
    EXPECT_EQ(RectIntersects(R2F(c.a), c.b), c.overlap);
  }
  EXPECT_TRUE(RectIntersects(TRectF{9.5f, 0, 12, 1}, TRect{0, 0, 10, 10}));
  EXPECT_FALSE(RectIntersects(TRectF{10.0f, 0, 12, 1}, TRect{0, 0, 10, 10}));
}

TEST(Geometry, InsideAllowsSharedEdges) {
  TRect outer{0, 0, 10, 10};
  EXPECT_TRUE(RectInside(outer, outer));
  EXPECT_TRUE(RectInside(TRect{2, 2, 10, 5}, outer));
  EXPECT_FALSE(RectInside(TRect{2, 2, 11, 5}, outer));
  EXPECT_FALSE(RectInside(TRect{-1, 2, 5, 5}, outer));
  EXPECT_FALSE(RectInside(outer, TRect{2, 2, 5, 5}));
  EXPECT_TRUE(RectInside(TRectF{0.0f, 0.5f, 10.0f, 9.5f}, outer));
  EXPECT_FALSE(RectInside(TRectF{0.0f, 0.5f, 10.01f, 9.5f}, outer));
}

TEST(Geometry, BetweenExchangeAndMathRound) {
  EXPECT_TRUE(Between(1, 1, 3));
  EXPECT_TRUE(Between(3, 1, 3));
  EXPECT_FALSE(Between(4, 1, 3));
  EXPECT_FALSE(Between(2, 3, 1)); // no reordering of the bounds
  EXPECT_TRUE(Between(1.0f, 1.0f, 1.0f));
  EXPECT_FALSE(Between(1.0001f, 0.0f, 1.0f));
  EXPECT_FALSE(Between(NAN, 0.0f, 1.0f));

  float a = 1.5f, b = -2.0f;
  ExchangeSingle(a, b);
  EXPECT_EQ(a, -2.0f);
  EXPECT_EQ(b, 1.5f);

  struct {
    double in;
    int64_t out;
  } cases[] = {
      {0.5, 1},           {1.5, 2},
      {2.5, 3},           {-0.5, -1},
      {-2.5, -3},         {2.49, 2},
      {-2.49, -2},        {0.49999999999999994, 0},
      {1e300, INT64_MAX}, {-1e300, INT64_MIN},
      {NAN, 0},
  };
  for (auto& c : cases)
    EXPECT_EQ(MathRound(c.in), c.out) << c.in;
}
