#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>

#include "engine/scene/NewNodes.h"
#include "host/C4DThread.h"
#include "tests/support/SceneBytes.h"
#include "tests/undo/RandomEdits.h"

namespace {

class Work : public host::C4DThread {
 public:
  explicit Work(std::function<void(Work&)> main) : main_(std::move(main)) {}
  ~Work() override { End(true); }
  void Main() override { main_(*this); }
  const host::CHAR* GetThreadName() override { return "Work"; }
  host::Bool TestDBreak() override { return ownBreak; }

  std::atomic<bool> ownBreak{false};

 private:
  std::function<void(Work&)> main_;
};

void UntilStopped(Work& work) {
  while (!work.Get()->TestBreak()) std::this_thread::yield();
}

TEST(Thread, ModeZeroHasRunWhenStartReturns) {
  std::thread::id ran;
  bool running = false;
  Work work([&](Work& self) {
    ran = std::this_thread::get_id();
    running = self.IsRunning();
  });
  EXPECT_TRUE(work.Start(0, 0));
  EXPECT_EQ(ran, std::this_thread::get_id());
  EXPECT_TRUE(running);
  EXPECT_FALSE(work.IsRunning());
  work.End();
  work.Wait(false);
}

TEST(Thread, OtherModesRunBesides) {
  std::thread::id ran;
  Work work([&](Work& self) {
    ran = std::this_thread::get_id();
    UntilStopped(self);
  });
  EXPECT_TRUE(work.Start(1, 0));
  EXPECT_TRUE(work.IsRunning());
  EXPECT_FALSE(work.Start(1, 0)) << "it runs already";
  EXPECT_FALSE(work.Start(0, 0)) << "in whatever mode";
  EXPECT_FALSE(work.TestBreak());
  work.End();
  EXPECT_FALSE(work.IsRunning());
  EXPECT_NE(ran, std::this_thread::get_id());
  EXPECT_TRUE(work.Start(2, 0)) << "it can be started again";
  EXPECT_FALSE(work.TestBreak());
  work.End(false);
  work.Wait(true);
  EXPECT_FALSE(work.IsRunning());
}

TEST(Thread, ItsOwnTestCounts) {
  Work work(UntilStopped);
  work.ownBreak = true;
  EXPECT_TRUE(work.Start(0, 0));
  EXPECT_TRUE(work.TestBreak());
}

TEST(Thread, EndsWhenDestroyed) {
  std::atomic<bool> ended{false};
  {
    Work work([&](Work& self) {
      UntilStopped(self);
      ended = true;
    });
    work.Start(1, 0);
  }
  EXPECT_TRUE(ended);
}

TEST(Thread, EndingFromInsideOnlyAsks) {
  bool asked = false;
  Work work([&](Work& self) {
    self.End(true);
    self.Wait(false);
    asked = self.TestBreak();
  });
  work.Start(0, 0);
  EXPECT_TRUE(asked);
  work.Start(1, 0);
  work.Wait(false);
  EXPECT_TRUE(asked);
}

TEST(Thread, AllCanBeStoppedFromAnywhere) {
  host::StopAllThreads();
  Work one(UntilStopped);
  Work two(UntilStopped);
  one.Start(1, 0);
  two.Start(1, 0);
  host::StopAllThreads();
  EXPECT_FALSE(one.IsRunning() || two.IsRunning());

  Work stopper([](Work&) { host::StopAllThreads(); });
  one.Start(1, 0);
  stopper.Start(1, 0);
  one.Wait(false);
  stopper.Wait(false);
  EXPECT_FALSE(one.IsRunning() || stopper.IsRunning());
}

TEST(Thread, ManyStartsAndStops) {
  std::atomic<int> runs{0};
  Work work([&](Work&) { ++runs; });
  for (int i = 0; i < 500; ++i) {
    ASSERT_TRUE(work.Start(1, 0));
    i % 2 == 0 ? work.End() : work.Wait(false);
  }
  EXPECT_EQ(runs, 500);
}

// As unsaved work is kept, and as pictures of states are made.
TEST(Thread, CopiesStayAsTheyAreWhileTheSceneChanges) {
  tests::SceneBuilder scene;
  tests::RandomEdits::Build(scene);
  tests::RandomEdits edits(scene.Doc(), 1);
  for (int round = 0; round < 10; ++round) {
    const engine::OwnedDocument copy = engine::CopyOf(scene.Doc());
    const std::string before = tests::Bytes(*copy);
    std::string beside;
    {
      const std::jthread writer([&] { beside = tests::Bytes(*copy) + tests::Bytes(*copy); });
      for (int i = 0; i < 20; ++i) edits.Step();
      while (scene.Doc().DoUndo()) {
      }
    }
    ASSERT_EQ(beside, before + before);
    for (int i = 0; i <= round; ++i) edits.Step();
  }
}

TEST(BaseThread, WithoutAThreadNothingStops) {
  host::BaseThread none;
  EXPECT_FALSE(none.TestBreak());
}

}  // namespace
