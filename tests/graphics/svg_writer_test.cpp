// The element helpers of THtSVGWriter, compared as text.
#include "htcore/document/html_colours.h"
#include "htcore/foundation/startup.h"
#include "htcore/graphics/path.h"
#include "htcore/graphics/svg_writer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>

using namespace ht;

namespace {

std::string Written(const std::function<void(THtSVGWriter&)>& f) {
  THtSVGWriter w(64);
  f(w);
  return w.GetAsString().toUtf8();
}

} // namespace

TEST(SVGWriter, ElementTemplates) {
  THtPen dashed(0xFF102030, 2);
  dashed.SetPenStyle(hpsDashDot);
  THtCustomPath tri;
  tri.Parse(u"M0 0 L10 0 L5 8 z"_hs);
  struct {
    const char* name;
    std::function<void(THtSVGWriter&)> write;
    const char* expected;
  } cases[] = {
      {"color opaque", [](THtSVGWriter& w) { w.Color(0xFF00AAFF); }, "#00AAFF"},
      {"color alpha", [](THtSVGWriter& w) { w.Color(0x80FF0000); }, "#FF000080"},
      {"stroke", [](THtSVGWriter& w) { w.Stroke(0xFF000000, 1.5f); }, " stroke=\"#000000\" stroke-width=\"1.5\""},
      {"stroke pen dash", [&](THtSVGWriter& w) { w.Stroke(dashed); },
       " stroke=\"#102030\" stroke-width=\"2\" stroke-dasharray=\"8,1,1,1\""},
      {"stroke style dot", [](THtSVGWriter& w) { w.StrokeStyle(0xFFFF0000, 1, hpsDot); },
       "stroke=\"#FF0000\" stroke-width=\"1\" stroke-dasharray=\"1\""},
      {"stroke style array",
       [](THtSVGWriter& w) {
         const float d[] = {4, 2.5f};
         w.StrokeStyle(0xFFFF0000, 1, hpsDot, d);
       },
       "stroke=\"#FF0000\" stroke-width=\"1\" stroke-dasharray=\"4,2.5\""},
      {"stroke css dashdotdot", [](THtSVGWriter& w) { w.StrokeStyleCSS(0xFF0000FF, 3, hpsDashDotDot); },
       "stroke:#0000FF; stroke-width:3; stroke-dasharray:8,1,1,1,1,1;"},
      {"stroke css array",
       [](THtSVGWriter& w) {
         const float d[] = {3, 1};
         w.StrokeStyleCSS(0xFF0000FF, 3, hpsSolid, d);
       },
       "stroke:#0000FF; stroke-width:3; stroke-dasharray:3,1;"},
      {"stroke css solid", [](THtSVGWriter& w) { w.StrokeStyleCSS(0xFF0000FF, 1, hpsSolid); },
       "stroke:#0000FF; stroke-width:1;"},
      {"stroke clear", [](THtSVGWriter& w) { w.StrokeStyle(0xFF0000FF, 1, hpsClear); },
       "stroke=\"#0000FF\" stroke-width=\"1\""},
      {"fill stroke all", [](THtSVGWriter& w) { w.AddFillStroke(0xFFFFFFFF, 0xFF000000, 0.25f); },
       " fill=\"#FFFFFF\" stroke=\"#000000\" stroke-width=\"0.25\""},
      {"fill stroke none", [](THtSVGWriter& w) { w.AddFillStroke(0, 0, 0); }, ""},
      {"begin path fill", [](THtSVGWriter& w) { w.BeginPath(0x80FF0000, 0, 0); },
       "<path  fill=\"#FF0000\" fill-opacity=\"0.5\"  d=\""},
      {"begin path all",
       [](THtSVGWriter& w) { w.BeginPath(0xFF00FF00, 0x40000000, 1.234f, u"opacity:.5", true, u"id=\"p\""); },
       "<path  fill=\"#00FF00\" fill-opacity=\"1\" stroke=\"#000000\" stroke-opacity=\"0.25\" "
       "stroke-width=\"1.23\" style=\"opacity:.5\" shape-rendering=\"crispEdges\" id=\"p\" d=\""},
      {"begin path no fill", [](THtSVGWriter& w) { w.BeginPath(0, 0xFF000000, 0); },
       "<path  fill=\"none\" stroke=\"#000000\" stroke-opacity=\"1\"  d=\""},
      {"begin path attr fill", [](THtSVGWriter& w) { w.BeginPath(0, 0, 0, {}, false, u"fill=\"red\""); },
       "<path  fill=\"red\" d=\""},
      {"path", [](THtSVGWriter& w) { w.Path(u"M0 0 10 10 ", 0xFF000000, 0, 0); },
       "<path  fill=\"#000000\" fill-opacity=\"1\"  d=\"M0 0 10 10 \"/>"},
      {"path object", [&](THtSVGWriter& w) { w.Path(tri, 0xFF000000, 0, 0); },
       "<path  fill=\"#000000\" fill-opacity=\"1\"  d=\"M0 0h10 l-5 8 z\"/>"},
      {"stroke path", [&](THtSVGWriter& w) { w.StrokePath(tri, dashed); },
       "<path fill=\"none\" stroke=\"#102030\" stroke-width=\"2\" stroke-dasharray=\"8,1,1,1\" "
       "d=\"M0 0h10 l-5 8 z\"/>"},
      {"line", [](THtSVGWriter& w) { w.Line(1, 2, 3.5f, 4, 0xFF000000, 2); },
       "<line x1=\"1\" y1=\"2\" x2=\"3.5\" y2=\"4\" stroke=\"#000000\" stroke-width=\"2\"/>"},
      {"circle", [](THtSVGWriter& w) { w.Circle(5, 6, 2, 0xFFFF0000, 0, 0); },
       "<circle r=\"2\" cx=\"5\" cy=\"6\" fill=\"#FF0000\"/>"},
      {"ellipse", [](THtSVGWriter& w) { w.Ellipse(5, 6, 2, 3, 0, 0xFF0000FF, 1); },
       "<ellipse rx=\"2\" ry=\"3\" cx=\"5\" cy=\"6\" stroke=\"#0000FF\" stroke-width=\"1\"/>"},
      {"rect plain", [](THtSVGWriter& w) { w.Rect(0, 0, 10, 20, 0xFF000000, 0, 0); },
       "<rect x=\"0\" y=\"0\" width=\"10\" height=\"20\" fill=\"#000000\"/>"},
      {"rect full",
       [](THtSVGWriter& w) { w.Rect(1, 2, 3, 4, 0, 0xFF000000, 1, u"font-family:\"A\"", 5, 0, u" id=\"r\""); },
       "<rect x=\"1\" y=\"2\" width=\"3\" height=\"4\" rx=\"5\" stroke=\"#000000\" stroke-width=\"1\" "
       "style=\"font-family:&quot;A&quot;\" id=\"r\"/>"},
      {"rect ry only", [](THtSVGWriter& w) { w.Rect(0, 0, 1, 1, 0, 0, 0, {}, 0, 2); },
       "<rect x=\"0\" y=\"0\" width=\"1\" height=\"1\" ry=\"2\"/>"},
      {"text plain", [](THtSVGWriter& w) { w.Text(1, 2, {}, u"a<b & c"); },
       "<text x=\"1\" y=\"2\" >a&lt;b &amp; c</text>"},
      {"text full",
       [](THtSVGWriter& w) { w.Text(1, 2, u"middle", u"x", u"fill:red", u"rotate(90)", u" id=\"t\""); },
       "<text x=\"1\" y=\"2\"  text-anchor=\"middle\" style=\"fill:red\" transform=\"rotate(90)\" "
       "id=\"t\">x</text>"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Written(c.write), c.expected) << c.name;
}

TEST(SVGWriter, PenDashesAreLengthsTimesTheWidth) {
  THtPen pen(0xFF000000, 2);
  const float lengths[] = {6, 2};
  pen.SetDashes(lengths); // kept as 3 and 1 widths
  EXPECT_EQ(Written([&](THtSVGWriter& w) { w.Stroke(pen); }),
            " stroke=\"#000000\" stroke-width=\"2\" stroke-dasharray=\"6,2\"");
  pen.SetPenStyle(hpsClear);
  EXPECT_EQ(Written([&](THtSVGWriter& w) { w.Stroke(pen); }), " stroke=\"#000000\" stroke-width=\"2\"");
  THtPen dot(0xFF000000, 1);
  dot.SetPenStyle(hpsDot);
  THtCustomPath p;
  p.Parse(u"M0 0 L4 0"_hs);
  EXPECT_EQ(Written([&](THtSVGWriter& w) { w.StrokePath(p, dot); }),
            "<path fill=\"none\" stroke=\"#000000\" stroke-width=\"1\" stroke-dasharray=\"1\" d=\"M0 0h4 \"/>");
}

TEST(SVGWriter, ColourTextMatchesTheColourHelpers) {
  for (uint32_t c : {0xFF000000u, 0xFFFFFFFFu, 0x00000000u, 0x12345678u, 0xFEDCBA98u, 0x80FF0000u}) {
    EXPECT_EQ(Written([&](THtSVGWriter& w) { w.Color(c); }), htmlColortoStr(c).toUtf8());
    EXPECT_EQ(Written([&](THtSVGWriter& w) { w.Color(c | 0xFF000000); }), "#" + htmlColortoHex(c).toUtf8());
  }
}

TEST(SVGWriter, OpacityHasTwoDecimals) {
  struct {
    uint32_t color;
    const char* expected;
  } cases[] = {{0xFF000000, "1"}, {0x80000000, "0.5"}, {0x00000001, "0"}, {0x01000000, "0"},
               {0x03000000, "0.01"}, {0xFE000000, "1"}, {0x40FFFFFF, "0.25"}, {0xC0000000, "0.75"}};
  for (const auto& c : cases)
    EXPECT_EQ(Written([&](THtSVGWriter& w) { w.Opacity(c.color); }), c.expected) << std::hex << c.color;
}

TEST(SVGWriter, EscapesKeepTheDocumentWellFormed) {
  struct {
    std::u16string in;
    bool attr;
    const char* expected;
  } cases[] = {
      {u"a\"b'c", false, "a\"b'c"},
      {u"a\"b", true, "a&quot;b"},
      {u"<&>", true, "&lt;&amp;&gt;"},
      {u"a\u00A0b", false, "a b"},
      {u"a\u00A0b", true, "a\u00A0b"},
      {u"t\tn\nr\r", false, "t\tn\nr&#13;"},
      {u"t\tn\nr\r", true, "t&#9;n&#10;r&#13;"},
      {std::u16string(u"x\x01y\x1Fz", 5), false, "xyz"},
      {u"\uFFFE\uFFFFok", false, "ok"},
      {u"\U0001F600", false, "\U0001F600"},
      {std::u16string(1, char16_t(0xD800)) + u"x", false, "\uFFFDx"},
      {u"x" + std::u16string(1, char16_t(0xDC00)), true, "x\uFFFD"},
      {u"plain text ?", false, "plain text ?"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Written([&](THtSVGWriter& w) { w.AddXML(c.in, c.attr); }), c.expected)
        << hstring(c.in.data(), c.in.size()).toUtf8();
}

TEST(SVGWriter, BadNumbersGiveDefinedText) {
  float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
  EXPECT_EQ(Written([&](THtSVGWriter& w) { w.Line(nan, inf, -inf, 1e30f, 0xFF000000, nan); }),
            "<line x1=\"0\" y1=\"0\" x2=\"0\" y2=\"1000000015047466219876688855040\" stroke=\"#000000\" "
            "stroke-width=\"0\"/>");
  EXPECT_EQ(Written([](THtSVGWriter& w) { w.Rect(-0.00001f, 1.00005f, 2.123449f, 0, 0, 0, 0); }),
            "<rect x=\"0\" y=\"1\" width=\"2.1234\" height=\"0\"/>");
}
