// One-dimensional Gaussian blur of 32-bit pixel rows.
//
// A kernel is made once per radius and then run over every row (and, by the
// caller, every column through a transposed copy):
//
//   ht::TKernel k;
//   ht::MakeGaussianKernel(k, 4.0, 1, 255);   // cut tails lighter than 1/510
//   ht::BlurRow(src, width, k, dst, 0, width, -1, -1);
//
// The four bytes of a pixel are blurred alike, alpha included, with integer
// weights that sum to at least 2^24, so a flat row stays exactly as it was.
#pragma once

#include <cstdint>

namespace ht {

// Weights for the offsets -30..30 (array index = offset + 30); only the
// offsets -Size..Size are used, the others are 0.
struct TKernel {
  static constexpr int MaxSize = 30;
  int Size;
  float Weights[2 * MaxSize + 1];
  int IWeights[2 * MaxSize + 1];

  float& Weight(int Offset) noexcept { return Weights[Offset + MaxSize]; }
  float Weight(int Offset) const noexcept { return Weights[Offset + MaxSize]; }
  int& IWeight(int Offset) noexcept { return IWeights[Offset + MaxSize]; }
  int IWeight(int Offset) const noexcept { return IWeights[Offset + MaxSize]; }
};

// Fills K for a Gaussian of standard deviation Radius (0.1 to 1000, else an
// assertion fails). Tails are cut from the outside in while their two-sided
// weight stays below MaxData / (2 * DataGranularity); Size never goes below 1.
// Weights then sum to 1 over -Size..Size and IWeights to at least 2^24.
void MakeGaussianKernel(TKernel& K, double Radius, int MaxData, int DataGranularity);

// Blurs the pixels in columns [Left, Right) of the row Src (Width pixels) into
// Dst. Neighbours beyond the limits read as the pixel at the limit, so edge
// colours extend. Columns [SkipFrom, SkipTo) are not blurred, for pixels the
// caller knows will be covered; SkipFrom < 0 (conventionally -1, -1) means no
// gap. Every column not blurred is copied from Src. Limits are clipped to the
// row. Src and Dst must not overlap.
void BlurRow(const uint32_t* Src, int Width, const TKernel& K, uint32_t* Dst, int Left, int Right,
             int SkipFrom, int SkipTo);

} // namespace ht
