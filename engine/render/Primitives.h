// Primitives: the geometry that cubes, spheres and their like generate from their parameters.
#pragma once

#include <memory>

#include "engine/scene/Mesh.h"
#include "host/BaseContainer.h"

namespace engine {

// True for the object types that generate geometry.
bool IsPrimitive(host::LONG type);

// The surface of a primitive, with smooth normals where the form is round and with texture
// coordinates. Sizes that make no sense count as 0 and give an empty mesh. Pure; any thread that
// owns `data`.
Mesh MakePrimitive(host::LONG type, const host::BaseContainer& data);

}  // namespace engine
