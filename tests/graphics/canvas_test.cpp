#include "graphics/recording_canvas.h"
#include "htcore/graphics/canvas.h"

#include <gtest/gtest.h>

using namespace ht;
using testing_canvas::TRecordingCanvas;

namespace {

struct TSceneCanvas : TRecordingCanvas {
  TSceneCanvas() {
    THtCanvasScene s;
    s.Init(TRect{0, 0, 800, 600}, this);
    BeginScene(s);
  }
};

} // namespace

TEST(Canvas, ShapesAreOnePathEach) {
  TSceneCanvas c;
  THtBrush& b = c.GetBrush(0xFF3366CC);
  c.FillEllipse(b, 10, 10, 80, 40);
  c.DrawEllipse(c.GetPen(0xFF000000, 2), 10, 10, 80, 40);
  c.DrawArc(c.GetPen(0xFF000000, 1), 0, 0, 10, 10, 90, -45);
  c.FillRectangle(c.GetBrush(0xFF00FF00), TRectF{1, 2, 11, 7});
  c.FillRoundRect(c.GetBrush(0xFF00FF00), TRectF{1, 2, 11, 7}, 0, 0); // no radii: a rectangle
  c.RoundRect(c.GetPen(0xFF000000, 1), TRectF{0, 0, 20, 10}, 2, 2);
  c.DrawLine(c.GetPen(0xFF000000, 1), 1, 1, 5, 5);
  EXPECT_EQ(c.Text(),
            // a full fill sweeps 359.9 degrees, a full outline 360
            "FillPath #FF3366CC A10,10,80,40,0,359.9 Z\n"
            "DrawPath #FF000000/2 A10,10,80,40,0,360 Z\n"
            "DrawPath #FF000000/1 A0,0,10,10,90,-45\n"
            "FillPath #FF00FF00 M1,2 L11,2 L11,7 L1,7 Z\n"
            "FillPath #FF00FF00 M1,2 L11,2 L11,7 L1,7 Z\n"
            "Smooth on\n"
            "DrawPath #FF000000/1 M2,0 L18,0 A16,0,4,4,270,90 L20,8 A16,6,4,4,360,90 L2,10 A0,6,4,4,90,90 "
            "L0,8 A0,0,4,4,180,90\n"
            "DrawPath #FF000000/1 M1,1 L5,5\n");
}

TEST(Canvas, TransformsAndStates) {
  TSceneCanvas c;
  c.ScaleTransform(1, 1);     // no call
  c.TranslateTransform(0, 0); // no call
  c.RotateTransform(0);       // a call all the same
  EXPECT_EQ(c.Text(), "Matrix add []\n");
  c.Reset();
  c.TranslateTransform(10, 5);
  c.SaveState();
  c.ScaleTransform(2, 2);
  EXPECT_EQ(c.CurrentMatrix()->TransformPoint(TPointF{1, 1}), (TPointF{12, 7}));
  EXPECT_EQ(c.ReverseMatrix().TransformPoint(TPointF{12, 7}), (TPointF{1, 1}));
  EXPECT_FLOAT_EQ(c.CurrentScale(), 2);
  c.RestoreState();
  EXPECT_EQ(c.CurrentMatrix()->TransformPoint(TPointF{1, 1}), (TPointF{11, 6}));
  // An unbalanced restore keeps the matrix and still counts down.
  c.RestoreState();
  EXPECT_EQ(c.CurrentMatrix()->TransformPoint(TPointF{1, 1}), (TPointF{11, 6}));
  EXPECT_EQ(c.StateStackIndex(), -2);
  c.SaveState(); // starts over safely
  c.RestoreState();
  EXPECT_EQ(c.StateStackIndex(), -1);
}

