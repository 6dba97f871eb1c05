#include "htcore/document/element_classes.h"
#include "htcore/foundation/exception.h"

#include <gtest/gtest.h>

namespace ht {
namespace {

class TMyNode : public THtmlNode {
  HT_NODE_CLASS(TMyNode)
};
class TMyDiv : public TMyNode {
  HT_NODE_CLASS(TMyDiv)
};
class TMyText : public TMyNode {
  HT_NODE_CLASS(TMyText)
};

struct TMyClasses : TElementClasses {
  TMyClasses() {
    Register<TMyDiv>(u"DIV"); // names are stored in lower case
    Register<TMyText>(u"");
    DefaultClass = NodeClass<TMyNode>();
  }
};

// A host document: its root decides the class of every node.
class TMyDoc : public TMyNode {
  HT_NODE_CLASS(TMyDoc)
public:
  THtNodeClass GetElementClass(const hstring& tag, THtNode*) override {
    static TMyClasses classes;
    return classes.GetElementClass(tag);
  }
};

// Without an override, a root hands its own class down.
class TStyledLike : public THtmlNode {
  HT_NODE_CLASS(TStyledLike)
};

// Forgot HT_NODE_CLASS: its tree would silently hold THtmlNode children.
class TForgetful : public THtmlNode {};

// Refuses scripts and comments: those items are skipped.
class TNoScripts : public THtmlNode {
  HT_NODE_CLASS(TNoScripts)
public:
  THtNodeClass GetElementClass(const hstring& tag, THtNode*) override {
    if (tag == u"script" || tag == u"!")
      return nullptr;
    return NodeClass<THtmlNode>();
  }
};

TEST(ElementClasses, LookupRules) {
  TElementClasses t;
  EXPECT_EQ(t.GetElementClass(u"div"), NodeClass<THtmlNode>());
  EXPECT_EQ(t.GetElementClass(hstring()), NodeClass<THtmlNode>());
  t.Register<TMyDiv>(u"Div");
  t.Register(u"span", NodeClass<TMyNode>());
  EXPECT_EQ(t.GetElementClass(u"div"), NodeClass<TMyDiv>());
  EXPECT_EQ(t.GetElementClass(u"DIV"), NodeClass<TMyDiv>());
  EXPECT_EQ(t.GetElementClass(u"span"), NodeClass<TMyNode>());
  EXPECT_EQ(t.GetElementClass(u"p"), NodeClass<THtmlNode>());
  t.UnknownClass = NodeClass<TMyText>();
  EXPECT_EQ(t.GetElementClass(u"p"), NodeClass<TMyText>());
  EXPECT_EQ(t.GetElementClass(hstring()), NodeClass<THtmlNode>());
  t.TextClass = NodeClass<TMyNode>();
  EXPECT_EQ(t.GetElementClass(hstring()), NodeClass<TMyNode>());
  t.Register<TMyNode>(u"div"); // a second registration replaces the first
  EXPECT_EQ(t.GetElementClass(u"div"), NodeClass<TMyNode>());

  THtNode* made = THtNode::CreateNode(t.GetElementClass(u"p"));
  EXPECT_NE(dynamic_cast<TMyText*>(made), nullptr);
  EXPECT_EQ(made->ClassType(), NodeClass<TMyText>());
  delete made;
}

TEST(ElementClasses, HostRootDecidesEveryClass) {
  TMyDoc doc;
  doc.Parse(u"<div>a<p>b<!--c--></p></div>text");
  int divs = 0, texts = 0, others = 0;
  for (THtNode* n = doc.FirstChild(); n; n = n->NextNode()) {
    if (n->FTag == u"div") {
      EXPECT_NE(dynamic_cast<TMyDiv*>(n), nullptr);
      ++divs;
    } else if (n->FTag.empty()) {
      EXPECT_NE(dynamic_cast<TMyText*>(n), nullptr) << n->FContent.toUtf8();
      ++texts;
    } else {
      EXPECT_EQ(n->ClassType(), NodeClass<TMyNode>()) << n->FTag.toUtf8();
      ++others;
    }
  }
  EXPECT_EQ(divs, 1);
  EXPECT_EQ(texts, 3);
  EXPECT_EQ(others, 2); // p and the comment

  // Nodes added later ask the same root.
  THtNode* div = doc.FindNode(u"div");
  EXPECT_EQ(div->GetElementClass(u"div", nullptr), NodeClass<TMyDiv>());
}

TEST(ElementClasses, RootWithoutOverrideHandsDownItsClass) {
  TStyledLike doc;
  doc.Parse(u"<ul><li>x</ul>");
  for (THtNode* n = doc.FirstChild(); n; n = n->NextNode())
    EXPECT_EQ(n->ClassType(), NodeClass<TStyledLike>());
  EXPECT_NE(doc.FindNode(u"li"), nullptr);
}

TEST(ElementClasses, MissingClassDeclarationIsCaught) {
  TForgetful doc;
  try {
    doc.Parse(u"<p>x");
    FAIL() << "no assertion";
  } catch (const EAssertionFailed& e) {
    EXPECT_STREQ(e.what(), "Assertion failure");
  }
}

TEST(ElementClasses, ItemsWithoutClassAreSkipped) {
  TNoScripts doc;
  doc.Parse(u"<p>a<script>x()</script><!--c-->b</p>");
  THtNode* p = doc.FindNode(u"p");
  ASSERT_NE(p, nullptr);
  EXPECT_EQ(p->GetCount(), 2);
  EXPECT_EQ(p->TextContent(), u"ab");
}

} // namespace
} // namespace ht
