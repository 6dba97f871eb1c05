// Dictionaries keyed by an hstring that lives inside the value.
//
// Keys are not stored: a slot holds the hash and the value pointer, and the key
// is read out of the value, through a typed accessor (the wrappers below) or a
// byte offset given at construction. A registry derives from a wrapper:
//
//   struct TTag : ht::TObject { ht::hstring Name; int Id = 0; };
//   struct TTags : ht::THtObjectDictionaryOf<TTag, &TTag::Name> {
//     TTags() : THtObjectDictionaryOf(255) {}     // owning, room for 255
//   } tags;
//   auto* t = new TTag; t->Name = u"div"_hs; tags.AddObject(t);
//   TTag* hit = tags.Get(src + pos, len);     // a slice of the source: no hstring, no allocation
//
// The untyped forms take the byte offset of the key from the value pointer;
// measure it on a live object with HtClassFieldOffset rather than offsetof,
// which classes with virtual functions do not portably allow. Offsets of
// THtObjectDictionary count from the TObject subobject. HashOf, FindHashed and
// AddHashed let a caller hash once for a find followed by an add.
//
// Add, Put and AddHashed are one operation here: an existing key gets the new
// value (an owning dictionary deletes a different, non-null old one) and the
// slot is returned. Values are never null. THtThreadObjectDictionary adds a
// readers-writer lock.
#pragma once

#include "htcore/foundation/hash.h"
#include "htcore/foundation/hstring.h"
#include "htcore/foundation/id_dictionary.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <shared_mutex>
#include <type_traits>

namespace ht {

// Hash of a UTF-16 text given as pointer and length.
using THtHashFunc = uint32_t (*)(const char16_t* p, int Len);
// Reads the key out of a stored value.
using THtKeyAccessor = const hstring& (*)(const void* Value);

// Byte distance from Object to Field, measured on a live object:
//   HtClassFieldOffset(static_cast<TObject*>(&sample), &sample.Name)
inline std::ptrdiff_t HtClassFieldOffset(const void* Object, const void* Field) noexcept {
  return static_cast<const char*>(Field) - static_cast<const char*>(Object);
}

// Key accessors for the constructors that take one: an hstring member of a
// TObject class, or of a plain record.
template <class T, auto KeyField> const hstring& HtObjectKey(const void* Value) noexcept {
  return static_cast<const T*>(static_cast<const TObject*>(Value))->*KeyField;
}
template <class Rec, auto KeyField> const hstring& HtRecordKey(const void* Value) noexcept {
  return static_cast<const Rec*>(Value)->*KeyField;
}

namespace detail {

// How a string-keyed dictionary finds the key inside a value.
struct THtKeyAccess {
  THtHashFunc HashFunc;
  std::ptrdiff_t Offset;
  THtKeyAccessor Accessor; // null: read at Offset
  bool InlineSha;          // HashFunc is the default: computed inline, unrolled

  // A null AHashFunc selects ADefault.
  static THtKeyAccess Make(THtHashFunc AHashFunc, THtHashFunc ADefault, std::ptrdiff_t AOffset,
                           THtKeyAccessor AAccessor) noexcept {
    return THtKeyAccess{AHashFunc ? AHashFunc : ADefault, AOffset, AAccessor, AHashFunc == nullptr};
  }
  uint32_t Hash(const char16_t* p, int Len) const {
    return InlineSha ? ShaPerfectHashAsm(p, Len) : HashFunc(p, Len);
  }

  const hstring& Of(const void* Value) const noexcept {
    if (Accessor)
      return Accessor(Value);
    return *reinterpret_cast<const hstring*>(static_cast<const char*>(Value) + Offset);
  }
};

// Keys are short: eight bytes at a time inline beats a call to memcmp.
inline bool HtSameUnits(const char16_t* a, const char16_t* b, size_t n) noexcept {
  for (; n >= 4; n -= 4, a += 4, b += 4) {
    uint64_t x, y;
    std::memcpy(&x, a, sizeof x);
    std::memcpy(&y, b, sizeof y);
    if (x != y)
      return false;
  }
  for (; n > 0; --n)
    if (*a++ != *b++)
      return false;
  return true;
}

inline bool HtKeyEquals(const hstring& Stored, const char16_t* p, int Len) noexcept {
  return Stored.Length() == Len && HtSameUnits(Stored.c_str(), p, static_cast<size_t>(Len));
}

inline bool HtKeyEquals(const hstring& Stored, const hstring& Key) noexcept {
  if (Stored.Pointer() == Key.Pointer())
    return true;
  const size_t n = Stored.size();
  return n == Key.size() && HtSameUnits(Stored.c_str(), Key.c_str(), n);
}

} // namespace detail

class THtObjectDictionary : protected THtIdObjectDictionary {
public:
  // A null AHashFunc selects ShaPerfectHash.
  THtObjectDictionary(int ACapacity, bool AOwnsObjects, std::ptrdiff_t AKeyOffset,
                      THtHashFunc AHashFunc = nullptr);
  THtObjectDictionary(int ACapacity, bool AOwnsObjects, THtKeyAccessor AKeyAccessor,
                      THtHashFunc AHashFunc = nullptr);

