// Pointer dictionaries whose keys are not hstrings.
//
// THtVirtualStringDictionary: the key is a slice of a larger UTF-16 text,
// held in the record as a text pointer with its 32-bit length in the four
// bytes right before it (THtTextSlice has that layout). Parsers use it to
// intern names straight from the source.
//
//   struct TName { ht::THtTextSlice Key; int Id; };
//   ht::THtVirtualStringDictionary names(0, offsetof(TName, Key) + ht::THtTextSlice::TextOffset);
//   uint32_t h = names.HashOf(p, n);
//   int i = names.FindHashedVirtual(h, p, n);
//   if (i < 0) names.AddHashedVirtual(h, i, new TName{{0, n, p}, 1}, p, n);
//
// THtVirtualDictionary leaves everything about keys to two callbacks.
// THtUTF8Dictionary keys records by length-prefixed UTF-8 bytes (at most 255;
// THtShortUTF8 has that layout). AddUnique skips key comparison for bulk
// loading of data known to be unique. None of these own their values.
#pragma once

#include "htcore/foundation/hash.h"
#include "htcore/foundation/hstring.h"
#include "htcore/foundation/id_dictionary.h"
#include "htcore/foundation/string_dictionary.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace ht {

// A text slice as THtVirtualStringDictionary reads it: Len sits right before Text.
struct THtTextSlice {
  uint32_t Spare;
  int32_t Len;
  const char16_t* Text;
  static constexpr std::size_t TextOffset = 8; // from the start of the slice
};
static_assert(offsetof(THtTextSlice, Text) == THtTextSlice::TextOffset &&
              offsetof(THtTextSlice, Len) == THtTextSlice::TextOffset - 4);

// Up to N bytes of UTF-8 with their length in the byte before them.
template <std::size_t N = 255> struct THtShortUTF8 {
  static_assert(N >= 1 && N <= 255, "the length must fit in one byte");
  uint8_t Len = 0;
  char Text[N];
  static constexpr std::size_t TextOffset = 1;

  void Assign(std::string_view s) noexcept {
    Len = static_cast<uint8_t>(s.size() < N ? s.size() : N);
    std::memcpy(Text, s.data(), Len);
  }
  std::string_view View() const noexcept { return std::string_view(Text, Len); }
};

class THtVirtualStringDictionary : protected THtIdPointerDictionary {
public:
  // AKeyOffset is the byte offset of the text pointer inside a record; a null
  // AHashFunc selects ShaPerfectHashAsm.
  THtVirtualStringDictionary(int ACapacity, std::ptrdiff_t AKeyOffset, THtHashFunc AHashFunc = nullptr);

  using THtIdPointerDictionary::Capacity;
  using THtIdPointerDictionary::Clear;
  using THtIdPointerDictionary::Count;
  using THtIdPointerDictionary::ForEach;
  using THtIdPointerDictionary::GetNext;
  using THtIdPointerDictionary::GrowAt;
  using THtIdPointerDictionary::Items;
  using THtIdPointerDictionary::Mask;
  using THtIdPointerDictionary::SetCapacity;
  using THtIdPointerDictionary::Traverse;

  uint32_t HashOf(const char16_t* p, int Len) const { return FHashFunc(p, Len); }
  std::u16string_view KeyOf(const void* Value) const noexcept {
    const char* at = static_cast<const char*>(Value) + FKeyOffset;
    const char16_t* text;
    int32_t len;
    std::memcpy(&text, at, sizeof text);
    std::memcpy(&len, at - sizeof len, sizeof len);
    return std::u16string_view(text, len > 0 ? static_cast<size_t>(len) : 0);
  }

  // Slot of the key, or the complement of the slot where it would go.
  int FindHashedVirtual(uint32_t Hash, const char16_t* p, int Len) const {
    return Probe(Hash, [&](const THtDictionaryItem& s) {
      const std::u16string_view k = KeyOf(s.Value);
      return k.size() == static_cast<size_t>(Len) &&
             (Len == 0 || std::memcmp(k.data(), p, k.size() * sizeof(char16_t)) == 0);
    });
  }
  // Stores Value at the outcome Index of the FindHashedVirtual just made:
  // replaces at a found slot, inserts at a complement. Growth forces a new
  // probe with p and Len. Returns the slot.
  int AddHashedVirtual(uint32_t Hash, int Index, void* Value, const char16_t* p, int Len);
  // The key is read out of Value.
  int AddPointer(void* Value);

  bool Find(const char16_t* p, int Len, void*& Value) const {
    const int i = FindHashedVirtual(HashOf(p, Len), p, Len);
    Value = i >= 0 ? FItems[i].Value : nullptr;
    return i >= 0;
  }
  void* Get(const char16_t* p, int Len) const {
    const int i = FindHashedVirtual(HashOf(p, Len), p, Len);
    return i >= 0 ? FItems[i].Value : nullptr;
  }
  void* Extract(const char16_t* p, int Len);

private:
  THtHashFunc FHashFunc;
  std::ptrdiff_t FKeyOffset;
};

