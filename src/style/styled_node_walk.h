// Walks over styled subtrees without recursion, so that any depth can be walked.
#pragma once

#include "htcore/style/styled_node.h"

#include <vector>

namespace ht::detail {

// Pushes on Stack the styled children of N and, with Pseudo, its pseudo elements.
inline void PushStyledChildren(std::vector<TStyledHTMLNode*>& Stack, const TStyledHTMLNode* N, bool Pseudo) {
  if (Pseudo)
    for (TStyledHTMLNode* p : {N->Before.get(), N->After.get(), N->Marker.get()})
      if (p)
        Stack.push_back(p);
  for (THtNode* c = N->FirstChild(); c; c = c->NextSibling())
    if (auto* s = dynamic_cast<TStyledHTMLNode*>(c))
      Stack.push_back(s);
}

} // namespace ht::detail
