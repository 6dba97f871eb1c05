// The texts of the two sheets every document starts from: the user-agent
// sheet (HTML4StyleSheet) and the quirks-mode additions. Both are parsed
// with the fixed weight 0, so that any document rule beats them and source
// order decides among their own rules.
#pragma once

#include <string_view>

namespace ht::detail {

extern const std::u16string_view kHTML4StyleSheetText;
extern const std::u16string_view kHTML4QuirkStyleSheetText;

} // namespace ht::detail
