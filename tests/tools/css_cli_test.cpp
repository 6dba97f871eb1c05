// htcore css, run as a user would.
#include "cli_run.h"

#include <gtest/gtest.h>
#include <string>

using clirun::run;
using clirun::TRun;

TEST(CliCss, Commands) {
  std::string css = "a, b > .c:hover { color: #333; background: #fff url(x.png); padding-top:1px;"
                    "padding-right:1px;padding-bottom:1px;padding-left:1px }\n"
                    "@media print { p::before { content: \"\xE2\x96\xB8\" } }";
  struct {
    const char* mode;
    const char* out;
  } cases[] = {
      {"format", "a, b>.c:Hover{\n  color: #333;\n  background: #fff url('x.png');\n  padding-top:1px;\n  "
                 "padding-right:1px;\n"
                 "  padding-bottom:1px;\n  padding-left:1px;\n}\n@media print{\np:Before{\n  "
                 "content:'\xE2\x96\xB8';\n}\n}\n"},
      {"minify", "a,b>.c:Hover{color: #333;background: #fff url('x.png');padding:1px;}@media "
                 "print{p:Before{content:'\xE2\x96\xB8';}}\n"},
      {"dark", "a, b>.c:Hover{\n  color: #E6E6E6;\n  background: #262626 url('x.png');\n  padding-top:1px;\n "
               " padding-right:1px;\n"
               "  padding-bottom:1px;\n  padding-left:1px;\n}\n@media print{\np:Before{\n  "
               "content:'\xE2\x96\xB8';\n}\n}\n"},
      {"selectors", "a\t1\tmain\ttag a\nb>.c:Hover\t33\tmain\tclass c\np:Before\t17\tbefore\ttag p\n"},
  };
  for (auto& c : cases) {
    TRun r = run(std::string("css ") + c.mode + " -", &css);
    EXPECT_EQ(r.Status, 0) << c.mode;
    EXPECT_EQ(r.Out, c.out) << c.mode;
    EXPECT_EQ(r.Err, "");
  }
}

TEST(CliCss, HelpAndFailures) {
  TRun h = run("css --help");
  EXPECT_EQ(h.Status, 0);
  EXPECT_NE(h.Out.find("selectors"), std::string::npos);
  EXPECT_NE(h.Out.find("example:"), std::string::npos);

  TRun missing = run("css format /nonexistent/x.css");
  EXPECT_EQ(missing.Status, 1);
  EXPECT_EQ(missing.Err, "htcore: cannot open '/nonexistent/x.css': No such file or directory\n");
  TRun bad = run("css shout x.css");
  EXPECT_EQ(bad.Status, 1);
  EXPECT_EQ(bad.Err.find('\n'), bad.Err.size() - 1);
  TRun dir = run("css format /");
  EXPECT_EQ(dir.Status, 1);

  std::string junk = "}}}{{{ a { color: ;; } @@@ \"open";
  TRun any = run("css format -", &junk);
  EXPECT_EQ(any.Status, 0);
}
