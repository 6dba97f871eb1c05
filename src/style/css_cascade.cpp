#include "htcore/style/css_cascade.h"

#include "htcore/style/css_sheet.h"
#include "tree_walk.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace ht {

namespace {

// Lists this short search their run of equal weight for a duplicate; longer
// ones keep a set and sort once, so many rules of one weight stay O(n log n).
constexpr std::size_t kSeenFrom = 48;

} // namespace

void TCSSWeightList::Settle() const {
  if (!FUnsorted)
    return;
  std::stable_sort(FList.begin(), FList.end(), [](const TCSSWeightItem& a, const TCSSWeightItem& b) {
    return a.Weight < b.Weight || (a.Weight == b.Weight && a.Order < b.Order);
  });
  FUnsorted = false;
}

void TCSSWeightList::AddValue(uint32_t Weight, int32_t Order, const TCSSValue* Value) {
  if (FList.size() >= kSeenFrom) {
    if (FSeen.empty())
      for (const TCSSWeightItem& i : FList)
        FSeen.insert({i.Value, i.Weight});
    if (!FSeen.insert({Value, Weight}).second)
      return;
    const TCSSWeightItem& last = FList.back(); // the list is long here, never empty
    if (Weight < last.Weight || (Weight == last.Weight && Order < last.Order))
      FUnsorted = true;
    FList.push_back({Weight, Order, Value});
    return;
  }
  if (FList.empty() || Weight > FList.back().Weight) {
    FList.push_back({Weight, Order, Value});
    return;
  }
  auto lo = std::lower_bound(FList.begin(), FList.end(), Weight,
                             [](const TCSSWeightItem& a, uint32_t w) { return a.Weight < w; });
  auto at = lo;
  // The whole run of this weight is searched for the value: candidate lists
  // come in no particular order, and a value twice would only cost time.
  for (auto it = lo; it != FList.end() && it->Weight == Weight; ++it) {
    if (it->Value == Value)
      return;
    if (it->Order <= Order)
      at = it + 1;
  }
  FList.insert(at, {Weight, Order, Value});
}

namespace {

const hstring& universal_key() {
  static const hstring star(u"*");
  return star;
}

const hstring& href_name() {
  static const hstring href(u"href");
  return href;
}

const hstring& id_name() {
  static const hstring id(u"id");
  return id;
}

// Calls f on each selector list of M that may hold a rule for Node: the lists
// of its id, its classes, its tag and "*", every condition list, and the
// pseudo-class lists whose pseudo-class is in Pseudos. f answers false to stop.
template <class F>
void for_each_candidate(const TCSSElement* Node, const TCSSStyleMaps& M, TCSSPseudoClasses Pseudos, F&& f) {
  if (M.IDs && Node->Attributes()) {
    hstring id = Node->GetAttribute(id_name());
    if (!id.empty())
      if (const TCSSSelectors* l = M.IDs->Get(id))
        if (!f(*l))
          return;
  }
  if (M.Classes)
    for (const TCSSClassRec& c : Node->FClassHashes)
      if (!c.s.empty())
        if (const TCSSSelectors* l = M.Classes->GetHashed(static_cast<uint32_t>(c.hash), c.s))
          if (!f(*l))
            return;
  if (M.Conditions) {
    bool more = true;
    M.Conditions->ForEach([&](const TCSSSelectors* l) {
      if (more)
        more = f(*l);
    });
    if (!more)
      return;
  }
  if (!Node->FTag.empty())
    if (const TCSSSelectors* l = M.Tags->Get(Node->FTag))
      if (!f(*l))
        return;
  if (const TCSSSelectors* l = M.Tags->Get(universal_key()))
    if (!f(*l))
      return;
  if (M.PseudoClasses && (M.PseudoClasses->PseudoMask & Pseudos))
    for (const auto& p : M.PseudoClasses->Pseudos)
      if (PCBit(p.first) & Pseudos)
        if (!f(*p.second))
          return;
}

bool disabled(const TCSSSelector* S) {
  return !S->Section || (S->Section->MediaSet && S->Section->MediaSet->Disabled);
}

void add_section(TCSSWeightList& List, const TCSSSelector* S) {
  for (const TCSSValue& v : S->Section->CompiledValues)
    List.AddValue(S->Weight | (v.Important ? kCSSImportantWeight : 0), S->Order, &v);
}

} // namespace

