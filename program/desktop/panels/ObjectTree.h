// ObjectTree: the objects of the active document as a tree with the visibility of each in the editor and in renders. A click on a
// dot goes from undefined to on to off, for all chosen objects when the clicked one is among them. Main thread.
#pragma once

#include <QTreeView>

#include "program/desktop/panels/DocumentView.h"
#include "program/desktop/panels/ObjectRows.h"

namespace desktop {

class ObjectTree : public QTreeView, public DocumentView {
 public:
  explicit ObjectTree(QWidget* parent);

  void Follow(host::BaseDocument* doc) override;
  QSize sizeHint() const override { return {240, 400}; }

 protected:
  // A click on a dot leaves the selection alone.
  QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index, const QEvent* event) const override;
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  bool ClickedDot(const QMouseEvent& event);
  void ShowSelection();
  std::vector<engine::NodeId> Expanded() const;
  void Expand(const std::vector<engine::NodeId>& objects);

  ObjectRows* rows_;
  engine::NodeId doc_ = 0;
  host::ULLONG seen_ = 0;
  bool showing_ = true;  // what changes in here is no act of a person
};

}  // namespace desktop
