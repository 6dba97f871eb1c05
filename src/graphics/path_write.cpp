// Path records as SVG path data.
#include "graphics/path_internal.h"
#include "htcore/graphics/svg_writer.h"

#include <cmath>

namespace ht {

namespace {

// The value a reader gets back from the 4-decimal text.
float Written(float v) {
  double r = std::nearbyint(static_cast<double>(v) * 1e4) / 1e4;
  return std::isfinite(r) && std::fabs(r) < 1e14 ? static_cast<float>(r) : v;
}

bool Joins(const THtPathRec* p) {
  return p && (p->Kind == prMoveTo || p->Kind == prLineTo || p->Kind == prCurveTo);
}

// Relative numbers are taken from where a reader of the text stands (in its
// float arithmetic), so rounding does not add up along a long figure.
class TPathWriter {
public:
  explicit TPathWriter(THtSVGWriter& AW) : w(AW) {}

  void MoveAbs(TPointF p) {
    w.Move(p.X, p.Y);
    Set(p);
    start = at;
  }
  void LineAbs(TPointF p) {
    w.LineTo(p.X, p.Y);
    Set(p);
  }
  void LineRel(TPointF p) {
    float dx = Written(p.X - at.X), dy = Written(p.Y - at.Y);
    w.LineRel(dx, dy);
    at = {at.X + dx, at.Y + dy};
  }
  void CurveAbs(const std::vector<TPointF>& pts) {
    w.Com(u'C');
    for (TPointF p : pts)
      w.FS(p.X).F(p.Y).AddChar(u',');
    w.DeletefromEnd(1);
    w.AddChar(u' ');
    Set(pts.back());
  }
  void CurveRel(const std::vector<TPointF>& pts) {
    w.Com(u'c');
    for (size_t g = 0; g + 2 < pts.size(); g += 3) {
      TPointF base = at;
      for (size_t i = g; i < g + 3; ++i) {
        float dx = Written(pts[i].X - base.X), dy = Written(pts[i].Y - base.Y);
        w.FS(dx).F(dy).AddChar(u',');
        if (i == g + 2)
          at = {base.X + dx, base.Y + dy};
      }
    }
    w.DeletefromEnd(1);
  }
  void Arc(const THtArcParams& a, bool first) {
    TPointF s = detail::ArcPoint(a, a.Start);
    if (first)
      MoveAbs(s);
    else if (std::fabs(s.X - at.X) > 1e-4f || std::fabs(s.Y - at.Y) > 1e-4f)
      LineAbs(s);
    double sweep = a.Sweep;
    if (!std::isfinite(sweep) || sweep == 0)
      return;
    if (std::fabs(sweep) > detail::kTwoPi)
      sweep = std::copysign(detail::kTwoPi, sweep);
    // A closed ellipse has equal ends, which an SVG arc cannot express: two halves.
    int parts = std::fabs(sweep) > 359 * detail::kDegToRad ? 2 : 1;
    for (int i = 1; i <= parts; ++i) {
      TPointF e = detail::ArcPoint(a, a.Start + sweep * i / parts);
      w.Arc(static_cast<float>(std::fabs(a.RX)), static_cast<float>(std::fabs(a.RY)), 0,
            std::fabs(sweep / parts) > std::numbers::pi, sweep > 0, e.X, e.Y);
      Set(e);
    }
  }
  void Close() {
    w.Z();
    at = start;
  }

  void Set(TPointF p) { at = {Written(p.X), Written(p.Y)}; }

private:
  THtSVGWriter& w;
  TPointF at{0, 0}, start{0, 0};
};

} // namespace

hstring THtCustomPath::AsString() const { return Write(false); }

hstring THtCustomPath::AsAbsoluteString() const { return Write(true); }

hstring THtCustomPath::Write(bool Absolute) const {
  if (FCount == 0)
    return hstring();
  THtSVGWriter w(4096);
  TPathWriter out(w);
  TPointF subStart{0, 0};
  for (int i = 0; i < FCount; ++i) {
    const THtPathRec& r = FRecs[static_cast<size_t>(i)];
    const THtPathRec* p = i > 0 ? &FRecs[static_cast<size_t>(i - 1)] : nullptr;
    bool first = !p || p->Kind == prCloseFigure || p->Kind == prStartFigure;
    switch (r.Kind) {
    case prMoveTo:
      out.MoveAbs(r.Point);
      subStart = r.Point;
      break;
    case prLineTo:
      if (i == FCount - 1 && r.Point == subStart && p)
        out.Close();
      else if (Absolute || !Joins(p))
        out.LineAbs(r.Point);
      else
        out.LineRel(r.Point);
      break;
    case prCurveTo:
      if (r.Points.size() < 3)
        break;
      if (Absolute || !Joins(p))
        out.CurveAbs(r.Points);
      else
        out.CurveRel(r.Points);
      break;
    case prArc: {
      THtArcParams a = ArcParams(r);
      out.Arc(a, first);
      if (first)
        subStart = detail::ArcPoint(a, a.Start);
      break;
    }
    case prEllipse: {
      THtArcParams a = detail::EllipseArc(r);
      out.Arc(a, true);
      out.Close();
      break;
    }
    case prCloseFigure:
      out.Close();
      break;
    case prQCurveto:
      w.Com(u'Q');
      for (TPointF q : r.Points)
        w.FS(q.X).FS(q.Y);
      if (!r.Points.empty())
        out.Set(r.Points.back());
      break;
    case prPolyline:
      for (size_t k = 0; k < r.Points.size(); ++k)
        k == 0 || Absolute ? out.LineAbs(r.Points[k]) : out.LineRel(r.Points[k]);
      break;
    case prStartFigure:
      break;
    }
  }
  return w.GetAsString();
}

} // namespace ht
