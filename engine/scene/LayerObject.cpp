#include "host/LayerObject.h"

#include "engine/scene/NewNodes.h"
#include "engine/scene/NodeFactory.h"
#include "engine/scene/NodeTypes.h"

namespace host {

LayerObject* LayerObject::Alloc() {
  return engine::AsLayer(engine::MakeNode(engine::NodeKind::Layer, Olayer));
}

void LayerObject::Free(LayerObject*& layer) {
  engine::FreeNode(layer);
  layer = nullptr;
}

}  // namespace host
