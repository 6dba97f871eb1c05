#include "htcore/document/json_parser.h"

#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <string>

using namespace ht;

namespace {

// Tokens as "kind:text" joined by blanks; spaces show as "_".
std::string tokens(const hstring& s) {
  THtJSONTokenizer t(s);
  std::string out;
  while (t.NextToken()) {
    if (!out.empty())
      out += ' ';
    switch (t.TokenType) {
    case jtSpace:
      out += "_";
      continue;
    case jtComma:
      out += ",";
      continue;
    case jtColon:
      out += ":";
      continue;
    case jtObjectStart:
      out += "{";
      continue;
    case jtObjectEnd:
      out += "}";
      continue;
    case jtArrayStart:
      out += "[";
      continue;
    case jtArrayEnd:
      out += "]";
      continue;
    case jtIdent:
      out += "id:";
      break;
    case jtString:
      out += "s:";
      break;
    case jtValue:
      out += "v:";
      break;
    case jtInt:
      out += "i:";
      break;
    case jtFloat:
      out += "f:";
      break;
    case jtUnknown:
      out += "?:";
      break;
    case jtComment:
      out += "c:";
      break;
    }
    out += t.Token.toUtf8();
  }
  EXPECT_TRUE(t.Eof);
  return out;
}

// The message of the first error while reading all tokens, or "".
std::string error_of(const hstring& s) {
  try {
    tokens(s);
  } catch (const EHtParserError& e) {
    return e.what();
  }
  return "";
}

hstring string_token(const hstring& s) {
  THtJSONTokenizer t(s);
  EXPECT_TRUE(t.NextToken());
  EXPECT_EQ(t.TokenType, jtString);
  return t.Token;
}

} // namespace

TEST(JSONTokenizer, TokenStreams) {
  struct {
    const char16_t* in;
    const char* out;
  } cases[] = {
      {u"", ""},
      {u"   \r\n\t ", ""}, // leading blanks go with the constructor
      {u"{\"a\":1}", "{ s:a : i:1 }"},
      {u"{'a': 1}", "{ s:a : _ i:1 }"},
      {u"{a: 1}", "{ id:a : _ i:1 }"},
      {u"[1, 2.5,-3]", "[ i:1 , _ f:2.5 , i:-3 ]"},
      {u"[true,false,null]", "[ v:true , v:false , v:null ]"},
      {u"trueish nul l True", "id:trueish _ id:nul _ id:l _ id:True"},
      {u"a-b_c9 _x", "id:a-b_c9 _ id:_x"},
      {u"'say \"hi\"' \"it's\"", "s:say \"hi\" _ s:it's"},
      {u"\"\" ''", "s: _ s:"},
      {u"/ //x", "?:/ _ ?:/ ?:/x"}, // an unknown unit goes on like an identifier
      {u"@foo+1-2", "?:@foo ?:+1-2"},
      {u"\u00e9t\u00e9 \u4e2d\u6587",
       "?:\u00e9t ?:\u00e9 _ ?:\u4e2d\u6587"}, // Latin-1 letters are no identifier units
      {u"x\u4e2d\u6587", "id:x\u4e2d\u6587"},  // but units from 256 up continue one
      {u"1e3 -0 0.5E-2", "f:1e3 _ i:-0 _ f:0.5E-2"},
      {u"\f{}", "{ }"},      // the constructor skips all blanks up to U+0020
      {u"{}\f", "{ } ?:\f"}, // later, only TAB, LF, CR and space are space
  };
  for (auto& c : cases)
    EXPECT_EQ(tokens(c.in), c.out) << hstring(c.in).toUtf8();
}

TEST(JSONTokenizer, ErrorMessages) {
  struct {
    const char16_t* in;
    const char* msg;
  } cases[] = {
      {u"\"abc", "Unterminated string"},
      {u"'abc\"", "Unterminated string"},
      {u"\"abc\\", "Unterminated string"},
      {u"\"\\x4", "Unterminated string"},
      {u"\"a\tb\"", "Unescaped control symbol #9 in \"a"},
      {u"[ 'x\ny' ]", "Unescaped control symbol #10 in 'x"},
      {u"\"\x01\"", "Unescaped control symbol #1 in \""},
      {u"\"\\u004\"", "Incorrect unicode escape at line 0"},
      {u"\"\\u\"", "Incorrect unicode escape at line 0"},
      {u"\n\n\"\\q\"", "Incorrect unicode escape at line 2"},
      {u"'\\''", "Incorrect unicode escape at line 0"}, // no quote escape for single quotes
      {u"\"\\U0041\"", "Incorrect unicode escape at line 0"},
      {u"01", "Incorrect number"},
      {u"-", "Incorrect number"},
      {u"-a", "Incorrect number"},
      {u".5", "Incorrect number"},
      {u"1.", "Incorrect number"},
      {u"1.e5", "Incorrect number"},
      {u"1e", "Incorrect number"},
      {u"1e+", "Incorrect number"},
      {u"-01", "Incorrect number"},
  };
  for (auto& c : cases)
    EXPECT_EQ(error_of(c.in), c.msg) << hstring(c.in).toUtf8();
  // A NUL inside the text is a control unit, not the end.
  EXPECT_EQ(error_of(hstring(u"\"a\0b\"", 5)), std::string("Unescaped control symbol #0 in \"a"));
}

