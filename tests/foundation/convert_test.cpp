#include "htcore/foundation/convert.h"
#include "htcore/foundation/exception.h"

#include <climits>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <string>

using namespace ht;

namespace {

std::string U8(std::u16string_view s) { return HStringToUtf8(s); }

template <class F> std::string ConvertErrorOf(F&& f) {
  try {
    f();
  } catch (const EConvertError& e) {
    return e.what();
  }
  return "no error";
}

TDateTime DT(int y, int m, int d, int h = 0, int n = 0, int s = 0, int ms = 0) {
  return EncodeDateTime(y, m, d, h, n, s, ms);
}

} // namespace

TEST(IStrtoFloat, LenientReadingTable) {
  const double inf = std::numeric_limits<double>::infinity();
  struct {
    std::u16string_view text;
    double expected;
  } cases[] = {
      {u"1,5", 1.5},
      {u"1.5", 1.5},
      {u"x", 0},
      {u"", 0},
      {u"1.123456789", 1.1234567}, // seven fraction digits at most
      {u"1.00000009", 1.0},
      {u"0.0000001", 1e-7},
      {u"0.00000001", 0},
      {u"1e+3", 1}, // "+" does not open an exponent
      {u"1e3", 1000},
      {u"1E-3", 0.001},
      {u"2.5e2px", 250},
      {u"1e", 1},
      {u"1e-", 1},
      {u"   -2.5", -2.5},
      {u"\t1", 0}, // only U+0020 is skipped
      {u"+.5", 0.5},
      {u".5", 0.5},
      {u",25", 0.25},
      {u"-", 0},
      {u"+-5", 0},
      {u"\u22125", 0}, // a minus sign is not a hyphen
      {u"12px", 12},
      {u"1.5.3", 1.5},
      {u"1 000", 1},
      {u"007", 7},
      {u"1e16", 1e16},
      {u"1e17", 1e17},
      {u"1e-16", 1e-16},
      {u"1e-17", 1e-17},
      {u"2.5e16", 2.5e16},
      {u"9e22", 9e22},
      {u"1e400", inf},
      {u"1e-400", 0},
      {u"-1e400", -inf},
      {u"0e999999999999", 0},
  };
  for (auto& c : cases)
    EXPECT_EQ(iStrtoFloat(c.text), c.expected) << U8(c.text);
  EXPECT_DOUBLE_EQ(iStrtoFloat(u"123456789012345678901234"), 1.23456789012345678901234e23);
  EXPECT_DOUBLE_EQ(iStrtoFloat(u"1.5e300"), 1.5e300);
  EXPECT_DOUBLE_EQ(iStrtoFloat(u"1.5e-300"), 1.5e-300);
  EXPECT_TRUE(std::signbit(iStrtoFloat(u"-0")));
  EXPECT_EQ(iStrtoFloat(std::string_view("  -12.25em")), -12.25);
}

TEST(IStrtoInt, LenientReadingTable) {
  struct {
    std::u16string_view text;
    int expected;
  } cases[] = {
      {u"42", 42},
      {u"  -7x", -7},
      {u"+3", 3},
      {u"x", 0},
      {u"", 0},
      {u"12.9", 12},
      {u"2147483647", INT_MAX},
      {u"2147483648", INT_MAX},
      {u"99999999999999999999", INT_MAX},
      {u"-2147483648", INT_MIN},
      {u"-99999999999", INT_MIN},
      {u"- 5", 0},
  };
  for (auto& c : cases)
    EXPECT_EQ(iStrtoInt(c.text), c.expected) << U8(c.text);
  EXPECT_EQ(iStrtoInt(std::string_view("-15px")), -15);
}

TEST(StrtoFloatCheck, AcceptsChosenSeparators) {
  struct {
    std::u16string_view text;
    char16_t dec, thousand;
    double expected;
  } cases[] = {
      {u"1.5", u'.', 0, 1.5},
      {u"-1,5", u',', u'.', -1.5},
      {u"1.234.567,89", u',', u'.', 1234567.89},
      {u"1 234,5", u',', u' ', 1234.5},
      {u"1,5", u'.', u',', 15}, // a thousands separator may stand anywhere in the integer part
      {u"+.5", u'.', 0, 0.5},
      {u"5.", u'.', 0, 5},
      {u" 7 ", u'.', 0, 7},
      {u"1.5E+2", u'.', 0, 150},
      {u"2e-3", u'.', 0, 0.002},
      {u"1e16", u'.', 0, 1e16},
      {u"1e17", u'.', 0, 1e17},
      {u"1e-17", u'.', 0, 1e-17},
      {u"0.1234567890123", u'.', 0, 0.1234567890123},
      {u"00000000000000000000001.5", u'.', 0, 1.5},
      {u"0.000000000000000000000000012345", u'.', 0, 1.2345e-26},
  };
  for (auto& c : cases)
    EXPECT_DOUBLE_EQ(StrtoFloatCheck(c.text, c.dec, c.thousand), c.expected) << U8(c.text);
  EXPECT_DOUBLE_EQ(StrtoFloatCheck(u"123456789012345678901234567890"), 1.2345678901234568e29);
}

