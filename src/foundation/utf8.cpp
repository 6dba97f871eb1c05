#include "htcore/foundation/utf8.h"

#include "foundation/utf8_tables.h"
#include "htcore/foundation/startup.h"

#include <cstring>

namespace ht {
namespace detail {

uint32_t g_utf8_bytes[65536];
uint8_t g_utf8_length[65536];

void StartUtf8Tables() {
  for (uint32_t c = 0; c < 65536; ++c) {
    uint8_t b[4] = {0, 0, 0, 0};
    uint8_t n;
    if (c < 0x80) {
      b[0] = static_cast<uint8_t>(c);
      n = 1;
    } else if (c < 0x800) {
      b[0] = static_cast<uint8_t>(0xC0 | (c >> 6));
      b[1] = static_cast<uint8_t>(0x80 | (c & 0x3F));
      n = 2;
    } else {
      // Surrogates get a three-byte form too; texts with them never keep it.
      b[0] = static_cast<uint8_t>(0xE0 | (c >> 12));
      b[1] = static_cast<uint8_t>(0x80 | ((c >> 6) & 0x3F));
      b[2] = static_cast<uint8_t>(0x80 | (c & 0x3F));
      n = 3;
    }
    std::memcpy(&g_utf8_bytes[c], b, 4);
    g_utf8_length[c] = n;
  }
}

} // namespace detail

char* HtUTF8EncodePtr(const char16_t* src, char* dst, size_t count) noexcept {
  EnsureStarted();
  const uint32_t* bytes = detail::g_utf8_bytes;
  const uint8_t* length = detail::g_utf8_length;
  uint32_t seen = 0;
  const char16_t* end = src + count;
  while (end - src >= 4) {
    uint32_t c0 = src[0], c1 = src[1], c2 = src[2], c3 = src[3];
    seen |= c0 | c1 | c2 | c3;
    std::memcpy(dst, &bytes[c0], 4);
    dst += length[c0];
    std::memcpy(dst, &bytes[c1], 4);
    dst += length[c1];
    std::memcpy(dst, &bytes[c2], 4);
    dst += length[c2];
    std::memcpy(dst, &bytes[c3], 4);
    dst += length[c3];
    src += 4;
  }
  for (; src < end; ++src) {
    uint32_t c = *src;
    seen |= c;
    std::memcpy(dst, &bytes[c], 4);
    dst += length[c];
  }
  // Every surrogate has the bits of 0xD800; so do some mixes of other units,
  // which then take the general path for nothing.
  return (seen & 0xD800) == 0xD800 ? nullptr : dst;
}

UTF8String HtUTF8Encode(std::u16string_view s) {
  if (s.empty())
    return UTF8String();
  UTF8String out;
  char* start = out.SetLength(s.size() * 3 + 1);
  char* end = HtUTF8EncodePtr(s.data(), start, s.size());
  if (!end) {
    std::string general = HStringToUtf8(s);
    return UTF8String(general.data(), general.size());
  }
  out.Truncate(static_cast<size_t>(end - start));
  return out;
}

TBytes HtUTF8EncodetoBytes(std::u16string_view s) {
  TBytes out(s.size() * 3 + 1);
  if (s.empty())
    return TBytes();
  char* start = reinterpret_cast<char*>(out.data());
  char* end = HtUTF8EncodePtr(s.data(), start, s.size());
  if (!end) {
    std::string general = HStringToUtf8(s);
    return TBytes(general.begin(), general.end());
  }
  out.resize(static_cast<size_t>(end - start));
  return out;
}

} // namespace ht
