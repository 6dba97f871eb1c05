#include "htcore/style/css_tokenizer.h"

#include <gtest/gtest.h>
#include <string>

using namespace ht;

namespace {

// "Ident(a) Space Function(rgb) ...": each token's kind without its prefix and
// its text in brackets (none for spaces).
std::string dump(const hstring& text) {
  std::string out;
  for (const TCSSToken& t : CSSTokenize(text)) {
    if (!out.empty())
      out += ' ';
    out += TypeInfo<TCSSTokenType>()->NameOf(t.CType).toUtf8().substr(2);
    if (t.CType != ctSpace)
      out += "(" + t.Name.toUtf8() + ")";
  }
  return out;
}

TCSSToken first(const hstring& text) {
  TCSSTokens t = CSSTokenize(text);
  return t.empty() ? TCSSToken() : t[0];
}

} // namespace

TEST(CSSTokenizer, Streams) {
  struct {
    const char16_t* in;
    const char* out;
  } cases[] = {
      {u"a { width: 12px }",
       "Ident(a) Space BlockStart({) Space Ident(width) Colon(:) Space Dimension(12px) Space BlockEnd(})"},
      {u"  \t\r\n a", "Ident(a)"}, // leading blanks are skipped
      {u"a\\41 b", "Ident(aAb)"},
      {u"a\\\"b\\\\c\\ d", "Ident(a\"b\\c d)"},
      {u"foo(1)", "Function(foo) OpenPar(() Number(1) ClosePar())"},
      {u"FOO(", "Function(foo) OpenPar(()"},
      {u"Url(x.png)", "URI(x.png)"},
      {u"url()", "URI(url) ClosePar())"},
      {u"url( 'a b.png' ) x", "URI(a b.png) Space Ident(x)"},
      {u"url( a b.png  )", "URI(a b.png)"},
      {u"url(\"a)b\")", "URI(a)b)"},
      {u"url(", "URI()"},
      {u"url(abc", "URI(abc)"},
      {u"'abc\rdef'", "String(abc) Ident(def) String()"},
      {u"'abc\ndef'", "String(abc\ndef)"},
      {u"\"it's\"", "String(it's)"},
      {u"'a\\\r\nb'", "String(ab)"},
      {u"'open", "String(open)"},
      {u"'a\\", "String(a)"},
      {u"# x", "Hash() Space Ident(x)"},
      {u"#fff #A0b", "Hash(fff) Space Hash(A0b)"},
      {u"@media screen", "AtKeyword(@media) Space Ident(screen)"},
      {u"-foo -.5 --x -3px", "Ident(-foo) Space Number(-.5) Space Ident(--x) Space Dimension(-3px)"},
      {u"+5px", "Delimiter(+) Dimension(5px)"},
      {u"<!-- -->", "Delimiter(<) Delimiter(!) Ident(--) Space Ident(--) Delimiter(>)"},
      {u"a>b~c*d", "Ident(a) Delimiter(>) Ident(b) Delimiter(~) Ident(c) Delimiter(*) Ident(d)"},
      {u".a .5", "Delimiter(.) Ident(a) Space Number(.5)"},
      {u"a/b /* c */d", "Ident(a) Slash(/) Ident(b) Space Comment( c ) Ident(d)"},
      {u"/* open", "Comment( ope)"},
      {u"/*", "Comment()"},
      {u"10abc 10xyz", "Ident(10abc) Space Ident(10) Ident(xyz)"},
      {u"50% 5 % 5x% 5%%",
       "Percentage(50%) Space Percentage(5 %) Space Percentage(5x%) Space Percentage(5%%)"},
      {u"[a=b];,", "OpenBr([) Ident(a) Delimiter(=) Ident(b) CloseBr(]) Semicolon(;) Comma(,)"},
      {u"\u4e2d\u6587 x", "Ident(\xe4\xb8\xad\xe6\x96\x87) Space Ident(x)"},
      {u"\u00e9t\u00e9", "Delimiter(\xc3\xa9) Ident(t) Delimiter(\xc3\xa9)"}, // below U+0100: no letter
      {u"a\\\rb", "Ident(a) Delimiter(\x0e) Ident(b)"},
      {u"a\x0c", "Ident(a) Delimiter(\x0c)"},
      {u"2cmx 90dex", "Ident(2c) Ident(mx) Space Ident(90de) Ident(x)"},
  };
  for (auto& c : cases)
    EXPECT_EQ(dump(c.in), c.out) << hstring(c.in).toUtf8();
}

