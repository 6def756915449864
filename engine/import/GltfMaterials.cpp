// glTF 2.0, sections 3.8 and 3.9, KHR_texture_transform, KHR_materials_emissive_strength,
// KHR_materials_specular, KHR_materials_transmission and
// KHR_materials_pbrSpecularGlossiness.
#include <assimp/GltfMaterial.h>
#include <assimp/material.h>

#include <cstring>
#include <map>
#include <string_view>
#include <utility>

#include "engine/import/GltfReader.h"

namespace engine {
namespace {

constexpr const char* kOldSurface = "KHR_materials_pbrSpecularGlossiness";

const Json& PbrOf(const Json& material) { return Object(material, "pbrMetallicRoughness"); }

// The uses of textures that the scene knows, by the names that the importing library has for them.
struct TextureSlot {
  aiTextureType type;
  const char* pictures;  // what a person calls them
  const Json& (*use)(const Json& material);
};

// In the order in which their texture coordinates count (decision 81).
constexpr TextureSlot kSlots[] = {
    {aiTextureType_BASE_COLOR, "Color pictures",
     [](const Json& material) -> const Json& {
       const Json& old = Extension(material, kOldSurface);
       return old.is_null() ? Object(PbrOf(material), "baseColorTexture")
                            : Object(old, "diffuseTexture");
     }},
    {aiTextureType_NORMALS, "Normal maps",
     [](const Json& material) -> const Json& { return Object(material, "normalTexture"); }},
    {aiTextureType_METALNESS, "Roughness and metal pictures",
     [](const Json& material) -> const Json& {
       return Object(PbrOf(material), "metallicRoughnessTexture");
     }},
    {aiTextureType_LIGHTMAP, "Occlusion pictures",
     [](const Json& material) -> const Json& { return Object(material, "occlusionTexture"); }},
    {aiTextureType_EMISSIVE, "Emission pictures",
     [](const Json& material) -> const Json& { return Object(material, "emissiveTexture"); }},
};

// Pictures that cannot be shown, by their use, with the first material that has one.
class LeftOut {
 public:
  void Add(const TextureSlot& slot, const std::string& material) {
    auto& [first, count] = uses_[slot.pictures];
    if (count++ == 0) first = material;
  }
  void Tell(Notes& notes) const {
    for (const auto& [pictures, use] : uses_) {
      notes.Count(pictures + " that lie by other texture coordinates than the rest of their " +
                      "material are left out, as in \"" + use.first + "\"",
                  use.second);
    }
  }

 private:
  std::map<std::string, std::pair<std::string, std::size_t>> uses_;
};

std::size_t ChannelOf(const Json& use) {
  constexpr std::size_t kMostChannels = 64;
  const Json& transform = Extension(use, "KHR_texture_transform");
  // The extension's own channel replaces the one beside it.
  const std::size_t channel = Index(transform, "texCoord", Index(use, "texCoord", 0));
  return channel < kMostChannels ? channel : 0;
}

TextureWrap WrapOf(const Json& sampler, const char* key) {
  constexpr std::size_t kClamp = 33071;
  constexpr std::size_t kMirror = 33648;
  const std::size_t wrap = Index(sampler, key);
  return wrap == kClamp    ? TextureWrap::Clamp
         : wrap == kMirror ? TextureWrap::Mirror
                           : TextureWrap::Repeat;
}

// KHR_texture_transform: scaled, then turned anticlockwise, then moved.
PictureFacts PictureFactsOf(const GltfFile& file, const Json& use) {
  const Json& transform = Extension(use, "KHR_texture_transform");
  PictureFacts facts;
  facts.offset = Numbers<2>(transform, "offset", facts.offset);
  facts.tiles = Numbers<2>(transform, "scale", facts.tiles);
  facts.rotation = Number(transform, "rotation", 0);
  const Json& texture = file.Entry("textures", Index(use, "index"));
  const Json& sampler = file.Entry("samplers", Index(texture, "sampler"));
  facts.wrapU = WrapOf(sampler, "wrapS");
  facts.wrapV = WrapOf(sampler, "wrapT");
  constexpr std::size_t kNearest = 9728;
  facts.isSharp = Index(sampler, "magFilter") == kNearest;
  return facts;
}

// A mesh of the scene has one set of coordinates: that of the first picture counts, and by it those
// that lie by another one would be rubbish.
MaterialFacts FactsOf(const GltfFile& file, const Json& material, LeftOut& leftOut) {
  MaterialFacts facts;
  facts.name = Text(material, "name");
  facts.emissiveStrength =
      Number(Extension(material, "KHR_materials_emissive_strength"), "emissiveStrength", 1);
  facts.transmission =
      Number(Extension(material, "KHR_materials_transmission"), "transmissionFactor", 0);
  facts.specular = Number(Extension(material, "KHR_materials_specular"), "specularFactor", 1) / 2;
  facts.normalScale = Number(Object(material, "normalTexture"), "scale", 1);
  facts.occlusionStrength = Number(Object(material, "occlusionTexture"), "strength", 1);
  facts.uvs.fromTop = true;
  for (const TextureSlot& slot : kSlots) {
    const Json& use = slot.use(material);
    if (use.is_null()) continue;
    const auto channel = static_cast<unsigned>(ChannelOf(use));
    if (facts.pictures.empty()) facts.uvs.channel = channel;
    if (channel == facts.uvs.channel) {
      facts.pictures[slot.type] = PictureFactsOf(file, use);
    } else {
      leftOut.Add(slot, facts.name);
    }
  }
  facts.extras = ExtrasText(material);
  return facts;
}

// The usual suffix of a picture, by its first bytes, else by the kind that the file tells.
std::string KindOf(std::string_view bytes, const std::string& mimeType) {
  for (const auto& [start, kind] :
       {std::pair("\x89PNG", "png"), std::pair("\xFF\xD8\xFF", "jpg"), std::pair("RIFF", "webp"),
        std::pair("\xABKTX", "ktx2"), std::pair("DDS ", "dds")}) {
    if (bytes.substr(0, std::strlen(start)) == start) return kind;
  }
  const std::size_t slash = mimeType.find('/');
  return slash == std::string::npos ? std::string() : mimeType.substr(slash + 1);
}

// Pictures: those within the file become textures of the scene, "*0" and so on.
class Pictures {
 public:
  Pictures(GltfFile& file, Notes& notes) : file_(file), notes_(notes) {}

