// Conditions, the entry points of path queries, the visit budget, and the
// value walk.
//
// A value query ends the level of the tree on which it matched, which makes
// its order that of a recursion over the tree, one level per child taken. To
// serve documents of any depth it runs on an explicit stack of frames, each
// frame being one activation of the recursive walk with the point where it
// resumes. The list and callback walks need no frame per level (see
// xpath_walk.cpp).
#include "htcore/document/xpath.h"

#include "htcore/document/node.h"
#include "xpath_internal.h"

#include <cstdint>
#include <vector>

namespace ht {

namespace {

// Conditions evaluate nested paths, which may hold conditions again. A path
// nested deeper than this is not evaluated (the condition is false), so no
// text can exhaust the stack.
constexpr int kMaxNesting = 128;
thread_local int g_nesting = 0;

struct NestingGuard {
  NestingGuard() { ++g_nesting; }
  ~NestingGuard() { --g_nesting; }
  NestingGuard(const NestingGuard&) = delete;
  NestingGuard& operator=(const NestingGuard&) = delete;
};

// The budget: 64 visits per node of the tree, at least about four million.
constexpr uint64_t kMinVisits = uint64_t(1) << 22;
constexpr uint64_t kVisitsPerNode = 64;
// A condition's nested walk compiles its path first, which costs as much as
// visiting a few hundred nodes.
constexpr uint64_t kNestedWalkCost = 256;
thread_local detail::TWalkVisits g_visits;

uint64_t count_nodes(const THtNode* root) {
  uint64_t n = 0;
  const THtNode* node = root;
  while (node) {
    ++n;
    if (const THtNode* c = node->FirstChild()) {
      node = c;
      continue;
    }
    while (node != root && !node->FNextSibling)
      node = node->FParent;
    node = node == root ? nullptr : node->FNextSibling;
  }
  return n;
}

// ChildIndex() == index, stopping once more elements than that went before:
// `//tr[0]` over a long table stays linear. Counts as ChildIndex does.
bool at_child_index(const THtNode* node, int index) {
  int count = 0;
  for (const THtNode* c = node->FParent->FirstChild(); c && c != node; c = c->FNextSibling) {
    bool element = !c->FTag.empty() && c->FTag[0] != u'!' && c->FTag[0] != u'?';
    if (element && ++count > index)
      return false;
  }
  return count == index;
}

bool matches(THtNode* node, const TXPathNode* step) {
  // Ordinal: an upper-case path finds nothing in a parsed HTML tree.
  if (step->Kind != xkAsterisk && node->FTag != step->Tag)
    return false;
  return step->Conditions.empty() || node->EvaluateCondition(step);
}

// A bare number is its own value: no tag name starts with a digit, and
// `[@n>=5]` has to compare with 5, not with the text of a child named "5".
bool is_number(const hstring& s) {
  size_t i = !s.empty() && (s[0] == u'-' || s[0] == u'+') ? 1 : 0;
  return i < s.size() && s[i] >= u'0' && s[i] <= u'9';
}

// The text of one operand: literal, attribute, own text, or a nested value query.
hstring operand_value(THtNode* node, const hstring& text, bool str, bool attr, THtNode* current) {
  if (str || is_number(text))
    return text;
  if (attr)
    return node->GetAttribute(text);
  if (text == u"text()")
    return node->TextContent();
  return node->XPathValue(text, current);
}

bool compare(const TXCondition& c, const hstring& l, const hstring& r) {
  if (c.ctype == ctEQ)
    return l == r;
  if (c.ctype == ctNotEQ)
    return l != r;
  // No floating point: both sides must be whole numbers.
  int a, b;
  if (!detail::XPathToInt(l, a) || !detail::XPathToInt(r, b))
    return false;
  switch (c.ctype) {
  case ctLess:
    return a < b;
  case ctAbove:
    return a > b;
  case ctLessEQ:
    return a <= b;
  case ctAboveEQ:
    return a >= b;
  default:
    return false;
  }
}

enum Resume : uint8_t { rEnter, rTest, rAfterMatch, rAfterAll, rReturn };

struct Frame {
  THtNode* node;
  const TXPathNode* step;
  THtNode* child; // being walked
  int index;      // its place among the children of node
  Resume at;
};

// Siblings lie apart in memory, and a scan that follows FNextSibling waits
// for each node before it can ask for the next. Read from the child array,
// the loads are independent and overlap: several times faster on a large
// tree. A `//` walk visits nodes in document order, which is close to their
// allocation order, and there the sibling link is the cheaper read.
THtNode* next_child(const Frame& f) {
  if (f.step->All)
    return f.child->FNextSibling;
  const THtNodeList* list = f.node->FNodes;
  return f.index + 1 < list->Count() ? static_cast<THtNode*>(list->List()[f.index + 1]) : nullptr;
}

} // namespace

bool THtNode::EvaluateCondition(const TXPathNode* Step) {
  THtNode* current = Step->Processor ? Step->Processor->Current : nullptr;
  NestingGuard guard;
  bool deep = g_nesting > kMaxNesting;
  bool result = true;
  for (const TXCondition& c : Step->Conditions) {
    bool b;
    if (c.ctype == ctIndex) {
      // Counts element siblings of any tag, from 0: `b[0]` is a b that comes first.
      b = FParent && (c.index == -1 ? FParent->LastChildTag() == this : at_child_index(this, c.index));
    } else if (deep) {
      b = false;
    } else if (c.leftstr || !c.right.empty()) {
      hstring l = operand_value(this, c.left, c.leftstr, c.leftattr, current);
      if (!c.right.empty())
        b = compare(c, l, operand_value(this, c.right, c.rightstr, c.rightattr, current));
      else
        b = !l.empty();
    } else if (c.leftattr) {
      b = HasAttribute(c.left);
    } else if (c.left == u"text()") {
      b = !TextContent().empty();
    } else {
      b = XPath(c.left, true)->GetCount() > 0;
    }
    switch (c.Op) {
    case boAnd:
      result = result && b;
      break;
    case boOr:
      result = result || b;
      break;
    case boNot:
      result = result && !b;
      break;
    }
  }
  return result;
}

// The tree is only counted when the small budget runs out, so ordinary
// queries never pay for it.
bool detail::WalkVisitsSpent(TWalkVisits& v, const THtNode* Start) {
  if (v.Limit != kMinVisits)
    return true;
  uint64_t scaled = count_nodes(const_cast<THtNode*>(Start)->Root()) * kVisitsPerNode;
  v.Limit = scaled > kMinVisits ? scaled : kMinVisits + 1;
  return v.Count > v.Limit;
}

detail::TWalkBudget::TWalkBudget(const THtNode* Start) : FVisits(g_visits), FStart(Start) {
  if (FVisits.Walks++ == 0) {
    FVisits.Count = 0;
    FVisits.Limit = kMinVisits;
  } else {
    FVisits.Count += kNestedWalkCost;
  }
}

void detail::XPathValueWalk(THtNode* Start, const TXPathNode* Step, THtNodeList* List, bool FirstOnly) {
  TXPathProcessor* proc = Step->Processor;
  auto done = [&] { return (FirstOnly && List && List->GetCount() > 0) || !proc->Value.empty(); };
  TWalkBudget budget(Start);
  std::vector<Frame> stack;
  stack.push_back({Start, Step, nullptr, 0, rEnter});
  while (!stack.empty()) {
    Frame& f = stack.back();
    const TXPathNode* step = f.step;
    switch (f.at) {
    case rEnter: {
      if (budget.Spend())
        return;
      // A first-only list holds its one match: nothing further may add.
      if (FirstOnly && List && List->GetCount() > 0) {
        stack.pop_back();
        break;
      }
      if (step->Kind == xkAttr) {
        if (!List)
          proc->Value = f.node->GetAttribute(step->Tag);
        else if (f.node->HasAttribute(step->Tag))
          List->Add(f.node);
        stack.pop_back();
        break;
      }
      if (step->Kind == xkParent || step->Kind == xkCurrent) {
        THtNode* target = step->Kind == xkParent ? f.node->FParent : proc->Current;
        if (target && step->Next) {
          f = {target, step->Next, nullptr, 0, rEnter}; // the walk goes on there
          break;
        }
        if (target && !List)
          proc->Value = target->TextContent();
        else if (target)
          List->Add(target);
        stack.pop_back();
        break;
      }
      f.child = f.node->FirstChild();
      f.index = 0;
      f.at = rTest;
      break;
    }
    case rTest: {
      THtNode* c = f.child;
      if (budget.Spend())
        return;
      if (!c) {
        stack.pop_back();
        break;
      }
      f.at = rAfterMatch;
      if (!matches(c, step))
        break;
      if (step->Next) {
        stack.push_back({c, step->Next, nullptr, 0, rEnter});
      } else if (!List) {
        // A value query ends this level at its match, but with `//` the
        // match's own subtree is walked first and may replace the value.
        proc->Value = c->TextContent();
        if (step->All) {
          f.at = rReturn;
          stack.push_back({c, step, nullptr, 0, rEnter});
        } else {
          stack.pop_back();
        }
      } else {
        List->Add(c);
        if (FirstOnly)
          stack.pop_back();
      }
      break;
    }
    case rAfterMatch: {
      // With `//` the child's subtree follows the child itself.
      f.at = rAfterAll;
      if (step->All)
        stack.push_back({f.child, step, nullptr, 0, rEnter});
      break;
    }
    case rAfterAll: {
      if (done()) {
        stack.pop_back();
        break;
      }
      f.child = next_child(f);
      ++f.index;
      f.at = rTest;
      break;
    }
    case rReturn:
      stack.pop_back();
      break;
    }
  }
}

IHtNodeList THtNode::XPath(const hstring& APath, bool FirstOnly, THtNode* Current) {
  IHtNodeList list = THtNodeList::CreateRef();
  TXPathProcessor xp(APath);
  xp.Current = Current ? Current : this;
  // The list form starts here even for a rooted path.
  if (const TXPathNode* step = xp.FirstStep())
    InternalXPath(step, list.get(), FirstOnly);
  return list;
}

void THtNode::XPath(const hstring& APath, const THtNodeProcRef& Proc) {
  TXPathProcessor xp(APath);
  xp.Current = this;
  if (const TXPathNode* step = xp.FirstStep(); step && Proc)
    (xp.Root ? Root() : this)->InternalXPathRef(step, Proc);
}

hstring THtNode::XPathValue(const hstring& APath, THtNode* Current) {
  TXPathProcessor xp(APath);
  xp.Current = Current ? Current : this;
  if (const TXPathNode* step = xp.FirstStep())
    (xp.Root ? Root() : this)->InternalXPath(step, nullptr, true);
  return xp.Value;
}

} // namespace ht
