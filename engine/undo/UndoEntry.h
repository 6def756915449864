// UndoEntry: one registered change: an element and the contents or the place it is to be given.
// Undo and redo are the same exchange. Elements are named by identity, so that one destroyed
// without undo is skipped. An entry owns the nodes that it keeps. Main thread.
#pragma once

#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "engine/core/ContainerContents.h"
#include "engine/scene/DeletedStates.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/NodeAccess.h"
#include "engine/scene/Ownership.h"

namespace engine {

// Posts and passes of render settings that are in no settings now.
struct DetachedLists {
  std::vector<OwnedNode> posts;
  std::vector<OwnedNode> passes;
};

// The contents of an element, as CopyTo copies them. Names, data, frames and meshes are shared with
// it.
struct KeptContents {
  explicit KeptContents(host::BaseList2D& node);

  host::String name;
  host::BaseContainer data;
  host::LONG bits = 0;
  host::UCHAR modes[3] = {};
  NodeId layer = 0;
};

// The contents together with those that only elements of one kind have.
template <class Own>
struct KeptElement : KeptContents {
  KeptElement(host::BaseList2D& node, Own what) : KeptContents(node), own(std::move(what)) {}
  Own own;
};
using KeptTextureTag = KeptElement<NodeId>;                          // its material
using KeptObject = KeptElement<std::shared_ptr<const ObjectShape>>;  // null: it has none
using KeptLayer = KeptElement<std::unique_ptr<host::LayerData>>;     // its flags
using KeptSettings = KeptElement<std::unique_ptr<DetachedLists>>;
using KeptOther = KeptElement<std::monostate>;

// Where an element hangs. Neighbors are 0 at the ends of the list.
struct NodePlace {
  NodeId owner = 0;
  NodeId pred = 0;
  NodeId next = 0;
  int slot = 0;
};

// An element that is in the scene on one side of the exchange only.
struct ParkedNode {
  OwnedNode node;   // null while it is in the scene
  NodePlace place;  // that it had; only while `node` is here
};

class OutsideChange;

// The data that a document stores for plug-ins; see StoredDataScope.
struct KeptStores {
  KeptStores();
  ~KeptStores();
  void Exchange(host::BaseDocument& doc);

  host::BaseContainer data;
  std::vector<host::LONG> keys;  // of the containers in it that are exchanged
  SharedDeletedStates deleted;
  std::unique_ptr<OutsideChange> outside;  // may be null
};

class UndoEntry {
 public:
  // The state of `node` as it is now.
  explicit UndoEntry(host::BaseList2D& node);
  // `node` was put into its place: undo takes it out.
  static UndoEntry Made(const host::BaseList2D& node);
  // Takes `node` out of its place and keeps it: undo puts it back.
  static UndoEntry Parked(host::BaseList2D& node);
  // Remembers the place of `node`, which is about to get another one: undo puts it back there.
  static UndoEntry Moved(const host::BaseList2D& node);

  static UndoEntry Stores(const host::BaseDocument& doc, std::unique_ptr<KeptStores> kept);

  // Exchanges the kept state with the live one; does nothing when the element is gone.
  void Exchange(host::BaseDocument& doc);

  NodeId Node() const { return node_; }
  // The element that is kept out of the scene now, null where none is.
  host::BaseList2D* Parked() const {
    const auto* parked = std::get_if<ParkedNode>(&state_);
    return parked ? parked->node.get() : nullptr;
  }
  bool KeepsPlace() const {
    return std::holds_alternative<ParkedNode>(state_) || std::holds_alternative<NodePlace>(state_);
  }
  // Of an entry that keeps contents: whether those of `node`, its element, are others. Selection
  // does not count.
  bool Differs(const host::BaseList2D& node) const;
  // Adds the differences as lines for a person, "object "Cube" render off -> on". Of an entry that
  // keeps contents.
  void AppendDifference(const host::BaseDocument& doc, const host::BaseList2D& node,
                        std::vector<std::string>& lines) const;

 private:
  // The NodePlace is another place of an element that is in the scene all the time.
  using State = std::variant<KeptObject, KeptTextureTag, KeptLayer, KeptSettings, KeptOther,
                             ParkedNode, NodePlace, std::unique_ptr<KeptStores>>;
  UndoEntry(NodeId node, State state) : node_(node), state_(std::move(state)) {}
  static State StateOf(host::BaseList2D& node);

  NodeId node_;
  State state_;
};

}  // namespace engine
