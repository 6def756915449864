#include "host/BaseTag.h"

#include "engine/scene/DocumentBody.h"
#include "engine/scene/NodeFactory.h"
#include "engine/scene/NodeTree.h"

namespace host {

using engine::NodeKind;

namespace {

BaseList2D* MakeExpression() {
  BaseList2D* tag = engine::MakeNode(NodeKind::XPressoTag, Texpresso);
  BaseList2D* master = engine::MakeBare(NodeKind::NodeMaster, GVbase);
  engine::PutIn(*engine::MakeNode(NodeKind::Node, GVbase), *master, engine::kChildren, nullptr);
  engine::PutIn(*master, *tag, engine::kAttached, nullptr);
  return tag;
}

}  // namespace

BaseTag* BaseTag::Alloc(LONG type) {
  const NodeKind kind = engine::TagKind(type);
  return engine::AsTag(kind == NodeKind::XPressoTag ? MakeExpression() : engine::MakeNode(kind, type));
}

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
