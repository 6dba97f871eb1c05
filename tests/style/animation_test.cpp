#include "htcore/style/animation.h"

#include "htcore/style/computed_css.h"
#include "htcore/style/element_style.h"
#include "htcore/style/style_driver.h"
#include "htcore/style/styled_node.h"

#include <chrono>
#include <climits>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <memory>
#include <string>

using namespace ht;

namespace {

struct TStyled {
  TStyledHTMLNode doc;
  std::unique_ptr<TStyleDriver> driver;

  explicit TStyled(const char16_t* Html) : TStyled(hstring(Html)) {}
  explicit TStyled(const hstring& Html) {
    doc.Parse(Html);
    driver = std::make_unique<TStyleDriver>(&doc);
    driver->Run();
  }
  TStyledHTMLNode* Node(const char16_t* Id) {
    for (THtNode* n = doc.FirstChild(); n; n = n->NextNode())
      if (n->GetAttribute(u"id"_hs) == Id)
        return static_cast<TStyledHTMLNode*>(n);
    return nullptr;
  }
  TBaseElementStyle* S(const char16_t* Id) { return Node(Id)->Style(); }
};

const TCSSTransition* transition(TBaseElementStyle* s, const char16_t* name) {
  int i = s->Transitions.IndexOf(hstring(name));
  return i < 0 ? nullptr : static_cast<const TCSSTransition*>(s->Transitions.Objects(i));
}

} // namespace

TEST(Easing, PennerForms) {
  const struct {
    TCSSTiming timing;
    float position, expected;
  } cases[] = {
      {tmLinear, 0.5f, 5},    {tmEase, 0.5f, 5},     {tmEaseIn, 0.5f, 2.5f}, {tmEaseOut, 0.5f, 7.5f},
      {tmEaseInOut, 0.5f, 5}, {tmEase, 0.25f, 1.25f}, {tmEase, 0.75f, 8.75f}, {tmEaseInOut, 0.25f, 0.625f},
      {tmEaseIn, 0, 0},       {tmEaseOut, 1, 10},    {tmLinear, 2, 10},      {tmEaseIn, -1, 0}, // held in 0..1
  };
  for (const auto& c : cases)
    EXPECT_FLOAT_EQ(CalcEase(c.timing, 0, 10, c.position), c.expected) << c.timing << " " << c.position;
  // Hostile parameters give finite values: no duration is the end value.
  const float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
  EXPECT_EQ(CalculateEase(tmEase, 5, 1, 9, 0), 10);
  EXPECT_EQ(CalculateEase(tmEaseInOut, -5, 1, 9, -3), 10);
  EXPECT_EQ(CalculateEase(tmEase, nan, 1, 9, 10), 1);
  EXPECT_EQ(CalculateEase(tmEase, 5, 1, nan, 10), 1);
  EXPECT_EQ(CalculateEase(tmEase, 5, 1, 9, inf), 10);
  EXPECT_EQ(CalculateEase(tmEaseIn, 5, nan, 9, 10), 0);
  EXPECT_TRUE(std::isfinite(CalcEase(tmEaseOut, -3e38f, 3e38f, 0.5f)));
}

TEST(TransitionDeclarations, GroupsDurationsAndNames) {
  TStyled d(u"<p id=a style='transition: opacity 1s'>x</p><p id=b style='transition: 200ms'>x</p>"
            u"<p id=c style='transition: color 200s ease-in 1.5s, opacity 2s, color 1s'>x</p>"
            u"<p id=d style='transition: background 300ms'>x</p><p id=e style='transition: opacity'>x</p>"
            u"<p id=f style='transition: width 1s, height, color 1s'>x</p>"
            u"<p id=g style='transition: none 1s'>x</p>");
  const TCSSTransition* t = transition(d.S(u"a"), u"opacity");
  ASSERT_TRUE(t);
  EXPECT_EQ(t->Duration, 1000);
  EXPECT_EQ(t->Delay, -1);
  EXPECT_EQ(t->Timing, tmEase);
  EXPECT_EQ(t->Prop, CSSPropRow(cspOpacity));
  // No name: every property.
  ASSERT_EQ(d.S(u"b")->Transitions.Count(), 1);
  t = transition(d.S(u"b"), u"all");
  ASSERT_TRUE(t);
  EXPECT_EQ(t->Duration, 200);
  EXPECT_EQ(d.S(u"b")->FindTransition(cspColor), t);
  // Capped at 100 s; timing and delay; the first group of a name wins.
  t = transition(d.S(u"c"), u"color");
  ASSERT_TRUE(t);
  EXPECT_EQ(t->Duration, 100000);
  EXPECT_EQ(t->Timing, tmEaseIn);
  EXPECT_EQ(t->Delay, 1500);
  EXPECT_EQ(d.S(u"c")->Transitions.Count(), 2);
  // background stands for its colour and its image.
  EXPECT_TRUE(transition(d.S(u"d"), u"background-color"));
  EXPECT_TRUE(transition(d.S(u"d"), u"background-image"));
  EXPECT_FALSE(transition(d.S(u"d"), u"background"));
  // A group without a duration ends the list.
  EXPECT_EQ(d.S(u"e")->Transitions.Count(), 0);
  EXPECT_EQ(d.S(u"f")->Transitions.Count(), 1);
  EXPECT_EQ(d.S(u"g")->Transitions.Count(), 0);
}

