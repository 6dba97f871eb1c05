// Character classes for text runs and line breaking.
//
// Small tests on single UTF-16 units: the direction class a text run takes from
// a character, the CJK ranges that break between any two units, Unicode letters
// and numbers, and the closing punctuation that must not start a line.
//
//   ht::CharBidi(u'a');                 // bdLTR
//   ht::CharBidi(u'\u0627');            // bdRTL (Arabic alef)
//   ht::IsLetter(u'\u00E9');            // true
//   ht::ReplaceTextURLs(u"see www.example.com"_hs,
//                       [](std::u16string_view url) { return u"<" + ht::hstring(url) + u">"; });
#pragma once

#include "htcore/foundation/enum_info.h"
#include "htcore/foundation/hstring.h"

#include <functional>
#include <string_view>

namespace ht {

HT_ENUM(THtTextRunBidi, bdLTR, bdNeutral, bdWeakLRT, bdRTL);

// ASCII letters and most scripts below U+2000 are left-to-right, digits weak,
// Hebrew and Arabic right-to-left, everything else (punctuation, symbols, all
// units above U+2000 except Hebrew presentation forms) neutral.
THtTextRunBidi CharBidi(char16_t c) noexcept;

// Arabic vowel marks U+064B to U+0653, which attach to the letter before them.
constexpr bool IsCharModifier(char16_t c) noexcept { return c >= 0x064B && c <= 0x0653; }

// CJK unified and compatibility ideographs and the CJK symbols block (U+30xx).
constexpr bool IsCJK(char16_t c) noexcept {
  return (c >= 0x4E00 && c <= 0x9FFF) || (c >= 0xF900 && c <= 0xFA00) || (c >> 8) == 0x30;
}

// By high byte: 0x30, 0x4E to 0x9F, 0xF9 and 0xFA.
constexpr bool IsChinese(char16_t c) noexcept {
  unsigned h = c >> 8;
  return h == 0x30 || (h >= 0x4E && h <= 0x9F) || h == 0xF9 || h == 0xFA;
}

// Any ideograph in the text; the symbols block U+30xx alone does not count.
bool HasChinese(std::u16string_view s) noexcept;

constexpr bool IsHighSurrogate(char16_t c) noexcept { return (c >> 8) >= 0xD8 && (c >> 8) <= 0xDB; }

// Unicode general categories L* and N* (Basic Multilingual Plane; surrogate
// units are neither).
bool IsLetter(char16_t c) noexcept;
bool IsNumber(char16_t c) noexcept;

// Punctuation that stays with the ideograph before it when a line is broken:
// the ASCII set followed by the full-width marks.
// ， 、 。 — ˇ Ё 〃 々 ～ … ’ ” 〕 〉 》 」 』 〗 】
inline constexpr std::u16string_view HtClosingPunctuation =
    u"!),.:;?]}"
    u"\uFF0C\u3001\u3002\u2014\u02C7\u0401\u3003\u3005\uFF5E\u2026\u2019\u201D\u3015\u3009\u300B\u300D\u300F"
    u"\u3017\u3011";

constexpr bool IsClosingPunctuation(char16_t c) noexcept {
  return c != 0 && HtClosingPunctuation.find(c) != std::u16string_view::npos;
}

// Makes the replacement text for one URL found in a text.
using TReplaceURLProc = std::function<hstring(std::u16string_view url)>;

// Replaces each URL of a plain text by Proc's text. Words are runs of units
// above the blank; a word is a URL when it begins with http://, https://,
// ftp://, ftps://, mailto: or www. (ASCII case ignored), or holds ".com" not
// followed by a letter or digit. Closing punctuation at the end of a word
// (".", ",", ";", ":", "!", "?", quotes, and a ")" without a "(" in the URL)
// stays outside the URL. Without any URL the text is returned shared.
hstring ReplaceTextURLs(const hstring& s, const TReplaceURLProc& Proc);

} // namespace ht
