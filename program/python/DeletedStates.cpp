// The trash of a document: what is in it, giving it back, and forgetting it.
#include <algorithm>

#include "engine/states/Trash.h"
#include "host/Application.h"
#include "program/lookup/SceneLookup.h"
#include "program/outcome/Words.h"
#include "program/python/States.h"

namespace scripting {

namespace {

using engine::DeletedState;
using engine::DeletedStates;
using engine::PackedScene;

// Numbers that were given out. They go by what was deleted, not by where it lies, and are never
// given to another.
std::uint64_t NumberOf(const DeletedState& state) {
  using Known = std::map<std::weak_ptr<const PackedScene>, std::uint64_t, std::owner_less<>>;
  static auto* const known = new Known;
  static std::uint64_t last = 0;
  std::erase_if(*known, [](const auto& item) { return item.first.expired(); });
  const auto [found, isNew] = known->emplace(state.packed, last + 1);
  if (isNew) ++last;
  return found->second;
}

// The position of the last one that fits; throws with `missing` where none does.
template <class Fits>
std::size_t LastOf(const DeletedStates& states, const Fits& fits, const std::string& missing) {
  const auto found = std::find_if(states.rbegin(), states.rend(), fits);
  if (found == states.rend()) throw Failure(Fault::NotFound, missing);
  return static_cast<std::size_t>(states.rend() - found) - 1;
}

std::size_t PositionOf(const DeletedStates& states, const std::string& typed) {
  Names known;
  for (const DeletedState& state : states) known.push_back(state.name);
  const auto meant = lookup::FindMarks({typed}, known);
  if (!meant) {
    const std::string near = lookup::DidYouMean(typed, known);
    throw Failure(Fault::NotFound,
                  "There is no \"" + outcome::Shown(typed) + "\" in the trash of this scene." +
                      (near.empty() ? " doc.states.deleted lists what is there." : near));
  }
  const std::string name = TheOnly(typed, meant.Value());
  return LastOf(
      states, [&](const DeletedState& state) { return state.name == name; }, "");
}

}  // namespace

std::vector<DeletedFacts> ListDeleted(DocumentId document) {
  const DeletedStates& states = engine::DeletedStatesOf(Find(document));
  std::vector<DeletedFacts> facts;
  for (auto state = states.rbegin(); state != states.rend(); ++state) {
    facts.push_back(
        {NumberOf(*state), state->name, state->recorded, state->deleted, state->overwritten});
  }
  return facts;
}

// By number where one is given, else by name; of several of one name the one deleted last.
std::string Restore(DocumentId document, const std::string& typed, std::uint64_t number,
                    const std::string& as) {
  host::BaseDocument& doc = Find(document);
  const DeletedStates& states = engine::DeletedStatesOf(doc);
  const auto isIt = [number](const DeletedState& state) { return NumberOf(state) == number; };
  const std::size_t position =
      number == 0 ? PositionOf(states, typed)
                  : LastOf(states, isIt, "This is not in the trash of the scene anymore.");
  const auto restored = engine::RestoreDeleted(Session::Get().Services(), doc, position, as);
  if (!restored) {
    const bool isTaken = restored.Message().ends_with("another name.");
    throw Failure(isTaken ? Fault::Refused : Fault::Failed,
                  restored.Message() + (isTaken ? " rename= does." : ""));
  }
  host::EventAdd();
  Session::Get().App().DeliverEvents();
  return restored.Value();
}

std::size_t ForgetDeleted(DocumentId document) {
  host::BaseDocument& doc = Find(document);
  const std::size_t count = engine::DeletedStatesOf(doc).size();
  engine::EmptyTrash(doc);
  return count;
}

}  // namespace scripting
