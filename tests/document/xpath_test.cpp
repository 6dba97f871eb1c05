#include "document/tree_dump.h"
#include "htcore/document/html_node.h"
#include "htcore/document/xpath.h"

#include <chrono>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace ht;

namespace {

// Unknown tags keep the HTML builder out of the way; no blanks between tags,
// so every text node in the tree is one put there on purpose.
const char16_t* kLibrary =
    u"<lib id=lib>"
    u"<book id=b1 n=3 lang=en><name>Alpha</name><cost>10</cost></book>"
    u"<!--note-->"
    u"<book id=b2 n=7><name>Beta</name><cost>25</cost><book id=b2x><name>Inner</name></book></book>"
    u"<mag id=m1 n=5><name>Gamma</name>text<b id=bold>B</b></mag>"
    u"<book id=b3 n=x><name></name></book>"
    u"<!--tail-->"
    u"</lib>";

const char* kLibraryShape =
    "lib[id=lib](book[id=b1 lang=en n=3](name(\"Alpha\"),cost(\"10\")),!{note},"
    "book[id=b2 n=7](name(\"Beta\"),cost(\"25\"),book[id=b2x](name(\"Inner\"))),"
    "mag[id=m1 n=5](name(\"Gamma\"),\"text\",b[id=bold](\"B\")),book[id=b3 n=x](name),!{tail})";

// A node as the tables name it: its id, else 'text' for a text node, else
// tag=TextContent.
std::string label(THtNode* n) {
  if (n->HasAttribute(u"id"))
    return n->GetAttribute(u"id").toUtf8();
  if (n->FTag.empty())
    return "'" + n->FContent.toUtf8() + "'";
  return n->FTag.toUtf8() + "=" + n->TextContent().toUtf8();
}

std::string labels(const IHtNodeList& list) {
  std::string out;
  for (THtNode* n : *list)
    out += (out.empty() ? "" : ",") + label(n);
  return out;
}

class XPathTest : public ::testing::Test {
protected:
  void SetUp() override {
    doc.Parse(kLibrary);
    ASSERT_EQ(test::DumpChildren(&doc), kLibraryShape);
  }
  THtNode* byId(const char16_t* id) { return doc.FindNodebyAttr(u"", u"id", id); }

  THtmlNode doc;
};

struct Case {
  const char16_t* path;
  const char* expected;
};

} // namespace

TEST_F(XPathTest, ListForm) {
  const Case cases[] = {
      {u"lib", "lib"},
      {u"lib/book", "b1,b2,b3"},
      {u"lib/book/name", "name=Alpha,name=Beta,name="},
      {u"//book", "b1,b2,b2x,b3"}, // a match precedes its descendants
      {u"lib//name", "name=Alpha,name=Beta,name=Inner,name=Gamma,name="},
      {u"//b", "bold"},
      {u"lib/book//name", "name=Alpha,name=Beta,name=Inner,name="},
      {u"/lib/mag", "m1"},
      {u"./lib/mag", "m1"},
      // `*` takes every child: comments and text nodes too.
      {u"lib/*", "b1,!=note,b2,m1,b3,!=tail"},
      {u"lib/mag/*", "name=Gamma,'text',bold"},
      {u"lib/mag/text()", "'text'"},
      {u"lib/mag/name/text()", "'Gamma'"},
      {u"lib/book/@lang", "b1"}, // the elements that have it
      {u"lib/book/@missing", ""},
      {u"lib/book[@id='b2']/..", "lib"},
      {u"lib/book/..", "lib,lib,lib"}, // once per match
      {u"lib/book/../mag", "m1,m1,m1"},
      {u"..", ""},       // the document has no parent
      {u"LIB/BOOK", ""}, // tags compare with case
      {u"lib/Book", ""},
      {u"lib/nothing/book", ""},
      {u"", ""},
      {u"lib/book[", "b1,b2,b3"},
      {u"lib/book]", ""},
      {u".", ""},
  };
  for (const Case& c : cases)
    EXPECT_EQ(labels(doc.XPath(c.path)), c.expected) << hstring(c.path).toUtf8();
}

