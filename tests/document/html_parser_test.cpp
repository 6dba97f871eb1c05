#include "htcore/document/html_parser.h"
#include "htcore/foundation/codepage.h"

#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <string>

using namespace ht;

namespace {

std::string attrs_of(const THtmlParser& hp) {
  if (!hp.Attributes || hp.Attributes->Count == 0)
    return "";
  std::string r = "[";
  for (const THtAttribute& a : *hp.Attributes) {
    if (r.size() > 1)
      r += ',';
    r += a.Name.toUtf8() + "=" + a.Value.toUtf8();
  }
  return r + "]";
}

// One word per item: tags as name (with '/' in front for a close tag and
// behind for a closed one) and attributes, text quoted, blocks as kind:value.
std::string item(const THtmlParser& hp) {
  switch (hp.TagType) {
  case htIdent:
    return (hp.IsCloseTag ? "/" : "") + hp.Tag.toUtf8() + (hp.TagClosed ? "/" : "") + attrs_of(hp);
  case htString:
    return "'" + hp.Value.toUtf8() + "'";
  case htScript:
  case htStyle:
    return hp.Tag.toUtf8() + (hp.TagClosed ? "/" : "") + attrs_of(hp) + ":" + hp.Value.toUtf8();
  case htComment:
    return "comment:" + hp.Value.toUtf8();
  case htDirective:
    return "dir:" + hp.Value.toUtf8();
  case htCData:
    return "cdata:" + hp.Value.toUtf8();
  case htCustom:
    return "custom:" + hp.Value.toUtf8();
  default:
    return "?";
  }
}

std::string items(const hstring& src, bool xml = false) {
  THtmlParser hp(src, xml);
  std::string out;
  int guard = 0;
  while (hp.NextItem() && ++guard < 10000) {
    if (!out.empty())
      out += ' ';
    out += item(hp);
  }
  return out;
}

std::string items(const char16_t* src, bool xml = false) { return items(hstring(src), xml); }

struct SystemCodePage {
  explicit SystemCodePage(int cp) { HtSetSystemCodePage(cp); }
  ~SystemCodePage() { HtSetSystemCodePage(1252); }
};

} // namespace

TEST(HtmlParser, ItemStreams) {
  struct {
    const char16_t* src;
    const char* expected;
  } cases[] = {
      {u"", ""},
      {u"<p class=x>Hi</p>", "p[class=x] 'Hi' /p"},
      {u"<br/>", "br/"},
      {u"<br />x", "br/ 'x'"},
      {u"<a href=foo/bar>", "a[href=foo/bar]"},
      {u"<a href=/x/y.html>", "a[href=/x/y.html]"},
      {u"<a b=1 b=2>", "a[b=1]"},
      {u"<a b b>", "a[b=b]"},
      {u"<a b=1 b>", "a[b=b]"}, // a bare attribute replaces
      {u"<a b b=1>", "a[b=b]"}, // a valued one never does
      {u"<a x=b=c/d>", "a[x=b=c/d]"},
      {u"<a b= c>", "a[b=c]"},
      {u"<a b=>", "a"},
      {u"<a href=/>", "a"},
      {u"<a b='1'c=\"2\">", "a[b=1,c=2]"},
      {u"<a class=x/>", "a[class=x/]"},
      {u"<A HREF=X>", "a[href=X]"},
      {u"<a data-{{Name}}=1 Z>", "a[data-{{Name}}=1,z=z]"},
      {u"<a t=\"x &amp; y\">", "a[t=x & y]"},
      {u"<div <p>x", "div p 'x'"},
      {u"<div id=1 <p>", "div[id=1] p"},
      {u"</p class=x>", "/p"},
      {u"</ >x", "'x'"},
      {u"a < b", "'a ' '< b'"},
      {u"<p>1<2</p>", "p '1' '<2' /p"},
      {u"<!-->x-->y", "comment:>x 'y'"},
      {u"<!DOCTYPE html><html>", "custom:DOCTYPE html html"},
      {u"<![CDATA[x]]>", "cdata:x"},
      {u"<?xml v?><r>", "dir:xml v r"},
      {u"<script/>x", "script/ 'x'"},
      {u"<script>if(a<b)</script>t", "script/:if(a<b) 't'"},
      {u"<script type=x>a</SCRIPT >b", "script/[type=x]:a 'b'"},
      {u"<style>p{}</style>", "style/:p{}"},
      {u"<script src=/x.js>var a;</script>z", "script/[src=/x.js]:var a; 'z'"},
      {u"<p", ""},
      {u"<a b=1 <!>>", "a[b=1]"}, // an empty "<!>" leaves the previous token in place
      {u"<p>x</p", "p 'x'"},
  };
  for (auto& c : cases)
    EXPECT_EQ(items(c.src), c.expected) << ToUtf8(c.src);
}

