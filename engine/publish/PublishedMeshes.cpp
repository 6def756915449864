#include "engine/publish/PublishedMeshes.h"

#include "engine/publish/GltfText.h"
#include "engine/publish/NodeTexts.h"
#include "engine/scene/Extras.h"

namespace engine {

// Empty where all states in which the part shows have one material. As soon as one differs, all are
// told: nobody then needs to know which material a variant without a mapping has.
std::string PublishedMeshes::MappingsOf(std::size_t part) const {
  std::map<std::uint32_t, std::vector<std::size_t>> states;
  for (std::size_t state = 0; state < parts_.States() && states.empty(); ++state) {
    if (parts_.Shows(part, state) && parts_.MaterialIn(part, state) != parts_.At(part).material)
      states[parts_.At(part).material];
  }
  if (states.empty()) return "";
  for (std::size_t state = 0; state < parts_.States(); ++state) {
    const std::uint32_t material = parts_.MaterialIn(part, state);
    if (material != VisibleParts::kHidden) states[material].push_back(state);
  }
  std::string text = "[";
  for (const auto& [material, variants] : states) {
    text += "{\"material\":";
    AppendCount(text, material);
    AppendNumbers(text, "variants", variants);
    text += "},";
  }
  text.back() = ']';
  return text;
}

// By any of its materials: the geometry is one for all variants.
bool PublishedMeshes::WantsTangents(std::size_t part) const {
  if (materials_.HasNormalMap(parts_.At(part).material)) return true;
  for (std::size_t state = 1; state < parts_.States(); ++state) {
    const std::uint32_t material = parts_.MaterialIn(part, state);
    if (material != VisibleParts::kHidden && materials_.HasNormalMap(material)) return true;
  }
  return false;
}

std::optional<std::size_t> PublishedMeshes::IndexOf(std::size_t part,
                                                    const host::BaseList2D& object) {
  const VisibleParts::Part& what = parts_.At(part);
  const GltfGeometry& geometry = geometries_.Of(what.mesh);
  if (geometry.corners == 0) return std::nullopt;
  Key key{what.mesh.get(), what.material, MappingsOf(part)};
  const auto [place, isNew] = indices_.try_emplace(std::move(key), indices_.size());
  if (!isNew) return place->second;
  const std::string& mappings = place->first.mappings;
  text_ += (text_.empty() ? "{\"name\":" : ",{\"name\":") + Quoted(NodeNameOf(object)) +
           ",\"primitives\":[{" +
           buffer_.PrimitiveOf(what.mesh.get(), geometry, WantsTangents(part)) + ",\"material\":";
  AppendCount(text_, what.material);
  if (!mappings.empty())
    text_ += ",\"extensions\":{\"KHR_materials_variants\":{\"mappings\":" + mappings + "}}";
  text_ += "}]";
  AppendExtras(text_, ExtrasOf(object, kMeshExtras));
  text_ += '}';
  return place->second;
}

std::size_t PublishedMeshes::TrianglesOf(std::size_t part) {
  return geometries_.Of(parts_.At(part).mesh).corners / 3;
}

}  // namespace engine
