#include "htcore/document/html_colours.h"
#include "htcore/foundation/colour.h"
#include "htcore/foundation/text_utils.h"

#include <algorithm>
#include <gtest/gtest.h>

using namespace ht;

TEST(HtmlColours, TablesAreLoweredAtStart) {
  auto colors = HtColorTable();
  ASSERT_EQ(colors.size(), 142u);
  EXPECT_EQ(colors.front().name, u"aliceblue");
  EXPECT_EQ(colors.back().name, u"yellowgreen");
  for (const THtColorRec& c : colors) {
    EXPECT_TRUE(
        std::none_of(c.name.begin(), c.name.end(), [](char16_t u) { return u >= u'A' && u <= u'Z'; }));
    EXPECT_LE(c.rgb, 0xFFFFFFu);
  }
  // Kept with their trailing blank.
  EXPECT_TRUE(std::any_of(colors.begin(), colors.end(), [](auto& c) { return c.name == u"indianred "; }));
  EXPECT_TRUE(std::any_of(colors.begin(), colors.end(), [](auto& c) { return c.name == u"indigo "; }));

  auto sys = HtSysColorTable();
  ASSERT_EQ(sys.size(), 42u);
  EXPECT_EQ(sys.front().name, u"activeborder");
  EXPECT_EQ(sys.back().name, u"windowtext");
  EXPECT_TRUE(std::is_sorted(sys.begin(), sys.end(), [](auto& a, auto& b) { return a.name < b.name; }));
  EXPECT_TRUE(std::adjacent_find(sys.begin(), sys.end(), [](auto& a, auto& b) { return a.name == b.name; }) ==
              sys.end());
}

TEST(HtmlColours, EveryNameReadsAsItsOpaqueColour) {
  for (const THtColorRec& c : HtColorTable()) {
    EXPECT_EQ(htmlHextoColor(c.name.view()), 0xFF000000 | c.rgb) << c.name.toUtf8();
    EXPECT_EQ(HtStringtoColor(c.name.view()), 0xFF000000 | c.rgb) << c.name.toUtf8();
  }
}

TEST(HtmlColours, HextoColorRules) {
  const struct {
    std::u16string_view in;
    uint32_t out;
  } cases[] = {
      {u"", 0xFF000000},
      {u"transparent", 0x00FFFFFF},
      {u"none", 0x1FFFFFFF},
      {u"#F00", 0xFFFF0000},
      {u"#f00", 0xFFFF0000},
      {u"#0f08", 0x8800FF00},
      {u"#123456", 0xFF123456},
      {u"#1234567", 0xFF123456}, // odd unit ignored
      {u"#12345678", 0x78123456},
      {u"#123456789a", 0x9A123456}, // alpha from the last pair
      {u"#", 1},
      {u"#1", 1},
      {u"#12", 1},
      {u"#12345", 1},
      {u"#12g", 1},
      {u"#1234567g", 1}, // a non-hex unit anywhere, even one that would be ignored
      {u"# 123", 1},
      {u"red", 0xFFFF0000},
      {u"teal", 0xFF008080},
      {u"rebeccapurple", 1}, // not in the table
      {u"Red", 1},           // ordinal: callers pass lower case
      {u"gray", 0xFF808080},
      {u"grey", 0xFF808080},
      {u"lightgrey", 0xFFD3D3D3},
      {u"darkgrey", 1},
      {u"indianred", 1},
      {u"indigo", 1},
      {u"indianred ", 0xFFCD5C5C},
      {u"fff", 0xFFFFFFFF}, // bare hex
      {u"ff000080", 0x80FF0000},
      {u"abc", 0xFFAABBCC},
      {u"reed", 1},
      {u"rgb(1,2,3)", 1},
      {u"rgba(255,0,0,0.5)", 0x80FF0000},
      {u"rgba(255, 0, 0, 0.5)", 0x80FF0000},
      {u"rgba( 1 , 2 , 3 , 1 )", 0xFF010203},
      {u"rgba(0,0,255,0)", 0x000000FF},
      {u"rgba(0,0,0,.25)", 0x40000000},
      {u"rgba(300,-5,7,2)", 0xFFFF0007}, // clamped
      {u"rgba(1,2,3)", 0xFF010203},      // no alpha: opaque
      {u"rgba(red,0.5)", 0x80FF0000},
      {u"rgba(red, 0.5)", 0x80FF0000},
      {u"rgba(#00f,0.5)", 0x800000FF},
      {u"rgba(#00f8,1)", 0xFF0000FF},
      {u"rgba(red)", 0xFFFF0000},
      {u"rgba(reed,0.5)", 1},
      {u"rgba(,0.5)", 1},
      {u"rgba()", 1},
      {u"rgba(", 1},
      {u"rgba(rgba(red,0.5),0.5)", 1},
  };
  for (const auto& c : cases)
    EXPECT_EQ(htmlHextoColor(c.in), c.out) << hstring(c.in).toUtf8();
}

