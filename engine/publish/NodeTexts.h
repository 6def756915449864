// NodeTexts: names and frames of objects as members of glTF nodes (glTF 2.0, section 3.5), kept for
// the states of a scene that are written after the first one. Plain data. Main thread.
#pragma once

#include <string>
#include <unordered_map>

#include "engine/scene/NodeIds.h"
#include "host/BaseObject.h"

namespace engine {

// The element's name, that of its type where it has none.
std::string NodeNameOf(const host::BaseList2D& element);

struct NodeText {
  std::string members;  // "name", and what places the node
  // A frame with leaning axes is two nodes, because other programs take each node apart into a
  // turn, a scale and a move: these are the members of the second one, below the first. Else empty.
  std::string inner;
  bool wasReset = false;  // its frame was none of numbers
};

class NodeTexts {
 public:
  // Valid until the object is renamed or moved and asked for again.
  const NodeText& Of(const host::BaseObject& object);

 private:
  struct Kept {
    host::String name;
    host::Matrix frame;
    NodeText text;
  };
  std::unordered_map<NodeId, Kept> kept_;
};

}  // namespace engine
