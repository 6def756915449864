// BaseObject: a thing placed in the scene: null, polygon mesh, primitive, camera, light. It owns
// its tags and its children. Main thread.
#pragma once

#include <memory>

#include "host/BaseTag.h"

namespace engine {
struct Mesh;
struct ObjectShape;
}  // namespace engine

namespace host {

// Base type and types of objects.
inline constexpr LONG Obase = 5155;
inline constexpr LONG Onull = 5140;
inline constexpr LONG Opolygon = 5100;
inline constexpr LONG Olight = 5102;
inline constexpr LONG Ocamera = 5103;
inline constexpr LONG Ocube = 5159;
inline constexpr LONG Osphere = 5160;
inline constexpr LONG Ocone = 5162;
inline constexpr LONG Otorus = 5163;
inline constexpr LONG Odisc = 5164;
inline constexpr LONG Oplane = 5168;
inline constexpr LONG Ocylinder = 5170;

// Editor and render modes. Undefined follows the parent; a top-level undefined is on. Any other
// number that is set counts as undefined.
inline constexpr LONG MODE_ON = 0;
inline constexpr LONG MODE_OFF = 1;
inline constexpr LONG MODE_UNDEF = 2;

class BaseObject : public BaseList2D {
 public:
  // A new object of `type`, owned by the caller until inserted. Types the host does not know are
  // allowed and carry data only. Modes start undefined, undefined and on.
  static BaseObject* Alloc(LONG type);
  // Takes the object out of its place and destroys it with all below it; null is allowed. One
  // registered for undo (type 45) is parked in its undo step instead. `op` is null afterwards.
  static void Free(BaseObject*& op);

  BaseObject* GetNext() const { return static_cast<BaseObject*>(GeListNode::GetNext()); }
  BaseObject* GetPred() const { return static_cast<BaseObject*>(GeListNode::GetPred()); }
  BaseObject* GetUp() const { return static_cast<BaseObject*>(GeListNode::GetUp()); }
  BaseObject* GetDown() const { return static_cast<BaseObject*>(GeListNode::GetDown()); }

  LONG GetEditorMode() const { return modes_[0]; }
  void SetEditorMode(LONG mode);
  LONG GetRenderMode() const { return modes_[1]; }
  void SetRenderMode(LONG mode);
  // Generators only have an effect: off switches them off.
  Bool GetDeformMode() const { return modes_[2] != 0; }
  void SetDeformMode(Bool mode);

  // Frame relative to the parent, and in the world. GetMg is the product of the frames of all
  // parents: O(depth), so keep it where it is asked more than once. There is no setter for the
  // world's frame.
  Matrix GetMl() const;
  void SetMl(const Matrix& matrix);
  Matrix GetMg() const;

  // First tag, or null; the others follow by GetNext. The first one of a type, or null. An object
  // may have several tags of one type.
  BaseTag* GetFirstTag() const { return static_cast<BaseTag*>(kin_); }
  BaseTag* GetTag(LONG type) const;
  // Makes a tag of `type` and appends it, or puts it after `pred`. Owned by the object. No undo is
  // registered: AddUndo(UNDO_NEW, tag) afterwards, in the open group.
  BaseTag* MakeTag(LONG type, BaseTag* pred = nullptr);
  // Takes ownership of `tag`.
  void InsertTag(BaseTag* tag, BaseTag* pred = nullptr);

  // Puts this object (owned by nobody) as first or last child below `parent`, or beside
  // `neighbor`. Null, itself and one of its own children as parent change nothing.
  void InsertUnder(BaseObject* parent);
  void InsertUnderLast(BaseObject* parent);
  void InsertAfter(BaseObject* neighbor);

 protected:
  using BaseList2D::BaseList2D;
  ~BaseObject() = default;

 private:
  friend struct engine::NodeAccess;
  GeListNode* lastTag_ = nullptr;
  // Frame and geometry, shared by copies; null: the identity, none
  std::shared_ptr<const engine::ObjectShape> shape_;
};

}  // namespace host
