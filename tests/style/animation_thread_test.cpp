#include "htcore/style/animation_thread.h"

#include "htcore/foundation/startup.h"

#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

using namespace ht;

namespace {

// A thread whose time moves only when the test says, and whose rounds run
// only when woken.
struct TFakeTime {
  std::atomic<int64_t> now{1000};
  TBaseAnimationThread thread;

  TFakeTime() {
    thread.Clock = [this] { return now.load(); };
    thread.Step = 1000000;
  }
  ~TFakeTime() { thread.Stop(); }
  // Moves the clock, runs one whole round after it, then the main-thread tasks.
  void Advance(int Ms) {
    now += Ms;
    const uint64_t target = thread.Rounds() + 1;
    thread.Wake();
    ASSERT_TRUE(thread.WaitRounds(target, 10000));
    thread.RunQueued();
  }
};

class TThrowingDoc : public IHtAnimatedDocument {
public:
  bool AnimationStep(int, bool&) override { throw std::runtime_error("boom"); }
};

int g_calls = 0;
void count_call(void* Data) {
  ++g_calls;
  ++*static_cast<int*>(Data);
}

bool stress_long() { return std::getenv("HTCORE_STRESS") != nullptr; }

} // namespace

TEST(AnimationThread, StepsDocumentsByTheClockAndPaintsOnTheMainThread) {
  TFakeTime t;
  THtAnimationSet set;
  int paints = 0;
  set.OnPaint = [&] { ++paints; };
  float v = 0;
  auto a = std::make_unique<TAnimatedFloat>();
  a->Timing = tmLinear;
  a->Start(0, 100, 1000, 0, &v);
  set.Add(std::move(a));
  t.thread.RegisterDoc(&set);
  EXPECT_TRUE(t.thread.Running());
  EXPECT_TRUE(t.thread.IsRegistered(&set));
  t.Advance(250);
  EXPECT_FLOAT_EQ(v, 25);
  EXPECT_EQ(paints, 1);
  t.Advance(500);
  EXPECT_FLOAT_EQ(v, 75);
  t.Advance(5000); // the end: the animation leaves the set
  EXPECT_FLOAT_EQ(v, 100);
  EXPECT_EQ(set.Count(), 0u);
  EXPECT_EQ(paints, 3);
  t.Advance(100); // nothing changed: no paint
  EXPECT_EQ(paints, 3);
  t.thread.UnregisterDoc(&set);
  EXPECT_FALSE(t.thread.IsRegistered(&set));
}

TEST(AnimationThread, StopRestartAndFreeingDocumentsWhileRunning) {
  TFakeTime t;
  THtAnimationSet first;
  t.thread.RegisterDoc(&first);
  t.thread.Stop();
  EXPECT_FALSE(t.thread.Running());
  EXPECT_FALSE(t.thread.IsRegistered(&first)); // stop drops registrations
  t.thread.RegisterDoc(&first);                // and use starts it again
  EXPECT_TRUE(t.thread.Running());
  t.Advance(10);
  // A document freed with paints still queued: the task finds it gone.
  int paints = 0;
  {
    auto doc = std::make_unique<THtAnimationSet>();
    doc->OnPaint = [&] { ++paints; };
    float v = 0;
    auto a = std::make_unique<TAnimatedFloat>();
    a->Start(0, 1, 1000, 0, &v);
    doc->Add(std::move(a));
    t.thread.RegisterDoc(doc.get());
    t.now += 100;
    const uint64_t target = t.thread.Rounds() + 1;
    t.thread.Wake();
    ASSERT_TRUE(t.thread.WaitRounds(target, 10000));
    t.thread.UnregisterDoc(doc.get());
  }
  EXPECT_GE(t.thread.RunQueued(), 1);
  EXPECT_EQ(paints, 0);
  t.thread.UnregisterDoc(&first);
}

TEST(AnimationThread, ErrorsAreReportedAndTheThreadGoesOn) {
  TFakeTime t;
  std::vector<std::string> reports;
  std::mutex m;
  t.thread.DebugPrint = [&](const std::string& s) {
    std::lock_guard<std::mutex> g(m);
    reports.push_back(s);
  };
  TThrowingDoc bad;
  THtAnimationSet good;
  float v = 0;
  auto a = std::make_unique<TAnimatedFloat>();
  a->Timing = tmLinear;
  a->Start(0, 10, 100, 0, &v);
  good.Add(std::move(a));
  t.thread.RegisterDoc(&bad);
  t.thread.RegisterDoc(&good);
  t.Advance(50);
  EXPECT_FLOAT_EQ(v, 5);
  t.Advance(10);
  std::lock_guard<std::mutex> g(m);
  ASSERT_GE(reports.size(), 2u);
  EXPECT_EQ(reports[0], "HtAnimationThread: boom");
  t.thread.UnregisterDoc(&bad);
  t.thread.UnregisterDoc(&good);
}

