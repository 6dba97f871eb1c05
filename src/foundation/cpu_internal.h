#pragma once

namespace ht::detail {

struct TCpuFeatures {
  bool sse2 = false;
  bool sse42 = false;
  bool avx2 = false;
};

// Filled once by StartCpu at library start; read-only afterwards.
extern TCpuFeatures g_cpu;
void StartCpu();

} // namespace ht::detail
