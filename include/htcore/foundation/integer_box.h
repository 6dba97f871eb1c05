// TShaIntegerBox: a set of 32-bit integers with one spare word per key.
//
// The same Robin Hood table as the dictionaries, with 8-byte slots. With Mix
// set, a key is stored as its mix, a bijection on 32 bits that spreads
// sequential keys over the table; GetNext inverts it, so no key is stored twice.
//
//   ht::TShaIntegerBox seen(0, /*Mix=*/true);
//   *seen.Add(42) = 7;                  // the word mapped to 42
//   uint32_t v;
//   if (seen.Find(42, v)) ...           // v == 7
//   uint32_t key;
//   for (int i = 0; seen.GetNext(i, key);) ...   // the original keys
#pragma once

#include "htcore/foundation/hash_table.h"

#include <cstdint>

namespace ht {

struct TShaIntegerBox : detail::THtHashTable<TShaIntegerBoxItem> {
  explicit TShaIntegerBox(int ACapacity = 0, bool Mix = true);

  static constexpr uint32_t MixKey(uint32_t k) noexcept {
    uint32_t x = k * 0x560CED27u;
    x ^= x >> 16;
    x ^= x >> 8;
    return x * 0x90C03487u;
  }
  // Inverse of MixKey: undoes the last multiplication, then both shifts at
  // once (x ^ x >> 8 after x ^ x >> 16 is undone by y ^ y >> 8), then the first.
  static constexpr uint32_t UnmixKey(uint32_t m) noexcept {
    uint32_t y = m * 0xB4BA5137u;
    y ^= y >> 8;
    return y * 0x258DB297u;
  }

  bool Mixed() const noexcept { return FMix; }
  uint32_t HashOf(uint32_t Key) const noexcept { return FMix ? MixKey(Key) : Key; }

  using THtHashTable::SetCapacity;
  void Clear(int ACapacity = 0);

  // Adds Key when absent and answers its mapped word (0 for a new key). The
  // pointer is valid until the next change of the table.
  uint32_t* Add(uint32_t Key);
  bool Find(uint32_t Key, uint32_t& Value) const noexcept {
    const int i = ProbeId(HashOf(Key));
    Value = i >= 0 ? FItems[i].Value : 0;
    return i >= 0;
  }
  bool Contains(uint32_t Key) const noexcept { return ProbeId(HashOf(Key)) >= 0; }
  // Answers whether Key was there.
  bool Remove(uint32_t Key) noexcept;
  // Slot of Key or the complement of where it goes; keeps its hash as the last hash.
  int InternalFind(uint32_t Key) noexcept {
    FLastHash = HashOf(Key);
    return ProbeId(FLastHash);
  }
  // The next key at or after slot Index, with Index moved behind it; false at the end.
  bool GetNext(int& Index, uint32_t& Key, uint32_t* Value = nullptr) const noexcept {
    const int i = NextOccupied(Index);
    if (i < 0)
      return false;
    Key = FMix ? UnmixKey(FItems[i].Hash) : FItems[i].Hash;
    if (Value)
      *Value = FItems[i].Value;
    return true;
  }

private:
  uint32_t FLastHash = 0;
  bool FMix;
};

} // namespace ht
