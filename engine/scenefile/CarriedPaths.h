// CarriedPaths: names of files that lie beside or below the scene file, textures and caches, stand
// in it relative to it, as "./tex/wood.png", so that a folder with a scene and its textures can be
// moved as a whole. In a document they are absolute. Other names are kept as they are. One thread.
#pragma once

#include <deque>
#include <string>

#include "host/BaseList2D.h"

namespace engine::scenefile {

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

}  // namespace engine::scenefile
