// StoredStates: where scenes keep the Stagemarks, read as values by whoever knows nothing of the
// plug-in. The numbers stand in scenes for ever; a test holds them against the plug-in's own. What
// is read shares its records with the document. Main thread.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "engine/core/ContainerContents.h"
#include "engine/scenefile/StateNames.h"
#include "host/BaseDocument.h"

namespace engine {

// Containers in the document's data: of all records under their IDs, which is the plug-in's own
// number, of the list entries under the same IDs, and of the options that the scene has.
inline constexpr host::LONG kStagemarksId = 1021477;
inline constexpr host::LONG kStoredEntries = kListOfStates.store;
inline constexpr host::LONG kStoredOptions = 1026486;
// Among the options: the scene has options of its own. Among the list entries: no entry, a note.
inline constexpr host::LONG kStoredOptionsSaved = 10061;
inline constexpr host::LONG kStoredListBuilt = kListOfStates.note;

// In a record; name and date in the list entry, too, and whether it was recorded or loaded last.
inline constexpr host::LONG kStoredName = kListOfStates.name;
inline constexpr host::LONG kStoredDate = 20002;
inline constexpr host::LONG kStoredCurrent = 25007;
// In a record: a container for its render settings with the link to its copy of them under the same
// number; records of layers, objects and tags, each with the link to the element; the camera's
// container with its link.
inline constexpr host::LONG kStoredSettings = 25000;
inline constexpr host::LONG kStoredLayers = 25003;
inline constexpr host::LONG kStoredCamera = 25004;
inline constexpr host::LONG kStoredObjects = 25005;
inline constexpr host::LONG kStoredTags = 25006;
inline constexpr host::LONG kStoredLayerLink = 80000;
inline constexpr host::LONG kStoredLayerFlags = 80001;  // the first of nine
inline constexpr host::LONG kStoredObjectLink = 30000;
inline constexpr host::LONG kStoredEditorMode = 30001;
inline constexpr host::LONG kStoredRenderMode = 30002;
inline constexpr host::LONG kStoredDeformMode = 30003;
inline constexpr host::LONG kStoredTagLink = 40000;
inline constexpr host::LONG kStoredMaterialLink = 50000;
inline constexpr host::LONG kStoredCameraLink = 70000;
// In the date: year, month, day, hour, minute, second.
inline constexpr host::LONG kStoredYear = 25008;
inline constexpr int kStoredDateFields = 6;

// Beside a scene file: the folder of previews has the scene's name and this, a preview the name of
// its Stagemark and this.
inline constexpr const char* kSideFolderEnding = "_SM";
inline constexpr const char* kPreviewEnding = ".tif";
// The folder of previews, whether or not it is there; empty for a scene without a file.
std::string SideFolderOf(const host::BaseDocument& doc);
// The preview of that name in it; empty where there is no folder, or the name leads elsewhere.
std::string PreviewFileIn(const std::string& sideFolder, const std::string& name);

// Local time of recording.
struct StoredDate {
  host::LONG fields[kStoredDateFields] = {};  // year, month, day, hour, minute, second

  auto operator<=>(const StoredDate&) const = default;
  // "2026-03-05 14:07:09"; empty where nothing was recorded.
  std::string Text() const;
  // Inverse of Text; no date for any other text.
  static StoredDate FromText(const std::string& text);
  // "2026-03-05T14:07:09+01:00", ISO 8601 with what this machine's zone had then; empty for what
  // is no date.
  std::string WithZone() const;
};

// The container under an ID in one of the stores; null where there is none or an empty one, which
// deleting leaves there. The store may be null.
const host::BaseContainer* StoredUnder(const host::BaseContainer* store, host::LONG id);
// The date in a record or a list entry; no date where there is none.
StoredDate DateOf(const host::BaseContainer& holder);

struct StoredState {
  host::LONG id = 0;
  std::string name;
  StoredDate date;
  bool current = false;
  bool hasRecord = false;
  bool hasEntry = false;       // in the list
  host::BaseContainer record;  // empty where there is none
};

// All Stagemarks of a document in the order of their records; behind them those that stand in the
// list only. An empty container under an ID is a deleted one. O(Stagemarks).
std::vector<StoredState> ReadStates(const host::BaseDocument& doc);
// Those in the list, as the dialog shows them: by name, those of one name in the order of their
// records.
std::vector<StoredState> ListedStates(const host::BaseDocument& doc);

// The ID of the Stagemark that loading by this name brings back: IDs are looked up by position, so
// that one whose ID is not below the number of list entries is never found, and 0 stands for a name
// that is not found.
host::LONG LoadedId(const host::BaseDocument& doc, const std::string& name);
// The Stagemark that loading by this name brings back if it has that name, else the first one that
// has, else null.
const StoredState* FindState(const host::BaseDocument& doc, const std::vector<StoredState>& states,
                             const std::string& name);

// The name of its Stagemark for each of those render settings of the document that belong to one:
// each recording has a copy of its own among them, which loading gives back. O(Stagemarks).
using SettingsOfStates = std::unordered_map<NodeId, std::string>;
SettingsOfStates FindSettingsOfStates(const host::BaseDocument* doc);

}  // namespace engine