  void Read() {
    const Json& images = List(file_.Top(), "images");
    for (std::size_t i = 0; i < SizeOf(images); ++i) names_.push_back(NameOf(images[i]));
  }

  // The address or name of the picture that a use of a texture shows; empty for none.
  std::string PictureOf(const Json& use) const {
    const Json& texture = file_.Entry("textures", Index(use, "index"));
    // The plain picture goes before one that needs an extension.
    std::size_t image = Index(texture, "source");
    for (const char* other :
         {"EXT_texture_webp", "KHR_texture_basisu", "MSFT_texture_dds", "EXT_texture_avif"}) {
      if (image == kNowhere) image = Index(Extension(texture, other), "source");
    }
    file_.Entry("images", image);
    return image == kNowhere ? std::string() : names_[image];
  }

  void HandOver(aiScene& scene) {
    scene.mTextures = new aiTexture*[embedded_.size()];
    for (std::unique_ptr<aiTexture>& texture : embedded_)
      scene.mTextures[scene.mNumTextures++] = texture.release();
  }

 private:
  std::string NameOf(const Json& image) {
    std::string address = Text(image, "uri");
    const std::size_t view = Index(image, "bufferView");
    if (!address.empty() && !GltfFile::IsData(address)) return address;
    if (address.empty() && view == kNowhere) return {};
    try {
      if (!address.empty())
        return Embed(image, GltfFile::DataOf(address),
                     address.substr(5, address.find_first_of(";,") - 5));
      return Embed(image, file_.View(view), Text(image, "mimeType"));
    } catch (const UnreadableFile&) {
      // A scene without one of its pictures is still a scene.
      notes_.Count("Pictures within the file that are damaged are left out");
      return {};
    }
  }

  std::string Embed(const Json& image, std::string_view bytes, const std::string& mimeType) {
    auto texture = std::make_unique<aiTexture>();
    texture->mFilename.Set(Text(image, "name"));
    const std::string kind = KindOf(bytes, mimeType);
    kind.copy(texture->achFormatHint, HINTMAXTEXTURELEN - 1);
    // With a height of 0 the library means bytes of a file rather than pixels.
    texture->mWidth = static_cast<unsigned>(bytes.size());
    texture->pcData = new aiTexel[bytes.size() / sizeof(aiTexel) + 1];
    std::memcpy(static_cast<void*>(texture->pcData), bytes.data(), bytes.size());
    embedded_.push_back(std::move(texture));
    return "*" + std::to_string(embedded_.size() - 1);
  }

