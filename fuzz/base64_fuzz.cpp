// Any text decodes without reading or writing out of bounds, and what comes
// out re-encodes and decodes to itself; any bytes survive encoding both ways.
#include "htcore/foundation/base64.h"

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string_view narrow(reinterpret_cast<const char*>(data), size);
  ht::TBytes a = ht::Base64DecodetoBytes(narrow);
  if (a.size() > size / 4 * 3 + 2)
    __builtin_trap();
  if (ht::Base64DecodetoBytes(ht::Base64EncodeNoLF(a)) != a)
    __builtin_trap();

  // The same bytes widened to UTF-16 decode alike; paired into units above
  // 0xFF they are skipped rather than read by their low byte.
  std::u16string wide(narrow.begin(), narrow.end());
  for (auto& u : wide)
    u = static_cast<uint8_t>(u);
  if (ht::Base64DecodetoBytes(wide) != a)
    __builtin_trap();
  std::u16string units(size / 2, u'\0');
  for (size_t i = 0; i + 1 < size; i += 2)
    units[i / 2] = static_cast<char16_t>(data[i] | data[i + 1] << 8);
  ht::TBytes b = ht::Base64DecodetoBytes(units);
  if (ht::Base64DecodetoBytes(ht::Base64EncodeBytes(b)) != b)
    __builtin_trap();
  (void)ht::Base64DecodeString(units);

  ht::TBytes raw(data, data + size);
  if (ht::Base64DecodetoBytes(ht::Base64EncodeNoLF(raw)) != raw)
    __builtin_trap();
  if (ht::Base64DecodetoBytes(ht::Base64EncodeBytes(raw)) != raw)
    __builtin_trap();
  return 0;
}
