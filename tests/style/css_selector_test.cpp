#include "htcore/style/css_selector.h"

#include <gtest/gtest.h>
#include <string>

using namespace ht;

namespace {

std::unique_ptr<TCSSSelector> sel(const char16_t* text) { return TCSSSelector::Parse(hstring(text)); }

struct TDoc {
  TCSSElement root;
  explicit TDoc(const char16_t* html) { root.Parse(hstring(html)); }
  // The first element with this id.
  const TCSSElement* id(const char16_t* v) {
    return static_cast<const TCSSElement*>(root.FindNodebyAttr(hstring(), u"id"_hs, hstring(v)));
  }
};

} // namespace

TEST(CSSSelector, Weights) {
  struct {
    const char16_t* in;
    uint32_t weight;
  } cases[] = {
      {u"div", 1},       {u".a", 16},
      {u"#a", 256},      {u"div.a", 17},
      {u"a:hover", 17},  {u"ul li", 2},
      {u"[x][y]", 16},   {u"*", 0},
      {u"* > p", 2},     {u"p::before", 17},
      {u"a:not(.b)", 1}, {u"#a .b c:first-child", 289},
      {u"a.b.c.d", 49},  {u"li:nth-child(2)", 17},
  };
  for (auto& c : cases) {
    auto s = sel(c.in);
    ASSERT_TRUE(s) << hstring(c.in).toUtf8();
    EXPECT_EQ(s->CalcWeight(), c.weight) << hstring(c.in).toUtf8();
  }
  // No carry: seventeen classes outweigh an id.
  std::u16string many;
  for (int i = 0; i < 17; ++i)
    many += u".c" + std::u16string(1, char16_t(u'a' + i));
  EXPECT_GT(sel(many.c_str())->CalcWeight(), sel(u"#x")->CalcWeight());
}

TEST(CSSSelector, ReadingAndWriting) {
  struct {
    const char16_t* in;
    const char* out;
  } cases[] = {
      {u"A.b > c", "a.b>c"},
      {u"C.B", "c.b"},
      {u"ul  li", "ul li"},
      {u"h1 + p ~ span", "h1+p~span"},
      {u"a::before", "a:Before"},
      {u"a:hover:HOVER", "a:Hover"},
      {u"input[type=text][ name ^= x ]", "input[type=text][ name ^= x ]"},
      {u"p:not(.a):not(#b)", "p:not(.a):not(#b)"},
      {u"#x#y", "#y"},
      {u"a:foo", "a:Unknown"},
      {u"@page", "@page"},
      {u"50%", "50%"},
      {u"\"quoted\"", "quoted"},
      {u"*", "*"},
      {u"a..b", "a.b"}, // a dot without a name is dropped
      {u"a >", "a>"},
  };
  for (auto& c : cases) {
    auto s = sel(c.in);
    ASSERT_TRUE(s) << hstring(c.in).toUtf8();
    EXPECT_EQ(s->AsString().toUtf8(), c.out) << hstring(c.in).toUtf8();
  }
  auto s = sel(u"A.b > c");
  ASSERT_TRUE(s->Parent);
  EXPECT_EQ(s->Parent->Tag, u"a");
  EXPECT_EQ(s->Position, spChild);
  EXPECT_EQ(s->Parent->Classes[0].hash, sel(u"c.B")->Classes[0].hash);
  EXPECT_FALSE(sel(u""));
  EXPECT_FALSE(sel(u"a } b"));
  EXPECT_FALSE(sel(u"a; b"));
}

