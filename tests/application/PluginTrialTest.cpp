// Work that is tried in a copy of this process: what became of it, and that nothing comes of it here.
#include "engine/application/PluginTrial.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <stdexcept>
#include <thread>

#include "engine/outside/Services.h"
#include "tests/support/ScratchFolder.h"

namespace {

TEST(PluginTrial, SaysWhatBecameOfTheWork) {
  int done = 0;
  const std::pair<std::function<void()>, const char*> rows[] = {
      {[&] { ++done; }, ""},
      {[] { throw std::runtime_error("an answer, too"); }, ""},
      {[] { ::raise(SIGSEGV); }, "it crashes (Segmentation fault)"},
      {[] { ::raise(SIGTERM); }, "it crashes (Terminated)"},
      {[] { std::abort(); }, "it crashes (Aborted)"},
      {[] { ::_exit(3); }, "it ends the program"}};
  // Handlers and a mask of this process are not the copy's.
  void (*const former)(int) = ::signal(SIGSEGV, [](int) { ::_exit(0); });
  sigset_t blocked;
  sigset_t mask;
  sigfillset(&blocked);
  ::pthread_sigmask(SIG_SETMASK, &blocked, &mask);
  for (const auto& [work, why] : rows) EXPECT_EQ(engine::WhyItWouldEnd(work), why);
  ::pthread_sigmask(SIG_SETMASK, &mask, nullptr);
  ::signal(SIGSEGV, former);
  EXPECT_EQ(done, 0);
}

TEST(PluginTrial, TheCopyIsMuteAndChangesNoFile) {
  const tests::ScratchFolder scratch;
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const std::string why = engine::WhyItWouldEnd([&] {
    for (const int standard : {1, 2}) {
      if (::write(standard, "heard", 5) != 5) ::_exit(1);
    }
    engine::PublishedServices().person.Tell("heard");
    if (engine::PublishedServices().files.ReplaceFile(scratch / "file", "x")) ::_exit(2);
  });
  EXPECT_EQ(testing::internal::GetCapturedStdout() + testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(why, "");
  EXPECT_EQ(tests::Names(scratch.Path()), "") << "or this kernel cannot confine (Landlock)";
}

// Signals come at any moment of the waiting.
TEST(PluginTrial, ASignalIsNoEnd) {
  struct sigaction interrupts {};
  struct sigaction former {};
  interrupts.sa_handler = [](int) {};
  ASSERT_EQ(::sigaction(SIGUSR1, &interrupts, &former), 0);
  int ends[2];
  ASSERT_EQ(::pipe(ends), 0);
  const pthread_t waiting = ::pthread_self();
  std::thread other([&] {
    for (int i = 0; i < 2000; ++i) {
      ::pthread_kill(waiting, SIGUSR1);
      std::this_thread::yield();
    }
    EXPECT_EQ(::write(ends[1], "x", 1), 1);
  });
  char byte = 0;
  EXPECT_EQ(engine::WhyItWouldEnd([&] {
              while (::read(ends[0], &byte, 1) != 1) continue;
            }),
            "");
  other.join();
  ::close(ends[0]);
  ::close(ends[1]);
  ::sigaction(SIGUSR1, &former, nullptr);
}

}  // namespace
