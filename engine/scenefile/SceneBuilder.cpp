#include "engine/scenefile/SceneBuilder.h"

#include "engine/scene/DocumentState.h"
#include "engine/scene/ElementState.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/NewNodes.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/Ownership.h"
#include "engine/scenefile/Elements.h"

namespace engine {

using host::BaseDocument;
using host::BaseList2D;
using host::BaseObject;
using host::BaseShader;
using host::LayerObject;
using host::LONG;
using host::RenderData;

namespace {

NodeKind KindIn(ElementSection section) {
  switch (section) {
    case kLayerRows:
      return NodeKind::Layer;
    case kMaterialRows:
      return NodeKind::Material;
    case kRenderRows:
      return NodeKind::RenderSettings;
    case kPostRows:
      return NodeKind::VideoPost;
    case kPassRows:
      return NodeKind::Multipass;
    case kObjectRows:
      return NodeKind::Object;
    case kShaderRows:
      return NodeKind::Shader;
    default:
      return NodeKind::Node;
  }
}

}  // namespace

// Sections are built in the order in which they own one another, so that an owner is there before
// what it owns.
OwnedDocument SceneBuilder::Build() {
  doc_.reset(BaseDocument::Alloc());
  if (!doc_) throw std::bad_alloc();
  rows_.resize(static_cast<std::size_t>(tables_.elements[kShaderRows].EndRow()));
  rows_[0] = doc_.get();
  // A document is never without settings: those that it is born with go once the file's are in.
  RenderData* fresh = doc_->GetFirstRenderData();
  for (const ElementSection section : {kLayerRows, kMaterialRows, kRenderRows}) BuildTop(section);
  RenderData::Free(fresh);
  for (const ElementSection section : {kPostRows, kPassRows}) BuildAttached(section);
  BuildTop(kObjectRows);
  BuildTags();
  BuildAttached(kShaderRows);
  FinishDocument();
  return std::move(doc_);
}

void SceneBuilder::BuildTop(ElementSection section) {
  const ElementTable& table = tables_.elements[section];
  path_.clear();
  for (std::size_t at = 0; at < table.Rows(); ++at) {
    OwnedNode node = Make(section, at);
    BaseList2D* pred = nullptr;
    BaseList2D* parent = Step(table.depths[at], *node, &pred);
    Insert(section, *node, parent, pred);
    if (node->GetDocument() != doc_.get())
      throw Damage{"The file is damaged: an element has no place."};
    rows_[static_cast<std::size_t>(table.firstRow) + at] = node.release();
  }
}

void SceneBuilder::BuildAttached(ElementSection section) {
  const ElementTable& table = tables_.elements[section];
  for (std::size_t at = 0; at < table.Rows(); ++at) {
    OwnedNode node = Make(section, at);
    Attach(section, *node, at);
    if (node->GetDocument() != doc_.get())
      throw Damage{"The file is damaged: an element has no place."};
    rows_[static_cast<std::size_t>(table.firstRow) + at] = node.release();
  }
}

// A tag is complete before it gets to its object, its expression included: in a document no element
// could be given its identity any more.
void SceneBuilder::BuildTags() {
  const ElementTable& table = tables_.elements[kTagRows];
  for (std::size_t at = 0; at < table.Rows(); ++at) {
    OwnedNode node(host::BaseTag::Alloc(static_cast<LONG>(table.types[at])));
    Fill(*node, table, at);
    FillMore(*node, kTagRows, at);
    const std::uint64_t row = table.firstRow + at;
    if (KindOf(*node) == NodeKind::XPressoTag)
      BuildExpression(static_cast<host::XPressoTag&>(*node), row);
    static_cast<BaseObject*>(rows_[table.owners[at]])->InsertTag(AsTag(node.get()));
    rows_[row] = node.release();
  }
}

void SceneBuilder::BuildExpression(host::XPressoTag& tag, std::uint64_t row) {
  const ElementTable& table = tables_.elements[kNodeRows];
  path_.clear();
  for (; nextNode_ < table.Rows() && table.owners[nextNode_] == row; ++nextNode_) {
    const auto depth = static_cast<std::size_t>(table.depths[nextNode_]);
    host::GvNodeMaster* master = tag.GetNodeMaster();
    BaseList2D* node = master;
    // Both are made with the tag.
    if (depth == 1) node = master->GetRoot();
    if (depth > 1)
      node = master->CreateNode(static_cast<host::GvNode*>(path_[depth - 1]),
                                static_cast<LONG>(table.types[nextNode_]));
    Step(depth, *node, nullptr);
    Fill(*node, table, nextNode_);
    rows_[static_cast<std::size_t>(table.firstRow) + nextNode_] = node;
  }
}

// Last, because putting elements in changes what is selected, which settings are in use and that
// there are unsaved changes.
void SceneBuilder::FinishDocument() {
  const DocumentRecord& record = tables_.document;
  BaseDocument& doc = *doc_;
  RenderData* active = AsRenderData(FindNode(&doc, record.activeSettings));
  if (!active)
    throw Damage{
        "The file is damaged in section DOCUMENT: the active render settings are missing."};
  doc.SetActiveRenderData(active);
  SetId(doc, record.id);
  *doc.GetDataInstance() = tables_.values.containers[record.data];
  doc.SetAllBits(record.bits);
  SetNBits(doc, record.nbits);
  SetLayerId(doc, record.layer);
  doc.SetFps(record.fps);
  SetSceneCameraId(doc, record.camera);
  for (const NodeId id : record.selection) {
    BaseList2D* node = FindNode(&doc, id);
    if (!node || !node->GetBit(host::BIT_ACTIVE))
      throw Damage{"The file is damaged in section DOCUMENT: what is selected is missing."};
    // Selected once more, which makes it the one selected last.
    node->DelBit(host::BIT_ACTIVE);
    node->SetBit(host::BIT_ACTIVE);
  }
  ClearChanged(doc);
}

OwnedNode SceneBuilder::Make(ElementSection section, std::size_t at) {
  const ElementTable& table = tables_.elements[section];
  OwnedNode node(MakeNode(KindIn(section), static_cast<LONG>(table.types[at])));
  if (!node) throw std::bad_alloc();
  Fill(*node, table, at);
  FillMore(*node, section, at);
  return node;
}

void SceneBuilder::Fill(BaseList2D& node, const ElementTable& table, std::size_t at) const {
  meter_.Step();
  SetId(node, table.ids[at]);
  node.SetName(tables_.values.texts[table.names[at]]);
  *node.GetDataInstance() = tables_.values.containers[table.data[at]];
  paths_.Resolve(node);
  node.SetAllBits(static_cast<LONG>(table.bits[at]));
  SetNBits(node, table.nbits[at]);
  SetLayerId(node, table.layers[at]);
}

void SceneBuilder::FillMore(BaseList2D& node, ElementSection section, std::size_t at) const {
  const auto& more = tables_.elements[section].more;
  const Numbers& numbers = tables_.values.numbers;
  if (section == kLayerRows)
    SetOwnLayerData(static_cast<LayerObject&>(node),
                    LayerWith(more[kLayerFlags][at], numbers.vectors[more[kLayerColor][at]]));
  if (KindOf(node) == NodeKind::TextureTag)
    SetMaterialId(static_cast<host::TextureTag&>(node), more[kTagMaterial][at]);
  if (section != kObjectRows) return;
  auto& object = static_cast<BaseObject&>(node);
  SetModes(object, static_cast<LONG>(more[kEditorMode][at]),
           static_cast<LONG>(more[kRenderMode][at]), more[kDeformMode][at] != 0);
  if (const std::uint64_t matrix = more[kMatrix][at]) object.SetMl(numbers.matrices[matrix - 1]);
  if (const std::uint64_t mesh = more[kMesh][at]) SetMesh(object, tables_.meshes[mesh - 1]);
}

void SceneBuilder::Insert(ElementSection section, BaseList2D& node, BaseList2D* parent,
                          BaseList2D* pred) {
  switch (section) {
    case kLayerRows:
      return doc_->AppendLayer(AsLayer(&node), AsLayer(parent));
    case kMaterialRows:
      return doc_->AppendMaterial(AsMaterial(&node));
    case kRenderRows:
      return doc_->InsertRenderData(AsRenderData(&node), AsRenderData(parent), AsRenderData(pred));
    default:
      return doc_->AppendObject(AsObject(&node), AsObject(parent));
  }
}

void SceneBuilder::Attach(ElementSection section, BaseList2D& node, std::size_t at) {
  const ElementTable& table = tables_.elements[section];
  BaseList2D* owner = rows_[table.owners[at]];
  if (section == kPostRows)
    return static_cast<RenderData*>(owner)->InsertVideoPost(
        static_cast<host::BaseVideoPost*>(&node));
  if (section == kPassRows)
    return static_cast<RenderData*>(owner)->InsertMultipass(
        static_cast<host::MultipassObject*>(&node));
  auto& shader = static_cast<BaseShader&>(node);
  BaseList2D* parent = Step(table.depths[at], node, nullptr);
  if (parent)
    shader.InsertUnderLast(static_cast<BaseShader*>(parent));
  else
    owner->InsertShader(&shader);
}

// path_ holds the last element of each depth; those deeper than the new one are done with.
BaseList2D* SceneBuilder::Step(std::uint64_t depth, BaseList2D& node, BaseList2D** pred) {
  const auto at = static_cast<std::size_t>(depth);
  if (pred) *pred = at < path_.size() ? path_[at] : nullptr;
  path_.resize(at);
  path_.push_back(&node);
  return at == 0 ? nullptr : path_[at - 1];
}

}  // namespace engine