  GltfFile& file_;
  Notes& notes_;
  std::vector<std::string> names_;
  std::vector<std::unique_ptr<aiTexture>> embedded_;
};

class MaterialReader {
 public:
  MaterialReader(const Json& source, const MaterialFacts& facts, const Pictures& pictures)
      : source_(source),
        facts_(facts),
        pictures_(pictures),
        made_(std::make_unique<aiMaterial>()) {}

  std::unique_ptr<aiMaterial> Read() {
    const aiString name(Text(source_, "name"));
    if (name.length > 0) made_->AddProperty(&name, AI_MATKEY_NAME);
    if (Extension(source_, kOldSurface).is_null()) {
      SetSurface();
    } else {
      SetOldSurface();
    }
    for (const TextureSlot& slot : kSlots) {
      if (facts_.pictures.contains(slot.type)) SetTexture(slot.use(source_), slot.type);
    }
    SetTexture(Object(Extension(source_, "KHR_materials_transmission"), "transmissionTexture"),
               aiTextureType_TRANSMISSION);
    const auto emissive = Numbers<3>(source_, "emissiveFactor", {0, 0, 0});
    SetColor({emissive[0], emissive[1], emissive[2], 1}, AI_MATKEY_COLOR_EMISSIVE);
    SetAlpha();
    return std::move(made_);
  }

 private:
  void SetSurface() {
    const Json& pbr = PbrOf(source_);
    SetColor(Numbers<4>(pbr, "baseColorFactor", {1, 1, 1, 1}), AI_MATKEY_BASE_COLOR);
    SetNumber(Number(pbr, "metallicFactor", 1), AI_MATKEY_METALLIC_FACTOR);
    SetNumber(Number(pbr, "roughnessFactor", 1), AI_MATKEY_ROUGHNESS_FACTOR);
  }

  // The surface that came before metal and roughness.
  void SetOldSurface() {
    const Json& old = Extension(source_, kOldSurface);
    SetColor(Numbers<4>(old, "diffuseFactor", {1, 1, 1, 1}), AI_MATKEY_BASE_COLOR);
    SetTexture(Object(old, "specularGlossinessTexture"), aiTextureType_SPECULAR);
    SetNumber(0, AI_MATKEY_METALLIC_FACTOR);
    SetNumber(1 - Number(old, "glossinessFactor", 1), AI_MATKEY_ROUGHNESS_FACTOR);
  }

  void SetAlpha() {
    const std::string written = Text(source_, "alphaMode");
    const aiString mode(written.empty() ? "OPAQUE" : written);
    made_->AddProperty(&mode, AI_MATKEY_GLTF_ALPHAMODE);
    SetNumber(Number(source_, "alphaCutoff", 0.5), AI_MATKEY_GLTF_ALPHACUTOFF);
    const int isDoubleSided = Truth(source_, "doubleSided", false);
    made_->AddProperty(&isDoubleSided, 1, AI_MATKEY_TWOSIDED);
  }

  void SetColor(const std::array<double, 4>& c, const char* key, unsigned type, unsigned index) {
    const aiColor4D color(static_cast<float>(c[0]), static_cast<float>(c[1]),
                          static_cast<float>(c[2]), static_cast<float>(c[3]));
    made_->AddProperty(&color, 1, key, type, index);
  }
  void SetNumber(double number, const char* key, unsigned type, unsigned index) {
    const auto value = static_cast<float>(number);
    made_->AddProperty(&value, 1, key, type, index);
  }
  void SetTexture(const Json& use, aiTextureType type) {
    const aiString picture(pictures_.PictureOf(use));
    if (picture.length > 0) made_->AddProperty(&picture, AI_MATKEY_TEXTURE(type, 0));
  }

  const Json& source_;
  const MaterialFacts& facts_;
  const Pictures& pictures_;
  std::unique_ptr<aiMaterial> made_;
};

}  // namespace

void AddMaterials(GltfFile& file, aiScene& scene, SceneFacts& facts, Notes& notes) {
  static const Json plain = Json::object();
  Pictures pictures(file, notes);
  pictures.Read();
  LeftOut leftOut;
  const std::size_t count = file.Count("materials");
  // Raw arrays, because the library's scene owns and deletes them.
  scene.mMaterials = new aiMaterial*[count + 1];
  for (std::size_t i = 0; i <= count; ++i) {
    const Json& source = i < count ? file.Entry("materials", i) : plain;
    facts.materials.push_back(FactsOf(file, source, leftOut));
    scene.mMaterials[scene.mNumMaterials++] =
        MaterialReader(source, facts.materials.back(), pictures).Read().release();
  }
  leftOut.Tell(notes);
  pictures.HandOver(scene);
}

}  // namespace engine