TEST_F(XPathTest, Conditions) {
  const Case cases[] = {
      // Indexes count element siblings of any tag, from 0; comments do not count.
      {u"lib/book[0]", "b1"},
      {u"lib/book[1]", "b2"},
      {u"lib/book[2]", ""}, // that one is the mag
      {u"lib/mag[2]", "m1"},
      {u"lib/book[3]", "b3"},
      {u"lib/*[1]", "!=note,b2"}, // a comment has the index of the element behind it
      {u"lib/book/book[2]", "b2x"},
      // last() is the last child with a tag, and comments have one.
      {u"lib/book[last()]", ""},
      {u"lib/*[last()]", "!=tail"},
      {u"lib/book/*[last()]", "cost=10,b2x,name="},
      {u"lib/book[1 and 2]", ""}, // no index: two paths that find nothing
      {u"lib/book[0][1]", ""},
      {u"lib/book[@lang]", "b1"},
      {u"lib/book[@LANG]", "b1"}, // attribute names ignore case in HTML
      {u"lib/book[@n='7']", "b2"},
      {u"lib/book[@n=\"7\"]", "b2"},
      {u"lib/book[@n = 7]", "b2"}, // a bare number is its own value
      {u"lib/book[@n!='7']", "b1,b3"},
      {u"lib/book[@id=@n]", ""},
      {u"lib/book[name]", "b1,b2,b3"},
      {u"lib/book[cost]", "b1,b2"},
      {u"lib/book[name/text()]", "b1,b2"},
      {u"lib/book[name='Beta']", "b2"},
      {u"lib/book[name!='Beta']", "b1,b3"},
      {u"lib/book[book[name='Inner']]", "b2"},
      {u"lib/book[book/name='Inner']", "b2"},
      {u"lib/*/name[text()='Gamma']", "name=Gamma"},
      {u"lib/book/name[text()]", "name=Alpha,name=Beta"},
      {u"lib/book[text()='Alpha10']", "b1"},
      {u"lib/book[@n='3' or @n='x']", "b1,b3"},
      {u"lib/book[not @lang]", "b2,b3"},
      {u"lib/book[@id and not cost]", "b3"},
      {u"lib/book[cost and not @lang]", "b2"},
      // Conditions fold left to right with no precedence.
      {u"lib/book[@lang or @n='7' and cost]", "b1,b2"},
      {u"lib/book[@n='x' or @lang and cost]", "b1"},
      {u"lib/book['x']", "b1,b2,b3"}, // a literal alone: is it non-empty
      {u"lib/book['']", ""},
  };
  for (const Case& c : cases)
    EXPECT_EQ(labels(doc.XPath(c.path)), c.expected) << hstring(c.path).toUtf8();
}

TEST_F(XPathTest, NumericComparisons) {
  // `>` compiles as less-than; `>=` is right. Non-numbers make all of them false.
  const Case cases[] = {
      {u"lib/*[@n>5]", "b1"},           {u"lib/*[@n > 5]", "b1"},      {u"lib/*[@n<5]", "b1"},
      {u"lib/*[@n>=5]", "b2,m1"},       {u"lib/*[@n<=5]", "b1,m1"},    {u"lib/*[@n>='5']", "b2,m1"},
      {u"lib/*[@n>=-100]", "b1,b2,m1"}, {u"lib/book[cost>=20]", "b2"}, {u"lib/book[cost<=@n]", ""},
      {u"lib/book[@n<=cost]", "b1,b2"}, {u"lib/book[@n>=5.5]", ""}, // no floating point
      {u"lib/book[@n>=x]", ""},
  };
  for (const Case& c : cases)
    EXPECT_EQ(labels(doc.XPath(c.path)), c.expected) << hstring(c.path).toUtf8();
}

TEST_F(XPathTest, ValueForm) {
  const Case cases[] = {
      {u"lib/book/name", "Alpha"},
      {u"lib/book[@id='b2']/cost", "25"},
      {u"lib/book/@n", "3"},
      {u"lib/book/@lang", "en"},
      {u"lib/book[2]/@id", ""},
      {u"lib/book[3]/@id", "b3"},
      {u"lib/mag", "GammatextB"},
      {u"lib/mag/text()", "text"},
      {u"lib/mag/b", "B"},
      {u"//name", "Alpha"},
      {u"//b", "B"},
      {u"lib/book/..", "Alpha10noteBeta25InnerGammatextBtail"}, // comments have text
      {u"lib/book[name='Beta']/book/name", "Inner"},
      {u"lib/nothing", ""},
      {u"lib/book/@missing", ""},
      {u"lib/book/@n/name", "3"}, // an attribute step ends the walk
      {u"LIB", ""},
      {u"", ""},
      {u"current/lib/mag/b", "B"},
      // A literal empty right side is no right side: this tests whether @n exists.
      {u"lib/*[@n='']/@id", "b1"},
  };
  for (const Case& c : cases)
    EXPECT_EQ(doc.XPathValue(c.path).toUtf8(), c.expected) << hstring(c.path).toUtf8();
}

