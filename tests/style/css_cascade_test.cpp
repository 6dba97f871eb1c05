#include "htcore/style/css_cascade.h"
#include "htcore/style/css_sheet.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

using namespace ht;

namespace {

std::string u8(const hstring& s) { return s.toUtf8(); }

std::string text_of(const TCSSValue* v) {
  std::string out;
  for (size_t i = 0; i < v->Tokens.size(); ++i)
    out += (i ? " " : "") + u8(v->Tokens[i].Name);
  return out;
}

// The value the cascade keeps for a property: its last entry in the list.
std::string winner(const TCSSWeightList& list, const char16_t* prop) {
  for (int i = list.Count(); i-- > 0;)
    if (list.GetValue(i)->Name == prop)
      return text_of(list.GetValue(i));
  return "<none>";
}

TCSSElement* element(TCSSElement& doc, const char16_t* tag) {
  return static_cast<TCSSElement*>(doc.FindNode(hstring(tag)));
}

} // namespace

TEST(CSSWeightList, StaysSortedAndSkipsDuplicates) {
  TCSSValue a, b, c, d;
  TCSSWeightList l;
  l.AddValue(16, 10005, &a);
  l.AddValue(1, 10009, &b);  // front
  l.AddValue(16, 10002, &c); // before a: lower order
  l.AddValue(16, 10005, &d); // equal order: behind a
  l.AddValue(16, 10001, &a); // the same value under the same weight
  l.AddValue(kCSSImportantWeight | 1, 0, &a);
  ASSERT_EQ(l.Count(), 5);
  const TCSSValue* want[] = {&b, &c, &a, &d, &a};
  for (int i = 0; i < 5; ++i)
    EXPECT_EQ(l.GetValue(i), want[i]) << i;
  EXPECT_EQ(l.Item(4).Weight, 0xFF000001u);
  for (int i = 1; i < l.Count(); ++i)
    EXPECT_LE(l.Item(i - 1).Weight, l.Item(i).Weight);
}

TEST(CSSWeightList, LongListsKeepTheShortListsOrder) {
  // Short lists insert in place, long ones append and sort when read: both
  // must give what one sorted, duplicate-free insertion would, also after
  // Clear and reuse.
  std::vector<TCSSValue> values(60);
  TCSSWeightList l;
  uint32_t seed = 7;
  auto next = [&](uint32_t n) {
    seed = seed * 1103515245u + 12345u;
    return (seed >> 8) % n;
  };
  for (int count : {30, 400, 2000}) {
    l.Clear();
    std::vector<TCSSWeightItem> model;
    for (int k = 0; k < count; ++k) {
      uint32_t w = next(4) * 16;
      int32_t order = static_cast<int32_t>(next(20));
      const TCSSValue* v = &values[next(60)];
      bool seen = false;
      for (const TCSSWeightItem& m : model)
        seen |= m.Value == v && m.Weight == w;
      if (!seen)
        model.push_back({w, order, v});
      l.AddValue(w, order, v);
    }
    std::stable_sort(model.begin(), model.end(), [](const TCSSWeightItem& a, const TCSSWeightItem& b) {
      return a.Weight < b.Weight || (a.Weight == b.Weight && a.Order < b.Order);
    });
    ASSERT_EQ(l.Count(), static_cast<int>(model.size())) << count;
    for (int i = 0; i < l.Count(); ++i) {
      EXPECT_EQ(l.Item(i).Value, model[static_cast<size_t>(i)].Value) << count << " " << i;
      EXPECT_EQ(l.Item(i).Order, model[static_cast<size_t>(i)].Order) << count << " " << i;
    }
  }
}

TEST(CSSCascade, WeightsOrderAndImportant) {
  struct {
    const char16_t* css;
    const char16_t* html;
    const char16_t* tag;
    const char* color;
  } cases[] = {
      {u"p { color: red } p { color: blue }", u"<p>x", u"p", "blue"},
      {u"p { color: red !important } p { color: blue }", u"<p>x", u"p", "red"},
      {u"p { color: red !important } p { color: blue !important }", u"<p>x", u"p", "blue"},
      {u".a { color: red } p { color: blue }", u"<p class=a>x", u"p", "red"},
      {u"p.a { color: red } .a { color: blue }", u"<p class=a>x", u"p", "red"},
      {u"div p { color: red } p { color: blue }", u"<div><p>x</div>", u"p", "red"},
      {u"#a { color: red } .c1.c2.c3.c4.c5.c6.c7.c8.c9.c10.c11.c12.c13.c14.c15 { color: blue }",
       u"<p id=a class='c1 c2 c3 c4 c5 c6 c7 c8 c9 c10 c11 c12 c13 c14 c15 c16'>x", u"p", "red"},
      {u"#a { color: red } .c1.c2.c3.c4.c5.c6.c7.c8.c9.c10.c11.c12.c13.c14.c15.c16 { color: blue }",
       u"<p id=a class='c1 c2 c3 c4 c5 c6 c7 c8 c9 c10 c11 c12 c13 c14 c15 c16'>x", u"p", "blue"},
      {u"p { color: red } P.A { color: blue }", u"<p class=a>x", u"p", "blue"},
      {u"[title] { color: red } p { color: blue }", u"<p title=t>x", u"p", "red"},
      {u"p:first-child { color: red }", u"<p>x", u"p", "<none>"},
      {u"li:nth-child(2) { color: red }", u"<ul><li>a<li>b</ul>", u"li", "<none>"},
      {u"a, a { color: red }", u"<a>x</a>", u"a", "red"},
  };
  for (auto& c : cases) {
    TCSSStyleSheet sheet;
    sheet.Parse(hstring(c.css));
    TCSSElement doc;
    doc.Parse(hstring(c.html));
    TCSSWeightList list;
    sheet.GetElementSelectors(element(doc, c.tag), list, &sheet.Main, 0);
    EXPECT_EQ(winner(list, u"color"), c.color) << u8(hstring(c.css));
  }
}

