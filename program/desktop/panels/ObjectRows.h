// ObjectRows: the objects of a document as an item model: name and the two visibility modes. It keeps the shape of the tree, in
// one flat list where the children of an object stand together, and reads everything else from the document when it is shown.
// Changes go through undo. Main thread.
#pragma once

#include <QAbstractItemModel>
#include <unordered_map>
#include <vector>

#include "program/desktop/OpenDocument.h"

namespace desktop {

class ObjectRows : public QAbstractItemModel {
 public:
  enum Column { kName, kEditor, kRender, kColumnCount };
  enum Role {
    kMode = Qt::UserRole,  // MODE_ number of a visibility cell
    kHidden                // of a visibility cell: whether the object is hidden, by itself or by what is above it
  };

  using QAbstractItemModel::QAbstractItemModel;

  // Takes over the shape of the tree. True when it differed, which resets the model.
  bool Update(host::BaseDocument* doc);
  host::BaseDocument* Document() const { return FindOpenDocument(doc_); }

  // Null where there is none any more.
  host::BaseObject* ObjectAt(const QModelIndex& index) const;
  engine::NodeId IdAt(const QModelIndex& index) const;
  QModelIndex IndexOf(engine::NodeId object, int column = kName) const;
  // Sets one mode of many objects in one undo step.
  void SetMode(const QModelIndexList& rows, int column, host::LONG mode);

  QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
  QModelIndex parent(const QModelIndex& index) const override;
  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& = {}) const override { return kColumnCount; }
  QVariant data(const QModelIndex& index, int role) const override;
  // Only names are set here.
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;

 private:
  struct Entry {
    engine::NodeId id = 0;
    int parent = 0;  // place in the list
    int row = 0;
    int firstChild = 0;
    int childCount = 0;
    bool operator==(const Entry&) const = default;
  };

  static std::vector<Entry> Read(const host::BaseDocument* doc);
  const Entry& EntryOf(const QModelIndex& index) const { return entries_[index.isValid() ? index.internalId() : 0]; }
  QVariant ModeData(const host::BaseObject& object, int column, int role) const;

  engine::NodeId doc_ = 0;
  std::vector<Entry> entries_ = {Entry()};  // the first one stands above the top level
  std::unordered_map<engine::NodeId, int> places_;
};

}  // namespace desktop
