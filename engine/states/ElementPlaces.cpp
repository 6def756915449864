#include "engine/states/ElementPlaces.h"

#include <functional>

#include "engine/scene/NodeIds.h"
#include "engine/scene/TreeWalk.h"

namespace engine {

using host::BaseDocument;
using host::BaseList2D;
using host::LONG;

namespace {

// Stands above everything for the list of names.
constexpr PlaceKey kAnywhere = 2;

// The usual mix of two hashes (64 bits of the golden ratio).
PlaceKey Mixed(PlaceKey key, std::uint64_t part) {
  return key ^ (part + 0x9e3779b97f4a7c15 + (key << 6) + (key >> 2));
}

}  // namespace

PlaceKey KeyInside(PlaceKey inside, LONG type, std::string_view name) {
  return Mixed(Mixed(inside, static_cast<std::uint64_t>(type)),
               std::hash<std::string_view>()(name));
}

PlaceKey InsideOf(PlaceKey key, std::size_t position) { return Mixed(key, position); }

// A place is one number, hashed step by step from the top, and not the path as text: the paths of a
// chain of elements would take memory with the square of its length. The walk meets an owner before
// what it owns, so the key of the place above is there when it is needed.
ElementPlaces::ElementPlaces(const BaseDocument& doc) {
  for (const host::GeListNode* node = NextInside(doc, doc); node; node = NextInside(*node, doc)) {
    const auto& element = static_cast<const BaseList2D&>(*node);
    const host::String name = element.GetName();
    const BaseList2D* owner = OwnerOf(element);
    const bool isTop = !owner || owner == &doc;
    Place place;
    place.above = isTop ? 0 : IdOf(*owner);
    PlaceKey inside = kTopPlace;
    if (const Place* above = isTop ? nullptr : Find(place.above))
      inside = InsideOf(above->key, above->position);
    place.key = KeyInside(inside, element.GetType(), name.View());
    const NodeId id = IdOf(element);
    std::vector<NodeId>& equals = places_[place.key];
    place.position = equals.size();
    equals.push_back(id);
    names_[KeyInside(kAnywhere, element.GetType(), name.View())].push_back(id);
    elements_.emplace(id, place);
    all_.push_back(id);
  }
}

const ElementPlaces::Place* ElementPlaces::Find(NodeId element) const {
  const auto found = elements_.find(element);
  return found == elements_.end() ? nullptr : &found->second;
}

const std::vector<NodeId>& ElementPlaces::Named(LONG type, std::string_view name) const {
  return Of(names_, KeyInside(kAnywhere, type, name));
}

const std::vector<NodeId>& ElementPlaces::Of(const Lists& lists, PlaceKey key) {
  static const std::vector<NodeId> none;
  const auto found = lists.find(key);
  return found == lists.end() ? none : found->second;
}

}  // namespace engine
