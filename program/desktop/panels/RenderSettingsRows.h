// RenderSettingsRows: the render settings of a document as an item model: name, whether active,
// size and frames. It keeps the shape of the tree and reads everything else from the document when
// it is shown. Changes go through undo. Main thread.
#pragma once

#include "program/desktop/Dragging.h"
#include "program/desktop/panels/RenderSettingsActs.h"
#include "program/desktop/panels/StagemarkSettings.h"
#include "program/desktop/panels/TreeRows.h"

namespace desktop {

class RenderSettingsRows : public TreeRows {
 public:
  enum Column { kName, kActive, kSize, kFrames, kColumnCount };
  enum Role {
    kIsActive = Qt::UserRole  // of any cell
  };

  using TreeRows::TreeRows;

  // Takes over the shape of the tree. True when it differed, which resets the model.
  bool Update(host::BaseDocument* doc);

  // Null where there are none any more.
  host::RenderData* SettingsAt(const QModelIndex& index) const;
  // Name of the Stagemark that they belong to, as it was at the last Update; empty for none.
  QString StagemarkOf(const host::RenderData& settings) const;
  SettingsList SettingsAt(const QModelIndexList& rows) const;

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
  QVariant BelongsText(const QModelIndex& index, int role) const;

  StagemarkSettings stagemarks_;
};

}  // namespace desktop
