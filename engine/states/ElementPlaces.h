// ElementPlaces: where each element of a document stands, told by its type and name, those of all
// that it lies in, and its number among equals: so that an element of one scene is found in
// another. Computed once; the document stays unchanged meanwhile. O(elements), however deep. Main
// thread.
#pragma once

#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "engine/core/ContainerContents.h"
#include "host/BaseDocument.h"

namespace engine {

// Stands for a type and name inside an element, or in the document itself (kTopPlace); all equals
// have the same one. The same in all documents, but only within one run of the program.
using PlaceKey = std::uint64_t;
inline constexpr PlaceKey kTopPlace = 1;
PlaceKey KeyInside(PlaceKey inside, host::LONG type, std::string_view name);
// `inside` for the children of the element with that key and that position among its equals.
PlaceKey InsideOf(PlaceKey key, std::size_t position);

class ElementPlaces {
 public:
  explicit ElementPlaces(const host::BaseDocument& doc);

  struct Place {
    PlaceKey key = 0;
    NodeId above = 0;          // the element that it lies in, 0 for none
    std::size_t position = 0;  // among those of that key, in the order of the scene; 0-based
  };
  // Null for what is not in the document.
  const Place* Find(NodeId element) const;
  // All at that place, in the order of the scene; all of that type and name.
  const std::vector<NodeId>& At(PlaceKey key) const { return Of(places_, key); }
  const std::vector<NodeId>& Named(host::LONG type, std::string_view name) const;
  // In the order of the scene: whoever owns before what it owns.
  const std::vector<NodeId>& All() const { return all_; }

 private:
  using Lists = std::unordered_map<PlaceKey, std::vector<NodeId>>;
  static const std::vector<NodeId>& Of(const Lists& lists, PlaceKey key);

  std::vector<NodeId> all_;
  std::unordered_map<NodeId, Place> elements_;
  Lists places_;
  Lists names_;
};

}  // namespace engine