TEST(AnimationThread, SubscriptionsRunOnTheMainThreadByInterval) {
  TFakeTime t;
  int mine = 0;
  g_calls = 0;
  t.thread.Subscribe(count_call, &mine, 100);
  t.Advance(50);
  EXPECT_EQ(mine, 0);
  t.Advance(60);
  EXPECT_EQ(mine, 1);
  t.Advance(100);
  EXPECT_EQ(mine, 2);
  // A call queued before Unsubscribe is dropped.
  t.now += 200;
  const uint64_t target = t.thread.Rounds() + 1;
  t.thread.Wake();
  ASSERT_TRUE(t.thread.WaitRounds(target, 10000));
  t.thread.Unsubscribe(count_call, &mine);
  t.thread.RunQueued();
  EXPECT_EQ(mine, 2);
  // Posting through the host's function instead of the own queue.
  std::vector<TBaseAnimationThread::TTask> host_queue;
  std::mutex m;
  t.thread.Stop();
  t.thread.PostToMain = [&](TBaseAnimationThread::TTask task) {
    std::lock_guard<std::mutex> g(m);
    host_queue.push_back(std::move(task));
  };
  t.thread.Subscribe(count_call, &mine, 10);
  t.Advance(20);
  std::vector<TBaseAnimationThread::TTask> run;
  {
    std::lock_guard<std::mutex> g(m);
    run.swap(host_queue);
  }
  for (auto& task : run)
    task();
  EXPECT_EQ(mine, 3);
  t.thread.Unsubscribe(count_call, &mine);
}

TEST(AnimationThread, KeyFramesReachTheMainThread) {
  TFakeTime t;
  THtAnimationSet set;
  TCSSAnimation css;
  css.Duration = 1000;
  css.Steps = {0, 50, 100};
  css.Active = true;
  std::vector<int> frames;
  set.OnFrame = [&](TAnimatedElement& e) { frames.push_back(static_cast<TCSSAnimation*>(e.Animation)->CurrentFrame); };
  auto e = std::make_unique<TAnimatedElement>();
  e->Animation = &css;
  set.Add(std::move(e));
  t.thread.RegisterDoc(&set);
  t.Advance(100);
  t.Advance(100);
  t.Advance(400);
  t.Advance(1000); // ended: the last change still reaches the host, then it leaves
  EXPECT_EQ(frames, (std::vector<int>{1, 2, 2}));
  t.Advance(10);
  EXPECT_EQ(set.Count(), 0u);
  t.thread.UnregisterDoc(&set);
}

TEST(AnimationThread, LibraryThreadStopsWithTheLibraryAndRestarts) {
  THtAnimationSet set;
  HtAnimationThread().RegisterDoc(&set);
  EXPECT_TRUE(HtAnimationThread().Running());
  Finalize();
  EXPECT_FALSE(HtAnimationThread().Running());
  Initialize();
  HtAnimationThread().RegisterDoc(&set);
  EXPECT_TRUE(HtAnimationThread().Running());
  HtAnimationThread().UnregisterDoc(&set);
}

// Many documents, animations added and removed from this thread while the
// animation thread ticks on the real clock. HTCORE_STRESS makes it long.
TEST(AnimationThread, StressAddRemoveWhileTicking) {
  TBaseAnimationThread thread;
  thread.Step = 1;
  constexpr int kDocs = 16;
  std::vector<std::unique_ptr<THtAnimationSet>> docs;
  std::vector<std::unique_ptr<float[]>> values;
  std::atomic<int> paints{0};
  for (int i = 0; i < kDocs; ++i) {
    docs.push_back(std::make_unique<THtAnimationSet>());
    docs.back()->OnPaint = [&] { ++paints; };
    values.push_back(std::make_unique<float[]>(64));
    thread.RegisterDoc(docs.back().get());
  }
  std::mt19937 rng(7);
  const int rounds = stress_long() ? 200000 : 3000;
  for (int r = 0; r < rounds; ++r) {
    const int d = static_cast<int>(rng() % kDocs);
    switch (rng() % 6) {
    case 0:
    case 1: {
      auto a = std::make_unique<TAnimatedFloat>();
      a->Element = reinterpret_cast<TObject*>(static_cast<intptr_t>(1 + rng() % 8));
      a->Start(0, 1, 1 + static_cast<int>(rng() % 50), 0, &values[d][rng() % 64]);
      docs[d]->Add(std::move(a));
      break;
    }
    case 2:
      docs[d]->RemoveElement(reinterpret_cast<TObject*>(static_cast<intptr_t>(1 + rng() % 8)));
      break;
    case 3: {
      // A document freed and made anew while the thread runs.
      thread.UnregisterDoc(docs[d].get());
      docs[d] = std::make_unique<THtAnimationSet>();
      docs[d]->OnPaint = [&] { ++paints; };
      thread.RegisterDoc(docs[d].get());
      break;
    }
    case 4:
      thread.RunQueued();
      break;
    default:
      (void)docs[d]->Count();
      break;
    }
  }
  for (auto& doc : docs)
    thread.UnregisterDoc(doc.get());
  thread.RunQueued();
  thread.Stop();
  EXPECT_GE(paints.load(), 0);
}
