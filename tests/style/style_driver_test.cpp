#include "htcore/style/computed_css.h"
#include "htcore/style/element_style.h"
#include "htcore/style/style_driver.h"
#include "htcore/style/styled_node.h"

#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <string>

using namespace ht;

namespace {

std::string u8(const hstring& s) { return s.toUtf8(); }

TStyledHTMLNode* by_id(TStyledHTMLNode& doc, const char16_t* id) {
  for (THtNode* n = doc.FirstChild(); n; n = n->NextNode())
    if (auto* e = dynamic_cast<TStyledHTMLNode*>(n); e && e->GetId() == id)
      return e;
  return nullptr;
}

std::string css(TStyledHTMLNode* n, const char16_t* prop) {
  hstring v;
  if (!ComputedCSSValue(n, hstring(prop), v))
    return "<null>";
  return u8(v);
}

} // namespace

TEST(StyleDriver, CascadeOrderEndToEnd) {
  struct {
    const char16_t* html;
    const char16_t* prop;
    const char* value;
  } cases[] = {
      // The default sheet alone.
      {u"<p id=t>x", u"display", "block"},
      {u"<p id=t>x", u"margin-top", "16px"},
      {u"<span id=t>x</span>", u"display", "inline"},
      // Author rules over the default sheet, later over earlier, heavier over later.
      {u"<style>p { display: inline }</style><p id=t>x", u"display", "inline"},
      {u"<style>p { color: red } p { color: blue }</style><p id=t>x", u"color", "rgb(0, 0, 255)"},
      {u"<style>p { color: red !important } p { color: blue }</style><p id=t>x", u"color", "rgb(255, 0, 0)"},
      {u"<style>.a { color: red } p { color: blue }</style><p id=t class=a>x", u"color", "rgb(255, 0, 0)"},
      // Sheets in document order: the second wins a tie.
      {u"<style>p { color: red }</style><style>p { color: blue }</style><p id=t>x", u"color", "rgb(0, 0, 255)"},
      {u"<style>p { color: blue }</style><style>p { color: red }</style><p id=t>x", u"color", "rgb(255, 0, 0)"},
      // Inline style over author rules, !important over inline.
      {u"<style>#t { color: red }</style><p id=t style='color: green'>x", u"color", "rgb(0, 128, 0)"},
      {u"<style>p { color: red !important }</style><p id=t style='color: green'>x", u"color", "rgb(255, 0, 0)"},
      // Inheritance through the getters.
      {u"<style>div { color: red }</style><div><p><span id=t>x</span></div>", u"color", "rgb(255, 0, 0)"},
      {u"<div style='font-size: 20px'><p id=t style='font-size: 150%'>x</div>", u"font-size", "30px"},
      // A media rule that does not apply.
      {u"<style>@media print { p { color: red } } p { color: blue }</style><p id=t>x", u"color",
       "rgb(0, 0, 255)"},
      {u"<style media=print>p { color: red }</style><p id=t>x", u"color", "rgb(0, 0, 0)"},
      // Computed texts.
      {u"<p id=t style='border: 2px solid red'>x", u"border-left-width", "2px"},
      {u"<p id=t style='border-width: 2px'>x", u"border-left-width", "0px"},
      {u"<p id=t style='border: 2px solid red'>x", u"border-top-color", "rgb(255, 0, 0)"},
      {u"<p id=t style='width: 50%; margin-left: auto'>x", u"width", "50%"},
      {u"<p id=t style='width: 50%; margin-left: auto'>x", u"margin-left", "auto"},
      {u"<p id=t style='display: inline-block; font-weight: bold'>x", u"display", "inline-block"},
      {u"<p id=t style='font-weight: bold'>x", u"font-weight", "700"},
      {u"<p id=t style='font-size: 10px; line-height: 2'>x", u"line-height", "20px"},
      {u"<p id=t>x", u"no-such", "<null>"},
      // Pseudo-classes of the tree.
      {u"<style>li:first-child { color: red }</style><ul><li id=t>a<li>b</ul>", u"color", "rgb(255, 0, 0)"},
      {u"<p><a id=t href=x>link</a>", u"color", "rgb(0, 0, 255)"},
      {u"<p><a id=t>anchor</a>", u"color", "rgb(0, 0, 0)"},
  };
  for (auto& c : cases) {
    TStyledHTMLNode doc;
    doc.Parse(hstring(c.html));
    TStyleDriver driver(&doc);
    driver.QuirksMode = false;
    driver.Run();
    TStyledHTMLNode* t = by_id(doc, u"t");
    ASSERT_TRUE(t) << u8(hstring(c.html));
    EXPECT_EQ(css(t, c.prop), c.value) << u8(hstring(c.html));
  }
}

