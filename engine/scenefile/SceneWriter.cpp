#include "engine/scenefile/SceneWriter.h"

#include <array>
#include <bit>

#include "engine/scene/DocumentState.h"
#include "engine/scene/ElementState.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/TreeWalk.h"
#include "engine/scenefile/CarriedFiles.h"
#include "engine/scenefile/Elements.h"

namespace engine {

using host::BaseList2D;
using host::BaseObject;
using host::GeListNode;

namespace {

std::uint64_t ElementsOf(const host::BaseDocument& doc) {
  const SceneCounts counts = CountScene(doc);
  return counts.objects + counts.tags + counts.materials + counts.shaders + counts.layers;
}

}  // namespace

// All is collected first: the numbers of containers follow from their depths, which are known when
// the last one is in.
void SceneWriter::Write(SectionWriter& sections) {
  // Each element is met twice, when it is collected and when its row is written.
  meter_.Expect(ElementsOf(doc_) * 2);
  Collect();
  // Before the values are written, since the names of the files go to the texts.
  const std::string files = FilesContents(EmbeddedFilesOf(doc_), values_.texts);
  values_.Finish(sections);
  const MeshWriter::Sections meshes = meshes_.Contents();
  sections.Add("MESHES", meshes.meshes);
  if (!meshes.colors.empty()) sections.Add("COLORS", meshes.colors);
  sections.Add("DOCUMENT", DocumentContents());
  for (std::size_t section = 0; section < kElementSections; ++section) {
    meter_.Step(tables_[section].Rows());
    sections.Add(kElementRules[section].name,
                 tables_[section].Contents(kElementRules[section], values_.containers.Numbers()));
  }
  if (!EmbeddedFilesOf(doc_).empty()) sections.Add("FILES", files);
}

// The order of the sections in the file, which numbers the rows: owners before what they own,
// shaders at the end because every element may own some.
void SceneWriter::Collect() {
  documentData_ = values_.containers.Add(*doc_.GetDataInstance());
  AddTree(kLayerRows, 0, doc_.GetLayerObjectRoot()->GetFirst());
  AddTree(kMaterialRows, 0, doc_.GetFirstMaterial());
  AddTree(kRenderRows, 0, doc_.GetFirstRenderData());
  AddOwned(kPostRows, kRenderRows, [](const BaseList2D& node) {
    return static_cast<const host::RenderData&>(node).GetFirstVideoPost();
  });
  AddOwned(kPassRows, kRenderRows, [](const BaseList2D& node) {
    return static_cast<const host::RenderData&>(node).GetFirstMultipass();
  });
  AddTree(kObjectRows, 0, doc_.GetFirstObject());
  AddOwned(kTagRows, kObjectRows, [](const BaseList2D& node) {
    return static_cast<const BaseObject&>(node).GetFirstTag();
  });
  AddOwned(kNodeRows, kTagRows, [](const BaseList2D& node) -> const GeListNode* {
    if (KindOf(node) != NodeKind::XPressoTag) return nullptr;
    return static_cast<const host::XPressoTag&>(node).GetNodeMaster();
  });
  AddShaders();
}

void SceneWriter::AddTree(ElementSection section, std::uint64_t owner, const GeListNode* first) {
  ElementTable& table = tables_[section];
  if (table.Rows() == 0) BeginSection(section);
  std::uint64_t depth = 0;
  for (const GeListNode* node = first; node;) {
    const auto& element = static_cast<const BaseList2D&>(*node);
    AddRow(table, owner, depth, element);
    AddMore(section, element);
    rows_.push_back(&element);
    if (node->GetDown() && kElementRules[section].tree) {
      node = node->GetDown();
      ++depth;
      continue;
    }
    // By the owner, since the published GetUp does not tell the master of an expression.
    for (; !node->GetNext() && depth > 0; --depth)
      node = static_cast<const GeListNode*>(OwnerOf(*node));
    node = node->GetNext();
  }
}

template <class List>
void SceneWriter::AddOwned(ElementSection section, ElementSection owners, const List& list) {
  BeginSection(section);
  for (std::uint64_t owner = tables_[owners].firstRow; owner < tables_[owners].EndRow(); ++owner)
    if (const GeListNode* first = list(*rows_[owner])) AddTree(section, owner, first);
}

// Shaders have shaders: the rows grow while they are gone through.
void SceneWriter::AddShaders() {
  BeginSection(kShaderRows);
  for (std::uint64_t owner = 0; owner < rows_.size(); ++owner)
    if (const GeListNode* first = rows_[owner]->GetFirstShader())
      AddTree(kShaderRows, owner, first);
}

void SceneWriter::AddRow(ElementTable& table, std::uint64_t owner, std::uint64_t depth,
                         const BaseList2D& node) {
  meter_.Step();
  table.owners.push_back(owner);
  table.depths.push_back(depth);
  table.types.push_back(Extended(node.GetType()));
  table.ids.push_back(IdOf(node));
  table.names.push_back(values_.texts.Row(node.GetName().View()));
  table.bits.push_back(Extended(node.GetAllBits()));
  table.nbits.push_back(NBitsOf(node));
  table.layers.push_back(LayerIdOf(node));
  table.data.push_back(values_.containers.Add(paths_.DataToWrite(node)));
}

void SceneWriter::AddMore(ElementSection section, const BaseList2D& node) {
  ElementTable& table = tables_[section];
  if (section == kObjectRows) AddObjectColumns(table, static_cast<const BaseObject&>(node));
  if (section == kLayerRows) {
    const host::LayerData& layer = OwnLayerData(static_cast<const host::LayerObject&>(node));
    table.more[kLayerFlags].push_back(SwitchesOf(layer));
    table.more[kLayerColor].push_back(values_.numbers.Row(layer.color));
  }
  if (section == kTagRows) {
    const bool texture = KindOf(node) == NodeKind::TextureTag;
    table.more[kTagMaterial].push_back(
        texture ? MaterialIdOf(static_cast<const host::TextureTag&>(node)) : 0);
  }
}

void SceneWriter::AddObjectColumns(ElementTable& table, const BaseObject& object) {
  table.more[kEditorMode].push_back(Extended(object.GetEditorMode()));
  table.more[kRenderMode].push_back(Extended(object.GetRenderMode()));
  table.more[kDeformMode].push_back(object.GetDeformMode() ? 1 : 0);
  table.more[kMatrix].push_back(MatrixRow(object.GetMl()));
  table.more[kMesh].push_back(meshes_.Row(MeshOf(object)));
}

// By the bits: a -0 in a frame is kept.
std::uint64_t SceneWriter::MatrixRow(const host::Matrix& matrix) {
  using Words = std::array<std::uint64_t, sizeof(host::Matrix) / sizeof(std::uint64_t)>;
  static const Words identity = std::bit_cast<Words>(host::Matrix());
  return std::bit_cast<Words>(matrix) == identity ? 0 : values_.numbers.Row(matrix) + 1;
}

std::uint64_t SceneWriter::MemoryToRead() const {
  constexpr std::uint64_t kElementBytes = 1200;  // twice what the reader reckons with, columns too
  return rows_.size() * kElementBytes + values_.texts.MemoryToRead() +
         values_.numbers.MemoryToRead() + values_.containers.MemoryToRead() +
         meshes_.MemoryToRead();
}

std::string SceneWriter::DocumentContents() const {
  std::string out;
  PutFixed64(out, IdOf(doc_));
  PutVarint(out, ZigZag(Extended(doc_.GetAllBits())));
  PutFixed64(out, NBitsOf(doc_));
  PutFixed64(out, LayerIdOf(doc_));
  PutVarint(out, values_.containers.Numbers()[documentData_]);
  PutVarint(out, ZigZag(Extended(doc_.GetFps())));
  PutFixed64(out, SceneCameraIdOf(doc_));
  PutFixed64(out, ActiveRenderDataIdOf(doc_));
  ColumnValues selection;
  for (const BaseList2D* node : SelectedInOrder(doc_)) selection.push_back(IdOf(*node));
  PutVarint(out, selection.size());
  PutInts(out, selection);
  return out;
}

}  // namespace engine
