// StateText: Stagemarks as text: for version control, which shows a small difference for a small
// change, and for other scenes, which take them in. JSON, one line for each record; docs/STATES.md
// describes it. Elements are named by their paths, fields as the attributes call them. Main thread.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "engine/outside/FileSystem.h"
#include "engine/scene/Ownership.h"
#include "engine/scene/ValueText.h"
#include "engine/states/StoredStates.h"

namespace engine {

// Writes these Stagemarks of the document to `sink`, in their order, with all that taking them in
// again needs, their render settings included. `scene`: its name, for a person. False when the sink
// has stopped it. O(elements of the document + what is stored in these).
bool WriteStatesAsText(const host::BaseDocument& doc, const std::vector<StoredState>& states,
                       const std::string& scene, TextSink sink);

// Treatment of a Stagemark whose name the scene has already.
enum class SameName { Refused, Replaced, Kept };

struct TakeInOptions {
  // The Stagemarks of the text that are meant; empty for all.
  std::function<bool(const std::string&)> isWanted;
  std::map<std::string, std::string> names;  // new names by those in the text
  SameName sameName = SameName::Refused;
  bool evenEmpty = false;  // those, too, of which the scene has no element
};

// The Stagemarks that were taken in, and how the elements of the text were found in the scene.
struct TakenIn {
  enum class Outcome { Added, Replaced, Kept };
  struct State {
    std::string name;
    Outcome outcome = Outcome::Added;
    std::size_t records = 0;  // of objects, layers and tags
    std::size_t leftOut = 0;  // because an element is not there
  };
  std::vector<State> states;
  std::size_t byIdentity = 0;
  std::size_t byPath = 0;
  std::size_t byName = 0;
  std::vector<std::string> ambiguous;  // several of that name, none at that place
  std::vector<std::string> missing;
};

// Adds the Stagemarks of a text to the document. An element is found by its identity where it still
// has that type and name, else at its path, else by its name where only one of its type has it. A
// record of an element that is not there is left out. Into the scene it came from, a Stagemark
// comes back byte for byte. On failure, with a reason for a person, nothing is changed. One change
// of the document, which the caller announces.
Result<TakenIn> TakeInStates(host::BaseDocument& doc, std::string_view text,
                             const TakeInOptions& options);

// A document that holds what a text tells: its elements, in their places and with their identities
// but without anything else of theirs, and the Stagemarks. So texts are looked at and compared as
// scenes are. Fails with a reason for a person.
Result<OwnedDocument> SceneOfText(std::string_view text);

}  // namespace engine
