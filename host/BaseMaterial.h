// BaseMaterial and BaseShader: surfaces and what colors them. The document owns its materials, an
// element the shaders attached to it, a shader its child shaders. Main thread.
#pragma once

#include "host/BaseList2D.h"

namespace host {

// Base types and types of materials and shaders.
inline constexpr LONG Mbase = 5702;
inline constexpr LONG Mmaterial = 5703;
inline constexpr LONG Xbase = 5707;
inline constexpr LONG Xcolor = 5832;
inline constexpr LONG Xbitmap = 5833;
inline constexpr LONG Xlayer = 1011123;
inline constexpr LONG Xfusion = 1011109;

class BaseMaterial : public BaseList2D {
 public:
  // A new material, owned by the caller until inserted. Types that the host does not know are kept
  // as data.
  static BaseMaterial* Alloc(LONG type);
  // As BaseObject::Free.
  static void Free(BaseMaterial*& material);

  BaseMaterial* GetNext() const { return static_cast<BaseMaterial*>(GeListNode::GetNext()); }
  BaseMaterial* GetPred() const { return static_cast<BaseMaterial*>(GeListNode::GetPred()); }

 protected:
  using BaseList2D::BaseList2D;
  ~BaseMaterial() = default;

 private:
  friend struct engine::NodeAccess;
};

class BaseShader : public BaseList2D {
 public:
  // A new shader of `type`, owned by the caller until inserted.
  static BaseShader* Alloc(LONG type);
  // As BaseObject::Free.
  static void Free(BaseShader*& shader);

  // Neighbors among the shaders of one owner; up and down among shaders that hold shaders.
  BaseShader* GetNext() const { return static_cast<BaseShader*>(GeListNode::GetNext()); }
  BaseShader* GetPred() const { return static_cast<BaseShader*>(GeListNode::GetPred()); }
  BaseShader* GetUp() const { return static_cast<BaseShader*>(GeListNode::GetUp()); }
  BaseShader* GetDown() const { return static_cast<BaseShader*>(GeListNode::GetDown()); }
  // Puts this shader (owned by nobody) as last child below `parent`.
  void InsertUnderLast(BaseShader* parent);

 protected:
  using BaseList2D::BaseList2D;
  ~BaseShader() = default;

 private:
  friend struct engine::NodeAccess;
};

}  // namespace host
