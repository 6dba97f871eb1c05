// htcore render, run as a user would run it.
#include "cli_run.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

namespace {

const std::string kExamples = HTCORE_SOURCE_DIR "/examples";

bool Has(const std::string& s, const std::string& part) { return s.find(part) != std::string::npos; }

void Write(const std::filesystem::path& p, const std::string& text) {
  std::ofstream(p, std::ios::binary) << text;
}

} // namespace

TEST(RenderCli, CatalogueExample) {
  TRun r = RunTool("render " + kExamples + "/catalogue.tpl.html " + kExamples + "/catalogue.xml");
  ASSERT_EQ(r.Status, 0);
  const char* parts[] = {
      "<title>Spring catalogue</title>",
      "<script>const pending = \"{{left alone inside scripts}}\";</script>",
      "<h1>SPRING CATALOGUE</h1>",
      "<p class=\"shop\">Books &amp; Maps &lt;Ltd&gt;</p>",
      "<p>Updated 14 March 2026.</p>",
      "<h2>1. Atlases</h2>\n<table>\n<tr><th>#</th>",
      "<tr id=\"a1\"><td>1</td><td>World Atlas &quot;Deluxe&quot; <em>new</em></td><td>M. Ortelius</td>"
      "<td>02.11.2025</td><td>1 249.50</td></tr>",
      "<tr id=\"a2\"><td>2</td><td>City Maps &amp; Plans</td><td>J. Blaeu</td><td>18.06.2024</td>"
      "<td>35.00</td></tr>\n</table>",
      "<td>Caf\xC3\xA9 Stories <em>new</em></td><td>Zo\xC3\xAB \xC3\x84ndersson</td>",
      "<h2>3. Poetry</h2>\n<p>No books yet.</p>",
  };
  for (const char* p : parts)
    EXPECT_TRUE(Has(r.Out, p)) << p;
  // Comments and the unset customer leave nothing behind.
  EXPECT_FALSE(Has(r.Out, "prepared for"));
  EXPECT_FALSE(Has(r.Out, "The shop name"));
  // Each table opens once and closes once per category with books.
  size_t tables = 0;
  for (size_t at = 0; (at = r.Out.find("<table>", at)) != std::string::npos; ++at)
    ++tables;
  EXPECT_EQ(tables, 2u);

  TRun v = RunTool("render " + kExamples + "/catalogue.tpl.html " + kExamples +
                   "/catalogue.xml --var 'customer=Ann & <Bob>'");
  ASSERT_EQ(v.Status, 0);
  EXPECT_TRUE(Has(v.Out, "<p>Updated 14 March 2026, prepared for Ann &amp; &lt;Bob&gt;.</p>"));
}

TEST(RenderCli, JsonFromStandardInputAndJsonMode) {
  namespace fs = std::filesystem;
  fs::path dir = fs::temp_directory_path() / ("htcore_render_" + std::to_string(::getpid()));
  fs::create_directories(dir);
  Write(dir / "t.json.tpl", "{\"items\":[{{#list}}\"{{name}}\"{{^-last}},{{/-last}}{{/list}}]}");
  TRun r = RunTool(
      "render " + (dir / "t.json.tpl").string() +
      " - --json-mode <<'EOF'\n{\"list\":[{\"name\":\"a \\\"q\\\"\"},{\"name\":\"<\xC3\xA9>\"}]}\nEOF");
  ASSERT_EQ(r.Status, 0);
  EXPECT_EQ(r.Out, "{\"items\":[\"a \\\"q\\\"\",\"<\xC3\xA9>\"]}");
  // Without --json-mode the values are HTML-escaped.
  Write(dir / "d.json", "{\"list\":[{\"name\":\"<b>\"}]}");
  r = RunTool("render " + (dir / "t.json.tpl").string() + " " + (dir / "d.json").string());
  EXPECT_EQ(r.Out, "{\"items\":[\"&lt;b&gt;\"]}");
  fs::remove_all(dir);
}

TEST(RenderCli, IncludesStayBesideTheTemplate) {
  namespace fs = std::filesystem;
  fs::path dir = fs::temp_directory_path() / ("htcore_render_inc_" + std::to_string(::getpid()));
  fs::create_directories(dir / "site" / "parts");
  Write(dir / "site" / "parts" / "footer.html", "<footer>f</footer>");
  Write(dir / "secret.txt", "secret");
  Write(dir / "site" / "page.tpl",
        "[{{#include}}parts/footer.html{{/include}}][{{#include}}../secret.txt{{/include}}]"
        "[{{#include}}" +
            (dir / "secret.txt").string() + "{{/include}}]");
  Write(dir / "d.xml", "<d/>");
  TRun r = RunTool("render " + (dir / "site" / "page.tpl").string() + " " + (dir / "d.xml").string());
  ASSERT_EQ(r.Status, 0);
  EXPECT_EQ(r.Out, "[<footer>f</footer>][][]");
  fs::remove_all(dir);
}

TEST(RenderCli, ErrorsGiveOneLine) {
  struct {
    std::string args;
    std::string out;
    std::string input = "";
  } cases[] = {
      {"render", "htcore: usage: htcore render TEMPLATE DATA|- [--json-mode] [--var name=value]...\n"},
      {"render /nonexistent/t.html " + kExamples + "/catalogue.xml",
       "htcore: cannot open '/nonexistent/t.html': No such file or directory\n"},
      {"render " + kExamples + "/catalogue.tpl.html /nonexistent/d.xml",
       "htcore: cannot open '/nonexistent/d.xml': No such file or directory\n"},
      {"render " + kExamples + "/catalogue.tpl.html -",
       "htcore: stdin: Tag order error: /a expected, /b found at position 3\n", "<a></b>"},
      {"render " + kExamples + "/catalogue.tpl.html -", "htcore: stdin: Value expected\n", "{\"a\":"},
      {"render a b --var novalue", "htcore: --var needs name=value, got 'novalue'\n"},
      {"render a b --var", "htcore: --var needs name=value\n"},
      {"render a b --frobnicate",
       "htcore: unknown option '--frobnicate'; usage: htcore render TEMPLATE DATA|- "
       "[--json-mode] [--var name=value]...\n"},
      {"render - b", "htcore: the template must be a file (DATA may be '-')\n"},
  };
  for (const auto& c : cases) {
    std::string input = c.input.empty() ? "" : " <<'EOF'\n" + c.input + "\nEOF";
    TRun r = RunTool(c.args + " 2>&1 >/dev/null" + input);
    EXPECT_EQ(r.Status, 1) << c.args;
    EXPECT_EQ(r.Out, c.out) << c.args;
  }
}
