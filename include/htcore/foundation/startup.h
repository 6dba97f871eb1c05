// Library start and stop.
//
// Each unit of the library has start code that fills its tables and stop code
// that frees its registries. They run once, in a fixed order, on the first use
// of a table or on an explicit call; stop code runs in reverse at exit or on
// Finalize(). Hosts rarely need these calls:
//
//   ht::Initialize();   // optional: pay the start cost up front
//   ...
//   ht::Finalize();     // optional: free registries before exit
#pragma once

#include <atomic>

namespace ht {

void Initialize();
void Finalize();
bool IsInitialized() noexcept;

namespace detail {
extern std::atomic<bool> g_started;
}

// Cheap guard for code that reads start-filled tables.
inline void EnsureStarted() {
  if (!detail::g_started.load(std::memory_order_acquire)) [[unlikely]]
    Initialize();
}

} // namespace ht
