// htcore render-svg, run as a user would run it.
#include "cli_run.h"

#include "htcore/document/xml_node.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <unistd.h>

namespace {

std::string TempPath(const std::string& name) {
  return ::testing::TempDir() + "htcore_svg_" + std::to_string(getpid()) + "_" + name;
}

} // namespace

TEST(RenderSvgCli, PageBecomesAnSvgDocumentWithItsText) {
  std::string out = TempPath("page.svg");
  TRun r = run("render-svg " + quote(HTCORE_SOURCE_DIR "/examples/page.html") + " " + quote(out) + " --width 600");
  ASSERT_EQ(r.Status, 0) << r.Err;
  EXPECT_EQ(r.Out, "");
  std::string svg = slurp(out);
  std::unique_ptr<ht::THtXMLNode> root;
  ASSERT_NO_THROW(root = std::make_unique<ht::THtXMLNode>(ht::hstring::FromUtf8(svg))) << svg;
  EXPECT_EQ(svg.rfind("<svg", 0), 0u) << svg.substr(0, 200);
  EXPECT_NE(svg.find("width=\"600\""), std::string::npos);
  for (const char* text : {">Spring catalogue</text>", ">Tea pot \xE2\x98\x85</text>", ">24.50</text>",
                           ">Returns within 30 days</text>"})
    EXPECT_NE(svg.find(text), std::string::npos) << text;
  EXPECT_EQ(svg.find("console.log"), std::string::npos);
  std::filesystem::remove(out);
}

TEST(RenderSvgCli, ExtraSheetsAndErrors) {
  std::string out = TempPath("css.svg"), css = TempPath("red.css");
  {
    FILE* f = std::fopen(css.c_str(), "w");
    std::fputs("h1 { color: #ff0000 }", f);
    std::fclose(f);
  }
  TRun r = run("render-svg " + quote(HTCORE_SOURCE_DIR "/examples/page.html") + " " + quote(out) + " --css " + quote(css));
  ASSERT_EQ(r.Status, 0) << r.Err;
  EXPECT_NE(slurp(out).find("fill:#FF0000"), std::string::npos);

  struct {
    std::string args, error;
  } bad[] = {
      {"", "usage: htcore render-svg FILE.html OUT.svg"},
      {"/nonexistent/x.html " + quote(out), "cannot open '/nonexistent/x.html'"},
      {quote(HTCORE_SOURCE_DIR "/examples/page.html") + " " + quote(out) + " --width 0", "--width takes"},
      {quote(HTCORE_SOURCE_DIR "/examples/page.html") + " /nonexistent/dir/out.svg", "cannot write"},
      {quote(HTCORE_SOURCE_DIR "/examples/page.html") + " " + quote(out) + " --frob", "unknown option"},
  };
  for (auto& b : bad) {
    TRun e = run("render-svg " + b.args);
    EXPECT_EQ(e.Status, 1) << b.args;
    EXPECT_NE(e.Err.find(b.error), std::string::npos) << b.args << ": " << e.Err;
    EXPECT_EQ(std::count(e.Err.begin(), e.Err.end(), '\n'), 1) << e.Err;
  }
  std::filesystem::remove(out);
  std::filesystem::remove(css);
}
