#include "program/desktop/panels/RenderSettingsPanel.h"

#include <QMenu>
#include <QSplitter>
#include <QVBoxLayout>

#include "program/desktop/panels/PanelBar.h"

namespace desktop {

RenderSettingsPanel::RenderSettingsPanel(QWidget* parent)
    : QWidget(parent), list_(new RenderSettingsList(this)), values_(new AttributesView(this)) {
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
  list_->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(list_, &QWidget::customContextMenuRequested, this, [this](const QPoint& place) { ShowMenu(place); });
}

template <class Act>
void RenderSettingsPanel::WithChosen(Act act) {
  host::BaseDocument* doc = list_->Document();
  const SettingsList chosen = list_->Chosen();
  if (doc && !chosen.empty()) act(*doc, chosen);
}

void RenderSettingsPanel::BuildActions(QWidget& side) {
  auto* bar = new PanelBar(&side);
  side.layout()->addWidget(bar);
  const auto add = [&](const char* icon, const char* text, const QKeySequence& keys, auto act) {
    forChosen_.append(bar->Add(*list_, icon, text, keys, [this, act] { WithChosen(act); }));
  };
  add_ = bar->Add(*list_, "add", "New Render Settings", {}, [this] { Add(); });
  add("duplicate", "Duplicate", {}, [this](host::BaseDocument& doc, const SettingsList& settings) {
    const SettingsList copies = DuplicateRenderSettings(doc, settings);
    Follow(&doc);
    list_->Choose(copies);
  });
  add("render-settings", "Render with These", {},
      [](host::BaseDocument& doc, const SettingsList& settings) { ActivateRenderSettings(doc, *settings.front()); });
  bar->AddSpace();
  add("delete", "Delete Render Settings", QKeySequence::Delete, &DeleteRenderSettings);
}

void RenderSettingsPanel::Follow(host::BaseDocument* doc) {
  list_->Follow(doc);
  values_->Follow(doc, list_->ChosenIds());
  const bool any = list_->selectionModel()->hasSelection();
  const bool several = doc && (doc->GetFirstRenderData()->GetNext() || doc->GetFirstRenderData()->GetDown());
  add_->setEnabled(doc != nullptr);
  for (QAction* action : forChosen_) action->setEnabled(any && (action != forChosen_.back() || several));
}

void RenderSettingsPanel::Add() {
  host::BaseDocument* doc = list_->Document();
  if (!doc) return;
  host::RenderData* settings = AddRenderSettings(*doc);
  Follow(doc);
  list_->Choose({settings});
  list_->EditName();
}

void RenderSettingsPanel::ShowMenu(const QPoint& place) {
  QMenu menu(this);
  menu.addAction(add_);
  for (QAction* action : forChosen_) menu.addAction(action);
  menu.addSeparator();
  menu.addAction("Rename", this, [this] { list_->EditName(); })->setEnabled(list_->currentIndex().isValid());
  menu.exec(list_->viewport()->mapToGlobal(place));
}

}  // namespace desktop
