// The path command of the htcore tool.
#include "cli_run.h"

#include <gtest/gtest.h>
#include <string>

using clirun::quote;
using clirun::run;

TEST(CliPath, Modes) {
  struct {
    std::string args, out;
  } cases[] = {
      {"normalize " + quote("m10 10 h 80 v 40 a 10 10 0 0 1 -10 10 H10 z"),
       "M10 10 90 10 90 50 A10 10 0 0 1 80 60 L10 60 z\n"},
      {"normalize " + quote("M0 0 c1 1 2 1 3 0 s2 -1 3 0"), "M0 0C1 1,2 1,3 0 4 -1,5 -1,6 0\n"},
      {"bounds " + quote("M10 10 h 80 v 40 a 10 10 0 0 1 -10 10 H10 z"), "10 10 90 60\n"},
      {"bounds ''", "0 0 0 0\n"},
      {"flatten " + quote("M0 0 C 0 10 10 10 10 0"),
       "M0 0 0.28 2.7 1.04 4.8 2.16 6.3 3.52 7.2 5 7.5 6.48 7.2 7.84 6.3 "
       "8.96 4.8 9.72 2.7 10 0\n"},
      {"flatten --tolerance 0.1 " + quote("M0 0 C 0 10 10 10 10 0 z"),
       "M0 0 2.5926 6.6667 7.4074 6.6667 10 0 z\n"},
  };
  for (auto& c : cases) {
    clirun::TRun r = run("path " + c.args);
    EXPECT_EQ(r.Status, 0) << c.args << r.Err;
    EXPECT_EQ(r.Out, c.out) << c.args;
  }
  std::string in = "M1 2 L3 4";
  clirun::TRun r = run("path normalize -", &in);
  EXPECT_EQ(r.Out, "M1 2 3 4\n");
}

TEST(CliPath, HelpAndFailures) {
  clirun::TRun h = run("path --help");
  EXPECT_EQ(h.Status, 0);
  EXPECT_NE(h.Out.find("example:\n  htcore path flatten"), std::string::npos);
  struct {
    std::string args, err;
  } bad[] = {
      {"path normalize 'M0 0 X1'", "htcore: Unknown path command X\n"},
      {"path flatten --tolerance -1 'M0 0'", "htcore: bad tolerance '-1': a positive number is expected\n"},
      {"path shrink 'M0 0'", "htcore: unknown path command 'shrink'; usage: htcore path "
                             "normalize|bounds|flatten [--tolerance T] DATA|-\n"},
      {"path bounds", "htcore: usage: htcore path normalize|bounds|flatten [--tolerance T] DATA|-\n"},
  };
  for (auto& b : bad) {
    clirun::TRun r = run(b.args);
    EXPECT_EQ(r.Status, 1) << b.args;
    EXPECT_EQ(r.Err, b.err) << b.args;
    EXPECT_EQ(r.Out, "") << b.args;
  }
}
