#include "htcore/foundation/cpu.h"

#include "foundation/cpu_internal.h"
#include "htcore/foundation/startup.h"

namespace ht {
namespace detail {

TCpuFeatures g_cpu;

void StartCpu() {
#if defined(__x86_64__) || defined(__i386__)
  __builtin_cpu_init();
  g_cpu.sse2 = __builtin_cpu_supports("sse2");
  g_cpu.sse42 = __builtin_cpu_supports("sse4.2");
  // The runtime reports AVX2 only when the OS saves the YMM state.
  g_cpu.avx2 = __builtin_cpu_supports("avx2");
#endif
}

} // namespace detail

bool SSE2Enabled() noexcept {
  EnsureStarted();
  return detail::g_cpu.sse2;
}

bool SSE4Enabled() noexcept {
  EnsureStarted();
  return detail::g_cpu.sse42;
}

bool AVX2Enabled() noexcept {
  EnsureStarted();
  return detail::g_cpu.avx2;
}

} // namespace ht
