// MaterialConversion: materials of the importing library to the scene's, with a bitmap shader for
// each use of a texture that the scene knows. File names stay as written; embedded ones get the
// embedded file's name. Lives in the child.
#pragma once

#include <assimp/scene.h>

#include <string>
#include <vector>

#include "engine/import/SceneFacts.h"
#include "engine/scene/EmbeddedFiles.h"
#include "host/BaseDocument.h"
#include "host/BaseMaterial.h"

namespace engine {

class MaterialConversion {
 public:
  MaterialConversion(const aiScene& scene, SourceFormat format, const SceneFacts& facts,
                     host::BaseDocument& doc, Notes& notes);

  // Makes the file's materials, in its order; the library's own default only where a mesh uses it.
  void Convert();
  // The material made for a position in the file's list, or null.
  host::BaseMaterial* At(unsigned index) const {
    return index < materials_.size() ? materials_[index] : nullptr;
  }
  // The texture coordinates that its textures use.
  UvUse UvUseOf(unsigned index) const;

 private:
  struct TextureSlot;
  std::string Embed(const aiTexture& texture);
  host::BaseMaterial* Make(unsigned index);
  host::String NameOf(unsigned index) const;
  void SetColor(const aiMaterial& from, unsigned index, host::BaseMaterial& to);
  void SetAlpha(const aiMaterial& from, host::BaseMaterial& to);
  void SetSurface(const aiMaterial& from, unsigned index, host::BaseMaterial& to);
  void SetEmission(const aiMaterial& from, unsigned index, host::BaseMaterial& to);
  void SetPictures(const aiMaterial& from, unsigned index, host::BaseMaterial& to);
  void SetOpacityPicture(const aiMaterial& from, host::BaseMaterial& to);
  // False without a texture.
  bool AddShader(const aiMaterial& from, unsigned index, const TextureSlot& slot,
                 host::BaseMaterial& to);
  std::string FileNameOf(const std::string& texture) const;
  const MaterialFacts& FactsOf(unsigned index) const;
  void NoteLosses(const aiMaterial& from);
  bool IsGltf() const { return engine::IsGltf(format_); }

  const aiScene& scene_;
  SourceFormat format_;
  const SceneFacts& facts_;
  host::BaseDocument& doc_;
  Notes& notes_;
  std::vector<std::string> embeddedNames_;  // for each texture of the library, empty for raw pixels
  std::vector<host::BaseMaterial*> materials_;
};

}  // namespace engine
