// MaterialGrid: the materials of the active document as thumbnails with names, in rows as wide as
// the panel. One drags them onto objects. It owns its model. Main thread.
#pragma once

#include <QListView>

#include "program/desktop/panels/DocumentView.h"
#include "program/desktop/panels/MaterialRows.h"

namespace desktop {

class MaterialGrid : public QListView, public DocumentView {
 public:
  MaterialGrid(std::shared_ptr<MaterialThumbnails> thumbnails, QWidget* parent);

  void Follow(host::BaseDocument* doc) override;
  MaterialRows& Rows() { return *rows_; }
  host::BaseDocument* Document() const { return rows_->Document(); }
  MaterialList Chosen() const { return rows_->MaterialsAt(selectionModel()->selectedIndexes()); }
  // Begins to edit the name in place.
  void EditName(const host::BaseMaterial& material);

 protected:
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
  // The one that is pulled alone, however many are chosen.
  void startDrag(Qt::DropActions actions) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void ShowSelection();

  MaterialRows* rows_;
  host::ULLONG doc_ = 0;
  host::ULLONG seen_ = 0;
  bool showing_ = true;  // what changes in here is no act of a person
};

}  // namespace desktop
