#include "document/tree_dump.h"
#include "htcore/document/html_node.h"
#include "htcore/document/html_parser.h"

#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <vector>

namespace ht {
namespace {

using test::CheckTree;
using test::DumpNode;

struct TCase {
  const char* html;
  const char* tree; // dump of the parsed document
};

void ExpectTrees(const TCase* cases, size_t n) {
  for (size_t i = 0; i < n; ++i) {
    THtmlNode doc;
    doc.Parse(hstring::FromUtf8(cases[i].html));
    EXPECT_EQ(DumpNode(&doc), cases[i].tree) << cases[i].html;
    EXPECT_EQ(CheckTree(&doc), "") << cases[i].html;
  }
}

template <size_t N> void ExpectTrees(const TCase (&cases)[N]) { ExpectTrees(cases, N); }

TEST(HtmlBuilder, ImpliedEndTags) {
  const TCase cases[] = {
      {"<p>a<p>b", "body(p(\"a\"),p(\"b\"))"},
      {"<p>a<div>b</div>", "body(p(\"a\"),div(\"b\"))"},
      {"<p>a<h1>b</h1><span>c", "body(p(\"a\"),h1(\"b\"),span(\"c\"))"},
      {"<p>x<table>y", "body(p(\"x\",table(\"y\")))"}, // a table does not close a p
      {"<li>a<li>b", "body(li(\"a\",li(\"b\")))"},     // no list around: the items nest
      {"<ul><li>a<li>b</ul>", "body(ul(li(\"a\"),li(\"b\")))"},
      {"<ul><li>a<ul><li>b</ul><li>c</ul>", "body(ul(li(\"a\",ul(li(\"b\"))),li(\"c\")))"},
      {"<dl><dt>a<dd>b<dt>c<dd>d</dl>", "body(dl(dt(\"a\"),dd(\"b\"),dt(\"c\"),dd(\"d\")))"},
      {"<dd>a<dd>b", "body(dd(\"a\"),dd(\"b\"))"},
      {"<a href=1>x<a href=2>y", "body(a[href=1](\"x\"),a[href=2](\"y\"))"},
      {"<a>x<b>y<a>z", "body(a(\"x\",b(\"y\")),a(\"z\"))"},
      {"<a><table><td><a>x</table>", "body(a(table(tr(td(a(\"x\"))))))"}, // a cell lies between
      {"<head><meta a=1><title>t</title><p>x", "body(head(meta[a=1],title(\"t\")),p(\"x\"))"},
      {"<html><head><link><div>x</div><body>y", "\"\"(html(head(link),div(\"x\"),body(\"y\")))"},
      {"<head><body>x", "\"\"(head,body(\"x\"))"},
      {"<th>a<th>b", "body(th(\"a\",th(\"b\")))"}, // no row around
      {"<p><textarea>a<tfoot>b", "body(p(textarea(\"a\",tfoot(\"b\"))))"},
  };
  ExpectTrees(cases);
}

TEST(HtmlBuilder, TableRepairs) {
  const TCase cases[] = {
      // Cells get a row; no tbody is ever invented.
      {"<table><td>x", "body(table(tr(td(\"x\"))))"},
      {"<table><th>a<td>b", "body(table(tr(th(\"a\"),td(\"b\"))))"},
      {"<table><tr><td>a<td>b<tr><td>c</table>", "body(table(tr(td(\"a\"),td(\"b\")),tr(td(\"c\"))))"},
      {"<table><thead><tr><th>h<tbody><tr><td>x</table>",
       "body(table(thead(tr(th(\"h\"))),tbody(tr(td(\"x\")))))"},
      {"<table><caption>c<tr><td>x</table>", "body(table(caption(\"c\"),tr(td(\"x\"))))"},
      {"<table><tr><td>a<tr>b", "body(table(tr(td(\"a\")),tr(\"b\")))"},
      {"<table><table>x", "body(table,table(\"x\"))"},
      {"<table><tr><td><table><tr><td>x</table>y</table>z",
       "body(table(tr(td(table(tr(td(\"x\"))),\"y\"))),\"z\")"},
      // A p in a table: a row, and in it a cell named tr.
      {"<table><p>x", "body(table(tr(tr(p(\"x\")))))"},
      {"<table><tbody><p>x</tbody></table>", "body(table(tbody(tr(tr(p(\"x\"))))))"},
      // The repair's inner element closes by a row; the table takes the rest.
      {"<table><p></p><tr><td>y</table>z", "body(table(tr(tr),tr(td(\"y\"))),p,\"z\")"},
      {"<div><table><p></p><tr>y</table>z</div>w", "body(div(table(tr(tr),tr(\"y\")),p,\"z\"),\"w\")"},
      // Content ending inside a table moves behind it.
      {"<table><div>x</div></table>", "body(table,div(\"x\"))"},
      {"<table><tr><b>x</b></tr></table>", "body(table(tr),b(\"x\"))"}, // a row takes no b
      {"<div>a<table><tr><i>x</i></table>b</div>", "body(div(\"a\",table(tr),i(\"x\"),\"b\"))"},
      // Closed-at-once content in a tbody stands just before the table.
      {"<table><tbody><img></tbody></table>", "body(img,table(tbody))"},
      {"<div><table><tbody><br><tr><td>x</table></div>", "body(div(br,table(tbody(tr(td(\"x\"))))))"},
      // Text directly in a row stays there.
      {"<table><tr>x</tr></table>", "body(table(tr(\"x\")))"},
      // Block content in a row goes into its last cell.
      {"<table><tr><td>a</td><div>b</div></tr></table>z", "body(table(tr(td(\"a\",div(\"b\")))),\"z\")"},
      {"<table><tr><td>a</td><span>s</span></table>", "body(table(tr(td(\"a\",span(\"s\")))))"},
      {"<table><tr><th>a</th><p>b</table>", "body(table(tr(th(\"a\",p(\"b\")))))"},
      {"<tr><td>x<p>y", "body(tr(td(\"x\",p(\"y\"))))"},
  };
  ExpectTrees(cases);
}

TEST(HtmlBuilder, MisnestedEndTags) {
  const TCase cases[] = {
      // Formatting elements closed early reopen at the next item.
      {"<b><i>x</b>y</i>", "body(b(i(\"x\")),i(\"y\"))"},
      {"<i><b><u>x</i>y", "body(i(b(u(\"x\"))),b(u(\"y\")))"},
      {"<p><b>x</p>y", "body(p(b(\"x\")),b(\"y\"))"},
      {"<div><b>x</div><p>y", "body(div(b(\"x\")),b(p(\"y\")))"},
      {"<b><i>x</b></i>y", "body(b(i(\"x\")),\"y\")"}, // the i ended, and is not reopened
      {"<b>1<p>2</b>3</p>4", "body(b(\"1\",p(\"2\")),\"3\",\"4\")"},
      // Stray end tags are ignored; no empty element is made.
      {"</p>x", "body(\"x\")"},
      {"a</b>b</td>c</table>d", "body(\"a\",\"b\",\"c\",\"d\")"},
      {"<div><span>a<div>b</span>c</div>", "body(div(span(\"a\",div(\"b\",\"c\"))))"},
      {"<div>a<table><tr><td>b</div>c</td></tr></table>", "body(div(\"a\",table(tr(td(\"b\",\"c\")))))"},
      {"<b><table><td>x</b>y</table>", "body(b(table(tr(td(\"x\",\"y\")))))"},
      {"<table><tr><td><p>x</tr>y", "body(table(tr(td(p(\"x\"))),\"y\"))"},
      {"<table><tr><td>x</p>y", "body(table(tr(td(\"x\",\"y\"))))"}, // </p> stops at the table
      {"<body><b>x</body>y", "\"\"(body(b(\"x\",\"y\")))"},          // body is never closed
      // End tags of elements open only as repair rows, or above a table.
      {"<table><p>x</tr>y", "body(table(tr(tr(p(\"x\"))),\"y\"))"},
      {"<table><p>x</td>y</table>z", "body(table(tr(tr(p(\"x\",\"y\")))),\"z\")"},
      {"<b><table><p>x</b>y", "body(b(table(tr(tr(p(\"x\",\"y\"))))))"},
      {"<i><b>x</I>y", "body(i(b(\"x\")),b(\"y\"))"}, // names are compared in lower case
  };
  ExpectTrees(cases);
}

TEST(HtmlBuilder, BlockItems) {
  const TCase cases[] = {
      {"<!DOCTYPE html><p>a<!--c--><?xml v?><![CDATA[d]]>", "body(p(\"a\",!{c},?{xml v},#cdata{d}))"},
      {"<p>a<script type=x>if (a<b) x()</script><style>p{}</style>",
       "body(p(\"a\",script{if (a<b) x()}[type=x],style{p{}}))"},
      {"<br><img src=a><hr/>x", "body(br,img[src=a],hr,\"x\")"},
      {"<div/>x", "body(div,\"x\")"},
      {"", "body"},
  };
  ExpectTrees(cases);
  THtmlNode doc;
  doc.Parse(u"<!--c--><?p?>");
  EXPECT_EQ(doc.GetNode(0)->TagType, htComment);
  EXPECT_EQ(doc.GetNode(1)->TagType, htDirective);
  doc.Parse(u"<script>x</script><![CDATA[y]]>t");
  EXPECT_EQ(doc.GetNode(0)->TagType, htScript);
  EXPECT_EQ(doc.GetNode(1)->TagType, htCData);
  EXPECT_EQ(doc.GetNode(1)->FTag, hstring());
  EXPECT_EQ(doc.GetNode(2)->TagType, htUnknown); // text
  EXPECT_EQ(doc.FindNode(u"script"), doc.GetNode(0));
}

// Records AfterParse calls.
class TRec : public THtmlNode {
  HT_NODE_CLASS(TRec)
public:
  static std::vector<std::string>& Log() {
    static std::vector<std::string> log;
    return log;
  }
  void AfterParse() override {
    Log().push_back(FTag.empty() ? "root" : FTag.toUtf8() + (GetCount() ? "" : "/" + TextContent().toUtf8()));
  }
};

TEST(HtmlBuilder, AfterParseOrder) {
  struct {
    const char* html;
    std::vector<std::string> calls;
  } cases[] = {
      // p ended by an implied end tag and void elements get no call.
      {"<div><p>a<p>b</div><br>", {"p", "div", "root"}},
      {"<ul><li>a</li><li>b", {"li", "li", "ul", "root"}},
      {"<b><i>x</b>y", {"i", "b", "i", "root"}},
      {"<table><div>x</div></table>", {"div", "table/", "root"}},
      {"<p>a<div>b", {"div", "root"}},
  };
  for (auto& c : cases) {
    TRec doc;
    TRec::Log().clear();
    doc.Parse(hstring::FromUtf8(c.html));
    EXPECT_EQ(TRec::Log(), c.calls) << c.html;
  }
}

TEST(HtmlBuilder, DepthLimitAttachesHigher) {
  std::string html;
  for (int i = 0; i < 300; ++i)
    html += "<div>" + std::to_string(i);
  THtmlNode doc;
  doc.Parse(hstring::FromUtf8(html));
  EXPECT_EQ(CheckTree(&doc), "");
  int max_depth = 0, texts = 0, divs = 0;
  std::string joined;
  for (THtNode* n = &doc; n; n = n->NextNode()) {
    int d = 0;
    for (THtNode* p = n; p->FParent; p = p->FParent)
      ++d;
    max_depth = std::max(max_depth, d);
    if (n->FTag == u"div")
      ++divs;
    else if (n != &doc) {
      ++texts;
      joined += n->FContent.toUtf8() + " ";
    }
  }
  EXPECT_EQ(divs, 300);
  EXPECT_EQ(texts, 300);
  EXPECT_EQ(joined.substr(0, 10), "0 1 2 3 4 "); // all text in document order
  EXPECT_EQ(joined.substr(joined.size() - 8), "298 299 ");
  EXPECT_EQ(max_depth, 257); // a div at depth 256 holds its text
  // The first 255 levels nest as written.
  THtNode* n = &doc;
  for (int i = 0; i < 255; ++i) {
    n = n->FirstChildTag();
    ASSERT_NE(n, nullptr);
    ASSERT_EQ(n->FirstChild()->FContent, hstring(std::to_string(i)));
  }
}

TEST(HtmlBuilder, HostileInputsFinish) {
  struct {
    std::string html;
    int min_nodes;
  } cases[] = {
      {[] {
         std::string s;
         for (int i = 0; i < 4000; ++i)
           s += "<div>";
         return s;
       }(),
       4000},
      {[] {
         std::string s;
         for (int i = 0; i < 4000; ++i)
           s += "<b><i>x</b>";
         return s;
       }(),
       4000},
      {[] {
         std::string s;
         for (int i = 0; i < 4000; ++i)
           s += "<table><tr><td>";
         return s;
       }(),
       4000},
      {[] {
         std::string s;
         for (int i = 0; i < 2000; ++i)
           s += "<div><div><b><i><u><s>x</div>";
         return s;
       }(),
       2000},
      {[] {
         std::string s(250 * 5, ' ');
         for (int i = 0; i < 250; ++i)
           s.replace(static_cast<size_t>(i) * 5, 5, "<div>");
         for (int i = 0; i < 20000; ++i)
           s += "</b></p></td></table>"; // stray: nothing of these names is open
         return s + "x";
       }(),
       251},
      {"<p>x<!--" + std::string(50000, 'y'), 2},
      {"<p>x<script>" + std::string(50000, '<'), 2},
      {"<p a=\"" + std::string(50000, 'y'), 1},
  };
  for (auto& c : cases) {
    THtmlNode doc;
    doc.Parse(hstring::FromUtf8(c.html));
    EXPECT_EQ(CheckTree(&doc), "");
    int count = 0;
    for (THtNode* n = &doc; n; n = n->NextNode())
      ++count;
    EXPECT_GE(count, c.min_nodes) << c.html.substr(0, 40);
  }
}

// Counts activations and gives up past a bound, so that a repair loop fails
// the test at once instead of filling memory or hanging.
class TBounded : public THtmlNode {
  HT_NODE_CLASS(TBounded)
public:
  static long& Budget() {
    static long budget = 0;
    return budget;
  }
  THtNode* InternalParse(THtmlParser& HP) override {
    if (--Budget() < 0)
      throw std::runtime_error("runaway parse");
    return THtmlNode::InternalParse(HP);
  }
};

TEST(HtmlBuilder, RepairsAtTheDepthLimitEnd) {
  auto nested = [](int n, const std::string& tail) {
    std::string s;
    for (int i = 0; i < n; ++i)
      s += "<div>";
    return s + tail;
  };
  std::string repeated;
  for (int i = 0; i < 86; ++i)
    repeated += "<table><p>";
  const std::string cases[] = {
      repeated,
      nested(254, "<table><p>x"),
      nested(254, "<table><tbody><p>x"),
      nested(254, "<table><thead><p>x"),
      nested(255, "<table><p>x"),
      nested(253, "<table><b></b><p>x"),
      nested(253, "<table><tr><td></td><p>x"), // into the last cell of a row
      nested(253, "<table><tr><th></th><div>x"),
      nested(252, "<table><tr><td></td><b></b><p>x"),
      nested(251, "<table><p><b></b></p><tr>x"),
  };
  for (const std::string& html : cases) {
    TBounded doc;
    TBounded::Budget() = 100 * static_cast<long>(html.size());
    ASSERT_NO_THROW(doc.Parse(hstring::FromUtf8(html))) << html.substr(html.size() - 30);
    EXPECT_EQ(CheckTree(&doc), "");
    if (html.back() == 'x') {
      EXPECT_EQ(doc.TextContent(), u"x") << html.substr(html.size() - 30);
    }
  }
}

TEST(HtmlBuilder, ParseEntryPoint) {
  THtmlNode doc;
  doc.Parse(u"<p>x");
  EXPECT_EQ(doc.FTag, u"body"); // no body and no html below the root
  EXPECT_EQ(doc.TagType, htIdent);
  doc.SetTag(hstring());
  doc.Parse(u"<body><p>y</body>");
  EXPECT_EQ(doc.FTag, hstring());
  EXPECT_EQ(DumpNode(&doc), "\"\"(body(p(\"y\")))"); // the first parse's nodes are gone

  // A node below a parent keeps its tag and parses into its children.
  THtmlNode root(u"root");
  THtNode* div = root.AddChild(NodeClass<THtmlNode>());
  div->SetTag(u"div");
  static_cast<THtmlNode*>(div)->Parse(u"<i>a</i>b");
  EXPECT_EQ(DumpNode(&root), "root(div(i(\"a\"),\"b\"))");
}

TEST(HtmlBuilder, ParseBytesDetectsTheEncoding) {
  struct {
    std::string bytes;
    const char* text; // UTF-8 of the p element's text
  } cases[] = {
      {"\xEF\xBB\xBF<p>\xC3\xA9", "\xC3\xA9"},                        // UTF-8 mark
      {std::string("\xFF\xFE<\0p\0>\0\xE9\0", 10), "\xC3\xA9"},       // UTF-16LE mark
      {std::string("\xFE\xFF\0<\0p\0>\0\xE9", 10), "\xC3\xA9"},       // UTF-16BE mark
      {"<meta charset=windows-1251><p>\xC0\xE1", "\xD0\x90\xD0\xB1"}, // meta charset
      {"<meta http-equiv=content-type content='text/html; charset=koi8-r'><p>\xE1", "\xD0\x90"},
      {"<meta charset=utf-8><p>\xC3\xA9", "\xC3\xA9"},
      {"<p>\xC3\xA9", "\xC3\xA9"},                                                 // valid UTF-8
      {"<p>\xE9t\xE9", "\xC3\xA9t\xC3\xA9"},                                       // system code page
      {std::string(1100, ' ') + "<meta charset=windows-1251><p>\xC0", "\xD0\x90"}, // the parser re-decodes
  };
  for (auto& c : cases) {
    THtmlNode doc;
    doc.ParseBytes(c.bytes.data(), c.bytes.size());
    THtNode* p = doc.FindNode(u"p");
    ASSERT_NE(p, nullptr) << c.bytes;
    EXPECT_EQ(p->TextContent().toUtf8(), c.text) << c.bytes;
  }
  THtmlNode empty;
  empty.ParseBytes(nullptr, 0);
  EXPECT_EQ(DumpNode(&empty), "body");
}

TEST(HtmlBuilder, ChangeEncodingRecodesTheSubtree) {
  THtmlNode doc;
  // UTF-8 bytes of "é" read as code page 1252, in a text and an attribute.
  doc.Parse(u"<p t=\u00C3\u00A9>\u00C3\u00A9<b>x\u00C3\u00A9</b></p><i>\u00C3\u00A9</i>");
  auto* p = static_cast<THtmlNode*>(doc.FindNode(u"p"));
  p->ChangeEncoding(heUTF8, 0);
  EXPECT_EQ(DumpNode(p), "p[t=\xC3\xA9](\"\xC3\xA9\",b(\"x\xC3\xA9\"))");
  EXPECT_EQ(doc.FindNode(u"i")->TextContent(), u"\u00C3\u00A9"); // outside the subtree
  p->SetInnerText(u"\u00C0");                                    // byte C0: "А" in 1251
  p->ChangeEncoding(heANSI, 1251);
  EXPECT_EQ(p->TextContent(), u"\u0410");
  p->ChangeEncoding(heUTF16, 0); // other encodings leave texts alone
  p->ChangeEncoding(heDefault, 0);
  EXPECT_EQ(p->TextContent(), u"\u0410");

  // A declaration met during a parse recodes the nodes built before it.
  doc.Parse(u"<title a=\u00C3\u00A9>\u00C3\u00A9</title><meta charset=utf-8><p>\u00C3\u00A9");
  EXPECT_EQ(DumpNode(&doc), "body(title[a=\xC3\xA9](\"\xC3\xA9\"),meta[charset=utf-8],p(\"\xC3\xA9\"))");
}

TEST(HtmlBuilder, InnerAndOuterHtml) {
  THtmlNode doc;
  doc.Parse(u"<div id=a><b>old</b></div><table id=t></table><ul></ul>");
  auto* div = static_cast<THtmlNode*>(doc.FindNode(u"div"));
  div->SetInnerHTML(u"<p>x<p>y");
  EXPECT_EQ(DumpNode(div), "div[id=a](p(\"x\"),p(\"y\"))");
  div->SetInnerHTML(u"t</td>u<b>v</div>w"); // end tags cannot reach outside
  EXPECT_EQ(DumpNode(div), "div[id=a](\"t\",\"u\",b(\"v\",\"w\"))");
  div->SetInnerHTML(hstring());
  EXPECT_EQ(DumpNode(div), "div[id=a]");

  auto* table = static_cast<THtmlNode*>(doc.FindNode(u"table"));
  table->SetInnerHTML(u"<tr><td>1</td></tr>");
  EXPECT_EQ(DumpNode(table), "table[id=t](tr(td(\"1\")))");
  table->SetInnerHTML(u"<td>2");
  EXPECT_EQ(DumpNode(table), "table[id=t](tr(td(\"2\")))");

  auto* ul = static_cast<THtmlNode*>(doc.FindNode(u"ul"));
  ul->SetOuterHTML(u"<!DOCTYPE x> \n<ol start=3><li>a<li>b</ol>");
  EXPECT_EQ(DumpNode(ul), "ol[start=3](li(\"a\"),li(\"b\"))");
  EXPECT_EQ(CheckTree(&doc), "");

  THtmlNode* first = div->AddHTML(u"<i>1</i><i>2</i>");
  ASSERT_NE(first, nullptr);
  EXPECT_EQ(DumpNode(first), "i(\"1\")");
  EXPECT_EQ(DumpNode(div), "div[id=a](i(\"1\"),i(\"2\"))");
  EXPECT_EQ(div->AddHTML(hstring()), nullptr);
  EXPECT_EQ(div->GetCount(), 2);
  EXPECT_EQ(CheckTree(&doc), "");
}

TEST(HtmlBuilder, InnerTextAndAttributeText) {
  THtmlNode div(u"div");
  div.SetInnerText(u"a");
  EXPECT_EQ(DumpNode(&div), "div(\"a\")");
  THtNode* text = div.FirstChild();
  div.AddHTML(u"<b>x</b>y");
  div.SetInnerText(u"b"); // the leading text node stays, all others go
  EXPECT_EQ(div.FirstChild(), text);
  EXPECT_EQ(DumpNode(&div), "div(\"b\")");
  div.SetInnerHTML(u"<i>z</i>w");
  div.SetInnerText(u"c");
  EXPECT_EQ(DumpNode(&div), "div(\"c\")");

  THtmlNode n(u"x");
  n.ParseAttributes(u"b=2 A=\"1\" c");
  EXPECT_EQ(DumpNode(&n), "x[a=1 b=2 c=c]");
  n.ParseAttributes(hstring()); // no attributes: nothing changes
  EXPECT_EQ(DumpNode(&n), "x[a=1 b=2 c=c]");
}

TEST(HtmlBuilder, TreeMoves) {
  THtmlNode doc;
  doc.Parse(u"<div><i>1</i><b>2</b><u>3</u></div><p>");
  auto* div = static_cast<THtmlNode*>(doc.FindNode(u"div"));
  auto* p = static_cast<THtmlNode*>(doc.FindNode(u"p"));
  div->MoveNode(div->GetNode(0), div->GetNode(2));
  EXPECT_EQ(DumpNode(div), "div(u(\"3\"),i(\"1\"),b(\"2\"))");
  EXPECT_EQ(CheckTree(&doc), "");
  div->MoveChildrento(p, -1);
  EXPECT_EQ(DumpNode(&doc), "body(div,p(u(\"3\"),i(\"1\"),b(\"2\")))");
  p->MoveChildrento(div, 0);
  p->MoveChildrentoParent(false);
  EXPECT_EQ(CheckTree(&doc), "");
  div->MoveChildrentoParent(true);
  EXPECT_EQ(DumpNode(&doc), "body(u(\"3\"),i(\"1\"),b(\"2\"),div,p)");
  EXPECT_EQ(CheckTree(&doc), "");
  // Moving an ancestor of the target into it is refused.
  doc.MoveChildrento(doc.FindNode(u"u")->FirstChild(), -1);
  EXPECT_EQ(CheckTree(&doc), "");

  doc.Parse(u"<datapacket id=7><row><!--c--></row></datapacket><datapacket>x");
  doc.EnumerateElements();
  EXPECT_EQ(DumpNode(&doc),
            "body[_id=0](datapacket[_id=1 id=7](row[_id=2](!{c})),datapacket[_id=3 id=3](\"x\"))");
}

} // namespace
} // namespace ht
