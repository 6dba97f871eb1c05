#include "htcore/document/html_tokenizer.h"

#include <gtest/gtest.h>
#include <string>

using namespace ht;

namespace {

const char* type_name(THTMLTokenType t) {
  static const char* names[] = {"?", "id",     "sp",    "str",     "<",   ">",     "/",
                                "=", "script", "style", "comment", "dir", "cdata", "custom"};
  return names[t];
}

// Tokens as "type:text" joined by blanks; text only for the kinds that carry it.
std::string tokens(std::u16string_view src, bool xml = false) {
  THTMLTokenizer t(hstring(src), xml);
  t.XMLMode = xml;
  std::string out;
  int guard = 0;
  while (t.NextToken(true) && ++guard < 1000) {
    if (!out.empty())
      out += ' ';
    out += type_name(t.TokenType);
    switch (t.TokenType) {
    case htIdent:
    case htString:
    case htScript:
    case htStyle:
    case htComment:
    case htDirective:
    case htCData:
    case htCustom:
      out += ":" + t.Token.toUtf8();
      break;
    default:
      break;
    }
  }
  return out;
}

std::u16string text_of(std::u16string_view src) {
  THTMLTokenizer t(hstring(src), false);
  t.NextToken(true);
  return std::u16string(t.Token.view());
}

} // namespace

TEST(HtmlTokenizer, CharacterClassPlanes) {
  struct {
    char16_t c;
    int in_tag, outside;
  } cases[] = {{u'a', 1, 0}, {u'Z', 1, 0},  {u'5', 1, 0},  {u'#', 1, 0},      {u'%', 1, 0},     {u'@', 1, 0},
               {u':', 1, 0}, {u'_', 1, 0},  {u'.', 1, 0},  {u'-', 1, 0},      {u'\t', 2, 0},    {u' ', 2, 0},
               {u'"', 3, 0}, {u'\'', 3, 0}, {u'<', 4, 4},  {u'>', 5, 0},      {u'/', 6, 0},     {u'=', 7, 0},
               {u'&', 0, 0}, {u'{', 0, 0},  {u'\f', 0, 0}, {u'\u00E9', 0, 0}, {u'\u4E2D', 0, 0}};
  for (auto& c : cases) {
    EXPECT_EQ(HtmlCharClass(c.c, true), c.in_tag) << int(c.c);
    EXPECT_EQ(HtmlCharClass(c.c, false), c.outside) << int(c.c);
  }
}

TEST(HtmlTokenizer, TokenStreams) {
  struct {
    const char16_t* src;
    const char* expected;
  } cases[] = {
      {u"<p class=x>hi</p>", "< id:p sp id:class = id:x > str:hi < / id:p >"},
      {u"<A HREF='u v'>", "< id:a sp id:HREF = str:u v >"},
      {u"<a href=foo/bar>", "< id:a sp id:href = id:foo/bar >"},
      {u"<br/>", "< id:br / >"},
      {u"<a/b>", "< id:a/b >"},
      {u"a < b", "str:a  str:< b"},
      {u"x<1", "str:x str:<1"},
      {u"<", "str:<"},
      {u"<!-- c -->t", "comment: c  str:t"},
      {u"<!-->x-->y", "comment:>x str:y"},
      {u"<!-x -->", "comment: "},
      {u"<!--open", "comment:op"},
      {u"<![CDATA[a<b]]>z", "cdata:a<b str:z"},
      {u"<![CDATA[a]]]>b]]>", "cdata:a]]]>b"},
      {u"<!DOCTYPE html>", "custom:DOCTYPE html"},
      {u"<!DOCTYPE x [<!ENTITY y \"]>\">]>t", "custom:DOCTYPE x [<!ENTITY y \"]>\">] str:t"},
      {u"<!>", "?"}, // an empty text leaves the type as it was
      {u"<?xml version=\"1.0\"?><r/>", "dir:xml version=\"1.0\" < id:r / >"},
      {u"<?pi>x", "dir:pi str:x"},
      {u"<a b=\"1\" c='2'>", "< id:a sp id:b = str:1 sp id:c = str:2 >"},
      {u"<a b=\"unterminated>", "< id:a sp id:b = str:unterminated>"},
      {u"<div <p>", "< id:div sp < id:p >"},
      {u"<x a=b=c/d>", "< id:x sp id:a = id:b = id:c/d >"},
      {u"<x\u00E9\u4E2D>", "< id:x\u00E9\u4E2D >"},
  };
  for (auto& c : cases)
    EXPECT_EQ(tokens(c.src), c.expected) << ToUtf8(c.src);
}

