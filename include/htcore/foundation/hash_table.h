// The slot table under every dictionary of the library.
//
// Open addressing with linear probing, kept in Robin Hood order (residents of a
// run are ordered by their home slot). A key with hash h has its home at
// (h + 1) & mask; slot i is empty exactly when its hash word equals i, so
// (i - hash) & mask is a resident's distance from home (at least 1) and 0 for
// an empty slot. No occupancy bits, no reserved key, no tombstones: removal
// shifts the rest of the run back.
//
// Users meet this only through the dictionaries; the table numbers are public
// so that tests and diagnostics can look at them:
//
//   ht::THtIdPointerDictionary d;           // 4 slots, grows at 3
//   d.Add(7, p);
//   assert(d.Capacity() == 4 && d.GrowAt() == 3 && d.Items()[0].Hash == 7);
#pragma once

#include <cstdint>

namespace ht {

// A dictionary slot: hash (or id) and value. The spare word keeps the pointer
// aligned and the slot at 16 bytes, four to a cache line.
struct THtDictionaryItem {
  uint32_t Hash;
  uint32_t Spare;
  void* Value;
};

// A slot of TShaIntegerBox: the (mixed) key and the word mapped to it.
struct TShaIntegerBoxItem {
  uint32_t Hash;
  uint32_t Value;
};
using TShaIntegerBoxItems = TShaIntegerBoxItem*;

namespace detail {

inline constexpr uint32_t kMaxTableLength = 0x40000000u;
inline constexpr int kSmallTableCount = 100000;

// Table length chosen by the capacity rule for a request and a count; raises
// EOutOfMemory for a request above kMaxTableLength.
uint32_t HtTableLength(int ACapacity, int ACount);
// The count at which the next add grows a table of this length.
int32_t HtTableGrowAt(uint32_t ALength, int ACount) noexcept;

template <class Slot> class THtHashTable {
public:
  THtHashTable(const THtHashTable&) = delete;
  THtHashTable& operator=(const THtHashTable&) = delete;

  int Count() const noexcept { return FCount; }
  // The table length (a power of two); a table holds fewer entries than this.
  int Capacity() const noexcept { return FItems ? static_cast<int>(FMask + 1) : 0; }
  int GrowAt() const noexcept { return FGrowAt; }
  uint32_t Mask() const noexcept { return FMask; }
  const Slot* Items() const noexcept { return FItems; }
  bool IsEmptySlot(uint32_t i) const noexcept { return FItems[i].Hash == i; }

protected:
  THtHashTable() = default;
  ~THtHashTable();

  void SetCapacity(int ACapacity);
  // Count to 0 and an empty array for ACapacity; AEmptied tells that the slots
  // are already marked empty (an owning dictionary's freeing pass did it).
  void ResetTable(uint32_t ALength, bool AEmptied);
  // Called before each probe of an add.
  void PrepareAdd() {
    if (FCount >= FGrowAt) [[unlikely]]
      GrowForAdd();
  }
  // Stores an entry at the slot a failed probe answered (its complement already
  // taken), shifting the run behind it up by one.
  void InsertAt(uint32_t ASlot, const Slot& AItem) {
    if (FItems[ASlot].Hash != ASlot)
      ShiftItems(ASlot, FMask);
    FItems[ASlot] = AItem;
    ++FCount;
  }
  void ShiftItems(uint32_t AIndex, uint32_t AMask) noexcept;
  // Removes the resident of ASlot, moving the rest of its run back.
  void RemoveAt(uint32_t ASlot) noexcept;
  // Next occupied slot at or after Index, or -1; Index goes behind it (or above mask).
  int NextOccupied(int& Index) const noexcept {
    uint32_t i = Index < 0 ? 0u : static_cast<uint32_t>(Index);
    const uint32_t len = FMask + 1;
    while (i < len && FItems[i].Hash == i)
      ++i;
    if (i >= len) {
      Index = static_cast<int>(len);
      return -1;
    }
    Index = static_cast<int>(i + 1);
    return static_cast<int>(i);
  }

  // The probe: the slot holding a resident with this hash for which Eq holds,
  // or the complement of the slot where such a key belongs. A resident nearer
  // its home than the probe is to ours ends the search; so does an empty slot,
  // whose distance is 0.
  template <class Eq> int Probe(uint32_t AHash, Eq&& AEqual) const {
    const Slot* items = FItems;
    const uint32_t mask = FMask;
    uint32_t i = AHash;
    uint32_t n = 0;
    for (;;) {
      i = (i + 1) & mask;
      ++n;
      const uint32_t hw = items[i].Hash;
      if (n > ((i - hw) & mask))
        return ~static_cast<int>(i);
      if (hw == AHash && AEqual(items[i]))
        return static_cast<int>(i);
    }
  }
  // The distance test comes first: with one empty slot left, a probe for a
  // key equal to that slot's index would otherwise match it after a full turn.
  int ProbeId(uint32_t AId) const noexcept {
    return Probe(AId, [](const Slot&) { return true; });
  }
  // The slot where a new entry of this hash goes behind all residents of the
  // same hash, without comparing keys (bulk loading of unique data).
  int ProbeFree(uint32_t AHash) const noexcept {
    return Probe(AHash, [](const Slot&) { return false; });
  }

  Slot* FItems = nullptr;
  int32_t FCount = 0;
  int32_t FGrowAt = 0;
  uint32_t FMask = 0;

private:
  void GrowForAdd();
  void Rehash(uint32_t ALength);
};

extern template class THtHashTable<THtDictionaryItem>;
extern template class THtHashTable<TShaIntegerBoxItem>;

} // namespace detail
} // namespace ht
