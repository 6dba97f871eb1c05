// THtStringList and THtSingleList.
#include "htcore/foundation/named_lists.h"

#include <memory>

namespace ht {

THtNameObjectPair::~THtNameObjectPair() {
  if (Owner)
    delete Value;
}

std::ptrdiff_t THtNameObjectPair::NameOffset() noexcept {
  static const std::ptrdiff_t offset = [] {
    THtNameObjectPair sample(false, hstring());
    return HtClassFieldOffset(static_cast<TObject*>(&sample), &sample.Name);
  }();
  return offset;
}

THtStringList::THtStringList(int ACapacity, bool AFlag)
    : THtObjectDictionary(ACapacity, true, THtNameObjectPair::NameOffset()), FFlag(AFlag) {}

THtNameObjectPair* THtStringList::Add(const hstring& Key, TObject* Value) {
  const uint32_t h = HashOf(Key);
  const int i = FindHashed(h, Key);
  if (i >= 0) {
    // Reuse the pair: a fresh one would free an object we may be handed again.
    auto* pair = static_cast<THtNameObjectPair*>(ValueAt(i));
    TObject* old = pair->Value;
    pair->Value = Value;
    if (pair->Owner && old != Value)
      delete old;
    return pair;
  }
  auto pair = std::make_unique<THtNameObjectPair>(FFlag, Key, Value);
  AddHashed(h, pair->Name, pair.get());
  return pair.release();
}

namespace {

std::ptrdiff_t single_key_offset() {
  static const std::ptrdiff_t offset = [] {
    THtSingleRec sample(hstring(), 0);
    return HtClassFieldOffset(static_cast<TObject*>(&sample), &sample.Key);
  }();
  return offset;
}

} // namespace

// A request of 8 gives the 16 slots the list starts with.
THtSingleList::THtSingleList() : THtObjectDictionary(8, true, single_key_offset()) {}

void THtSingleList::AddWidth(const hstring& Key, float Value) {
  const uint32_t h = HashOf(Key);
  const int i = FindHashed(h, Key);
  if (i >= 0) {
    static_cast<THtSingleRec*>(ValueAt(i))->Value = Value;
    return;
  }
  auto rec = std::make_unique<THtSingleRec>(Key, Value);
  AddHashed(h, rec->Key, rec.get());
  rec.release();
}

float THtSingleList::GetWidth(const hstring& Key) const {
  auto* rec = static_cast<THtSingleRec*>(Get(Key));
  return rec ? rec->Value : -1.0f;
}

float THtSingleList::GetWidth(const char16_t* p, int Len) const {
  auto* rec = static_cast<THtSingleRec*>(Get(p, Len));
  return rec ? rec->Value : -1.0f;
}

} // namespace ht
