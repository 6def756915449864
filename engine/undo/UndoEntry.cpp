#include "engine/undo/UndoEntry.h"

#include <algorithm>
#include <utility>

#include "engine/scene/Mesh.h"
#include "engine/scene/NodeCopy.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTree.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/TreeWalk.h"
#include "engine/undo/StoredData.h"

namespace engine {

using host::BaseDocument;
using host::BaseList2D;
using host::GeListNode;
using A = NodeAccess;

namespace {

std::vector<OwnedNode> Copies(const BaseList2D& settings, int slot) {
  std::vector<OwnedNode> copies;
  for (const GeListNode* node = FirstIn(settings, slot); node; node = node->GetNext()) {
    copies.emplace_back(
        CopyTree(static_cast<const BaseList2D&>(*node), CopyRules{true, true, nullptr}));
  }
  return copies;
}

std::vector<OwnedNode> TakeAll(const BaseList2D& settings, int slot) {
  std::size_t count = 0;
  for (const GeListNode* node = FirstIn(settings, slot); node; node = node->GetNext()) ++count;
  std::vector<OwnedNode> nodes;
  nodes.reserve(count);
  while (GeListNode* node = FirstIn(settings, slot)) {
    TakeOut(*node);
    nodes.emplace_back(static_cast<BaseList2D*>(node));
  }
  return nodes;
}

void PutAll(std::vector<OwnedNode>& nodes, BaseList2D& settings, int slot) {
  for (OwnedNode& node : nodes) {
    PutIn(*node, settings, slot, LastIn(settings, slot));
    static_cast<void>(node.release());
  }
}

// Changes nothing when memory runs out for what is kept.
void ExchangeList(BaseList2D& settings, int slot, std::vector<OwnedNode>& kept) {
  std::vector<OwnedNode> live = TakeAll(settings, slot);
  try {
    PutAll(kept, settings, slot);
  } catch (...) {
    for (OwnedNode& node : kept) {
      GeListNode* put = node ? nullptr : FirstIn(settings, slot);
      if (!put) break;
      TakeOut(*put);
      node.reset(static_cast<BaseList2D*>(put));
    }
    PutAll(live, settings, slot);
    throw;
  }
  kept = std::move(live);
}

// Exchanges the contents that only elements of one kind have. Changes nothing when memory runs out.
struct OwnExchange {
  BaseList2D& node;

