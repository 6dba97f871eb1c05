// Rendering: variables, sections, modes, events and the class operations.
#include "htcore/document/xml_node.h"
#include "htcore/foundation/files.h"
#include "htcore/foundation/text_utils.h"
#include "htcore/templates/template.h"
#include "htcore/templates/template_functions.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace ht;

namespace {

const char* kShop = R"(<shop name="Bob &amp; Co" open="true">
  <title>A &lt;b&gt; shop</title>
  <rows><row>a</row><row>b</row><row>c</row></rows>
  <empty/>
  <items>
    <item id="1" price="1234.5"><name>Tea</name><when>2024-02-29</when><flag>false</flag></item>
    <item id="2" price="7"><name>Cup "XL"</name><when>2023-12-01T10:30:00</when><flag>true</flag></item>
  </items>
  <closed>false</closed>
  <ok>TRUE</ok>
  <ref>title</ref>
  <bad>n/a</bad>
</shop>)";

std::string Render(const std::string& tpl, THtXMLNode* data) {
  THtTemplate t(hstring::FromUtf8(tpl));
  return t.Render(data).toUtf8();
}

struct TCase {
  const char* tpl;
  const char* out;
};

void Check(const std::vector<TCase>& cases, THtXMLNode* data) {
  for (const TCase& c : cases)
    EXPECT_EQ(Render(c.tpl, data), c.out) << c.tpl;
}

struct TShop : ::testing::Test {
  THtXMLNode shop{hstring::FromUtf8(kShop)};
};

} // namespace

TEST_F(TShop, VariablesEscapeUnlessRaw) {
  Check(
      {
          {"{{title}}", "A &lt;b&gt; shop"},
          {"{{{title}}}|{{&title}}", "A <b> shop|A <b> shop"},
          // No child "name": the attribute answers.
          {"{{name}}", "Bob &amp; Co"},
          {"{{.@name}}/{{.@open}}", "Bob &amp; Co/true"},
          {"{{items.item.name}}:{{items.item.@id}}", "Tea:1"},
          {"{{items/item[@id='2']/name}}", "Cup &quot;XL&quot;"},
          {"{{-tag}} {{-index}}", "shop 1"},
          {"[{{nothing}}][{{a.b.c}}][{{.@none}}]", "[][][]"},
          {"{{%name}} {{%a.b}}", "{{name}} {{a.b}}"},
          {"{{!a comment}}x{{!}}", "x"},
          {"{{&@ref}}", "A <b> shop"},
          {"{{{@ref}}}|{{&@nothing}}", "A <b> shop|"},
          {"{{ title }}", "A &lt;b&gt; shop"},
          {"{{empty}}|{{rows.row}}", "|a"},
      },
      &shop);
}

TEST_F(TShop, DotGivesValueOrXml) {
  THtXMLNode* rows = shop.NodebyName(u"rows"_hs);
  EXPECT_EQ(Render("{{{.}}}", rows), "<rows><row>a</row><row>b</row><row>c</row></rows>");
  EXPECT_EQ(
      Render("{{.}}", rows),
      "&lt;rows&gt;&lt;row&gt;a&lt;/row&gt;&lt;row&gt;b&lt;/row&gt;&lt;row&gt;c&lt;/row&gt;&lt;/rows&gt;");
  EXPECT_EQ(Render("{{.}}", rows->GetNode(1)), "b");
}

TEST_F(TShop, NumberAndDateFormats) {
  Check(
      {
          {"{{#items}}{{.@price(# ##0.00)}}|{{/items}}", "1 234.50|7.00|"},
          {"{{#items}}{{.@price(0)}}|{{/items}}", "1235|7|"},
          {"{{#items}}{{when(dd.mm.yyyy)}} {{/items}}", "29.02.2024 01.12.2023 "},
          {"{{#items}}{{when(d mmm yyyy, hh:nn)}}; {{/items}}", "29 Feb 2024, 00:00; 1 Dec 2023, 10:30; "},
          // What does not convert is shown as it is; empty stays empty.
          {"{{bad(0.00)}}|{{bad(yyyy)}}|{{empty(0.00)}}|{{nothing(dd.mm)}}", "n/a|n/a||"},
      },
      &shop);
}

