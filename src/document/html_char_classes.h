// The character class planes of the HTML tokenizer, filled at library start.
#pragma once

#include <cstdint>

namespace ht::detail {

// [0]: outside a tag, [1]: inside a tag; see HtmlCharClass.
extern uint8_t g_html_char_class[2][256];

void BuildHtmlCharClasses();

} // namespace ht::detail
