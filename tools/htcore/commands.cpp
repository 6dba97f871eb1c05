#include "commands.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace htcore_cli {

const std::vector<Command>& Commands() {
  static const std::vector<Command> list = {
      {"version", "version", "print the library version", CmdVersion},
      {"render", "render TEMPLATE DATA|- [--json-mode] [--var name=value]...",
       "render a {{ }} template over XML or JSON data (by extension; stdin is sniffed)", CmdRender},
      {"tokens", "tokens FILE|-", "HTML item stream (tags, text, blocks), one a line", CmdTokens},
      {"html", "html text|format|compact FILE|-", "HTML as plain text, indented or compact HTML (UTF-8)",
       CmdHtml},
      {"xml text", "xml text FILE|-", "the text of an XML document of any size (UTF-8)", CmdXmlText},
      {"xml", "xml format|tojson FILE|-", "XML as indented XML or as JSON (UTF-8)", CmdXml},
      {"json", "json toxml FILE|-", "JSON as indented XML (UTF-8)", CmdJson},
      {"xpath", "xpath [--xml] [--value] FILE PATH",
       "matches of PATH as markup, or the first one's value (.xml/.svg/.rss: XML)", CmdXPath},
      {"css", "css format|minify|dark|selectors FILE|-",
       "a style sheet written back, minified, in dark colours, or its selectors with weight and bucket", CmdCss},
  };
  return list;
}

bool ReadInput(const char* name, std::string& bytes) {
  bool is_stdin = std::strcmp(name, "-") == 0;
  FILE* f = is_stdin ? stdin : std::fopen(name, "rb");
  if (!f) {
    Fail(std::string("cannot open '") + name + "': " + std::strerror(errno));
    return false;
  }
  bytes.clear();
  char buf[65536];
  size_t n;
  while ((n = std::fread(buf, 1, sizeof buf, f)) > 0)
    bytes.append(buf, n);
  // A directory opens fine and fails on the first read.
  bool failed = std::ferror(f) != 0;
  int err = errno;
  if (!is_stdin)
    std::fclose(f);
  if (failed) {
    Fail(std::string("cannot read '") + (is_stdin ? "standard input" : name) + "': " + std::strerror(err));
    return false;
  }
  return true;
}

int WriteOut(std::string text) {
  if (text.empty() || text.back() != '\n')
    text += '\n';
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0)
    return Fail(std::string("cannot write the output: ") + std::strerror(errno));
  return 0;
}

std::string UnixLines(std::string text) {
  std::string::size_type w = 0;
  for (std::string::size_type r = 0; r < text.size(); ++r)
    if (!(text[r] == '\r' && r + 1 < text.size() && text[r + 1] == '\n'))
      text[w++] = text[r];
  text.resize(w);
  return text;
}

int Fail(const std::string& message) {
  std::fprintf(stderr, "htcore: %s\n", message.c_str());
  return 1;
}

int CmdVersion(int, char**) {
  std::puts("htcore 0.1.0");
  return 0;
}

} // namespace htcore_cli
