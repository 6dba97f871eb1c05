// Flattening, bounds, length and hit tests of record paths.
#include "graphics/path_internal.h"

#include <algorithm>
#include <cmath>

namespace ht {

namespace {

// No single arc turns into more lines than this, whatever its size or the resolution.
constexpr double kMaxArcSteps = 1024;

class TFlattener {
public:
  TFlattener(double ATol, THtCustomPath& ARes) : tol(ATol), res(ARes) {}

  void Move(TPointF p) {
    res.Add(prMoveTo).Point = p;
    cur = start = p;
  }
  void Line(TPointF p) {
    res.Add(prLineTo).Point = p;
    cur = p;
  }
  // A curve point that adds nothing visible is dropped.
  void CurvePoint(TPointF p) {
    if (!(SameValue(p.X, cur.X) && SameValue(p.Y, cur.Y)))
      Line(p);
  }
  void Close() {
    res.Add(prCloseFigure);
    cur = start;
  }

  void CopyLine(TPointF p, bool first) {
    const double limit = tol * tol / 16;
    if (!first && res.FCount > 0 && res.FRecs[static_cast<size_t>(res.FCount - 1)].Kind == prLineTo) {
      double dx = p.X - cur.X, dy = p.Y - cur.Y;
      if (dx * dx + dy * dy < limit) {
        res.FRecs[static_cast<size_t>(res.FCount - 1)].Point = p;
        cur = p;
        return;
      }
    }
    Line(p);
  }

  int Segments(TPointF a, TPointF b) const {
    double d = std::hypot(b.X - a.X, b.Y - a.Y) * tol;
    if (!(d < 10)) // NaN included
      return d >= 10 ? 10 : 3;
    return std::max(3, static_cast<int>(std::lround(d)));
  }

  void Cubic(const std::vector<TPointF>& pts) {
    for (size_t g = 0; g + 2 < pts.size(); g += 3) {
      TPointF p0 = cur, p1 = pts[g], p2 = pts[g + 1], p3 = pts[g + 2];
      double cx = 3.0 * (p1.X - p0.X), bx = 3.0 * (p2.X - p1.X) - cx, ax = p3.X - p0.X - cx - bx;
      double cy = 3.0 * (p1.Y - p0.Y), by = 3.0 * (p2.Y - p1.Y) - cy, ay = p3.Y - p0.Y - cy - by;
      int n = Segments(p0, p3);
      for (int k = 1; k <= n; ++k) {
        double t = static_cast<double>(k) / n;
        CurvePoint({static_cast<float>(((ax * t + bx) * t + cx) * t + p0.X),
                    static_cast<float>(((ay * t + by) * t + cy) * t + p0.Y)});
      }
    }
  }

  void Quadratic(const std::vector<TPointF>& pts) {
    for (size_t g = 0; g + 1 < pts.size(); g += 2) {
      TPointF p0 = cur, c = pts[g], e = pts[g + 1];
      int n = Segments(p0, e);
      for (int k = 1; k <= n; ++k) {
        double t = static_cast<double>(k) / n, u = 1 - t;
        CurvePoint({static_cast<float>(u * u * p0.X + 2 * u * t * c.X + t * t * e.X),
                    static_cast<float>(u * u * p0.Y + 2 * u * t * c.Y + t * t * e.Y)});
      }
    }
  }

  void Arc(const THtArcParams& a, bool first) {
    double sweep = a.Sweep;
    if (!std::isfinite(sweep) || !std::isfinite(a.Start) || !std::isfinite(a.RX) || !std::isfinite(a.RY))
      return;
    TPointF s = detail::ArcPoint(a, a.Start);
    if (first)
      Move(s);
    else
      Line(s);
    sweep = std::clamp(sweep, -detail::kTwoPi, detail::kTwoPi);
    double size = std::max(std::fabs(a.RX), std::fabs(a.RY)) * 2 * tol;
    double step = std::min(size > 0 ? 360 / size : 10.0, 10.0) * detail::kDegToRad;
    double steps = std::min(std::ceil(std::fabs(sweep) / step), kMaxArcSteps);
    int n = std::max(1, static_cast<int>(steps));
    for (int k = 1; k <= n; ++k)
      Line(detail::ArcPoint(a, a.Start + sweep * k / n));
  }

