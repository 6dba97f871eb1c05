#include "htcore/style/measure.h"

#include <cmath>
#include <gtest/gtest.h>
#include <string>

using namespace ht;

namespace {

TCSSTokens ValueTokens(const char16_t* text) { return CSSValueTokens(hstring(text)); }

struct TStyle : TMeasureContext {
  bool has_parent = true;
  float root = 20;
  TRectF rect{0, 0, 800, 600};
  float scale = 1;
  bool HasParentElement() const override { return has_parent; }
  float RootFontSize() const override { return root; }
  TRectF DrawRect() const override { return rect; }
  float ScaleFactor() const override { return scale; }
};

// Decodes text's first token; base is the percentage base (negative: none).
float Pixels(const char16_t* text, float base = -1, const TMeasureContext* style = nullptr) {
  TCSSTokens toks = ValueTokens(text);
  TCSSTokenSequence seq;
  seq.Init(&toks);
  TMeasure m;
  m.Init(style);
  m.Decode(seq);
  if (base >= 0)
    m.Parent = &base;
  return m.GetFPixels();
}

TEST(Measure, DecodeKeywordsAndUnits) {
  TStyle style;
  style.IntFontSize = 16;
  struct {
    const char16_t* text;
    float base;
    float expected;
  } cases[] = {
      {u"12", -1, 12},       {u"12px", -1, 12},    {u"50%", 200, 100},    {u"50%", -1, 0},
      {u"2em", -1, 32},      {u"1ex", -1, 11},     {u"1in", -1, 96},      {u"1pt", -1, 96.0f / 72},
      {u"1pc", -1, 16},      {u"2.54cm", -1, 96},  {u"25.4mm", -1, 96},   {u"2rem", -1, 40},
      {u"10vw", -1, 80},     {u"10vh", -1, 60},    {u"1.5s", 10, 15},     {u"1.5s", -1, 1.5f},
      {u"auto", 100, 0},     {u"AUTO", 100, 0},    {u"none", 100, 0},     {u"left", 200, 0},
      {u"center", 200, 100}, {u"Right", 200, 200}, {u"bottom", 200, 200}, {u"smaller", 10, 8},
      {u"larger", 10, 12},   {u"xx-small", -1, 9}, {u"x-small", -1, 10},  {u"small", -1, 14},
      {u"large", -1, 22},    {u"x-large", -1, 24}, {u"xx-large", -1, 26}, {u"thin", -1, 1},
      {u"medium", -1, 2},    {u"thick", -1, 3},    {u"normal", 10, 0},    {u"rgb(1,2,3)", -1, 0},
      {u"'5px'", -1, 0},     {u"banana", -1, 0},
  };
  for (auto& c : cases)
    EXPECT_FLOAT_EQ(Pixels(c.text, c.base, &style), c.expected) << hstring(c.text).toUtf8();
}

TEST(Measure, DecodeFlags) {
  struct {
    const char16_t* text;
    TMeasureFlags flags;
    TMeasureUnit unit;
  } cases[] = {
      {u"auto", {}, muNone},
      {u"none", {}, muNone},
      {u"NONE", {mfNotAuto}, muNone}, // "none" only in that case
      {u"normal", {mfNotAuto, mfInitial}, muNone},
      {u"inherit", {mfNotAuto, mfInherit}, muNone},
      {u"initial", {mfInitial}, muNone},
      {u"left", {mfNotAuto, mfLeft, mfZero}, muPercent},
      {u"center", {mfNotAuto, mfCenter}, muPercent},
      {u"foo(1px)", {}, muNone},
      {u"0", {mfNotAuto, mfZero}, muPX},
      {u"3em", {mfNotAuto}, muEM},
  };
  for (auto& c : cases) {
    TCSSTokens toks = ValueTokens(c.text);
    TCSSTokenSequence seq;
    seq.Init(&toks);
    TMeasure m;
    m.Init(nullptr);
    m.Decode(seq);
    EXPECT_EQ(m.Flags.Bits, c.flags.Bits) << hstring(c.text).toUtf8();
    EXPECT_EQ(m.FMUnit, c.unit) << hstring(c.text).toUtf8();
  }
  TCSSTokenSequence empty;
  TMeasure m;
  m.Init(nullptr);
  m.Decode(empty);
  EXPECT_FALSE(m.GetAuto());
}

TEST(Measure, CalcEvaluatesLazilyInPixels) {
  TStyle style;
  style.IntFontSize = 10;
  struct {
    const char16_t* text;
    float base;
    float expected;
  } cases[] = {
      {u"calc(100% - 10px)", 200, 190},
      {u"calc(2 * (3 + 4))", -1, 14},
      {u"calc(-2px + 3px)", -1, 1}, // "-2px" is one token
      {u"calc(- 2px)", -1, -2},
      {u"calc(2 * - 3)", -1, -6},
      {u"calc(- - 3)", -1, 3},
      {u"calc(10px / 0)", -1, 10},
      {u"calc(1px + 2px * 3)", -1, 7},
      {u"calc(10px - 2px - 3px)", -1, 5},
      {u"calc(12px / 2 / 3)", -1, 2},
      {u"calc(1em + 50% + 1in)", 10, 10 + 5 + 96},
      {u"calc(calc(1px + 1px) * 3)", -1, 6},
      {u"calc(1px + 2px) 40px", -1, 3}, // tokens behind the closing bracket do not count
      {u"calc()", -1, 0},
      {u"calc(", -1, 0},
      {u"calc(1px +", -1, 1},
      {u"calc(1px + 2px", -1, 2}, // operators left over for lack of ")" are not applied
      {u"calc(* / 5px)", -1, 5},
      {u"calc())))", -1, 0},
      {u"calc(var(--x) + 4px)", -1, 4},
      {u"calc(1e30 * 1e30)", -1, 0}, // overflow reads as 0
  };
  for (auto& c : cases)
    EXPECT_FLOAT_EQ(Pixels(c.text, c.base, &style), c.expected) << hstring(c.text).toUtf8();
}

TEST(Measure, CalcLeavesTheStoredMeasureForTheNextLayout) {
  TCSSTokens toks = ValueTokens(u"calc(50% + 1px)");
  TCSSTokenSequence seq;
  seq.Init(&toks);
  TMeasure stored;
  stored.Init(nullptr);
  stored.Decode(seq);
  EXPECT_TRUE(stored.Relative());
  for (float base : {100.0f, 300.0f}) {
    TMeasure m = stored;
    m.Parent = &base;
    EXPECT_FLOAT_EQ(m.GetFPixels(), base / 2 + 1);
    EXPECT_EQ(m.Calc, nullptr);
    EXPECT_EQ(m.FMUnit, muPX);
    EXPECT_FALSE(m.Relative());
  }
  EXPECT_EQ(stored.Calc, &toks);
}

TEST(Measure, DeeplyNestedCalcNeedsNoStack) {
  std::u16string text = u"calc(";
  for (int i = 0; i < 50000; ++i)
    text += u"(";
  text += u"7px";
  for (int i = 0; i < 50000; ++i)
    text += u")";
  text += u")";
  EXPECT_FLOAT_EQ(Pixels(text.c_str()), 7);
  std::u16string open = u"calc(" + std::u16string(50000, u'(') + u"1px+";
  EXPECT_FLOAT_EQ(Pixels(open.c_str()), 1);
  std::u16string nested;
  for (int i = 0; i < 20000; ++i)
    nested += u"calc(";
  nested += u"2px";
  EXPECT_FLOAT_EQ(Pixels(nested.c_str()), 2);
}

TEST(Measure, ParseAttributeText) {
  struct {
    const char16_t* text;
    float value;
    TMeasureUnit unit;
    bool is_auto;
  } cases[] = {
      {u"100", 100, muNone, false},    {u"1e2", 100, muNone, false},    {u"12abc", 12, muNone, false},
      {u"50%", 50, muPercent, false},  {u"3px", 3, muPX, false},        {u"3pt", 3, muPt, false},
      {u"3pc", 3, muPC, false},        {u"3mm", 3, muMM, false},        {u"3cm", 3, muCM, false},
      {u"3in", 3, muIN, false},        {u"3em", 3, muEM, false},        {u"3ex", 3, muEX, false},
      {u"3r", 3, muREM, false},        {u"3sec", 3, muS, false},        {u"3vw", 3, muVW, false},
      {u"3vh", 3, muVH, false},        {u"3PX", 3, muNone, false},      {u"3vx", 3, muNone, false},
      {u"-2.5", -2.5f, muNone, false}, {u"25e-1px", 2.5f, muPX, false}, {u"1e99", 0, muNone, false},
      {u"1e-99", 0, muNone, false},    {u"1e", 1, muNone, false},       {u"auto", 0, muNone, true},
  };
  for (auto& c : cases) {
    TMeasure m;
    m.Init(nullptr);
    m.Parse(c.text);
    EXPECT_FLOAT_EQ(m.FValue, c.value) << hstring(c.text).toUtf8();
    EXPECT_EQ(m.FMUnit, c.unit) << hstring(c.text).toUtf8();
    EXPECT_EQ(m.GetAuto(), c.is_auto) << hstring(c.text).toUtf8();
  }
  TMeasure m;
  m.Init(nullptr);
  m.Parse(u"40px");
  m.Parse(u"abc"); // no number: the earlier state stays
  EXPECT_FLOAT_EQ(m.FValue, 40);
  EXPECT_FALSE(m.GetAuto());
  m.Parse(u"inherit");
  EXPECT_TRUE(m.Flags.Contains(mfInherit));
  EXPECT_FLOAT_EQ(m.FValue, 40);
  m.Parse(u"");
  EXPECT_TRUE(m.Flags.Contains(mfInherit));
  m.Parse(u"Auto"); // only the exact "auto": "A" is no number
  EXPECT_FALSE(m.GetAuto());
  m.Parse(u"7");
  EXPECT_FALSE(m.Flags.Contains(mfInherit));
  EXPECT_FLOAT_EQ(m.GetFPixels(), 7);
}

TEST(Measure, SetValueAndAuto) {
  TMeasure m;
  m.Init(nullptr);
  m.SetValue(0); // equal to the value: nothing happens, so it stays auto
  EXPECT_TRUE(m.GetAuto());
  m.SetValue(5);
  EXPECT_FALSE(m.GetAuto());
  m.SetValue(0);
  EXPECT_TRUE(m.Flags.Contains(mfZero));
  m.SetAuto(true);
  EXPECT_TRUE(m.GetAuto());
  m.SetPixels(3);
  EXPECT_EQ(m.FMUnit, muPX);
  EXPECT_FALSE(m.GetAuto());
  TStyle style;
  TMeasure other;
  other.Init(&style);
  float base = 9;
  m.Parent = &base;
  other.Assign(m);
  EXPECT_EQ(other.Style, &style);
  EXPECT_EQ(other.Parent, &base);
  EXPECT_FLOAT_EQ(other.FValue, 3);
}

TEST(Measure, GetPixelsRoundsHalvesAwayAndZooms) {
  TStyle style;
  struct {
    float value;
    TMeasureUnit unit;
    float zoom;
    int expected;
  } cases[] = {
      {2.5f, muPX, 1, 3},     {-2.5f, muPX, 1, -3}, {1.4f, muPX, 1, 1},          {10, muPX, 1.5f, 15},
      {50, muPercent, 2, 50}, {1, muIN, 2, 192},    {3e38f, muIN, 1, INT32_MAX}, {-3e38f, muPX, 4, INT32_MIN},
  };
  for (auto& c : cases) {
    style.Zoom = c.zoom;
    TMeasure m;
    m.Init(&style);
    float base = 100;
    m.Parent = &base;
    m.SetValue(c.value);
    m.FMUnit = c.unit;
    EXPECT_EQ(m.GetPixels(), c.expected) << c.value;
  }
}

TEST(Measure, RemWithoutParentAndViewportScale) {
  TStyle style;
  style.has_parent = false;
  EXPECT_FLOAT_EQ(Pixels(u"2rem", -1, &style), 26);
  EXPECT_FLOAT_EQ(Pixels(u"2rem"), 26);
  EXPECT_FLOAT_EQ(Pixels(u"2em"), 26); // no style: the default font size
  EXPECT_FLOAT_EQ(Pixels(u"10vw"), 0);
  style.scale = 2;
  EXPECT_FLOAT_EQ(Pixels(u"10vw", -1, &style), 40);
  style.scale = 0;
  EXPECT_FLOAT_EQ(Pixels(u"10vh", -1, &style), 60);
}

TEST(Measure, AsString) {
  struct {
    const char16_t* text;
    const char* expected;
  } cases[] = {
      {u"12px", "12px"}, {u"1.23456em", "1.235em"}, {u"50%", "50%"},
      {u"0", "0"},       {u"auto", "auto"},         {u"2.5", "2.5"},
      {u"3sec", "3s"},   {u"1rem", "1rem"},         {u"-0.5vh", "-0.5vh"},
  };
  for (auto& c : cases) {
    TMeasure m;
    m.Init(nullptr);
    m.Parse(c.text);
    EXPECT_EQ(m.AsString().toUtf8(), c.expected) << hstring(c.text).toUtf8();
  }
  TCSSTokens toks = ValueTokens(u"90deg 5ms");
  TCSSTokenSequence seq;
  seq.Init(&toks);
  TMeasure m;
  m.Init(nullptr);
  m.Decode(seq);
  EXPECT_EQ(m.AsString().toUtf8(), "90deg");
  seq.Next();
  m.Decode(seq);
  EXPECT_EQ(m.AsString().toUtf8(), "5ms");
}

} // namespace
