#include "engine/states/Counterparts.h"

#include "engine/scene/NodeIds.h"

namespace engine {

using host::BaseList2D;

NodeId Counterparts::Find(NodeId element) {
  const BaseList2D* here = FindNode(&from_, element);
  if (!here) return 0;
  const BaseList2D* there = FindNode(&to_, element);
  if (there && there->GetType() == here->GetType() && there->GetName() == here->GetName())
    return element;
  if (!here_) {
    here_.emplace(from_);
    there_.emplace(to_);
  }
  // Equals are told apart by their number: the third "Bolt" below "Engine" is the third one there.
  const ElementPlaces::Place* place = here_->Find(element);
  if (!place) return 0;
  const std::vector<NodeId>& equals = there_->At(place->key);
  return place->position < equals.size() ? equals[place->position] : 0;
}

}  // namespace engine
