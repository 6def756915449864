// ListView: a list gadget as a widget: check boxes, columns, multi-selection. Clicks and keys
// become events of the dialog. It owns its model. Main thread.
#pragma once

#include <QTreeView>
#include <functional>

#include "program/desktop/dialog/ListRows.h"

namespace desktop {

class ListView : public QTreeView {
 public:
  ListView(SharedDialogLink link, const engine::Gadget& list, QWidget* parent);

  // Takes over rows, columns and selection of the gadget.
  void Show(const engine::Gadget& list);
  // Called when a row is opened by Enter or a double click.
  std::function<void()> opened;
  // Whether all selected lines are checked; and flipping their check boxes, as the blank key does.
  bool AllChecked() const;
  void ToggleSelected();
  // Shown in place of rows while there are none.
  void SetEmptyText(const QString& text);
  QSize sizeHint() const override;
  // Wide enough for all columns with the text that takes the rest readable, if not whole; at most
  // what the plug-in asks for.
  int ReadableWidth() const;

 protected:
  // A click into a check box leaves the selection alone.
  QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                       const QEvent* event) const override;
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  // A text that is cut off shows whole in a tooltip.
  bool viewportEvent(QEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  host::BaseSelect SelectedLines() const;
  void ShowSelection(const host::BaseSelect& selection);
  // The first column of check boxes, -1 without one.
  int CheckColumn() const;
  struct Widths {
    std::vector<int> columns;  // each as wide as what it shows
    // The first text wider than a marker takes the rest, but stays readable
    int filling = -1;
    int readable = 0;
  };
  Widths Measure() const;
  void FitColumns();

  SharedDialogLink link_;
  host::LONG id_;
  QSize asked_;
  ListRows* rows_;
  QString emptyText_;
  bool showing_ = true;  // what changes in here is no act of a person
};

}  // namespace desktop
