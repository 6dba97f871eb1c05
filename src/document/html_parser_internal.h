// Private links of the HTML reader.
#pragma once

#include <cstdint>

#include "htcore/document/html_parser.h"

namespace ht::detail {

// Recodes the texts of the nodes built so far when a declaration changes the
// encoding in the middle of a parse.
extern void (*g_recode_nodes)(THtmlNode* Root, THtmlEncoding Encoding, uint32_t CodePage);

}  // namespace ht::detail
