#include "engine/import/ImportedStates.h"

namespace engine {
namespace {

using host::BaseContainer;
using host::LONG;

// Key in the document's data.
constexpr LONG kImportedStates = 1059401;
// Key in that container: the switched objects; the states follow under 1, 2, ...
constexpr LONG kSwitched = 0;
// Keys in the container of a state.
constexpr LONG kName = 1;
constexpr LONG kDate = 2;
constexpr LONG kCamera = 3;
constexpr LONG kWidth = 4;
constexpr LONG kHeight = 5;
constexpr LONG kHidden = 6;
constexpr LONG kTags = 7;
constexpr LONG kMaterials = 8;

constexpr LONG host::LocalFileTime::*kDateFields[] = {
    &host::LocalFileTime::year, &host::LocalFileTime::month,  &host::LocalFileTime::day,
    &host::LocalFileTime::hour, &host::LocalFileTime::minute, &host::LocalFileTime::second};

template <class Range, class IdOfOne>
BaseContainer Links(const Range& range, IdOfOne idOf) {
  BaseContainer links;
  LONG key = 0;
  for (const auto& one : range) SetLinkId(links, key++, idOf(one));
  return links;
}

std::vector<NodeId> LinksIn(const BaseContainer& container) {
  std::vector<NodeId> links;
  ForEachEntry(container, [&](LONG, const host::GeData& value) { links.push_back(LinkOf(value)); });
  return links;
}

BaseContainer AsContainer(const ImportedState& state) {
  BaseContainer result;
  result.SetString(kName, host::String(std::string_view(state.name)));
  BaseContainer date;
  LONG key = 0;
  for (const auto field : kDateFields) date.SetLong(key++, state.date.*field);
  result.SetContainer(kDate, date);
  SetLinkId(result, kCamera, state.camera);
  result.SetLong(kWidth, state.width);
  result.SetLong(kHeight, state.height);
  result.SetContainer(kHidden, Links(state.hidden, [](NodeId id) { return id; }));
  // The tag and the material of a look stand at the same position of two lists.
  result.SetContainer(kTags, Links(state.looks, [](const auto& look) { return look.first; }));
  result.SetContainer(kMaterials, Links(state.looks, [](const auto& look) { return look.second; }));
  return result;
}

ImportedState FromContainer(const BaseContainer& from) {
  ImportedState state;
  state.name = from.GetString(kName).ToUtf8();
  LONG key = 0;
  for (const auto field : kDateFields) state.date.*field = from.GetContainer(kDate).GetLong(key++);
  state.camera = LinkOf(from, kCamera);
  state.width = from.GetLong(kWidth);
  state.height = from.GetLong(kHeight);
  state.hidden = LinksIn(from.GetContainer(kHidden));
  const std::vector<NodeId> tags = LinksIn(from.GetContainer(kTags));
  const std::vector<NodeId> materials = LinksIn(from.GetContainer(kMaterials));
  for (std::size_t i = 0; i < tags.size() && i < materials.size(); ++i)
    state.looks.emplace_back(tags[i], materials[i]);
  return state;
}

}  // namespace

bool HasImportedStates(const host::BaseDocument& doc) {
  return doc.GetDataInstance()->FindIndex(kImportedStates) != host::NOTOK;
}

void KeepImportedStates(host::BaseDocument& doc, const ImportedStates& states) {
  if (states.states.empty()) return;
  BaseContainer kept;
  kept.SetContainer(kSwitched, Links(states.switched, [](NodeId id) { return id; }));
  LONG key = 1;
  for (const ImportedState& state : states.states) kept.SetContainer(key++, AsContainer(state));
  doc.GetDataInstance()->SetContainer(kImportedStates, kept);
}

ImportedStates TakeImportedStates(host::BaseDocument& doc) {
  const BaseContainer kept = doc.GetDataInstance()->GetContainer(kImportedStates);
  doc.GetDataInstance()->RemoveData(kImportedStates);
  ImportedStates result;
  result.switched = LinksIn(kept.GetContainer(kSwitched));
  for (LONG key = 1; key < kept.GetCount(); ++key)
    result.states.push_back(FromContainer(kept.GetContainer(key)));
  return result;
}

}  // namespace engine
