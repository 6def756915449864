// SceneReader: reads a file of an allowed format in this process, glTF by a reader of our own and
// the others by the importing library, and makes a document of it. Meant for the child; tests may
// call it for files they trust.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "engine/core/Result.h"
#include "engine/import/Import.h"

namespace engine {

// `doc`: an empty document to fill. `progress` hears 0..1 and stops the work by answering false.
// The result are the notes.
Result<std::vector<std::string>> ReadForeignScene(const std::string& path, host::BaseDocument& doc,
                                                  const std::function<bool(double)>& progress);

}  // namespace engine
