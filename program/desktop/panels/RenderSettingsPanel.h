// RenderSettingsPanel: the render settings of the active document with what one does to them, and
// beside them the values of the chosen ones. Main thread.
#pragma once

#include <QWidget>

#include "program/desktop/attributes/AttributesView.h"
#include "program/desktop/panels/ChosenActs.h"
#include "program/desktop/panels/RenderSettingsList.h"

namespace desktop {

class RenderSettingsPanel : public QWidget, public DocumentView {
 public:
  explicit RenderSettingsPanel(QWidget* parent);

  void Follow(host::BaseDocument* doc) override;
  RenderSettingsList& List() { return *list_; }
  AttributesView& Values() { return *values_; }

 private:
  void BuildActions(QWidget& side);
  void Add(host::BaseDocument& doc);
  // Asks where what goes belongs to Stagemarks.
  bool MayDelete(const host::BaseDocument& doc, const SettingsList& settings);

  RenderSettingsList* list_;
  AttributesView* values_;
  ChosenActs<RenderSettingsList> acts_;
  QAction* delete_ = nullptr;
};

}  // namespace desktop
