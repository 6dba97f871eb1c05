#include "htcore/style/css_cascade.h"
#include "htcore/style/css_sheet.h"
#include "htcore/style/styled_node.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace ht;

namespace {

std::string u8(const hstring& s) { return s.toUtf8(); }

TStyledHTMLNode* find(TStyledHTMLNode& doc, const char16_t* tag) {
  return static_cast<TStyledHTMLNode*>(doc.FindNode(hstring(tag)));
}

// The declarations the element's own sheet gives it, as "name:value" in the
// order the cascade sees them (winners last).
std::string own_values(TStyledHTMLNode* n) {
  TCSSStyleSheet* sheet = n->PrepareSelfStyle();
  if (!sheet)
    return "<none>";
  TCSSWeightList list;
  sheet->GetAllSelectors(list);
  std::string out;
  for (int i = 0; i < list.Count(); ++i) {
    const TCSSValue* v = list.GetValue(i);
    std::string text;
    for (const TCSSToken& t : v->Tokens)
      text += (text.empty() ? "" : " ") + u8(t.Name);
    out += (out.empty() ? "" : ";") + u8(v->Name) + ":" + text;
  }
  return out;
}

} // namespace

TEST(StyledNode, RenamesTagsTheSingleRootCannotHold) {
  struct {
    const char16_t* html;
    const char* path_tag; // the tag to look for
    bool present;
  } cases[] = {
      {u"<html><body><div><body>x</body></div></body></html>", "xbody", true},
      {u"<html><body><p>a</p></body></html>", "xbody", false},
      {u"<html><body><div><html>x</html></div></body></html>", "xhtml", true},
      {u"<svg><foreignObject><body>x</body></foreignObject></svg>", "xbody", false},
  };
  for (const auto& c : cases) {
    TStyledHTMLNode doc;
    doc.Parse(c.html);
    EXPECT_EQ(doc.FindNode(hstring::FromUtf8(c.path_tag)) != nullptr, c.present) << u8(hstring(c.html));
  }
  // The nested body keeps its content and closes where its end tag says.
  TStyledHTMLNode doc;
  doc.Parse(u"<html><body><div><body>x</body></div><p>after</p></body></html>");
  THtNode* xb = doc.FindNode(u"xbody"_hs);
  ASSERT_NE(xb, nullptr);
  EXPECT_EQ(u8(xb->Parent()->FTag), "div");
  EXPECT_EQ(u8(doc.FindNode(u"p"_hs)->Parent()->FTag), "body");
}

TEST(StyledNode, ColourTagBecomesSpanInThatColour) {
  TStyledHTMLNode doc;
  doc.Parse(u"<p><c:red>text</c:red> after</p>");
  TStyledHTMLNode* span = find(doc, u"span");
  ASSERT_NE(span, nullptr);
  EXPECT_EQ(u8(span->GetAttribute(u"color"_hs)), "red");
  EXPECT_EQ(u8(span->GetInnerText()), "text");
  EXPECT_EQ(u8(span->Parent()->FTag), "p"); // the end tag closed it
  EXPECT_EQ(own_values(span), "color:red");
}

TEST(StyledNode, ClassRecordsAndMultiClass) {
  TStyledHTMLNode doc;
  doc.Parse(u"<p class='a  B'>x</p><i class='one'>y</i>");
  TStyledHTMLNode* p = find(doc, u"p");
  ASSERT_EQ(p->FClassHashes.size(), 3u);
  EXPECT_EQ(u8(p->FClassHashes[0].s), "a");
  EXPECT_EQ(p->FClassHashes[1].hash, 0);
  EXPECT_TRUE(p->FClassHashes[1].s.empty());
  EXPECT_EQ(u8(p->FClassHashes[2].s), "b");
  EXPECT_TRUE(p->HasFlag(efMultiClass));
  EXPECT_TRUE(p->HasClass(u"b"_hs));
  TStyledHTMLNode* i = find(doc, u"i");
  EXPECT_FALSE(i->HasFlag(efMultiClass));
  i->AddClass(u"two"_hs);
  EXPECT_TRUE(i->HasFlag(efMultiClass));
  EXPECT_TRUE(i->HasClass(u"TWO"_hs));
  EXPECT_EQ(u8(i->GetAttribute(u"class"_hs)), "one two");
  i->RemoveClass(u"one"_hs);
  EXPECT_EQ(u8(i->GetAttribute(u"class"_hs)), "two");
  EXPECT_FALSE(i->HasClass(u"one"_hs));
  // A class change asks for a new cascade.
  i->Flags |= EFBit(efStyleCalculated);
  i->SetAttribute(u"class"_hs, u"three"_hs);
  EXPECT_FALSE(i->HasFlag(efStyleCalculated));
  EXPECT_TRUE(i->HasClass(u"three"_hs));
}

