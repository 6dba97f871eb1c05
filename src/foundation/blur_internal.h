// Vector kernels of BlurRow, chosen at run time by the processor features.
#pragma once

#include <atomic>
#include <cstdint>

namespace ht::detail {

// Cleared by tests to run the portable loops on machines with AVX2.
extern std::atomic<bool> g_blur_allow_vector;

// Whether BlurSymmetricAVX2 may be called on this machine and build.
bool BlurAVX2Available() noexcept;

// Dst[0..n) from pixels unpacked to four 32-bit lanes b, g, r, a; lanes[0..4)
// is the pixel `size` places left of the first output. w[0..size] are the
// weights of the centre and of each symmetric pair.
void BlurSymmetricAVX2(const uint32_t* lanes, int n, const uint32_t* w, int size, uint32_t* dst) noexcept;

} // namespace ht::detail
