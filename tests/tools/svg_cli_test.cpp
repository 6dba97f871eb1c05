// The svg command of the htcore tool.
#include "cli_run.h"

#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

using clirun::quote;
using clirun::run;

TEST(CliSvg, DemoWritesTheScenes) {
  std::string dir = ::testing::TempDir() + "htcore_svg_demo_" + std::to_string(getpid());
  clirun::TRun r = run("svg demo " + quote(dir) + " --only rects --only pages");
  EXPECT_EQ(r.Status, 0) << r.Err;
  EXPECT_EQ(r.Out, "4 SVG documents and index.html written to " + dir + "\n");
  std::string rects = clirun::slurp(dir + "/rects.svg");
  EXPECT_EQ(rects.rfind("<svg version=\"1.0\" xmlns=\"http://www.w3.org/2000/svg\"", 0), 0u) << rects;
  EXPECT_EQ(rects.find('\r'), std::string::npos);
  EXPECT_NE(clirun::slurp(dir + "/pages-3.svg").find("Page 3"), std::string::npos);
  EXPECT_NE(clirun::slurp(dir + "/index.html").find("<img src=\"pages-2.svg\""), std::string::npos);
  for (const char* f : {"rects.svg", "pages-1.svg", "pages-2.svg", "pages-3.svg", "index.html"})
    unlink((dir + "/" + f).c_str());
  rmdir(dir.c_str());
}

TEST(CliSvg, HelpAndFailures) {
  clirun::TRun h = run("svg --help");
  EXPECT_EQ(h.Status, 0);
  EXPECT_NE(h.Out.find("example:\n  htcore svg demo"), std::string::npos);
  struct {
    std::string args, err;
  } cases[] = {
      {"svg", "usage: htcore svg demo"},
      {"svg draw /tmp/x", "unknown svg command 'draw'"},
      {"svg demo", "usage: htcore svg demo"},
      {"svg demo /tmp/x --only nothing", "no scene 'nothing'"},
      {"svg demo /tmp/x --bad", "unknown option '--bad'"},
      {"svg demo /proc/version", "'/proc/version' is not a directory"},
      {"svg demo /proc/no/such/dir", "cannot create '/proc/no/such/dir'"},
  };
  for (auto& c : cases) {
    clirun::TRun r = run(c.args);
    EXPECT_EQ(r.Status, 1) << c.args;
    EXPECT_NE(r.Err.find(c.err), std::string::npos) << c.args << ": " << r.Err;
    EXPECT_EQ(r.Err.find('\n'), r.Err.size() - 1) << "one line: " << r.Err;
    EXPECT_TRUE(r.Out.empty()) << c.args;
  }
}
