// Files that go with a scene. CarriedPaths: names of textures and caches that lie beside or below
// the scene file stand in it relative to it, as "./tex/wood.png", so that a folder with a scene and
// its textures can be moved as a whole; in a document they are absolute, and other names are kept
// as they are. Section FILES: the named files that travel inside the scene until it is saved beside
// them. One thread.
#pragma once

#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "engine/scene/EmbeddedFiles.h"
#include "engine/scenefile/TextsAndNumbers.h"
#include "host/BaseList2D.h"

namespace engine {

class CarriedPaths {
 public:
  // `folder`: that of the scene file, absolute; empty: all names are kept as they are.
  explicit CarriedPaths(std::string folder);

  // The element's data as it is written: its own, or a copy that lives as long as this.
  const host::BaseContainer& DataToWrite(const host::BaseList2D& node);
  // Makes a name that was read absolute again.
  void Resolve(host::BaseList2D& node) const;

 private:
  std::string folder_;  // ends with a slash
  std::deque<host::BaseContainer> copies_;
};

// The section's contents; the names go to `texts`.
std::string FilesContents(const EmbeddedFiles& files, TextWriter& texts);
// Throws Damage, also for names that are no bare file names or occur twice.
EmbeddedFiles ReadFiles(std::string_view contents, const std::vector<host::String>& texts,
                        Budget& budget);

}  // namespace engine
