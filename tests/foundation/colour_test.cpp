#include "htcore/foundation/colour.h"

#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <gtest/gtest.h>

using namespace ht;

TEST(MulDiv, RoundsHalvesAwayFromZero) {
  struct {
    int a, b, c, expected;
  } cases[] = {
      {255, 50, 100, 128},
      {-255, 50, 100, -128},
      {255, -50, 100, -128},
      {-255, -50, 100, 128},
      {255, 50, -100, -128},
      {1, 1, 2, 1},
      {-1, 1, 2, -1},
      {1, 1, 3, 0},
      {2, 1, 3, 1},
      {-2, 1, 3, -1},
      {5, 1, -2, -3},
      {7, 3, 2, 11},
      {-7, 3, 2, -11},
      {0, 5, 7, 0},
      {100, 100, 3, 3333},
      {1, 1, 0, -1},
      // The product needs 64 bits; only the quotient must fit.
      {INT_MAX, INT_MAX, INT_MAX, INT_MAX},
      {INT_MIN, 1, 1, INT_MIN},
      {65536, 65536, 65536, 65536},
      {INT_MAX, 2, 1, -1}, // overflow answers -1 like the platform
      {INT_MIN, 1, -1, -1},
  };
  for (auto& c : cases)
    EXPECT_EQ(MulDiv(c.a, c.b, c.c), c.expected) << c.a << " * " << c.b << " / " << c.c;
}

TEST(Colour, LighterAndDarkerKeepAlphaAndClamp) {
  struct {
    uint32_t color;
    int percent;
    uint32_t lighter, darker;
  } cases[] = {
      {0xFF000000, 50, 0xFF808080, 0xFF000000},
      {0xFFFFFFFF, 50, 0xFFFFFFFF, 0xFF7F7F7F}, // 255 - 127.5 rounded up
      {0x80102030, 0, 0x80102030, 0x80102030},
      {0x80102030, 100, 0x80FFFFFF, 0x80000000},
      {0x00FF0000, 50, 0x00FF8080, 0x007F0000},
      {0x12345678, 200, 0x12FFFFFF, 0x12000000}, // beyond 100 clamps
      {0x12345678, -100, 0x12000000, 0x1268ACF0},
      {0xFF336699, 20, 0xFF5C85AD, 0xFF29527A},
  };
  for (auto& c : cases) {
    EXPECT_EQ(Lighter(c.color, c.percent), c.lighter) << std::hex << c.color << " " << std::dec << c.percent;
    EXPECT_EQ(Darker(c.color, c.percent), c.darker) << std::hex << c.color << " " << std::dec << c.percent;
  }
}

TEST(Colour, AddOpacityScalesAlphaOnly) {
  struct {
    uint32_t color;
    float opacity;
    uint32_t expected;
  } cases[] = {
      {0xFF112233, 1.0f, 0xFF112233}, {0x80112233, 1.00005f, 0x80112233},
      {0x80112233, 0.5f, 0x40112233}, {0xFF112233, 0.5f, 0x80112233}, // 127.5 to even
      {0xFD112233, 0.5f, 0x7E112233},                                 // 126.5 to even
      {0x80112233, 3.0f, 0xFF112233}, {0x80112233, -1.0f, 0x00112233},
      {0x80112233, 0.0f, 0x00112233}, {0x80112233, NAN, 0x00112233},
  };
  for (auto& c : cases)
    EXPECT_EQ(AddOpacity(c.color, c.opacity), c.expected) << std::hex << c.color << " " << c.opacity;
}

TEST(Colour, PlatformOrderAndSystemColours) {
  EXPECT_EQ(Color2Win(0xFF112233), 0x332211u);
  EXPECT_EQ(Win2Color(0x332211), 0xFF112233u);
  EXPECT_EQ(Win2Color(0), 0xFF000000u);
  // 0x8000000F: the low byte picks system colour 15, the button face.
  EXPECT_EQ(Win2Color(-2147483633), Color2Win(GetSysColor(15)) | 0xFF000000u);
  EXPECT_EQ(Win2Color(-2147483633), 0xFFF0F0F0u);
  EXPECT_EQ(Win2Color(clSystemColor | 13), 0xFF0078D7u); // highlight, BGR 0xD77800 swapped
  EXPECT_EQ(Win2Color(clSystemColor | 200), 0xFF000000u);
  EXPECT_EQ(Win2Color(-1), 0xFF000000u); // index 255
  EXPECT_EQ(GetSysColor(5), 0xFFFFFFu);
  EXPECT_EQ(GetSysColor(24), 0xE1FFFFu); // info background, platform order
  EXPECT_EQ(GetSysColor(30), 0xF0F0F0u);
  EXPECT_EQ(GetSysColor(31), 0u);
  EXPECT_EQ(GetSysColor(-1), 0u);
  EXPECT_EQ(DefaultThemeColor(24), 0xFFFFFFE1u);
  EXPECT_EQ(ThemeColor(24), 0xFFFFFFE1u);
}