// Common tag shapes have a short path through the item reader; these are its
// edges, each next to a shape that takes the long path.
TEST(HtmlParser, ShortTagPathsGiveTheSameItems) {
  struct {
    const char16_t* src;
    const char* expected;
  } cases[] = {
      {u"<b>x</b>", "b 'x' /b"},
      {u"<B>x</B>", "b 'x' /b"},
      {u"<b>x</Bb>", "b 'x' /bb"},
      {u"<b>x</b >", "b 'x' /b"},
      {u"<b>x</b/>", "b 'x' /b/"},
      {u"<b>x</a/b>", "b 'x' /a/b"},
      {u"<b>x</b1-c.d:e>", "b 'x' /b1-c.d:e"},
      {u"<b>x</b\u00e9>", "b 'x' /b\u00e9"},
      {u"<b>x</b", "b 'x'"},
      {u"<b>x</b\"y>", "b 'x' /b"},
      {u"<b>x</1>", "b 'x' /1"},
      {u"<a b=\"1\" c='2'>", "a[b=1,c=2]"},
      {u"<a b=\"1\" b='2'>", "a[b=1]"},
      {u"<a b=\"1\" b>", "a[b=b]"},
      {u"<a b-c:d_e1=\"1\">", "a[b-c:d_e1=1]"},
      {u"<a Bc=\"1\" bc=\"2\">", "a[bc=1]"},
      {u"<a b=\"1\"/>", "a/[b=1]"},
      {u"<a b=\"1\"c=\"2\">", "a[b=1,c=2]"},
      {u"<a b=\"x&amp;y\">", "a[b=x&y]"},
      {u"<a b=\"x", ""},
      {u"<a abcdefghijklmnopq=\"1\">", "a[abcdefghijklmnopq=1]"},
      {u"<a b =\"1\" c= '2'>", "a[b=1,c=2]"},
      {u"<P Class=\"x\">y", "p[class=x] 'y'"},
      {u"<style a=\"1\">p{}</style>", "style/[a=1]:p{}"},
      {u"<Script>x</script>y", "script/:x 'y'"},
  };
  for (auto& c : cases)
    EXPECT_EQ(items(c.src), c.expected) << ToUtf8(c.src);
}

TEST(HtmlParser, XmlModeKeepsCaseAndHasNoScriptMode) {
  struct {
    const char16_t* src;
    const char* expected;
  } cases[] = {
      {u"<R X=\"1\" y='2'/>", "R/[X=1,y=2]"},
      {u"<r><script>a</script></r>", "r script 'a' /script /r"},
      {u"<?xml version=\"1.0\"?><a:b/>", "dir:xml version=\"1.0\" a:b/"},
  };
  for (auto& c : cases)
    EXPECT_EQ(items(c.src, true), c.expected) << ToUtf8(c.src);
}

