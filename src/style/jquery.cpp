#include "htcore/style/jquery.h"

#include "htcore/style/css_style_maps.h"
#include "tree_walk.h"

#include <exception>

namespace ht {

namespace {

// The elements below Start in document order; f answers false to end the walk.
template <class F> bool walk_elements(THtNode* Start, F&& f) {
  return detail::ForEachBelow(Start, [&](THtNode* n) {
    auto* e = detail::IsStyledTag(n) ? dynamic_cast<TCSSElement*>(n) : nullptr;
    return !e || f(e);
  });
}

bool matches(const TCSSSelectors& Selectors, const TCSSElement* e) {
  // A pseudo-element is no node of the tree: such a selector finds nothing.
  for (const TCSSSelector* s : Selectors)
    if (!(s->PseudoClasses & kPseudoElements) && TestSelector(e, s, 0))
      return true;
  return false;
}

} // namespace

TJQueryProcessor::TJQueryProcessor(const hstring& Query) {
  try {
    TCSSParser p(Query + u"{}", true);
    if (p.NextSection() && p.Section && p.Section->Selectors.Count() > 0)
      Section = std::move(p.Section);
  } catch (const std::exception&) {
    // The sheet parser's guards: a query that trips them matches nothing.
    Section.reset();
  }
}

void TJQueryProcessor::Run(TCSSElement* Start, THtNodeList& List, bool First) const {
  if (!Section || !Start)
    return;
  TCSSElement* from = Start;
  if (Root)
    if (auto* r = dynamic_cast<TCSSElement*>(Start->Root()))
      from = r;
  from->InternalJQuery(Section->Selectors, List, First);
}

void TCSSElement::InternalJQuery(const TCSSSelectors& Selectors, THtNodeList& List, bool First) {
  walk_elements(this, [&](TCSSElement* e) {
    if (!matches(Selectors, e))
      return true;
    List.Add(e);
    return !First;
  });
}

bool TCSSElement::InternalJQueryRef(const TCSSSelectors& Selectors, const THtNodeProcRef& Callback) {
  return walk_elements(this, [&](TCSSElement* e) {
    bool more = true;
    if (matches(Selectors, e))
      Callback(e, more);
    return more;
  });
}

THtNodeListRef TCSSElement::GetJQueryList(const hstring& Query, bool FirstOnly) {
  THtNodeListRef list = THtNodeList::CreateRef();
  TJQueryProcessor(Query).Run(this, *list, FirstOnly);
  return list;
}

void TCSSElement::JQuery(const hstring& Query, bool First, IHtNodeList& List) {
  List = GetJQueryList(Query, First);
}

void TCSSElement::JQuery(const hstring& Query, const THtNodeProcRef& Callback) {
  TJQueryProcessor q(Query);
  if (q.Section)
    InternalJQueryRef(q.Section->Selectors, Callback);
}

} // namespace ht
