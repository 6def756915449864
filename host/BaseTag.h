// BaseTag, TextureTag, XPressoTag: properties attached to an object, which owns them. Tags of types
// the host does not know are kept as data. Main thread.
#pragma once

#include "host/BaseList2D.h"

namespace host {

class BaseMaterial;
class BaseObject;
class GvNodeMaster;

// Base type and types of tags.
inline constexpr LONG Tbase = 5694;
inline constexpr LONG Tphong = 5612;
inline constexpr LONG Ttexture = 5616;
inline constexpr LONG Tcompositing = 5637;
inline constexpr LONG Texpresso = 1001149;

class BaseTag : public BaseList2D {
 public:
  // A new tag of `type`, owned by the caller until inserted. Ttexture makes a TextureTag and
  // Texpresso an XPressoTag: cast by GetType.
  static BaseTag* Alloc(LONG type);
  // As BaseObject::Free.
  static void Free(BaseTag*& tag);

  BaseTag* GetNext() const { return static_cast<BaseTag*>(GeListNode::GetNext()); }
  BaseTag* GetPred() const { return static_cast<BaseTag*>(GeListNode::GetPred()); }
  // The object that owns the tag, or null.
  BaseObject* GetObject() const;

 protected:
  using BaseList2D::BaseList2D;
  ~BaseTag() = default;

 private:
  friend struct engine::NodeAccess;
};

// Assigns a material to its object.
class TextureTag : public BaseTag {
 public:
  // The material if it lives in the tag's document, else null. `ignoreDocument` is there for the
  // host's signature and changes nothing.
  BaseMaterial* GetMaterial(Bool ignoreDocument = FALSE) const;
  // Null takes the material off. One of another document is kept and reads as none until the tag is
  // in that document.
  void SetMaterial(BaseMaterial* material);

 protected:
  using BaseTag::BaseTag;
  ~TextureTag() = default;

 private:
  friend struct engine::NodeAccess;
  ULLONG material_ = 0;  // identity, 0 for none
};

// An expression: owns a tree of nodes.
class XPressoTag : public BaseTag {
 public:
  // The tag's node tree, owned by the tag; never null.
  GvNodeMaster* GetNodeMaster() const { return master_; }

 protected:
  using BaseTag::BaseTag;
  ~XPressoTag() = default;

 private:
  friend struct engine::NodeAccess;
  GvNodeMaster* master_ = nullptr;
};

}  // namespace host
