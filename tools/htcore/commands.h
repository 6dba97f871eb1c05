// Sub-commands of the htcore tool. Each group lives in its own cmd_*.cpp and
// is listed once in commands.cpp, where its row also carries its help: main
// answers `htcore help`, `htcore --help` and `htcore COMMAND --help` from the
// rows, so a new command gets its help by filling the row.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ht {
class THtXMLNode;
}

namespace htcore_cli {

struct Command {
  const char* name;                  // first word on the command line, or the first two ("xml text")
  const char* usage;                 // the arguments, behind "htcore "
  const char* summary;               // one line in the command table
  int (*run)(int argc, char** argv); // arguments after the command word
  // For `htcore NAME --help`: what the command does in a few lines, then an
  // "options:" block if it has any, then an "example:" block, e.g.
  //   "Prints ...\n\noptions:\n  --xml   read XML\n\nexample:\n  htcore ...\n"
  const char* help;
};

const std::vector<Command>& Commands();

// Prints "htcore: [REASON; ]usage: htcore ..." with every form of the
// command's first word, as one line on stderr, and returns 1, for
// `return FailUsage("xml", "unknown xml command 'x'")`.
int FailUsage(std::string_view name, const std::string& reason = {});

// Reads a whole file, or standard input for "-". Prints one line to stderr and
// returns false when it cannot.
bool ReadInput(const char* name, std::string& bytes);

// Raised by Emit when standard output cannot take the text; main reports it.
// Not a std::exception, so that the commands' handlers for reader errors let
// it through.
class TOutputError {
public:
  explicit TOutputError(int err);
  const char* what() const noexcept { return FMessage.c_str(); }

private:
  std::string FMessage;
};

// Writes to standard output; raises TOutputError when that fails, so that a
// streaming command stops at the first lost byte. main flushes and checks
// standard output once more after every command.
void Emit(std::string_view text);

// Writes text to standard output with a final line break; returns 0.
int WriteOut(std::string text);

// The library ends lines with CR LF; a terminal wants LF.
std::string UnixLines(std::string text);

// Prints "htcore: MESSAGE" on stderr and returns 1, for `return Fail(...)`.
int Fail(const std::string& message);

// True for "--help" and "-h".
bool IsHelpOption(const char* arg);

// XML bytes (BOM, declaration or the bytes decide the encoding) into a tree;
// raises the reader's exceptions.
std::unique_ptr<ht::THtXMLNode> ReadXml(const std::string& bytes);

int CmdVersion(int argc, char** argv);
int CmdTokens(int argc, char** argv);
int CmdXmlText(int argc, char** argv);
int CmdRender(int argc, char** argv);
// html text|format|compact FILE|-
int CmdHtml(int argc, char** argv);
// xml format|tojson FILE|-
int CmdXml(int argc, char** argv);
// json toxml FILE|-
int CmdJson(int argc, char** argv);
// xpath [--xml] [--value] FILE PATH
int CmdXPath(int argc, char** argv);
// css format|minify|dark|selectors FILE|-
int CmdCss(int argc, char** argv);

} // namespace htcore_cli
