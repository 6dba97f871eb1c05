// Rectangles and points in integer and float precision, with the small helpers
// that layout and paint code call in their inner loops.
//
//   ht::TRect r{10, 10, 110, 60};
//   ht::ROffset(r, 5, 0);                       // {15, 10, 115, 60}
//   bool hit = ht::RContains(r, ht::TPoint{115, 20});   // false: right edge is outside
//   ht::TRect clip = ht::RIntersect(r, ht::TRect{0, 0, 50, 50});
//   ht::TRect px = ht::R2R(ht::TRectF{0.5f, 1.5f, 2.5f, 3.5f});   // {0, 2, 2, 4}
//
// Rectangles are plain records: Right and Bottom are exclusive bounds, nothing
// is normalised for you, and an empty intersection keeps its crossed edges.
// Float to integer conversions round to nearest with ties to even; MathRound
// is the one helper that rounds halves away from zero.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace ht {

struct TPoint {
  int X, Y;
  friend bool operator==(const TPoint&, const TPoint&) = default;
};

struct TPointF {
  float X, Y;
  friend bool operator==(const TPointF&, const TPointF&) = default;
};

struct TRect {
  int Left, Top, Right, Bottom;
  friend bool operator==(const TRect&, const TRect&) = default;
};

struct TRectF {
  float Left, Top, Right, Bottom;
  friend bool operator==(const TRectF&, const TRectF&) = default;
};

namespace detail {

// Ties to even, saturating at the int range; NaN gives 0 rather than a trap.
inline int RoundEven(double X) noexcept {
  if (X >= 2147483647.0)
    return std::numeric_limits<int>::max();
  if (X <= -2147483648.0)
    return std::numeric_limits<int>::min();
  if (X != X)
    return 0;
  return static_cast<int>(std::lrint(X));
}

} // namespace detail

inline int RW(const TRect& R) noexcept { return R.Right - R.Left; }
inline int RH(const TRect& R) noexcept { return R.Bottom - R.Top; }
inline float RW(const TRectF& R) noexcept { return R.Right - R.Left; }
inline float RH(const TRectF& R) noexcept { return R.Bottom - R.Top; }

inline void RSetLocation(TRect& R, int X, int Y) noexcept {
  R.Right += X - R.Left;
  R.Bottom += Y - R.Top;
  R.Left = X;
  R.Top = Y;
}
inline void RSetLocation(TRectF& R, float X, float Y) noexcept {
  R.Right += X - R.Left;
  R.Bottom += Y - R.Top;
  R.Left = X;
  R.Top = Y;
}

inline void ROffset(TRect& R, int DX, int DY) noexcept {
  R.Left += DX;
  R.Right += DX;
  R.Top += DY;
  R.Bottom += DY;
}
inline void ROffset(TRectF& R, float DX, float DY) noexcept {
  R.Left += DX;
  R.Right += DX;
  R.Top += DY;
  R.Bottom += DY;
}

inline void RInflate(TRect& R, int DX, int DY) noexcept {
  R.Left -= DX;
  R.Top -= DY;
  R.Right += DX;
  R.Bottom += DY;
}

// Not normalised: disjoint inputs give Right < Left or Bottom < Top, which
// callers test with RW/RH <= 0.
inline TRect RIntersect(const TRect& R1, const TRect& R2) noexcept {
  return {R1.Left > R2.Left ? R1.Left : R2.Left, R1.Top > R2.Top ? R1.Top : R2.Top,
          R1.Right < R2.Right ? R1.Right : R2.Right, R1.Bottom < R2.Bottom ? R1.Bottom : R2.Bottom};
}
inline TRectF RIntersect(const TRectF& R1, const TRectF& R2) noexcept {
  return {R1.Left > R2.Left ? R1.Left : R2.Left, R1.Top > R2.Top ? R1.Top : R2.Top,
          R1.Right < R2.Right ? R1.Right : R2.Right, R1.Bottom < R2.Bottom ? R1.Bottom : R2.Bottom};
}

