#include "engine/application/TexturesOnMove.h"

#include "engine/render/TextureSearch.h"
#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/ShaderWalk.h"

namespace engine {

TexturesOnMove::TexturesOnMove(FileSystem& files, host::BaseDocument& doc,
                               const std::string& folder)
    : doc_(doc) {
  const std::string old = doc.GetDocumentPath().GetString().ToUtf8();
  if (old.empty() || old == folder) return;
  ForEachBitmapShader(doc, [&](host::BaseShader& shader) {
    const std::string name = BitmapFileOf(shader);
    if (name.empty() || name.front() == '/' || FindEmbeddedFile(doc, name) != nullptr) return;
    const std::string file = FindTexture(files, name, old);
    if (file.empty() || FindTexture(files, name, folder) == file) return;
    former_.emplace_back(IdOf(shader), name);
    SetBitmapFile(shader, file);
  });
}

void TexturesOnMove::TakeBack() {
  for (const auto& [id, name] : former_) {
    if (host::BaseList2D* shader = FindNode(&doc_, id))
      SetBitmapFile(static_cast<host::BaseShader&>(*shader), name);
  }
}

}  // namespace engine
