// htcore style, run as a user would.
#include "cli_run.h"

#include <cstdio>
#include <fstream>
#include <gtest/gtest.h>
#include <string>

using clirun::run;
using clirun::TRun;

TEST(CliStyle, JsonLinesPerElement) {
  std::string html = "<!doctype html><html><head><style>p { color: red; margin: 1em 5% } "
                     "@media (max-width: 500px) { p { color: blue } }</style></head>"
                     "<body><p style='font-size: 20px'>a</p><p align=center>b</p></body></html>";
  TRun r = run("style - --props display,color,margin-*,text-align,font-size,line-height,no-such", &html);
  EXPECT_EQ(r.Status, 0);
  EXPECT_EQ(r.Err, "");
  const std::string tail = "\"no-such\":null}\n";
  EXPECT_NE(r.Out.find("{\"path\":\"/html/body/p\",\"tag\":\"p\",\"n\":0,\"display\":\"block\",\"color\":\"rgb(255, 0, "
                       "0)\",\"margin-top\":\"20px\",\"margin-right\":\"5%\",\"margin-bottom\":\"20px\","
                       "\"margin-left\":\"5%\",\"text-align\":\"left\",\"font-size\":\"20px\",\"line-height\":"
                       "\"24px\"," + tail),
            std::string::npos)
      << r.Out;
  EXPECT_NE(r.Out.find("\"tag\":\"p\",\"n\":1,"), std::string::npos);
  EXPECT_NE(r.Out.find("\"text-align\":\"xcenter\""), std::string::npos);
  EXPECT_NE(r.Out.find("{\"path\":\"/html/head/style\",\"tag\":\"style\",\"n\":0,\"display\":\"none\""),
            std::string::npos);
  // The width switches the media rule.
  TRun narrow = run("style - --width 480 --props color", &html);
  EXPECT_NE(narrow.Out.find("\"n\":0,\"color\":\"rgb(0, 0, 255)\"}"), std::string::npos) << narrow.Out;
}

TEST(CliStyle, ExtraSheets) {
  std::string dir = ::testing::TempDir();
  std::string css = dir + "htcore_style_extra.css";
  std::ofstream(css) << "p { color: #0f0 }";
  std::string html = "<p>x";
  TRun r = run("style - --props color --css " + clirun::quote(css), &html);
  std::remove(css.c_str());
  EXPECT_EQ(r.Status, 0);
  EXPECT_NE(r.Out.find("\"tag\":\"p\",\"n\":0,\"color\":\"rgb(0, 255, 0)\"}"), std::string::npos) << r.Out;
}

TEST(CliStyle, HelpAndFailures) {
  TRun h = run("style --help");
  EXPECT_EQ(h.Status, 0);
  EXPECT_NE(h.Out.find("rgb(R, G, B)"), std::string::npos);
  EXPECT_NE(h.Out.find("example:"), std::string::npos);
  std::string html = "<p>x";
  for (const char* args : {"style /nonexistent/x.html", "style - --width 0", "style - --width abc",
                           "style - --props ,", "style - --css /nonexistent/x.css", "style - --frob",
                           "style", "style - -- x", "style - --at -5", "style - --at 1e3",
                           "style - --then 'p{}'"}) {
    TRun r = run(args, &html);
    EXPECT_EQ(r.Status, 1) << args;
    EXPECT_EQ(r.Out, "") << args;
    EXPECT_EQ(r.Err.find('\n'), r.Err.size() - 1) << args;
  }
}

TEST(CliStyle, AtAMomentOfAnimationsAndTransitions) {
  std::string html = "<!doctype html><style>@keyframes grow { from { width: 10px } to { width: 110px } }"
                     "div { animation: grow 1s linear 2 } p { transition: opacity 1s linear }</style>"
                     "<div>x</div><p>y</p>";
  const struct {
    const char* at;
    const char* width;
    const char* opacity;
  } cases[] = {
      {"0", "auto", "1"},        // as loaded
      {"250", "35px", "0.75"},   // a quarter of the way
      {"1500", "60px", "0"},     // the second iteration; the transition is over
      {"2500", "auto", "0"},     // both iterations over: the declared width again
  };
  for (const auto& c : cases) {
    TRun r = run(std::string("style - --props width,opacity --at ") + c.at + " --then 'p { opacity: 0 }'", &html);
    EXPECT_EQ(r.Status, 0) << r.Err;
    EXPECT_NE(r.Out.find(std::string("\"tag\":\"div\",\"n\":0,\"width\":\"") + c.width + "\""),
              std::string::npos)
        << c.at << ": " << r.Out;
    EXPECT_NE(r.Out.find(std::string("\"tag\":\"p\",\"n\":0,\"width\":\"auto\",\"opacity\":\"") + c.opacity +
                         "\""),
              std::string::npos)
        << c.at << ": " << r.Out;
  }
}
