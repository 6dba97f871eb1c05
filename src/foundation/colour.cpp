// Colour arithmetic: shades, opacity, HSB.
#include "htcore/foundation/colour.h"

#include <cmath>

namespace ht {

namespace {

inline uint32_t clamp_byte(int v) noexcept { return v < 0 ? 0u : v > 255 ? 255u : static_cast<uint32_t>(v); }

// Rounds a channel computed in [0, 255] (a little outside on float noise).
inline uint8_t to_byte(double v) noexcept {
  if (!(v > 0))
    return 0;
  if (v >= 255)
    return 255;
  return static_cast<uint8_t>(std::lrint(v));
}

} // namespace

uint32_t Lighter(uint32_t Color, int Percent) noexcept {
  uint32_t result = Color & 0xFF000000u;
  for (int shift = 0; shift < 24; shift += 8) {
    int c = static_cast<int>(Color >> shift & 0xFF);
    result |= clamp_byte(c + MulDiv(255 - c, Percent, 100)) << shift;
  }
  return result;
}

uint32_t Darker(uint32_t Color, int Percent) noexcept {
  uint32_t result = Color & 0xFF000000u;
  for (int shift = 0; shift < 24; shift += 8) {
    int c = static_cast<int>(Color >> shift & 0xFF);
    result |= clamp_byte(c - MulDiv(c, Percent, 100)) << shift;
  }
  return result;
}

uint32_t AddOpacity(uint32_t Color, float Opacity) noexcept {
  if (std::fabs(Opacity - 1.0f) <= 1e-4f)
    return Color;
  double alpha = static_cast<double>(Color >> 24) * Opacity;
  return (Color & 0x00FFFFFFu) | static_cast<uint32_t>(to_byte(alpha)) << 24;
}

uint32_t Win2Color(int C) noexcept {
  uint32_t c = C < 0 ? GetSysColor(C & 255) : static_cast<uint32_t>(C);
  return Color2Win(c) | 0xFF000000u;
}

bool OneColor(const uint32_t* p, uint32_t Color, int Count) noexcept {
  if (!p)
    return false;
  for (int i = 0; i < Count; ++i)
    if (p[i] != Color)
      return true;
  return false;
}

THSBColor RGBToHSB(TRGBA C) noexcept {
  int r = C.r, g = C.g, b = C.b;
  int mx = r > g ? (r > b ? r : b) : (g > b ? g : b);
  int mn = r < g ? (r < b ? r : b) : (g < b ? g : b);
  double delta = mx - mn;
  double saturation = mx == 0 ? 0.0 : 255.0 * delta / mx;
  double hue;
  if (saturation == 0)
    hue = -1;
  else if (r == mx)
    hue = (g - b) / delta;
  else if (g == mx)
    hue = (b - r) / delta + 2;
  else
    hue = (r - g) / delta + 4;
  // Intended: the "no hue" -1 is scaled like any sector, so greys read 300.
  hue *= 60;
  if (hue < 0)
    hue += 360;
  return {hue, saturation * 100 / 255, mx * 100.0 / 255};
}

TRGBA HSVToRGB(const THSBColor& C) noexcept {
  double s = C.Saturation / 100, v = C.Brightness / 100;
  s = s > 0 ? (s < 1 ? s : 1) : 0; // NaN lands on 0 too
  v = (v > 0 ? (v < 1 ? v : 1) : 0) * 255;
  if (s == 0) {
    uint8_t grey = to_byte(v);
    return {grey, grey, grey, 255};
  }
  double h = std::isfinite(C.Hue) ? std::fmod(C.Hue, 360.0) : 0.0;
  if (h < 0)
    h += 360;
  h /= 60;
  double sector = std::floor(h);
  double f = h - sector;
  double p = v * (1 - s), q = v * (1 - s * f), t = v * (1 - s * (1 - f));
  double r, g, b;
  switch (static_cast<int>(sector) % 6) {
  case 0:
    r = v, g = t, b = p;
    break;
  case 1:
    r = q, g = v, b = p;
    break;
  case 2:
    r = p, g = v, b = t;
    break;
  case 3:
    r = p, g = q, b = v;
    break;
  case 4:
    r = t, g = p, b = v;
    break;
  default:
    r = v, g = p, b = q;
    break;
  }
  return {to_byte(b), to_byte(g), to_byte(r), 255};
}

uint32_t HSBtoRGBColor(double H, double S, double B) noexcept { return HSVToRGB({H, S, B}).Color(); }

} // namespace ht
