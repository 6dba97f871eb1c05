#include "htcore/foundation/fast_string.h"
#include "htcore/foundation/utf8.h"

#include <gtest/gtest.h>
#include <random>
#include <string>

using namespace ht;

namespace {

std::u16string RandomText(std::mt19937& rng, size_t n, bool surrogates) {
  std::u16string s(n, u'a');
  for (auto& c : s) {
    switch (rng() % 4) {
    case 0:
      c = static_cast<char16_t>(rng() % 0x80);
      break;
    case 1:
      c = static_cast<char16_t>(0x80 + rng() % 0x780);
      break;
    default:
      c = static_cast<char16_t>(0x800 + rng() % (0x10000 - 0x800));
    }
    if (!surrogates && c >= 0xD800 && c <= 0xDFFF)
      c = u'x';
  }
  return s;
}

} // namespace

TEST(Utf8Encoder, BoundaryUnits) {
  struct {
    std::u16string in;
    std::string out;
  } cases[] = {
      {u"", ""},
      {u"A", "A"},
      {std::u16string(1, u'\0'), std::string(1, '\0')},
      {u"\u007F\u0080", "\x7F\xC2\x80"},
      {u"\u07FF\u0800", "\xDF\xBF\xE0\xA0\x80"},
      {u"\uD7FF\uE000\uFFFF", "\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF"},
      {u"\U0001F600", "\xF0\x9F\x98\x80"},      // pair: the general encoder takes over
      {std::u16string{0xD800}, "\xEF\xBF\xBD"}, // lone surrogate: U+FFFD
  };
  for (auto& c : cases) {
    EXPECT_EQ(HtUTF8Encode(c.in).view(), c.out);
    TBytes b = HtUTF8EncodetoBytes(c.in);
    EXPECT_EQ(std::string(b.begin(), b.end()), c.out);
  }
}

TEST(Utf8Encoder, PtrSignalsPossibleSurrogates) {
  char buf[16];
  std::u16string pair = u"\U0001F600";
  EXPECT_EQ(HtUTF8EncodePtr(pair.data(), buf, pair.size()), nullptr);
  // 0xD000 | 0x0800 looks like a surrogate although neither is one: null too,
  // and the callers' fallback still gives the right text.
  std::u16string mix{0xD000, 0x0800};
  EXPECT_EQ(HtUTF8EncodePtr(mix.data(), buf, mix.size()), nullptr);
  EXPECT_EQ(HtUTF8Encode(mix).view(), "\xED\x80\x80\xE0\xA0\x80");
  std::u16string plain = u"ab\u00E9";
  char* end = HtUTF8EncodePtr(plain.data(), buf, plain.size());
  ASSERT_NE(end, nullptr);
  EXPECT_EQ(std::string(buf, end), "ab\xC3\xA9");
}

TEST(Utf8Encoder, AgreesWithGeneralEncoderOnRandomText) {
  std::mt19937 rng(11);
  for (int round = 0; round < 300; ++round) {
    std::u16string s = RandomText(rng, rng() % 200, round % 2 == 0);
    std::string expected = HStringToUtf8(s);
    ASSERT_EQ(HtUTF8Encode(s).view(), expected);
    TBytes b = HtUTF8EncodetoBytes(s);
    ASSERT_EQ(std::string(b.begin(), b.end()), expected);
  }
}

TEST(Utf8Encoder, AddUTF8AgreesOnValidText) {
  std::mt19937 rng(5);
  for (int round = 0; round < 200; ++round) {
    std::u16string s = RandomText(rng, rng() % 100, false);
    if (round % 3 == 0)
      s += u"\U00010437\U0010FFFF";
    TFastRawString rs(16);
    rs.AddUTF8(s);
    ASSERT_EQ(rs.ToString().view(), HStringToUtf8(s));
  }
}