TEST(HtmlParser, XmlModeErrorMessages) {
  struct {
    const char16_t* src;
    const char* message;
  } cases[] = {
      {u"<r a=b/>", "Attribute a value expected but b found. Line 0 position 7"},
      {u"<r>\n<s a = />", "Attribute a value expected but / found. Line 1 position 13"},
      {u"<r a=", "Attribute a value expected but = found. Line 0 position 6"},
      {u"<r>\n\n x < y</r>", "Invalid tag name  . Line 2 position 9"},
      {u"<r><2/></r>", "Invalid tag name 2. Line 0 position 4"},
  };
  for (auto& c : cases) {
    try {
      items(c.src, true);
      ADD_FAILURE() << "no error for " << ToUtf8(c.src);
    } catch (const EHtParserError& e) {
      EXPECT_STREQ(e.what(), c.message) << ToUtf8(c.src);
    }
  }
  // The same texts never raise in HTML mode.
  for (auto& c : cases)
    EXPECT_NO_THROW(items(c.src, false));
}

TEST(HtmlParser, NamesAreInterned) {
  THtmlParser hp(
      u"<div id=a><DIV ID=b><div a-very-long-attribute-name=1><div a-very-long-attribute-name=2>"_hs);
  const char16_t* tag = nullptr;
  const char16_t* id = nullptr;
  const char16_t* longname = nullptr;
  for (int i = 0; i < 4; ++i) {
    ASSERT_TRUE(hp.NextItem());
    if (!tag)
      tag = hp.Tag.Pointer();
    EXPECT_EQ(hp.Tag.Pointer(), tag);
    if (i < 2) {
      if (!id)
        id = hp.Attributes->GetName(0).Pointer();
      EXPECT_EQ(hp.Attributes->GetName(0).Pointer(), id);
    } else {
      // Long names are not interned: each item has its own copy.
      EXPECT_NE(hp.Attributes->GetName(0).Pointer(), longname);
      longname = hp.Attributes->GetName(0).Pointer();
    }
  }
}

TEST(HtmlParser, AttributesAreClearedNotFreedAndCanBeTakenOver) {
  THtmlParser hp(u"<a x=1 y=2><b><c z=3>"_hs);
  ASSERT_TRUE(hp.NextItem());
  THtAttributes* first = hp.Attributes.get();
  EXPECT_EQ(first->Count, 2);
  ASSERT_TRUE(hp.NextItem());
  EXPECT_EQ(hp.Attributes.get(), first);
  EXPECT_EQ(hp.Attributes->Count, 0);
  std::unique_ptr<THtAttributes> taken(hp.Attributes.release());
  ASSERT_TRUE(hp.NextItem());
  ASSERT_TRUE(hp.Attributes);
  EXPECT_NE(hp.Attributes.get(), taken.get());
  EXPECT_EQ(attrs_of(hp), "[z=3]");
}

TEST(HtmlParser, RepeatCurrentGivesTheItemAgain) {
  THtmlParser hp(u"<p>x"_hs);
  ASSERT_TRUE(hp.NextItem());
  hp.RepeatCurrent = true;
  ASSERT_TRUE(hp.NextItem());
  EXPECT_EQ(item(hp), "p");
  ASSERT_TRUE(hp.NextItem());
  EXPECT_EQ(item(hp), "'x'");
  EXPECT_FALSE(hp.NextItem());
  hp.RepeatCurrent = true;
  EXPECT_FALSE(hp.NextItem());
}

TEST(HtmlParser, StartPosIsWhereTheItemBegan) {
  THtmlParser hp(u"ab<p x=1>c<!--d-->"_hs);
  int expected[] = {0, 2, 9, 10};
  for (int e : expected) {
    ASSERT_TRUE(hp.NextItem());
    EXPECT_EQ(hp.StartPos, e) << item(hp);
  }
}

