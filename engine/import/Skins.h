// Skins: bends the meshes of the importing library's scene to where their bones stand, which the
// library leaves to whoever shows them. Lives in the child.
#pragma once

#include <assimp/scene.h>

namespace engine {

// Every mesh with bones gets the shape that it has in the scene as it stands, in the frame of the
// first node that bears it. Bones whose node is missing bend nothing.
void BendSkins(aiScene& scene);

}  // namespace engine
