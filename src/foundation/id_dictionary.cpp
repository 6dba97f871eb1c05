// Id-keyed dictionaries: ownership rules on top of the slot table.
#include "htcore/foundation/id_dictionary.h"

namespace ht {

THtIdObjectDictionary::THtIdObjectDictionary(int ACapacity, bool AOwnsObjects) : FOwnsObjects(AOwnsObjects) {
  SetCapacity(ACapacity);
}

THtIdObjectDictionary::~THtIdObjectDictionary() {
  if (FOwnsObjects && FItems)
    for (uint32_t i = 0; i <= FMask; ++i)
      if (FItems[i].Hash != i) {
        TObject* v = ValueAt(static_cast<int>(i));
        FItems[i].Hash = i;
        delete v;
      }
}

void THtIdObjectDictionary::Clear(int ACapacity) {
  const uint32_t length = detail::HtTableLength(ACapacity, 0);
  FCount = 0;
  // Freeing marks each slot empty, so a table of unchanged length needs no
  // second initialising pass.
  if (FOwnsObjects)
    for (uint32_t i = 0; i <= FMask; ++i)
      if (FItems[i].Hash != i) {
        TObject* v = ValueAt(static_cast<int>(i));
        FItems[i] = THtDictionaryItem{i, 0, nullptr};
        delete v;
      }
  ResetTable(length, FOwnsObjects);
}

int THtIdObjectDictionary::Add(uint32_t Key, TObject* Value) {
  PrepareAdd();
  const int i = InternalFind(Key);
  if (i >= 0)
    return ~i;
  InsertAt(static_cast<uint32_t>(~i), THtDictionaryItem{FLastHash, 0, Value});
  return ~i;
}

void THtIdObjectDictionary::ReplaceAt(int ASlot, TObject* Value) {
  TObject* old = ValueAt(ASlot);
  FItems[ASlot].Value = Value;
  if (old != Value)
    FreeOwned(old);
}

int THtIdObjectDictionary::Put(uint32_t Key, TObject* Value) {
  const int i = Add(Key, Value);
  if (i >= 0)
    return i;
  ReplaceAt(~i, Value);
  return ~i;
}

TObject* THtIdObjectDictionary::Extract(uint32_t Key) noexcept {
  const int i = ProbeId(Key);
  if (i < 0)
    return nullptr;
  TObject* v = ValueAt(i);
  RemoveAt(static_cast<uint32_t>(i));
  return v;
}

void THtIdObjectDictionary::Remove(uint32_t Key) {
  TObject* v = Extract(Key);
  if (v)
    FreeOwned(v);
}

void THtIdObjectDictionary::Traverse(void* Data, THtObjectTraverseProc Callback) const {
  for (uint32_t i = 0; i <= FMask; ++i)
    if (FItems[i].Hash != i)
      Callback(Data, ValueAt(static_cast<int>(i)));
}

THtIdPointerDictionary::THtIdPointerDictionary(int ACapacity) { SetCapacity(ACapacity); }

void THtIdPointerDictionary::Clear(int ACapacity) { ResetTable(detail::HtTableLength(ACapacity, 0), false); }

int THtIdPointerDictionary::Add(uint32_t Key, void* Value) {
  PrepareAdd();
  const int i = ProbeId(Key);
  if (i >= 0) {
    FItems[i].Value = Value;
    return ~i;
  }
  InsertAt(static_cast<uint32_t>(~i), THtDictionaryItem{Key, 0, Value});
  return ~i;
}

void* THtIdPointerDictionary::Extract(uint32_t Key) noexcept {
  const int i = ProbeId(Key);
  if (i < 0)
    return nullptr;
  void* v = FItems[i].Value;
  RemoveAt(static_cast<uint32_t>(i));
  return v;
}

void THtIdPointerDictionary::Traverse(void* Data, THtPointerTraverseProc Callback) const {
  for (uint32_t i = 0; i <= FMask; ++i)
    if (FItems[i].Hash != i)
      Callback(Data, FItems[i].Value);
}

} // namespace ht