TEST(StrtoFloatCheck, RejectsWithTheText) {
  struct {
    std::u16string_view text;
    char16_t dec, thousand;
  } cases[] = {
      {u"", u'.', 0},      {u"abc", u'.', 0},      {u"1.2.3", u'.', 0}, {u"1,5", u'.', 0}, {u"1e", u'.', 0},
      {u"1e+", u'.', 0},   {u"--1", u'.', 0},      {u"+", u'.', 0},     {u".", u'.', 0},   {u"1x", u'.', 0},
      {u",5", u'.', u','}, {u"1.5,3", u'.', u','}, {u"1e999", u'.', 0}, {u"1 2", u'.', 0}, {u"0x10", u'.', 0},
  };
  for (auto& c : cases)
    EXPECT_EQ(ConvertErrorOf([&] { StrtoFloatCheck(c.text, c.dec, c.thousand); }),
              "Invalid number " + U8(c.text));
}

TEST(HexToDec, PrefixSuffixAndLenientDigits) {
  struct {
    std::u16string_view text;
    int64_t expected;
  } cases[] = {
      {u"0x1f", 31},  {u"1fh", 31}, {u"1FH", 31},          {u"0X1F", 31}, {u"ff", 255},
      {u"0x10h", 16}, {u"g", 16},   {u"zz", 35 * 16 + 35}, {u"", 0},      {u"0x", 0},
      {u"h", 0},      {u"hh", 17},  {u"1g!", 0},           {u" 10 ", 16}, {u"FFFFFFFF", 0xFFFFFFFFll},
      {u"0", 0},      {u"-1", 0},
  };
  for (auto& c : cases)
    EXPECT_EQ(HexToDec(c.text), c.expected) << U8(c.text);
}

