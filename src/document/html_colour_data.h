// Source tables of colour names (html_colour_data.cpp).
#pragma once

#include "htcore/document/html_colours.h"

#include <cstdint>

namespace ht::detail {

struct TColorSource {
  const char16_t* name;
  uint32_t rgb;
};

struct TSysColorSource {
  const char16_t* name;
  int index;
};

extern const TColorSource kColorSource[kHtColorCount];
extern const TSysColorSource kSysColorSource[kHtSysColorCount];

} // namespace ht::detail
