// Animation: easing, CSS transitions and key-frame animations, and the
// objects that step a value over time.
//
// A style's "transition" and "animation" declarations become TCSSTransition
// entries and a TCSSAnimation (TBaseElementStyle::Transitions, Animation).
// A TAnimated... object moves one value from a start to an end over a number
// of milliseconds; aimed at a transition's value, it makes the style getters
// answer the value in flight:
//
//   ht::CalcEase(ht::tmEaseIn, 0, 10, 0.5f);           // 2.5
//   ht::TCSSTransition* tr = style->StartTransition(ht::cspOpacity);
//   ht::TAnimatedFloat a;
//   a.Start(1.0f, 0.0f, 400, 0, &tr->Number, tr);       // 400 ms, no delay
//   a.NextStep(100);                                    // style->Opacity() is now below 1
//
// Time is whole milliseconds. Steps run on the animation thread
// (animation_thread.h); values are written as whole words, so a painter on
// another thread reads either the old or the new one.
#pragma once

#include "htcore/foundation/hstring.h"
#include "htcore/foundation/object.h"
#include "htcore/style/css_properties.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <vector>

namespace ht {

class TCSSStyleSheet;

// The longest duration or delay a declaration may ask for, in milliseconds.
inline constexpr int kMaxAnimationTime = 100000;

// Easing after Penner: T elapsed of D, from B by the change C. T is held in
// 0..D; a D of 0 or less gives the end value, and non-finite input B.
float CalculateEase(TCSSTiming Timing, float T, float B, float C, float D);
// The eased value at Position (0..1) from Start to End.
float CalcEase(TCSSTiming Timing, float Start, float End, float Position);

// One transition of an element's style: which property, how long, how, and
// after what delay; while Active, Number or Color holds the value in flight.
class TCSSTransition : public TObject {
public:
  hstring Name;                       // a property name, or "all"
  const TCSSPropRec* Prop = nullptr;  // its row; null for "all" and unknown names
  int Duration = 0;                   // milliseconds, at most kMaxAnimationTime
  int Delay = -1;                     // milliseconds; -1 when not given
  TCSSTiming Timing = tmEase;
  // The value in flight, written by the animation thread: a length in pixels
  // or a number, or a colour.
  float Number = 0;
  uint32_t Color = 0;
  bool IsColor = false;
  std::atomic<bool> Active{false};

  void Assign(const TCSSTransition& Other);
  float GetNumber() const noexcept;
  uint32_t GetColor() const noexcept;
};

// The key-frame animation of an element.
class TCSSAnimation : public TObject {
public:
  int CurrentFrame = 0, TargetFrame = 0;
  // Set when Step moves the current frame; the host clears it once it has
  // taken the frame's declarations.
  bool FrameChanged = false;
  hstring Name;
  int Duration = 0;  // milliseconds
  int Delay = 0;     // milliseconds still to wait
  TCSSTiming Timing = tmEase;
  int Position = -1;       // milliseconds run in this iteration; -1 before the start
  int IterationCount = 1;  // -1 for ever
  bool Active = false;
  std::vector<int> Steps;  // the key-frame percentages, ascending
  int FrameTime = 0;       // milliseconds of the current frame, by GetFrameIndex

  // The current frame (1 .. Steps.size() - 1: the span from Steps[i - 1] to
  // Steps[i]); sets FrameTime.
  int GetFrameIndex();
  // Position as a percentage of Duration; -1 before the start.
  int Percent() const noexcept;
  // Runs Elapsed milliseconds on: true when the current frame moved.
  bool Step(int Elapsed);
  // Steps from the key frames of Name in Sheets (the last sheet that has
  // them); false when none has, and the animation then stays still.
  bool LoadSteps(const std::vector<TCSSStyleSheet*>& Sheets);
  // Where the running frame stands, 0..1.
  float FramePosition() const noexcept;
  // Back to the start, delay included.
  void Restart(int ADelay);
};

// Something that moves over time. Element and Animation are the host's.
class TAbstractAnimation : public TObject {
public:
  TObject* Element = nullptr;
  bool NeedRecalc = false;   // a step changed something that needs layout
  bool ChangeStyle = false;  // a step changed the style
  TCSSTiming Timing = tmLinear;
  TCSSTransition* Transition = nullptr;  // whose value it moves, or null
  TObject* Animation = nullptr;

  virtual bool Active() const = 0;
  // Runs Elapsed milliseconds on: true when the value changed.
  virtual bool NextStep(int Elapsed) = 0;
  virtual hstring AsString() const;
};

// A value from a start to an end over AllTime milliseconds.
class TAnimatedProperty : public TAbstractAnimation {
public:
  int AllTime = 0;
  int Steps = 16;      // the tick length: a run shorter than one tick jumps to the end
  int Delay = 0;       // milliseconds still to wait
  int StartDelay = 0;  // the delay as given
  float Position = 1;  // 0..1; 1 when done
  int TimeSum = 0;     // milliseconds run

  bool Active() const override { return Position < 1; }
  bool NextStep(int Elapsed) override;
  // Sets the value at Time milliseconds from the start: true when it changed.
  virtual bool StepValue(int Time) = 0;
  // The common part of Start; true when the run takes time.
  bool Begin(int Time, int ADelay, TCSSTransition* ATransition);
};

// A colour, interpolated with premultiplied alpha so that a fade keeps its hue.
class TAnimatedColor : public TAnimatedProperty {
public:
  uint32_t StartValue = 0, EndValue = 0;
  uint32_t* Value = nullptr;
  uint32_t LastValue = 0;

  void Start(uint32_t From, uint32_t To, int Time, int ADelay, uint32_t* Target,
             TCSSTransition* ATransition = nullptr);
  void SetValue(uint32_t V);
  bool StepValue(int Time) override;
  hstring AsString() const override;
};

class TAnimatedInt : public TAnimatedProperty {
public:
  int StartValue = 0, EndValue = 0;
  int* Value = nullptr;

  void Start(int From, int To, int Time, int ADelay, int* Target);
  void SetValue(int V);
  bool StepValue(int Time) override;
  hstring AsString() const override;
};

class TAnimatedFloat : public TAnimatedProperty {
public:
  float StartValue = 0, EndValue = 0;
  float* Value = nullptr;

  void Start(float From, float To, int Time, int ADelay, float* Target, TCSSTransition* ATransition = nullptr);
  void SetValue(float V);
  bool StepValue(int Time) override;
  hstring AsString() const override;
};

// The frames of an animated image: the procedure advances them and answers
// false when the image stops.
using TNextFrameProc = std::function<bool(int Elapsed)>;

class TAnimatedImage : public TAbstractAnimation {
public:
  TNextFrameProc NextFrameProc;

  bool Active() const override { return FActive; }
  bool NextStep(int Elapsed) override;

private:
  bool FActive = true;
};

// An element's key-frame animation (Animation is its TCSSAnimation): it
// moves no value itself and tells, by ChangeStyle, that a frame began.
class TAnimatedElement : public TAbstractAnimation {
public:
  bool Active() const override;
  bool NextStep(int Elapsed) override;
};

} // namespace ht
