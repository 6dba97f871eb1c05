// Colour names and colour text of HTML and CSS.
//
// A colour is 0xAARRGGBB. htmlHextoColor reads what a style attribute or sheet
// holds (lower-case text): "#rgb", "#rgba", "#rrggbb", "#rrggbbaa", bare hex
// digits, CSS colour names, system colour names and "rgba(...)". Text that is
// no colour gives the marker 1, which callers test for:
//
//   ht::htmlHextoColor(u"#f00");             // 0xFFFF0000
//   ht::htmlHextoColor(u"rgba(red, 0.5)");   // 0x80FF0000
//   ht::htmlHextoColor(u"reed");             // 1: invalid
//   ht::htmlColortoStr(0x80FF0000);          // "#FF000080"
//
// System colours come from the theme procedure (SetThemeColorPrc).
#pragma once

#include "htcore/foundation/hstring.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace ht {

inline constexpr int kHtColorCount = 142;
inline constexpr int kHtSysColorCount = 42;

// Results of htmlHextoColor that are no plain colour.
inline constexpr uint32_t HtInvalidColor = 1;
inline constexpr uint32_t HtNoneColor = 0x1FFFFFFF; // "none": alpha 0x1F marks it
inline constexpr uint32_t HtTransparentColor = 0x00FFFFFF;

struct THtColorRec {
  hstring name; // lower case once the library has started
  uint32_t rgb; // 0xRRGGBB, no alpha
};

struct THtSysColorRec {
  hstring name; // lower case, sorted
  int index;    // system colour index for the theme procedure
};

// The tables, in their order, with lowered names (empty before start).
std::span<const THtColorRec> HtColorTable();
std::span<const THtSysColorRec> HtSysColorTable();

// A CSS colour name in any case, opaque; 0 if unknown.
uint32_t HtStringtoColor(std::u16string_view s);
// A system colour name in any case, through the theme procedure; 0 if unknown.
uint32_t HtStringtoSysColor(std::u16string_view s);

// Colour text to a colour; 1 if the text is no colour. Names match ordinally:
// pass lower-case text.
uint32_t htmlHextoColor(std::u16string_view s);
// The same without "rgba(" forms; IsSystem becomes 1 when the colour came from
// the system table (the answer may change with the theme), else 0.
uint32_t htmlHextoColorSys(std::u16string_view s, int& IsSystem);

// "RRGGBB": six upper-case hexadecimal digits, alpha dropped.
hstring htmlColortoHex(uint32_t C);
// "#RRGGBB" for an opaque colour, else "#RRGGBBAA".
hstring htmlColortoStr(uint32_t C);

} // namespace ht
