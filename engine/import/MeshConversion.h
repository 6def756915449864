// MeshConversion: a mesh of the importing library to the scene's: mirrored z, scaled, corners in
// the order that faces outwards, equal points joined (normals and texture coordinates stay with the
// corners). Lives in the child.
#pragma once

#include <assimp/mesh.h>

#include "engine/import/Notes.h"
#include "engine/import/SceneFacts.h"
#include "engine/scene/Mesh.h"

namespace engine {

// True for a mesh with faces of three corners at least; points and lines are none.
bool HasPolygons(const aiMesh& mesh);

// `use`: the texture coordinates that the material's textures take. Faces that are no triangles or
// name points that do not exist are left out and noted.
Mesh ConvertMesh(const aiMesh& mesh, double scale, const UvUse& use, Notes& notes);

}  // namespace engine
