// A fixed table of HTML tag names with data, found by the name's hash (the
// hash the tokenizer already computed over the lower-case name) and an
// ASCII case-insensitive compare. Open addressing in a power-of-two array
// that is at least twice the entries keeps probes short.
#pragma once

#include "htcore/foundation/hash.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ht::detail {

inline bool SameAsciiLower(std::u16string_view name, std::u16string_view lower) noexcept {
  if (name.size() != lower.size())
    return false;
  for (size_t i = 0; i < name.size(); ++i) {
    char16_t c = name[i] >= u'A' && name[i] <= u'Z' ? static_cast<char16_t>(name[i] + 32) : name[i];
    if (c != lower[i])
      return false;
  }
  return true;
}

// TEntry has a `Name` (lower case) and a `Data` member.
template <typename TEntry, size_t Slots> class TTagNameTable {
public:
  template <size_t N> explicit TTagNameTable(const TEntry (&entries)[N]) {
    static_assert(N * 2 <= Slots, "keep the table at most half full");
    for (const TEntry& e : entries) {
      uint32_t h = RSHash(e.Name.data(), static_cast<int>(e.Name.size()));
      size_t i = h % Slots;
      while (FSlots[i].Entry)
        i = (i + 1) % Slots;
      FSlots[i] = {h, &e};
    }
  }

  // The entry of name, whose lower-case form hashes to hash; null if none.
  const TEntry* Find(std::u16string_view name, uint32_t hash) const noexcept {
    for (size_t i = hash % Slots; FSlots[i].Entry; i = (i + 1) % Slots)
      if (FSlots[i].Hash == hash && SameAsciiLower(name, FSlots[i].Entry->Name))
        return FSlots[i].Entry;
    return nullptr;
  }

private:
  struct TSlot {
    uint32_t Hash;
    const TEntry* Entry;
  };
  std::array<TSlot, Slots> FSlots{};
};

} // namespace ht::detail
