// Shared helpers of the dictionary tests.
#pragma once

#include "htcore/foundation/hstring.h"
#include "htcore/foundation/object.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <string>

namespace dict_test {

// Counts live instances, so tests can tell which values a dictionary freed.
struct TCounted : ht::TObject {
  static inline int Alive = 0;
  ht::hstring Name;
  int Tag;
  explicit TCounted(ht::hstring AName = {}, int ATag = 0) : Name(std::move(AName)), Tag(ATag) { ++Alive; }
  ~TCounted() override { --Alive; }
};

// Every resident sits at distance >= 1 from its home, a run starts at its
// home, and along a run the distance grows by at most one per slot: the
// Robin Hood order that lets Find stop early.
template <class Table>::testing::AssertionResult RobinHoodOrdered(const Table& t) {
  const auto* items = t.Items();
  const uint32_t mask = t.Mask();
  int occupied = 0;
  for (uint32_t i = 0; i <= mask; ++i) {
    if (items[i].Hash == i)
      continue;
    ++occupied;
    const uint32_t d = (i - items[i].Hash) & mask;
    if (d == 0)
      return ::testing::AssertionFailure() << "slot " << i << " at distance 0";
    const uint32_t prev = (i - 1) & mask;
    const uint32_t pd = items[prev].Hash == prev ? 0 : (prev - items[prev].Hash) & mask;
    if (d > pd + 1)
      return ::testing::AssertionFailure() << "slot " << i << " distance " << d << " after " << pd;
  }
  if (occupied != t.Count())
    return ::testing::AssertionFailure() << occupied << " occupied slots, count " << t.Count();
  return ::testing::AssertionSuccess();
}

// Small deterministic generator (xorshift32) so runs repeat on every platform.
struct TRandom {
  uint32_t s;
  explicit TRandom(uint32_t seed) : s(seed ? seed : 1) {}
  uint32_t Next() {
    s ^= s << 13;
    s ^= s >> 17;
    s ^= s << 5;
    return s;
  }
  uint32_t Below(uint32_t n) { return Next() % n; }
};

} // namespace dict_test
