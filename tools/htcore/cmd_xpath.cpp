// htcore xpath [--xml] [--value] FILE PATH (options go anywhere)
//
// Runs a path query over an HTML or XML document and prints each matching
// node once, in document order, as compact markup, one per line; or with
// --value the value of the first match (an attribute's value, an element's
// text). No match is exit status 1, as for grep.
#include "commands.h"
#include "htcore/document/html_node.h"
#include "htcore/document/node_list.h"
#include "htcore/document/xml_node.h"

#include <exception>
#include <string>
#include <unordered_set>
#include <vector>

namespace htcore_cli {

namespace {

bool has_xml_extension(const std::string& name) {
  auto dot = name.rfind('.');
  if (dot == std::string::npos)
    return false;
  std::string ext = name.substr(dot + 1);
  for (char& c : ext)
    c = static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
  return ext == "xml" || ext == "svg" || ext == "rss" || ext == "atom" || ext == "xsl" || ext == "xslt";
}

// Elements print as markup, text nodes as their text.
std::string markup(ht::THtNode* n, bool xml) {
  if (xml)
    return static_cast<ht::THtXMLNode*>(n)->Code().toUtf8();
  return static_cast<ht::THtmlNode*>(n)->GetOuterHTML().toUtf8();
}

// The path reader takes anything and matches nothing where it does not
// understand; the tool says so instead. Steps are split as the reader splits
// them: at '/' outside brackets and quotes, either quote toggling one state.
std::string path_error(std::string_view path) {
  size_t i = 0;
  if (path.substr(0, 1) == "/")
    i = path.substr(0, 3) == "/./" ? 3 : 1;
  if (i == path.size())
    return "empty path";
  while (i < path.size()) {
    if (path[i] == '/')
      ++i; // the second '/' of '//'
    size_t start = i, open = std::string_view::npos, close = std::string_view::npos;
    int depth = 0, brackets = 0;
    bool quoted = false;
    for (; i < path.size() && (path[i] != '/' || depth > 0 || quoted); ++i) {
      char c = path[i];
      if (c == '"' || c == '\'') {
        quoted = !quoted;
      } else if (quoted) {
        continue;
      } else if (c == '[') {
        if (depth++ == 0 && ++brackets == 1)
          open = i;
      } else if (c == ']') {
        if (--depth < 0)
          return "']' without '[' in the path";
        if (depth == 0)
          close = i;
      }
    }
    std::string_view step = path.substr(start, i - start);
    if (quoted)
      return "unterminated quote in the path";
    if (depth > 0)
      return "'[' without ']' in the path";
    if (brackets > 1)
      return "one [condition] per step: '" + std::string(step) + "'";
    if (open == start || step.empty())
      return "a step without a name in the path";
    if (close != std::string_view::npos && close + 1 != i)
      return "text behind ']' in step '" + std::string(step) + "'";
    if (i < path.size() && ++i == path.size())
      return "the path ends with '/'";
  }
  return {};
}

// Each node of the match list once, in document order: a walk over the tree
// that prints the nodes the list holds.
int print_unique(ht::THtNode* doc, ht::THtNodeList& found, bool xml) {
  std::unordered_set<const ht::THtNode*> wanted;
  for (int k = 0; k < found.GetCount(); ++k)
    wanted.insert(found.GetNode(k));
  if (wanted.empty())
    return 1;
  ht::THtNode* n = doc;
  while (n) {
    if (wanted.count(n))
      Emit(UnixLines(markup(n, xml)) + "\n");
    if (ht::THtNode* c = n->FirstChild()) {
      n = c;
      continue;
    }
    while (n != doc && !n->FNextSibling)
      n = n->FParent;
    n = n == doc ? nullptr : n->FNextSibling;
  }
  return 0;
}

} // namespace

int CmdXPath(int argc, char** argv) {
  bool xml = false, value = false;
  std::vector<const char*> args;
  for (int i = 0; i < argc; ++i) {
    std::string opt = argv[i];
    if (opt == "--xml")
      xml = true;
    else if (opt == "--value")
      value = true;
    else if (opt.size() > 2 && opt[0] == '-' && opt[1] == '-')
      return FailUsage("xpath", "unknown option '" + opt + "'");
    else
      args.push_back(argv[i]);
  }
  if (args.size() != 2)
    return FailUsage("xpath");
  const char* file = args[0];
  if (std::string error = path_error(args[1]); !error.empty())
    return Fail(error + ": " + args[1]);
  ht::hstring path = ht::hstring::FromUtf8(args[1]);
  xml = xml || has_xml_extension(file);
  std::string bytes;
  if (!ReadInput(file, bytes))
    return 1;
  try {
    std::unique_ptr<ht::THtNode> doc;
    if (xml) {
      doc = ReadXml(bytes);
    } else {
      auto html = std::make_unique<ht::THtmlNode>();
      html->ParseBytes(bytes.data(), bytes.size());
      doc = std::move(html);
    }
    if (value) {
      ht::hstring v = doc->XPathValue(path);
      // An empty value may be an empty match; only no match at all fails.
      if (v.empty() && doc->XPath(path, true)->GetCount() == 0)
        return 1;
      return WriteOut(UnixLines(v.toUtf8()));
    }
    // The list holds a node once per way of reaching it (`//li/..` holds
    // the list once per item); the walk's visit budget bounds its length.
    ht::IHtNodeList found = doc->XPath(path);
    return print_unique(doc.get(), *found, xml);
  } catch (const std::exception& e) {
    return Fail(std::string(file) + ": " + e.what());
  }
}

} // namespace htcore_cli