TEST(StrtoDateFmt, EveryMaskFamily) {
  struct {
    std::u16string_view text, mask;
    TDateTime expected;
  } cases[] = {
      {u"2020-03-05", u"yyyy-mm-dd", DT(2020, 3, 5)},
      {u"2020-03-05 14:30:15", u"yyyy-mm-dd hh:nn:ss", DT(2020, 3, 5, 14, 30, 15)},
      {u"05-03-2020 14:30:15", u"dd-mm-yyyy hh:nn:ss", DT(2020, 3, 5, 14, 30, 15)},
      {u"05-Mar-20", u"dd-mmm-yy", DT(2020, 3, 5)},
      {u"05-MAR-1999", u"dd-mmm-yyyy", DT(1999, 3, 5)},
      {u"31-dec-1999 23:59:59", u"dd-mmm-yyyy hh:nn:ss", DT(1999, 12, 31, 23, 59, 59)},
      {u"05.03.49", u"dd.mm.yy", DT(2049, 3, 5)},
      {u"05.03.50", u"dd.mm.yy", DT(1950, 3, 5)},
      {u"05.03.20 9:05", u"dd.mm.yy h:nn", DT(2020, 3, 5, 9, 5)},
      {u"05.03.20 19:05", u"dd.mm.yy h:nn", DT(2020, 3, 5, 19, 5)},
      {u"05.03.20 09:05", u"dd.mm.yy hh:nn", DT(2020, 3, 5, 9, 5)},
      {u"05.03.2020", u"dd.mm.yyyy", DT(2020, 3, 5)},
      {u"05.03.2020 9:05", u"dd.mm.yyyy h:nn", DT(2020, 3, 5, 9, 5)},
      {u"05.03.2020 9:05:07", u"dd.mm.yyyy h:nn:ss", DT(2020, 3, 5, 9, 5, 7)},
      {u"05.03.2020 19:05", u"dd.mm.yyyy hh:nn", DT(2020, 3, 5, 19, 5)},
      {u"05.03.2020 19:05:07", u"dd.mm.yyyy hh:nn:ss", DT(2020, 3, 5, 19, 5, 7)},
      {u"03/05/2020", u"mm/dd/yyyy", DT(2020, 3, 5)},
      {u"3/05/2020", u"m/dd/yyyy", DT(2020, 3, 5)},
      {u"03/5/2020", u"mm/d/yyyy", DT(2020, 3, 5)},
      {u"3/5/2020", u"m/d/yyyy", DT(2020, 3, 5)},
      {u"12/31/2020", u"m/d/yyyy", DT(2020, 12, 31)},
      {u"14:30:15 Mar 5 2020", u"hh:nn:ss mmm d yyyy", DT(2020, 3, 5, 14, 30, 15)},
      {u"2020-03-05", u"YYYY-MM-DD", DT(2020, 3, 5)},
      {u"05.03.2020 at 10:00", u"dd.mm.yyyy 'at' hh:nn", DT(2020, 3, 5, 10)},
      {u"2020-03-05T10:00:00", u"yyyy-mm-ddThh:nn:ss", DT(2020, 3, 5, 10)},
      {u"05.03.2020 10:00:00.250", u"dd.mm.yyyy hh:nn:ss.zzz", DT(2020, 3, 5, 10, 0, 0, 250)},
      {u"05.03.2020   10:00", u"dd.mm.yyyy hh:nn", DT(2020, 3, 5, 10)}, // a blank is a run of blanks
      {u"  05.03.2020 ", u"dd.mm.yyyy", DT(2020, 3, 5)},
      {u"Thu, 5 March 2020", u"ddd, d mmm yyyy", DT(2020, 3, 5)},
      {u"5 September 2020", u"d mmm yyyy", DT(2020, 9, 5)},
      {u"29.02.2000", u"dd.mm.yyyy", DT(2000, 2, 29)},
      {u"01.01.0001", u"dd.mm.yyyy", DT(1, 1, 1)},
      {u"10:30", u"hh:nn", EncodeTime(10, 30, 0, 0)},
  };
  for (auto& c : cases)
    EXPECT_EQ(StrtoDateFmt(c.text, c.mask), c.expected) << U8(c.text) << " / " << U8(c.mask);
}

TEST(StrtoDateFmt, RussianMonthsByTheirFirstLetters) {
  const char16_t* abbreviations[] = {u"янв", u"фев", u"мар", u"апр", u"май", u"июн",
                                     u"июл", u"авг", u"сен", u"окт", u"ноя", u"дек"};
  for (int m = 0; m < 12; ++m) {
    std::u16string text = u"05-" + std::u16string(abbreviations[m]) + u"-20";
    EXPECT_EQ(StrtoDateFmt(text, u"dd-mmm-yy"), DT(2020, m + 1, 5)) << U8(text);
  }
  struct {
    std::u16string_view text;
    int month;
  } words[] = {{u"1 января 2021", 1}, {u"1 Марта 2021", 3}, {u"1 мая 2021", 5},      {u"1 МАЙ 2021", 5},
               {u"1 июня 2021", 6},   {u"1 ИЮЛЯ 2021", 7},  {u"1 сентября 2021", 9}, {u"1 декабря 2021", 12}};
  for (auto& w : words)
    EXPECT_EQ(StrtoDateFmt(w.text, u"d mmm yyyy"), DT(2021, w.month, 1)) << U8(w.text);
  EXPECT_EQ(ConvertErrorOf([] { StrtoDateFmt(u"1 ма 2021", u"d mmm yyyy"); }),
            U8(u"'1 ма 2021' does not match mask 'd mmm yyyy'"));
}