TEST_F(TShop, SectionsRepeatAndTest) {
  Check(
      {
          {"{{#rows}}{{-index}}:{{.}},{{/rows}}", "1:a,2:b,3:c,"},
          {"{{#rows}}{{#-first}}x{{/-first}}{{/rows}}", "x"},
          {"{{#rows}}{{^-first}}x{{/-first}}{{/rows}}", "xx"},
          {"{{#rows}}{{.}}{{^-last}},{{/-last}}{{/rows}}", "a,b,c"},
          {"{{#rows}}{{#-last}}{{.}}{{/-last}}{{/rows}}", "c"},
          {"{{^empty}}none{{/empty}}|{{^rows}}none{{/rows}}|{{^nothing}}none{{/nothing}}", "none||none"},
          {"{{@!nothing}}e{{/nothing}}{{@title}}t{{/title}}{{@!title}}x{{/title}}{{@nothing}}y{{/nothing}}",
           "et"},
          // A leaf value is no list: use @ to test it.
          {"{{#title}}x{{/title}}", ""},
          {"{{#closed}}no{{/closed}}{{^closed}}yes{{/closed}}", "yes"},
          {"{{#ok}}yes{{/ok}}{{^ok}}no{{/ok}}", "yes"},
          {"{{#?shop}}is shop{{/?shop}}{{#?other}}x{{/?other}}", "is shop"},
          {"{{#items}}{{name}}={{.@id}};{{/items}}", "Tea=1;Cup &quot;XL&quot;=2;"},
          {"{{#items}}{{#flag}}[{{name}}]{{/flag}}{{/items}}", "[Cup &quot;XL&quot;]"},
          {"{{#items}}{{..title}}|{{/items}}", "A &lt;b&gt; shop|A &lt;b&gt; shop|"},
          {"{{#items}}{{#rows}}{{....name}}{{/rows}}{{/items}}", ""},
          {"{{#items}}{{#rows}}x{{/rows}}{{/items}}", ""},
          {"{{#items}}{{-tag}}{{-index}}{{#-last}}!{{/-last}}{{/items}}{{-index}}", "item1item2!1"},
          {"{{#items/item[@id='2']}}{{name}}{{/items/item[@id='2']}}", "Cup &quot;XL&quot;"},
          {"{{#./items/item}}{{.@id}}{{/./items/item}}", "12"},
          {"{{#shop/items/item}}{{.@id}}{{/shop/items/item}}", "12"},
          {"{{#shop/items}}{{-index}}{{/shop/items}}", "1"},
          {"{{#nothing/x}}x{{/nothing/x}}{{#items/none}}y{{/items/none}}", ""},
          // The first step may be the current node itself.
          {"{{#shop.rows}}{{.}}{{/shop.rows}}", "abc"},
          {"{{#nothing}}x{{/nothing}}{{}}ok", "ok"},
          // An unterminated section takes the rest of the text.
          {"{{#rows}}{{.}}", "abc"},
      },
      &shop);
}

TEST_F(TShop, IgnoreLogicalSections) {
  THtTemplate t(u"{{#?shop}}a{{/?shop}}{{#closed}}b{{/closed}}{{^closed}}c{{/closed}}{{#ok}}d{{/ok}}"_hs);
  EXPECT_EQ(t.Render(&shop), u"acd");
  t.IgnoreLogicalSections = true;
  EXPECT_EQ(t.Render(&shop), u"cd");
}

TEST_F(TShop, FunctionSectionsGetRenderedText) {
  Check(
      {
          {"{{#upper}}{{#rows}}{{.}}{{/rows}}{{/upper}}", "ABC"},
          {"{{#items}}{{#eq}}{{.@id}}|2|<b>{{name}}</b>{{/eq}}{{/items}}", "<b>Cup &quot;XL&quot;</b>"},
          {"{{#items}}{{#formatmoney}}{{.@price}}{{/formatmoney}};{{/items}}", "1 234.5;7;"},
          {"{{#padleft}}6 {{#rows}}{{.}}{{/rows}}{{/padleft}}", "   abc"},
          {"{{#lower}}{{#upper}}Ab{{/upper}}{{/lower}}", "ab"},
          {"{{#TRIM}}  x  {{/TRIM}}", "x"},
          {"[{{#trim}}{{/trim}}]", "[]"},
      },
      &shop);
  EXPECT_EQ(Render("{{#date}}{{/date}}", &shop).size(), 10u);
}

