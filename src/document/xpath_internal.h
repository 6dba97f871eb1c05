// Shared between the path compiler and the walkers.
#pragma once

#include "htcore/document/node.h"
#include "htcore/document/xpath.h"

#include <cstdint>
#include <cstring>
#include <string_view>

namespace ht::detail {

// Whole text as a decimal int: blanks at either end and one sign allowed,
// nothing else; false on overflow. Indexes and the numeric comparisons use it.
bool XPathToInt(std::u16string_view s, int& value) noexcept;

// The visits of the query running on this thread. Nested walks of conditions
// share the budget of the query that holds them.
struct TWalkVisits {
  int Walks = 0;
  uint64_t Count = 0;
  uint64_t Limit = 0;
};
// Raises the small first limit to one scaled by the tree of Start; true when
// the visits are spent even so.
bool WalkVisitsSpent(TWalkVisits& v, const THtNode* Start);

// A path can make the walk exponential in its length: `//*/..` repeated
// steps down to every node and back up, so each repeat multiplies the
// visits by the node count. A walk stops where its visits run past a budget
// that any sensible query on the same tree stays well within; the matches
// found so far stand.
class TWalkBudget {
public:
  explicit TWalkBudget(const THtNode* Start);
  ~TWalkBudget() { --FVisits.Walks; }
  TWalkBudget(const TWalkBudget&) = delete;
  TWalkBudget& operator=(const TWalkBudget&) = delete;

  // Counts n visits; true once the query has used up its budget.
  bool Spend(uint64_t n = 1) {
    FVisits.Count += n;
    return FVisits.Count > FVisits.Limit && WalkVisitsSpent(FVisits, FStart);
  }
  TWalkVisits& Visits() noexcept { return FVisits; }
  const THtNode* Start() const noexcept { return FStart; }

private:
  TWalkVisits& FVisits;
  const THtNode* FStart;
};

// The test of a step, for one walk. Parsed trees share one text per tag
// name, so once a node's tag has been found equal to the step's, other nodes
// holding the same text match on the pointer alone, and likewise for one
// text found different with the same length. The walk must not run while
// the tree changes (a callback that may change it is followed by Forget).
class TStepTest {
public:
  explicit TStepTest(const TXPathNode* Step)
      : FStep(Step), FAny(Step->Kind == xkAsterisk), FName(Step->Tag.view()), FSame(Step->Tag.Pointer()) {}

  bool Name(const THtNode* Node) {
    const char16_t* p = Node->FTag.Pointer();
    if (p == FSame || FAny) // FSame: also the empty tag of text nodes for the text step
      return true;
    if (p == FOther || Node->FTag.size() != FName.size())
      return false;
    if (std::memcmp(p, FName.data(), FName.size() * sizeof(char16_t)) != 0) {
      FOther = p;
      return false;
    }
    FSame = p;
    return true;
  }
  bool Conditions(THtNode* Node) const { return FStep->Conditions.empty() || Node->EvaluateCondition(FStep); }
  bool operator()(THtNode* Node) { return Name(Node) && Conditions(Node); }
  void Forget() noexcept {
    FSame = FStep->Tag.Pointer();
    FOther = nullptr;
  }

private:
  const TXPathNode* FStep;
  bool FAny;
  std::u16string_view FName;
  const char16_t* FSame;
  const char16_t* FOther = nullptr;
};

// The value walk: a value query, whose matches end the level they were found
// on, so that its order is that of a recursion (see xpath.cpp).
void XPathValueWalk(THtNode* Start, const TXPathNode* Step, THtNodeList* List, bool FirstOnly);

} // namespace ht::detail
