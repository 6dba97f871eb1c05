// The one background thread that ticks all animations, and the ready
// document side that owns a document's animations.
#include "htcore/style/animation_thread.h"

#include "foundation/units.h"
#include "htcore/foundation/startup.h"

#include <algorithm>
#include <chrono>
#include <climits>
#include <cstdio>
#include <exception>

#if defined(__linux__)
#include <pthread.h>
#endif

namespace ht {

namespace {

// A clock jump (a suspended machine, a test's clock) must not overflow the steps.
constexpr int64_t kMaxElapsed = 3600 * 1000;

int64_t steady_ms() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

} // namespace

// --- TBaseAnimationThread ---

TBaseAnimationThread::TBaseAnimationThread() = default;

TBaseAnimationThread::~TBaseAnimationThread() { Stop(); }

int64_t TBaseAnimationThread::Now() const { return Clock ? Clock() : steady_ms(); }

void TBaseAnimationThread::Report(const std::string& What) {
  const std::string line = "HtAnimationThread: " + What;
  if (DebugPrint)
    DebugPrint(line);
  else
    std::fprintf(stderr, "%s\n", line.c_str());
}

void TBaseAnimationThread::EnsureRunning() {
  std::lock_guard<std::mutex> g(FThreadLock);
  if (FThread.joinable())
    return;
  {
    std::lock_guard<std::mutex> w(FWaitLock);
    FTerminated = false;
    FWake = false;
  }
  FThread = std::thread([this] { Execute(); });
}

bool TBaseAnimationThread::Running() const {
  std::lock_guard<std::mutex> g(const_cast<std::mutex&>(FThreadLock));
  return FThread.joinable();
}

void TBaseAnimationThread::Stop() {
  std::lock_guard<std::mutex> g(FThreadLock);
  if (!FThread.joinable())
    return;
  {
    std::lock_guard<std::mutex> w(FWaitLock);
    FTerminated = true;
  }
  FWaitCond.notify_all();
  FThread.join();
  FThreadId.store(std::thread::id());
  {
    std::lock_guard<std::mutex> d(FDocsLock);
    FDocs.clear();
    FUnr.clear();
  }
  {
    std::lock_guard<std::mutex> p(FProcsLock);
    FProcs.clear();
    FUnp.clear();
  }
  std::lock_guard<std::mutex> q(FQueueLock);
  FQueue.clear();
}

void TBaseAnimationThread::Wake() {
  {
    std::lock_guard<std::mutex> w(FWaitLock);
    FWake = true;
  }
  FWaitCond.notify_all();
}

bool TBaseAnimationThread::WaitRounds(uint64_t Target, int TimeoutMs) {
  std::unique_lock<std::mutex> w(FWaitLock);
  return FRoundCond.wait_for(w, std::chrono::milliseconds(TimeoutMs),
                             [&] { return FRounds.load() >= Target || FTerminated; }) &&
         FRounds.load() >= Target;
}

void TBaseAnimationThread::RegisterDoc(IHtAnimatedDocument* Doc) {
  if (!Doc)
    return;
  if (this == &HtAnimationThread())
    EnsureStarted(); // so that library stop stops the thread
  {
    std::lock_guard<std::mutex> g(FDocsLock);
    std::erase(FUnr, Doc);
    auto it = std::find_if(FDocs.begin(), FDocs.end(), [&](const TDocEntry& e) { return e.Doc == Doc; });
    if (it == FDocs.end())
      FDocs.push_back({Doc, ++FSerial, Now(), false});
  }
  EnsureRunning();
  {
    // Out of an idle wait: with the lock taken the thread is either before
    // its test or waiting.
    std::lock_guard<std::mutex> w(FWaitLock);
  }
  FWaitCond.notify_all();
}

void TBaseAnimationThread::UnregisterDoc(IHtAnimatedDocument* Doc) {
  if (!Doc)
    return;
  if (std::this_thread::get_id() == FThreadId.load()) {
    // Inside a round the list is being walked: the next round removes it.
    FUnr.push_back(Doc);
    return;
  }
  // Taking the lock waits for a round in progress to end.
  std::lock_guard<std::mutex> g(FDocsLock);
  std::erase_if(FDocs, [&](const TDocEntry& e) { return e.Doc == Doc; });
  std::erase(FUnr, Doc);
}

bool TBaseAnimationThread::IsRegistered(const IHtAnimatedDocument* Doc) const {
  std::lock_guard<std::mutex> g(FDocsLock);
  if (std::find(FUnr.begin(), FUnr.end(), Doc) != FUnr.end())
    return false;
  return std::any_of(FDocs.begin(), FDocs.end(), [&](const TDocEntry& e) { return e.Doc == Doc; });
}

bool TBaseAnimationThread::DocAlive(IHtAnimatedDocument* Doc, uint64_t Serial) const {
  std::lock_guard<std::mutex> g(FDocsLock);
  if (std::find(FUnr.begin(), FUnr.end(), Doc) != FUnr.end())
    return false;
  return std::any_of(FDocs.begin(), FDocs.end(),
                     [&](const TDocEntry& e) { return e.Doc == Doc && e.Serial == Serial; });
}

void TBaseAnimationThread::Subscribe(TProc Proc, void* Data, int Interval) {
  if (!Proc)
    return;
  if (this == &HtAnimationThread())
    EnsureStarted();
  {
    std::lock_guard<std::mutex> g(FProcsLock);
    std::erase(FUnp, std::make_pair(Proc, Data));
    uint64_t serial;
    {
      std::lock_guard<std::mutex> d(FDocsLock);
      serial = ++FSerial;
    }
    FProcs.push_back({Proc, Data, std::max(Interval, 1), Now(), serial});
  }
  EnsureRunning();
  {
    std::lock_guard<std::mutex> w(FWaitLock);
  }
  FWaitCond.notify_all();
}

void TBaseAnimationThread::Unsubscribe(TProc Proc, void* Data) {
  if (std::this_thread::get_id() == FThreadId.load()) {
    FUnp.emplace_back(Proc, Data);
    return;
  }
  std::lock_guard<std::mutex> g(FProcsLock);
  std::erase_if(FProcs, [&](const TProcEntry& e) { return e.Proc == Proc && e.Data == Data; });
  std::erase(FUnp, std::make_pair(Proc, Data));
}

bool TBaseAnimationThread::ProcAlive(uint64_t Serial) const {
  std::lock_guard<std::mutex> g(FProcsLock);
  return std::any_of(FProcs.begin(), FProcs.end(), [&](const TProcEntry& e) { return e.Serial == Serial; });
}

void TBaseAnimationThread::Post(TTask Task) {
  if (PostToMain) {
    PostToMain(std::move(Task));
    return;
  }
  std::lock_guard<std::mutex> q(FQueueLock);
  FQueue.push_back(std::move(Task));
}

int TBaseAnimationThread::RunQueued() {
  int n = 0;
  for (;;) {
    TTask t;
    {
      std::lock_guard<std::mutex> q(FQueueLock);
      if (FQueue.empty())
        return n;
      t = std::move(FQueue.front());
      FQueue.pop_front();
    }
    t();
    ++n;
  }
}

void TBaseAnimationThread::Repaint() {
  std::vector<std::pair<IHtAnimatedDocument*, uint64_t>> changed;
  {
    std::unique_lock<std::mutex> g(FDocsLock, std::defer_lock);
    // Inside a round the lock is ours already.
    const bool inside = std::this_thread::get_id() == FThreadId.load();
    if (!inside)
      g.lock();
    for (TDocEntry& e : FDocs)
      if (e.Changed) {
        e.Changed = false;
        changed.emplace_back(e.Doc, e.Serial);
      }
  }
  if (changed.empty())
    return;
  // The document may be gone when the task runs: it asks first, on the main
  // thread, where documents are freed.
  Post([this, changed] {
    for (const auto& [doc, serial] : changed)
      if (DocAlive(doc, serial))
        doc->AnimationPaint();
  });
}

void TBaseAnimationThread::Round() {
  const int64_t now = Now();
  if (!Disabled.load()) {
    // Errors go to the host's callback after the lock is released: a callback
    // that takes a lock of its own while the main thread holds that lock and
    // unregisters a document would otherwise deadlock.
    std::vector<std::string> errors;
    {
      std::lock_guard<std::mutex> g(FDocsLock);
      for (IHtAnimatedDocument* d : FUnr)
        std::erase_if(FDocs, [&](const TDocEntry& e) { return e.Doc == d; });
      FUnr.clear();
      for (size_t i = 0; i < FDocs.size();) {
        TDocEntry& e = FDocs[i];
        const int elapsed = static_cast<int>(std::clamp<int64_t>(now - e.Last, 1, kMaxElapsed));
        e.Last = now;
        bool keep = false, changed = false;
        try {
          keep = e.Doc->AnimationStep(elapsed, changed);
        } catch (const std::exception& x) {
          errors.emplace_back(x.what());
          keep = true;
        } catch (...) {
          errors.emplace_back("unknown error");
          keep = true;
        }
        e.Changed = e.Changed || changed;
        // A document leaving with values to paint stays for one more round,
        // so that the paint of this one reaches it.
        if (!keep && !e.Changed) {
          FDocs.erase(FDocs.begin() + static_cast<ptrdiff_t>(i));
          continue;
        }
        ++i;
      }
      Repaint();
    }
    for (const std::string& e : errors)
      Report(e);
    {
      std::vector<std::pair<TProc, void*>> calls;
      std::vector<uint64_t> serials;
      std::lock_guard<std::mutex> g(FProcsLock);
      for (const auto& gone : FUnp)
        std::erase_if(FProcs, [&](const TProcEntry& e) { return e.Proc == gone.first && e.Data == gone.second; });
      FUnp.clear();
      for (TProcEntry& e : FProcs)
        if (now - e.Last >= e.Interval) {
          e.Last = now;
          TProc proc = e.Proc;
          void* data = e.Data;
          const uint64_t serial = e.Serial;
          Post([this, proc, data, serial] {
            if (ProcAlive(serial))
              proc(data);
          });
        }
    }
  }
  FRounds.fetch_add(1);
  {
    std::lock_guard<std::mutex> w(FWaitLock);
  }
  FRoundCond.notify_all();
}

void TBaseAnimationThread::Execute() {
#if defined(__linux__)
  pthread_setname_np(pthread_self(), "HTAnimation");
#endif
  FThreadId.store(std::this_thread::get_id());
  for (;;) {
    {
      std::unique_lock<std::mutex> w(FWaitLock);
      // Nothing to tick: wait for a registration rather than wake every tick.
      for (;;) {
        if (FTerminated)
          return;
        bool idle;
        {
          std::lock_guard<std::mutex> d(FDocsLock);
          idle = FDocs.empty();
        }
        if (idle) {
          std::lock_guard<std::mutex> p(FProcsLock);
          idle = FProcs.empty();
        }
        if (!idle)
          break;
        FWaitCond.wait_for(w, std::chrono::milliseconds(250));
      }
      FWaitCond.wait_for(w, std::chrono::milliseconds(std::max(Step.load(), 1)),
                         [&] { return FWake || FTerminated; });
      if (FTerminated)
        return;
      FWake = false;
    }
    Round();
  }
}

// --- The library's thread ---

TBaseAnimationThread& HtAnimationThread() {
  // Never destroyed: library stop (atexit) joins it, and static destruction
  // order must not matter.
  static TBaseAnimationThread* t = new TBaseAnimationThread();
  return *t;
}

namespace detail {

void StartHtmlAni() {}

void StopHtmlAni() { HtAnimationThread().Stop(); }

} // namespace detail

// --- THtAnimationSet ---

THtAnimationSet::~THtAnimationSet() {
  // A set that is still registered would be stepped after its end.
  HtAnimationThread().UnregisterDoc(this);
}

TAbstractAnimation* THtAnimationSet::Add(std::unique_ptr<TAbstractAnimation> Animation) {
  if (!Animation)
    return nullptr;
  std::lock_guard<std::recursive_mutex> g(FLock);
  FItems.push_back(std::move(Animation));
  return FItems.back().get();
}

namespace {

// A finished transition answers no more: the declared value is its end value.
void end_animation(TAbstractAnimation& A) {
  if (A.Transition && !A.Animation)
    A.Transition->Active.store(false);
}

} // namespace

void THtAnimationSet::RemoveElement(const TObject* Element) {
  std::lock_guard<std::recursive_mutex> g(FLock);
  std::erase_if(FFrames, [&](TAnimatedElement* a) { return a->Element == Element; });
  std::erase_if(FItems, [&](const std::unique_ptr<TAbstractAnimation>& a) { return a->Element == Element; });
}

void THtAnimationSet::RemoveTransition(const TCSSTransition* T) {
  std::lock_guard<std::recursive_mutex> g(FLock);
  std::erase_if(FItems, [&](const std::unique_ptr<TAbstractAnimation>& a) { return a->Transition == T; });
}

void THtAnimationSet::Clear() {
  std::lock_guard<std::recursive_mutex> g(FLock);
  FFrames.clear();
  FItems.clear();
}

size_t THtAnimationSet::Count() const {
  std::lock_guard<std::recursive_mutex> g(FLock);
  return FItems.size();
}

bool THtAnimationSet::Contains(const std::function<bool(const TAbstractAnimation&)>& Test) const {
  std::lock_guard<std::recursive_mutex> g(FLock);
  return std::any_of(FItems.begin(), FItems.end(),
                     [&](const std::unique_ptr<TAbstractAnimation>& a) { return Test(*a); });
}

bool THtAnimationSet::AnimationStep(int Elapsed, bool& Changed) {
  std::lock_guard<std::recursive_mutex> g(FLock);
  for (size_t i = 0; i < FItems.size();) {
    TAbstractAnimation& a = *FItems[i];
    if (a.NextStep(Elapsed))
      Changed = true;
    if (auto* e = dynamic_cast<TAnimatedElement*>(&a); e && e->ChangeStyle) {
      if (std::find(FFrames.begin(), FFrames.end(), e) == FFrames.end())
        FFrames.push_back(e);
      Changed = true;
    }
    // A frame waiting for the main thread keeps its animation alive.
    if (!a.Active() && !a.ChangeStyle) {
      end_animation(a);
      Changed = true;
      FItems.erase(FItems.begin() + static_cast<ptrdiff_t>(i));
      continue;
    }
    ++i;
  }
  return KeepAlive || !FItems.empty();
}

void THtAnimationSet::AnimationPaint() {
  {
    // Under the lock, which is recursive: a handler may add and remove
    // animations, and the thread must not step a frame being read.
    std::lock_guard<std::recursive_mutex> g(FLock);
    while (!FFrames.empty()) {
      TAnimatedElement* e = FFrames.front();
      FFrames.erase(FFrames.begin());
      const bool there = std::any_of(FItems.begin(), FItems.end(),
                                     [&](const std::unique_ptr<TAbstractAnimation>& a) { return a.get() == e; });
      if (!there)
        continue;
      e->ChangeStyle = false;
      if (OnFrame)
        OnFrame(*e);
    }
  }
  if (OnPaint)
    OnPaint();
}

} // namespace ht
