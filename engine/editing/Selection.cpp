#include "engine/editing/Selection.h"

#include <unordered_map>
#include <unordered_set>

#include "engine/scene/ElementState.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/TreeWalk.h"
#include "host/Application.h"

namespace engine {

using host::BaseDocument;
using host::BaseList2D;
using host::BaseMaterial;
using host::BaseObject;
using host::BaseTag;
using host::LayerObject;

namespace {

bool IsSelected(const BaseList2D& node) { return node.GetBit(host::BIT_ACTIVE); }

bool HasOneOf(const host::BaseObject& object, const std::unordered_set<NodeId>& materials) {
  for (host::BaseTag* tag = object.GetFirstTag(); tag; tag = tag->GetNext()) {
    const host::TextureTag* texture = AsTextureTag(tag);
    if (texture && materials.contains(MaterialIdOf(*texture))) return true;
  }
  return false;
}

}  // namespace

std::vector<BaseObject*> SelectedObjects(const BaseDocument& doc) {
  std::vector<BaseObject*> selected;
  for (BaseObject* object = doc.GetFirstObject(); object; object = NextInTree(object)) {
    if (IsSelected(*object)) selected.push_back(object);
  }
  return selected;
}

// The walk passes over all that is below a selected one.
std::vector<BaseObject*> TopmostSelected(const BaseDocument& doc) {
  std::vector<BaseObject*> topmost;
  BaseObject* object = doc.GetFirstObject();
  while (object) {
    if (!IsSelected(*object)) {
      object = NextInTree(object);
      continue;
    }
    topmost.push_back(object);
    while (object && !object->GetNext()) object = object->GetUp();
    if (object) object = object->GetNext();
  }
  return topmost;
}

std::vector<BaseList2D*> Topmost(const std::vector<BaseList2D*>& nodes) {
  const std::unordered_set<const host::GeListNode*> given(nodes.begin(), nodes.end());
  // Of some others: whether they are below one that is given
  std::unordered_map<const host::GeListNode*, bool> known;
  std::vector<BaseList2D*> topmost;
  for (BaseList2D* node : nodes) {
    // The answer for a node holds for all on its way up, which keeps deep chains linear.
    std::vector<const host::GeListNode*> way;
    const host::GeListNode* above = node->GetUp();
    for (; above && !given.contains(above) && !known.contains(above); above = above->GetUp())
      way.push_back(above);
    const bool isBelow = above && (given.contains(above) || known.at(above));
    for (const host::GeListNode* passed : way) known.emplace(passed, isBelow);
    if (!isBelow) topmost.push_back(node);
  }
  return topmost;
}

void SelectAll(BaseDocument& doc) {
  for (BaseObject* object = doc.GetFirstObject(); object; object = NextInTree(object)) {
    // Those that are selected already keep their place in the order of selecting.
    if (!IsSelected(*object)) doc.SetActiveObject(object, host::SELECTION_ADD);
  }
  host::EventAdd();
}

void SelectNone(BaseDocument& doc) {
  doc.SetActiveObject(nullptr);
  doc.SetActiveTag(nullptr);
  host::EventAdd();
}

// SelectNone posts the change.
void SelectOnly(BaseDocument& doc, const std::vector<BaseObject*>& objects) {
  SelectNone(doc);
  for (BaseObject* object : objects) doc.SetActiveObject(object, host::SELECTION_ADD);
}

void SelectTag(BaseTag& tag, bool add) {
  BaseDocument* doc = tag.GetDocument();
  if (!doc) return;
  if (!add) SelectNone(*doc);
  doc->SetActiveTag(&tag, add && IsSelected(tag) ? host::SELECTION_SUB : host::SELECTION_ADD);
  host::EventAdd();
}

void SelectMaterials(BaseDocument& doc, const MaterialList& materials) {
  const std::unordered_set<const BaseMaterial*> wanted(materials.begin(), materials.end());
  for (BaseMaterial* material = doc.GetFirstMaterial(); material; material = material->GetNext()) {
    wanted.contains(material) ? material->SetBit(host::BIT_ACTIVE)
                              : material->DelBit(host::BIT_ACTIVE);
  }
  host::EventAdd();
}

void SelectLayers(BaseDocument& doc, const LayerList& layers) {
  const std::unordered_set<const host::GeListNode*> wanted(layers.begin(), layers.end());
  for (host::GeListNode* node = doc.GetLayerObjectRoot()->GetFirst(); node;
       node = NextInTree(node)) {
    auto* layer = static_cast<LayerObject*>(node);
    wanted.contains(layer) ? layer->SetBit(host::BIT_ACTIVE) : layer->DelBit(host::BIT_ACTIVE);
  }
  host::EventAdd();
}

void SelectObjectsWith(BaseDocument& doc, const MaterialList& materials) {
  std::unordered_set<NodeId> wanted;
  for (const BaseMaterial* material : materials) wanted.insert(IdOf(*material));
  doc.SetActiveObject(nullptr);
  for (host::BaseObject* object = doc.GetFirstObject(); object; object = NextInTree(object)) {
    if (HasOneOf(*object, wanted)) doc.SetActiveObject(object, host::SELECTION_ADD);
  }
  host::EventAdd();
}

void SelectObjectsOn(BaseDocument& doc, const LayerList& layers) {
  std::unordered_set<NodeId> wanted;
  for (const LayerObject* layer : layers) wanted.insert(IdOf(*layer));
  doc.SetActiveObject(nullptr);
  for (BaseObject* object = doc.GetFirstObject(); object; object = NextInTree(object)) {
    if (wanted.contains(LayerIdOf(*object))) doc.SetActiveObject(object, host::SELECTION_ADD);
  }
  host::EventAdd();
}

}  // namespace engine
