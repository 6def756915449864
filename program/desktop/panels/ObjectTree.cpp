#include "program/desktop/panels/ObjectTree.h"

#include <QAccessible>
#include <QDragEnterEvent>
#include <QHeaderView>
#include <QMimeData>
#include <QPainter>
#include <QScrollBar>

#include "engine/undo/Undo.h"
#include "host/BaseObject.h"
#include "program/desktop/Dragging.h"
#include "program/desktop/panels/EmptyText.h"
#include "program/desktop/panels/ObjectCells.h"
#include "program/desktop/panels/RowDragging.h"

namespace desktop {

using host::BaseObject;

namespace {

constexpr int kSwitchColumn = 21;
constexpr int kTagsColumn = 68;
constexpr int kIndentation = 14;
// Rows are unfolded by themselves down to here: the toolkit goes through them by recursion.
constexpr int kDeepest = 400;

int DepthOf(const BaseObject& object) {
  int depth = 0;
  for (const BaseObject* above = object.GetUp(); above && depth <= kDeepest; above = above->GetUp())
    ++depth;
  return depth;
}

}  // namespace

ObjectTree::ObjectTree(QWidget* parent)
    : QTreeView(parent),
      rows_(new ObjectRows(this)),
      selection_(new ObjectSelection(*rows_, this)) {
  setModel(rows_);
  setSelectionModel(selection_);
  setUniformRowHeights(true);
  setSelectionMode(ExtendedSelection);
  setEditTriggers(DoubleClicked);
  setAlternatingRowColors(true);
  setIndentation(kIndentation);
  setTextElideMode(Qt::ElideMiddle);
  LetRowsBeDragged(*this);
  setAccessibleName("Objects");
  header()->setStretchLastSection(false);
  header()->setMinimumSectionSize(kSwitchColumn);
  header()->setSectionsMovable(false);
  header()->setSectionResizeMode(QHeaderView::Fixed);
  header()->setSectionResizeMode(ObjectRows::kName, QHeaderView::Stretch);
  for (int column = ObjectRows::kLayer; column <= ObjectRows::kGenerator; ++column)
    setColumnWidth(column, kSwitchColumn);
  setColumnWidth(ObjectRows::kTags, kTagsColumn);
  InstallObjectCells(*this, [this](host::BaseMaterial& material) {
    return thumbnails_ ? thumbnails_->Of(material, devicePixelRatioF()) : QPixmap();
  });
  AddActions();
  connect(this, &QTreeView::expanded, this,
          [this](const QModelIndex& index) { RememberUnfolded(index, true); });
  connect(this, &QTreeView::collapsed, this,
          [this](const QModelIndex& index) { RememberUnfolded(index, false); });
}

// The toolkit lets go of the model in its own destructor, and asks for rows until then.
ObjectTree::~ObjectTree() { EndSweep(); }

void ObjectTree::ShowMaterialsAs(std::shared_ptr<MaterialThumbnails> thumbnails) {
  thumbnails_ = std::move(thumbnails);
  thumbnails_->Listen(this, [this](engine::NodeId) { viewport()->update(); });
}

void ObjectTree::AddActions() {
  const auto add = [this](const QString& text, const QKeySequence& keys,
                          void (ObjectTree::*act)()) {
    auto* action = new QAction(text, this);
    action->setShortcut(keys);
    action->setShortcutContext(Qt::WidgetShortcut);
    connect(action, &QAction::triggered, this, act);
    addAction(action);
  };
  setContextMenuPolicy(Qt::ActionsContextMenu);
  add("&Rename", QKeySequence(Qt::Key_F2), &ObjectTree::RenameCurrent);
  add("Show Acti&ve Object", QKeySequence("Ctrl+J"), &ObjectTree::ShowActive);
  add("Unfold All", QKeySequence(Qt::Key_Asterisk), &ObjectTree::UnfoldAll);
  add("Fold All", QKeySequence(Qt::Key_Slash | Qt::ControlModifier), &ObjectTree::FoldAll);
  auto* separator = new QAction(this);
  separator->setSeparator(true);
  addAction(separator);
}

void ObjectTree::Follow(host::BaseDocument* doc) {
  const host::ULLONG count = doc ? engine::ChangeCount(*doc) : 0;
  if (IdentityOf(doc) == doc_ && count == seen_) return;
  const int scrolledTo = IdentityOf(doc) == doc_ ? verticalScrollBar()->value() : 0;
  // What comes into an empty scene is unfolded as in a scene just opened.
  if (IdentityOf(doc) == doc_ && rows_->Shape().Count() == 0 && !rows_->IsFiltered())
    unfolded_.erase(doc_);
  doc_ = IdentityOf(doc);
  seen_ = count;
  if (rows_->Update(doc)) {
    Unfold();
    executeDelayedItemsLayout();
    verticalScrollBar()->setValue(scrolledTo);
  }
  FollowActive();
  viewport()->update();
  TellSelection();
}

// The toolkit tells screen readers of what its own model selects; here that is nothing.
void ObjectTree::TellSelection() {
  if (!QAccessible::isActive()) return;
  QAccessibleEvent event(this, QAccessible::SelectionWithin);
  QAccessible::updateAccessibility(&event);
}

void ObjectTree::SetFilter(const QString& text) {
  rows_->SetFilter(text);
  if (rows_->Update(rows_->Document())) Unfold();
  ShowActive();
  viewport()->update();
}

// Becomes the current row without a change of what is selected. It is brought into view once, so
// that one may scroll away.
void ObjectTree::FollowActive() {
  const host::BaseDocument* doc = rows_->Document();
  const BaseObject* object = doc ? doc->GetActiveObject() : nullptr;
  const engine::NodeId active = object ? engine::IdOf(*object) : 0;
  const bool isNew = active != active_;
  active_ = active;
  const QModelIndex index = rows_->IndexOf(active);
  if (!index.isValid() || index == currentIndex()) return;
  const bool follows = isNew && DepthOf(*object) < kDeepest;
  setAutoScroll(follows);
  selection_->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
  setAutoScroll(true);
}

void ObjectTree::ShowActive() {
  const host::BaseDocument* doc = rows_->Document();
  const BaseObject* object = doc ? doc->GetActiveObject() : nullptr;
  if (object && DepthOf(*object) < kDeepest) scrollTo(rows_->IndexOf(engine::IdOf(*object)));
}

void ObjectTree::RenameCurrent() {
  if (currentIndex().isValid()) edit(currentIndex().siblingAtColumn(ObjectRows::kName));
}

void ObjectTree::selectAll() {
  host::BaseDocument* doc = rows_->Document();
  if (!doc) return;
  if (!rows_->IsFiltered()) return SelectAll(*doc);
  const FlatTree& shape = rows_->Shape();
  std::vector<char> canBeSeen(static_cast<std::size_t>(shape.Count()) + 1, 1);
  std::vector<BaseObject*> found;
  for (int place = 1; place <= shape.Count(); ++place) {
    const int above = shape.At(place).parent;
    const bool shown = canBeSeen[static_cast<std::size_t>(above)] &&
                       (above == 0 || isExpanded(rows_->IndexAt(above)));
    canBeSeen[static_cast<std::size_t>(place)] = shown;
    BaseObject* object = shown ? rows_->ObjectAt(rows_->IndexAt(place)) : nullptr;
    if (object && rows_->IsFound(*object)) found.push_back(object);
  }
  SelectOnly(*doc, found);
}

ObjectTree::Unfolded& ObjectTree::UnfoldedHere() {
  const auto [it, isNew] = unfolded_.try_emplace(doc_);
  const FlatTree& shape = rows_->Shape();
  for (int place = 1; isNew && place <= shape.At(0).childCount; ++place)
    it->second.insert(shape.At(place).id);
  return it->second;
}

void ObjectTree::RememberUnfolded(const QModelIndex& index, bool unfolded) {
  if (unfolding_ || rows_->IsFiltered()) return;
  if (unfolded) UnfoldedHere().insert(rows_->IdAt(index));
  if (!unfolded) UnfoldedHere().erase(rows_->IdAt(index));
}

// While the layout is pending, unfolding a row costs nothing but remembering it.
void ObjectTree::Unfold() {
  const Unfolded& unfolded = UnfoldedHere();
  const FlatTree& shape = rows_->Shape();
  std::vector<int> depths(static_cast<std::size_t>(shape.Count()) + 1, -1);
  unfolding_ = true;
  scheduleDelayedItemsLayout();
  for (int place = 1; place <= shape.Count(); ++place) {
    const FlatTree::Entry& entry = shape.At(place);
    const int depth = depths[static_cast<std::size_t>(place)] =
        depths[static_cast<std::size_t>(entry.parent)] + 1;
    const bool wanted = depth < kDeepest && (rows_->IsFiltered() || unfolded.count(entry.id) == 1);
    if (entry.childCount > 0) setExpanded(rows_->IndexAt(place), wanted);
  }
  unfolding_ = false;
}

void ObjectTree::UnfoldAll() {
  const FlatTree& shape = rows_->Shape();
  for (int place = 1; place <= shape.Count(); ++place) {
    if (shape.At(place).childCount > 0) UnfoldedHere().insert(shape.At(place).id);
  }
  Unfold();
}

void ObjectTree::FoldAll() {
  UnfoldedHere().clear();
  Unfold();
}

// Written out, since the toolkit would look at ranges that it does not have here.
QItemSelectionModel::SelectionFlags ObjectTree::selectionCommand(const QModelIndex& index,
                                                                 const QEvent* event) const {
  using Model = QItemSelectionModel;
  const auto* input = dynamic_cast<const QInputEvent*>(event);
  const Qt::KeyboardModifiers keys = input ? input->modifiers() : Qt::NoModifier;
  const auto* mouse = dynamic_cast<const QMouseEvent*>(event);
  const bool isRelease = event && event->type() == QEvent::MouseButtonRelease;
  const bool isMove = event && event->type() == QEvent::MouseMove;
  const bool control = keys & Qt::ControlModifier;
  if (keys & Qt::ShiftModifier)
    return isRelease
               ? Model::NoUpdate
               : (control ? Model::Select : Model::ClearAndSelect) | Model::Current | Model::Rows;
  if (isMove)
    return control ? Model::Select | Model::Current | Model::Rows
                   : Model::ClearAndSelect | Model::Current | Model::Rows;
  if (!mouse) return control && event ? Model::NoUpdate : Model::ClearAndSelect | Model::Rows;
  if (!index.isValid())
    return control || state() == DragSelectingState ? Model::NoUpdate : Model::Clear;
  if (isRelease)
    return control || mouse->button() != Qt::LeftButton ? Model::NoUpdate
                                                        : Model::ClearAndSelect | Model::Rows;
  if (control && mouse->button() == Qt::LeftButton)
    return (IsSelected(index) ? Model::Deselect : Model::Select) | Model::Rows;
  return IsSelected(index) ? Model::NoUpdate : Model::ClearAndSelect | Model::Rows;
}

void ObjectTree::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Space)
    return SwitchSelected(event->modifiers() & Qt::ShiftModifier ? ObjectRows::kRender
                                                                 : ObjectRows::kEditor);
  QTreeView::keyPressEvent(event);
}

