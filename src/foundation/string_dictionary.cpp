// String-keyed dictionaries: insertion and removal with keys read out of values.
#include "htcore/foundation/string_dictionary.h"

namespace ht {

THtObjectDictionary::THtObjectDictionary(int ACapacity, bool AOwnsObjects, std::ptrdiff_t AKeyOffset,
                                         THtHashFunc AHashFunc)
    : THtIdObjectDictionary(ACapacity, AOwnsObjects), FKey{AHashFunc
                                                               ? AHashFunc
                                                               : static_cast<THtHashFunc>(&ShaPerfectHash),
                                                           AKeyOffset, nullptr} {}

THtObjectDictionary::THtObjectDictionary(int ACapacity, bool AOwnsObjects, THtKeyAccessor AKeyAccessor,
                                         THtHashFunc AHashFunc)
    : THtIdObjectDictionary(ACapacity, AOwnsObjects), FKey{AHashFunc
                                                               ? AHashFunc
                                                               : static_cast<THtHashFunc>(&ShaPerfectHash),
                                                           0, AKeyAccessor} {}

int THtObjectDictionary::AddHashed(uint32_t Hash, const hstring& Key, TObject* Value) {
  PrepareAdd();
  const int i = FindHashed(Hash, Key);
  if (i >= 0) {
    ReplaceAt(i, Value);
    return i;
  }
  InsertAt(static_cast<uint32_t>(~i), THtDictionaryItem{Hash, 0, Value});
  return ~i;
}

int THtObjectDictionary::AddObject(TObject* Value) {
  const hstring& key = KeyOf(Value);
  return AddHashed(HashOf(key), key, Value);
}

TObject* THtObjectDictionary::ExtractHashed(uint32_t Hash, const hstring& Key) {
  const int i = FindHashed(Hash, Key);
  if (i < 0)
    return nullptr;
  TObject* v = ValueAt(i);
  RemoveAt(static_cast<uint32_t>(i));
  return v;
}

void THtObjectDictionary::RemoveHashed(uint32_t Hash, const hstring& Key) {
  TObject* v = ExtractHashed(Hash, Key);
  if (v)
    FreeOwned(v);
}

THtPointerDictionary::THtPointerDictionary(int ACapacity, std::ptrdiff_t AKeyOffset, THtHashFunc AHashFunc)
    : THtIdPointerDictionary(ACapacity), FKey{AHashFunc ? AHashFunc
                                                        : static_cast<THtHashFunc>(&ShaPerfectHashAsm),
                                              AKeyOffset, nullptr} {}

THtPointerDictionary::THtPointerDictionary(int ACapacity, THtKeyAccessor AKeyAccessor, THtHashFunc AHashFunc)
    : THtIdPointerDictionary(ACapacity), FKey{AHashFunc ? AHashFunc
                                                        : static_cast<THtHashFunc>(&ShaPerfectHashAsm),
                                              0, AKeyAccessor} {}

int THtPointerDictionary::AddHashed(uint32_t Hash, const hstring& Key, void* Value) {
  PrepareAdd();
  const int i = FindHashed(Hash, Key);
  if (i >= 0) {
    FItems[i].Value = Value;
    return i;
  }
  InsertAt(static_cast<uint32_t>(~i), THtDictionaryItem{Hash, 0, Value});
  return ~i;
}

int THtPointerDictionary::AddPointer(void* Value) {
  const hstring& key = KeyOf(Value);
  return AddHashed(HashOf(key), key, Value);
}

void* THtPointerDictionary::ExtractHashed(uint32_t Hash, const hstring& Key) {
  const int i = FindHashed(Hash, Key);
  if (i < 0)
    return nullptr;
  void* v = FItems[i].Value;
  RemoveAt(static_cast<uint32_t>(i));
  return v;
}

THtThreadObjectDictionary::THtThreadObjectDictionary(int ACapacity, bool AOwnsObjects,
                                                     std::ptrdiff_t AKeyOffset, THtHashFunc AHashFunc)
    : THtObjectDictionary(ACapacity, AOwnsObjects, AKeyOffset,
                          AHashFunc ? AHashFunc : static_cast<THtHashFunc>(&ShaPerfectHashAsm)) {}

THtThreadObjectDictionary::THtThreadObjectDictionary(int ACapacity, bool AOwnsObjects,
                                                     THtKeyAccessor AKeyAccessor, THtHashFunc AHashFunc)
    : THtObjectDictionary(ACapacity, AOwnsObjects, AKeyAccessor,
                          AHashFunc ? AHashFunc : static_cast<THtHashFunc>(&ShaPerfectHashAsm)) {}

} // namespace ht
