// Runs the built htcore tool (path in HTCORE_TOOL) on HTML as a user would.
#include "cli_run.h"

#include <gtest/gtest.h>
#include <string>

namespace {

std::string sample() { return quote(std::string(HTCORE_SOURCE_DIR) + "/examples/sample.html"); }

class CliHtml : public ::testing::Test {
protected:
  void SetUp() override {
    if (!tool())
      GTEST_SKIP() << "HTCORE_TOOL is not set";
  }
};

} // namespace

TEST_F(CliHtml, TextOfTheSample) {
  TRun r = run("html text " + sample());
  ASSERT_EQ(r.Status, 0) << r.Err;
  EXPECT_EQ(r.Err, "");
  const char* wanted[] = {
      "Sample page",
      "caf\xC3\xA9, \xC2\xA9 2024",
      "5\xC2\xA0km, <tags> & entities, \xE2\x86\x92 arrows, \xE2\x80\xA6 and an emoji \xF0\x9F\x98\x80.",
      "cell 1\tcell 2",
      "bold\t5 < 6",
      "Last line\nafter a break.",
  };
  for (const char* w : wanted)
    EXPECT_NE(r.Out.find(w), std::string::npos) << w << "\n" << r.Out;
  // Neither script, style nor the title of the head are text of the page.
  for (const char* unwanted : {"function check", "font-family", "\xE2\x80\x93 htcore", "\r"})
    EXPECT_EQ(r.Out.find(unwanted), std::string::npos) << unwanted;
}

TEST_F(CliHtml, CompactOfTheSample) {
  TRun r = run("html compact " + sample());
  ASSERT_EQ(r.Status, 0) << r.Err;
  const char* wanted[] = {
      "<h1>Sample page</h1>",
      "<meta http-equiv=\"Content-Type\" content=\"text/html; charset=utf-8\"/>",
      "return a < b && b > 0;", // script text is not escaped
      "&lt;tags&gt; &amp; entities, &rarr; arrows, \xE2\x80\xA6 and an emoji &#x01F600;",
      "<input checked type=\"checkbox\"/>",
      "<a href=\"https://example.org/a?x=1&amp;y=2\" title=\"Example\">a link</a>",
      "value=\"&quot;quoted&quot;\"",
  };
  for (const char* w : wanted)
    EXPECT_NE(r.Out.find(w), std::string::npos) << w << "\n" << r.Out;
  EXPECT_EQ(r.Out.find("<!DOCTYPE"), std::string::npos); // a doctype leaves no node
}

TEST_F(CliHtml, FormatIndentsBlocks) {
  TRun r = run("html format " + sample());
  ASSERT_EQ(r.Status, 0) << r.Err;
  EXPECT_EQ(r.Out.rfind("<html lang=\"en\">\n  <head>\n    <meta charset=\"utf-8\"/>\n", 0), 0u) << r.Out;
  const char* wanted[] = {"\n      <li>\n        First item\n      </li>\n", "\n  </body>\n</html>\n"};
  for (const char* w : wanted)
    EXPECT_NE(r.Out.find(w), std::string::npos) << w << "\n" << r.Out;
  EXPECT_EQ(r.Out.find('\r'), std::string::npos);
}

TEST_F(CliHtml, StandardInput) {
  std::string html = "<p>a &amp; b<p>c";
  TRun r = run("html compact -", &html);
  ASSERT_EQ(r.Status, 0) << r.Err;
  EXPECT_EQ(r.Out, "<body><p>a &amp; b</p><p>c</p></body>\n");
  r = run("html text -", &html);
  EXPECT_EQ(r.Out, "a & b\nc\n");
}

TEST_F(CliHtml, ErrorsGiveOneLineAndExitOne) {
  const struct {
    std::string args;
    const char* start;
  } rows[] = {
      {"html text /nonexistent/missing.html", "htcore: cannot open '/nonexistent/missing.html': "},
      {"html format " + quote(::testing::TempDir()), "htcore: cannot read '"},
      {"html compact", "htcore: usage: htcore html"},
      {"html bogus " + sample(), "htcore: unknown html command 'bogus'"},
  };
  for (const auto& row : rows) {
    TRun r = run(row.args);
    EXPECT_EQ(r.Status, 1) << row.args;
    EXPECT_EQ(r.Out, "") << row.args;
    EXPECT_EQ(lines(r.Err), 1) << r.Err;
    EXPECT_EQ(r.Err.rfind(row.start, 0), 0u) << r.Err;
  }
}
