#include "program/desktop/panels/LayersPanel.h"

#include <QMenu>
#include <QVBoxLayout>

#include "program/desktop/Icons.h"
#include "program/desktop/SceneCommands.h"
#include "program/desktop/panels/LayerSwitches.h"
#include "program/desktop/panels/PanelBar.h"

namespace desktop {

LayersPanel::LayersPanel(QWidget* parent) : QWidget(parent), tree_(new LayerTree(this)) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(tree_);
  BuildActions();
  tree_->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(tree_, &QWidget::customContextMenuRequested, this, [this](const QPoint& place) { ShowMenu(place); });
}

template <class Act>
void LayersPanel::WithChosen(Act act) {
  host::BaseDocument* doc = tree_->Document();
  const LayerList chosen = tree_->Chosen();
  if (doc && !chosen.empty()) act(*doc, chosen);
}

void LayersPanel::BuildActions() {
  auto* bar = new PanelBar(this);
  layout()->addWidget(bar);
  const auto add = [&](const char* icon, const char* text, const QKeySequence& keys, auto act) {
    forChosen_.append(bar->Add(*tree_, icon, text, keys, [this, act] { WithChosen(act); }));
  };
  add_ = bar->Add(*tree_, "add", "New Layer", {}, [this] { Add(); });
  add("assign", "Assign to Selection", {},
      [](host::BaseDocument& doc, const LayerList& layers) { AssignLayer(doc, SelectedObjects(doc), layers.front()); });
  add("select", "Select Objects", {}, &SelectObjectsOn);
  bar->AddSpace();
  add("delete", "Delete Layer", QKeySequence::Delete, &DeleteLayers);
}

void LayersPanel::Follow(host::BaseDocument* doc) {
  tree_->Follow(doc);
  const bool any = tree_->selectionModel()->hasSelection();
  add_->setEnabled(doc != nullptr);
  for (QAction* action : forChosen_) action->setEnabled(any);
}

void LayersPanel::Add() {
  host::BaseDocument* doc = tree_->Document();
  if (!doc) return;
  const host::LayerObject* layer = AddLayer(*doc);
  tree_->Follow(doc);
  tree_->EditName(*layer);
}

void LayersPanel::ShowMenu(const QPoint& place) {
  QMenu menu(this);
  menu.addAction(add_);
  for (QAction* action : forChosen_) menu.addAction(action);
  menu.addSeparator();
  const LayerList chosen = tree_->Chosen();
  menu.addAction("Color...", this, [this] { tree_->AskColor(tree_->Chosen()); })->setEnabled(!chosen.empty());
  menu.addAction("Take Selection Off Its Layer", this, [this] {
    if (host::BaseDocument* doc = tree_->Document()) AssignLayer(*doc, SelectedObjects(*doc), nullptr);
  });
  menu.addSeparator();
  for (std::size_t i = 0; i < kLayerSwitches.size() && !chosen.empty(); ++i) {
    const LayerSwitch& row = kLayerSwitches[i];
    const bool isOn = chosen.front()->GetLayerData(tree_->Document()).*(row.flag);
    QAction* action = menu.addAction(row.name, this, [this, i, isOn] {
      WithChosen([i, isOn](host::BaseDocument& doc, const LayerList& layers) { SetLayerSwitch(doc, layers, i, !isOn); });
    });
    action->setCheckable(true);
    action->setChecked(isOn);
  }
  menu.exec(tree_->viewport()->mapToGlobal(place));
}

}  // namespace desktop
