#include "htcore/style/css_cascade.h"
#include "htcore/style/jquery.h"

#include <gtest/gtest.h>
#include <string>

using namespace ht;

namespace {

std::string u8(const hstring& s) { return s.toUtf8(); }

// "tag#id.class" of each node, blank-separated.
std::string names(const THtNodeList& l) {
  std::string out;
  for (THtNode* n : l) {
    if (!out.empty())
      out += ' ';
    out += u8(n->FTag);
    if (auto* h = dynamic_cast<THtmlNode*>(n); h && !h->GetId().empty())
      out += "#" + u8(h->GetId());
  }
  return out;
}

const char16_t* kDoc = u"<div id=d1 class=a><p id=p1>x<span id=s1>y</span></p><p id=p2 class=b>z</p></div>"
                       u"<div id=d2><!-- c --><p id=p3 class='b a'></p><ul id=u1><li id=l1>1<li id=l2>2"
                       u"<li id=l3>3</ul></div>";

} // namespace

TEST(JQuery, MatchesInDocumentOrder) {
  TCSSElement doc;
  doc.Parse(hstring(kDoc));
  SetStructuralPseudoClasses(&doc);
  struct {
    const char16_t* query;
    bool first;
    const char* found;
  } cases[] = {
      {u"div.a", false, "div#d1"},
      {u"p", false, "p#p1 p#p2 p#p3"},
      {u"p", true, "p#p1"},
      {u".b, div > p", false, "p#p1 p#p2 p#p3"}, // each once, in document order
      {u"span, div", false, "div#d1 span#s1 div#d2"},
      {u"DIV P.B", false, "p#p2 p#p3"},
      {u"#l2 + li", false, "li#l3"},
      {u"#l1 ~ li", false, "li#l2 li#l3"},
      {u"li:first-child, li:last-child", false, "li#l1 li#l3"},
      {u"li:nth-child(2)", false, "li#l2"},
      {u"p:empty", false, "p#p3"},
      {u"p:only-of-type", false, "p#p3"},
      {u"ul:only-of-type", false, "ul#u1"},
      {u"[class~=a]", false, "div#d1 p#p3"},
      {u"p:frobnicate", false, ""},
      {u"", false, ""},
      {u"{{{", false, ""},
      {u"p::before", false, ""},
      {u"*", true, "div#d1"},
  };
  for (auto& c : cases) {
    IHtNodeList l = doc.GetJQueryList(hstring(c.query), c.first);
    ASSERT_TRUE(l);
    EXPECT_EQ(names(*l), c.found) << u8(hstring(c.query));
  }
}

TEST(JQuery, StartNodeIsNotTestedAndRootOption) {
  TCSSElement doc;
  doc.Parse(hstring(kDoc));
  auto* d1 = static_cast<TCSSElement*>(doc.NodebyAttr(u"id"_hs, u"d1"_hs));
  ASSERT_TRUE(d1);
  EXPECT_EQ(names(*d1->GetJQueryList(u"div, p"_hs, false)), "p#p1 p#p2");
  TJQueryProcessor q(u"div"_hs);
  q.Root = true;
  IHtNodeList l = THtNodeList::CreateRef();
  q.Run(d1, *l, false);
  EXPECT_EQ(names(*l), "div#d1 div#d2");
}

TEST(JQuery, CallbackWalkStops) {
  TCSSElement doc;
  doc.Parse(hstring(kDoc));
  std::string seen;
  doc.JQuery(u"li"_hs, [&](THtNode* n, bool& more) {
    seen += u8(static_cast<THtmlNode*>(n)->GetId()) + " ";
    more = seen.size() < 6;
  });
  EXPECT_EQ(seen, "l1 l2 ");
}

TEST(JQuery, DeepTreeAndListOperations) {
  std::u16string html;
  for (int i = 0; i < 10000; ++i)
    html += u"<div>";
  html += u"<b class=x>deep</b>";
  TCSSElement doc;
  doc.Parse(hstring(html.data(), html.size()));
  IHtNodeList l = doc.GetJQueryList(u"b.x"_hs, false);
  ASSERT_EQ(l->GetCount(), 1);
  l->AddClass(u"y"_hs);
  EXPECT_EQ(doc.GetJQueryList(u".x.y"_hs, false)->GetCount(), 1);
  // A tree without styles has no computed value to give.
  EXPECT_EQ(u8(l->GetCSS(u"color"_hs)), "");
}

TEST(StructuralStates, Links) {
  TCSSElement doc;
  doc.Parse(u"<a id=l1 href=x>a</a><a id=l2>b</a><a id=l3 href=y>c</a>"_hs);
  static_cast<TCSSElement*>(doc.NodebyAttr(u"id"_hs, u"l3"_hs))->CurrentPC |= PCBit(pcVisited);
  SetStructuralPseudoClasses(&doc);
  EXPECT_EQ(names(*doc.GetJQueryList(u"a:link"_hs, false)), "a#l1");
  EXPECT_EQ(names(*doc.GetJQueryList(u"a:visited"_hs, false)), "a#l3");
}

TEST(StructuralStates, KeepHostStates) {
  TCSSElement doc;
  doc.Parse(u"<ul><li>a<li>b</ul>"_hs);
  auto* li = static_cast<TCSSElement*>(doc.FindNode(u"li"_hs));
  li->CurrentPC = PCBit(pcHover) | PCBit(pcLastChild);
  SetStructuralPseudoClasses(&doc);
  EXPECT_EQ(li->CurrentPC, PCBit(pcHover) | PCBit(pcFirstChild) | PCBit(pcFirstOfType));
}