TEST(Canvas, SceneAndViews) {
  TRecordingCanvas c;
  THtCanvasScene s;
  s.Init(TRect{10, 20, 810, 620}, &c);
  s.Scale = 2;
  s.ScrollY = 30;
  s.UpdateRects = {TRect{100, 100, 200, 200}};
  c.BeginScene(s);
  EXPECT_EQ(c.RootMatrix.TransformPoint(TPointF{1, 1}), (TPointF{22, 42}));
  EXPECT_EQ(c.Scene.UpdateRects[0], (TRect{100, 70, 200, 200})); // grown towards the scroll
  EXPECT_TRUE(c.DocumentRectInView(TRectF{150, 150, 160, 160}));
  EXPECT_FALSE(c.DocumentRectInView(TRectF{300, 300, 310, 310})); // outside every update rect
  c.TranslateTransform(1000, 0);
  EXPECT_FALSE(c.DocumentRectInView(TRectF{150, 150, 160, 160}));
  EXPECT_TRUE(c.DocumentRectInViewPort(TRectF{150, 150, 160, 160})); // tests the untransformed rect
  TRectF snap{0.3f, 0.6f, 10.4f, 10.5f};
  c.SnaptoPixels(snap);
  EXPECT_EQ(snap, (TRectF{0, 1, 10, 10}));

  THtCanvasScene u;
  u.Init(TRect{0, 0, 100, 100}, nullptr);
  u.AddUpdateRect(TRect{10, 10, 20, 20});
  u.AddUpdateRect(TRect{12, 12, 18, 18});   // inside the first
  u.AddUpdateRect(TRect{200, 0, 300, 10});  // outside the view
  u.AddUpdateRect(TRect{5, 5, 5, 50});      // empty
  u.AddUpdateRect(TRect{90, 90, 120, 120}); // kept unclipped
  ASSERT_EQ(u.UpdateRects.size(), 2u);
  EXPECT_EQ(u.UpdateRects[1], (TRect{90, 90, 120, 120}));
  u.ExpandUpdateRects(5, 5, 5, 5);
  EXPECT_EQ(u.UpdateRects[1], (TRect{85, 85, 100, 100}));
}

TEST(Canvas, ClearFillsUpdateRectsInDocumentSpace) {
  TRecordingCanvas c;
  THtCanvasScene s;
  s.Init(TRect{0, 0, 100, 100}, &c);
  s.UpdateRects = {TRect{0, 0, 10, 10}, TRect{50, 50, 60, 70}};
  c.BeginScene(s);
  c.ScaleTransform(2, 2);
  c.Reset();
  c.Clear(0xFFFFFFFF);
  EXPECT_EQ(c.Text(), "Compositing copy\n"
                      "FillPath #FFFFFFFF M0,0 L5,0 L5,5 L0,5 Z\n"
                      "FillPath #FFFFFFFF M25,25 L30,25 L30,35 L25,35 Z\n"
                      "Compositing over\n");
}

TEST(Canvas, ScratchPenAndBrushAreReset) {
  TSceneCanvas c;
  THtPen& p = c.GetPen(0xFF112233, 3);
  p.SetPenStyle(hpsDash);
  p.SetLineCap(lcRound);
  const float dashes[] = {6, 3};
  p.SetDashes(dashes);
  EXPECT_EQ(p.Dashes, (std::vector<float>{2, 1})); // multiples of the width
  THtPen& q = c.GetPen(0xFF000000, 1);
  EXPECT_EQ(&p, &q);
  EXPECT_EQ(q.GetPenStyle(), hpsSolid);
  EXPECT_EQ(q.GetLineCap(), lcFlat);
  EXPECT_TRUE(q.Dashes.empty());

  THtPen src(0xFF0000FF, 4);
  src.SetDashes(dashes);
  std::unique_ptr<THtPen> copy(src.Clone());
  EXPECT_EQ(copy->Dashes, src.Dashes); // width first, then dashes
  EXPECT_FLOAT_EQ(copy->GetWidth(), 4);
}

