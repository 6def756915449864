#include "engine/publish/GltfMaterials.h"

#include <cmath>

#include "engine/render/Image.h"
#include "engine/render/TextureSearch.h"
#include "engine/scene/EmbeddedFiles.h"

namespace engine {

namespace {

nlohmann::ordered_json FactorOf(Vec color) {
  const auto share = [](float value) { return std::clamp(double{value}, 0.0, 1.0); };
  return nlohmann::ordered_json::array({share(color.x), share(color.y), share(color.z)});
}

// The kinds of pictures that the format knows, by their first bytes; empty for others.
const char* KindOfPicture(std::string_view bytes) {
  if (bytes.starts_with("\x89PNG\r\n\x1a\n")) return "image/png";
  return bytes.starts_with("\xFF\xD8\xFF") ? "image/jpeg" : "";
}

nlohmann::ordered_json SamplerOf(const Sampling& sampling) {
  static constexpr int kWraps[] = {10497, 33071, 33648};
  constexpr int kNearestFilter = 9728;
  nlohmann::ordered_json sampler = {{"wrapS", kWraps[static_cast<std::size_t>(sampling.u)]},
                                    {"wrapT", kWraps[static_cast<std::size_t>(sampling.v)]}};
  if (sampling.isSharp) sampler["magFilter"] = kNearestFilter;
  return sampler;
}

// Whether a picture of these kinds has its end, too. One that is cut off shows in some programs and
// not in others: it is decoded, and packed anew where that can be done.
bool IsWhole(std::string_view bytes) {
  const bool isPng = bytes.front() == '\x89';
  return bytes.rfind(isPng ? std::string_view("IEND") : "\xFF\xD9") != std::string_view::npos;
}

// A pixel of a picture at a place of one that may be larger; white without a picture.
std::array<int, 4> PixelAt(const std::optional<Image>& image, const Image& larger, std::size_t x,
                           std::size_t y) {
  if (!image) return {255, 255, 255, 255};
  const std::size_t at =
      (y * image->height / larger.height) * image->width + x * image->width / larger.width;
  const std::uint8_t* pixel = &image->bytes[at * 4];
  return {pixel[0], pixel[1], pixel[2], pixel[3]};
}

template <class Join>
Image Joined(const std::optional<Image>& a, const std::optional<Image>& b, Join join) {
  const auto larger = [&](std::uint32_t Image::*side) {
    return std::max(a ? (*a).*side : 1, b ? (*b).*side : 1);
  };
  Image image{larger(&Image::width), larger(&Image::height), {}, {}};
  image.bytes.reserve(image.PixelCount() * 4);
  for (std::size_t y = 0; y < image.height; ++y) {
    for (std::size_t x = 0; x < image.width; ++x) {
      for (const int part : join(PixelAt(a, image, x, y), PixelAt(b, image, x, y)))
        image.bytes.push_back(static_cast<std::uint8_t>(part));
    }
  }
  return image;
}

using Pixel = std::array<int, 4>;

// The opacity is the gray of its picture, by its own opacity.
Image WithOpacity(const std::optional<Image>& color, const std::optional<Image>& opacity) {
  return Joined(color, opacity, [](const Pixel& c, const Pixel& o) {
    return Pixel{c[0], c[1], c[2], c[3] * (o[0] + o[1] + o[2]) * o[3] / (3 * 255 * 255)};
  });
}

// The format has roughness in green and metal in blue.
Image RoughAndMetal(const std::optional<Image>& rough, const std::optional<Image>& metal) {
  return Joined(rough, metal, [](const Pixel& r, const Pixel& m) {
    return Pixel{255, r[1], m[2], 255};
  });
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
  Json material;
  if (!look.name.empty()) material["name"] = look.name;
  material["pbrMetallicRoughness"] = SurfaceOf(instance);
  AddTexture(instance, &SurfaceLook::normalTexture, material, "normalTexture");
  if (material.contains("normalTexture") && look.normalStrength != 1)
    material["normalTexture"]["scale"] = look.normalStrength;
  AddTexture(instance, &SurfaceLook::occlusionTexture, material, "occlusionTexture");
  if (material.contains("occlusionTexture") && look.occlusion != 1)
    material["occlusionTexture"]["strength"] = look.occlusion;
  AddTexture(instance, &SurfaceLook::luminanceTexture, material, "emissiveTexture");
  AddShine(look, material);
  if (look.alphaMode == SurfaceLook::AlphaMode::Cut) {
    material["alphaMode"] = "MASK";
    material["alphaCutoff"] = look.cutoff;
  } else if (look.alphaMode == SurfaceLook::AlphaMode::Blend) {
    material["alphaMode"] = "BLEND";
  }
  if (look.isDoubleSided) material["doubleSided"] = true;
  return material;
}

GltfMaterials::Json GltfMaterials::SurfaceOf(const Instance& instance) {
  const SurfaceLook& look = picture_.looks[instance.look];
  Json surface = {{"baseColorFactor", FactorOf(look.color)},
                  {"metallicFactor", look.metallic},
                  {"roughnessFactor", look.roughness}};
  surface["baseColorFactor"].push_back(look.alpha);
  const Source color = ColorOf(instance.look);
  AddTexture(instance, color, color.first.empty() ? look.alphaTexture : look.colorTexture, surface,
             "baseColorTexture");
  const Source rough = RoughAndMetalOf(instance.look);
  AddTexture(instance, rough, rough.first.empty() ? look.metallicTexture : look.roughnessTexture,
             surface, "metallicRoughnessTexture");
  return surface;
}

void GltfMaterials::AddShine(const SurfaceLook& look, Json& material) {
  // Factors of up to 1; what shines brighter says by how much.
  const float brightest = Largest(look.luminance);
  if (brightest > 0)
    material["emissiveFactor"] = FactorOf(look.luminance * (1 / std::max(brightest, 1.0F)));
  if (brightest > 1)
    AddFactor("KHR_materials_emissive_strength", "emissiveStrength", brightest, material);
  // The format's plain surface reflects as half of ours does.
  if (look.specular < 0.5F)
    AddFactor("KHR_materials_specular", "specularFactor", look.specular * 2, material);
  if (look.transmission > 0)
    AddFactor("KHR_materials_transmission", "transmissionFactor", look.transmission, material);
}

void GltfMaterials::AddFactor(const char* extension, const char* factor, float value,
                              Json& material) {
  material["extensions"][extension][factor] = value;
  extensions_.insert(extension);
}

std::string GltfMaterials::NameOf(std::uint32_t look, TextureUse SurfaceLook::*place) {
  // Looks come in with each further state; only those that are new are filed.
  for (; wishesKnown_ < picture_.textures.size(); ++wishesKnown_)
    wishes_[picture_.textures[wishesKnown_].look].push_back(wishesKnown_);
  for (const std::size_t wish : wishes_[look]) {
    if (picture_.textures[wish].place == place) return picture_.textures[wish].name;
  }
  return "";
}

GltfMaterials::Source GltfMaterials::ColorOf(std::uint32_t look) {
  const std::string color = NameOf(look, &SurfaceLook::colorTexture);
  const std::string opacity = NameOf(look, &SurfaceLook::alphaTexture);
  const bool isOpaque = picture_.looks[look].alphaMode == SurfaceLook::AlphaMode::Opaque;
  if (isOpaque || opacity.empty()) return {Blend::Plain, color};
  return {Blend::ColorAndOpacity, color, opacity};
}

// A picture whose other channel tells nothing, or is meant, stays as it is.
GltfMaterials::Source GltfMaterials::RoughAndMetalOf(std::uint32_t look) {
  const std::string rough = NameOf(look, &SurfaceLook::roughnessTexture);
  const std::string metal = NameOf(look, &SurfaceLook::metallicTexture);
  const bool isMetal = picture_.looks[look].metallic > 0;
  if (rough == metal || !isMetal) return {Blend::Plain, rough};
  return {Blend::RoughAndMetal, rough, metal};
}

void GltfMaterials::AddTexture(const Instance& instance, TextureUse SurfaceLook::*place,
                               Json& material, const char* key) {
  AddTexture(instance, Source{Blend::Plain, NameOf(instance.look, place)},
             picture_.looks[instance.look].*place, material, key);
}

void GltfMaterials::AddTexture(const Instance& instance, const Source& source,
                               const TextureUse& use, Json& material, const char* key) {
  if (source.first.empty() && source.second.empty()) return;
  const std::optional<std::size_t> image = ImageOf(source);
  if (!image) return;
  Json texture = {{"index", TextureOf(*image, use.sampling)}};
  AddTransform(instance, use, texture);
  material[key] = std::move(texture);
}

// First as the object's tag has it, then as the texture itself. Numbers that are none move nothing.
// The extension scales, then turns, then moves; so the tag's move is scaled and turned along.
void GltfMaterials::AddTransform(const Instance& instance, const TextureUse& use, Json& texture) {
  std::array<float, 2> scale = use.tiles;
  std::array<float, 2> moved;
  for (std::size_t k = 0; k < 2; ++k) {
    scale[k] *= instance.uvTiles[k];
    moved[k] = use.tiles[k] * instance.uvOffset[k];
  }
  const float cosine = std::cos(use.rotation);
  const float sine = std::sin(use.rotation);
  const std::array<float, 2> offset = {cosine * moved[0] + sine * moved[1] + use.offset[0],
                                       cosine * moved[1] - sine * moved[0] + use.offset[1]};
  for (const float number : {offset[0], offset[1], scale[0], scale[1], use.rotation}) {
    if (!std::isfinite(number)) return;
  }
  const bool isMoved = offset != std::array<float, 2>{0, 0};
  const bool isScaled = scale != std::array<float, 2>{1, 1};
  if (!isMoved && !isScaled && use.rotation == 0) return;
  Json& transform = texture["extensions"]["KHR_texture_transform"];
  if (isMoved) transform["offset"] = offset;
  if (use.rotation != 0) transform["rotation"] = use.rotation;
  if (isScaled) transform["scale"] = scale;
  extensions_.insert("KHR_texture_transform");
}

std::size_t GltfMaterials::TextureOf(std::size_t image, const Sampling& sampling) {
  const auto [place, isNew] = textureIndices_.try_emplace({image, sampling}, textures_.size());
  if (!isNew) return place->second;
  Json texture = {{"source", image}};
  // Without a sampler the format repeats pictures, as ours do.
  if (sampling != Sampling{}) {
    const auto [sampler, isFirst] = samplerIndices_.try_emplace(sampling, samplers_.size());
    if (isFirst) samplers_.push_back(SamplerOf(sampling));
    texture["sampler"] = sampler->second;
  }
  textures_.push_back(std::move(texture));
  return place->second;
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

std::optional<Image> GltfMaterials::PixelsOf(const std::string& name) {
  const std::string bytes = name.empty() ? "" : BytesOf(name);
  if (bytes.empty()) return std::nullopt;
  Result<Image> image = DecodeImage(bytes);
  if (image) return ToBytes(image.Value());
  notes_.push_back("The texture \"" + name + "\" is left out: " + image.Message());
  return std::nullopt;
}

std::string GltfMaterials::PictureOf(const Source& source) {
  std::optional<Image> picture;
  if (source.blend == Blend::Plain) {
    std::string bytes = BytesOf(source.first);
    // As it is: decoding and packing anew would cost time and, of a photograph, quality.
    if (bytes.empty() || (*KindOfPicture(bytes) && IsWhole(bytes))) return bytes;
    picture = PixelsOf(source.first);
  } else {
    const std::optional<Image> first = PixelsOf(source.first);
    const std::optional<Image> second = PixelsOf(source.second);
    if (first || second)
      picture = source.blend == Blend::ColorAndOpacity ? WithOpacity(first, second)
                                                       : RoughAndMetal(first, second);
  }
  const Result<std::string> png = picture ? EncodePng(*picture) : Result<std::string>::Failure("");
  return png ? png.Value() : "";
}

std::optional<std::size_t> GltfMaterials::ImageOf(const Source& source) {
  const auto [place, isNew] = imageIndices_.try_emplace(source);
  if (!isNew) return place->second;
  const std::string bytes = PictureOf(source);
  if (bytes.empty()) return std::nullopt;
  const std::string& name = source.first.empty() ? source.second : source.first;
  images_.push_back({{"bufferView", buffer_.AddBytes(bytes)},
                     {"mimeType", KindOfPicture(bytes)},
                     {"name", SafeFileName(name)}});
  place->second = images_.size() - 1;
  return place->second;
}

}  // namespace engine
