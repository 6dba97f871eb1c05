// The animation thread: one background thread that ticks the animations of
// every registered document, and hands painting back to the host's main
// thread.
//
// The library has no message loop: the host says how to run a task on its
// main thread (PostToMain), or drains the thread's queue itself (RunQueued).
// A document takes part through IHtAnimatedDocument; THtAnimationSet is a
// ready one that owns TAbstractAnimation objects:
//
//   ht::THtAnimationSet anims;                       // one per document
//   anims.OnPaint = [&] { view.Invalidate(); };      // main thread
//   anims.Add(std::move(fade));                      // a TAnimatedFloat ...
//   ht::HtAnimationThread().RegisterDoc(&anims);     // starts the thread
//   ...  // in the main loop: ht::HtAnimationThread().RunQueued();
//   ht::HtAnimationThread().UnregisterDoc(&anims);   // before anims goes
//
// Unregistering from the main thread waits for a round in progress, so the
// document may be freed right after; the thread never touches it again and
// tasks queued for it are dropped. The thread stops at library stop
// (ht::Finalize) and starts again on the next registration. Time comes from
// Clock (milliseconds; a steady clock unless a test puts its own).
#pragma once

#include "htcore/style/animation.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace ht {

// A document as the animation thread sees it.
class IHtAnimatedDocument {
public:
  virtual ~IHtAnimatedDocument() = default;
  // On the animation thread: runs the document's animations Elapsed
  // milliseconds on. Changed tells that something needs painting; false
  // drops the document from the thread (its animations are over).
  virtual bool AnimationStep(int Elapsed, bool& Changed) = 0;
  // On the main thread, queued after a step that changed something.
  virtual void AnimationPaint() {}
};

class TBaseAnimationThread {
public:
  using TTask = std::function<void()>;
  using TProc = void (*)(void* Data);

  TBaseAnimationThread();
  virtual ~TBaseAnimationThread();
  TBaseAnimationThread(const TBaseAnimationThread&) = delete;
  TBaseAnimationThread& operator=(const TBaseAnimationThread&) = delete;

  // Settings; change them while the thread is stopped.
  std::function<int64_t()> Clock;                     // milliseconds, monotonic
  std::function<void(TTask)> PostToMain;              // null: the own queue, see RunQueued
  std::function<void(const std::string&)> DebugPrint; // error reports; null: a line on stderr
  std::atomic<int> Step{16};                          // the tick, milliseconds
  std::atomic<bool> Disabled{false};                  // rounds pass without stepping

  void RegisterDoc(IHtAnimatedDocument* Doc);
  // From the animation thread (inside a step) the removal waits for the
  // next round; from any other thread it happens now, after a round in
  // progress.
  void UnregisterDoc(IHtAnimatedDocument* Doc);
  bool IsRegistered(const IHtAnimatedDocument* Doc) const;
  // Proc(Data) runs on the main thread every Interval milliseconds.
  void Subscribe(TProc Proc, void* Data, int Interval);
  void Unsubscribe(TProc Proc, void* Data);
  // Queues AnimationPaint of the documents that changed since the last one.
  void Repaint();

  // Runs the tasks queued without PostToMain; call it on the main thread.
  // Answers the number run.
  int RunQueued();
  // Ends the sleep now: the next round starts at once.
  void Wake();
  // Stops and joins the thread; registrations are dropped. Not from a step.
  void Stop();
  bool Running() const;
  // Rounds done since the start; WaitRounds waits (up to TimeoutMs) until
  // Target is reached.
  uint64_t Rounds() const noexcept { return FRounds.load(); }
  bool WaitRounds(uint64_t Target, int TimeoutMs);

protected:
  // The thread's loop: a round, then sleep for Step, until stopped.
  virtual void Execute();
  // One round: steps the documents, then the subscriptions.
  void Round();

private:
  struct TDocEntry {
    IHtAnimatedDocument* Doc;
    uint64_t Serial;
    int64_t Last;
    bool Changed;
  };
  struct TProcEntry {
    TProc Proc;
    void* Data;
    int Interval;
    int64_t Last;
    uint64_t Serial;
  };

  void EnsureRunning();
  void Post(TTask Task);
  int64_t Now() const;
  void Report(const std::string& What);
  bool DocAlive(IHtAnimatedDocument* Doc, uint64_t Serial) const;
  bool ProcAlive(uint64_t Serial) const;

  mutable std::mutex FDocsLock;  // Docs, Unr
  std::vector<TDocEntry> FDocs;
  std::vector<IHtAnimatedDocument*> FUnr;
  mutable std::mutex FProcsLock; // Procs, Unp
  std::vector<TProcEntry> FProcs;
  std::vector<std::pair<TProc, void*>> FUnp;
  uint64_t FSerial = 0; // under FDocsLock

  std::mutex FWaitLock; // the sleep, the wake mark, the stop mark
  std::condition_variable FWaitCond;
  bool FWake = false;
  bool FTerminated = false;
  std::condition_variable FRoundCond;
  std::atomic<uint64_t> FRounds{0};

  std::mutex FQueueLock;
  std::deque<TTask> FQueue;

  std::mutex FThreadLock; // start and stop
  std::thread FThread;
  std::atomic<std::thread::id> FThreadId{};
};

// The library's one animation thread.
TBaseAnimationThread& HtAnimationThread();

// A ready document side: it owns its animations and steps them under a lock,
// so that the main thread may add and remove them at any time.
class THtAnimationSet : public IHtAnimatedDocument {
public:
  ~THtAnimationSet() override;

  std::function<void()> OnPaint;  // main thread, after steps changed values
  // Called on the main thread with the key-frame animations whose frame
  // moved (ChangeStyle set), to take the new frame's declarations.
  std::function<void(TAnimatedElement&)> OnFrame;

  TAbstractAnimation* Add(std::unique_ptr<TAbstractAnimation> Animation);
  // Ends and frees the animations of Element (before the element goes).
  void RemoveElement(const TObject* Element);
  // Ends and frees the animations that move values of T.
  void RemoveTransition(const TCSSTransition* T);
  void Clear();
  size_t Count() const;
  // Whether one of the animations passes Test (under the lock).
  bool Contains(const std::function<bool(const TAbstractAnimation&)>& Test) const;
  // Whether the set keeps its place on the thread once empty.
  bool KeepAlive = true;

  bool AnimationStep(int Elapsed, bool& Changed) override;
  void AnimationPaint() override;
  std::recursive_mutex& Lock() noexcept { return FLock; }

private:
  mutable std::recursive_mutex FLock;
  std::vector<std::unique_ptr<TAbstractAnimation>> FItems;
  std::vector<TAnimatedElement*> FFrames; // moved frames, for OnFrame
};

} // namespace ht