TEST(StyledNode, PresentationalAttributes) {
  struct {
    const char16_t* html;
    const char16_t* tag;
    const char* values;
  } cases[] = {
      {u"<div align=center>x</div>", u"div", "text-align:xcenter"},
      {u"<div align=Centre>x</div>", u"div", "text-align:xcenter"},
      {u"<p align=right>x</p>", u"p", "text-align:right"},
      {u"<table align=center><tr><td>x</table>", u"table", "<none>"},
      {u"<td background='a b.png'>x", u"td", "background-image:a b.png"},
      {u"<div bgcolor=#ff0000>x</div>", u"div", "background-color:ff0000"},
      {u"<div bgcolor=''>x</div>", u"div", "<none>"},
      {u"<span color=blue>x</span>", u"span", "color:blue"},
      {u"<div dir=rtl>x</div>", u"div", "direction:rtl"},
      {u"<font face='Arial'>x</font>", u"font", "font-family:Arial"},
      {u"<td height=20 width=50%>x", u"td", "height:20px;width:50%"},
      {u"<td nowrap>x", u"td", "white-space:nowrap"},
      {u"<textarea wrap=soft>x</textarea>", u"textarea", "white-space:pre-wrap"},
      {u"<textarea wrap=hard>x</textarea>", u"textarea", "<none>"},
      {u"<td valign=top>x", u"td", "vertical-align:top"},
      {u"<td valign=sideways>x", u"td", "<none>"},
      {u"<body leftmargin=3 topmargin=4>x</body>", u"body", "margin-left:3px;margin-top:4px"},
      {u"<body marginwidth=5>x</body>", u"body", "margin-left:5px;margin-right:5px"},
      {u"<body marginheight=6 text=green>x</body>", u"body",
       "margin-top:6px;margin-bottom:6px;color:green"},
      {u"<div leftmargin=3>x</div>", u"div", "<none>"},
      {u"<div style='color:red' bgcolor=blue>x</div>", u"div", "color:red;background-color:blue"},
      {u"<div bgcolor='red; position: fixed'>x</div>", u"div", "background-color:red"}, // no smuggling
      {u"<font face='\"a;b\", serif'>x</font>", u"font", "font-family:a;b , serif"},
      // The presentational value comes after the style attribute and replaces it.
      {u"<div style='color:red' color=blue>x</div>", u"div", "color:blue"},
  };
  for (const auto& c : cases) {
    TStyledHTMLNode doc;
    doc.Parse(c.html);
    TStyledHTMLNode* n = find(doc, c.tag);
    ASSERT_NE(n, nullptr) << u8(hstring(c.html));
    EXPECT_EQ(own_values(n), c.values) << u8(hstring(c.html));
  }
}

TEST(StyledNode, FontSizeAttribute) {
  struct {
    const char16_t* size;
    const char* px; // "" for none
  } cases[] = {
      {u"1", "10"},  {u"2", "13"},  {u"3", "16"},  {u"4", "18"},     {u"5", "24"}, {u"6", "32"},
      {u"7", "48"},  {u"9", "9"},   {u"+1", "18"}, {u"+4", "48"},    {u"-1", "13"}, {u"-2", "10"},
      {u"abc", "10"}, {u"12pt", "12"}, {u"1pt", ""}, {u"0", ""},
  };
  for (const auto& c : cases) {
    TStyledHTMLNode doc;
    doc.Parse(u"<font size='"_hs + c.size + u"'>x</font>");
    std::string expected = *c.px ? std::string("font-size:") + c.px + "px" : "<none>";
    EXPECT_EQ(own_values(find(doc, u"font")), expected) << u8(hstring(c.size));
  }
  TStyledHTMLNode doc;
  doc.Parse(u"<span size=5>x</span>");
  EXPECT_EQ(own_values(find(doc, u"span")), "<none>");
}

