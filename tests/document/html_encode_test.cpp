#include "htcore/document/attributes.h"
#include "htcore/document/html_encode.h"
#include "htcore/foundation/fast_string.h"

#include <gtest/gtest.h>
#include <random>
#include <string>

using namespace ht;

namespace {

std::string utf8(const hstring& s) { return s.toUtf8(); }

hstring encode_to(std::u16string_view s, bool attr, bool xml = false) {
  TFastString fs(16); // small chunks: escapes cross chunk borders
  if (attr)
    HtmlEncodeAttrTo(fs, s, xml);
  else
    HtmlEncodeTo(fs, s);
  return fs.GetAsString();
}

} // namespace

TEST(HtmlEncode, OverheadTables) {
  const uint8_t* text = HtmlTextOverheadTable();
  const uint8_t* attr = HtmlAttrOverheadTable();
  const struct {
    int c, text, attr;
  } rows[] = {
      {0, 3, 3},    {8, 3, 3},    {9, 0, 3},    {10, 0, 0},   {13, 0, 0},   {'"', 0, 5},
      {'&', 4, 4},  {'<', 3, 3},  {'>', 3, 3},  {'\'', 0, 0}, {'a', 0, 0},  {0x7F, 0, 0},
      {0x9F, 0, 0}, {0xA0, 5, 5}, {0xA9, 0, 0}, {0xE9, 0, 0}, {0xFF, 0, 0},
  };
  for (const auto& r : rows) {
    EXPECT_EQ(text[r.c], r.text) << r.c;
    EXPECT_EQ(attr[r.c], r.attr) << r.c;
  }
  int text_sum = 0, attr_sum = 0;
  for (int c = 0; c < 256; ++c) {
    text_sum += text[c];
    attr_sum += attr[c];
  }
  // Nothing else is escaped below 256.
  EXPECT_EQ(text_sum, 9 * 3 + 4 + 3 + 3 + 5);
  EXPECT_EQ(attr_sum, 10 * 3 + 5 + 4 + 3 + 3 + 5);
}

TEST(HtmlEncode, Text) {
  const struct {
    std::u16string in;
    const char16_t* out; // null: the input as it is
  } rows[] = {
      {u"", nullptr},
      {u"plain text", nullptr},
      {u"a<b", u"a&lt;b"},
      {u"a&b>c", u"a&amp;b&gt;c"},
      {u"&&", u"&amp;&amp;"},
      {u"a\"b", nullptr}, // quotes need no escape in text
      {u"it's", nullptr},
      {u"\u00A0x\u00A0", u"&nbsp;x&nbsp;"},
      {std::u16string(1, u'\0') + u"\x01\x08\t\n\r", u"&#0;&#1;&#8;\t\n\r"},
      {u"caf\u00E9 \u00A9 \u00FF", nullptr}, // below 256: as is
      {u"\U0001F600", u"&#x01F600;"},
      {u"a\U0010FFFFb", u"a&#x10FFFF;b"},
      {u"\u2026", nullptr}, // general punctuation is passed over, although it has a name
      {u"\u0152\u03B1\u0416\u05D0\u0627\u2014", nullptr}, // so are these scripts
      {u"\u02C6", u"&circ;"},                             // between the ranges passed over
      {u"\u02DC", u"&DiacriticalTilde;"},
      {u"\u2192", u"&rarr;"},
      {u"\u221E", u"&infin;"},
      {u"\u20AC", u"&euro;"},
      {u"\u2122", u"&TRADE;"},    // the first name of the table wins
      {u"\u4E2D\u6587", nullptr}, // no name
  };
  for (const auto& r : rows) {
    hstring in(r.in.data(), r.in.size());
    hstring out = HtmlEncode(in);
    EXPECT_EQ(out.view(), r.out ? std::u16string_view(r.out) : in.view()) << utf8(in);
    EXPECT_EQ(encode_to(in.view(), false).view(), out.view()) << utf8(in);
    EXPECT_EQ(HtmlEncodeNodeOverhead(in.view()), out.Length() - in.Length()) << utf8(in);
  }
}

