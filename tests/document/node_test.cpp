#include "document/tree_dump.h"
#include "htcore/document/html_node.h"
#include "htcore/document/node.h"
#include "htcore/foundation/date_time.h"
#include "htcore/foundation/exception.h"
#include "htcore/foundation/hash.h"

#include <gtest/gtest.h>
#include <memory>

namespace ht {
namespace {

using test::CheckTree;
using test::DumpNode;

THtNode* Add(THtNode* parent, const char16_t* tag) {
  THtNode* n = parent->AddChild(NodeClass<THtmlNode>());
  if (*tag) {
    n->SetTag(tag);
    n->TagType = htIdent;
  }
  return n;
}

THtNode* AddText(THtNode* parent, const char16_t* text) {
  THtNode* n = parent->AddChild(NodeClass<THtmlNode>());
  n->SetContent(text);
  return n;
}

TEST(Node, ChildListAndAttributesAreMadeOnDemand) {
  THtmlNode n;
  EXPECT_EQ(n.GetCount(), 0);
  EXPECT_EQ(n.GetNode(0), nullptr);
  EXPECT_EQ(n.FNodes, nullptr);
  EXPECT_EQ(n.FirstChild(), nullptr);
  EXPECT_EQ(n.LastChild(), nullptr);
  EXPECT_EQ(n.FAttributes, nullptr);

  // An empty value on a node without attributes changes nothing.
  EXPECT_FALSE(n.SetAttribute(u"a", hstring()));
  n.SetAttr(u"a", hstring());
  EXPECT_EQ(n.FAttributes, nullptr);
  EXPECT_TRUE(n.HasAttributeValue(u"a", hstring()));
  EXPECT_FALSE(n.HasAttributeValue(u"a", u"x"));
  EXPECT_FALSE(n.HasAttribute(u"a"));

  EXPECT_NE(n.GetNodes(), nullptr);
  EXPECT_EQ(n.GetCount(), 0);

  EXPECT_TRUE(n.SetAttribute(u"b", u"2"));
  EXPECT_FALSE(n.SetAttribute(u"b", u"2"));     // unchanged
  EXPECT_TRUE(n.SetAttribute(u"a", hstring())); // with attributes, an empty value is stored
  EXPECT_TRUE(n.HasAttribute(u"a"));
  EXPECT_TRUE(n.HasAttributeValue(u"a", hstring()));
  EXPECT_EQ(n.FAttributes->GetName(0), u"a"); // sorted by name
  EXPECT_EQ(n.FAttributes->GetName(1), u"b");
}

TEST(Node, TagHashIgnoresCase) {
  THtmlNode n(u"DiV");
  EXPECT_EQ(n.FTag, u"DiV");
  EXPECT_EQ(n.TagType, htIdent);
  EXPECT_EQ(static_cast<uint32_t>(n.FTagHash), RSHash(u"div", 3));
  THtmlNode text;
  EXPECT_EQ(text.TagType, htUnknown);
  EXPECT_EQ(text.FTagHash, 0);
}

TEST(Node, SiblingLinksFollowEveryListChange) {
  THtmlNode root(u"r");
  THtNode* a = Add(&root, u"a");
  THtNode* b = Add(&root, u"b");
  THtNode* c = Add(&root, u"c");
  EXPECT_EQ(a->NextSibling(), b);
  EXPECT_EQ(c->NextSibling(), nullptr);
  EXPECT_EQ(CheckTree(&root), "");

  THtNode* z = THtNode::CreateNode(NodeClass<THtmlNode>());
  z->SetTag(u"z");
  z->FParent = &root;
  root.FNodes->Insert(0, z); // the new first child links to the former one
  EXPECT_EQ(z->NextSibling(), a);
  EXPECT_EQ(CheckTree(&root), "");
  EXPECT_EQ(DumpNode(&root), "r(z,a,b,c)");

  root.FNodes->Exchange(0, 3);
  EXPECT_EQ(DumpNode(&root), "r(c,a,b,z)");
  EXPECT_EQ(CheckTree(&root), "");

  root.FNodes->Move(3, 1);
  EXPECT_EQ(DumpNode(&root), "r(c,z,a,b)");
  EXPECT_EQ(CheckTree(&root), "");
  root.FNodes->Move(0, 3);
  EXPECT_EQ(DumpNode(&root), "r(z,a,b,c)");
  EXPECT_EQ(CheckTree(&root), "");

  root.DeleteChild(a); // middle
  EXPECT_EQ(z->NextSibling(), b);
  EXPECT_EQ(CheckTree(&root), "");
  root.DeleteChild(c); // last
  EXPECT_EQ(b->NextSibling(), nullptr);
  EXPECT_EQ(CheckTree(&root), "");

  // RemoveItem takes a node out without freeing; it can go to another list.
  THtmlNode other(u"o");
  ASSERT_TRUE(root.FNodes->RemoveItem(z));
  EXPECT_EQ(z->NextSibling(), nullptr);
  other.GetNodes()->Add(z);
  z->FParent = &other;
  EXPECT_EQ(CheckTree(&root), "");
  EXPECT_EQ(CheckTree(&other), "");
  EXPECT_EQ(DumpNode(&root), "r(b)");
  EXPECT_FALSE(root.FNodes->RemoveItem(z));

  root.Exchange(b, b);
  root.DeleteAllChildren();
  EXPECT_EQ(root.GetCount(), 0);
}

TEST(Node, DeleteChildOfAnotherParentRaises) {
  THtmlNode p1(u"p1"), p2(u"p2");
  THtNode* x = Add(&p2, u"x");
  for (THtNode* bad : {x, static_cast<THtNode*>(nullptr), static_cast<THtNode*>(&p1)}) {
    try {
      p1.DeleteChild(bad);
      FAIL() << "no exception";
    } catch (const Exception& e) {
      EXPECT_STREQ(e.what(), "Child node not found");
    }
  }
  Add(&p1, u"y");
  EXPECT_THROW(p1.DeleteChild(x), Exception);
  EXPECT_EQ(p2.GetCount(), 1);
}

TEST(Node, TextContentTakesTaggedSubtreesOnly) {
  THtmlNode root(u"div");
  root.FContent = u"<";
  AddText(&root, u"a");
  THtNode* b = Add(&root, u"b");
  b->FContent = u"[";
  AddText(b, u"c");
  Add(Add(b, u"i"), u"")->FContent = u"d";
  // An untagged node gives its own content, not its children's.
  THtNode* cdata = Add(&root, u"");
  cdata->TagType = htCData;
  cdata->FContent = u"e";
  AddText(cdata, u"hidden");
  AddText(&root, u"f");
  EXPECT_EQ(root.TextContent(), u"<a[cdef");
  EXPECT_EQ(b->TextContent(), u"[cd");
  THtmlNode empty;
  EXPECT_EQ(empty.TextContent(), hstring());
}

struct TNavFixture : ::testing::Test {
  // html(head(title("t")), body(!{c}, div[id=1](p("x"), p[k=v]), "y", div(span)))
  THtmlNode root{u"html"};
  THtNode *head, *title, *body, *comment, *div1, *p1, *p2, *text, *div2, *span;
  void SetUp() override {
    head = Add(&root, u"head");
    title = Add(head, u"title");
    AddText(title, u"t");
    body = Add(&root, u"body");
    comment = Add(body, u"!");
    comment->TagType = htComment;
    comment->FContent = u"c";
    div1 = Add(body, u"div");
    div1->SetAttr(u"id", u"1");
    p1 = Add(div1, u"p");
    AddText(p1, u"x");
    p2 = Add(div1, u"p");
    p2->SetAttr(u"k", u"v");
    text = AddText(body, u"y");
    div2 = Add(body, u"div");
    span = Add(div2, u"span");
  }
};

TEST_F(TNavFixture, DocumentOrderWalks) {
  std::string order;
  for (THtNode* n = &root; n; n = n->NextNode())
    order += n->FTag.empty() ? "'" + n->FContent.toUtf8() + "'" : n->FTag.toUtf8() + " ";
  EXPECT_EQ(order, "html head title 't'body ! div p 'x'p 'y'div span ");
  std::string back;
  for (THtNode* n = span; n; n = n->PreviousNode())
    back += n->FTag.empty() ? "'" + n->FContent.toUtf8() + "'" : n->FTag.toUtf8() + " ";
  EXPECT_EQ(back, "span div 'y'p 'x'p div ! body 't'title head html ");
  EXPECT_EQ(root.Last(), span);
  EXPECT_EQ(span->Last(), span);
  EXPECT_EQ(body->LastChild(), div2);
  EXPECT_EQ(text->PreviousSibling(), div1);
  EXPECT_EQ(comment->PreviousSibling(), nullptr);
  EXPECT_EQ(root.PreviousSibling(), nullptr);
  EXPECT_EQ(span->Root(), &root);
}

TEST_F(TNavFixture, IndexesAndPaths) {
  EXPECT_EQ(body->FirstChildTag(), div1); // the comment is skipped
  EXPECT_EQ(body->LastChildTag(), div2);
  EXPECT_EQ(p1->FirstChildTag(), nullptr);
  EXPECT_EQ(div2->ChildIndex(), 1); // comment and text do not count
  EXPECT_EQ(div2->TagIndex(), 1);
  EXPECT_EQ(div2->NodeIndex(), 3);
  EXPECT_EQ(root.NodeIndex(), -1);
  EXPECT_EQ(root.AbsoluteTagIndex(), 0);
  EXPECT_EQ(head->AbsoluteTagIndex(), 1);
  EXPECT_EQ(p2->AbsoluteTagIndex(), 7); // html head title body ! div p
  EXPECT_EQ(span->Path(), u"html/body/div/span");
  EXPECT_TRUE(span->HasAsParent(&root));
  EXPECT_FALSE(span->HasAsParent(span));
  EXPECT_TRUE(span->HasParentTag(u"body"));
  EXPECT_FALSE(span->HasParentTag(u"span")); // ancestors only
  EXPECT_EQ(span->UpTo(u"div"), div2);
  EXPECT_EQ(div2->UpTo(u"div"), nullptr);
  EXPECT_EQ(span->UpTo({u"head", u"body"}), body);
}

TEST_F(TNavFixture, Lookups) {
  EXPECT_EQ(root.NodebyName(u"body"), body);
  EXPECT_EQ(root.NodebyName(u"div"), nullptr); // children only
  EXPECT_EQ(root.NodebyName(u"body/div"), div1);
  // A failed branch goes on with the next child of the same name.
  EXPECT_EQ(body->NodebyName(u"div/span"), span);
  EXPECT_EQ(root.NodebyName(u"body/span"), nullptr);
  EXPECT_EQ(root.FindNode(u"span"), span);
  EXPECT_EQ(div1->FindNode(u"span"), nullptr); // stays inside the subtree
  EXPECT_EQ(div1->FindNode(u"div"), nullptr);  // excludes itself
  EXPECT_EQ(body->NodebyAttr(u"id", u"1"), div1);
  EXPECT_EQ(body->NodebyNameAttr(u"p", u"id", u"1"), nullptr);
  EXPECT_EQ(div1->NodebyNameAttr(u"p", u"k", u"v"), p2);
  EXPECT_EQ(root.FindNodebyAttr(hstring(), u"k", u"v"), p2);
  EXPECT_EQ(root.FindNodebyAttr(u"div", u"k", u"v"), nullptr);
  EXPECT_EQ(p1->FindNodebyAttr(hstring(), u"k", u"v"), nullptr);
  EXPECT_EQ(div1->NodebyNameIndex(u"p", 1), p2);
  EXPECT_EQ(div1->NodebyNameIndex(u"p", 2), nullptr);
  EXPECT_EQ(body->Countof(u"div"), 2);
  EXPECT_EQ(body->Countof(u"p"), 0);
}

TEST(Node, TypedAttributes) {
  THtmlNode n(u"x");
  n.SetAttrI(u"i", -42);
  EXPECT_EQ(n.GetAttribute(u"i"), u"-42");
  EXPECT_EQ(n.GetAttrI(u"i"), -42);
  for (const char16_t* bad : {u"", u"12a", u"1.5", u"99999999999", u"-"}) {
    n.SetAttr(u"bad", bad);
    try {
      n.GetAttrI(u"bad");
      FAIL() << "no error for " << hstring(bad).toUtf8();
    } catch (const EConvertError& e) {
      EXPECT_EQ(e.what(), "'" + hstring(bad).toUtf8() + "' is not a valid integer value");
    }
  }
  EXPECT_THROW(n.GetAttrI(u"missing"), EConvertError);

  struct {
    const char16_t* value;
    bool expected;
  } bools[] = {{u"1", true},     {u"true", true}, {u"on", true},
               {u"TRUE", false}, {u"yes", false}, {u"0", false}};
  for (auto& c : bools) {
    n.SetAttr(u"b", c.value);
    EXPECT_EQ(n.GetAttrB(u"b"), c.expected) << hstring(c.value).toUtf8();
  }
  n.SetAttrB(u"b", true);
  EXPECT_EQ(n.GetAttribute(u"b"), u"1");
  n.SetAttrB(u"b", false);
  EXPECT_EQ(n.GetAttribute(u"b"), u"0");

  n.SetAttrF(u"f", 2.5);
  EXPECT_EQ(n.GetAttribute(u"f"), u"2.5");
  n.SetFloat(u"f", 3);
  EXPECT_EQ(n.GetAttribute(u"f"), u"3");
  n.SetAttr(u"f", u"1,25");
  EXPECT_DOUBLE_EQ(n.GetAttrF(u"f"), 1.25);
  EXPECT_DOUBLE_EQ(n.GetFloat(u"missing"), 0);

  TDateTime d = EncodeDate(2024, 2, 29);
  n.SetDate(u"d", d);
  EXPECT_EQ(n.GetAttribute(u"d"), u"2024-02-29");
  EXPECT_DOUBLE_EQ(n.GetDate(u"d"), d);
  TDateTime t = EncodeTime(13, 5, 9, 0);
  n.SetTime(u"t", t);
  EXPECT_EQ(n.GetAttribute(u"t"), u"13:05:09");
  EXPECT_NEAR(n.GetTime(u"t"), t, 1e-9);
  n.SetDateTime(u"dt", d + t);
  EXPECT_EQ(n.GetAttribute(u"dt"), u"2024-02-29 13:05:09");
  EXPECT_NEAR(n.GetDateTime(u"dt"), d + t, 1e-9);
  EXPECT_EQ(n.GetDate(u"missing"), 0);
  n.SetAttr(u"d", u"not a date");
  EXPECT_EQ(n.GetDate(u"d"), 0); // dates never raise
}

TEST(Node, CopyAttributesFromMerges) {
  THtmlNode a(u"a"), b(u"b"), empty(u"e");
  a.SetAttr(u"x", u"1");
  a.SetAttr(u"y", u"2");
  b.SetAttr(u"y", u"old");
  b.SetAttr(u"z", u"3");
  b.CopyAttributesFrom(&a);
  EXPECT_EQ(DumpNode(&b), "b[x=1 y=2 z=3]");
  b.CopyAttributesFrom(&empty);
  b.CopyAttributesFrom(nullptr);
  EXPECT_EQ(DumpNode(&b), "b[x=1 y=2 z=3]");
  empty.CopyAttributesFrom(&empty);
  EXPECT_EQ(empty.FAttributes, nullptr);
}

TEST(Node, DeepChainsAreFreedAndWalkedWithoutRecursion) {
  constexpr int kDepth = 200000;
  auto root = std::make_unique<THtmlNode>(u"r");
  THtNode* n = root.get();
  for (int i = 0; i < kDepth; ++i)
    n = Add(n, i % 2 ? u"b" : u"i");
  AddText(n, u"leaf");
  EXPECT_EQ(root->TextContent(), u"leaf");
  EXPECT_EQ(root->FindNode(u"nothing"), nullptr);
  EXPECT_EQ(root->Last()->FContent, u"leaf");
  EXPECT_EQ(root->Last()->Root(), root.get());
  int count = 0;
  for (THtNode* x = root.get(); x; x = x->NextNode())
    ++count;
  EXPECT_EQ(count, kDepth + 2);
  // A wide level below the chain, too.
  for (int i = 0; i < 1000; ++i)
    AddText(n, u"w");
  root.reset(); // must not overflow the stack; ASan checks that all is freed
}

TEST(Node, ElementClassComesFromTheRoot) {
  THtmlNode root(u"r");
  THtNode* c = Add(&root, u"c");
  EXPECT_EQ(root.GetElementClass(u"x", nullptr), NodeClass<THtmlNode>());
  EXPECT_EQ(c->GetElementClass(u"x", nullptr), NodeClass<THtmlNode>());
  EXPECT_EQ(c->GetElementClass(u"x", &root), NodeClass<THtmlNode>());
  EXPECT_EQ(root.AddChild(nullptr), nullptr);
  EXPECT_EQ(root.InternalAddChild(nullptr), nullptr);
  EXPECT_EQ(root.GetCount(), 1);
}

} // namespace
} // namespace ht
