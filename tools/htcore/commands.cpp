#include "commands.h"

#include <cerrno>
#include <cstring>
#include <cstdio>

namespace htcore_cli {

const std::vector<Command>& Commands() {
  static const std::vector<Command> list = {
      {"version", "version", "print the library version", CmdVersion},
      {"tokens", "tokens FILE|-", "HTML item stream (tags, text, blocks), one a line", CmdTokens},
      {"xml text", "xml text FILE|-", "the text of an XML document of any size (UTF-8)", CmdXmlText},
      {"render", "render TEMPLATE DATA|- [--json-mode] [--var name=value]...",
       "render a {{ }} template over XML or JSON data (by extension; stdin is sniffed)", CmdRender},
      {"html", "html text|format|compact FILE|-", "HTML as plain text, indented or compact HTML (UTF-8)",
       CmdHtml},
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

int Fail(const std::string& message) {
  std::fprintf(stderr, "htcore: %s\n", message.c_str());
  return 1;
}

int CmdVersion(int, char**) {
  std::puts("htcore 0.1.0");
  return 0;
}

}  // namespace htcore_cli