TEST(CSSCascade, OneSectionUnderTwoSelectors) {
  // Both selectors match: the values come under both weights, once each.
  TCSSStyleSheet sheet;
  sheet.Parse(u"p, .a { color: red; margin-top: 1px }"_hs);
  TCSSElement doc;
  doc.Parse(u"<p class=a>x"_hs);
  TCSSWeightList list;
  sheet.GetElementSelectors(element(doc, u"p"), list, &sheet.Main, 0);
  ASSERT_EQ(list.Count(), 4);
  EXPECT_EQ(list.Item(0).Weight, 1u);
  EXPECT_EQ(list.Item(3).Weight, 16u);
}

TEST(CSSCascade, DefaultSheetInlineAndImportantLevels) {
  TCSSElement doc;
  doc.Parse(u"<p>x"_hs);
  TCSSElement* p = element(doc, u"p");
  auto run = [&](const char16_t* css, const char16_t* inline_css) {
    TCSSWeightList list;
    HTML4StyleSheet()->GetElementSelectors(p, list, &HTML4StyleSheet()->Main, 0);
    TCSSStyleSheet sheet;
    sheet.Parse(hstring(css));
    sheet.GetElementSelectors(p, list, &sheet.Main, 0);
    TCSSStyleSheet own;
    if (inline_css)
      own.ParseValues(hstring(inline_css), static_cast<int>(kCSSImportantWeight));
    own.GetAllSelectors(list);
    return std::make_pair(winner(list, u"margin-top"), winner(list, u"color"));
  };
  // The default sheet: weight 0, below any author rule.
  EXPECT_EQ(run(u"", nullptr).first, "1em");
  EXPECT_EQ(run(u"p { margin-top: 2px }", nullptr).first, "2px");
  // A universal author rule has weight 0 too, and wins on order.
  EXPECT_EQ(run(u"* { margin-top: 3px }", nullptr).first, "3px");
  EXPECT_EQ(run(u"p { color: red }", u"color: green").second, "green");
  EXPECT_EQ(run(u"p { color: red !important }", u"color: green").second, "red");
  EXPECT_EQ(run(u"p { color: red !important }", u"color: green !important").second, "red");
  // A universal !important rule meets inline style on its level; the
  // element's own sheet comes last.
  EXPECT_EQ(run(u"* { color: red !important }", u"color: green").second, "green");
}

TEST(CSSCascade, DisabledMediaContributesNothing) {
  TCSSStyleSheet sheet;
  sheet.Parse(u"p { color: blue } @media print { p { color: red } } @media (max-width: 600px) { p { color: "
              u"green } }"_hs);
  TCSSElement doc;
  doc.Parse(u"<p>x"_hs);
  auto color = [&] {
    TCSSWeightList list;
    sheet.GetElementSelectors(element(doc, u"p"), list, &sheet.Main, 0);
    return winner(list, u"color");
  };
  sheet.TestMediaSets(cmScreen, 1024, 0);
  EXPECT_EQ(color(), "blue");
  sheet.TestMediaSets(cmScreen, 500, 0);
  EXPECT_EQ(color(), "green");
  sheet.TestMediaSets(cmPrint, 1024, 0);
  EXPECT_EQ(color(), "red");
}

TEST(CSSCascade, PseudoElementsAndStates) {
  TCSSStyleSheet sheet;
  sheet.Parse(u"p::before { content: 'x'; color: red } div p::after { content: 'y' } a:hover { color: blue }"
              u" .m::marker { color: green }"_hs);
  TCSSElement doc;
  doc.Parse(u"<p>x</p><a>y</a>"_hs);
  TCSSElement* p = element(doc, u"p");
  TCSSPseudoClasses set = 0;
  sheet.GetElementPseudoClasses(p, set);
  // The coarse check ignores ancestors: "div p::after" counts.
  EXPECT_EQ(set, PCBit(pcBefore) | PCBit(pcAfter));
  TCSSWeightList list;
  sheet.GetElementSelectors(p, list, sheet.Maps(pcBefore), PCBit(pcBefore));
  EXPECT_EQ(winner(list, u"color"), "red");
  list.Clear();
  sheet.GetElementSelectors(p, list, sheet.Maps(pcAfter), PCBit(pcAfter));
  EXPECT_EQ(list.Count(), 0); // the precise pass looks at the ancestors
  list.Clear();
  sheet.GetElementSelectors(p, list, &sheet.Main, 0);
  EXPECT_EQ(list.Count(), 0); // pseudo-element rules stay out of the element's own pass

  TCSSElement* a = element(doc, u"a");
  list.Clear();
  sheet.GetElementSelectors(a, list, &sheet.Main, 0);
  EXPECT_EQ(winner(list, u"color"), "<none>");
  a->CurrentPC = PCBit(pcHover);
  sheet.GetElementSelectors(a, list, &sheet.Main, 0);
  EXPECT_EQ(winner(list, u"color"), "blue");
}

TEST(CSSCascade, OwnSheetTakesEveryUniversalRule) {
  TCSSStyleSheet own;
  own.ParseValues(u"color: red; margin-top: 1px"_hs, static_cast<int>(kCSSImportantWeight));
  own.Parse(u"* { color: blue }"_hs, 5);
  TCSSWeightList list;
  own.GetAllSelectors(list);
  EXPECT_EQ(list.Count(), 3);
  EXPECT_EQ(winner(list, u"color"), "red");
  EXPECT_EQ(winner(list, u"margin-top"), "1px");
}
