#include "host/BaseTag.h"

#include "engine/scene/DocumentBody.h"
#include "engine/scene/NodeFactory.h"

namespace host {

BaseTag* BaseTag::Alloc(LONG type) { return engine::AsTag(engine::MakeNode(engine::TagKind(type), type)); }

void BaseTag::Free(BaseTag*& tag) {
  engine::FreeNode(tag);
  tag = nullptr;
}

BaseObject* BaseTag::GetObject() const { return static_cast<BaseObject*>(kin_); }

BaseMaterial* TextureTag::GetMaterial(Bool) const { return engine::AsMaterial(engine::FindNode(GetDocument(), material_)); }

void TextureTag::SetMaterial(BaseMaterial* material) {
  const ULLONG id = material ? engine::IdOf(*material) : 0;
  if (material_ == id) return;
  material_ = id;
  engine::Touch(*this);
}

}  // namespace host