TEST(CSSSelector, ConditionsAndTestRoutines) {
  auto s = sel(u"[a^=x][b$=y][c*=z][d~=w][e|=en][f!=g][h]");
  ASSERT_EQ(s->Conditions.size(), 7u);
  TAttrCompare want[] = {acStarts, acEnds, acContains, acWord, acStarts2, acNotEq, acMatch};
  for (size_t i = 0; i < 7; ++i)
    EXPECT_EQ(s->Conditions[i].Compare, want[i]) << i;
  EXPECT_EQ(s->Conditions[0].Name, u"a");
  EXPECT_EQ(s->Conditions[0].Value, u"x");

  struct {
    const char16_t* in;
    TCSSTestProc test;
  } procs[] = {
      {u"*", &TCSSSelector::TestUniversal},   {u"p", &TCSSSelector::TestTag},
      {u"#a", &TCSSSelector::TestID},         {u".a.b", &TCSSSelector::TestClass},
      {u"p.a", &TCSSSelector::TestTagClass},  {u"[a]:hover", &TCSSSelector::TestPCCondition},
      {u"[a]", &TCSSSelector::TestCondition}, {u".a:hover", &TCSSSelector::TestPCClass},
      {u"p#a", &TCSSSelector::TestAll},       {u"*.a", &TCSSSelector::TestAll},
      {u"p::before", &TCSSSelector::TestTag}, {u"p:hover", &TCSSSelector::TestAll},
  };
  for (auto& c : procs)
    EXPECT_TRUE(sel(c.in)->Test == c.test) << hstring(c.in).toUtf8();
}

TEST(CSSSelector, Matching) {
  TDoc d(u"<div id=top class='Box wide'>"
         u"<ul id=list><li id=l1 class=a>1</li>text<li id=l2 class='a b'>2</li><li id=l3>3</li></ul>"
         u"<p id=p1 lang=en-GB title='big red box'>x</p><!-- c --><span id=s1 data-x=abc>y</span>"
         u"<a id=plain>z</a></div>");
  struct {
    const char16_t* selector;
    const char16_t* id;
    bool match;
  } cases[] = {
      {u"li", u"l1", true},
      {u"LI", u"l1", true},
      {u"#l1", u"l1", true},
      {u"#L1", u"l1", false}, // ids keep their case
      {u".a", u"l2", true},
      {u".a.b", u"l2", true},
      {u".a.b", u"l1", false},
      {u".box.WIDE", u"top", true},
      {u"li.b", u"l2", true},
      {u"li.b", u"l3", false},
      {u"ul > li", u"l1", true},
      {u"div > li", u"l1", false},
      {u"div li", u"l1", true},
      {u"div ul li", u"l3", true},
      {u"p li", u"l1", false},
      {u"#l1 + li", u"l2", true}, // the text node between is passed over
      {u"#l1 + li", u"l3", false},
      {u"#l1 ~ li", u"l3", true},
      {u"#l3 ~ li", u"l1", false},
      {u"ul + p", u"p1", true},
      {u"p + span", u"s1", true}, // the comment is no sibling
      {u"li:nth-child(odd)", u"l1", true},
      {u"li:nth-child(odd)", u"l2", false},
      {u"li:nth-child(2)", u"l2", true},
      {u"li:nth-child(2n)", u"l2", false},
      {u"li:nth-of-type(3)", u"l3", true},
      {u"li:hover", u"l1", false},
      {u"li:foo", u"l1", false},
      {u"[lang|=en]", u"p1", true},
      {u"[lang|=e]", u"p1", false},
      {u"[title~=red]", u"p1", true},
      {u"[title~=re]", u"p1", false},
      {u"[title^=big]", u"p1", true},
      {u"[title^=\"\"]", u"p1", false},
      {u"[title$=box]", u"p1", true},
      {u"[title*=g r]", u"p1", true},
      {u"[data-x=abc]", u"s1", true},
      {u"[data-x=ABC]", u"s1", false},
      {u"[nope!=1]", u"s1", true}, // absent, and the node has other attributes
      {u"[nope!=1]", u"p1", true},
      {u"span[nope]", u"s1", false},
      {u"li:not(.b)", u"l1", true},
      {u"li:not(.b)", u"l2", false},
      {u"li:not(#l3)", u"l3", false},
      {u"li:not(p)", u"l1", false}, // the operand is empty: every element satisfies it
      {u"*", u"s1", true},
      {u"* > li", u"l1", false},        // left of a combinator "*" is a tag name
      {u".a:first-child", u"l2", true}, // taken as given by the class-and-state routine
  };
  for (auto& c : cases) {
    auto s = sel(c.selector);
    ASSERT_TRUE(s) << hstring(c.selector).toUtf8();
    const TCSSElement* e = d.id(c.id);
    ASSERT_TRUE(e) << hstring(c.id).toUtf8();
    EXPECT_EQ(TestSelector(e, s.get(), 0), c.match)
        << hstring(c.selector).toUtf8() << " on " << hstring(c.id).toUtf8();
  }
}

