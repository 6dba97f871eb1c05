// URL helpers on any text: no crash, and decoding undoes encoding for text
// without surrogates (halves are encoded one by one and do not decode back).
#include "htcore/foundation/convert.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string_view bytes(reinterpret_cast<const char*>(data), size);
  size_t split = bytes.find('\n');
  ht::hstring text = ht::Utf8ToHString(bytes);
  (void)ht::HTTPDecode(text);
  ht::hstring encoded = ht::HtEncodeUrl(text);
  bool surrogates = false;
  for (char16_t c : text.view())
    surrogates = surrogates || (c >= 0xD800 && c <= 0xDFFF);
  if (!surrogates && ht::HTTPDecode(encoded) != text)
    __builtin_trap();
  if (split != std::string_view::npos)
    (void)ht::CombineUrl(ht::Utf8ToHString(bytes.substr(0, split)),
                         ht::Utf8ToHString(bytes.substr(split + 1)));
  return 0;
}
