// LayerTree: the layers of the active document with color and switches. A click on a switch flips
// it, for all chosen layers when the clicked one is among them; a click on the color asks for
// another one. Layers are dragged to other places, objects onto them. It owns its model. Main
// thread.
#pragma once

#include <QTreeView>

#include "program/desktop/panels/DocumentView.h"
#include "program/desktop/panels/LayerRows.h"

namespace desktop {

class LayerTree : public QTreeView, public DocumentView {
 public:
  explicit LayerTree(QWidget* parent);

  void Follow(host::BaseDocument* doc) override;
  LayerRows& Rows() { return *rows_; }
  host::BaseDocument* Document() const { return rows_->Document(); }
  LayerList Chosen() const { return rows_->LayersAt(selectionModel()->selectedRows()); }
  // Begins to edit the name of the layer in place.
  void EditName(const host::LayerObject& layer);
  // Asks for a color for the layers; they may be gone when the answer comes.
  void AskColor(const LayerList& layers);

 protected:
  // A click on a switch or a color leaves the selection alone.
  QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                       const QEvent* event) const override;
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void startDrag(Qt::DropActions actions) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  bool ClickedCell(const QMouseEvent& event);
  // The layer of the row, with all chosen ones when it is among them.
  LayerList MeantBy(const QModelIndex& index) const;
  void ShowSelection();

  LayerRows* rows_;
  host::ULLONG doc_ = 0;
  host::ULLONG seen_ = 0;
  bool showing_ = true;  // what changes in here is no act of a person
};

}  // namespace desktop