TEST(HtmlParser, ByteOrderMarks) {
  EXPECT_EQ(items(u"\uFEFF<p>"), "p");
  EXPECT_EQ(items(u"\uFEFF"), "'\xEF\xBB\xBF'"); // a lone mark is too short to skip
  SystemCodePage cp(1251);
  // UTF-8 bytes (with their mark) read through code page 1251.
  std::string utf8 = "\xEF\xBB\xBF<p>\xD0\xBF\xD1\x80\xD0\xB8</p>";
  THtmlParser hp(HtCodePageToUnicode(utf8, 1251));
  EXPECT_EQ(hp.Encoding, heUTF8);
  std::string got;
  while (hp.NextItem())
    got += item(hp) + " ";
  EXPECT_EQ(got, "p '\xD0\xBF\xD1\x80\xD0\xB8' /p ");
  // Plain ASCII behind the mark: switched, nothing to re-decode.
  THtmlParser ascii(HtCodePageToUnicode("\xEF\xBB\xBFhi", 1251));
  EXPECT_EQ(ascii.Encoding, heUTF8);
  ASSERT_TRUE(ascii.NextItem());
  EXPECT_EQ(ascii.Value, u"hi");
}

TEST(HtmlParser, MetaCharsetRedecodesTheRest) {
  // windows-1251 bytes read as the system code page 1252.
  std::string doc =
      "<html><head><meta http-equiv=\"Content-Type\" content=\"text/html; charset=windows-1251\">"
      "<title>\xCF\xF0\xE8</title></head><body>\xE2\xE5\xF2</body>";
  THtmlParser hp(HtCodePageToUnicode(doc, 1252));
  std::string got;
  while (hp.NextItem())
    got += item(hp) + " ";
  EXPECT_EQ(got, "html head meta[content=text/html; charset=windows-1251,http-equiv=Content-Type] title "
                 "'\xD0\x9F\xD1\x80\xD0\xB8' /title /head body '\xD0\xB2\xD0\xB5\xD1\x82' /body ");
  EXPECT_EQ(hp.Encoding, heANSI);
  EXPECT_EQ(hp.Codepage, 1251u);
  EXPECT_TRUE(hp.FEncodingProcessed);
}

TEST(HtmlParser, MetaCharsetVariants) {
  std::string body = "<p>\xC3\xA9</p>";
  struct {
    std::string head;
    THtmlEncoding encoding;
    const char* text;
  } cases[] = {
      {"<meta charset=\"UTF-8\"></head>", heUTF8, "\xC3\xA9"},
      {"<meta charset=utf-8>", heUTF8, "\xC3\xA9"},
      {"<meta http-equiv=refresh charset=iso-8859-15>", heANSI, "\xC3\x83\xC2\xA9"},
      {"<meta name=x>", heDefault, "\xC3\x83\xC2\xA9"},
      {"<meta charset=klingon>", heDefault, "\xC3\x83\xC2\xA9"},
      // Only the first declaration counts.
      {"<meta charset=windows-1252><meta charset=utf-8>", heANSI, "\xC3\x83\xC2\xA9"},
  };
  for (auto& c : cases) {
    THtmlParser hp(HtCodePageToUnicode(c.head + body, 1252));
    std::string text;
    while (hp.NextItem())
      if (hp.TagType == htString)
        text += hp.Value.toUtf8();
    EXPECT_EQ(hp.Encoding, c.encoding) << c.head;
    EXPECT_EQ(text, c.text) << c.head;
  }
  THtmlParser ignored(HtCodePageToUnicode("<meta charset=utf-8>" + body, 1252));
  ignored.IgnoreMetaEncoding = true;
  while (ignored.NextItem()) {
  }
  EXPECT_EQ(ignored.Encoding, heDefault);
  EXPECT_FALSE(ignored.FEncodingProcessed);
}

