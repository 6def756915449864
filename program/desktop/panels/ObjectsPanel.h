// ObjectsPanel: the objects of the active document as a tree, with a field above it that finds
// objects by a part of their names. Main thread.
#pragma once

#include <QLineEdit>
#include <QTreeView>
#include <QWidget>
#include <functional>
#include <memory>
#include <optional>
#include <unordered_map>
#include <unordered_set>

#include "program/desktop/panels/DocumentView.h"
#include "program/desktop/panels/MaterialThumbnails.h"
#include "program/desktop/panels/ObjectModel.h"

namespace desktop {

// The objects with layer, switches and tags of each. A click on a switch changes it, for all
// selected objects when the clicked one is among them; dragged on, it sets the switches of the rows
// that it passes alike, as one undo step. Rows are dragged to other places, materials onto rows.
// The selection stands in the document; which rows are unfolded is kept here, by identity. Owns
// its model and its selection.
class ObjectTree : public QTreeView, public DocumentView {
 public:
  explicit ObjectTree(QWidget* parent);
  ~ObjectTree() override;

  void Follow(host::BaseDocument* doc) override;
  // Shows only the objects with this text in their names and what is above them; empty: all.
  void SetFilter(const QString& text);
  ObjectModel& Model() { return *model_; }
  bool IsSelected(const QModelIndex& index) const { return selection_->Has(index); }
  void RenameCurrent();
  // All objects; while a search is on those that it found and that can be seen, so that nothing is
  // done to what is not shown.
  void selectAll() override;
  void UnfoldAll();
  void FoldAll();
  // Unfolds what is above the active object and brings it into view.
  void ShowActive();
  // Texture tags look like the thumbnails of their materials.
  void ShowMaterialsAs(std::shared_ptr<MaterialThumbnails> thumbnails);
  QSize sizeHint() const override { return {340, 400}; }

 protected:
  QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                       const QEvent* event) const override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void startDrag(Qt::DropActions actions) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void drawRow(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
  void paintEvent(QPaintEvent* event) override;

 private:
  // One press of the mouse on a switch, dragged on over those of other rows: an open undo step from
  // the press to the release.
  struct Sweep {
    host::ULLONG doc;
    // Column of ObjectModel; all switches of the sweep are set to `value`.
    int column;
    host::LONG value;
    int y;
  };
  using Unfolded = std::unordered_set<engine::NodeId>;

  // The entries of the context menu that work on the tree itself, with their keys.
  void AddActions();
  // Does what a press of the left button in a cell means; false in the name, where the press is the
  // toolkit's.
  bool PressedCell(const QMouseEvent& event);
  // Selects the tag under the pointer, with Ctrl besides those that are selected; on the count of
  // those not shown it opens a menu of them.
  void PressTag(host::BaseObject& object, const QModelIndex& index, const QMouseEvent& event);
  // Opens a menu of the layers at `place` of the screen, and puts the object on the one that is
  // chosen, with all selected ones when it is one of them.
  void AskLayer(host::BaseObject& object, const QPoint& place);
  // Opens the undo step of a sweep and sets the first switch. `y`: in pixels of the viewport.
  void BeginSweep(host::BaseObject& object, const QModelIndex& index, int y);
  // Sets the switches of all rows between the last place and this one, so that a fast mouse leaves
  // none out.
  void SweepTo(int y);
  // Closes the undo step; without a sweep it does nothing.
  void EndSweep();
  // Sets the switch of all selected objects as a click would set that of the active one. For the
  // keyboard.
  void SwitchSelected(int column);
  // Remembers what is unfolded anew in the rows as they are.
  void RememberUnfolded(const QModelIndex& index, bool unfolded);
  // Unfolds the rows that are remembered as unfolded and folds all others; while a search is on it
  // unfolds all.
  void Unfold();
  // Makes the row of the active object the current one.
  void FollowActive();
  // Tells screen readers that the selection may have changed.
  void NotifyScreenReaders();
  // The unfolded rows of the present document; at first those of the top level.
  Unfolded& UnfoldedHere();

  std::shared_ptr<MaterialThumbnails> thumbnails_;  // maybe null
  ObjectModel* model_;
  ObjectSelection* selection_;
  host::ULLONG doc_ = 0;
  host::ULLONG seen_ = 0;
  // The active object when it was last looked at
  engine::NodeId active_ = 0;
  std::unordered_map<host::ULLONG, Unfolded> unfolded_;  // by document
  // Set while rows unfold by the program: a person has unfolded nothing then.
  bool unfolding_ = false;
  // True from a press in a cell to its release; the toolkit gets none of its events.
  bool cellPressed_ = false;
  bool rowHeld_ = false;  // the last press took hold of a row, to drag it
  std::optional<Sweep> sweep_;
};

// The tree with its search field; owns both.
class ObjectsPanel : public QWidget, public DocumentView {
 public:
  explicit ObjectsPanel(QWidget* parent);

  void Follow(host::BaseDocument* doc) override { tree_->Follow(doc); }
  ObjectTree& Tree() { return *tree_; }
  QLineEdit& Search() { return *search_; }

 private:
  // Empties the field, which shows all objects again, and goes back to the tree.
  void EndSearch();

  QLineEdit* search_;
  ObjectTree* tree_;
};

}  // namespace desktop