TEST(Brush, GradientStopsGetTheirEnds) {
  struct {
    std::vector<float> pos;
    std::vector<uint32_t> col;
    std::vector<float> wantPos;
    std::vector<uint32_t> wantCol;
  } cases[] = {
      {{0.25f, 0.75f}, {1, 2}, {0, 0.25f, 0.75f, 1}, {1, 1, 2, 2}},
      {{0, 1}, {1, 2}, {0, 1}, {1, 2}},
      {{0, 0.99995f}, {1, 2}, {0, 0.99995f}, {1, 2}}, // 1 within the tolerance
      {{0.5f}, {7}, {0, 0.5f, 1}, {7, 7, 7}},
      {{}, {}, {}, {}},
  };
  for (auto& c : cases) {
    THtBrush b;
    b.SetGradientColors(c.pos, c.col);
    EXPECT_EQ(b.GradientPositions, c.wantPos);
    EXPECT_EQ(b.GradientColors, c.wantCol);
  }
}

TEST(Brush, KindsAndClone) {
  THtBrush b;
  b.CreateGradient(TRectF{0, 0, 100, 10}, 1, 2, -90, TRectF{0, 0, 100, 10});
  EXPECT_EQ(b.Kind, hbGradient);
  EXPECT_FLOAT_EQ(b.Angle, 270);
  EXPECT_TRUE(b.GradientColors.empty()); // the two colours are not stored
  b.CreateGradient(TRectF{0, 0, 100, 10}, 1, 2, 1e30f, TRectF{});
  EXPECT_GE(b.Angle, 0);
  EXPECT_LE(b.Angle, 360);
  const float pos[] = {0, 1};
  const uint32_t col[] = {0xFF000000, 0xFFFFFFFF};
  b.CreateGradient(TRectF{0, 0, 100, 10}, 0, 0, 90, TRectF{});
  b.SetGradientColors(pos, col);
  EXPECT_EQ(b.CalcGradientColor(0, 5), 0xFF000000u);
  EXPECT_EQ(b.CalcGradientColor(50, 5), 0xFF808080u);
  EXPECT_EQ(b.CalcGradientColor(100, 5), 0xFFFFFFFFu);
  TRectF g = b.CalcGradientRect(); // 90 degrees: left to right through the centre
  EXPECT_NEAR(g.Left, 0, 1e-4);
  EXPECT_NEAR(g.Right, 100, 1e-4);
  EXPECT_NEAR(g.Top, 5, 1e-4);

  std::unique_ptr<THtBrush> c(b.Clone());
  EXPECT_EQ(c->Kind, hbGradient);
  EXPECT_EQ(c->GradientColors, b.GradientColors);
  EXPECT_EQ(c->GradientRect, b.GradientRect);

  THtMatrixData m = THtMatrixData::CreateScaled(2, 1);
  THtBrush r;
  r.CreateRadialGradient(1, 2, 3, 4, 5, 6, 7, m);
  std::unique_ptr<THtBrush> rc(r.Clone());
  EXPECT_EQ(rc->Kind, hbRadial);
  EXPECT_EQ(rc->FMatrix, m);
  EXPECT_FLOAT_EQ(rc->Radius, 7);
  THtBrush one;
  one.SetGradientColors(std::span<const float>(pos, 1), std::span<const uint32_t>(col, 1));
  EXPECT_EQ(one.CalcGradientColor(0, 0), 0xFF000000u);
}

TEST(Canvas, Widgets) {
  TSceneCanvas c;
  c.DrawCheck(TRectF{0, 0, 16, 16}, 96, true, false, true, false);
  c.DrawRadio(TRectF{0, 0, 16, 16}, 96, true, false, false, true);
  c.DrawButton(TRectF{0, 0, 60, 20}, 96, false, false, true, false);
  EXPECT_EQ(c.Text(), "DrawPath #FF000050/1 M1,1 L15,1 L15,15 L1,15 Z\n"
                      "DrawPath #FF000050/2 M4,8 L6,11\n"
                      "DrawPath #FF000050/2 M6,11 L11,3\n"
                      "DrawPath #FFAAAAAA/1 A0,0,13,13,0,360 Z\n"
                      "FillPath #FF000000 A3,3,7,7,0,359.9 Z\n"
                      "FillPath linear(180 0:#FFE3F9FF 0.5:#FFE3F9FF 0.5:#FFBADFF0 1:#FFBADFF0) M5,0 L55,0 "
                      "A50,0,10,10,270,90 "
                      "L60,15 A50,10,10,10,360,90 L5,20 A0,10,10,10,90,90 L0,15 A0,0,10,10,180,90\n"
                      "Smooth on\n"
                      "DrawPath #FF909090/1 M5,0 L55,0 A50,0,10,10,270,90 L60,15 A50,10,10,10,360,90 L5,20 "
                      "A0,10,10,10,90,90 L0,15 A0,0,10,10,180,90\n");
}

