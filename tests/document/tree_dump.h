// Test helpers: a compact one-line dump of a node tree and an invariant check.
//
// Dump form: an element is its tag, then [name=value ...] when it has
// attributes, then (child,child,...) when it has children. A text node is
// "text"; a node of another kind with content is tag{content}, with ! for
// comments, ? for directives and #cdata for CDATA sections.
#pragma once

#include "htcore/document/node.h"

#include <string>
#include <vector>

namespace ht::test {

inline std::string DumpNode(const THtNode* n) {
  std::string out;
  struct Frame {
    const THtNode* node;
    bool closing;
  };
  std::vector<Frame> stack{{n, false}};
  while (!stack.empty()) {
    Frame f = stack.back();
    stack.pop_back();
    if (f.closing) {
      out += ')';
      continue;
    }
    const THtNode* x = f.node;
    if (x != n && x->FParent && x->FParent->FNodes && x->FParent->FNodes->FirstNode() != x)
      out += ',';
    if (x->TagType == htCData)
      out += "#cdata{" + x->FContent.toUtf8() + "}";
    else if (x->FTag.empty())
      out += "\"" + x->FContent.toUtf8() + "\"";
    else {
      out += x->FTag.toUtf8();
      if (!x->FContent.empty())
        out += "{" + x->FContent.toUtf8() + "}";
    }
    if (x->FAttributes && x->FAttributes->Count) {
      out += '[';
      for (int i = 0; i < x->FAttributes->Count; ++i) {
        if (i)
          out += ' ';
        out += x->FAttributes->GetName(i).toUtf8() + "=" + x->FAttributes->GetValue(i).toUtf8();
      }
      out += ']';
    }
    if (x->GetCount()) {
      out += '(';
      stack.push_back({x, true});
      for (int i = x->GetCount() - 1; i >= 0; --i)
        stack.push_back({x->GetNode(i), false});
    }
  }
  return out;
}

// Children only, joined by commas: what a document's body holds.
inline std::string DumpChildren(const THtNode* n) {
  std::string out;
  for (const THtNode* c = n->FirstChild(); c; c = c->NextSibling()) {
    if (!out.empty())
      out += ',';
    out += DumpNode(c);
  }
  return out;
}

// Empty when every parent link and sibling link below n is right.
inline std::string CheckTree(const THtNode* n) {
  std::vector<const THtNode*> stack{n};
  while (!stack.empty()) {
    const THtNode* x = stack.back();
    stack.pop_back();
    int count = x->GetCount();
    for (int i = 0; i < count; ++i) {
      const THtNode* c = x->GetNode(i);
      if (c->FParent != x)
        return "FParent of child " + std::to_string(i) + " of " + x->FTag.toUtf8();
      const THtNode* expected = i + 1 < count ? x->GetNode(i + 1) : nullptr;
      if (c->FNextSibling != expected)
        return "FNextSibling of child " + std::to_string(i) + " of " + x->FTag.toUtf8();
      stack.push_back(c);
    }
  }
  return "";
}

} // namespace ht::test
