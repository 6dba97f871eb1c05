// Dictionaries over text slices, callback-defined keys and short UTF-8 keys.
#include "htcore/foundation/virtual_dictionary.h"

#include "htcore/foundation/exception.h"

namespace ht {

THtVirtualStringDictionary::THtVirtualStringDictionary(int ACapacity, std::ptrdiff_t AKeyOffset,
                                                       THtHashFunc AHashFunc)
    : THtIdPointerDictionary(ACapacity),
      FHashFunc(AHashFunc ? AHashFunc : static_cast<THtHashFunc>(&ShaPerfectHashAsm)),
      FKeyOffset(AKeyOffset) {}

int THtVirtualStringDictionary::AddHashedVirtual(uint32_t Hash, int Index, void* Value, const char16_t* p,
                                                 int Len) {
  HT_ASSERT(Value);
  if (FCount >= FGrowAt) {
    PrepareAdd();
    Index = FindHashedVirtual(Hash, p, Len);
  }
  if (Index >= 0) {
    FItems[Index].Value = Value;
    return Index;
  }
  InsertAt(static_cast<uint32_t>(~Index), THtDictionaryItem{Hash, 0, Value});
  return ~Index;
}

int THtVirtualStringDictionary::AddPointer(void* Value) {
  const std::u16string_view key = KeyOf(Value);
  const int len = static_cast<int>(key.size());
  const uint32_t h = HashOf(key.data(), len);
  return AddHashedVirtual(h, FindHashedVirtual(h, key.data(), len), Value, key.data(), len);
}

void* THtVirtualStringDictionary::Extract(const char16_t* p, int Len) {
  const int i = FindHashedVirtual(HashOf(p, Len), p, Len);
  if (i < 0)
    return nullptr;
  void* v = FItems[i].Value;
  RemoveAt(static_cast<uint32_t>(i));
  return v;
}

THtVirtualDictionary::THtVirtualDictionary(THtVirtualHashFunc HashOf, THtVirtualEqualFunc Equal,
                                           int ACapacity)
    : THtIdPointerDictionary(ACapacity), FHashOf(HashOf), FEqual(Equal) {}

int THtVirtualDictionary::Add(void* Value) {
  const uint32_t h = FHashOf(Value);
  PrepareAdd();
  const int i = FindHashed(h, Value);
  if (i >= 0) {
    FItems[i].Value = Value;
    return ~i;
  }
  InsertAt(static_cast<uint32_t>(~i), THtDictionaryItem{h, 0, Value});
  return ~i;
}

void* THtVirtualDictionary::Extract(const void* Value) {
  const int i = FindHashed(FHashOf(Value), Value);
  if (i < 0)
    return nullptr;
  void* v = FItems[i].Value;
  RemoveAt(static_cast<uint32_t>(i));
  return v;
}

THtUTF8Dictionary::THtUTF8Dictionary(int ACapacity, std::ptrdiff_t AKeyOffset, THtByteHashFunc AHashFunc)
    : THtIdPointerDictionary(ACapacity), FHashFunc(AHashFunc ? AHashFunc : &ShaPerfectHashANSI),
      FKeyOffset(AKeyOffset) {}

int THtUTF8Dictionary::AddWithIndex(uint32_t Hash, int Index, void* Value, const char* p, int Len) {
  HT_ASSERT(Value && Len <= MaxKeyLength);
  if (FCount >= FGrowAt) {
    PrepareAdd();
    Index = FindHashed(Hash, p, Len);
  }
  if (Index >= 0) {
    FItems[Index].Value = Value;
    return Index;
  }
  InsertAt(static_cast<uint32_t>(~Index), THtDictionaryItem{Hash, 0, Value});
  return ~Index;
}

int THtUTF8Dictionary::AddHashed(uint32_t Hash, const char* p, void* Value, int Len) {
  HT_ASSERT(Len <= MaxKeyLength);
  PrepareAdd();
  return AddWithIndex(Hash, FindHashed(Hash, p, Len), Value, p, Len);
}

int THtUTF8Dictionary::Add(void* Value) {
  const std::string_view key = KeyOf(Value);
  const int len = static_cast<int>(key.size());
  return AddHashed(HashOf(key.data(), len), key.data(), Value, len);
}

int THtUTF8Dictionary::AddUnique(void* Value) {
  const std::string_view key = KeyOf(Value);
  const uint32_t h = HashOf(key.data(), static_cast<int>(key.size()));
  PrepareAdd();
  const int i = ProbeFree(h);
  InsertAt(static_cast<uint32_t>(~i), THtDictionaryItem{h, 0, Value});
  return ~i;
}

void* THtUTF8Dictionary::Extract(const char* p, int Len) {
  if (Len > MaxKeyLength)
    return nullptr;
  const int i = FindHashed(HashOf(p, Len), p, Len);
  if (i < 0)
    return nullptr;
  void* v = FItems[i].Value;
  RemoveAt(static_cast<uint32_t>(i));
  return v;
}

} // namespace ht
