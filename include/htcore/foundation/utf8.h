// Table-driven UTF-8 encoding of UTF-16 text.
//
// A table filled at library start holds the encoded bytes of every code unit,
// so encoding is one load and one store per unit. Text that may hold
// surrogates falls back to the general encoder (HStringToUtf8), which turns
// pairs into four-byte forms and lone surrogates into U+FFFD.
//
//   ht::UTF8String u = ht::HtUTF8Encode(u"gr\u00FC\u00DFe");   // "gr\xC3\xBC\xC3\x9F" "e"
//   ht::TBytes b = ht::HtUTF8EncodetoBytes(text);
#pragma once

#include "htcore/foundation/hstring.h"

#include <cstddef>
#include <string_view>

namespace ht {

// Encodes count units from src to dst and returns the end, or null when the
// text may contain surrogates (dst then holds garbage). Each unit stores four
// bytes, so dst needs 3 * count + 1 bytes.
char* HtUTF8EncodePtr(const char16_t* src, char* dst, size_t count) noexcept;

UTF8String HtUTF8Encode(std::u16string_view s);
TBytes HtUTF8EncodetoBytes(std::u16string_view s);

} // namespace ht