void TCSSStyleSheet::GetElementSelectors(const TCSSElement* Node, TCSSWeightList& List,
                                         const TCSSStyleMaps* Maps, TCSSPseudoClasses Required) const {
  if (!Node || !Maps)
    return;
  const TCSSPseudoClasses pseudos = Node->CurrentPC | Required | PCBit(pcNthChild) | PCBit(pcNthOfType);
  const size_t classes = Node->FClassHashes.size();
  for_each_candidate(Node, *Maps, pseudos, [&](const TCSSSelectors& l) {
    for (const TCSSSelector* s : l) {
      // TestSelector runs the compound's own test first.
      if (!disabled(s) && classes >= s->Classes.size() && TestSelector(Node, s, Required))
        add_section(List, s);
    }
    return true;
  });
}

void TCSSStyleSheet::GetElementPseudoClasses(const TCSSElement* Node, TCSSPseudoClasses& Set) const {
  if (!Node)
    return;
  for (TCSSPseudoClass pc : {pcBefore, pcAfter, pcMarker}) {
    const TCSSStyleMaps* m = Maps(pc);
    if (!m || (Set & PCBit(pc)))
      continue;
    for_each_candidate(Node, *m, ~TCSSPseudoClasses(0), [&](const TCSSSelectors& l) {
      for (const TCSSSelector* s : l)
        if (!disabled(s) && s->RunTest(Node, s->PseudoClasses)) {
          Set |= PCBit(pc);
          return false;
        }
      return true;
    });
  }
}

void TCSSStyleSheet::GetAllSelectors(TCSSWeightList& List) const {
  // AddCSS with a weight of its own files a second universal rule beside the
  // merged one; every one of them belongs to the element.
  if (const TCSSSelectors* l = Main.Tags->Get(universal_key()))
    for (const TCSSSelector* s : *l)
      if (!disabled(s))
        add_section(List, s);
}

namespace {

constexpr TCSSPseudoClasses kStructural = PCBit(pcFirstChild) | PCBit(pcLastChild) | PCBit(pcOnlyChild) |
                                          PCBit(pcFirstOfType) | PCBit(pcLastOfType) | PCBit(pcOnlyOfType) |
                                          PCBit(pcEmpty);

// The states of the element children of Parent.
void set_children(THtNode* Parent, std::unordered_map<std::u16string_view, TCSSElement*>& LastOfType) {
  LastOfType.clear();
  TCSSElement* first = nullptr;
  TCSSElement* last = nullptr;
  for (THtNode* c = Parent->FirstChild(); c; c = c->NextSibling()) {
    auto* e = detail::IsStyledTag(c) ? dynamic_cast<TCSSElement*>(c) : nullptr;
    if (!e)
      continue;
    e->CurrentPC &= ~kStructural;
    // An unvisited link: a or area with an href; the host marks what it has visited.
    if ((e->FTag == u"a" || e->FTag == u"area") && !(e->CurrentPC & PCBit(pcVisited)) &&
        e->Attributes() && e->Attributes()->Indexof(href_name()) >= 0)
      e->CurrentPC |= PCBit(pcLink);
    else
      e->CurrentPC &= ~PCBit(pcLink);
    if (!first) {
      first = e;
      e->CurrentPC |= PCBit(pcFirstChild);
    }
    last = e;
    auto [it, fresh] = LastOfType.try_emplace(e->FTag.view(), e);
    if (fresh) {
      e->CurrentPC |= PCBit(pcFirstOfType) | PCBit(pcLastOfType) | PCBit(pcOnlyOfType);
    } else {
      it->second->CurrentPC &= ~(PCBit(pcLastOfType) | PCBit(pcOnlyOfType));
      e->CurrentPC |= PCBit(pcLastOfType);
      it->second = e;
    }
    bool empty = true;
    for (THtNode* g = e->FirstChild(); g && empty; g = g->NextSibling())
      empty = g->FTag.empty() ? g->FContent.empty() : g->FTag[0] == u'!'; // comments do not count
    if (empty)
      e->CurrentPC |= PCBit(pcEmpty);
  }
  if (last) {
    last->CurrentPC |= PCBit(pcLastChild);
    if (last == first)
      last->CurrentPC |= PCBit(pcOnlyChild);
  }
}

} // namespace

void SetStructuralPseudoClasses(TCSSElement* Root) {
  if (!Root)
    return;
  std::unordered_map<std::u16string_view, TCSSElement*> last_of_type;
  if (!Root->Parent()) {
    // The document node itself: one of a kind.
    Root->CurrentPC &= ~kStructural;
  } else {
    set_children(Root->Parent(), last_of_type);
  }
  if (Root->FirstChild())
    set_children(Root, last_of_type);
  detail::ForEachBelow(Root, [&](THtNode* n) {
    if (n->FirstChild())
      set_children(n, last_of_type);
    return true;
  });
}

} // namespace ht
