#include "host/BaseDocument.h"

#include "engine/scene/DocumentBody.h"
#include "engine/scene/DocumentState.h"
#include "engine/scene/NewNodes.h"
#include "engine/scene/NodeFactory.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTree.h"
#include "engine/scene/NodeTypes.h"

namespace engine {

host::BaseDocument* NodeAccess::ConstructDocument(std::unique_ptr<DocumentBody> body) {
  return new host::BaseDocument(std::move(body));
}

}  // namespace engine

namespace host {

using engine::BodyOf;
using engine::DocumentBody;
using A = engine::NodeAccess;

BaseDocument::BaseDocument(std::unique_ptr<DocumentBody> body)
    : BaseList2D(Tbasedocument, static_cast<UCHAR>(engine::NodeKind::Document)),
      body_(std::move(body)) {}

// Steps own parked nodes and know the document, and so may its listener: both end while everything
// is still there. What hangs in the lists is destroyed as it is, for nobody registers undo with a
// document that ends.
BaseDocument::~BaseDocument() {
  engine::UnchainDocument(*this);
  body_->undo.reset();
  body_->listener.reset();
  for (const int slot : {engine::kShaders, engine::kLayers, engine::kSettings, engine::kMaterials,
                         engine::kObjects}) {
    engine::DestroyList(engine::FirstIn(*this, slot));
  }
}

BaseDocument* BaseDocument::Alloc() {
  BaseDocument* doc = engine::MakeBareDocument();
  doc->SetName("Untitled");
  RenderData* settings = RenderData::Alloc();
  engine::PutIn(*settings, *doc, engine::kSettings, nullptr);
  BodyOf(*doc).activeSettings = settings;
  BodyOf(*doc).changed = false;
  return doc;
}

void BaseDocument::Free(BaseDocument*& doc) {
  delete doc;
  doc = nullptr;
}

BaseObject* BaseDocument::GetFirstObject() const {
  return static_cast<BaseObject*>(body_->objects.GetFirst());
}
BaseMaterial* BaseDocument::GetFirstMaterial() const {
  return static_cast<BaseMaterial*>(body_->materials.GetFirst());
}
RenderData* BaseDocument::GetFirstRenderData() const {
  return static_cast<RenderData*>(body_->renderSettings.GetFirst());
}
GeListHead* BaseDocument::GetLayerObjectRoot() const { return &body_->layers; }

namespace {

// Where an element goes: below a parent of this document, or at the top.
struct Spot {
  BaseList2D* owner;
  int slot;
};

// A parent in another document or in none is no place: the owner is null, and nothing is inserted.
Spot SpotBelow(BaseDocument& doc, BaseList2D* parent, int topSlot) {
  if (!parent) return {&doc, topSlot};
  return {parent->GetDocument() == &doc ? parent : nullptr, engine::kChildren};
}

void Insert(BaseDocument& doc, BaseList2D* node, BaseList2D* parent, int topSlot,
            GeListNode* pred) {
  const Spot spot = SpotBelow(doc, parent, topSlot);
  engine::Place(node, spot.owner, spot.slot, pred);
}

// Behind the last one; a parent from elsewhere leaves the element where it is.
void Append(BaseDocument& doc, BaseList2D* node, BaseList2D* parent, int topSlot) {
  const Spot spot = SpotBelow(doc, parent, topSlot);
  if (spot.owner)
    engine::Place(node, spot.owner, spot.slot, engine::LastIn(*spot.owner, spot.slot));
}

}  // namespace

void BaseDocument::InsertObject(BaseObject* op, BaseObject* parent, BaseObject* pred,
                                Bool checknames) {
  if (op && checknames) engine::MakeNameUnique(*op, GetFirstObject());
  Insert(*this, op, parent, engine::kObjects, pred);
}

void BaseDocument::InsertMaterial(BaseMaterial* material, BaseMaterial* pred, Bool checknames) {
  if (material && checknames) engine::MakeNameUnique(*material, GetFirstMaterial());
  Insert(*this, material, nullptr, engine::kMaterials, pred);
}

void BaseDocument::InsertLayer(LayerObject* layer, LayerObject* parent, LayerObject* pred) {
  Insert(*this, layer, parent, engine::kLayers, pred);
}

void BaseDocument::InsertRenderData(RenderData* settings, RenderData* parent, RenderData* pred) {
  RenderData* active = body_->activeSettings;
  // Asked before it is in its place. Moving the active settings takes them out first, by which
  // others become the active ones; so the former ones are made active again at the end.
  const bool isNew = settings && !settings->GetDocument();
  Insert(*this, settings, parent, engine::kSettings, pred);
  if (isNew && settings->GetDocument() == this && body_->undo)
    body_->undo->SettingsInserted(*settings);
  SetActiveRenderData(active);
}

void BaseDocument::AppendObject(BaseObject* op, BaseObject* parent) {
  Append(*this, op, parent, engine::kObjects);
}
void BaseDocument::AppendMaterial(BaseMaterial* material) {
  Append(*this, material, nullptr, engine::kMaterials);
}
void BaseDocument::AppendLayer(LayerObject* layer, LayerObject* parent) {
  Append(*this, layer, parent, engine::kLayers);
}

RenderData* BaseDocument::GetActiveRenderData() const { return body_->activeSettings; }

void BaseDocument::SetActiveRenderData(RenderData* settings) {
  if (!settings || settings->GetDocument() != this || settings == body_->activeSettings) return;
  body_->activeSettings = settings;
  engine::Touch(*this);
}

BaseDraw* BaseDocument::GetRenderBaseDraw() const { return &body_->view; }

BaseObject* BaseDraw::GetSceneCamera(const BaseDocument* doc) const {
  return engine::AsObject(engine::FindNode(doc, camera_));
}

void BaseDraw::SetSceneCamera(BaseObject* camera, Bool) {
  const ULLONG id = camera ? engine::IdOf(*camera) : 0;
  // Also for the one that is set already: a view that was turned away looks through it again.
  if (document_) ++engine::BodyOf(*document_).cameraSets;
  if (camera_ == id) return;
  camera_ = id;
  if (document_) engine::Touch(*document_);
}

Filename BaseDocument::GetDocumentName() const { return Filename(GetName()); }
void BaseDocument::SetDocumentName(const Filename& name) { SetName(name.GetString()); }
Filename BaseDocument::GetDocumentPath() const { return body_->path; }

void BaseDocument::SetDocumentPath(const Filename& path) {
  // No unsaved change: it is the scene as before, in another place; titles and texture paths
  // follow.
  body_->path = path;
  ++body_->changes;
}

LONG BaseDocument::GetFps() const { return body_->fps; }

void BaseDocument::SetFps(LONG fps) {
  if (fps < 1 || fps == body_->fps) return;
  body_->fps = fps;
  engine::Touch(*this);
}

void BaseDocument::SetChanged() { engine::Touch(*this); }
Bool BaseDocument::GetChanged() const { return body_->changed; }

}  // namespace host
