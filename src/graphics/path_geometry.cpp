// Arc geometry: true angles to circle parameters, arcs as cubic groups, and
// the SVG endpoint form to the centre form.
#include "graphics/path_internal.h"

#include <cmath>

namespace ht {

using detail::kDegToRad;
using detail::kTwoPi;

THtArcParams ArcParams(const THtPathRec& r) {
  THtArcParams a;
  a.RX = r.Points[1].X / 2.0;
  a.RY = r.Points[1].Y / 2.0;
  a.CX = r.Points[0].X + a.RX;
  a.CY = r.Points[0].Y + a.RY;
  double start = r.Points[2].X * kDegToRad, sweep = r.Points[2].Y * kDegToRad;
  if (a.RX == a.RY || !(a.RX > 0) || !(a.RY > 0) || !std::isfinite(start) || !std::isfinite(sweep)) {
    a.Start = start;
    a.Sweep = sweep;
    return a;
  }
  a.Start = THtPath::XCircle(start, a.RX, a.RY);
  double d = detail::WrapTurn(THtPath::XCircle(start + sweep, a.RX, a.RY) - a.Start);
  // Parameter and true angle pass the quarter turns together, so the sweep in
  // parameters is the one within half a turn of the true sweep.
  a.Sweep = d + kTwoPi * std::round((sweep - d) / kTwoPi);
  return a;
}

void ArctoBezier(double CX, double CY, double RX, double RY, double StartAngle, double SweepAngle,
                 std::vector<TPointF>& Pts) {
  Pts.clear();
  if (SweepAngle == 0 || !std::isfinite(SweepAngle) || !std::isfinite(StartAngle))
    return;
  double turns = std::ceil(std::fabs(SweepAngle) / (std::numbers::pi / 2));
  // Beyond a few turns the curve only repeats itself; keep the count bounded.
  int n = static_cast<int>(std::fmin(turns, 64.0));
  double h = SweepAngle / n;
  double s = std::sin(h / 2), c = std::cos(h / 2);
  double k = (1 - c) * 4 / 3;
  // The 0.0001 keeps the division safe for tiny segments and is part of the result.
  double t = s - k * c / (s + 0.0001);
  const double unit[4][2] = {{c, -s}, {c + k, -t}, {c + k, t}, {c, s}};
  Pts.reserve(static_cast<size_t>(3 * n + 1));
  for (int i = 0; i < n; ++i) {
    double rot = StartAngle + i * h + h / 2;
    double cr = std::cos(rot), sr = std::sin(rot);
    for (int j = i == 0 ? 0 : 1; j < 4; ++j) {
      double x = unit[j][0] * cr - unit[j][1] * sr, y = unit[j][0] * sr + unit[j][1] * cr;
      Pts.push_back({static_cast<float>(CX + x * RX), static_cast<float>(CY + y * RY)});
    }
  }
}

namespace {

// Signed angle from u to v; the cosine is clamped against rounding.
double VectorAngle(double ux, double uy, double vx, double vy) {
  double len = std::sqrt((ux * ux + uy * uy) * (vx * vx + vy * vy));
  double cs = len > 0 ? (ux * vx + uy * vy) / len : 1;
  cs = std::fmax(-1.0, std::fmin(1.0, cs));
  double a = std::acos(cs);
  return ux * vy - uy * vx < 0 ? -a : a;
}

} // namespace

void CalcArc(double X0, double Y0, double X, double Y, double& Rx, double& Ry, double Phi, bool LargeFlag,
             bool SweepFlag, double& CX, double& CY, double& AStart, double& ASweep) {
  CX = X0;
  CY = Y0;
  AStart = 0;
  ASweep = 0;
  if ((X0 == X && Y0 == Y) || Rx == 0 || Ry == 0)
    return;
  if (Rx < 0)
    Rx = -Rx;
  // Keeps the sign of a negative Ry's partner; documents written so have always been drawn this way.
  if (Ry < 0)
    Ry = -Rx;
  double phi = Phi * kDegToRad, cp = std::cos(phi), sp = std::sin(phi);
  double hx = (X0 - X) / 2, hy = (Y0 - Y) / 2;
  double x1 = cp * hx + sp * hy, y1 = -sp * hx + cp * hy;
  double lambda = x1 * x1 / (Rx * Rx) + y1 * y1 / (Ry * Ry);
  if (lambda > 1) {
    double g = std::sqrt(lambda);
    Rx *= g;
    Ry *= g;
  }
  double rx2 = Rx * Rx, ry2 = Ry * Ry;
  double den = rx2 * y1 * y1 + ry2 * x1 * x1;
  double num = rx2 * ry2 - den;
  double coef = den > 0 && num > 0 ? std::sqrt(num / den) : 0;
  if (LargeFlag == SweepFlag)
    coef = -coef;
  double cx1 = coef * Rx * y1 / Ry, cy1 = -coef * Ry * x1 / Rx;
  CX = cp * cx1 - sp * cy1 + (X0 + X) / 2;
  CY = sp * cx1 + cp * cy1 + (Y0 + Y) / 2;
  double ux = (x1 - cx1) / Rx, uy = (y1 - cy1) / Ry, vx = (-x1 - cx1) / Rx, vy = (-y1 - cy1) / Ry;
  double start = detail::WrapTurn(VectorAngle(1, 0, ux, uy));
  double delta = VectorAngle(ux, uy, vx, vy);
  double s = detail::ParamToAngle(start, Rx, Ry), e = detail::ParamToAngle(start + delta, Rx, Ry);
  double sweep = e - s;
  if (SweepFlag && sweep < 0)
    sweep += kTwoPi;
  else if (!SweepFlag && sweep > 0)
    sweep -= kTwoPi;
  AStart = s / kDegToRad;
  ASweep = sweep / kDegToRad;
}

} // namespace ht
