// TexturesOnMove: a scene that is saved into another folder goes on using its textures: those that
// were found from the old folder by a name that leads elsewhere, or nowhere, from the new one get
// the full path of their file. Main thread.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "engine/core/ContainerContents.h"
#include "engine/outside/FileSystem.h"
#include "host/BaseDocument.h"

namespace engine {

class TexturesOnMove {
 public:
  // Changes the document's bitmap shaders, without undo. Embedded files and names that lead nowhere
  // already stay as they are.
  TexturesOnMove(FileSystem& files, host::BaseDocument& doc, const std::string& folder);
  // The names as they were, for a document that could not be saved. It must be there still.
  void TakeBack();

 private:
  host::BaseDocument& doc_;
  std::vector<std::pair<NodeId, std::string>> former_;
};

}  // namespace engine
