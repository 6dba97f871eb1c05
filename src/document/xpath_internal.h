// Shared between the path compiler and the walkers.
#pragma once

#include <string_view>

namespace ht::detail {

// Whole text as a decimal int: blanks at either end and one sign allowed,
// nothing else; false on overflow. Indexes and the numeric comparisons use it.
bool XPathToInt(std::u16string_view s, int& value) noexcept;

} // namespace ht::detail
