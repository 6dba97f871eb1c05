// The example layout loop of examples/render_svg, drawn on the recording canvas.
#include "approx_canvas.h"
#include "graphics/recording_canvas.h"
#include "page_layout.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

using namespace ht;
using namespace render_svg;

namespace {

struct TRendered {
  std::string Log;
  float Height = 0;
  std::vector<std::string> Texts; // the strings drawn, in order
  std::vector<TRectF> TextRects;
};

TRendered Render(const std::string& Html, float Width = 400, std::vector<std::string> Sheets = {}) {
  TStyledPage page;
  page.Load(Html, "./", Sheets, static_cast<int>(Width));
  TApproxCanvas measure;
  TPageLayout layout(measure);
  TRendered r;
  r.Height = layout.Layout(page.Root(), Width);
  testing_canvas::TRecordingCanvas canvas;
  layout.Paint(canvas);
  r.Log = canvas.Text();
  for (const TPaintItem& it : layout.Items())
    if (it.Kind == TPaintItem::piText) {
      r.Texts.push_back(hstring(it.Text.view().substr(static_cast<size_t>(it.First - 1),
                                                      static_cast<size_t>(it.Length)))
                            .toUtf8());
      r.TextRects.push_back(it.R);
    }
  return r;
}

} // namespace

TEST(PageLayout, WhiteSpaceCollapsesInNormalTextAndStaysInPre) {
  TRendered r = Render("<p>  one   two\n three  </p><pre>a  b\n  c</pre>");
  ASSERT_EQ(r.Texts.size(), 4u) << r.Log;
  EXPECT_EQ(r.Texts[0], "one two three");
  // Kept blanks wider than one space are gaps between strings, which viewers would squeeze.
  EXPECT_EQ(r.Texts[1], "a");
  EXPECT_EQ(r.Texts[2], "b");
  EXPECT_NEAR(r.TextRects[2].Left - r.TextRects[1].Right, 2 * 0.6f * 16, 0.01);
  EXPECT_EQ(r.Texts[3], "c");
  EXPECT_GT(r.TextRects[3].Top, r.TextRects[2].Top); // the pre line end starts a line
  EXPECT_NEAR(r.TextRects[3].Left, 2 * 0.6f * 16, 0.01);
}

TEST(PageLayout, LinesBreakAtRunFlagsWithinTheWidth) {
  std::string words;
  for (int i = 0; i < 40; ++i)
    words += "word" + std::to_string(i) + " ";
  TRendered r = Render("<body style='margin:0'><p style='margin:0'>" + words + "well-known</p>", 200);
  ASSERT_GT(r.Texts.size(), 5u);
  for (size_t i = 0; i < r.Texts.size(); ++i) {
    EXPECT_LE(r.TextRects[i].Right, 200.5f) << r.Texts[i];
    EXPECT_EQ(r.TextRects[i].Left, 0) << r.Texts[i];
    EXPECT_NE(r.Texts[i].back(), ' ') << "a line ends in a blank: " << r.Texts[i];
    if (i) {
      EXPECT_GT(r.TextRects[i].Top, r.TextRects[i - 1].Top);
    }
  }
  // A narrow page cuts "well-known" after its hyphen, never inside a word.
  TRendered n = Render("<body style='margin:0'><p style='margin:0'>well-known</p>", 50);
  ASSERT_EQ(n.Texts.size(), 2u) << n.Log;
  EXPECT_EQ(n.Texts[0], "well-");
  EXPECT_EQ(n.Texts[1], "known");
}

TEST(PageLayout, BoxesTakeMarginsBordersPaddingsAndWidths) {
  TRendered r = Render("<body style='margin:10px'><div style='width:100px;padding:5px;border:2px solid red;"
                       "margin:0 auto;background:#00f'>x</div>",
                       400);
  // Centred: (400 - 20 - 114) / 2 + 10 = 143; the border box is 114 wide.
  EXPECT_NE(r.Log.find("FillPath #FF0000FF M143,10 L257,10"), std::string::npos) << r.Log;
  ASSERT_EQ(r.Texts.size(), 1u);
  EXPECT_EQ(r.TextRects[0].Left, 143 + 2 + 5);
  // Four border strips in red.
  size_t reds = 0;
  for (size_t at = 0; (at = r.Log.find("FillPath #FFFF0000", at)) != std::string::npos; ++at)
    ++reds;
  EXPECT_EQ(reds, 4u) << r.Log;
}

TEST(PageLayout, TextAlignAndListMarkers) {
  TRendered r = Render("<body style='margin:0'><p style='text-align:right;margin:0'>end</p>"
                       "<ol style='margin:0'><li>a<li>b</ol><ul><li>dot</ul>",
                       300);
  ASSERT_GE(r.Texts.size(), 5u) << r.Log;
  EXPECT_EQ(r.Texts[0], "end");
  EXPECT_NEAR(r.TextRects[0].Right, 300, 0.01);
  EXPECT_EQ(r.Texts[1], "a");
  EXPECT_EQ(r.Texts[2], "1.");
  EXPECT_LT(r.TextRects[2].Right, r.TextRects[1].Left);
  EXPECT_EQ(r.Texts[4], "2.");
  EXPECT_NE(r.Log.find("FillPath"), std::string::npos); // the disc
}

TEST(PageLayout, RealPageDrawsAllItsText) {
  std::ifstream f(HTCORE_SOURCE_DIR "/examples/page.html", std::ios::binary);
  std::stringstream ss;
  ss << f.rdbuf();
  TRendered r = Render(ss.str(), 600);
  std::string all;
  for (const std::string& t : r.Texts)
    all += t + "|";
  for (const char* expected : {"Spring catalogue", "Tea pot", "24.50", "Returns within 30 days"})
    EXPECT_NE(all.find(expected), std::string::npos) << expected << " in " << all;
  EXPECT_EQ(all.find("console.log"), std::string::npos); // scripts are not shown
  EXPECT_GT(r.Height, 150);
}
