#include "graphics/path_dump.h"
#include "htcore/foundation/exception.h"
#include "htcore/graphics/path.h"
#include "htcore/graphics/svg_writer.h"

#include <gtest/gtest.h>
#include <string>

using namespace ht;

namespace {

std::string Parsed(const char16_t* s) {
  THtCustomPath p;
  p.Parse(s);
  return Dump(p);
}

std::string Written(const char16_t* s) {
  THtCustomPath p;
  p.Parse(s);
  return p.AsString().toUtf8();
}

} // namespace

TEST(PathParse, Commands) {
  struct {
    const char16_t* in;
    const char* records;
  } cases[] = {
      {u"M10 20 L30 40", "M10,20 L30,40"},
      {u"m10 20 l5 5 l5 -5", "M10,20 L15,25 L20,20"},
      {u"M1,2 3,4 5,6", "M1,2 L3,4 L5,6"}, // pairs after a move are lines
      {u"m1 2 3 4", "M1,2 L4,6"},          // relative ones after a relative move
      {u"M0 0H10V5h-5v-5", "M0,0 L10,0 L10,5 L5,5 L5,0"},
      {u"M0 0L10-5.5.5.5", "M0,0 L10,-5.5 L0.5,0.5"}, // compact numbers
      {u"M0 0 1e1 2E-1", "M0,0 L10,0.2"},
      {u"M0 0 C1 1 2 1 3 0 4 -1 5 -1 6 0", "M0,0 C1,1,2,1,3,0 C4,-1,5,-1,6,0"},
      {u"M0 0 c1 1 2 1 3 0 1 -1 2 -1 3 0", "M0,0 C1,1,2,1,3,0 C4,-1,5,-1,6,0"},
      {u"M0 0 C1 1 2 1 3 0 S5 -1 6 0", "M0,0 C1,1,2,1,3,0 C4,-1,5,-1,6,0"}, // reflected control
      {u"M0 0 s2 1 3 0 2 -1 3 0", "M0,0 C0,0,2,1,3,0 C4,-1,5,-1,6,0"},      // no curve before: current point
      {u"M0 0 Q3 6 6 0", "M0,0 C2,4,4,4,6,0"},
      {u"M0 0 q3 6 6 0 3 -6 6 0", "M0,0 C2,4,4,4,6,0 C8,-4,10,-4,12,0"},
      {u"M0 0 Q3 6 6 0 T12 0", "M0,0 C2,4,4,4,6,0 C8,-4,10,-4,12,0"},
      {u"M0 0 T6 0", "M0,0 C0,0,2,0,6,0"}, // no quadratic before: the control is the current point
      {u"M0 0 L10 0 L10 10 Z L5 5",
       "M0,0 L10,0 L10,10 Z M0,0 L5,5"}, // drawing after a close starts at the figure's start
      {u"M0 0 L10 0 z z", "M0,0 L10,0 Z"},
      {u"M0 0 A10 10 0 0 1 20 0", "M0,0 A0,-10,20,20,180,180"},
      {u"M0 0 a10 10 0 0120 0", "M0,0 A0,-10,20,20,180,180"}, // flags need no separator
      {u"M0 0 A0 10 0 0 1 20 0", "M0,0 L20,0"},               // a flat arc is a line
      {u"M5 5 A10 10 0 0 1 5 5", "M5,5"},                     // no distance: nothing
      {u"10 0 0 5", "M0,0 L10,0 L10,5"},                      // numbers before any command: relative lines
      {u"", ""},
      {u"  ,;#", ""},
      {u"M 1 2 . - + 3", "M1,2 L0,0 L3,0"}, // lone signs and points read as nothing or 0
  };
  for (auto& c : cases)
    EXPECT_EQ(Parsed(c.in), c.records) << std::string(hstring(c.in).toUtf8());
}

TEST(PathParse, RotatedArcsBecomeCurves) {
  THtCustomPath p;
  p.Parse(u"M0 0 A20 10 30 0 1 30 10 L 40 40");
  ASSERT_EQ(p.GetRec(1).Kind, prCurveTo); // joined to the figure, no second move
  TPointF end = p.GetRec(1).Points.back();
  EXPECT_NEAR(end.X, 30, 1e-3);
  EXPECT_NEAR(end.Y, 10, 1e-3);
  EXPECT_EQ(p.GetRec(2).Point, (TPointF{40, 40}));
}

TEST(PathParse, UnknownCommandRaises) {
  THtCustomPath p;
  try {
    p.Parse(u"M0 0 L1 1 X 5");
    FAIL();
  } catch (const Exception& e) {
    EXPECT_STREQ(e.what(), "Unknown path command X");
  }
  EXPECT_EQ(Dump(p), "M0,0 L1,1");              // what came before stays
  EXPECT_THROW(p.Parse(u"M0 0 1e"), Exception); // the letter of a broken exponent
}

