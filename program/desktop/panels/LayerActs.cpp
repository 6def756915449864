#include "program/desktop/panels/LayerActs.h"

#include <algorithm>
#include <unordered_set>

#include "engine/undo/Undo.h"
#include "program/desktop/panels/LayerSwitches.h"

namespace desktop {

using host::BaseDocument;
using host::BaseObject;
using host::LayerObject;

namespace {

// Calm ones that can be told apart beside each other.
constexpr std::array<std::array<double, 3>, 8> kColors = {{{0.79, 0.54, 0.24},
                                                           {0.42, 0.58, 0.71},
                                                           {0.55, 0.68, 0.42},
                                                           {0.72, 0.42, 0.40},
                                                           {0.58, 0.49, 0.71},
                                                           {0.80, 0.74, 0.42},
                                                           {0.40, 0.66, 0.64},
                                                           {0.75, 0.52, 0.62}}};

host::Vector ColorOfNumber(std::size_t number) {
  const auto& color = kColors[number % kColors.size()];
  return {color[0], color[1], color[2]};
}

std::size_t CountLayers(const BaseDocument& doc) {
  std::size_t count = 0;
  for (const host::GeListNode* node = doc.GetLayerObjectRoot()->GetFirst(); node;
       node = engine::NextInTree(node))
    ++count;
  return count;
}

bool IsOf(const BaseDocument& doc, const LayerObject* layer) {
  return layer && layer->GetDocument() == &doc;
}

// One step that gives each of the layers other data.
template <class Change>
void ChangeLayers(BaseDocument& doc, const LayerList& layers, const char* name, Change change) {
  const engine::UndoScope scope(doc, name);
  for (LayerObject* layer : layers) {
    if (!IsOf(doc, layer)) continue;
    host::LayerData data = layer->GetLayerData(&doc);
    change(data);
    if (data == layer->GetLayerData(&doc)) continue;
    doc.AddUndo(host::UNDO_CHANGE, layer);
    layer->SetLayerData(&doc, data);
  }
  host::EventAdd();
}

}  // namespace

LayerObject* AddLayer(BaseDocument& doc) {
  LayerObject* layer = LayerObject::Alloc();
  host::LayerData data;
  data.color = ColorOfNumber(CountLayers(doc));
  layer->SetName("Layer");
  layer->SetLayerData(&doc, data);
  engine::MakeNameUnique(*layer, static_cast<LayerObject*>(doc.GetLayerObjectRoot()->GetFirst()));
  {
    const engine::UndoScope scope(doc, "New Layer");
    doc.AppendLayer(layer);
    doc.AddUndo(host::UNDO_NEW, layer);
  }
  SelectLayers(doc, {layer});
  return layer;
}

void DeleteLayers(BaseDocument& doc, const LayerList& layers) {
  {
    const engine::UndoScope scope(doc, layers.size() == 1 ? "Delete Layer" : "Delete Layers");
    for (LayerObject* layer : layers) {
      // One that hung below another of them has gone with it.
      if (!IsOf(doc, layer)) continue;
      doc.AddUndo(host::UNDO_DELETE, layer);
      LayerObject::Free(layer);
    }
  }
  doc.SetChanged();
  host::EventAdd();
}

void RenameLayer(BaseDocument& doc, LayerObject& layer, const host::String& name) {
  {
    const engine::UndoScope scope(doc, "Rename Layer");
    doc.AddUndo(host::UNDO_CHANGE, &layer);
    layer.SetName(name);
  }
  host::EventAdd();
}

void SetLayerColor(BaseDocument& doc, const LayerList& layers, const host::Vector& color) {
  ChangeLayers(doc, layers, "Layer Color", [&](host::LayerData& data) { data.color = color; });
}

void SetLayerSwitch(BaseDocument& doc, const LayerList& layers, std::size_t number, bool on) {
  ChangeLayers(doc, layers, "Layer Switch",
               [&](host::LayerData& data) { data.*(kLayerSwitches.at(number).flag) = on; });
}

engine::StepwiseEdit AssignLayer(BaseDocument& doc, std::vector<BaseObject*> objects,
                                 LayerObject* layer) {
  if (layer && !IsOf(doc, layer)) objects.clear();
  const std::size_t steps = objects.size();
  return {layer ? "Assign Layer" : "Take Off Layer", steps,
          [&doc, objects = std::move(objects), layer](std::size_t i) {
            if (objects[i]->GetLayerObject(&doc) == layer) return;
            doc.AddUndo(host::UNDO_CHANGE, objects[i]);
            objects[i]->SetLayerObject(layer);
          },
          [] { host::EventAdd(); }};
}

void SelectObjectsOn(BaseDocument& doc, const LayerList& layers) {
  std::unordered_set<engine::NodeId> wanted;
  for (const LayerObject* layer : layers) wanted.insert(engine::IdOf(*layer));
  doc.SetActiveObject(nullptr);
  for (BaseObject* object = doc.GetFirstObject(); object; object = engine::NextInTree(object)) {
    if (wanted.contains(engine::LayerIdOf(*object)))
      doc.SetActiveObject(object, host::SELECTION_ADD);
  }
  host::EventAdd();
}

void SelectLayers(BaseDocument& doc, const LayerList& layers) {
  const std::unordered_set<const host::GeListNode*> wanted(layers.begin(), layers.end());
  for (host::GeListNode* node = doc.GetLayerObjectRoot()->GetFirst(); node;
       node = engine::NextInTree(node)) {
    auto* layer = static_cast<LayerObject*>(node);
    wanted.contains(layer) ? layer->SetBit(host::BIT_ACTIVE) : layer->DelBit(host::BIT_ACTIVE);
  }
  host::EventAdd();
}

}  // namespace desktop