TEST(StyledNode, AttributeChangesReachTheOwnSheet) {
  TStyledHTMLNode doc;
  doc.Parse(u"<div bgcolor=red style='margin:1px'>x</div>");
  TStyledHTMLNode* d = find(doc, u"div");
  const std::string margins = "margin:1px;margin-top:1px;margin-right:1px;margin-bottom:1px;margin-left:1px;";
  EXPECT_EQ(own_values(d), margins + "background-color:red");
  d->SetAttribute(u"bgcolor"_hs, u"blue"_hs); // into the built sheet at once
  EXPECT_TRUE(d->HasFlag(efSelfStyleProcessed));
  EXPECT_EQ(own_values(d), margins + "background-color:blue");
  d->SetAttribute(u"style"_hs, u"color: green"_hs);
  EXPECT_EQ(own_values(d), "color:green;background-color:blue");
  d->SetAttribute(u"bgcolor"_hs, hstring());
  EXPECT_EQ(own_values(d), "color:green");
  EXPECT_TRUE(d->FVirtualSelfStyle.empty());
}

TEST(StyledNode, AddCSSAndClearCSSRoundTrip) {
  TStyledHTMLNode doc;
  doc.Parse(u"<p style='color:red'>x</p>");
  TStyledHTMLNode* p = find(doc, u"p");
  p->Flags |= EFBit(efStyleCalculated);
  p->AddCSS(u"margin-left: 2px; color: blue"_hs);
  EXPECT_FALSE(p->HasFlag(efStyleCalculated));
  EXPECT_EQ(own_values(p), "color:blue;margin-left:2px");
  EXPECT_EQ(u8(p->GetAttribute(u"style"_hs)), "color:red"); // not persisted
  p->AddCSS(u"padding-top: 3px"_hs, true);
  EXPECT_EQ(u8(p->GetAttribute(u"style"_hs)), "color:blue;margin-left:2px;padding-top:3px;");
  // Writing the attribute from the sheet does not throw the sheet away.
  EXPECT_TRUE(p->HasFlag(efSelfStyleProcessed));
  p->ClearCSS(u"color"_hs, true);
  EXPECT_EQ(u8(p->GetAttribute(u"style"_hs)), "margin-left:2px;padding-top:3px;");
  EXPECT_EQ(own_values(p), "margin-left:2px;padding-top:3px");
  p->ClearCSS(u"margin-left"_hs);
  EXPECT_EQ(own_values(p), "padding-top:3px");
  p->ClearCSS(u"padding-top"_hs, true);
  EXPECT_FALSE(p->HasAttribute(u"style"_hs));
  EXPECT_EQ(own_values(p), "");
  // A parse of the attribute anew brings back what was not persisted.
  p->SetAttribute(u"style"_hs, u"color: red"_hs);
  p->AddCSS(u"color: blue"_hs);
  p->SetAttribute(u"style"_hs, u"color: green"_hs);
  EXPECT_EQ(own_values(p), "color:green");
}

TEST(StyledNode, AddCSSWeightsAndImportance) {
  TStyledHTMLNode doc;
  doc.Parse(u"<p style='color:red'>x</p>");
  TStyledHTMLNode* p = find(doc, u"p");
  p->AddCSS(u"color: blue"_hs, false, 5);
  // A rule of its own weight beside the inline one; the inline one is heavier.
  EXPECT_EQ(own_values(p), "color:blue;color:red");
  p->AddCSS(u"margin-top: 1px !important"_hs);
  TCSSWeightList list;
  p->SelfStyleSheet->GetAllSelectors(list);
  ASSERT_EQ(list.Count(), 3);
  EXPECT_EQ(list.Item(0).Weight, 5u);
  EXPECT_EQ(list.Item(1).Weight, kCSSImportantWeight);
  EXPECT_EQ(list.Item(2).Weight, kCSSImportantWeight); // !important keeps the top byte
}