TEST_F(TShop, ProtectedBlocksAndNoTemplate) {
  EXPECT_EQ(Render("<script>var a='{{title}}';</script>{{ok}}", &shop),
            "<script>var a='{{title}}';</script>TRUE");
  THtTemplate t;
  t.ProcessScript = true;
  t.Parse(u"<script>var a='{{{title}}}';</script>"_hs);
  EXPECT_EQ(t.Render(&shop), u"<script>var a='A <b> shop';</script>");
  EXPECT_EQ(Render("<template-row>{{title}}</template-row>", &shop),
            "<template-row>{{title}}</template-row>");

  hstring plain = u"no braces { here <b>"_hs;
  THtTemplate p(plain);
  EXPECT_TRUE(p.NoTemplate);
  EXPECT_EQ(p.Render(&shop).Pointer(), plain.Pointer());
  EXPECT_EQ(p.ThreadSafeRender(&shop).Pointer(), plain.Pointer());
}

TEST_F(TShop, VariablesEventsAndRootFallback) {
  THtXMLNode extra(u"<extra><who>Ann</who></extra>"_hs);
  THtTemplate t(u"{{extra.who}}|{{{extra}}}|{{who}}|{{context.title}}|{{-tag}}"_hs);
  t.SetVariable(u"extra"_hs, &extra);
  EXPECT_EQ(t.Render(&shop), u"Ann|<extra><who>Ann</who></extra>||A &lt;b&gt; shop|shop");
  // Without a root the last one ("." ) serves again.
  EXPECT_EQ(t.Render(), u"Ann|<extra><who>Ann</who></extra>||A &lt;b&gt; shop|shop");

  t.SetOnGetVar([](THtTemplateContext&, const hstring& Name, hstring& Value) {
    if (Name != u"who")
      return false;
    Value = u"<event>"_hs;
    return true;
  });
  EXPECT_EQ(t.Render(&shop), u"Ann|<extra><who>Ann</who></extra>|&lt;event&gt;|A &lt;b&gt; shop|shop");
  EXPECT_EQ(t.GetVar(t.Context(), u"who"_hs), u"<event>");
  EXPECT_EQ(t.GetVar(t.Context(), u"title"_hs), u"A <b> shop");

  // ThreadSafeRender sees the template's variables but not its event.
  EXPECT_EQ(t.ThreadSafeRender(&shop), u"Ann|<extra><who>Ann</who></extra>||A &lt;b&gt; shop|shop");

  IHtNodeList list;
  EXPECT_TRUE(t.GetSection(t.Context(), u"rows"_hs, list));
  EXPECT_EQ(list->GetCount(), 3);
  EXPECT_FALSE(t.GetSection(t.Context(), u"title"_hs, list));
  EXPECT_FALSE(list);
}

TEST_F(TShop, DataPacketsAndUpdatedSections) {
  THtXMLNode ds(u"<DATAPACKET><METADATA/><ROWDATA><ROW a=\"1\"/><ROW a=\"2\"/></ROWDATA></DATAPACKET>"_hs);
  THtTemplate t(u"{{#ds}}{{.@a}},{{/ds}}|{{#q(all)}}{{.@n}};{{/q(all)}}|{{#q(one)}}{{.@n}};{{/q(one)}}"_hs);
  t.SetVariable(u"ds"_hs, &ds);
  std::vector<std::string> asked;
  t.OnUpdateSection = [&](const THtTemplate&, THtTemplateContext& C, const hstring& Section) {
    asked.push_back(Section.toUtf8());
    C.SetVariable(
        u"q"_hs,
        new THtXMLNode(Section == u"q(all)" ? u"<q><r n=\"1\"/><r n=\"2\"/></q>"_hs : u"<q n=\"9\"/>"_hs),
        true);
  };
  EXPECT_EQ(t.Render(&shop), u"1,2,|1;2;|9;");
  EXPECT_EQ(asked, (std::vector<std::string>{"q(all)", "q(one)"}));
  // Without the event such a name is an ordinary (unknown) section.
  t.OnUpdateSection = nullptr;
  EXPECT_EQ(t.Render(&shop), u"1,2,||");
}

