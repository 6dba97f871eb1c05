// Any path text, compiled and run in all three forms against a small fixed
// tree: no crash, every match is a node of the tree, and a first-only query
// gives the first item of the full list.
//
// Each level of nested conditions can walk the whole tree once per candidate,
// so the cost grows as the tree size to the power of the nesting; inputs with
// more than three brackets are skipped to keep runs fast.
#include "htcore/document/html_node.h"
#include "htcore/document/xpath.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace {

ht::THtmlNode& tree() {
  static ht::THtmlNode* doc = [] {
    auto* d = new ht::THtmlNode();
    d->Parse(u"<lib id=lib><book id=b1 n=3 lang=en><name>Alpha</name><cost>10</cost></book><!--note-->"
             u"<book id=b2 n=7><name>Beta</name><book id=b2x><name>In</name></book></book>"
             u"<mag n=5>Gamma<b>B</b></mag><x:y a='1'>t</x:y></lib>tail");
    return d;
  }();
  return *doc;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string_view bytes(reinterpret_cast<const char*>(data), size);
  if (std::count(bytes.begin(), bytes.end(), '[') > 3)
    return 0;
  ht::THtmlNode& doc = tree();
  ht::hstring path = ht::Utf8ToHString(bytes);
  ht::THtNode* current = doc.FirstChild();

  ht::IHtNodeList all = doc.XPath(path, false, current);
  for (ht::THtNode* n : *all)
    if (!n || n->Root() != &doc)
      __builtin_trap();
  ht::IHtNodeList first = doc.XPath(path, true, current);
  if (first->GetCount() > 1 || (first->GetCount() == 1) != (all->GetCount() > 0))
    __builtin_trap();
  if (first->GetCount() == 1 && first->GetNode(0) != all->GetNode(0))
    __builtin_trap();

  (void)doc.XPathValue(path, current);
  if (ht::THtNode* deep = doc.FindNode(u"name"))
    (void)deep->XPathValue(path);
  int calls = 0;
  doc.XPath(path, [&](ht::THtNode* n, bool& more) {
    if (n->Root() != &doc)
      __builtin_trap();
    more = ++calls < 3;
  });
  return 0;
}
