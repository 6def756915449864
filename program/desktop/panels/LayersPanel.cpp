#include "program/desktop/panels/LayersPanel.h"

#include <QVBoxLayout>

#include "program/desktop/Icons.h"
#include "program/desktop/SceneCommands.h"
#include "program/desktop/panels/LayerSwitches.h"

namespace desktop {

LayersPanel::LayersPanel(QWidget* parent)
    : QWidget(parent),
      tree_(new LayerTree(this)),
      acts_(*tree_, [this](QMenu& menu) { AddToMenu(menu); }) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(tree_);
  BuildActions();
}

void LayersPanel::BuildActions() {
  acts_.PutBelow(*this);
  acts_.AddMaker("New Layer", [this](host::BaseDocument& doc) { Add(doc); });
  acts_.Add("assign", "Assign to Selection", {},
            [](host::BaseDocument& doc, const LayerList& layers) {
              AssignLayer(doc, SelectedObjects(doc), layers.front());
            });
  acts_.Add("select", "Select Objects", {}, &SelectObjectsOn);
  acts_.AddSpace();
  acts_.Add("delete", "Delete Layer", QKeySequence::Delete, &DeleteLayers);
}

void LayersPanel::Follow(host::BaseDocument* doc) {
  tree_->Follow(doc);
  acts_.Follow(doc);
}

void LayersPanel::Add(host::BaseDocument& doc) {
  const host::LayerObject* layer = AddLayer(doc);
  tree_->Follow(&doc);
  tree_->EditName(*layer);
}

void LayersPanel::AddToMenu(QMenu& menu) {
  menu.addSeparator();
  const LayerList chosen = tree_->Chosen();
  menu.addAction("Color...", this, [this] { tree_->AskColor(tree_->Chosen()); })
      ->setEnabled(!chosen.empty());
  menu.addAction("Take Selection Off Its Layer", this, [this] {
    if (host::BaseDocument* doc = tree_->Document())
      AssignLayer(*doc, SelectedObjects(*doc), nullptr);
  });
  menu.addSeparator();
  for (std::size_t i = 0; i < kLayerSwitches.size() && !chosen.empty(); ++i) {
    const LayerSwitch& row = kLayerSwitches[i];
    const bool isOn = chosen.front()->GetLayerData(tree_->Document()).*(row.flag);
    QAction* action = menu.addAction(row.name, this, [this, i, isOn] {
      acts_.Do([i, isOn](host::BaseDocument& doc, const LayerList& layers) {
        SetLayerSwitch(doc, layers, i, !isOn);
      });
    });
    action->setCheckable(true);
    action->setChecked(isOn);
  }
}

}  // namespace desktop
