// TCSSStyleSet: a small sorted set of CSS name-value pairs, for callers that
// edit styles as text (design tools, scripts setting element.style).
//
//   ht::TCSSStyleSet s;
//   s.SetAsString(u"Color: red; margin-left:4px; background: url(a;b.png)"_hs);
//   s.GetValue(u"color"_hs);               // "red" (names fold to lower case)
//   s.GetPixels(u"margin-left"_hs);        // 4
//   s.SetValue(u"color"_hs, {});           // an empty value removes the name
//   s.GetAsString();                       // "background:url(a;b.png);margin-left:4px;"
//
// Names are kept in ordinal order, so two sets compare and merge by walking.
#pragma once

#include "htcore/foundation/hstring.h"

#include <vector>

namespace ht {

struct TCSSStyleSetRec {
  hstring Name;
  hstring Value;
  friend bool operator==(const TCSSStyleSetRec&, const TCSSStyleSetRec&) = default;
};

struct TCSSStyleSet {
  std::vector<TCSSStyleSetRec> Items; // sorted by Name, ordinal

  // Binary search; on a miss Index is where Name would be inserted.
  bool Find(const hstring& Name, int& Index) const;
  hstring GetValue(const hstring& Name) const;
  // Adds or replaces; an empty Value removes the name.
  void SetValue(const hstring& Name, const hstring& Value);
  bool HasProperty(const hstring& Name) const;
  // Whether Name is present with exactly Value.
  bool CheckValue(const hstring& Name, const hstring& Value) const;
  void Delete(const hstring& Name);
  void Delete(int Index);
  void Clear() { Items.clear(); }
  int Count() const { return static_cast<int>(Items.size()); }
  void Assign(const TCSSStyleSet& Other) { Items = Other.Items; }
  // Adds or replaces, keeping an empty value.
  void AddValue(const hstring& Name, const hstring& Value);
  // Adds the declarations of a text such as "name:value; other: value2"; a
  // ";" inside quotes or brackets does not end a value.
  void AddString(const hstring& Text);
  // Adds the pairs of Other whose names are missing here.
  void AddInherited(const TCSSStyleSet& Other);
  // Adds or replaces every pair of Other.
  void AddOverride(const TCSSStyleSet& Other);
  // Removes every pair that Other holds with the same value: what remains is
  // what this set says beyond Other.
  void IntersectWith(const TCSSStyleSet& Other);
  // "name:value;" for each pair: the form SetAsString reads back.
  hstring GetAsString() const;
  void SetAsString(const hstring& Text);
  // "name: value; name2: value2", for a style attribute.
  hstring AsStyleAttr() const;
  // The value decoded as a CSS length without an element: pixels, 0 for auto,
  // percentages and what is no length.
  float GetPixels(const hstring& Name) const;

  friend bool operator==(const TCSSStyleSet&, const TCSSStyleSet&) = default;
};

} // namespace ht
