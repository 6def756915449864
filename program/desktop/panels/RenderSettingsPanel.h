// RenderSettingsPanel: the render settings of the active document, what one does to them, and
// beside them the values of the chosen ones. Main thread.
#pragma once

#include <QTreeView>
#include <QWidget>

#include "engine/editing/InspectedElements.h"
#include "engine/editing/RenderSettingsCommands.h"
#include "engine/states/StoredStates.h"
#include "program/desktop/attributes/AttributesView.h"
#include "program/desktop/panels/DocumentView.h"
#include "program/desktop/panels/DragAndDrop.h"
#include "program/desktop/panels/NodeTreeModel.h"
#include "program/desktop/panels/PanelCommands.h"

namespace desktop {

// The render settings as an item model: name, whether active, size in pixels and range of frames.
// It keeps the shape of the tree and reads everything else from the document when a view asks for
// it. Each change is one undo step.
class RenderSettingsModel : public NodeTreeModel {
 public:
  enum Column { kName, kActive, kSize, kFrames, kColumnCount };
  enum Role {
    kIsActive = Qt::UserRole  // of any cell
  };

  using NodeTreeModel::NodeTreeModel;

  // Takes over the shape of the tree. True when it differed, which resets the model.
  bool Update(host::BaseDocument* doc);

  // Null where there are none any more.
  host::RenderData* SettingsAt(const QModelIndex& index) const;
  // Name of the Stagemark that they belong to, as it was at the last Update; empty for none.
  QString StagemarkOf(const host::RenderData& settings) const;
  engine::SettingsList SettingsAt(const QModelIndexList& rows) const;

  int columnCount(const QModelIndex& = {}) const override { return kColumnCount; }
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  // Only names are set here.
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  // Settings are moved to where they are dropped.
  QStringList mimeTypes() const override { return {kRenderSettingsMime}; }
  bool canDropMimeData(const QMimeData* data, Qt::DropAction, int, int,
                       const QModelIndex& parent) const override {
    return CanMoveTo(DroppedNodes(data, kRenderSettingsMime), parent);
  }
  bool dropMimeData(const QMimeData* data, Qt::DropAction, int row, int,
                    const QModelIndex& parent) override {
    return MoveTo(DroppedNodes(data, kRenderSettingsMime), row, parent);
  }

 private:
  // The tool tip or accessible text of settings that belong to a Stagemark; invalid for others.
  QVariant BelongsText(const QModelIndex& index, int role) const;

  // State of the last Update, read once for all rows, since it takes reading every recording.
  engine::SettingsOfStates stagemarks_;
};

// The active settings are marked by a dot; a click on a dot or a double click makes others active.
// Rows are dragged to other places. Which rows are chosen is kept in here, since the document
// selects no render settings. Owns its model.
class RenderSettingsList : public QTreeView, public DocumentView {
 public:
  explicit RenderSettingsList(QWidget* parent);

  void Follow(host::BaseDocument* doc) override;
  RenderSettingsModel& Model() { return *model_; }
  host::BaseDocument* Document() const { return model_->Document(); }
  engine::SettingsList Chosen() const {
    return model_->SettingsAt(selectionModel()->selectedRows());
  }
  // The chosen ones; the active ones where none are. Never null.
  const engine::SharedIds& ChosenIds() const { return chosen_; }
  void Choose(const engine::SettingsList& settings);
  // Begins to edit the name of the current row in place.
  void EditName() { edit(currentIndex().siblingAtColumn(RenderSettingsModel::kName)); }
  QSize sizeHint() const override { return {340, 200}; }

 protected:
  QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                       const QEvent* event) const override;
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
  void startDrag(Qt::DropActions actions) override;
  void resizeEvent(QResizeEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;

 private:
  // Takes over which rows are chosen; a new list only where it differs, so that views see by its
  // address that nothing did.
  void TakeChosen();
  // Makes the settings of the row the active ones of the document.
  void Activate(const QModelIndex& index);

  RenderSettingsModel* model_;
  host::ULLONG doc_ = 0;
  host::ULLONG seen_ = 0;
  bool showing_ = true;  // what changes in here is no act of a person
  engine::SharedIds chosen_ = std::make_shared<engine::Ids>();
};

// The list with its buttons and context menu, and the attributes of the chosen settings; owns them.
class RenderSettingsPanel : public QWidget, public DocumentView {
 public:
  explicit RenderSettingsPanel(QWidget* parent);

  void Follow(host::BaseDocument* doc) override;
  RenderSettingsList& List() { return *list_; }
  AttributesView& Values() { return *values_; }

 private:
  void BuildActions(QWidget& side);
  // Makes render settings, chooses them and begins to edit their name.
  void Add(host::BaseDocument& doc);
  // Asks where what goes belongs to Stagemarks.
  bool MayDelete(const host::BaseDocument& doc, const engine::SettingsList& settings);

  RenderSettingsList* list_;
  AttributesView* values_;
  PanelCommands<RenderSettingsList> acts_;
  QAction* delete_ = nullptr;
};

}  // namespace desktop
