// Rendering mode from the head of a page's bytes, for hosts that style a page
// before (or without) keeping its doctype node:
//
//   bool quirks = ht::HtDoctypeQuirks(bytes);   // bytes of the file as read
//   driver.QuirksMode = quirks;
#pragma once

#include <string_view>

namespace ht {

// True when the first 2 KiB hold no doctype, or an old one (transitional,
// frameset, HTML 2 or 3) without a system identifier.
bool HtDoctypeQuirks(std::string_view Bytes);

} // namespace ht
