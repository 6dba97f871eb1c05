// Depth-first walks over a subtree that use the sibling and parent links
// instead of recursion, so that any depth is safe for the stack.
#pragma once

#include "htcore/document/node.h"

namespace ht::detail {

// Calls Enter(n) for Top and every node below it in document order, and
// Leave(n) once all of n's children are done (also when Enter answered
// false, which skips the children).
template <class Node, class Enter, class Leave> void WalkSubtree(Node* Top, Enter&& enter, Leave&& leave) {
  Node* n = Top;
  for (;;) {
    if (enter(n)) {
      if (Node* c = n->FirstChild()) {
        n = c;
        continue;
      }
    }
    for (;;) {
      leave(n);
      if (n == Top)
        return;
      if (n->FNextSibling) {
        n = n->FNextSibling;
        break;
      }
      n = n->FParent;
    }
  }
}

} // namespace ht::detail
