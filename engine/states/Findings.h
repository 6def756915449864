// Findings: what is wrong or odd about the Stagemarks of a scene, each with a code that stays, how
// bad it is, where it is and what to do about it. Looking changes nothing; FixFindings mends where
// there is one safe answer. Main thread.
#pragma once

#include <string>
#include <vector>

#include "engine/core/Result.h"
#include "engine/outside/FileSystem.h"
#include "engine/states/FieldText.h"

namespace engine {

enum class Severity : std::uint8_t { Note, Warning, Error };

// One kind of finding. Codes are for scripts and never change their meaning.
struct FindingKind {
  const char* code;  // "link-gone"
  Severity severity;
  const char* meaning;  // one sentence
  const char* remedy;   // one sentence: what a person does
  bool fixable;         // FixFindings has one safe answer
};
const std::vector<FindingKind>& FindingKinds();
// Null for a code that there is not.
const FindingKind* FindFindingKind(const std::string& code);

struct Finding {
  const FindingKind* kind;
  std::string state;   // name of the Stagemark, empty for one of the whole scene
  NodeId element = 0;  // that it is about, 0 for none
  std::string place;   // for a person: path of the element, name of the file
  std::string text;    // the fact, one sentence
};

// All findings, the worst first, then in the order of kinds, states and scene. `files`: where
// previews and textures are looked for, beside the document's own path; null leaves files out.
// Elements of one kind and state beyond `most` are summed up in one finding.
std::vector<Finding> FindFindings(const host::BaseDocument& doc, FileSystem* files,
                                  std::size_t most = 20);

// Mends all findings of a fixable kind in the stored containers and the render settings of the
// document; answers how many. Files are not touched. No undo, as with all that changes stores.
Result<std::size_t> FixFindings(host::BaseDocument& doc, const FindingKind& kind);

}  // namespace engine
