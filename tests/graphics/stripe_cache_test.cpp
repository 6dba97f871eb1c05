#include "graphics/recording_canvas.h"
#include "htcore/graphics/image_caches.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace ht;

namespace {

// A band that remembers which document rows it was last filled with.
struct TBand : TObject {
  int Id = 0, Width = 0, Height = 0;
  float FilledTop = -1;
};

struct TBands : THtStripeCache {
  int Created = 0, Resized = 0, Filled = 0;
  std::string Painted;

  TBand& Band(int i) { return static_cast<TBand&>(*Stripes[i]); }
  TObject* CreateStripe() override {
    auto* b = new TBand;
    b->Id = Created++;
    return b;
  }
  void UpdateStripeSize(int Index) override {
    ++Resized;
    Band(Index).Width = StripeWidth;
    Band(Index).Height = StripeHeight;
  }
  void FillStripes(TObject*, int From, int To) override {
    for (int i = From; i <= To; ++i, ++Filled)
      Band(i).FilledTop = StripeDocRect(i).Top;
  }
  void PaintStripe(int From, int To, THtCanvas&, float Left, float Top) override {
    Painted = std::to_string(From) + ".." + std::to_string(To) + " at " + std::to_string(int(Left)) + "," +
              std::to_string(int(Top));
  }
  // Every band holds the rows it is placed at.
  bool Consistent() {
    for (int i = 0; i < StripeCount(); ++i)
      if (Band(i).FilledTop != StripeDocRect(i).Top)
        return false;
    return true;
  }
};

} // namespace

TEST(StripeCache, InitCounts) {
  struct {
    int screenW, screenH, stripeH;
    float docW, docH, scale;
    int stripes, stripeW;
  } cases[] = {
      {800, 600, 100, 1000, 5000, 1, 7,
       1000}, // 6 for the screen, one spare; 1.5 screens is wider than the doc
      {800, 600, 100, 2000, 5000, 1, 7, 1200}, // one and a half screens
      {800, 600, 100, 500, 250, 1, 4, 500},    // shorter than the screen: ceil(250 / 100) + 1
      {800, 600, 100, 500, 250, 2, 6, 1000},   // the scale counts
      {800, 600, 128, 700.5f, 0, 1, 1, 701},   // an empty document still has a band
  };
  for (const auto& c : cases) {
    TBands b;
    b.Init(c.screenW, c.screenH, c.stripeH, c.docW, c.docH, c.scale);
    EXPECT_EQ(b.StripeCount(), c.stripes) << c.docH;
    EXPECT_EQ(b.StripeWidth, c.stripeW) << c.docW;
    EXPECT_EQ(b.TotalStripeHeight, c.stripeH * c.stripes);
    EXPECT_EQ(b.Resized, c.stripes);
  }
  TBands b;
  b.Init(800, 600, 100, 1000, 5000, 1);
  b.Init(800, 300, 100, 1000, 5000, 1); // fewer bands: the surplus goes, sizes stay
  EXPECT_EQ(b.StripeCount(), 4);
  EXPECT_EQ(b.Resized, 7);
  b.Init(800, 500, 100, 1000, 5000, 1); // two new bands are sized, the others kept
  EXPECT_EQ(b.StripeCount(), 6);
  EXPECT_EQ(b.Resized, 9);
  b.Init(800, 500, 50, 1000, 5000, 1); // new band height: all resized
  EXPECT_EQ(b.Resized, 9 + 11);
}

TEST(StripeCache, ShiftAndRects) {
  TBands b;
  b.Init(100, 200, 100, 100, 1000, 2); // bands of 50 document units
  ASSERT_EQ(b.StripeCount(), 3);
  b.StripesDocTop = 100;
  TRectF r = b.StripeDocRect(1);
  EXPECT_EQ(r.Top, 150);
  EXPECT_EQ(r.Bottom, 200);
  EXPECT_EQ(r.Right, 75); // 150 pixels: one and a half screens
  b.ShiftStripes(1);
  EXPECT_EQ(b.Band(0).Id, 1);
  EXPECT_EQ(b.Band(2).Id, 0);
  b.ShiftStripes(-2);
  EXPECT_EQ(b.Band(0).Id, 2);
  b.ShiftStripes(7); // modulo the count
  EXPECT_EQ(b.Band(0).Id, 0);
}

TEST(StripeCache, ScrollingRefillsOnlyWhatComesIntoView) {
  TBands b;
  TObject doc;
  auto update = [&](float y) { return b.Update(&doc, 800, 600, 100, 1000, 5000, 1, 0, y); };
  EXPECT_EQ(update(0), 7); // first time: everything
  EXPECT_TRUE(b.Consistent());
  EXPECT_EQ(update(50), 0); // still inside the bands
  EXPECT_EQ(update(100), 0);
  EXPECT_EQ(update(250), 2); // two bands scrolled out at the top, two new ones below
  EXPECT_EQ(b.StripesDocTop, 200);
  EXPECT_TRUE(b.Consistent());
  EXPECT_EQ(update(50), 2); // and back
  EXPECT_TRUE(b.Consistent());
  EXPECT_EQ(update(3000), 7); // further than all bands: refill
  EXPECT_TRUE(b.Consistent());
  EXPECT_EQ(b.Filled, 7 + 2 + 2 + 7);
  EXPECT_EQ(b.Update(&doc, 800, 700, 100, 1000, 5000, 1, 0, 3000), 8); // new screen: set up again
  b.Reset();
  EXPECT_EQ(b.Update(&doc, 800, 700, 100, 1000, 5000, 1, 0, 3000), 8);
  EXPECT_EQ(b.Created, 8);
}

TEST(StripeCache, HorizontalScrollAndPainting) {
  TBands b;
  TObject doc;
  EXPECT_EQ(b.Update(&doc, 400, 300, 100, 2000, 1000, 1, 0, 0), 4);
  EXPECT_EQ(b.StripeWidth, 600);
  EXPECT_EQ(b.StripesDocLeft, 0);
  EXPECT_EQ(b.Update(&doc, 400, 300, 100, 2000, 1000, 1, 150, 0), 0); // 150..550 lies in 0..600
  EXPECT_EQ(b.Update(&doc, 400, 300, 100, 2000, 1000, 1, 900, 0), 4); // out: the view centred again
  EXPECT_EQ(b.StripesDocLeft, 800);

  testing_canvas::TRecordingCanvas canvas;
  b.PaintOnCanvas(canvas, 10, 20, 900, 150);
  EXPECT_EQ(b.Painted, "1..3 at -90,-30"); // bands 1-3 meet rows 150..450
  b.Painted.clear();
  b.PaintOnCanvas(canvas, 0, 0, 900, 5000);
  EXPECT_EQ(b.Painted, "");
}

TEST(ShadowCache, HoldsOneBitmap) {
  THtShadowCache c;
  EXPECT_FALSE(c.Valid);
  EXPECT_EQ(c.B, nullptr);
  c.B = std::make_unique<testing_canvas::TTestBitmap>(4, 4);
  c.Props.Blur = 3;
  EXPECT_EQ(c.B->GetWidth(), 4);
}
