// Nearest-neighbour resizing and cropping of THtBitmapData.
#include "graphics/bitmap_internal.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace ht {

using namespace detail;

void THtBitmapData::Resize(int NewWidth, int NewHeight) {
  if (NewWidth == FWidth && NewHeight == FHeight)
    return;
  int bits = StoredBits();
  if (bits != 1 && bits != 4 && bits != 8 && bits != 32)
    return;
  int stride = CalcStride(NewWidth, bits);
  CheckBitmapSize(NewWidth, NewHeight, stride);
  TBytes out(size_t(stride) * NewHeight);
  if (!Empty()) {
    std::vector<int> sx(static_cast<size_t>(NewWidth));
    for (int x = 0; x < NewWidth; ++x)
      sx[x] = static_cast<int>(int64_t(x) * FWidth / NewWidth);
    for (int y = 0; y < NewHeight; ++y) {
      const uint8_t* src = GetScanLine(static_cast<int>(int64_t(y) * FHeight / NewHeight));
      uint8_t* dst = out.data() + size_t(y) * stride;
      switch (bits) {
      case 1:
      case 4:
        for (int x = 0; x < NewWidth; ++x)
          SetPackedSample(dst, x, bits, PackedSample(src, sx[x], bits));
        break;
      case 8:
        for (int x = 0; x < NewWidth; ++x)
          dst[x] = src[sx[x]];
        break;
      default: {
        const uint32_t* s = reinterpret_cast<const uint32_t*>(src);
        uint32_t* d = reinterpret_cast<uint32_t*>(dst);
        for (int x = 0; x < NewWidth; ++x)
          d[x] = s[sx[x]];
      }
      }
    }
  }
  FWidth = NewWidth;
  FHeight = NewHeight;
  Replace(std::move(out), stride, FBits);
}

void THtBitmapData::Crop(const TRect& CropRect) {
  int left = std::max(0, CropRect.Left), top = std::max(0, CropRect.Top);
  int right = std::min(FWidth, CropRect.Right), bottom = std::min(FHeight, CropRect.Bottom);
  int w = std::max(0, right - left), h = std::max(0, bottom - top);
  if (w == 0 || h == 0)
    w = h = 0;
  int bits = StoredBits();
  int stride = CalcStride(w, bits ? bits : 32);
  TBytes out(size_t(stride) * h);
  for (int y = 0; y < h; ++y) {
    const uint8_t* src = GetScanLine(top + y);
    uint8_t* dst = out.data() + size_t(y) * stride;
    if (bits >= 8)
      std::memcpy(dst, src + size_t(left) * (bits / 8), size_t(w) * (bits / 8));
    else
      for (int x = 0; x < w; ++x)
        SetPackedSample(dst, x, bits, PackedSample(src, left + x, bits));
  }
  FWidth = w;
  FHeight = h;
  Replace(std::move(out), stride, FBits);
}

} // namespace ht
