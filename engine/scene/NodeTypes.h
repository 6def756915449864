// Types and classes of scene elements: which published class an element is, the checked ways to it,
// and what the host calls a type. Any thread that may read the element.
#pragma once

#include "host/BaseDocument.h"
#include "host/BaseMaterial.h"
#include "host/BaseTag.h"
#include "host/GvNode.h"
#include "host/LayerObject.h"
#include "host/RenderData.h"

namespace engine {

// Which published class an element is.
enum class NodeKind : host::UCHAR {
  Document,
  Object,
  Tag,
  TextureTag,
  XPressoTag,
  Material,
  Shader,
  Layer,
  RenderSettings,
  VideoPost,
  Multipass,
  NodeMaster,
  Node,
};

NodeKind KindOf(const host::C4DAtom& atom);
// Name of a type as the host shows it, "Unknown" for one it does not know.
host::String TypeName(host::LONG type);
// The element as a class, or null when it is null or of another kind (a texture tag is a tag, too).
host::BaseObject* AsObject(host::C4DAtom* atom);
host::BaseTag* AsTag(host::C4DAtom* atom);
host::TextureTag* AsTextureTag(host::C4DAtom* atom);
host::BaseMaterial* AsMaterial(host::C4DAtom* atom);
host::LayerObject* AsLayer(host::C4DAtom* atom);
host::RenderData* AsRenderData(host::C4DAtom* atom);

}  // namespace engine
