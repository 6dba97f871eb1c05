// Runs the built htcore tool the way a user would.
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <string>
#include <sys/wait.h>

namespace {

struct TRun {
  int status;
  std::string out;
};

TRun RunTool(const std::string& args) {
  const char* tool = std::getenv("HTCORE_TOOL");
  std::string cmd = std::string(tool ? tool : "htcore") + " " + args;
  FILE* p = popen(cmd.c_str(), "r");
  TRun r{-1, {}};
  if (!p)
    return r;
  char buf[4096];
  size_t n;
  while ((n = fread(buf, 1, sizeof buf, p)) > 0)
    r.out.append(buf, n);
  int st = pclose(p);
  r.status = WIFEXITED(st) ? WEXITSTATUS(st) : -1;
  return r;
}

const std::string kExamples = HTCORE_SOURCE_DIR "/examples";

} // namespace

TEST(Cli, TokensOfTheBundledPage) {
  TRun r = RunTool("tokens " + kExamples + "/page.html");
  ASSERT_EQ(r.status, 0);
  // Entities decode, attributes come out quoted, script bodies stay whole.
  EXPECT_NE(r.out.find("text \"Catalogue & prices\""), std::string::npos);
  EXPECT_NE(r.out.find("<table border=\"1\">"), std::string::npos);
  EXPECT_NE(r.out.find("Items marked \xE2\x98\x85 are new."), std::string::npos);
  EXPECT_NE(r.out.find("script \"if (a < b) console.log(\\\"x\\\");\""), std::string::npos);
}

TEST(Cli, ReadsStandardInputAndDetectsLegacyEncoding) {
  // windows-1251 bytes declared by a meta tag come out as UTF-8.
  TRun r = RunTool("tokens - <<'EOF'\n<meta charset=windows-1251><p>\xCF\xF0\xE8\xE2\xE5\xF2\nEOF");
  ASSERT_EQ(r.status, 0);
  EXPECT_NE(r.out.find("\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82"), std::string::npos);
}

TEST(Cli, MissingFileFailsWithOneLine) {
  TRun r = RunTool("tokens /nonexistent/page.html 2>&1");
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.out, "htcore: cannot open '/nonexistent/page.html': No such file or directory\n");
  EXPECT_EQ(RunTool("no-such-command 2>/dev/null").status, 1);
}
