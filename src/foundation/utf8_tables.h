#pragma once

#include <cstdint>

namespace ht::detail {

// Up to three encoded bytes of each UTF-16 unit, in memory order, and their
// count. Filled by StartUtf8Tables at library start; read-only afterwards.
extern uint32_t g_utf8_bytes[65536];
extern uint8_t g_utf8_length[65536];
void StartUtf8Tables();

} // namespace ht::detail
