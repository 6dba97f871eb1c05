#include "htcore/document/string_parser.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <string>

using namespace ht;

namespace {

std::string rest(const TStringParser& sp) { return sp.Tail().toUtf8(); }

} // namespace

TEST(StringParser, EmptyTextPointsAtOwnNul) {
  TStringParser sp;
  EXPECT_TRUE(sp.Empty());
  EXPECT_TRUE(sp.First());
  EXPECT_EQ(sp.GetCurrent(), 0);
  EXPECT_EQ(sp.Next(), 0);
  EXPECT_EQ(sp.Pos(), 1);
  hstring w;
  EXPECT_FALSE(sp.ReadWord(w));
  EXPECT_FALSE(sp.ReadLn(w));
  EXPECT_EQ(sp.ReadInt(), 0);
  sp.Init(u"ab"_hs);
  EXPECT_EQ(sp.GetCurrent(), u'a');
  EXPECT_EQ(sp.Next(), u'b');
  EXPECT_EQ(sp.Next(), 0);
  EXPECT_EQ(sp.Next(), 0); // stays at the end
  EXPECT_EQ(sp.Pos(), 3);
}

TEST(StringParser, PositionLineAndSkips) {
  TStringParser sp(u"a\nb\r\nc  x"_hs);
  sp.Skipto(u'c');
  EXPECT_EQ(sp.Pos(), 6);
  EXPECT_EQ(sp.Line(), 2);
  EXPECT_EQ(sp.CharPos(u'x'), 4);
  EXPECT_EQ(sp.CharPos(u'c'), 1);
  EXPECT_EQ(sp.CharPos(u'q'), 0);
  sp.Skip(100);
  EXPECT_TRUE(sp.Empty());
  sp.Skipto(u'z');
  EXPECT_TRUE(sp.Empty());
}

TEST(StringParser, SkipEndBlanksKeepsCursorAndNul) {
  TStringParser sp(u"ab \r\n \n"_hs);
  sp.Skip(1);
  sp.SkipEndBlanks();
  EXPECT_EQ(rest(sp), "b");
  EXPECT_EQ(sp.pend[0], 0);
  EXPECT_EQ(sp.Pos(), 2);
  TStringParser all(u" \t \n"_hs); // TAB is not cut
  all.SkipEndBlanks();
  EXPECT_EQ(all.s, u" \t");
  TStringParser blanks(u"  "_hs);
  blanks.Skip(2);
  blanks.SkipEndBlanks();
  EXPECT_TRUE(blanks.Empty());
  EXPECT_EQ(blanks.GetCurrent(), 0);
}

TEST(StringParser, StartsWithFoldsTextNotPattern) {
  TStringParser sp(u"DocType html"_hs);
  EXPECT_TRUE(sp.StartsWith(u"doctype"));
  EXPECT_FALSE(sp.StartsWith(u"DocType")); // the pattern must be lower case
  EXPECT_FALSE(sp.StartsWith(u""));
  EXPECT_FALSE(sp.StartsWith(u"doctype html5"));
  sp.Skip(20);
  EXPECT_FALSE(sp.StartsWith(u"d"));
}

TEST(StringParser, ReadWordStopsAtSeparatorsButTakesOneUnit) {
  struct {
    const char16_t* text;
    bool skip;
    const char* word;
    const char* left;
  } cases[] = {
      {u"  abc def", true, "abc", " def"}, {u"abc,def", true, "abc", ",def"}, {u"f(x)", true, "f", "(x)"},
      {u",abc", true, ",abc", ""},         {u"(a b", true, "(a", " b"},       {u"  x", false, " ", " x"},
      {u"a\tb", true, "a", "\tb"},         {u"a\rb", true, "a", "\rb"},
  };
  for (auto& c : cases) {
    TStringParser sp(c.text);
    hstring w;
    EXPECT_TRUE(sp.ReadWord(w, c.skip));
    EXPECT_EQ(w.toUtf8(), c.word) << ToUtf8(c.text);
    EXPECT_EQ(rest(sp), c.left) << ToUtf8(c.text);
  }
}

TEST(StringParser, ReadParamWalksParenthesisedList) {
  TStringParser sp(u"(a, b c ,(d)) tail"_hs);
  hstring v;
  std::string got;
  while (sp.ReadParam(v))
    got += "[" + v.toUtf8() + "]";
  // Only one separator is skipped, so ",(" gives an empty element.
  EXPECT_EQ(got, "[a][b c ][][d]");
  EXPECT_EQ(rest(sp), ") tail"); // the first ')' ended the list and was consumed
  EXPECT_FALSE(sp.ReadParam(v));
  EXPECT_EQ(rest(sp), " tail");
}

