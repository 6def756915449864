// UserFolders: where each kind of this program's own data belongs on the user's account, by the XDG
// base directory rules. The folders need not be there. A value; any thread.
#pragma once

#include <string>

namespace engine {

// Each absolute, "<base>/stagemarks"; all empty where there is no home folder.
struct UserFolders {
  std::string config;
  std::string data;
  std::string cache;
  std::string state;
};

// The bases are from the environment where that has an absolute path, else the standard defaults
// below the home folder.
UserFolders FindUserFolders();

}  // namespace engine
