#include "tests/desktop/Victim.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QApplication>
#include <csignal>
#include <filesystem>
#include <utility>

#include "host/BaseObject.h"
#include "program/desktop/recovery/Autosave.h"
#include "tests/support/ScriptedServices.h"

namespace desk {

namespace {

constexpr const char* kFolder = "STAGEMARKS_TEST_VICTIM";
constexpr int kTold = 3;  // the descriptor that it tells of its acts on
constexpr char kMostActs = 100;

}  // namespace

Victim::Victim(std::string folder) : folder_(std::move(folder)) {
  std::filesystem::create_directories(folder_);
}

int Victim::KillAfter(int acts) const {
  int told[2];
  EXPECT_EQ(pipe(told), 0);
  const pid_t child = fork();
  if (child == 0) {
    dup2(told[1], kTold);
    setenv(kFolder, folder_.c_str(), 1);
    execl("/proc/self/exe", "victim", nullptr);
    _exit(1);
  }
  close(told[1]);
  int kept = 0;
  char act[2];
  for (int i = 0; i < acts && read(told[0], act, sizeof act) == sizeof act; ++i) kept = act[1];
  kill(child, SIGKILL);
  close(told[0]);
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFSIGNALED(status)) << "it ended by itself";
  return kept;
}

// Two bytes for each act: its number, and that of the last one that is kept.
std::optional<int> WorkAsVictim() {
  const char* folder = std::getenv(kFolder);
  if (!folder) return std::nullopt;
  tests::ScriptedServices services;
  services.folders.state = folder;
  engine::Application application(services.Get(), {});
  host::SetActiveDocument(application.NewDocument());
  desktop::Autosave::Clock::time_point now{std::chrono::hours(1)};
  desktop::Autosave autosave(application, {}, [&] { return now; });
  char kept = 0;
  char writing = 0;
  for (char act = 1; act < kMostActs; ++act) {
    host::GetActiveDocument()->AppendObject(host::BaseObject::Alloc(host::Ocube));
    autosave.Follow();
    now += std::chrono::seconds(act % 7);
    autosave.Tick();
    if (autosave.IsBusy() && writing == 0) writing = act;
    QApplication::processEvents();
    if (!autosave.IsBusy() && writing != 0) kept = std::exchange(writing, char{0});
    const char told[2] = {act, kept};
    if (write(kTold, told, sizeof told) != static_cast<ssize_t>(sizeof told)) return 1;
  }
  pause();
  return 1;
}

}  // namespace desk
