// Random UTF-16 through the table encoder and the builder's AddUTF8.
//
// Without surrogates the table encoder must equal the general encoder (with
// them it falls back to it, so it must equal it too). AddUTF8 must stay inside
// the space it reserves whatever the input, and agree with the general encoder
// on well-formed text.
#include "htcore/foundation/fast_string.h"
#include "htcore/foundation/utf8.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace {

bool WellFormed(std::u16string_view s) {
  for (size_t i = 0; i < s.size(); ++i) {
    char16_t c = s[i];
    if (c >= 0xDC00 && c <= 0xDFFF)
      return false;
    if (c >= 0xD800 && c <= 0xDBFF) {
      if (i + 1 >= s.size() || s[i + 1] < 0xDC00 || s[i + 1] > 0xDFFF)
        return false;
      ++i;
    }
  }
  return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1)
    return 0;
  // The first byte picks the builder's chunk size, so that the reserve step
  // meets full and nearly full chunks.
  int delta = 2 + data[0] % 64;
  std::u16string text((size - 1) / 2, u'\0');
  if (!text.empty())
    std::memcpy(text.data(), data + 1, text.size() * 2);

  std::string general = ht::HStringToUtf8(text);
  if (ht::HtUTF8Encode(text).view() != general)
    __builtin_trap();
  ht::TBytes bytes = ht::HtUTF8EncodetoBytes(text);
  if (std::string(bytes.begin(), bytes.end()) != general)
    __builtin_trap();

  ht::TFastRawString rs(delta);
  size_t half = text.size() / 2;
  rs.Add("<");
  rs.AddUTF8(std::u16string_view(text).substr(0, half));
  rs.AddUTF8(std::u16string_view(text).substr(half));
  ht::RawByteString out = rs.ToString();
  if (out.size() != static_cast<size_t>(rs.GetTotalLen()) || out.size() > 1 + 3 * text.size())
    __builtin_trap();
  if (WellFormed(std::u16string_view(text).substr(0, half)) &&
      WellFormed(std::u16string_view(text).substr(half)) && out.view().substr(1) != general)
    __builtin_trap();
  return 0;
}
