// htcore xml text, run as a user would.
#include "cli_run.h"
#include "foundation/temp_files.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <string>

TEST(CliXmlText, TextOfAFileInUtf8) {
  TempDir dir;
  std::string name = dir.Path("doc.xml");
  std::ofstream(name, std::ios::binary)
      << "<?xml version=\"1.0\" encoding=\"windows-1251\"?>\n<!DOCTYPE doc>\n"
         "<doc><head><title>hidden</title></head>\n<p>\xCF\xF0\xE8\xE2\xE5\xF2,   world &amp; "
         "<b>all</b></p><div>second<![CDATA[ <raw> ]]></div><!-- gone -->tail</doc>";
  TRun r = RunTool("xml text " + name);
  // No break behind "<raw> ": a block ends a line only after a visible character.
  ASSERT_EQ(r.Status, 0);
  EXPECT_EQ(r.Out, "\xD0\x9F\xD1\x80\xD0\xB8\xD0\xB2\xD0\xB5\xD1\x82, world & all\nsecond <raw> tail\n");
}

TEST(CliXmlText, StandardInputIsUtf8ByDefault) {
  TRun r = RunTool("xml text - <<'EOF'\n<r><li>caf\xC3\xA9</li><li>&#x2603;</li></r>\nEOF");
  ASSERT_EQ(r.Status, 0);
  EXPECT_EQ(r.Out, "caf\xC3\xA9\n\xE2\x98\x83\n");
}

TEST(CliXmlText, FailuresGiveOneLineAndStatusOne) {
  TRun missing = RunTool("xml text /nonexistent/doc.xml 2>&1");
  EXPECT_EQ(missing.Status, 1);
  EXPECT_EQ(missing.Out, "htcore: cannot open '/nonexistent/doc.xml': No such file or directory\n");
  // A text longer than the reader's buffer: what was read before the error stays.
  TRun bad = RunTool("xml text - 2>&1 <<EOF\n<a>ok</a><b>$(head -c 300000 /dev/zero | tr '\\0' x)</b>\nEOF");
  EXPECT_EQ(bad.Status, 1);
  EXPECT_EQ(bad.Out.substr(0, 5), "okxxx");
  EXPECT_NE(bad.Out.find("htcore: Incorrect XML at position 262156\n"), std::string::npos);
  EXPECT_EQ(RunTool("xml text 2>/dev/null").Status, 1);
}
