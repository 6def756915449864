// RenderSettingsList: the render settings of the active document, the active ones marked by a dot.
// A click on a dot or a double click makes others active. Rows are dragged to other places. Which
// are chosen is the list's own matter. It owns its model. Main thread.
#pragma once

#include <QTreeView>

#include "program/desktop/attributes/LookedAt.h"
#include "program/desktop/panels/DocumentView.h"
#include "program/desktop/panels/RenderSettingsRows.h"

namespace desktop {

class RenderSettingsList : public QTreeView, public DocumentView {
 public:
  explicit RenderSettingsList(QWidget* parent);

  void Follow(host::BaseDocument* doc) override;
  RenderSettingsRows& Rows() { return *rows_; }
  host::BaseDocument* Document() const { return rows_->Document(); }
  SettingsList Chosen() const { return rows_->SettingsAt(selectionModel()->selectedRows()); }
  // The chosen ones; the active ones where none are. Never null.
  const SharedIds& ChosenIds() const { return chosen_; }
  void Choose(const SettingsList& settings);
  // Begins to edit the name of the current row in place.
  void EditName() { edit(currentIndex().siblingAtColumn(RenderSettingsRows::kName)); }
  QSize sizeHint() const override { return {340, 200}; }

 protected:
  QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                       const QEvent* event) const override;
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
  void startDrag(Qt::DropActions actions) override;
  void resizeEvent(QResizeEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;

 private:
  void TakeChosen();
  void Activate(const QModelIndex& index);

  RenderSettingsRows* rows_;
  host::ULLONG doc_ = 0;
  host::ULLONG seen_ = 0;
  bool showing_ = true;  // what changes in here is no act of a person
  SharedIds chosen_ = std::make_shared<Ids>();
};

}  // namespace desktop