  using THtIdObjectDictionary::Capacity;
  using THtIdObjectDictionary::Clear;
  using THtIdObjectDictionary::Count;
  using THtIdObjectDictionary::ForEach;
  using THtIdObjectDictionary::GetNext;
  using THtIdObjectDictionary::GrowAt;
  using THtIdObjectDictionary::IsEmptySlot;
  using THtIdObjectDictionary::Items;
  using THtIdObjectDictionary::Mask;
  using THtIdObjectDictionary::OwnsObjects;
  using THtIdObjectDictionary::SetCapacity;
  using THtIdObjectDictionary::SetOwnsObjects;
  using THtIdObjectDictionary::Traverse;

  THtHashFunc HashFunc() const noexcept { return FKey.HashFunc; }
  uint32_t HashOf(const hstring& Key) const { return FKey.Hash(Key.c_str(), Key.Length()); }
  uint32_t HashOf(const char16_t* p, int Len) const { return FKey.Hash(p, Len); }
  const hstring& KeyOf(const TObject* Value) const noexcept { return FKey.Of(Value); }

  // Slot of the key, or the complement of the slot where it would go.
  int FindHashed(uint32_t Hash, const hstring& Key) const {
    return Probe(Hash,
                 [&](const THtDictionaryItem& s) { return detail::HtKeyEquals(FKey.Of(s.Value), Key); });
  }
  int FindHashed(uint32_t Hash, const char16_t* p, int Len) const {
    return Probe(Hash,
                 [&](const THtDictionaryItem& s) { return detail::HtKeyEquals(FKey.Of(s.Value), p, Len); });
  }
  bool Find(const hstring& Key, TObject*& Value) const {
    const int i = FindHashed(HashOf(Key), Key);
    Value = i >= 0 ? ValueAt(i) : nullptr;
    return i >= 0;
  }
  bool Find(const char16_t* p, int Len, TObject*& Value) const {
    const int i = FindHashed(HashOf(p, Len), p, Len);
    Value = i >= 0 ? ValueAt(i) : nullptr;
    return i >= 0;
  }
  TObject* GetHashed(uint32_t Hash, const hstring& Key) const {
    const int i = FindHashed(Hash, Key);
    return i >= 0 ? ValueAt(i) : nullptr;
  }
  TObject* Get(const hstring& Key) const { return GetHashed(HashOf(Key), Key); }
  TObject* Get(const char16_t* p, int Len) const {
    const int i = FindHashed(HashOf(p, Len), p, Len);
    return i >= 0 ? ValueAt(i) : nullptr;
  }
  bool ContainsKey(const hstring& Key) const { return FindHashed(HashOf(Key), Key) >= 0; }
  bool ContainsKey(const char16_t* p, int Len) const { return FindHashed(HashOf(p, Len), p, Len) >= 0; }

  // Inserts, or replaces the value of an existing key; returns the slot.
  int AddHashed(uint32_t Hash, const hstring& Key, TObject* Value);
  int Add(const hstring& Key, TObject* Value) { return AddHashed(HashOf(Key), Key, Value); }
  int PutHashed(uint32_t Hash, const hstring& Key, TObject* Value) { return AddHashed(Hash, Key, Value); }
  int Put(const hstring& Key, TObject* Value) { return AddHashed(HashOf(Key), Key, Value); }
  // The key is read out of Value.
  int AddObject(TObject* Value);

