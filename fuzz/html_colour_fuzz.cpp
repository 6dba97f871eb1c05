// Arbitrary text into the colour parser: never a crash, the written form of any
// colour it answers reads back as that colour, and the name lookups agree.
#include "htcore/document/html_colours.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

std::u16string lower(const ht::hstring& s) {
  std::u16string r(s.view());
  for (char16_t& c : r)
    if (c >= u'A' && c <= u'Z')
      c = static_cast<char16_t>(c + 32);
  return r;
}

void check(std::u16string_view text) {
  uint32_t c = ht::htmlHextoColor(text);
  if (ht::htmlHextoColor(lower(ht::htmlColortoStr(c))) != c)
    __builtin_trap();
  int is_system = -1;
  uint32_t s = ht::htmlHextoColorSys(text, is_system);
  if (is_system != 0 && is_system != 1)
    __builtin_trap();
  if (!text.starts_with(u"rgba(") && s != c)
    __builtin_trap();
  ht::HtStringtoColor(text);
  ht::HtStringtoSysColor(text);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // Bytes as Latin-1 text reach the ASCII grammar quickly; pairs of bytes as
  // UTF-16 units cover the rest.
  std::u16string narrow(data, data + size);
  check(narrow);
  std::u16string wide(size / 2, u'\0');
  for (size_t i = 0; i < wide.size(); ++i)
    wide[i] = static_cast<char16_t>(data[2 * i] | data[2 * i + 1] << 8);
  check(wide);
  return 0;
}
