#include "engine/publish/GltfMaterials.h"

#include "engine/render/Image.h"
#include "engine/render/TextureSearch.h"
#include "engine/scene/EmbeddedFiles.h"

namespace engine {

namespace {

nlohmann::ordered_json ColorOf(Vec color) {
  const auto share = [](float value) { return std::clamp(double{value}, 0.0, 1.0); };
  return nlohmann::ordered_json::array({share(color.x), share(color.y), share(color.z)});
}

// The kinds of pictures that the format knows, by their first bytes; empty for others.
const char* KindOfPicture(std::string_view bytes) {
  if (bytes.starts_with("\x89PNG\r\n\x1a\n")) return "image/png";
  return bytes.starts_with("\xFF\xD8\xFF") ? "image/jpeg" : "";
}

}  // namespace

GltfMaterials::GltfMaterials(const host::BaseDocument& doc, FileSystem& files,
                             const ScenePicture& picture, GltfBuffer& buffer)
    : doc_(doc), files_(files), picture_(picture), buffer_(buffer) {}

std::size_t GltfMaterials::IndexOf(const Instance& instance) {
  const auto [place, isNew] =
      indices_.try_emplace({instance.look, instance.uvOffset, instance.uvTiles}, materials_.size());
  if (isNew) materials_.push_back(Make(instance));
  return place->second;
}

GltfMaterials::Json GltfMaterials::Make(const Instance& instance) {
  const SurfaceLook& look = picture_.looks[instance.look];
  Json surface = {{"baseColorFactor", ColorOf(look.color)},
                  {"metallicFactor", look.metallic},
                  {"roughnessFactor", look.roughness}};
  surface["baseColorFactor"].push_back(look.alpha);
  AddTexture(instance, &SurfaceLook::colorTexture, surface, "baseColorTexture");
  Json material;
  if (!look.name.empty()) material["name"] = look.name;
  material["pbrMetallicRoughness"] = std::move(surface);
  AddTexture(instance, &SurfaceLook::normalTexture, material, "normalTexture");
  AddTexture(instance, &SurfaceLook::luminanceTexture, material, "emissiveTexture");
  // Factors of up to 1; what shines brighter says by how much.
  const float brightest = Largest(look.luminance);
  if (brightest > 0)
    material["emissiveFactor"] = ColorOf(look.luminance * (1 / std::max(brightest, 1.0F)));
  if (brightest > 1) {
    material["extensions"]["KHR_materials_emissive_strength"]["emissiveStrength"] = brightest;
    extensions_.insert("KHR_materials_emissive_strength");
  }
  // The format's plain surface reflects as half of ours does.
  if (look.specular < 0.5F) {
    material["extensions"]["KHR_materials_specular"]["specularFactor"] = look.specular * 2;
    extensions_.insert("KHR_materials_specular");
  }
  if (look.alphaMode == SurfaceLook::AlphaMode::Cut) {
    material["alphaMode"] = "MASK";
    material["alphaCutoff"] = look.cutoff;
  } else if (look.alphaMode == SurfaceLook::AlphaMode::Blend) {
    material["alphaMode"] = "BLEND";
  }
  if (look.isDoubleSided) material["doubleSided"] = true;
  return material;
}

void GltfMaterials::AddTexture(const Instance& instance,
                               std::shared_ptr<const Texture> SurfaceLook::*place, Json& material,
                               const char* key) {
  for (const TextureWish& wish : picture_.textures) {
    if (wish.look != instance.look || wish.place != place) continue;
    const std::optional<std::size_t> texture = TextureOf(wish.name);
    if (!texture) return;
    Json use = {{"index", *texture}};
    const bool moves = instance.uvOffset != std::array<float, 2>{0, 0} ||
                       instance.uvTiles != std::array<float, 2>{1, 1};
    if (moves) {
      use["extensions"]["KHR_texture_transform"] = {{"offset", instance.uvOffset},
                                                    {"scale", instance.uvTiles}};
      extensions_.insert("KHR_texture_transform");
    }
    material[key] = std::move(use);
    return;
  }
}

std::string GltfMaterials::BytesOf(const std::string& name) {
  if (const std::string* bytes = FindEmbeddedFile(doc_, name)) return *bytes;
  const std::string path = FindTexture(files_, name, doc_.GetDocumentPath().GetString().ToUtf8());
  if (path.empty()) {
    notes_.push_back("The texture \"" + name + "\" was not found and is left out.");
    return "";
  }
  const Result<std::string> bytes = files_.ReadFile(path, kLargestImageBytes);
  if (!bytes) notes_.push_back(bytes.Message());
  return bytes ? bytes.Value() : "";
}

std::optional<std::size_t> GltfMaterials::TextureOf(const std::string& name) {
  const auto [place, isNew] = textureIndices_.try_emplace(name);
  if (!isNew) return place->second;
  std::string bytes = BytesOf(name);
  if (bytes.empty()) return std::nullopt;
  std::string kind = KindOfPicture(bytes);
  if (kind.empty()) {
    const Result<Image> image = DecodeImage(bytes);
    const Result<std::string> png =
        image ? EncodePng(ToBytes(image.Value())) : Result<std::string>(image.GetStatus());
    if (!png) {
      notes_.push_back("The texture \"" + name + "\" is left out: " + png.Message());
      return std::nullopt;
    }
    bytes = png.Value();
    kind = "image/png";
  }
  images_.push_back(
      {{"bufferView", buffer_.AddBytes(bytes)}, {"mimeType", kind}, {"name", SafeFileName(name)}});
  textures_.push_back({{"source", images_.size() - 1}});
  place->second = textures_.size() - 1;
  return place->second;
}

}  // namespace engine
