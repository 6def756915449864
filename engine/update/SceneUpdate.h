// SceneUpdate: brings a scene up to a newer import of the file that it came from, so that what was
// made here lives on: Stagemarks and all links to what is found, switches, layers, tags, render
// settings. The file decides about shapes, places, parameters and materials, but only where it says
// something else than the last time: what a person changed here and the file did not stays. Main
// thread.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/BaseDocument.h"

namespace engine {

struct UpdateOptions {
  // Objects that the file does not have any more are deleted, unless something is below them that
  // stays. Else they are left alone.
  bool removeGone = false;
};

struct ChangedElement {
  std::string path;               // names from the top, "Room/Lamp"
  std::vector<std::string> what;  // "parent", "place", "shape", "settings", "material"
};

// Paths are those of the topmost elements; the numbers count all.
struct ElementChanges {
  std::size_t found = 0;
  std::vector<ChangedElement> changed;
  std::vector<std::string> added;
  std::size_t addedCount = 0;
  std::vector<std::string> gone;
  std::size_t goneCount = 0;
};

struct SceneUpdate {
  ElementChanges objects;
  ElementChanges materials;
  std::size_t removed = 0;         // of the objects that are gone
  std::vector<std::string> notes;  // other facts for the person, a sentence each

  bool ChangesAnything() const;
};

// One undo step where it changes anything; nothing is posted. `fresh` is the import, which is used
// up. Linear in both.
SceneUpdate UpdateScene(host::BaseDocument& doc, host::BaseDocument& fresh,
                        const UpdateOptions& options);

}  // namespace engine
