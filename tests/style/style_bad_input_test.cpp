// Hostile documents through the whole style road: a 10,000-level tree, an
// element with thousands of classes, a sheet of 100k rules, a megabyte style
// attribute. None may overflow the stack, and the cascade must stay linear:
// each case runs at size n and 4n and the second may take at most ten times
// the first (a quadratic cascade takes sixteen). Thread CPU time, the best of
// three, keeps a loaded machine from deciding.
#include "htcore/foundation/hstring.h"
#include "htcore/foundation/text_utils.h"
#include "htcore/style/element_style.h"
#include "htcore/style/style_driver.h"
#include "htcore/style/styled_node.h"

#include <gtest/gtest.h>
#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <time.h>

using namespace ht;

namespace {

double cpu_seconds() {
  timespec t{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

// Best of three runs of Step(n), in seconds.
double best_time(const std::function<void(int)>& Step, int n) {
  double best = 1e9;
  for (int i = 0; i < 3; ++i) {
    double t0 = cpu_seconds();
    Step(n);
    best = std::min(best, cpu_seconds() - t0);
  }
  return best;
}

// Step(4n) takes at most ten times Step(n), with a floor that keeps timer
// granularity out of it.
void expect_linear(const char* what, const std::function<void(int)>& Step, int n) {
  double small = std::max(best_time(Step, n), 2e-3);
  double large = best_time(Step, 4 * n);
  EXPECT_LT(large, 10 * small) << what << ": n=" << n << " took " << small << " s, 4n took " << large << " s";
}

std::u16string num(int i) { return std::u16string(hstring(IntToStr(i)).view()); }

// A document with its driver, styled once (which parses the sheets); Restyle
// runs the cascade alone again.
struct TStyled {
  std::unique_ptr<TStyledHTMLNode> Doc;
  std::unique_ptr<TStyleDriver> Driver;

  explicit TStyled(std::unique_ptr<TStyledHTMLNode> ADoc)
      : Doc(std::move(ADoc)), Driver(std::make_unique<TStyleDriver>(Doc.get())) {
    Driver->Run();
  }
  void Restyle() {
    Driver->Invalidate();
    Driver->Run();
  }
};

// Every kind of getter, so that a walk up the tree or a resolution that
// recurses shows itself.
void read_style(TStyledHTMLNode* e) {
  TBaseElementStyle* s = e->Style();
  ASSERT_TRUE(s);
  s->FontSize().GetFPixels();
  s->LineHeight().GetFPixels();
  s->Width();
  s->Height();
  s->MarginLeftPx();
  s->PaddingTopPx();
  s->BorderLeftWidthPx();
  s->TextColor();
  s->BackgroundColor();
  s->TextAlign();
  s->FontFamily();
  s->FontWeight();
  s->Opacity();
  s->ListStyleType();
  s->OverflowX();
  s->Direction();
}

// A chain of Depth nested divs under the body, built in slices the parser
// takes whole (it flattens deeper nesting of one text).
std::unique_ptr<TStyledHTMLNode> deep_document(int Depth, const std::u16string& Sheet) {
  auto doc = std::make_unique<TStyledHTMLNode>();
  doc->Parse(hstring(u"<html><head><style>" + Sheet + u"</style></head><body></body></html>"));
  THtNode* at = doc->FindNode(u"body"_hs);
  const int slice = 200;
  std::u16string open, close;
  for (int i = 0; i < slice; ++i) {
    open += u"<div class=d>";
    close += u"</div>";
  }
  for (int made = 0; made < Depth; made += slice) {
    static_cast<THtmlNode*>(at)->SetInnerHTML(hstring(open + u"x" + close));
    while (at->FirstChild() && !at->FirstChild()->FTag.empty())
      at = at->FirstChild();
  }
  return doc;
}

TStyledHTMLNode* deepest(THtNode* root) {
  THtNode* at = root->FindNode(u"body"_hs);
  while (at->FirstChild() && !at->FirstChild()->FTag.empty())
    at = at->FirstChild();
  return static_cast<TStyledHTMLNode*>(at);
}

int depth_of(const THtNode* n) {
  int d = 0;
  for (; n->FParent; n = n->FParent)
    ++d;
  return d;
}

} // namespace

TEST(StyleBadInput, DeepTreeNeitherOverflowsNorTurnsQuadratic) {
  // Every level inherits explicitly, so that resolving the deepest element
  // reaches the root through every ancestor.
  const std::u16string sheet = u"div { font-size: inherit; line-height: inherit; color: inherit; "
                               u"text-align: inherit; font-family: inherit; margin-left: 1px }"
                               u"body { font-size: 20px; color: #123456; text-align: right; line-height: 1.5 }"
                               u".d { padding-top: 1em }";
  TStyled big(deep_document(10000, sheet));
  TStyledHTMLNode* last = deepest(big.Doc.get());
  ASSERT_GE(depth_of(last), 10000);
  read_style(last);
  EXPECT_EQ(last->Style()->TextColor(), 0xFF123456u);
  EXPECT_FLOAT_EQ(last->Style()->FontSize().GetFPixels(), 20);
  EXPECT_EQ(last->Style()->TextAlign(), thRight);
  EXPECT_FLOAT_EQ(last->MarginLeft, 1);
  EXPECT_FLOAT_EQ(last->Style()->PaddingTopPx(), 20);

  TStyled small(deep_document(2500, sheet));
  expect_linear(
      "deep tree", [&](int n) { (n > 2500 ? big : small).Restyle(); }, 2500);
}

TEST(StyleBadInput, ThousandsOfClassesOnOneElement) {
  // A fixed sheet that names some of the classes, simple and compound.
  auto make = [](int classes) {
    std::u16string sheet, list;
    for (int i = 0; i < classes; ++i)
      list += u"c" + num(i) + u" ";
    for (int i = 0; i < 200; ++i)
      sheet += u".c" + num(i * 7) + u" { margin-left: " + num(i) + u"px }"
               u".c" + num(i) + u".c" + num(i + 1) + u" { color: #" + num(100 + i) + u"}";
    auto doc = std::make_unique<TStyledHTMLNode>();
    doc->Parse(hstring(u"<style>" + sheet + u"</style><p class='" + list + u"'>x</p><p class=c5>y</p>"));
    return doc;
  };
  TStyled doc(make(5000));
  auto* p = static_cast<TStyledHTMLNode*>(doc.Doc->FindNode(u"p"_hs));
  read_style(p);
  EXPECT_FLOAT_EQ(p->Style()->MarginLeftPx(), 199); // the last rule of equal weight wins
  EXPECT_EQ(p->Style()->TextColor(), 0xFF229999u); // #299

  TStyled docs[2] = {TStyled(make(4000)), TStyled(make(16000))};
  expect_linear(
      "classes", [&](int n) { docs[n > 4000].Restyle(); }, 4000);
}

TEST(StyleBadInput, HundredThousandRules) {
  // Rules of every map (ids, classes, tags, descendants, and a few hundred in
  // the maps that every element visits: attribute conditions, structural
  // pseudo classes) over a small document; an element matches a few hundred
  // at most.
  auto make = [](int rules) {
    std::u16string sheet = u"<style>";
    for (int i = 0; i < rules; ++i) {
      std::u16string n = num(i);
      int kind = i % 100;
      if (kind < 30)
        sheet += u"#i" + n + u" { color: red }";
      else if (kind < 60)
        sheet += u".c" + n + u" { margin-top: 1px }";
      else if (kind < 80)
        sheet += u"p.c" + num(i % 50) + u" { padding-left: " + num(i % 9) + u"px }";
      else if (kind < 98)
        sheet += u"div .c" + num(i % 50) + u" span { color: blue }";
      else if (kind == 98)
        sheet += u"[data-x='" + n + u"'] { font-weight: bold }";
      else
        sheet += u"li:nth-child(" + n + u") { text-align: right }";
    }
    sheet += u"</style>";
    std::u16string body;
    for (int i = 0; i < 10; ++i)
      body += u"<div id=i" + num(i * 100) + u"><p class='c" + num(i) + u" c" + num(i * 100 + 30) +
              u"' data-x=" + num(i * 100 + 98) + u"><span>x</span></p><ul><li>a<li>b</ul></div>";
    auto doc = std::make_unique<TStyledHTMLNode>();
    doc->Parse(hstring(sheet + body));
    return doc;
  };
  TStyled big(make(100000));
  for (THtNode* e = big.Doc->FirstChild(); e; e = e->NextNode())
    if (auto* s = dynamic_cast<TStyledHTMLNode*>(e); s && s->Style())
      read_style(s);
  auto* p = static_cast<TStyledHTMLNode*>(big.Doc->FindNode(u"p"_hs));
  EXPECT_EQ(p->Style()->FontWeight(), 700);
  EXPECT_FLOAT_EQ(p->Style()->MarginTopPx(), 1);

  TStyled small(make(25000));
  expect_linear(
      "rules", [&](int n) { (n > 25000 ? big : small).Restyle(); }, 25000);
}

// Rules that all match one element and weigh the same: a weight list that
// searched its run of equal weights for each new entry was quadratic here.
TEST(StyleBadInput, ManyRulesOfOneWeightMatchingOneElement) {
  auto make = [](int rules) {
    std::u16string sheet = u"<style>";
    for (int i = 0; i < rules; ++i)
      sheet += u"p { margin-left: " + num(i % 50) + u"px }";
    auto doc = std::make_unique<TStyledHTMLNode>();
    doc->Parse(hstring(sheet + u"</style><p>x</p>"));
    return doc;
  };
  TStyled small(make(5000)), big(make(20000));
  EXPECT_FLOAT_EQ(static_cast<TStyledHTMLNode*>(big.Doc->FindNode(u"p"_hs))->Style()->MarginLeftPx(), 49);
  expect_linear(
      "rules of one weight", [&](int n) { (n > 5000 ? big : small).Restyle(); }, 5000);
}

TEST(StyleBadInput, MegabyteStyleAttribute) {
  // Many declarations, then one huge value: the element's own sheet is
  // parsed in the cascade.
  auto make = [](int bytes) {
    std::u16string decls;
    for (int i = 0; decls.size() < static_cast<size_t>(bytes) / 2; ++i)
      decls += u"margin-left: " + num(i % 100) + u"px; color: #" + num(100000 + i % 800000) + u"; ";
    decls += u"font-family: '" + std::u16string(bytes / 2, u'a') + u"'; margin-left: 7px";
    auto doc = std::make_unique<TStyledHTMLNode>();
    doc->Parse(hstring(u"<div><p style=\"" + decls + u"\">x</p></div>"));
    return doc;
  };
  TStyled doc(make(1 << 20));
  auto* p = static_cast<TStyledHTMLNode*>(doc.Doc->FindNode(u"p"_hs));
  read_style(p);
  EXPECT_FLOAT_EQ(p->Style()->MarginLeftPx(), 7);
  EXPECT_EQ(p->Style()->FontFamily().size(), (1u << 19));

  // Parse and cascade: the own sheet is made from the attribute in the cascade.
  expect_linear(
      "style attribute", [&](int n) { TStyled d(make(n)); }, 1 << 18);
}
