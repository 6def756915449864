#include "program/desktop/panels/ElementRows.h"

#include "engine/editing/Selection.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "host/Application.h"
#include "program/desktop/Icons.h"
#include "program/desktop/panels/ObjectCells.h"
#include "program/desktop/panels/ObjectModel.h"

namespace desktop {

// An element that is gone still has the icon of its part.
QIcon ElementIcon(const host::BaseDocument& doc, engine::Part part, engine::NodeId element) {
  using engine::Part;
  if (part == Part::Camera) return Icon("object-camera");
  if (part == Part::RenderSettings) return Icon("render-settings");
  if (part == Part::Layers) return Icon("layer");
  const host::BaseList2D* node = engine::FindNode(&doc, element);
  if (part == Part::Objects) return Icon(node ? ObjectIcon(node->GetType()) : "object-other");
  return Icon(TagIcon(node ? node->GetType() : engine::RowOf(part).tagType));
}

// Of a tag its object is selected and the tag itself shown in the attributes. Render settings and
// materials have no selection in the scene and are only shown.
void SelectInScene(host::BaseDocument& doc, engine::InspectedElements& inspected,
                   engine::NodeId element) {
  host::BaseList2D* node = engine::FindNode(&doc, element);
  if (!node) return;
  const host::BaseTag* tag = engine::AsTag(node);
  if (host::BaseObject* object = tag ? tag->GetObject() : engine::AsObject(node)) {
    engine::SelectOnly(doc, {object});
  } else if (host::LayerObject* layer = engine::AsLayer(node)) {
    engine::SelectLayers(doc, {layer});
  }
  inspected.Show(doc, {element});
  host::EventAdd();
}

}  // namespace desktop
