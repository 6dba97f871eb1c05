// THtStringTrie: a map from UTF-16 text to objects, walked unit by unit.
//
// Each code unit costs two steps, its high byte and then its low byte, each an
// index into a 256-slot array that an item allocates only when something is
// stored below it. Lookups never hash and never compare whole keys, which
// suits many short keys looked up straight out of a larger text:
//
//   ht::THtStringTrie trie(/*AOwnsObjects=*/true);
//   trie.Add(u"color", new TProp);
//   ht::TObject* v;
//   if (trie.FindPChar(text + pos, len, v)) ...
//
// A key is present only where a value was stored: a prefix of a stored key is
// absent. An owning trie frees a value when it is replaced and at the end.
#pragma once

#include "htcore/foundation/object.h"

#include <string_view>

namespace ht {

class THtStringTrieItem;
using PHtStringTrieItems = THtStringTrieItem**; // 256 slots

class THtStringTrieItem {
public:
  explicit THtStringTrieItem(bool AOwnsObject) : FOwnsObject(AOwnsObject) {}
  THtStringTrieItem(const THtStringTrieItem&) = delete;
  THtStringTrieItem& operator=(const THtStringTrieItem&) = delete;
  // Frees the items below without recursion, so keys of any length are safe.
  ~THtStringTrieItem();

  // Replaces this item's value and everything below it by a copy of Source's.
  // Values are shared, not cloned: at most one of the two may own them.
  void Assign(const THtStringTrieItem& Source);
  // Drops the items below and the value (freed when owned).
  void Clear();

  bool OwnsObject() const noexcept { return FOwnsObject; }
  // The item below for one byte, or null.
  THtStringTrieItem* Child(unsigned Byte) const noexcept { return Items ? Items[Byte & 0xFF] : nullptr; }
  // The item below for one byte, created when missing.
  THtStringTrieItem* Force(unsigned Byte);
  // Stores a value; an owning item frees the value it replaces.
  void SetValue(TObject* AValue);

  TObject* Value = nullptr;
  PHtStringTrieItems Items = nullptr;

private:
  void FreeBelow() noexcept;

  bool FOwnsObject;
};

class THtStringTrie {
public:
  explicit THtStringTrie(bool AOwnsObjects = false) : FRoot(AOwnsObjects), FOwnsObjects(AOwnsObjects) {}
  THtStringTrie(const THtStringTrie&) = delete;
  THtStringTrie& operator=(const THtStringTrie&) = delete;

  // Stores Value under Key (the empty key is the root); a present value is replaced.
  void Add(std::u16string_view Key, TObject* Value);
  bool Find(std::u16string_view Key, TObject*& Value) const;
  bool ContainsKey(std::u16string_view Key) const;
  // Looks up Len units at P; a Len below 1 looks at the root.
  bool FindPChar(const char16_t* P, int Len, TObject*& Value) const;
  // Copies Source's keys and shares its values (see THtStringTrieItem::Assign).
  void Assign(const THtStringTrie& Source);
  void Clear() { FRoot.Clear(); }

  bool OwnsObjects() const noexcept { return FOwnsObjects; }
  const THtStringTrieItem& Root() const noexcept { return FRoot; }

private:
  THtStringTrieItem FRoot;
  bool FOwnsObjects;
};

} // namespace ht
