// THtBitmapData storage: sizes, taking over foreign rows, pixel access and
// the operations that keep the depth (flip, invert, channel swap).
#include "graphics/bitmap_internal.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <vector>

namespace ht {

using namespace detail;

namespace {

bool KnownBits(int bits) noexcept {
  return bits == 1 || bits == 2 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32 ||
         bits == 48;
}

} // namespace

int THtBitmapData::CalcStride(int AWidth, int ABits) {
  HT_ASSERT(ABits >= 1 && ABits <= 48);
  if (AWidth < 0)
    BadBitmapSize();
  int64_t bytes = (int64_t(AWidth) * ABits + 7) / 8;
  bytes = (bytes + 3) & ~int64_t(3);
  if (bytes > INT_MAX)
    BadBitmapSize();
  return static_cast<int>(bytes);
}

int THtBitmapData::StoredBits() const noexcept {
  if (FBits == 48 && FStride < 6 * int64_t(FWidth))
    return 32;
  return FBits;
}

THtBitmapData THtBitmapData::Clone() const {
  THtBitmapData c = *this;
  if (FData)
    c.FData = std::make_shared<TBytes>(*FData);
  return c;
}

void THtBitmapData::Create(int AWidth, int AHeight, int ABits) {
  if (!KnownBits(ABits))
    BitnessNotSupported();
  int stride = CalcStride(AWidth, ABits);
  CheckBitmapSize(AWidth, AHeight, stride);
  FWidth = AWidth;
  FHeight = AHeight;
  FBits = ABits;
  FStride = stride;
  FData = std::make_shared<TBytes>(size_t(stride) * AHeight);
  IsClear = true;
}

void THtBitmapData::Replace(TBytes AData, int AStride, int ABits) {
  FData = std::make_shared<TBytes>(std::move(AData));
  FStride = AStride;
  FBits = ABits;
}

void THtBitmapData::SetData(std::shared_ptr<TBytes> AData, int AWidth, int AHeight, int ABits) {
  HT_ASSERT(AData != nullptr);
  if (!KnownBits(ABits))
    BitnessNotSupported();
  if (AWidth <= 0 || AHeight <= 0)
    BadBitmapSize();
  int64_t length = static_cast<int64_t>(AData->size());
  int64_t srcStride = length / AHeight;
  // More than 4 bytes a pixel: padding no width can use, so the rows are packed.
  if (4 * int64_t(AWidth) < srcStride)
    srcStride = (int64_t(AWidth) * ABits + 7) / 8;
  int bits = std::min(32, ABits);
  int stride = CalcStride(AWidth, bits);
  CheckBitmapSize(AWidth, AHeight, stride);
  HT_ASSERT(srcStride >= 1 && length >= AHeight * srcStride);

  int64_t size = int64_t(stride) * AHeight;
  if (stride == srcStride && length == size) {
    FData = std::move(AData);
  } else {
    auto rows = std::make_shared<TBytes>(static_cast<size_t>(size));
    const uint8_t* src = AData->data();
    uint8_t* dst = rows->data();
    for (int y = 0; y < AHeight; ++y, src += srcStride, dst += stride) {
      if (bits == ABits) {
        std::memcpy(dst, src, static_cast<size_t>(std::min<int64_t>(srcStride, stride)));
      } else { // 48 bits: the high byte of each little-endian sample
        int n = static_cast<int>(std::min<int64_t>(AWidth, srcStride / 6));
        for (int x = 0; x < n; ++x)
          for (int k = 0; k < 3; ++k)
            dst[4 * x + k] = src[6 * x + 2 * k + 1];
      }
    }
    FData = std::move(rows);
  }
  FWidth = AWidth;
  FHeight = AHeight;
  FStride = stride;
  FBits = ABits;
  IsClear = false;
}

void THtBitmapData::Clear(uint32_t AColor) {
  if (!FData)
    return;
  TBytes& d = *FData;
  switch (FBits) {
  case 1:
    std::fill(d.begin(), d.end(), AColor != 0 ? 255 : 0);
    break;
  case 8:
    std::fill(d.begin(), d.end(), static_cast<uint8_t>(AColor));
    break;
  case 32:
    for (int y = 0; y < FHeight; ++y)
      std::fill_n(Scanline32(y), FWidth, AColor);
    break;
  default:
    return;
  }
  IsClear = true;
}

uint8_t* THtBitmapData::GetScanLine(int Index) {
  HT_ASSERT(FData && Index >= 0 && Index < FHeight);
  return FData->data() + size_t(Index) * FStride;
}

const uint8_t* THtBitmapData::GetScanLine(int Index) const {
  HT_ASSERT(FData && Index >= 0 && Index < FHeight);
  return FData->data() + size_t(Index) * FStride;
}

uint32_t THtBitmapData::GetPixel(int X, int Y) const {
  HT_ASSERT(X >= 0 && X < FWidth);
  const uint8_t* row = GetScanLine(Y);
  switch (StoredBits()) {
  case 1:
  case 2:
  case 4:
    return PackedSample(row, X, FBits);
  case 8:
    return row[X];
  case 16:
    return uint32_t(row[2 * X]) | uint32_t(row[2 * X + 1]) << 8;
  case 24:
    return uint32_t(row[3 * X]) | uint32_t(row[3 * X + 1]) << 8 | uint32_t(row[3 * X + 2]) << 16;
  case 32: {
    uint32_t v;
    std::memcpy(&v, row + 4 * X, 4);
    return v;
  }
  default: // 48: the high bytes of the three samples
    return uint32_t(row[6 * X + 1]) | uint32_t(row[6 * X + 3]) << 8 | uint32_t(row[6 * X + 5]) << 16;
  }
}

void THtBitmapData::SetPixel(int X, int Y, uint32_t Value) {
  HT_ASSERT(X >= 0 && X < FWidth);
  uint8_t* row = GetScanLine(Y);
  switch (StoredBits()) {
  case 1:
  case 2:
  case 4:
    SetPackedSample(row, X, FBits, Value);
    break;
  case 8:
    row[X] = static_cast<uint8_t>(Value);
    break;
  case 16:
    row[2 * X] = static_cast<uint8_t>(Value);
    row[2 * X + 1] = static_cast<uint8_t>(Value >> 8);
    break;
  case 24:
    for (int k = 0; k < 3; ++k)
      row[3 * X + k] = static_cast<uint8_t>(Value >> 8 * k);
    break;
  case 32:
    std::memcpy(row + 4 * X, &Value, 4);
    break;
  default:
    for (int k = 0; k < 3; ++k)
      row[6 * X + 2 * k] = row[6 * X + 2 * k + 1] = static_cast<uint8_t>(Value >> 8 * k);
  }
  IsClear = false;
}

void THtBitmapData::SetWidth(int Value) {
  if (Value != FWidth)
    Create(Value, FHeight, FBits ? FBits : 32);
}

void THtBitmapData::SetHeight(int Value) {
  if (Value != FHeight)
    Create(FWidth, Value, FBits ? FBits : 32);
}

void THtBitmapData::InvertComponents() {
  if (FData)
    for (uint8_t& b : *FData)
      b = static_cast<uint8_t>(~b);
}

void THtBitmapData::BGRtoRGB() {
  int bits = StoredBits();
  if (bits < 24 || Empty())
    return;
  for (int y = 0; y < FHeight; ++y) {
    uint8_t* p = GetScanLine(y);
    if (bits == 32) {
      uint32_t* q = reinterpret_cast<uint32_t*>(p);
      for (int x = 0; x < FWidth; ++x) // written so the compiler vectorises it
        q[x] = (q[x] & 0xFF00FF00u) | (q[x] >> 16 & 0xFF) | (q[x] & 0xFF) << 16;
    } else if (bits == 24) {
      for (int x = 0; x < FWidth; ++x, p += 3)
        std::swap(p[0], p[2]);
    } else {
      for (int x = 0; x < FWidth; ++x, p += 6) {
        std::swap(p[0], p[4]);
        std::swap(p[1], p[5]);
      }
    }
  }
}

void THtBitmapData::FlipVertical() {
  if (Empty() || !FData)
    return;
  std::vector<uint8_t> tmp(static_cast<size_t>(FStride));
  for (int a = 0, b = FHeight - 1; a < b; ++a, --b) {
    uint8_t* ra = GetScanLine(a);
    uint8_t* rb = GetScanLine(b);
    std::memcpy(tmp.data(), ra, tmp.size());
    std::memcpy(ra, rb, tmp.size());
    std::memcpy(rb, tmp.data(), tmp.size());
  }
}

bool THtBitmapData::IsSingleColor() const {
  if (FBits != 32)
    throw EHtBitmapError(std::string_view("Only 32 bit image is supported"));
  if (Empty())
    return true;
  uint32_t first = GetPixel(0, 0);
  for (int y = 0; y < FHeight; ++y) {
    const uint32_t* row = reinterpret_cast<const uint32_t*>(GetScanLine(y));
    for (int x = 0; x < FWidth; ++x)
      if (row[x] != first)
        return false;
  }
  return true;
}

} // namespace ht
