#include "engine/editing/LayerCommands.h"

#include "engine/scene/NewNodes.h"
#include "engine/scene/TreeWalk.h"
#include "host/Application.h"

namespace engine {

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

bool IsOf(const BaseDocument& doc, const LayerObject* layer) {
  return layer && layer->GetDocument() == &doc;
}

// One step that gives each of the layers other data. Registers only those that differ afterwards; a
// step without any is left out.
template <class Change>
void ChangeLayers(BaseDocument& doc, const LayerList& layers, const char* name, Change change) {
  const UndoScope scope(doc, name);
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

void Append(BaseDocument& doc, LayerObject* layer) {
  doc.AppendLayer(layer);
  doc.AddUndo(host::UNDO_NEW, layer);
}

}  // namespace

LayerObject* MakeLayer(BaseDocument& doc, const std::string& name, const host::LayerData& data) {
  LayerObject* layer = LayerObject::Alloc();
  layer->SetName(host::String(std::string_view(name)));
  layer->SetLayerData(&doc, data);
  Append(doc, layer);
  return layer;
}

host::Vector NextLayerColor(const BaseDocument& doc) {
  std::size_t count = 0;
  for (const host::GeListNode* node = doc.GetLayerObjectRoot()->GetFirst(); node;
       node = NextInTree(node))
    ++count;
  const auto& color = kColors[count % kColors.size()];
  return {color[0], color[1], color[2]};
}

LayerObject* AddLayer(BaseDocument& doc) {
  LayerObject* layer = LayerObject::Alloc();
  host::LayerData data;
  data.color = NextLayerColor(doc);
  layer->SetName("Layer");
  layer->SetLayerData(&doc, data);
  MakeNameUnique(*layer, static_cast<LayerObject*>(doc.GetLayerObjectRoot()->GetFirst()));
  {
    const UndoScope scope(doc, "New Layer");
    Append(doc, layer);
  }
  SelectLayers(doc, {layer});
  return layer;
}

void DeleteLayers(BaseDocument& doc, const LayerList& layers) {
  {
    const UndoScope scope(doc, layers.size() == 1 ? "Delete Layer" : "Delete Layers");
    for (LayerObject* layer : layers) {
      // One that hung below another of them has gone with it.
      if (!IsOf(doc, layer)) continue;
      doc.AddUndo(host::UNDO_DELETE, layer);
      LayerObject::Free(layer);
    }
  }
  host::EventAdd();
}

void RenameLayer(BaseDocument& doc, LayerObject& layer, const host::String& name) {
  {
    const UndoScope scope(doc, "Rename Layer");
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
               [&](host::LayerData& data) { data.*(kLayerSwitchTable.at(number).flag) = on; });
}

std::optional<std::size_t> FindLayerSwitch(std::string_view key) {
  for (std::size_t i = 0; i < kLayerSwitchTable.size(); ++i) {
    if (key == kLayerSwitchTable[i].key) return i;
  }
  return std::nullopt;
}

void PutOnLayer(BaseDocument& doc, BaseObject& object, LayerObject* layer) {
  if (object.GetLayerObject(&doc) == layer) return;
  doc.AddUndo(host::UNDO_CHANGE, &object);
  object.SetLayerObject(layer);
}

StepwiseEdit AssignLayer(BaseDocument& doc, std::vector<BaseObject*> objects, LayerObject* layer) {
  if (layer && !IsOf(doc, layer)) objects.clear();
  const std::size_t steps = objects.size();
  return {layer ? "Assign Layer" : "Take Off Layer", steps,
          [&doc, objects = std::move(objects), layer](std::size_t i) {
            PutOnLayer(doc, *objects[i], layer);
          },
          [] { host::EventAdd(); }};
}

}  // namespace engine