TEST(HtmlColours, SysVariantHasNoRgbaAndFlagsSystemColours) {
  int is_system = 7;
  EXPECT_EQ(htmlHextoColorSys(u"rgba(255,0,0,0.5)", is_system), 1u);
  EXPECT_EQ(is_system, 0);
  EXPECT_EQ(htmlHextoColorSys(u"red", is_system), 0xFFFF0000u);
  EXPECT_EQ(is_system, 0);
  htmlHextoColorSys(u"buttonface", is_system);
  EXPECT_EQ(is_system, 1);
  htmlHextoColorSys(u"#fff", is_system);
  EXPECT_EQ(is_system, 0);
}

TEST(HtmlColours, NameLookupsIgnoreCase) {
  EXPECT_EQ(HtStringtoColor(u"Red"), 0xFFFF0000u);
  EXPECT_EQ(HtStringtoColor(u"GREY"), HtStringtoColor(u"gray"));
  EXPECT_EQ(HtStringtoColor(u"AliceBlue"), 0xFFF0F8FFu);
  EXPECT_EQ(HtStringtoColor(u"IndianRed"), 0u);
  EXPECT_EQ(HtStringtoColor(u"#f00"), 0u);
  EXPECT_EQ(HtStringtoColor(u""), 0u);
  EXPECT_EQ(HtStringtoSysColor(u"nosuch"), 0u);
  EXPECT_EQ(HtStringtoSysColor(u"red"), 0u);
}

TEST(HtmlColours, ColourText) {
  EXPECT_EQ(htmlColortoHex(0xFF123456), u"123456");
  EXPECT_EQ(htmlColortoHex(0x00ABCDEF), u"ABCDEF");
  EXPECT_EQ(htmlColortoHex(0), u"000000");
  EXPECT_EQ(htmlColortoStr(0xFFFF0000), u"#FF0000");
  EXPECT_EQ(htmlColortoStr(0x80FF0000), u"#FF000080");
  EXPECT_EQ(htmlColortoStr(0x00FFFFFF), u"#FFFFFF00");
  EXPECT_EQ(htmlColortoStr(0x0A0B0C0D), u"#0B0C0D0A");
  // Text written is read back as the same colour.
  for (uint32_t c : {0xFF000000u, 0x80FF0000u, 0x00000000u, 0x12345678u, 0xFFFFFFFFu}) {
    std::u16string lower;
    for (char16_t u : htmlColortoStr(c))
      lower += u >= u'A' && u <= u'Z' ? static_cast<char16_t>(u + 32) : u;
    EXPECT_EQ(htmlHextoColor(lower), c) << std::hex << c;
  }
}

namespace {

// A host theme that encodes the index it was asked for.
uint32_t host_theme(int index) { return 0xFE000000u | static_cast<uint32_t>(index) << 8 | 0x5A; }

struct ThemeGuard {
  TThemeColorProc old;
  explicit ThemeGuard(TThemeColorProc p) : old(SetThemeColorPrc(p)) {}
  ~ThemeGuard() { SetThemeColorPrc(old); }
};

} // namespace

TEST(HtmlColours, SystemNamesGoThroughTheThemeProcedure) {
  ThemeGuard guard(host_theme);
  const struct {
    std::u16string_view name;
    int index;
  } cases[] = {
      {u"scrollbar", 0},  {u"buttonface", 15},  {u"c3dface", 15},       {u"c3dhilight", 20},
      {u"highlight", 13}, {u"highlight2", 130}, {u"highlighttext", 14}, {u"canvastext", 8},
      {u"window", 5},     {u"windowtext", 8},   {u"menubar", 30},       {u"activeborder", 10},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(hstring(c.name).toUtf8());
    EXPECT_EQ(htmlHextoColor(c.name), host_theme(c.index));
    int is_system = 0;
    EXPECT_EQ(htmlHextoColorSys(c.name, is_system), host_theme(c.index));
    EXPECT_EQ(is_system, 1);
    EXPECT_EQ(HtStringtoSysColor(UpperCase(c.name).view()), host_theme(c.index));
  }
  for (const THtSysColorRec& r : HtSysColorTable())
    EXPECT_EQ(HtStringtoSysColor(r.name.view()), host_theme(r.index)) << r.name.toUtf8();
  // A colour name never asks the theme; rgba() over a system colour does.
  EXPECT_EQ(htmlHextoColor(u"red"), 0xFFFF0000u);
  EXPECT_EQ(htmlHextoColor(u"rgba(highlight, 0.5)"), 0x80000D5Au);
}

TEST(HtmlColours, DefaultThemeIsTheBuiltInTable) {
  ThemeGuard guard(nullptr);
  EXPECT_EQ(htmlHextoColor(u"window"), DefaultThemeColor(5));
  EXPECT_EQ(htmlHextoColor(u"window"), 0xFFFFFFFFu);
  EXPECT_EQ(htmlHextoColor(u"windowtext"), 0xFF000000u);
  EXPECT_EQ(HtStringtoSysColor(u"ButtonFace"), DefaultThemeColor(15));
  EXPECT_EQ(HtStringtoSysColor(u"ButtonFace") >> 24, 0xFFu);
}
