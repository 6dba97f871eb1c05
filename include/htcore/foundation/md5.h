// MD5 digests (RFC 1321), for checksums and cache keys, not for security.
//
//   ht::TMD5Digest d = ht::MD5Hash(bytes);
//   ht::hstring hex = ht::MD5DigestToHex(d);      // "d41d8cd98f00b204e9800998ecf8427e" for no bytes
//
//   ht::TMD5 md5;                                   // incremental
//   md5.Update(p1, n1);
//   md5.Update(p2, n2);
//   ht::TMD5Digest d2 = md5.Final();
#pragma once

#include "htcore/foundation/hstring.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace ht {

using TMD5Digest = std::array<uint8_t, 16>;

class TMD5 {
public:
  TMD5() { Reset(); }
  void Reset() noexcept;
  void Update(const void* P, size_t Len) noexcept;
  // The digest of everything given since the last Reset; the object is reset afterwards.
  TMD5Digest Final() noexcept;

private:
  void Block(const uint8_t* p) noexcept;

  uint32_t FState[4];
  uint64_t FLength;
  uint8_t FBuffer[64];
};

TMD5Digest MD5Hash(const TBytes& Bytes) noexcept;
TMD5Digest MD5Hash(const void* P, size_t Len) noexcept;
// Lower-case hex, 32 characters.
hstring MD5DigestToHex(const TMD5Digest& Digest);

} // namespace ht
