#include "host/BaseList2D.h"

#include "engine/scene/DocumentBody.h"
#include "engine/scene/NodeFactory.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTree.h"
#include "engine/scene/NodeTypes.h"

namespace host {

using A = engine::NodeAccess;

void BaseList2D::SetName(const String& name) {
  if (name_ == name) return;
  name_ = name;
  engine::Touch(*this);
}

String BaseList2D::GetTypeName() const { return engine::TypeName(type_); }

void BaseList2D::SetData(const BaseContainer& data, Bool add) {
  if (add) {
    data_.MergeContainer(data);
  } else {
    data_ = data;
  }
  engine::Touch(*this);
}

void BaseList2D::SetAllBits(LONG bits) {
  const LONG differing = bits_ ^ bits;
  if (differing == 0) return;
  engine::ApplyBits(*this, bits);
  // Files keep the selection, but nobody wants to be asked to save after a mere look at something.
  differing == BIT_ACTIVE ? engine::TouchView(*this) : engine::Touch(*this);
}

void BaseList2D::SetBit(LONG mask) { SetAllBits(bits_ | mask); }
void BaseList2D::DelBit(LONG mask) { SetAllBits(bits_ & ~mask); }

LayerData BaseList2D::GetLayerData(const BaseDocument* doc, Bool) const {
  if (A::Kind(*this) == engine::NodeKind::Layer)
    return A::Flags(static_cast<const LayerObject&>(*this));
  const LayerObject* layer = GetLayerObject(doc);
  return layer ? A::Flags(*layer) : LayerData();
}

Bool BaseList2D::SetLayerData(BaseDocument* doc, const LayerData& data) {
  LayerObject* layer = A::Kind(*this) == engine::NodeKind::Layer ? static_cast<LayerObject*>(this)
                                                                 : GetLayerObject(doc);
  if (!layer) return FALSE;
  if (A::Flags(*layer) == data) return TRUE;
  A::Flags(*layer) = data;
  engine::Touch(*layer);
  return TRUE;
}

LayerObject* BaseList2D::GetLayerObject(const BaseDocument* doc) const {
  return engine::AsLayer(engine::FindNode(doc, layer_));
}

// A node in no document takes any layer: it is being made, and its link is resolved where it gets
// to.
Bool BaseList2D::SetLayerObject(LayerObject* layer) {
  if (layer && GetDocument() && layer->GetDocument() != GetDocument()) return FALSE;
  const ULLONG id = layer ? engine::IdOf(*layer) : 0;
  if (layer_ == id) return TRUE;
  layer_ = id;
  engine::Touch(*this);
  return TRUE;
}

BaseShader* BaseList2D::GetFirstShader() const {
  return static_cast<BaseShader*>(shaders_.GetFirst());
}

void BaseList2D::InsertShader(BaseShader* shader, BaseShader* pred) {
  // At the end where no place is given: the order of shaders is the order in which textures are
  // gathered.
  engine::Place(shader, this, engine::kShaders, pred ? pred : shaders_.GetLast());
}

}  // namespace host
