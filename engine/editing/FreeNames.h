// FreeNames: names that no element of a tree has yet, found for many in one look at it: "Cube.1",
// "Cube.2", ... Main thread.
#pragma once

#include <string>
#include <unordered_map>
#include <unordered_set>

#include "host/BaseList2D.h"

namespace engine {

class FreeNames {
 public:
  // The names of the siblings from `first` on (null: none) and of all below them are taken.
  explicit FreeNames(const host::BaseList2D* first);

  // Numbers the element's name where it is taken; it is taken from now on.
  void Give(host::BaseList2D& element);

 private:
  std::unordered_set<std::string> taken_;
  std::unordered_map<std::string, int> numbers_;  // the last one tried
};

}  // namespace engine
