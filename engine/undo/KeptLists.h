// KeptLists: posts and passes of render settings that are in no settings now: what an undo entry
// keeps of their lists. It owns them. Main thread.
#pragma once

#include <vector>

#include "engine/scene/Nodes.h"

namespace engine {

struct KeptLists {
  std::vector<host::BaseList2D*> posts;
  std::vector<host::BaseList2D*> passes;

  KeptLists() = default;
  KeptLists(const KeptLists&) = delete;
  KeptLists& operator=(const KeptLists&) = delete;
  ~KeptLists() {
    for (host::BaseList2D* node : posts) DestroyNode(node);
    for (host::BaseList2D* node : passes) DestroyNode(node);
  }
};

}  // namespace engine
