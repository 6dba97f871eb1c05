// THtFontStyle: the style bits of a font (one byte, bit number = member).
//
//   ht::THtFontStyles s = ht::HtFontStyleBit(ht::hfsBold) | ht::HtFontStyleBit(ht::hfsItalic);
#pragma once

#include "htcore/foundation/enum_info.h"

#include <cstdint>

namespace ht {

HT_ENUM(THtFontStyle, hfsBold, hfsItalic, hfsUnderline, hfsStrikeOut, hfsLight, hfsUltraLight, hfsBlack,
        hfsSemibold);
using THtFontStyles = uint8_t;
constexpr THtFontStyles HtFontStyleBit(THtFontStyle s) noexcept {
  return static_cast<THtFontStyles>(1u << s);
}

} // namespace ht