// What OnUpdateSection sets stays in the context it was given: Render's is
// the template's own, so a second Render, and any ThreadSafeRender (which
// reads the template's variables), start with it; a ThreadSafeRender leaves
// nothing behind.
TEST_F(TShop, UpdatedSectionVariablesStayInTheirContext) {
  THtXMLNode q(u"<q><v>2</v></q>"_hs);
  THtTemplate t(u"[{{#q}}x{{/q}}]{{#q(x)}}{{/q(x)}}"_hs);
  auto update = [&](const THtTemplate&, THtTemplateContext& C, const hstring&) {
    C.SetVariable(u"q"_hs, &q);
  };
  EXPECT_EQ(t.ThreadSafeRender(&shop, nullptr, {}, update), u"[]");
  EXPECT_EQ(t.ThreadSafeRender(&shop, nullptr, {}, update), u"[]");
  t.OnUpdateSection = update;
  EXPECT_EQ(t.Render(&shop), u"[]");
  EXPECT_EQ(t.Render(&shop), u"[x]");
  EXPECT_EQ(t.ThreadSafeRender(&shop, nullptr, {}, update), u"[x]");
}

TEST(TemplateRender, JsonModeAndJsonData) {
  auto data = THtXMLNode::CreatefromJSON(
      u"{\"name\":\"A \\\"q\\\" <b>\",\"list\":[{\"v\":\"x\"},{\"v\":\"y\\\\z\"}]}"_hs);
  const char16_t* tpl = u"{\"n\":\"{{name}}\",\"l\":[{{#list}}\"{{v}}\"{{^-last}},{{/-last}}{{/list}}]}";
  EXPECT_EQ(THtTemplate::RenderTemplate(tpl, data.get(), true),
            u"{\"n\":\"A \\\"q\\\" <b>\",\"l\":[\"x\",\"y\\\\z\"]}");
  EXPECT_EQ(THtTemplate::RenderTemplate(u"{{name}}"_hs, data.get(), false), u"A &quot;q&quot; &lt;b&gt;");
  // The library's JSON escapes write LF as \r and CR as \n; templates share them.
  THtXMLNode lines(u"<a>1\n2\t3</a>"_hs);
  EXPECT_EQ(THtTemplate::RenderTemplate(u"{{.}}"_hs, &lines, true), u"1\\r2\\t3");
}

TEST(TemplateRender, EscapesEveryListedUnit) {
  THtXMLNode n;
  n.SetTag(u"n"_hs);
  n.SetContent(hstring(u"<>&\"'\u00A0\x01\x09\x0A\u00E9"));
  EXPECT_EQ(THtTemplate::RenderTemplate(u"{{.}}"_hs, &n),
            hstring(u"&lt;&gt;&amp;&quot;'&nbsp;&#1;&#9;\x0A\u00E9"));
}

TEST(TemplateRender, OwnedVariablesAreFreedOnce) {
  THtTemplateContext c;
  auto* n = new THtXMLNode(u"<a>1</a>"_hs);
  c.SetVariable(u"x"_hs, n, true);
  c.SetVariable(u"y"_hs, n, true);
  EXPECT_EQ(c.FObjects.Count(), 1);
  // Names hashed when a template is read must hash as the variables do.
  THtTemplateName name;
  CompileTemplateName(u"y"_hs, name);
  EXPECT_EQ(c.Vars.HashOf(u"y"_hs), name.Hash);
  EXPECT_EQ(c.GetVariable(u"y"_hs, name.Hash), n);
  EXPECT_EQ(c.GetVariable(u"y"_hs), n);
  c.Clear();
  EXPECT_EQ(c.GetVariable(u"x"_hs), nullptr);
  EXPECT_EQ(c.FObjects.Count(), 0);
}

TEST(TemplateRender, StringListForms) {
  TStringList s;
  s.Add(u"who=Ann <A>"_hs);
  s.Add(u"n=3"_hs);
  s.Add(u"noequals"_hs);
  EXPECT_EQ(THtTemplate::RenderTemplate(u"Hi {{who}} {{v.n}} {{-tag}}"_hs, s), u"Hi Ann &lt;A&gt; 3 v");
  EXPECT_EQ(THtTemplate::RenderTemplate(u"{{who}}"_hs, s, nullptr, true), u"Ann <A>");
  THtTemplate t(u"{{who}}/{{n(0.0)}}"_hs);
  EXPECT_EQ(t.ThreadSafeRender(s), u"Ann &lt;A&gt;/3.0");
}

