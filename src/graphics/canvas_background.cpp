// Images on the canvas: replaying recorded pictures and laying out CSS
// background images (size, position, repeat) as calls of DrawImage.
#include "htcore/graphics/canvas.h"

#include <algorithm>
#include <cmath>

namespace ht {

namespace {

// No background is cut into more tiles than this, whatever its size.
constexpr double kMaxTiles = 1 << 20;

int Pixels(TMeasure m) { return m.GetPixels(); }

// One axis of a background position: centre, the far edge (Far) or a length
// (set, without the near edge flag Near) moves the start, or, on an axis that
// shifts, sets the negative shift of the tiling's origin.
void Position(const TMeasure& m, TMeasureFlag Far, TMeasureFlag Near, bool Shift, float box, float size,
              float& start, float& shift) {
  if (m.Flags.Contains(mfCenter)) {
    if (Shift)
      shift = -(box - start - size) / 2;
    else
      start = start + (box - start - size) / 2;
  } else if (m.Flags.Contains(Far)) {
    if (Shift)
      shift = -(box - size);
    else
      start = box - size;
  } else if (m.Flags.Contains(mfNotAuto) && !m.Flags.Contains(Near)) {
    if (Shift)
      shift = static_cast<float>(-Pixels(m));
    else
      start += static_cast<float>(Pixels(m));
  }
}

} // namespace

void THtCanvas::DrawImage(THtImage& Image, const TRectF& R, float Opacity) {
  if (!Image.HasRecording() || !Image.GetLoaded())
    return;
  SaveState();
  IntersectClip(R);
  TranslateTransform(R.Left, R.Top);
  if (Image.Width != 0 && detail::RoundEven(RW(R)) != Image.Width) {
    float k = RW(R) / static_cast<float>(Image.Width);
    ScaleTransform(k, k);
  }
  Image.PlayRecording(*this, Opacity);
  RestoreState();
}

void THtCanvas::DoFillImage(THtImage& Image, float Opacity, float, const TRectF& R, TPointF Origin,
                            bool RepeatY, bool RepeatX, float H, float W) {
  if (!(W > 0) || !(H > 0))
    return;
  double nx = RepeatX ? std::ceil(RW(R) / W) : 1, ny = RepeatY ? std::ceil(RH(R) / H) : 1;
  if (!(nx >= 1 && ny >= 1 && nx * ny <= kMaxTiles))
    return;
  double ox = Origin.X - std::trunc(Origin.X / W) * W, oy = Origin.Y - std::trunc(Origin.Y / H) * H;
  if (ox < 0)
    ox += W;
  if (oy < 0)
    oy += H;
  for (int j = 0; j < static_cast<int>(ny); ++j)
    for (int i = 0; i < static_cast<int>(nx); ++i) {
      float x = static_cast<float>(i * W + R.Left - ox), y = static_cast<float>(j * H + R.Top - oy);
      DrawImage(Image, TRectF{x, y, x + W, y + H}, Opacity);
    }
}

void THtCanvas::FillImage(const TRectF& R, THtImage& Image, float OriginDeltaX, float OriginDeltaY,
                          const THtBackgroundFill& Background, float Opacity, float Radius) {
  if (Image.Width < 1 || Image.Height < 1)
    return;
  float ratio = static_cast<float>(Image.Width) / static_cast<float>(Image.Height);
  TRectF P = R;
  float boxW = RW(P), boxH = RH(P);
  float left = P.Left, top = P.Top;
  float W = static_cast<float>(Image.Width), H = static_cast<float>(Image.Height);
  TBackgroundRepeat rep = Background.Repeat;
  bool cover = Background.SizeKind == bsCover, contain = Background.SizeKind == bsContain;
  if (cover || contain) {
    if (boxW >= boxH * ratio) {
      if (cover)
        W = boxW, H = boxW / ratio;
      else
        H = boxH, W = boxH * ratio;
    } else {
      if (cover)
        H = boxH, W = boxH * ratio;
      else
        W = boxW, H = boxW / ratio;
    }
  } else {
    if (!Background.Width.GetAuto())
      W = static_cast<float>(Pixels(Background.Width));
    if (!Background.Height.GetAuto())
      H = static_cast<float>(Pixels(Background.Height));
  }

  // Position: the repeating axes shift the tiling's origin, the others move the start.
  float px = 0, py = 0;
  bool shiftX = rep == brRepeat || rep == brRepeatX, shiftY = rep == brRepeat || rep == brRepeatX;
  Position(Background.PositionX, mfRight, mfLeft, shiftX, boxW, W, left, px);
  Position(Background.PositionY, mfBottom, mfTop, shiftY, boxH, H, top, py);
  if (rep == brRepeatX)
    top -= py;

  if (cover || contain) {
    DrawImage(Image, TRectF{left, top, left + W, top + H}, Opacity);
    return;
  }
  if (rep != brNoRepeat) {
    TRectF area{left, top, P.Right, P.Bottom};
    DoFillImage(Image, Opacity, Radius, area, TPointF{OriginDeltaX + px, OriginDeltaY + py},
                rep == brRepeat || rep == brRepeatY, rep == brRepeat || rep == brRepeatX, H, W);
    return;
  }
  // The y delta enters with the other sign here; pages rely on it.
  DrawImage(Image,
            TRectF{left + OriginDeltaX, top - OriginDeltaY, left + W + OriginDeltaX, top + H - OriginDeltaY},
            Opacity);
}

} // namespace ht
