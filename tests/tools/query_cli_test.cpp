// htcore query, run as a user would.
#include "cli_run.h"

#include <gtest/gtest.h>
#include <string>

using clirun::run;
using clirun::TRun;

TEST(CliQuery, MatchesAsHtmlOrPaths) {
  std::string html = "<!doctype html><title>t</title><ul class=m><li>a<li class=x>b</ul>"
                     "<p class=x>\xC3\xA9t\xC3\xA9</p>";
  struct {
    const char* args;
    int status;
    const char* out;
  } cases[] = {
      {"query - '.x'", 0, "<li class=\"x\">b</li>\n<p class=\"x\">\xC3\xA9t\xC3\xA9</p>\n"},
      {"query --paths - 'ul.m > li, p'", 0, "body/ul/li\nbody/ul/li\nbody/p\n"},
      {"query - 'li:last-child' --paths", 0, "body/ul/li\n"},
      {"query - 'table'", 1, ""},
  };
  for (auto& c : cases) {
    TRun r = run(c.args, &html);
    EXPECT_EQ(r.Status, c.status) << c.args;
    EXPECT_EQ(r.Out, c.out) << c.args;
    EXPECT_EQ(r.Err, "") << c.args;
  }
}

TEST(CliQuery, HelpAndFailures) {
  TRun h = run("query --help");
  EXPECT_EQ(h.Status, 0);
  EXPECT_NE(h.Out.find("--paths"), std::string::npos);
  EXPECT_NE(h.Out.find("example:"), std::string::npos);

  std::string html = "<p>x";
  struct {
    const char* args;
    const char* err;
  } cases[] = {
      {"query /nonexistent/x.html p", "htcore: cannot open '/nonexistent/x.html': No such file or directory\n"},
      {"query - '{{'", "htcore: not a selector: '{{'\n"},
      {"query --frob - p", nullptr},
      {"query -", nullptr},
  };
  for (auto& c : cases) {
    TRun r = run(c.args, &html);
    EXPECT_EQ(r.Status, 1) << c.args;
    EXPECT_EQ(r.Out, "") << c.args;
    EXPECT_EQ(r.Err.find('\n'), r.Err.size() - 1) << c.args;
    if (c.err) {
      EXPECT_EQ(r.Err, c.err) << c.args;
    }
  }
}
