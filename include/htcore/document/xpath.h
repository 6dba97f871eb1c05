// TXPathProcessor: the small path language of THtNode::XPath and XPathValue.
//
// It looks like XPath but is much smaller: child steps (`a/b`), descendant
// steps (`//b`), `*`, `..`, `current`, `text()`, `@name`, and one bracket of
// conditions per step (`[2]`, `[last()]`, `[@x]`, `[@x='1' or b]`,
// `[@n>=5]`, `[text()='t']`). Compiling never fails: what it does not
// understand becomes a tag name that matches nothing.
//
//   ht::IHtNodeList rows = doc.XPath(u"//tr[@class='odd']");  // all matches below doc
//   ht::hstring href = doc.XPathValue(u"//a[1]/@href");       // first match only
//   doc.XPath(u"//li", [&](ht::THtNode* li, bool& more) { more = use(li); });
//
// Quirks that documents rely on: an index counts element siblings of any tag
// (`b[0]` is a `b` that comes first among its siblings), `>` compares as
// less-than (`>=` is right), tag names are compared with case, and the list
// form of XPath starts at the node it is called on even for a path with a
// leading `/`.
// A walk has a budget of node visits (64 per node of the tree, at least
// about four million), so that a hostile path such as `//*/..` repeated,
// which grows exponentially, ends with the matches found so far.
#pragma once

#include "htcore/foundation/enum_info.h"
#include "htcore/foundation/hstring.h"

#include <vector>

namespace ht {

class THtNode;
class TXPathProcessor;

HT_ENUM(TXPathNodeKind, xkTag, xkAttr, xkAsterisk, xkParent, xkCurrent);
// ctAbove exists for completeness; the compiler never produces it.
HT_ENUM(TXConditionType, ctEQ, ctNotEQ, ctLess, ctAbove, ctLessEQ, ctAboveEQ, ctIndex);
HT_ENUM(TXBoolOp, boAnd, boOr, boNot);

// One condition of a step: `left op right`, or `left` alone (right empty).
struct TXCondition {
  hstring left;
  hstring right;
  bool leftstr = false; // left is a quoted literal (quotes removed)
  bool rightstr = false;
  bool leftattr = false; // left is `@name` (the @ removed)
  bool rightattr = false;
  TXConditionType ctype = ctEQ;
  int index = 0;       // ctIndex: wanted ChildIndex, -1 for last()
  TXBoolOp Op = boAnd; // joins this condition to the result of those before
};

// One compiled step. An xkTag step with an empty Tag is the text step, since
// text nodes have no tag.
struct TXPathNode {
  TXPathNodeKind Kind = xkTag;
  bool All = false; // written with `//`: applies to all descendants too
  hstring Tag;
  std::vector<TXCondition> Conditions;
  TXPathNode* Next = nullptr; // the following step, null at the last
  TXPathProcessor* Processor = nullptr;
};

// Compiles a path for one query. Steps point at each other and at the
// processor, so a processor is neither copied nor moved.
class TXPathProcessor {
public:
  explicit TXPathProcessor(const hstring& APath);
  TXPathProcessor(const TXPathProcessor&) = delete;
  TXPathProcessor& operator=(const TXPathProcessor&) = delete;

  bool Root = false; // the path began with `/`
  hstring Value;     // the answer of a value query
  std::vector<TXPathNode> Nodes;
  THtNode* Current = nullptr; // the node of the `current` step

  // The first step, or null for an empty path.
  TXPathNode* FirstStep() noexcept { return Nodes.empty() ? nullptr : Nodes.data(); }

  // Compiles the step at p into Step and moves p behind it and its `/`.
  void ExtractPathPart(const char16_t*& p, TXPathNode& Step);
  // Compiles the text between a step's brackets into Step.Conditions.
  void ParseConditions(const hstring& s, TXPathNode& Step);
};

} // namespace ht