TEST_F(XPathTest, LeadingSlash) {
  THtNode* b2 = byId(u"b2");
  ASSERT_NE(b2, nullptr);
  // The list form starts at the node, whatever the path says.
  EXPECT_EQ(labels(b2->XPath(u"/lib/mag")), "");
  EXPECT_EQ(labels(b2->XPath(u"/name")), "name=Beta");
  EXPECT_EQ(labels(b2->XPath(u"//name")), "name=Beta,name=Inner"); // only below b2
  // The value and callback forms start at the root.
  EXPECT_EQ(b2->XPathValue(u"/lib/mag/b").toUtf8(), "B");
  EXPECT_EQ(b2->XPathValue(u"name").toUtf8(), "Beta");
  EXPECT_EQ(b2->XPathValue(u"/name").toUtf8(), "");
  std::string seen;
  b2->XPath(u"/lib/mag", [&](THtNode* n, bool&) { seen += label(n); });
  EXPECT_EQ(seen, "m1");
}

TEST_F(XPathTest, CurrentNode) {
  THtmlNode probe;
  probe.SetAttr(u"want", u"m1");
  EXPECT_EQ(labels(doc.XPath(u"lib/*[@id=current/@want]", false, &probe)), "m1");
  IHtNodeList self = doc.XPath(u"current", false, &probe);
  ASSERT_EQ(self->GetCount(), 1);
  EXPECT_EQ(self->GetNode(0), &probe);
  EXPECT_EQ(doc.XPathValue(u"lib/*[@id=current/@want]/name", &probe).toUtf8(), "Gamma");
  // Without one, current is the node asked.
  THtNode* m1 = byId(u"m1");
  EXPECT_EQ(labels(m1->XPath(u"current/b")), "bold");
  EXPECT_EQ(labels(m1->XPath(u"current")), "m1");
  EXPECT_EQ(m1->XPathValue(u"current").toUtf8(), "GammatextB");
  EXPECT_EQ(m1->XPathValue(u"Current/@n").toUtf8(), "5");
}

TEST_F(XPathTest, FirstOnly) {
  const Case cases[] = {
      {u"lib/book", "b1"},     {u"//book", "b1"},           {u"//book/name", "name=Alpha"},
      {u"lib/book/..", "lib"}, {u"lib/book[@n='7']", "b2"}, {u"lib/nothing", ""},
  };
  for (const Case& c : cases)
    EXPECT_EQ(labels(doc.XPath(c.path, true)), c.expected) << hstring(c.path).toUtf8();
  // Only one item even where a `//` walk would find the next match in the
  // subtree of the first.
  THtmlNode nested;
  nested.Parse(u"<x id=o><x id=i><y id=ib></y></x><y id=ob></y></x>");
  EXPECT_EQ(labels(nested.XPath(u"//x/y")), "ob,ib");
  EXPECT_EQ(labels(nested.XPath(u"//x/y", true)), "ob");
}

TEST_F(XPathTest, CallbackForm) {
  auto collect = [&](THtNode* from, const char16_t* path, int stop_after = -1) {
    std::string out;
    int count = 0;
    from->XPath(path, [&](THtNode* n, bool& more) {
      out += (out.empty() ? "" : ",") + label(n);
      if (++count == stop_after)
        more = false;
    });
    return out;
  };
  EXPECT_EQ(collect(&doc, u"lib/book"), "b1,b2,b3");
  EXPECT_EQ(collect(&doc, u"lib/book", 1), "b1");
  EXPECT_EQ(collect(&doc, u"lib/book/name", 2), "name=Alpha,name=Beta");
  // Descendants come before the node itself here.
  EXPECT_EQ(collect(&doc, u"//book"), "b1,b2x,b2,b3");
  EXPECT_EQ(collect(&doc, u"//book", 2), "b1,b2x");
  EXPECT_EQ(collect(&doc, u"lib/book[@n='7']"), "b2");
  // A last parent step hands over the node, not its parent.
  EXPECT_EQ(collect(&doc, u"lib/book/.."), "b1,b2,b3");
  EXPECT_EQ(collect(&doc, u"lib/book/../mag"), "m1,m1,m1");
  // Attribute and current steps give nothing.
  EXPECT_EQ(collect(&doc, u"lib/book/@id"), "");
  EXPECT_EQ(collect(&doc, u"current"), "");
  EXPECT_EQ(collect(&doc, u"lib/mag/text()"), "'text'");
  EXPECT_EQ(collect(&doc, u""), "");

  // Also through a stored THtNodeProcRef, const or not.
  std::string seen;
  THtNodeProcRef proc = [&](THtNode* n, bool&) { seen += label(n); };
  doc.XPath(u"lib/mag", proc);
  const THtNodeProcRef& cproc = proc;
  doc.XPath(u"lib/mag", cproc);
  doc.XPath(u"lib/mag", THtNodeProcRef()); // an empty one is ignored
  EXPECT_EQ(seen, "m1m1");
}

