// The cascade's ordering: TCSSWeightList collects the declarations that reach
// one element, sorted by ascending weight, ties broken by the rule's order.
//
// A sheet fills it (TCSSStyleSheet::GetElementSelectors for its rules,
// GetAllSelectors for an element's own sheet); the element style then walks it
// from the end, so the last entry of a property is the winning one:
//
//   ht::TCSSWeightList list;
//   ht::HTML4StyleSheet()->GetElementSelectors(node, list, &ht::HTML4StyleSheet()->Main, 0);
//   sheet.GetElementSelectors(node, list, &sheet.Main, 0);
//   style->ApplyValue(list, false);
//
// Weights: 0 for the default sheets, the selector's specificity for author
// rules, 0xFF000000 for inline style; an !important value has the top byte set
// on top of its specificity.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <unordered_set>
#include <vector>

namespace ht {

struct TCSSValue;
class TCSSElement;

// The top byte an !important value gets, and the weight of inline style.
inline constexpr uint32_t kCSSImportantWeight = 0xFF000000u;

struct TCSSWeightItem {
  uint32_t Weight;
  int32_t Order;
  const TCSSValue* Value;
};

class TCSSWeightList {
public:
  // Inserts behind the entries of the same weight whose Order does not exceed
  // Order; a Value already present under the same weight is not added again.
  void AddValue(uint32_t Weight, int32_t Order, const TCSSValue* Value);
  const TCSSValue* GetValue(int Index) const { return Item(Index).Value; }
  const TCSSWeightItem& Item(int Index) const {
    Settle();
    return FList[static_cast<std::size_t>(Index)];
  }
  int Count() const noexcept { return static_cast<int>(FList.size()); }
  bool Empty() const noexcept { return FList.empty(); }
  // Empties the list and keeps its memory, so one list serves a whole walk.
  void Clear() noexcept {
    FList.clear();
    FSeen.clear();
    FUnsorted = false;
  }

  auto begin() const {
    Settle();
    return FList.begin();
  }
  auto end() const {
    Settle();
    return FList.end();
  }

private:
  struct TSeenKey {
    const TCSSValue* Value;
    uint32_t Weight;
    friend bool operator==(const TSeenKey&, const TSeenKey&) = default;
  };
  struct TSeenHash {
    std::size_t operator()(const TSeenKey& K) const noexcept {
      return std::hash<const void*>()(K.Value) ^ (std::size_t{K.Weight} * 0x9E3779B97F4A7C15u);
    }
  };

  // Sorts what a long list took in unsorted (by weight, then Order, equal
  // entries in the order they came).
  void Settle() const;

  mutable std::vector<TCSSWeightItem> FList;
  // Past a few dozen entries the duplicate test goes through this set, which
  // then holds every entry, and new entries are appended and sorted once when
  // the list is read: many rules of one weight stay O(n log n).
  std::unordered_set<TSeenKey, TSeenHash> FSeen;
  mutable bool FUnsorted = false;
};

// Sets the states that follow from the tree (first-child, last-child,
// only-child, their of-type forms, empty, and link for a or area with an href
// that the host has not marked visited) in CurrentPC of Root and every
// element below it, and keeps those a host sets (hover, focus ...). Run it
// after the tree changes shape; a loop, so any depth is fine.
void SetStructuralPseudoClasses(TCSSElement* Root);

} // namespace ht
