// Code page conversion for the node tree: decoding input bytes and recoding
// texts after an encoding declaration. Code page 0 is the system code page.
#pragma once

#include "htcore/foundation/codepage.h"
#include "htcore/foundation/hstring.h"

#include <cstddef>
#include <string_view>

namespace ht::detail {

constexpr int kCodePageUtf8 = CP_UTF8;

inline hstring DecodeCodePage(const char* bytes, size_t len, int codepage) {
  return HtCodePageToUnicode(bytes, len, codepage);
}

// Narrows to 8 bits by the system code page.
inline RawByteString NarrowToSystemCodePage(std::u16string_view text) {
  return HtUnicodeToCodePage(text, CP_ACP);
}

} // namespace ht::detail