TEST(Canvas, WavyLineAndPathReplay) {
  TSceneCanvas c;
  THtPen& pen = c.GetPen(0xFFFF0000, 1);
  c.DrawWavyLine(0, 10, 14, 99, pen);
  EXPECT_EQ(c.Text(), "DrawPath #FFFF0000/1 M0,11 L3,9 L6,11 L9,9 L12,11 L14,9\n");
  c.Reset();
  c.DrawWavyLine(0, 10, 1e30f, 10, pen); // too many waves: nothing
  EXPECT_EQ(c.Text(), "");

  THtCustomPath p;
  p.Parse(u"M0 0 L10 0 L10 10 Z C1 1 2 2 3 3");
  p.AddEllipse(0, 0, 4, 4);
  p.DrawPath(c, pen); // curves are left out
  EXPECT_EQ(c.Text(), "DrawPath #FFFF0000/1 M0,0 L10,0\n"
                      "DrawPath #FFFF0000/1 M10,0 L10,10\n"
                      "DrawPath #FFFF0000/1 M10,10 L0,0\n"
                      "DrawPath #FFFF0000/1 A0,0,4,4,0,360 Z\n");
}

TEST(Canvas, SmallShadowIsPaintedBlurredAndCutOut) {
  TSceneCanvas c;
  THtShadowProps p = CreateShadowProps(TRectF{10, 10, 110, 60}, 0, true, 4, 6, 2, 0x80000000, 255, false);
  c.DrawShadow(nullptr, p);
  // blur extent 6: the box is R moved by (4, 6) and grown by 6
  EXPECT_EQ(c.Text(), "  bmp: Save\n"
                      "  bmp: Matrix add [translate(-4,-4)]\n"
                      "  bmp: Smooth on\n"
                      "  bmp: FillPath #80000000 M10,10 L110,10 L110,60 L10,60 Z\n"
                      "  bmp: Restore\n"
                      "  bmp: Blur 0,0,112,62 r1\n"
                      "  bmp: Matrix set [translate(-8,-10)]\n"
                      "  bmp: Compositing copy\n"
                      "  bmp: FillPath #00000000 M10,10 L110,10 L110,60 L10,60 Z\n"
                      "  bmp: EndScene\n"
                      "Bitmap 112x62 8,10,120,72 <- 0,0,112,62 1\n");
  c.Reset();
  p.HasBackground = true;
  p.BackgroundColor = 0xFFFFFFFF; // an opaque background covers the box: no cut
  p.MaxBorderRadius = 5;
  c.DrawShadow(nullptr, p);
  EXPECT_EQ(c.Log->size(), 8u);
  EXPECT_NE(c.Text().find("bmp: FillPath #80000000 M15,10 L105,10 A100,10,10,10,270,90"), std::string::npos);

  TSceneCanvas none;
  none.WithBitmaps = false;
  none.DrawShadow(nullptr, p);
  EXPECT_EQ(none.Text(), "");
}

