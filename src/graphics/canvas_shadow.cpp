// Box shadows from the primitives: a blurred shape painted into a bitmap of
// the canvas's own class, drawn directly for small boxes and as a cached
// nine-patch for large ones.
#include "htcore/graphics/canvas.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace ht {

namespace {

int Rnd(double v) { return detail::RoundEven(v); }

// A canvas drawing into B for the time of one shape.
struct TBitmapScene {
  std::unique_ptr<THtCanvas> canvas;

  TBitmapScene(const THtCanvas& owner, THtBitmap& B, int w, int h) : canvas(owner.NewCanvas()) {
    if (!canvas)
      return;
    THtCanvasScene scene;
    scene.Init(TRect{0, 0, w, h}, canvas.get());
    scene.Bitmap = &B;
    canvas->BeginScene(scene);
  }
};

} // namespace

void THtCanvas::PaintShadowShape(THtCanvas& c, THtPath* Path, const TRectF& R, const THtShadowProps& Props,
                                 uint32_t Color) {
  THtBrush& brush = c.GetBrush(Color);
  if (Path)
    c.FillPath(brush, *Path);
  else if (Props.MaxBorderRadius > 0)
    c.FillRoundRect(brush, R, Props.MaxBorderRadius, Props.MaxBorderRadius);
  else
    c.FillRectangle(brush, R);
}

void THtCanvas::DrawShadow(THtPath* Path, const THtShadowProps& Props) {
  THtBitmapClass bc = BitmapClass();
  if (!bc.Create)
    return;
  int blurExtent = Rnd(Props.Blur * 3.0);
  TRectF box = Props.R;
  ROffset(box, Props.HOffset, Props.VOffset);
  box = {box.Left - blurExtent, box.Top - blurExtent, box.Right + blurExtent, box.Bottom + blurExtent};
  double area = static_cast<double>(RW(Props.R)) * RH(Props.R);
  if (!(area < 40000)) {
    ShadowNinePatch(Props, box, blurExtent);
    return;
  }
  int w = Rnd(RW(box)), h = Rnd(RH(box));
  if (w <= 0 || h <= 0)
    return;
  std::unique_ptr<THtBitmap> bmp(bc.Create(w, h, true));
  TBitmapScene bs(*this, *bmp, w, h);
  if (!bs.canvas)
    return;
  THtCanvas& c = *bs.canvas;
  c.SaveState();
  c.TranslateTransform(-box.Left + Props.HOffset, -box.Top + Props.VOffset);
  c.SetSmoothingMode(true);
  PaintShadowShape(c, Path, Props.R, Props, Props.Color);
  c.RestoreState();
  TRectF whole{0, 0, static_cast<float>(w), static_cast<float>(h)};
  c.BlurRect(whole, nullptr, Props.Blur / 2);
  // The box itself is cut out unless an opaque background will cover it anyway.
  if (!(Props.HasBackground && (Props.BackgroundColor >> 24) == 255)) {
    c.MatrixTransform(THtMatrixData::CreateTranslation(-box.Left, -box.Top * bmp->VerticalInverted), false);
    c.SetCompositingMode(false);
    PaintShadowShape(c, Path, Props.R, Props, 0);
  }
  c.EndScene();
  DrawBitmap(*bmp, box, whole, 1.0f);
}

void THtCanvas::ShadowNinePatch(const THtShadowProps& Props, const TRectF& Box, int BlurExtent) {
  if (!FShadowCache)
    FShadowCache = std::make_unique<THtShadowCache>();
  THtShadowCache& cache = *FShadowCache;
  double reach = std::max(std::fabs(Props.HOffset), std::fabs(Props.VOffset));
  double sizeD = Rnd(reach) + Rnd(Props.MaxBorderRadius * 2.0) + 4.0 * BlurExtent + 5;
  // Offsets, radii or blurs beyond a few thousand pixels make no visible difference but a huge bitmap.
  if (!(sizeD > 10 && sizeD < 8192))
    return;
  int size = static_cast<int>(sizeD);
  const THtShadowProps& old = cache.Props;
  bool hit = cache.Valid && cache.B && old.Color == Props.Color &&
             SameValue(old.MaxBorderRadius, Props.MaxBorderRadius) && SameValue(old.HOffset, Props.HOffset) &&
             SameValue(old.VOffset, Props.VOffset) && SameValue(old.Blur, Props.Blur);
  if (!hit) {
    cache.Props = Props;
    if (!cache.B)
      cache.B.reset(BitmapClass().Create(size, size, true));
    else
      cache.B->SetSize(size, size);
    TBitmapScene bs(*this, *cache.B, size, size);
    if (!bs.canvas)
      return;
    THtCanvas& c = *bs.canvas;
    float e = static_cast<float>(BlurExtent);
    TRectF shape{e, e, size - e, size - e};
    c.SetSmoothingMode(true);
    PaintShadowShape(c, nullptr, shape, Props, Props.Color);
    c.BlurRect(TRectF{0, 0, static_cast<float>(size), static_cast<float>(size)}, nullptr, Props.Blur / 2);
    if (!Props.HasBackground) {
      ROffset(shape, -Props.HOffset, -Props.VOffset);
      c.SetCompositingMode(false);
      PaintShadowShape(c, nullptr, shape, Props, 0);
    }
    c.EndScene();
    cache.Valid = true;
  }

  int half = Rnd((size - 10) / 2.0);
  int ox = Rnd(Props.HOffset), oy = Rnd(Props.VOffset);
  TRectF box = Box;
  float cw = static_cast<float>(half), ch = static_cast<float>(half);
  bool device = FCurrentMatrix.Flags <= mfScale;
  if (device) {
    box = FCurrentMatrix.TransformRect(Box);
    cw = static_cast<float>(Rnd(half * FCurrentMatrix.XScale()));
    ch = static_cast<float>(Rnd(half * FCurrentMatrix.YScale()));
    SaveState();
    MatrixTransform(THtMatrixData(), false);
  }
  float s = static_cast<float>(size), hf = static_cast<float>(half);
  float sx = std::clamp(static_cast<float>(half - ox), 0.0f, s - 2);
  float sy = std::clamp(static_cast<float>(half - oy), 0.0f, s - 2);
  struct {
    TRectF dest, src;
  } parts[] = {
      {{box.Left, box.Top, box.Left + cw, box.Top + ch}, {0, 0, hf, hf}},
      {{box.Right - cw, box.Top, box.Right, box.Top + ch}, {s - hf, 0, s, hf}},
      {{box.Left, box.Bottom - ch, box.Left + cw, box.Bottom}, {0, s - hf, hf, s}},
      {{box.Right - cw, box.Bottom - ch, box.Right, box.Bottom}, {s - hf, s - hf, s, s}},
      {{box.Left + cw, box.Top, box.Right - cw, box.Top + ch}, {sx, 0, sx + 1, hf}},
      {{box.Left + cw, box.Bottom - ch, box.Right - cw, box.Bottom}, {sx + 1, s - hf, sx + 2, s}},
      {{box.Left, box.Top + ch, box.Left + cw, box.Bottom - ch}, {0, sy, hf, sy + 1}},
      {{box.Right - cw, box.Top + ch, box.Right, box.Bottom - ch}, {s - hf, sy + 1, s, sy + 2}},
  };
  for (auto& p : parts)
    if (DocumentRectInView(p.dest))
      DrawBitmap(*cache.B, p.dest, p.src, 1.0f);
  if (device)
    RestoreState();
}

} // namespace ht
