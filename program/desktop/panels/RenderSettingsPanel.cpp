#include "program/desktop/panels/RenderSettingsPanel.h"

#include <QApplication>
#include <QMessageBox>
#include <QSplitter>
#include <QVBoxLayout>
#include <set>

#include "program/desktop/Text.h"

namespace desktop {

namespace {

constexpr qsizetype kMostNames = 6;

}  // namespace

RenderSettingsPanel::RenderSettingsPanel(QWidget* parent)
    : QWidget(parent),
      list_(new RenderSettingsList(this)),
      values_(new AttributesView(this)),
      acts_(*list_, [this](QMenu& menu) {
        menu.addSeparator();
        menu.addAction("Rename", this, [this] { list_->EditName(); })
            ->setEnabled(list_->currentIndex().isValid());
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
  acts_.Add("duplicate", "Duplicate", {},
            [this](host::BaseDocument& doc, const SettingsList& settings) {
              const SettingsList copies = DuplicateRenderSettings(doc, settings);
              Follow(&doc);
              list_->Choose(copies);
            });
  acts_.Add("render-settings", "Render with These", {},
            [](host::BaseDocument& doc, const SettingsList& settings) {
              ActivateRenderSettings(doc, *settings.front());
            });
  acts_.AddSpace();
  delete_ = acts_.Add("delete", "Delete Render Settings", QKeySequence::Delete,
                      [this](host::BaseDocument& doc, const SettingsList& settings) {
                        if (MayDelete(doc, settings)) DeleteRenderSettings(doc, settings);
                      });
}

// Those below the chosen ones go with them.
bool RenderSettingsPanel::MayDelete(const host::BaseDocument& doc, const SettingsList& settings) {
  const StagemarkSettings all = FindStagemarkSettings(&doc);
  std::set<QString> hit;
  std::vector<const host::RenderData*> open(settings.begin(), settings.end());
  while (!open.empty()) {
    const host::RenderData* each = open.back();
    open.pop_back();
    if (const auto it = all.find(engine::IdOf(*each)); it != all.end()) hit.insert(it->second);
    for (const host::RenderData* below = each->GetDown(); below; below = below->GetNext())
      open.push_back(below);
  }
  if (hit.empty()) return true;
  QStringList names;
  for (const QString& name : hit)
    names.append(QChar(0x201c) + NameInRow(ToHost(name)) + QChar(0x201d));
  if (names.size() > kMostNames) {
    names =
        names.mid(0, kMostNames) + QStringList{QString("and %1 more").arg(hit.size() - kMostNames)};
  }
  QMessageBox box(QMessageBox::Question, QApplication::applicationDisplayName(),
                  "These render settings belong to Stagemarks. Without them, loading these no "
                  "longer brings render settings back.\n"
                  "Delete them all the same? Undo brings them back.",
                  QMessageBox::Yes | QMessageBox::No, window());
  box.setDefaultButton(QMessageBox::No);
  box.setTextFormat(Qt::PlainText);
  box.setInformativeText("Stagemarks: " + names.join(", "));
  return box.exec() == QMessageBox::Yes;
}

void RenderSettingsPanel::Follow(host::BaseDocument* doc) {
  list_->Follow(doc);
  values_->Follow(doc, list_->ChosenIds());
  acts_.Follow(doc);
  const bool several =
      doc && (doc->GetFirstRenderData()->GetNext() || doc->GetFirstRenderData()->GetDown());
  delete_->setEnabled(delete_->isEnabled() && several);
}

void RenderSettingsPanel::Add(host::BaseDocument& doc) {
  host::RenderData* settings = AddRenderSettings(doc);
  Follow(&doc);
  list_->Choose({settings});
  list_->EditName();
}

}  // namespace desktop
