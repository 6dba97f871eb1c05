#include "graphics/path_dump.h"
#include "htcore/graphics/path.h"

#include <cmath>
#include <gtest/gtest.h>
#include <string>

using namespace ht;

TEST(PathBuild, MergingRules) {
  THtCustomPath p;
  p.MoveTo(1, 1);
  p.MoveTo(2, 2); // a move after a move replaces it
  EXPECT_EQ(Dump(p), "M2,2");
  p.LineTo(5, 2);
  p.LineTo(5, 2); // same point twice: once
  EXPECT_EQ(Dump(p), "M2,2 L5,2");
  p.LineTo(9, 2); // continues the horizontal line: its end moves
  p.LineTo(12, 2);
  EXPECT_EQ(Dump(p), "M2,2 L12,2");
  p.LineTo(12, 6);
  p.LineTo(12, 9);
  EXPECT_EQ(Dump(p), "M2,2 L12,2 L12,9");
  p.MoveTo(12, 9); // at the last point: nothing
  EXPECT_EQ(p.Count(), 3);
  p.CloseFigure();
  p.LineTo(0, 0); // a line after a close begins a new figure
  EXPECT_EQ(Dump(p), "M2,2 L12,2 L12,9 Z M0,0");
  p.MoveTo(0, 0); // after a move: replaces it with the same point
  EXPECT_EQ(p.Count(), 5);
}

TEST(PathBuild, RectanglesAndRoundRects) {
  THtCustomPath r;
  r.AddRectangle(1, 2, 10, 5);
  EXPECT_EQ(Dump(r), "M1,2 L11,2 L11,7 L1,7 Z");
  EXPECT_TRUE(r.IsRect());
  EXPECT_TRUE(r.HasCurves()); // a close counts

  THtCustomPath rr;
  rr.AddRoundRect(TRectF{0, 0, 100, 50}, 10, 5);
  EXPECT_EQ(Dump(rr), "M10,0 L90,0 A80,0,20,10,270,90 L100,45 A80,40,20,10,360,90 L10,50 "
                      "A0,40,20,10,90,90 L0,45 A0,0,20,10,180,90");
  EXPECT_FALSE(rr.IsRect());
  // The box of a corner is capped by the rectangle's size.
  THtCustomPath small;
  small.AddRoundRect(0, 0, 10, 4, 8, 8);
  EXPECT_EQ(small.GetRec(2).Points[1], (TPointF{10, 4}));

  THtCustomPath tri;
  tri.MoveTo(0, 0);
  tri.LineTo(10, 0);
  tri.LineTo(10, 10);
  tri.LineTo(0, 0); // a slanted side
  EXPECT_FALSE(tri.IsRect());
}

TEST(PathBuild, BeziersFromTheLastPoint) {
  THtCustomPath p;
  p.MoveTo(0, 0);
  const TPointF pts[] = {{1, 1}, {2, 1}, {3, 0}, {4, 4}, {5, 5}, {3, 0}, {9, 9}};
  p.AddBeziers(pts); // the second group ends where it starts: a line; the 7th point is dropped
  EXPECT_EQ(Dump(p), "M0,0 C1,1,2,1,3,0 L3,0");
  const TPointF two[] = {{1, 1}, {2, 2}};
  p.AddBeziers(two); // too few
  EXPECT_EQ(p.Count(), 3);

  THtCustomPath q;
  q.MoveTo(0, 0);
  const TPointF quad[] = {{3, 6}, {6, 0}};
  q.AddQBeziers(quad);
  EXPECT_EQ(Dump(q), "M0,0 C2,4,4,4,6,0");
  EXPECT_EQ(q.LastPoint(), (TPointF{6, 0}));
}

TEST(PathBuild, LastPointSkipsClosesAndFollowsArcs) {
  THtCustomPath p;
  EXPECT_EQ(p.LastPoint(), (TPointF{0, 0}));
  p.AddArc(0, 0, 20, 20, 0, 90, 1); // ends at the bottom of the circle
  TPointF lp = p.LastPoint();
  EXPECT_NEAR(lp.X, 10, 1e-4);
  EXPECT_NEAR(lp.Y, 20, 1e-4);
  p.CloseFigure();
  p.StartFigure();
  EXPECT_NEAR(p.LastPoint().Y, 20, 1e-4);
  // On an ellipse the angle is the direction of the point from the centre.
  THtCustomPath e;
  e.AddArc(-20, -10, 40, 20, 0, 45, 1);
  lp = e.LastPoint();
  EXPECT_NEAR(lp.X, lp.Y, 1e-4);
}

