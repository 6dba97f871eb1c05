// Code pages: 8-bit text to and from UTF-16.
//
// Single-byte pages (125x, 866, KOI8, ISO-8859-x, ...) go through a 256-entry
// table built once per page on first use; their bytes 0x00-0xFF always
// round-trip, bytes a page leaves undefined becoming the unit of the same
// value (in 1252: 0x81 <-> U+0081). Multi-byte pages (936 GBK, 950 Big5, 932,
// 949) use the C library's converter; 65001 is UTF-8. Code page 0 means the
// system code page, and an unknown page is taken as 1252.
//
//   ht::hstring s = ht::HtCodePageToUnicode("\xC0\xE1", 2, 1251);   // u"\u0410\u0431"
//   ht::RawByteString b = ht::HtUnicodeToCodePage(s, 1251);         // back to the bytes
//   ht::HtSetSystemCodePage(1250);   // process-wide, default 1252
#pragma once

#include "htcore/foundation/hstring.h"

#include <cstddef>
#include <string_view>

namespace ht {

constexpr int CP_ACP = 0; // the system code page
constexpr int CP_UTF8 = 65001;

// The process-wide "system 8-bit code page" (default 1252; 0 restores it).
void HtSetSystemCodePage(int CodePage) noexcept;
int HtGetSystemCodePage() noexcept;

// True for the pages with a conversion of their own (others count as 1252).
bool HtCodePageSupported(int CodePage) noexcept;
bool HtIsSingleByteCodePage(int CodePage) noexcept;

// Bytes that a multi-byte page cannot decode become U+FFFD.
hstring HtCodePageToUnicode(const char* bytes, size_t len, int CodePage);
inline hstring HtCodePageToUnicode(std::string_view bytes, int CodePage) {
  return HtCodePageToUnicode(bytes.data(), bytes.size(), CodePage);
}
// Characters the page lacks become '?'.
RawByteString HtUnicodeToCodePage(std::u16string_view s, int CodePage);

} // namespace ht
