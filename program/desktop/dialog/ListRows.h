// ListRows: the rows of a list gadget as an item model. It keeps no copy: values are read from the
// gadget when they are shown, so that ten thousand rows cost nothing until one looks at them. Rows
// and columns count as they were at the last Update. The lines are told apart by place, not by
// content. Main thread.
#pragma once

#include <QAbstractTableModel>

#include "program/desktop/dialog/DialogLink.h"

namespace desktop {

class ListRows : public QAbstractTableModel {
 public:
  ListRows(SharedDialogLink link, host::LONG list, QObject* parent);

  // Takes over what the gadget holds now.
  void Update();
  bool IsCheckColumn(int column) const;

  int rowCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() ? 0 : rows_;
  }
  int columnCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() ? 0 : static_cast<int>(columns_.size());
  }
  QVariant data(const QModelIndex& index, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  // Only the state of a check box can be set: the dialog hears of it as of a click.
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;

 private:
  // The values behind an index; null when they are gone since the last Update.
  const host::BaseContainer* ValuesOf(const QModelIndex& index) const;
  void SetRowCount(int rows);

  SharedDialogLink link_;
  host::LONG list_;
  int rows_ = 0;
  std::vector<engine::Column> columns_;
};

}  // namespace desktop
