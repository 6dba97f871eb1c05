// Painting what the layout placed: backgrounds, borders per side, list
// markers, image boxes and text, in document order, through plain canvas calls.
#include "page_layout.h"

#include "htcore/style/element_style.h"

#include <algorithm>

using namespace ht;

namespace render_svg {

namespace {

bool visible(uint32_t Color) { return (Color >> 24) != 0; }

// One side of a border: Strip is the side's rectangle, (x1, y1)-(x2, y2) its middle line.
void paint_side(THtCanvas& C, TLineStyle Style, uint32_t Color, float W, const TRectF& Strip, float x1, float y1,
                float x2, float y2) {
  if (W <= 0 || !visible(Color) || Style == lsNone || Style == lsHidden)
    return;
  if (Style == lsDashed || Style == lsDotted) {
    THtPen& pen = C.GetPen(Color, W);
    float dash = Style == lsDashed ? 3 * W : W;
    float lengths[] = {dash, dash};
    pen.SetDashes(lengths);
    pen.SetPenStyle(Style == lsDashed ? hpsDash : hpsDot);
    C.DrawLine(pen, x1, y1, x2, y2);
    return;
  }
  THtBrush& brush = C.GetBrush(Color);
  if (Style == lsDouble && W >= 3) {
    // Two lines of a third each, the gap between them.
    bool horizontal = x1 != x2;
    float t = W / 3;
    TRectF a = Strip, b = Strip;
    if (horizontal)
      a.Bottom = a.Top + t, b.Top = b.Bottom - t;
    else
      a.Right = a.Left + t, b.Left = b.Right - t;
    C.FillRectangle(brush, a);
    C.FillRectangle(brush, b);
    return;
  }
  C.FillRectangle(brush, Strip);
}

} // namespace

void TPageLayout::paint_box(THtCanvas& C, const TPaintItem& Item) const {
  TStyledHTMLNode* e = Item.Node;
  TBaseElementStyle& s = *e->Style();
  const TRectF& r = Item.R;
  bool page_background = e->FTag == u"html" || e->FTag == u"body";
  uint32_t bg = s.BackgroundColor();
  if (visible(bg) && !(page_background && bg == FBackground))
    C.FillRectangle(C.GetBrush(bg), r);
  float t = 0, rt = 0, b = 0, l = 0;
  float* widths[] = {&t, &rt, &b, &l};
  for (int side = 0; side < 4; ++side) {
    TLineStyle ls = s.BorderSideStyle(side);
    if (ls != lsNone && ls != lsHidden)
      *widths[side] = side == 0 ? s.BorderTopWidthPx()
                      : side == 1 ? s.BorderRightWidthPx()
                      : side == 2 ? s.BorderBottomWidthPx()
                                  : s.BorderLeftWidthPx();
  }
  paint_side(C, s.BorderTopStyle(), s.BorderTopColor(), t, {r.Left, r.Top, r.Right, r.Top + t}, r.Left,
             r.Top + t / 2, r.Right, r.Top + t / 2);
  paint_side(C, s.BorderRightStyle(), s.BorderRightColor(), rt, {r.Right - rt, r.Top, r.Right, r.Bottom},
             r.Right - rt / 2, r.Top, r.Right - rt / 2, r.Bottom);
  paint_side(C, s.BorderBottomStyle(), s.BorderBottomColor(), b, {r.Left, r.Bottom - b, r.Right, r.Bottom},
             r.Left, r.Bottom - b / 2, r.Right, r.Bottom - b / 2);
  paint_side(C, s.BorderLeftStyle(), s.BorderLeftColor(), l, {r.Left, r.Top, r.Left + l, r.Bottom},
             r.Left + l / 2, r.Top, r.Left + l / 2, r.Bottom);
}

void TPageLayout::Paint(THtCanvas& C) const {
  if (visible(FBackground))
    C.FillRectangle(C.GetBrush(FBackground), 0, 0, FWidth, FHeight);
  std::unique_ptr<THtFont> font(C.FontClass().Create());
  THtTextStyle style;
  for (const TPaintItem& it : FItems) {
    switch (it.Kind) {
    case TPaintItem::piBox:
      paint_box(C, it);
      break;
    case TPaintItem::piImage:
      // Pictures are not decoded here: a framed placeholder of the image's size.
      C.FillRectangle(C.GetBrush(0xFFEEEEEE), it.R);
      C.DrawRectangle(C.GetPen(0xFF999999, 1), it.R.Left + 0.5f, it.R.Top + 0.5f, RW(it.R) - 1, RH(it.R) - 1);
      break;
    case TPaintItem::piBullet: {
      const TTextLook& l = FLooks[static_cast<size_t>(it.Look)];
      TListStyleType type = it.Node->Style()->ListStyleType();
      if (type == lstSquare)
        C.FillRectangle(C.GetBrush(l.Color), it.R);
      else if (type == lstCircle)
        C.DrawEllipse(C.GetPen(l.Color, 1), it.R.Left, it.R.Top, RW(it.R), RH(it.R));
      else
        C.FillEllipse(C.GetBrush(l.Color), it.R.Left, it.R.Top, RW(it.R), RH(it.R));
      break;
    }
    case TPaintItem::piText: {
      const TTextLook& l = FLooks[static_cast<size_t>(it.Look)];
      SetupFont(*font, l);
      SetupTextStyle(style, l);
      C.DrawString(it.Text, it.R, *font, style, it.First, it.Length);
      float baseline = it.R.Top + l.Size * 0.8f, thick = std::max(1.f, l.Size / 14);
      if (l.Underline)
        C.FillRectangle(C.GetBrush(l.Color), it.R.Left, baseline + l.Size * 0.08f, RW(it.R), thick);
      if (l.Strike)
        C.FillRectangle(C.GetBrush(l.Color), it.R.Left, baseline - l.Size * 0.3f, RW(it.R), thick);
      break;
    }
    }
  }
}

} // namespace render_svg
