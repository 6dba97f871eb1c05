// htcore html text|format|compact FILE|-
//
// Reads HTML bytes (the encoding is found from a byte-order mark, a meta
// charset or the bytes themselves), builds the tree and writes it back as
// plain text, as indented HTML or as compact HTML, in UTF-8.
#include "commands.h"
#include "htcore/document/html_node.h"
#include "htcore/foundation/fast_string.h"

#include <cstdio>
#include <string>

namespace htcore_cli {

using ht::operator""_hs;

namespace {

// Text for reading on a terminal: blanks at line ends go, and the blank lines
// left by the source's layout shrink to one between paragraphs.
std::string tidy_lines(const std::string& text) {
  std::string out;
  int empty_run = 0;
  std::string::size_type start = 0;
  while (start <= text.size()) {
    std::string::size_type end = text.find('\n', start);
    if (end == std::string::npos)
      end = text.size();
    std::string::size_type last = end;
    while (last > start && static_cast<unsigned char>(text[last - 1]) <= ' ')
      --last;
    if (last == start) {
      ++empty_run;
    } else {
      if (!out.empty())
        out += empty_run > 0 ? "\n\n" : "\n";
      out.append(text, start, last - start);
      empty_run = 0;
    }
    start = end + 1;
  }
  return out;
}

// The readable text is the body's; the head holds only the title and metadata.
ht::hstring body_text(ht::THtmlNode& doc) {
  ht::THtNode* body = doc.Tag() == u"body" ? &doc : doc.FindNode(u"body"_hs);
  if (auto* b = dynamic_cast<ht::THtmlNode*>(body))
    return b->GetInnerText();
  return doc.GetInnerText();
}

} // namespace

int CmdHtml(int argc, char** argv) {
  if (argc != 2)
    return FailUsage("html");
  std::string mode = argv[0];
  if (mode != "text" && mode != "format" && mode != "compact")
    return FailUsage("html", "unknown html command '" + mode + "'");
  std::string bytes;
  if (!ReadInput(argv[1], bytes))
    return 1;
  ht::THtmlNode doc;
  doc.ParseBytes(bytes.data(), bytes.size());
  if (mode == "text")
    return WriteOut(tidy_lines(UnixLines(body_text(doc).toUtf8())));
  ht::TFastString fs(65535);
  fs.Charset = u"utf-8"_hs;
  if (mode == "compact") {
    doc.FastInnerHTML(fs);
    return WriteOut(fs.GetAsString().toUtf8());
  }
  bool after_block = true;
  doc.FastFormattedHTML(fs, 0, 2, after_block);
  return WriteOut(UnixLines(fs.GetAsString().toUtf8()));
}

} // namespace htcore_cli
