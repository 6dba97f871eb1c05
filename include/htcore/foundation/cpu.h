// Processor features, read once when the library starts.
#pragma once

namespace ht {

bool SSE2Enabled() noexcept;
bool SSE4Enabled() noexcept; // SSE4.2
bool AVX2Enabled() noexcept; // only when the OS saves the wide registers

} // namespace ht
