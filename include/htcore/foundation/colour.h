// Colours as one 32-bit value 0xAARRGGBB (bytes b, g, r, a from the low end;
// alpha 255 is opaque), the byte views of it, and the colour helpers that the
// style and drawing code share: lighter/darker shades, opacity, the platform's
// 0x00BBGGRR order with its system colours, and hue-saturation-brightness.
//
//   uint32_t c = 0xFF336699;
//   ht::TRGBA px = ht::TRGBA::FromColor(c);     // px.r == 0x33, px.a == 0xFF
//   uint32_t hover = ht::Lighter(c, 20);
//   ht::THSBColor hsb = ht::RGBToHSB(px);       // Hue 210, Saturation 66.7, ...
//   uint32_t face = ht::Win2Color(ht::clSystemColor | 15);   // system colour 15, opaque
//
// System colours come from a built-in table of the classic defaults; a host
// with a real theme installs its own lookup with SetThemeColorPrc.
#pragma once

#include <cstdint>

namespace ht {

// The byte view of a colour value. On the little-endian targets the library
// supports, an array of uint32_t pixels may be read as an array of TRGBA.
struct TRGBA {
  uint8_t b, g, r, a;

  static constexpr TRGBA FromColor(uint32_t C) noexcept {
    return {static_cast<uint8_t>(C), static_cast<uint8_t>(C >> 8), static_cast<uint8_t>(C >> 16),
            static_cast<uint8_t>(C >> 24)};
  }
  constexpr uint32_t Color() const noexcept {
    return uint32_t(b) | uint32_t(g) << 8 | uint32_t(r) << 16 | uint32_t(a) << 24;
  }
  friend bool operator==(const TRGBA&, const TRGBA&) = default;
};
static_assert(sizeof(TRGBA) == 4);

struct TRGBTriple {
  uint8_t b, g, r;
  friend bool operator==(const TRGBTriple&, const TRGBTriple&) = default;
};
static_assert(sizeof(TRGBTriple) == 3);

// Hue in degrees [0, 360), Saturation and Brightness in percent [0, 100].
struct THSBColor {
  double Hue, Saturation, Brightness;
};

// The platform's colour numbers: a negative value (high bit set) names a
// system colour by its low byte.
constexpr int clSystemColor = static_cast<int>(0x80000000u);

// a * b / c with a 64-bit product, rounded half away from zero. Like the
// platform call it answers -1 when c is 0 or the quotient does not fit.
inline int MulDiv(int a, int b, int c) noexcept {
  if (c == 0)
    return -1;
  int64_t p = static_cast<int64_t>(a) * b;
  bool negative = (p < 0) != (c < 0);
  uint64_t up = p < 0 ? 0 - static_cast<uint64_t>(p) : static_cast<uint64_t>(p);
  uint64_t uc = c < 0 ? 0 - static_cast<uint64_t>(static_cast<int64_t>(c)) : static_cast<uint64_t>(c);
  uint64_t q = (up + uc / 2) / uc;
  if (negative) {
    if (q > 2147483648u)
      return -1;
    return static_cast<int>(0 - static_cast<int64_t>(q));
  }
  if (q > 2147483647u)
    return -1;
  return static_cast<int>(q);
}

// Each of r, g, b moves Percent of the way to 255 (Lighter) or to 0 (Darker);
// alpha is kept. Negative or excessive percentages clamp to the byte range.
uint32_t Lighter(uint32_t Color, int Percent) noexcept;
uint32_t Darker(uint32_t Color, int Percent) noexcept;

// Multiplies alpha by Opacity (rounded, clamped to 0..255). An opacity within
// 1e-4 of 1.0 returns the colour untouched, so opaque replays cost nothing.
uint32_t AddOpacity(uint32_t Color, float Opacity) noexcept;

// To and from the platform's 0x00BBGGRR order. Win2Color reads a negative
// value as a system colour and always answers an opaque colour.
constexpr uint32_t Color2Win(uint32_t Color) noexcept {
  return (Color & 0xFF) << 16 | (Color & 0xFF00) | (Color >> 16 & 0xFF);
}
uint32_t Win2Color(int C) noexcept;

// System colour Index (0..30, the classic indices from scroll bar to menu bar)
// in platform order 0x00BBGGRR; 0 for other indices. When a host has set a
// theme procedure, the answer is that procedure's colour in platform order.
uint32_t GetSysColor(int Index) noexcept;

// A host's lookup of system colours: Index to 0xAARRGGBB.
using TThemeColorProc = uint32_t (*)(int Index);

// Installs Proc for all system colour lookups (nullptr restores the built-in
// table) and returns the procedure it replaces. Safe to call from any thread.
// Proc must not throw, nor call GetSysColor or ThemeColor (that would recurse);
// DefaultThemeColor serves its fallbacks.
TThemeColorProc SetThemeColorPrc(TThemeColorProc Proc) noexcept;

// System colour Index as 0xAARRGGBB, through the theme procedure if one is set.
uint32_t ThemeColor(int Index) noexcept;
// The built-in classic default as 0xAARRGGBB (opaque), whatever is installed.
uint32_t DefaultThemeColor(int Index) noexcept;

// True at the first of the Count values at p that differs from Color; false
// when all equal it, or p is null, or Count <= 0. So false means "one colour".
bool OneColor(const uint32_t* p, uint32_t Color, int Count) noexcept;

// Hexcone model. A colour without saturation (every grey, black included)
// gets the hue 300: the "no hue" sector -1 goes through the same *60, +360
// step as any other. Alpha is ignored.
THSBColor RGBToHSB(TRGBA C) noexcept;
// The inverse, opaque. Hue wraps modulo 360; Saturation and Brightness clamp
// to [0, 100].
TRGBA HSVToRGB(const THSBColor& C) noexcept;
uint32_t HSBtoRGBColor(double H, double S, double B) noexcept;

} // namespace ht