TEST(XPath, IndexCountsElementsNotText) {
  THtmlNode doc;
  doc.Parse(u"<p>t<i>1</i>u<?pi?><b>2</b><!--c--></p>");
  const Case cases[] = {
      {u"p/b[1]", "b=2"},       {u"p/b[0]", ""},
      {u"p/i[0]", "i=1"},       {u"p/b[last()]", ""},
      {u"p/text()", "'t','u'"}, {u"p/text()[0]", "'t'"},     // a text node counts the elements before it
      {u"p/text()[1]", "'u'"},  {u"p/*[1]", "'u',?=pi,b=2"}, // directives count as little as comments
      {u"p/*[2]", "!=c"},
  };
  for (const Case& c : cases)
    EXPECT_EQ(labels(doc.XPath(c.path)), c.expected) << hstring(c.path).toUtf8();
  EXPECT_EQ(labels(doc.XPath(u"p[0]")), "p=t1upi2c");
  TXPathProcessor xp(u"x[0]");
  EXPECT_FALSE(doc.EvaluateCondition(xp.FirstStep())); // no parent, no index
  EXPECT_EQ(doc.XPathValue(u"p/text()").toUtf8(), "t");
}

TEST(XPath, ValueQueryQuirks) {
  THtmlNode doc;
  // With `//`, the subtree of a match is walked after its value was taken, so
  // a first child of the same name replaces it.
  doc.Parse(u"<div><div>in</div>out</div>");
  EXPECT_EQ(doc.XPathValue(u"//div").toUtf8(), "in");
  EXPECT_EQ(doc.XPathValue(u"div").toUtf8(), "inout");
  // An empty first match ends its own level only.
  THtmlNode two;
  two.Parse(u"<r><q></q><q>x</q></r><r><q>y</q></r>");
  EXPECT_EQ(two.XPathValue(u"r/q").toUtf8(), "y");
}

TEST(XPath, DeepDocuments) {
  // Deeper than any recursion could go.
  const int depth = 100000;
  THtNode root;
  THtNode* n = &root;
  for (int i = 0; i < depth; ++i) {
    n = n->AddChild(NodeClass<THtNode>());
    n->SetTag(i % 2 ? u"odd" : u"even");
  }
  n->AddChild(NodeClass<THtNode>())->SetContent(u"leaf");
  EXPECT_EQ(root.XPath(u"//odd")->GetCount(), depth / 2);
  EXPECT_EQ(root.XPath(u"//*[0]")->GetCount(), depth + 1);
  EXPECT_EQ(root.XPath(u"//text()")->GetCount(), 1);
  EXPECT_EQ(root.XPathValue(u"//text()").toUtf8(), "leaf");
  // An empty value does not stop a value query, so this one runs to the bottom.
  n->SetAttr(u"x", u"deep");
  EXPECT_EQ(root.XPathValue(u"//odd/@x").toUtf8(), "deep");
  int count = 0;
  root.XPath(u"//even", [&](THtNode*, bool&) { ++count; });
  EXPECT_EQ(count, depth / 2);
  EXPECT_EQ(labels(n->XPath(u"../../..")), "even=leaf");
}

TEST(XPath, DeeplyNestedConditionsDoNotExhaustTheStack) {
  THtmlNode doc;
  doc.Parse(u"<n>x</n>");
  // n[/n[/n[...='x']='x']='x']: each level a value query from the root.
  auto nested = [](int levels) {
    std::u16string path;
    for (int i = 0; i < levels; ++i)
      path += u"n[/";
    path += u"n";
    for (int i = 0; i < levels; ++i)
      path += u"='x']";
    return hstring(path);
  };
  EXPECT_EQ(doc.XPath(nested(3))->GetCount(), 1);
  EXPECT_EQ(doc.XPath(nested(100))->GetCount(), 1);
  EXPECT_EQ(doc.XPath(nested(5000))->GetCount(), 0); // beyond the nesting limit: false
}

TEST(XPath, ExponentialPathsStopAtTheVisitBudget) {
  THtmlNode doc;
  doc.Parse(u"<a><b><c/><c/></b><b><c/><c/></b><b/></a>");
  // Each `//*/..` multiplies the walk by the node count: 12 of them would
  // take hours. The walk stops at its budget; the matches found stand.
  std::u16string path;
  for (int i = 0; i < 12; ++i)
    path += u"//*/..";
  auto start = std::chrono::steady_clock::now();
  IHtNodeList found = doc.XPath(hstring(path));
  (void)doc.XPathValue(hstring(path + u"/@x"));
  int calls = 0;
  doc.XPath(hstring(path), [&](THtNode*, bool&) { ++calls; });
  double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  EXPECT_LT(seconds, 20.0);
  EXPECT_GT(found->GetCount(), 0);
  EXPECT_GT(calls, 0);
  // A short path of the same kind is still answered in full: every node
  // that has children, once per child.
  EXPECT_EQ(doc.XPath(u"//*/..")->GetCount(), 8);
}
