// MaterialsPanel: the materials of the active document as thumbnails with names, and what one does
// to them: buttons at the foot and a context menu. Main thread.
#pragma once

#include <QAbstractListModel>
#include <QListView>
#include <QWidget>
#include <memory>
#include <unordered_map>

#include "engine/editing/MaterialCommands.h"
#include "program/desktop/panels/DocumentView.h"
#include "program/desktop/panels/MaterialThumbnails.h"
#include "program/desktop/panels/PanelCommands.h"

namespace desktop {

// The materials as a list model: name and thumbnail. It keeps identities and reads everything else
// from the document when a view asks for it. Renaming is one undo step.
class MaterialModel : public QAbstractListModel {
 public:
  // `scale`: of the screen that the thumbnails are shown on.
  MaterialModel(std::shared_ptr<MaterialThumbnails> thumbnails, std::function<double()> scale,
                QObject* parent);

  // Takes over which materials there are. True when that differed, which resets the model.
  bool Update(host::BaseDocument* doc);
  host::BaseDocument* Document() const { return FindOpenDocument(doc_); }
  // Null where there is none any more.
  host::BaseMaterial* MaterialAt(const QModelIndex& index) const;
  engine::MaterialList MaterialsAt(const QModelIndexList& rows) const;
  QModelIndex IndexOf(engine::NodeId material) const;
  const MaterialThumbnails& Thumbnails() const { return *thumbnails_; }

  int rowCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() ? 0 : static_cast<int>(ids_.size());
  }
  QVariant data(const QModelIndex& index, int role) const override;
  // Only names are set here.
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  // One material is dragged, the first of them.
  QStringList mimeTypes() const override;
  QMimeData* mimeData(const QModelIndexList& indexes) const override;

 private:
  host::ULLONG doc_ = 0;
  // In the order of the document, and the row of each.
  std::vector<engine::NodeId> ids_;
  std::unordered_map<engine::NodeId, int> rows_;
  // Pixels of the screen for a device-independent one; asked for each thumbnail, as a window may be
  // moved to another screen.
  std::function<double()> scale_;
  std::shared_ptr<MaterialThumbnails> thumbnails_;
};

// The thumbnails in rows as wide as the panel; one drags them onto objects. Owns its model.
class MaterialGrid : public QListView, public DocumentView {
 public:
  MaterialGrid(std::shared_ptr<MaterialThumbnails> thumbnails, QWidget* parent);

  void Follow(host::BaseDocument* doc) override;
  MaterialModel& Model() { return *model_; }
  host::BaseDocument* Document() const { return model_->Document(); }
  engine::MaterialList Chosen() const {
    return model_->MaterialsAt(selectionModel()->selectedIndexes());
  }
  // Begins to edit the name in place.
  void EditName(const host::BaseMaterial& material);

 protected:
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
  // The one that is pulled alone, however many are chosen.
  void startDrag(Qt::DropActions actions) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  // Selects the thumbnails of the materials that are selected in the document.
  void ShowSelection();

  MaterialModel* model_;
  host::ULLONG doc_ = 0;
  host::ULLONG seen_ = 0;
  bool showing_ = true;  // what changes in here is no act of a person
};

// The grid with its buttons and context menu; owns them.
class MaterialsPanel : public QWidget, public DocumentView {
 public:
  MaterialsPanel(std::shared_ptr<MaterialThumbnails> thumbnails, QWidget* parent);

  void Follow(host::BaseDocument* doc) override;
  MaterialGrid& Grid() { return *grid_; }
  // Told when somebody wants to see what a material is made of.
  std::function<void()> opened;

 private:
  void BuildActions();
  // Makes a material and begins to edit its name.
  void Add(host::BaseDocument& doc);

  MaterialGrid* grid_;
  PanelCommands<MaterialGrid> acts_;
};

}  // namespace desktop