TEST(StyleDriver, HostSheetsLinksAndImports) {
  std::map<std::u16string, std::u16string> files = {
      {u"/s/a.css", u"@import 'b.css'; p { color: red }"},
      {u"/s/b.css", u"@import 'a.css'; p { color: blue; background-color: yellow }"},
  };
  TStyledHTMLNode doc;
  doc.Parse(u"<link rel=stylesheet href=a.css><link rel='alternate stylesheet' href=b.css><p id=t>x"_hs);
  TStyleDriver driver(&doc);
  driver.BaseURL = u"/s/"_hs;
  driver.Loader = [&](const hstring& url) {
    auto it = files.find(std::u16string(url.view()));
    return it == files.end() ? hstring() : hstring(it->second.data(), it->second.size());
  };
  driver.AddSheet(u"p { margin-top: 3px }"_hs);
  driver.Run();
  TStyledHTMLNode* t = by_id(doc, u"t");
  // The importing sheet comes after what it imports; the cycle back to a.css is cut.
  EXPECT_EQ(css(t, u"color"), "rgb(255, 0, 0)");
  EXPECT_EQ(css(t, u"background-color"), "rgb(255, 255, 0)");
  EXPECT_EQ(css(t, u"margin-top"), "3px");
  EXPECT_EQ(driver.Sheets().size(), 3u);
}

TEST(StyleDriver, QuirksSheetOnlyInQuirksMode) {
  for (bool quirks : {false, true}) {
    TStyledHTMLNode doc;
    doc.Parse(u"<table><tr><td id=t>x</table>"_hs);
    TStyleDriver driver(&doc);
    driver.QuirksMode = quirks;
    driver.Run();
    TStyledHTMLNode* td = by_id(doc, u"t");
    ASSERT_TRUE(td && td->Style());
    EXPECT_EQ(td->Style()->FDisplay, dsTableCell);
  }
}

TEST(StyleDriver, RestylesAfterEdits) {
  TStyledHTMLNode doc;
  doc.Parse(u"<style>.on { color: red } .on p { margin-top: 7px }</style><div id=d><p id=t>x</p></div>"
            u"<p id=o>y</p>"_hs);
  TStyleDriver driver(&doc);
  EXPECT_GT(driver.Run(), 4);
  EXPECT_EQ(driver.Run(), 0); // nothing changed
  TStyledHTMLNode* d = by_id(doc, u"d");
  TStyledHTMLNode* t = by_id(doc, u"t");
  EXPECT_EQ(css(t, u"margin-top"), "16px");
  d->AddClass(u"on"_hs);
  int restyled = driver.Run();
  EXPECT_GE(restyled, 2); // the div and what lies below and after it
  EXPECT_EQ(css(d, u"color"), "rgb(255, 0, 0)");
  EXPECT_EQ(css(t, u"color"), "rgb(255, 0, 0)");
  EXPECT_EQ(css(t, u"margin-top"), "7px");
  t->AddCSS(u"margin-top: 9px"_hs);
  driver.Run();
  EXPECT_EQ(css(t, u"margin-top"), "9px");
  t->ClearCSS(u"margin-top"_hs);
  driver.Run();
  EXPECT_EQ(css(t, u"margin-top"), "7px");
  d->RemoveClass(u"on"_hs);
  driver.Run();
  EXPECT_EQ(css(t, u"color"), "rgb(0, 0, 0)");
}

TEST(StyleDriver, MediaQueriesFollowTheViewport) {
  TStyledHTMLNode doc;
  doc.Parse(u"<style>p { color: blue } @media (max-width: 600px) { p { color: red } }</style><p id=t>x"_hs);
  TStyleDriver driver(&doc);
  driver.Run();
  TStyledHTMLNode* t = by_id(doc, u"t");
  EXPECT_EQ(css(t, u"color"), "rgb(0, 0, 255)");
  EXPECT_TRUE(driver.SetViewport(500));
  EXPECT_GT(driver.Run(), 0);
  EXPECT_EQ(css(t, u"color"), "rgb(255, 0, 0)");
  EXPECT_FALSE(driver.SetViewport(400)); // the same rules apply
  EXPECT_EQ(driver.Run(), 0);
  EXPECT_TRUE(driver.SetViewport(800));
  driver.Run();
  EXPECT_EQ(css(t, u"color"), "rgb(0, 0, 255)");
}