TEST(HtmlTokenizer, ScriptAndStyleBodies) {
  struct {
    const char16_t* src;
    const char* expected;
  } cases[] = {
      {u"<script>if (a<b) x='</p>';</script>", "< id:script script:if (a<b) x='</p>'; < / id:script >"},
      {u"<SCRIPT>\n <!--\n x();\n//-->\n </Script >", "< id:script script:\n x();\n// < / id:Script sp >"},
      {u"<script/>x", "< id:script / > str:x"},
      {u"<script src=/a.js>b</script>", "< id:script sp id:src = / id:a.js > str:b < / id:script >"},
      {u"<script>open", "< id:script script:open"},
      {u"<style> p{} </style>", "< id:style style: p{}  < / id:style >"},
      {u"<style><!-- a --> b <!-- c --></style>", "< id:style style: a  b  c  < / id:style >"},
      {u"<style>x --> y <!-- z</style>", "< id:style style:x  y  z < / id:style >"},
      {u"<style><!<!---->--></style>",
       "< id:style style:> < / id:style >"}, // marks joined by deletions count
  };
  for (auto& c : cases)
    EXPECT_EQ(tokens(c.src), c.expected) << ToUtf8(c.src);
  // XML has no script mode.
  EXPECT_EQ(tokens(u"<script>a<b/></script>", true), "< id:script > str:a < id:b / > < / id:script >");
}

TEST(HtmlTokenizer, TagNamesAreLoweredUnlessCaseSensitive) {
  THTMLTokenizer t(u"<Div><dIV/>"_hs, false);
  std::string got;
  while (t.NextToken(true))
    if (t.TokenType == htIdent)
      got += t.Token.toUtf8() + "," + t.CurrentTag.toUtf8() + ";";
  EXPECT_EQ(got, "div,div;div,div;");
  EXPECT_TRUE(t.CurrentTag.empty()); // cleared by the '/'
  THTMLTokenizer cs(u"<Div>"_hs, true);
  cs.NextToken(true);
  cs.NextToken(true);
  EXPECT_EQ(cs.Token, u"Div");
}

TEST(HtmlTokenizer, EntityDecoding) {
  struct {
    const char16_t* src;
    std::u16string text;
  } cases[] = {
      {u"a&lt;b&gt;c", u"a<b>c"},
      {u"&amp;&amp", u"&&"},
      {u"&ampx;", u"&;"}, // "amp" and one more unit go, whatever it is
      {u"&quot;x", u"\"x"},
      {u"&nbsp;x", u"\u00A0x"},
      {u"&nbsp x", u"\u00A0 x"},
      {u"&nbspx", u"\u00A0x"},
      {u"&lt", u"&lt"},
      {u"&eacute;t&Eacute;&eacute", u"\u00E9t\u00C9&eacute"},
      {u"&foo;", u"&oo;"},
      {u"&;x", u"&x"},
      {u"a & b", u"a & b"},
      {u"&#65;&#x42;&#x6a;", u"ABj"},
      {u"&#X41;", std::u16string(1, u'\0')},
      {u"&#65 x", u"A x"},
      {u"&#x1F600;", u"\U0001F600"},
      {u"&zopf;", u"\U0001D56B"},
      {u"&#x110000;", u"  "},
      {u"&#xD800;|&#55296;", u"  |  "},
      {u"&#-5;", u"  "},
      {u"&#99999999999;", u"  "},
      {u"&abcdefghijklmnopqrstuvwxyz;", u"&abcdefghijklmnopqrstuvwxyz;"}, // more than 25 units
      {u"&#", std::u16string(1, u'\0')},
      {u"&", u"&"},
      {u"&quo", u"\""},
      {u"&quo<b>x", u"\">x"}, // the short form swallows units without looking
  };
  for (auto& c : cases)
    EXPECT_EQ(text_of(c.src), c.text) << ToUtf8(c.src);
  // Quoted values decode too.
  EXPECT_EQ(tokens(u"<a t=\"&lt;&#34;\">"), "< id:a sp id:t = str:<\" >");
}

