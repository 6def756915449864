// LayerRows: the layers of a document as an item model: name, color and nine switches. It keeps
// the shape of the tree and reads everything else from the document when it is shown. Changes go
// through undo. Main thread.
#pragma once

#include "program/desktop/Dragging.h"
#include "program/desktop/panels/LayerActs.h"
#include "program/desktop/panels/TreeRows.h"

namespace desktop {

class LayerRows : public TreeRows {
 public:
  // The switches follow, one column each.
  enum Column { kName, kColor, kFirstSwitch, kColumnCount = kFirstSwitch + 9 };
  enum Role {
    kIsOn = Qt::UserRole  // of a switch
  };

  using TreeRows::TreeRows;

  // Takes over the shape of the tree. True when it differed, which resets the model.
  bool Update(host::BaseDocument* doc);

  // Null where there is none any more.
  host::LayerObject* LayerAt(const QModelIndex& index) const;
  // Those of the rows that still are.
  LayerList LayersAt(const QModelIndexList& rows) const;
  static bool IsSwitch(const QModelIndex& index) {
    return index.isValid() && index.column() >= kFirstSwitch;
  }

  int columnCount(const QModelIndex& = {}) const override { return kColumnCount; }
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  // Only names are set here.
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  // Layers are moved to where they are dropped. Objects come onto the layer of the row; those
  // dropped beside all rows are taken off theirs.
  QStringList mimeTypes() const override { return {kLayersMime, kObjectsMime}; }
  bool canDropMimeData(const QMimeData* data, Qt::DropAction, int, int,
                       const QModelIndex& parent) const override;
  bool dropMimeData(const QMimeData* data, Qt::DropAction, int row, int column,
                    const QModelIndex& parent) override;

 private:
  QVariant SwitchData(const host::LayerData& layer, std::size_t number, int role) const;
};

}  // namespace desktop
