#include "htcore/foundation/string_trie.h"

#include <cstdlib>
#include <new>
#include <utility>
#include <vector>

namespace ht {

namespace {

PHtStringTrieItems NewItems() {
  void* p = std::calloc(256, sizeof(THtStringTrieItem*));
  if (!p)
    throw std::bad_alloc();
  return static_cast<PHtStringTrieItems>(p);
}

// Moves the children of an item's slot array onto the stack and frees the array.
void Detach(PHtStringTrieItems& items, std::vector<THtStringTrieItem*>& stack) {
  for (int i = 0; i < 256; ++i)
    if (items[i])
      stack.push_back(items[i]);
  std::free(items);
  items = nullptr;
}

} // namespace

THtStringTrieItem::~THtStringTrieItem() {
  FreeBelow();
  if (FOwnsObject)
    delete Value;
}

// A long key is a chain two items deep per unit; freeing it by recursion would
// use stack in proportion to the key, so the items go through a work list.
void THtStringTrieItem::FreeBelow() noexcept {
  if (!Items)
    return;
  std::vector<THtStringTrieItem*> stack;
  try {
    Detach(Items, stack);
    while (!stack.empty()) {
      THtStringTrieItem* item = stack.back();
      stack.pop_back();
      if (item->Items)
        Detach(item->Items, stack);
      delete item; // has no items left: its destructor does not descend
    }
  } catch (const std::bad_alloc&) {
    // No memory for the work list: fall back to the depth of the key itself.
    for (THtStringTrieItem* item : stack)
      delete item;
    if (Items) {
      for (int i = 0; i < 256; ++i)
        delete Items[i];
      std::free(Items);
      Items = nullptr;
    }
  }
}

void THtStringTrieItem::Clear() {
  FreeBelow();
  SetValue(nullptr);
}

THtStringTrieItem* THtStringTrieItem::Force(unsigned Byte) {
  if (!Items)
    Items = NewItems();
  THtStringTrieItem*& slot = Items[Byte & 0xFF];
  if (!slot)
    slot = new THtStringTrieItem(FOwnsObject);
  return slot;
}

void THtStringTrieItem::SetValue(TObject* AValue) {
  if (Value == AValue)
    return;
  TObject* old = Value;
  Value = AValue;
  if (FOwnsObject)
    delete old;
}

void THtStringTrieItem::Assign(const THtStringTrieItem& Source) {
  if (&Source == this)
    return;
  Clear();
  std::vector<std::pair<const THtStringTrieItem*, THtStringTrieItem*>> work{{&Source, this}};
  while (!work.empty()) {
    auto [src, dst] = work.back();
    work.pop_back();
    dst->Value = src->Value;
    if (!src->Items)
      continue;
    for (int i = 0; i < 256; ++i)
      if (src->Items[i])
        work.emplace_back(src->Items[i], dst->Force(static_cast<unsigned>(i)));
  }
}

void THtStringTrie::Add(std::u16string_view Key, TObject* Value) {
  THtStringTrieItem* item = &FRoot;
  for (char16_t c : Key)
    item = item->Force(c >> 8)->Force(c & 0xFF);
  item->SetValue(Value);
}

bool THtStringTrie::FindPChar(const char16_t* P, int Len, TObject*& Value) const {
  const THtStringTrieItem* item = &FRoot;
  for (int i = 0; i < Len; ++i) {
    char16_t c = P[i];
    item = item->Child(c >> 8);
    if (!item)
      break;
    item = item->Child(c & 0xFF);
    if (!item)
      break;
  }
  Value = item ? item->Value : nullptr;
  return Value != nullptr;
}

bool THtStringTrie::Find(std::u16string_view Key, TObject*& Value) const {
  return FindPChar(Key.data(), static_cast<int>(Key.size()), Value);
}

bool THtStringTrie::ContainsKey(std::u16string_view Key) const {
  TObject* v;
  return Find(Key, v);
}

void THtStringTrie::Assign(const THtStringTrie& Source) { FRoot.Assign(Source.FRoot); }

} // namespace ht
