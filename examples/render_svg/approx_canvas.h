// TApproxCanvas: a canvas that only measures text, from a fixed table of
// advance widths (a sans-serif face at 1000 units per em, scaled by the font
// size, wider for bold fonts; 600 units a character for monospaced families). No font files are needed, so layout comes
// out the same on every machine; real fonts differ by a few per cent.
//
//   TApproxCanvas c;
//   ht::THtFont f;
//   f.FHeight = 16;
//   float w = c.MeasureString(u"Hello"_hs, f, ht::HtDefaultTextStyle, 1, 1, -1);
#pragma once

#include "htcore/graphics/canvas.h"

namespace render_svg {

class TApproxCanvas : public ht::THtCanvas {
public:
  // The advance of one unit at 1000 units per em.
  static int Advance(char16_t c);
  // Letter and word spacing of the style are added per unit and per blank.
  float MeasureString(const ht::hstring& s, ht::THtFont& Font, const ht::THtTextStyle& TextStyle, float Scale,
                      int AFirstChar, int ALength) override;
  // Drawing is not its business.
  void DrawPath(ht::THtPen&, ht::THtPath&) override {}
  void FillPath(ht::THtBrush&, ht::THtPath&) override {}
  void DrawString(const ht::hstring&, const ht::TRectF&, ht::THtFont&, const ht::THtTextStyle&, int,
                  int) override {}
};

} // namespace render_svg
