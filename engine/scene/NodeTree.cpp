#include "engine/scene/NodeTree.h"

#include "engine/scene/DocumentBody.h"
#include "engine/scene/NodeFactory.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/TreeWalk.h"

namespace engine {

using host::BaseDocument;
using host::BaseList2D;
using host::BaseObject;
using host::GeListHead;
using host::GeListNode;
using A = NodeAccess;

namespace {

// Both null where the owner has no such list. A list is known by its two ends, wherever the owner's
// class keeps them.
struct Ends {
  GeListNode** first = nullptr;
  GeListNode** last = nullptr;
};

Ends EndsOf(GeListHead& head) { return {&A::First(head), &A::Last(head)}; }

Ends AttachedEnds(BaseList2D& owner) {
  switch (A::Kind(owner)) {
    case NodeKind::Object:
      return {&A::Kin(owner), &A::LastTag(static_cast<BaseObject&>(owner))};
    case NodeKind::RenderSettings:
      return EndsOf(A::Posts(static_cast<host::RenderData&>(owner)));
    default:
      return {};
  }
}

Ends EndsOf(BaseList2D& owner, int slot) {
  const NodeKind kind = A::Kind(owner);
  const bool isDocument = kind == NodeKind::Document;
  switch (slot) {
    case kShaders:
      return EndsOf(A::Shaders(owner));
    case kAttached:
      return AttachedEnds(owner);
    case kPasses:
      return kind == NodeKind::RenderSettings
                 ? EndsOf(A::Passes(static_cast<host::RenderData&>(owner)))
                 : Ends{};
    case kChildren:
      return {&A::Down(owner), &A::DownLast(owner)};
    default:
      break;
  }
  if (!isDocument) return {};
  DocumentBody& body = BodyOf(static_cast<BaseDocument&>(owner));
  GeListHead* heads[] = {&body.layers, &body.renderSettings, &body.materials, &body.objects};
  return EndsOf(*heads[slot - kLayers]);
}

GeListNode* MasterOf(const GeListNode& node) {
  return static_cast<const host::XPressoTag&>(node).GetNodeMaster();
}

void Unregister(GeListNode& node, BaseDocument& doc) {
  BodyOf(doc).table.Remove(A::Id(node));
  if (A::Bits(static_cast<BaseList2D&>(node)) & host::BIT_ACTIVE) ++BodyOf(doc).selectionChanges;
  A::Document(node) = nullptr;
}

// Registers nothing when it throws. An identity that the document has already, as when an element
// gets from one opening of a file into another, is replaced by a new one. An element that comes in
// selected is the one selected last.
void Register(GeListNode& node, BaseDocument& doc) {
  DocumentBody& body = BodyOf(doc);
  BaseList2D& element = static_cast<BaseList2D&>(node);
  if (!body.table.Add(A::Id(node), &element)) {
    A::Id(node) = NodeIds::Instance().Next();
    body.table.Add(A::Id(node), &element);
  }
  A::Document(node) = &doc;
  const host::LONG bits = A::Bits(element);
  if (!(bits & host::BIT_ACTIVE)) return;
  A::Bits(element) &= ~host::BIT_ACTIVE;
  try {
    ApplyBits(element, bits);
  } catch (...) {
    A::Bits(element) = bits;
    Unregister(node, doc);
    throw;
  }
}

void UnregisterAll(GeListNode& root, BaseDocument& doc) {
  DocumentBody& body = BodyOf(doc);
  if (A::Kind(root) == NodeKind::Object) ++body.treeChanges;
  for (GeListNode* node = &root; node; node = NextInside(*node, root)) Unregister(*node, doc);
  ++body.changes;
  body.changed = true;
}

void RegisterAll(GeListNode& root, BaseDocument& doc) {
  if (A::Kind(root) == NodeKind::Object) ++BodyOf(doc).treeChanges;
  GeListNode* node = &root;
  try {
    for (; node; node = NextInside(*node, root)) Register(*node, doc);
  } catch (...) {
    // Out of memory: what has been registered leaves again.
    for (GeListNode* done = &root; done != node; done = NextInside(*done, root))
      Unregister(*done, doc);
    throw;
  }
}

// A document always has render settings, one of them active. Called while the last ones are still
// there, which the fresh ones come behind.
void KeepSettings(GeListNode& leaving, BaseDocument& doc) {
  GeListHead& list = BodyOf(doc).renderSettings;
  if (list.GetFirst() != &leaving || list.GetLast() != &leaving) return;
  host::RenderData* fresh = host::RenderData::Alloc();
  PutIn(*fresh, doc, kSettings, &leaving);
  if (BodyOf(doc).undo) BodyOf(doc).undo->Made(*fresh);
}

void KeepActiveSettings(BaseDocument& doc) {
  DocumentBody& body = BodyOf(doc);
  if (body.activeSettings && body.activeSettings->GetDocument() == &doc) return;
  body.activeSettings = doc.GetFirstRenderData();
}

void Unlink(GeListNode& node, const Ends& ends) {
  if (!ends.first || !ends.last) return;
  GeListNode* next = node.GetNext();
  GeListNode* pred = node.GetPred();
  (pred ? A::Next(*pred) : *ends.first) = next;
  (next ? A::Pred(*next) : *ends.last) = pred;
  A::Next(node) = A::Pred(node) = A::Up(node) = nullptr;
}

void Link(GeListNode& node, const Ends& ends, GeListNode* pred) {
  if (!ends.first || !ends.last) return;
  GeListNode* next = pred ? pred->GetNext() : *ends.first;
  A::Pred(node) = pred;
  A::Next(node) = next;
  (pred ? A::Next(*pred) : *ends.first) = &node;
  (next ? A::Pred(*next) : *ends.last) = &node;
}

// The member kin_ is two things: of an object its first tag, of all others the element that they
// are attached to.
bool OwnsItsKin(NodeKind kind) { return kind == NodeKind::Object; }

// Nothing hangs below a leaf or below what is of another document or of none, which keeps building
// a deep chain from its top and putting copies into it linear.
bool HangsBelow(const GeListNode& owner, const GeListNode& node) {
  if (&owner == &node) return true;
  if (!node.GetDown() || node.GetDocument() != owner.GetDocument()) return false;
  for (const GeListNode* above = &owner; above; above = OwnerOf(*above)) {
    if (above == &node) return true;
  }
  return false;
}

}  // namespace

GeListNode* FirstIn(const GeListNode& owner, int slot) {
  const NodeKind kind = A::Kind(owner);
  switch (slot) {
    case kShaders:
      return A::Shaders(static_cast<const BaseList2D&>(owner)).GetFirst();
    case kAttached:
      if (kind == NodeKind::Object) return A::Kin(owner);
      if (kind == NodeKind::XPressoTag) return MasterOf(owner);
      return kind == NodeKind::RenderSettings
                 ? A::Posts(static_cast<const host::RenderData&>(owner)).GetFirst()
                 : nullptr;
    case kPasses:
      return kind == NodeKind::RenderSettings
                 ? A::Passes(static_cast<const host::RenderData&>(owner)).GetFirst()
                 : nullptr;
    case kChildren:
      return owner.GetDown();
    default:
      return kind == NodeKind::Document
                 ? *EndsOf(const_cast<BaseList2D&>(static_cast<const BaseList2D&>(owner)), slot)
                        .first
                 : nullptr;
  }
}

GeListNode* LastIn(BaseList2D& owner, int slot) {
  const Ends ends = EndsOf(owner, slot);
  return ends.last ? *ends.last : FirstIn(owner, slot);
}

BaseList2D* OwnerOf(const GeListNode& node) {
  if (node.GetUp()) return static_cast<BaseList2D*>(node.GetUp());
  switch (A::Kind(node)) {
    case NodeKind::Document:
      return nullptr;
    case NodeKind::Object:
    case NodeKind::Material:
    case NodeKind::Layer:
    case NodeKind::RenderSettings:
      return node.GetDocument();
    default:
      return static_cast<BaseList2D*>(A::Kin(node));
  }
}

int SlotOf(const GeListNode& node) {
  if (node.GetUp()) return kChildren;
  switch (A::Kind(node)) {
    case NodeKind::Shader:
      return kShaders;
    case NodeKind::Multipass:
      return kPasses;
    case NodeKind::Layer:
      return kLayers;
    case NodeKind::RenderSettings:
      return kSettings;
    case NodeKind::Material:
      return kMaterials;
    case NodeKind::Object:
      return kObjects;
    case NodeKind::Node:
      return kChildren;
    default:
      return kAttached;
  }
}

GeListNode* FirstInside(const GeListNode& node) {
  const int slots = A::Kind(node) == NodeKind::Document ? kSlots : kLayers;
  for (int slot = 0; slot < slots; ++slot) {
    if (GeListNode* first = FirstIn(node, slot)) return first;
  }
  return nullptr;
}

GeListNode* Following(const GeListNode& node) {
  if (node.GetNext()) return node.GetNext();
  const GeListNode* owner = OwnerOf(node);
  const int slots = A::Kind(*owner) == NodeKind::Document ? kSlots : kLayers;
  for (int slot = SlotOf(node) + 1; slot < slots; ++slot) {
    if (GeListNode* first = FirstIn(*owner, slot)) return first;
  }
  return nullptr;
}

GeListNode* NextInside(const GeListNode& node, const GeListNode& root) {
  if (GeListNode* first = FirstInside(node)) return first;
  for (const GeListNode* at = &node; at != &root; at = OwnerOf(*at)) {
    if (GeListNode* following = Following(*at)) return following;
  }
  return nullptr;
}

GeListNode* NextInTree(const GeListNode* node, const GeListNode* root) {
  if (node->GetDown()) return node->GetDown();
  for (; node && node != root; node = node->GetUp()) {
    if (node->GetNext()) return node->GetNext();
  }
  return nullptr;
}

namespace {

// Takes a node out of a list of `owner`; in the document it stays.
void Detach(GeListNode& node, BaseList2D& owner, int slot) {
  if (A::Kind(owner) == NodeKind::XPressoTag && slot == kAttached) {
    A::Master(static_cast<host::XPressoTag&>(owner)) = nullptr;
  } else {
    Unlink(node, EndsOf(owner, slot));
  }
  if (!OwnsItsKin(A::Kind(node))) A::Kin(node) = nullptr;
}

}  // namespace

void PutIn(GeListNode& node, BaseList2D& owner, int slot, GeListNode* pred) {
  const NodeKind kind = A::Kind(owner);
  // The published GetUp tells parents only: the root of an expression has none, nor has what stands
  // at the top of a document.
  if (slot == kChildren && kind != NodeKind::NodeMaster) {
    A::Up(node) = &owner;
  } else if (!OwnsItsKin(A::Kind(node))) {
    A::Kin(node) = &owner;
  }
  if (kind == NodeKind::XPressoTag && slot == kAttached) {
    A::Master(static_cast<host::XPressoTag&>(owner)) = static_cast<host::GvNodeMaster*>(&node);
  } else {
    Link(node, EndsOf(owner, slot), pred);
  }
  try {
    if (BaseDocument* doc = owner.GetDocument()) RegisterAll(node, *doc);
  } catch (...) {
    Detach(node, owner, slot);
    throw;
  }
  Touch(owner);
}

// Settings are seen to twice: that others are there before the last ones leave, and that the active
// ones are of this document afterwards.
void TakeOut(GeListNode& node) {
  BaseList2D* owner = OwnerOf(node);
  if (!owner) return;
  BaseDocument* doc = node.GetDocument();
  const int slot = SlotOf(node);
  if (slot == kSettings) KeepSettings(node, *doc);
  Detach(node, *owner, slot);
  if (!doc) return;
  UnregisterAll(node, *doc);
  if (A::Kind(node) == NodeKind::RenderSettings) KeepActiveSettings(*doc);
}

// The place after `pred` is only looked for once the node has left its own.
bool Place(BaseList2D* node, BaseList2D* owner, int slot, GeListNode* pred) {
  if (!node || !owner || pred == node || HangsBelow(*owner, *node)) return false;
  TakeOut(*node);
  const bool fits = pred && OwnerOf(*pred) == owner && SlotOf(*pred) == slot;
  PutIn(*node, *owner, slot, fits ? pred : nullptr);
  return true;
}

void ApplyBits(BaseList2D& node, host::LONG bits) {
  const bool changes = (bits ^ A::Bits(node)) & host::BIT_ACTIVE;
  if (changes && node.GetDocument()) {
    DocumentBody& body = BodyOf(*node.GetDocument());
    const bool selects = bits & host::BIT_ACTIVE;
    if (selects && A::Kind(node) == NodeKind::Object)
      body.selectedObjects.Add(A::Id(node), body.table);
    if (selects && AsTag(&node)) body.selectedTags.Add(A::Id(node), body.table);
    ++body.selectionChanges;
  }
  A::Bits(node) = bits;
}

}  // namespace engine
