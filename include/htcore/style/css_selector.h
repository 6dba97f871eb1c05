// TCSSSelector: one compound selector (tag, id, classes, attribute conditions,
// pseudo-classes), chained to the compound on its left through Parent.
//
// A selector picks its match routine once (DetermineTestProc); the whole match
// with ancestors and siblings is TestSelector (TCSSStyleSheet::TestElement).
// Elements are TCSSElement nodes: a tree whose root is one (or of a class
// derived from it) is made of them, and they keep their class names hashed.
//
//   ht::TCSSElement doc;
//   doc.Parse(u"<ul><li class='a b'>x</ul>");
//   auto sel = ht::TCSSSelector::Parse(u"ul > li.b"_hs);
//   auto* li = static_cast<ht::TCSSElement*>(doc.FindNode(u"li"_hs));
//   ht::TestSelector(li, sel.get(), 0);      // true
//   sel->CalcWeight();                         // 18
//   sel->AsString();                           // "ul>li.b"
#pragma once

#include "htcore/document/html_node.h"
#include "htcore/foundation/enum_info.h"
#include "htcore/foundation/hstring.h"
#include "htcore/foundation/object.h"
#include "htcore/style/css_tokenizer.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace ht {

HT_ENUM(TCSSPseudoClass, pcNone, pcLink, pcHover, pcActive, pcVisited, pcFocus, pcBefore, pcAfter,
        pcFirstLetter, pcFirstChild, pcLastChild, pcOnlyChild, pcNthChild, pcNthOfType, pcFirstOfType,
        pcLastOfType, pcChecked, pcEmpty, pcTarget, pcValid, pcInvalid, pcSelection, pcOnlyOfType, pcMarker,
        pcFocusWithin, pcUnknown);
// A set of pseudo-classes: bit n is the member of ordinal n.
using TCSSPseudoClasses = uint32_t;
constexpr TCSSPseudoClasses PCBit(TCSSPseudoClass pc) noexcept { return 1u << pc; }
// The pseudo-elements, which choose a map group rather than filter elements.
inline constexpr TCSSPseudoClasses kPseudoElements = PCBit(pcBefore) | PCBit(pcAfter) | PCBit(pcMarker);

HT_ENUM(TSelectorPosition, spDescendant, spChild, spSibling, spAllSiblings);
HT_ENUM(TAttrCompare, acMatch, acStarts, acEnds, acContains, acWord, acStarts2, acNotEq);

struct TCSSCondition {
  hstring Name;
  hstring Value;
  TAttrCompare Compare = acMatch;
};

struct TCSSClassRec {
  hstring s;        // lower case
  int32_t hash = 0; // RSHash of s
};
using TClassesArray = std::vector<TCSSClassRec>;

// A class record for a name: trimmed, lower-cased, hashed.
TCSSClassRec MakeCSSClass(const hstring& Name);

class TCSSSelectors;

// The element side of matching: a node that keeps its classes hashed and its
// pseudo state. The class attribute is hashed as it is parsed or set.
class TCSSElement : public THtmlNode {
  HT_NODE_CLASS(TCSSElement)

public:
  TClassesArray FClassHashes;
  TCSSPseudoClasses CurrentPC = 0; // set by the host (hover, focus, first-child ...)
  bool MultiClass = false;         // the class attribute holds more than one word

  void ParseAttributes(THtmlParser& HP) override;
  bool SetAttribute(const hstring& Name, const hstring& Value) override;
  // Class words of the class attribute (case ignored).
  void AddClass(const hstring& CSSClass) override;
  void RemoveClass(const hstring& CSSClass) override;
  bool HasClass(const hstring& CSSClass) override;
  // Rebuilds FClassHashes from the class attribute.
  void GetClassesHashes();