TEST(StrtoDateFmt, EmptyMaskChoosesByShape) {
  struct {
    std::u16string_view text;
    TDateTime expected;
  } cases[] = {
      {u"2020-03-05", DT(2020, 3, 5)},
      {u"2020-03-05 14:30:15", DT(2020, 3, 5, 14, 30, 15)},
      {u"05-03-2020 14:30:15", DT(2020, 3, 5, 14, 30, 15)},
      {u"05-Mar-20", DT(2020, 3, 5)},
      {u"05-Mar-2020", DT(2020, 3, 5)},
      {u"05-Mar-2020 14:30:15", DT(2020, 3, 5, 14, 30, 15)},
      {u"05-ноя-2020", DT(2020, 11, 5)},
      {u"05.03.20", DT(2020, 3, 5)},
      {u"05.03.20 9:05", DT(2020, 3, 5, 9, 5)},
      {u"05.03.20 19:05", DT(2020, 3, 5, 19, 5)},
      {u"05.03.2020", DT(2020, 3, 5)},
      {u"05.03.2020 9:05", DT(2020, 3, 5, 9, 5)},
      {u"05.03.2020 9:05:07", DT(2020, 3, 5, 9, 5, 7)},
      {u"05.03.2020 19:05", DT(2020, 3, 5, 19, 5)},
      {u"05.03.2020 19:05:07", DT(2020, 3, 5, 19, 5, 7)},
      {u"03/05/2020", DT(2020, 3, 5)},
      {u"3/05/2020", DT(2020, 3, 5)},
      {u"03/5/2020", DT(2020, 3, 5)},
      {u"3/5/2020", DT(2020, 3, 5)},
      {u"14:30:15 Mar 5 2020", DT(2020, 3, 5, 14, 30, 15)},
      {u" 2020-03-05 ", DT(2020, 3, 5)},
  };
  for (auto& c : cases)
    EXPECT_EQ(StrtoDateFmt(c.text, u""), c.expected) << U8(c.text);
  // The first mask that fits in form decides; a bad value then fails with it.
  EXPECT_EQ(ConvertErrorOf([] { StrtoDateFmt(u"2020-02-30", u""); }),
            "'2020-02-30' does not match mask 'yyyy-mm-dd'");
  EXPECT_EQ(ConvertErrorOf([] { StrtoDateFmt(u"13/05/2020", u""); }),
            "'13/05/2020' does not match mask 'mm/dd/yyyy'");
  for (std::u16string_view text : {u"05-03-2020", u"2020/03/05", u"", u"5.3.2020", u"*10:14:21 Mar 1 1993"})
    EXPECT_EQ(ConvertErrorOf([&] { StrtoDateFmt(text, u""); }), "'" + U8(text) + "' does not match mask ''");
}

TEST(StrtoDateFmt, CiscoClockLines) {
  struct {
    std::u16string_view text;
    TDateTime expected;
  } cases[] = {
      {u"*10:14:21 Mar 1 1993", DT(1993, 3, 1, 10, 14, 21)},
      {u"10:14:21 Mar 1 1993", DT(1993, 3, 1, 10, 14, 21)},
      {u"*10:14:21.123 UTC Mon Mar 1 1993", DT(1993, 3, 1, 10, 14, 21, 123)},
      {u"*18:46:11.5 PST Fri Mar  1 2002", DT(2002, 3, 1, 18, 46, 11, 500)},
      {u"23:59:59 Dec 31 1999", DT(1999, 12, 31, 23, 59, 59)},
  };
  for (auto& c : cases) {
    EXPECT_EQ(StrtoDateFmt(c.text, u"cisco"), c.expected) << U8(c.text);
    EXPECT_EQ(StrtoDateFmt(c.text, u"CISCO"), c.expected) << U8(c.text);
  }
  for (std::u16string_view text : {u"**10:14:21 Mar 1 1993", u"10:14:21 UTC 1 1993", u"10:14:21 Mar 1", u""})
    EXPECT_EQ(ConvertErrorOf([&] { StrtoDateFmt(text, u"cisco"); }),
              "'" + U8(text) + "' does not match mask 'cisco'");
}

TEST(StrtoDateFmt, MismatchMessages) {
  struct {
    std::u16string_view text, mask;
  } cases[] = {
      {u"2020-13-05", u"yyyy-mm-dd"},
      {u"2020-02-30", u"yyyy-mm-dd"},
      {u"2020-3-05", u"yyyy-mm-dd"},
      {u"2020-03-05x", u"yyyy-mm-dd"},
      {u"05.03.2020 24:00", u"dd.mm.yyyy hh:nn"},
      {u"05.03.2020 10:60", u"dd.mm.yyyy hh:nn"},
      {u"05-Foo-20", u"dd-mmm-yy"},
      {u"", u"yyyy"},
      {u"00.01.2020", u"dd.mm.yyyy"},
      {u"01.01.0000", u"dd.mm.yyyy"},
      {u"0501.2020", u"dd.mm.yyyy"},
      {u"10:00", u"hh:nn:ss"},
  };
  for (auto& c : cases)
    EXPECT_EQ(ConvertErrorOf([&] { StrtoDateFmt(c.text, c.mask); }),
              "'" + U8(c.text) + "' does not match mask '" + U8(c.mask) + "'");
}

