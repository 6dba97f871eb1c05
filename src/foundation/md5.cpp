#include "htcore/foundation/md5.h"

#include <cstring>

namespace ht {

namespace {

constexpr uint32_t kSine[64] = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391,
};
constexpr int kShift[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};

inline uint32_t Rotl(uint32_t x, int s) { return (x << s) | (x >> (32 - s)); }

inline uint32_t Load32(const uint8_t* p) {
  return p[0] | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}

inline void Store32(uint8_t* p, uint32_t v) {
  p[0] = static_cast<uint8_t>(v);
  p[1] = static_cast<uint8_t>(v >> 8);
  p[2] = static_cast<uint8_t>(v >> 16);
  p[3] = static_cast<uint8_t>(v >> 24);
}

} // namespace

void TMD5::Reset() noexcept {
  FState[0] = 0x67452301;
  FState[1] = 0xefcdab89;
  FState[2] = 0x98badcfe;
  FState[3] = 0x10325476;
  FLength = 0;
}

void TMD5::Block(const uint8_t* p) noexcept {
  uint32_t m[16];
  for (int k = 0; k < 16; ++k)
    m[k] = Load32(p + 4 * k);
  uint32_t a = FState[0], b = FState[1], c = FState[2], d = FState[3];
  for (int k = 0; k < 64; ++k) {
    uint32_t f;
    int g;
    switch (k >> 4) {
    case 0:
      f = d ^ (b & (c ^ d));
      g = k;
      break;
    case 1:
      f = c ^ (d & (b ^ c));
      g = (5 * k + 1) & 15;
      break;
    case 2:
      f = b ^ c ^ d;
      g = (3 * k + 5) & 15;
      break;
    default:
      f = c ^ (b | ~d);
      g = (7 * k) & 15;
      break;
    }
    uint32_t t = d;
    d = c;
    c = b;
    b = b + Rotl(a + f + kSine[k] + m[g], kShift[k >> 4][k & 3]);
    a = t;
  }
  FState[0] += a;
  FState[1] += b;
  FState[2] += c;
  FState[3] += d;
}

void TMD5::Update(const void* P, size_t Len) noexcept {
  if (Len == 0)
    return;
  auto* p = static_cast<const uint8_t*>(P);
  size_t used = FLength & 63;
  FLength += Len;
  if (used) {
    size_t take = 64 - used < Len ? 64 - used : Len;
    std::memcpy(FBuffer + used, p, take);
    p += take;
    Len -= take;
    if (used + take < 64)
      return;
    Block(FBuffer);
  }
  for (; Len >= 64; p += 64, Len -= 64)
    Block(p);
  if (Len)
    std::memcpy(FBuffer, p, Len);
}

TMD5Digest TMD5::Final() noexcept {
  uint64_t bits = FLength * 8;
  static const uint8_t kPad[64] = {0x80};
  size_t used = FLength & 63;
  Update(kPad, used < 56 ? 56 - used : 120 - used);
  uint8_t len[8];
  for (int k = 0; k < 8; ++k)
    len[k] = static_cast<uint8_t>(bits >> (8 * k));
  Update(len, 8);
  TMD5Digest out;
  for (int k = 0; k < 4; ++k)
    Store32(out.data() + 4 * k, FState[k]);
  Reset();
  return out;
}

TMD5Digest MD5Hash(const void* P, size_t Len) noexcept {
  TMD5 md5;
  md5.Update(P, Len);
  return md5.Final();
}

TMD5Digest MD5Hash(const TBytes& Bytes) noexcept { return MD5Hash(Bytes.data(), Bytes.size()); }

hstring MD5DigestToHex(const TMD5Digest& Digest) {
  static const char16_t kHex[] = u"0123456789abcdef";
  hstring out;
  char16_t* p = out.SetLength(32);
  for (uint8_t b : Digest) {
    *p++ = kHex[b >> 4];
    *p++ = kHex[b & 15];
  }
  return out;
}

} // namespace ht
