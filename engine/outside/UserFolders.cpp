#include "engine/outside/UserFolders.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

namespace engine {
namespace {

struct Place {
  const char* variable;
  const char* belowHome;
};

// Folders and variables as in the XDG Base Directory conventions, version 0.8.
Place PlaceOf(UserFolder folder) {
  switch (folder) {
    case UserFolder::Config:
      return {"XDG_CONFIG_HOME", "/.config"};
    case UserFolder::Data:
      return {"XDG_DATA_HOME", "/.local/share"};
    case UserFolder::Cache:
      return {"XDG_CACHE_HOME", "/.cache"};
    case UserFolder::State:
      break;
  }
  return {"XDG_STATE_HOME", "/.local/state"};
}

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

}  // namespace

std::string FindUserFolder(UserFolder folder) {
  const Place place = PlaceOf(folder);
  std::string base = AbsoluteFromEnvironment(place.variable);
  if (base.empty()) {
    base = Home();
    if (base.empty()) return "";
    base += place.belowHome;
  }
  return base + "/stagemarks";
}

}  // namespace engine
