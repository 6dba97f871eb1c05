#include "approx_canvas.h"

#include "htcore/document/unicode_classes.h"

#include <algorithm>

namespace render_svg {

namespace {

// U+0020 to U+007E, rounded from a common sans-serif face.
const short kAscii[95] = {
    280, 280, 350, 560, 560, 890, 670, 190, 330, 330, 390, 580, 280, 330, 280, 280, // ' ' .. '/'
    560, 560, 560, 560, 560, 560, 560, 560, 560, 560, 280, 280, 580, 580, 580, 560, // '0' .. '?'
    1010, 670, 670, 720, 720, 670, 610, 780, 720, 280, 500, 670, 560, 830, 720, 780, // '@' .. 'O'
    670, 780, 720, 670, 610, 720, 670, 940, 670, 670, 610, 280, 280, 280, 470, 560,  // 'P' .. '_'
    330, 560, 560, 500, 560, 560, 280, 560, 560, 220, 220, 500, 220, 830, 560, 560,  // '`' .. 'o'
    560, 560, 330, 500, 280, 560, 500, 720, 500, 500, 500, 330, 260, 330, 580};      // 'p' .. '~'

} // namespace

int TApproxCanvas::Advance(char16_t c) {
  if (c >= 0x20 && c <= 0x7E)
    return kAscii[c - 0x20];
  if (c < 0x20 || (c >= 0xDC00 && c <= 0xDFFF) || c == 0x00AD)
    return 0; // controls, the second half of a pair and soft hyphens take no room
  if (ht::IsCJK(c) || (c >= 0xAC00 && c <= 0xD7A3) || (c >= 0xFF00 && c <= 0xFF60))
    return 1000;
  if (c == 0x00A0)
    return 280;
  return 580;
}

float TApproxCanvas::MeasureString(const ht::hstring& s, ht::THtFont& Font, const ht::THtTextStyle& TextStyle,
                                   float Scale, int AFirstChar, int ALength) {
  int size = static_cast<int>(s.size());
  int first = std::clamp(AFirstChar, 1, size + 1) - 1;
  int last = ALength < 0 ? size : std::min(size, first + ALength);
  const char16_t* p = s.c_str();
  long units = 0;
  int blanks = 0;
  for (int i = first; i < last; ++i) {
    units += Advance(p[i]);
    blanks += p[i] == u' ';
  }
  auto* approx = dynamic_cast<TApproxFont*>(&Font);
  float em = Font.FHeight * (approx && approx->Bold ? 1.07f : 1.0f);
  float w = units * em / 1000 + (last - first) * TextStyle.LetterSpacing + blanks * TextStyle.WordSpacing;
  return w * (Scale > 0 ? Scale : 1);
}

ht::THtFontClass TApproxCanvas::FontClass() const {
  return {[]() -> ht::THtFont* { return new TApproxFont; }};
}

} // namespace render_svg