TEST(Canvas, LargeShadowIsANinePatchFromACache) {
  TSceneCanvas c;
  THtShadowProps p = CreateShadowProps(TRectF{0, 0, 400, 200}, 4, true, 2, 2, 1, 0xFF000000, 255, false);
  c.DrawShadow(nullptr, p);
  // size = 2 + 8 + 4*3 + 5 = 27; half = Round(8.5) = 8 (ties to even): 8 by 8 corner cells;
  // the strips sit at half minus the offset, one further for the bottom and right edges
  EXPECT_EQ(
      c.Text(),
      "  bmp: Smooth on\n"
      "  bmp: FillPath #FF000000 M7,3 L20,3 A16,3,8,8,270,90 L24,20 A16,16,8,8,360,90 L7,24 A3,16,8,8,90,90 "
      "L3,20 A3,3,8,8,180,90\n"
      "  bmp: Blur 0,0,27,27 r0.5\n"
      "  bmp: Compositing copy\n"
      "  bmp: FillPath #00000000 M5,1 L18,1 A14,1,8,8,270,90 L22,18 A14,14,8,8,360,90 L5,22 "
      "A1,14,8,8,90,90 L1,18 A1,1,8,8,180,90\n"
      "  bmp: EndScene\n"
      "Save\n"
      "Matrix set []\n"
      "Bitmap 27x27 -1,-1,7,7 <- 0,0,8,8 1\n"
      "Bitmap 27x27 397,-1,405,7 <- 19,0,27,8 1\n"
      "Bitmap 27x27 -1,197,7,205 <- 0,19,8,27 1\n"
      "Bitmap 27x27 397,197,405,205 <- 19,19,27,27 1\n"
      "Bitmap 27x27 7,-1,397,7 <- 6,0,7,8 1\n"
      "Bitmap 27x27 7,197,397,205 <- 7,19,8,27 1\n"
      "Bitmap 27x27 -1,7,7,197 <- 0,6,8,7 1\n"
      "Bitmap 27x27 397,7,405,197 <- 19,7,27,8 1\n"
      "Restore\n");
  c.Reset();
  c.ScaleTransform(2, 2);
  c.DrawShadow(nullptr, p); // same shadow: the bitmap is reused, cells scale with the matrix
  EXPECT_EQ(c.Log->at(1), "Save");
  EXPECT_EQ(c.Log->at(3), "Bitmap 27x27 -2,-2,14,14 <- 0,0,8,8 1");
}

namespace {

struct TRecordedImage : THtImage {
  TRecordedImage(int w, int h) { Width = w, Height = h; }
  bool HasRecording() const override { return true; }
  void PlayRecording(THtCanvas& c, float Opacity) override {
    static_cast<TRecordingCanvas&>(c).Put("Play " + DumpNum(Opacity));
  }
};

} // namespace

TEST(Canvas, DrawImageReplaysARecording) {
  TSceneCanvas c;
  TRecordedImage img(50, 20);
  c.DrawImage(img, TRectF{10, 10, 110, 50}, 0.5f);
  EXPECT_EQ(c.Text(), "Save\nClip 10,10,110,50\nMatrix add [translate(10,10)]\nMatrix add [ scale(2,2)]\n"
                      "Play 0.5\nRestore\n");
  c.Reset();
  THtImage pixels; // no recording: nothing for the base class to draw
  pixels.Width = pixels.Height = 5;
  c.DrawImage(pixels, TRectF{0, 0, 5, 5}, 1);
  EXPECT_EQ(c.Text(), "");
}

