// The published classes of elements that are little more than a list of their own: materials and
// shaders, layers, render settings, expression nodes.
#include "engine/scene/NewNodes.h"
#include "engine/scene/NodeFactory.h"
#include "engine/scene/NodeTree.h"
#include "engine/scene/NodeTypes.h"
#include "host/BaseMaterial.h"
#include "host/GvNode.h"
#include "host/LayerObject.h"
#include "host/RenderData.h"

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

LayerObject* LayerObject::Alloc() {
  return engine::AsLayer(engine::MakeNode(engine::NodeKind::Layer, Olayer));
}

void LayerObject::Free(LayerObject*& layer) {
  engine::FreeNode(layer);
  layer = nullptr;
}

BaseVideoPost* BaseVideoPost::Alloc(LONG type) {
  return static_cast<BaseVideoPost*>(engine::MakeNode(NodeKind::VideoPost, type));
}

void BaseVideoPost::Free(BaseVideoPost*& post) {
  engine::FreeNode(post);
  post = nullptr;
}

MultipassObject* MultipassObject::Alloc(LONG type) {
  return static_cast<MultipassObject*>(engine::MakeNode(NodeKind::Multipass, type));
}

void MultipassObject::Free(MultipassObject*& pass) {
  engine::FreeNode(pass);
  pass = nullptr;
}

RenderData* RenderData::Alloc() {
  return engine::AsRenderData(engine::MakeNode(NodeKind::RenderSettings, Rbase));
}

void RenderData::Free(RenderData*& settings) {
  engine::FreeNode(settings);
  settings = nullptr;
}

BaseVideoPost* RenderData::GetFirstVideoPost() const {
  return static_cast<BaseVideoPost*>(posts_.GetFirst());
}
MultipassObject* RenderData::GetFirstMultipass() const {
  return static_cast<MultipassObject*>(passes_.GetFirst());
}

void RenderData::InsertVideoPost(BaseVideoPost* post, BaseVideoPost* pred) {
  engine::Place(post, this, engine::kAttached, pred ? pred : posts_.GetLast());
}

void RenderData::InsertMultipass(MultipassObject* pass, MultipassObject* pred) {
  engine::Place(pass, this, engine::kPasses, pred ? pred : passes_.GetLast());
}

GvNode* GvNodeMaster::CreateNode(GvNode* parent, LONG id) {
  if (!parent) return nullptr;
  BaseList2D* node = engine::MakeNode(engine::NodeKind::Node, id);
  engine::PutIn(*node, *parent, engine::kChildren, parent->GetDownLast());
  return static_cast<GvNode*>(node);
}

}  // namespace host
