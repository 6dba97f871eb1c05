// Paths: THtPath, the abstract figure builder every canvas draws, and
// THtCustomPath, its record-list implementation that the library uses unless
// a canvas substitutes its own class. A THtCustomPath reads and writes SVG
// path data, flattens to polylines, transforms, measures and hit-tests.
//
//   ht::THtCustomPath p;
//   p.Parse(u"M10 10 h 80 v 40 a 10 10 0 0 1 -10 10 H10 z"_hs);
//   ht::hstring d = p.AsString();           // absolute and compact path data
//   ht::TRectF box;
//   p.GetBounds(box, nullptr);              // {10, 10, 90, 60}
//   ht::THtCustomPath lines;
//   p.Flatten(1.0f, lines);                 // moves, lines and closes only
//   bool hit = p.ContainsPoint(50, 30);     // true
//
// Angles are in degrees from the positive x axis towards positive y. An arc
// record keeps the box of its ellipse and the true angles of its ends (the
// direction from the centre to the point), as canvases expect.
#pragma once

#include "htcore/foundation/geometry.h"
#include "htcore/foundation/hstring.h"
#include "htcore/foundation/object.h"
#include "htcore/graphics/matrix.h"

#include <cstdint>
#include <span>
#include <vector>

namespace ht {

class THtCanvas;
class THtPen;
class THtCustomPath;

enum THtPathRecKind : uint8_t {
  prMoveTo,
  prLineTo,
  prCurveTo,
  prArc,
  prStartFigure,
  prCloseFigure,
  prEllipse,
  prQCurveto,
  prPolyline
};

// Point serves prMoveTo and prLineTo. Points holds, for prCurveTo, groups of
// control 1, control 2, end; for prArc three pairs X, Y, w, h, StartAngle,
// SweepAngle; for prEllipse two pairs X, Y, w, h; for prQCurveto pairs of
// control, end; for prPolyline the points.
struct THtPathRec {
  THtPathRecKind Kind = prMoveTo;
  TPointF Point{0, 0};
  std::vector<TPointF> Points;
};

class THtPath : public TObject {
public:
  explicit THtPath(bool AForClip = false);
  THtPath(const THtPath&) = delete;
  THtPath& operator=(const THtPath&) = delete;
  ~THtPath() override;

  bool FForClip = false;
  bool FFillModeWindings = false;
  // The object that carries the records: the path itself for a THtCustomPath;
  // a wrapper of a platform path may keep one beside it (freed with it).
  THtCustomPath* FCustomPath = nullptr;

  virtual bool GetFillModeWinding() const { return FFillModeWindings; }
  virtual void SetFillModeWinding(bool Value) { FFillModeWindings = Value; }
  // Circle parameter to the true angle of that point on the ellipse, radians.
  virtual double XEllipse(double Angle, double Rx, double Ry) const;
  virtual void BeginPath() {}
  virtual void EndPath() {}
  virtual void Clear() = 0;
  virtual THtPath* Clone() const = 0;
  virtual void StartFigure() {}
  virtual void CloseFigure() {}
  virtual void AddLine(float x1, float y1, float x2, float y2);
  virtual void AddArc(float X, float Y, float w, float h, float StartAngle, float SweepAngle,
                      float Width) = 0;
  virtual void AddRectangle(float X, float Y, float w, float h);
  virtual void AddRoundRect(float X, float Y, float w, float h, float RadiusX, float RadiusY);
  // Groups of control 1, control 2, end from the current point.
  virtual void AddBeziers(std::span<const TPointF> Points) { (void)Points; }
  // Pairs of control, end from the current point, raised to cubic groups.
  virtual void AddQBeziers(std::span<const TPointF> Points);
  virtual void AddPath(const THtPath& APath) = 0;
  // M, when given, transforms the result.
  virtual void GetBounds(TRectF& R, const THtMatrixData* M) const = 0;
  virtual void Transform(const THtMatrixData& M) = 0;
  virtual void MoveTo(float CX, float CY) = 0;
  virtual void LineTo(float X, float Y) = 0;
  virtual void AddEllipse(float X, float Y, float w, float h);
  // Appends SVG path data. Malformed numbers read as 0 and stray characters
  // are skipped; a letter that is no path command raises ht::Exception
  // "Unknown path command " and the letter.
  virtual void Parse(const hstring& s);
  virtual bool Empty() const { return false; }
  virtual hstring AsString() const;

