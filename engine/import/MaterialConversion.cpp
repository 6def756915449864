#include "engine/import/MaterialConversion.h"

#include <assimp/GltfMaterial.h>
#include <assimp/material.h>

#include <strings.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>

#include "engine/import/ForeignText.h"
#include "engine/scene/PictureParameters.h"
#include "host/Parameters.h"

namespace engine {

// A use of a texture that the scene knows: where the library keeps it (the first that is there
// counts) and the link.
struct MaterialConversion::TextureSlot {
  aiTextureType first;
  aiTextureType second;
  host::LONG link;
};

namespace {

// Textures that the library keeps for uses that the scene has no parameter for.
struct LostTexture {
  aiTextureType type;
  const char* note;
};

constexpr LostTexture kLostTextures[] = {
    {aiTextureType_SPECULAR, "Specular textures are left out"},
    {aiTextureType_HEIGHT, "Bump textures are left out"},
    {aiTextureType_TRANSMISSION, "Transmission textures are left out"}};

// Nothing for what is no number: the preset of its use counts then.
std::optional<double> Number(const aiMaterial& material, const char* key, unsigned type,
                             unsigned index) {
  ai_real value = 0;
  if (material.Get(key, type, index, value) != aiReturn_SUCCESS || !std::isfinite(value))
    return std::nullopt;
  return static_cast<double>(value);
}

std::optional<aiColor4D> Color(const aiMaterial& material, const char* key, unsigned type,
                               unsigned index) {
  aiColor4D value;
  if (material.Get(key, type, index, value) != aiReturn_SUCCESS) return std::nullopt;
  const bool finite = std::isfinite(value.r) && std::isfinite(value.g) && std::isfinite(value.b) &&
                      std::isfinite(value.a);
  return finite ? std::optional(value) : std::nullopt;
}

host::Vector VectorOf(const aiColor4D& color, double factor = 1) {
  return host::Vector(color.r * factor, color.g * factor, color.b * factor);
}

// As a new material of the scene.
const host::Vector kUndescribed(0.8);

double Clamped(double value) { return std::clamp(value, 0.0, 1.0); }

std::string TextureOf(const aiMaterial& material, aiTextureType type) {
  aiString path;
  return material.Get(AI_MATKEY_TEXTURE(type, 0), path) == aiReturn_SUCCESS ? path.C_Str()
                                                                            : std::string();
}

// Phong's exponent as a roughness (Blinn's relation: exponent = 2 / roughness^2 - 2, roughness
// squared once).
double RoughnessOf(double exponent) { return std::sqrt(2 / (std::max(exponent, 0.0) + 2)); }

// Writes only the values that differ from the defaults.
void SetPlace(const PictureFacts& facts, host::BaseContainer& shader) {
  if (facts.offset != std::array<double, 2>{0, 0})
    shader.SetVector(kBitmapOffset, host::Vector(facts.offset[0], facts.offset[1], 0));
  if (facts.tiles != std::array<double, 2>{1, 1})
    shader.SetVector(kBitmapTiles, host::Vector(facts.tiles[0], facts.tiles[1], 0));
  if (facts.rotation != 0) shader.SetReal(kBitmapRotation, facts.rotation);
  if (facts.wrapU != TextureWrap::Repeat)
    shader.SetLong(kBitmapWrapU, static_cast<host::LONG>(facts.wrapU));
  if (facts.wrapV != TextureWrap::Repeat)
    shader.SetLong(kBitmapWrapV, static_cast<host::LONG>(facts.wrapV));
  if (facts.isSharp) shader.SetBool(kBitmapIsSharp, host::TRUE);
}

constexpr unsigned kNoFacts = ~0U;  // an index of no material

constexpr const char* kPictureSuffixes[] = {"png", "jpg", "jpeg", "webp", "tif", "tiff", "bmp",
                                            "tga", "exr", "hdr",  "dds",  "ktx", "ktx2", "gif"};

// The name that the file gives, with a suffix that tells what it is.
std::string EmbeddedName(const aiTexture& texture) {
  const std::string name =
      SafeFileName(texture.mFilename.length > 0 ? texture.mFilename.C_Str() : "texture");
  const std::string kind(texture.achFormatHint,
                         ::strnlen(texture.achFormatHint, HINTMAXTEXTURELEN));
  // A dot need not begin a suffix: "wood.001".
  const std::size_t dot = name.rfind('.');
  const std::string suffix = dot == std::string::npos ? "" : name.substr(dot + 1);
  const bool tells =
      std::any_of(std::begin(kPictureSuffixes), std::end(kPictureSuffixes),
                  [&](const char* known) { return ::strcasecmp(known, suffix.c_str()) == 0; });
  return kind.empty() || tells ? name : name + "." + kind;
}

}  // namespace

MaterialConversion::MaterialConversion(const aiScene& scene, SourceFormat format,
                                       const SceneFacts& facts, host::BaseDocument& doc,
                                       Notes& notes)
    : scene_(scene), format_(format), facts_(facts), doc_(doc), notes_(notes) {
  for (unsigned i = 0; i < scene.mNumTextures; ++i)
    embeddedNames_.push_back(Embed(*scene.mTextures[i]));
}

std::string MaterialConversion::Embed(const aiTexture& texture) {
  if (texture.mHeight != 0 || texture.pcData == nullptr) {
    notes_.Count("Embedded textures of raw pixels are left out");
    return {};
  }
  std::string bytes(reinterpret_cast<const char*>(texture.pcData), texture.mWidth);
  // Pictures of one content are one file.
  for (const EmbeddedFile& file : EmbeddedFilesOf(doc_)) {
    if (*file.bytes == bytes) return file.name;
  }
  return AddEmbeddedFile(doc_, EmbeddedName(texture), std::move(bytes));
}

void MaterialConversion::Convert() {
  std::vector<bool> used(scene_.mNumMaterials, false);
  for (unsigned i = 0; i < scene_.mNumMeshes; ++i) {
    if (scene_.mMeshes[i]->mMaterialIndex < used.size())
      used[scene_.mMeshes[i]->mMaterialIndex] = true;
  }
  for (unsigned i = 0; i < scene_.mNumMaterials; ++i) {
    const std::string name = scene_.mMaterials[i]->GetName().C_Str();
    const bool isDefault = name.empty() || name == AI_DEFAULT_MATERIAL_NAME;
    // A place is kept for what is not made, so that positions are those of the library.
    materials_.push_back(used[i] || !isDefault ? Make(i) : nullptr);
  }
}

host::BaseMaterial* MaterialConversion::Make(unsigned index) {
  const aiMaterial& from = *scene_.mMaterials[index];
  host::BaseMaterial* material = host::BaseMaterial::Alloc(host::Mmaterial);
  if (material == nullptr) return nullptr;
  material->SetName(NameOf(index));
  doc_.AppendMaterial(material);
  SetColor(from, index, *material);
  if (facts_.undefined.count(index) != 0)
    material->GetDataInstance()->SetVector(host::MATERIAL_COLOR, kUndescribed);
  SetAlpha(from, *material);
  SetSurface(from, index, *material);
  SetEmission(from, index, *material);
  SetPictures(from, index, *material);
  NoteLosses(from);
  return material;
}

host::String MaterialConversion::NameOf(unsigned index) const {
  if (index < facts_.materials.size() && !facts_.materials[index].name.empty())
    return host::String(std::string_view(facts_.materials[index].name));
  const aiString name = scene_.mMaterials[index]->GetName();
  return name.length > 0 ? TextOf(name) : host::String("Material");
}

void MaterialConversion::SetColor(const aiMaterial& from, unsigned index, host::BaseMaterial& to) {
  const bool hasTexture =
      AddShader(from, index,
                {aiTextureType_BASE_COLOR, aiTextureType_DIFFUSE, host::MATERIAL_COLOR_SHADER}, to);
  const auto base = Color(from, AI_MATKEY_BASE_COLOR);
  const auto diffuse = Color(from, AI_MATKEY_COLOR_DIFFUSE);
  host::Vector color = base ? VectorOf(*base) : diffuse ? VectorOf(*diffuse) : kUndescribed;
  // Many programs write black below a texture, which would make it black as well.
  if (!IsGltf() && hasTexture && color == host::Vector()) color = host::Vector(1);
  to.GetDataInstance()->SetVector(host::MATERIAL_COLOR, color);
}

void MaterialConversion::SetAlpha(const aiMaterial& from, host::BaseMaterial& to) {
  const auto base = Color(from, AI_MATKEY_BASE_COLOR);
  double alpha = Clamped(IsGltf() && base ? static_cast<double>(base->a)
                                          : Number(from, AI_MATKEY_OPACITY).value_or(1));
  if (!IsGltf() && alpha <= 0) {
    notes_.Count("Materials that were wholly transparent were made opaque");
    alpha = 1;
  }
  aiString mode;
  const bool hasMode = from.Get(AI_MATKEY_GLTF_ALPHAMODE, mode) == aiReturn_SUCCESS;
  host::LONG number = !hasMode && alpha < 1 ? 2 : 0;
  if (hasMode && std::strcmp(mode.C_Str(), "MASK") == 0) number = 1;
  if (hasMode && std::strcmp(mode.C_Str(), "BLEND") == 0) number = 2;
  host::BaseContainer& data = *to.GetDataInstance();
  data.SetReal(host::MATERIAL_ALPHA, alpha);
  data.SetLong(host::MATERIAL_ALPHA_MODE, number);
  if (number == 1)
    data.SetReal(host::MATERIAL_ALPHA_CUTOFF,
                 Number(from, AI_MATKEY_GLTF_ALPHACUTOFF).value_or(0.5));
  // Only glTF says of each surface whether it has a back; elsewhere leaves and cloth are single
  // sheets, too.
  int twoSided = !IsGltf();
  from.Get(AI_MATKEY_TWOSIDED, twoSided);
  data.SetBool(host::MATERIAL_DOUBLE_SIDED, twoSided != 0);
}

void MaterialConversion::SetSurface(const aiMaterial& from, unsigned index,
                                    host::BaseMaterial& to) {
  const auto specular = Color(from, AI_MATKEY_COLOR_SPECULAR);
  const double most =
      specular ? static_cast<double>(std::max({specular->r, specular->g, specular->b})) : 0.0;
  const double strength = Number(from, AI_MATKEY_SHININESS_STRENGTH).value_or(1);
  const double exponent = Number(from, AI_MATKEY_SHININESS).value_or(0);
  host::BaseContainer& data = *to.GetDataInstance();
  // glTF's surfaces that are no metals reflect as specular 0.5 does, unless the file says less.
  const double plain = FactsOf(index).specular;
  data.SetReal(host::MATERIAL_SPECULAR, Clamped(IsGltf() ? plain : most * strength));
  data.SetReal(host::MATERIAL_ROUGHNESS,
               Clamped(Number(from, AI_MATKEY_ROUGHNESS_FACTOR).value_or(RoughnessOf(exponent))));
  data.SetReal(host::MATERIAL_METALLIC,
               Clamped(Number(from, AI_MATKEY_METALLIC_FACTOR).value_or(0)));
  const double transmission = Clamped(FactsOf(index).transmission);
  if (transmission > 0) data.SetReal(kMaterialTransmission, transmission);
}

void MaterialConversion::SetPictures(const aiMaterial& from, unsigned index,
                                     host::BaseMaterial& to) {
  host::BaseContainer& data = *to.GetDataInstance();
  AddShader(from, index,
            {aiTextureType_NORMALS, aiTextureType_NORMAL_CAMERA, host::MATERIAL_NORMAL_SHADER}, to);
  const MaterialFacts& facts = FactsOf(index);
  if (facts.normalScale != 1) data.SetReal(kMaterialNormalStrength, facts.normalScale);
  // One picture holds both in glTF.
  const aiTextureType rough = IsGltf() ? aiTextureType_METALNESS : aiTextureType_DIFFUSE_ROUGHNESS;
  // Other formats have either a number or a picture; the scene multiplies both.
  if (AddShader(from, index, {rough, rough, kMaterialRoughnessShader}, to) && !IsGltf())
    data.SetReal(host::MATERIAL_ROUGHNESS, 1);
  if (AddShader(from, index,
                {aiTextureType_METALNESS, aiTextureType_METALNESS, kMaterialMetallicShader}, to) &&
      !IsGltf())
    data.SetReal(host::MATERIAL_METALLIC, 1);
  const aiTextureType dark = IsGltf() ? aiTextureType_LIGHTMAP : aiTextureType_AMBIENT_OCCLUSION;
  AddShader(from, index, {dark, dark, kMaterialOcclusionShader}, to);
  if (facts.occlusionStrength != 1)
    data.SetReal(kMaterialOcclusion, Clamped(facts.occlusionStrength));
  SetOpacityPicture(from, to);
}

// The picture of the color again means its opacity, which shows without a link of its own.
void MaterialConversion::SetOpacityPicture(const aiMaterial& from, host::BaseMaterial& to) {
  const std::string opacity = TextureOf(from, aiTextureType_OPACITY);
  if (opacity.empty()) return;
  const bool isColor = opacity == TextureOf(from, aiTextureType_BASE_COLOR) ||
                       opacity == TextureOf(from, aiTextureType_DIFFUSE);
  if (!isColor &&
      !AddShader(from, kNoFacts,
                 {aiTextureType_OPACITY, aiTextureType_OPACITY, kMaterialOpacityShader}, to))
    return;
  to.GetDataInstance()->SetLong(host::MATERIAL_ALPHA_MODE, 2);
}

const MaterialFacts& MaterialConversion::FactsOf(unsigned index) const {
  static const MaterialFacts plain;
  return index < facts_.materials.size() ? facts_.materials[index] : plain;
}

void MaterialConversion::SetEmission(const aiMaterial& from, unsigned index,
                                     host::BaseMaterial& to) {
  const double strength = FactsOf(index).emissiveStrength;
  const auto emissive = Color(from, AI_MATKEY_COLOR_EMISSIVE);
  if (emissive)
    to.GetDataInstance()->SetVector(host::MATERIAL_LUMINANCE, VectorOf(*emissive, strength));
  AddShader(from, index,
            {aiTextureType_EMISSION_COLOR, aiTextureType_EMISSIVE, host::MATERIAL_LUMINANCE_SHADER},
            to);
}

std::string MaterialConversion::FileNameOf(const std::string& texture) const {
  // "*0", or the name of the file that was embedded.
  const auto [embedded, index] = scene_.GetEmbeddedTextureAndIndex(texture.c_str());
  const bool known =
      embedded != nullptr && index >= 0 && static_cast<std::size_t>(index) < embeddedNames_.size();
  return known ? embeddedNames_[static_cast<std::size_t>(index)] : texture;
}

bool MaterialConversion::AddShader(const aiMaterial& from, unsigned index, const TextureSlot& slot,
                                   host::BaseMaterial& to) {
  std::string texture = TextureOf(from, slot.first);
  if (texture.empty()) texture = TextureOf(from, slot.second);
  const std::string file = texture.empty() ? texture : FileNameOf(texture);
  if (file.empty()) return false;
  host::BaseShader* shader = host::BaseShader::Alloc(host::Xbitmap);
  if (shader == nullptr) return false;
  shader->SetName("Bitmap");
  shader->GetDataInstance()->SetFilename(
      host::BITMAPSHADER_FILENAME, host::Filename(host::String(std::string_view(Utf8Of(file)))));
  const std::map<aiTextureType, PictureFacts>& pictures = FactsOf(index).pictures;
  if (const auto facts = pictures.find(slot.first); facts != pictures.end())
    SetPlace(facts->second, *shader->GetDataInstance());
  to.InsertShader(shader);
  to.GetDataInstance()->SetLink(slot.link, shader);
  return true;
}

UvUse MaterialConversion::UvUseOf(unsigned index) const {
  if (index < facts_.materials.size()) return facts_.materials[index].uvs;
  UvUse use;
  // There they mark parts of a mesh, for whatever purpose.
  use.showsColors = format_ != SourceFormat::Fbx;
  if (index >= scene_.mNumMaterials) return use;
  const aiMaterial& material = *scene_.mMaterials[index];
  int channel = 0;
  material.Get(AI_MATKEY_UVWSRC(aiTextureType_DIFFUSE, 0), channel);
  use.channel = channel > 0 ? static_cast<unsigned>(channel) : 0;
  aiUVTransform transform;
  if (material.Get(AI_MATKEY_UVTRANSFORM(aiTextureType_DIFFUSE, 0), transform) != aiReturn_SUCCESS)
    return use;
  // The library's v grows upwards: a place 1 - v, scaled and moved, is turned over again.
  use.scale = {transform.mScaling.x, transform.mScaling.y};
  use.offset = {transform.mTranslation.x,
                1 - use.scale[1] - static_cast<double>(transform.mTranslation.y)};
  return use;
}

void MaterialConversion::NoteLosses(const aiMaterial& from) {
  for (const LostTexture& lost : kLostTextures)
    notes_.Count(lost.note, !TextureOf(from, lost.type).empty());
}

}  // namespace engine