using THtVirtualHashFunc = uint32_t (*)(const void* Value);
using THtVirtualEqualFunc = bool (*)(const void* Stored, const void* Probe);

class THtVirtualDictionary : protected THtIdPointerDictionary {
public:
  THtVirtualDictionary(THtVirtualHashFunc HashOf, THtVirtualEqualFunc Equal, int ACapacity = 0);

  using THtIdPointerDictionary::Capacity;
  using THtIdPointerDictionary::Clear;
  using THtIdPointerDictionary::Count;
  using THtIdPointerDictionary::ForEach;
  using THtIdPointerDictionary::GetNext;
  using THtIdPointerDictionary::Items;
  using THtIdPointerDictionary::Mask;
  using THtIdPointerDictionary::SetCapacity;
  using THtIdPointerDictionary::Traverse;

  uint32_t HashOf(const void* Value) const { return FHashOf(Value); }
  // Slot of a stored value equal to Value, or the complement of where it goes.
  int FindHashed(uint32_t Hash, const void* Value) const {
    return Probe(Hash, [&](const THtDictionaryItem& s) { return FEqual(s.Value, Value); });
  }
  // The stored value equal to Value, or null.
  void* Find(const void* Value) const {
    const int i = FindHashed(FHashOf(Value), Value);
    return i >= 0 ? FItems[i].Value : nullptr;
  }
  // Inserts and returns the slot; an equal stored value is overwritten and the
  // complement of its slot returned.
  int Add(void* Value);
  void* Extract(const void* Value);

private:
  THtVirtualHashFunc FHashOf;
  THtVirtualEqualFunc FEqual;
};

// Hash of bytes given as pointer and length.
using THtByteHashFunc = uint32_t (*)(const char* p, int Len);

class THtUTF8Dictionary : protected THtIdPointerDictionary {
public:
  static constexpr int MaxKeyLength = 255;

  // AKeyOffset is the byte offset of the key text inside a record; the byte
  // before it holds the length. A null AHashFunc selects ShaPerfectHashANSI.
  THtUTF8Dictionary(int ACapacity, std::ptrdiff_t AKeyOffset, THtByteHashFunc AHashFunc = nullptr);

  using THtIdPointerDictionary::Capacity;
  using THtIdPointerDictionary::Clear;
  using THtIdPointerDictionary::Count;
  using THtIdPointerDictionary::ForEach;
  using THtIdPointerDictionary::GetNext;
  using THtIdPointerDictionary::GrowAt;
  using THtIdPointerDictionary::Items;
  using THtIdPointerDictionary::Mask;
  using THtIdPointerDictionary::SetCapacity;
  using THtIdPointerDictionary::Traverse;

  uint32_t HashOf(const char* p, int Len) const { return FHashFunc(p, Len); }
  std::string_view KeyOf(const void* Value) const noexcept {
    const char* at = static_cast<const char*>(Value) + FKeyOffset;
    return std::string_view(at, static_cast<unsigned char>(at[-1]));
  }

  int FindHashed(uint32_t Hash, const char* p, int Len) const {
    return Probe(Hash, [&](const THtDictionaryItem& s) {
      const std::string_view k = KeyOf(s.Value);
      return k.size() == static_cast<size_t>(Len) && (Len == 0 || std::memcmp(k.data(), p, k.size()) == 0);
    });
  }
  // A key longer than 255 bytes cannot be stored, so it is never found.
  bool Find(const char* p, int Len, void*& Value) const {
    const int i = Len <= MaxKeyLength ? FindHashed(HashOf(p, Len), p, Len) : -1;
    Value = i >= 0 ? FItems[i].Value : nullptr;
    return i >= 0;
  }
  bool Find(const UTF8String& Key, void*& Value) const { return Find(Key.c_str(), Key.Length(), Value); }
  void* GetHashed(uint32_t Hash, const char* p, int Len) const {
    if (Len > MaxKeyLength)
      return nullptr;
    const int i = FindHashed(Hash, p, Len);
    return i >= 0 ? FItems[i].Value : nullptr;
  }
  void* Get(const char* p, int Len) const { return GetHashed(HashOf(p, Len), p, Len); }
  void* Get(std::string_view Key) const { return Get(Key.data(), static_cast<int>(Key.size())); }

  // Stores Value at the outcome Index of the FindHashed just made (see
  // THtVirtualStringDictionary::AddHashedVirtual). Returns the slot.
  int AddWithIndex(uint32_t Hash, int Index, void* Value, const char* p, int Len);
  // Inserts, or replaces the value of an existing key; returns the slot.
  int AddHashed(uint32_t Hash, const char* p, void* Value, int Len);
  int PutHashed(uint32_t Hash, const char* p, void* Value, int Len) { return AddHashed(Hash, p, Value, Len); }
  // The key is read out of Value.
  int Add(void* Value);
  int Put(void* Value) { return Add(Value); }
  // Inserts without looking for an equal key: entries with equal keys may
  // then coexist, and Find answers the first one added.
  int AddUnique(void* Value);
  void* Extract(const char* p, int Len);

private:
  THtByteHashFunc FHashFunc;
  std::ptrdiff_t FKeyOffset;
};

} // namespace ht
