// Selector queries over a tree of CSS elements (TCSSElement, and so every
// TStyledHTMLNode): the query text is read as the selector group of a rule,
// and the subtree is walked in document order with the cascade's own match.
//
//   ht::TCSSElement doc;
//   doc.Parse(u"<div class=a><p>x</p><p class=b>y</p></div>"_hs);
//   ht::IHtNodeList l = doc.GetJQueryList(u"div.a > p, .b"_hs, false);   // both p, each once
//   doc.JQuery(u"p"_hs, [](ht::THtNode* n, bool& more) { use(n); more = false; });
//
// A malformed query, or one that names an unknown pseudo-class, matches
// nothing; a query never raises. The walk is a loop, so any depth is fine.
#pragma once

#include "htcore/foundation/hstring.h"
#include "htcore/style/css_sheet.h"

#include <memory>

namespace ht {

class TJQueryProcessor {
public:
  explicit TJQueryProcessor(const hstring& Query);

  bool Root = false;                    // start at the document root rather than at the node
  std::unique_ptr<TCSSSection> Section; // the parsed group in Selectors; null when nothing was read

  // The matches below Start (or below its root with Root set) into List.
  void Run(TCSSElement* Start, THtNodeList& List, bool First) const;
};

} // namespace ht