TEST(CSSSelector, PseudoStateAndRequiredSets) {
  TDoc d(u"<a id=x href=#>link</a><b id=y>b</b><i>i</i>");
  auto* a = const_cast<TCSSElement*>(d.id(u"x"));
  auto hover = sel(u"a:hover");
  EXPECT_FALSE(TestSelector(a, hover.get(), 0));
  a->CurrentPC = PCBit(pcHover);
  EXPECT_TRUE(TestSelector(a, hover.get(), 0));
  EXPECT_TRUE(TestSelector(a, sel(u"a:not(:focus)").get(), 0));
  EXPECT_FALSE(TestSelector(a, sel(u"a:not(:hover)").get(), 0));

  auto before = sel(u"a::before");
  EXPECT_TRUE(TestSelector(a, before.get(), PCBit(pcBefore)));
  EXPECT_FALSE(TestSelector(a, sel(u"a").get(), PCBit(pcBefore)));

  // Conditions without attributes: "[a!=b]" needs some attribute to be there.
  auto ne = sel(u"[q!=1]");
  EXPECT_TRUE(TestSelector(d.id(u"y"), ne.get(), 0));
  auto* i = static_cast<const TCSSElement*>(d.root.FindNode(u"i"_hs));
  ASSERT_TRUE(i);
  EXPECT_FALSE(TestSelector(i, ne.get(), 0));
  EXPECT_FALSE(TestSelector(i, sel(u"[a]").get(), 0));
}

TEST(CSSSelector, ClassesFollowTheAttribute) {
  TDoc d(u"<p id=p class=' One  two '>x</p>");
  auto* p = const_cast<TCSSElement*>(d.id(u"p"));
  ASSERT_EQ(p->FClassHashes.size(), 3u); // the double blank gives an empty record
  EXPECT_TRUE(p->MultiClass);
  EXPECT_EQ(p->FClassHashes[0].s, u"one");
  p->SetAttribute(u"class"_hs, u"three"_hs);
  ASSERT_EQ(p->FClassHashes.size(), 1u);
  EXPECT_FALSE(p->MultiClass);
  EXPECT_TRUE(TestSelector(p, sel(u".three").get(), 0));
  p->AddClass(u"four"_hs);
  EXPECT_TRUE(TestSelector(p, sel(u".four.three").get(), 0));
}

TEST(CSSSelector, HostileSelectors) {
  // A chain longer than the limit is dropped; a long :not( nest is flat.
  std::u16string chain;
  for (int i = 0; i < 30000; ++i)
    chain += u"a ";
  EXPECT_FALSE(TCSSSelector::Parse(hstring(chain.data(), chain.size())));
  std::u16string nest;
  for (int i = 0; i < 30000; ++i)
    nest += u":not(";
  auto s = TCSSSelector::Parse(u"a" + hstring(nest.data(), nest.size()));
  ASSERT_TRUE(s);
  EXPECT_EQ(s->NotSelectors.size(), 1u);
  std::u16string open(100000, u'[');
  EXPECT_TRUE(TCSSSelector::Parse(u"a" + hstring(open.data(), open.size())));
}
