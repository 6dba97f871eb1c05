// Helpers shared by the path sources.
#pragma once

#include "htcore/graphics/path.h"

#include <cmath>
#include <numbers>

namespace ht::detail {

constexpr double kDegToRad = std::numbers::pi / 180.0;
constexpr double kTwoPi = 2 * std::numbers::pi;

// Into [0, 2*pi); a value that is not finite gives 0.
inline double WrapTurn(double a) {
  if (!std::isfinite(a))
    return 0;
  a = std::fmod(a, kTwoPi);
  if (a < 0)
    a += kTwoPi;
  return a >= kTwoPi ? 0 : a;
}

// Circle parameter to the true angle of that point on the ellipse, and back.
// atan2 of the point itself: the tangent form breaks down at a quarter turn.
inline double ParamToAngle(double t, double Rx, double Ry) {
  return WrapTurn(std::atan2(std::sin(t) * Ry, std::cos(t) * Rx));
}
inline double AngleToParam(double a, double Rx, double Ry) {
  return WrapTurn(std::atan2(std::sin(a) * Rx, std::cos(a) * Ry));
}

inline TPointF ArcPoint(const THtArcParams& a, double t) {
  return {static_cast<float>(a.CX + a.RX * std::cos(t)), static_cast<float>(a.CY + a.RY * std::sin(t))};
}

// A whole ellipse record as one full turn of arc from angle 0.
inline THtArcParams EllipseArc(const THtPathRec& r) {
  return {r.Points[0].X + r.Points[1].X / 2.0,
          r.Points[0].Y + r.Points[1].Y / 2.0,
          r.Points[1].X / 2.0,
          r.Points[1].Y / 2.0,
          0,
          kTwoPi};
}

inline TPointF ArcEnd(const THtPathRec& r) {
  THtArcParams a = ArcParams(r);
  return ArcPoint(a, a.Start + a.Sweep);
}

} // namespace ht::detail
