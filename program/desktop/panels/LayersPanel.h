// LayersPanel: the layers of the active document with what one does to them: buttons at the foot and a context menu. Main thread.
#pragma once

#include <QWidget>

#include "program/desktop/panels/LayerTree.h"

namespace desktop {

class LayersPanel : public QWidget, public DocumentView {
 public:
  explicit LayersPanel(QWidget* parent);

  void Follow(host::BaseDocument* doc) override;
  LayerTree& Tree() { return *tree_; }

 private:
  void BuildActions();
  void ShowMenu(const QPoint& place);
  void Add();
  // Does `act` to document and chosen layers; nothing when there is none chosen.
  template <class Act>
  void WithChosen(Act act);

  LayerTree* tree_;
  QAction* add_ = nullptr;
  QList<QAction*> forChosen_;
};

}  // namespace desktop
