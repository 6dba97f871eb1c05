// Caches of rendered pixels. THtStripeCache keeps a document's rendering in
// horizontal bands a little taller than the screen, so scrolling repaints
// from the bands and renders only the rows that come into view; the host
// supplies the band objects (usually bitmaps) and how to fill and paint
// them. THtShadowCache keeps the last box shadow a canvas blurred.
//
//   class TMyStripes : public ht::THtStripeCache {
//     ht::TObject* CreateStripe() override { return new TMyBitmap(StripeWidth, StripeHeight); }
//     void UpdateStripeSize(int I) override { bitmap(I).SetSize(StripeWidth, StripeHeight); }
//     void FillStripes(ht::TObject* Doc, int From, int To) override { ... render StripeDocRect(i) ... }
//     void PaintStripe(int From, int To, ht::THtCanvas& C, float L, float T) override { ... }
//   };
//   stripes.Update(doc, 800, 600, 256, docWidth, docHeight, 1.0f, scrollX, scrollY);
//   stripes.PaintOnCanvas(canvas, 0, 0, scrollX, scrollY);
#pragma once

#include "htcore/graphics/canvas_types.h"

#include <memory>
#include <vector>

namespace ht {

class THtCanvas;

class THtCache : public TObject {};

class THtStripeCache : public THtCache {
public:
  THtStripeCache() = default;
  THtStripeCache(const THtStripeCache&) = delete;
  THtStripeCache& operator=(const THtStripeCache&) = delete;

  // The bands from the top; index 0 starts at StripesDocTop. Owned.
  std::vector<std::unique_ptr<TObject>> Stripes;
  int ScreenHeight = 0, ScreenWidth = 0, StripeWidth = 0, StripeHeight = 0;
  float DocWidth = 0, DocHeight = 0;
  int TotalStripeHeight = 0;
  // Where the bands start, in document units.
  float StripesDocTop = 0, StripesDocLeft = 0;
  float DocScale = 1, StripeScale = 1;
  uint32_t BackgroundColor = 0xFFFFFFFF;

  // Sizes the bands for a screen and a document: one more band than the
  // screen (or the document, when shorter) needs, as wide as the document
  // up to one and a half screens. New bands come from CreateStripe; all are
  // resized when the band size changes, else only the new ones.
  virtual void Init(int AScreenWidth, int AScreenHeight, int AStripeHeight, float ADocWidth, float ADocHeight,
                    float ADocScale);
  virtual TObject* CreateStripe() = 0;
  virtual void UpdateStripeSize(int Index) = 0;
  // Paints bands StartIndex..EndIndex (inclusive), the first at (CanvasLeft, CanvasTop).
  virtual void PaintStripe(int StartIndex, int EndIndex, THtCanvas& ACanvas, float CanvasLeft,
                           float CanvasTop) = 0;
  // Paints the bands that meet the screen showing the document from
  // (DocOffsetX, DocOffsetY) at (ScreenX, ScreenY) of the canvas.
  virtual void PaintOnCanvas(THtCanvas& ACanvas, float ScreenX, float ScreenY, float DocOffsetX,
                             float DocOffsetY);
  // Renders Source into bands StartIndex..EndIndex (inclusive).
  virtual void FillStripes(TObject* Source, int StartIndex, int EndIndex) = 0;
  // Brings bands up to date after the document changed; the base refills them.
  virtual void CheckStripes(TObject* Source, int StartIndex, int EndIndex);

  // Rotates the bands: the one at index n comes first (n < 0: the other way).
  void ShiftStripes(int n);
  // The document area of band Index.
  TRectF StripeDocRect(int Index) const;
  // Makes the bands cover the view whose top-left document point is
  // (DocX, DocY): nothing when they do already; bands that stay valid are
  // kept and only the uncovered ones refilled when the view moved less than
  // the bands' height; otherwise everything is set up and refilled. Answers
  // the number of bands filled.
  int Update(TObject* Source, int AScreenWidth, int AScreenHeight, int AStripeHeight, float ADocWidth,
             float ADocHeight, float ADocScale, float DocX, float DocY);
  // Forgets the geometry: the next Update refills everything.
  void Reset();
  int StripeCount() const noexcept { return static_cast<int>(Stripes.size()); }

private:
  // Band height in document units.
  float StripeDocHeight() const noexcept { return StripeHeight / StripeScale; }
  bool SameGeometry(int AScreenWidth, int AScreenHeight, int AStripeHeight, float ADocWidth, float ADocHeight,
                    float ADocScale) const noexcept;
  float LeftFor(float DocX) const noexcept;
};

// The last shadow painted as a nine-patch, kept by the canvas.
class THtShadowCache : public TObject {
public:
  std::unique_ptr<THtBitmap> B;
  THtShadowProps Props;
  bool Valid = false;
};

} // namespace ht