// All that is selected goes, whatever can be seen of it.
void ObjectTree::startDrag(Qt::DropActions) {
  const host::BaseDocument* doc = rows_->Document();
  const std::vector<BaseObject*> objects = doc ? SelectedObjects(*doc) : std::vector<BaseObject*>();
  if (objects.empty()) return;
  std::vector<engine::NodeId> ids;
  for (const BaseObject* object : objects) ids.push_back(engine::IdOf(*object));
  DragRows(*this, DraggedNodes(kObjectsMime, ids), static_cast<int>(ids.size()),
           NameInRow(objects.front()->GetName()));
}

void ObjectTree::dragEnterEvent(QDragEnterEvent* event) {
  // A material goes onto rows, never between them.
  setDragDropOverwriteMode(event->mimeData()->hasFormat(kMaterialMime));
  QTreeView::dragEnterEvent(event);
}

void ObjectTree::drawRow(QPainter* painter, const QStyleOptionViewItem& option,
                         const QModelIndex& index) const {
  QStyleOptionViewItem row = option;
  if (IsSelected(index)) row.state |= QStyle::State_Selected;
  QTreeView::drawRow(painter, row, index);
}

void ObjectTree::paintEvent(QPaintEvent* event) {
  QTreeView::paintEvent(event);
  if (rows_->rowCount() > 0) return;
  PaintEmptyText(*this,
                 rows_->IsFiltered()
                     ? "No object has \"" + rows_->Filter().left(60) + "\" in its name"
                     : QString("No objects in this scene: open or import one from the File menu"));
}

}  // namespace desktop
