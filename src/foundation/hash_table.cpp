// Capacity, rehash, shifting insert and backward-shift removal of the slot table.
#include "htcore/foundation/hash_table.h"

#include "htcore/foundation/exception.h"

#include <cstdlib>
#include <cstring>

namespace ht::detail {

uint32_t HtTableLength(int ACapacity, int ACount) {
  if (ACapacity > static_cast<int>(kMaxTableLength))
    throw EOutOfMemory();
  int64_t request = ACapacity < ACount ? ACount : ACapacity;
  const int shift = ACount <= kSmallTableCount ? 2 : 3;
  uint32_t length = 4;
  while (request >= static_cast<int64_t>(length - (length >> shift)) && length < kMaxTableLength)
    length <<= 1;
  return length;
}

int32_t HtTableGrowAt(uint32_t ALength, int ACount) noexcept {
  if (ALength >= kMaxTableLength)
    return static_cast<int32_t>(ALength - 1);
  const int shift = ACount <= kSmallTableCount ? 2 : 3;
  return static_cast<int32_t>(ALength - (ALength >> shift));
}

namespace {

// Every slot starts empty: its hash word holds its own index.
template <class Slot> void init_slots(Slot* items, uint32_t length) noexcept {
  for (uint32_t i = length; i-- > 0;) {
    items[i] = Slot{};
    items[i].Hash = i;
  }
}

template <class Slot> Slot* alloc_slots(uint32_t length) {
  void* p = std::malloc(static_cast<size_t>(length) * sizeof(Slot));
  if (!p)
    throw EOutOfMemory();
  Slot* items = static_cast<Slot*>(p);
  init_slots(items, length);
  return items;
}

} // namespace

template <class Slot> THtHashTable<Slot>::~THtHashTable() { std::free(FItems); }

template <class Slot> void THtHashTable<Slot>::SetCapacity(int ACapacity) {
  const uint32_t length = HtTableLength(ACapacity, FCount);
  const uint32_t current = FItems ? FMask + 1 : 0;
  // A table is never shrunk under its residents.
  if (length == current || (length < current && FCount > 0))
    return;
  Rehash(length);
  FGrowAt = HtTableGrowAt(length, FCount);
}

template <class Slot> void THtHashTable<Slot>::ResetTable(uint32_t ALength, bool AEmptied) {
  FCount = 0;
  if (FItems && ALength != FMask + 1) {
    Slot* fresh;
    try {
      fresh = alloc_slots<Slot>(ALength);
    } catch (...) {
      // Stay a valid empty table of the old length.
      if (!AEmptied)
        init_slots(FItems, FMask + 1);
      FGrowAt = HtTableGrowAt(FMask + 1, 0);
      throw;
    }
    std::free(FItems);
    FItems = fresh;
    FMask = ALength - 1;
  } else if (!FItems) {
    FItems = alloc_slots<Slot>(ALength);
    FMask = ALength - 1;
  } else if (!AEmptied) {
    init_slots(FItems, ALength);
  }
  FGrowAt = HtTableGrowAt(ALength, 0);
}

template <class Slot> void THtHashTable<Slot>::GrowForAdd() {
  SetCapacity(0);
  // Only at the largest length can the table run out of slots; one stays empty
  // so that every probe ends.
  if (static_cast<uint32_t>(FCount) >= FMask)
    throw EOutOfMemory();
}

template <class Slot> void THtHashTable<Slot>::Rehash(uint32_t ALength) {
  Slot* fresh = alloc_slots<Slot>(ALength);
  Slot* old = FItems;
  const uint32_t old_len = old ? FMask + 1 : 0;
  const uint32_t mask = ALength - 1;
  if (old && FCount > 0) {
    // Starting behind an empty slot, residents come in home order, so placing
    // each in the first free slot from its home keeps Robin Hood order.
    uint32_t start = 0;
    for (uint32_t i = old_len; i-- > 0;)
      if (old[i].Hash == i) {
        start = i;
        break;
      }
    const uint32_t old_mask = old_len - 1;
    uint32_t i = start;
    for (uint32_t k = 0; k < old_len; ++k) {
      i = (i + 1) & old_mask;
      const uint32_t h = old[i].Hash;
      if (h == i)
        continue;
      uint32_t j = (h + 1) & mask;
      while (fresh[j].Hash != j)
        j = (j + 1) & mask;
      fresh[j] = old[i];
    }
  }
  std::free(old);
  FItems = fresh;
  FMask = mask;
}

template <class Slot> void THtHashTable<Slot>::ShiftItems(uint32_t AIndex, uint32_t AMask) noexcept {
  Slot* items = FItems;
  uint32_t e = AIndex;
  while (items[e].Hash != e)
    e = (e + 1) & AMask;
  if (e >= AIndex) {
    std::memmove(items + AIndex + 1, items + AIndex, (e - AIndex) * sizeof(Slot));
  } else {
    // The run wraps: move the part behind slot 0 first, then the last slot to
    // slot 0, then the rest up to the end.
    std::memmove(items + 1, items, e * sizeof(Slot));
    items[0] = items[AMask];
    std::memmove(items + AIndex + 1, items + AIndex, (AMask - AIndex) * sizeof(Slot));
  }
}

template <class Slot> void THtHashTable<Slot>::RemoveAt(uint32_t ASlot) noexcept {
  Slot* items = FItems;
  const uint32_t mask = FMask;
  uint32_t i = ASlot;
  for (;;) {
    const uint32_t next = (i + 1) & mask;
    if (((next - items[next].Hash) & mask) < 2) // empty, or at its home
      break;
    items[i] = items[next];
    i = next;
  }
  items[i] = Slot{};
  items[i].Hash = i;
  --FCount;
}

template class THtHashTable<THtDictionaryItem>;
template class THtHashTable<TShaIntegerBoxItem>;

} // namespace ht::detail