TEST(HtmlTokenizer, SpaceTokensAndEnd) {
  THTMLTokenizer t(u"<a  b >"_hs, false);
  t.NextToken(true);
  t.NextToken(true);
  EXPECT_TRUE(t.NextToken(true));
  EXPECT_EQ(t.TokenType, htSpace);
  EXPECT_EQ(t.Token, u"  ");
  t.NextToken(true);
  EXPECT_TRUE(t.NextToken(true));
  EXPECT_EQ(t.Token, u"b"); // one blank keeps the previous text
  EXPECT_EQ(t.TokenType, htSpace);
  THTMLTokenizer end(u"<a "_hs, false);
  end.NextToken(true);
  end.NextToken(true);
  EXPECT_FALSE(end.NextToken(true)); // the blanks ran to the end
  EXPECT_FALSE(end.Eof);
  EXPECT_FALSE(end.NextToken(true));
  EXPECT_TRUE(end.Eof);
}

TEST(HtmlTokenizer, OffsetsAndQuoteSkipping) {
  THTMLTokenizer t(u"ab<x \"\"y>"_hs, false);
  t.NextToken(true);
  EXPECT_EQ(t.TokenStart, 0);
  EXPECT_EQ(t.TokenEnd, 2);
  t.NextToken(false);
  t.NextToken(false);
  t.NextToken(false);
  EXPECT_TRUE(t.NextToken(false)); // stray quotes before a name are passed
  EXPECT_EQ(t.TokenType, htIdent);
  EXPECT_EQ(t.Token, u"y");
  EXPECT_EQ(t.TokenStart, 5);
  EXPECT_EQ(t.TokenEnd, 8);
}

TEST(HtmlTokenizer, XmlModeRejectsBadTagStart) {
  struct {
    const char16_t* src;
    const char* message;
  } cases[] = {
      {u"<r>1 < 2</r>", "Invalid tag name  . Line 0 position 6"},
      {u"<r>\n\n<1/></r>", "Invalid tag name 1. Line 2 position 6"},
  };
  for (auto& c : cases) {
    try {
      tokens(c.src, true);
      ADD_FAILURE() << "no error for " << ToUtf8(c.src);
    } catch (const EHtParserError& e) {
      EXPECT_STREQ(e.what(), c.message);
    }
  }
}

TEST(HtmlTokenizer, NulInsideTextDoesNotStopProgress) {
  std::u16string src = u"a";
  src += u'\0';
  src += u"b<x";
  src += u'\0';
  src += u"y=1>";
  THTMLTokenizer t(hstring(src), false);
  int n = 0;
  while (t.NextToken(true))
    ASSERT_LT(++n, 50);
  EXPECT_EQ(t.Parser.p, t.Parser.pend);
}

TEST(HtmlTokenizer, StyleMarkRemovalMatchesTheSimpleRule) {
  // The rule, done the slow way: delete the first "<!--", then the first
  // "-->" of what remains, until no "<!--" is left.
  auto simple = [](std::u16string s) {
    for (size_t i; (i = s.find(u"<!--")) != std::u16string::npos;) {
      s.erase(i, 4);
      size_t j = s.find(u"-->");
      if (j != std::u16string::npos)
        s.erase(j, 3);
    }
    return s;
  };
  const char16_t alphabet[] = u"<!->a";
  uint32_t seed = 12345;
  for (int round = 0; round < 3000; ++round) {
    std::u16string body;
    int len = 1 + round % 24;
    for (int i = 0; i < len; ++i) {
      seed = seed * 1103515245 + 12345;
      body += alphabet[(seed >> 16) % 5];
    }
    THTMLTokenizer t(hstring(u"<style>" + body + u"</style>"), false);
    for (int i = 0; i < 3; ++i)
      t.NextToken(true);
    ASSERT_EQ(t.TokenType, htStyle);
    ASSERT_EQ(std::u16string(t.Token.view()), simple(body)) << hstring(body).toUtf8();
  }
}
