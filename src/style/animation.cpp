// Easing, the transition and key-frame records, and the objects that step
// one value over time.
#include "htcore/style/animation.h"

#include "htcore/foundation/colour.h"
#include "htcore/foundation/number_format.h"
#include "htcore/foundation/text_utils.h"
#include "htcore/style/css_sheet.h"

#include <algorithm>
#include <atomic>
#include <climits>
#include <cmath>

namespace ht {

namespace {

// Values in flight are read by a painter on another thread: whole-word stores.
template <class T> void store(T* Target, T V) noexcept {
  if (Target)
    std::atomic_ref<T>(*Target).store(V, std::memory_order_relaxed);
}

template <class T> T load(const T& Source) noexcept {
  return std::atomic_ref<T>(const_cast<T&>(Source)).load(std::memory_order_relaxed);
}

int add_time(int a, int b) noexcept {
  const int64_t s = static_cast<int64_t>(a) + b;
  return s > INT_MAX ? INT_MAX : s < INT_MIN ? INT_MIN : static_cast<int>(s);
}

// Counts a start delay down by one tick: false while it lasts, otherwise
// Elapsed becomes the part of the tick that runs the animation.
bool run_delay(int& Delay, int& Elapsed) noexcept {
  if (Elapsed < 0)
    Elapsed = 0;
  if (Delay <= 0)
    return true;
  Delay -= Elapsed;
  if (Delay > 0)
    return false;
  Elapsed = -Delay;
  Delay = 0;
  return true;
}

// A stepped value's start: the run takes time from From, or jumps to To.
template <class A, class V> void start_run(A& a, V From, V To, int Time, int ADelay, TCSSTransition* T) {
  a.StartValue = From;
  a.EndValue = To;
  if (a.Begin(Time, ADelay, T)) {
    a.SetValue(From);
    if (a.Delay <= 0)
      a.StepValue(0);
  } else {
    a.SetValue(To);
  }
}

// The value at Time of a run: At(Time) on the way, the end from AllTime on.
template <class V, class F> bool step_run(TAnimatedProperty& a, V* Value, V End, int Time, F&& At) {
  const V before = Value ? load(*Value) : V{};
  V v;
  if (Time >= a.AllTime) {
    v = End;
    a.Position = 1;
  } else {
    a.Position = static_cast<float>(Time) / static_cast<float>(a.AllTime);
    v = At(Time);
  }
  store(Value, v);
  return before != v;
}

} // namespace

// --- Easing ---

float CalculateEase(TCSSTiming Timing, float T, float B, float C, float D) {
  if (!std::isfinite(B))
    return 0;
  if (!std::isfinite(C) || !std::isfinite(T))
    return B;
  if (!(D > 0) || !std::isfinite(D))
    return B + C;
  T = std::clamp(T, 0.0f, D);
  float r;
  switch (Timing) {
  case tmEase: {
    const float u = T / (D / 2);
    if (u < 1) {
      r = C / 2 * u * u + B;
    } else {
      const float v = u - 1;
      r = -C / 2 * ((v - 2) * v - 1) + B;
    }
    break;
  }
  case tmEaseIn: {
    const float u = T / D;
    r = C * u * u + B;
    break;
  }
  case tmEaseOut: {
    const float u = T / D;
    r = -C * u * (u - 2) + B;
    break;
  }
  case tmEaseInOut: {
    const float u = T / (D / 2);
    if (u < 1) {
      r = C / 2 * u * u * u + B;
    } else {
      const float v = u - 2;
      r = C / 2 * (v * v * v + 2) + B;
    }
    break;
  }
  default:
    r = C * T / D + B;
    break;
  }
  return std::isfinite(r) ? r : B;
}

float CalcEase(TCSSTiming Timing, float Start, float End, float Position) {
  return CalculateEase(Timing, Position * 100, Start, End - Start, 100);
}

// --- TCSSTransition ---

void TCSSTransition::Assign(const TCSSTransition& Other) {
  Name = Other.Name;
  Prop = Other.Prop;
  Duration = Other.Duration;
  Delay = Other.Delay;
  Timing = Other.Timing;
  store(&Number, Other.GetNumber());
  store(&Color, Other.GetColor());
  IsColor = Other.IsColor;
  Active.store(Other.Active.load());
}

float TCSSTransition::GetNumber() const noexcept { return load(Number); }
uint32_t TCSSTransition::GetColor() const noexcept { return load(Color); }

// --- TCSSAnimation ---

int TCSSAnimation::Percent() const noexcept {
  if (Position < 0 || Duration <= 0)
    return -1;
  return static_cast<int>(static_cast<int64_t>(Position) * 100 / Duration);
}

int TCSSAnimation::GetFrameIndex() {
  const int n = static_cast<int>(Steps.size());
  if (n < 2) {
    FrameTime = 0;
    return 0;
  }
  int i = std::clamp(CurrentFrame, 1, n - 1);
  FrameTime = static_cast<int>(static_cast<int64_t>(Steps[i] - Steps[i - 1]) * Duration / 100);
  return CurrentFrame;
}

float TCSSAnimation::FramePosition() const noexcept {
  const int n = static_cast<int>(Steps.size());
  if (n < 2 || Duration <= 0 || Position < 0)
    return 0;
  const int i = std::clamp(CurrentFrame, 1, n - 1);
  const double from = Steps[i - 1] * static_cast<double>(Duration) / 100;
  const double span = (Steps[i] - Steps[i - 1]) * static_cast<double>(Duration) / 100;
  if (span <= 0)
    return 1;
  return static_cast<float>(std::clamp((Position - from) / span, 0.0, 1.0));
}

void TCSSAnimation::Restart(int ADelay) {
  Position = -1;
  CurrentFrame = TargetFrame = 0;
  FrameChanged = false;
  Delay = std::clamp(ADelay, 0, kMaxAnimationTime);
}

bool TCSSAnimation::Step(int Elapsed) {
  if (Duration <= 0 || Steps.size() < 2 || !Active)
    return false;
  if (!run_delay(Delay, Elapsed))
    return false;
  // Position moves first, so that the frame is the one of this moment, not
  // of the tick before.
  Position = add_time(std::max(Position, 0), Elapsed);
  bool wrapped = false;
  if (Position >= Duration) {
    // Whole iterations in one go: a long tick costs no loop.
    const int64_t passed = Position / Duration;
    wrapped = true;
    if (IterationCount < 0) {
      Position %= Duration;
    } else if (passed >= IterationCount) {
      IterationCount = 0;
      Position = Duration;
      Active = false;
    } else {
      IterationCount -= static_cast<int>(passed);
      Position %= Duration;
    }
  }
  const int p = Percent();
  const int n = static_cast<int>(Steps.size());
  TargetFrame = n - 1;
  for (int i = 1; i < n; ++i)
    if (Steps[i] > p) {
      TargetFrame = i;
      break;
    }
  // A new iteration begins its frame again, even when it is the same one.
  if (TargetFrame == CurrentFrame && !(wrapped && Active))
    return false;
  CurrentFrame = TargetFrame;
  FrameChanged = true;
  GetFrameIndex();
  return true;
}

bool TCSSAnimation::LoadSteps(const std::vector<TCSSStyleSheet*>& Sheets) {
  for (auto it = Sheets.rbegin(); it != Sheets.rend(); ++it) {
    if (!*it || !(*it)->KeyFrames.Get(Name))
      continue;
    (*it)->GetAnimationSteps(Name, Steps);
    // A percentage given twice is one step (the list keeps both rules).
    Steps.erase(std::unique(Steps.begin(), Steps.end()), Steps.end());
    return Steps.size() >= 2;
  }
  Steps.clear();
  return false;
}

// --- TAbstractAnimation and the stepped values ---

hstring TAbstractAnimation::AsString() const { return hstring(); }

bool TAnimatedProperty::Begin(int Time, int ADelay, TCSSTransition* ATransition) {
  Transition = ATransition;
  AllTime = std::max(Time, 0);
  Delay = StartDelay = std::max(ADelay, 0);
  TimeSum = 0;
  Position = AllTime > 0 ? 0.0f : 1.0f;
  if (Transition)
    Transition->Active.store(true);
  return AllTime > 0;
}

bool TAnimatedProperty::NextStep(int Elapsed) {
  if (!Active())
    return false;
  // TimeSum stays 0 while the delay lasts, so the rest of the tick that
  // ends it is the whole time run.
  if (!run_delay(Delay, Elapsed))
    return false;
  TimeSum = add_time(TimeSum, Elapsed);
  return StepValue(TimeSum);
}

void TAnimatedColor::Start(uint32_t From, uint32_t To, int Time, int ADelay, uint32_t* Target,
                           TCSSTransition* ATransition) {
  Value = Target;
  if (ATransition)
    ATransition->IsColor = true;
  start_run(*this, From, To, Time, ADelay, ATransition);
}

void TAnimatedColor::SetValue(uint32_t V) {
  LastValue = V;
  store(Value, V);
}

bool TAnimatedColor::StepValue(int Time) {
  const uint32_t before = LastValue;
  if (Time >= AllTime || AllTime / std::max(Steps, 1) == 0) {
    SetValue(EndValue);
    Position = 1;
    return before != LastValue;
  }
  Position = static_cast<float>(Time) / static_cast<float>(AllTime);
  const TRGBA s = TRGBA::FromColor(StartValue), e = TRGBA::FromColor(EndValue);
  const int a = s.a + MulDiv(e.a - s.a, Time, AllTime);
  auto channel = [&](int sc, int ec) {
    const int ps = sc * s.a / 255, pe = ec * e.a / 255;
    const int p = ps + MulDiv(pe - ps, Time, AllTime);
    if (a < 2)
      return 0;
    return std::clamp(p * 255 / a, 0, 255);
  };
  const uint32_t v = static_cast<uint32_t>(std::clamp(a, 0, 255)) << 24 |
                     static_cast<uint32_t>(channel(s.r, e.r)) << 16 |
                     static_cast<uint32_t>(channel(s.g, e.g)) << 8 | static_cast<uint32_t>(channel(s.b, e.b));
  SetValue(v);
  return before != v;
}

hstring TAnimatedColor::AsString() const { return IntToHex(LastValue, 8); }

void TAnimatedInt::Start(int From, int To, int Time, int ADelay, int* Target) {
  Value = Target;
  start_run(*this, From, To, Time, ADelay, nullptr);
}

void TAnimatedInt::SetValue(int V) { store(Value, V); }

bool TAnimatedInt::StepValue(int Time) {
  return step_run(*this, Value, EndValue, Time, [&](int t) {
    return static_cast<int>(StartValue - (static_cast<int64_t>(StartValue) - EndValue) * t / AllTime);
  });
}

hstring TAnimatedInt::AsString() const { return IntToStr(Value ? load(*Value) : EndValue); }

void TAnimatedFloat::Start(float From, float To, int Time, int ADelay, float* Target, TCSSTransition* ATransition) {
  Value = Target;
  if (ATransition)
    ATransition->IsColor = false;
  start_run(*this, std::isfinite(From) ? From : 0.0f, std::isfinite(To) ? To : 0.0f, Time, ADelay, ATransition);
}

void TAnimatedFloat::SetValue(float V) { store(Value, V); }

bool TAnimatedFloat::StepValue(int Time) {
  return step_run(*this, Value, EndValue, Time,
                  [&](int t) { return CalcEase(Timing, StartValue, EndValue, static_cast<float>(t) / AllTime); });
}

hstring TAnimatedFloat::AsString() const { return HtFormatDecimal(Value ? load(*Value) : EndValue, 3); }

bool TAnimatedImage::NextStep(int Elapsed) {
  if (!FActive)
    return false;
  if (!NextFrameProc || !NextFrameProc(Elapsed)) {
    FActive = false;
    return false;
  }
  return true;
}

bool TAnimatedElement::Active() const {
  auto* a = dynamic_cast<TCSSAnimation*>(Animation);
  return a && a->Active;
}

bool TAnimatedElement::NextStep(int Elapsed) {
  auto* a = dynamic_cast<TCSSAnimation*>(Animation);
  if (!a || !a->Active)
    return false;
  const bool was_active = a->Active;
  const bool moved = a->Step(Elapsed);
  if (moved || (was_active && !a->Active))
    ChangeStyle = true;
  return moved;
}

} // namespace ht
