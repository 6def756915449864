// ObjectShape: where an object is and what it is made of, in one shared block that is never changed
// once an object holds it: setting a frame makes a new one. Copies and undo entries share it. Any
// thread.
#pragma once

#include <memory>

#include "engine/scene/Mesh.h"
#include "host/Math.h"

namespace engine {

struct ObjectShape {
  host::Matrix frame;
  std::shared_ptr<const Mesh> mesh;
};

}  // namespace engine