TEST(StyledNode, VirtualCSSStaysOutOfTheDocument) {
  TStyledHTMLNode doc;
  doc.Parse(u"<div style='color:red'>x</div>");
  TStyledHTMLNode* d = find(doc, u"div");
  d->AddVirtualCSS(u"color: blue; margin-top: 1px"_hs);
  d->AddVirtualCSS2(u"margin-top"_hs, u"2px"_hs);
  EXPECT_EQ(u8(d->FVirtualSelfStyle), "color: blue;margin-top:2px;");
  EXPECT_EQ(own_values(d), "color:blue;margin-top:2px");
  d->CSS(u"font-family: 'a;b'"_hs); // a quoted semicolon is no separator
  EXPECT_EQ(u8(d->FVirtualSelfStyle), "color: blue;margin-top:2px;font-family: 'a;b';");
  // With a sheet built, an edit goes into it at once.
  EXPECT_TRUE(d->PrepareSelfStyle());
  d->AddVirtualCSS(u"margin-top: 4px"_hs);
  EXPECT_TRUE(d->HasFlag(efSelfStyleProcessed));
  EXPECT_EQ(own_values(d), "color:blue;margin-top:4px;font-family:a;b");
  EXPECT_EQ(u8(d->GetAttribute(u"style"_hs)), "color:red");
  d->ClearCSS(u"margin-top"_hs);
  EXPECT_EQ(u8(d->FVirtualSelfStyle), "color: blue;font-family: 'a;b';");
}

TEST(StyledNode, SharedSheetIsCopiedOnWrite) {
  TStyledHTMLNode doc;
  doc.Parse(u"<p style='color:red'>a</p><p style='color:red'>b</p><p>c</p>");
  auto* a = static_cast<TStyledHTMLNode*>(doc.NodebyNameIndex(u"p"_hs, 0));
  auto* b = static_cast<TStyledHTMLNode*>(doc.NodebyNameIndex(u"p"_hs, 1));
  auto* c = static_cast<TStyledHTMLNode*>(doc.NodebyNameIndex(u"p"_hs, 2));
  TCSSStyleSheet* shared = a->PrepareSelfStyle();
  b->ShareSelfStyleSheet(*a);
  c->ShareSelfStyleSheet(*a);
  EXPECT_EQ(b->SelfStyleSheet, shared);
  EXPECT_EQ(shared->RefCounter, 2);
  a->AddCSS(u"margin-top: 1px"_hs); // a takes a private copy
  EXPECT_NE(a->SelfStyleSheet, shared);
  EXPECT_EQ(shared->RefCounter, 1);
  EXPECT_EQ(own_values(a), "color:red;margin-top:1px");
  EXPECT_EQ(own_values(b), "color:red");
  b->ClearSelfStyleSheet(); // drops its share; c frees the sheet with the document
  EXPECT_EQ(shared->RefCounter, 0);
  EXPECT_EQ(c->SelfStyleSheet, shared);
  // The first holder may go first.
  TStyledHTMLNode doc2;
  doc2.Parse(u"<i style='color:red'>a</i><b>b</b>");
  find(doc2, u"b")->ShareSelfStyleSheet(*find(doc2, u"i"));
  doc2.DeleteChild(doc2.FindNode(u"i"_hs));
  EXPECT_EQ(own_values(find(doc2, u"b")), "color:red");
}

TEST(StyledNode, RecursiveEdits) {
  TStyledHTMLNode doc;
  doc.Parse(u"<div><p>a<span>b</span></p><ul><li>c</li></ul></div>");
  TStyledHTMLNode* div = find(doc, u"div");
  div->AddCSSRecursive(u"color: red"_hs);
  for (const char16_t* tag : {u"div", u"p", u"span", u"ul", u"li"})
    EXPECT_EQ(own_values(find(doc, tag)), "color:red") << u8(hstring(tag));
  // An element known to be inline is left out with its subtree.
  TStyledHTMLNode* p = find(doc, u"p");
  p->EnsureStyle()->FDisplay = dsInline;
  p->Flags |= EFBit(efStyleCalculated);
  div->AddCSSRecursive(u"margin-top: 1px"_hs);
  EXPECT_EQ(own_values(p), "color:red");
  EXPECT_EQ(own_values(find(doc, u"span")), "color:red");
  EXPECT_EQ(own_values(find(doc, u"li")), "color:red;margin-top:1px");
  div->ClearCSSRecursive(u"color"_hs);
  EXPECT_EQ(own_values(find(doc, u"span")), "");
  EXPECT_EQ(own_values(find(doc, u"li")), "margin-top:1px");
}

