#include "engine/scene/NodeCopy.h"

#include "engine/scene/DocumentBody.h"
#include "engine/scene/NodeFactory.h"
#include "engine/scene/NodeTree.h"

namespace engine {

using host::BaseDocument;
using host::BaseList2D;
using host::GeListNode;
using A = NodeAccess;

namespace {

BaseList2D* CopyOne(const BaseList2D& source, const CopyRules& rules) {
  BaseList2D* copy = MakeBare(A::Kind(source), source.GetType());
  CopyContents(source, *copy, rules.withBits);
  A::NBits(*copy) = A::NBits(source);
  if (rules.keepIds) A::Id(*copy) = A::Id(source);
  if (rules.ids) rules.ids->emplace(A::Id(source), A::Id(*copy));
  return copy;
}

// Walks the source and its copy side by side; `root` and `copy` are counterparts and the copy has nothing below it yet.
void CopyBelow(const BaseList2D& root, BaseList2D& copy, const CopyRules& rules) {
  const GeListNode* from = &root;
  BaseList2D* to = &copy;
  const auto append = [&](const GeListNode* node, BaseList2D& owner) {
    to = CopyOne(static_cast<const BaseList2D&>(*node), rules);
    const int slot = SlotOf(*node);
    PutIn(*to, owner, slot, LastIn(owner, slot));
    from = node;
  };
  while (true) {
    if (const GeListNode* inside = FirstInside(*from)) {
      append(inside, *to);
      continue;
    }
    const GeListNode* following = nullptr;
    while (from != &root && !(following = Following(*from))) {
      from = OwnerOf(*from);
      to = OwnerOf(*to);
    }
    if (from == &root) return;
    append(following, *OwnerOf(*to));
  }
}

NodeId Mapped(NodeId id, const IdMap& ids) {
  const auto found = ids.find(id);
  return found == ids.end() ? id : found->second;
}

bool PointsInto(const host::BaseContainer& data, const IdMap& ids) {
  bool points = false;
  ForEachEntry(data, [&](host::LONG, const host::GeData& value) {
    if (value.GetType() == host::DA_ALIASLINK) points = points || ids.count(LinkOf(value)) > 0;
    if (value.GetType() == host::DA_CONTAINER) points = points || PointsInto(value.GetContainer(), ids);
  });
  return points;
}

host::BaseContainer Followed(const host::BaseContainer& data, const IdMap& ids) {
  host::BaseContainer result = data;
  ForEachEntry(data, [&](host::LONG key, const host::GeData& value) {
    if (value.GetType() == host::DA_ALIASLINK) SetLinkId(result, key, Mapped(LinkOf(value), ids));
    if (value.GetType() != host::DA_CONTAINER) return;
    const host::BaseContainer inner = value.GetContainer();
    if (PointsInto(inner, ids)) result.SetContainer(key, Followed(inner, ids));
  });
  return result;
}

}  // namespace

void CopyContents(const BaseList2D& source, BaseList2D& target, bool withBits) {
  A::Name(target) = source.GetName();
  A::Data(target) = *source.GetDataInstance();
  A::Layer(target) = A::Layer(source);
  if (withBits) ApplyBits(target, source.GetAllBits());
  for (int i = 0; i < 3; ++i) A::Modes(target)[i] = A::Modes(source)[i];
  switch (A::Kind(source)) {
    case NodeKind::Object:
      A::Shape(static_cast<host::BaseObject&>(target)) = A::Shape(static_cast<const host::BaseObject&>(source));
      break;
    case NodeKind::TextureTag:
      A::Material(static_cast<host::TextureTag&>(target)) = A::Material(static_cast<const host::TextureTag&>(source));
      break;
    case NodeKind::Layer:
      A::Flags(static_cast<host::LayerObject&>(target)) = A::Flags(static_cast<const host::LayerObject&>(source));
      break;
    default:
      break;
  }
}

BaseList2D* CopyTree(const BaseList2D& root, const CopyRules& rules) {
  BaseList2D* copy = CopyOne(root, rules);
  CopyBelow(root, *copy, rules);
  return copy;
}

void CopyList(const BaseList2D& source, BaseList2D& target, int slot, const CopyRules& rules) {
  for (const GeListNode* node = FirstIn(source, slot); node; node = node->GetNext()) {
    BaseList2D* copy = CopyTree(static_cast<const BaseList2D&>(*node), rules);
    PutIn(*copy, target, slot, LastIn(target, slot));
  }
}

BaseDocument* CopyDocument(const BaseDocument& source, bool keepIds) {
  BaseDocument* copy = MakeBareDocument();
  DocumentBody& to = BodyOf(*copy);
  const DocumentBody& from = BodyOf(source);
  if (keepIds) {
    to.table.Remove(A::Id(*copy));
    A::Id(*copy) = A::Id(source);
    to.table.Add(A::Id(*copy), copy);
  }
  IdMap ids{{A::Id(source), A::Id(*copy)}};
  CopyContents(source, *copy, true);
  A::NBits(*copy) = A::NBits(source);
  CopyBelow(source, *copy, CopyRules{keepIds, true, keepIds ? nullptr : &ids});
  if (!keepIds) FollowLinks(*copy, ids);
  to.path = from.path;
  to.fps = from.fps;
  to.kept = from.kept;
  to.embedded = from.embedded;
  to.changed = from.changed;
  A::Camera(to.view) = Mapped(A::Camera(from.view), ids);
  to.activeSettings = AsRenderData(to.table.Find(Mapped(A::Id(*from.activeSettings), ids)));
  for (const BaseList2D* node : from.selectedObjects.InOrder(from.table))
    to.selectedObjects.Add(Mapped(A::Id(*node), ids), to.table);
  for (const BaseList2D* node : from.selectedTags.InOrder(from.table)) to.selectedTags.Add(Mapped(A::Id(*node), ids), to.table);
  return copy;
}

void FollowLinks(BaseList2D& root, const IdMap& ids) {
  for (GeListNode* node = &root; node; node = NextInside(*node, root)) {
    BaseList2D& element = static_cast<BaseList2D&>(*node);
    A::Layer(element) = Mapped(A::Layer(element), ids);
    if (host::TextureTag* tag = AsTextureTag(node)) A::Material(*tag) = Mapped(A::Material(*tag), ids);
    if (PointsInto(A::Data(element), ids)) A::Data(element) = Followed(A::Data(element), ids);
  }
}

}  // namespace engine
