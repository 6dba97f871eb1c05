// Walks over a subtree in document order without recursion, so that trees
// of any depth can be walked.
#pragma once

#include "htcore/document/node.h"

namespace ht::detail {

// The node that follows N's subtree in document order, or null.
inline THtNode* AfterSubtree(const THtNode* N) {
  while (N && !N->FNextSibling)
    N = N->FParent;
  return N ? N->FNextSibling : nullptr;
}

// Calls f on each node below Root, in document order, until f answers false;
// answers false when f stopped the walk.
template <class F> bool ForEachBelow(THtNode* Root, F&& f) {
  THtNode* end = AfterSubtree(Root);
  for (THtNode* n = Root->FirstChild(); n && n != end; n = n->NextNode())
    if (!f(n))
      return false;
  return true;
}

// Elements carry style; texts, comments and directives do not.
inline bool IsStyledTag(const THtNode* N) {
  return !N->FTag.empty() && N->FTag[0] != u'!' && N->FTag[0] != u'?';
}

} // namespace ht::detail
