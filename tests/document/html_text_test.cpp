#include "htcore/document/html_node.h"
#include "htcore/foundation/fast_string.h"

#include <gtest/gtest.h>
#include <string>

using namespace ht;

namespace {

std::string inner_text(const char* html) {
  THtmlNode doc;
  doc.Parse(hstring::FromUtf8(html));
  return doc.GetInnerText().toUtf8();
}

std::string dump(const char* html) {
  THtmlNode doc;
  doc.Parse(hstring::FromUtf8(html));
  TFastString fs(8);
  doc.FastInnerText(fs);
  return fs.GetAsString().toUtf8();
}

} // namespace

TEST(HtmlText, InnerTextForReading) {
  const struct {
    const char* html;
    const char* text;
  } rows[] = {
      {"<div>a</div><div>b</div>", "a\r\nb"},
      {"<p>a<br>b</p>", "a\r\nb"},
      // The first block of a container loses only its leading blanks.
      {"<p>  a  </p>", "a  "},
      {"\n <!-- c --> <p> a </p>", "\n  a "},
      // Any earlier element or text puts the block on a line of its own, trimmed.
      {"x<p> a </p>", "x\r\na"},
      {"<span>x</span><p>a</p>", "x\r\na"},
      {"<?d?><p>a</p>", "\r\na"},
      {"<div><div>a</div><div>b</div></div>", "a\r\nb"},
      // Outside body and the block set the line break always comes.
      {"<ul><li> a <li>b</ul>", "\r\na\r\nb"},
      {"<table><tr><td>a<td>b</tr><tr><td>c<td>d</table>", "\r\na\tb\r\nc\td"},
      // A comment is tagged too, so the cell gets its TAB, which the row trims.
      {"<table><tr><td>a</td><!--c--></tr></table>", "\r\na"},
      {"<table><tr><td></td><td></td><td></td></tr></table>", "\r\n"},
      {"<h5>a</h5><h5>b</h5>", "a\r\nb"},
      {"<h6>a</h6><h6>b</h6>", "ab"}, // not a block here
      {"<p></p><p>b</p>", "\r\nb"},   // an empty block still counts as an element before
      {"<script>x</script><style>y</style><noscript>z</noscript><!--c--><![CDATA[w]]>ok", "ok"},
      {"<a href=u title=t>link</a><img alt=i src=s>", "link"},
      {"<p>&lt;&amp;&nbsp;&#x1F600;</p>", "<&\xC2\xA0\xF0\x9F\x98\x80"},
      {"<head><title>T</title></head><body><p>b</p></body>", "Tb"},
      {"", ""},
  };
  for (const auto& r : rows)
    EXPECT_EQ(inner_text(r.html), r.text) << r.html;
}

TEST(HtmlText, InnerTextOfOneElement) {
  THtmlNode doc;
  doc.Parse(
      u"<div id=a> x <p> y </p></div><p id=b> z </p><table><tr><td id=c>1</td><td>2</td></tr></table>"_hs);
  auto text_of = [&](const char16_t* id) {
    THtNode* n = doc.FindNodebyAttr(hstring(), u"id"_hs, hstring(id));
    return static_cast<THtmlNode*>(n)->GetInnerText().toUtf8();
  };
  EXPECT_EQ(text_of(u"a"), "x \r\ny"); // the element is a first block itself
  EXPECT_EQ(text_of(u"b"), "\r\nz");
  EXPECT_EQ(text_of(u"c"), "1\t");
  EXPECT_EQ(THtmlNode::HTMLtoText(u"<p>a</p><p>b &amp; c</p>"_hs).toUtf8(), "a\r\nb & c");
  EXPECT_TRUE(THtmlNode::HTMLtoText(hstring()).empty());
}

TEST(HtmlText, TextDumpForExporters) {
  const struct {
    const char* html;
    const char* text;
  } rows[] = {
      {"<p>a</p><p>b</p>", "a\r\nb\r\n"},
      {"x<br>y", "x\r\ny"},
      {"<a href=u title=t>x</a>", " u  t x"},
      {"<a>x</a>", "x"},
      {"<head><title>T</title><style>s</style></head><body>b</body>", "b"},
      {"<script>x</script>ok<img alt=1><!--c-->", "ok"},
      {"<svg><text>a</text></svg>", " a\r\n"},
      {"<table><tr><td>a<td>b</table>", "a\r\nb\r\n\r\n"},
      {"<h1>a</h1><h6>b</h6><li>c", "a\r\nbc\r\n"},
      {"<noscript>n</noscript>", "n"},
      {"<p>&lt;</p>", "<\r\n"},
  };
  for (const auto& r : rows)
    EXPECT_EQ(dump(r.html), r.text) << r.html;
}

namespace {

// A node class keeping text of its own, as rendering classes do.
class TOwnText : public THtmlNode {
  HT_NODE_CLASS(TOwnText)
public:
  hstring GetRawInnerText() override {
    if (FTag.empty())
      return FContent;
    return THtmlNode::GetRawInnerText();
  }
};

class TOwnTextRoot : public TOwnText {
  HT_NODE_CLASS(TOwnTextRoot)
public:
  THtNodeClass GetElementClass(const hstring&, THtNode*) override { return NodeClass<TOwnText>(); }
};

} // namespace

TEST(HtmlText, RawInnerTextComesFromNodeClasses) {
  THtmlNode plain;
  plain.Parse(u"<p>a<b>b</b></p>"_hs);
  EXPECT_TRUE(plain.GetRawInnerText().empty());

  TOwnTextRoot doc;
  doc.Parse(u"<p>a<b>b</b><script>s</script><noscript>n</noscript><!--c-->c</p><br>d"_hs);
  EXPECT_EQ(doc.GetRawInnerText().toUtf8(), "abcd");
}
