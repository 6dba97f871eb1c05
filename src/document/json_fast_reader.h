// The direct JSON reader over UTF-8 bytes (json_fast_reader.cpp).
#pragma once

#include "htcore/document/xml_node.h"

#include <string_view>

namespace ht::detail {

// Builds Node, a new node, from UTF-8 JSON as ReadJSONFast does from its
// UTF-16 text; false, with Node cleared again, where it gives up.
bool ReadJSONFastUtf8(THtXMLNode& Node, std::string_view Utf8);

} // namespace ht::detail
