// System colours: the built-in classic defaults and the host's theme slot.
#include "htcore/foundation/colour.h"

#include <atomic>

namespace ht {

namespace {

// What a stock desktop reports for the indices from COLOR_SCROLLBAR (0) to
// COLOR_MENUBAR (30), in platform order 0x00BBGGRR. Index 25 has no colour.
constexpr uint32_t kSysColors[31] = {
    0xC8C8C8, //  0 scroll bar
    0x000000, //  1 desktop background
    0xD1B499, //  2 active caption
    0xDBCDBF, //  3 inactive caption
    0xF0F0F0, //  4 menu
    0xFFFFFF, //  5 window
    0x646464, //  6 window frame
    0x000000, //  7 menu text
    0x000000, //  8 window text
    0x000000, //  9 caption text
    0xB4B4B4, // 10 active border
    0xFCF7F4, // 11 inactive border
    0xABABAB, // 12 application workspace
    0xD77800, // 13 highlight
    0xFFFFFF, // 14 highlight text
    0xF0F0F0, // 15 button face
    0xA0A0A0, // 16 button shadow
    0x6D6D6D, // 17 grey text
    0x000000, // 18 button text
    0x000000, // 19 inactive caption text
    0xFFFFFF, // 20 button highlight
    0x696969, // 21 3D dark shadow
    0xE3E3E3, // 22 3D light
    0x000000, // 23 info text
    0xE1FFFF, // 24 info background
    0x000000, // 25 (unused)
    0xCC6600, // 26 hot-tracked item
    0xEAD1B9, // 27 gradient active caption
    0xF2E4D7, // 28 gradient inactive caption
    0xFF9933, // 29 menu highlight
    0xF0F0F0, // 30 menu bar
};

std::atomic<TThemeColorProc> g_theme_proc{nullptr};

inline uint32_t table_color(int Index) noexcept { return Index >= 0 && Index < 31 ? kSysColors[Index] : 0; }

} // namespace

uint32_t DefaultThemeColor(int Index) noexcept { return Color2Win(table_color(Index)) | 0xFF000000u; }

uint32_t GetSysColor(int Index) noexcept {
  if (TThemeColorProc proc = g_theme_proc.load(std::memory_order_acquire))
    return Color2Win(proc(Index));
  return table_color(Index);
}

uint32_t ThemeColor(int Index) noexcept {
  if (TThemeColorProc proc = g_theme_proc.load(std::memory_order_acquire))
    return proc(Index);
  return DefaultThemeColor(Index);
}

TThemeColorProc SetThemeColorPrc(TThemeColorProc Proc) noexcept {
  return g_theme_proc.exchange(Proc, std::memory_order_acq_rel);
}

} // namespace ht
