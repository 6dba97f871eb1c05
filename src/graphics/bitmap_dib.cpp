// Reading Windows device-independent bitmaps into 32-bit THtBitmapData.
// Every size in a header is checked against the bytes that are really there
// before anything is allocated, so a short file cannot ask for a huge array.
#include "graphics/bitmap_internal.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <vector>

namespace ht {

using namespace detail;

namespace {

[[noreturn]] void BadHeader() { throw EHtBitmapError(std::string_view("Invalid bitmap header")); }
[[noreturn]] void ShortData() { throw EHtBitmapError(std::string_view("Bitmap data too short")); }

uint32_t LE32(const uint8_t* p) noexcept {
  return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}
uint32_t LE16(const uint8_t* p) noexcept { return uint32_t(p[0]) | uint32_t(p[1]) << 8; }

void ReadExact(TStream& ST, void* p, int64_t n) {
  if (n > 0 && ST.Read(p, n) != n)
    ShortData();
}

// One colour field of a pixel, scaled to 0..255.
struct TField {
  uint32_t mask = 0;
  int shift = 0;
  uint32_t max = 0;

  explicit TField(uint32_t m = 0) : mask(m) {
    if (m) {
      shift = std::countr_zero(m);
      max = m >> shift;
    }
  }
  uint32_t Get(uint32_t px) const noexcept {
    if (!mask)
      return 0;
    uint32_t v = (px & mask) >> shift;
    return max == 255 ? v : static_cast<uint32_t>((uint64_t(v) * 255 + max / 2) / max);
  }
};

} // namespace

void THtBitmapData::LoadfromDIB(TStream& ST, std::span<const uint8_t> AData, int& ABits, bool AFlip) {
  int64_t start = ST.GetPosition();
  int64_t offBits = -1; // where a file's rows start, relative to its first byte
  uint8_t h[124];
  ReadExact(ST, h, 2);
  if (h[0] == 'B' && h[1] == 'M') { // a whole .bmp file: its 14-byte header first
    ReadExact(ST, h + 2, 12);
    offBits = LE32(h + 10);
    ReadExact(ST, h, 4);
  } else {
    ReadExact(ST, h + 2, 2);
  }
  uint32_t headerSize = LE32(h);
  bool core = headerSize == 12;
  if (!core && (headerSize < 40 || headerSize > 124))
    BadHeader();
  ReadExact(ST, h + 4, headerSize - 4);

  int64_t width, height;
  int bits;
  uint32_t compression = 0, colorsUsed = 0;
  if (core) {
    width = LE16(h + 4);
    height = LE16(h + 6);
    bits = static_cast<int>(LE16(h + 10));
  } else {
    width = static_cast<int32_t>(LE32(h + 4));
    height = static_cast<int32_t>(LE32(h + 8));
    bits = static_cast<int>(LE16(h + 14));
    compression = LE32(h + 16);
    colorsUsed = LE32(h + 32);
  }
  bool topDown = height < 0;
  height = height < 0 ? -height : height;
  if (width <= 0 || height <= 0 || width > kMaxSide || height > kMaxSide)
    BadBitmapSize();
  if (bits != 1 && bits != 4 && bits != 8 && bits != 16 && bits != 24 && bits != 32)
    BitnessNotSupported();
  bool fields = compression == 3 || compression == 6;
  if (compression != 0 && !(fields && (bits == 16 || bits == 32)))
    throw EHtBitmapError(std::string_view("Bitmap compression not supported"));

  TField red(bits == 16 ? 0x7C00 : 0xFF0000), green(bits == 16 ? 0x3E0 : 0xFF00),
      blue(bits == 16 ? 0x1F : 0xFF);
  TField alpha(bits == 32 && !fields ? 0xFF000000u : 0);
  if (fields) { // red, green, blue (and alpha) masks, in the header or after it
    uint8_t m[16] = {};
    if (headerSize >= 52)
      std::memcpy(m, h + 40, headerSize >= 56 ? 16 : 12);
    else
      ReadExact(ST, m, compression == 6 ? 16 : 12);
    red = TField(LE32(m)), green = TField(LE32(m + 4)), blue = TField(LE32(m + 8));
    alpha = TField(LE32(m + 12));
  }

  std::vector<uint32_t> palette;
  if (bits <= 8 || colorsUsed > 0) {
    uint32_t n = colorsUsed ? colorsUsed : 1u << bits;
    if (n > 256)
      BadHeader();
    int entry = core ? 3 : 4;
    std::vector<uint8_t> table(size_t(n) * entry);
    ReadExact(ST, table.data(), static_cast<int64_t>(table.size()));
    if (bits <= 8)
      for (uint32_t i = 0; i < n; ++i) {
        const uint8_t* e = &table[size_t(i) * entry];
        palette.push_back(0xFF000000u | uint32_t(e[2]) << 16 | uint32_t(e[1]) << 8 | e[0]);
      }
  }

  int w = static_cast<int>(width), hgt = static_cast<int>(height);
  int srcStride = CalcStride(w, bits);
  int stride = CalcStride(w, 32);
  CheckBitmapSize(w, hgt, stride);
  // The last row may lack its padding.
  int64_t need = int64_t(srcStride) * (hgt - 1) + (int64_t(w) * bits + 7) / 8;
  std::vector<uint8_t> fromStream;
  const uint8_t* rows;
  if (!AData.empty()) {
    if (int64_t(AData.size()) < need)
      ShortData();
    rows = AData.data();
  } else {
    if (offBits >= 0) {
      if (offBits < ST.GetPosition() - start)
        BadHeader();
      ST.SetPosition(start + offBits);
    }
    int64_t avail = ST.GetSize() - ST.GetPosition();
    if (avail < need)
      ShortData();
    fromStream.resize(static_cast<size_t>(std::min<int64_t>(avail, int64_t(srcStride) * hgt)));
    ReadExact(ST, fromStream.data(), static_cast<int64_t>(fromStream.size()));
    rows = fromStream.data();
  }

  TBytes out(size_t(stride) * hgt);
  bool anyAlpha = false;
  for (int y = 0; y < hgt; ++y) {
    const uint8_t* s = rows + size_t(topDown ? y : hgt - 1 - y) * srcStride;
    int outRow = AFlip ? hgt - 1 - y : y;
    uint32_t* d = reinterpret_cast<uint32_t*>(out.data() + size_t(outRow) * stride);
    for (int x = 0; x < w; ++x) {
      uint32_t px;
      switch (bits) {
      case 1:
      case 4:
      case 8: {
        uint32_t i = bits == 8 ? s[x] : PackedSample(s, x, bits);
        px = i < palette.size() ? palette[i] : 0xFF000000u;
        break;
      }
      case 24:
        px = 0xFF000000u | uint32_t(s[3 * x + 2]) << 16 | uint32_t(s[3 * x + 1]) << 8 | s[3 * x];
        break;
      default: {
        uint32_t v = bits == 16 ? LE16(s + 2 * x) : LE32(s + 4 * x);
        uint32_t a = alpha.mask ? alpha.Get(v) : 255;
        anyAlpha = anyAlpha || (alpha.mask && a != 0);
        px = a << 24 | red.Get(v) << 16 | green.Get(v) << 8 | blue.Get(v);
      }
      }
      d[x] = px;
    }
  }
  // A zero alpha channel in every pixel means the file has none.
  if (alpha.mask && !anyAlpha) {
    uint32_t* p = reinterpret_cast<uint32_t*>(out.data());
    for (size_t i = 0, n = out.size() / 4; i < n; ++i)
      p[i] |= 0xFF000000u;
  }
  FWidth = w;
  FHeight = hgt;
  Replace(std::move(out), stride, 32);
  IsClear = false;
  ABits = bits;
}

} // namespace ht
