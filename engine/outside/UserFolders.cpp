#include "engine/outside/UserFolders.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

namespace engine {
namespace {

// The conventions have relative paths ignored.
std::string AbsoluteFromEnvironment(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr && value[0] == '/' ? value : "";
}

std::string Home() {
  std::string home = AbsoluteFromEnvironment("HOME");
  if (!home.empty()) return home;
  const passwd* user = getpwuid(getuid());
  return user != nullptr && user->pw_dir != nullptr && user->pw_dir[0] == '/' ? user->pw_dir : "";
}

std::string Folder(const char* variable, const char* belowHome) {
  const std::string base = AbsoluteFromEnvironment(variable);
  if (!base.empty()) return base + "/stagemarks";
  const std::string home = Home();
  return home.empty() ? "" : home + belowHome + "/stagemarks";
}

}  // namespace

// Folders and variables as in the XDG Base Directory conventions, version 0.8.
UserFolders FindUserFolders() {
  return {Folder("XDG_CONFIG_HOME", "/.config"), Folder("XDG_DATA_HOME", "/.local/share"),
          Folder("XDG_CACHE_HOME", "/.cache"), Folder("XDG_STATE_HOME", "/.local/state")};
}

}  // namespace engine