TEST(AnimationDeclarations, NameDurationTimingCountDelay) {
  TStyled d(u"<p id=a style='animation: spin 1s linear infinite'>x</p>"
            u"<p id=b style='animation: pulse 500s ease-out 250ms'>x</p>"
            u"<p id=c style='animation: \"quoted\" 2s 3'>x</p>"
            u"<p id=d style='animation: big 1s 99999999999'>x</p><p id=e>x</p>");
  TCSSAnimation* a = d.S(u"a")->Animation.get();
  ASSERT_TRUE(a);
  EXPECT_EQ(a->Name, u"spin");
  EXPECT_EQ(a->Duration, 1000);
  EXPECT_EQ(a->Timing, tmLinear);
  EXPECT_EQ(a->IterationCount, -1);
  EXPECT_TRUE(a->Active);
  EXPECT_EQ(a->Position, -1);
  a = d.S(u"b")->Animation.get();
  EXPECT_EQ(a->Duration, 100000);
  EXPECT_EQ(a->Delay, 250);
  EXPECT_EQ(a->IterationCount, 1);
  EXPECT_EQ(a->Timing, tmEaseOut);
  EXPECT_EQ(d.S(u"c")->Animation->Name, u"quoted");
  EXPECT_EQ(d.S(u"c")->Animation->IterationCount, 3);
  EXPECT_EQ(d.S(u"d")->Animation->IterationCount, -1);
  EXPECT_FALSE(d.S(u"e")->Animation);
  // A restyle keeps a running animation where it is; a style without it stops it.
  a = d.S(u"a")->Animation.get();
  a->Position = 300;
  d.Node(u"a")->StyleChanged(true);
  d.driver->Invalidate();
  d.driver->Run();
  EXPECT_EQ(d.S(u"a")->Animation->Position, 300);
  d.Node(u"a")->AddCSS(u"animation: none"_hs);
  d.driver->Run();
  EXPECT_FALSE(d.S(u"a")->Animation->Active);
}

TEST(AnimatedValues, ColourFadesInPremultipliedForm) {
  uint32_t c = 0;
  TAnimatedColor a;
  a.Start(0xFFFF0000, 0x00000000, 1000, 0, &c);
  EXPECT_EQ(c, 0xFFFF0000u);
  EXPECT_TRUE(a.Active());
  const struct {
    int elapsed;
    uint32_t expected;
  } fade[] = {{250, 0xBFFF0000}, {250, 0x7FFF0000}, {249, 0x40FF0000}, {248, 0x01000000}, {3, 0}};
  for (const auto& f : fade) {
    a.NextStep(f.elapsed);
    EXPECT_EQ(c, f.expected) << a.TimeSum; // red until it vanishes
  }
  EXPECT_FALSE(a.Active());
  // Opaque to opaque is plain linear; a delay holds the start value.
  a.Start(0xFFFF0000, 0xFF0000FF, 100, 40, &c);
  EXPECT_FALSE(a.NextStep(30));
  EXPECT_EQ(c, 0xFFFF0000u);
  a.NextStep(60); // 10 ms delay left, 50 run; halves round away from zero
  EXPECT_EQ(c, 0xFF7F0080u);
  EXPECT_EQ(a.AsString().toUtf8(), "FF7F0080");
  // No time: the end at once; a run shorter than one tick too.
  a.Start(0xFF000000, 0xFFFFFFFF, 0, 0, &c);
  EXPECT_EQ(c, 0xFFFFFFFFu);
  EXPECT_FALSE(a.Active());
  a.Start(0xFF000000, 0xFFFFFFFF, 10, 0, &c);
  EXPECT_EQ(c, 0xFFFFFFFFu);
}

