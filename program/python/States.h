// States for scripts: the Stagemarks of a document, recorded, loaded and changed by the plug-in's
// own dialog as a person would do it, and what is told of them without loading. States are meant by
// names and patterns as in the shell. Every function throws a Failure where it cannot. The thread
// of the session.
#pragma once

#include <map>

#include "program/pictures/PartsInUse.h"
#include "program/python/Elements.h"

namespace scripting {

using pictures::PartChoice;

struct StateFacts {
  std::string name;
  std::string date;         // "2026-03-05 14:07:09", local time; empty where it is not known
  bool isCurrent = false;   // recorded or loaded last
  bool isRecorded = false;  // false: it stands in the list only
};
std::vector<StateFacts> ListStates(DocumentId document);
// The names that are meant by names and patterns; all where none is given.
Names ChooseStates(DocumentId document, const Names& typed);

void Record(DocumentId document, const std::string& name, bool overwrite, bool preview);

struct Loaded {
  std::size_t objects = 0;
  std::size_t tags = 0;
  std::size_t layers = 0;
  std::size_t others = 0;
  bool renderSettings = false;
  bool camera = false;
  Names parts;  // the words of what was applied
};
// One undo step. What it changed.
Loaded Load(DocumentId document, const std::string& name, const PartChoice& parts);

void Rename(DocumentId document, const std::string& from, const std::string& to);
// The names of those that are gone; with their preview images.
Names Delete(DocumentId document, const Names& typed);

// What the menu "Edit" of the dialog does with the checked Stagemarks.
enum class Bulk { Update, Objects, Tags, Layers, Camera };
// With these elements as what is selected, which is as before afterwards. A sentence about what
// came of it, and whether anything changed.
std::pair<std::string, bool> Edit(DocumentId document, Bulk what, const Names& typed,
                                  const std::vector<ElementId>& elements);
// Names of the materials that are gone.
Names CleanMaterials(DocumentId document);

// What is recorded and loaded, by the words of engine/states/RecordedParts.h.
std::map<std::string, bool> Options(DocumentId document);
void SetOption(DocumentId document, const std::string& word, bool on);

}  // namespace scripting
