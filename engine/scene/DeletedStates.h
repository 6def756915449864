// DeletedStates: the trash of a document: its Stagemarks that were deleted or recorded over last,
// so that they can be given back. A list is a value that is never changed once a document has it:
// undo swaps whole lists. Copies of a document have none. Main thread; what a PackedScene holds is
// asked for on any.
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "engine/core/ContainerContents.h"
#include "engine/scene/Ownership.h"
#include "host/RenderData.h"

namespace engine {

// A small scene that is kept and rarely looked at: a document, the bytes of its file, or both. Who
// reads or sets either holds the lock.
struct PackedScene {
  mutable std::mutex lock;
  mutable OwnedDocument scene;
  mutable std::string bytes;
};

struct DeletedState {
  std::string name;
  std::string recorded;      // "2026-03-05 14:07:09", local time; empty where nothing says so
  std::string deleted;       // in the same form
  bool overwritten = false;  // recorded over; else deleted
  std::shared_ptr<const PackedScene> packed;
};
using DeletedStates = std::vector<DeletedState>;  // the one deleted last at the end
using SharedDeletedStates = std::shared_ptr<const DeletedStates>;

// Empty where there are none.
const DeletedStates& DeletedStatesOf(const host::BaseDocument& doc);
// The document's list itself, null for none; and giving it another list.
const SharedDeletedStates& SharedDeletedStatesOf(const host::BaseDocument& doc);
void SetDeletedStates(host::BaseDocument& doc, SharedDeletedStates states);

// The contents of a Stagemark, in and out of a packed scene.
struct StateParts {
  host::BaseContainer record;
  host::BaseContainer entry;
  const host::RenderData* settings = nullptr;  // its copy; null: it has none
  std::shared_ptr<const std::string> preview;  // the file; null: there is none
};
// A scene with copies of all that; the settings keep their identity.
OwnedDocument SceneOfState(const StateParts& parts);
// The contents of such a scene; borrows from it.
StateParts PartsOfScene(const host::BaseDocument& scene);
// Puts a copy of the settings behind the first ones of `doc`, with the same identity where that is
// free there.
host::RenderData& InsertCopy(host::BaseDocument& doc, const host::RenderData& settings);

}  // namespace engine
