// NodeTreeModel: the common part of the item models of a document's trees (objects, layers, render
// settings): the shape of the tree, the way between model indexes and elements, and moving elements
// by drag and drop. It holds identities only, no element; the models derived from it read names and
// values from the document when a view asks for them. Main thread.
#pragma once

#include <QAbstractItemModel>
#include <functional>
#include <memory>
#include <vector>

#include "program/desktop/OpenDocument.h"

namespace desktop {

// The shape of a tree of nodes as one flat list in which the children of a node stand together, so
// that an item model finds parent, row and children of any place without a walk. A value: copies
// are independent.
class FlatTree {
 public:
  struct Entry {
    engine::NodeId id = 0;
    int parent = 0;  // place in the list; 0 stands above the top level
    int row = 0;
    int firstChild = 0;
    int childCount = 0;
    bool operator==(const Entry&) const = default;
  };

  FlatTree() : entries_(1) {}
  // The siblings from `first` on (null: none) with all below them. Linear in the nodes; walks by a
  // loop, so that a chain of a million children is fine.
  explicit FlatTree(const host::GeListNode* first);

  // The nodes for which `keep` says so, with all that is above them. Linear.
  FlatTree Kept(const std::function<bool(engine::NodeId)>& keep) const;

  // How many nodes there are: their places are 1 to that, what is above a node before it.
  int Count() const { return static_cast<int>(entries_.size()) - 1; }
  const Entry& At(int place) const { return entries_[static_cast<std::size_t>(place)]; }
  // The place of a node, 0 where it is not in here. The first question is linear, the others are
  // not.
  int PlaceOf(engine::NodeId id) const;
  bool operator==(const FlatTree& other) const { return entries_ == other.entries_; }

 private:
  std::vector<Entry> entries_;
  // Places by identity, an open table that is made when it is first asked for; empty slots hold 0.
  // A copy of this tree shares it.
  mutable std::shared_ptr<const std::vector<int>> places_;
};

// Base of ObjectModel, LayerModel and RenderSettingsModel. An index carries the element's place in
// Shape() as its internal id.
class NodeTreeModel : public QAbstractItemModel {
 public:
  using QAbstractItemModel::QAbstractItemModel;

  // Null when it is closed.
  host::BaseDocument* Document() const { return FindOpenDocument(doc_); }
  const FlatTree& Shape() const { return shape_; }
  // 0 for an invalid index.
  engine::NodeId IdAt(const QModelIndex& index) const { return EntryOf(index).id; }
  // Invalid for place 0, and for an element that is not in here.
  QModelIndex IndexAt(int place, int column = 0) const;
  QModelIndex IndexOf(engine::NodeId id, int column = 0) const {
    return IndexAt(shape_.PlaceOf(id), column);
  }

  QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
  QModelIndex parent(const QModelIndex& index) const override;
  int rowCount(const QModelIndex& parent = {}) const override;

  // Rows are dragged by their first column, as the identities of what they show, under the first
  // name of the model's kinds.
  QMimeData* mimeData(const QModelIndexList& indexes) const override;
  Qt::DropActions supportedDropActions() const override { return Qt::MoveAction | Qt::CopyAction; }

 protected:
  bool IsOf(const host::BaseDocument* doc) const { return doc_ == IdentityOf(doc); }
  // Takes over the shape of a tree of `doc` (null: no document), which resets the model.
  void Take(const host::BaseDocument* doc, FlatTree shape);
  // Takes over the shape and resets the model only where document or shape differ; true when they
  // did.
  bool TakeWhatDiffers(const host::BaseDocument* doc, FlatTree shape);
  // Null where there is none any more.
  host::BaseList2D* NodeAt(const QModelIndex& index) const;
  // Whether `parent` is none of these elements and below none of them, so that they can go there.
  bool CanMoveTo(const std::vector<engine::NodeId>& ids, const QModelIndex& parent) const;
  // Moves elements of this tree before the row, or behind all where that is negative, as one undo
  // step. False when it cannot be.
  bool MoveTo(const std::vector<engine::NodeId>& ids, int row, const QModelIndex& parent);

 private:
  // The entry above the top level for an invalid index.
  const FlatTree::Entry& EntryOf(const QModelIndex& index) const {
    return shape_.At(index.isValid() ? static_cast<int>(index.internalId()) : 0);
  }

  // Identity of the document; 0 for none.
  engine::NodeId doc_ = 0;
  FlatTree shape_;
};

// A name as a row shows it: on one line, and not endless.
QString NameInRow(const host::String& name);
// A name as a tool tip shows it: whole where the row cuts it, with a line about the element below.
// Nothing in a name is taken for a format.
QString NameInTip(const host::String& name, const QString& about);

}  // namespace desktop
