// ObjectModel and ObjectSelection: the objects of a document for the object tree. The model has a
// row for each object, or for each that the search finds: name, layer, switches, tags. The
// selection is kept in the document alone. Main thread.
#pragma once

#include <QItemSelectionModel>

#include "engine/editing/ObjectCommands.h"
#include "program/desktop/panels/DragAndDrop.h"
#include "program/desktop/panels/NodeTreeModel.h"

namespace desktop {

// Keeps the shape of the tree and reads everything else from the document when a view asks for it.
// Each change is one undo step of the document.
class ObjectModel : public NodeTreeModel {
 public:
  enum Column { kName, kLayer, kEditor, kRender, kGenerator, kTags, kColumnCount };
  enum Role {
    // Value of a switch: MODE_ number, or 0 and 1 for a generator; invalid where the object has no
    // such switch
    kMode = Qt::UserRole,
    // Whether the object is hidden, by itself or by an object above it; for a visibility
    kHidden
  };

  using NodeTreeModel::NodeTreeModel;

  // Takes over the shape of the tree, looking at the objects only when some came or went. True when
  // that reset the model.
  bool Update(host::BaseDocument* doc);
  // From the next update on only objects with this text in their names are rows, and the objects
  // above them; empty: all objects.
  void SetFilter(const QString& text);
  bool IsFiltered() const { return !filter_.isEmpty(); }
  const QString& Filter() const { return filter_; }
  // Whether the search finds this object by its name; all without a search. What is only above a
  // found one is not found.
  bool IsFound(const host::BaseObject& object) const;

  // Null where there is none any more.
  host::BaseObject* ObjectAt(const QModelIndex& index) const;
  static bool IsSwitch(const QModelIndex& index) {
    return index.column() >= kEditor && index.column() <= kGenerator;
  }
  // The switch that a column shows.
  static engine::Switch SwitchIn(int column) {
    return static_cast<engine::Switch>(column - kEditor);
  }

  int columnCount(const QModelIndex& = {}) const override { return kColumnCount; }
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  // Only names are set here.
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;

  // Objects are dragged by identity, and moved to where they are dropped; a material dropped on an
  // object is given to it, to all selected ones when it is one of them.
  QStringList mimeTypes() const override { return {kObjectsMime, kMaterialMime}; }
  bool canDropMimeData(const QMimeData* data, Qt::DropAction, int row, int column,
                       const QModelIndex& parent) const override;
  bool dropMimeData(const QMimeData* data, Qt::DropAction, int row, int column,
                    const QModelIndex& parent) override;

 private:
  // Data of the first column.
  QVariant NameData(const host::BaseObject& object, int role) const;
  // The part of the tree that the search finds.
  FlatTree Found(const host::BaseDocument* doc) const;

  // The count of objects that came or went when the tree was read last.
  host::ULLONG seen_ = 0;
  QString filter_;
  bool filterChanged_ = false;
  FlatTree whole_;  // of all objects
};

// The selected objects when `object` is one of them, else it alone.
std::vector<host::BaseObject*> SelectedWith(host::BaseObject& object);
// Name of the icon for a type of object.
QString ObjectIcon(host::LONG type);

// Selects in the document itself: what is selected stands there alone, as a bit of each object, so
// nothing has to be kept in step, and selecting a hundred thousand objects costs one walk over
// them. The toolkit's own ranges stay empty; only the current row is kept here.
class ObjectSelection : public QItemSelectionModel {
 public:
  ObjectSelection(ObjectModel& model, QObject* parent)
      : QItemSelectionModel(&model, parent), model_(model) {}

  using QItemSelectionModel::select;
  // To clear takes tags off the selection, too.
  void select(const QItemSelection& selection, SelectionFlags command) override;
  bool Has(const QModelIndex& index) const;

 private:
  ObjectModel& model_;
};

}  // namespace desktop
