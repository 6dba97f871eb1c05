// The %XX escape table of HtEncodeUrl, filled once at library start.
#pragma once

namespace ht::detail {

extern char16_t g_url_escapes[256][3];
void StartUrlEscapes();

} // namespace ht::detail
