// The bitmap shaders of a document's materials, and the files they name. Main thread.
#pragma once

#include <string>

#include "engine/scene/Nodes.h"
#include "host/Parameters.h"

namespace engine {

// Calls `visit(shader)` for every bitmap shader of every material, in scene order.
template <class Visit>
void ForEachBitmapShader(const host::BaseDocument& doc, Visit visit) {
  for (host::BaseMaterial* material = doc.GetFirstMaterial(); material != nullptr; material = material->GetNext()) {
    for (host::BaseShader* shader = material->GetFirstShader(); shader != nullptr; shader = NextInTree(shader)) {
      if (shader->GetType() == host::Xbitmap) visit(*shader);
    }
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