TEST(Canvas, BackgroundTiling) {
  TSceneCanvas c;
  c.RecordImages = true;
  TRecordedImage img(40, 30);
  THtBackgroundFill bg;
  c.FillImage(TRectF{0, 0, 100, 50}, img, 0, 0, bg, 1, 0);
  EXPECT_EQ(c.Text(), "Image 0,0,40,30 1\nImage 40,0,80,30 1\nImage 80,0,120,30 1\n"
                      "Image 0,30,40,60 1\nImage 40,30,80,60 1\nImage 80,30,120,60 1\n");
  c.Reset();
  bg.Repeat = brRepeatX;
  c.FillImage(TRectF{0, 0, 100, 50}, img, 10, 0, bg, 1, 0); // the origin shifts the tiling
  EXPECT_EQ(c.Text(), "Image -10,0,30,30 1\nImage 30,0,70,30 1\nImage 70,0,110,30 1\n");
  c.Reset();
  bg.Repeat = brNoRepeat;
  bg.PositionX.Flags = {mfNotAuto, mfCenter};
  c.FillImage(TRectF{0, 0, 100, 50}, img, 5, 5, bg, 1, 0); // y delta with the other sign
  EXPECT_EQ(c.Text(), "Image 35,-5,75,25 1\n");
  c.Reset();
  bg.SizeKind = bsCover;
  bg.PositionX.Flags = {};
  c.FillImage(TRectF{0, 0, 100, 50}, img, 0, 0, bg, 1, 0);
  EXPECT_EQ(c.Text(), "Image 0,0,100,75 1\n");
  c.Reset();
  bg.SizeKind = bsContain;
  c.FillImage(TRectF{0, 0, 100, 50}, img, 0, 0, bg, 1, 0);
  EXPECT_EQ(c.Text(), "Image 0,0,66.6667,50 1\n");
  c.Reset();
  TRecordedImage empty(0, 30);
  c.FillImage(TRectF{0, 0, 100, 50}, empty, 0, 0, bg, 1, 0);
  bg.SizeKind = bsAuto;
  bg.Repeat = brRepeat;
  TRecordedImage tiny(1, 1);
  bg.Width.SetFPixels(1e-6f); // a million million tiles: refused
  c.FillImage(TRectF{0, 0, 1e6f, 1e6f}, tiny, 0, 0, bg, 1, 0);
  EXPECT_EQ(c.Text(), "");
}

TEST(Canvas, TextShadowAndFonts) {
  TSceneCanvas c;
  THtFont f;
  THtTextStyle st;
  st.Color = 0xFF000000;
  c.DrawTextShadow(u"Hi", TRectF{0, 0, 20, 10}, st, f, 1, 2, 3, 0xFF888888);
  EXPECT_EQ(c.Text(), "Text 'Hi' 1,2,21,12 #FF888888\nText 'Hi' 0,0,20,10 #FF000000\n");
  struct {
    const char16_t* name;
    bool has;
  } fonts[] = {{u"arial", true},
               {u"ARIAL Bold", true},
               {u"Roboto Light", true},
               {u"Roboto Bold Narrow", true},
               {u"Arial Narrow Bold", false},
               {u"Helvetica", false}};
  // The style words are cut in a fixed order, so "narrow" must come last.
  for (auto& t : fonts)
    EXPECT_EQ(c.HasFont(t.name), t.has) << hstring(t.name).toUtf8();
}

TEST(Canvas, Paging) {
  TSceneCanvas c;
  c.BeginPaging(210, 297, 96, coPortrait);
  c.NewPage(coLandscape);
  ASSERT_EQ(c.GetPageCount(), 2);
  EXPECT_FLOAT_EQ(c.GetPage(0)->Number, 1);
  EXPECT_FLOAT_EQ(c.GetPage(1)->Number, 2);
  EXPECT_EQ(c.GetPage(1)->Orientation, coLandscape);
  EXPECT_EQ(c.GetPage(0)->WidthPx, 794);
  EXPECT_FLOAT_EQ(c.FPageHeightPixels, 1123);
  c.SetPageWidthMM(297);
  EXPECT_FLOAT_EQ(c.FPageWidthPixels, 1123);
  c.BeginPaging(100, 50, 300, coDefault); // frees the old pages
  EXPECT_EQ(c.GetPageCount(), 1);
  EXPECT_EQ(THtPage(100, 50, 1, 96).Orientation, coLandscape);
  try {
    c.GetPage(0)->AsMetaFileBytes();
    FAIL();
  } catch (const Exception& e) {
    EXPECT_STREQ(e.what(), "Metafile is not implemented for class THtPage");
  }
  testing_canvas::TTestBitmap bmp(2, 2);
  EXPECT_EQ(bmp.VerticalInverted, 1);
  try {
    bmp.GetBuffer();
    FAIL();
  } catch (const Exception& e) {
    EXPECT_STREQ(e.what(), "HtBitmap buffer not implemented");
  }
}
