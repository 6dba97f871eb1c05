// Recursion over trees of any depth.
//
// Tree walks that must call virtual operations per node recurse. Trees from
// the HTML builder are a few hundred levels deep at most, but trees made by
// hand, or grown by repeated SetInnerHTML on their deepest node, have no
// limit. RecurseDeep runs one more level of such a walk; every few hundred
// levels it moves the rest of the walk to a thread with a large stack of its
// own and waits for it, so depth costs memory, never a stack overflow. The
// tree stays with one thread at a time: the caller only waits.
//
//   void write(Node* n) {
//     ...
//     for (Node* c : children) RecurseDeep([&] { c->Write(); });
//   }
#pragma once

#include <exception>
#include <type_traits>

namespace ht::detail {

// Nested levels that a thread runs before the walk moves on to a fresh stack.
int RecursionLevelsPerStack() noexcept;

// Runs fn(arg) on a new thread with a large stack and waits; exceptions
// thrown by fn are rethrown here.
void RunOnLargeStack(void (*fn)(void*), void* arg);

// Levels already nested on this thread's current stack.
extern thread_local int t_recursion_depth;

template <class F> void RecurseDeep(F&& f) {
  if (t_recursion_depth >= RecursionLevelsPerStack()) [[unlikely]] {
    using Fn = std::remove_reference_t<F>;
    RunOnLargeStack([](void* p) { (*static_cast<Fn*>(p))(); },
                    const_cast<void*>(static_cast<const void*>(&f)));
    return;
  }
  ++t_recursion_depth;
  struct TLeave {
    ~TLeave() { --t_recursion_depth; }
  } leave;
  f();
}

} // namespace ht::detail
