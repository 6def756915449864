// The bitmap shaders of a document, the files they name, and where those lie. Main thread; any
// thread that may read the scene for the walks.
#pragma once

#include <array>
#include <string>

#include "engine/scene/NodeTypes.h"
#include "engine/scene/TreeWalk.h"
#include "host/GvNode.h"
#include "host/Parameters.h"

namespace engine {

// The folders beside a scene in which its textures usually lie, in the order of looking. The first
// one is the one that is written.
inline constexpr std::array<const char*, 4> kTextureFolders = {"tex", "textures", "images", "maps"};

// Calls `visit(shader)` for the bitmap shaders attached to an element, children of shaders
// included.
template <class Visit>
void ForEachBitmapShaderOf(const host::BaseList2D& owner, Visit& visit) {
  for (host::BaseShader* shader = owner.GetFirstShader(); shader != nullptr;
       shader = NextInTree(shader)) {
    if (shader->GetType() == host::Xbitmap) visit(*shader);
  }
}

// Calls `visit(shader)` for the bitmap shaders of the nodes of all expressions of an object.
template <class Visit>
void ForEachBitmapShaderInExpressions(const host::BaseObject& object, Visit& visit) {
  for (const host::BaseTag* tag = object.GetFirstTag(); tag != nullptr; tag = tag->GetNext()) {
    if (KindOf(*tag) != NodeKind::XPressoTag) continue;
    const host::GvNode* root =
        static_cast<const host::XPressoTag*>(tag)->GetNodeMaster()->GetRoot();
    for (const host::GvNode* node = root; node != nullptr; node = NextInTree(node, root))
      ForEachBitmapShaderOf(*node, visit);
  }
}

// Calls `visit(shader)` for those of all materials, objects and expressions of the document, in
// scene order: those whose
// files are the scene's textures.
template <class Visit>
void ForEachBitmapShader(const host::BaseDocument& doc, Visit visit) {
  for (const host::BaseMaterial* material = doc.GetFirstMaterial(); material != nullptr;
       material = material->GetNext()) {
    ForEachBitmapShaderOf(*material, visit);
  }
  for (const host::BaseObject* object = doc.GetFirstObject(); object != nullptr;
       object = NextInTree(object)) {
    ForEachBitmapShaderOf(*object, visit);
    ForEachBitmapShaderInExpressions(*object, visit);
  }
}

inline std::string BitmapFileOf(const host::BaseShader& shader) {
  return shader.GetDataInstance()->GetFilename(host::BITMAPSHADER_FILENAME).GetString().ToUtf8();
}

inline void SetBitmapFile(host::BaseShader& shader, const std::string& path) {
  const host::Filename name(host::String{std::string_view(path)});
  shader.GetDataInstance()->SetFilename(host::BITMAPSHADER_FILENAME, name);
}

}  // namespace engine
