#include "engine/outside/Viewer.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <thread>

#include "engine/outside/FileHandle.h"

namespace engine {

Status StartViewer(const std::string& path) {
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
  std::thread([child] { waitpid(child, nullptr, 0); }).detach();
  return {};
}

}  // namespace engine
