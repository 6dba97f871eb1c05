#include "foundation/crc32_internal.h" // the table path alone
#include "htcore/foundation/base64.h"
#include "htcore/foundation/crc32.h"
#include "htcore/foundation/exception.h"
#include "htcore/foundation/md5.h"
#include "htcore/foundation/rc4.h"

#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <zlib.h>

using namespace ht;

namespace {

TBytes B(std::string_view s) { return TBytes(s.begin(), s.end()); }

std::string S(const TBytes& b) { return std::string(b.begin(), b.end()); }

TBytes RandomBytes(size_t n, uint32_t seed) {
  std::mt19937 rng(seed);
  TBytes b(n);
  for (auto& x : b)
    x = static_cast<uint8_t>(rng());
  return b;
}

std::string Hex(const uint8_t* p, size_t n) {
  static const char* d = "0123456789abcdef";
  std::string s;
  for (size_t i = 0; i < n; ++i) {
    s += d[p[i] >> 4];
    s += d[p[i] & 15];
  }
  return s;
}

} // namespace

TEST(CRC32, KnownValuesAreUncomplemented) {
  struct {
    std::string_view text;
    uint32_t standard; // the usual, complemented CRC-32
  } cases[] = {
      {"", 0x00000000},
      {"a", 0xE8B7BE43},
      {"123456789", 0xCBF43926},
      {"The quick brown fox jumps over the lazy dog", 0x414FA339},
  };
  for (auto& c : cases) {
    EXPECT_EQ(CalcCRC32(c.text.data(), c.text.size()), ~c.standard) << c.text;
    EXPECT_EQ(CalcBytesCRC32(B(c.text)), ~c.standard) << c.text;
    std::u16string wide(c.text.begin(), c.text.end());
    EXPECT_EQ(CalcStrCRC32(wide), ~c.standard) << c.text;
  }
  EXPECT_EQ(CalcStrCRC32(u""), 0xFFFFFFFFu);
  EXPECT_EQ(CalcBytesCRC32(TBytes()), 0xFFFFFFFFu);
}

TEST(CRC32, StringUsesLowBytesAndStopsAtNul) {
  EXPECT_EQ(CalcStrCRC32(u"\u0141"), CalcStrCRC32(u"A"));
  EXPECT_EQ(CalcStrCRC32(u"\u4E41\u4E42"), CalcStrCRC32(u"AB"));
  EXPECT_EQ(CalcStrCRC32(std::u16string_view(u"ab\0cd", 5)), CalcStrCRC32(u"ab"));
  EXPECT_EQ(CalcStrCRC32(std::u16string_view(u"\0x", 2)), 0xFFFFFFFFu);
  // The bulk path for long text: high bytes ignored, NUL anywhere ends it.
  for (size_t len : {31u, 32u, 33u, 1023u, 1024u, 1025u, 3000u}) {
    std::u16string text;
    std::string narrow;
    for (size_t i = 0; i < len; ++i) {
      char16_t u = static_cast<char16_t>(0x4100 + 1 + (i * 7) % 250);
      text += u;
      narrow += static_cast<char>(u & 0xFF);
    }
    EXPECT_EQ(CalcStrCRC32(text), CalcCRC32(narrow.data(), narrow.size())) << len;
    text[len - 1] = 0;
    EXPECT_EQ(CalcStrCRC32(text), CalcCRC32(narrow.data(), len - 1)) << len;
    text[len / 2] = 0;
    EXPECT_EQ(CalcStrCRC32(text), CalcCRC32(narrow.data(), len / 2)) << len;
  }
}

TEST(CRC32, FastPathMatchesTableAndZlib) {
  TBytes data = RandomBytes(5000, 7);
  // Every length around the 16- and 64-byte block edges, at odd offsets.
  for (size_t off : {0u, 1u, 3u, 8u}) {
    for (size_t len = 0; len + off <= 600; ++len) {
      const uint8_t* p = data.data() + off;
      uint32_t ours = CalcCRC32(p, len);
      ASSERT_EQ(ours, detail::UpdateCRC32Table(0xFFFFFFFFu, p, len)) << off << " " << len;
      ASSERT_EQ(ours, ~static_cast<uint32_t>(crc32(0, p, static_cast<uInt>(len)))) << off << " " << len;
    }
  }
  EXPECT_EQ(CalcCRC32(data.data(), data.size()), ~static_cast<uint32_t>(crc32(0, data.data(), 5000)));
}

