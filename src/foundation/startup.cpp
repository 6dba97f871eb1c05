#include "htcore/foundation/startup.h"

#include "foundation/units.h"

#include <cstdlib>
#include <mutex>

namespace ht {
namespace detail {

std::atomic<bool> g_started{false};

namespace {

struct TUnit {
  const char* name;
  void (*start)();
  void (*stop)();
};

// The one place that fixes the order; stop runs from the bottom up.
const TUnit kUnits[] = {
    {"htutils", StartHtUtils, StopHtUtils},
    {"htdictionary", StartHtDictionary, StopHtDictionary},
    {"htmlpars", StartHtmlPars, StopHtmlPars},
    {"htmlcss", StartHtmlCss, StopHtmlCss},
    {"htmlani", StartHtmlAni, StopHtmlAni},
    {"htxml", nullptr, nullptr},
    {"htcanvas", nullptr, nullptr},
    {"htinet", nullptr, nullptr},
    {"htscriptparse", nullptr, nullptr},
    {"hthints", nullptr, nullptr},
    {"htresource", nullptr, nullptr},
    {"htplatform", nullptr, nullptr},
    {"htgif", nullptr, nullptr},
    {"httemplates", StartHtTemplates, StopHtTemplates},
};

std::recursive_mutex& Lock() {
  static std::recursive_mutex m;
  return m;
}

// True while this thread runs start code: a table read from inside start code
// must not start the library again.
thread_local bool t_starting = false;
bool g_exit_hook = false;

void StopAtExit() { Finalize(); }

} // namespace
} // namespace detail

void Initialize() {
  using namespace detail;
  if (g_started.load(std::memory_order_acquire) || t_starting)
    return;
  std::lock_guard<std::recursive_mutex> guard(Lock());
  if (g_started.load(std::memory_order_relaxed))
    return;
  t_starting = true;
  for (const TUnit& u : kUnits)
    if (u.start)
      u.start();
  t_starting = false;
  g_started.store(true, std::memory_order_release);
  if (!g_exit_hook) {
    g_exit_hook = true;
    std::atexit(StopAtExit);
  }
}

void Finalize() {
  using namespace detail;
  std::lock_guard<std::recursive_mutex> guard(Lock());
  if (!g_started.load(std::memory_order_relaxed))
    return;
  for (size_t i = std::size(kUnits); i-- > 0;)
    if (kUnits[i].stop)
      kUnits[i].stop();
  g_started.store(false, std::memory_order_release);
}

bool IsInitialized() noexcept { return detail::g_started.load(std::memory_order_acquire); }

} // namespace ht