  // Queries (jquery.h): the elements below this one that match a selector
  // group, in document order; the node itself is not tested.
  THtNodeListRef GetJQueryList(const hstring& Query, bool FirstOnly) override;
  void JQuery(const hstring& Query, bool First, IHtNodeList& List);
  // Calls Callback for each match until it clears its Continue.
  void JQuery(const hstring& Query, const THtNodeProcRef& Callback);
  void InternalJQuery(const TCSSSelectors& Selectors, THtNodeList& List, bool First);
  // False when the callback ended the walk.
  bool InternalJQueryRef(const TCSSSelectors& Selectors, const THtNodeProcRef& Callback);
};

class TCSSSection;
class TCSSSelector;
using TCSSTestProc = bool (TCSSSelector::*)(const TCSSElement* Node, TCSSPseudoClasses Active) const;

// Longer chains are cut when read: matching walks them recursively.
inline constexpr int kMaxSelectorCompounds = 256;

class TCSSSelector : public TObject {
public:
  explicit TCSSSelector(TCSSSelector* AParent = nullptr) : Parent(AParent) {}
  TCSSSelector(const TCSSSelector&) = delete;
  TCSSSelector& operator=(const TCSSSelector&) = delete;
  ~TCSSSelector() override; // frees the Parent chain and the :not( operands

  TCSSPseudoClass FirstPseudo = pcNone;
  int32_t PseudoCount = 0;
  TSelectorPosition Position = spDescendant;
  hstring Tag;       // lower case, or "*"
  hstring ID;        // case kept
  hstring Condition; // raw attribute conditions joined by U+0001
  std::vector<TCSSCondition> Conditions;
  bool Universal = false;
  TClassesArray Classes;
  TCSSPseudoClasses PseudoClasses = 0;
  int32_t NthValue = 0;           // -1 odd, -2 even, else the position
  TCSSSelector* Parent = nullptr; // owned
  std::vector<std::unique_ptr<TCSSSelector>> NotSelectors;
  TCSSSection* Section = nullptr;
  uint32_t Weight = 0;
  int32_t Order = 0;
  int32_t StartPos = 0;
  int32_t EndPos = 0;
  TCSSTestProc Test = &TCSSSelector::TestAll;

  bool RunTest(const TCSSElement* Node, TCSSPseudoClasses Active) const {
    return (this->*Test)(Node, Active);
  }

  void AddClass(const hstring& Name);
  // Arg: the first token inside the brackets, or null.
  void AddPseudo(const hstring& Name, const TCSSToken* Arg);
  void ParseCondition();
  // Chooses Test for this compound and those on its left.
  void DetermineTestProc();
  uint32_t CalcWeight() const;
  hstring AsString() const;

  bool TestUniversal(const TCSSElement* Node, TCSSPseudoClasses Active) const;
  bool TestTag(const TCSSElement* Node, TCSSPseudoClasses Active) const;
  bool TestID(const TCSSElement* Node, TCSSPseudoClasses Active) const;
  bool TestCondition(const TCSSElement* Node, TCSSPseudoClasses Active) const;
  bool TestClass(const TCSSElement* Node, TCSSPseudoClasses Active) const;
  bool TestTagClass(const TCSSElement* Node, TCSSPseudoClasses Active) const;
  bool TestPCCondition(const TCSSElement* Node, TCSSPseudoClasses Active) const;
  bool TestPCClass(const TCSSElement* Node, TCSSPseudoClasses Active) const;
  bool TestAll(const TCSSElement* Node, TCSSPseudoClasses Active) const;
  bool XTestCondition(const TCSSElement* Node) const;

  // Builds the chain from a prelude's tokens (one selector of a group, no
  // comments); answers the subject compound, or null when nothing is left.
  static TCSSSelector* FromTokens(std::span<const TCSSToken> Tokens);
  // The same from text: "ul > li.a:hover".
  static std::unique_ptr<TCSSSelector> Parse(const hstring& Text);

private:
  bool TestNth(int Index, TCSSPseudoClasses Active) const;
  bool TestPseudo(const TCSSElement* Node, TCSSPseudoClasses Active) const;
};

// The whole match: Node against Selector with its chain, Required being the
// pseudo-classes the caller insists on (pcBefore for the ::before pass).
bool TestSelector(const TCSSElement* Node, const TCSSSelector* Selector, TCSSPseudoClasses Required);

} // namespace ht
