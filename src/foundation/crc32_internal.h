#pragma once

#include <cstddef>
#include <cstdint>

namespace ht::detail {

// Builds the CRC-32 tables; run by the htutils start code.
void StartCRC32();

// The table-driven path alone, for tests that compare it with the carry-less
// multiply path UpdateCRC32 takes on processors that have one.
uint32_t UpdateCRC32Table(uint32_t crc, const uint8_t* p, size_t n) noexcept;
bool CRC32HasClmul() noexcept;

} // namespace ht::detail
