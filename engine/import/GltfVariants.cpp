// KHR_materials_variants, and what files that were published by this program say of their states
// besides: which nodes each of them hides, its camera, its picture's size and its date.
#include <assimp/material.h>
#include <algorithm>
#include <cstdio>
#include <ctime>

#include "engine/import/FolderFiles.h"
#include "engine/import/GltfReader.h"

namespace engine {
namespace {

constexpr const char* kVariants = "KHR_materials_variants";
// Each is recorded with all that the scene holds.
constexpr std::size_t kMostStates = 1000;
constexpr host::LONG kLargestPicture = 1 << 16;

const Json& VariantNames(const Json& top) { return List(Extension(top, kVariants), "variants"); }

// Extras are anybody's: what is of another kind than ours is none of ours.
const Json& ListIn(const Json& extras, const char* key) {
  static const Json none;
  const Json& list = Member(extras, key);
  return list.is_array() ? list : none;
}

std::size_t WholeIn(const Json& number) {
  return number.is_number_unsigned() ? number.get<std::size_t>() : kNowhere;
}

std::string TextIn(const Json& extras, const char* key) {
  const Json& text = Member(extras, key);
  return text.is_string() ? text.get<std::string>() : std::string();
}

host::LocalFileTime DateOf(const std::string& text) {
  host::LocalFileTime date;
  const int fields = std::sscanf(text.c_str(), "%4d-%2d-%2dT%2d:%2d:%2d", &date.year, &date.month,
                                 &date.day, &date.hour, &date.minute, &date.second);
  return fields == 6 ? date : host::LocalFileTime();
}

// The file's own date, which is the same at every import.
host::LocalFileTime DateOfFile(const std::string& path) {
  const std::time_t changed = FolderFiles(path).ChangedAt(path);
  std::tm local{};
  if (changed == 0 || ::localtime_r(&changed, &local) == nullptr) return {};
  return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
          local.tm_hour,        local.tm_min,     local.tm_sec};
}

host::LONG PixelsIn(const Json& size, std::size_t index) {
  const std::size_t pixels = WholeIn(At(size, index));
  return pixels <= kLargestPicture ? static_cast<host::LONG>(pixels) : 0;
}

SourceState StateOf(const Json& entry, std::size_t variants) {
  SourceState state;
  state.name = TextIn(entry, "name");
  state.date = DateOf(TextIn(entry, "date"));
  const std::size_t variant = WholeIn(Member(entry, "variant"));
  if (variant < variants) state.variant = variant;
  state.camera = WholeIn(Member(entry, "camera"));
  const Json& hidden = ListIn(entry, "hidden");
  for (std::size_t i = 0; i < SizeOf(hidden); ++i) state.hidden.push_back(WholeIn(hidden[i]));
  const Json& size = ListIn(entry, "size");
  state.width = PixelsIn(size, 0);
  state.height = PixelsIn(size, 1);
  return state;
}

}  // namespace

std::vector<unsigned> VariantsOf(const GltfFile& file, const Json& primitive) {
  const Json& mappings = List(Extension(primitive, kVariants), "mappings");
  const std::size_t variants = SizeOf(VariantNames(file.Top()));
  std::vector<unsigned> materials;
  if (SizeOf(mappings) == 0 || variants == 0) return materials;
  materials.assign(variants, kOwnMaterial);
  for (std::size_t i = 0; i < SizeOf(mappings); ++i) {
    const std::size_t material = Index(mappings[i], "material");
    file.Entry("materials", material);
    const Json& list = List(mappings[i], "variants");
    for (std::size_t j = 0; j < SizeOf(list) && material != kNowhere; ++j) {
      const std::size_t variant = IndexAt(list, j, "variants");
      Element(VariantNames(file.Top()), variant, "variants");
      materials[variant] = static_cast<unsigned>(material);
    }
  }
  return materials;
}

void AddStates(const GltfFile& file, const std::string& path, SceneFacts& facts, Notes& notes) {
  const Json& variants = VariantNames(file.Top());
  // Files of this program say more than variants can; of others each variant is a state.
  const Json& ours = Member(Member(file.Top(), "extras"), "stagemarks");
  const Json& listed = ListIn(ours, "states");
  const std::size_t count = SizeOf(listed) > 0 ? SizeOf(listed) : SizeOf(variants);
  const std::size_t most = std::min(count, kMostStates);
  notes.Count("States beyond the first ones are left out", count - most);
  for (std::size_t i = 0; i < SizeOf(listed) && i < most; ++i)
    facts.states.push_back(StateOf(listed[i], SizeOf(variants)));
  for (std::size_t i = 0; SizeOf(listed) == 0 && i < most; ++i) {
    SourceState& state = facts.states.emplace_back();
    state.name = Text(variants[i], "name");
    state.variant = i;
  }
  const host::LocalFileTime date = facts.states.empty() ? host::LocalFileTime() : DateOfFile(path);
  for (SourceState& state : facts.states) {
    if (state.date.year == 0) state.date = date;
  }
}

// Materials that only a variant shows are made like all others, with or without a name.
void NameMaterialsOfVariants(const SceneFacts& facts, aiScene& scene) {
  for (const std::vector<unsigned>& variants : facts.variants) {
    for (const unsigned index : variants) {
      if (index >= scene.mNumMaterials || scene.mMaterials[index]->GetName().length > 0) continue;
      const aiString name("Material");
      scene.mMaterials[index]->AddProperty(&name, AI_MATKEY_NAME);
    }
  }
}

}  // namespace engine
