// MaterialsPanel: the materials of the active document with what one does to them: buttons at the
// foot and a context menu. Main thread.
#pragma once

#include <QWidget>

#include "program/desktop/panels/ChosenActs.h"
#include "program/desktop/panels/MaterialGrid.h"

namespace desktop {

class MaterialsPanel : public QWidget, public DocumentView {
 public:
  MaterialsPanel(std::shared_ptr<MaterialThumbnails> thumbnails, QWidget* parent);

  void Follow(host::BaseDocument* doc) override;
  MaterialGrid& Grid() { return *grid_; }
  // Told when somebody wants to see what a material is made of.
  std::function<void()> opened;

 private:
  void BuildActions();
  void Add(host::BaseDocument& doc);

  MaterialGrid* grid_;
  ChosenActs<MaterialGrid> acts_;
};

}  // namespace desktop
