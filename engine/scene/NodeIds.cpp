#include "engine/scene/NodeIds.h"

#include <random>

namespace engine {

NodeIds& NodeIds::Instance() {
  static NodeIds ids;
  return ids;
}

void NodeIds::Seen(NodeId id) {
  const NodeId range = id / kRange;
  if (range == lastSeen_) return;
  if (next_ != end_ && range == (end_ - 1) / kRange) {
    // What is left of the counter's own range is given up when a file turns out to use it, too.
    if (id >= next_) end_ = next_;
    return;
  }
  taken_.insert(range);
  lastSeen_ = range;
}

NodeId NodeIds::FirstOfNewRange() {
  static std::random_device device;
  std::uniform_int_distribution<NodeId> draw(1, (NodeId{1} << 39) - 1);
  NodeId range = draw(device);
  while (!taken_.insert(range).second) range = draw(device);
  next_ = range * kRange;
  end_ = next_ + kRange;
  return next_++;
}

}  // namespace engine
