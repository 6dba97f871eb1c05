// The list and callback walks of THtNode::XPath.
//
// A step applies to the children of a node or, written with `//`, to every
// node below it. The walk keeps one activation per step under way (a match
// on an inner step starts the next step at the match and comes back when
// that is done), so its stack grows with the length of the path, never with
// the depth of the tree: a `//` step moves along the first-child, sibling and
// parent links. Order and budget are those of the recursion the language
// describes: in the list form a match comes before its descendants, in the
// callback form after them.
#include "xpath_internal.h"

#include <new>
#include <type_traits>
#include <vector>

namespace ht {

namespace {

using detail::TStepTest;
using detail::TWalkBudget;

// One step under way at one node.
struct TActivation {
  THtNode* Top;
  const TXPathNode* Step;
  TStepTest Test;
  // A `//` step: the node of Top's subtree tested last, Top before the first.
  THtNode* At;
  // A child step: the child tested last, -1 before the first.
  int Index;
};

static_assert(std::is_trivially_destructible_v<TActivation>);

// The activations of one walk; a short path needs no heap.
class TActivations {
public:
  bool Empty() const noexcept { return FCount == 0; }
  TActivation& Top() noexcept { return At(FCount - 1); }
  void Push(THtNode* Top, const TXPathNode* Step) {
    TActivation a{Top, Step, TStepTest(Step), Top, -1};
    if (FCount < kInline)
      new (&FInline.Items[FCount]) TActivation(a);
    else
      FMore.push_back(a);
    ++FCount;
  }
  void Pop() noexcept {
    if (FCount > kInline)
      FMore.pop_back();
    --FCount;
  }
  // The tree may have changed: no tag text is known any more.
  void ForgetTags() noexcept {
    for (int i = 0; i < FCount; ++i)
      At(i).Test.Forget();
  }

private:
  static constexpr int kInline = 8;
  TActivation& At(int i) noexcept { return i < kInline ? FInline.Items[i] : FMore[i - kInline]; }

  union TSlots {
    TSlots() {} // the first FCount are made as they are pushed
    TActivation Items[kInline];
  } FInline;
  std::vector<TActivation> FMore;
  int FCount = 0;
};

THtNode* first_child(const THtNode* n) {
  const THtNodeList* list = n->FNodes;
  return list && list->Count() ? static_cast<THtNode*>(list->List()[0]) : nullptr;
}

THtNode* first_leaf(THtNode* n) {
  while (THtNode* c = first_child(n))
    n = c;
  return n;
}

enum TOrder {
  oChildren, // a child step. Children are read from the child array: those
             // loads do not wait on each other, where each sibling link waits
             // for the node before it.
  oPreorder, // a `//` step of the list form: a node before its children
  oPostorder // a `//` step of the callback form: children before their parent
};

// Moves the activation to its next node whose name passes the step, or to
// its end (null). Every node tested counts its visits: one for a child step;
// three for a `//` step (the test, the walk of the node's subtree and the
// end of its children, as the recursion counts them). Spent is set when the
// budget runs out.
template <TOrder Order> THtNode* next_named(TActivation& a, TWalkBudget& budget, bool& spent) {
  constexpr uint64_t per_node = Order == oChildren ? 1 : 3;
  TStepTest& test = a.Test;
  detail::TWalkVisits& visits = budget.Visits();
  uint64_t count = visits.Count;
  auto spend = [&] {
    count += per_node;
    if (count <= visits.Limit)
      return false;
    visits.Count = count;
    spent = detail::WalkVisitsSpent(visits, budget.Start());
    return spent;
  };
  THtNode* found = nullptr;
  if constexpr (Order == oChildren) {
    const THtNodeList* list = a.Top->FNodes;
    int n = list ? list->Count() : 0;
    int i = a.Index;
    while (++i < n) {
      THtNode* c = static_cast<THtNode*>(list->List()[i]);
      if (spend())
        return nullptr;
      if (test.Name(c)) {
        found = c;
        break;
      }
    }
    a.Index = i;
  } else {
    THtNode* n = a.At;
    THtNode* top = a.Top;
    for (;;) {
      if constexpr (Order == oPreorder) {
        THtNode* next = first_child(n);
        for (; !next && n != top; n = n->FParent)
          next = n->FNextSibling;
        if (!next)
          break;
        n = next;
      } else if (n == top) {
        THtNode* c = first_child(n);
        if (!c)
          break;
        n = first_leaf(c);
      } else if (n->FNextSibling) {
        n = first_leaf(n->FNextSibling);
      } else {
        n = n->FParent;
        if (n == top)
          break;
      }
      if (spend())
        return nullptr;
      if (test.Name(n)) {
        found = n;
        break;
      }
    }
    a.At = n;
  }
  visits.Count = count;
  return found;
}

// One walk of the list form (matches go to List; the first one ends a
// first-only walk) or of the callback form (Proc gets each match and may end
// the walk).
class TStepWalk {
public:
  enum TEnd { eGoOn, eSpent, eStopped };