TEST(AnimatedValues, IntFloatImage) {
  int i = 0;
  TAnimatedInt ai;
  ai.Start(10, 20, 100, 0, &i);
  ai.NextStep(33);
  EXPECT_EQ(i, 13);
  ai.NextStep(1000);
  EXPECT_EQ(i, 20);
  EXPECT_FALSE(ai.Active());
  float f = 0;
  TAnimatedFloat af;
  af.Timing = tmEaseIn;
  af.Start(0, 10, 200, 0, &f);
  af.NextStep(100);
  EXPECT_FLOAT_EQ(f, 2.5f);
  EXPECT_FLOAT_EQ(af.Position, 0.5f);
  af.NextStep(INT_MAX); // a long tick ends it without overflow
  EXPECT_EQ(f, 10);
  int frames = 0;
  TAnimatedImage img;
  img.NextFrameProc = [&](int) { return ++frames < 3; };
  EXPECT_TRUE(img.NextStep(10));
  EXPECT_TRUE(img.NextStep(10));
  EXPECT_FALSE(img.NextStep(10));
  EXPECT_FALSE(img.Active());
}

TEST(KeyFrames, StepsFramesAndIterations) {
  TCSSAnimation a;
  a.Duration = 1000;
  a.Steps = {0, 50, 100};
  a.IterationCount = 2;
  a.Active = true;
  EXPECT_EQ(a.Percent(), -1);
  EXPECT_TRUE(a.Step(100));  // the first frame begins
  EXPECT_EQ(a.CurrentFrame, 1);
  EXPECT_EQ(a.Percent(), 10);
  EXPECT_EQ(a.FrameTime, 500);
  EXPECT_TRUE(a.FrameChanged);
  EXPECT_FALSE(a.Step(300)); // still in it
  EXPECT_FLOAT_EQ(a.FramePosition(), 0.8f);
  EXPECT_TRUE(a.Step(200));  // 600: the second
  EXPECT_EQ(a.CurrentFrame, 2);
  EXPECT_EQ(a.GetFrameIndex(), 2);
  EXPECT_TRUE(a.Step(500));  // 1100: the second iteration, first frame
  EXPECT_EQ(a.CurrentFrame, 1);
  EXPECT_EQ(a.IterationCount, 1);
  EXPECT_EQ(a.Position, 100);
  a.Step(2000);               // past the end: it stops at the end
  EXPECT_FALSE(a.Active);
  EXPECT_EQ(a.IterationCount, 0);
  EXPECT_EQ(a.Position, 1000);
  EXPECT_FALSE(a.Step(10));

  // A delay first; for ever, even with a huge tick.
  TCSSAnimation b;
  b.Duration = 400;
  b.Steps = {0, 25, 100};
  b.IterationCount = -1;
  b.Active = true;
  b.Delay = 50;
  EXPECT_FALSE(b.Step(30));
  EXPECT_EQ(b.Position, -1);
  b.Step(30); // 10 into the run
  EXPECT_EQ(b.Position, 10);
  b.Step(INT_MAX);
  EXPECT_TRUE(b.Active);
  EXPECT_GE(b.Position, 0);
  EXPECT_LT(b.Position, 400);
  // Fewer than two steps or no duration: nothing moves.
  TCSSAnimation c;
  c.Active = true;
  c.Duration = 100;
  c.Steps = {0};
  EXPECT_FALSE(c.Step(10));
}

TEST(KeyFrames, StepsComeFromTheSheets) {
  TStyled d(u"<style>@keyframes pulse { from { opacity: 0 } 40% { opacity: .4 } to { opacity: 1 } }"
            u"#a { animation: pulse 1s }</style><p id=a>x</p>");
  TCSSAnimation* a = d.S(u"a")->Animation.get();
  ASSERT_TRUE(a);
  ASSERT_TRUE(a->LoadSteps(d.driver->Sheets()));
  EXPECT_EQ(a->Steps, (std::vector<int>{0, 40, 100}));
  a->Name = u"missing"_hs;
  EXPECT_FALSE(a->LoadSteps(d.driver->Sheets()));
  // A percentage given again: one step, the later rule.
  TCSSStyleSheet sheet;
  sheet.Parse(u"@keyframes p { 50% { opacity: .1 } from, 50% { opacity: .9 } to { opacity: 1 } }"_hs);
  std::vector<int> steps;
  sheet.GetAnimationSteps(u"p"_hs, steps);
  EXPECT_EQ(steps, (std::vector<int>{0, 50, 100}));
  std::vector<std::pair<uint32_t, const TCSSValue*>> list;
  sheet.GetAnimationSelectors(u"p"_hs, 50, list);
  ASSERT_EQ(list.size(), 1u);
  EXPECT_EQ(list[0].second->Tokens[0].Name, u".9");
}

