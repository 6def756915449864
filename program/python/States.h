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

// Throws for words that are no parts.
void CheckWords(const PartChoice& choice);

struct StateFacts {
  std::string name;
  std::string date;        // "2026-03-05 14:07:09", local time; empty where it is not known
  bool isCurrent = false;  // recorded or loaded last
};
std::vector<StateFacts> ListStates(DocumentId document);
// The names that are meant by names and patterns; all where none is given.
Names ChooseStates(DocumentId document, const Names& typed);
// The one that is meant. Throws for a pattern that means several, with their names.
std::string ChooseState(DocumentId document, const std::string& typed);
// The only one of the names that `typed` means; throws as ChooseState.
std::string TheOnly(const std::string& typed, const Names& meant);

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
// Loads in one undo step; answers what changed.
Loaded Load(DocumentId document, const std::string& name, const PartChoice& parts);

void Rename(DocumentId document, const std::string& from, const std::string& to);
// Deletes states with their preview images; answers their names.
Names Delete(DocumentId document, const Names& typed);

// A Stagemark that was deleted or recorded over.
struct DeletedFacts {
  std::uint64_t number = 0;  // of this one, whatever else comes and goes
  std::string name;
  std::string recorded;  // as StateFacts has it
  std::string deleted;
  bool isOverwritten = false;
};
// The trash of the document, the one deleted last first.
std::vector<DeletedFacts> ListDeleted(DocumentId document);
// Gives one back, under the name `as`, or its own where that is empty; answers its name. `number`:
// 0 for the one of that name or pattern that was deleted last.
std::string Restore(DocumentId document, const std::string& typed, std::uint64_t number,
                    const std::string& as);
// Empties the trash; answers how many were in it.
std::size_t ForgetDeleted(DocumentId document);

// The commands of the dialog's menu "Edit", which change the checked Stagemarks.
enum class Bulk { Update, Objects, Tags, Layers, Camera };
// Does the command with these elements selected, and restores the selection. Answers a sentence
// about the outcome, and whether anything changed.
std::pair<std::string, bool> Edit(DocumentId document, Bulk what, const Names& typed,
                                  const std::vector<ElementId>& elements);
// Deletes the materials that no Stagemark uses; answers their names.
Names CleanMaterials(DocumentId document);

// The options of recording and loading, by the words of engine/states/RecordedParts.h.
std::map<std::string, bool> Options(DocumentId document);
void SetOption(DocumentId document, const std::string& word, bool on);

// --- Told without loading.
struct FieldDifference {
  std::string label;
  std::string left;
  std::string right;
};
struct ElementDifference {
  std::string part;  // a word of RecordedParts.h
  std::string kind;  // "changed", or where only it is, "left" or "right"
  std::string path;
  std::string type;       // of the element, "Cube"
  ElementId element = 0;  // of the left side where that has it; 0 for the scene camera
  std::vector<FieldDifference> fields;
};
// The differences of two Stagemarks, of one document or two; where `right` is empty, of one from
// the scene, as loading would change it.
std::vector<ElementDifference> Diff(DocumentId leftDocument, const std::string& left,
                                    DocumentId rightDocument, const std::string& right,
                                    const PartChoice& parts);

struct FindingFacts {
  std::string code;
  std::string severity;  // "error", "warning", "note"
  std::string state;
  std::string place;
  std::string text;
  std::string remedy;
  std::size_t count = 1;
};
std::vector<FindingFacts> CheckStates(DocumentId document);

// The text that docs/STATES.md describes.
std::string StatesAsText(DocumentId document, const Names& typed);

struct Taken {
  std::vector<std::pair<std::string, std::string>> states;  // name, "added", "replaced" or "kept"
  Names missing;
  Names ambiguous;
};
// `sameName`: "refuse", "replace" or "keep".
Taken TakeStatesIn(DocumentId document, const std::string& text, const Names& only,
                   const std::map<std::string, std::string>& renamed, const std::string& sameName,
                   bool evenEmpty);

}  // namespace scripting
