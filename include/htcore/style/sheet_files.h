// A style driver loader for sheets that lie on disk, for hosts and tools that
// render local files:
//
//   driver.BaseURL = u"docs/"_hs;
//   driver.Loader = ht::HtLocalSheetLoader;   // <link href="a.css"> reads docs/a.css
#pragma once

#include "htcore/foundation/hstring.h"

namespace ht {

// The file at URL read as UTF-8; an empty text when URL is empty, names a
// scheme (anything with ':'), or cannot be read, so that the page still
// styles without it.
hstring HtLocalSheetLoader(const hstring& URL);

} // namespace ht
