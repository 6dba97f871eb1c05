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
  const TCSSValue* GetValue(int Index) const { return FList[static_cast<std::size_t>(Index)].Value; }
  const TCSSWeightItem& Item(int Index) const { return FList[static_cast<std::size_t>(Index)]; }
  int Count() const noexcept { return static_cast<int>(FList.size()); }
  bool Empty() const noexcept { return FList.empty(); }
  // Empties the list and keeps its memory, so one list serves a whole walk.
  void Clear() noexcept { FList.clear(); }

  auto begin() const noexcept { return FList.begin(); }
  auto end() const noexcept { return FList.end(); }

private:
  std::vector<TCSSWeightItem> FList;
};

// Sets the states that follow from the tree (first-child, last-child,
// only-child, their of-type forms, empty, and link for a or area with an href
// that the host has not marked visited) in CurrentPC of Root and every
// element below it, and keeps those a host sets (hover, focus ...). Run it
// after the tree changes shape; a loop, so any depth is fine.
void SetStructuralPseudoClasses(TCSSElement* Root);

} // namespace ht
