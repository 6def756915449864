#include "engine/undo/UndoEntry.h"

#include <algorithm>

#include "engine/scene/NodeCopy.h"
#include "engine/scene/NodeTree.h"
#include "engine/scene/ObjectShape.h"
#include "engine/undo/KeptLists.h"

namespace engine {

using host::BaseDocument;
using host::BaseList2D;
using host::GeListNode;
using A = NodeAccess;

namespace {

struct NodePlace {
  NodeId owner = 0;
  NodeId pred = 0;
  NodeId next = 0;
  int slot = 0;
};

// A node in no place and the place it had; null while the node is in the scene.
struct ParkedNode {
  BaseList2D* node = nullptr;
  NodePlace place;
  bool moves = false;  // the node is always in the scene; what is kept is another place of it

  ParkedNode() = default;
  ParkedNode(const ParkedNode&) = delete;
  ParkedNode& operator=(const ParkedNode&) = delete;
  ~ParkedNode() { DestroyNode(node); }
};

std::vector<BaseList2D*> Copies(const BaseList2D& settings, int slot) {
  std::vector<BaseList2D*> copies;
  for (const GeListNode* node = FirstIn(settings, slot); node; node = node->GetNext()) {
    copies.push_back(
        CopyTree(static_cast<const BaseList2D&>(*node), CopyRules{true, true, nullptr}));
  }
  return copies;
}

void ExchangeList(BaseList2D& settings, int slot, std::vector<BaseList2D*>& kept) {
  std::vector<BaseList2D*> live;
  while (GeListNode* node = FirstIn(settings, slot)) {
    TakeOut(*node);
    live.push_back(static_cast<BaseList2D*>(node));
  }
  for (BaseList2D* node : kept) PutIn(*node, settings, slot, LastIn(settings, slot));
  kept = std::move(live);
}

std::shared_ptr<void> ListsOf(const BaseList2D& settings) {
  auto lists = std::make_shared<KeptLists>();
  lists->posts = Copies(settings, kAttached);
  lists->passes = Copies(settings, kPasses);
  return lists;
}

std::shared_ptr<void> RestOf(BaseList2D& node) {
  switch (A::Kind(node)) {
    case NodeKind::Object:
      return std::const_pointer_cast<ObjectShape>(A::Shape(static_cast<host::BaseObject&>(node)));
    case NodeKind::Layer:
      return std::make_shared<host::LayerData>(A::Flags(static_cast<host::LayerObject&>(node)));
    case NodeKind::RenderSettings:
      return ListsOf(node);
    default:
      return nullptr;
  }
}

void ExchangeShape(host::BaseObject& object, std::shared_ptr<void>& rest) {
  std::shared_ptr<void> live = std::const_pointer_cast<ObjectShape>(A::Shape(object));
  A::Shape(object) = std::static_pointer_cast<const ObjectShape>(rest);
  rest = std::move(live);
}

void ExchangeLists(BaseList2D& settings, KeptLists& kept) {
  ExchangeList(settings, kAttached, kept.posts);
  ExchangeList(settings, kPasses, kept.passes);
}

void ExchangeRest(BaseList2D& node, std::shared_ptr<void>& rest) {
  switch (A::Kind(node)) {
    case NodeKind::Object:
      return ExchangeShape(static_cast<host::BaseObject&>(node), rest);
    case NodeKind::Layer:
      return std::swap(A::Flags(static_cast<host::LayerObject&>(node)),
                       *static_cast<host::LayerData*>(rest.get()));
    case NodeKind::RenderSettings:
      return ExchangeLists(node, *static_cast<KeptLists*>(rest.get()));
    default:
      return;
  }
}

NodeId IdOrNone(const GeListNode* node) { return node ? A::Id(*node) : 0; }

NodePlace PlaceOf(const BaseList2D& node) {
  return {IdOrNone(OwnerOf(node)), IdOrNone(node.GetPred()), IdOrNone(node.GetNext()),
          SlotOf(node)};
}

void Park(BaseList2D& node, ParkedNode& parked) {
  parked.node = &node;
  parked.place = PlaceOf(node);
  TakeOut(node);
}

bool IsIn(const BaseList2D* node, const BaseList2D& owner, int slot) {
  return node && OwnerOf(*node) == &owner && SlotOf(*node) == slot;
}

// A neighbor that has gone elsewhere meanwhile no longer tells the place: then the other one does,
// else the list's end.
GeListNode* PredIn(BaseDocument& doc, BaseList2D& owner, const NodePlace& place) {
  BaseList2D* pred = FindNode(&doc, place.pred);
  BaseList2D* next = FindNode(&doc, place.next);
  if (IsIn(pred, owner, place.slot)) return pred;
  if (IsIn(next, owner, place.slot)) return next->GetPred();
  return place.pred == 0 ? nullptr : LastIn(owner, place.slot);
}

}  // namespace

UndoEntry::UndoEntry(BaseList2D& node)
    : node_(A::Id(node)),
      name_(A::Name(node)),
      data_(A::Data(node)),
      bits_(A::Bits(node)),
      place_(false),
      layer_(A::Layer(node)),
      rest_(RestOf(node)) {
  std::copy_n(A::Modes(node), 3, modes_);
  if (const host::TextureTag* tag = AsTextureTag(&node)) material_ = A::Material(*tag);
}

UndoEntry::UndoEntry(NodeId node)
    : node_(node), place_(true), rest_(std::make_shared<ParkedNode>()) {}

UndoEntry UndoEntry::Made(const BaseList2D& node) { return UndoEntry(A::Id(node)); }

UndoEntry UndoEntry::Parked(BaseList2D& node) {
  UndoEntry entry = Made(node);
  Park(node, *static_cast<ParkedNode*>(entry.rest_.get()));
  return entry;
}

UndoEntry UndoEntry::Moved(const BaseList2D& node) {
  UndoEntry entry = Made(node);
  auto& kept = *static_cast<ParkedNode*>(entry.rest_.get());
  kept.place = PlaceOf(node);
  kept.moves = true;
  return entry;
}

void UndoEntry::Exchange(BaseDocument& doc) {
  if (place_) return ExchangePlace(doc);
  if (BaseList2D* node = FindNode(&doc, node_)) ExchangeContents(*node);
}

void UndoEntry::ExchangeContents(BaseList2D& node) {
  std::swap(A::Name(node), name_);
  std::swap(A::Data(node), data_);
  const host::LONG bits = std::exchange(bits_, A::Bits(node));
  ApplyBits(node, bits);
  std::swap_ranges(modes_, modes_ + 3, A::Modes(node));
  std::swap(A::Layer(node), layer_);
  if (host::TextureTag* tag = AsTextureTag(&node)) std::swap(A::Material(*tag), material_);
  ExchangeRest(node, rest_);
}

void UndoEntry::ExchangePlace(BaseDocument& doc) {
  auto& parked = *static_cast<ParkedNode*>(rest_.get());
  if (parked.moves) return ExchangePlaces(doc);
  if (!parked.node) {
    BaseList2D* node = FindNode(&doc, node_);
    if (node && OwnerOf(*node)) Park(*node, parked);
    return;
  }
  BaseList2D* owner = FindNode(&doc, parked.place.owner);
  if (!owner) return;
  BaseList2D* node = std::exchange(parked.node, nullptr);
  PutIn(*node, *owner, parked.place.slot, PredIn(doc, *owner, parked.place));
}

void UndoEntry::ExchangePlaces(BaseDocument& doc) {
  NodePlace& kept = static_cast<ParkedNode*>(rest_.get())->place;
  BaseList2D* node = FindNode(&doc, node_);
  BaseList2D* present = node ? OwnerOf(*node) : nullptr;
  if (!present) return;
  const NodePlace live = PlaceOf(*node);
  TakeOut(*node);
  // An owner that went out with the node hangs below it by now: then it stays where it is.
  BaseList2D* owner = FindNode(&doc, kept.owner);
  if (!owner) return PutIn(*node, *present, live.slot, FindNode(&doc, live.pred));
  PutIn(*node, *owner, kept.slot, PredIn(doc, *owner, kept));
  kept = live;
}

}  // namespace engine
