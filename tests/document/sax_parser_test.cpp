#include "foundation/temp_files.h"
#include "htcore/document/parse_errors.h"
#include "htcore/document/sax_parser.h"
#include "htcore/foundation/codepage.h"
#include "htcore/foundation/stream_types.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <string>

using namespace ht;

namespace {

// Hands out at most Step bytes per Read, as a pipe does.
class TTrickleStream : public TStream {
public:
  TTrickleStream(std::string data, int64_t step) : FData(std::move(data)), FStep(step) {}
  int64_t Read(void* buffer, int64_t count) override {
    int64_t n = std::min({count, FStep, static_cast<int64_t>(FData.size()) - FPos});
    std::memcpy(buffer, FData.data() + FPos, static_cast<size_t>(n));
    FPos += n;
    return n;
  }
  int64_t Write(const void*, int64_t) override { return 0; }
  int64_t Seek(int64_t offset, TSeekOrigin origin) override {
    FPos = origin == soBeginning ? offset : origin == soCurrent ? FPos + offset : FData.size() + offset;
    return FPos;
  }

private:
  std::string FData;
  int64_t FStep;
  int64_t FPos = 0;
};

std::string Escaped(const hstring& s) {
  std::string out;
  for (char16_t c : s.view()) {
    if (c < 32 || c > 126) {
      char buf[12];
      std::snprintf(buf, sizeof buf, "\\u%04X", static_cast<unsigned>(c));
      out += buf;
    } else {
      out += static_cast<char>(c);
    }
  }
  return out;
}

// One line per event: "<name a=v ...>", "</name>" or "'text'", with the
// level behind the event for tags.
std::string Trace(THtSAXXMLParser& sax) {
  std::string out;
  auto put = [&out](std::initializer_list<std::string_view> parts) {
    for (std::string_view p : parts)
      out.append(p);
  };
  while (sax.Next()) {
    std::string level = std::to_string(sax.Level);
    switch (sax.FLastEvent) {
    case seTagStart:
      put({"<", Escaped(sax.FTag)});
      for (const THtAttribute& a : sax.FAttributes)
        put({" ", Escaped(a.Name), "=", Escaped(a.Value)});
      put({">", level, " "});
      break;
    case seTagEnd:
      put({"</", Escaped(sax.FTag), ">", level, " "});
      break;
    case seText:
      put({"'", Escaped(sax.FText), "' "});
      break;
    }
  }
  if (!out.empty())
    out.pop_back();
  return out;
}

std::string Trace(const std::string& xml, THtmlEncoding enc = heUTF8) {
  TStringStream s(xml);
  THtSAXXMLParser sax(s, enc);
  return Trace(sax);
}

std::string TextOf(const std::string& xml) {
  TStringStream s(xml);
  THtSAXXMLParser sax(s, heUTF8);
  TFastString fs;
  sax.ExtractText(fs);
  return Escaped(fs.GetAsString());
}

std::string ErrorOf(const std::function<void()>& f) {
  try {
    f();
  } catch (const EHtParserError& e) {
    return e.what();
  }
  return "no error";
}

} // namespace

