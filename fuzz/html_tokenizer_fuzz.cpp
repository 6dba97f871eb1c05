// The HTML reader over arbitrary text: never a crash or a hang, in HTML mode
// never an exception, in XML mode only the documented parser errors. The
// first byte picks the mode and whether the rest is UTF-8 or raw UTF-16.
#include "htcore/document/html_parser.h"
#include "htcore/document/string_parser.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

ht::hstring text_of(const uint8_t* data, size_t size, bool utf16) {
  if (!utf16)
    return ht::Utf8ToHString(std::string_view(reinterpret_cast<const char*>(data), size));
  std::u16string s;
  for (size_t i = 0; i + 1 < size; i += 2)
    s += static_cast<char16_t>(data[i] | (data[i + 1] << 8));
  return ht::hstring(s.data(), s.size());
}

void read_items(const ht::hstring& text, bool xml, bool ignore_meta, bool case_sensitive) {
  ht::THtmlParser hp(text, xml);
  hp.IgnoreMetaEncoding = ignore_meta;
  if (case_sensitive)
    hp.SetCaseSensitive(true);
  // Each item consumes input; a re-decoding may grow the text once per
  // declaration, so this bound holds unless the reader stops advancing.
  size_t limit = 4 * text.size() + 64;
  for (size_t n = 0; hp.NextItem(); ++n) {
    if (n > limit)
      __builtin_trap();
    if (hp.Attributes)
      for (const ht::THtAttribute& a : *hp.Attributes)
        if (a.Name.empty() && a.Value.size() > 0) // names are never empty
          __builtin_trap();
    if (n % 7 == 3 && !hp.RepeatCurrent)
      hp.RepeatCurrent = true;
  }
}

void read_numbers(const ht::hstring& text, bool strict) {
  ht::TStringParser sp(text);
  sp.RaiseException = strict;
  ht::hstring s;
  for (int guard = 0; !sp.Empty() && guard < 100000; ++guard) {
    const char16_t* before = sp.p;
    try {
      switch (guard % 9) {
      case 0:
        sp.ReadInt();
        break;
      case 1:
        sp.ReadNumEx();
        break;
      case 2: {
        int64_t i;
        double d;
        sp.ReadIntOrFloat(i, d);
        break;
      }
      case 3:
        sp.ReadHex();
        break;
      case 4:
        sp.ReadtoWordBreak(s);
        break;
      case 5:
        sp.ReadWord(s);
        break;
      case 6:
        sp.ReadParam(s);
        break;
      case 7:
        sp.ReadtoChar(u';', s, true);
        break;
      default:
        sp.ReadLn(s);
        break;
      }
    } catch (const ht::EHtParserError&) {
      if (!strict)
        __builtin_trap();
    }
    if (sp.p == before)
      sp.Next();
    if (sp.p > sp.pend)
      __builtin_trap();
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0)
    return 0;
  uint8_t mode = data[0];
  ht::hstring text = text_of(data + 1, size - 1, mode & 1);
  bool xml = mode & 2;
  try {
    read_items(text, xml, mode & 4, mode & 8);
  } catch (const ht::EHtParserError&) {
    if (!xml)
      __builtin_trap();
  }
  read_numbers(text, mode & 16);
  return 0;
}