TEST(StringParser, ReadtoChar) {
  struct {
    const char16_t* text;
    bool skip;
    const char* value;
    const char* left;
  } cases[] = {
      {u";;a b;c", false, "a b", ";c"}, {u"  ;  a b  ;c", true, "a b", "c"},
      {u"abc", false, "abc", ""},       {u"abc", true, "abc", ""},
      {u";;;", true, "", ""},
  };
  for (auto& c : cases) {
    TStringParser sp(c.text);
    hstring v;
    EXPECT_EQ(sp.ReadtoChar(u';', v, c.skip), *c.value != 0);
    EXPECT_EQ(v.toUtf8(), c.value) << ToUtf8(c.text);
    EXPECT_EQ(rest(sp), c.left) << ToUtf8(c.text);
  }
}

TEST(StringParser, ReadtoCharsAndReadLn) {
  TStringParser sp(u"key=val;x"_hs);
  hstring v;
  EXPECT_TRUE(sp.ReadtoChars(u";=", v));
  EXPECT_EQ(v, u"key");
  EXPECT_FALSE(sp.ReadtoChars(u"=", v)); // already on the stop
  TStringParser ln(u"one\r\ntwo\n\nthree\rfour"_hs);
  std::string got;
  while (ln.ReadLn(v))
    got += "[" + v.toUtf8() + "]";
  EXPECT_EQ(got, "[one][two][][three][four]");
}

TEST(StringParser, ReadtoWordBreak) {
  struct {
    const char16_t* text;
    std::u16string pieces; // joined by '|'
  } cases[] = {
      {u"hello big world", u"hello| big| world"},
      {u"well-known a/b", u"well|-known| a|/b"},
      {u"\u4E2D\u6587abc", u"\u4E2D|\u6587abc"},
      // Closing punctuation after an ideograph stays with the piece in front.
      {u"ab\u4E2D\uFF0Ccd", u"ab\u4E2D\uFF0Ccd"},
      {u"ab\u4E2D\u3002\u3001x y", u"ab\u4E2D\u3002\u3001x| y"},
      {u"ab\u4E2D!", u"ab\u4E2D!"},
      {u"ab\u4E2Dx", u"ab|\u4E2Dx"},
      {u"-", u"-"},
      {u"   ", u"   "},
  };
  for (auto& c : cases) {
    TStringParser sp(c.text);
    hstring piece;
    std::u16string got;
    while (sp.ReadtoWordBreak(piece)) {
      if (!got.empty())
        got += u'|';
      got += piece.view();
    }
    EXPECT_EQ(got, c.pieces) << ToUtf8(c.text);
  }
}

TEST(StringParser, IdeographicAndClosingSets) {
  for (char16_t c : {u'\u3000', u'\u4E00', u'\u9FFF', u'\uF900', u'\uFAFF'})
    EXPECT_TRUE(IsIdeographic(c)) << int(c);
  for (char16_t c : {u'\u2FFF', u'\u4DFF', u'\uA000', u'\uFB00', u'a'})
    EXPECT_FALSE(IsIdeographic(c)) << int(c);
  for (char16_t c : std::u16string(u"!),.:;?]}\uFF0C\u3001\u3002\u2014\u02C7\u0401\u3003\u3005\uFF5E\u2026"
                                   u"\u2019\u201D\u3015\u3009\u300B\u300D\u300F\u3017\u3011"))
    EXPECT_TRUE(IsClosingPunctuation(c)) << int(c);
  for (char16_t c : {u'(', u'[', u'\u300C', u'\u2018', u'a'})
    EXPECT_FALSE(IsClosingPunctuation(c)) << int(c);
}

TEST(StringParser, ReadIntPrefixAndOverflowStop) {
  struct {
    const char16_t* text;
    int value;
    const char* left;
  } cases[] = {
      {u"  42x", 42, "x"},
      {u" , -7", -7, ""},
      {u"+5", 5, ""},
      {u",,5", 0, ",5"}, // only one comma
      {u"2147483647", 214748364, "7"},
      {u"214748363", 214748363, ""},
      {u"99999999999", 999999999, "99"},
      {u"-", 0, ""},
      {u"abc", 0, "abc"},
  };
  for (auto& c : cases) {
    TStringParser sp(c.text);
    EXPECT_EQ(sp.ReadInt(), c.value) << ToUtf8(c.text);
    EXPECT_EQ(rest(sp), c.left) << ToUtf8(c.text);
  }
  TStringParser flags(u"0110 1"_hs);
  std::string got;
  while (!flags.Empty())
    got += std::to_string(flags.ReadInt1());
  EXPECT_EQ(got, "01101");
}

TEST(StringParser, HexAndBinary) {
  struct {
    const char16_t* text;
    bool hex;
    int64_t value;
  } cases[] = {
      {u"ff", true, 255},   {u" ,FfA0", true, 0xFFA0},
      {u"-10", true, -16},  {u"7fffffffffffffff", true, INT64_MAX},
      {u"1011", false, 11}, {u" -11", false, -3},
      {u"2", false, 0},
  };
  for (auto& c : cases) {
    TStringParser sp(c.text);
    EXPECT_EQ(c.hex ? sp.ReadHex() : sp.ReadBin(), c.value) << ToUtf8(c.text);
  }
}