TEST(StrtoDateFmt, MissingYearIsThisYear) {
  int year, month, day;
  DecodeDate(Now(), year, month, day);
  EXPECT_EQ(StrtoDateFmt(u"05.03", u"dd.mm"), DT(year, 3, 5));
}

TEST(HTTPDecode, PlusPercentAndUtf8) {
  struct {
    std::u16string_view in, out;
  } cases[] = {
      {u"a+b", u"a b"},
      {u"%41%42", u"AB"},
      {u"%c3%bc", u"\u00FC"},
      {u"%E2%82%AC", u"\u20AC"},
      {u"%F0%9F%98%80", u"\U0001F600"},
      {u"%E9t%E9", u"\u00E9t\u00E9"}, // not UTF-8: the bytes stand for themselves
      {u"%C3", u"\u00C3"},
      {u"%ED%A0%80", u"\u00ED\u00A0\u0080"},
      {u"%C3%BC%FF", u"\u00FC\u00FF"},
      {u"100%", u"100%"},
      {u"%4", u"%4"},
      {u"%zz", u"%zz"},
      {u"%2B", u"+"},
      {u"\u00FC+%20", u"\u00FC  "},
      {u"%C3+%BC", u"\u00C3 \u00BC"}, // a run of bytes ends at any other unit
      {u"", u""},
  };
  for (auto& c : cases)
    EXPECT_EQ(HTTPDecode(hstring(c.in)).view(), c.out) << U8(c.in);
  hstring plain(u"nothing/to-decode");
  EXPECT_EQ(HTTPDecode(plain).Pointer(), plain.Pointer());
}

TEST(HtEncodeUrl, KeepsTheSafeSetAndEscapesUtf8) {
  struct {
    std::u16string_view in, out;
  } cases[] = {
      {u" ", u"+"},
      {u"~", u"~"},
      {u"azAZ09!()*-.\\_~", u"azAZ09!()*-.\\_~"},
      {u"a/b?c=d&e", u"a%2Fb%3Fc%3Dd%26e"},
      {u"'\"<>%+#", u"%27%22%3C%3E%25%2B%23"},
      {u"\x7F", u"%7F"},
      {std::u16string_view(u"\0", 1), u"%00"},
      {u"\u0080", u"%C2%80"},
      {u"\u00FC", u"%C3%BC"},
      {u"\u07FF", u"%DF%BF"},
      {u"\u0800", u"%E0%A0%80"},
      {u"\u20AC", u"%E2%82%AC"},
      {u"\uFFFF", u"%EF%BF%BF"},
      {u"\U0001F600", u"%ED%A0%BD%ED%B8%80"}, // each surrogate half on its own
      {u"a b/\u00FC", u"a+b%2F%C3%BC"},
  };
  for (auto& c : cases)
    EXPECT_EQ(HtEncodeUrl(hstring(c.in)).view(), c.out) << U8(c.in);
  hstring plain(u"Already-Safe_1.0");
  EXPECT_EQ(HtEncodeUrl(plain).Pointer(), plain.Pointer());
  // Decoding undoes the encoding for text without surrogates.
  hstring text(u"Grüße & €, 100% ~ok~");
  EXPECT_EQ(HTTPDecode(HtEncodeUrl(text)), text);
}

TEST(CombineUrl, ThreeCases) {
  struct {
    std::u16string_view base, rel, out;
  } cases[] = {
      {u"http://a/b/c", u"d", u"http://a/b/d"},
      {u"http://a/b/", u"", u"http://a/b/"},
      {u"file.html", u"x.png", u"file.htmlx.png"}, // no "/" at all: the whole base
      {u"", u"x.png", u"x.png"},
      {u"http://a/b/c", u"//e/f", u"http://e/f"},
      {u"https://a/b/c", u"//e/f", u"http://e/f"},
      {u"http://a/b/c", u"//http://e/f", u"http://e/f"},
      {u"http://a/b/c", u"/d", u"http://a/d"},
      {u"https://a:8080/b/c", u"/d", u"https://a:8080/d"},
      {u"HTTP://a/b", u"/d", u"HTTP://a/d"},
      {u"http://a", u"/d", u"http://a/d"},
      {u"a/b", u"/d", u"a/d"},
      {u"/x/y", u"/d", u"/d"},
      {u"ftp://a/b", u"/d", u"ftp:/d"}, // only http and https count as schemes
  };
  for (auto& c : cases)
    EXPECT_EQ(CombineUrl(hstring(c.base), hstring(c.rel)).view(), c.out) << U8(c.base) << " + " << U8(c.rel);
}
