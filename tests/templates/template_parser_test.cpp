// Tokens, items and names of the template reader.
#include "htcore/templates/template_parser.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace ht;

namespace {

std::string U8(const hstring& s) { return s.toUtf8(); }

// Tokens as "kind:name" joined by '|'.
std::string Tokens(const char* text, bool script = false) {
  THtTemplateTokenizer tk(hstring::FromUtf8(text), script);
  std::string out;
  static const char* kinds[] = {"V", "H", "T", "B"};
  while (tk.NextToken()) {
    if (!out.empty())
      out += '|';
    out += kinds[tk.Token.Kind];
    out += ':';
    out += U8(tk.Token.Name);
  }
  return out;
}

// The tree in a compact form: S for sections (with #, ^, @, @! marks and a
// trailing * for a function), V for escaped variables, R for raw ones (N for
// nested), T for text, C for comments.
void Dump(const THtTemplateItem* it, std::string& out) {
  for (; it; it = it->Next) {
    if (!out.empty() && out.back() != '[')
      out += ' ';
    switch (it->Kind) {
    case tiSection:
      out += "S";
      out += it->NonEmpty ? (it->Inverted ? "@!" : "@") : (it->Inverted ? "^" : "#");
      out += U8(it->Name);
      if (it->func)
        out += '*';
      if (it->Items) {
        out += '[';
        Dump(it->Items, out);
        out += ']';
      }
      break;
    case tiVariable:
      out += it->Nested ? "N" : (it->Escape ? "V" : "R");
      out += ':' + U8(it->Name);
      break;
    case tiText:
      out += "T:" + U8(it->Name);
      break;
    case tiComment:
      out += "C";
      break;
    }
  }
}

std::string Tree(const char* text) {
  THtTemplateItemArena arena;
  THtTemplateTokenizer tk(hstring::FromUtf8(text));
  std::string out;
  Dump(ParseTemplateItems(tk, arena), out);
  return out;
}

} // namespace

