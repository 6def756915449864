// TreeRows: what the item models of a document's trees have in common: the shape of one tree, the
// way between rows and elements, and rows that are dragged to another place. It keeps identities
// only; a model of objects, layers or render settings reads everything else from the document when
// it is shown. Main thread.
#pragma once

#include <QAbstractItemModel>

#include "program/desktop/OpenDocument.h"
#include "program/desktop/panels/FlatTree.h"

namespace desktop {

class TreeRows : public QAbstractItemModel {
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
  // The same only where document or shape differ; true when they did.
  bool TakeWhatDiffers(const host::BaseDocument* doc, FlatTree shape);
  // Null where there is none any more.
  host::BaseList2D* NodeAt(const QModelIndex& index) const;
  // Whether `parent` is none of these elements and below none of them, so that they can go there.
  bool CanMoveTo(const std::vector<engine::NodeId>& ids, const QModelIndex& parent) const;
  // Moves elements of this tree before the row, or behind all where that is negative, as one undo
  // step. False when it cannot be.
  bool MoveTo(const std::vector<engine::NodeId>& ids, int row, const QModelIndex& parent);

 private:
  const FlatTree::Entry& EntryOf(const QModelIndex& index) const {
    return shape_.At(index.isValid() ? static_cast<int>(index.internalId()) : 0);
  }

  engine::NodeId doc_ = 0;
  FlatTree shape_;
};

// A name as a row shows it: on one line, and not endless.
QString NameInRow(const host::String& name);
// The same for a tip, whole where the row cuts it, with a line about the element below. Nothing in
// a name is taken for a format.
QString NameInTip(const host::String& name, const QString& about);

}  // namespace desktop
