// htcore xml text FILE|-
//
// The text of an XML document of any size, through the SAX reader's
// ExtractText: read in blocks, written out as it comes, in UTF-8. Without a
// byte-order mark or an encoding declaration the input is taken as UTF-8.
#include "commands.h"
#include "htcore/document/parse_errors.h"
#include "htcore/document/sax_parser.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

namespace htcore_cli {

namespace {

// A C stream as a TStream, so that standard input needs no copy in memory.
class TStdioStream : public ht::TStream {
public:
  explicit TStdioStream(FILE* f) : FFile(f) {}
  int64_t Read(void* buffer, int64_t count) override {
    size_t n = std::fread(buffer, 1, static_cast<size_t>(count), FFile);
    if (n == 0 && std::ferror(FFile))
      FError = errno;
    return static_cast<int64_t>(n);
  }
  int64_t Write(const void*, int64_t) override { return 0; }
  int64_t Seek(int64_t, ht::TSeekOrigin) override { return 0; }
  int Error() const { return FError; }

private:
  FILE* FFile;
  int FError = 0;
};

// Lines break with LF on output; CR is what ExtractText puts between blocks.
void write_utf8(const ht::TFastString& text, bool& at_line_start) {
  std::string out = text.GetAsString().toUtf8();
  for (char& c : out)
    if (c == '\r')
      c = '\n';
  if (!out.empty()) {
    Emit(out);
    at_line_start = out.back() == '\n';
  }
}

} // namespace

int CmdXmlText(int argc, char** argv) {
  if (argc != 1)
    return FailUsage("xml text");
  bool is_stdin = std::strcmp(argv[0], "-") == 0;
  FILE* f = is_stdin ? stdin : std::fopen(argv[0], "rb");
  if (!f)
    return Fail(std::string("cannot open '") + argv[0] + "': " + std::strerror(errno));
  TStdioStream stream(f);
  bool at_line_start = true;
  int status = 0;
  try {
    ht::THtSAXXMLParser sax(stream, ht::heUTF8);
    ht::TFastString fs;
    sax.ExtractText(fs, [&](ht::THtSAXXMLParser&, ht::TFastString& text) {
      write_utf8(text, at_line_start);
      text.Clear();
    });
  } catch (const ht::Exception& e) {
    // The text so far stays on stdout, ended by a line break.
    if (!at_line_start)
      Emit("\n");
    at_line_start = true;
    status = Fail(e.what());
  }
  if (!is_stdin)
    std::fclose(f);
  if (stream.Error() != 0)
    return Fail(std::string("cannot read '") + argv[0] + "': " + std::strerror(stream.Error()));
  if (!at_line_start)
    Emit("\n");
  return status;
}

} // namespace htcore_cli