// Left and top inclusive, right and bottom exclusive.
inline bool RContains(const TRect& R, const TPoint& P) noexcept {
  return P.X >= R.Left && P.X < R.Right && P.Y >= R.Top && P.Y < R.Bottom;
}
inline bool RContains(const TRectF& R, const TPoint& P) noexcept {
  return P.X >= R.Left && P.X < R.Right && P.Y >= R.Top && P.Y < R.Bottom;
}
inline bool RContains(const TRectF& R, const TPointF& P) noexcept {
  return P.X >= R.Left && P.X < R.Right && P.Y >= R.Top && P.Y < R.Bottom;
}

inline bool RSame(const TRect& R1, const TRect& R2) noexcept {
  return R1.Left == R2.Left && R1.Top == R2.Top && R1.Right == R2.Right && R1.Bottom == R2.Bottom;
}

inline TRect R2R(const TRectF& R) noexcept {
  return {detail::RoundEven(R.Left), detail::RoundEven(R.Top), detail::RoundEven(R.Right),
          detail::RoundEven(R.Bottom)};
}
inline TRectF R2F(const TRect& R) noexcept {
  return {static_cast<float>(R.Left), static_cast<float>(R.Top), static_cast<float>(R.Right),
          static_cast<float>(R.Bottom)};
}
inline TPoint P2P(const TPointF& P) noexcept { return {detail::RoundEven(P.X), detail::RoundEven(P.Y)}; }
inline TPointF P2F(const TPoint& P) noexcept { return {static_cast<float>(P.X), static_cast<float>(P.Y)}; }

// Overlap means a common area: rectangles that only touch, and empty ones,
// do not intersect anything.
inline bool RectIntersects(const TRect& R1, const TRect& R2) noexcept {
  return R1.Left < R2.Right && R2.Left < R1.Right && R1.Top < R2.Bottom && R2.Top < R1.Bottom &&
         R1.Left < R1.Right && R2.Left < R2.Right && R1.Top < R1.Bottom && R2.Top < R2.Bottom;
}
inline bool RectIntersects(const TRectF& R1, const TRectF& R2) noexcept {
  return R1.Left < R2.Right && R2.Left < R1.Right && R1.Top < R2.Bottom && R2.Top < R1.Bottom &&
         R1.Left < R1.Right && R2.Left < R2.Right && R1.Top < R1.Bottom && R2.Top < R2.Bottom;
}
inline bool RectIntersects(const TRectF& R1, const TRect& R2) noexcept { return RectIntersects(R1, R2F(R2)); }

// Whether R1 lies within R2 (edges may coincide).
inline bool RectInside(const TRect& R1, const TRect& R2) noexcept {
  return R1.Left >= R2.Left && R1.Top >= R2.Top && R1.Right <= R2.Right && R1.Bottom <= R2.Bottom;
}
inline bool RectInside(const TRectF& R1, const TRect& R2) noexcept {
  return R1.Left >= R2.Left && R1.Top >= R2.Top && R1.Right <= R2.Right && R1.Bottom <= R2.Bottom;
}

inline bool Between(int X, int A, int B) noexcept { return A <= X && X <= B; }
inline bool Between(float X, float A, float B) noexcept { return A <= X && X <= B; }

inline void ExchangeSingle(float& A, float& B) noexcept {
  float t = A;
  A = B;
  B = t;
}

// Halves away from zero (2.5 -> 3, -2.5 -> -3), saturating; NaN gives 0.
inline int64_t MathRound(double X) noexcept {
  if (X >= 9223372036854775807.0)
    return std::numeric_limits<int64_t>::max();
  if (X <= -9223372036854775808.0)
    return std::numeric_limits<int64_t>::min();
  if (X != X)
    return 0;
  return std::llround(X);
}

} // namespace ht
