// Dictionaries keyed by a 32-bit id: the roots of the hash table family.
//
// THtIdObjectDictionary maps ids to TObject values and, when owning, deletes
// the values it replaces, removes or clears. THtIdPointerDictionary maps ids to
// untyped pointers it never frees. The id is its own hash, so a lookup is a
// short inline loop with no call per probe.
//
//   ht::THtIdObjectDictionary fonts(0, /*AOwnsObjects=*/true);
//   fonts.Add(12, new TMyFont);             // slot >= 0; ~slot when 12 existed
//   fonts.Put(12, new TMyFont);             // replaces and deletes the old font
//   if (auto* f = fonts.Get(12)) ...
//   for (int i = 0; auto* v = fonts.GetNext(i);) ...   // slot order
//
// Growth: a table starts at 4 slots and doubles when an Add finds the count
// at GrowAt (3/4 of the length, 7/8 past 100,000 entries). Requests above
// 0x40000000 slots raise EOutOfMemory; nothing else raises.
#pragma once

#include "htcore/foundation/hash_table.h"
#include "htcore/foundation/object.h"

#include <cstdint>
#include <utility>

namespace ht {

using THtObjectTraverseProc = void (*)(void* Data, TObject* Value);
using THtPointerTraverseProc = void (*)(void* Data, void* Value);

class THtIdObjectDictionary : public detail::THtHashTable<THtDictionaryItem> {
public:
  explicit THtIdObjectDictionary(int ACapacity = 0, bool AOwnsObjects = true);
  ~THtIdObjectDictionary();

  bool OwnsObjects() const noexcept { return FOwnsObjects; }
  void SetOwnsObjects(bool AOwnsObjects) noexcept { FOwnsObjects = AOwnsObjects; }

  using THtHashTable::SetCapacity;
  // Empties the table (deleting owned values) and sizes it for ACapacity.
  void Clear(int ACapacity = 0);

  bool ContainsKey(uint32_t Key) const noexcept { return ProbeId(Key) >= 0; }
  bool TryGetValue(uint32_t Key, TObject*& Value) const noexcept {
    const int i = ProbeId(Key);
    Value = i >= 0 ? ValueAt(i) : nullptr;
    return i >= 0;
  }
  TObject* Get(uint32_t Key) const noexcept {
    const int i = ProbeId(Key);
    return i >= 0 ? ValueAt(i) : nullptr;
  }
  // Slot of Key, or the complement of the slot where it belongs; keeps Key as
  // the last hash for an insertion that follows.
  int InternalFind(uint32_t Key) noexcept {
    FLastHash = Key;
    return ProbeId(Key);
  }
  // Slot of Key or its complement, without touching any state.
  int FindSlot(uint32_t Key) const noexcept { return ProbeId(Key); }

  // Inserts and returns the slot; an existing Key is left as it is and the
  // complement of its slot is returned.
  int Add(uint32_t Key, TObject* Value);
  // Inserts or replaces; a replaced owned value is deleted unless it is Value.
  int Put(uint32_t Key, TObject* Value);
  // Removes and returns the value without deleting it; null when absent.
  TObject* Extract(uint32_t Key) noexcept;
  // Removes, deleting the value when owned.
  void Remove(uint32_t Key);

  // Value of the next occupied slot at or after Index, with Index moved behind
  // it; null at the end.
  TObject* GetNext(int& Index) const noexcept {
    const int i = NextOccupied(Index);
    return i >= 0 ? ValueAt(i) : nullptr;
  }
  TObject* GetNext(int& Index, uint32_t& Key) const noexcept {
    const int i = NextOccupied(Index);
    Key = i >= 0 ? FItems[i].Hash : 0;
    return i >= 0 ? ValueAt(i) : nullptr;
  }
  // Calls Callback(Data, Value) for each entry in slot order; the callback
  // must not change the table.
  void Traverse(void* Data, THtObjectTraverseProc Callback) const;
  template <class F> void ForEach(F&& AFunc) const {
    for (uint32_t i = 0; i <= FMask; ++i)
      if (FItems[i].Hash != i)
        AFunc(ValueAt(static_cast<int>(i)));
  }

protected:
  TObject* ValueAt(int i) const noexcept { return static_cast<TObject*>(FItems[i].Value); }
  // Stores Value in an existing slot, deleting a different owned old value.
  void ReplaceAt(int ASlot, TObject* Value);
  void FreeOwned(TObject* Value) {
    if (FOwnsObjects)
      delete Value;
  }

  uint32_t FLastHash = 0;
  bool FOwnsObjects;
};

class THtIdPointerDictionary : public detail::THtHashTable<THtDictionaryItem> {
public:
  explicit THtIdPointerDictionary(int ACapacity = 0);

  using THtHashTable::SetCapacity;
  void Clear(int ACapacity = 0);

  bool ContainsKey(uint32_t Key) const noexcept { return ProbeId(Key) >= 0; }
  bool TryGetValue(uint32_t Key, void*& Value) const noexcept {
    const int i = ProbeId(Key);
    Value = i >= 0 ? FItems[i].Value : nullptr;
    return i >= 0;
  }
  void* Get(uint32_t Key) const noexcept {
    const int i = ProbeId(Key);
    return i >= 0 ? FItems[i].Value : nullptr;
  }
  int InternalFind(uint32_t Key) const noexcept { return ProbeId(Key); }

  // Inserts and returns the slot; for an existing Key the value is overwritten
  // and the complement of its slot is returned.
  int Add(uint32_t Key, void* Value);
  int Put(uint32_t Key, void* Value) {
    const int i = Add(Key, Value);
    return i < 0 ? ~i : i;
  }
  void* Extract(uint32_t Key) noexcept;
  // Nothing is owned: Remove is Extract.
  void* Remove(uint32_t Key) noexcept { return Extract(Key); }

  // Moves the residents from Index up to the next empty slot one slot up,
  // wrapping around the end; Index is then free for a new entry.
  void ShiftPointerItems(int Index, uint32_t Mask) noexcept {
    ShiftItems(static_cast<uint32_t>(Index), Mask);
  }

  void* GetNext(int& Index) const noexcept {
    const int i = NextOccupied(Index);
    return i >= 0 ? FItems[i].Value : nullptr;
  }
  void* GetNext(int& Index, uint32_t& Key) const noexcept {
    const int i = NextOccupied(Index);
    Key = i >= 0 ? FItems[i].Hash : 0;
    return i >= 0 ? FItems[i].Value : nullptr;
  }
  void Traverse(void* Data, THtPointerTraverseProc Callback) const;
  template <class F> void ForEach(F&& AFunc) const {
    for (uint32_t i = 0; i <= FMask; ++i)
      if (FItems[i].Hash != i)
        AFunc(FItems[i].Value);
  }
};

} // namespace ht
