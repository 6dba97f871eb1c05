// htcore xpath [--xml] [--value] FILE PATH (options go anywhere)
//
// Runs a path query over an HTML or XML document and prints each match as
// compact markup, one per line, or with --value the value of the first
// match (an attribute's value, an element's text).
#include "commands.h"
#include "htcore/document/html_node.h"
#include "htcore/document/node_list.h"
#include "htcore/document/xml_node.h"

#include <exception>
#include <string>
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
    if (value)
      return WriteOut(UnixLines(doc->XPathValue(path).toUtf8()));
    std::string out;
    ht::IHtNodeList found = doc->XPath(path);
    for (int k = 0; k < found->GetCount(); ++k)
      out += UnixLines(markup(found->GetNode(k), xml)) + "\n";
    if (out.empty())
      return 0; // no match prints nothing
    out.pop_back();
    return WriteOut(std::move(out));
  } catch (const std::exception& e) {
    return Fail(std::string(file) + ": " + e.what());
  }
}

} // namespace htcore_cli