TEST(StringParser, ReadNumAndReadNumEx) {
  struct {
    const char16_t* text;
    bool ex;
    double value;
    const char* left;
  } cases[] = {
      {u"12.5px", false, 12.5, "px"},
      {u"-.25", false, -0.25, ""},
      {u"3.", false, 3, "."},
      {u"1.123456789", false, 1.1234567, ""}, // eight and more fraction digits are dropped
      {u"1e3", false, 1, "e3"},
      {u"1e3", true, 1000, ""},
      {u"2.5E-2x", true, 0.025, "x"},
      {u"10em", true, 10, "em"},
      {u"1.5.5", false, 1.5, ".5"},
      {u", +7", false, 7, ""},
  };
  for (auto& c : cases) {
    TStringParser sp(c.text);
    EXPECT_DOUBLE_EQ(c.ex ? sp.ReadNumEx() : sp.ReadNum(), c.value) << ToUtf8(c.text);
    EXPECT_EQ(rest(sp), c.left) << ToUtf8(c.text);
  }
  TStringParser exact(u"0.1 0.3 2.3"_hs);
  EXPECT_EQ(exact.ReadNum(), 0.1);
  EXPECT_EQ(exact.ReadNum(), 0.3);
  EXPECT_EQ(exact.ReadNum(), 2.3);
}

TEST(StringParser, IncorrectNumberOnlyWhenAsked) {
  const char16_t* bad[] = {u"x", u"-", u" ,", u"."};
  for (const char16_t* t : bad) {
    TStringParser lax(t);
    EXPECT_EQ(lax.ReadInt(), 0);
    TStringParser strict(t);
    strict.RaiseException = true;
    EXPECT_THROW(strict.ReadInt(), EHtParserError) << ToUtf8(t);
    TStringParser strict2(t);
    strict2.RaiseException = true;
    EXPECT_THROW(strict2.ReadNum(), EHtParserError) << ToUtf8(t);
  }
  TStringParser e(u"1e+"_hs);
  e.RaiseException = true;
  try {
    e.ReadNumEx();
    FAIL();
  } catch (const EHtParserError& err) {
    EXPECT_STREQ(err.what(), "Incorrect number");
  }
  TStringParser h(u"g"_hs);
  h.RaiseException = true;
  EXPECT_THROW(h.ReadHex(), EHtParserError);
}

TEST(StringParser, ReadIntOrFloat) {
  struct {
    const char16_t* text;
    bool is_int;
    int64_t i;
    double d;
    const char* left;
  } cases[] = {
      {u"0", true, 0, 0, ""},
      {u"-12,", true, -12, -12, ","},
      {u"9223372036854775807", true, INT64_MAX, 9223372036854775807.0, ""},
      {u"-9223372036854775808", true, INT64_MIN, -9223372036854775808.0, ""},
      {u"9223372036854775808", false, 0, 9223372036854775808.0, ""},
      {u"123456789012345678901234", false, 0, 1.23456789012345678901234e23, ""},
      {u"1.5", false, 0, 1.5, ""},
      {u"-0.1e2]", false, 0, -10, "]"},
      {u"2E-3", false, 0, 0.002, ""},
      {u"1e999", false, 0, std::numeric_limits<double>::infinity(), ""},
      {u"1e-999", false, 0, 0, ""},
      {u"1..5", true, 1, 1, "..5"},
  };
  for (auto& c : cases) {
    TStringParser sp(c.text);
    sp.RaiseException = true;
    int64_t i = -1;
    double d = -1;
    EXPECT_EQ(sp.ReadIntOrFloat(i, d), c.is_int) << ToUtf8(c.text);
    if (c.is_int) {
      EXPECT_EQ(i, c.i) << ToUtf8(c.text);
    }
    EXPECT_DOUBLE_EQ(d, c.d) << ToUtf8(c.text);
    EXPECT_EQ(rest(sp), c.left) << ToUtf8(c.text);
  }
  // Strict (JSON) refusals; a lax reader takes what it can.
  for (const char16_t* t : {u"01", u"-", u".5", u"+1", u"1.", u"1.e5", u"1e", u"1e+", u"-x"}) {
    TStringParser sp(t);
    sp.RaiseException = true;
    int64_t i;
    double d;
    EXPECT_THROW(sp.ReadIntOrFloat(i, d), EHtParserError) << ToUtf8(t);
  }
  TStringParser lax(u".5 +3 01"_hs);
  int64_t i;
  double d;
  EXPECT_FALSE(lax.ReadIntOrFloat(i, d));
  EXPECT_EQ(d, 0.5);
  EXPECT_TRUE(lax.ReadIntOrFloat(i, d));
  EXPECT_EQ(i, 3);
  EXPECT_TRUE(lax.ReadIntOrFloat(i, d));
  EXPECT_EQ(i, 1);
}