TEST(PathBuild, BoundsTransformsAndTranslate) {
  THtCustomPath p;
  TRectF b;
  p.GetBounds(b, nullptr);
  EXPECT_EQ(b, (TRectF{0, 0, 0, 0}));
  p.MoveTo(5, 6);
  p.GetBounds(b, nullptr);
  EXPECT_EQ(b, (TRectF{5, 6, 5, 6}));
  const TPointF pts[] = {{0, 20}, {10, -4}, {8, 8}};
  p.AddBeziers(pts); // control points count
  p.GetBounds(b, nullptr);
  EXPECT_EQ(b, (TRectF{0, -4, 10, 20}));
  THtMatrixData m = THtMatrixData::CreateScaled(2, 2);
  p.GetBounds(b, &m);
  EXPECT_EQ(b, (TRectF{0, -8, 20, 40}));

  THtCustomPath a;
  a.AddArc(0, 0, 10, 10, 0, 90, 1);
  a.AddEllipse(20, 20, 4, 2);
  a.Translate(1, 1);
  a.GetBounds(b, nullptr);
  EXPECT_EQ(b, (TRectF{1, 1, 25, 23}));
  EXPECT_EQ(a.GetRec(1).Points[1], (TPointF{4, 2})); // sizes stay

  // A transform turns arcs into curves, joined to the figure by a line.
  THtCustomPath t;
  t.MoveTo(0, 0);
  t.AddArc(0, 0, 10, 10, 0, 180, 1);
  t.Transform(THtMatrixData::CreateTranslation(1, 0));
  EXPECT_EQ(t.GetRec(0).Point, (TPointF{1, 0}));
  EXPECT_EQ(t.GetRec(1).Kind, prLineTo);
  EXPECT_NEAR(t.GetRec(1).Point.X, 11, 1e-4);
  EXPECT_EQ(t.GetRec(2).Kind, prCurveTo);
  EXPECT_EQ(t.GetRec(2).Points.size(), 6u);
  EXPECT_TRUE(t.HasCurves());
  EXPECT_FALSE(t.IsRect());
}

TEST(PathBuild, ArcToBezierStaysOnTheCircle) {
  std::vector<TPointF> pts;
  ArctoBezier(0, 0, 10, 10, 0, 0, pts);
  EXPECT_TRUE(pts.empty());
  ArctoBezier(5, 5, 10, 10, 0, std::numbers::pi * 1.5, pts);
  ASSERT_EQ(pts.size(), 10u); // three quarter segments
  for (size_t i = 0; i < pts.size(); i += 3)
    EXPECT_NEAR(std::hypot(pts[i].X - 5, pts[i].Y - 5), 10, 1e-3) << i;
  EXPECT_NEAR(pts.back().X, 5, 1e-4);
  EXPECT_NEAR(pts.back().Y, -5, 1e-4);
  ArctoBezier(0, 0, 1, 1, 0, INFINITY, pts);
  EXPECT_TRUE(pts.empty());
  ArctoBezier(0, 0, 1, 1, 0, 1e30, pts); // bounded
  EXPECT_LE(pts.size(), 3u * 64 + 1);
}

TEST(PathBuild, CalcArc) {
  struct {
    double x0, y0, x, y, rx, ry, phi;
    bool large, sweep;
    double cx, cy, start, sweepDeg, rxOut;
  } cases[] = {
      {0, 0, 20, 0, 10, 10, 0, false, true, 10, 0, 180, 180, 10},
      {0, 0, 20, 0, 10, 10, 0, false, false, 10, 0, 180, -180, 10},
      {0, 0, 10, 10, 10, 10, 0, false, true, 0, 10, 270, 90, 10}, // the small quarter
      {0, 0, 10, 10, 10, 10, 0, true, true, 10, 0, 180, 270, 10}, // the large way round
      {0, 0, 40, 0, 1, 1, 0, false, true, 20, 0, 180, 180, 20},   // radius grows to reach
      {5, 5, 5, 5, 10, 10, 0, false, true, 5, 5, 0, 0, 10},       // same ends: nothing
  };
  for (auto& c : cases) {
    double rx = c.rx, ry = c.ry, cx, cy, st, sw;
    CalcArc(c.x0, c.y0, c.x, c.y, rx, ry, c.phi, c.large, c.sweep, cx, cy, st, sw);
    EXPECT_NEAR(cx, c.cx, 1e-6);
    EXPECT_NEAR(cy, c.cy, 1e-6);
    EXPECT_NEAR(st, c.start, 1e-6);
    EXPECT_NEAR(sw, c.sweepDeg, 1e-6);
    EXPECT_NEAR(rx, c.rxOut, 1e-9);
  }
}

