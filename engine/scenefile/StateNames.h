// StateNames: the names of a scene's Stagemarks in a section of their own, so that whoever wants
// nothing else need not read the rest; see NAMES in docs/SCENE_FILE.md. Any thread, for a document
// that no other thread changes.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "engine/scenefile/Sections.h"
#include "host/BaseDocument.h"

namespace engine {

// Containers that the document's data holds below one key, each with its name.
struct NamedStore {
  host::LONG store;  // the key of the store in the document's data
  host::LONG name;   // of the name in each container of the store
  host::LONG note;   // a key that the store must have to tell of all
  bool operator==(const NamedStore&) const = default;
};

// The list of Stagemarks. The numbers stand in scenes for ever; a test holds them against the
// plug-in's own.
inline constexpr NamedStore kListOfStates{1023294, 20000, 20003};

inline constexpr const char* kNamesSection = "NAMES";
// Sections that the names come from: the names are right as long as these are the same.
inline constexpr std::string_view kSourcesOfNames[] = {"TEXTS", "VALUES", "DOCUMENT"};

struct StateNames {
  std::uint64_t sum = 0;  // of the sections that they came from
  std::vector<std::string> names;
};

// Goes behind those sections; nothing is added where the list has no Stagemarks or does not tell of
// all.
void AddStateNames(const host::BaseDocument& doc, SectionWriter& out);
// Reads the section, whether its names are still right or not. Throws Damage.
StateNames ReadStateNames(std::string_view contents, Budget& budget);

}  // namespace engine
