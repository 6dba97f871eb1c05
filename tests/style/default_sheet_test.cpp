// The default sheets are data; these tests catch typos in them: unknown
// property names, keywords a property does not have, elements left out.
#include "htcore/style/css_properties.h"
#include "htcore/style/css_sheet.h"
#include "htcore/style/css_tokenizer.h"
#include "style/default_sheets.h"

#include <gtest/gtest.h>
#include <set>
#include <string>

using namespace ht;

namespace {

struct TDeclaration {
  std::string name;
  TCSSTokens value;
};

struct TSheetScan {
  std::set<std::string> elements; // type selectors
  std::vector<TDeclaration> declarations;
  int depth = 0;
  int rules = 0;
};

TSheetScan Scan(std::u16string_view text) {
  TSheetScan r;
  TCSSTokens toks = CSSTokenize(hstring(text));
  bool after_colon = false, in_attr = false;
  for (size_t i = 0; i < toks.size(); ++i) {
    const TCSSToken& t = toks[i];
    if (t.CType == ctBlockStart) {
      ++r.depth;
      ++r.rules;
      // declarations up to the block end
      for (++i; i < toks.size() && toks[i].CType != ctBlockEnd; ++i) {
        if (toks[i].CType != ctIdent)
          continue;
        TDeclaration d{toks[i].Name.toUtf8(), {}};
        size_t j = i + 1;
        while (j < toks.size() && toks[j].CType == ctSpace)
          ++j;
        EXPECT_EQ(toks[j].CType, ctColon) << d.name;
        for (++j; j < toks.size() && toks[j].CType != ctSemicolon && toks[j].CType != ctBlockEnd; ++j)
          if (toks[j].CType != ctSpace)
            d.value.push_back(toks[j]);
        r.declarations.push_back(d);
        i = j;
        if (i < toks.size() && toks[i].CType == ctBlockEnd)
          break;
      }
      --r.depth;
      after_colon = false;
      continue;
    }
    if (t.CType == ctBlockEnd)
      --r.depth;
    if (t.CType == ctOpenBr)
      in_attr = true;
    if (t.CType == ctCloseBr)
      in_attr = false;
    if (t.CType == ctIdent && !after_colon && !in_attr && (i == 0 || toks[i - 1].CType != ctDelimiter))
      r.elements.insert(CSSLowerName(t).toUtf8());
    after_colon = t.CType == ctColon;
  }
  return r;
}

// Names the sheets use on purpose without a row of their own.
const std::set<std::string> kNoRow = {"apadding-bottom", "fill", "fill-opacity", "stroke-opacity"};

void CheckDeclarations(const TSheetScan& scan) {
  for (const TDeclaration& d : scan.declarations) {
    const TCSSPropRec* row = CSSPropDictionary().Find(hstring(d.name).view());
    if (!row) {
      EXPECT_TRUE(kNoRow.count(d.name)) << "no such property: " << d.name;
      continue;
    }
    ASSERT_FALSE(d.value.empty()) << d.name;
    const TCSSToken& first = d.value[0];
    if (row->EnumInfo && first.CType == ctIdent && first.Name != u"inherit") {
      int v;
      EXPECT_TRUE(row->IsKeyword(first.Name.view(), v)) << d.name << ": " << first.Name.toUtf8();
    }
    if (row->PropType == cptLength && first.CType == ctIdent) {
      static const std::set<std::u16string> words = {u"auto", u"normal", u"inherit", u"larger", u"smaller"};
      EXPECT_TRUE(words.count(std::u16string(first.Name.view()))) << d.name << ": " << first.Name.toUtf8();
    }
  }
}

TEST(DefaultSheet, DeclarationsNameRowsAndTheirKeywords) {
  TSheetScan scan = Scan(detail::kHTML4StyleSheetText);
  EXPECT_EQ(scan.depth, 0);
  EXPECT_GE(scan.rules, 90);
  EXPECT_GE(scan.declarations.size(), 180u);
  CheckDeclarations(scan);
  TSheetScan quirks = Scan(detail::kHTML4QuirkStyleSheetText);
  EXPECT_EQ(quirks.rules, 4);
  CheckDeclarations(quirks);
}

TEST(DefaultSheet, CoversEveryElementTheBuilderKnows) {
  TSheetScan scan = Scan(detail::kHTML4StyleSheetText);
  const char* tags[] = {
      // void, block, head, formatting and table sets of the tree builder
      "br",
      "img",
      "link",
      "col",
      "hr",
      "frame",
      "input",
      "meta",
      "wbr",
      "address",
      "article",
      "aside",
      "blockquote",
      "center",
      "details",
      "dir",
      "div",
      "dl",
      "fieldset",
      "figcaption",
      "figure",
      "footer",
      "header",
      "hgroup",
      "menu",
      "nav",
      "ol",
      "p",
      "pre",
      "section",
      "summary",
      "ul",
      "h1",
      "h2",
      "h3",
      "h4",
      "h5",
      "h6",
      "base",
      "basefont",
      "bgsound",
      "script",
      "style",
      "title",
      "noscript",
      "a",
      "b",
      "big",
      "code",
      "em",
      "font",
      "i",
      "nobr",
      "s",
      "small",
      "strike",
      "strong",
      "tt",
      "u",
      "td",
      "th",
      "tr",
      "table",
      "tbody",
      "thead",
      "tfoot",
      "colgroup",
      "caption",
      // others the builder and writers name
      "html",
      "head",
      "body",
      "li",
      "dt",
      "dd",
      "span",
      "form",
      "frameset",
      "noframes",
      "datapacket",
      "xbody",
      "textarea",
      "select",
      "button",
      "legend",
      "option",
      "label",
      "svg",
      "iframe",
      "sub",
      "sup",
      "q",
  };
  for (const char* tag : tags)
    EXPECT_TRUE(scan.elements.count(tag)) << tag;
}

// The sheet parser keeps every declaration and every rule: none of them is
// invalid to it.
TEST(DefaultSheet, ParsesWithoutDroppingAnything) {
  struct {
    std::u16string_view text;
    TCSSStyleSheet* sheet;
  } sheets[] = {{detail::kHTML4StyleSheetText, HTML4StyleSheet()},
                {detail::kHTML4QuirkStyleSheetText, HTML4QuirkStyleSheet()}};
  for (auto& s : sheets) {
    TSheetScan scan = Scan(s.text);
    size_t values = 0;
    for (const auto& section : s.sheet->fSections) {
      values += section->Values.size();
      EXPECT_GT(section->Selectors.Count(), 0) << section->AsString().toUtf8();
    }
    EXPECT_EQ(values, scan.declarations.size());
    EXPECT_EQ(s.sheet->fSections.size(), static_cast<size_t>(scan.rules));
  }
}

TEST(DefaultSheet, TellingRulesStandAsWritten) {
  const std::u16string_view text = detail::kHTML4StyleSheetText;
  for (const char16_t* rule : {
           u":link { color: blue; text-decoration: underline; cursor: pointer }",
           u"li { display: list-item; min-height: 1em }",
           u"body {line-height: normal; contenteditable: true}",
           u"tr { display: table-row; padding: 0px!important }",
           u"td, th { display: table-cell; background-color: inherit }",
           u"_body { margin: 8px }",
           u"textarea, input, select { display: inline; margin: 0 2 0 2; box-sizing: border-box }",
           u"table[border] {border-color: #808080;}",
           u"svg {fill-opacity: 1; stroke-opacity: 1; fill: black}",
           u"summary:before {content:\\25B8;} details:checked summary:before {content: \\25BE;}",
       })
    EXPECT_NE(text.find(rule), std::u16string_view::npos) << hstring(rule).toUtf8();
}

} // namespace
