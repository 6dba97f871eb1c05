// Test hook of FastBlur: clearing it runs the portable loops on any machine.
#pragma once

#include <atomic>

namespace ht::detail {

extern std::atomic<bool> g_fast_blur_allow_vector;

} // namespace ht::detail
