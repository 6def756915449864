// StoredStates: where scenes keep the Stagemarks, as far as the programs read it, which know
// nothing of the plug-in. The numbers stand in scenes for ever. Main thread.
#pragma once

#include <string>
#include <unordered_map>

#include "engine/core/ContainerAccess.h"
#include "host/BaseDocument.h"

namespace engine {

// The plug-in's own number, and the key of its container of all records in the document's data.
inline constexpr host::LONG kStagemarksId = 1021477;
// In each record: its name; and a container for its render settings with the link to its copy of
// them under the same number.
inline constexpr host::LONG kStoredName = 20000;
inline constexpr host::LONG kStoredSettings = 25000;

// The name of its Stagemark for each of those render settings of the document that belong to one:
// each recording has a copy of its own among them, which loading gives back. O(Stagemarks).
using SettingsOfStates = std::unordered_map<NodeId, std::string>;
SettingsOfStates FindSettingsOfStates(const host::BaseDocument* doc);

}  // namespace engine
