#include "engine/outside/Viewer.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <mutex>
#include <thread>
#include <utility>

#include "engine/outside/FileHandle.h"
#include "engine/outside/PathRules.h"

namespace engine {

namespace {

struct Listener {
  std::mutex mutex;
  std::function<void(const std::string&)> failed;
};

// Never destroyed: a viewer may end after the program's own ending has begun.
Listener& TheListener() {
  static auto* const listener = new Listener;
  return *listener;
}

// Somebody has to wait for the child, or it would stay as a dead process until the program's end.
void WaitFor(pid_t child, const std::string& path) {
  int status = 0;
  const bool ended = waitpid(child, &status, 0) == child && WIFEXITED(status);
  if (!ended || WEXITSTATUS(status) == 0) return;
  const std::lock_guard lock(TheListener().mutex);
  if (TheListener().failed) TheListener().failed(path);
}

}  // namespace

void ListenForFailedViewers(std::function<void(const std::string& path)> failed) {
  const std::lock_guard lock(TheListener().mutex);
  TheListener().failed = std::move(failed);
}

Status Viewer::Open(const std::string& path) {
  const Result<std::string> clean = PathForReading(path);
  Status status = clean.GetStatus();
  if (clean) {
    status = files_.Kind(clean.Value()) == FileKind::Missing
                 ? FileFailure("Cannot open", clean.Value(), "it is not there")
                 : DoOpen(clean.Value());
  }
  ledger_.Add(
      {Operation::OpenViewer, clean ? clean.Value() : path, "", status.Ok(), status.Message()});
  return status;
}

Status SystemViewer::DoOpen(const std::string& path) {
  char program[] = "xdg-open";
  std::string argument = path;
  char* const arguments[] = {program, argument.data(), nullptr};
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  // The program's own output may be read by another program: the viewer's goes to the error stream.
  posix_spawn_file_actions_adddup2(&actions, STDERR_FILENO, STDOUT_FILENO);
  pid_t child = 0;
  const int result = posix_spawnp(&child, program, &actions, nullptr, arguments, environ);
  posix_spawn_file_actions_destroy(&actions);
  if (result != 0) {
    errno = result;
    return SystemFailure("Cannot start xdg-open for", path);
  }
  std::thread([child, path] { WaitFor(child, path); }).detach();
  return {};
}

}  // namespace engine
