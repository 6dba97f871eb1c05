// Pieces shared by the two XML readers (xml_builder.cpp, xml_fast_reader.cpp).
#pragma once

#include "htcore/document/xml_node.h"

#include <string_view>

namespace ht::detail {

// A <?xml ...?> text that names UTF-8 (in any case).
bool DeclaresUtf8(std::u16string_view directive);
// Whether p..pend may hold UTF-8 read as 8-bit units, so that a UTF-8
// declaration is worth the reader's re-decoding test.
bool MayBeNarrowUtf8(const char16_t* p, const char16_t* pend);
// The message of a close tag that does not match the open element.
[[noreturn]] void XMLTagOrderError(const hstring& expected, const hstring& found, int pos);

// Builds Node from XML without the item reader, for the input it knows to
// read exactly as the item reader would. False when it met anything else;
// Node is then in an undefined state and the caller parses again.
bool ReadXMLFast(THtXMLNode& Node, const hstring& XML);

} // namespace ht::detail
