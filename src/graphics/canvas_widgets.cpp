// The default form widgets and the wavy underline, drawn with the primitives
// in logical pixels (the DPI argument is not applied).
#include "htcore/graphics/canvas.h"

#include <algorithm>
#include <memory>

namespace ht {

float HtWavyLineStep = 3;

namespace {

THtPen& WidgetPen(THtCanvas& c, bool HOver, bool Disabled) {
  THtPen& pen = c.GetPen(0xFF000000, 1);
  if (Disabled)
    pen.SetColor(0xFFAAAAAA);
  else if (HOver)
    pen.SetColor(0xFF000050);
  return pen;
}

} // namespace

void THtCanvas::DrawCheck(const TRectF& R, float, bool Checked, bool, bool HOver, bool Disabled) {
  THtPen& pen = WidgetPen(*this, HOver, Disabled);
  DrawRectangle(pen, R.Left + 1, R.Top + 1, RW(R) - 2, RH(R) - 2);
  if (Checked) {
    pen.SetWidth(2);
    DrawLine(pen, R.Left + 4, R.Bottom - 8, R.Left + 6, R.Bottom - 5);
    DrawLine(pen, R.Left + 6, R.Bottom - 5, R.Left + 11, R.Top + 3);
  }
}

void THtCanvas::DrawRadio(const TRectF& R, float, bool Checked, bool, bool HOver, bool Disabled) {
  THtPen& pen = WidgetPen(*this, HOver, Disabled);
  THtBrush& brush = GetBrush(0xFF000000);
  DrawEllipse(pen, R.Left, R.Top, RW(R) - 3, RH(R) - 3);
  if (Checked) {
    pen.SetWidth(3);
    FillEllipse(brush, R.Left + 3, R.Top + 3, RW(R) - 9, RH(R) - 9);
  }
}

void THtCanvas::DrawButton(const TRectF& R, float, bool, bool Active, bool HOver, bool) {
  THtPen& pen = GetPen(Active ? 0xFF505090 : 0xFF909090, 1);
  uint32_t top = 0xFFEEEEEE, bottom = 0xFFDDDDDD;
  if (Active)
    top = 0xFFE3F9FF, bottom = 0xFFA5D0E5;
  else if (HOver)
    top = 0xFFE3F9FF, bottom = 0xFFBADFF0;
  // Two tones, top half and bottom half: a vertical gradient with a hard stop.
  std::unique_ptr<THtBrush> brush(BrushClass().Create(top));
  brush->CreateGradient(R, top, bottom, 180, R);
  const float positions[] = {0, 0.5f, 0.5f, 1.0f};
  const uint32_t colors[] = {top, top, bottom, bottom};
  brush->SetGradientColors(positions, colors);
  FillRoundRect(*brush, R, 5, 5);
  RoundRect(pen, R, 5, 5);
}

void THtCanvas::DrawWavyLine(float x1, float y1, float x2, float, THtPen& Pen) {
  float step = HtWavyLineStep;
  // A line too long for its step (or a step of nothing) would be millions of segments.
  if (!(step > 0) || !((x2 - x1) / step < 1e6f))
    return;
  auto p = NewPath();
  float x = x1;
  p->MoveTo(x, y1 + 1);
  while (x < x2) {
    p->LineTo(std::min(x2, x + step), y1 - 1);
    x += 2 * step;
    if (x < x2)
      p->LineTo(std::min(x2, x), y1 + 1);
  }
  DrawPath(Pen, *p);
}

} // namespace ht
