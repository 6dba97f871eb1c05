// Sub-commands of the htcore tool. Each group lives in its own cmd_*.cpp and
// is listed once in commands.cpp, where its row also carries its help: main
// answers `htcore help`, `htcore --help` and `htcore COMMAND --help` from the
// rows, so a new command gets its help by filling the row.
#pragma once

#include "htcore/foundation/hstring.h"
#include "htcore/foundation/stream.h"

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

// XML bytes (BOM, declaration or the bytes decide the encoding; UTF-16 in
// either byte order) into a tree; raises the reader's exceptions, and a
// std::runtime_error naming what the tree would drop silently (text or a
// second element around the root).
std::unique_ptr<ht::THtXMLNode> ReadXml(const std::string& bytes);

// UTF-16 input by its byte-order mark, or by a first unit below 0x80 (as '<'
// is) without one; mark is set to the length of the mark. UTF-32 marks raise
// std::runtime_error.
enum TUtf16Order { uoNone, uoBig, uoLittle };
TUtf16Order Utf16Order(std::string_view head, size_t& mark);
// UTF-16 bytes in the given order (without their mark) as text.
ht::hstring Utf16Text(std::string_view bytes, TUtf16Order order);
// Text bytes of a data file: UTF-16 by Utf16Order, otherwise UTF-8 with an
// optional mark.
ht::hstring TextOfBytes(std::string_view bytes);
// The UTF-8 of a data file without its mark, for readers of bytes; false for
// UTF-16, which TextOfBytes decodes.
bool Utf8OfBytes(std::string_view bytes, std::string_view& utf8);

// A stream of UTF-8 over a source in UTF-16 of either order (by Utf16Order)
// or already in UTF-8 or another 8-bit encoding, which passes as it is; for
// readers that scan bytes.
class TUtf8Stream : public ht::TStream {
public:
  explicit TUtf8Stream(ht::TStream& source);
  TUtf16Order Order() const noexcept { return FOrder; }
  int64_t Read(void* buffer, int64_t count) override;
  int64_t Write(const void*, int64_t) override { return 0; }
  int64_t Seek(int64_t, ht::TSeekOrigin) override { return 0; }

private:
  void Refill();
  ht::TStream& FSource;
  TUtf16Order FOrder = uoNone;
  std::string FRaw; // UTF-16 bytes not yet converted
  std::string FOut; // UTF-8 bytes not yet delivered, from FAt
  size_t FAt = 0;
  bool FEnd = false;
};

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

// query [--paths] FILE SELECTOR
int CmdQuery(int argc, char** argv);
// style FILE [--css FILE]... [--width N] [--props a,b,...]
int CmdStyle(int argc, char** argv);

// path normalize|bounds|flatten [--tolerance T] 'PATH DATA'|-
int CmdPath(int argc, char** argv);

// svg demo OUT_DIR [--only NAME]...
int CmdSvg(int argc, char** argv);
// render-svg FILE.html OUT.svg [--width N] [--css FILE]...
int CmdRenderSvg(int argc, char** argv);

} // namespace htcore_cli
