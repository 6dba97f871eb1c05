// The band cache for scrolling: sizing the bands, keeping the ones that stay
// in view, and painting those that meet the screen.
#include "htcore/foundation/geometry.h"
#include "htcore/graphics/image_caches.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace ht {

void THtStripeCache::Init(int AScreenWidth, int AScreenHeight, int AStripeHeight, float ADocWidth,
                          float ADocHeight, float ADocScale) {
  HT_ASSERT(AStripeHeight > 0 && ADocScale > 0 && AScreenWidth >= 0 && AScreenHeight >= 0);
  int oldWidth = StripeWidth, oldHeight = StripeHeight;
  ScreenWidth = AScreenWidth;
  ScreenHeight = AScreenHeight;
  StripeHeight = AStripeHeight;
  DocWidth = std::max(0.0f, ADocWidth);
  DocHeight = std::max(0.0f, ADocHeight);
  DocScale = ADocScale;
  StripeScale = ADocScale;

  double screenBands = std::ceil(double(ScreenHeight) / StripeHeight);
  double docBands = std::ceil(double(DocHeight) * DocScale / StripeHeight);
  int n = static_cast<int>(std::min(screenBands, docBands)) + 1;
  size_t old = Stripes.size();
  if (size_t(n) < old)
    Stripes.resize(size_t(n));
  else
    while (Stripes.size() < size_t(n))
      Stripes.emplace_back(CreateStripe());
  TotalStripeHeight = StripeHeight * n;

  double docPixels = double(DocWidth) * DocScale;
  if (ScreenWidth >= docPixels)
    StripeWidth = static_cast<int>(std::ceil(docPixels));
  else
    StripeWidth =
        static_cast<int>(std::min<double>(detail::RoundEven(ScreenWidth * 1.5), std::ceil(docPixels)));

  bool resized = StripeWidth != oldWidth || StripeHeight != oldHeight;
  for (size_t i = resized ? 0 : old; i < Stripes.size(); ++i)
    UpdateStripeSize(static_cast<int>(i));
}

void THtStripeCache::CheckStripes(TObject* Source, int StartIndex, int EndIndex) {
  StartIndex = std::max(0, StartIndex);
  EndIndex = std::min(StripeCount() - 1, EndIndex);
  if (StartIndex <= EndIndex)
    FillStripes(Source, StartIndex, EndIndex);
}

void THtStripeCache::ShiftStripes(int n) {
  int count = StripeCount();
  if (count == 0)
    return;
  int k = ((n % count) + count) % count;
  std::rotate(Stripes.begin(), Stripes.begin() + k, Stripes.end());
}

TRectF THtStripeCache::StripeDocRect(int Index) const {
  return {StripesDocLeft, StripesDocTop + Index * StripeHeight / StripeScale,
          StripesDocLeft + StripeWidth / StripeScale,
          StripesDocTop + (Index + 1) * StripeHeight / StripeScale};
}

bool THtStripeCache::SameGeometry(int AScreenWidth, int AScreenHeight, int AStripeHeight, float ADocWidth,
                                  float ADocHeight, float ADocScale) const noexcept {
  return AScreenWidth == ScreenWidth && AScreenHeight == ScreenHeight && AStripeHeight == StripeHeight &&
         ADocWidth == DocWidth && ADocHeight == DocHeight && ADocScale == DocScale;
}

// The bands' left edge: the view centred in them, the bands within the document.
float THtStripeCache::LeftFor(float DocX) const noexcept {
  float bandsWidth = StripeWidth / StripeScale, viewWidth = ScreenWidth / DocScale;
  if (bandsWidth >= DocWidth)
    return 0;
  float left = DocX - (bandsWidth - viewWidth) / 2;
  return std::clamp(left, 0.0f, DocWidth - bandsWidth);
}

int THtStripeCache::Update(TObject* Source, int AScreenWidth, int AScreenHeight, int AStripeHeight,
                           float ADocWidth, float ADocHeight, float ADocScale, float DocX, float DocY) {
  bool same =
      !Stripes.empty() && SameGeometry(AScreenWidth, AScreenHeight, AStripeHeight, std::max(0.0f, ADocWidth),
                                       std::max(0.0f, ADocHeight), ADocScale);
  if (!same)
    Init(AScreenWidth, AScreenHeight, AStripeHeight, ADocWidth, ADocHeight, ADocScale);
  int n = StripeCount();
  float band = StripeDocHeight();
  float top = std::max(0.0f, DocY), left = std::max(0.0f, DocX);
  // The rows and columns of the document the view needs.
  float needTop = std::min(top, DocHeight), needBottom = std::min(DocHeight, top + ScreenHeight / DocScale);
  float needLeft = std::min(left, DocWidth), needRight = std::min(DocWidth, left + ScreenWidth / DocScale);
  float newTop = std::floor(needTop / band) * band;

  auto refillAll = [&] {
    StripesDocTop = newTop;
    StripesDocLeft = LeftFor(left);
    FillStripes(Source, 0, n - 1);
    return n;
  };
  if (!same)
    return refillAll();
  TRectF bands{StripesDocLeft, StripesDocTop, StripesDocLeft + StripeWidth / StripeScale,
               StripesDocTop + TotalStripeHeight / StripeScale};
  if (needLeft < bands.Left || needRight > bands.Right)
    return refillAll();
  if (needTop >= bands.Top && needBottom <= bands.Bottom)
    return 0;
  int k = static_cast<int>(std::lround((newTop - StripesDocTop) / band));
  if (k == 0 || std::abs(k) >= n)
    return refillAll();
  ShiftStripes(k);
  StripesDocTop = newTop;
  if (k > 0)
    FillStripes(Source, n - k, n - 1);
  else
    FillStripes(Source, 0, -k - 1);
  return std::abs(k);
}

void THtStripeCache::Reset() {
  ScreenWidth = ScreenHeight = 0;
  DocWidth = DocHeight = 0;
  StripesDocTop = StripesDocLeft = 0;
}

void THtStripeCache::PaintOnCanvas(THtCanvas& ACanvas, float ScreenX, float ScreenY, float DocOffsetX,
                                   float DocOffsetY) {
  TRectF view{DocOffsetX, DocOffsetY, DocOffsetX + ScreenWidth / DocScale,
              DocOffsetY + ScreenHeight / DocScale};
  int first = -1, last = -1;
  for (int i = 0; i < StripeCount(); ++i)
    if (RectIntersects(StripeDocRect(i), view)) {
      if (first < 0)
        first = i;
      last = i;
    }
  if (first < 0)
    return;
  TRectF r = StripeDocRect(first);
  PaintStripe(first, last, ACanvas, ScreenX + (r.Left - DocOffsetX) * DocScale,
              ScreenY + (r.Top - DocOffsetY) * DocScale);
}

} // namespace ht
