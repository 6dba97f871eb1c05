// Depth conversions of THtBitmapData, the colour space hook and CMYK.
#include "graphics/bitmap_internal.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace ht {

using namespace detail;

namespace {

uint8_t Unit(float v) noexcept {
  if (!(v > 0))
    return 0;
  return v >= 1 ? 255 : static_cast<uint8_t>(std::lround(v * 255));
}

uint32_t Expand5(uint32_t v) noexcept { return v << 3 | v >> 2; }

// Corner colours of the CMYK cube, indexed by C << 3 | M << 2 | Y << 1 | K.
constexpr double kCMYKCorners[16][3] = {
    {1, 1, 1},
    {0.1373, 0.1216, 0.1255},
    {1, 0.949, 0},
    {0.1098, 0.102, 0},
    {0.9255, 0, 0.549},
    {0.1412, 0, 0},
    {0.9294, 0.1098, 0.1412},
    {0.1333, 0, 0},
    {0, 0.6784, 0.9373},
    {0, 0.0588, 0.1412},
    {0, 0.651, 0.3137},
    {0, 0.0745, 0},
    {0.1804, 0.1922, 0.5725},
    {0, 0, 0.0078},
    {0.2118, 0.2119, 0.2235},
    {0, 0, 0},
};

} // namespace

uint32_t THtColorSpace::ConvertFloat(float a, float b, float c, float d) {
  return uint32_t(Unit(d)) << 24 | uint32_t(Unit(a)) << 16 | uint32_t(Unit(b)) << 8 | Unit(c);
}

uint32_t CMYKtoARGB(uint32_t C) noexcept {
  double v[4] = {(C & 0xFF) / 255.0, (C >> 8 & 0xFF) / 255.0, (C >> 16 & 0xFF) / 255.0, (C >> 24) / 255.0};
  double rgb[3] = {0, 0, 0};
  for (int corner = 0; corner < 16; ++corner) {
    double w = 1;
    for (int ch = 0; ch < 4; ++ch) // bit 3 is cyan ... bit 0 black
      w *= (corner >> (3 - ch) & 1) ? v[ch] : 1 - v[ch];
    for (int k = 0; k < 3; ++k)
      rgb[k] += w * kCMYKCorners[corner][k];
  }
  uint32_t out = 0xFF000000u;
  for (int k = 0; k < 3; ++k)
    out |= static_cast<uint32_t>(std::min(rgb[k], 1.0) * 255) << (16 - 8 * k);
  return out;
}