TEST(TemplateTokenizer, CutsTextVariablesAndBlocks) {
  struct {
    const char* in;
    bool script;
    const char* out;
  } cases[] = {
      {"a{{b}}c", false, "T:a|V:b|T:c"},
      {"{{{x}}}", false, "H:x"},
      // The closing units are consumed whatever they are.
      {"{{{x}}y", false, "H:x"},
      {"{{x}y", false, "V:x"},
      {"{{{x}}}}", false, "H:x|T:}"},
      {"{{x", false, "V:x"},
      {"{{", false, "V:"},
      {"{a}{", false, "T:{a}{"},
      {"a{{}}b", false, "T:a|V:|T:b"},
      {"x<b>y</b>", false, "T:x<b>y</b>"},
      {"<template-row id=1>{{x}}</template-row>tail", false,
       "B:<template-row id=1>{{x}}</template-row>|T:tail"},
      {"a<template-x>{{y}}", false, "T:a|B:<template-x>{{y}}"},
      {"<template-a>1</template-b>2</template-a>3", false, "B:<template-a>1</template-b>2</template-a>|T:3"},
      {"<script>if(a{{b}})</script>x", false, "B:<script>if(a{{b}})</script>|T:x"},
      {"<SCRIPT type=x>{{b}}</Script >{{c}}", false, "B:<SCRIPT type=x>{{b}}</Script >|V:c"},
      {"<script>if(a{{b}})</script>x", true, "T:<script>if(a|V:b|T:)</script>x"},
      // Only "<template-" is a block; the tag is case-sensitive, unlike script.
      {"<TEMPLATE-x>{{a}}</TEMPLATE-x>", false, "T:<TEMPLATE-x>|V:a|T:</TEMPLATE-x>"},
      {"<templatex>{{a}}", false, "T:<templatex>|V:a"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Tokens(c.in, c.script), c.out) << c.in;
}

TEST(TemplateTokenizer, PositionsAndEnd) {
  THtTemplateTokenizer tk(u"ab{{c}}d"_hs);
  std::vector<std::pair<int, int>> pos;
  while (tk.NextToken())
    pos.emplace_back(tk.Token.StartPos, tk.Token.EndPos);
  EXPECT_EQ(pos, (std::vector<std::pair<int, int>>{{1, 3}, {3, 8}, {8, 9}}));
  EXPECT_TRUE(tk.Empty);
  EXPECT_FALSE(tk.NextToken());

  THtTemplateTokenizer empty{hstring()};
  EXPECT_TRUE(empty.Empty);
  EXPECT_FALSE(empty.NextToken());
}

TEST(TemplateItems, MapTokensToItems) {
  struct {
    const char* in;
    const char* out;
  } cases[] = {
      {"{{#rows}}a{{x}}{{/rows}}b", "S#rows[T:a V:x] T:b"},
      {"{{^rows}}none{{/rows}}", "S^rows[T:none]"},
      {"{{@name}}x{{/name}}", "S@name[T:x]"},
      {"{{@!name}}x{{/name}}", "S@!name[T:x]"},
      {"{{&name}}{{{name}}}", "R:name R:name"},
      {"{{&lt;b}}", "R:&lt;b"},
      {"{{!a comment}}x", "C T:x"},
      {"{{{@ref}}}{{&@ref}}", "N:ref N:ref"},
      {"{{ name }}{{# rows }}{{/rows}}", "V:name S#rows"},
      // "{{}}" has no effect and opens nothing.
      {"{{}}x{{/}}", "S# T:x V:/"},
      // Only the innermost section can be closed.
      {"{{#a}}{{#b}}x{{/a}}y", "S#a[S#b[T:x V:/a T:y]]"},
      {"{{#a}}x", "S#a[T:x]"},
      {"{{/a}}", "V:/a"},
      {"{{#a}}{{/ a}}{{/a}}", "S#a[V:/ a]"},
      {"{{#upper}}x{{/upper}}{{#Upper}}y{{/Upper}}", "S#upper*[T:x] S#Upper*[T:y]"},
      // Only "#" looks for a function.
      {"{{^upper}}x{{/upper}}", "S^upper[T:x]"},
      {"<script>{{#a}}</script>{{#a}}1{{/a}}", "T:<script>{{#a}}</script> S#a[T:1]"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Tree(c.in), c.out) << c.in;
}

TEST(TemplateItems, DeepNestingNeedsNoRecursion) {
  const int depth = 100000;
  std::u16string text;
  for (int i = 0; i < depth; ++i)
    text += u"{{#a}}";
  text += u"x";
  THtTemplateItemArena arena;
  THtTemplateTokenizer tk{hstring(text)};
  THtTemplateItem* it = ParseTemplateItems(tk, arena);
  int levels = 0;
  while (it && it->Kind == tiSection) {
    ++levels;
    it = it->Items;
  }
  EXPECT_EQ(levels, depth);
  ASSERT_NE(it, nullptr);
  EXPECT_EQ(it->Name, u"x");
  EXPECT_EQ(arena.Count(), static_cast<size_t>(depth) + 1);
}

TEST(TemplateNames, TakenApartOnce) {
  THtTemplateName n;
  CompileTemplateName(u"price(# ##0.00)"_hs, n);
  EXPECT_EQ(n.Steps, std::vector<hstring>{u"price"_hs});
  EXPECT_EQ(n.Format, u"# ##0.00");
  EXPECT_TRUE(n.NumberFormat);

  CompileTemplateName(u"order.when(dd.mm.yyyy)"_hs, n);
  EXPECT_EQ(n.Steps, (std::vector<hstring>{u"order"_hs, u"when"_hs}));
  EXPECT_EQ(n.Format, u"dd.mm.yyyy");
  EXPECT_FALSE(n.NumberFormat);
  EXPECT_FALSE(n.Simple);

  CompileTemplateName(u"total(0.0;(0.0))"_hs, n);
  EXPECT_EQ(n.Format, u"0.0;(0.0)");
  EXPECT_TRUE(n.NumberFormat);

  // An empty pair is a path function, not a format.
  CompileTemplateName(u"a/text()"_hs, n);
  EXPECT_TRUE(n.Format.empty());
  EXPECT_EQ(n.Steps, std::vector<hstring>{u"a/text()"_hs});
  EXPECT_TRUE(n.HasSlash);
  EXPECT_EQ(n.PathBase, u"a");
  EXPECT_EQ(n.PathRest, u"text()");

  // Dots inside conditions do not split the path.
  CompileTemplateName(u"items/item[@p='1.5']/name"_hs, n);
  EXPECT_EQ(n.Steps.size(), 1u);
  CompileTemplateName(u"items/item[last()](0.00)"_hs, n);
  EXPECT_EQ(n.Steps, std::vector<hstring>{u"items/item[last()]"_hs});
  EXPECT_EQ(n.Format, u"0.00");
  // A quote closes only with its own unit; a stray `]` is ignored, so the `[`
  // behind it stays open to the end.
  CompileTemplateName(u"a[@t=\"it's.x\"].b"_hs, n);
  EXPECT_EQ(n.Steps, (std::vector<hstring>{u"a[@t=\"it's.x\"]"_hs, u"b"_hs}));
  CompileTemplateName(u"a]x[.b(0)"_hs, n);
  EXPECT_EQ(n.Steps, std::vector<hstring>{u"a]x[.b(0)"_hs});
  EXPECT_TRUE(n.Format.empty());

  struct {
    const char16_t* in;
    int up;
    size_t steps;
  } dots[] = {{u".name", 0, 1}, {u"..name", 1, 1}, {u"...name", 1, 1}, {u"....a.b", 2, 2}, {u"..", 1, 0}};
  for (const auto& d : dots) {
    CompileTemplateName(d.in, n);
    EXPECT_EQ(n.Up, d.up) << U8(d.in);
    EXPECT_EQ(n.Steps.size(), d.steps) << U8(d.in);
  }

  CompileTemplateName(u"%name"_hs, n);
  EXPECT_EQ(n.Kind, THtTemplateName::tnPass);
  EXPECT_EQ(n.Pass, u"{{name}}");
  CompileTemplateName(u"-index"_hs, n);
  EXPECT_EQ(n.Kind, THtTemplateName::tnIndex);
  CompileTemplateName(u"."_hs, n);
  EXPECT_EQ(n.Kind, THtTemplateName::tnSelf);
  CompileTemplateName(u"-tag"_hs, n);
  EXPECT_EQ(n.Kind, THtTemplateName::tnTag);

  CompileTemplateName(u"a.b.c"_hs, n);
  EXPECT_EQ(n.SectionSteps, (std::vector<hstring>{u"a"_hs, u"b"_hs, u"c"_hs}));
  CompileTemplateName(u"rows(select 1)"_hs, n);
  EXPECT_TRUE(n.HasParen);
  EXPECT_EQ(n.UpdateVar, u"rows");
}
