// Shared checks and raisers of the bitmap units.
#pragma once

#include "htcore/graphics/bitmap_data.h"

#include <string>

namespace ht::detail {

[[noreturn]] inline void BitnessNotSupported() {
  throw EHtBitmapError(std::string_view("Bitness not supported"));
}

[[noreturn]] inline void BadBitmapSize() {
  throw EHtBitmapError(std::string_view("Bitmap size not supported"));
}

// Width and height in 0..kMaxSide, and the array within kMaxBytes.
inline void CheckBitmapSize(int AWidth, int AHeight, int AStride) {
  if (AWidth < 0 || AHeight < 0 || AWidth > THtBitmapData::kMaxSide || AHeight > THtBitmapData::kMaxSide ||
      AStride < 0 || int64_t(AStride) * AHeight > THtBitmapData::kMaxBytes)
    BadBitmapSize();
}

inline uint32_t Grey(uint32_t v) noexcept { return 0xFF000000u | v * 0x010101u; }

// One sample of 1, 2 or 4 bits, the first in the high bits of a byte.
inline uint32_t PackedSample(const uint8_t* row, int x, int bits) noexcept {
  int bit = x * bits;
  return (row[bit >> 3] >> (8 - bits - (bit & 7))) & ((1u << bits) - 1);
}

inline void SetPackedSample(uint8_t* row, int x, int bits, uint32_t v) noexcept {
  int bit = x * bits;
  int shift = 8 - bits - (bit & 7);
  uint8_t mask = static_cast<uint8_t>(((1u << bits) - 1) << shift);
  row[bit >> 3] = static_cast<uint8_t>((row[bit >> 3] & ~mask) | ((v << shift) & mask));
}

} // namespace ht::detail
