#include "htcore/foundation/codepage.h"

#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

using namespace ht;

namespace {

const int kSinglePages[] = {1250,  1251,  1252,  1253,  1254,  1255,  1256,  1257,  1258,
                            874,   866,   20866, 21866, 20127, 28591, 28592, 28593, 28594,
                            28595, 28596, 28597, 28598, 28599, 28603, 28605};

std::string AllBytes() {
  std::string s(256, '\0');
  for (int i = 0; i < 256; ++i)
    s[static_cast<size_t>(i)] = static_cast<char>(i);
  return s;
}

// Restores the process-wide setting whatever a test does.
struct TSystemPageGuard {
  int saved = HtGetSystemCodePage();
  ~TSystemPageGuard() { HtSetSystemCodePage(saved); }
};

} // namespace

TEST(CodePage, EverySingleBytePageRoundTripsAllBytes) {
  std::string bytes = AllBytes();
  for (int cp : kSinglePages) {
    EXPECT_TRUE(HtIsSingleByteCodePage(cp)) << cp;
    hstring u = HtCodePageToUnicode(bytes, cp);
    ASSERT_EQ(u.size(), 256u) << cp;
    for (int i = 0; i < 128; ++i)
      ASSERT_EQ(u[static_cast<size_t>(i)], i) << cp;
    RawByteString back = HtUnicodeToCodePage(u, cp);
    EXPECT_EQ(back.view(), bytes) << cp;
  }
}

TEST(CodePage, KnownCharacters) {
  struct {
    int cp;
    std::string bytes;
    std::u16string text;
  } cases[] = {
      {1252, "\x80\x9F\xE9", u"\u20AC\u0178\u00E9"},
      {1252, "\x81\x8D\x8F\x90\x9D", u"\u0081\u008D\u008F\u0090\u009D"}, // undefined in 1252
      {1251, "\xC0\xE1\xB8", u"\u0410\u0431\u0451"},
      {1250, "\x8A\xB9", u"\u0160\u0105"},
      {866, "\x80\xAF", u"\u0410\u043F"},
      {20866, "\xC1\xE1", u"\u0430\u0410"},
      {28592, "\xA1", u"\u0104"},
      {1255, "\xE0\xF9", u"\u05D0\u05E9"}, // pages that compose still decode byte by byte
      {1258, "\xC3\xE0", u"\u0102\u00E0"},
      {28591, "\x80\xFF", u"\u0080\u00FF"},
      {936, "\xD6\xD0\xCE\xC4", u"\u4E2D\u6587"},
      {950, "\xA4\xA4\xA4\xE5", u"\u4E2D\u6587"},
      {65001, "\xE2\x82\xAC", u"\u20AC"},
      {CP_UTF8, "\xF0\x9F\x98\x80", u"\U0001F600"},
  };
  for (auto& c : cases) {
    EXPECT_EQ(HtCodePageToUnicode(c.bytes, c.cp).view(), c.text) << c.cp;
    EXPECT_EQ(HtUnicodeToCodePage(c.text, c.cp).view(), c.bytes) << c.cp;
  }
}

TEST(CodePage, WhatAPageLacks) {
  EXPECT_EQ(HtUnicodeToCodePage(u"a\u0416b", 1252).view(), "a?b");
  EXPECT_EQ(HtUnicodeToCodePage(u"\U0001F600", 1251).view(), "?"); // one for the pair
  EXPECT_EQ(HtUnicodeToCodePage(u"x\u00E9", 936).view().substr(0, 1), "x");
  EXPECT_EQ(HtUnicodeToCodePage(std::u16string{u'a', 0xD800, u'b'}, 950).view(), "a?b");
  // A lead byte without its trail byte.
  EXPECT_EQ(HtCodePageToUnicode("a\xD6", 936).view(), u"a\uFFFD");
  EXPECT_EQ(HtCodePageToUnicode("\xFF"
                                "a",
                                950)
                .view(),
            u"\uFFFD"
            "a");
  EXPECT_TRUE(HtCodePageToUnicode("", 936).empty());
  EXPECT_TRUE(HtUnicodeToCodePage(u"", 1251).empty());
}

TEST(CodePage, SystemAndUnknownPages) {
  TSystemPageGuard guard;
  EXPECT_EQ(HtGetSystemCodePage(), 1252);
  EXPECT_EQ(HtCodePageToUnicode("\x80", CP_ACP).view(), u"\u20AC");
  HtSetSystemCodePage(1251);
  EXPECT_EQ(HtGetSystemCodePage(), 1251);
  EXPECT_EQ(HtCodePageToUnicode("\xC0", CP_ACP).view(), u"\u0410");
  EXPECT_EQ(HtUnicodeToCodePage(u"\u0410", CP_ACP).view(), "\xC0");
  HtSetSystemCodePage(0);
  EXPECT_EQ(HtGetSystemCodePage(), 1252);
  EXPECT_FALSE(HtCodePageSupported(12345));
  EXPECT_EQ(HtCodePageToUnicode("\x80", 12345).view(), u"\u20AC"); // taken as 1252
  EXPECT_TRUE(HtCodePageSupported(20866));
  EXPECT_FALSE(HtIsSingleByteCodePage(936));
}

TEST(CodePage, TablesBuildOnceUnderConcurrentFirstUse) {
  std::string bytes = AllBytes();
  std::vector<std::thread> threads;
  std::vector<std::u16string> results(4);
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([&, t] {
      results[static_cast<size_t>(t)] = std::u16string(HtCodePageToUnicode(bytes, 1257).view());
    });
  for (auto& th : threads)
    th.join();
  for (auto& r : results)
    EXPECT_EQ(r, results[0]);
  EXPECT_EQ(HtUnicodeToCodePage(results[0], 1257).view(), bytes);
}
