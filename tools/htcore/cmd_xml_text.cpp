// htcore xml text [--max-item MIB] FILE|-
//
// The text of an XML document of any size, through the SAX reader's
// ExtractText: read in blocks, written out as it comes, in UTF-8. Without a
// byte-order mark or an encoding declaration the input is taken as UTF-8;
// UTF-16 of either byte order is turned into UTF-8 on the way in. Texts and
// tags come whole up to the item limit, and a longer one is an error rather
// than a piece of text.
#include "commands.h"
#include "htcore/document/parse_errors.h"
#include "htcore/document/sax_parser.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace htcore_cli {

namespace {

constexpr int64_t kDefaultMaxItemMiB = 64;

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

// The text so far stays on stdout, ended by a line break.
int fail_after_text(bool at_line_start, const std::string& message) {
  if (!at_line_start)
    Emit("\n");
  std::fflush(stdout); // before the message, for a reader of both streams
  return Fail(message);
}

} // namespace

int CmdXmlText(int argc, char** argv) {
  int64_t max_item_mib = kDefaultMaxItemMiB;
  const char* file = nullptr;
  for (int i = 0; i < argc; ++i) {
    std::string a = argv[i];
    if (a == "--max-item") {
      char* end = nullptr;
      long long v = i + 1 < argc ? std::strtoll(argv[i + 1], &end, 10) : 0;
      if (!end || *end || v < 1 || v > 1023)
        return FailUsage("xml text", "--max-item needs a number of MiB from 1 to 1023");
      max_item_mib = v;
      ++i;
    } else if (a.size() > 1 && a[0] == '-') {
      return FailUsage("xml text", "unknown option '" + a + "'");
    } else if (file) {
      return FailUsage("xml text");
    } else {
      file = argv[i];
    }
  }
  if (!file)
    return FailUsage("xml text");
  bool is_stdin = std::strcmp(file, "-") == 0;
  FILE* f = is_stdin ? stdin : std::fopen(file, "rb");
  if (!f)
    return Fail(std::string("cannot open '") + file + "': " + std::strerror(errno));
  TStdioStream stream(f);
  bool at_line_start = true;
  int status = 0;
  ht::TFastString fs; // the text not yet handed out when an error comes
  try {
    TUtf8Stream utf8(stream);
    ht::THtSAXXMLParser sax(utf8, ht::heUTF8);
    sax.MaxItemSize = max_item_mib << 20;
    try {
      sax.ExtractText(fs, [&](ht::THtSAXXMLParser&, ht::TFastString& text) {
        write_utf8(text, at_line_start);
        text.Clear();
      });
    } catch (const ht::EHtParserError& e) {
      if (!sax.ItemTooLong())
        throw;
      write_utf8(fs, at_line_start);
      status = fail_after_text(at_line_start, std::string(e.what()) + ": a text or tag longer than " +
                                                  std::to_string(max_item_mib) + " MiB (--max-item)");
    }
  } catch (const std::exception& e) {
    write_utf8(fs, at_line_start);
    status = fail_after_text(at_line_start, e.what());
  }
  at_line_start = at_line_start || status != 0;
  if (!is_stdin)
    std::fclose(f);
  if (stream.Error() != 0)
    return Fail(std::string("cannot read '") + file + "': " + std::strerror(stream.Error()));
  if (!at_line_start)
    Emit("\n");
  return status;
}

} // namespace htcore_cli
