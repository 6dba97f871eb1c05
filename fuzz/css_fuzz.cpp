// Style sheets from arbitrary bytes: parse, write back, minify, write again,
// and parse the written text once more. The first byte picks UTF-8 text or raw
// UTF-16 units; any input must give a sheet.
#include "htcore/foundation/hstring.h"
#include "htcore/style/css_sheet.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0)
    return 0;
  ht::hstring text;
  if (data[0] & 1) {
    std::u16string u((size - 1) / 2, u' ');
    std::memcpy(u.data(), data + 1, u.size() * 2);
    text = ht::hstring(u.data(), u.size());
  } else {
    text = ht::hstring::FromUtf8(std::string_view(reinterpret_cast<const char*>(data) + 1, size - 1));
  }
  ht::TCSSStyleSheet sheet;
  sheet.Parse(text);
  ht::hstring written = sheet.AsString();
  sheet.AsInlineString();
  sheet.Minify();
  sheet.Write(true);
  if (data[0] & 2) {
    sheet.ConvertLighttoDark();
    sheet.AsString();
  }
  ht::TCSSStyleSheet again;
  again.Parse(written);
  again.TestMediaSets(ht::cmScreen, 800, 0);
  return 0;
}
