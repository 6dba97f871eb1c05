// THString: conversions between byte arrays and hstring, without code pages.
//
//   ht::TBytes raw = {'a', 0xE9};
//   ht::hstring s = ht::THString::ANSIBytestoString(raw, 0, -1);   // u"a\u00E9"
//   ht::TBytes back = ht::THString::StringtoANSIBytes(s);
//
// ANSIBytestoString widens each byte to the unit of the same value (Latin-1);
// StringtoANSIBytes keeps the low byte of each unit.
#pragma once

#include "htcore/foundation/hstring.h"

#include <string_view>

namespace ht {

class THString {
public:
  THString() = delete;

  // Bytes from offset AFirst, ALength of them (below 0: all to the end).
  static void ANSIBytestoString(const TBytes& Source, hstring& Res, int AFirst = 0, int ALength = -1);
  static hstring ANSIBytestoString(const TBytes& Source, int AFirst = 0, int ALength = -1);
  static hstring ANSIBytestoString(const void* Source, size_t Count);
  // The result has as many units as Source has bytes: the bytes fill its lower
  // half and the upper half stays zero. This asymmetry with
  // BEUnicodeBytestoString is part of the operation; nothing in the library
  // calls it.
  static hstring UnicodeBytestoString(const TBytes& Source);
  // UTF-16BE bytes; an odd last byte is dropped.
  static hstring BEUnicodeBytestoString(const TBytes& Source);
  static TBytes StringtoANSIBytes(std::u16string_view Source);
};

} // namespace ht
