// Brushes, pens, pages, bitmaps and scenes.
#include "graphics/path_internal.h"
#include "htcore/graphics/canvas.h"

#include <algorithm>
#include <cmath>

namespace ht {

void THtBrush::Create(uint32_t AColor) {
  Kind = hbSolid;
  FColor = AColor;
  FMatrix.Reset();
}

void THtBrush::CreateGradient(const TRectF& R, uint32_t, uint32_t, float AAngle, const TRectF& AFillRect) {
  Kind = hbGradient;
  FMatrix.Reset();
  // The same as adding or subtracting 360 until in range, without a loop for huge angles.
  if (AAngle < 0 || AAngle > 360)
    AAngle =
        std::isfinite(AAngle) ? static_cast<float>(std::fmod(std::fmod(AAngle, 360.0) + 360.0, 360.0)) : 0;
  Angle = AAngle;
  GradientRect = R;
  FillRect = AFillRect;
}

void THtBrush::CreateRadialGradient(float AOffsetX, float AOffsetY, float ACx, float ACy, float AFX,
                                    float AFY, float ARadius, const THtMatrixData& AMatrix) {
  Kind = hbRadial;
  OffsetX = AOffsetX;
  OffsetY = AOffsetY;
  CX = ACx;
  CY = ACy;
  FX = AFX;
  FY = AFY;
  Radius = ARadius;
  SetMatrix(AMatrix);
}

void THtBrush::SetGradientColors(std::span<const float> Positions, std::span<const uint32_t> Colors) {
  GradientPositions.assign(Positions.begin(), Positions.end());
  GradientColors.assign(Colors.begin(), Colors.end());
  if (GradientPositions.empty() || GradientColors.empty())
    return;
  if (!SameValue(GradientPositions.back(), 1.0f)) {
    GradientColors.push_back(GradientColors.back());
    GradientPositions.push_back(1.0f);
  }
  if (GradientPositions.front() != 0.0f) {
    GradientColors.insert(GradientColors.begin(), GradientColors.front());
    GradientPositions.insert(GradientPositions.begin(), 0.0f);
  }
}

THtBrush* THtBrush::Clone() const {
  THtBrush* b = NewInstance();
  switch (Kind) {
  case hbGradient:
    b->CreateGradient(GradientRect, 0, 0, Angle, FillRect);
    break;
  case hbRadial:
    b->CreateRadialGradient(OffsetX, OffsetY, CX, CY, FX, FY, Radius, FMatrix);
    break;
  default:
    b->Create(GetColor());
    break;
  }
  b->FColor = FColor;
  b->Kind = Kind;
  b->OffsetX = OffsetX;
  b->OffsetY = OffsetY;
  b->CX = CX;
  b->CY = CY;
  b->FX = FX;
  b->FY = FY;
  b->Radius = Radius;
  b->FMatrix = FMatrix;
  b->Angle = Angle;
  b->GradientRect = GradientRect;
  b->FillRect = FillRect;
  if (!GradientColors.empty())
    b->SetGradientColors(GradientPositions, GradientColors);
  b->Image = Image;
  return b;
}

TRectF THtBrush::CalcGradientRect() const {
  const TRectF& r = GradientRect;
  double w = RW(r), h = RH(r);
  TPointF c{static_cast<float>(r.Left + w / 2), static_cast<float>(r.Top + h / 2)};
  double diag = std::hypot(w, h);
  double a = std::fmod(Angle + 270.0, 360.0);
  double b = std::atan2(h, w) / detail::kDegToRad;
  if (b < 0)
    b += 360;
  double d;
  if (a <= 90)
    d = std::fabs(a - b);
  else if (a <= 180)
    d = std::fabs(a - (180 - b));
  else if (a <= 270)
    d = std::fabs(a - (b + 180));
  else
    d = std::fabs(a - (360 - b));
  double half = std::fabs(std::cos(d * detail::kDegToRad)) * diag / 2;
  TPointF from = THtPath::GetPositionForAngle(a + 180, c, half, half);
  TPointF to = THtPath::GetPositionForAngle(a, c, half, half);
  return {from.X, from.Y, to.X, to.Y};
}

uint32_t THtBrush::CalcGradientColor(float X, float Y) const {
  size_t n = std::min(GradientColors.size(), GradientPositions.size());
  if (n < 2)
    return GradientColors.empty() ? GetColor() : GradientColors[0];
  const TRectF& r = GradientRect;
  double a = Angle < 0 ? Angle + 360.0 : Angle;
  double dx, dy;
  if (a <= 90)
    dx = X - r.Left, dy = r.Bottom - Y;
  else if (a <= 180)
    dx = X - r.Left, dy = Y - r.Top;
  else if (a <= 270)
    dx = r.Right - X, dy = Y - r.Top;
  else
    dx = r.Right - X, dy = r.Bottom - Y;
  double rot = (a > 180 ? a - 90 : 90 - a) * detail::kDegToRad;
  double p = dx * std::cos(rot) - dy * std::sin(rot);
  double width = std::fabs(r.Right - r.Left);
  double t = width == 0 ? 0 : std::max(std::fabs(p) / width, 0.0);
  if (t <= GradientPositions[0])
    return GradientColors[0];
  if (t >= GradientPositions[n - 1])
    return GradientColors[n - 1];
  size_t i = 0;
  while (i + 2 < n && t >= GradientPositions[i + 1])
    ++i;
  float p0 = GradientPositions[i], p1 = GradientPositions[i + 1];
  if (p0 == p1)
    return GradientColors[i];
  double f = (t - p0) / (p1 - p0);
  uint32_t c0 = GradientColors[i], c1 = GradientColors[i + 1], out = 0;
  for (int shift = 0; shift < 32; shift += 8) {
    double v0 = c0 >> shift & 0xFF, v1 = c1 >> shift & 0xFF;
    long v = std::lround(v0 + (v1 - v0) * f);
    out |= static_cast<uint32_t>(std::clamp(v, 0L, 255L)) << shift;
  }
  return out;
}

void THtPen::Create(uint32_t AColor, float AWidth) {
  FColor = AColor;
  FWidth = AWidth;
  FLineJoin = ljMiter;
  FLineCap = lcFlat;
  FPenStyle = hpsSolid;
  FDashOffset = 0;
  FMode = ldmCopy;
  Dashes.clear();
}

void THtPen::SetDashes(std::span<const float> Lengths) {
  float w = GetWidth();
  if (!(w > 0))
    w = 1;
  Dashes.clear();
  for (float l : Lengths)
    Dashes.push_back(l / w);
}

THtPen* THtPen::Clone() const {
  THtPen* p = NewInstance();
  p->Assign(*this);
  return p;
}

void THtPen::Assign(const THtPen& Source) {
  SetColor(Source.GetColor());
  SetWidth(Source.GetWidth());
  SetPenStyle(Source.GetPenStyle());
  SetLineCap(Source.GetLineCap());
  SetLineJoin(Source.GetLineJoin());
  SetDashOffset(Source.GetDashOffset());
  FMode = Source.FMode;
  if (!Source.Dashes.empty()) {
    std::vector<float> lengths;
    for (float d : Source.Dashes)
      lengths.push_back(d * Source.GetWidth());
    SetDashes(lengths);
  } else {
    Dashes.clear();
  }
}

THtPage::THtPage(float AWidthMM, float AHeightMM, int ANumber, int ADPI)
    : Number(static_cast<float>(ANumber)), WidthMM(AWidthMM), HeightMM(AHeightMM), DPI(ADPI) {
  Orientation = AHeightMM >= AWidthMM ? coPortrait : coLandscape;
  WidthPx = detail::RoundEven(ADPI * AWidthMM / 25.4);
  HeightPx = detail::RoundEven(ADPI * AHeightMM / 25.4);
}

std::vector<uint8_t> THtPage::AsMetaFileBytes() {
  throw Exception(std::string("Metafile is not implemented for class ") + ClassName());
}

TObject* THtPage::AsMetaFile() {
  throw Exception(std::string("Metafile is not implemented for class ") + ClassName());
}

THtBitmap::THtBitmap(int, int, bool) {}

uint32_t* THtBitmap::GetBuffer() { throw Exception(std::string_view("HtBitmap buffer not implemented")); }

THtShadowProps CreateShadowProps(const TRectF& R, float MaxBorderRadius, bool OneBorderRadius, float HOffset,
                                 float VOffset, float Blur, uint32_t Color, uint8_t Opacity, bool Inset) {
  THtShadowProps p;
  p.R = R;
  p.MaxBorderRadius = MaxBorderRadius;
  p.OneBorderRadius = OneBorderRadius;
  p.HOffset = HOffset;
  p.VOffset = VOffset;
  p.Blur = Blur;
  p.Color = Color;
  p.Opacity = Opacity;
  p.Inset = Inset;
  return p;
}

void THtCanvasScene::Init(const TRect& R, THtCanvas* ACanvas) {
  *this = THtCanvasScene();
  Canvas = ACanvas;
  ViewPort = R;
  ClipRect = R;
}

void THtCanvasScene::AddUpdateRect(const TRect& R) {
  if (RW(R) <= 0 || RH(R) <= 0 || !RectIntersects(R, ViewPort))
    return;
  TRect c = RIntersect(R, ViewPort);
  if (RW(c) < 1 || RH(c) < 1)
    return;
  for (const TRect& u : UpdateRects)
    if (RectInside(R, u))
      return;
  UpdateRects.push_back(R);
  if (UpdateRects.size() == 1 && RW(ClipRect) <= 0)
    ClipRect = R;
  ClipRect = {std::min(ClipRect.Left, R.Left), std::min(ClipRect.Top, R.Top),
              std::max(ClipRect.Right, R.Right), std::max(ClipRect.Bottom, R.Bottom)};
}

void THtCanvasScene::ExpandUpdateRects(int ALeft, int ATop, int ABottom, int ARight) {
  for (TRect& u : UpdateRects) {
    u.Left = std::max(ViewPort.Left, u.Left - ALeft);
    u.Top = std::max(ViewPort.Top, u.Top - ATop);
    u.Right = std::min(ViewPort.Right, u.Right + ARight);
    u.Bottom = std::min(ViewPort.Bottom, u.Bottom + ABottom);
  }
}

} // namespace ht
