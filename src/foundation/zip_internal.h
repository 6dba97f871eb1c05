#pragma once

namespace ht::detail {

// Registers the zlib implementation / frees whatever is registered.
void StartZip();
void StopZip();

} // namespace ht::detail