TEST(Colour, ThemeProcedureReplacesSystemColours) {
  TThemeColorProc before = SetThemeColorPrc([](int Index) -> uint32_t { return 0xFF00FF00u + Index; });
  EXPECT_EQ(before, nullptr);
  EXPECT_EQ(ThemeColor(5), 0xFF00FF05u);
  EXPECT_EQ(GetSysColor(5), 0x05FF00u); // platform order, no alpha
  EXPECT_EQ(Win2Color(clSystemColor | 15), 0xFF00FF0Fu);
  EXPECT_EQ(DefaultThemeColor(5), 0xFFFFFFFFu);
  TThemeColorProc mine = SetThemeColorPrc(nullptr);
  EXPECT_NE(mine, nullptr);
  EXPECT_EQ(Win2Color(clSystemColor | 15), 0xFFF0F0F0u);
}

TEST(Colour, OneColorTellsWhetherAnyPixelDiffers) {
  uint32_t px[5] = {7, 7, 7, 7, 7};
  EXPECT_FALSE(OneColor(nullptr, 7, 5));
  EXPECT_FALSE(OneColor(px, 7, 0));
  EXPECT_FALSE(OneColor(px, 8, 0)); // empty area: "one colour" whatever the colour
  EXPECT_FALSE(OneColor(px, 7, -3));
  EXPECT_FALSE(OneColor(px, 7, 5));
  EXPECT_TRUE(OneColor(px, 8, 5));
  px[4] = 9;
  EXPECT_FALSE(OneColor(px, 7, 4));
  EXPECT_TRUE(OneColor(px, 7, 5));
}

TEST(Colour, RGBToHSBUsesTheHexcone) {
  struct {
    uint32_t color;
    double hue, saturation, brightness;
  } cases[] = {
      {0xFF000000, 300, 0, 0}, // greys, black included, read hue 300
      {0xFFFFFFFF, 300, 0, 100},
      {0x00808080, 300, 0, 100.0 * 128 / 255},
      {0xFFFF0000, 0, 100, 100},
      {0xFF00FF00, 120, 100, 100},
      {0xFF0000FF, 240, 100, 100},
      {0xFFFFFF00, 60, 100, 100},
      {0xFFFF00FF, 300, 100, 100},
      {0xFF336699, 210, 100.0 * 102 / 153, 60},
      {0xFFFF0080, 360 - 60.0 * 128 / 255, 100, 100}, // red dominant, negative sector wraps
  };
  for (auto& c : cases) {
    THSBColor h = RGBToHSB(TRGBA::FromColor(c.color));
    EXPECT_NEAR(h.Hue, c.hue, 1e-9) << std::hex << c.color;
    EXPECT_NEAR(h.Saturation, c.saturation, 1e-9) << std::hex << c.color;
    EXPECT_NEAR(h.Brightness, c.brightness, 1e-9) << std::hex << c.color;
  }
}

TEST(Colour, HSBToRGBWrapsHueAndClamps) {
  struct {
    double h, s, b;
    uint32_t expected;
  } cases[] = {
      {0, 100, 100, 0xFFFF0000},    {120, 100, 100, 0xFF00FF00},
      {240, 100, 100, 0xFF0000FF},  {360, 100, 100, 0xFFFF0000},
      {-120, 100, 100, 0xFF0000FF}, {720 + 60, 100, 100, 0xFFFFFF00},
      {300, 0, 50, 0xFF808080}, // grey: 127.5 to even
      {42, 0, 0, 0xFF000000},       {0, 150, 200, 0xFFFF0000},
      {0, -5, 100, 0xFFFFFFFF},     {210, 100.0 * 102 / 153, 60, 0xFF336699},
      {NAN, 100, 100, 0xFFFF0000},
  };
  for (auto& c : cases)
    EXPECT_EQ(HSBtoRGBColor(c.h, c.s, c.b), c.expected) << c.h << " " << c.s << " " << c.b;
  EXPECT_EQ(HSVToRGB({120, 100, 100}), (TRGBA{0, 255, 0, 255}));
}

TEST(Colour, HSBRoundTripOverAGrid) {
  for (int r = 0; r < 256; r += 15)
    for (int g = 0; g < 256; g += 15)
      for (int b = 0; b < 256; b += 15) {
        TRGBA c{static_cast<uint8_t>(b), static_cast<uint8_t>(g), static_cast<uint8_t>(r), 255};
        TRGBA back = HSVToRGB(RGBToHSB(c));
        ASSERT_LE(std::abs(back.r - r), 1) << r << "," << g << "," << b;
        ASSERT_LE(std::abs(back.g - g), 1) << r << "," << g << "," << b;
        ASSERT_LE(std::abs(back.b - b), 1) << r << "," << g << "," << b;
        ASSERT_EQ(back.a, 255);
      }
}

TEST(Colour, ByteViewMatchesTheValue) {
  TRGBA c = TRGBA::FromColor(0x80112233);
  EXPECT_EQ(c.a, 0x80);
  EXPECT_EQ(c.r, 0x11);
  EXPECT_EQ(c.g, 0x22);
  EXPECT_EQ(c.b, 0x33);
  EXPECT_EQ(c.Color(), 0x80112233u);
  // Pixel rows are read through this view in place.
  uint32_t px = 0x80112233;
  TRGBA viewed;
  std::memcpy(&viewed, &px, 4);
  EXPECT_EQ(viewed, c);
}