TEST(CSSTokenizer, EscapesAboveTheBasicPlane) {
  TCSSToken t = first(u"\\1F600");
  ASSERT_EQ(t.CType, ctIdent);
  EXPECT_EQ(t.Name, hstring(u"\U0001F600"));
  // Beyond U+10FFFF and in the surrogate range: the low 16 bits, no pair.
  EXPECT_EQ(first(u"\\110041").Name, hstring(u"A"));
  EXPECT_EQ(first(u"\\D800").Name.size(), 1u);
  EXPECT_EQ(first(u"\\D800").Name[0], 0xD800);
  EXPECT_EQ(first(u"'\\41\\42 C'").Name, hstring(u"ABC"));
  EXPECT_EQ(first(u"a\\g").Name, hstring(u"ag"));
}

TEST(CSSTokenizer, NumbersAndUnits) {
  struct {
    const char16_t* in;
    TCSSTokenType type;
    TMeasureUnit unit;
    float value;
  } cases[] = {
      {u"12", ctNumber, muNone, 12},
      {u"12px", ctDimension, muPX, 12},
      {u"12PX", ctDimension, muPX, 12},
      {u".5em", ctDimension, muEM, 0.5f},
      {u"50%", ctPercentage, muPercent, 50},
      {u"2cm", ctDimension, muCM, 2},
      {u"2cmx", ctIdent, muNone, 0},
      {u"2cm5", ctIdent, muNone, 0},
      {u"90deg", ctDimension, muDeg, 90},
      {u"90dex", ctIdent, muNone, 0},
      {u"1ex", ctDimension, muEX, 1},
      {u"5exotic", ctDimension, muEX, 5},
      {u"1in", ctDimension, muIN, 1},
      {u"3mm", ctDimension, muMM, 3},
      {u"200ms", ctDimension, muMS, 200},
      {u"1pc", ctDimension, muPC, 1},
      {u"10pt", ctDimension, muPt, 10},
      {u"2rem", ctDimension, muREM, 2},
      {u"2rex", ctIdent, muNone, 0},
      {u"5sec", ctDimension, muS, 5},
      {u"5s", ctDimension, muS, 5},
      {u"10vw", ctDimension, muVW, 10},
      {u"5vmin", ctDimension, muVH, 5},
      {u"1e3", ctNumber, muNone, 1000},
      {u"1.5e-1px", ctDimension, muPX, 0.15f},
      {u"-2.25", ctNumber, muNone, -2.25f},
      {u"1e39", ctNumber, muNone, 0}, // beyond 1E38
      {u"123456789012", ctNumber, muNone, 123456789012.0f},
  };
  for (auto& c : cases) {
    TCSSToken t = first(c.in);
    SCOPED_TRACE(hstring(c.in).toUtf8());
    EXPECT_EQ(t.CType, c.type);
    if (c.type == ctDimension || c.type == ctPercentage) {
      EXPECT_EQ(t.MUnit, c.unit);
    }
    EXPECT_FLOAT_EQ(t.AsFloat, c.value);
    if (c.type != ctIdent) {
      EXPECT_EQ(t.Name.toUtf8(), hstring(c.in).toUtf8());
    }
  }
}

TEST(CSSTokenizer, PositionsAndEndOfInput) {
  TCSSTokenizer tz(u" ab  (c"_hs, true);
  ASSERT_TRUE(tz.NextToken());
  EXPECT_EQ(tz.Token.StartPos, 2);
  EXPECT_EQ(tz.Token.EndPos, 3);
  ASSERT_TRUE(tz.NextToken()); // "  "
  EXPECT_EQ(tz.Token.StartPos, 4);
  EXPECT_EQ(tz.Token.EndPos, 5);
  ASSERT_TRUE(tz.NextToken());
  EXPECT_EQ(tz.Token.CType, ctOpenPar);
  EXPECT_EQ(tz.Token.StartPos, 6);
  ASSERT_TRUE(tz.NextToken());
  EXPECT_EQ(tz.Token.Name, u"c");
  EXPECT_FALSE(tz.NextToken());
  EXPECT_TRUE(tz.Eof);

  // Whitespace that runs to the end: the token is valid, Eof comes next.
  TCSSTokenizer ws(u"a  "_hs, true);
  ASSERT_TRUE(ws.NextToken());
  EXPECT_FALSE(ws.NextToken());
  EXPECT_EQ(ws.Token.CType, ctSpace);
  EXPECT_FALSE(ws.Eof);
  EXPECT_FALSE(ws.NextToken());
  EXPECT_TRUE(ws.Eof);

  TCSSTokenizer empty(hstring(), true);
  EXPECT_FALSE(empty.NextToken());
  EXPECT_TRUE(empty.Eof);
}

