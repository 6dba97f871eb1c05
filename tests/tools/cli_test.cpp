// Runs the built htcore tool the way a user would.
#include "cli_run.h"

#include <gtest/gtest.h>
#include <string>

namespace {

const std::string kExamples = HTCORE_SOURCE_DIR "/examples";

} // namespace

TEST(Cli, TokensOfTheBundledPage) {
  TRun r = RunTool("tokens " + kExamples + "/page.html");
  ASSERT_EQ(r.Status, 0);
  // Entities decode, attributes come out quoted, script bodies stay whole.
  EXPECT_NE(r.Out.find("text \"Catalogue & prices\""), std::string::npos);
  EXPECT_NE(r.Out.find("<table border=\"1\">"), std::string::npos);
  EXPECT_NE(r.Out.find("Items marked \xE2\x98\x85 are new."), std::string::npos);
  EXPECT_NE(r.Out.find("script \"if (a < b) console.log(\\\"x\\\");\""), std::string::npos);
}

TEST(Cli, ReadsStandardInputAndDetectsLegacyEncoding) {
  // windows-1251 bytes declared by a meta tag come out as UTF-8.
  TRun r = RunTool("tokens - <<'EOF'\n<meta charset=windows-1251><p>\xCF\xF0\xE8\xE2\xE5\xF2\nEOF");
  ASSERT_EQ(r.Status, 0);
  EXPECT_NE(r.Out.find("\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82"), std::string::npos);
}

TEST(Cli, MissingFileFailsWithOneLine) {
  TRun r = RunTool("tokens /nonexistent/page.html 2>&1");
  EXPECT_EQ(r.Status, 1);
  EXPECT_EQ(r.Out, "htcore: cannot open '/nonexistent/page.html': No such file or directory\n");
  EXPECT_EQ(RunTool("no-such-command 2>/dev/null").Status, 1);
}