TEST(HtmlParser, ChangeEncodingTestsFromHeadEnd) {
  // Bad UTF-8 in the head does not matter when the body after </head> is fine.
  std::string doc = "<head>\xE9</head><p>\xC3\xA9</p>";
  THtmlParser hp(HtCodePageToUnicode(doc, 1252));
  hp.ChangeEncoding(heUTF8, 0);
  EXPECT_EQ(hp.Encoding, heUTF8);
  EXPECT_EQ(hp.Tokenizer.Parser.Tail().toUtf8(), "<head>\xEF\xBF\xBD</head><p>\xC3\xA9</p>");
  // Without a head the whole rest is tested; a bad sequence keeps the text.
  THtmlParser bad(HtCodePageToUnicode("<p>\xE9\xC3\xA9", 1252));
  bad.ChangeEncoding(heUTF8, 0);
  EXPECT_EQ(bad.Encoding, heUTF8);
  EXPECT_EQ(bad.Tokenizer.Parser.Tail().toUtf8(), "<p>\xC3\xA9\xC3\x83\xC2\xA9");
  // Only a change to UTF-8 acts.
  THtmlParser other(u"x"_hs);
  other.ChangeEncoding(heANSI, 1251);
  EXPECT_EQ(other.Encoding, heDefault);
}

TEST(HtmlParser, CharsettoCodepage) {
  struct {
    const char16_t* charset;
    int cp;
  } cases[] = {
      {u"iso-8859-1", 1252},
      {u"iso-8859-15", 1252},
      {u"iso-8859-2", 28592},
      {u"iso-8859-5", 28595},
      {u"iso-8859-6", 28596},
      {u"iso-8859-7", 28597},
      {u"iso-8859-9", 1254},
      {u"iso-8859-8", 1255},
      {u"koi8-r", 20866},
      {u"windows-1251", 1251},
      {u"windows-", 0},
      {u"windows-x", 0},
      {u"gb2312", 936},
      {u"utf-8", 65001},
      {u"big5", 950},
      {u"Windows-1250", 1250},
      {u"text/html; charset=windows-1253", 1253},
      {u"latin1", 0},
      {u"", 0},
  };
  for (auto& c : cases)
    EXPECT_EQ(THtmlParser::CharsettoCodepage(c.charset), c.cp) << ToUtf8(c.charset);
}

TEST(HtmlParser, IsUTF8Rules) {
  struct {
    std::string bytes;
    bool utf8;
  } cases[] = {
      {"plain ascii", false},
      {"\xC3\xA9", true},
      {"\xC0\x80", false},
      {"a\xC1\xBF", false},
      {"\xC3\x41", false},
      {"\xE0\x80\x80", false},
      {"\xE0\xA0\x80", true},
      {"\xED\xA0\x80", false},
      {"\xED\x9F\xBF", true},
      {"\xEF\xBF\xBD", true},
      {"\xE1\x80", false},
      {"\xF0\x9F\x98\x80", false},            // four-byte forms end the scan
      {"\xC3\xA9\xF0\x9F\x98\x80\xC0", true}, // ... keeping what was seen
      {"\x80", false},
      {"\xC3\xA9\x80\xC0", true},
      {"\xC3\xA9\xC3", true}, // a sample cut inside a sequence
  };
  for (auto& c : cases)
    EXPECT_EQ(IsUTF8Bytes(c.bytes.data(), static_cast<int>(c.bytes.size())), c.utf8) << c.bytes;
  EXPECT_TRUE(IsUTF8(HtCodePageToUnicode("x\xC3\xA9", 1252).c_str()));
  EXPECT_FALSE(IsUTF8(u"\u00E9"));
  EXPECT_FALSE(IsUTF8(nullptr));
}

TEST(HtmlParser, GetHTMLEncoding) {
  struct {
    std::string html;
    int cp;
  } cases[] = {
      {"<html><head><META http-equiv=Content-Type content=\"text/html; charset=windows-1251\">", 1251},
      {"<html><meta charset='utf-8'>                     ", 65001},
      {"<html><meta name=x><meta charset=koi8-r>            ", 20866},
      {"<meta charset=utf-8>", 0}, // shorter than 20 bytes after the tag start
      {"<html><body>no declaration here at all</body>", 0},
      {std::string(1200, ' ') + "<meta charset=utf-8>" + std::string(40, ' '), 0},
  };
  for (auto& c : cases)
    EXPECT_EQ(GetHTMLEncoding(c.html.data(), static_cast<int>(c.html.size())), c.cp) << c.html;
  EXPECT_EQ(GetHTMLEncoding(nullptr, 100), 0);
}

