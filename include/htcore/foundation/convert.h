// Locale-free conversions between text and numbers, dates and URLs.
//
// Every CSS length, attribute value and script literal goes through these, so
// none of them looks at the C locale. The lenient readers never fail; only the
// strict StrtoFloatCheck and StrtoDateFmt raise EConvertError.
//
//   double w = ht::iStrtoFloat(u"12.5px");                  // 12.5
//   double v = ht::StrtoFloatCheck(u"1 234,5", u',', u' ');  // 1234.5
//   ht::TDateTime d = ht::StrtoDateFmt(u"05.03.2020 14:30", u"");  // mask chosen by shape
//   ht::hstring q = ht::HtEncodeUrl(u"a b/ü");               // "a+b%2F%C3%BC"
//   ht::hstring u = ht::CombineUrl(u"http://a/b/c", u"/d");  // "http://a/d"
#pragma once

#include "htcore/foundation/date_time.h"
#include "htcore/foundation/hstring.h"

#include <cstdint>
#include <string_view>

namespace ht {

// Lenient number reader: skips leading blanks (U+0020 only), takes one sign,
// digits, "." or "," as the decimal separator, at most seven fraction digits
// and an exponent written "e3" or "e-3" ("e+3" leaves the exponent out). It
// stops at the first unit it cannot use and answers 0 for text that does not
// start like a number.
double iStrtoFloat(std::u16string_view S) noexcept;
double iStrtoFloat(std::string_view S) noexcept;

// Lenient integer reader in the same manner: blanks, one sign, decimal digits,
// stopping at anything else; saturates at the int range.
int iStrtoInt(std::u16string_view S) noexcept;
int iStrtoInt(std::string_view S) noexcept;

// Strict reader with chosen separators: blanks at either end, an optional
// sign, digits in which ThousandSep may appear, an optional DecimalSep with
// digits, an optional exponent with sign. A ThousandSep of 0 allows none.
// Raises EConvertError "Invalid number <S>" for anything else, and for a value
// beyond the range of double.
double StrtoFloatCheck(std::u16string_view S, char16_t DecimalSep = u'.', char16_t ThousandSep = 0);

// Hexadecimal text with an optional "0x" prefix and an optional trailing "h".
// Letters past "f" count on ("g" is 16, "z" is 35): old data relies on it.
// Case and surrounding blanks are ignored; any other unit gives 0.
int64_t HexToDec(std::u16string_view S) noexcept;

// Reads a date and time by a mask of the tokens yyyy, yy, mmm, mm, m, dd, d,
// hh, h, nn, n, ss, s, zzz (any case); other mask units must appear as they
// are, a blank standing for one or more blanks, and quoted text is literal.
// yy means 1950..2049. mmm takes English month names and the Russian ones by
// their first three letters. An empty mask picks the first built-in mask that
// fits the text; the mask "cisco" reads the log clock form
// "*hh:nn:ss[.zzz] [zone] [weekday] mmm d yyyy".
// Raises EConvertError "'<S>' does not match mask '<mask>'".
TDateTime StrtoDateFmt(std::u16string_view S, std::u16string_view Mask);

// "+" becomes a blank and "%XX" a byte. Runs of bytes are read as UTF-8; a
// byte that is not part of a valid UTF-8 sequence stands for the code point
// of the same value (Latin-1), so old-style escapes still come out readable.
hstring HTTPDecode(const hstring& S);

// Query-string encoding: A-Z a-z 0-9 ! ( ) * - . \ _ ~ stay, a blank becomes
// "+", everything else becomes the %XX escapes of its UTF-8 bytes. Each half
// of a surrogate pair is encoded on its own, as three bytes.
hstring HtEncodeUrl(const hstring& S);

// Resolves Rel against Base: a relative path replaces the last segment, "//"
// gives a host ("http:" assumed), a root path keeps the scheme and host.
hstring CombineUrl(const hstring& Base, const hstring& Rel);

} // namespace ht
