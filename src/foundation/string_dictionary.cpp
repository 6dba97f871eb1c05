// String-keyed dictionaries: insertion and removal with keys read out of values.
#include "htcore/foundation/string_dictionary.h"

#include "htcore/foundation/exception.h"

namespace ht {

namespace {
const THtHashFunc kSha = &ShaPerfectHash;
const THtHashFunc kShaAsm = &ShaPerfectHashAsm;
} // namespace

THtObjectDictionary::THtObjectDictionary(int ACapacity, bool AOwnsObjects, std::ptrdiff_t AKeyOffset,
                                         THtHashFunc AHashFunc)
    : THtIdObjectDictionary(ACapacity, AOwnsObjects),
      FKey(detail::THtKeyAccess::Make(AHashFunc, kSha, AKeyOffset, nullptr)) {}

THtObjectDictionary::THtObjectDictionary(int ACapacity, bool AOwnsObjects, THtKeyAccessor AKeyAccessor,
                                         THtHashFunc AHashFunc)
    : THtIdObjectDictionary(ACapacity, AOwnsObjects),
      FKey(detail::THtKeyAccess::Make(AHashFunc, kSha, 0, AKeyAccessor)) {}

int THtObjectDictionary::AddHashed(uint32_t Hash, const hstring& Key, TObject* Value) {
  HT_ASSERT(Value); // the key is read out of every stored value
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
    : THtIdPointerDictionary(ACapacity),
      FKey(detail::THtKeyAccess::Make(AHashFunc, kShaAsm, AKeyOffset, nullptr)) {}

THtPointerDictionary::THtPointerDictionary(int ACapacity, THtKeyAccessor AKeyAccessor, THtHashFunc AHashFunc)
    : THtIdPointerDictionary(ACapacity),
      FKey(detail::THtKeyAccess::Make(AHashFunc, kShaAsm, 0, AKeyAccessor)) {}

int THtPointerDictionary::AddHashed(uint32_t Hash, const hstring& Key, void* Value) {
  HT_ASSERT(Value);
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

// The thread dictionary's default is the unrolled form; both give the same number.
THtThreadObjectDictionary::THtThreadObjectDictionary(int ACapacity, bool AOwnsObjects,
                                                     std::ptrdiff_t AKeyOffset, THtHashFunc AHashFunc)
    : THtObjectDictionary(ACapacity, AOwnsObjects, AKeyOffset, AHashFunc) {
  FKey = detail::THtKeyAccess::Make(AHashFunc, kShaAsm, AKeyOffset, nullptr);
}

THtThreadObjectDictionary::THtThreadObjectDictionary(int ACapacity, bool AOwnsObjects,
                                                     THtKeyAccessor AKeyAccessor, THtHashFunc AHashFunc)
    : THtObjectDictionary(ACapacity, AOwnsObjects, AKeyAccessor, AHashFunc) {
  FKey = detail::THtKeyAccess::Make(AHashFunc, kShaAsm, 0, AKeyAccessor);
}

} // namespace ht