TEST(HtmlEncode, LoneSurrogatesStay) {
  const std::u16string rows[] = {
      {u'a', char16_t(0xD83D)},             // high at the end
      {char16_t(0xD83D), u'x'},             // high before a non-partner
      {char16_t(0xDE00), u'a'},             // low alone
      {char16_t(0xDE00), char16_t(0xD83D)}, // reversed pair
  };
  for (const std::u16string& r : rows) {
    hstring in(r.data(), r.size());
    EXPECT_EQ(HtmlEncode(in).view(), in.view());
    EXPECT_EQ(HtmlEncodeNodeOverhead(in.view()), 0);
  }
  hstring mixed(u"\xD83D\xD83D\xDE00<");
  EXPECT_EQ(HtmlEncode(mixed).view(), std::u16string_view(u"\xD83D&#x01F600;&lt;"));
}

TEST(HtmlEncode, SharesTextWithoutEscapes) {
  const hstring rows[] = {u"plain"_hs, u"\u4E2D\u6587 \u03B1\u2026"_hs, u"tab\there"_hs,
                          u"quote \" in text"_hs};
  for (const hstring& s : rows) {
    hstring out = HtmlEncode(s);
    EXPECT_EQ(out.Pointer(), s.Pointer());
  }
  hstring attr = u"x.html?a=1"_hs;
  EXPECT_EQ(HtmlEncodeAttr(attr).Pointer(), attr.Pointer());
  EXPECT_EQ(HtmlEncodeAttrXML(attr).Pointer(), attr.Pointer());
  EXPECT_TRUE(HtmlEncode(hstring()).empty());
}

TEST(HtmlEncode, KnownOverheadIsTrustedButChecked) {
  hstring s = u"a<b&c"_hs; // overhead 3 + 4
  const struct {
    int given;
    const char16_t* out;
  } rows[] = {
      {-1, u"a&lt;b&amp;c"}, {-2, u"a&lt;b&amp;c"},
      {7, u"a&lt;b&amp;c"},  {1, u"a&lt;b&amp;c"}, // too small: recounted
      {50, u"a&lt;b&amp;c"},                       // too large: cut back
      {0, u"a<b&c"},                               // "nothing to escape": handed back as is
  };
  for (const auto& r : rows) {
    EXPECT_EQ(HtmlEncode(s, r.given).view(), std::u16string_view(r.out)) << r.given;
    EXPECT_EQ(HtmlEncodeAttr(s, r.given).view(), std::u16string_view(r.out)) << r.given;
  }
  EXPECT_EQ(HtmlEncode(s, 50).Length(), 12);
}

TEST(HtmlEncode, Attribute) {
  const struct {
    const char16_t* in;
    const char16_t* html;
    const char16_t* xml;
  } rows[] = {
      {u"a\"b", u"a&quot;b", u"a&quot;b"},
      {u"<&>", u"&lt;&amp;&gt;", u"&lt;&amp;&gt;"},
      {u"\t|\n|\r", u"&#9;|\n|\r", u"&#9;|\n|\r"},
      {u"\x01\x08", u"&#1;&#8;", u"&#1;&#8;"},
      {u"\u00A0", u"&nbsp;", u"&#160;"},
      {u"\u2192\u2026\U0001F600", u"\u2192\u2026\U0001F600", u"\u2192\u2026\U0001F600"}, // no names
      {u"it's", u"it's", u"it's"},
  };
  for (const auto& r : rows) {
    hstring in(r.in);
    EXPECT_EQ(HtmlEncodeAttr(in).view(), std::u16string_view(r.html));
    EXPECT_EQ(HtmlEncodeAttrXML(in).view(), std::u16string_view(r.xml));
    EXPECT_EQ(encode_to(in.view(), true).view(), std::u16string_view(r.html));
    EXPECT_EQ(encode_to(in.view(), true, true).view(), std::u16string_view(r.xml));
    EXPECT_EQ(HtmlEncodeAttrOverhead(in.view()), HtmlEncodeAttr(in).Length() - in.Length());
  }
}

