// Building paths: the default figure operations of THtPath and the record
// list of THtCustomPath with its point merging rules.
#include "htcore/graphics/path.h"

#include "graphics/path_internal.h"

#include <cmath>
#include <numbers>

namespace ht {

THtPath::THtPath(bool AForClip) : FForClip(AForClip) {}

THtPath::~THtPath() {
  if (FCustomPath != this)
    delete FCustomPath;
}

double THtPath::XEllipse(double Angle, double Rx, double Ry) const {
  return detail::ParamToAngle(Angle, Rx, Ry);
}

double THtPath::XCircle(double Angle, double Rx, double Ry) { return detail::AngleToParam(Angle, Rx, Ry); }

TPointF THtPath::GetPositionForAngle(double Angle, TPointF Center, double RadiusX, double RadiusY) {
  double a = Angle * detail::kDegToRad;
  return {static_cast<float>(std::cos(a) * RadiusX + Center.X),
          static_cast<float>(std::sin(a) * RadiusY + Center.Y)};
}

TPointF THtPath::CurrentPoint() const { return FCustomPath ? FCustomPath->LastPoint() : TPointF{0, 0}; }

void THtPath::AddLine(float x1, float y1, float x2, float y2) {
  MoveTo(x1, y1);
  LineTo(x2, y2);
}

void THtPath::AddRectangle(float X, float Y, float w, float h) {
  AddLine(X, Y, X + w, Y);
  LineTo(X + w, Y + h);
  LineTo(X, Y + h);
  LineTo(X, Y);
}

void THtPath::AddRoundRect(float X, float Y, float w, float h, float RadiusX, float RadiusY) {
  float R = X + w, B = Y + h;
  float bw = std::fmin(2 * RadiusX, w), bh = std::fmin(2 * RadiusY, h);
  AddLine(X + RadiusX, Y, R - RadiusX, Y);
  AddArc(R - bw, Y, bw, bh, 270, 90, 1.0f);
  LineTo(R, B - RadiusY);
  AddArc(R - bw, B - bh, bw, bh, 360, 90, 1.0f);
  LineTo(X + RadiusX, B);
  AddArc(X, B - bh, bw, bh, 90, 90, 1.0f);
  LineTo(X, B - RadiusY);
  AddArc(X, Y, bw, bh, 180, 90, 1.0f);
}

void THtPath::AddQBeziers(std::span<const TPointF> Points) {
  TPointF p = CurrentPoint();
  std::vector<TPointF> cubic;
  cubic.reserve(Points.size() / 2 * 3);
  for (size_t i = 0; i + 1 < Points.size(); i += 2) {
    TPointF c = Points[i], e = Points[i + 1];
    cubic.push_back({(2 * c.X + p.X) / 3, (2 * c.Y + p.Y) / 3});
    cubic.push_back({(2 * c.X + e.X) / 3, (2 * c.Y + e.Y) / 3});
    cubic.push_back(e);
    p = e;
  }
  AddBeziers(cubic);
}

void THtPath::AddEllipse(float X, float Y, float w, float h) { AddArc(X, Y, w, h, 0, 359.9f, 1.0f); }

hstring THtPath::AsString() const { return FCustomPath ? FCustomPath->AsString() : hstring(); }

THtCustomPath::THtCustomPath(bool AForClip) : THtPath(AForClip) { FCustomPath = this; }

THtPathRec& THtCustomPath::Add(THtPathRecKind Kind) {
  ++FCount;
  if (FRecs.size() < static_cast<size_t>(FCount))
    FRecs.resize(static_cast<size_t>(FCount) + 4);
  THtPathRec& r = FRecs[static_cast<size_t>(FCount - 1)];
  r.Kind = Kind;
  r.Point = {0, 0};
  r.Points.clear();
  return r;
}

// The records stay allocated: a path cleared and refilled reuses their point arrays.
void THtCustomPath::Clear() { FCount = 0; }

THtPath* THtCustomPath::Clone() const {
  auto* p = new THtCustomPath(false);
  p->Assign(*this);
  return p;
}

void THtCustomPath::Assign(const THtCustomPath& Source) {
  if (&Source == this)
    return;
  FRecs.assign(Source.FRecs.begin(), Source.FRecs.begin() + Source.FCount);
  FCount = Source.FCount;
  FFillModeWindings = Source.FFillModeWindings;
  Tolerance = Source.Tolerance;
}

void THtCustomPath::CloseFigure() { Add(prCloseFigure); }
void THtCustomPath::StartFigure() { Add(prStartFigure); }

void THtCustomPath::AddArc(float X, float Y, float w, float h, float StartAngle, float SweepAngle, float) {
  Add(prArc).Points = {{X, Y}, {w, h}, {StartAngle, SweepAngle}};
}

void THtCustomPath::AddEllipse(float X, float Y, float w, float h) {
  Add(prEllipse).Points = {{X, Y}, {w, h}};
}

void THtCustomPath::AddRectangle(float X, float Y, float w, float h) {
  Add(prMoveTo).Point = {X, Y};
  Add(prLineTo).Point = {X + w, Y};
  Add(prLineTo).Point = {X + w, Y + h};
  Add(prLineTo).Point = {X, Y + h};
  Add(prCloseFigure);
}

void THtCustomPath::MoveTo(float X, float Y) {
  if (FCount > 0) {
    THtPathRec& last = FRecs[static_cast<size_t>(FCount - 1)];
    if (last.Kind == prMoveTo) {
      last.Point = {X, Y};
      return;
    }
    if (last.Kind != prCloseFigure) {
      TPointF lp = last.Kind == prLineTo ? last.Point : LastPoint();
      if (SameValue(X, lp.X, Tolerance) && SameValue(Y, lp.Y, Tolerance))
        return;
    }
  }
  Add(prMoveTo).Point = {X, Y};
}

void THtCustomPath::LineTo(float X, float Y) {
  if (FCount >= 2) {
    THtPathRec& last = FRecs[static_cast<size_t>(FCount - 1)];
    const THtPathRec& prev = FRecs[static_cast<size_t>(FCount - 2)];
    if (last.Kind == prLineTo && (prev.Kind == prMoveTo || prev.Kind == prLineTo)) {
      bool sameX = SameValue(X, last.Point.X, Tolerance), sameY = SameValue(Y, last.Point.Y, Tolerance);
      if (sameX && sameY)
        return;
      // A segment that continues an axis-parallel one moves its end instead.
      if (sameX && SameValue(prev.Point.X, X, Tolerance)) {
        last.Point.Y = Y;
        return;
      }
      if (sameY && SameValue(prev.Point.Y, Y, Tolerance)) {
        last.Point.X = X;
        return;
      }
    }
  }
  THtPathRec& r = Add(prLineTo);
  r.Point = {X, Y};
  // A line after a close begins a new figure.
  if (FCount >= 2 && FRecs[static_cast<size_t>(FCount - 2)].Kind == prCloseFigure)
    r.Kind = prMoveTo;
}

void THtCustomPath::AddBeziers(std::span<const TPointF> APoints) {
  if (APoints.size() < 3)
    return;
  TPointF cur = LastPoint();
  for (size_t i = 0; i + 2 < APoints.size(); i += 3) {
    TPointF e = APoints[i + 2];
    if (SameValue(e.X, cur.X, Tolerance) && SameValue(e.Y, cur.Y, Tolerance))
      LineTo(e.X, e.Y);
    else
      Add(prCurveTo).Points.assign(APoints.begin() + static_cast<ptrdiff_t>(i),
                                   APoints.begin() + static_cast<ptrdiff_t>(i + 3));
    cur = e;
  }
}

void THtCustomPath::AddPath(const THtPath& APath) {
  const THtCustomPath* src = APath.FCustomPath;
  if (!src || src == this) {
    if (src == this) { // a copy first: adding grows the array being read
      std::vector<THtPathRec> copy(FRecs.begin(), FRecs.begin() + FCount);
      for (const THtPathRec& r : copy)
        Add(r.Kind) = r;
    }
    return;
  }
  for (int i = 0; i < src->FCount; ++i) {
    const THtPathRec& r = src->FRecs[static_cast<size_t>(i)];
    Add(r.Kind) = r;
  }
}

TPointF THtCustomPath::LastPoint() const {
  for (int i = FCount - 1; i >= 0; --i) {
    const THtPathRec& r = FRecs[static_cast<size_t>(i)];
    switch (r.Kind) {
    case prStartFigure:
    case prCloseFigure:
      continue;
    case prMoveTo:
    case prLineTo:
      return r.Point;
    case prArc:
      return detail::ArcEnd(r);
    case prEllipse:
      return {r.Points[0].X + r.Points[1].X, r.Points[0].Y + r.Points[1].Y / 2};
    default:
      return r.Points.empty() ? TPointF{0, 0} : r.Points.back();
    }
  }
  return {0, 0};
}

void THtCustomPath::Translate(float dx, float dy) {
  for (int i = 0; i < FCount; ++i) {
    THtPathRec& r = FRecs[static_cast<size_t>(i)];
    switch (r.Kind) {
    case prMoveTo:
    case prLineTo:
      r.Point.X += dx;
      r.Point.Y += dy;
      break;
    case prCurveTo:
    case prQCurveto:
    case prPolyline:
      for (TPointF& p : r.Points) {
        p.X += dx;
        p.Y += dy;
      }
      break;
    case prArc:
    case prEllipse:
      r.Points[0].X += dx;
      r.Points[0].Y += dy;
      break;
    default:
      break;
    }
  }
}

void THtCustomPath::Transform(const THtMatrixData& M) {
  std::vector<THtPathRec> out;
  out.reserve(static_cast<size_t>(FCount));
  TPointF cur{0, 0}; // untransformed
  bool figure = false;
  for (int i = 0; i < FCount; ++i) {
    THtPathRec r = FRecs[static_cast<size_t>(i)];
    switch (r.Kind) {
    case prMoveTo:
    case prLineTo:
      cur = r.Point;
      figure = true;
      r.Point = M.TransformPoint(r.Point);
      break;
    case prArc: {
      THtArcParams a = ArcParams(r);
      std::vector<TPointF> pts;
      ArctoBezier(a.CX, a.CY, a.RX, a.RY, a.Start, a.Sweep, pts);
      if (pts.empty())
        continue;
      // The arc is joined to the figure by a line; as curves it needs that line spelled out.
      if (!figure || !SameValue(pts[0].X, cur.X, Tolerance) || !SameValue(pts[0].Y, cur.Y, Tolerance)) {
        THtPathRec join;
        join.Kind = figure ? prLineTo : prMoveTo;
        join.Point = M.TransformPoint(pts[0]);
        out.push_back(std::move(join));
      }
      cur = pts.back();
      figure = true;
      r.Kind = prCurveTo;
      r.Points.assign(pts.begin() + 1, pts.end());
      for (TPointF& p : r.Points)
        p = M.TransformPoint(p);
      break;
    }
    case prEllipse:
      // Only the origin moves: a rotated ellipse is drawn unrotated, as designed;
      // an ellipse that must turn is added as an arc.
      r.Points[0] = M.TransformPoint(r.Points[0]);
      break;
    case prCloseFigure:
    case prStartFigure:
      figure = false;
      break;
    default:
      if (!r.Points.empty())
        cur = r.Points.back();
      figure = true;
      for (TPointF& p : r.Points)
        p = M.TransformPoint(p);
      break;
    }
    out.push_back(std::move(r));
  }
  FCount = static_cast<int>(out.size());
  FRecs = std::move(out);
}

bool THtCustomPath::HasCurves() const {
  for (int i = 0; i < FCount; ++i)
    switch (FRecs[static_cast<size_t>(i)].Kind) {
    case prCurveTo:
    case prArc:
    case prStartFigure:
    case prCloseFigure:
      return true;
    default:
      break;
    }
  return false;
}

bool THtCustomPath::IsRect() const {
  if (FCount > 7 || FCount == 0)
    return false;
  int lines = 0;
  TPointF prev = FRecs[0].Kind <= prLineTo ? FRecs[0].Point : TPointF{0, 0};
  for (int i = 1; i < FCount; ++i) {
    const THtPathRec& r = FRecs[static_cast<size_t>(i)];
    switch (r.Kind) {
    case prLineTo:
      if (r.Point.X != prev.X && r.Point.Y != prev.Y)
        return false;
      prev = r.Point;
      ++lines;
      break;
    case prStartFigure:
    case prCloseFigure:
    case prPolyline:
      break;
    default:
      return false;
    }
  }
  return lines == 3 || lines == 4;
}

} // namespace ht
