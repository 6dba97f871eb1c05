// TStyleAnimator: the glue between a styled document and the animation
// thread, for hosts that want CSS transitions and key-frame animations to
// just run.
//
// Key-frame animations: after a cascade, StartAnimations finds every element
// whose style runs an "animation" with key frames in the driver's sheets;
// each frame moves the lengths, numbers and colours of its key frame from
// the previous one with the animation's timing. Transitions: SaveLastProps
// before a change, the cascade after it, then StartTransitions moves each
// changed property that a "transition" covers. The style getters answer the
// values in flight; Set.OnPaint tells when to paint.
//
//   ht::TStyleAnimator anim(driver);            // driver has run
//   anim.Set.OnPaint = [&] { view.Invalidate(); };
//   anim.StartAnimations();
//   anim.SaveLastProps(); p->AddClass(u"open"_hs); driver.Run();
//   anim.StartTransitions();
//   // main loop: ht::HtAnimationThread().RunQueued();
//
// Free the animator before the document; RemoveElement before an element goes.
#pragma once

#include "htcore/style/animation_thread.h"

#include <unordered_map>
#include <vector>

namespace ht {

class TStyleDriver;
class TStyledHTMLNode;

class TStyleAnimator {
public:
  explicit TStyleAnimator(TStyleDriver& Driver, TBaseAnimationThread* Thread = nullptr);
  ~TStyleAnimator();
  TStyleAnimator(const TStyleAnimator&) = delete;
  TStyleAnimator& operator=(const TStyleAnimator&) = delete;

  THtAnimationSet Set;

  // Registers the key-frame animations of the elements that are not running
  // yet; answers their number.
  int StartAnimations();
  // Starts a transition for each property that changed since SaveLastProps
  // and that a transition covers; answers their number.
  int StartTransitions();
  // Snapshots every element's values, before a change that may set off transitions.
  void SaveLastProps();
  void RemoveElement(TStyledHTMLNode* Node);

private:
  void TakeFrame(TAnimatedElement& E);
  TStyleDriver& FDriver;
  TBaseAnimationThread& FThread;
  // The transition entries each key-frame animation moves, to end them with it.
  std::unordered_map<const TCSSAnimation*, std::vector<TCSSTransition*>> FMoved;
};

} // namespace ht
