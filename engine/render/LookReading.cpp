#include "engine/render/LookReading.h"

#include <algorithm>
#include <cmath>

#include "engine/render/TextureSearch.h"
#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/PictureParameters.h"
#include "engine/scene/TreeWalk.h"
#include "host/Parameters.h"

namespace engine {

namespace {

constexpr double kStrongestNormals = 1e3;

float Share(const host::BaseContainer& data, host::LONG id, double preset) {
  const double value = data.GetReal(id, preset);
  return static_cast<float>(value >= 0 ? std::min(value, 1.0) : 0.0);
}

Vec ColorAt(const host::BaseContainer& data, host::LONG id, Vec preset) {
  if (data.FindIndex(id) == host::NOTOK) return preset;
  const Vec color = ToVec(data.GetVector(id));
  return IsFinite(color)
             ? Vec{std::max(0.0F, color.x), std::max(0.0F, color.y), std::max(0.0F, color.z)}
             : preset;
}

std::array<float, 2> PairAt(const host::BaseContainer& data, host::LONG id, float preset) {
  if (data.FindIndex(id) == host::NOTOK) return {preset, preset};
  const Vec pair = ToVec(data.GetVector(id));
  return IsFinite(pair) ? std::array<float, 2>{pair.x, pair.y} : std::array{preset, preset};
}

TextureWrap WrapAt(const host::BaseContainer& data, host::LONG id) {
  return static_cast<TextureWrap>(std::clamp<host::LONG>(data.GetLong(id), 0, 2));
}

TextureUse UseOf(const host::BaseContainer& shader) {
  TextureUse use;
  use.offset = PairAt(shader, kBitmapOffset, 0);
  use.tiles = PairAt(shader, kBitmapTiles, 1);
  const auto rotation = static_cast<float>(shader.GetReal(kBitmapRotation, 0));
  if (std::isfinite(rotation)) use.rotation = rotation;
  use.sampling = {WrapAt(shader, kBitmapWrapU), WrapAt(shader, kBitmapWrapV),
                  shader.GetBool(kBitmapIsSharp) != 0};
  return use;
}

// The first bitmap or color shader at or below `shader`; layers and mixtures of shaders show their
// first picture.
const host::BaseShader* FirstPlainShader(const host::BaseList2D* shader) {
  if (!shader || KindOf(*shader) != NodeKind::Shader) return nullptr;
  for (const host::GeListNode* node = shader; node; node = NextInTree(node, shader)) {
    if (node->GetType() == host::Xbitmap || node->GetType() == host::Xcolor)
      return static_cast<const host::BaseShader*>(node);
  }
  return nullptr;
}

}  // namespace

LookReading::LookReading(const host::BaseDocument& doc, FileSystem& files, RenderCaches& caches,
                         ScenePicture& picture)
    : doc_(doc), files_(files), caches_(caches), picture_(picture) {
  picture_.looks.emplace_back();
}

std::uint32_t LookReading::LookOf(const host::BaseMaterial& material) {
  const auto [it, isNew] =
      looks_.try_emplace(&material, static_cast<std::uint32_t>(picture_.looks.size()));
  if (isNew) {
    picture_.looks.push_back(Read(it->second, *material.GetDataInstance()));
    picture_.looks.back().name = material.GetName().ToUtf8();
  }
  return it->second;
}

SurfaceLook LookReading::Read(std::uint32_t index, const host::BaseContainer& data) {
  SurfaceLook look;
  look.color = ColorAt(data, host::MATERIAL_COLOR, look.color);
  look.luminance = ColorAt(data, host::MATERIAL_LUMINANCE, {});
  look.alpha = Share(data, host::MATERIAL_ALPHA, 1);
  look.cutoff = Share(data, host::MATERIAL_ALPHA_CUTOFF, 0.5);
  look.alphaMode = static_cast<SurfaceLook::AlphaMode>(
      std::clamp<host::LONG>(data.GetLong(host::MATERIAL_ALPHA_MODE), 0, 2));
  look.specular = Share(data, host::MATERIAL_SPECULAR, 0.5);
  look.roughness = Share(data, host::MATERIAL_ROUGHNESS, 0.5);
  look.metallic = Share(data, host::MATERIAL_METALLIC, 0);
  look.transmission = Share(data, kMaterialTransmission, 0);
  look.isDoubleSided = data.GetBool(host::MATERIAL_DOUBLE_SIDED, host::TRUE);
  look.occlusion = Share(data, kMaterialOcclusion, 1);
  const double strength = data.GetReal(kMaterialNormalStrength, 1);
  if (std::abs(strength) < kStrongestNormals) look.normalStrength = static_cast<float>(strength);
  ReadPictures(index, data, look);
  return look;
}

void LookReading::ReadPictures(std::uint32_t index, const host::BaseContainer& data,
                               SurfaceLook& look) {
  struct Row {
    TextureUse SurfaceLook::*place;
    host::LONG link;
    Vec SurfaceLook::*color;  // what a plain color shader sets instead
  };
  static constexpr Row kRows[] = {
      {&SurfaceLook::colorTexture, host::MATERIAL_COLOR_SHADER, &SurfaceLook::color},
      {&SurfaceLook::luminanceTexture, host::MATERIAL_LUMINANCE_SHADER, &SurfaceLook::luminance},
      {&SurfaceLook::normalTexture, host::MATERIAL_NORMAL_SHADER, nullptr},
      {&SurfaceLook::roughnessTexture, kMaterialRoughnessShader, nullptr},
      {&SurfaceLook::metallicTexture, kMaterialMetallicShader, nullptr},
      {&SurfaceLook::occlusionTexture, kMaterialOcclusionShader, nullptr},
      {&SurfaceLook::alphaTexture, kMaterialOpacityShader, nullptr}};
  for (const Row& row : kRows) {
    const host::BaseShader* shader = FirstPlainShader(data.GetLink(row.link, &doc_));
    if (!shader) continue;
    const host::BaseContainer& own = *shader->GetDataInstance();
    if (shader->GetType() == host::Xcolor) {
      if (row.color) look.*row.color = ColorAt(own, host::COLORSHADER_COLOR, look.*row.color);
      continue;
    }
    look.*row.place = UseOf(own);
    WantPicture({index, row.place}, own);
  }
}

void LookReading::WantPicture(TextureWish wish, const host::BaseContainer& shader) {
  wish.name = shader.GetFilename(host::BITMAPSHADER_FILENAME).GetString().ToUtf8();
  if (wish.name.empty()) return;
  FindFiles(wish);
  picture_.textures.push_back(std::move(wish));
}

void LookReading::FindFiles(TextureWish& wish) {
  for (const EmbeddedFile& file : EmbeddedFilesOf(doc_)) {
    if (file.name == wish.name) wish.files.push_back(caches_.FileIn(file.bytes));
  }
  for (const std::string& path :
       TexturePlaces(wish.name, doc_.GetDocumentPath().GetString().ToUtf8())) {
    if (files_.Kind(path) != FileKind::File) {
      caches_.Missed(path);
      continue;
    }
    wish.files.push_back(caches_.FileAt(files_, path));
    break;
  }
}

}  // namespace engine
