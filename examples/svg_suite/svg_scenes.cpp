#include "svg_scenes.h"

#include "htcore/graphics/images.h"
#include "htcore/graphics/svg_canvas.h"

#include <cmath>
#include <memory>

using namespace ht;

namespace htcore_svg {

namespace {

// An 8 by 8 RGBA picture: four coloured quarters and a white cross.
const uint8_t kPNG[] = {
    0x89, 0x50, 0x4E, 0x47, 0x0D, 0x0A, 0x1A, 0x0A, 0x00, 0x00, 0x00, 0x0D, 0x49, 0x48, 0x44, 0x52, 0x00, 0x00,
    0x00, 0x08, 0x00, 0x00, 0x00, 0x08, 0x08, 0x06, 0x00, 0x00, 0x00, 0xC4, 0x0F, 0xBE, 0x8B, 0x00, 0x00, 0x00,
    0x4E, 0x49, 0x44, 0x41, 0x54, 0x78, 0xDA, 0x55, 0xCA, 0x51, 0x09, 0xC0, 0x40, 0x0C, 0x04, 0xD1, 0x95, 0x53,
    0x11, 0x51, 0x52, 0x75, 0x27, 0xA2, 0x22, 0xAA, 0xE4, 0x44, 0xF4, 0xE7, 0xAE, 0x5B, 0xD8, 0x30, 0x0D, 0x84,
    0x40, 0xE6, 0x69, 0xBD, 0x33, 0xAB, 0x7A, 0x6B, 0xCC, 0x5E, 0x8F, 0xFC, 0x24, 0x62, 0xF4, 0x55, 0x42, 0x10,
    0xE3, 0x0F, 0x04, 0x31, 0x7E, 0xE0, 0xB9, 0x8F, 0x95, 0x6D, 0x70, 0x9D, 0xBD, 0x62, 0xF4, 0xF5, 0x93, 0x48,
    0x8C, 0x01, 0x44, 0x62, 0x24, 0x08, 0xDA, 0x73, 0xF8, 0xBB, 0x81, 0x02, 0x2D, 0x86, 0x5C, 0x00, 0x00, 0x00,
    0x00, 0x49, 0x45, 0x4E, 0x44, 0xAE, 0x42, 0x60, 0x82};

const uint32_t kColors[] = {0xFFE6194B, 0xFF3CB44B, 0xFFFFE119, 0xFF4363D8, 0xFFF58231, 0xFF911EB4};

// A path from SVG path data.
struct TPathData : THtCustomPath {
  explicit TPathData(const char16_t* d) { Parse(hstring(d)); }
};

THtFont font(float size, THtFontStyles style = 0) {
  THtFont f;
  f.FName = u"DejaVu Sans"_hs;
  f.FHeight = size;
  f.FStyle = style;
  f.Ascent = size * 0.93f;
  return f;
}

THtTextStyle text_color(uint32_t c) {
  THtTextStyle t;
  t.Color = c;
  return t;
}

std::unique_ptr<THtBrush> linear(THtCanvas& c, const TRectF& box, float angle, std::initializer_list<float> pos,
                                 std::initializer_list<uint32_t> colors) {
  std::unique_ptr<THtBrush> b(c.BrushClass().Create(0xFF000000));
  b->CreateGradient(box, 0, 0, angle, box);
  b->SetGradientColors(std::span<const float>(pos.begin(), pos.size()),
                       std::span<const uint32_t>(colors.begin(), colors.size()));
  return b;
}

std::unique_ptr<THtBrush> radial(THtCanvas& c, float cx, float cy, float r, float fx, float fy,
                                 std::initializer_list<float> pos, std::initializer_list<uint32_t> colors) {
  std::unique_ptr<THtBrush> b(c.BrushClass().Create(0xFF000000));
  b->CreateRadialGradient(0, 0, cx, cy, fx, fy, r, THtMatrixData());
  b->SetGradientColors(std::span<const float>(pos.begin(), pos.size()),
                       std::span<const uint32_t>(colors.begin(), colors.size()));
  return b;
}

// White under the whole document, whatever the scene's own scale.
void background(THtCanvas& c, const TSvgScene& s) {
  c.FillRectangle(c.GetBrush(0xFFFFFFFF), 0, 0, s.Width / s.Scale, s.Height / s.Scale);
}

void rects(THtCanvas& c, int) {
  for (int i = 0; i < 6; ++i)
    c.FillRectangle(c.GetBrush(kColors[i]), 8.0f + i * 18, 10, 14, 30);
  c.DrawRectangle(c.GetPen(0xFF000000, 1), 8.5f, 50.5f, 103, 28);
  c.DrawRectangle(c.GetPen(0xFF4363D8, 4), 20, 58, 80, 12);
}

void alpha(THtCanvas& c, int) {
  c.FillRectangle(c.GetBrush(0x80FF0000), 10, 10, 60, 50);
  c.FillRectangle(c.GetBrush(0x8000A000), 35, 25, 60, 50);
  c.FillRectangle(c.GetBrush(0x800000FF), 60, 40, 50, 40);
  c.FillEllipse(c.GetBrush(0x40000000), 20, 50, 40, 30);
}

void lines(THtCanvas& c, int) {
  for (int i = 1; i <= 6; ++i)
    c.DrawLine(c.GetPen(kColors[i - 1], static_cast<float>(i)), 10, 8.0f + i * 12, 110, 4.0f + i * 10);
  c.DrawLine(c.GetPen(0xFF000000, 1), 60, 5, 60, 85);
}

void dashes(THtCanvas& c, int) {
  const THtPenStyle styles[] = {hpsSolid, hpsDash, hpsDot, hpsDashDot, hpsDashDotDot};
  for (int i = 0; i < 5; ++i) {
    THtPen& p = c.GetPen(0xFF202020, 2);
    p.SetPenStyle(styles[i]);
    c.DrawLine(p, 10, 10.0f + i * 14, 110, 10.0f + i * 14);
  }
  THtPen& custom = c.GetPen(0xFFE6194B, 3);
  const float d[] = {12, 4, 2, 4};
  custom.SetDashes(d);
  c.DrawLine(custom, 10, 82, 110, 82);
}

void ellipses(THtCanvas& c, int) {
  c.FillEllipse(c.GetBrush(0xFF4363D8), 8, 10, 50, 30);
  c.DrawEllipse(c.GetPen(0xFFE6194B, 3), 64, 10, 48, 48);
  c.FillEllipse(c.GetBrush(0xFF3CB44B), 14, 50, 32, 32);
  c.DrawEllipse(c.GetPen(0xFF000000, 1), 70, 64, 36, 18);
}

void round_rects(THtCanvas& c, int) {
  c.FillRoundRect(c.GetBrush(0xFFF58231), {8, 8, 58, 42}, 8, 8);
  c.RoundRect(c.GetPen(0xFF4363D8, 2), {66, 10, 112, 44}, 12, 6);
  c.FillRoundRect(c.GetBrush(0xFF911EB4), {10, 52, 110, 82}, 15, 15);
  c.RoundRect(c.GetPen(0xFFFFFFFF, 2), {16, 58, 104, 76}, 4, 4);
}

void arcs(THtCanvas& c, int) {
  c.DrawArc(c.GetPen(0xFFE6194B, 3), 10, 10, 40, 40, 0, 90);
  c.DrawArc(c.GetPen(0xFF3CB44B, 3), 10, 10, 40, 40, 120, 120);
  c.DrawArc(c.GetPen(0xFF4363D8, 3), 60, 10, 50, 30, 180, 270);
  c.DrawArc(c.GetPen(0xFF000000, 2), 30, 50, 60, 34, 200, -140);
}

void path_star(THtCanvas& c, int) {
  TPathData star(u"M60 5 L71 38 106 38 78 58 89 90 60 70 31 90 42 58 14 38 49 38z");
  c.FillPath(c.GetBrush(0xFFFFE119), star);
  c.DrawPath(c.GetPen(0xFFF58231, 2), star);
}

void path_curves(THtCanvas& c, int) {
  TPathData wave(u"M10 50 C 30 10, 50 10, 60 50 S 90 90, 110 50");
  c.DrawPath(c.GetPen(0xFF4363D8, 3), wave);
  TPathData q(u"M10 80 Q 35 55 60 80 T 110 80");
  c.DrawPath(c.GetPen(0xFFE6194B, 2), q);
  TPathData drop(u"M60 8 C 75 25 75 38 60 40 C 45 38 45 25 60 8z");
  c.FillPath(c.GetBrush(0xFF3CB44B), drop);
}

void path_arcs(THtCanvas& c, int) {
  TPathData pie(u"M40 45 L40 10 A35 35 0 1 1 7 55 z");
  c.FillPath(c.GetBrush(0xFF911EB4), pie);
  TPathData bumps(u"M75 80 a10 10 0 0 1 20 0 a10 10 0 0 1 20 0 v-30 h-40 z");
  c.FillPath(c.GetBrush(0xFF4363D8), bumps);
  c.DrawPath(c.GetPen(0xFF000000, 1), bumps);
}

void path_holes(THtCanvas& c, int) {
  // Outer figure clockwise, inner one counter-clockwise: a hole under either fill rule.
  TPathData frame(u"M10 10 H110 V80 H10 Z M30 25 V65 H90 V25 Z");
  c.FillPath(c.GetBrush(0xFF3CB44B), frame);
  c.DrawPath(c.GetPen(0xFF000000, 1), frame);
}

void linear_gradients(THtCanvas& c, int) {
  auto h = linear(c, {8, 8, 112, 28}, 90, {0, 1}, {0xFFE6194B, 0xFF4363D8});
  c.FillRectangle(*h, 8, 8, 104, 20);
  auto v = linear(c, {8, 34, 56, 84}, 180, {0, 1}, {0xFFFFE119, 0xFF3CB44B});
  c.FillRectangle(*v, 8, 34, 48, 50);
  auto d = linear(c, {64, 34, 112, 84}, 45, {0, 1}, {0xFF000000, 0x00000000});
  c.FillRectangle(*d, 64, 34, 48, 50);
}

void gradient_stops(THtCanvas& c, int) {
  auto rainbow = linear(c, {8, 10, 112, 40}, 90, {0, 0.2f, 0.4f, 0.6f, 0.8f, 1},
                        {0xFFFF0000, 0xFFFFA500, 0xFFFFFF00, 0xFF00A000, 0xFF0000FF, 0xFF800080});
  c.FillRectangle(*rainbow, 8, 10, 104, 30);
  auto hard = linear(c, {8, 48, 112, 80}, 90, {0, 0.5f, 0.5f, 1}, {0xFF222222, 0xFF222222, 0xFFDDDDDD, 0xFFDDDDDD});
  c.FillRectangle(*hard, 8, 48, 104, 32);
}

void radial_gradients(THtCanvas& c, int) {
  auto ball = radial(c, 35, 45, 30, 25, 35, {0, 1}, {0xFFFFFFFF, 0xFFE6194B});
  c.FillEllipse(*ball, 5, 15, 60, 60);
  auto glow = radial(c, 90, 45, 28, 90, 45, {0, 0.6f, 1}, {0xFFFFE119, 0x80F58231, 0x00F58231});
  c.FillRectangle(*glow, 62, 17, 56, 56);
}

void gradient_shapes(THtCanvas& c, int) {
  auto g = linear(c, {8, 8, 112, 82}, 135, {0, 1}, {0xFF4363D8, 0xFF911EB4});
  c.FillRoundRect(*g, {8, 8, 56, 40}, 8, 8);
  c.FillEllipse(*g, 64, 8, 48, 32);
  TPathData tri(u"M20 82 L60 46 L100 82 z");
  c.FillPath(*g, tri);
}

void clip_rect(THtCanvas& c, int) {
  c.SaveState();
  c.IntersectClip(TRectF{20, 15, 100, 75});
  c.FillEllipse(c.GetBrush(0xFF4363D8), 0, 0, 120, 90);
  c.RestoreState();
  c.DrawRectangle(c.GetPen(0xFF000000, 1), 20, 15, 80, 60);
  c.FillEllipse(c.GetBrush(0xFFE6194B), 5, 70, 15, 15); // outside the clip again
}

void clip_path(THtCanvas& c, int) {
  TPathData star(u"M60 5 L71 38 106 38 78 58 89 90 60 70 31 90 42 58 14 38 49 38z");
  c.SaveState();
  c.IntersectClip(star);
  for (int i = 0; i < 12; ++i)
    c.FillRectangle(c.GetBrush(kColors[i % 6]), 0, i * 8.0f, 120, 8);
  c.RestoreState();
}

void clip_nested(THtCanvas& c, int) {
  c.SaveState();
  c.IntersectClip(TRectF{10, 10, 80, 80});
  c.SaveState();
  THtCustomPath circle;
  circle.AddEllipse(40, 10, 70, 70);
  c.IntersectClip(circle);
  c.FillRectangle(c.GetBrush(0xFF3CB44B), 0, 0, 120, 90);
  c.RestoreState();
  c.FillRectangle(c.GetBrush(0x80E6194B), 0, 40, 120, 20);
  c.RestoreState();
  c.FillRectangle(c.GetBrush(0x804363D8), 60, 70, 60, 20);
}

void translate(THtCanvas& c, int) {
  for (int y = 0; y < 3; ++y)
    for (int x = 0; x < 4; ++x) {
      c.SaveState();
      c.TranslateTransform(8.0f + x * 28, 6.0f + y * 28);
      c.FillRoundRect(c.GetBrush(kColors[(x + y) % 6]), {0, 0, 22, 22}, 4, 4);
      c.RestoreState();
    }
}

void rotate(THtCanvas& c, int) {
  c.TranslateTransform(60, 45);
  for (int i = 0; i < 12; ++i) {
    c.SaveState();
    c.RotateTransform(i * 30.0f);
    c.FillRectangle(c.GetBrush(kColors[i % 6]), 10, -3, 30, 6);
    c.RestoreState();
  }
}

void scale(THtCanvas& c, int) {
  for (int i = 0; i < 4; ++i) {
    c.SaveState();
    c.TranslateTransform(8.0f + i * 26, 10);
    c.ScaleTransform(1 + i * 0.25f, 1 + i * 0.5f);
    c.DrawEllipse(c.GetPen(kColors[i], 1.5f), 0, 0, 18, 18);
    c.FillRectangle(c.GetBrush(kColors[i + 1]), 4, 20, 10, 10);
    c.RestoreState();
  }
}

void matrix_nested(THtCanvas& c, int) {
  c.SaveState();
  c.TranslateTransform(30, 45);
  c.FillRectangle(c.GetBrush(0xFF4363D8), -15, -15, 30, 30);
  c.SaveState();
  c.TranslateTransform(45, 0);
  c.RotateTransform(45);
  c.FillRectangle(c.GetBrush(0xFFE6194B), -15, -15, 30, 30);
  c.SaveState();
  c.ScaleTransform(0.5f, 0.5f);
  c.FillRectangle(c.GetBrush(0xFFFFE119), -15, -15, 30, 30);
  c.RestoreState();
  c.RestoreState();
  THtMatrixData skew;
  skew.Init(1, 0, 0.5f, 1, 0, 30);
  c.MatrixTransform(skew, true);
  c.FillRectangle(c.GetBrush(0xFF3CB44B), -20, -10, 20, 10);
  c.RestoreState();
}

void text_basic(THtCanvas& c, int) {
  THtFont big = font(20), small = font(11);
  c.DrawString(u"Hello, SVG"_hs, {8, 6, 200, 30}, big, text_color(0xFF202020), 1, -1);
  c.DrawString(u"small print & <tags>"_hs, {8, 36, 200, 50}, small, text_color(0xFF4363D8), 1, -1);
  c.DrawString(u"part of this line"_hs, {8, 54, 200, 70}, small, text_color(0xFFE6194B), 9, 4);
  c.DrawString(u"translucent"_hs, {8, 70, 200, 86}, small, text_color(0x80000000), 1, -1);
}

void text_styles(THtCanvas& c, int) {
  struct {
    THtFontStyles style;
    const char16_t* text;
  } rows[] = {{HtFontStyleBit(hfsBold), u"Bold"},
              {HtFontStyleBit(hfsItalic), u"Italic"},
              {HtFontStyleBit(hfsUnderline), u"Underline"},
              {HtFontStyleBit(hfsStrikeOut), u"Strike"},
              {static_cast<THtFontStyles>(HtFontStyleBit(hfsBold) | HtFontStyleBit(hfsItalic)), u"Both"}};
  float y = 4;
  for (const auto& r : rows) {
    THtFont f = font(13, r.style);
    c.DrawString(hstring(r.text), {8, y, 112, y + 16}, f, text_color(0xFF000000), 1, -1);
    y += 16.5f;
  }
}

void text_rotated(THtCanvas& c, int) {
  THtFont f = font(12);
  c.SaveState();
  c.TranslateTransform(60, 45);
  for (int i = 0; i < 4; ++i) {
    c.SaveState();
    c.RotateTransform(i * 90.0f);
    c.DrawString(u"turn"_hs, {6, -14, 60, 0}, f, text_color(kColors[i]), 1, -1);
    c.RestoreState();
  }
  c.RestoreState();
}

void images(THtCanvas& c, int) {
  THtImage img(TBytes(std::begin(kPNG), std::end(kPNG)));
  c.DrawImage(img, {8, 8, 40, 40}, 1);
  c.DrawImage(img, {48, 8, 112, 40}, 1);
  c.DrawImage(img, {8, 48, 48, 88}, 0.5f);
  c.SaveState();
  c.TranslateTransform(80, 66);
  c.RotateTransform(45);
  c.DrawImage(img, {-14, -14, 14, 14}, 1);
  c.RestoreState();
}

void widgets(THtCanvas& c, int) {
  c.DrawButton({8, 8, 70, 30}, 96, false, false, false, false);
  c.DrawButton({8, 36, 70, 58}, 96, false, true, false, false);
  c.DrawButton({8, 64, 70, 86}, 96, false, false, true, false);
  c.DrawCheck({80, 8, 96, 24}, 96, true, false, false, false);
  c.DrawCheck({100, 8, 116, 24}, 96, false, false, true, false);
  c.DrawRadio({80, 34, 96, 50}, 96, true, false, false, false);
  c.DrawRadio({100, 34, 116, 50}, 96, false, false, false, true);
}

void wavy_links(THtCanvas& c, int) {
  THtFont f = font(13);
  c.BeginLink(u"https://example.org/?a=1&b=2"_hs, u"A link"_hs);
  c.DrawString(u"a link"_hs, {10, 10, 110, 26}, f, text_color(0xFF0000EE), 1, -1);
  c.EndLink();
  c.DrawWavyLine(10, 30, 110, 30, c.GetPen(0xFFE6194B, 1));
  c.DrawLink({10, 40, 110, 56}, u"anchor-1"_hs, true);
  c.DrawString(u"anchored text"_hs, {10, 40, 110, 56}, f, text_color(0xFF000000), 1, -1);
  c.DrawWavyLine(10, 62, 90, 62, c.GetPen(0xFF4363D8, 1.5f));
}

void pages(THtCanvas& c, int page) {
  THtFont f = font(16, HtFontStyleBit(hfsBold));
  uint32_t color = kColors[page % 6];
  c.FillRoundRect(c.GetBrush(color), {8, 8, 112, 82}, 10, 10);
  hstring label = u"Page "_hs + hstring(std::u16string(1, static_cast<char16_t>(u'1' + page)));
  c.DrawString(label, {30, 34, 110, 54}, f, text_color(0xFFFFFFFF), 1, -1);
}

void scaled_scene(THtCanvas& c, int) {
  c.FillEllipse(c.GetBrush(0xFF4363D8), 5, 5, 30, 30);
  c.DrawLine(c.GetPen(0xFFE6194B, 1), 0, 40, 55, 5);
  c.DrawRectangle(c.GetPen(0xFF000000, 0.5f), 2, 2, 54, 40);
}

void transparent_strokes(THtCanvas& c, int) {
  for (int i = 0; i < 5; ++i)
    c.DrawEllipse(c.GetPen(0x80000000 | (kColors[i] & 0xFFFFFF), 8), 10.0f + i * 16, 20, 40, 40);
}

template <void (*F)(THtCanvas&, int)> void with_background(THtCanvas& c, int page);

#define SCENE(name, title, w, h) {#name, title, w, h, 1, 1.0f, with_background<name>}

const TSvgScene kScenes[] = {
    SCENE(rects, "filled and outlined rectangles", 120, 90),
    SCENE(alpha, "translucent fills (alpha 128 is fill-opacity 0.5)", 120, 90),
    SCENE(lines, "lines of widths 1 to 6", 120, 90),
    SCENE(dashes, "pen styles and a pen with its own dash lengths", 120, 90),
    SCENE(ellipses, "filled and outlined ellipses", 120, 90),
    SCENE(round_rects, "rounded rectangles", 120, 90),
    SCENE(arcs, "arcs of several sweeps, one backwards", 120, 90),
    SCENE(path_star, "a parsed path, filled and stroked", 120, 90),
    SCENE(path_curves, "cubic and quadratic curves with reflected controls", 120, 90),
    SCENE(path_arcs, "elliptic arcs in path data", 120, 90),
    SCENE(path_holes, "a figure with a hole", 120, 90),
    SCENE(linear_gradients, "linear gradients at 90, 180 and 45 degrees", 120, 90),
    SCENE(gradient_stops, "many stops and a hard stop", 120, 90),
    SCENE(radial_gradients, "radial gradients with a focus and fading stops", 120, 90),
    SCENE(gradient_shapes, "one gradient on a rounded rectangle, an ellipse and a path", 120, 90),
    SCENE(clip_rect, "a rectangle clip, closed by RestoreState", 120, 90),
    SCENE(clip_path, "a star-shaped clip", 120, 90),
    SCENE(clip_nested, "a clip inside a clip", 120, 90),
    SCENE(translate, "translated copies", 120, 90),
    SCENE(rotate, "rotations about a centre", 120, 90),
    SCENE(scale, "scaled ellipses and squares", 120, 90),
    SCENE(matrix_nested, "nested transforms and a skew matrix", 120, 90),
    SCENE(text_basic, "text of two sizes, a substring, escaping, translucent text", 120, 90),
    SCENE(text_styles, "bold, italic, underline, strike-out", 120, 90),
    SCENE(text_rotated, "rotated text", 120, 90),
    SCENE(images, "an embedded PNG: natural size, stretched, half opacity, rotated", 120, 90),
    SCENE(widgets, "the default push buttons, check boxes and radio buttons", 120, 90),
    SCENE(wavy_links, "a link, an anchor and wavy lines", 120, 90),
    SCENE(transparent_strokes, "overlapping translucent strokes", 120, 90),
    {"pages", "three pages, one document each", 120, 90, 3, 1.0f, with_background<pages>},
    {"scaled_scene", "a scene drawn at scale 2", 120, 90, 1, 2.0f, with_background<scaled_scene>},
};

#undef SCENE

template <void (*F)(THtCanvas&, int)> void with_background(THtCanvas& c, int page) {
  for (const TSvgScene& s : kScenes)
    if (s.Draw == &with_background<F>) {
      background(c, s);
      break;
    }
  F(c, page);
}

} // namespace

std::span<const TSvgScene> Scenes() { return kScenes; }

std::span<const uint8_t> SamplePNG() { return kPNG; }

void DrawPage(const TSvgScene& Scene, THtCanvas& Canvas, int Page) {
  THtCanvasScene s;
  s.Init({0, 0, Scene.Width, Scene.Height}, &Canvas);
  s.Scale = Scene.Scale;
  Canvas.BeginScene(s);
  Scene.Draw(Canvas, Page);
  Canvas.EndScene();
}

std::vector<hstring> RenderScene(const TSvgScene& Scene) {
  THtSVGCanvas c;
  c.BeginPaging(static_cast<float>(Scene.Width * 25.4 / 96), static_cast<float>(Scene.Height * 25.4 / 96), 96,
                coDefault);
  std::vector<hstring> out;
  for (int page = 0; page < Scene.Pages; ++page) {
    if (page)
      c.NewPage(coDefault);
    DrawPage(Scene, c, page);
    out.push_back(c.WithStyle(static_cast<THtPageSVG*>(c.GetPage(page))->SVG));
  }
  return out;
}

} // namespace htcore_svg
