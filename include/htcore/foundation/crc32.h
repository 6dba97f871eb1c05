// CRC-32 over the reflected polynomial 0xEDB88320, started at 0xFFFFFFFF and
// NOT complemented at the end: CalcCRC32(p, n) == ~crc32(0, p, n) of zlib.
// Stored checksums rely on this form, so it stays; the empty input gives 0xFFFFFFFF.
//
//   uint32_t a = ht::CalcStrCRC32(u"Name");        // low byte of each unit, up to a NUL
//   uint32_t b = ht::CalcCRC32(data, size);
//   uint32_t c = ht::UpdateCRC32(ht::CalcCRC32(p1, n1), p2, n2);  // == CRC of p1 then p2
//
// CalcStrCRC32 looks only at the low byte of each UTF-16 unit, so U+0141 and
// U+0041 give one checksum; this is intended and kept for stored values.
#pragma once

#include "htcore/foundation/hstring.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ht {

uint32_t CalcCRC32(const void* P, size_t Len) noexcept;
uint32_t CalcBytesCRC32(const TBytes& Bytes) noexcept;
uint32_t CalcStrCRC32(std::u16string_view S) noexcept;

// Continues a checksum: Crc is a previous result (or 0xFFFFFFFF to start).
uint32_t UpdateCRC32(uint32_t Crc, const void* P, size_t Len) noexcept;

} // namespace ht
