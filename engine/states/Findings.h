// Findings: what is wrong or odd about the Stagemarks of a scene, each with a code that stays, how
// bad it is, where it is and what to do about it. Looking changes nothing; FixFindings mends where
// there is one safe answer. Main thread.
#pragma once

#include <span>
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
std::span<const FindingKind> FindingKinds();
// Null for an unknown code.
const FindingKind* FindFindingKind(const std::string& code);

struct Finding {
  const FindingKind* kind;
  std::string state;      // name of the Stagemark, empty for one of the whole scene
  NodeId element = 0;     // that it is about, 0 for none
  std::string place;      // for a person: path of the element, name of the file
  std::string text;       // the fact, one sentence
  std::size_t count = 1;  // how many it stands for
};

// All findings, the worst first, then in the order of kinds, states and scene. `files`: where
// previews are looked for, beside the document's file; null leaves them out. `missingTextures`: of
// the scene, by name. Of one kind and state so many findings are told; one more says how many
// others there are. Cost: the scene, and what the states do not share.
std::vector<Finding> FindFindings(const host::BaseDocument& doc, FileSystem* files,
                                  const std::vector<std::string>& missingTextures,
                                  std::size_t most = 20);

// Mends all findings of a fixable kind in the stored containers of the document; what loading
// brings back stays the same, but for Stagemarks that could not be loaded. Answers how many
// containers changed; fails for a kind that has no safe answer. Files are not touched. No undo, as
// with all that changes stores.
Result<std::size_t> FixFindings(host::BaseDocument& doc, const FindingKind& kind);

}  // namespace engine
