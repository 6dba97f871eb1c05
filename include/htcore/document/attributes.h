// THtAttributes: the attribute set of a document node and of a parser item.
//
// Attributes are kept sorted by name (binary search), so source order is not
// kept. Without CaseSensitive the stored names are lower case and lookups
// ignore ASCII case. Only the first Count entries of List are valid: Clear sets
// Count to 0 and keeps the array and its strings for the next item.
//
//   ht::THtAttributes a;
//   a.SetAttribute(u"HREF"_hs, u"x.html"_hs);   // stored as "href"
//   a.GetAttribute(u"href"_hs);                 // "x.html"
//   for (const ht::THtAttribute& at : a) ...    // in name order
//   a.AsString();                               // href="x.html"
#pragma once

#include "htcore/foundation/hstring.h"
#include "htcore/foundation/node_pool.h"
#include "htcore/foundation/object.h"

#include <cstdint>
#include <vector>

namespace ht {

class TFastString;
class TFastRawString;
class THtAttributeBatch;

struct THtAttribute {
  hstring Name;
  hstring Value;
};

class THtAttributes : public TObject {
public:
  HT_POOLED_CLASS

  THtAttributes() = default;
  explicit THtAttributes(bool ACaseSensitive) : CaseSensitive(ACaseSensitive) {}

  bool CaseSensitive = false;
  int Count = 0;
  std::vector<THtAttribute, TPoolAllocator<THtAttribute>> List; // entries from Count on are spare

  // Binary search. Index is the position found, or where the name belongs.
  // An empty set or an empty name gives false with Index 0.
  bool Find(const hstring& AttrName, int& Index) const;
  int Indexof(const hstring& AttrName) const; // -1 if missing
  bool HasAttribute(const hstring& AttrName) const { return Indexof(AttrName) >= 0; }

  // Inserts without testing for a duplicate; returns the index used.
  int Add(const hstring& AttrName, const hstring& AttrValue);

  hstring GetAttribute(const hstring& Name) const;
  // Replaces the value of an existing name, or inserts.
  void SetAttribute(const hstring& Name, const hstring& Value) { SetAttributeEx(Name, Value); }
  // As SetAttribute; tells whether something changed.
  bool SetAttributeEx(const hstring& Name, const hstring& Value);
  // Removes the attribute; false if there was none.
  bool ClearAttr(const hstring& Name);
  void Delete(int Index);
  void Clear() { Count = 0; }
  // Copies names, values and CaseSensitive.
  void Assign(const THtAttributes& Source);

  const hstring& GetName(int Index) const { return GetItem(Index).Name; }
  const hstring& GetValue(int Index) const { return GetItem(Index).Value; }
  void SetValue(int Index, const hstring& Value);
  const THtAttribute& GetItem(int Index) const;

  // name="value" pairs joined by one blank, values encoded for attributes.
  hstring AsString() const;
  // Each pair behind a blank. Without CaseSensitive an attribute whose value
  // equals its name is written bare: checked="checked" becomes checked.
  void FastAsString(TFastString& FS) const;
  // As FastAsString in UTF-8, never shortened.
  void FastAsUTF8String(TFastRawString& FS) const;

  const THtAttribute* begin() const { return List.data(); }
  const THtAttribute* end() const { return List.data() + Count; }

private:
  friend class THtAttributeBatch;
  int InsertAt(int Index, hstring AttrName, hstring AttrValue);
};

// The attributes of one tag or object as a reader meets them, applied to a
// set in one sort when the item is complete: n attributes cost O(n log n),
// where inserting them one by one into the sorted array costs O(n²).
//
//   ht::THtAttributeBatch b;
//   b.Add(u"b"_hs, u"1"_hs, ht::THtAttributeBatch::abKeepFirst);
//   b.Add(u"a"_hs, u"2"_hs, ht::THtAttributeBatch::abReplace);
//   b.MoveTo(set);   // as set.Add / set.SetAttribute one by one, in order
class THtAttributeBatch {
public:
  // What an attribute does to an earlier one of the same name: a valued HTML
  // or XML attribute leaves it (Add after a failed Find), a bare attribute or
  // a JSON key replaces its value (SetAttribute).
  enum TRule : uint8_t { abKeepFirst, abReplace };

  // KeepName: the name keeps its case in a case-insensitive set, and a later
  // replacing attribute also gives the stored name its own spelling.
  void Add(const hstring& Name, const hstring& Value, TRule Rule, bool KeepName = false) {
    FItems.push_back({Name, Value, Rule, KeepName});
  }
  bool Empty() const { return FItems.empty(); }
  size_t Size() const { return FItems.size(); }
  void Clear() { FItems.clear(); }
  // Applies the attributes, in the order added, to Target, whose own entries
  // count as earlier ones; the batch is empty afterwards.
  void MoveTo(THtAttributes& Target);

private:
  struct TItem {
    hstring Name;
    hstring Value;
    TRule Rule;
    bool KeepName;
  };
  struct TKey {
    const char16_t* Name;
    uint32_t Len;
    uint32_t Index; // below the target's Count: its entry; else FItems[Index - Count]
  };
  std::vector<TItem> FItems;
  std::vector<TKey> FKeys;
};

} // namespace ht
