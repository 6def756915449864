#include "host/RenderData.h"

#include "engine/scene/NewNodes.h"
#include "engine/scene/NodeFactory.h"
#include "engine/scene/NodeTree.h"
#include "engine/scene/NodeTypes.h"

namespace host {

using engine::NodeKind;

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

}  // namespace host
