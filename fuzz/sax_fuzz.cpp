// Arbitrary bytes through the SAX reader: Next with SkipLevel now and then,
// and ExtractText. Only "Incorrect XML at position N" may come out, every
// event must move the reader forward, and nothing may read outside the
// document. The first byte picks the encoding, whether the input is
// repeated past the buffer size, so that tokens meet the refill, and whether
// the reader grows its buffer for long items (a little, so that the cap is
// met too).
#include "htcore/document/parse_errors.h"
#include "htcore/document/sax_parser.h"
#include "htcore/foundation/stream_types.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

const ht::THtmlEncoding kEncodings[] = {ht::heDefault, ht::heUTF8, ht::heUTF16, ht::heANSI};

void check_error(const ht::EHtParserError& e, int64_t size) {
  std::string m = e.what();
  const std::string lead = "Incorrect XML at position ";
  if (m.rfind(lead, 0) != 0)
    std::abort();
  long long at = std::atoll(m.c_str() + lead.size());
  if (at < 0 || at > size)
    std::abort();
}

int64_t max_item(uint8_t flags) { return flags & 0x20 ? ht::THtSAXXMLParser::kBufferSize + 4096 : 0; }

void run_events(const std::string& doc, ht::THtmlEncoding enc, uint8_t flags) {
  ht::TPointerStream s(doc.data(), static_cast<int64_t>(doc.size()));
  ht::THtSAXXMLParser sax(s, enc);
  sax.MaxItemSize = max_item(flags);
  int64_t last = sax.Position();
  size_t n = 0;
  try {
    while (sax.Next()) {
      int64_t at = sax.Position();
      if (at <= last || at > static_cast<int64_t>(doc.size()))
        std::abort();
      last = at;
      if (sax.FLastEvent == ht::seTagStart) {
        // Under heUTF16 a one-byte name is no whole unit, and so empty; the
        // encoding in force counts, which a byte-order mark may have set.
        for (const ht::THtAttribute& a : sax.FAttributes)
          if (a.Name.empty() && sax.FEncoding != ht::heUTF16)
            std::abort();
        if ((flags & 0x10) && (++n % 3) == 0)
          sax.SkipLevel();
      }
    }
  } catch (const ht::EHtParserError& e) {
    check_error(e, static_cast<int64_t>(doc.size()));
  }
}

void run_text(const std::string& doc, ht::THtmlEncoding enc, uint8_t flags) {
  ht::TPointerStream s(doc.data(), static_cast<int64_t>(doc.size()));
  ht::THtSAXXMLParser sax(s, enc);
  sax.MaxItemSize = max_item(flags);
  ht::TFastString fs;
  try {
    sax.ExtractText(fs, [](ht::THtSAXXMLParser&, ht::TFastString& text) { text.Clear(); });
  } catch (const ht::EHtParserError& e) {
    check_error(e, static_cast<int64_t>(doc.size()));
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1)
    return 0;
  uint8_t flags = data[0];
  std::string doc(reinterpret_cast<const char*>(data + 1), size - 1);
  if ((flags & 0x1C) == 0x0C && !doc.empty()) {
    // Now and then repeated past the buffer size (slow: kept rare), with a
    // lead from the top bits so the boundary falls in different places.
    std::string unit = doc;
    doc.assign(static_cast<size_t>(flags >> 6) * 7, ' ');
    while (doc.size() < ht::THtSAXXMLParser::kBufferSize + 2 * unit.size() + 64)
      doc += unit;
  }
  ht::THtmlEncoding enc = kEncodings[flags & 3];
  run_events(doc, enc, flags);
  run_text(doc, enc, flags);
  return 0;
}
