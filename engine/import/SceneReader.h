// SceneReader: the importing library at work in this process: reads a file of an allowed format and
// makes a document of it. Meant for the child; tests may call it for files they trust.
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
