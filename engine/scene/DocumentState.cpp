#include "engine/scene/DocumentState.h"

#include "engine/scene/DocumentBody.h"
#include "engine/scene/DocumentListener.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/TreeWalk.h"

namespace engine {

using host::BaseDocument;
using host::BaseObject;
using host::GeListNode;
using A = NodeAccess;

NodeId SceneCameraIdOf(const BaseDocument& doc) { return A::Camera(BodyOf(doc).view); }
void SetSceneCameraId(BaseDocument& doc, NodeId camera) { A::Camera(BodyOf(doc).view) = camera; }
host::ULLONG SceneCameraSetCount(const BaseDocument& doc) { return BodyOf(doc).cameraSets; }
void SetEditorView(BaseDocument& doc, const std::optional<EditorView>& view) {
  BodyOf(doc).editorView = view;
}
const std::optional<EditorView>& EditorViewOf(const BaseDocument& doc) {
  return BodyOf(doc).editorView;
}
NodeId ActiveRenderDataIdOf(const BaseDocument& doc) { return A::Id(*BodyOf(doc).activeSettings); }
void KeepWith(BaseDocument& doc, std::shared_ptr<const void> kept) {
  BodyOf(doc).kept = std::move(kept);
}
const std::shared_ptr<const void>& KeptWith(const BaseDocument& doc) { return BodyOf(doc).kept; }

void SetListener(BaseDocument& doc, std::unique_ptr<DocumentListener> listener) {
  BodyOf(doc).listener = std::move(listener);
}
DocumentListener* ListenerOf(const BaseDocument& doc) { return BodyOf(doc).listener.get(); }

void ClearChanged(BaseDocument& doc) { BodyOf(doc).changed = false; }
host::ULLONG NumberOf(const BaseDocument& doc) { return BodyOf(doc).number; }
host::ULLONG ChangeCount(const BaseDocument& doc) { return BodyOf(doc).changes; }
host::ULLONG TreeChangeCount(const BaseDocument& doc) { return BodyOf(doc).treeChanges; }
std::size_t NodeCount(const BaseDocument& doc) { return BodyOf(doc).table.Count(); }
host::ULLONG SelectionChangeCount(const BaseDocument& doc) { return BodyOf(doc).selectionChanges; }

// A document that is in a chain already leaves it.
void ChainDocument(host::BaseDocument& doc, host::BaseDocument* pred) {
  UnchainDocument(doc);
  if (!pred || pred == &doc) return;
  host::GeListNode* next = pred->GetNext();
  A::Pred(doc) = pred;
  A::Next(doc) = next;
  A::Next(*pred) = &doc;
  if (next) A::Pred(*next) = &doc;
}

void UnchainDocument(host::BaseDocument& doc) {
  if (doc.GetPred()) A::Next(*doc.GetPred()) = doc.GetNext();
  if (doc.GetNext()) A::Pred(*doc.GetNext()) = doc.GetPred();
  A::Next(doc) = A::Pred(doc) = nullptr;
}

namespace {

void Count(BaseObject& object, SceneCounts& counts) {
  ++counts.objects;
  if (object.GetType() == host::Ocamera) ++counts.cameras;
  if (object.GetType() == host::Olight) ++counts.lights;
  if (MeshOf(object)) counts.polygons += MeshOf(object)->polygons.size();
}

}  // namespace

SceneCounts CountScene(const BaseDocument& doc) {
  SceneCounts counts;
  for (GeListNode* node = NextInside(doc, doc); node; node = NextInside(*node, doc)) {
    if (AsTag(node)) ++counts.tags;
    switch (A::Kind(*node)) {
      case NodeKind::Object:
        Count(static_cast<BaseObject&>(*node), counts);
        break;
      case NodeKind::Material:
        ++counts.materials;
        break;
      case NodeKind::Shader:
        ++counts.shaders;
        break;
      case NodeKind::Layer:
        ++counts.layers;
        break;
      case NodeKind::RenderSettings:
        ++counts.renderSettings;
        break;
      default:
        break;
    }
  }
  return counts;
}

}  // namespace engine
