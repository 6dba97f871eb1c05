// A set of the members of an enumeration of at most 32 members, as one word;
// bit n is the member of ordinal n.
//
//   ht::THtFlagSet<ht::THtTextRunFlag> f{ht::trfSpace, ht::trfBlank};
//   if (f.Contains(ht::trfBlank)) ...
#pragma once

#include <cstdint>
#include <initializer_list>

namespace ht {

template <class E> struct THtFlagSet {
  uint32_t Bits = 0;
  constexpr THtFlagSet() = default;
  constexpr THtFlagSet(std::initializer_list<E> flags) {
    for (E f : flags)
      Bits |= 1u << f;
  }
  constexpr bool Contains(E f) const noexcept { return (Bits >> f & 1) != 0; }
  constexpr bool Empty() const noexcept { return Bits == 0; }
  constexpr void Include(E f) noexcept { Bits |= 1u << f; }
  constexpr void Exclude(E f) noexcept { Bits &= ~(1u << f); }
  constexpr THtFlagSet operator|(THtFlagSet o) const noexcept {
    THtFlagSet r;
    r.Bits = Bits | o.Bits;
    return r;
  }
  friend constexpr bool operator==(THtFlagSet, THtFlagSet) = default;
};

} // namespace ht
