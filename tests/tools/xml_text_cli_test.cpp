// htcore xml text, run as a user would.
#include "foundation/temp_files.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
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

} // namespace

TEST(CliXmlText, TextOfAFileInUtf8) {
  TempDir dir;
  std::string name = dir.Path("doc.xml");
  std::ofstream(name, std::ios::binary)
      << "<?xml version=\"1.0\" encoding=\"windows-1251\"?>\n<!DOCTYPE doc>\n"
         "<doc><head><title>hidden</title></head>\n<p>\xCF\xF0\xE8\xE2\xE5\xF2,   world &amp; "
         "<b>all</b></p><div>second<![CDATA[ <raw> ]]></div><!-- gone -->tail</doc>";
  TRun r = RunTool("xml text " + name);
  // No break behind "<raw> ": a block ends a line only after a visible character.
  ASSERT_EQ(r.status, 0);
  EXPECT_EQ(r.out, "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82, world & all\nsecond <raw> tail\n");
}

TEST(CliXmlText, StandardInputIsUtf8ByDefault) {
  TRun r = RunTool("xml text - <<'EOF'\n<r><li>caf\xC3\xA9</li><li>&#x2603;</li></r>\nEOF");
  ASSERT_EQ(r.status, 0);
  EXPECT_EQ(r.out, "caf\xC3\xA9\n\xE2\x98\x83\n");
}

TEST(CliXmlText, FailuresGiveOneLineAndStatusOne) {
  TRun missing = RunTool("xml text /nonexistent/doc.xml 2>&1");
  EXPECT_EQ(missing.status, 1);
  EXPECT_EQ(missing.out, "htcore: cannot open '/nonexistent/doc.xml': No such file or directory\n");
  // A text longer than the reader's buffer: what was read before the error stays.
  TRun bad = RunTool("xml text - 2>&1 <<EOF\n<a>ok</a><b>$(head -c 300000 /dev/zero | tr '\\0' x)</b>\nEOF");
  EXPECT_EQ(bad.status, 1);
  EXPECT_EQ(bad.out.substr(0, 5), "okxxx");
  EXPECT_NE(bad.out.find("htcore: Incorrect XML at position 262156\n"), std::string::npos);
  EXPECT_EQ(RunTool("xml text 2>/dev/null").status, 1);
}