TEST(TemplateRender, DeepNestingRendersWithoutRecursion) {
  const int depth = 100000;
  THtXMLNode data(u"<r><a>true</a></r>"_hs);
  std::u16string open, close;
  for (int i = 0; i < depth; ++i) {
    open += u"{{#a}}";
    close += u"{{/a}}";
  }
  THtTemplate t(hstring(open + u"x" + close + u"!"));
  EXPECT_EQ(t.Render(&data), u"x!");
  std::u16string fopen, fclose;
  for (int i = 0; i < depth; ++i) {
    fopen += u"{{#trim}}";
    fclose += u"{{/trim}}";
  }
  THtTemplate f(hstring(fopen + u" y " + fclose));
  EXPECT_EQ(f.Render(&data), u"y");
  // Unclosed sections nest to the end of the text just as deeply.
  THtTemplate u(hstring(open + u"z"));
  EXPECT_EQ(u.Render(&data), u"z");
}

TEST(TemplateRender, IncludeUsesTheTemplateBase) {
  namespace fs = std::filesystem;
  fs::path dir = fs::temp_directory_path() / ("htcore_tplr_" + std::to_string(::getpid()));
  fs::create_directories(dir / "in");
  StrtoFileR("<p>{{x}}</p>", hstring::FromUtf8((dir / "in" / "part.html").string()));
  StrtoFileR("secret", hstring::FromUtf8((dir / "out.txt").string()));
  THtTemplate t(u"[{{#include}}part.html{{/include}}][{{#include}}../out.txt{{/include}}]"_hs);
  t.IncludeBase = hstring::FromUtf8((dir / "in").string());
  // Included text is not expanded again.
  EXPECT_EQ(t.Render(), u"[<p>{{x}}</p>][]");
  EXPECT_EQ(t.ThreadSafeRender(nullptr), u"[<p>{{x}}</p>][]");
  t.IncludeBase = hstring();
  std::string abs = (dir / "out.txt").string();
  THtTemplate plain(hstring::FromUtf8("{{#include}}" + abs + "{{/include}}"));
  EXPECT_EQ(plain.Render(), u"secret");
  SetHtTemplateIncludeBase(hstring::FromUtf8((dir / "in").string()));
  EXPECT_EQ(plain.Render(), u"");
  SetHtTemplateIncludeBase(hstring());
  fs::remove_all(dir);
}

TEST(TemplateRender, OneTemplateManyThreads) {
  std::u16string xml = u"<list>";
  for (int i = 0; i < 200; ++i)
    xml += u"<item id=\"" + std::u16string(IntToStr(i).view()) + u"\" price=\"" +
           std::u16string(IntToStr(i * 37).view()) + u".5\"><name>n&lt;" +
           std::u16string(IntToStr(i).view()) + u"</name><day>2024-01-" + (i % 28 < 9 ? u"0" : u"") +
           std::u16string(IntToStr(i % 28 + 1).view()) + u"</day></item>";
  xml += u"</list>";
  THtXMLNode data{hstring(xml)};
  THtTemplate t(
      u"<ul>{{#list}}<li id=\"{{.@id}}\">{{-index}} {{name}} {{.@price(# ##0.00)}} "
      u"{{day(d mmm yyyy)}}{{#upper}}{{name}}{{/upper}}{{#-last}}.{{/-last}}</li>{{/list}}</ul>"_hs);
  const hstring expected = t.Render(&data);
  ASSERT_GT(expected.size(), 10000u);
  std::vector<std::thread> threads;
  std::vector<int> bad(8, 0);
  for (int k = 0; k < 8; ++k)
    threads.emplace_back([&, k] {
      for (int round = 0; round < 25; ++round)
        if (t.ThreadSafeRender(&data) != expected)
          ++bad[k];
    });
  for (auto& th : threads)
    th.join();
  EXPECT_EQ(bad, std::vector<int>(8, 0));
}