  TPointF cur{0, 0}, start{0, 0};

private:
  double tol;
  THtCustomPath& res;
};

} // namespace

void THtCustomPath::Flatten(float Tolerance, THtCustomPath& Res) const {
  double tol = Tolerance > 0.001f ? Tolerance : 0.001; // NaN too
  if (!std::isfinite(tol))
    tol = 0.001;
  TFlattener f(tol, Res);
  bool first = true; // no figure yet, or the last one closed
  for (int i = 0; i < FCount; ++i) {
    const THtPathRec& r = FRecs[static_cast<size_t>(i)];
    switch (r.Kind) {
    case prMoveTo:
      f.Move(r.Point);
      break;
    case prLineTo:
      f.CopyLine(r.Point, i == 0);
      break;
    case prCloseFigure:
      f.Close();
      first = true;
      continue;
    case prStartFigure:
      first = true;
      continue;
    case prCurveTo:
      f.Cubic(r.Points);
      break;
    case prQCurveto:
      f.Quadratic(r.Points);
      break;
    case prPolyline:
      for (TPointF p : r.Points)
        f.Line(p);
      break;
    case prArc:
      f.Arc(ArcParams(r), first);
      break;
    case prEllipse: {
      THtArcParams a = detail::EllipseArc(r);
      f.Arc(a, true);
      f.Close();
      first = true;
      continue;
    }
    }
    first = false;
  }
}

double THtCustomPath::Length(float Tolerance) const {
  THtCustomPath lines;
  Flatten(Tolerance, lines);
  double len = 0;
  TPointF cur{0, 0}, start{0, 0};
  for (int i = 0; i < lines.FCount; ++i) {
    const THtPathRec& r = lines.FRecs[static_cast<size_t>(i)];
    TPointF to = r.Kind == prCloseFigure ? start : r.Point;
    if (r.Kind != prMoveTo)
      len += std::hypot(to.X - cur.X, to.Y - cur.Y);
    else
      start = to;
    cur = to;
  }
  return len;
}

void THtCustomPath::GetBounds(TRectF& R, const THtMatrixData* M) const {
  float l = 2147483648.0f, t = 2147483648.0f, r = -2147483648.0f, b = -2147483648.0f;
  auto widen = [&](float x, float y) {
    if (x < l)
      l = x;
    if (x > r)
      r = x;
    if (y < t)
      t = y;
    if (y > b)
      b = y;
  };
  for (int i = 0; i < FCount; ++i) {
    const THtPathRec& rec = FRecs[static_cast<size_t>(i)];
    switch (rec.Kind) {
    case prMoveTo:
    case prLineTo:
      widen(rec.Point.X, rec.Point.Y);
      break;
    case prArc:
    case prEllipse:
      widen(rec.Points[0].X, rec.Points[0].Y);
      widen(rec.Points[0].X + rec.Points[1].X, rec.Points[0].Y + rec.Points[1].Y);
      break;
    default:
      for (TPointF p : rec.Points)
        widen(p.X, p.Y);
      break;
    }
  }
  if (l > r || t > b) {
    R = {0, 0, 0, 0};
    return;
  }
  R = {l, t, r, b};
  if (M)
    R = M->TransformRect(R);
}

bool THtCustomPath::ContainsPoint(float x, float y) const {
  if (FCount < 2)
    return false;
  TRectF box;
  GetBounds(box, nullptr);
  if (!(x >= box.Left && x <= box.Right && y >= box.Top && y <= box.Bottom))
    return false;
  THtCustomPath lines;
  Flatten(4.0f, lines);
  int crossings = 0, winding = 0;
  TPointF cur{0, 0}, start{0, 0};
  auto edge = [&](TPointF a, TPointF b) {
    if ((a.Y > y) == (b.Y > y) || (a.X > x && b.X > x))
      return;
    double xc = a.X + (static_cast<double>(y) - a.Y) * (b.X - a.X) / (static_cast<double>(b.Y) - a.Y);
    if (xc <= x) {
      ++crossings;
      winding += b.Y > a.Y ? 1 : -1;
    }
  };
  // Every figure is closed for the test, as it is for a fill.
  for (int i = 0; i < lines.FCount; ++i) {
    const THtPathRec& r = lines.FRecs[static_cast<size_t>(i)];
    if (r.Kind == prMoveTo) {
      edge(cur, start);
      cur = start = r.Point;
    } else if (r.Kind == prCloseFigure) {
      edge(cur, start);
      cur = start;
    } else {
      edge(cur, r.Point);
      cur = r.Point;
    }
  }
  edge(cur, start);
  return FFillModeWindings ? winding != 0 : (crossings & 1) != 0;
}

} // namespace ht