TEST(StyledNode, ListCounterText) {
  struct {
    TListStyleType type;
    int value;
    const char16_t* text;
  } cases[] = {
      {lstLowerAlpha, 1, u"a"},      {lstLowerAlpha, 26, u"z"},       {lstLowerAlpha, 27, u"{"},
      {lstUpperLatin, 3, u"C"},      {lstLowerLatin, 2, u"b"},        {lstUpperAlpha, 0, u"0"},
      {lstUpperRoman, 0, u""},       {lstUpperRoman, 1, u"I"},        {lstUpperRoman, 4, u"IV"},
      {lstUpperRoman, 9, u"IX"},     {lstUpperRoman, 14, u"XIV"},     {lstUpperRoman, 40, u"XL"},
      {lstUpperRoman, 90, u"XC"},    {lstUpperRoman, 1994, u"MCMXCIV"}, {lstUpperRoman, 3999, u"MMMCMXCIX"},
      {lstUpperRoman, 4000, u"4000"}, {lstLowerRoman, 2024, u"mmxxiv"}, {lstDecimal, 42, u"42"},
      {lstDisc, -3, u"-3"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(u8(ListCountertoString(c.type, c.value)), u8(hstring(c.text))) << c.type << " " << c.value;
}

TEST(StyledNode, CountersSearchOwnSiblingsThenParents) {
  TStyledHTMLNode doc;
  doc.Parse(u"<ol><li>a</li><li>b<ul><li>c</li></ul></li></ol><h1>x</h1><h2>y</h2><h2>z</h2>");
  auto* ol = find(doc, u"ol");
  auto* li1 = static_cast<TStyledHTMLNode*>(ol->GetNode(0));
  auto* li2 = static_cast<TStyledHTMLNode*>(ol->GetNode(1));
  auto* inner = static_cast<TStyledHTMLNode*>(find(doc, u"ul")->GetNode(0));
  ol->ResetCSSCounter(u"item"_hs, 0);
  EXPECT_TRUE(ol->HasFlag(efHasCounters));
  li1->IncrementCSSCounter(u"item"_hs);
  li2->IncrementCSSCounter(u"item"_hs);
  inner->IncrementCSSCounter(u"item"_hs, 5);
  EXPECT_EQ(ol->CSSCounterValue(u"item"_hs), 7);
  EXPECT_EQ(inner->CSSCounterValue(u"item"_hs), 7);
  // A counter reset on a previous sibling is in scope for the following ones.
  auto* h1 = find(doc, u"h1");
  h1->ResetCSSCounter(u"sub"_hs, 10);
  auto* h2a = static_cast<TStyledHTMLNode*>(h1->NextSibling());
  auto* h2b = static_cast<TStyledHTMLNode*>(h2a->NextSibling());
  h2a->IncrementCSSCounter(u"sub"_hs);
  h2b->IncrementCSSCounter(u"sub"_hs);
  EXPECT_EQ(h2b->CSSCounterValue(u"sub"_hs), 12);
  // Without a counter in scope nothing is made.
  li1->IncrementCSSCounter(u"sub"_hs);
  EXPECT_FALSE(li1->HasFlag(efHasCounters));
  EXPECT_EQ(li1->CSSCounterValue(u"sub"_hs), 0);
  h1->ResetCSSCounter(u"sub"_hs, 1); // a reset again sets the value, no second entry
  EXPECT_EQ(h1->Counters.size(), 1u);
  EXPECT_EQ(h2b->CSSCounterValue(u"sub"_hs), 1);
}

TEST(StyledNode, SetFlagWalksUpDownAndStops) {
  TStyledHTMLNode doc;
  doc.Parse(u"<div><p><b>x</b></p><i>y</i></div>");
  auto* div = find(doc, u"div");
  auto* p = find(doc, u"p");
  auto* b = find(doc, u"b");
  auto* i = find(doc, u"i");
  p->CreatePseudo(pcBefore);
  b->SetFlag(efNeedRecalc, true, true, false);
  EXPECT_TRUE(b->HasFlag(efNeedRecalc) && p->HasFlag(efNeedRecalc) && div->HasFlag(efNeedRecalc));
  EXPECT_FALSE(i->HasFlag(efNeedRecalc));
  div->SetFlag(efNeedRecalc, false, false, true);
  EXPECT_FALSE(b->HasFlag(efNeedRecalc) || p->HasFlag(efNeedRecalc) || div->HasFlag(efNeedRecalc));
  div->SetFlag(efDrawn, true, false, true, p); // p gets it, its subtree does not
  EXPECT_TRUE(div->HasFlag(efDrawn) && p->HasFlag(efDrawn) && i->HasFlag(efDrawn));
  EXPECT_FALSE(b->HasFlag(efDrawn) || p->Before->HasFlag(efDrawn));
  div->SetFlag(efDrawn, true, false, true);
  EXPECT_TRUE(p->Before->HasFlag(efDrawn) && b->HasFlag(efDrawn));
  b->SetFlag(efHasOverflow, true, true, false, p); // up to p, not past it
  EXPECT_TRUE(p->HasFlag(efHasOverflow));
  EXPECT_FALSE(div->HasFlag(efHasOverflow));
  // A subtree drawn completely is not walked again.
  p->Flags |= EFBit(efCompletelyDrawn);
  div->SetFlag(efCompletelyDrawn, true, false, true);
  EXPECT_FALSE(b->HasFlag(efCompletelyDrawn));
  EXPECT_TRUE(i->HasFlag(efCompletelyDrawn));
}

TEST(StyledNode, PseudoElementsInheritButStayOutOfTheTree) {
  TStyledHTMLNode doc;
  doc.Parse(u"<p>x</p>");
  auto* p = find(doc, u"p");
  TStyledHTMLNode* before = p->CreatePseudo(pcBefore);
  ASSERT_NE(before, nullptr);
  EXPECT_EQ(p->CreatePseudo(pcBefore), before);
  EXPECT_EQ(p->PseudoElement(pcBefore), before);
  EXPECT_EQ(before->ParentElement(), p);
  EXPECT_EQ(u8(before->FTag), "::before");
  EXPECT_EQ(p->GetCount(), 1);
  EXPECT_EQ(p->CreatePseudo(pcHover), nullptr);
  p->CreatePseudo(pcMarker)->AddCSS(u"color: red"_hs);
  EXPECT_EQ(u8(p->GetCSSContent(u"\u2022 "_hs)), "\xE2\x80\xA2 ");
  p->FreePseudo(pcBefore);
  EXPECT_EQ(p->Before, nullptr);
}

TEST(StyledNode, HostDefaults) {
  TStyledHTMLNode doc;
  doc.Parse(u"<html lang=de><body><p>x</p></body></html>");
  auto* p = find(doc, u"p");
  EXPECT_EQ(p->GetViewPortWidth(), 1024);
  EXPECT_EQ(p->GetViewPortHeight(), 768);
  EXPECT_EQ(p->GetDefaultTextColor(), 0xFF000000u);
  EXPECT_EQ(p->DefaultTextAlign(), thLeft);
  EXPECT_FALSE(p->DefaultFontFamily().empty());
  EXPECT_EQ(u8(p->Lang()), "de");
  p->Flags |= EFBit(efStyleCalculated);
  p->StyleChanged(true);
  EXPECT_FALSE(p->HasFlag(efStyleCalculated));
}

// Real pages: every element built and freed, with its own sheet where it has
// one and pseudo elements hung on some, which a sanitizer build checks.
TEST(StyledNode, RealPagesBuildAndFree) {
  std::vector<std::filesystem::path> files;
  std::error_code ec;
  for (auto it = std::filesystem::recursive_directory_iterator("/usr/share/doc", ec);
       !ec && it != std::filesystem::recursive_directory_iterator(); it.increment(ec))
    if (it->is_regular_file(ec) && it->path().extension() == ".html" && it->file_size(ec) < 1000000)
      files.push_back(it->path());
  if (files.empty())
    GTEST_SKIP() << "no HTML documents under /usr/share/doc";
  std::sort(files.begin(), files.end());
  const size_t step = files.size() / 12 + 1; // a spread of a dozen pages
  for (size_t f = 0; f < files.size(); f += step) {
    std::ifstream in(files[f], std::ios::binary);
    std::stringstream ss;
    ss << in.rdbuf();
    const std::string bytes = ss.str();
    TStyledHTMLNode doc;
    doc.ParseBytes(bytes.data(), bytes.size());
    int n = 0;
    for (THtNode* node = doc.FirstChild(); node; node = node->NextNode()) {
      auto* s = dynamic_cast<TStyledHTMLNode*>(node);
      ASSERT_NE(s, nullptr) << files[f];
      s->PrepareSelfStyle();
      s->EnsureStyle();
      if (++n % 7 == 0 && !s->IsText())
        s->CreatePseudo(pcAfter)->AddCSS(u"content: 'x'"_hs);
      if (n % 11 == 0 && !s->IsText())
        s->AddCSS(u"margin: 1px"_hs, true);
    }
    EXPECT_GT(n, 0) << files[f];
  }
}
