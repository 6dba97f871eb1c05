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
  EXPECT_EQ(RunTool("xml text 2>/dev/null").Status, 1);
  EXPECT_EQ(RunTool("xml text --max-item 0 - </dev/null 2>/dev/null").Status, 1);
}

TEST(CliXmlText, ItemsLongerThanTheBufferComeWhole) {
  TempDir dir;
  // A text and a start tag of 300 kB each, past the reader's 256 KiB buffer.
  std::string value(300000, 'v'), text(300000, 'x');
  std::string name = dir.Path("big.xml");
  std::ofstream(name, std::ios::binary) << "<a>ok</a><b x=\"" << value << "\">" << text << "</b><c>end</c>";
  TRun r = RunTool("xml text " + name);
  ASSERT_EQ(r.Status, 0);
  EXPECT_EQ(r.Out, "ok" + text + "end\n");
  // Past the item limit: an error naming it, not a piece of the item.
  std::string huge = dir.Path("huge.xml");
  std::ofstream(huge, std::ios::binary) << "<a>ok</a><b>" << std::string((1 << 20) + 10, 'x') << "</b>";
  TRun over = RunTool("xml text --max-item 1 " + huge + " 2>&1");
  EXPECT_EQ(over.Status, 1);
  EXPECT_EQ(over.Out,
            "ok\nhtcore: Incorrect XML at position 12: a text or tag longer than 1 MiB (--max-item)\n");
}

TEST(CliXmlText, Utf16InEitherByteOrder) {
  TempDir dir;
  std::u16string doc =
      u"<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n<doc a=\"1\"><p>caf\u00E9 \U0001F600 &amp; x</p>"
      u"<p>two</p></doc>\n";
  const std::string want = "caf\xC3\xA9 \xF0\x9F\x98\x80 & x\ntwo\n";
  for (bool big : {true, false})
    for (bool mark : {true, false}) {
      std::string bytes = mark ? (big ? "\xFE\xFF" : "\xFF\xFE") : "";
      for (char16_t u : doc) {
        char hi = static_cast<char>(u >> 8), lo = static_cast<char>(u & 0xFF);
        bytes += big ? std::string{hi, lo} : std::string{lo, hi};
      }
      std::string name = dir.Path("doc16.xml");
      std::ofstream(name, std::ios::binary) << bytes;
      TRun r = RunTool("xml text " + name);
      EXPECT_EQ(r.Status, 0) << big << mark;
      EXPECT_EQ(r.Out, want) << big << mark;
      TRun f = RunTool("xml format " + name);
      EXPECT_EQ(f.Status, 0) << big << mark;
      EXPECT_NE(f.Out.find("<p>caf\xC3\xA9 "), std::string::npos) << f.Out;
    }
  std::string utf32("\xFF\xFE\0\0<\0\0\0", 8);
  TRun r = run("xml text -", &utf32);
  EXPECT_EQ(r.Status, 1);
  EXPECT_EQ(r.Err, "htcore: UTF-32 input is not supported; convert it to UTF-8 first\n");
}
