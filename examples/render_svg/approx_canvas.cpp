#include "approx_canvas.h"

#include "htcore/document/unicode_classes.h"

#include <algorithm>
#include <cctype>
#include <string>

namespace render_svg {

namespace {

// U+0020 to U+007E, rounded from the free sans-serif face most Linux
// viewers fall back to for "sans-serif".
const short kAscii[95] = {
    320, 400, 460, 840, 640, 950, 780, 280, 390, 390, 500, 840, 320, 360, 320, 340, // ' ' .. '/'
    640, 640, 640, 640, 640, 640, 640, 640, 640, 640, 340, 340, 840, 840, 840, 530, // '0' .. '?'
    1000, 680, 690, 700, 770, 630, 580, 780, 750, 300, 300, 660, 560, 860, 750, 790, // '@' .. 'O'
    600, 790, 700, 630, 610, 730, 680, 990, 690, 610, 690, 390, 340, 390, 840, 500,  // 'P' .. '_'
    500, 610, 640, 550, 640, 620, 350, 640, 630, 280, 280, 580, 280, 970, 630, 610,  // '`' .. 'o'
    640, 640, 410, 520, 390, 630, 590, 820, 590, 590, 530, 640, 340, 640, 840};      // 'p' .. '~'

// A fixed-pitch face by its family name.
bool monospaced(const ht::hstring& Family) {
  std::string f = Family.toUtf8();
  for (char& c : f)
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return f.find("mono") != std::string::npos || f.find("courier") != std::string::npos ||
         f.find("consol") != std::string::npos;
}

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
  bool fixed = monospaced(Font.FName);
  for (int i = first; i < last; ++i) {
    units += fixed && Advance(p[i]) ? 600 : Advance(p[i]);
    blanks += p[i] == u' ';
  }
  bool bold = Font.FStyle & (ht::HtFontStyleBit(ht::hfsBold) | ht::HtFontStyleBit(ht::hfsBlack));
  float em = Font.FHeight * (bold && !fixed ? 1.15f : 1.0f);
  float w = units * em / 1000 + (last - first) * TextStyle.LetterSpacing + blanks * TextStyle.WordSpacing;
  return w * (Scale > 0 ? Scale : 1);
}

} // namespace render_svg