TEST(CSSTokenizer, WithoutNumberParsing) {
  TCSSTokenizer tz(u"12.5px"_hs, false);
  tz.Token.AsFloat = 7;
  ASSERT_TRUE(tz.NextToken());
  EXPECT_EQ(tz.Token.CType, ctDimension);
  EXPECT_EQ(tz.Token.Name, u"12.5px");
  EXPECT_FLOAT_EQ(tz.Token.AsFloat, 7); // left as it was
}

TEST(CSSTokenizer, HostileInputStaysLinear) {
  std::u16string big(1 << 20, u'a');
  TCSSTokens t = CSSTokenize(hstring(big.data(), big.size()));
  ASSERT_EQ(t.size(), 1u);
  EXPECT_EQ(t[0].Name.size(), big.size());
  for (const char16_t* open : {u"'", u"/*", u"url(", u"url('", u"\\"}) {
    std::u16string s = open + std::u16string(100000, u'x');
    EXPECT_LE(CSSTokenize(hstring(s.data(), s.size())).size(), 2u);
  }
  std::u16string nested(100000, u'{');
  EXPECT_EQ(CSSTokenize(hstring(nested.data(), nested.size())).size(), nested.size());
}

TEST(CSSTokenSequence, Cursor) {
  TCSSTokens one = CSSTokenize(u"a"_hs);
  TCSSTokenSequence s;
  s.Init(&one);
  EXPECT_FALSE(s.Eof);
  EXPECT_EQ(s.Position(), 0);
  EXPECT_FALSE(s.Next(1));
  EXPECT_EQ(s.T, nullptr);
  EXPECT_TRUE(s.Eof);
  EXPECT_EQ(s.Position(), 0);

  TCSSTokens none;
  s.Init(&none);
  EXPECT_TRUE(s.Eof);
  EXPECT_EQ(s.T, nullptr);

  auto stored = std::make_shared<TCSSTokens>(CSSTokenize(u"a b c"_hs));
  s.InitStore(stored);
  stored.reset();
  ASSERT_TRUE(s.Next(2));
  EXPECT_EQ(s.T->Name, u"b");
  EXPECT_EQ(s.Position(), 2);
  EXPECT_FALSE(s.Next(3));
  EXPECT_EQ(s.Position(), 4);
}

TEST(CSSTokenSequence, ReadColor) {
  struct {
    const char16_t* in;
    bool ok;
    uint32_t colour; // 0x12345678: left untouched
  } cases[] = {
      {u"red", true, 0xFFFF0000},
      {u"RED", true, 0xFFFF0000},
      {u"nonsense", true, 0x12345678}, // a name always passes
      {u"inherit", false, 0x12345678},
      {u"rgb(255, 0, 0)", true, 0xFFFF0000},
      {u"rgba(255,0,0,0.5)", true, 0x80FF0000},
      {u"rgb(100%, 0%, 50%)", true, 0xFFFF0080},
      {u"rgba(0, 0, 255, 50%)", true, 0x800000FF},
      {u"rgba(red, 0.5)", true, 0x80FF0000},
      {u"rgb(1,2)", true, 0x00000102},
      {u"var(--x)", true, 0x12345678},
      {u"hsl(0, 100%, 50%)", false, 0x12345678},
      {u"#f00", false, 0x12345678}, // hashes need the colour cached first
      {u"123456", false, 0xFF123456},
      {u"12px", false, 0x12345678},
  };
  for (auto& c : cases) {
    TCSSTokens toks;
    for (TCSSToken& t : CSSTokenize(c.in))
      if (t.CType != ctSpace)
        toks.push_back(t);
    TCSSTokenSequence s;
    s.Init(&toks);
    uint32_t colour = 0x12345678;
    SCOPED_TRACE(hstring(c.in).toUtf8());
    EXPECT_EQ(s.ReadColor(colour), c.ok);
    EXPECT_EQ(colour, c.colour);
  }
  // A cached hash colour reads back; a one-token function takes its cache.
  TCSSTokens h = CSSTokenize(u"#abc"_hs);
  h[0].Color = 0xFFAABBCC;
  TCSSTokenSequence s;
  s.Init(&h);
  uint32_t c = 0;
  EXPECT_TRUE(s.ReadColor(c));
  EXPECT_EQ(c, 0xFFAABBCCu);
}