  // Removes the entry and returns its value, never deleting it; null when absent.
  TObject* ExtractHashed(uint32_t Hash, const hstring& Key);
  TObject* Extract(const hstring& Key) { return ExtractHashed(HashOf(Key), Key); }
  // Removes the entry, deleting its value when owned.
  void RemoveHashed(uint32_t Hash, const hstring& Key);
  void Remove(const hstring& Key) { RemoveHashed(HashOf(Key), Key); }

protected:
  detail::THtKeyAccess FKey;
};

class THtPointerDictionary : protected THtIdPointerDictionary {
public:
  // A null AHashFunc selects ShaPerfectHashAsm.
  THtPointerDictionary(int ACapacity, std::ptrdiff_t AKeyOffset, THtHashFunc AHashFunc = nullptr);
  THtPointerDictionary(int ACapacity, THtKeyAccessor AKeyAccessor, THtHashFunc AHashFunc = nullptr);

  using THtIdPointerDictionary::Capacity;
  using THtIdPointerDictionary::Clear;
  using THtIdPointerDictionary::Count;
  using THtIdPointerDictionary::ForEach;
  using THtIdPointerDictionary::GetNext;
  using THtIdPointerDictionary::GrowAt;
  using THtIdPointerDictionary::IsEmptySlot;
  using THtIdPointerDictionary::Items;
  using THtIdPointerDictionary::Mask;
  using THtIdPointerDictionary::SetCapacity;
  using THtIdPointerDictionary::Traverse;

  THtHashFunc HashFunc() const noexcept { return FKey.HashFunc; }
  uint32_t HashOf(const hstring& Key) const { return FKey.Hash(Key.c_str(), Key.Length()); }
  uint32_t HashOf(const char16_t* p, int Len) const { return FKey.Hash(p, Len); }
  const hstring& KeyOf(const void* Value) const noexcept { return FKey.Of(Value); }

  int FindHashed(uint32_t Hash, const hstring& Key) const {
    return Probe(Hash,
                 [&](const THtDictionaryItem& s) { return detail::HtKeyEquals(FKey.Of(s.Value), Key); });
  }
  int FindHashed(uint32_t Hash, const char16_t* p, int Len) const {
    return Probe(Hash,
                 [&](const THtDictionaryItem& s) { return detail::HtKeyEquals(FKey.Of(s.Value), p, Len); });
  }
  bool Find(const hstring& Key, void*& Value) const {
    const int i = FindHashed(HashOf(Key), Key);
    Value = i >= 0 ? FItems[i].Value : nullptr;
    return i >= 0;
  }
  bool Find(const char16_t* p, int Len, void*& Value) const {
    const int i = FindHashed(HashOf(p, Len), p, Len);
    Value = i >= 0 ? FItems[i].Value : nullptr;
    return i >= 0;
  }
  void* GetHashed(uint32_t Hash, const hstring& Key) const {
    const int i = FindHashed(Hash, Key);
    return i >= 0 ? FItems[i].Value : nullptr;
  }
  void* Get(const hstring& Key) const { return GetHashed(HashOf(Key), Key); }
  void* Get(const char16_t* p, int Len) const {
    const int i = FindHashed(HashOf(p, Len), p, Len);
    return i >= 0 ? FItems[i].Value : nullptr;
  }
  bool ContainsKey(const hstring& Key) const { return FindHashed(HashOf(Key), Key) >= 0; }
  bool ContainsKey(const char16_t* p, int Len) const { return FindHashed(HashOf(p, Len), p, Len) >= 0; }

  int AddHashed(uint32_t Hash, const hstring& Key, void* Value);
  int Add(const hstring& Key, void* Value) { return AddHashed(HashOf(Key), Key, Value); }
  int PutHashed(uint32_t Hash, const hstring& Key, void* Value) { return AddHashed(Hash, Key, Value); }
  int Put(const hstring& Key, void* Value) { return AddHashed(HashOf(Key), Key, Value); }
  int AddPointer(void* Value);

  void* ExtractHashed(uint32_t Hash, const hstring& Key);
  void* Extract(const hstring& Key) { return ExtractHashed(HashOf(Key), Key); }
  // Nothing is owned: removing is extracting.
  void* RemoveHashed(uint32_t Hash, const hstring& Key) { return ExtractHashed(Hash, Key); }
  void* Remove(const hstring& Key) { return ExtractHashed(HashOf(Key), Key); }

protected:
  detail::THtKeyAccess FKey;
};

namespace detail {
template <class T, auto Field>
concept HtHStringKeyOf = requires(const T& t) {
  { t.*Field } -> std::same_as<const hstring&>;
};
} // namespace detail

// THtObjectDictionary of T (a TObject) keyed by its hstring member KeyField, with
// typed results and a probe that reads the key with no indirect call.
// KeyField may be a member of a base class of T.
template <class T, auto KeyField>
requires std::is_base_of_v<TObject, T> && detail::HtHStringKeyOf<T, KeyField>
class THtObjectDictionaryOf : public THtObjectDictionary {
public:
  explicit THtObjectDictionaryOf(int ACapacity = 0, bool AOwnsObjects = true, THtHashFunc AHashFunc = nullptr)
      : THtObjectDictionary(ACapacity, AOwnsObjects, &KeyOfValue, AHashFunc) {}