// The counting pass and the writing pass must agree on every input, or the
// single allocation would be wrong.
TEST(HtmlEncode, CountMatchesOutputOnRandomText) {
  std::mt19937 rng(7);
  const char16_t pool[] = {u'a',   u'<',   u'>',   u'&',   u'"',   0,      1,      9,
                           10,     0xA0,   0xE9,   0x152,  0x3B1,  0x2026, 0x2192, 0x2122,
                           0x2200, 0x4E2D, 0xD83D, 0xDE00, 0xFB00, 0xFFFD};
  for (int round = 0; round < 2000; ++round) {
    std::u16string s;
    size_t len = rng() % 24;
    for (size_t i = 0; i < len; ++i)
      s += pool[rng() % std::size(pool)];
    hstring in(s.data(), s.size());
    hstring text = HtmlEncode(in);
    ASSERT_EQ(text.Length(), in.Length() + HtmlEncodeNodeOverhead(in.view()));
    ASSERT_EQ(encode_to(in.view(), false).view(), text.view());
    hstring attr = HtmlEncodeAttr(in);
    ASSERT_EQ(attr.Length(), in.Length() + HtmlEncodeAttrOverhead(in.view()));
    ASSERT_EQ(encode_to(in.view(), true).view(), attr.view());
  }
}

TEST(AttributeText, AsStringAndFastAsString) {
  THtAttributes a;
  a.Add(u"b"_hs, u"2"_hs);
  a.Add(u"a"_hs, u"x \"y\" <z>"_hs);
  a.Add(u"checked"_hs, u"checked"_hs);
  a.Add(u"nbsp"_hs, u"\u00A0"_hs);
  EXPECT_EQ(
      a.AsString().view(),
      std::u16string_view(u"a=\"x &quot;y&quot; &lt;z&gt;\" b=\"2\" checked=\"checked\" nbsp=\"&nbsp;\""));
  TFastString fs;
  a.FastAsString(fs);
  EXPECT_EQ(fs.GetAsString().view(),
            std::u16string_view(u" a=\"x &quot;y&quot; &lt;z&gt;\" b=\"2\" checked nbsp=\"&nbsp;\""));
  TFastRawString raw;
  a.FastAsUTF8String(raw);
  EXPECT_EQ(std::string(raw.ToString().c_str()),
            " a=\"x &quot;y&quot; &lt;z&gt;\" b=\"2\" checked=\"checked\" nbsp=\"&nbsp;\"");
}

TEST(AttributeText, BareNamesOnlyOutsideXml) {
  const struct {
    bool xml;
    const char16_t* name;
    const char16_t* value;
    const char16_t* out;
  } rows[] = {
      {false, u"checked", u"checked", u" checked"},
      {false, u"checked", u"Checked", u" checked=\"Checked\""}, // equal in full, case too
      {false, u"checked", u"checkedx", u" checked=\"checkedx\""},
      {false, u"checked", u"", u" checked=\"\""},
      {true, u"checked", u"checked", u" checked=\"checked\""},
      {true, u"v", u"\u00A0", u" v=\"&#160;\""},
  };
  for (const auto& r : rows) {
    THtAttributes a(r.xml);
    a.Add(hstring(r.name), hstring(r.value));
    TFastString fs;
    a.FastAsString(fs);
    EXPECT_EQ(fs.GetAsString().view(), std::u16string_view(r.out)) << r.xml;
  }
}

TEST(AttributeText, Utf8OutputKeepsNonAscii) {
  THtAttributes a;
  a.Add(u"title"_hs, u"caf\u00E9 \U0001F600 & \u00A0"_hs);
  TFastRawString raw(8);
  a.FastAsUTF8String(raw);
  EXPECT_EQ(std::string(raw.ToString().c_str()), " title=\"caf\xC3\xA9 \xF0\x9F\x98\x80 &amp; &nbsp;\"");
  THtAttributes empty;
  EXPECT_TRUE(empty.AsString().empty());
}