TEST(PathMeasure, FlattenGivesLinesOnly) {
  THtCustomPath p;
  p.Parse(u"M0 0 C 0 10 10 10 10 0 L 20 0 A 5 5 0 0 1 30 0 Z");
  THtCustomPath f;
  p.Flatten(1, f);
  for (int i = 0; i < f.Count(); ++i) {
    THtPathRecKind k = f.GetRec(i).Kind;
    EXPECT_TRUE(k == prMoveTo || k == prLineTo || k == prCloseFigure) << i;
  }
  // The curve's chord is 10 long at resolution 1: 10 segments (3 at the least).
  EXPECT_EQ(f.GetRec(10).Point, (TPointF{10, 0}));
  EXPECT_EQ(f.GetRec(f.Count() - 1).Kind, prCloseFigure);
  // A counter-clockwise arc follows its curve, not the chord.
  THtCustomPath ccw, lines;
  ccw.Parse(u"M0 0 A 10 10 0 0 0 20 0");
  ccw.Flatten(1, lines);
  float maxY = 0;
  for (int i = 0; i < lines.Count(); ++i)
    maxY = std::max(maxY, lines.GetRec(i).Point.Y);
  EXPECT_NEAR(maxY, 10, 0.01);
  EXPECT_GT(lines.Count(), 10);
}

TEST(PathMeasure, FlattenIsBoundedOnHostileInput) {
  const char16_t* cases[] = {u"M0 0 A 1e30 1e30 0 1 1 1e30 0", u"M0 0 A 1e-30 1e-30 0 1 1 1 0",
                             u"M1e38 1e38 C -1e38 0 1e38 0 -1e38 1", u"M0 0 A 10 10 0 1 1 0 1e-7"};
  for (const char16_t* s : cases)
    for (float tol : {0.0f, 1e-9f, 1.0f, 1e9f, NAN, INFINITY}) {
      THtCustomPath p, f;
      p.Parse(s);
      p.Flatten(tol, f);
      EXPECT_LT(f.Count(), 3000) << std::string(hstring(s).toUtf8()) << " " << tol;
    }
  THtCustomPath nan;
  nan.AddArc(NAN, 0, INFINITY, NAN, 0, 1e30f, 1);
  nan.AddArc(0, 0, 10, 10, 0, 1e30f, 1);
  THtCustomPath f;
  nan.Flatten(1e9f, f);
  EXPECT_LE(f.Count(), 1030);
}

TEST(PathMeasure, LengthAndHitTests) {
  THtCustomPath sq;
  sq.AddRectangle(0, 0, 10, 10);
  EXPECT_NEAR(sq.Length(), 40, 1e-4);
  THtCustomPath circle;
  circle.Parse(u"M0 10 A10 10 0 0 1 20 10 A10 10 0 0 1 0 10z");
  EXPECT_NEAR(circle.Length(4), 2 * std::numbers::pi * 10, 0.05);

  struct {
    float x, y;
    bool in;
  } hits[] = {{5, 5, true}, {-1, 5, false}, {10.5f, 5, false}, {0.001f, 9.99f, true}};
  for (auto& h : hits)
    EXPECT_EQ(sq.ContainsPoint(h.x, h.y), h.in) << h.x << "," << h.y;
  EXPECT_TRUE(circle.ContainsPoint(10, 10));
  EXPECT_FALSE(circle.ContainsPoint(1, 1)); // inside the box, outside the circle

  // Two nested squares drawn the same way: a hole for even-odd, filled for winding.
  THtCustomPath nested;
  nested.AddRectangle(0, 0, 30, 30);
  nested.AddRectangle(10, 10, 10, 10);
  EXPECT_FALSE(nested.ContainsPoint(15, 15));
  nested.SetFillModeWinding(true);
  EXPECT_TRUE(nested.ContainsPoint(15, 15));
  EXPECT_TRUE(nested.ContainsPoint(5, 5));

  // An open figure is closed for the test.
  THtCustomPath open;
  open.Parse(u"M0 0 L10 0 L10 10");
  EXPECT_TRUE(open.ContainsPoint(8, 2));
  EXPECT_FALSE(open.ContainsPoint(2, 8));
}
