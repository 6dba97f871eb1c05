// Alpha masks and bitwise combination of THtBitmapData.
#include "graphics/bitmap_internal.h"

#include <algorithm>
#include <string>

namespace ht {

using namespace detail;

namespace {

[[noreturn]] void MaskBits(int bits) { throw EHtBitmapError("Mask bits " + std::to_string(bits)); }

// The mask at the image's size, 2 and 4-bit masks widened to bytes first.
void FitMask(THtBitmapData& AMask, int w, int h) {
  if (AMask.FBits == 2)
    AMask.Convert2to8();
  else if (AMask.FBits == 4)
    AMask.Convert4to8();
  if (AMask.FWidth != w || AMask.FHeight != h)
    AMask.Resize(w, h);
}

uint32_t MaskAlpha(const THtBitmapData& M, const uint8_t* row, int x) {
  switch (M.FBits) {
  case 1:
    return PackedSample(row, x, 1) ? 255 : 0;
  case 8:
    return row[x];
  default:
    return row[4 * x]; // the low byte of a 32-bit mask pixel
  }
}

uint8_t Op(uint8_t d, uint8_t s, THtPixelOperation op) noexcept {
  switch (op) {
  case poOr:
    return d | s;
  case poAnd:
    return d & s;
  case poXor:
    return d ^ s;
  case poNXor:
    return static_cast<uint8_t>(~(d ^ s));
  default:
    return s;
  }
}

// Eight bits of a 1-bit row starting at bit `at` (may be negative); bits
// outside the row read as 0.
uint8_t Bits8(const uint8_t* row, int rowBytes, int at) noexcept {
  auto byte = [&](int i) -> uint32_t { return i >= 0 && i < rowBytes ? row[i] : 0; };
  int i = at >> 3, sh = at & 7; // arithmetic shift: floor for negative positions
  uint32_t two = byte(i) << 8 | byte(i + 1);
  return static_cast<uint8_t>(two >> (8 - sh));
}

} // namespace

void THtBitmapData::ApplyAlpha(const THtBitmapData& AMask) {
  int w = std::min(FWidth, AMask.FWidth), h = std::min(FHeight, AMask.FHeight);
  for (int y = 0; y < h; ++y) {
    uint32_t* px = Scanline32(y);
    const uint8_t* m = AMask.GetScanLine(y);
    if (AMask.FBits == 8) {
      for (int x = 0; x < w; ++x) // vectorised by the compiler
        px[x] = (px[x] & 0x00FFFFFFu) | uint32_t(m[x]) << 24;
    } else {
      for (int x = 0; x < w; ++x)
        px[x] = (px[x] & 0x00FFFFFFu) | MaskAlpha(AMask, m, x) << 24;
    }
  }
  IsClear = false;
}

void THtBitmapData::ApplyMask(THtBitmapData& AMask) {
  if (AMask.FBits != 1 && AMask.FBits != 2 && AMask.FBits != 4 && AMask.FBits != 8 && AMask.FBits != 32)
    MaskBits(AMask.FBits);
  FitMask(AMask, FWidth, FHeight);
  if (FBits != 32)
    Convertto32();
  ApplyAlpha(AMask);
}

void THtBitmapData::Convertto32Mask(THtBitmapData& AMask) {
  if (FBits != 24) {
    ApplyMask(AMask);
    return;
  }
  if (AMask.FBits != 1 && AMask.FBits != 8)
    MaskBits(AMask.FBits);
  FitMask(AMask, FWidth, FHeight);
  int stride = CalcStride(FWidth, 32);
  CheckBitmapSize(FWidth, FHeight, stride);
  TBytes out(size_t(stride) * FHeight);
  for (int y = 0; y < FHeight; ++y) {
    const uint8_t* src = GetScanLine(y);
    const uint8_t* m = AMask.FHeight > y ? AMask.GetScanLine(y) : nullptr;
    uint32_t* dst = reinterpret_cast<uint32_t*>(out.data() + size_t(y) * stride);
    for (int x = 0; x < FWidth; ++x, src += 3) {
      uint32_t a = m && x < AMask.FWidth ? MaskAlpha(AMask, m, x) : 0;
      dst[x] = a << 24 | uint32_t(src[2]) << 16 | uint32_t(src[1]) << 8 | src[0];
    }
  }
  Replace(std::move(out), stride, 32);
  IsClear = false;
}

void THtBitmapData::ApplyColorMask(uint32_t AColor) {
  if (FBits != 32)
    Convertto32();
  uint32_t key = AColor & 0x00FFFFFFu;
  for (int y = 0; y < FHeight; ++y) {
    uint32_t* px = Scanline32(y);
    for (int x = 0; x < FWidth; ++x)
      if ((px[x] & 0x00FFFFFFu) == key)
        px[x] = key;
  }
}

void THtBitmapData::ApplyColorRangeMask(uint8_t R1, uint8_t R2, uint8_t G1, uint8_t G2, uint8_t B1,
                                        uint8_t B2) {
  if (FBits != 32)
    Convertto32();
  for (int y = 0; y < FHeight; ++y) {
    uint32_t* px = Scanline32(y);
    for (int x = 0; x < FWidth; ++x) {
      uint32_t p = px[x];
      uint8_t r = p >> 16 & 0xFF, g = p >> 8 & 0xFF, b = p & 0xFF;
      if (r >= R1 && r <= R2 && g >= G1 && g <= G2 && b >= B1 && b <= B2)
        px[x] = p & 0x00FFFFFFu;
    }
  }
}

void THtBitmapData::Combine(const THtBitmapData& ASource, int X, int Y, THtPixelOperation AOperation) {
  HT_ASSERT(FBits == ASource.FBits);
  if ((FBits != 1 && FBits != 24) || Empty() || ASource.Empty())
    return;
  int x0 = std::max(0, X), y0 = std::max(0, Y);
  int64_t x1 = std::min<int64_t>(FWidth, int64_t(X) + ASource.FWidth);
  int64_t y1 = std::min<int64_t>(FHeight, int64_t(Y) + ASource.FHeight);
  if (x0 >= x1 || y0 >= y1)
    return;
  for (int y = y0; y < y1; ++y) {
    uint8_t* d = GetScanLine(y);
    const uint8_t* s = ASource.GetScanLine(static_cast<int>(y - int64_t(Y)));
    if (FBits == 24) {
      d += 3 * x0;
      s += 3 * (x0 - int64_t(X));
      for (int64_t i = 0, n = 3 * (x1 - x0); i < n; ++i)
        d[i] = Op(d[i], s[i], AOperation);
      continue;
    }
    // Whole destination bytes; the masks keep the bits outside [x0, x1) at the row ends.
    int first = x0 >> 3, last = static_cast<int>((x1 - 1) >> 3);
    for (int k = first; k <= last; ++k) {
      int lo = std::max(k * 8, x0), hi = static_cast<int>(std::min<int64_t>(k * 8 + 8, x1));
      uint8_t mask = static_cast<uint8_t>((0xFF >> (lo - k * 8)) & (0xFF << (k * 8 + 8 - hi)));
      uint8_t sv = Bits8(s, ASource.FStride, static_cast<int>(k * 8 - int64_t(X)));
      d[k] = static_cast<uint8_t>((d[k] & ~mask) | (Op(d[k], sv, AOperation) & mask));
    }
  }
  IsClear = false;
}

THtBitmapData THtBitmapData::ConverttoMask() const {
  HT_ASSERT(FBits == 32);
  THtBitmapData m(FWidth, FHeight, 8);
  for (int y = 0; y < FHeight; ++y) {
    const uint32_t* px = reinterpret_cast<const uint32_t*>(GetScanLine(y));
    uint8_t* d = m.GetScanLine(y);
    for (int x = 0; x < FWidth; ++x)
      d[x] = static_cast<uint8_t>(px[x] >> 24);
  }
  m.IsClear = false;
  return m;
}

} // namespace ht