  void AddRectangle(const TRectF& R) { AddRectangle(R.Left, R.Top, RW(R), RH(R)); }
  void AddRoundRect(const TRectF& R, float RadiusX, float RadiusY) {
    AddRoundRect(R.Left, R.Top, RW(R), RH(R), RadiusX, RadiusY);
  }

  static TPointF GetPositionForAngle(double Angle, TPointF Center, double RadiusX, double RadiusY);
  // The true angle of a point on the ellipse to its circle parameter, radians.
  static double XCircle(double Angle, double Rx, double Ry);

protected:
  // The point the next segment starts from; (0, 0) where unknown.
  virtual TPointF CurrentPoint() const;
};

// Cubic groups approximating an elliptic arc given by circle parameters in
// radians: 3n + 1 points, n quarter turns or less each. Nothing for sweep 0.
void ArctoBezier(double CX, double CY, double RX, double RY, double StartAngle, double SweepAngle,
                 std::vector<TPointF>& Pts);

// SVG endpoint arc to centre form. Angles come back in degrees, as true
// angles of the ellipse with radii Rx, Ry (grown when too small to reach).
void CalcArc(double X0, double Y0, double X, double Y, double& Rx, double& Ry, double Phi, bool LargeFlag,
             bool SweepFlag, double& CX, double& CY, double& AStart, double& ASweep);

class THtCustomPath : public THtPath {
public:
  explicit THtCustomPath(bool AForClip = false);
  ~THtCustomPath() override = default;

  // The records in [0, FCount); FRecs may hold spare slots behind them.
  std::vector<THtPathRec> FRecs;
  int FCount = 0;
  // Tolerance of the point merging rules of MoveTo and LineTo.
  float Tolerance = 1e-6f;

  void Clear() override;
  THtPath* Clone() const override;
  void CloseFigure() override;
  void StartFigure() override;
  void AddArc(float X, float Y, float w, float h, float StartAngle, float SweepAngle, float Width) override;
  void AddRectangle(float X, float Y, float w, float h) override;
  void AddBeziers(std::span<const TPointF> APoints) override;
  void AddPath(const THtPath& APath) override;
  void GetBounds(TRectF& R, const THtMatrixData* M) const override;
  void Transform(const THtMatrixData& M) override;
  void MoveTo(float X, float Y) override;
  void LineTo(float X, float Y) override;
  void AddEllipse(float X, float Y, float w, float h) override;
  bool Empty() const override { return FCount == 0; }
  hstring AsString() const override;
  // The same data with absolute coordinates only (M, L, C, Q, A, z).
  hstring AsAbsoluteString() const;
  // Ray cast over the flattened outline: even-odd, or non-zero winding when
  // FFillModeWindings is set. Needs two records and the point in the bounds.
  virtual bool ContainsPoint(float x, float y) const;

  using THtPath::AddRectangle;
  using THtPath::AddRoundRect;

  THtPathRec& Add(THtPathRecKind Kind);
  void Translate(float dx, float dy);
  // Replays lines, arcs and ellipses through the canvas; curves are not drawn.
  void DrawPath(THtCanvas& Canvas, THtPen& Pen) const;
  TPointF LastPoint() const;
  bool IsRect() const;
  bool HasCurves() const;
  void Assign(const THtCustomPath& Source);
  // Appends moves, lines and closes to Res. Tolerance works as a resolution:
  // larger values give more segments (a cubic group takes 3 to 10, an arc
  // steps at most 10 degrees, and never more than 1024 steps).
  void Flatten(float Tolerance, THtCustomPath& Res) const;
  // Length of the outline, closing segments included, flattened at Tolerance.
  double Length(float Tolerance = 1.0f) const;
  const THtPathRec& GetRec(int Index) const { return FRecs[static_cast<size_t>(Index)]; }
  int Count() const { return FCount; }

protected:
  TPointF CurrentPoint() const override { return LastPoint(); }

private:
  hstring Write(bool Absolute) const;
};

// The points of an arc record: centre, radii and the ends as circle
// parameters in radians, with the sweep's direction and full turns kept.
struct THtArcParams {
  double CX, CY, RX, RY, Start, Sweep;
};
THtArcParams ArcParams(const THtPathRec& Rec);

} // namespace ht
