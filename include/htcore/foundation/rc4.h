// RC4 stream cipher. The key record carries i and j between calls, so one key
// serves a running stream cut into pieces; encrypting and decrypting are the
// same operation.
//
//   ht::TRC4Key key;
//   ht::RC4Init(key, "Secret", 6);
//   ht::RC4Crypt(key, bytes);               // in place
#pragma once

#include "htcore/foundation/hstring.h"

#include <cstddef>
#include <cstdint>

namespace ht {

struct TRC4Key {
  uint8_t S[256];
  int i;
  int j;
};

// Standard key schedule over Len key bytes (repeating); i and j start at 0.
// Len runs from 1 to 32768 (else "Assertion failure"); the schedule reads at
// most the first 256 key bytes.
void RC4Init(TRC4Key& Key, const void* KeyBytes, size_t Len);
// Encrypts or decrypts Len bytes at P in place.
void RC4CryptData(TRC4Key& Key, void* P, size_t Len) noexcept;
void RC4Crypt(TRC4Key& Key, TBytes& Bytes) noexcept;

} // namespace ht
