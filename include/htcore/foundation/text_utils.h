// Small text helpers that parsers and writers call by name.
//
// Positions are 1-based and 0 means "not found". Case handling is ASCII only:
// no Unicode case mapping happens in these fast paths.
//
//   ht::hstring s = u"a,b;;c";
//   ht::hstring t = ht::Q_StrTok(s, u",;", true);    // t == "a", s == "b;;c"
//   int p = ht::FindChar(u'c', s, 1);                 // 4
//   ht::hstring name = u"DIV";
//   ht::hLower(name);                                 // "div" (copies only when needed)
//   TDisplay d;
//   ht::IsEnum2(u"ds", u"inline-block", d);           // d == dsInlineBlock
#pragma once

#include "htcore/foundation/enum_info.h"
#include "htcore/foundation/hstring.h"

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>
#include <type_traits>

namespace ht {

class TObject;
class TStringList;

// --- Case (ASCII A..Z only) ---

constexpr char16_t CharLower(char16_t c) noexcept {
  return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c;
}
constexpr char16_t AnsiCharLower(char16_t c) noexcept { return CharLower(c); }
constexpr char16_t CharUpper(char16_t c) noexcept {
  return c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - 32) : c;
}

// Always makes s private, then lower-cases it in place.
void vLower(hstring& s);
// As vLower, but copies only when a capital is actually found.
void hLower(hstring& s);

hstring LowerCase(std::u16string_view s);
hstring UpperCase(std::u16string_view s);
bool SameText(std::u16string_view a, std::u16string_view b) noexcept;

// --- Searching ---

// First c at or after 1-based StartPos, or 0.
int FindChar(char16_t c, std::u16string_view s, int StartPos = 1) noexcept;
int FindChar(char c, std::string_view s, int StartPos = 1) noexcept;
// First sub in s at or after 1-based Offset, or 0 (also for an empty sub).
int Pos(std::u16string_view sub, std::u16string_view s, int Offset = 1) noexcept;
int Pos(std::string_view sub, std::string_view s, int Offset = 1) noexcept;

// Token cutter. Flag true: returns the next token and removes it and the
// delimiter behind it from s. Flag false: returns everything up to the token's
// end, leading delimiters included, and s then starts with the delimiter.
hstring Q_StrTok(hstring& s, std::u16string_view Delims, bool Flag);

// True when s equals one of the entries exactly.
bool StrIn(std::u16string_view s, std::initializer_list<std::u16string_view> list) noexcept;
bool StrIn(std::u16string_view s, std::span<const hstring> list) noexcept;

// Ordinal, whatever the names say. An empty prefix gives false, an empty
// suffix true: callers depend on this asymmetry.
bool AnsiStartsWith(std::u16string_view s, std::u16string_view prefix) noexcept;
bool AnsiStartsWith(std::string_view s, std::string_view prefix) noexcept;
bool AnsiEndsWith(std::u16string_view s, std::u16string_view suffix) noexcept;
bool AnsiEndsWith(std::string_view s, std::string_view suffix) noexcept;

// Empty or nothing but units up to U+0020.
bool BlankString(std::u16string_view s) noexcept;
bool BlankString(std::string_view s) noexcept;
// Only U+0020, U+00A0, TAB, CR and LF (other control units count as content).
bool BlankOrNBSP(std::u16string_view s) noexcept;

// --- Changing text ---

// In place; a private copy is taken only at the first hit.
void ReplaceChar(hstring& s, char16_t Old, char16_t New);
// Every non-overlapping Search, left to right. Returns s itself (shared) when
// there is nothing to replace.
hstring ReplaceStr(const hstring& s, std::u16string_view Search, std::u16string_view Replacement);
// s = Value when s is empty, else s + Separator + Value.
void AddStr(hstring& s, const hstring& Value, std::u16string_view Separator);
inline const hstring& Coalesce(const hstring& a, const hstring& b) noexcept { return a.empty() ? b : a; }

// 1-based substring, clamped to the text: Copy(u"abcdef", 2, 3) == "bcd".
hstring Copy(const hstring& s, int Index, int Count);
RawByteString Copy(const RawByteString& s, int Index, int Count);
// Remove units up to U+0020 at either or both ends; return s itself when
// there is nothing to remove.
hstring Trim(const hstring& s);
hstring TrimLeft(const hstring& s);
hstring TrimRight(const hstring& s);
hstring StringOfChar(char16_t c, int Count);

// --- Numbers ---

hstring IntToStr(int32_t Value);
hstring IntToStr(int64_t Value);
hstring IntToStr(uint32_t Value);
hstring IntToStr(uint64_t Value);
// Upper-case hex, at least Digits digits; negative values in two's complement
// of their own width (IntToHex(-1, 2) == "FFFFFFFF").
hstring IntToHex(int32_t Value, int Digits);
hstring IntToHex(int64_t Value, int Digits);
hstring IntToHex(uint32_t Value, int Digits);
hstring IntToHex(uint64_t Value, int Digits);

// 0 when equal, 1 when b < a, -1 otherwise, comparing as unsigned.
constexpr int CompCardinal(uint32_t a, uint32_t b) noexcept { return a == b ? 0 : (b < a ? 1 : -1); }

constexpr uint16_t SwapWord(uint16_t v) noexcept { return static_cast<uint16_t>((v >> 8) | (v << 8)); }
constexpr int16_t SwapSmallInt(int16_t v) noexcept {
  return static_cast<int16_t>(SwapWord(static_cast<uint16_t>(v)));
}
constexpr uint32_t SwapCardinal(uint32_t v) noexcept {
  return (v >> 24) | ((v >> 8) & 0xFF00u) | ((v << 8) & 0xFF0000u) | (v << 24);
}

// --- Object lists ---

// Frees every object of a list of pointers and nulls its slot; the list keeps
// its length.
template <class List>
requires requires(List& l) {
  {*l.begin() = nullptr};
  {delete *l.begin()};
}
void FreeListObjects(List& list) {
  for (auto& p : list) {
    delete p;
    p = nullptr;
  }
}
// The same for the objects of a string list; the strings stay.
void FreeStringListObjects(TStringList& list);

// --- Enumerations by name ---

// Removes every '-' from s (and puts Prefix in front for IsEnum2), then looks
// the name up. A bad name gives false and a negative Value.
bool IsEnum(std::u16string_view s, PTypeInfo TypeInfo, int& Value);
bool IsEnum2(std::u16string_view Prefix, std::u16string_view s, PTypeInfo TypeInfo, int& Value);

template <class E>
requires std::is_enum_v<E>
bool IsEnum(std::u16string_view s, E& Value) {
  int v;
  bool ok = IsEnum(s, TypeInfo<E>(), v);
  Value = static_cast<E>(v);
  return ok;
}

template <class E>
requires std::is_enum_v<E>
bool IsEnum2(std::u16string_view Prefix, std::u16string_view s, E& Value) {
  int v;
  bool ok = IsEnum2(Prefix, s, TypeInfo<E>(), v);
  Value = static_cast<E>(v);
  return ok;
}

} // namespace ht