TEST(HtmlParser, GetFileEncoding) {
  struct {
    std::string bytes;
    THtmlEncoding enc;
    uint32_t cp;
  } cases[] = {
      {"\xEF\xBB\xBF<p>", heUTF8, 0},
      {"\xFF\xFE<\0p\0", heUTF16, 0},
      {std::string("<\0p\0>\0<\0/\0", 10), heUTF16, 0},
      {"<p>\xC3\xA9</p>", heUTF8, 0},
      {"<meta http-equiv=Content-Type content=\"text/html; CHARSET = \"windows-1251\">", heDefault, 1251},
      {"<p>plain</p>", heDefault, 0},
  };
  std::string name = ::testing::TempDir() + "htcore_file_encoding.html";
  for (auto& c : cases) {
    {
      std::ofstream f(name, std::ios::binary);
      f.write(c.bytes.data(), static_cast<std::streamsize>(c.bytes.size()));
    }
    uint32_t cp = 99;
    EXPECT_EQ(THtmlParser::GetFileEncoding(hstring(name), cp), c.enc) << c.bytes;
    EXPECT_EQ(cp, c.cp) << c.bytes;
  }
  std::remove(name.c_str());
  uint32_t cp;
  EXPECT_THROW(THtmlParser::GetFileEncoding(hstring(name + ".missing"), cp), EFOpenError);
}

TEST(HtmlParser, LargeAndBrokenInputStayLinear) {
  std::u16string big(1 << 20, u'x');
  struct {
    std::u16string src;
    size_t min_items;
  } cases[] = {
      {u"<a b=\"" + big + u"\">", 1},
      {u"<a b=" + big + u">", 1},
      {u"<a b='" + big, 0},
      {u"<!--" + big, 1},
      {u"<![CDATA[" + std::u16string(1 << 20, u']'), 1},
      {u"<!DOCTYPE [" + big, 1},
      {u"<script>" + std::u16string(1 << 20, u'<'), 0},
      {u"<style>" + std::u16string(1 << 20, u'<') + u"!--", 0},
      {std::u16string(1 << 20, u'&'), 1},
      {std::u16string(1 << 20, u'<'), 1},
      {u"<p " + std::u16string(1 << 20, u'"'), 0},
  };
  std::u16string style = u"<style>";
  for (int i = 0; i < 100000; ++i)
    style += u"<!-<!---->->";
  std::u16string tags, open_tags, attrs, entities;
  for (int i = 0; i < 100000; ++i) {
    tags += u"<div>";
    open_tags += u"<div ";
    attrs += u" a=";
    entities += u"&#x41&#";
  }
  for (auto& c : cases) {
    THtmlParser hp{hstring(c.src)};
    size_t n = 0;
    while (hp.NextItem())
      ++n;
    EXPECT_GE(n, c.min_items) << c.src.size();
  }
  style += u"</style>";
  THtmlParser st{hstring(style)};
  ASSERT_TRUE(st.NextItem());
  EXPECT_EQ(st.TagType, htStyle);
  THtmlParser t1{hstring(tags)};
  int n = 0;
  while (t1.NextItem())
    ++n;
  EXPECT_EQ(n, 100000);
  THtmlParser t2{hstring(open_tags)};
  n = 0;
  while (t2.NextItem())
    ++n;
  EXPECT_EQ(n, 99999); // the last one is never closed
  THtmlParser t3{hstring(u"<p" + attrs + u">")};
  ASSERT_TRUE(t3.NextItem());
  EXPECT_EQ(attrs_of(t3), "[a=a=]");
  THtmlParser t4{hstring(entities)};
  ASSERT_TRUE(t4.NextItem());
  EXPECT_EQ(t4.Value.size(), 200000u);
}
