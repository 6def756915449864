// LayersPanel: the layers of the active document with color and nine switches, and what one does to
// them: buttons at the foot and a context menu. Main thread.
#pragma once

#include <QTreeView>
#include <QWidget>

#include "engine/editing/LayerCommands.h"
#include "program/desktop/panels/DocumentView.h"
#include "program/desktop/panels/DragAndDrop.h"
#include "program/desktop/panels/NodeTreeModel.h"
#include "program/desktop/panels/PanelCommands.h"

namespace desktop {

// The layers as an item model. It keeps the shape of the tree and reads everything else from the
// document when a view asks for it. Each change is one undo step.
class LayerModel : public NodeTreeModel {
 public:
  // The switches follow, one column each.
  enum Column { kName, kColor, kFirstSwitch, kColumnCount = kFirstSwitch + 9 };
  enum Role {
    kIsOn = Qt::UserRole  // of a switch
  };

  using NodeTreeModel::NodeTreeModel;

  // Takes over the shape of the tree. True when it differed, which resets the model.
  bool Update(host::BaseDocument* doc);

  // Null where there is none any more.
  host::LayerObject* LayerAt(const QModelIndex& index) const;
  // Layers of the rows that still exist.
  engine::LayerList LayersAt(const QModelIndexList& rows) const;
  static bool IsSwitch(const QModelIndex& index) {
    return index.isValid() && index.column() >= kFirstSwitch;
  }

  int columnCount(const QModelIndex& = {}) const override { return kColumnCount; }
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  // Only names are set here.
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  // Layers are moved to where they are dropped. Objects come onto the layer of the row; those
  // dropped beside all rows are taken off theirs.
  QStringList mimeTypes() const override { return {kLayersMime, kObjectsMime}; }
  bool canDropMimeData(const QMimeData* data, Qt::DropAction, int, int,
                       const QModelIndex& parent) const override;
  bool dropMimeData(const QMimeData* data, Qt::DropAction, int row, int column,
                    const QModelIndex& parent) override;

 private:
  // Data of switch `number`, in the order of kLayerSwitchTable.
  QVariant SwitchData(const host::LayerData& layer, std::size_t number, int role) const;
};

// A click on a switch flips it, for all chosen layers when the clicked one is among them; a click
// on the color asks for another one. Layers are dragged to other places, objects onto layers. Owns
// its model.
class LayerTree : public QTreeView, public DocumentView {
 public:
  explicit LayerTree(QWidget* parent);

  void Follow(host::BaseDocument* doc) override;
  LayerModel& Model() { return *model_; }
  host::BaseDocument* Document() const { return model_->Document(); }
  engine::LayerList Chosen() const { return model_->LayersAt(selectionModel()->selectedRows()); }
  // Begins to edit the name of the layer in place.
  void EditName(const host::LayerObject& layer);
  // Asks for a color for the layers; they may be gone when the answer comes.
  void AskColor(const engine::LayerList& layers);

 protected:
  // A click on a switch or a color leaves the selection alone.
  QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                       const QEvent* event) const override;
  void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void startDrag(Qt::DropActions actions) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  // Flips the switch or asks for the color at the place of the event; false in the name, where the
  // click is the toolkit's.
  bool ClickedCell(const QMouseEvent& event);
  // The layer of the row, with all chosen ones when it is among them.
  engine::LayerList ChosenWith(const QModelIndex& index) const;
  // Selects the rows of the layers that are selected in the document.
  void ShowSelection();

  LayerModel* model_;
  // The document that is shown and its change count then: nothing is done until one differs.
  host::ULLONG doc_ = 0;
  host::ULLONG seen_ = 0;
  bool showing_ = true;  // what changes in here is no act of a person
};

// The tree with its buttons and context menu; owns them.
class LayersPanel : public QWidget, public DocumentView {
 public:
  explicit LayersPanel(QWidget* parent);

  void Follow(host::BaseDocument* doc) override;
  LayerTree& Tree() { return *tree_; }

 private:
  void BuildActions();
  // Adds to the context menu what has no button: the color, and each switch with its mark.
  void AddToMenu(QMenu& menu);
  // Makes a layer and begins to edit its name.
  void Add(host::BaseDocument& doc);

  LayerTree* tree_;
  PanelCommands<LayerTree> acts_;
};

}  // namespace desktop