  static const hstring& KeyOfValue(const void* Value) noexcept { return HtObjectKey<T, KeyField>(Value); }

  int FindHashed(uint32_t Hash, const char16_t* p, int Len) const {
    return Probe(
        Hash, [&](const THtDictionaryItem& s) { return detail::HtKeyEquals(KeyOfValue(s.Value), p, Len); });
  }
  int FindHashed(uint32_t Hash, const hstring& Key) const {
    return Probe(Hash,
                 [&](const THtDictionaryItem& s) { return detail::HtKeyEquals(KeyOfValue(s.Value), Key); });
  }
  T* GetHashed(uint32_t Hash, const hstring& Key) const { return At(FindHashed(Hash, Key)); }
  T* Get(const hstring& Key) const { return At(FindHashed(HashOf(Key), Key)); }
  T* Get(const char16_t* p, int Len) const { return At(FindHashed(HashOf(p, Len), p, Len)); }
  bool Find(const hstring& Key, T*& Value) const {
    const int i = FindHashed(HashOf(Key), Key);
    Value = At(i);
    return i >= 0;
  }
  bool Find(const char16_t* p, int Len, T*& Value) const {
    const int i = FindHashed(HashOf(p, Len), p, Len);
    Value = At(i);
    return i >= 0;
  }
  int AddObject(T* Value) { return THtObjectDictionary::AddObject(Value); }
  T* ExtractHashed(uint32_t Hash, const hstring& Key) {
    return Cast(THtObjectDictionary::ExtractHashed(Hash, Key));
  }
  T* Extract(const hstring& Key) { return Cast(THtObjectDictionary::Extract(Key)); }
  T* GetNext(int& Index) const { return Cast(THtObjectDictionary::GetNext(Index)); }
  template <class F> void ForEach(F&& AFunc) const {
    THtObjectDictionary::ForEach([&](TObject* v) { AFunc(Cast(v)); });
  }

private:
  static T* Cast(TObject* v) noexcept { return static_cast<T*>(v); }
  T* At(int i) const noexcept { return i >= 0 ? Cast(ValueAt(i)) : nullptr; }
};

// THtPointerDictionary of records Rec keyed by their hstring member KeyField.
template <class Rec, auto KeyField>
requires detail::HtHStringKeyOf<Rec, KeyField>
class THtPointerDictionaryOf : public THtPointerDictionary {
public:
  explicit THtPointerDictionaryOf(int ACapacity = 0, THtHashFunc AHashFunc = nullptr)
      : THtPointerDictionary(ACapacity, &KeyOfValue, AHashFunc) {}

  static const hstring& KeyOfValue(const void* Value) noexcept { return HtRecordKey<Rec, KeyField>(Value); }

