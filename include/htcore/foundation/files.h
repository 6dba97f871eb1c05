// Whole files to and from strings.
//
//   ht::StrtoFile(u"Hello", u"/tmp/a.txt");       // FF FE, then UTF-16LE
//   ht::hstring s = ht::FileToStr(u"/tmp/a.txt");  // "Hello"
//   ht::RawByteString raw = ht::FileToStrR(u"/tmp/a.txt");
//
// FileToStr reads the mark at the start: FF FE or FE FF (UTF-16 in the
// machine's order, a big-endian file is not swapped), a second byte 00 without
// a mark (UTF-16LE), EF BB (UTF-8 after the three-byte mark), else the system
// code page. A file that cannot be opened raises EFOpenError, e.g.
// 'Cannot open file "a.txt". No such file or directory'.
#pragma once

#include "htcore/foundation/hstring.h"

#include <string_view>

namespace ht {

hstring FileToStr(const hstring& FileName);
// The bytes of the file as they are.
RawByteString FileToStrA(const hstring& FileName);
RawByteString FileToStrR(const hstring& FileName);

// Writes FF FE and the text in UTF-16LE; the file is created or replaced.
void StrtoFile(std::u16string_view s, const hstring& FileName);
// Write the bytes as they are.
void StrtoFileA(std::string_view s, const hstring& FileName);
void StrtoFileR(std::string_view s, const hstring& FileName);

} // namespace ht
