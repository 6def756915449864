// FormerVersions: the version of a scene file that its last saving replaced, one for each scene:
// where it is kept, as the person chose, and where one is found. The choice stands in the
// preferences, which it does not own. Main thread.
#pragma once

#include <string>

#include "engine/application/Application.h"
#include "engine/application/Preferences.h"

namespace engine {

class FormerVersions {
 public:
  FormerVersions(const Services& services, Preferences& preferences)
      : files_(services.files), folder_(FolderIn(services.folders)), preferences_(preferences) {}

  FormerPlace Place();
  Status SetPlace(FormerPlace place);

  // Where the version that is at `path` now belongs when another one replaces it; empty: nowhere.
  std::string PlaceFor(const std::string& path);
  // The file that the version before the one at `path` is kept in; empty where there is none.
  std::string Find(const std::string& path);
  // Removes the versions of the scenes saved longest ago where there are more than are kept.
  void RemoveOldest();

 private:
  static std::string FolderIn(const UserFolders& folders);
  std::string HiddenPlace(const std::string& file) const;

  FileSystem& files_;
  const std::string folder_;  // empty where the user has none
  Preferences& preferences_;
};

}  // namespace engine
