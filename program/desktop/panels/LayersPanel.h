// LayersPanel: the layers of the active document with what one does to them: buttons at the foot
// and a context menu. Main thread.
#pragma once

#include <QWidget>

#include "program/desktop/panels/ChosenActs.h"
#include "program/desktop/panels/LayerTree.h"

namespace desktop {

class LayersPanel : public QWidget, public DocumentView {
 public:
  explicit LayersPanel(QWidget* parent);

  void Follow(host::BaseDocument* doc) override;
  LayerTree& Tree() { return *tree_; }

 private:
  void BuildActions();
  void AddToMenu(QMenu& menu);
  void Add(host::BaseDocument& doc);

  LayerTree* tree_;
  ChosenActs<LayerTree> acts_;
};

}  // namespace desktop
