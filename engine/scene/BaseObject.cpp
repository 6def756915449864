#include "host/BaseObject.h"

#include "engine/scene/DocumentBody.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/NewNodes.h"
#include "engine/scene/NodeFactory.h"
#include "engine/scene/NodeTree.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/TreeWalk.h"
#include "engine/scene/Vectors.h"

namespace engine {

using host::BaseObject;
using A = NodeAccess;

const std::shared_ptr<const Mesh>& MeshOf(const BaseObject& object) {
  static const std::shared_ptr<const Mesh> none;
  const auto& shape = A::Shape(object);
  return shape ? shape->mesh : none;
}

void SetMesh(BaseObject& object, std::shared_ptr<const Mesh> mesh) {
  if (MeshOf(object) == mesh) return;
  // The former shape may be shared with copies and undo steps, and stays as it is.
  auto shape = std::make_shared<ObjectShape>();
  shape->frame = object.GetMl();
  shape->mesh = std::move(mesh);
  A::Shape(object) = std::move(shape);
  Touch(object);
}

}  // namespace engine

namespace host {

using A = engine::NodeAccess;

namespace {

// Mode `value` into switch `index`; nothing happens where it is set already.
void SetMode(BaseObject& object, int index, LONG value) {
  UCHAR& mode = A::Modes(object)[index];
  if (mode == value) return;
  mode = static_cast<UCHAR>(value);
  engine::Touch(object);
}

}  // namespace

BaseObject* BaseObject::Alloc(LONG type) {
  return engine::AsObject(engine::MakeNode(engine::NodeKind::Object, type));
}

void BaseObject::Free(BaseObject*& op) {
  engine::FreeNode(op);
  op = nullptr;
}

void BaseObject::SetEditorMode(LONG mode) { SetMode(*this, 0, engine::ValidMode(mode)); }
void BaseObject::SetRenderMode(LONG mode) { SetMode(*this, 1, engine::ValidMode(mode)); }
void BaseObject::SetDeformMode(Bool mode) { SetMode(*this, 2, mode ? 1 : 0); }

Matrix BaseObject::GetMl() const { return shape_ ? shape_->frame : Matrix(); }

void BaseObject::SetMl(const Matrix& matrix) {
  if (GetMl() == matrix) return;
  auto shape = std::make_shared<engine::ObjectShape>();
  shape->frame = matrix;
  if (shape_) shape->mesh = shape_->mesh;
  shape_ = std::move(shape);
  engine::Touch(*this);
}

// From the inside out; parents that were never moved have no shape and change nothing.
Matrix BaseObject::GetMg() const {
  Matrix frame = GetMl();
  for (const BaseObject* parent = GetUp(); parent; parent = parent->GetUp()) {
    if (parent->shape_) frame = engine::Combined(parent->shape_->frame, frame);
  }
  return frame;
}

BaseTag* BaseObject::GetTag(LONG type) const {
  BaseTag* tag = GetFirstTag();
  while (tag && tag->GetType() != type) tag = tag->GetNext();
  return tag;
}

BaseTag* BaseObject::MakeTag(LONG type, BaseTag* pred) {
  BaseTag* tag = BaseTag::Alloc(type);
  InsertTag(tag, pred);
  return tag;
}

void BaseObject::InsertTag(BaseTag* tag, BaseTag* pred) {
  engine::Place(tag, this, engine::kAttached, pred ? pred : lastTag_);
}

void BaseObject::InsertUnder(BaseObject* parent) {
  engine::Place(this, parent, engine::kChildren, nullptr);
}

void BaseObject::InsertUnderLast(BaseObject* parent) {
  if (parent) engine::Place(this, parent, engine::kChildren, parent->GetDownLast());
}

// A neighbor that is in no place has no owner: the object stays where it is.
void BaseObject::InsertAfter(BaseObject* neighbor) {
  BaseList2D* owner = neighbor ? engine::OwnerOf(*neighbor) : nullptr;
  if (owner) engine::Place(this, owner, engine::SlotOf(*neighbor), neighbor);
}

}  // namespace host
