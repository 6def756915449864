#include "engine/scene/NodeCopy.h"

#include <utility>
#include <vector>

#include "engine/scene/DocumentBody.h"
#include "engine/scene/JointCopy.h"
#include "engine/scene/NewNodes.h"
#include "engine/scene/NodeFactory.h"
#include "engine/scene/NodeTree.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/TreeWalk.h"

namespace engine {

using host::BaseDocument;
using host::BaseList2D;
using host::GeListNode;
using A = NodeAccess;

namespace {

// One node with its contents, without what it owns; a new identity unless it is kept.
BaseList2D* CopyOne(const BaseList2D& source, const CopyRules& rules) {
  BaseList2D* copy = MakeBare(A::Kind(source), source.GetType());
  CopyContents(source, *copy, rules.withBits);
  A::NBits(*copy) = A::NBits(source);
  if (rules.keepIds) A::Id(*copy) = A::Id(source);
  if (rules.ids) rules.ids->emplace(A::Id(source), A::Id(*copy));
  return copy;
}

// Walks the source and its copy side by side; `root` and `copy` are counterparts and the copy has
// nothing below it yet. Where to go next is asked of the source alone, whose lists are complete.
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

// Rewrites the links of containers of any depth, level by level. What holds none of them stays
// shared with its source. A container of ten levels, each of which holds the next one twice, is a
// few blocks and a thousand ways through them; `done_` keeps that linear.
class LinkFollowing {
 public:
  explicit LinkFollowing(const IdMap& ids) : ids_(ids) {}

  host::BaseContainer Run(const host::BaseContainer& data) {
    levels_.push_back({data, data});
    while (true) {
      while (Step()) {
      }
      Level done = std::move(levels_.back());
      levels_.pop_back();
      if (levels_.empty()) return done.result;
      if (done.nests) done_.emplace(BodyOf(done.source), done.result);
      Put(done.key, done.source, done.result);
    }
  }

 private:
  struct Level {
    host::BaseContainer source;
    host::BaseContainer result;
    host::LONG key = 0;  // in the level above
    host::LONG next = 0;
    bool nests = false;
  };

  // One entry of the last level; false at its end.
  bool Step() {
    Level& level = levels_.back();
    if (level.next == level.source.GetCount()) return false;
    const host::LONG key = level.source.GetIndexId(level.next);
    const host::GeData value = level.source.GetIndexData(level.next++);
    if (value.GetType() == host::DA_ALIASLINK)
      SetLinkId(level.result, key, Mapped(LinkOf(value), ids_));
    if (value.GetType() == host::DA_CONTAINER) {
      level.nests = true;
      Enter(key, value.GetContainer());
    }
    return true;
  }

  void Enter(host::LONG key, const host::BaseContainer& inner) {
    const auto known = done_.find(BodyOf(inner));
    if (known == done_.end()) {
      levels_.push_back({inner, inner, key});
    } else {
      Put(key, inner, known->second);
    }
  }

  void Put(host::LONG key, const host::BaseContainer& source, const host::BaseContainer& result) {
    if (BodyOf(source) == BodyOf(result)) return;
    // Without the old value, which would be compared with the new one down to its last level.
    levels_.back().result.SetData(key, host::GeData());
    levels_.back().result.SetContainer(key, result);
  }

  const IdMap& ids_;
  std::vector<Level> levels_;
  // Containers that hold others, by their bodies: one that is met along many ways is followed once.
  std::unordered_map<const void*, host::BaseContainer> done_;
};

}  // namespace

void CopyContents(const BaseList2D& source, BaseList2D& target, bool withBits) {
  A::Name(target) = source.GetName();
  A::Data(target) = *source.GetDataInstance();
  A::Layer(target) = A::Layer(source);
  if (withBits) ApplyBits(target, source.GetAllBits());
  for (int i = 0; i < 3; ++i) A::Modes(target)[i] = A::Modes(source)[i];
  switch (A::Kind(source)) {
    case NodeKind::Object:
      A::Shape(static_cast<host::BaseObject&>(target)) =
          A::Shape(static_cast<const host::BaseObject&>(source));
      break;
    case NodeKind::TextureTag:
      A::Material(static_cast<host::TextureTag&>(target)) =
          A::Material(static_cast<const host::TextureTag&>(source));
      break;
    case NodeKind::Layer:
      A::Flags(static_cast<host::LayerObject&>(target)) =
          A::Flags(static_cast<const host::LayerObject&>(source));
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

struct JointCopy::Ids {
  IdMap map;
};

JointCopy::JointCopy() : ids_(std::make_unique<Ids>()) {}

JointCopy::~JointCopy() {
  for (BaseList2D* copy : copies_) {
    if (copy) DestroyNode(copy);
  }
}

void JointCopy::Add(const BaseList2D& element) {
  copies_.push_back(CopyTree(element, CopyRules{false, true, &ids_->map}));
}

void JointCopy::FollowLinks(std::size_t number) {
  engine::FollowLinks(*copies_[number], ids_->map);
}

BaseList2D* JointCopy::Take(std::size_t number) { return std::exchange(copies_[number], nullptr); }

void CopyList(const BaseList2D& source, BaseList2D& target, int slot, const CopyRules& rules) {
  for (const GeListNode* node = FirstIn(source, slot); node; node = node->GetNext()) {
    BaseList2D* copy = CopyTree(static_cast<const BaseList2D&>(*node), rules);
    PutIn(*copy, target, slot, LastIn(target, slot));
  }
}

OwnedDocument CopyOf(const BaseDocument& doc) { return CopyDocument(doc, true); }

OwnedDocument CopyDocument(const BaseDocument& source, bool keepIds) {
  OwnedDocument owned(MakeBareDocument());
  BaseDocument* const copy = owned.get();
  DocumentBody& to = BodyOf(*copy);
  const DocumentBody& from = BodyOf(source);
  // The table was given the identity that the document was born with.
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
  // Building the copy has marked it as changed.
  to.changed = from.changed;
  A::Camera(to.view) = Mapped(A::Camera(from.view), ids);
  to.editorView = from.editorView;
  to.activeSettings = AsRenderData(to.table.Find(Mapped(A::Id(*from.activeSettings), ids)));
  // Putting the copies into their places has named the selected ones in the order of the scene.
  // Named once more in the order of selecting, the later mention counts.
  for (const BaseList2D* node : from.selectedObjects.InOrder(from.table))
    to.selectedObjects.Add(Mapped(A::Id(*node), ids), to.table);
  for (const BaseList2D* node : from.selectedTags.InOrder(from.table))
    to.selectedTags.Add(Mapped(A::Id(*node), ids), to.table);
  return owned;
}

void FollowLinks(BaseList2D& root, const IdMap& ids) {
  for (GeListNode* node = &root; node; node = NextInside(*node, root)) {
    BaseList2D& element = static_cast<BaseList2D&>(*node);
    A::Layer(element) = Mapped(A::Layer(element), ids);
    if (host::TextureTag* tag = AsTextureTag(node))
      A::Material(*tag) = Mapped(A::Material(*tag), ids);
    const host::BaseContainer data = LinkFollowing(ids).Run(A::Data(element));
    if (BodyOf(data) != BodyOf(A::Data(element))) A::Data(element) = data;
  }
}

}  // namespace engine