void THtBitmapData::Convertto32(THtColorSpace* AColorSpace) {
  bool convert = AColorSpace && !AColorSpace->IsIdentity();
  int stored = StoredBits();
  if (FBits == 32 || stored == 32) {
    if (FBits == 48) { // reduced rows carry no alpha
      for (int y = 0; y < FHeight; ++y) {
        uint32_t* row = Scanline32(y);
        for (int x = 0; x < FWidth; ++x)
          row[x] |= 0xFF000000u;
      }
      FBits = 32;
    }
    if (convert)
      for (int y = 0; y < FHeight; ++y) {
        uint32_t* row = Scanline32(y);
        for (int x = 0; x < FWidth; ++x)
          row[x] = AColorSpace->ConvertColor(row[x]);
      }
    return;
  }
  int stride = CalcStride(FWidth, 32);
  CheckBitmapSize(FWidth, FHeight, stride);
  TBytes out(size_t(stride) * FHeight);
  bool done = FBits == 8 && convert && FData &&
              AColorSpace->Convert8to32(Data(), out.data(), FWidth, FHeight, FStride);
  if (!done) {
    for (int y = 0; y < FHeight; ++y) {
      const uint8_t* src = GetScanLine(y);
      uint32_t* dst = reinterpret_cast<uint32_t*>(out.data() + size_t(y) * stride);
      switch (FBits) {
      case 1:
        for (int x = 0; x < FWidth; ++x)
          dst[x] = PackedSample(src, x, 1) ? 0xFFFFFFFFu : 0xFF000000u;
        break;
      case 2:
        for (int x = 0; x < FWidth; ++x)
          dst[x] = Grey(PackedSample(src, x, 2) * 85);
        break;
      case 4:
        for (int x = 0; x < FWidth; ++x)
          dst[x] = Grey(PackedSample(src, x, 4) * 17);
        break;
      case 8:
        for (int x = 0; x < FWidth; ++x)
          dst[x] = Grey(src[x]);
        break;
      case 16:
        for (int x = 0; x < FWidth; ++x) {
          uint32_t w = uint32_t(src[2 * x]) | uint32_t(src[2 * x + 1]) << 8;
          dst[x] = 0xFF000000u | Expand5(w >> 10 & 31) << 16 | Expand5(w >> 5 & 31) << 8 | Expand5(w & 31);
        }
        break;
      case 24:
        for (int x = 0; x < FWidth; ++x, src += 3)
          dst[x] = 0xFF000000u | uint32_t(src[2]) << 16 | uint32_t(src[1]) << 8 | src[0];
        break;
      default: // 48 bits in full
        for (int x = 0; x < FWidth; ++x, src += 6)
          dst[x] = 0xFF000000u | uint32_t(src[5]) << 16 | uint32_t(src[3]) << 8 | src[1];
      }
      if (convert)
        for (int x = 0; x < FWidth; ++x)
          dst[x] = AColorSpace->ConvertColor(dst[x]);
    }
  }
  Replace(std::move(out), stride, 32);
  IsClear = false;
}

void THtBitmapData::Convertto8() {
  if (FBits != 32)
    BitnessNotSupported();
  int stride = CalcStride(FWidth, 8);
  TBytes out(size_t(stride) * FHeight);
  for (int y = 0; y < FHeight; ++y) {
    const uint32_t* src = Scanline32(y);
    uint8_t* dst = out.data() + size_t(y) * stride;
    for (int x = 0; x < FWidth; ++x) {
      uint32_t p = src[x];
      dst[x] = static_cast<uint8_t>(
          ((p >> 16 & 0xFF) * 299 + (p >> 8 & 0xFF) * 587 + (p & 0xFF) * 114 + 500) / 1000);
    }
  }
  Replace(std::move(out), stride, 8);
}

namespace {

void Widen(THtBitmapData& B, int bits, uint32_t scale) {
  if (B.FBits != bits)
    detail::BitnessNotSupported();
  if (B.Empty()) {
    B.Create(B.FWidth, B.FHeight, 8);
    return;
  }
  int stride = THtBitmapData::CalcStride(B.FWidth, 8);
  TBytes out(size_t(stride) * B.FHeight);
  for (int y = 0; y < B.FHeight; ++y) {
    const uint8_t* src = B.GetScanLine(y);
    uint8_t* dst = out.data() + size_t(y) * stride;
    for (int x = 0; x < B.FWidth; ++x)
      dst[x] = static_cast<uint8_t>(PackedSample(src, x, bits) * scale);
  }
  THtBitmapData w;
  w.SetData(std::move(out), B.FWidth, B.FHeight, 8);
  B = w;
}

} // namespace

void THtBitmapData::Convert2to8() { Widen(*this, 2, 85); }

void THtBitmapData::Convert4to8() { Widen(*this, 4, 17); }

void THtBitmapData::CMYKtoRGBA() {
  if (FBits != 32)
    BitnessNotSupported();
  // Runs of one colour are common in print images: convert each run once.
  uint32_t lastIn = 0, lastOut = CMYKtoARGB(0);
  for (int y = 0; y < FHeight; ++y) {
    uint32_t* row = Scanline32(y);
    for (int x = 0; x < FWidth; ++x) {
      if (row[x] != lastIn) {
        lastIn = row[x];
        lastOut = CMYKtoARGB(lastIn);
      }
      row[x] = lastOut;
    }
  }
}

} // namespace ht
