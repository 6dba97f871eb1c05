// Any path text, compiled and run in all three forms against a tree: no
// crash, every match is a node of the tree, and a first-only query gives the
// first item of the full list. Without a line break the input is the path
// and the tree a small fixed one; otherwise the first line is the path and
// the rest an HTML or XML document to query, so that real documents can seed
// the runs.
//
// Each level of nested conditions can walk the whole tree once per candidate,
// and the list form keeps duplicates, so that "/*/../*/.." grows as the
// number of children to the power of the steps: over the fixed tree paths
// with more than three brackets are skipped, over a document of the input
// (up to 64 KB) those with more than one bracket or four steps.
#include "htcore/document/html_node.h"
#include "htcore/document/xpath.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
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
  size_t eol = bytes.find('\n');
  std::string_view path_bytes = bytes.substr(0, eol);
  auto count = [&](char c) { return std::count(path_bytes.begin(), path_bytes.end(), c); };
  if (eol == bytes.npos ? count('[') > 3 : count('[') > 1 || count('/') > 4 || size - eol > 65536)
    return 0;
  std::unique_ptr<ht::THtmlNode> own;
  if (eol != bytes.npos) {
    own = std::make_unique<ht::THtmlNode>();
    own->Parse(ht::Utf8ToHString(bytes.substr(eol + 1)));
  }
  ht::THtmlNode& doc = own ? *own : tree();
  ht::hstring path = ht::Utf8ToHString(path_bytes);
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
