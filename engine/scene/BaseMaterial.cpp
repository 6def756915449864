#include "host/BaseMaterial.h"

#include "engine/scene/NewNodes.h"
#include "engine/scene/NodeFactory.h"
#include "engine/scene/NodeTree.h"
#include "engine/scene/NodeTypes.h"

namespace host {

using engine::NodeKind;

BaseMaterial* BaseMaterial::Alloc(LONG type) {
  return engine::AsMaterial(engine::MakeNode(NodeKind::Material, type));
}

void BaseMaterial::Free(BaseMaterial*& material) {
  engine::FreeNode(material);
  material = nullptr;
}

BaseShader* BaseShader::Alloc(LONG type) {
  return static_cast<BaseShader*>(engine::MakeNode(NodeKind::Shader, type));
}

void BaseShader::Free(BaseShader*& shader) {
  engine::FreeNode(shader);
  shader = nullptr;
}

void BaseShader::InsertUnderLast(BaseShader* parent) {
  if (parent) engine::Place(this, parent, engine::kChildren, parent->GetDownLast());
}

}  // namespace host