TEST(JSONTokenizer, IntegersAndFloats) {
  struct {
    const char16_t* in;
    bool is_int;
    int64_t i;
    double f;
  } cases[] = {
      {u"0", true, 0, 0},
      {u"-0", true, 0, 0},
      {u"42", true, 42, 42},
      {u"9223372036854775807", true, INT64_MAX, 0},
      {u"-9223372036854775808", true, INT64_MIN, 0},
      {u"9223372036854775808", false, 0, 9223372036854775808.0},
      {u"-9223372036854775809", false, 0, -9223372036854775809.0},
      {u"12345678901234567890", false, 0, 12345678901234567890.0},
      {u"18446744073709551616", false, 0, 18446744073709551616.0},
      {u"1.0", false, 0, 1.0},
      {u"0.1", false, 0, 0.1},
      {u"1E2", false, 0, 100},
      {u"-2.5e-3", false, 0, -0.0025},
      {u"1e400", false, 0, std::numeric_limits<double>::infinity()},
      {u"1e-400", false, 0, 0},
  };
  for (auto& c : cases) {
    THtJSONTokenizer t(c.in);
    ASSERT_TRUE(t.NextToken());
    EXPECT_EQ(t.Token, c.in); // numbers keep their source text
    if (c.is_int) {
      EXPECT_EQ(t.TokenType, jtInt) << hstring(c.in).toUtf8();
      EXPECT_EQ(t.IntValue, c.i) << hstring(c.in).toUtf8();
    } else {
      EXPECT_EQ(t.TokenType, jtFloat) << hstring(c.in).toUtf8();
      EXPECT_EQ(t.ExtValue, c.f) << hstring(c.in).toUtf8();
    }
    EXPECT_FALSE(t.NextToken());
  }
}

TEST(JSONTokenizer, Escapes) {
  struct {
    const char16_t* in;
    std::u16string out;
  } cases[] = {
      {u"\"\\u0041\"", u"A"},
      {u"\"\\u00e9\\u00C9\"", u"\u00e9\u00c9"},
      {u"\"\\ud83d\\ude00\"", u"\U0001F600"}, // halves combine into one pair
      // A half without its partner next to it is U+FFFD, so that no writer
      // pairs it with the unit behind it.
      {u"\"\\ud83d\"", u"\uFFFD"},
      {u"\"\\udc00x\"", u"\uFFFDx"},
      {u"\"\\ud800x\"", u"\uFFFDx"},
      {u"\"a\\udc00\\ud800\"", u"a\uFFFD\uFFFD"},
      {u"\"\\ud800\\ud83d\\ude00\"", u"\uFFFD\U0001F600"},
      {u"\"\\ud83d\\u0041\"", u"\uFFFDA"},
      {u"\"\xD83D\\ude00\"", u"\U0001F600"}, // one half escaped, the other not
      {u"\"\\ud83d\xDE00\"", u"\U0001F600"},
      {u"\"\\\"\\\\\\/\"", u"\"\\/"},
      {u"\"\\b\\f\\n\\r\\t\"", u"\b\f\n\r\t"},
      {u"'\\\"'", u"\""},
      {u"\"\\x41\\x7a\"", u"Az"},
      {u"\"\\xg1\"", std::u16string(1, char16_t(0x71))}, // not validated: 'g' gives its low bits
      {u"\"a\\nb\\tc d\"", u"a\nb\tc d"},                // text between escapes is kept
      {u"\"\\u0000\"", std::u16string(1, u'\0')},
      {u"\"plain \u4e2d\"", u"plain \u4e2d"},
  };
  for (auto& c : cases)
    EXPECT_EQ(string_token(c.in).view(), c.out) << hstring(c.in).toUtf8();
}

TEST(JSONTokenizer, PositionsAndRequiredTokens) {
  THtJSONTokenizer t(u"  {\"ab\" : 12}"_hs);
  struct {
    THtJSONTokenType type;
    int start, end;
  } expected[] = {
      {jtObjectStart, 2, 3}, {jtString, 3, 7}, {jtColon, 8, 9}, {jtInt, 10, 12}, {jtObjectEnd, 12, 13}};
  for (auto& e : expected) {
    t.NextRequiredToken();
    EXPECT_EQ(t.TokenType, e.type);
    EXPECT_EQ(t.TokenStart, e.start);
    EXPECT_EQ(t.TokenEnd, e.end);
  }
  EXPECT_FALSE(t.Eof);
  try {
    t.NextRequiredToken();
    FAIL();
  } catch (const EHtParserError& e) {
    EXPECT_STREQ(e.what(), "Token expected");
  }
  EXPECT_TRUE(t.Eof);
  EXPECT_FALSE(t.NextNSToken());
}

