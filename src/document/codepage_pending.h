// Code page conversion for the HTML reader until the foundation service is in
// place: narrowing to 8 bits and decoding in a code page.
#pragma once

#include <string_view>

#include "htcore/foundation/hstring.h"

namespace ht::detail {

hstring PendingCodePageToUnicode(std::string_view Bytes, int CodePage);
RawByteString PendingUnicodeToCodePage(std::u16string_view Text, int CodePage);
void PendingSetSystemCodePage(int CodePage);
int PendingGetSystemCodePage();

}  // namespace ht::detail
