#include "document/tree_dump.h"
#include "htcore/document/html_node.h"
#include "htcore/document/node_list.h"
#include "htcore/foundation/exception.h"

#include <gtest/gtest.h>
#include <vector>

namespace ht {
namespace {

using test::CheckTree;
using test::DumpNode;

THtNode* Add(THtNode* parent, const char16_t* tag, const char16_t* attr = nullptr,
             const char16_t* value = nullptr) {
  THtNode* n = parent->AddChild(NodeClass<THtmlNode>());
  n->SetTag(tag);
  n->TagType = htIdent;
  if (attr)
    n->SetAttr(attr, value);
  return n;
}

// Records the class calls that the list forwards to its items.
class TRecorder : public THtmlNode {
  HT_NODE_CLASS(TRecorder)
public:
  std::vector<std::string>* Log = nullptr;
  void CSS(const hstring& Text) override { Log->push_back("css " + Text.toUtf8()); }
  void AddClass(const hstring& C) override { Log->push_back("add " + C.toUtf8()); }
  void RemoveClass(const hstring& C) override { Log->push_back("remove " + C.toUtf8()); }
  bool HasClass(const hstring& C) override { return C == u"on"; }
  void CallScriptFunction(const hstring& F) override {
    Log->push_back("call " + F.toUtf8() + " " + FTag.toUtf8());
  }
  int ScriptCompare(const hstring&, THtNode* Node) override {
    return FTag < Node->FTag ? -1 : (Node->FTag < FTag ? 1 : 0);
  }
};

TEST(NodeList, RefCountedResultsShareAndFree) {
  THtmlNode root(u"r");
  THtNode* a = Add(&root, u"a");
  IHtNodeList copy;
  {
    IHtNodeList list = THtNodeList::CreateRef();
    EXPECT_EQ(list->RefCount(), 1);
    EXPECT_FALSE(list->OwnsObjects());
    list->Add(a);
    copy = list;
    EXPECT_EQ(list->RefCount(), 2);
    IHtNodeList moved = std::move(list);
    EXPECT_FALSE(list);
    EXPECT_EQ(moved->RefCount(), 2);
  }
  EXPECT_EQ(copy->RefCount(), 1);
  EXPECT_EQ(copy->FirstNode(), a);
  IHtNodeList& alias = copy;
  copy = alias; // self-assignment keeps the list
  EXPECT_EQ(copy->GetCount(), 1);
  copy.reset(); // frees the list, never the node
  EXPECT_EQ(root.GetCount(), 1);
  EXPECT_EQ(a->NextSibling(), nullptr); // a non-owning list leaves sibling links alone

  // A list made without counting is not freed by handles.
  THtNodeList plain(false);
  {
    IHtNodeList h(&plain);
    EXPECT_EQ(plain.RefCount(), 0);
  }
  plain.Add(a);
  EXPECT_EQ(plain.GetCount(), 1);
}

TEST(NodeList, IndexErrorsAndEnumeration) {
  THtmlNode root(u"r");
  Add(&root, u"a");
  Add(&root, u"b");
  THtNodeList* list = root.GetNodes();
  EXPECT_THROW(list->GetNode(2), EListError);
  EXPECT_THROW(list->Delete(-1), EListError);
  EXPECT_THROW(list->Insert(3, nullptr), EListError);
  std::string tags;
  for (THtNode* n : *list)
    tags += n->FTag.toUtf8();
  THtNodeListEnumerator e = list->GetEnumerator();
  while (e.MoveNext())
    tags += e.GetCurrent()->FTag.toUtf8();
  EXPECT_EQ(tags, "abab");
  THtNodeList empty(false);
  EXPECT_EQ(empty.FirstNode(), nullptr);
  EXPECT_FALSE(empty.GetEnumerator().MoveNext());
}

struct TListFixture : ::testing::Test {
  // r(ul(li[n=2 s=b],li[n=10 s=a],li[n=1 s=B]), div)
  THtmlNode root{u"r"};
  THtNode *ul, *li1, *li2, *li3, *div;
  IHtNodeList list = THtNodeList::CreateRef();
  void SetUp() override {
    ul = Add(&root, u"ul");
    li1 = Add(ul, u"li", u"n", u"2");
    li1->SetAttr(u"s", u"b");
    li2 = Add(ul, u"li", u"n", u"10");
    li2->SetAttr(u"s", u"a");
    li3 = Add(ul, u"li", u"n", u"1");
    li3->SetAttr(u"s", u"B");
    div = Add(&root, u"div");
  }
  std::string Tags() const {
    std::string s;
    for (THtNode* n : *list)
      s += (s.empty() ? "" : " ") + (n->FTag.empty() ? "'" + n->FContent.toUtf8() + "'" : n->FTag.toUtf8());
    return s;
  }
};

TEST_F(TListFixture, FirstLastParentChildren) {
  list->Add(li1);
  list->Add(li2);
  list->Add(div);
  EXPECT_EQ(&list->First(), list.get());
  EXPECT_EQ(list->GetCount(), 1);
  EXPECT_EQ(list->FirstNode(), li1);
  list->Add(li3);
  list->Last();
  EXPECT_EQ(list->FirstNode(), li3);
  EXPECT_EQ(root.GetCount(), 2); // cutting a query list frees nothing

  list->Add(&root); // has no parent: dropped by Parent
  list->Parent();
  EXPECT_EQ(Tags(), "ul");
  list->Parent().Children();
  EXPECT_EQ(Tags(), "ul div");
  list->Children();
  EXPECT_EQ(Tags(), "li li li");
}

TEST_F(TListFixture, AppendSetTextAndRemove) {
  list->Add(ul);
  list->Add(div);
  list->Append(u"p").SetText(u"x");
  EXPECT_EQ(Tags(), "'x' 'x'");
  EXPECT_EQ(DumpNode(div), "div(p(\"x\"))");
  EXPECT_EQ(CheckTree(&root), "");

  // Nested and repeated items are freed once.
  list->Clear();
  list->Add(li1);
  list->Add(ul);
  list->Add(li3);
  list->Add(ul);
  list->Add(&root); // a parentless node is not removed
  list->Remove();
  EXPECT_EQ(list->GetCount(), 0);
  EXPECT_EQ(DumpNode(&root), "r(div(p(\"x\")))");
  EXPECT_EQ(CheckTree(&root), "");
}

TEST_F(TListFixture, AttributesJoinInReverse) {
  list->Add(li1);
  list->Add(li2);
  EXPECT_EQ(list->GetAttr(u"n"), u"10,2");
  list->SetAttr(u"n", u"7").Attribute(u"m", u"8").on(u"click", u"f()");
  EXPECT_EQ(DumpNode(li1), "li[m=8 n=7 onclick=f() s=b]");
  EXPECT_EQ(list->GetAttr(u"n"), u"7,7");
  EXPECT_EQ(list->GetCSS(u"color"), hstring());
}

TEST(NodeList, ClassAndScriptCallsReachItems) {
  std::vector<std::string> log;
  TRecorder a, b;
  a.SetTag(u"a");
  b.SetTag(u"b");
  a.Log = b.Log = &log;
  THtmlNode plain(u"p");
  IHtNodeList list = THtNodeList::CreateRef();
  list->Add(&a);
  list->Add(&plain);
  list->Add(&b);
  list->Style(u"color", u"red").AddClass(u"x").RemoveClass(u"y").ToggleClass(u"on").ToggleClass(u"off");
  list->Each(u"f");
  list->AddClass2(u"z");
  std::vector<std::string> expected = {"css color: red", "css color: red", "add x",     "add x",   "remove y",
                                       "remove y",       "remove on",      "remove on", "add off", "add off",
                                       "call f a",       "call f b",       "add z",     "add z"};
  EXPECT_EQ(log, expected);
  list->Delete(1);
  list->SortElements(u"cmp", false);
  EXPECT_EQ(list->GetNode(0), &b);
}

TEST_F(TListFixture, SortByAttributeKinds) {
  struct {
    const char16_t* names;
    THtSortCompareType compare;
    bool asc;
    std::string order;
  } cases[] = {
      {u"n", scCaseSensitive, true, "1 10 2"},
      {u"n", scFloat, true, "1 2 10"},
      {u"n", scFloat, false, "10 2 1"},
      {u"s", scCaseSensitive, true, "1 10 2"},      // "B" < "a" < "b"
      {u"s", scCaseInsensitive, true, "10 2 1"},    // a, then b and B equal: stable
      {u"s,n", scCaseInsensitive, true, "10 1 2"},  // ties broken by n
      {u"s,^n", scCaseInsensitive, true, "10 2 1"}, // ... or by n reversed
      {u"\rs ,\r n", scCaseInsensitive, true, "10 1 2"},
      {u"^s", scCaseInsensitive, false, "10 2 1"},
  };
  for (auto& c : cases) {
    // Sort the owning child list itself: sibling links must follow.
    THtNodeList* kids = ul->GetNodes();
    kids->Clear();
    li1 = Add(ul, u"li", u"n", u"2");
    li1->SetAttr(u"s", u"b");
    li2 = Add(ul, u"li", u"n", u"10");
    li2->SetAttr(u"s", u"a");
    li3 = Add(ul, u"li", u"n", u"1");
    li3->SetAttr(u"s", u"B");
    kids->SortbyAttr(c.names, c.compare, c.asc);
    std::string order;
    for (THtNode* n : *kids)
      order += (order.empty() ? "" : " ") + n->GetAttribute(u"n").toUtf8();
    EXPECT_EQ(order, c.order) << hstring(c.names).toUtf8();
    EXPECT_EQ(CheckTree(&root), "");
  }
}

TEST(NodeList, SortByDate) {
  THtmlNode root(u"r");
  Add(&root, u"x", u"d", u"05.03.2020");
  Add(&root, u"y", u"d", u"2019-12-31");
  Add(&root, u"z"); // no date: 0, first
  Add(&root, u"w", u"d", u"garbage");
  root.GetNodes()->SortbyAttr(u"d", scDate);
  std::string order;
  for (THtNode* n : *root.FNodes)
    order += n->FTag.toUtf8();
  EXPECT_EQ(order, "zwyx");
  EXPECT_EQ(CheckTree(&root), "");
}

} // namespace
} // namespace ht
