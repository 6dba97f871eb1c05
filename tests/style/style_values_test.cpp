#include "htcore/style/style_values.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace ht;

namespace {

// A value's tokens with a cursor on the first; keeps the array alive.
struct TValue {
  TCSSTokens toks;
  TCSSTokenSequence seq;
  explicit TValue(const char16_t* text) : toks(CSSValueTokens(hstring(text))) { seq.Init(&toks); }
};

struct TStyle : TMeasureContext {
  TStyle() { IntFontSize = 16; }
  bool HasParentElement() const override { return true; }
  float RootFontSize() const override { return 20; }
};

float Px(TMeasure m) { return m.GetFPixels(); }

std::vector<float> StopPercents(const TGradient& g) {
  std::vector<float> out;
  for (const TGradientStop& s : g.Stops)
    out.push_back(s.Position.FMUnit == muPercent ? s.Position.FValue : -1);
  return out;
}

TEST(StyleValues, LinearGradientDirectionsAndAngles) {
  struct {
    const char16_t* text;
    TGradientDirection dir;
    float angle;
  } cases[] = {
      {u"linear-gradient(red, blue)", gsBottom, 180},
      {u"linear-gradient(to top left, red, blue)", gsTopLeft, -45},
      {u"linear-gradient(to left top, red, blue)", gsTopLeft, -45},
      {u"linear-gradient(to right, red, blue)", gsRight, 90},
      {u"linear-gradient(to top, red, blue)", gsTop, 0},
      {u"linear-gradient(to bottom right, red, blue)", gsBottomRight, 135},
      {u"linear-gradient(to left bottom, red, blue)", gsBottomLeft, -135},
      {u"linear-gradient(to top right, red, blue)", gsTopRight, 45},
      // Without "to" the keywords name the start: the gradient runs the other way.
      {u"linear-gradient(top, red, blue)", gsBottom, 180},
      {u"linear-gradient(left, red, blue)", gsRight, 90},
      {u"linear-gradient(left top, red, blue)", gsBottomRight, 135},
      // An angle keeps the default direction and replaces the angle.
      {u"linear-gradient(130deg, #000 55%, rgba(0, 0, 0, 0.8) 75%, #000 95%)", gsBottom, 130},
      {u"linear-gradient(-30deg, red, blue)", gsBottom, -30},
  };
  for (const auto& c : cases) {
    TValue v(c.text);
    TElementBackground bg(nullptr);
    bg.Parse(v.seq);
    SCOPED_TRACE(std::string(c.text, c.text + std::char_traits<char16_t>::length(c.text)));
    EXPECT_FALSE(bg.Gradient.Radial);
    EXPECT_EQ(bg.Gradient.Direction, c.dir);
    EXPECT_EQ(bg.Gradient.Angle, c.angle);
  }
}

TEST(StyleValues, GradientStopsWithAndWithoutPositions) {
  struct {
    const char16_t* text;
    std::vector<float> percents;
    std::vector<uint32_t> colours;
  } cases[] = {
      {u"linear-gradient(to top left, red, blue)", {0, 100}, {0xFFFF0000, 0xFF0000FF}},
      {u"linear-gradient(red, lime, blue)", {0, 50, 100}, {0xFFFF0000, 0xFF00FF00, 0xFF0000FF}},
      {u"linear-gradient(red 10%, blue)", {10, 100}, {0xFFFF0000, 0xFF0000FF}},
      {u"linear-gradient(red, blue 30%, lime)", {0, 30, 100}, {0xFFFF0000, 0xFF0000FF, 0xFF00FF00}},
      {u"linear-gradient(red)", {0}, {0xFFFF0000}},
      // An unreadable colour ends the list where it stands.
      {u"linear-gradient(red, banana, blue)", {0}, {0xFFFF0000}},
      // bootstrap 5.3.3 (MIT): the striped progress bar and the card image overlay.
      {u"linear-gradient(45deg, rgba(255, 255, 255, 0.15) 25%, transparent 25%, transparent 50%, "
       u"rgba(255, 255, 255, 0.15) 50%, rgba(255, 255, 255, 0.15) 75%, transparent 75%, transparent)",
       {25, 25, 50, 50, 75, 75, 100},
       {0x26FFFFFF, 0x00FFFFFF, 0x00FFFFFF, 0x26FFFFFF, 0x26FFFFFF, 0x00FFFFFF, 0x00FFFFFF}},
      {u"linear-gradient(180deg, rgba(255, 255, 255, 0.15), rgba(255, 255, 255, 0))",
       {0, 100},
       {0x26FFFFFF, 0x00FFFFFF}},
      {u"radial-gradient(red, blue)", {0, 100}, {0xFFFF0000, 0xFF0000FF}},
      {u"radial-gradient(circle, red, #00f 40%, lime)", {0, 40, 100}, {0xFFFF0000, 0xFF0000FF, 0xFF00FF00}},
      {u"radial-gradient(closest-side at 10px 20%, red, lime, blue)",
       {0, 50, 100},
       {0xFFFF0000, 0xFF00FF00, 0xFF0000FF}},
  };
  for (const auto& c : cases) {
    TValue v(c.text);
    TElementBackground bg(nullptr);
    bg.Parse(v.seq);
    SCOPED_TRACE(std::string(c.text, c.text + std::char_traits<char16_t>::length(c.text)));
    EXPECT_EQ(StopPercents(bg.Gradient), c.percents);
    std::vector<uint32_t> colours;
    for (const TGradientStop& s : bg.Gradient.Stops)
      colours.push_back(s.Color);
    EXPECT_EQ(colours, c.colours);
  }
}

TEST(StyleValues, RadialGradientCentre) {
  struct {
    const char16_t* text;
    bool circle;
    float x, y;
  } cases[] = {
      {u"radial-gradient(red, blue)", false, 50, 50},
      {u"radial-gradient(circle at 20% 30%, red, blue)", true, 20, 30},
      {u"radial-gradient(ellipse at right, red, blue)", false, 100, 50},
      {u"radial-gradient(at bottom, red, blue)", false, 50, 100},
  };
  for (const auto& c : cases) {
    TValue v(c.text);
    TElementBackground bg(nullptr);
    bg.Parse(v.seq);
    EXPECT_TRUE(bg.Gradient.Radial);
    EXPECT_EQ(bg.Gradient.Circle, c.circle);
    EXPECT_EQ(bg.Gradient.CenterX.FMUnit, muPercent);
    EXPECT_EQ(bg.Gradient.CenterX.FValue, c.x);
    EXPECT_EQ(bg.Gradient.CenterY.FValue, c.y);
  }
}

TEST(StyleValues, BackgroundLayerWords) {
  float base = 200;
  {
    TValue v(u"#fff url(img/a%20b.png) no-repeat right 10px fixed");
    TElementBackground bg(nullptr);
    bg.Parse(v.seq);
    EXPECT_EQ(bg.Image, u"img/a b.png");
    EXPECT_EQ(bg.Repeat, brNoRepeat);
    EXPECT_EQ(bg.Attachment, baFixed);
    bg.PositionX.Parent = &base;
    EXPECT_EQ(Px(bg.PositionX), 200);
    EXPECT_TRUE(bg.PositionX.Flags.Contains(mfRight));
    EXPECT_EQ(Px(bg.PositionY), 10);
  }
  {
    // A data URL is kept as written; only the first layer counts.
    TValue v(u"url(data:image/png;base64,QQ%3D%3D) repeat-x, url(b.png) no-repeat");
    TElementBackground bg(nullptr);
    bg.Parse(v.seq);
    EXPECT_EQ(bg.Image, u"data:image/png;base64,QQ%3D%3D");
    EXPECT_EQ(bg.Repeat, brRepeatX);
  }
  {
    TValue v(u"url(a.png) top center border-box cover");
    TElementBackground bg(nullptr);
    bg.Parse(v.seq);
    EXPECT_TRUE(bg.PositionY.Flags.Contains(mfTop));
    EXPECT_TRUE(bg.PositionX.Flags.Contains(mfCenter));
    EXPECT_EQ(bg.Origin, boBorderBox);
    EXPECT_EQ(bg.SizeKind, bsCover);
  }
  {
    TValue v(u"url(a.png) 5 7");
    TElementBackground bg(nullptr);
    bg.Parse(v.seq);
    EXPECT_EQ(bg.PositionX.FMUnit, muPX);
    EXPECT_EQ(Px(bg.PositionX), 5);
    EXPECT_EQ(Px(bg.PositionY), 7);
  }
  {
    TValue v(u"url(a.png) left middle");
    TElementBackground bg(nullptr);
    bg.Parse(v.seq);
    bg.PositionY.Parent = &base;
    EXPECT_EQ(Px(bg.PositionY), 100);
  }
  {
    // "none" clears the image; a vendor gradient is left to the plain one.
    TElementBackground bg(nullptr);
    TValue a(u"url(a.png)");
    bg.Parse(a.seq);
    TValue b(u"-webkit-linear-gradient(top, red, blue)");
    bg.Parse(b.seq);
    EXPECT_EQ(bg.Image, u"a.png");
    EXPECT_FALSE(bg.HasGradient());
    TValue c(u"none");
    bg.Parse(c.seq);
    EXPECT_TRUE(bg.Image.empty());
  }
  {
    // Unknown functions are stepped over whole.
    TValue v(u"image-set(url(x.png) 1x) blur(2px) url(y.png)");
    TElementBackground bg(nullptr);
    bg.Parse(v.seq);
    EXPECT_EQ(bg.Image, u"y.png");
  }
}

TEST(StyleValues, TransformItems) {
  TStyle style;
  struct {
    const char16_t* text;
    std::vector<TTransformType> kinds;
    std::vector<size_t> params;
  } cases[] = {
      {u"rotate(45deg) translate(10px)", {ttRotate, ttTranslate}, {1, 2}},
      {u"scale(0.85) translateY(-0.5rem) translateX(0.15rem)",
       {ttScale, ttTranslateY, ttTranslateX},
       {2, 1, 1}},
      {u"translate(-50%, -50%)", {ttTranslate}, {2}},
      {u"translate3d(0.25em, 0, 0)", {ttTranslate3d}, {3}},
      {u"translate3d(1px)", {ttTranslate3d}, {2}},
      {u"matrix(1, 0, 0, 1, 10, 20)", {ttMatrix}, {6}},
      {u"none", {}, {}},
      {u"rotate(10deg) perspective(3px) scale(2)", {ttRotate}, {1}},
      {u"uppercase", {}, {}},
  };
  for (const auto& c : cases) {
    TValue v(c.text);
    TTransform t;
    t.Style = &style;
    t.Decode(v.seq);
    std::vector<TTransformType> kinds;
    std::vector<size_t> params;
    for (const TTransformItem& i : t.Items) {
      kinds.push_back(i.Kind);
      params.push_back(i.Params.size());
    }
    SCOPED_TRACE(std::string(c.text, c.text + std::char_traits<char16_t>::length(c.text)));
    EXPECT_EQ(kinds, c.kinds);
    EXPECT_EQ(params, c.params);
  }
}

TEST(StyleValues, TransformComponents) {
  TStyle style;
  {
    TValue v(u"rotate(45deg) translate(10px)");
    TTransform t;
    t.Style = &style;
    t.Decode(v.seq);
    EXPECT_EQ(t.Rotate(), 45);
    EXPECT_EQ(t.TranslateX(), 10);
    EXPECT_EQ(t.TranslateY(), 0);
    EXPECT_EQ(t.ScaleX(), 1);
    EXPECT_EQ(t.Items[1].Params[1].FMUnit, muPX);
    EXPECT_FALSE(t.Items[1].Params[1].GetAuto());
  }
  {
    TValue v(u"scale(0.85) translateY(-0.5rem) translateX(1em)");
    TTransform t;
    t.Style = &style;
    t.Decode(v.seq);
    EXPECT_FLOAT_EQ(t.ScaleX(), 0.85f);
    EXPECT_FLOAT_EQ(t.ScaleY(), 0.85f);
    EXPECT_EQ(t.TranslateY(), -10); // rem against a 20 px root
    EXPECT_EQ(t.TranslateX(), 16);  // em against the element's 16 px
  }
  {
    TValue v(u"scaleY(3) rotateX(30deg) translate(4px, 5px)");
    TTransform t;
    t.Decode(v.seq);
    EXPECT_EQ(t.ScaleX(), 1);
    EXPECT_EQ(t.ScaleY(), 3);
    EXPECT_EQ(t.RotateX(), 30);
    EXPECT_EQ(t.TranslateY(), 5);
  }
}

TEST(StyleValues, TransformOrigin) {
  struct {
    const char16_t* text;
    float x, y; // percent or pixels by the unit below
    TMeasureUnit ux, uy;
  } cases[] = {
      {u"top left", 0, 0, muPercent, muPercent},      {u"bottom right", 100, 100, muPercent, muPercent},
      {u"left bottom", 0, 100, muPercent, muPercent}, {u"10px 20px", 10, 20, muPX, muPX},
      {u"right 5px", 100, 5, muPercent, muPX},
  };
  for (const auto& c : cases) {
    TValue v(c.text);
    TTransform t;
    t.Clear();
    t.DecodeOrigin(v.seq);
    EXPECT_EQ(t.OriginX.FValue, c.x) << std::string(c.text, c.text + 6);
    EXPECT_EQ(t.OriginY.FValue, c.y);
    EXPECT_EQ(t.OriginX.FMUnit, c.ux);
    EXPECT_EQ(t.OriginY.FMUnit, c.uy);
  }
}

TEST(StyleValues, BoxShadows) {
  TStyle style;
  struct {
    const char16_t* text;
    bool none, inset;
    float x, y, blur;
    uint32_t colour;
  } cases[] = {
      // bootstrap 5.3.3: the focus ring, and a list of two shadows (the first counts).
      {u"0 0 0 0.25rem rgba(13, 110, 253, 0.25)", false, false, 0, 0, 0, 0x400D6EFD},
      {u"0 0 0 1px #fff, 0 0 0 0.25rem rgba(13, 110, 253, 0.25)", false, false, 0, 0, 0, 0xFFFFFFFF},
      {u"inset 0 1px 2px #000", false, true, 0, 1, 2, 0xFF000000},
      {u"0 1px 2px rgba(0,0,0,.5) inset", false, true, 0, 1, 2, 0x80000000},
      {u"2px 3px red", false, false, 2, 3, 0, 0xFFFF0000},
      {u"1em 2px 4px", false, false, 16, 2, 4, 0},
      {u"none", true, false, 0, 0, 0, 0},
  };
  for (const auto& c : cases) {
    TValue v(c.text);
    TElementShadow s;
    s.Style = &style;
    s.Parse(v.seq);
    SCOPED_TRACE(std::string(c.text, c.text + std::char_traits<char16_t>::length(c.text)));
    EXPECT_EQ(s.NoShadow(), c.none);
    if (c.none)
      continue;
    EXPECT_EQ(s.Inset, c.inset);
    EXPECT_EQ(Px(s.OffsetX), c.x);
    EXPECT_EQ(Px(s.OffsetY), c.y);
    EXPECT_EQ(Px(s.Blur), c.blur);
    EXPECT_TRUE(s.Spread.GetAuto());
    EXPECT_EQ(s.Color, c.colour);
    EXPECT_EQ(s.Strength, 1.0f);
  }
  TElementShadow s;
  TValue v(u"1px 1px red");
  s.Parse(v.seq);
  s.Reset();
  EXPECT_TRUE(s.NoShadow());
  EXPECT_EQ(s.Color, 0u);
}

TEST(StyleValues, TextShadows) {
  struct {
    const char16_t* text;
    bool none;
    float x, y, blur;
    uint32_t colour;
  } cases[] = {
      {u"red 1px 2px", false, 1, 2, 0, 0xFFFF0000},
      {u"1px 2px 3px blue", false, 1, 2, 3, 0xFF0000FF},
      {u"#000 0 0", false, 0, 0, 0, 0xFF000000},
      {u"1px 1px", false, 1, 1, 0, 0},
      {u"none", true, 0, 0, 0, 0},
  };
  for (const auto& c : cases) {
    TValue v(c.text);
    TElementShadow s;
    s.ParseTextShadow(v.seq);
    EXPECT_EQ(s.NoShadow(), c.none) << std::string(c.text, c.text + 4);
    if (c.none)
      continue;
    EXPECT_EQ(Px(s.OffsetX), c.x);
    EXPECT_EQ(Px(s.OffsetY), c.y);
    EXPECT_EQ(Px(s.Blur), c.blur);
    EXPECT_EQ(s.Color, c.colour);
  }
}

TEST(StyleValues, BoxReflect) {
  {
    TValue v(u"below 2px linear-gradient(transparent, white 60%, white)");
    TBoxReflect r;
    ASSERT_TRUE(r.Decode(v.seq));
    EXPECT_EQ(r.Direction, brBelow);
    EXPECT_EQ(Px(r.Offset), 2);
    ASSERT_EQ(r.Gradient.Stops.size(), 3u);
    EXPECT_EQ(r.Gradient.Stops[0].Position.FValue, 0);
    EXPECT_EQ(r.Gradient.Stops[1].Position.FValue, 60);
    EXPECT_EQ(r.Gradient.Stops[2].Position.FValue, 100);
    EXPECT_EQ(r.Gradient.Stops[0].Color, 0x00FFFFFFu);
  }
  {
    TValue v(u"right linear-gradient(to left, red, blue)");
    TBoxReflect r;
    ASSERT_TRUE(r.Decode(v.seq));
    EXPECT_EQ(r.Direction, brRight);
    EXPECT_EQ(r.Gradient.Direction, gsLeft);
    EXPECT_EQ(r.Gradient.Stops.size(), 2u);
  }
  TValue bad(u"sideways 2px");
  TBoxReflect r;
  EXPECT_FALSE(r.Decode(bad.seq));
  EXPECT_EQ(r.Direction, brNone);
}

TEST(StyleValues, ColumnRule) {
  TValue v(u"thick dotted #ccc");
  TCSSColumnRule r;
  r.Decode(v.seq, nullptr);
  EXPECT_EQ(Px(r.Width), 3);
  EXPECT_EQ(r.Style, lsDotted);
  EXPECT_EQ(r.Color, 0xFFCCCCCCu);
}

TEST(StyleValues, HostileGradientsEnd) {
  // Unclosed brackets and stray tokens end the walk instead of running past it.
  for (const char16_t* text :
       {u"linear-gradient(", u"linear-gradient(to", u"radial-gradient(at", u"linear-gradient(red, rgb(1,2",
        u"url(", u"radial-gradient(red 10% 20%, )", u"linear-gradient(to to to, var(--x), red)",
        u"0 0 0 1px rgb(3, 110, 25 3333333333, 0.25)", u"rgb(1e30, -1e30, 2)"}) {
    TValue v(text);
    TElementBackground bg(nullptr);
    bg.Parse(v.seq);
    TValue w(text);
    TTransform t;
    t.Decode(w.seq);
    TValue x(text);
    TElementShadow s;
    s.Parse(x.seq);
    TValue y(text);
    TBoxReflect r;
    r.Decode(y.seq);
  }
}

} // namespace
