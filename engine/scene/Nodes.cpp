#include "engine/scene/Nodes.h"

#include <string_view>
#include <unordered_set>

#include "engine/scene/DocumentBody.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTree.h"
#include "engine/scene/ObjectShape.h"

namespace engine {

using host::BaseDocument;
using host::BaseList2D;
using host::BaseObject;
using host::C4DAtom;
using host::GeListNode;
using A = NodeAccess;

namespace {

template <class T>
T* As(C4DAtom* atom, NodeKind kind) {
  return atom && A::Kind(*atom) == kind ? static_cast<T*>(atom) : nullptr;
}

}  // namespace

NodeKind KindOf(const C4DAtom& atom) { return A::Kind(atom); }

BaseObject* AsObject(C4DAtom* atom) { return As<BaseObject>(atom, NodeKind::Object); }
host::TextureTag* AsTextureTag(C4DAtom* atom) {
  return As<host::TextureTag>(atom, NodeKind::TextureTag);
}
host::BaseMaterial* AsMaterial(C4DAtom* atom) {
  return As<host::BaseMaterial>(atom, NodeKind::Material);
}
host::LayerObject* AsLayer(C4DAtom* atom) { return As<host::LayerObject>(atom, NodeKind::Layer); }
host::RenderData* AsRenderData(C4DAtom* atom) {
  return As<host::RenderData>(atom, NodeKind::RenderSettings);
}

host::BaseTag* AsTag(C4DAtom* atom) {
  if (!atom) return nullptr;
  const NodeKind kind = A::Kind(*atom);
  const bool tag =
      kind == NodeKind::Tag || kind == NodeKind::TextureTag || kind == NodeKind::XPressoTag;
  return tag ? static_cast<host::BaseTag*>(atom) : nullptr;
}

NodeId IdOf(const GeListNode& node) { return A::Id(node); }

bool SetId(GeListNode& node, NodeId id) {
  const bool own = A::Kind(node) == NodeKind::Document;
  if (id == 0 || (node.GetDocument() && !own)) return false;
  NodeIds::Instance().Seen(id);
  if (own) {
    NodeTable& table = BodyOf(static_cast<BaseDocument&>(node)).table;
    if (!table.Add(id, static_cast<BaseList2D*>(&node))) return false;
    table.Remove(A::Id(node));
  }
  A::Id(node) = id;
  return true;
}

BaseList2D* FindNode(const BaseDocument* doc, NodeId id) {
  return doc && id ? BodyOf(*doc).table.Find(id) : nullptr;
}

void SetModes(BaseObject& object, host::LONG editor, host::LONG render, bool deform) {
  host::UCHAR* modes = A::Modes(object);
  modes[0] = static_cast<host::UCHAR>(ValidMode(editor));
  modes[1] = static_cast<host::UCHAR>(ValidMode(render));
  modes[2] = deform ? 1 : 0;
}

NodeId LayerIdOf(const BaseList2D& node) { return A::Layer(node); }
void SetLayerId(BaseList2D& node, NodeId layer) { A::Layer(node) = layer; }
NodeId MaterialIdOf(const host::TextureTag& tag) { return A::Material(tag); }
void SetMaterialId(host::TextureTag& tag, NodeId material) { A::Material(tag) = material; }
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
host::ULLONG NBitsOf(const GeListNode& node) { return A::NBits(node); }
void SetNBits(GeListNode& node, host::ULLONG bits) { A::NBits(node) = bits; }
const host::LayerData& OwnLayerData(const host::LayerObject& layer) { return A::Flags(layer); }
void SetOwnLayerData(host::LayerObject& layer, const host::LayerData& data) {
  A::Flags(layer) = data;
}

const std::shared_ptr<const Mesh>& MeshOf(const BaseObject& object) {
  static const std::shared_ptr<const Mesh> none;
  const auto& shape = A::Shape(object);
  return shape ? shape->mesh : none;
}

void SetMesh(BaseObject& object, std::shared_ptr<const Mesh> mesh) {
  if (MeshOf(object) == mesh) return;
  auto shape = std::make_shared<ObjectShape>();
  shape->frame = object.GetMl();
  shape->mesh = std::move(mesh);
  A::Shape(object) = std::move(shape);
  Touch(object);
}

void KeepWith(BaseDocument& doc, std::shared_ptr<const void> kept) {
  BodyOf(doc).kept = std::move(kept);
}
const std::shared_ptr<const void>& KeptWith(const BaseDocument& doc) { return BodyOf(doc).kept; }

void SetListener(BaseDocument& doc, std::unique_ptr<DocumentListener> listener) {
  BodyOf(doc).listener = std::move(listener);
}
DocumentListener* ListenerOf(const BaseDocument& doc) { return BodyOf(doc).listener.get(); }

void MakeNameUnique(BaseList2D& node, const BaseList2D* first) {
  const std::string name = node.GetName().ToUtf8();
  // Only these can stand in the way. They are looked at where they lie.
  std::unordered_set<std::string_view> names;
  for (const GeListNode* other = first; other; other = NextInTree(other)) {
    const host::String& taken = A::Name(*static_cast<const BaseList2D*>(other));
    if (other != &node && taken.View().substr(0, name.size()) == name) names.insert(taken.View());
  }
  std::string candidate = name;
  for (int number = 1; names.count(candidate) > 0; ++number)
    candidate = name + "." + std::to_string(number);
  node.SetName(host::String(std::string_view(candidate)));
}

void ClearChanged(BaseDocument& doc) { BodyOf(doc).changed = false; }
host::ULLONG NumberOf(const BaseDocument& doc) { return BodyOf(doc).number; }
host::ULLONG ChangeCount(const BaseDocument& doc) { return BodyOf(doc).changes; }
host::ULLONG TreeChangeCount(const BaseDocument& doc) { return BodyOf(doc).treeChanges; }
std::size_t NodeCount(const BaseDocument& doc) { return BodyOf(doc).table.Count(); }
host::ULLONG SelectionChangeCount(const BaseDocument& doc) { return BodyOf(doc).selectionChanges; }

GeListNode* NextInTree(const GeListNode* node, const GeListNode* root) {
  if (node->GetDown()) return node->GetDown();
  for (; node && node != root; node = node->GetUp()) {
    if (node->GetNext()) return node->GetNext();
  }
  return nullptr;
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