  void operator()(std::monostate) const {}
  void operator()(NodeId& material) const {
    std::swap(A::Material(static_cast<host::TextureTag&>(node)), material);
  }
  void operator()(std::shared_ptr<const ObjectShape>& shape) const {
    std::swap(A::Shape(static_cast<host::BaseObject&>(node)), shape);
  }
  void operator()(std::unique_ptr<host::LayerData>& flags) const {
    std::swap(A::Flags(static_cast<host::LayerObject&>(node)), *flags);
  }
  void operator()(std::unique_ptr<DetachedLists>& lists) const {
    ExchangeList(node, kAttached, lists->posts);
    try {
      ExchangeList(node, kPasses, lists->passes);
    } catch (...) {
      ExchangeList(node, kAttached, lists->posts);
      throw;
    }
  }
};

NodeId IdOrNone(const GeListNode* node) { return node ? A::Id(*node) : 0; }

NodePlace PlaceOf(const BaseList2D& node) {
  return {IdOrNone(OwnerOf(node)), IdOrNone(node.GetPred()), IdOrNone(node.GetNext()),
          SlotOf(node)};
}

void Park(BaseList2D& node, ParkedNode& parked) {
  parked.place = PlaceOf(node);
  TakeOut(node);
  parked.node.reset(&node);
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

// Exchanges a kept state with the live one of the element with that identity.
struct StateExchange {
  BaseDocument& doc;
  NodeId id;

  template <class Own>
  void operator()(KeptElement<Own>& kept) const {
    BaseList2D* node = FindNode(&doc, id);
    if (!node) return;
    const host::LONG bits = A::Bits(*node);
    ApplyBits(*node, kept.bits);
    try {
      OwnExchange{*node}(kept.own);
    } catch (...) {
      ApplyBits(*node, bits);
      throw;
    }
    kept.bits = bits;
    std::swap(A::Name(*node), kept.name);
    std::swap(A::Data(*node), kept.data);
    std::swap_ranges(kept.modes, kept.modes + 3, A::Modes(*node));
    std::swap(A::Layer(*node), kept.layer);
  }

  void operator()(ParkedNode& parked) const {
    if (!parked.node) {
      BaseList2D* node = FindNode(&doc, id);
      if (node && OwnerOf(*node)) Park(*node, parked);
      return;
    }
    BaseList2D* owner = FindNode(&doc, parked.place.owner);
    if (!owner) return;
    PutIn(*parked.node, *owner, parked.place.slot, PredIn(doc, *owner, parked.place));
    static_cast<void>(parked.node.release());
  }

  void operator()(NodePlace& kept) const {
    BaseList2D* node = FindNode(&doc, id);
    BaseList2D* present = node ? OwnerOf(*node) : nullptr;
    if (!present) return;
    const NodePlace live = PlaceOf(*node);
    TakeOut(*node);
    // An owner that went out with the node hangs below it by now: then it stays where it is.
    BaseList2D* owner = FindNode(&doc, kept.owner);
    if (!owner) return PutIn(*node, *present, live.slot, FindNode(&doc, live.pred));
    try {
      PutIn(*node, *owner, kept.slot, PredIn(doc, *owner, kept));
    } catch (...) {
      PutIn(*node, *present, live.slot, FindNode(&doc, live.pred));
      throw;
    }
    kept = live;
  }

  void operator()(std::unique_ptr<KeptStores>& kept) const { kept->Exchange(doc); }
};

}  // namespace

KeptStores::KeptStores() = default;
KeptStores::~KeptStores() = default;

KeptContents::KeptContents(BaseList2D& node)
    : name(A::Name(node)), data(A::Data(node)), bits(A::Bits(node)), layer(A::Layer(node)) {
  std::copy_n(A::Modes(node), 3, modes);
}

UndoEntry::State UndoEntry::StateOf(BaseList2D& node) {
  switch (A::Kind(node)) {
    case NodeKind::Object:
      return State(std::in_place_type<KeptObject>, node,
                   A::Shape(static_cast<host::BaseObject&>(node)));
    case NodeKind::TextureTag:
      return State(std::in_place_type<KeptTextureTag>, node,
                   A::Material(static_cast<host::TextureTag&>(node)));
    case NodeKind::Layer:
      return State(
          std::in_place_type<KeptLayer>, node,
          std::make_unique<host::LayerData>(A::Flags(static_cast<host::LayerObject&>(node))));
    case NodeKind::RenderSettings:
      return State(std::in_place_type<KeptSettings>, node,
                   std::make_unique<DetachedLists>(
                       DetachedLists{Copies(node, kAttached), Copies(node, kPasses)}));
    default:
      return State(std::in_place_type<KeptOther>, node, std::monostate());
  }
}

UndoEntry::UndoEntry(BaseList2D& node) : node_(A::Id(node)), state_(StateOf(node)) {}

UndoEntry UndoEntry::Made(const BaseList2D& node) { return {A::Id(node), ParkedNode()}; }

UndoEntry UndoEntry::Parked(BaseList2D& node) {
  ParkedNode parked;
  Park(node, parked);
  return {A::Id(node), std::move(parked)};
}

UndoEntry UndoEntry::Moved(const BaseList2D& node) { return {A::Id(node), PlaceOf(node)}; }

UndoEntry UndoEntry::Stores(const BaseDocument& doc, std::unique_ptr<KeptStores> kept) {
  return {A::Id(doc), std::move(kept)};
}

void UndoEntry::Exchange(BaseDocument& doc) { std::visit(StateExchange{doc, node_}, state_); }

}  // namespace engine
