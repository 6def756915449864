// UndoEntry: one registered change: an element and the contents it is to be given. Undo and redo
// are the same exchange. Elements are named by identity, so that one destroyed without undo is
// skipped. Main thread.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/scene/NodeAccess.h"

namespace engine {

class UndoEntry {
 public:
  // The state of `node` as it is now. Names, data, frames and meshes are shared, not copied.
  explicit UndoEntry(host::BaseList2D& node);
  // `node` was put into its place: undo takes it out.
  static UndoEntry Made(const host::BaseList2D& node);
  // Takes `node` out of its place and keeps it: undo puts it back.
  static UndoEntry Parked(host::BaseList2D& node);
  // Remembers the place of `node`, which is about to get another one: undo puts it back there.
  static UndoEntry Moved(const host::BaseList2D& node);

  // Exchanges the kept state with the live one; does nothing when the element is gone.
  void Exchange(host::BaseDocument& doc);

  NodeId Node() const { return node_; }
  bool KeepsPlace() const { return place_; }
  // Of an entry that keeps contents: whether those of `node`, its element, are others. Selection
  // does not count.
  bool Differs(const host::BaseList2D& node) const;
  // What differs as lines for a person, "object "Cube" render off -> on".
  void AppendDifference(const host::BaseDocument& doc, const host::BaseList2D& node,
                        std::vector<std::string>& lines) const;

 private:
  // A place that keeps nothing yet.
  explicit UndoEntry(NodeId node);
  void ExchangeContents(host::BaseList2D& node);
  void ExchangePlace(host::BaseDocument& doc);
  void ExchangePlaces(host::BaseDocument& doc);

  NodeId node_;
  host::String name_;
  host::BaseContainer data_;
  host::LONG bits_ = 0;
  host::UCHAR modes_[3] = {};
  bool place_;  // keeps a place, not contents
  NodeId layer_ = 0;
  NodeId material_ = 0;
  // Of an object its shape, of a layer its flags, of render settings their lists, of a place the
  // parked node.
  std::shared_ptr<void> rest_;
};

}  // namespace engine