TEST(JSONTokenizer, CommentsOnlyWhenAsked) {
  THtJSONTokenizer t(u"1 // note\r\n2 // last"_hs);
  ASSERT_TRUE(t.NextNSToken());
  ASSERT_TRUE(t.NextNSToken());
  EXPECT_EQ(t.TokenType, jtUnknown);
  ASSERT_TRUE(t.ReadComment());
  EXPECT_EQ(t.TokenType, jtComment);
  EXPECT_EQ(t.Token.toUtf8(), "// note");
  ASSERT_TRUE(t.NextToken()); // CR LF went with the comment
  EXPECT_EQ(t.TokenType, jtInt);
  ASSERT_TRUE(t.NextToken());
  EXPECT_TRUE(t.ReadComment()); // from the cursor, on a space token
  EXPECT_EQ(t.Token.toUtf8(), "// last");
  EXPECT_FALSE(t.NextToken());
  EXPECT_FALSE(t.ReadComment());

  // Only CR ends a comment: with LF line ends it runs on.
  THtJSONTokenizer lf(u"// a\n{}\r{}"_hs);
  ASSERT_TRUE(lf.ReadComment());
  EXPECT_EQ(lf.Token.toUtf8(), "// a\n{}");
  ASSERT_TRUE(lf.NextToken());
  EXPECT_EQ(lf.TokenType, jtObjectStart);

  THtJSONTokenizer single(u"/x"_hs);
  EXPECT_FALSE(single.ReadComment());
  ASSERT_TRUE(single.NextToken());
  EXPECT_EQ(single.Token.toUtf8(), "/x");
}

TEST(JSONParser, NameValuePairs) {
  struct {
    const char16_t* in;
    THtJSONTokenType result;
    const char* name;
    const char* value;
  } cases[] = {
      {u"a:1", jtInt, "a", "1"},           {u"'a' : 1.5", jtFloat, "a", "1.5"},
      {u"\"k\":\"v\"", jtIdent, "k", "v"}, {u"k:true", jtIdent, "k", "true"},
      {u"k:null", jtIdent, "k", "null"},   {u"k:bare", jtIdent, "k", "bare"},
      {u"k : {", jtObjectStart, "k", ""},  {u"k\n:\n[", jtArrayStart, "k", ""},
      {u"\"\":1", jtInt, "", "1"},
  };
  for (auto& c : cases) {
    THtJSONParser jp(c.in);
    ASSERT_TRUE(jp.Tokenizer->NextNSToken());
    EXPECT_EQ(jp.NextNameValue(), c.result) << hstring(c.in).toUtf8();
    EXPECT_EQ(jp.Name.toUtf8(), c.name);
    EXPECT_EQ(jp.Tokenizer->Token.toUtf8(), c.value);
  }
}

TEST(JSONParser, NameValueErrors) {
  struct {
    const char16_t* in;
    const char* msg;
  } cases[] = {
      {u"1:2", "Name expected"},     {u"{", "Name expected"},          {u"a", "Name expected"},
      {u"a 1", "Name expected"},     {u"a = 1", "Name expected"},      {u"a:", "Value expected"},
      {u"a:  ", "Value expected"},   {u"a:,", "Value expected"},       {u"a:}", "Value expected"},
      {u"a:]", "Value expected"},    {u"a::", "Value expected"},       {u"a:/", "Value expected"},
      {u"a:01", "Incorrect number"}, {u"a:'x", "Unterminated string"},
  };
  for (auto& c : cases) {
    THtJSONParser jp(c.in);
    std::string msg;
    try {
      jp.Tokenizer->NextNSToken();
      jp.NextNameValue();
    } catch (const EHtParserError& e) {
      msg = e.what();
    }
    EXPECT_EQ(msg, c.msg) << hstring(c.in).toUtf8();
  }
}

TEST(JSONParser, NamesAreInternedPerParse) {
  THtJSONParser jp(u"a:1 , \"a\":2, b:3"_hs);
  THtJSONTokenizer& t = *jp.Tokenizer;
  t.NextNSToken();
  jp.NextNameValue();
  const char16_t* first = jp.Name.Pointer();
  t.NextNSToken(); // ,
  t.NextNSToken();
  jp.NextNameValue();
  EXPECT_EQ(jp.Name.Pointer(), first); // the same text, shared
  EXPECT_NE(t.Token.Pointer(), first);
  t.NextNSToken();
  t.NextNSToken();
  jp.NextNameValue();
  EXPECT_EQ(jp.Name.toUtf8(), "b");
  EXPECT_NE(jp.Name.Pointer(), first);
  EXPECT_EQ(jp.Names.Count(), 2);
}

TEST(JSONParser, EmptyTextHasNoTokenizer) {
  THtJSONParser empty(hstring{});
  EXPECT_EQ(empty.Tokenizer, nullptr);
  THtJSONParser blank(u" "_hs);
  ASSERT_NE(blank.Tokenizer, nullptr);
  EXPECT_FALSE(blank.Tokenizer->NextToken());
}
