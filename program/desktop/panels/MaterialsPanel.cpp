#include "program/desktop/panels/MaterialsPanel.h"

#include <QVBoxLayout>

#include "program/desktop/SceneCommands.h"

namespace desktop {

namespace {

// Of several the first one counts: an object shows one material.
void AssignToSelection(host::BaseDocument& doc, const MaterialList& materials) {
  AssignMaterial(doc, engine::IdOf(*materials.front()), SelectedObjects(doc));
}

}  // namespace

MaterialsPanel::MaterialsPanel(std::shared_ptr<MaterialThumbnails> thumbnails, QWidget* parent)
    : QWidget(parent),
      grid_(new MaterialGrid(std::move(thumbnails), this)),
      acts_(*grid_, [](QMenu&) {}) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->addWidget(grid_);
  BuildActions();
  connect(grid_, &QAbstractItemView::doubleClicked, this, [this] {
    if (opened) opened();
  });
}

void MaterialsPanel::BuildActions() {
  acts_.PutBelow(*this);
  acts_.AddMaker("New Material", [this](host::BaseDocument& doc) { Add(doc); });
  acts_.Add("duplicate", "Duplicate Material", {}, &DuplicateMaterials);
  acts_.Add("assign", "Assign to Selection", {}, &AssignToSelection);
  acts_.Add("select", "Select Objects with This Material", {}, &SelectObjectsWith);
  acts_.AddSpace();
  acts_.Add("delete", "Delete Material", QKeySequence::Delete, &DeleteMaterials);
}

void MaterialsPanel::Follow(host::BaseDocument* doc) {
  grid_->Follow(doc);
  acts_.Follow(doc);
}

void MaterialsPanel::Add(host::BaseDocument& doc) {
  const host::BaseMaterial* material = AddMaterial(doc);
  grid_->Follow(&doc);
  grid_->EditName(*material);
}

}  // namespace desktop
