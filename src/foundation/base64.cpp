#include "htcore/foundation/base64.h"

#include <array>
#include <type_traits>

namespace ht {

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr size_t kLineChars = 76;
constexpr size_t kLineBytes = kLineChars / 4 * 3;

// Two output characters per 12 input bits: half the lookups of the plain way.
constexpr auto kPairs = [] {
  std::array<uint32_t, 4096> t{};
  for (uint32_t i = 0; i < 4096; ++i)
    t[i] = uint32_t(uint8_t(kAlphabet[i >> 6])) | uint32_t(uint8_t(kAlphabet[i & 63])) << 16;
  return t;
}();

constexpr uint8_t kSkip = 0x80;
constexpr uint8_t kEnd = 0xC0;

constexpr auto kDecode = [] {
  std::array<uint8_t, 256> t{};
  for (auto& v : t)
    v = kSkip;
  for (int i = 0; i < 64; ++i)
    t[uint8_t(kAlphabet[i])] = static_cast<uint8_t>(i);
  t['-'] = 62;
  t['_'] = 63;
  t['='] = kEnd;
  return t;
}();

// Writes (n + 2) / 3 * 4 characters.
char16_t* EncodeRun(const uint8_t* p, size_t n, char16_t* o) {
  for (; n >= 3; n -= 3, p += 3, o += 4) {
    uint32_t v = uint32_t(p[0]) << 16 | uint32_t(p[1]) << 8 | p[2];
    uint32_t a = kPairs[v >> 12], b = kPairs[v & 0xFFF];
    o[0] = static_cast<char16_t>(a);
    o[1] = static_cast<char16_t>(a >> 16);
    o[2] = static_cast<char16_t>(b);
    o[3] = static_cast<char16_t>(b >> 16);
  }
  if (n) {
    uint32_t v = uint32_t(p[0]) << 16 | (n == 2 ? uint32_t(p[1]) << 8 : 0);
    o[0] = kAlphabet[v >> 18];
    o[1] = kAlphabet[(v >> 12) & 63];
    o[2] = n == 2 ? kAlphabet[(v >> 6) & 63] : u'=';
    o[3] = u'=';
    o += 4;
  }
  return o;
}

hstring Encode(const void* P, size_t Len, bool lines) {
  if (Len == 0)
    return hstring();
  auto* p = static_cast<const uint8_t*>(P);
  size_t chars = (Len + 2) / 3 * 4;
  size_t breaks = lines ? (chars - 1) / kLineChars : 0;
  hstring out;
  char16_t* o = out.SetLength(chars + 2 * breaks);
  if (!lines) {
    EncodeRun(p, Len, o);
    return out;
  }
  while (Len > kLineBytes) {
    o = EncodeRun(p, kLineBytes, o);
    *o++ = u'\r';
    *o++ = u'\n';
    p += kLineBytes;
    Len -= kLineBytes;
  }
  EncodeRun(p, Len, o);
  return out;
}

template <class CharT> inline uint8_t Lookup(CharT c) {
  using U = std::make_unsigned_t<CharT>;
  U u = static_cast<U>(c);
  if constexpr (sizeof(CharT) > 1) {
    if (u > 0xFF)
      return kSkip;
  }
  return kDecode[static_cast<uint8_t>(u)];
}

// Returns the end of the bytes written; o has room for n * 3 / 4 + 3 bytes.
template <class CharT> uint8_t* Decode(const CharT* s, size_t n, uint8_t* o) {
  size_t i = 0;
  uint32_t acc = 0;
  int have = 0;
  while (i < n) {
    if (have == 0) {
      // Clean quads go through four at a time; anything else takes the slow step.
      while (n - i >= 4) {
        uint32_t a = Lookup(s[i]), b = Lookup(s[i + 1]), c = Lookup(s[i + 2]), d = Lookup(s[i + 3]);
        if ((a | b | c | d) & 0xC0)
          break;
        uint32_t v = a << 18 | b << 12 | c << 6 | d;
        o[0] = static_cast<uint8_t>(v >> 16);
        o[1] = static_cast<uint8_t>(v >> 8);
        o[2] = static_cast<uint8_t>(v);
        o += 3;
        i += 4;
      }
      if (i >= n)
        break;
    }
    uint8_t v = Lookup(s[i++]);
    if (v == kEnd)
      break;
    if (v & kSkip)
      continue;
    acc = acc << 6 | v;
    if (++have == 4) {
      o[0] = static_cast<uint8_t>(acc >> 16);
      o[1] = static_cast<uint8_t>(acc >> 8);
      o[2] = static_cast<uint8_t>(acc);
      o += 3;
      acc = 0;
      have = 0;
    }
  }
  if (have == 2) {
    *o++ = static_cast<uint8_t>(acc >> 4);
  } else if (have == 3) {
    *o++ = static_cast<uint8_t>(acc >> 10);
    *o++ = static_cast<uint8_t>(acc >> 2);
  }
  return o;
}

template <class CharT> TBytes DecodeToBytes(const CharT* s, size_t n) {
  TBytes out(n / 4 * 3 + 3);
  out.resize(static_cast<size_t>(Decode(s, n, out.data()) - out.data()));
  return out;
}

} // namespace

hstring Base64EncodeNoLF(const void* P, size_t Len) { return Encode(P, Len, false); }
hstring Base64EncodeNoLF(const TBytes& Bytes) { return Encode(Bytes.data(), Bytes.size(), false); }
hstring Base64EncodeBytes(const void* P, size_t Len) { return Encode(P, Len, true); }
hstring Base64EncodeBytes(const TBytes& Bytes) { return Encode(Bytes.data(), Bytes.size(), true); }

hstring Base64EncodeString(const hstring& S) {
  std::string utf8 = S.toUtf8();
  return Encode(utf8.data(), utf8.size(), true);
}

TBytes Base64DecodetoBytes(std::u16string_view S) { return DecodeToBytes(S.data(), S.size()); }
TBytes Base64DecodetoBytes(std::string_view S) { return DecodeToBytes(S.data(), S.size()); }

hstring Base64DecodeString(std::u16string_view S) {
  TBytes bytes = Base64DecodetoBytes(S);
  return Utf8ToHString(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

} // namespace ht