TEST(SaxParser, EventsOfSmallDocuments) {
  struct {
    const char* xml;
    const char* trace;
  } cases[] = {
      {"", ""},
      {"<a b=\"1\"/>", "<a b=1>1 </a>0"},
      {"<a><b/>x</a>", "<a>1 <b>2 </b>1 'x' </a>0"},
      // The declaration is a tag of its own, closed by "?>".
      {"<?xml version=\"1.0\"?><r/>", "<?xml version=1.0>1 </?xml>0 <r>1 </r>0"},
      // Apostrophes do not quote; an unquoted value ends at a blank or '>'.
      {"<a b='1' c=x d = \"y z\">", "<a b='1' c=x d=y z>1"},
      {"<a b=c/>", "<a b=c/>1"},
      // A name without '=' is dropped, and so is a stray quote.
      {"<a sel b=\"2\" \"q\"=3>", "<a b=2>1"},
      // Names are kept as written and sorted; duplicates are all kept, in source order.
      {"<a Z=\"1\" y=\"2\" y=\"3\">", "<a Z=1 y=2 y=3>1"},
      {"<p:a xmlns:p=\"u\">t</p:a >", "<p:a xmlns:p=u>1 't' </p:a>0"},
      // Comments and declarations vanish; CDATA joins the text, undecoded.
      {"<!DOCTYPE r [<!ENTITY e \"v\">]><!-- c --><r>a<!-- <b> -->b<![CDATA[<&amp;>]]>c</r>",
       "<r>1 'ab<&amp;>c' </r>0"},
      {"<r><![CDATA[x]]></r>", "<r>1 'x' </r>0"},
      {"<?xml ?>\n<!DOCTYPE r>\n<r/>", "<?xml>1 </?xml>0 '\\u000A' '\\u000A' <r>1 </r>0"},
      // A '?' ends no name.
      {"<?pi?>", "<?pi?>1"},
      {"<r><!-- unterminated", "<r>1"},
      // A '/' that does not close a tag starts text; stray end tags go below 0.
      {"<a / b>", "<a>1 '/ b>'"},
      {"</x></y>", "</x>-1 </y>-2"},
      {"text only", "'text only'"},
      {"<", "<>1"},
      {"<a", "<a>1"},
      {"<a b=\"open", "<a b=open>1"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Trace(c.xml), c.trace) << c.xml;
}

TEST(SaxParser, EntityReferences) {
  struct {
    const char* in;
    const char* out;
  } cases[] = {
      {"1&amp;2", "1&2"},
      {"&lt;&gt;&quot;&nbsp;&nbsp", "<>\"\\u00A0\\u00A0"},
      // Short forms are known by their first letters and eat a fixed count.
      {"&quoxyz", "\"z"},
      {"&ampx", "&"},
      {"&lt;x", "<x"},
      {"&hellip;&rarr;", "\\u2026\\u2192"},
      {"&#65;&#x42;&#x6a;&#X41;.", "ABj\\u0000."},
      {"&#128512;", "\\uD83D\\uDE00"},
      {"&#1114112;&#xD800;", "    "},
      {"&#99999999999999;", "  "},
      // A numeric reference may end at a blank, which goes with it.
      {"&#65 b", "Ab"},
      // Unknown names leave only the '&'; so does a name that never ends.
      {"a&zz;b", "a&b"},
      {"a&b c", "a&b c"},
      {"&abcdefghijklmnopqrstuvwxyz;", "&abcdefghijklmnopqrstuvwxyz;"},
      {"x&", "x&"},
      {"x&#65", "x&#65"},
      {"&lt", "&lt"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Trace(std::string("<a>") + c.in + "</a>"), std::string("<a>1 '") + c.out + "' </a>0") << c.in;
    // Values decode the same way.
    std::string attr = c.in;
    if (attr.find('"') == std::string::npos) {
      EXPECT_EQ(Trace("<a v=\"" + attr + "\">"), std::string("<a v=") + c.out + ">1") << c.in;
    }
  }
}

TEST(SaxParser, ManyAttributesAreSortedOnce) {
  // Inserting each in order would take seconds here.
  std::string xml = "<a";
  for (int i = 15000; i > 0; --i)
    xml += " n" + std::to_string(i) + "=\"" + std::to_string(i) + "\"";
  xml += "/>";
  TStringStream s(xml);
  THtSAXXMLParser sax(s, heUTF8);
  ASSERT_TRUE(sax.Next());
  ASSERT_EQ(sax.FAttributes.Count, 15000);
  for (int i = 1; i < sax.FAttributes.Count; ++i)
    ASSERT_LT(sax.FAttributes.GetName(i - 1).view(), sax.FAttributes.GetName(i).view());
  EXPECT_EQ(sax.GetAttr(u"n4711"_hs), u"4711");
}

TEST(SaxParser, TagNamesAndNamespaces) {
  TStringStream s("<soap:Envelope><Body/><a:b:c/></soap:Envelope>");
  THtSAXXMLParser sax(s, heUTF8);
  const char16_t* expected[][2] = {{u"soap:Envelope", u"Envelope"},
                                   {u"Body", u"Body"},
                                   {u"Body", u"Body"},
                                   {u"a:b:c", u"b:c"},
                                   {u"a:b:c", u"b:c"},
                                   {u"soap:Envelope", u"Envelope"}};
  for (auto& e : expected) {
    ASSERT_TRUE(sax.Next());
    EXPECT_EQ(sax.FTag, e[0]);
    EXPECT_EQ(sax.FTagNS, e[1]);
  }
  EXPECT_FALSE(sax.Next());
  EXPECT_EQ(sax.Level, 0);
}

TEST(SaxParser, HeldStringsAreNotOverwritten) {
  TStringStream s("<a k=\"first\">one</a><a k=\"second-long\">two and more</a>");
  THtSAXXMLParser sax(s, heUTF8);
  ASSERT_TRUE(sax.Next());
  hstring value = sax.GetAttr(u"k"_hs);
  ASSERT_TRUE(sax.Next());
  hstring text = sax.FText;
  while (sax.Next()) {
  }
  EXPECT_EQ(value, u"first");
  EXPECT_EQ(text, u"one");
  EXPECT_EQ(sax.GetAttr(u"k"_hs), u"second-long");
  EXPECT_EQ(sax.FText, u"two and more");
}

TEST(SaxParser, SkipLevel) {
  TStringStream s("<r><a x=\"1\"><b>t</b><c/></a><d/></r>");
  THtSAXXMLParser sax(s, heUTF8);
  ASSERT_TRUE(sax.Next()); // <r>
  ASSERT_TRUE(sax.Next()); // <a>
  EXPECT_EQ(sax.Level, 2);
  sax.SkipLevel();
  EXPECT_EQ(sax.FLastEvent, seTagEnd);
  EXPECT_EQ(sax.FTag, u"a");
  EXPECT_EQ(sax.Level, 1);
  ASSERT_TRUE(sax.Next());
  EXPECT_EQ(sax.FTag, u"d");
  ASSERT_TRUE(sax.Next());
  EXPECT_EQ(sax.Level, 1);
  // From inside an element, to the end of that element; then to the end.
  sax.SkipLevel();
  EXPECT_EQ(sax.FTag, u"r");
  EXPECT_EQ(sax.Level, 0);
  sax.SkipLevel();
  EXPECT_FALSE(sax.Next());
}

TEST(SaxParser, EncodingFromMarkAndDeclaration) {
  struct {
    std::string xml;
    THtmlEncoding given;
    THtmlEncoding found;
    const char* trace;
  } cases[] = {
      {"\xEF\xBB\xBF<a>\xC3\xA9</a>", heDefault, heUTF8, "<a>1 '\\u00E9' </a>0"},
      // Without a mark or declaration the system code page (1252) applies.
      {"<a>\xE9\x80</a>", heDefault, heDefault, "<a>1 '\\u00E9\\u20AC' </a>0"},
      {"<?xml version=\"1.0\" encoding=\"windows-1251\"?><a>\xCF\xF0\xE8</a>", heUTF8, heANSI,
       "<?xml encoding=windows-1251 version=1.0>1 </?xml>0 <a>1 '\\u041F\\u0440\\u0438' </a>0"},
      {"<?xml version='1.0' encoding=\"ISO-8859-5\"?><a>\xB0</a>", heUTF8, heANSI,
       "<?xml encoding=ISO-8859-5 version='1.0'>1 </?xml>0 <a>1 '\\u0410' </a>0"},
      {"<?xml encoding=\"UTF-8\"?><a>\xE2\x82\xAC</a>", heDefault, heUTF8,
       "<?xml encoding=UTF-8>1 </?xml>0 <a>1 '\\u20AC' </a>0"},
      // Only the first tag counts.
      {"<a/><?xml encoding=\"windows-1251\"?><b>\xC3\xA9</b>", heUTF8, heUTF8,
       "<a>1 </a>0 <?xml encoding=windows-1251>1 </?xml>0 <b>1 '\\u00E9' </b>0"},
      {"<?xml encoding=\"x-unknown\"?><b>\xC3\xA9</b>", heUTF8, heUTF8,
       "<?xml encoding=x-unknown>1 </?xml>0 <b>1 '\\u00E9' </b>0"},
      // Invalid UTF-8 does not stop the reader.
      {"<a>\xFF</a>", heUTF8, heUTF8, "<a>1 '\\uFFFD' </a>0"},
  };
  for (const auto& c : cases) {
    TStringStream s(c.xml);
    THtSAXXMLParser sax(s, c.given);
    EXPECT_EQ(Trace(sax), c.trace) << c.xml;
    EXPECT_EQ(sax.FEncoding, c.found) << c.xml;
  }
}

TEST(SaxParser, Utf16Input) {
  // FE FF sets heUTF16 and units are moved as they are; FF FE is not looked at.
  std::string be("\xFE\xFF"
                 "ab",
                 4);
  be += "cdef";
  TStringStream s1(be);
  THtSAXXMLParser a(s1, heDefault);
  EXPECT_EQ(a.FEncoding, heUTF16);
  ASSERT_TRUE(a.Next());
  EXPECT_EQ(a.FText, hstring(u"\u6261\u6463\u6665"));

  std::string le("\xFF\xFE<\0a\0>\0", 8);
  TStringStream s2(le);
  THtSAXXMLParser b(s2, heDefault);
  EXPECT_EQ(b.FEncoding, heDefault);
  TStringStream s3(le);
  THtSAXXMLParser c(s3, heUTF16);
  EXPECT_EQ(c.FEncoding, heUTF16);
  ASSERT_TRUE(c.Next());
  EXPECT_EQ(c.FText, hstring(u"\uFEFF"));
}

TEST(SaxParser, TwoTextsInARowRaise) {
  // A text longer than the buffer is cut at the buffer end; the rest is a
  // second text in a row.
  std::string xml = "<a>" + std::string(THtSAXXMLParser::kBufferSize + 100, 'x') + "</a>";
  EXPECT_EQ(ErrorOf([&] { Trace(xml); }), "Incorrect XML at position 262147");
  EXPECT_EQ(ErrorOf([&] { TextOf(xml); }), "Incorrect XML at position 262147");
  // Texts that fit, comments and CDATA of any size are fine.
  std::string big = "<a>" + std::string(THtSAXXMLParser::kBufferSize - 10, 'y') + "</a>";
  EXPECT_EQ(ErrorOf([&] { Trace(big); }), "no error");
  std::string comment = "<a>x<!--" + std::string(3 * THtSAXXMLParser::kBufferSize, '-') + "-->y</a>";
  EXPECT_EQ(ErrorOf([&] { Trace(comment); }), "Incorrect XML at position 262147");
  std::string lone = "<a><!--" + std::string(3 * THtSAXXMLParser::kBufferSize, '-') + "-->y</a>";
  EXPECT_EQ(Trace(lone), "<a>1 'y' </a>0");
  std::string doctype = "<!DOCTYPE a [" + std::string(THtSAXXMLParser::kBufferSize, ' ') + "]><a/>";
  EXPECT_EQ(Trace(doctype), "<a>1 </a>0");
}

TEST(SaxParser, CutItemsNeverPassSilently) {
  // By default an item longer than the buffer is delivered as far as it goes;
  // what follows the cut raises instead of passing for items of its own.
  const size_t kB = THtSAXXMLParser::kBufferSize;
  struct {
    std::string xml, error;
  } cases[] = {
      // The tail of a start tag would read as text.
      {"<r><a x=\"" + std::string(kB, 'v') + "\" y=\"1\">t</a></r>", "Incorrect XML at position 262147"},
      // ... or as the end of an empty element.
      {"<r><a x=" + std::string(kB, 'v') + "/></r>", "Incorrect XML at position 262147"},
      {"<r></" + std::string(kB, 'n') + "></r>", "Incorrect XML at position 262147"},
      // The rest of a CDATA section starting with markup.
      {"<r><![CDATA[" + std::string(kB - 9, 'c') + "<b>x</b>]]></r>", "Incorrect XML at position 262147"},
      // A text: the second text in a row.
      {"<r>" + std::string(kB + 5, 't') + "</r>", "Incorrect XML at position 262147"},
      // A tag whose cut falls just before its end is whole.
      {"<r><a x=\"" + std::string(kB - 7, 'v') + "\"/>z</r>", "no error"},
      {"<r><a x=\"" + std::string(kB - 7, 'v') + "\">z</a></r>", "no error"},
      {"<r><a x=\"" + std::string(kB - 7, 'v') + "\"  \n >z</a></r>", "no error"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ErrorOf([&] { Trace(c.xml); }), c.error) << c.xml.substr(0, 12);
    EXPECT_EQ(ErrorOf([&] { TextOf(c.xml); }), c.error) << c.xml.substr(0, 12);
  }
  TStringStream s("<r><a x=\"" + std::string(kB - 7, 'v') + "\"/>z</r>");
  THtSAXXMLParser sax(s, heUTF8);
  ASSERT_TRUE(sax.Next() && sax.Next());
  EXPECT_EQ(sax.GetAttr(u"x"_hs).size(), kB - 7);
  ASSERT_TRUE(sax.Next());
  EXPECT_EQ(sax.FLastEvent, seTagEnd);
  EXPECT_EQ(sax.Level, 1);
  ASSERT_TRUE(sax.Next());
  EXPECT_EQ(sax.FText, u"z");
}

TEST(SaxParser, WholeItemModeGrowsTheBufferUpToItsCap) {
  const size_t kB = THtSAXXMLParser::kBufferSize;
  std::string text(3 * kB + 11, 't'), value(2 * kB, 'v');
  std::string xml = "<r>" + text + "<a x=\"" + value + "&amp;\" y=\"2\">" + text + "</a><b/>tail</r>";
  for (int64_t step : {int64_t(1) << 40, int64_t(4093)}) {
    TTrickleStream t(xml, step);
    THtSAXXMLParser sax(t, heUTF8);
    sax.MaxItemSize = 4 * kB;
    std::string trace = Trace(sax);
    std::string want =
        "<r>1 '" + text + "' <a x=" + value + "& y=2>2 '" + text + "' </a>1 <b>2 </b>1 'tail' </r>0";
    EXPECT_EQ(trace, want) << step;
    EXPECT_FALSE(sax.ItemTooLong());
  }
  TStringStream s(xml);
  THtSAXXMLParser sax(s, heUTF8);
  sax.MaxItemSize = 4 * kB;
  TFastString fs;
  sax.ExtractText(fs);
  EXPECT_EQ(fs.GetAsString().size(), 2 * text.size() + 4);

  // One byte over the cap: the item is not delivered, the error names its start.
  struct {
    std::string xml, error;
  } over[] = {
      {"<r>ok</r><r>" + std::string(2 * kB + 1, 't') + "</r>", "Incorrect XML at position 12"},
      {"<r>ok</r><r x=\"" + std::string(2 * kB, 'v') + "\">", "Incorrect XML at position 9"},
      {"<r>ok</r><r><![CDATA[" + std::string(2 * kB, 'c') + "]]></r>", "Incorrect XML at position 12"},
  };
  for (const auto& c : over) {
    TStringStream o(c.xml);
    THtSAXXMLParser cap(o, heUTF8);
    cap.MaxItemSize = 2 * kB;
    std::string events;
    EXPECT_EQ(ErrorOf([&] {
                while (cap.Next())
                  events += cap.FLastEvent == seText ? "t" : "e";
              }),
              c.error);
    EXPECT_TRUE(cap.ItemTooLong());
    EXPECT_EQ(events.substr(0, 3), "ete");
  }
  // The same item fits exactly.
  TStringStream fit("<r>" + std::string(2 * kB, 't') + "</r>");
  THtSAXXMLParser exact(fit, heUTF8);
  exact.MaxItemSize = 2 * kB;
  EXPECT_EQ(ErrorOf([&] { Trace(exact); }), "no error");
}

TEST(SaxParser, TokensAcrossBufferRefills) {
  // Items of varying length, with a shifting lead, so that every kind of
  // token meets the buffer end somewhere; read in one piece and trickled.
  auto item = [](int i) {
    std::string pad(static_cast<size_t>(i % 23), 'p');
    return "<item id=\"" + std::to_string(i) + "\" v=" + pad + ">t" + std::to_string(i) + "&amp;" + pad +
           "<![CDATA[c]]></item><!--" + pad + "--><e/>\n";
  };
  std::string expected;
  for (int i = 0; i < 7000; ++i)
    expected += "<item id=" + std::to_string(i) + " v=" + std::string(static_cast<size_t>(i % 23), 'p') +
                ">2 't" + std::to_string(i) + "&" + std::string(static_cast<size_t>(i % 23), 'p') +
                "c' </item>1 <e>2 </e>1 '\\u000A' ";
  for (int lead : {0, 1, 2, 5, 11, 17}) {
    std::string xml = "<r>" + std::string(static_cast<size_t>(lead), ' ');
    for (int i = 0; i < 7000; ++i)
      xml += item(i);
    xml += "</r>";
    ASSERT_GT(xml.size(), static_cast<size_t>(THtSAXXMLParser::kBufferSize));
    std::string want = "<r>1 " +
                       (lead ? "'" + std::string(static_cast<size_t>(lead), ' ') + "' " : std::string()) +
                       expected + "</r>0";
    EXPECT_EQ(Trace(xml), want) << lead;
    TTrickleStream t(xml, 4093);
    THtSAXXMLParser sax(t, heUTF8);
    EXPECT_EQ(Trace(sax), want) << lead;
  }
}

TEST(SaxParser, LessThanAtTheEndOfABlock) {
  for (int shift = -3; shift <= 3; ++shift) {
    size_t at = static_cast<size_t>(THtSAXXMLParser::kBufferSize + shift);
    std::string xml = "<a>" + std::string(at - 3, 'z') + "<b k=\"v\"/>tail</a>";
    TStringStream s(xml);
    THtSAXXMLParser sax(s, heUTF8);
    ASSERT_TRUE(sax.Next());
    ASSERT_TRUE(sax.Next());
    EXPECT_EQ(sax.FText.size(), at - 3);
    ASSERT_TRUE(sax.Next());
    EXPECT_EQ(sax.FTag, u"b") << shift;
    EXPECT_EQ(sax.GetAttr(u"k"_hs), u"v") << shift;
    EXPECT_EQ(sax.Position(), static_cast<int64_t>(at) + 8);
    ASSERT_TRUE(sax.Next());
    ASSERT_TRUE(sax.Next());
    EXPECT_EQ(sax.FText, u"tail");
  }
}

TEST(SaxParser, PositionCountsFromWhereReadingBegan) {
  TStringStream s("junk<a>x</a>");
  s.SetPosition(4);
  THtSAXXMLParser sax(s, heUTF8);
  EXPECT_EQ(sax.Position(), 0);
  sax.Next();
  EXPECT_EQ(sax.Position(), 3);
  sax.Next();
  EXPECT_EQ(sax.Position(), 4);
}

TEST(SaxParser, FileConstructorOwnsItsStream) {
  TempDir dir;
  std::string name = dir.Path("doc.xml");
  {
    TFileStream f(name, fmCreate);
    f.WriteBuffer("<r><i>1</i><i>2</i></r>", 23);
  }
  auto sax = THtSAXXMLParser::CreateFromFile(hstring::FromUtf8(name), heUTF8);
  EXPECT_EQ(Trace(*sax), "<r>1 <i>2 '1' </i>1 <i>2 '2' </i>1 </r>0");
  THtSAXXMLParser by_utf8(name, heUTF8);
  EXPECT_TRUE(by_utf8.Next());
  EXPECT_THROW(THtSAXXMLParser(dir.Path("missing.xml"), heUTF8), EFOpenError);
}

TEST(SaxExtractText, FoldsBlanksAndBreaksBlocks) {
  struct {
    const char* xml;
    const char* text;
  } cases[] = {
      {"<r>  a \n\t b  </r>", "a b "},
      {"<r><a>x</a>  <b>y</b></r>", "x y"},
      {"<html><head><title>T</title><style>s</style></head><body><p>one</p>\n<p>two</p></body></html>",
       "one\\u000Dtwo\\u000D"},
      {"<div>a<li>b</li><li>c</li></div>", "a\\u000Db\\u000Dc\\u000D"},
      {"<TD>a</TD><Td>b</Td>", "a\\u000Db\\u000D"},
      // A name that only starts like a block tag does not break.
      {"<pre>a</pre><param/>b<divx>c</divx>", "abc"},
      {"<head/><p>x</p>", "x\\u000D"},
      {"<r a=\"<p>\">1&lt;2 &amp; <![CDATA[<p>]]><!--c--></r>", "1<2 & <p>"},
      {"<?xml version=\"1.0\" encoding=\"windows-1251\"?><r>\xCF</r>", "\\u041F"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(TextOf(c.xml), c.text) << c.xml;
}

TEST(SaxExtractText, CallbackGetsBlocksAndMayClear) {
  std::string xml = "<body><p>first part</p><p>second</p>tail</body>";
  TStringStream s(xml);
  THtSAXXMLParser sax(s, heUTF8);
  TFastString fs;
  std::vector<std::string> blocks;
  sax.ExtractText(fs, [&](THtSAXXMLParser& sender, TFastString& text) {
    EXPECT_EQ(&sender, &sax);
    blocks.push_back(Escaped(text.GetAsString()));
    text.Clear();
  });
  ASSERT_EQ(blocks.size(), 3u);
  EXPECT_EQ(blocks[0], "first part\\u000D");
  EXPECT_EQ(blocks[1], "second\\u000D");
  EXPECT_EQ(blocks[2], "tail");
  EXPECT_TRUE(fs.IsEmpty());
}

TEST(SaxExtractText, AppendsToWhatTheBuilderHolds) {
  TStringStream s("<p> x</p>");
  THtSAXXMLParser sax(s, heUTF8);
  TFastString fs;
  fs.Add(u"lead");
  sax.ExtractText(fs);
  EXPECT_EQ(fs.GetAsString(), u"lead\rx\r");
}
