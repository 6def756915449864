#include "program/desktop/panels/RenderSettingsPanel.h"

#include <QSplitter>
#include <QVBoxLayout>

namespace desktop {

RenderSettingsPanel::RenderSettingsPanel(QWidget* parent)
    : QWidget(parent), list_(new RenderSettingsList(this)), values_(new AttributesView(this)), acts_(*list_, [this](QMenu& menu) {
        menu.addSeparator();
        menu.addAction("Rename", this, [this] { list_->EditName(); })->setEnabled(list_->currentIndex().isValid());
      }) {
  auto* side = new QWidget(this);
  auto* column = new QVBoxLayout(side);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addWidget(list_);
  BuildActions(*side);
  auto* halves = new QSplitter(this);
  halves->addWidget(side);
  halves->addWidget(values_);
  halves->setStretchFactor(0, 1);
  halves->setStretchFactor(1, 1);
  halves->setChildrenCollapsible(false);
  auto* row = new QVBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->addWidget(halves);
}

void RenderSettingsPanel::BuildActions(QWidget& side) {
  acts_.PutBelow(side);
  acts_.AddMaker("New Render Settings", [this](host::BaseDocument& doc) { Add(doc); });
  acts_.Add("duplicate", "Duplicate", {}, [this](host::BaseDocument& doc, const SettingsList& settings) {
    const SettingsList copies = DuplicateRenderSettings(doc, settings);
    Follow(&doc);
    list_->Choose(copies);
  });
  acts_.Add("render-settings", "Render with These", {},
            [](host::BaseDocument& doc, const SettingsList& settings) { ActivateRenderSettings(doc, *settings.front()); });
  acts_.AddSpace();
  delete_ = acts_.Add("delete", "Delete Render Settings", QKeySequence::Delete, &DeleteRenderSettings);
}

void RenderSettingsPanel::Follow(host::BaseDocument* doc) {
  list_->Follow(doc);
  values_->Follow(doc, list_->ChosenIds());
  acts_.Follow(doc);
  const bool several = doc && (doc->GetFirstRenderData()->GetNext() || doc->GetFirstRenderData()->GetDown());
  delete_->setEnabled(delete_->isEnabled() && several);
}

void RenderSettingsPanel::Add(host::BaseDocument& doc) {
  host::RenderData* settings = AddRenderSettings(doc);
  Follow(&doc);
  list_->Choose({settings});
  list_->EditName();
}

}  // namespace desktop
