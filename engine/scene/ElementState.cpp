#include "engine/scene/ElementState.h"

#include "engine/core/ContainerContents.h"
#include "engine/scene/NodeAccess.h"

namespace engine {

using host::BaseList2D;
using host::BaseObject;
using host::GeListNode;
using A = NodeAccess;

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
host::ULLONG NBitsOf(const GeListNode& node) { return A::NBits(node); }
void SetNBits(GeListNode& node, host::ULLONG bits) { A::NBits(node) = bits; }
const host::LayerData& OwnLayerData(const host::LayerObject& layer) { return A::Flags(layer); }
void SetOwnLayerData(host::LayerObject& layer, const host::LayerData& data) {
  A::Flags(layer) = data;
}

}  // namespace engine
