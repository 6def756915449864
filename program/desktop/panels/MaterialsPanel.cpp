#include "program/desktop/panels/MaterialsPanel.h"

#include <QMenu>
#include <QVBoxLayout>

#include "program/desktop/SceneCommands.h"
#include "program/desktop/panels/PanelBar.h"

namespace desktop {

namespace {

// Of several the first one counts: an object shows one material.
void AssignToSelection(host::BaseDocument& doc, const MaterialList& materials) {
  AssignMaterial(doc, engine::IdOf(*materials.front()), SelectedObjects(doc));
}

}  // namespace

MaterialsPanel::MaterialsPanel(std::shared_ptr<MaterialThumbnails> thumbnails, QWidget* parent)
    : QWidget(parent), grid_(new MaterialGrid(std::move(thumbnails), this)) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(grid_);
  BuildActions();
  connect(grid_, &QAbstractItemView::doubleClicked, this, [this] {
    if (opened) opened();
  });
  grid_->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(grid_, &QWidget::customContextMenuRequested, this, [this](const QPoint& place) { ShowMenu(place); });
}

template <class Act>
void MaterialsPanel::WithChosen(Act act) {
  host::BaseDocument* doc = grid_->Document();
  const MaterialList chosen = grid_->Chosen();
  if (doc && !chosen.empty()) act(*doc, chosen);
}

void MaterialsPanel::BuildActions() {
  auto* bar = new PanelBar(this);
  layout()->addWidget(bar);
  const auto add = [&](const char* icon, const char* text, const QKeySequence& keys, auto act) {
    forChosen_.append(bar->Add(*grid_, icon, text, keys, [this, act] { WithChosen(act); }));
  };
  add_ = bar->Add(*grid_, "add", "New Material", {}, [this] { Add(); });
  add("duplicate", "Duplicate Material", {}, &DuplicateMaterials);
  add("assign", "Assign to Selection", {}, &AssignToSelection);
  add("select", "Select Objects with This Material", {}, &SelectObjectsWith);
  bar->AddSpace();
  add("delete", "Delete Material", QKeySequence::Delete, &DeleteMaterials);
}

void MaterialsPanel::Follow(host::BaseDocument* doc) {
  grid_->Follow(doc);
  const bool any = grid_->selectionModel()->hasSelection();
  add_->setEnabled(doc != nullptr);
  for (QAction* action : forChosen_) action->setEnabled(any);
}

void MaterialsPanel::Add() {
  host::BaseDocument* doc = grid_->Document();
  if (!doc) return;
  const host::BaseMaterial* material = AddMaterial(*doc);
  grid_->Follow(doc);
  grid_->EditName(*material);
}

void MaterialsPanel::ShowMenu(const QPoint& place) {
  QMenu menu(this);
  menu.addAction(add_);
  for (QAction* action : forChosen_) menu.addAction(action);
  menu.exec(grid_->viewport()->mapToGlobal(place));
}

}  // namespace desktop
