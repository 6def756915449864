// Which render settings of a document belong to a Stagemark: each recording has a copy of its own
// among them, which loading gives back. Read from what the plug-in keeps in the document. Main
// thread.
#pragma once

#include <QString>
#include <unordered_map>

#include "engine/scene/Nodes.h"

namespace desktop {

// The name of its Stagemark for each of them. O(Stagemarks).
using StagemarkSettings = std::unordered_map<engine::NodeId, QString>;
StagemarkSettings FindStagemarkSettings(const host::BaseDocument* doc);

}  // namespace desktop
