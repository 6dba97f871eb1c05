// The canvas base: scenes, states and matrices, the shape operations built on
// DrawPath and FillPath, scratch pens and brushes, fonts and paging.
#include "htcore/graphics/canvas.h"

#include "graphics/path_internal.h"
#include "htcore/foundation/stream_types.h"
#include "htcore/foundation/text_utils.h"

#include <algorithm>
#include <cmath>

namespace ht {

THtCanvasClass HtDefaultCanvasClass = nullptr;
THtCanvasClass HtAltDefaultCanvasClass = nullptr;
THtCanvasClass HtUIDefaultCanvasClass = nullptr;

std::recursive_mutex& HtCanvasLock() {
  static std::recursive_mutex lock;
  return lock;
}

THtCanvas::THtCanvas() { Scene.Scale = 1; }

THtCanvas::~THtCanvas() = default;

THtBrushClass THtCanvas::BrushClass() const {
  return {[](uint32_t c) { return new THtBrush(c); }};
}
THtPenClass THtCanvas::PenClass() const {
  return {[](uint32_t c, float w) { return new THtPen(c, w); }};
}
THtFontClass THtCanvas::FontClass() const {
  return {[] { return new THtFont; }};
}
THtImageClass THtCanvas::ImageClass() const {
  return {[] { return new THtImage; }};
}
THtPathClass THtCanvas::PathClass() const {
  return {[](bool clip) -> THtPath* { return new THtCustomPath(clip); }};
}
THtPageClass THtCanvas::PageClass() const {
  return {[](float w, float h, int n, int dpi) { return new THtPage(w, h, n, dpi); }};
}
THtBitmapClass THtCanvas::BitmapClass() const { return {nullptr}; }

TStringList& THtCanvas::FontDictionary() {
  if (!FFontDictionary) {
    FFontDictionary = std::make_unique<TStringList>();
    TStringList names;
    GetFonts(names);
    FFontDictionary->SetSorted(true);
    for (int i = 0; i < names.Count(); ++i)
      FFontDictionary->Add(LowerCase(names.Strings(i)));
  }
  return *FFontDictionary;
}

bool THtCanvas::HasFont(const hstring& FontName) {
  TStringList& fonts = FontDictionary();
  hstring name = LowerCase(FontName);
  int i;
  if (fonts.Find(name, i))
    return true;
  // Style words that a family name may carry, each cut once if it ends the name.
  static const char16_t* const kStyleWords[] = {u" narrow", u" black", u" bold",       u" extrabold",
                                                u" medium", u" light", u" extralight", u" regular"};
  std::u16string n(name.c_str(), name.size());
  for (const char16_t* w : kStyleWords) {
    std::u16string_view word(w);
    if (n.size() >= word.size() && n.compare(n.size() - word.size(), word.size(), word) == 0)
      n.resize(n.size() - word.size());
  }
  return fonts.Find(hstring(n.data(), n.size()), i);
}

void THtCanvas::BeginScene(const THtCanvasScene& AScene) {
  Scene = AScene;
  FStateStackIndex = -1;
  FCurrentMatrix.Reset();
  FReverseMatrix.Reset();
  InitialMatrix.Reset();
  RootMatrix.Reset();
  RootMatrix.Translate(Scene.ViewPort.Left + Scene.OffsetX, Scene.ViewPort.Top + Scene.OffsetY);
  if (Scene.Scale != 1.0f)
    RootMatrix.Scale(Scene.Scale, Scene.Scale);
  int dx = -static_cast<int>(MathRound(Scene.ScrollX)), dy = -static_cast<int>(MathRound(Scene.ScrollY));
  if (dx != 0 || dy != 0)
    for (TRect& u : Scene.UpdateRects) {
      if (dx > 0)
        u.Right = std::min(Scene.ViewPort.Right, u.Right + dx);
      else
        u.Left = std::max(0, u.Left + dx);
      if (dy > 0)
        u.Bottom = std::min(Scene.ViewPort.Bottom, u.Bottom + dy);
      else
        u.Top = std::max(0, u.Top + dy);
    }
}

void THtCanvas::SaveState() {
  // An earlier unbalanced restore left the index below -1; saving starts over.
  if (FStateStackIndex < -1)
    FStateStackIndex = -1;
  ++FStateStackIndex;
  if (static_cast<size_t>(FStateStackIndex) >= FStateStack.size())
    FStateStack.resize(static_cast<size_t>(FStateStackIndex) + 1);
  FStateStack[static_cast<size_t>(FStateStackIndex)] = FCurrentMatrix;
}

void THtCanvas::RestoreState() {
  if (FStateStackIndex >= 0) {
    FCurrentMatrix = FStateStack[static_cast<size_t>(FStateStackIndex)];
    FReverseMatrix = FCurrentMatrix;
    FReverseMatrix.Inverse();
  }
  --FStateStackIndex;
}

void THtCanvas::DrawLine(THtPen& Pen, float x1, float y1, float x2, float y2) {
  auto p = NewPath();
  p->AddLine(x1, y1, x2, y2);
  DrawPath(Pen, *p);
}

void THtCanvas::DrawArc(THtPen& Pen, float X, float Y, float w, float h, float StartAngle, float SweepAngle) {
  auto p = NewPath();
  p->AddArc(X, Y, w, h, StartAngle, SweepAngle, 1.0f);
  DrawPath(Pen, *p);
}

void THtCanvas::FillEllipse(THtBrush& Brush, float X, float Y, float w, float h) {
  auto p = NewPath();
  p->AddArc(X, Y, w, h, 0, 359.9f, 1.0f);
  p->CloseFigure();
  FillPath(Brush, *p);
}

void THtCanvas::DrawEllipse(THtPen& Pen, float X, float Y, float w, float h) {
  auto p = NewPath();
  p->AddArc(X, Y, w, h, 0, 360, 1.0f);
  p->CloseFigure();
  DrawPath(Pen, *p);
}

void THtCanvas::FillRectangle(THtBrush& Brush, float X, float Y, float w, float h) {
  auto p = NewPath();
  p->AddRectangle(X, Y, w, h);
  FillPath(Brush, *p);
}

void THtCanvas::DrawRectangle(THtPen& Pen, float X, float Y, float w, float h) {
  auto p = NewPath();
  p->AddRectangle(X, Y, w, h);
  DrawPath(Pen, *p);
}

void THtCanvas::RoundRect(THtPen& Pen, const TRectF& R, float RadiusX, float RadiusY) {
  SetSmoothingMode(true);
  auto p = NewPath();
  p->AddRoundRect(R, RadiusX, RadiusY);
  DrawPath(Pen, *p);
}

void THtCanvas::FillRoundRect(THtBrush& Brush, const TRectF& R, float RadiusX, float RadiusY) {
  if (RadiusX == 0 && RadiusY == 0) {
    FillRectangle(Brush, R);
    return;
  }
  auto p = NewPath();
  p->AddRoundRect(R, RadiusX, RadiusY);
  FillPath(Brush, *p);
}

void THtCanvas::ScaleTransform(float XScale, float YScale) {
  if (XScale != 1.0f || YScale != 1.0f)
    MatrixTransform(THtMatrixData::CreateScaled(XScale, YScale), true);
}

void THtCanvas::TranslateTransform(float XOffset, float YOffset) {
  if (XOffset != 0 || YOffset != 0)
    MatrixTransform(THtMatrixData::CreateTranslation(XOffset, YOffset), true);
}

void THtCanvas::RotateTransform(float Angle) { MatrixTransform(THtMatrixData::CreateRotation(Angle), true); }

void THtCanvas::MatrixTransform(const THtMatrixData& M, bool Add) {
  if (Add)
    FCurrentMatrix.Multiply(M);
  else
    FCurrentMatrix = M;
  FReverseMatrix = FCurrentMatrix;
  FReverseMatrix.Inverse();
}

void THtCanvas::DrawTextShadow(const hstring& s, const TRectF& R, const THtTextStyle& TextStyle,
                               THtFont& Font, float HOffset, float VOffset, float, uint32_t ShadowColor) {
  THtTextStyle shadow = TextStyle;
  shadow.Color = ShadowColor;
  TRectF moved = R;
  ROffset(moved, HOffset, VOffset);
  DrawString(s, moved, Font, shadow, 1, -1);
  DrawString(s, R, Font, TextStyle, 1, -1);
}

THtPen& THtCanvas::GetPen(uint32_t AColor, float AWidth) {
  if (!FPen)
    FPen.reset(PenClass().Create(AColor, AWidth));
  FPen->SetColor(AColor);
  FPen->SetWidth(AWidth);
  FPen->SetLineJoin(ljMiter);
  FPen->SetLineCap(lcFlat);
  FPen->SetPenStyle(hpsSolid);
  FPen->Dashes.clear();
  return *FPen;
}

THtBrush& THtCanvas::GetBrush(uint32_t AColor) {
  if (!FSolidBrush)
    FSolidBrush.reset(BrushClass().Create(AColor));
  // Back to a solid brush as well: a caller may have left a gradient on it.
  FSolidBrush->Create(AColor);
  return *FSolidBrush;
}

void THtCanvas::SetImageColorMatrix(const THtColorMatrix& CM) {
  if (!FImageColorMatrix)
    FImageColorMatrix = std::make_unique<THtColorMatrix>();
  *FImageColorMatrix = CM;
}

void THtCanvas::BeginPaging(float APageWidthMM, float APageHeightMM, int ADPI, TCSSOrientation AOrientation) {
  FPageWidthMM = APageWidthMM;
  FPageHeightMM = APageHeightMM;
  FDPI = ADPI;
  FPageWidthPixels = static_cast<float>(detail::RoundEven(ADPI * APageWidthMM / 25.4));
  FPageHeightPixels = static_cast<float>(detail::RoundEven(ADPI * APageHeightMM / 25.4));
  FPaged = true;
  fPages.clear();
  NewPage(AOrientation);
}

void THtCanvas::NewPage(TCSSOrientation Orientation) {
  int number = static_cast<int>(fPages.size()) + 1;
  fPages.emplace_back(PageClass().Create(FPageWidthMM, FPageHeightMM, number, FDPI));
  fPages.back()->Orientation = Orientation;
}

void THtCanvas::SetPageWidthMM(float Value) {
  FPageWidthMM = Value;
  FPageWidthPixels = static_cast<float>(detail::RoundEven(FDPI * Value / 25.4));
}

void THtCanvas::SetPageHeightMM(float Value) {
  FPageHeightMM = Value;
  FPageHeightPixels = static_cast<float>(detail::RoundEven(FDPI * Value / 25.4));
}

void THtCanvas::SavetoPDF(const hstring& FileName) {
  TFileStream f(FileName, fmCreate | fmShareExclusive);
  SavetoPDFStream(f);
}

void THtCanvas::Clear(uint32_t AColor) {
  SetCompositingMode(false);
  THtMatrixData inv = FCurrentMatrix;
  inv.Inverse();
  auto fill = [&](const TRect& r) { FillRectangle(GetBrush(AColor), inv.TransformRect(R2F(r))); };
  if (Scene.UpdateRects.empty())
    fill(Scene.ClipRect);
  else
    for (const TRect& r : Scene.UpdateRects)
      fill(r);
  SetCompositingMode(true);
}

bool THtCanvas::CanvasRectInView(const TRect& R) const { return CanvasRectInView(R2F(R)); }

bool THtCanvas::CanvasRectInView(const TRectF& R) const {
  if (!RectIntersects(R, Scene.ClipRect))
    return false;
  if (Scene.UpdateRects.empty())
    return true;
  for (const TRect& u : Scene.UpdateRects)
    if (RectIntersects(R, u))
      return true;
  return false;
}

bool THtCanvas::DocumentRectInView(const TRectF& R) const {
  return CanvasRectInView(FCurrentMatrix.TransformRect(R));
}

bool THtCanvas::DocumentRectInViewPort(const TRectF& R) const {
  (void)FCurrentMatrix.TransformRect(R);
  return RectIntersects(R, Scene.ViewPort);
}

void THtCanvas::SnaptoPixels(TRectF& R) const {
  TRectF t = FCurrentMatrix.TransformRect(R);
  t = {std::nearbyint(t.Left), std::nearbyint(t.Top), std::nearbyint(t.Right), std::nearbyint(t.Bottom)};
  R = FReverseMatrix.TransformRect(t);
}

void THtCustomPath::DrawPath(THtCanvas& Canvas, THtPen& Pen) const {
  TPointF cur{0, 0}, start{0, 0};
  for (int i = 0; i < FCount; ++i) {
    const THtPathRec& r = FRecs[static_cast<size_t>(i)];
    switch (r.Kind) {
    case prMoveTo:
      cur = start = r.Point;
      break;
    case prLineTo:
      Canvas.DrawLine(Pen, cur.X, cur.Y, r.Point.X, r.Point.Y);
      cur = r.Point;
      break;
    case prCloseFigure:
      Canvas.DrawLine(Pen, cur.X, cur.Y, start.X, start.Y);
      cur = start;
      break;
    case prArc:
      Canvas.DrawArc(Pen, r.Points[0].X, r.Points[0].Y, r.Points[1].X, r.Points[1].Y, r.Points[2].X,
                     r.Points[2].Y);
      cur = detail::ArcEnd(r);
      break;
    case prEllipse:
      Canvas.DrawEllipse(Pen, r.Points[0].X, r.Points[0].Y, r.Points[1].X, r.Points[1].Y);
      break;
    default:
      if (!r.Points.empty())
        cur = r.Points.back();
      break;
    }
  }
}

} // namespace ht
