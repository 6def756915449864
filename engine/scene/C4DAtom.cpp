#include "host/C4DAtom.h"

#include "engine/scene/DocumentBody.h"
#include "engine/scene/DocumentListener.h"
#include "engine/scene/NodeCopy.h"
#include "engine/scene/NodeFactory.h"
#include "engine/scene/NodeTree.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/Ownership.h"
#include "host/AtomArray.h"
#include "host/Plugins.h"

namespace host {

using engine::NodeKind;
using A = engine::NodeAccess;

namespace {

LONG BaseTypeOf(NodeKind kind) {
  switch (kind) {
    case NodeKind::Document:
      return Tbasedocument;
    case NodeKind::Object:
      return Obase;
    case NodeKind::Tag:
    case NodeKind::TextureTag:
    case NodeKind::XPressoTag:
      return Tbase;
    case NodeKind::Material:
      return Mbase;
    case NodeKind::Shader:
      return Xbase;
    case NodeKind::Layer:
      return Olayer;
    case NodeKind::RenderSettings:
      return Rbase;
    case NodeKind::VideoPost:
      return VPbase;
    case NodeKind::Multipass:
      return Zmultipass;
    case NodeKind::NodeMaster:
    case NodeKind::Node:
      return GVbase;
  }
  return 0;
}

// Every element is a named one: the classes between exist for the published interface.
BaseList2D& Element(C4DAtom& atom) { return static_cast<BaseList2D&>(atom); }
const BaseList2D& Element(const C4DAtom& atom) { return static_cast<const BaseList2D&>(atom); }

// CopyTo replaces more than the contents: shaders, and all that render settings and expressions
// consist of. The target's own are destroyed without asking undo, which has the element as it was
// where somebody registered the change.
void CopyOwned(const BaseList2D& source, BaseList2D& target, bool withBits) {
  const NodeKind kind = A::Kind(source);
  const bool whole = kind == NodeKind::RenderSettings || kind == NodeKind::XPressoTag;
  engine::IdMap ids;
  for (int slot = engine::kShaders; slot <= (whole ? engine::kPasses : engine::kShaders); ++slot) {
    while (GeListNode* old = engine::FirstIn(target, slot)) {
      engine::TakeOut(*old);
      engine::DestroyNode(static_cast<BaseList2D*>(old));
    }
    engine::CopyList(source, target, slot, engine::CopyRules{false, withBits, &ids});
  }
  // Links among what was copied lead to the copies, all others where they led before.
  if (!ids.empty()) engine::FollowLinks(target, ids);
}

}  // namespace

Bool C4DAtom::IsInstanceOf(LONG type) const {
  return type == type_ || type == BaseTypeOf(A::Kind(*this));
}

C4DAtom* C4DAtom::GetClone(LONG flags, AliasTrans*) {
  if (A::Kind(*this) == NodeKind::Document) {
    return engine::CopyDocument(static_cast<const BaseDocument&>(*this),
                                (flags & COPY_DOCUMENT) != 0)
        .release();
  }
  engine::IdMap ids;
  BaseList2D* copy =
      engine::CopyTree(Element(*this), engine::CopyRules{false, (flags & COPY_NO_BITS) == 0, &ids});
  engine::FollowLinks(*copy, ids);
  return copy;
}

// Only between elements of one class and type: data of another type would mean something else.
Bool C4DAtom::CopyTo(C4DAtom* dst, LONG flags, AliasTrans*) {
  if (!dst || dst->kind_ != kind_ || dst->type_ != type_) return FALSE;
  if (dst == this) return TRUE;
  const bool withBits = (flags & COPY_NO_BITS) == 0;
  engine::CopyContents(Element(*this), Element(*dst), withBits);
  CopyOwned(Element(*this), Element(*dst), withBits);
  engine::Touch(Element(*dst));
  return TRUE;
}

Bool C4DAtom::GetParameter(const DescID& id, GeData& value, LONG) const {
  return Element(*this).GetDataInstance()->GetParameter(id, value);
}

Bool C4DAtom::SetParameter(const DescID& id, const GeData& value, LONG) {
  if (!Element(*this).GetDataInstance()->SetParameter(id, value)) return FALSE;
  engine::Touch(Element(*this));
  return TRUE;
}

// Every element takes MSG_UPDATE, by which a plug-in says that it has written into its data; only
// documents have somebody who listens to others.
Bool C4DAtom::Message(LONG type, void* data) {
  BaseDocument* doc = Element(*this).GetDocument();
  if (!doc) return FALSE;
  if (type == MSG_UPDATE) engine::Touch(Element(*this));
  if (A::Kind(*this) != NodeKind::Document) return type == MSG_UPDATE;
  engine::DocumentListener* listener = engine::BodyOf(*doc).listener.get();
  const Bool taken = listener && listener->Message(*doc, type, data);
  return taken || type == MSG_UPDATE;
}

AtomArray* AtomArray::Alloc() { return new AtomArray; }

void AtomArray::Free(AtomArray*& array) {
  delete array;
  array = nullptr;
}

C4DAtom* AtomArray::GetIndex(LONG index) const {
  return index >= 0 && index < GetCount() ? atoms_[static_cast<std::size_t>(index)] : nullptr;
}

void AtomArray::Append(C4DAtom* atom) { atoms_.push_back(atom); }

}  // namespace host
