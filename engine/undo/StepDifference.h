// StepDifference: in what a document is not as it was when an undo scope began, found out from the
// states that were registered: the cost goes by them, not by the scene. What changed without being
// registered is not seen. Main thread.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace engine {

struct StepDifference {
  // Elements whose contents differ. One that was changed and given its old contents again does not;
  // selection counts nowhere.
  std::size_t objects = 0;
  std::size_t tags = 0;
  std::size_t layers = 0;
  std::size_t renderSettings = 0;
  // Materials, shaders, ...; and whatever was put in, taken out or moved
  std::size_t others = 0;
  bool activeSettings = false;  // other render settings are the active ones
  bool sceneCamera = false;
  // The differences as text for a person, one fact a line, "was -> is", of the first elements.
  std::vector<std::string> lines;

  bool IsEmpty() const {
    return objects + tags + layers + renderSettings + others == 0 && !activeSettings &&
           !sceneCamera;
  }
};

}  // namespace engine
