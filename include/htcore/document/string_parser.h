// TStringParser: a cursor over an hstring for the library's small grammars.
//
// The cursor `p` walks the text up to `pend`; the unit at `pend` is always a
// NUL, so reading the current unit is legal even at the end (an empty text
// points at the parser's own `fNull`). Every reader leaves the cursor behind
// what it consumed; "blanks" are all units up to U+0020.
//
//   ht::TStringParser sp(u"width: 12.5px, 3"_hs);
//   ht::hstring name;
//   sp.ReadtoChar(u':', name, true);   // "width", cursor behind ':'
//   double w = sp.ReadNum();           // 12.5, cursor on "px"
//   sp.Skip(2);
//   int n = sp.ReadInt();              // 3 (", " is skipped)
//
// With RaiseException set, the number readers raise EHtParserError
// "Incorrect number" on malformed input; otherwise they return 0.
#pragma once

#include "htcore/document/parse_errors.h"
#include "htcore/document/unicode_classes.h" // IsClosingPunctuation
#include "htcore/foundation/hstring.h"

#include <cstdint>
#include <string_view>

namespace ht {

class TStringParser {
public:
  explicit TStringParser(const hstring& A = hstring()) { Init(A); }
  TStringParser(const TStringParser&) = delete;
  TStringParser& operator=(const TStringParser&) = delete;

  // Replaces the text and puts the cursor at its start.
  void Init(const hstring& A);

  hstring s; // held to keep the text alive
  char16_t fNull = 0;
  const char16_t* p = &fNull;
  const char16_t* pend = &fNull;
  bool RaiseException = false;

  const char16_t* Start() const { return s.empty() ? &fNull : s.c_str(); }
  bool Empty() const { return p >= pend; }
  bool First() const { return p == Start(); }
  char16_t GetCurrent() const { return *p; }
  // Moves one unit forward unless at the end; returns the unit now under the cursor.
  char16_t Next() {
    if (p < pend)
      ++p;
    return *p;
  }
  int Pos() const { return static_cast<int>(p - Start()) + 1; } // 1-based
  int Line() const;                                             // LF units before the cursor
  hstring Tail() const { return hstring(p, static_cast<size_t>(pend - p)); }
  const char16_t* PTail() const { return p; }

  void Skip(int n);
  void Skipto(char16_t c); // to the next c (cursor on it), or the end
  void SkipBlanks() {
    while (p < pend && *p <= u' ')
      ++p;
  }
  // Cuts LF, CR and U+0020 from the end of the text; the cursor keeps its place.
  void SkipEndBlanks();
  // 1-based distance of the next c from the cursor (1 = under it), or 0.
  int CharPos(char16_t c) const;
  // Compares the text at the cursor, its A..Z taken as lower case, with
  // lower-case `s`. False at the end or for an empty `s`.
  bool StartsWith(std::u16string_view Lower) const;

  // Each reader returns whether it read something (ReadParam: whether an
  // element was read before the closing ')').
  bool ReadWord(hstring& Res, bool DoSkipBlanks = true);
  bool ReadParam(hstring& Res);
  bool ReadtoChar(char16_t c, hstring& Res, bool DoSkipBlanks = false);
  bool ReadtoChars(std::u16string_view sc, hstring& Res);
  bool ReadLn(hstring& Res);
  bool ReadtoWordBreak(hstring& Res);

  int ReadInt();
  int ReadInt1(); // one digit only, for compact SVG flag lists
  int64_t ReadHex();
  int64_t ReadBin();
  double ReadNum();   // no exponent
  double ReadNumEx(); // with exponent
  // JSON and script numbers: true with IntValue for an integer that fits in
  // 64 bits, false with ExtValue for fractions, exponents and long numbers.
  bool ReadIntOrFloat(int64_t& IntValue, double& ExtValue);

private:
  bool NumberPrefix(bool comma); // true for '-'
  double ReadDecimal(bool exponent);
  [[noreturn]] static void BadNumber();
};

// High byte 0x30, 0x4E..0x9F, 0xF9 or 0xFA.
inline bool IsIdeographic(char16_t c) {
  unsigned h = c >> 8;
  return h == 0x30 || (h >= 0x4E && h <= 0x9F) || h == 0xF9 || h == 0xFA;
}

} // namespace ht
