// Base64 with the standard alphabet and '=' padding.
//
//   ht::hstring a = ht::Base64EncodeNoLF(bytes);          // one line
//   ht::hstring b = ht::Base64EncodeBytes(bytes);         // MIME lines
//   ht::TBytes back = ht::Base64DecodetoBytes(b);         // == bytes
//   ht::hstring t = ht::Base64DecodeString(ht::Base64EncodeString(u"Grüße"));
//
// Encoding: Base64EncodeNoLF gives (n + 2) / 3 * 4 characters without line
// breaks. Base64EncodeString and Base64EncodeBytes break the text into lines
// of 76 characters joined by CRLF, as MIME does, with no break after the last
// line. Text given as hstring travels as its UTF-8 bytes.
//
// Decoding is forgiving: characters outside the alphabet (line breaks, blanks,
// stray bytes, units above 0xFF) are skipped, '-' and '_' of the URL-safe
// alphabet are read as '+' and '/', the first '=' ends the data, and missing
// padding is fine. A final lone character (6 bits) carries no byte and is dropped.
#pragma once

#include "htcore/foundation/hstring.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ht {

hstring Base64EncodeNoLF(const TBytes& Bytes);
hstring Base64EncodeNoLF(const void* P, size_t Len);
hstring Base64EncodeBytes(const TBytes& Bytes);
hstring Base64EncodeBytes(const void* P, size_t Len);
hstring Base64EncodeString(const hstring& S);

TBytes Base64DecodetoBytes(std::u16string_view S);
TBytes Base64DecodetoBytes(std::string_view S);
// Decodes to bytes and reads them as UTF-8 (bad sequences become U+FFFD).
hstring Base64DecodeString(std::u16string_view S);

} // namespace ht
