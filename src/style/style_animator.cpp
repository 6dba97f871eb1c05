// The ready glue between a styled document and the animation thread:
// key-frame animations and transitions move values through the style's
// transition entries, which the getters read.
#include "htcore/style/style_animator.h"

#include "element_style_util.h"
#include "htcore/style/css_sheet.h"
#include "htcore/style/element_style.h"
#include "htcore/style/style_driver.h"
#include "htcore/style/styled_node.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace ht {

namespace {

bool animatable(const TCSSPropRec* r) {
  return r && (r->PropType == cptColor || r->PropType == cptLength || r->PropType == cptNumber);
}

// A declared value as a colour or a number (a length in pixels); false when
// it has none that can move, such as "auto".
bool declared_value(TBaseElementStyle& s, const TCSSValue& v, uint32_t& Color, float& Number) {
  if (v.Tokens.empty() || v.IsInherit)
    return false;
  switch (v.Prop->PropType) {
  case cptColor:
    Color = detail::value_colour(s, v);
    return Color != HtInvalidColor;
  case cptLength: {
    TMeasure m = v.Measure.Value1;
    m.Style = &s;
    m.Parent = s.GetPropParent(v.Prop, nullptr);
    if (m.GetAuto())
      return false;
    Number = m.GetFPixels();
    return std::isfinite(Number);
  }
  case cptNumber:
    Number = detail::value_number(v);
    if (v.Tokens[0].CType == ctPercentage && v.Prop->Prop == cspOpacity)
      Number /= 100;
    return std::isfinite(Number);
  default:
    return false;
  }
}

// What the element shows for R when nothing moves.
void resting_value(TBaseElementStyle& s, const TCSSPropRec* r, uint32_t& Color, float& Number) {
  switch (r->PropType) {
  case cptColor:
    Color = 0;
    s.GetColorProp(r->Prop, Color, false, r->Inherited);
    break;
  case cptLength: {
    TMeasure m;
    s.GetMeasureProp(r->Prop, m, false, r->Inherited, s.GetPropParent(r, nullptr));
    Number = m.GetAuto() ? 0 : m.GetFPixels();
    break;
  }
  default:
    Number = r->DefaultValue();
    s.GetNumberProp(r->Prop, Number, false, r->Inherited);
    break;
  }
}

template <class F> void each_styled(TStyledHTMLNode* Root, F f) {
  for (THtNode* n = Root; n; n = n->NextNode())
    if (auto* e = dynamic_cast<TStyledHTMLNode*>(n); e && e->Style())
      f(e);
}

} // namespace

TStyleAnimator::TStyleAnimator(TStyleDriver& Driver, TBaseAnimationThread* Thread)
    : FDriver(Driver), FThread(Thread ? *Thread : HtAnimationThread()) {
  Set.OnFrame = [this](TAnimatedElement& E) { TakeFrame(E); };
  FThread.RegisterDoc(&Set);
}

TStyleAnimator::~TStyleAnimator() { FThread.UnregisterDoc(&Set); }

void TStyleAnimator::RemoveElement(TStyledHTMLNode* Node) {
  Set.RemoveElement(Node);
  if (Node && Node->Style())
    FMoved.erase(Node->Style()->Animation.get());
}

void TStyleAnimator::SaveLastProps() {
  each_styled(FDriver.Root(), [](TStyledHTMLNode* e) { e->Style()->SaveLastProps(); });
}

int TStyleAnimator::StartAnimations() {
  int started = 0;
  each_styled(FDriver.Root(), [&](TStyledHTMLNode* e) {
    TCSSAnimation* a = e->Style()->Animation.get();
    if (!a || !a->Active || Set.Contains([&](const TAbstractAnimation& x) { return x.Animation == a; }))
      return;
    if (a->Steps.empty() && !a->LoadSteps(FDriver.Sheets()))
      return;
    auto x = std::make_unique<TAnimatedElement>();
    x->Element = e;
    x->Animation = a;
    x->Timing = a->Timing;
    Set.Add(std::move(x));
    ++started;
  });
  return started;
}

