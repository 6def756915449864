// RenderSettingsRows: the render settings of a document as an item model: name, whether active, size and frames. It keeps the
// shape of the tree and reads everything else from the document when it is shown. Changes go through undo. Main thread.
#pragma once

#include <QAbstractItemModel>

#include "program/desktop/OpenDocument.h"
#include "program/desktop/panels/FlatTree.h"
#include "program/desktop/panels/RenderSettingsActs.h"

namespace desktop {

class RenderSettingsRows : public QAbstractItemModel {
 public:
  enum Column { kName, kActive, kSize, kFrames, kColumnCount };
  enum Role {
    kIsActive = Qt::UserRole  // of any cell
  };

  using QAbstractItemModel::QAbstractItemModel;

  // Takes over the shape of the tree. True when it differed, which resets the model.
  bool Update(host::BaseDocument* doc);
  host::BaseDocument* Document() const { return FindOpenDocument(doc_); }

  // Null where there are none any more.
  host::RenderData* SettingsAt(const QModelIndex& index) const;
  SettingsList SettingsAt(const QModelIndexList& rows) const;
  QModelIndex IndexOf(engine::NodeId settings, int column = kName) const;

  QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
  QModelIndex parent(const QModelIndex& index) const override;
  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& = {}) const override { return kColumnCount; }
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  // Only names are set here.
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;

 private:
  const FlatTree::Entry& EntryOf(const QModelIndex& index) const {
    return shape_.At(index.isValid() ? static_cast<int>(index.internalId()) : 0);
  }

  host::ULLONG doc_ = 0;
  FlatTree shape_;
};

}  // namespace desktop
