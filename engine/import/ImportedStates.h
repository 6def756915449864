// ImportedStates: the states that an imported file holds, kept with the document until somebody
// records them as Stagemarks: the importer does not know how. They are values in the document's
// data, so that they come out of the child, and wait in a saved scene where nobody recorded them.
// Main thread, or the child.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "engine/core/ContainerContents.h"
#include "host/BaseDocument.h"
#include "host/Files.h"

namespace engine {

struct ImportedState {
  std::string name;          // as the file has it, maybe empty or that of another one
  host::LocalFileTime date;  // zeros where the file does not tell
  NodeId camera = 0;         // 0: whatever the scene's is
  host::LONG width = 0;      // of its picture, 0 where the file does not tell
  host::LONG height = 0;
  std::vector<NodeId> hidden;                    // of the switched objects
  std::vector<std::pair<NodeId, NodeId>> looks;  // each texture tag that varies, and its material
};

struct ImportedStates {
  std::vector<NodeId> switched;  // objects that every state shows or hides
  std::vector<ImportedState> states;
};

bool HasImportedStates(const host::BaseDocument& doc);
// Nothing is kept where there are no states.
void KeepImportedStates(host::BaseDocument& doc, const ImportedStates& states);
// Hands them out; the document does not hold them any more.
ImportedStates TakeImportedStates(host::BaseDocument& doc);

}  // namespace engine
