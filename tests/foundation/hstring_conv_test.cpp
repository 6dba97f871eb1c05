#include "htcore/foundation/hstring_conv.h"

#include <gtest/gtest.h>

using namespace ht;

TEST(HStringConv, AnsiBytesWidenEveryByte) {
  TBytes all(256);
  for (int i = 0; i < 256; ++i)
    all[static_cast<size_t>(i)] = static_cast<uint8_t>(i);
  // Every length and offset around the eight-byte steps of the vector path.
  for (int first = 0; first < 20; ++first) {
    for (int len = -1; len < 40; ++len) {
      hstring s;
      THString::ANSIBytestoString(all, s, first, len);
      size_t expected = len < 0 ? 256 - static_cast<size_t>(first) : static_cast<size_t>(len);
      ASSERT_EQ(s.size(), expected);
      for (size_t i = 0; i < s.size(); ++i)
        ASSERT_EQ(s[i], static_cast<char16_t>(first + static_cast<int>(i)));
    }
  }
  EXPECT_TRUE(THString::ANSIBytestoString(all, 256, 5).empty());
  EXPECT_EQ(THString::ANSIBytestoString(all, 250, 100).size(), 6u);
  EXPECT_TRUE(THString::ANSIBytestoString(TBytes{}, 0, -1).empty());
  TBytes back = THString::StringtoANSIBytes(THString::ANSIBytestoString(all));
  EXPECT_EQ(back, all);
  EXPECT_EQ(THString::StringtoANSIBytes(u"\u0141A"), (TBytes{0x41, 0x41})); // low byte only
}

TEST(HStringConv, UnicodeBytesKeepTheirQuirks) {
  TBytes le{'h', 0, 'i', 0};
  hstring s = THString::UnicodeBytestoString(le);
  ASSERT_EQ(s.size(), 4u); // as many units as bytes
  EXPECT_EQ(s[0], u'h');
  EXPECT_EQ(s[1], u'i');
  EXPECT_EQ(s[2], 0);
  EXPECT_EQ(s[3], 0);
  TBytes be{0, 'h', 0x20, 0xAC, 0x41}; // odd last byte dropped
  EXPECT_EQ(THString::BEUnicodeBytestoString(be), u"h\u20AC");
  EXPECT_TRUE(THString::BEUnicodeBytestoString(TBytes{1}).empty());
}