  TStepWalk(THtNode* Start, THtNodeList* List, bool FirstOnly, const THtNodeProcRef* Proc)
      : FBudget(Start), FList(List), FFirstOnly(FirstOnly), FProc(Proc) {}

  TEnd Run(THtNode* Start, const TXPathNode* Step) {
    if (TEnd e = Enter(Start, Step); e != eGoOn)
      return e;
    bool spent = false;
    while (!FStack.Empty()) {
      TActivation& a = FStack.Top();
      THtNode* c = !a.Step->All ? next_named<oChildren>(a, FBudget, spent)
                   : FProc      ? next_named<oPostorder>(a, FBudget, spent)
                                : next_named<oPreorder>(a, FBudget, spent);
      if (spent)
        return eSpent;
      if (!c) {
        FStack.Pop();
        if (FBudget.Spend()) // the end of the children
          return eSpent;
        continue;
      }
      if (!a.Test.Conditions(c))
        continue;
      if (TEnd e = a.Step->Next ? Enter(c, a.Step->Next) : Found(c); e != eGoOn)
        return e;
    }
    return eGoOn;
  }

private:
  // Starts Step at Node: attribute, parent and current steps are answered at
  // once, the others become an activation. The callback form takes nothing
  // from attribute and current steps, and a last parent step hands it the
  // node itself, not its parent: callers rely on it.
  TEnd Enter(THtNode* Node, const TXPathNode* Step) {
    for (;;) {
      if (FBudget.Spend())
        return eSpent;
      switch (Step->Kind) {
      case xkAttr:
        return !FProc && Node->HasAttribute(Step->Tag) ? Found(Node) : eGoOn;
      case xkParent:
      case xkCurrent: {
        if (FProc && Step->Kind == xkCurrent)
          return eGoOn;
        THtNode* target = Step->Kind == xkParent ? Node->FParent : Step->Processor->Current;
        if (!target)
          return eGoOn;
        if (!Step->Next)
          return Found(FProc ? Node : target);
        Node = target;
        Step = Step->Next;
        break;
      }
      default:
        FStack.Push(Node, Step);
        return eGoOn;
      }
    }
  }

  TEnd Found(THtNode* Node) {
    if (!FProc) {
      FList->Add(Node);
      return FFirstOnly ? eStopped : eGoOn; // a first-only list holds its one match
    }
    bool more = true;
    (*FProc)(Node, more);
    FStack.ForgetTags();
    return more ? eGoOn : eStopped;
  }

  TWalkBudget FBudget;
  THtNodeList* FList;
  bool FFirstOnly;
  const THtNodeProcRef* FProc;
  TActivations FStack;
};

} // namespace

void THtNode::InternalXPath(const TXPathNode* Step, THtNodeList* List, bool FirstOnly) {
  // A value query, or a list walk whose processor already holds a value,
  // ends levels early the way only the value walk does.
  if (!List || (Step->Processor && !Step->Processor->Value.empty()))
    detail::XPathValueWalk(this, Step, List, FirstOnly);
  else
    TStepWalk(this, List, FirstOnly, nullptr).Run(this, Step);
}

bool THtNode::InternalXPathRef(const TXPathNode* Step, const THtNodeProcRef& Proc) {
  return TStepWalk(this, nullptr, false, &Proc).Run(this, Step) != TStepWalk::eStopped;
}

} // namespace ht