void TStyleAnimator::TakeFrame(TAnimatedElement& E) {
  auto* node = static_cast<TStyledHTMLNode*>(E.Element);
  auto* a = dynamic_cast<TCSSAnimation*>(E.Animation);
  TBaseElementStyle* s = node ? node->Style() : nullptr;
  if (!a || !s)
    return;
  // The values of the frame before stop moving; at the end they answer no more.
  std::vector<TCSSTransition*>& moved = FMoved[a];
  for (TCSSTransition* t : moved) {
    Set.RemoveTransition(t);
    if (!a->Active)
      t->Active.store(false);
  }
  if (!a->Active)
    moved.clear();
  const int n = static_cast<int>(a->Steps.size());
  if (!a->Active || n < 2)
    return;
  const int k = std::clamp(a->CurrentFrame, 1, n - 1);
  std::vector<std::pair<uint32_t, const TCSSValue*>> from, to;
  for (auto it = FDriver.Sheets().rbegin(); it != FDriver.Sheets().rend(); ++it)
    if ((*it)->KeyFrames.Get(a->Name)) {
      (*it)->GetAnimationSelectors(a->Name, a->Steps[k - 1], from);
      (*it)->GetAnimationSelectors(a->Name, a->Steps[k], to);
      break;
    }
  a->GetFrameIndex();
  const int frame_start = static_cast<int>(static_cast<int64_t>(a->Steps[k - 1]) * a->Duration / 100);
  const int into = std::max(a->Position - frame_start, 0);
  for (const auto& [w, v] : to) {
    const TCSSPropRec* r = v->Prop;
    uint32_t c0 = 0, c1 = 0;
    float n0 = 0, n1 = 0;
    if (!animatable(r) || !declared_value(*s, *v, c1, n1))
      continue;
    auto same = std::find_if(from.begin(), from.end(), [&](const auto& f) { return f.second->Prop == r; });
    if (same == from.end() || !declared_value(*s, *same->second, c0, n0))
      resting_value(*s, r, c0, n0);
    TCSSTransition* t = s->StartTransition(r->Prop, true);
    Set.RemoveTransition(t);
    if (std::find(moved.begin(), moved.end(), t) == moved.end())
      moved.push_back(t);
    std::unique_ptr<TAnimatedProperty> x;
    if (r->PropType == cptColor) {
      auto c = std::make_unique<TAnimatedColor>();
      c->Start(c0, c1, a->FrameTime, 0, &t->Color, t);
      x = std::move(c);
    } else {
      auto f = std::make_unique<TAnimatedFloat>();
      f->Timing = a->Timing;
      f->Start(n0, n1, a->FrameTime, 0, &t->Number, t);
      x = std::move(f);
    }
    x->Element = node;
    x->Animation = a;
    if (into > 0)
      x->NextStep(into); // the frame began before this main-thread turn
    Set.Add(std::move(x));
  }
}

int TStyleAnimator::StartTransitions() {
  int started = 0;
  each_styled(FDriver.Root(), [&](TStyledHTMLNode* e) {
    TBaseElementStyle* s = e->Style();
    if (!s->Transitions.Count())
      return;
    std::vector<const TCSSPropRec*> rows;
    for (const TCSSValue* v : s->FProps)
      if (animatable(v->Prop))
        rows.push_back(v->Prop);
    for (const TCSSPropValueRec& r : s->FLastProps)
      if (animatable(r.Prop) && std::find(rows.begin(), rows.end(), r.Prop) == rows.end())
        rows.push_back(r.Prop);
    for (const TCSSPropRec* r : rows) {
      // The value before: the element's snapshot, else what it inherited or
      // the initial value, as it showed then.
      uint32_t c0 = 0;
      float n0 = r->PropType == cptNumber ? r->DefaultValue() : 0;
      auto last = std::find_if(s->FLastProps.begin(), s->FLastProps.end(),
                               [&](const TCSSPropValueRec& x) { return x.Prop == r; });
      if (last != s->FLastProps.end() && !(r->PropType == cptColor && last->AsNumber == kCSSSlotInherit)) {
        n0 = std::bit_cast<float>(last->AsNumber);
        c0 = last->AsNumber;
      } else if (r->PropType == cptLength) {
        continue; // from auto nothing moves
      } else if (r->Inherited) {
        if (r->PropType == cptColor)
          s->GetLastColorProp(r->Prop, c0);
        else
          s->GetLastNumberProp(r->Prop, n0);
      }
      uint32_t c1 = 0;
      float n1 = 0;
      resting_value(*s, r, c1, n1);
      const bool differs = r->PropType == cptColor ? c0 != c1 : std::fabs(n0 - n1) > 1e-4f;
      if (!differs)
        continue;
      TCSSTransition* t = s->StartTransition(r->Prop);
      if (!t)
        continue;
      // A transition already running starts again from where it stands.
      const bool running = t->Active.load();
      Set.RemoveTransition(t);
      const int delay = std::max(t->Delay, 0);
      std::unique_ptr<TAnimatedProperty> x;
      if (r->PropType == cptColor) {
        auto c = std::make_unique<TAnimatedColor>();
        c->Start(running ? t->GetColor() : c0, c1, t->Duration, delay, &t->Color, t);
        x = std::move(c);
      } else {
        auto f = std::make_unique<TAnimatedFloat>();
        f->Timing = t->Timing;
        f->Start(running ? t->GetNumber() : n0, n1, t->Duration, delay, &t->Number, t);
        x = std::move(f);
      }
      x->Element = e;
      Set.Add(std::move(x));
      ++started;
    }
  });
  return started;
}

} // namespace ht
