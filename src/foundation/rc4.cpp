#include "htcore/foundation/rc4.h"

#include "htcore/foundation/exception.h"

namespace ht {

void RC4Init(TRC4Key& Key, const void* KeyBytes, size_t Len) {
  HT_ASSERT(KeyBytes && Len > 0 && Len <= 32768);
  auto* k = static_cast<const uint8_t*>(KeyBytes);
  for (int n = 0; n < 256; ++n)
    Key.S[n] = static_cast<uint8_t>(n);
  uint8_t j = 0;
  for (size_t n = 0; n < 256; ++n) {
    j = static_cast<uint8_t>(j + Key.S[n] + k[n % Len]);
    uint8_t t = Key.S[n];
    Key.S[n] = Key.S[j];
    Key.S[j] = t;
  }
  Key.i = 0;
  Key.j = 0;
}

void RC4CryptData(TRC4Key& Key, void* P, size_t Len) noexcept {
  auto* p = static_cast<uint8_t*>(P);
  uint8_t i = static_cast<uint8_t>(Key.i);
  uint8_t j = static_cast<uint8_t>(Key.j);
  uint8_t* S = Key.S;
  for (size_t n = 0; n < Len; ++n) {
    i = static_cast<uint8_t>(i + 1);
    uint8_t si = S[i];
    j = static_cast<uint8_t>(j + si);
    uint8_t sj = S[j];
    S[i] = sj;
    S[j] = si;
    p[n] ^= S[static_cast<uint8_t>(si + sj)];
  }
  Key.i = i;
  Key.j = j;
}

void RC4Crypt(TRC4Key& Key, TBytes& Bytes) noexcept { RC4CryptData(Key, Bytes.data(), Bytes.size()); }

} // namespace ht