TEST(TransitionValues, GettersAnswerTheValueInFlight) {
  TStyled d(u"<div id=a style='transition: all 1s; opacity: .2; color: red; width: 10px'>"
            u"<p id=b>x</p></div>");
  TBaseElementStyle* s = d.S(u"a");
  TCSSTransition* op = s->StartTransition(cspOpacity);
  ASSERT_TRUE(op);
  EXPECT_EQ(op->Name, u"opacity");
  EXPECT_EQ(op->Duration, 1000);
  EXPECT_EQ(s->StartTransition(cspOpacity), op); // made once
  TAnimatedFloat fade;
  fade.Start(1, 0, 1000, 0, &op->Number, op);
  fade.NextStep(500);
  EXPECT_FLOAT_EQ(s->Opacity(), 0.5f);
  TCSSTransition* col = s->StartTransition(cspColor);
  TAnimatedColor tint;
  tint.Start(0xFFFF0000, 0xFF0000FF, 1000, 0, &col->Color, col);
  tint.NextStep(500);
  EXPECT_EQ(s->TextColor(), 0xFF7F0080u);
  EXPECT_EQ(d.S(u"b")->TextColor(), 0xFF7F0080u); // inherited, in flight
  TCSSTransition* w = s->StartTransition(cspWidth);
  TAnimatedFloat grow;
  grow.Timing = tmLinear;
  grow.Start(10, 110, 1000, 0, &w->Number, w);
  grow.NextStep(250);
  hstring text;
  ComputedCSSValue(d.Node(u"a"), u"width"_hs, text);
  EXPECT_EQ(text, u"35px");
  // Done: the value stays until the set that ran it ends the transition.
  tint.NextStep(600);
  EXPECT_EQ(s->TextColor(), 0xFF0000FFu);
  col->Active = false;
  EXPECT_EQ(s->TextColor(), 0xFFFF0000u);
  // Without a transition declared nothing starts, unless forced.
  EXPECT_FALSE(d.S(u"b")->StartTransition(cspOpacity));
  EXPECT_TRUE(d.S(u"b")->StartTransition(cspOpacity, true));
}

TEST(AnimationBadInput, HostileValuesStayBoundedAndFinite) {
  // 100k key frames in one rule, huge durations and counts.
  std::string css = "@keyframes many {";
  for (int i = 0; i < 100000; ++i)
    css += " " + std::to_string(i % 101) + "% { opacity: 0." + std::to_string(i % 10) + " }";
  css += "} #a { animation: many 99999999999999s 99999999999999 } "
         "#b { transition: opacity -5s ease 9999999999999ms, color 99999999999999999999ms }";
  const auto start = std::chrono::steady_clock::now();
  TStyled d(hstring::FromUtf8("<style>" + css + "</style><p id=a>x</p><p id=b>x</p>"));
  TCSSAnimation* a = d.S(u"a")->Animation.get();
  ASSERT_TRUE(a);
  EXPECT_EQ(a->Duration, 100000);
  EXPECT_EQ(a->IterationCount, -1);
  ASSERT_TRUE(a->LoadSteps(d.driver->Sheets()));
  EXPECT_EQ(a->Steps.size(), 101u);
  for (int i = 0; i < 1000; ++i)
    a->Step(INT_MAX / 3);
  EXPECT_GE(a->Percent(), 0);
  EXPECT_LE(a->Percent(), 100);
  const TCSSTransition* t = transition(d.S(u"b"), u"opacity");
  ASSERT_TRUE(t);
  EXPECT_EQ(t->Duration, 0);
  EXPECT_EQ(t->Delay, 100000);
  EXPECT_EQ(transition(d.S(u"b"), u"color")->Duration, 100000);
  float f = 0;
  TAnimatedFloat af;
  af.Start(std::numeric_limits<float>::quiet_NaN(), 1e38f, 100000, -5, &f);
  for (int i = 0; i < 100; ++i)
    af.NextStep(INT_MAX);
  EXPECT_TRUE(std::isfinite(f));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}
