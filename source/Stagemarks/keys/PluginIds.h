// Numbers that identify the plug-in to the host, and the names it registers. They are unique among
// all plug-ins and two of them stand in scene files: never change them.
#pragma once

#include "source/Stagemarks/Host.h"

namespace stagemarks {

// The command, its dialog, and the record store in a document's data.
inline constexpr LONG kPluginId = 1021477;
inline constexpr LONG kHookId = 1021903;
inline constexpr const CHAR* kPluginName = "Stagemarks";
inline constexpr const CHAR* kHookName = "Stagemarks Node";
inline constexpr LONG kHookInfo = 0x20000000;
inline constexpr LONG kHookPriority = 1000;
inline constexpr Real kVersion = 0.713;

// Sub-containers of a document's data: one record per element, one list entry per element, the
// options.
inline constexpr LONG kRecordStore = kPluginId;
inline constexpr LONG kListStore = 1023294;
inline constexpr LONG kPreferences = 1026486;

}  // namespace stagemarks