TEST(CRC32, UpdateContinuesAChecksum) {
  TBytes data = RandomBytes(1000, 3);
  uint32_t whole = CalcCRC32(data.data(), data.size());
  for (size_t cut : {0u, 1u, 63u, 64u, 500u, 999u, 1000u}) {
    uint32_t part = CalcCRC32(data.data(), cut);
    EXPECT_EQ(UpdateCRC32(part, data.data() + cut, data.size() - cut), whole) << cut;
  }
}

TEST(MD5, RfcVectors) {
  struct {
    std::string_view text;
    const char* hex;
  } cases[] = {
      {"", "d41d8cd98f00b204e9800998ecf8427e"},
      {"a", "0cc175b9c0f1b6a831c399e269772661"},
      {"abc", "900150983cd24fb0d6963f7d28e17f72"},
      {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
      {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
      {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789", "d174ab98d277d9f5a5611c2c9f419d9f"},
      {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
       "57edf4a22be3c955ac49da2e2107b67a"},
  };
  for (auto& c : cases) {
    TMD5Digest d = MD5Hash(B(c.text));
    EXPECT_EQ(Hex(d.data(), d.size()), c.hex) << c.text;
    EXPECT_EQ(MD5DigestToHex(d).toUtf8(), c.hex);
  }
  EXPECT_EQ(MD5DigestToHex(MD5Hash(TBytes(1000000, 'a'))).toUtf8(), "7707d6ae4e027c70eea2a935c2296f21");
}

TEST(MD5, PiecesGiveTheSameDigest) {
  // Lengths around the padding edges (55/56 and 63/64 bytes) fed in uneven pieces.
  for (size_t len : {0u, 1u, 55u, 56u, 57u, 63u, 64u, 65u, 119u, 120u, 128u, 1000u}) {
    TBytes data = RandomBytes(len, static_cast<uint32_t>(len));
    TMD5Digest whole = MD5Hash(data);
    for (size_t step : {1u, 7u, 64u, 100u}) {
      TMD5 md5;
      for (size_t i = 0; i < len; i += step)
        md5.Update(data.data() + i, std::min(step, len - i));
      EXPECT_EQ(md5.Final(), whole) << len << " " << step;
    }
  }
  TMD5 reused;
  reused.Update("junk", 4);
  reused.Final();
  EXPECT_EQ(reused.Final(), MD5Hash(TBytes())); // Final resets
}

TEST(Base64, RfcVectorsAndPadding) {
  struct {
    std::string_view bytes;
    std::u16string_view text;
  } cases[] = {
      {"", u""},
      {"f", u"Zg=="},
      {"fo", u"Zm8="},
      {"foo", u"Zm9v"},
      {"foob", u"Zm9vYg=="},
      {"fooba", u"Zm9vYmE="},
      {"foobar", u"Zm9vYmFy"},
      {"\xFB\xFF", u"+/8="},
  };
  for (auto& c : cases) {
    EXPECT_EQ(Base64EncodeNoLF(B(c.bytes)).view(), c.text) << c.bytes;
    EXPECT_EQ(Base64EncodeBytes(B(c.bytes)).view(), c.text) << c.bytes;
    EXPECT_EQ(S(Base64DecodetoBytes(c.text)), c.bytes);
    EXPECT_EQ(S(Base64DecodetoBytes(hstring(c.text).toUtf8())), c.bytes);
  }
  EXPECT_EQ(Base64EncodeNoLF(TBytes{0}).view(), u"AA==");
}

TEST(Base64, LinesOf76WithCrlf) {
  struct {
    size_t bytes;
    size_t lines;
  } cases[] = {{57, 1}, {58, 2}, {114, 2}, {115, 3}, {1000, 18}};
  for (auto& c : cases) {
    TBytes data = RandomBytes(c.bytes, 11);
    hstring lined = Base64EncodeBytes(data);
    hstring flat = Base64EncodeNoLF(data);
    EXPECT_EQ(flat.size(), (c.bytes + 2) / 3 * 4);
    EXPECT_EQ(lined.size(), flat.size() + 2 * (c.lines - 1)) << c.bytes;
    std::u16string joined;
    size_t pos = 0, count = 0;
    std::u16string_view v = lined.view();
    for (;;) {
      size_t br = v.find(u"\r\n", pos);
      std::u16string_view line = v.substr(pos, br == v.npos ? v.npos : br - pos);
      ++count;
      if (br != v.npos)
        EXPECT_EQ(line.size(), 76u);
      else
        EXPECT_LE(line.size(), 76u);
      joined += line;
      if (br == v.npos)
        break;
      pos = br + 2;
    }
    EXPECT_EQ(count, c.lines);
    EXPECT_EQ(joined, flat.view());
    EXPECT_EQ(Base64DecodetoBytes(lined), data);
  }
}

TEST(Base64, DecodingIsForgiving) {
  struct {
    std::u16string_view text;
    std::string_view bytes;
  } cases[] = {
      {u"Zm9v\r\nYmFy", "foobar"},
      {u" Z m9v\tYmFy \n", "foobar"},
      {u"Zm9vYg", "foob"}, // no padding
      {u"Zm9vYmE", "fooba"},
      {u"Zg==Zm9v", "f"},   // '=' ends the data
      {u"Z", ""},           // six bits carry no byte
      {u"Zg\u0141=", "f"},  // a unit above 0xFF is skipped, not read by its low byte
      {u"Zm*9v!", "foo"},   // stray characters
      {u"-_8", "\xFB\xFF"}, // URL-safe alphabet
      {u"====", ""},
      {u"\r\n", ""},
  };
  for (auto& c : cases)
    EXPECT_EQ(S(Base64DecodetoBytes(c.text)), c.bytes) << hstring(c.text).toUtf8();
}

TEST(Base64, StringsTravelAsUtf8) {
  EXPECT_EQ(Base64EncodeString(u"\u00E9").view(), u"w6k=");
  hstring text = u"Gr\u00FC\u00DFe \u20AC \U0001F600"_hs;
  EXPECT_EQ(Base64DecodeString(Base64EncodeString(text)), text);
  hstring longer;
  for (int i = 0; i < 40; ++i)
    longer += text;
  hstring enc = Base64EncodeString(longer);
  EXPECT_NE(enc.view().find(u"\r\n"), std::u16string_view::npos);
  EXPECT_EQ(Base64DecodeString(enc), longer);
}

TEST(Base64, RoundTripsEveryShortLength) {
  for (size_t len = 0; len < 300; ++len) {
    TBytes data = RandomBytes(len, static_cast<uint32_t>(len) + 100);
    ASSERT_EQ(Base64DecodetoBytes(Base64EncodeNoLF(data)), data) << len;
    ASSERT_EQ(Base64DecodetoBytes(Base64EncodeBytes(data)), data) << len;
  }
}

TEST(RC4, KnownVectors) {
  struct {
    std::string_view key, plain;
    const char* cipher;
  } cases[] = {
      {"Key", "Plaintext", "bbf316e8d940af0ad3"},
      {"Wiki", "pedia", "1021bf0420"},
      {"Secret", "Attack at dawn", "45a01f645fc35b383552544b9bf5"},
  };
  for (auto& c : cases) {
    TRC4Key key;
    RC4Init(key, c.key.data(), c.key.size());
    TBytes data = B(c.plain);
    RC4Crypt(key, data);
    EXPECT_EQ(Hex(data.data(), data.size()), c.cipher) << c.key;
    RC4Init(key, c.key.data(), c.key.size());
    RC4Crypt(key, data);
    EXPECT_EQ(S(data), c.plain);
  }
  // RFC 6229, 40-bit key 0x0102030405: keystream bytes 0-15 and 16-31.
  const uint8_t k40[] = {1, 2, 3, 4, 5};
  TRC4Key key;
  RC4Init(key, k40, sizeof k40);
  TBytes stream(32, 0);
  RC4Crypt(key, stream);
  EXPECT_EQ(Hex(stream.data(), 16), "b2396305f03dc027ccc3524a0a1118a8");
  EXPECT_EQ(Hex(stream.data() + 16, 16), "6982944f18fc82d589c403a47a0d0919");
}

TEST(RC4, KeyCarriesStateBetweenCalls) {
  TBytes data = RandomBytes(1000, 5);
  TRC4Key a, b;
  RC4Init(a, "k", 1);
  RC4Init(b, "k", 1);
  TBytes once = data;
  RC4Crypt(a, once);
  TBytes pieces = data;
  RC4CryptData(b, pieces.data(), 1);
  RC4CryptData(b, pieces.data() + 1, 0);
  RC4CryptData(b, pieces.data() + 1, 600);
  RC4CryptData(b, pieces.data() + 601, 399);
  EXPECT_EQ(pieces, once);
  EXPECT_EQ(a.i, b.i);
  EXPECT_EQ(a.j, b.j);
}

TEST(RC4, KeyLengthLimits) {
  TRC4Key key;
  TBytes big(32769, 7);
  EXPECT_THROW(RC4Init(key, big.data(), 0), EAssertionFailed);
  EXPECT_THROW(RC4Init(key, big.data(), big.size()), EAssertionFailed);
  RC4Init(key, big.data(), 32768);
  // Bytes past the first 256 never reach the schedule.
  TRC4Key shorter;
  RC4Init(shorter, big.data(), 256);
  EXPECT_EQ(std::memcmp(key.S, shorter.S, 256), 0);
}