TEST(SVGWriter, Commands) {
  THtSVGWriter w(64);
  w.Com(u'M');
  w.Com(u'L'); // a move is remembered as a line
  EXPECT_EQ(w.GetAsString().toUtf8(), "M");
  THtSVGWriter l(64);
  l.LineTo(1, 2).LineTo(3, 4);
  EXPECT_EQ(l.GetAsString().toUtf8(), "L1 2 3 4 ");
  THtSVGWriter r(64);
  r.LineRel(0, 0).LineRel(0, 5).LineRel(-2.5f, 0).Move(1, 2).Move(3, 4).Z();
  EXPECT_EQ(r.GetAsString().toUtf8(), "l0 0 v5 h-2.5 M1 2M3 4z");
  THtSVGWriter a(64);
  a.Arc(5, 5, 0, true, false, 1.23456f, 0);
  EXPECT_EQ(a.GetAsString().toUtf8(), "A5 5 0 1 0 1.2346 0 ");
}

TEST(PathWrite, Forms) {
  struct {
    const char16_t* in;
    const char* out;
  } cases[] = {
      {u"", ""},
      {u"M10 20", "M10 20"},
      {u"M0 0 L10 0 L10 5 L0 5 Z", "M0 0h10 v5 h-10 z"},
      {u"M0 0 L10 0 L10 5 L0 0", "M0 0h10 v5 z"}, // a last line back to the start closes
      {u"M0 0 L3 4 L5 5", "M0 0l3 4 2 1 "},
      {u"M1 1 C1 2 3 4 5 5 C6 6 7 7 8 9", "M1 1c0 1,2 3,4 4 1 1,2 2,3 4"},
      {u"M0 0 Z C1 1 2 2 3 0", "M0 0zM0 0c1 1,2 2,3 0"},
      {u"M0 0 A10 10 0 0 1 20 0", "M0 0A10 10 0 0 1 20 0 "},
      {u"M0 0 A10 10 0 1 0 10 10", "M0 0A10 10 0 1 0 10 10 "},
  };
  for (auto& c : cases)
    EXPECT_EQ(Written(c.in), c.out) << std::string(hstring(c.in).toUtf8());

  THtCustomPath e;
  e.AddEllipse(0, 0, 20, 10); // full turns need two arcs
  EXPECT_EQ(e.AsString().toUtf8(), "M20 5A10 5 0 0 1 0 5 10 5 0 0 1 20 5 z");
  THtCustomPath first;
  first.AddArc(0, 0, 10, 10, 0, 90, 1); // an arc first gets a move to its start
  EXPECT_EQ(first.AsString().toUtf8(), "M10 5A5 5 0 0 1 5 10 ");
  THtCustomPath absCurve;
  absCurve.AddArc(0, 0, 10, 10, 0, 90, 1);
  const TPointF pts[] = {{1, 1}, {2, 2}, {3, 0}};
  absCurve.AddBeziers(pts);
  EXPECT_EQ(absCurve.AsString().toUtf8(), "M10 5A5 5 0 0 1 5 10 C1 1,2 2,3 0 ");
}

TEST(PathWrite, RoundTripKeepsTheRecords) {
  const char16_t* docs[] = {
      u"M12 2C6.48 2 2 6.48 2 12s4.48 10 10 10 10-4.48 10-10S17.52 2 12 2zm0 18c-4.41 0-8-3.59-8-8s3.59-8 "
      u"8-8 8 "
      u"3.59 8 8-3.59 8-8 8z",
      u"M19 3H5c-1.11 0-2 .9-2 2v14c0 1.1.89 2 2 2h14c1.1 0 2-.9 2-2V5c0-1.1-.9-2-2-2zm-9 14l-5-5 "
      u"1.41-1.41L10 "
      u"14.17l7.59-7.59L19 8l-9 9z",
      u"M3 3h18v18H3z M7 7a5 5 0 1 0 10 0a5 5 0 1 0-10 0",
      u"M0.1234 0.5678l0.0001 0.0001 0.0001 0.0001 0.0001 0.0001 0.0001 0.0001",
  };
  for (const char16_t* d : docs) {
    THtCustomPath a, b;
    a.Parse(d);
    hstring text = a.AsString();
    b.Parse(text);
    EXPECT_EQ(b.AsString().toUtf8(), text.toUtf8());
    TRectF ba, bb;
    a.GetBounds(ba, nullptr);
    b.GetBounds(bb, nullptr);
    EXPECT_NEAR(ba.Left, bb.Left, 1e-3);
    EXPECT_NEAR(ba.Right, bb.Right, 1e-3);
    EXPECT_NEAR(ba.Bottom, bb.Bottom, 1e-3);
    EXPECT_NEAR(a.Length(), b.Length(), 1e-2) << text.toUtf8();
  }
}
