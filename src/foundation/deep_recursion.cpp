#include "foundation/deep_recursion.h"

#include "htcore/foundation/exception.h"

#include <pthread.h>

namespace ht::detail {

thread_local int t_recursion_depth = 0;

namespace {

// A thread's own stack may be small (hosts run us on worker threads), so the
// first stack takes few levels; the stacks made here are large and take many.
constexpr int kLevelsOnForeignStack = 400;
constexpr int kLevelsOnLargeStack = 20000;
constexpr size_t kLargeStackBytes = size_t{256} << 20; // reserved lazily by the system

thread_local bool t_on_large_stack = false;

struct TJob {
  void (*fn)(void*);
  void* arg;
  std::exception_ptr error;
};

void* run_job(void* p) {
  auto* job = static_cast<TJob*>(p);
  t_on_large_stack = true;
  t_recursion_depth = 0;
  try {
    job->fn(job->arg);
  } catch (...) {
    job->error = std::current_exception();
  }
  return nullptr;
}

} // namespace

int RecursionLevelsPerStack() noexcept {
  return t_on_large_stack ? kLevelsOnLargeStack : kLevelsOnForeignStack;
}

void RunOnLargeStack(void (*fn)(void*), void* arg) {
  TJob job{fn, arg, nullptr};
  pthread_attr_t attr;
  if (pthread_attr_init(&attr) != 0)
    throw EOutOfMemory();
  pthread_t thread;
  int rc = pthread_attr_setstacksize(&attr, kLargeStackBytes);
  if (rc == 0)
    rc = pthread_create(&thread, &attr, run_job, &job);
  pthread_attr_destroy(&attr);
  if (rc != 0)
    throw EOutOfMemory();
  pthread_join(thread, nullptr);
  if (job.error)
    std::rethrow_exception(job.error);
}

} // namespace ht::detail
