// Byte classes and small scanners of the SAX reader.
#pragma once

#include "htcore/document/sax_parser.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace ht::detail {

enum : uint8_t {
  kSaxTagStop = 1,   // ends a tag name: below 33, '"', '/', '>'
  kSaxAttrStop = 2,  // ends an attribute name: as a tag name, and '='
  kSaxValueStop = 4, // ends an unquoted value: below 33, '>'
};

inline constexpr std::array<uint8_t, 256> kSaxClass = [] {
  std::array<uint8_t, 256> t{};
  for (int c = 0; c < 33; ++c)
    t[c] = kSaxTagStop | kSaxAttrStop | kSaxValueStop;
  t['"'] = t['/'] = kSaxTagStop | kSaxAttrStop;
  t['='] = kSaxAttrStop;
  t['>'] = kSaxTagStop | kSaxAttrStop | kSaxValueStop;
  return t;
}();

inline const uint8_t* SaxScan(const uint8_t* p, const uint8_t* end, uint8_t stop) {
  while (p < end && !(kSaxClass[*p] & stop))
    ++p;
  return p;
}

inline const uint8_t* SaxSkipBlanks(const uint8_t* p, const uint8_t* end) {
  while (p < end && *p < 33)
    ++p;
  return p;
}

inline const uint8_t* SaxFind(const uint8_t* p, const uint8_t* end, uint8_t c) {
  return p < end ? static_cast<const uint8_t*>(std::memchr(p, c, static_cast<size_t>(end - p))) : nullptr;
}

inline bool SaxStarts(const uint8_t* p, const uint8_t* end, const char* s, size_t n) {
  return static_cast<size_t>(end - p) >= n && std::memcmp(p, s, n) == 0;
}

// Position behind the first "cc>" whose first c is at or after p, or null.
inline const uint8_t* SaxFindClose(const uint8_t* p, const uint8_t* end, uint8_t c) {
  const uint8_t* q = p + 2;
  while ((q = SaxFind(q, end, '>')) != nullptr) {
    if (q[-1] == c && q[-2] == c)
      return q + 1;
    ++q;
  }
  return nullptr;
}

// Widens ASCII bytes to units; false (with d partly written) at the first
// byte above 0x7F.
bool SaxWidenAscii(const uint8_t* s, char16_t* d, size_t n) noexcept;

// Name cache: direct-mapped, so its size never changes; a clash only costs a
// fresh decode.
inline constexpr size_t kSaxNameSlots = 512;
inline constexpr size_t kSaxMaxCachedName = 40;

} // namespace ht::detail

namespace ht {

struct THtSAXXMLParser::TNameSlot {
  size_t len = static_cast<size_t>(-1);
  uint8_t bytes[detail::kSaxMaxCachedName];
  hstring name;
  hstring ns;
};

} // namespace ht