TEST(StyleDriver, PseudoElements) {
  TStyledHTMLNode doc;
  doc.Parse(u"<style>p::before { content: '>'; color: red } p.n::before { content: none } p::after { color: "
            u"blue }</style><p id=t>x</p><p id=n class=n>y</p>"_hs);
  TStyleDriver driver(&doc);
  driver.Run();
  TStyledHTMLNode* t = by_id(doc, u"t");
  ASSERT_TRUE(t->Before);
  EXPECT_EQ(css(t->Before.get(), u"color"), "rgb(255, 0, 0)");
  EXPECT_FALSE(t->After); // no content: none made
  EXPECT_FALSE(by_id(doc, u"n")->Before);
}

TEST(StyleDriver, DeepTree) {
  std::u16string html = u"<style>b { color: red }</style>";
  for (int i = 0; i < 10000; ++i)
    html += u"<div>";
  html += u"<b id=t>deep</b>";
  TStyledHTMLNode doc;
  doc.Parse(hstring(html.data(), html.size()));
  TStyleDriver driver(&doc);
  EXPECT_GT(driver.Run(), 256);
  EXPECT_EQ(css(by_id(doc, u"t"), u"color"), "rgb(255, 0, 0)");
}

TEST(ComputedCSS, Texts) {
  EXPECT_EQ(u8(CSSColorText(0xFF102030)), "rgb(16, 32, 48)");
  EXPECT_EQ(u8(CSSColorText(0x80FF0000)), "rgba(255, 0, 0, 0.502)");
  EXPECT_EQ(u8(CSSColorText(0)), "rgba(0, 0, 0, 0)");
  EXPECT_EQ(u8(CSSColorText(0x00FFFFFF)), "rgba(0, 0, 0, 0)");
  EXPECT_EQ(u8(CSSColorText(0x01FFFFFF)), "rgba(255, 255, 255, 0.004)");
  EXPECT_EQ(u8(CSSPixelText(13.3333f)), "13.33px");
  EXPECT_EQ(u8(CSSPixelText(-0.001f)), "0px");
  EXPECT_EQ(u8(CSSPixelText(16)), "16px");
  EXPECT_EQ(u8(CSSPixelText(1.5f)), "1.5px");
}

TEST(StyleDriver, QueryListsReadComputedValues) {
  TStyledHTMLNode doc;
  doc.Parse(u"<style>.a { color: #00f } p { margin-top: 2px }</style><p class=a>x</p><p>y</p>"_hs);
  TStyleDriver driver(&doc);
  driver.Run();
  IHtNodeList l = doc.GetJQueryList(u"p"_hs, false);
  ASSERT_EQ(l->GetCount(), 2);
  EXPECT_EQ(u8(l->GetCSS(u"color"_hs)), "rgb(0, 0, 255)"); // the first node's
  EXPECT_EQ(u8(l->GetCSS(u"Margin-Top"_hs)), "2px");
  EXPECT_EQ(u8(l->GetCSS(u"no-such-property"_hs)), "");
  l->AddClass(u"a"_hs);
  driver.Run();
  EXPECT_EQ(u8(l->Last().GetCSS(u"color"_hs)), "rgb(0, 0, 255)");
}

namespace {

struct TVarStyle : TBaseElementStyle {
  using TBaseElementStyle::TBaseElementStyle;
  void GetCSSVariable(TCSSTokenSequence& Seq) override {
    if (Driver)
      Driver->ResolveVariable(Seq);
  }
  static inline const TStyleDriver* Driver = nullptr;
};

class TVarNode : public TStyledHTMLNode {
  HT_NODE_CLASS(TVarNode)
public:
  std::unique_ptr<TBaseElementStyle> CreateStyle() override { return std::make_unique<TVarStyle>(this); }
};

} // namespace

TEST(StyleDriver, VariablesThroughTheHostStyle) {
  TVarNode doc;
  doc.Parse(u"<style>:root { --main: #f00 } p { color: var(--main); background-color: var(--none, #00f) }"
            u"</style><style>* { --main: #0f0 }</style><p id=t>x"_hs);
  TStyleDriver driver(&doc);
  TVarStyle::Driver = &driver;
  driver.Run();
  TStyledHTMLNode* t = by_id(doc, u"t");
  EXPECT_EQ(css(t, u"color"), "rgb(0, 255, 0)"); // the last sheet's definition
  EXPECT_EQ(css(t, u"background-color"), "rgb(0, 0, 255)");
  TVarStyle::Driver = nullptr;
}
