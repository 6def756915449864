// Elements: the sections that hold a scene's elements, a row each, as columns; see "Elements" in
// docs/SCENE_FILE.md. A table here is plain numbers, not yet or no longer a scene. One thread.
#pragma once

#include <array>
#include <cstdint>

#include "engine/scenefile/Columns.h"
#include "host/LayerObject.h"

namespace engine {

// The sections in the order of the file, which numbers the rows.
enum ElementSection : std::size_t {
  kLayerRows,
  kMaterialRows,
  kRenderRows,
  kPostRows,
  kPassRows,
  kObjectRows,
  kTagRows,
  kNodeRows,
  kShaderRows,
  kElementSections,
};

struct ElementRule {
  const char* name;
  std::size_t more;  // columns besides the common ones
  bool tree;         // rows may hang below rows of the same section
};

inline constexpr std::array<ElementRule, kElementSections> kElementRules{{
    {"LAYERS", 2, true},
    {"MATERIAL", 0, false},
    {"RENDER", 0, true},
    {"POSTS", 0, false},
    {"PASSES", 0, false},
    {"OBJECTS", 5, true},
    {"TAGS", 1, false},
    {"NODES", 0, true},
    {"SHADERS", 0, true},
}};

// Places of the columns that some sections have besides.
inline constexpr std::size_t kLayerFlags = 0;
inline constexpr std::size_t kLayerColor = 1;
inline constexpr std::size_t kEditorMode = 0;
inline constexpr std::size_t kRenderMode = 1;
inline constexpr std::size_t kDeformMode = 2;
inline constexpr std::size_t kMatrix = 3;
inline constexpr std::size_t kMesh = 4;
inline constexpr std::size_t kTagMaterial = 0;

struct ElementTable {
  std::uint64_t firstRow = 0;  // number of its first row in the whole file
  ColumnValues owners;
  ColumnValues depths;
  ColumnValues types;
  ColumnValues ids;
  ColumnValues names;
  ColumnValues bits;
  ColumnValues nbits;
  ColumnValues layers;
  ColumnValues data;
  std::array<ColumnValues, 5> more;

  std::size_t Rows() const { return ids.size(); }
  std::uint64_t EndRow() const { return firstRow + Rows(); }
  // `data` holds what ContainerWriter::Add answered; `numbers` are the file's.
  std::string Contents(const ElementRule& rule, std::span<const std::uint32_t> numbers) const;
};

// How many of each there are to refer to.
struct ElementBounds {
  std::size_t texts;
  std::size_t containers;
  std::size_t vectors;
  std::size_t matrices;
  std::size_t meshes;
};

using ElementTables = std::array<ElementTable, kElementSections>;

// Reads the table of `section` behind the earlier ones in `tables` and checks every number in it.
// Throws Damage.
void ReadElements(ElementTables& tables, ElementSection section, std::string_view contents,
                  const ElementBounds& bounds, Budget& budget);
// Refuses identities that are 0 or occur twice; `document` is one more. Throws Damage.
void CheckIdentities(const ElementTables& tables, std::uint64_t document);

// The nine switches of a layer as one number, bit 0 the first.
inline constexpr host::Bool host::LayerData::*kLayerSwitches[] = {
    &host::LayerData::solo,      &host::LayerData::view,        &host::LayerData::render,
    &host::LayerData::manager,   &host::LayerData::locked,      &host::LayerData::generators,
    &host::LayerData::deformers, &host::LayerData::expressions, &host::LayerData::animation};

inline std::uint64_t SwitchesOf(const host::LayerData& layer) {
  std::uint64_t bits = 0;
  for (unsigned i = 0; i < std::size(kLayerSwitches); ++i)
    if (layer.*kLayerSwitches[i]) bits |= std::uint64_t{1} << i;
  return bits;
}

inline host::LayerData LayerWith(std::uint64_t switches, const host::Vector& color) {
  host::LayerData layer;
  for (unsigned i = 0; i < std::size(kLayerSwitches); ++i)
    layer.*kLayerSwitches[i] = (switches >> i & 1) != 0;
  layer.color = color;
  return layer;
}

}  // namespace engine
