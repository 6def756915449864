// ListView: a list gadget as a widget: check boxes, columns, multi-selection. Clicks and keys
// become events of the dialog. Main thread.
#pragma once

#include <QAbstractTableModel>
#include <QTreeView>
#include <functional>

#include "program/desktop/dialog/DialogLink.h"

namespace desktop {

// The rows as an item model. It keeps no copy: values are read from the gadget when they are shown,
// so that ten thousand rows cost nothing until one looks at them. Rows and columns count as they
// were at the last Update, and are told apart by place, not by content.
class ListModel : public QAbstractTableModel {
 public:
  ListModel(SharedDialogLink link, host::LONG list, QObject* parent);

  // Star that a cell of the first column shows in place of its text, if any.
  enum Role { kStar = Qt::UserRole };
  enum class Star { None, Full, Hollow };

  // Takes over what the gadget holds now.
  void Update();
  bool IsCheckColumn(int column) const;
  // How the marks of the first column are drawn, with a tool tip for them.
  void SetStar(Star star, const QString& tip);
  Star GetStar() const { return star_; }

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
  // Appends or removes rows at the end, so that scrolling and selection stay.
  void SetRowCount(int rows);

  SharedDialogLink link_;
  host::LONG list_;
  int rows_ = 0;
  std::vector<engine::Column> columns_;
  Star star_ = Star::None;
  QString starTip_;
};

// The widget; owns its model.
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
  // Draws what marks a row in the first column as a star from now on; hollow for one that is not
  // quite true any more.
  void ShowStar(ListModel::Star star, const QString& tip);
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
  // Selected lines as ranges, 0-based, in the form of the published interface.
  host::BaseSelect SelectedLines() const;
  // Selects these lines without an event of the dialog.
  void ShowSelection(const host::BaseSelect& selection);
  // The first column of check boxes, -1 without one.
  int CheckColumn() const;
  struct Widths {
    std::vector<int> columns;  // each as wide as what it shows
    // The first text wider than a marker takes the rest, but stays readable
    int filling = -1;
    int readable = 0;
  };
  // Widths in pixels. O(visible rows).
  Widths Measure() const;
  // Gives each column the width of what it shows, and the rest to one text.
  void FitColumns();

  SharedDialogLink link_;
  host::LONG id_;
  // Size that the plug-in asks for, in pixels.
  QSize asked_;
  ListModel* model_;
  QString emptyText_;
  bool showing_ = true;  // what changes in here is no act of a person
};

}  // namespace desktop