  int FindHashed(uint32_t Hash, const char16_t* p, int Len) const {
    return Probe(
        Hash, [&](const THtDictionaryItem& s) { return detail::HtKeyEquals(KeyOfValue(s.Value), p, Len); });
  }
  int FindHashed(uint32_t Hash, const hstring& Key) const {
    return Probe(Hash,
                 [&](const THtDictionaryItem& s) { return detail::HtKeyEquals(KeyOfValue(s.Value), Key); });
  }
  Rec* GetHashed(uint32_t Hash, const hstring& Key) const { return At(FindHashed(Hash, Key)); }
  Rec* Get(const hstring& Key) const { return At(FindHashed(HashOf(Key), Key)); }
  Rec* Get(const char16_t* p, int Len) const { return At(FindHashed(HashOf(p, Len), p, Len)); }
  bool Find(const char16_t* p, int Len, Rec*& Value) const {
    const int i = FindHashed(HashOf(p, Len), p, Len);
    Value = At(i);
    return i >= 0;
  }
  bool Find(const hstring& Key, Rec*& Value) const {
    const int i = FindHashed(HashOf(Key), Key);
    Value = At(i);
    return i >= 0;
  }
  int AddPointer(Rec* Value) { return THtPointerDictionary::AddPointer(Value); }
  Rec* Extract(const hstring& Key) { return static_cast<Rec*>(THtPointerDictionary::Extract(Key)); }
  Rec* Remove(const hstring& Key) { return Extract(Key); }
  Rec* GetNext(int& Index) const { return static_cast<Rec*>(THtPointerDictionary::GetNext(Index)); }
  template <class F> void ForEach(F&& AFunc) const {
    THtPointerDictionary::ForEach([&](void* v) { AFunc(static_cast<Rec*>(v)); });
  }

private:
  Rec* At(int i) const noexcept { return i >= 0 ? static_cast<Rec*>(FItems[i].Value) : nullptr; }
};

// A THtObjectDictionary shared between threads: the operations that take a key
// hold the lock (shared for ContainsKey, Find, Get and Traverse; exclusive for
// AddObject, Add, Put, Extract and Remove). The ...Hashed forms do not lock:
// a caller using them holds Lock() itself. The hash is computed before the
// lock is taken. A value obtained under the read lock stays valid only as
// long as no writer removes it.
class THtThreadObjectDictionary : protected THtObjectDictionary {
public:
  // A null AHashFunc selects ShaPerfectHashAsm.
  THtThreadObjectDictionary(int ACapacity, bool AOwnsObjects, std::ptrdiff_t AKeyOffset,
                            THtHashFunc AHashFunc = nullptr);
  THtThreadObjectDictionary(int ACapacity, bool AOwnsObjects, THtKeyAccessor AKeyAccessor,
                            THtHashFunc AHashFunc = nullptr);

  using THtObjectDictionary::AddHashed;
  using THtObjectDictionary::Capacity;
  using THtObjectDictionary::Clear;
  using THtObjectDictionary::Count;
  using THtObjectDictionary::ExtractHashed;
  using THtObjectDictionary::FindHashed;
  using THtObjectDictionary::GetHashed;
  using THtObjectDictionary::GetNext;
  using THtObjectDictionary::GrowAt;
  using THtObjectDictionary::HashOf;
  using THtObjectDictionary::KeyOf;
  using THtObjectDictionary::OwnsObjects;
  using THtObjectDictionary::PutHashed;
  using THtObjectDictionary::RemoveHashed;
  using THtObjectDictionary::SetCapacity;

  std::shared_mutex& Lock() const noexcept { return FLock; }

  bool ContainsKey(const hstring& Key) const {
    const uint32_t h = HashOf(Key);
    std::shared_lock lock(FLock);
    return FindHashed(h, Key) >= 0;
  }
  bool Find(const hstring& Key, TObject*& Value) const {
    const uint32_t h = HashOf(Key);
    std::shared_lock lock(FLock);
    const int i = FindHashed(h, Key);
    Value = i >= 0 ? ValueAt(i) : nullptr;
    return i >= 0;
  }
  bool Find(const char16_t* p, int Len, TObject*& Value) const {
    const uint32_t h = HashOf(p, Len);
    std::shared_lock lock(FLock);
    const int i = FindHashed(h, p, Len);
    Value = i >= 0 ? ValueAt(i) : nullptr;
    return i >= 0;
  }
  TObject* Get(const hstring& Key) const {
    const uint32_t h = HashOf(Key);
    std::shared_lock lock(FLock);
    return GetHashed(h, Key);
  }
  void Traverse(void* Data, THtObjectTraverseProc Callback) const {
    std::shared_lock lock(FLock);
    THtObjectDictionary::Traverse(Data, Callback);
  }

  int AddObject(TObject* Value) {
    const hstring& key = KeyOf(Value);
    const uint32_t h = HashOf(key);
    std::unique_lock lock(FLock);
    return AddHashed(h, key, Value);
  }
  int Add(const hstring& Key, TObject* Value) {
    const uint32_t h = HashOf(Key);
    std::unique_lock lock(FLock);
    return AddHashed(h, Key, Value);
  }
  int Put(const hstring& Key, TObject* Value) { return Add(Key, Value); }
  TObject* Extract(const hstring& Key) {
    const uint32_t h = HashOf(Key);
    std::unique_lock lock(FLock);
    return ExtractHashed(h, Key);
  }
  void Remove(const hstring& Key) {
    const uint32_t h = HashOf(Key);
    std::unique_lock lock(FLock);
    RemoveHashed(h, Key);
  }

private:
  mutable std::shared_mutex FLock;
};

} // namespace ht
