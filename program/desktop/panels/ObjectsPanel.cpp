// The tree of objects. Selection is the document's (see ObjectSelection), which the toolkit knows
// nothing of: what it does with its own selection, drawing, dragging, ranges by Shift, is written
// out here. Switches are pressed in their cells and swept over with the mouse as one undo step.
#include "program/desktop/panels/ObjectsPanel.h"

#include <QAccessible>
#include <QDragEnterEvent>
#include <QHeaderView>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QShortcut>
#include <QVBoxLayout>

#include "engine/editing/LayerCommands.h"
#include "engine/editing/ObjectCommands.h"
#include "engine/editing/Selection.h"
#include "engine/scene/ElementState.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/TreeWalk.h"
#include "engine/undo/Undo.h"
#include "host/BaseObject.h"
#include "program/desktop/Colors.h"
#include "program/desktop/Icons.h"
#include "program/desktop/Text.h"
#include "program/desktop/background/SlicedEdit.h"
#include "program/desktop/panels/DragAndDrop.h"
#include "program/desktop/panels/EmptyText.h"
#include "program/desktop/panels/ObjectCells.h"

namespace desktop {

using host::BaseObject;

namespace {

// Pixels.
constexpr int kObjectSwitchWidth = 21;
constexpr int kTagsColumn = 68;
constexpr int kIndentation = 14;
// Rows are unfolded by themselves down to here: the toolkit goes through them by recursion.
constexpr int kDeepest = 400;

// Counted no further than needed.
int DepthOf(const BaseObject& object) {
  int depth = 0;
  for (const BaseObject* above = object.GetUp(); above && depth <= kDeepest; above = above->GetUp())
    ++depth;
  return depth;
}

}  // namespace

ObjectTree::ObjectTree(QWidget* parent)
    : QTreeView(parent),
      model_(new ObjectModel(this)),
      selection_(new ObjectSelection(*model_, this)) {
  setModel(model_);
  setSelectionModel(selection_);
  setUniformRowHeights(true);
  setSelectionMode(ExtendedSelection);
  setEditTriggers(DoubleClicked);
  setAlternatingRowColors(true);
  setIndentation(kIndentation);
  setTextElideMode(Qt::ElideMiddle);
  EnableRowDragging(*this);
  setAccessibleName("Objects");
  header()->setStretchLastSection(false);
  header()->setMinimumSectionSize(kObjectSwitchWidth);
  header()->setSectionsMovable(false);
  header()->setSectionResizeMode(QHeaderView::Fixed);
  header()->setSectionResizeMode(ObjectModel::kName, QHeaderView::Stretch);
  for (int column = ObjectModel::kLayer; column <= ObjectModel::kGenerator; ++column)
    setColumnWidth(column, kObjectSwitchWidth);
  setColumnWidth(ObjectModel::kTags, kTagsColumn);
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

// They make the context menu, too.
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

// The layout is made at once, because the scroll bar has no range before it.
void ObjectTree::Follow(host::BaseDocument* doc) {
  const host::ULLONG count = doc ? engine::ChangeCount(*doc) : 0;
  if (IdentityOf(doc) == doc_ && count == seen_) return;
  const int scrolledTo = IdentityOf(doc) == doc_ ? verticalScrollBar()->value() : 0;
  // Objects that come into an empty scene are unfolded as in a scene just opened.
  if (IdentityOf(doc) == doc_ && model_->Shape().Count() == 0 && !model_->IsFiltered())
    unfolded_.erase(doc_);
  doc_ = IdentityOf(doc);
  seen_ = count;
  if (model_->Update(doc)) {
    Unfold();
    executeDelayedItemsLayout();
    verticalScrollBar()->setValue(scrolledTo);
  }
  FollowActive();
  viewport()->update();
  NotifyScreenReaders();
}

// The toolkit tells screen readers of what its own model selects; here that is nothing.
void ObjectTree::NotifyScreenReaders() {
  if (!QAccessible::isActive()) return;
  QAccessibleEvent event(this, QAccessible::SelectionWithin);
  QAccessible::updateAccessibility(&event);
}

void ObjectTree::SetFilter(const QString& text) {
  model_->SetFilter(text);
  if (model_->Update(model_->Document())) Unfold();
  ShowActive();
  viewport()->update();
}

// Becomes the current row without a change of what is selected. It is brought into view once, so
// that one may scroll away.
void ObjectTree::FollowActive() {
  const host::BaseDocument* doc = model_->Document();
  const BaseObject* object = doc ? doc->GetActiveObject() : nullptr;
  const engine::NodeId active = object ? engine::IdOf(*object) : 0;
  const bool isNew = active != active_;
  active_ = active;
  const QModelIndex index = model_->IndexOf(active);
  if (!index.isValid() || index == currentIndex()) return;
  const bool follows = isNew && DepthOf(*object) < kDeepest;
  setAutoScroll(follows);
  selection_->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
  setAutoScroll(true);
}

void ObjectTree::ShowActive() {
  const host::BaseDocument* doc = model_->Document();
  const BaseObject* object = doc ? doc->GetActiveObject() : nullptr;
  if (object && DepthOf(*object) < kDeepest) scrollTo(model_->IndexOf(engine::IdOf(*object)));
}

void ObjectTree::RenameCurrent() {
  if (currentIndex().isValid()) edit(currentIndex().siblingAtColumn(ObjectModel::kName));
}

// While a search is on: what it found and can be seen, not the parents that are shown for the sake
// of it and not what is folded away. One pass, parents before children.
void ObjectTree::selectAll() {
  host::BaseDocument* doc = model_->Document();
  if (!doc) return;
  if (!model_->IsFiltered()) return engine::SelectAll(*doc);
  const FlatTree& shape = model_->Shape();
  std::vector<char> canBeSeen(static_cast<std::size_t>(shape.Count()) + 1, 1);
  std::vector<BaseObject*> found;
  for (int place = 1; place <= shape.Count(); ++place) {
    const int above = shape.At(place).parent;
    const bool shown = canBeSeen[static_cast<std::size_t>(above)] &&
                       (above == 0 || isExpanded(model_->IndexAt(above)));
    canBeSeen[static_cast<std::size_t>(place)] = shown;
    BaseObject* object = shown ? model_->ObjectAt(model_->IndexAt(place)) : nullptr;
    if (object && model_->IsFound(*object)) found.push_back(object);
  }
  engine::SelectOnly(*doc, found);
}

// By identity and for each document, so that rows stay unfolded through any change. In a new
// document the top level is.
ObjectTree::Unfolded& ObjectTree::UnfoldedHere() {
  const auto [it, isNew] = unfolded_.try_emplace(doc_);
  const FlatTree& shape = model_->Shape();
  for (int place = 1; isNew && place <= shape.At(0).childCount; ++place)
    it->second.insert(shape.At(place).id);
  return it->second;
}

// A search unfolds everything for its time; that is nothing to remember.
void ObjectTree::RememberUnfolded(const QModelIndex& index, bool unfolded) {
  if (unfolding_ || model_->IsFiltered()) return;
  if (unfolded) UnfoldedHere().insert(model_->IdAt(index));
  if (!unfolded) UnfoldedHere().erase(model_->IdAt(index));
}

// While the layout is pending, unfolding a row costs nothing but remembering it.
void ObjectTree::Unfold() {
  const Unfolded& unfolded = UnfoldedHere();
  const FlatTree& shape = model_->Shape();
  std::vector<int> depths(static_cast<std::size_t>(shape.Count()) + 1, -1);
  unfolding_ = true;
  scheduleDelayedItemsLayout();
  for (int place = 1; place <= shape.Count(); ++place) {
    const FlatTree::Entry& entry = shape.At(place);
    const int depth = depths[static_cast<std::size_t>(place)] =
        depths[static_cast<std::size_t>(entry.parent)] + 1;
    const bool wanted = depth < kDeepest && (model_->IsFiltered() || unfolded.count(entry.id) == 1);
    if (entry.childCount > 0) setExpanded(model_->IndexAt(place), wanted);
  }
  unfolding_ = false;
}

void ObjectTree::UnfoldAll() {
  const FlatTree& shape = model_->Shape();
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
  using Flags = QItemSelectionModel;
  const auto* input = dynamic_cast<const QInputEvent*>(event);
  const Qt::KeyboardModifiers keys = input ? input->modifiers() : Qt::NoModifier;
  const auto* mouse = dynamic_cast<const QMouseEvent*>(event);
  const bool isRelease = event && event->type() == QEvent::MouseButtonRelease;
  const bool isMove = event && event->type() == QEvent::MouseMove;
  const bool control = keys & Qt::ControlModifier;
  if (keys & Qt::ShiftModifier) {
    return isRelease
               ? Flags::NoUpdate
               : (control ? Flags::Select : Flags::ClearAndSelect) | Flags::Current | Flags::Rows;
  }
  if (isMove)
    return control ? Flags::Select | Flags::Current | Flags::Rows
                   : Flags::ClearAndSelect | Flags::Current | Flags::Rows;
  if (!mouse) return control && event ? Flags::NoUpdate : Flags::ClearAndSelect | Flags::Rows;
  if (!index.isValid())
    return control || state() == DragSelectingState ? Flags::NoUpdate : Flags::Clear;
  if (isRelease)
    return control || mouse->button() != Qt::LeftButton ? Flags::NoUpdate
                                                        : Flags::ClearAndSelect | Flags::Rows;
  if (control && mouse->button() == Qt::LeftButton)
    return (IsSelected(index) ? Flags::Deselect : Flags::Select) | Flags::Rows;
  return IsSelected(index) ? Flags::NoUpdate : Flags::ClearAndSelect | Flags::Rows;
}

void ObjectTree::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Space)
    return SwitchSelected(event->modifiers() & Qt::ShiftModifier ? ObjectModel::kRender
                                                                 : ObjectModel::kEditor);
  QTreeView::keyPressEvent(event);
}

// All that is selected goes, whatever can be seen of it.
void ObjectTree::startDrag(Qt::DropActions) {
  const host::BaseDocument* doc = model_->Document();
  const std::vector<BaseObject*> objects =
      doc ? engine::SelectedObjects(*doc) : std::vector<BaseObject*>();
  if (objects.empty()) return;
  std::vector<engine::NodeId> ids;
  ids.reserve(objects.size());
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
  if (model_->rowCount() > 0) return;
  PaintEmptyText(*this,
                 model_->IsFiltered()
                     ? "No object has \"" + model_->Filter().left(60) + "\" in its name"
                     : QString("No objects in this scene: open or import one from the File menu"));
}

namespace {

// The mouse in the cells: switches and sweeps over them, tags, layers.

constexpr std::size_t kMostMenuEntries = 60;
constexpr int kEntrySwatchSide = 12;

// Undefined, on, off, and round; generators know only on and off.
host::LONG NextValue(engine::Switch which, int value) {
  if (which == engine::Switch::kGenerator) return value ? 0 : 1;
  switch (value) {
    case host::MODE_UNDEF:
      return host::MODE_ON;
    case host::MODE_ON:
      return host::MODE_OFF;
    default:
      return host::MODE_UNDEF;
  }
}

constexpr int kLongestEntry = 60;

QString MenuText(const host::String& name) {
  return ToQt(name).left(kLongestEntry).replace('&', "&&");
}

QIcon Swatch(const host::Vector& color) {
  QPixmap picture(kEntrySwatchSide, kEntrySwatchSide);
  picture.fill(colors::Shown(color));
  return picture;
}

}  // namespace

// `rowHeld_`: a drag of rows may begin here, on the name and not beside it.
void ObjectTree::mousePressEvent(QMouseEvent* event) {
  const QPoint place = event->position().toPoint();
  cellPressed_ = PressedCell(*event);
  if (!cellPressed_) QTreeView::mousePressEvent(event);
  const bool plain = event->button() == Qt::LeftButton && event->modifiers() == Qt::NoModifier;
  rowHeld_ = plain && !cellPressed_ && visualRect(indexAt(place)).contains(place);
}

void ObjectTree::mouseDoubleClickEvent(QMouseEvent* event) {
  cellPressed_ = PressedCell(*event);
  if (!cellPressed_) QTreeView::mouseDoubleClickEvent(event);
}

void ObjectTree::mouseMoveEvent(QMouseEvent* event) {
  if (sweep_) SweepTo(event->position().toPoint().y());
  // The toolkit would drag rows that its own model knows to be selected, and select what the mouse
  // passes from any other.
  if (rowHeld_ && event->buttons() == Qt::LeftButton && state() == NoState) setState(DraggingState);
  if (!cellPressed_) QTreeView::mouseMoveEvent(event);
}

void ObjectTree::mouseReleaseEvent(QMouseEvent* event) {
  EndSweep();
  if (!std::exchange(cellPressed_, false)) QTreeView::mouseReleaseEvent(event);
}

bool ObjectTree::PressedCell(const QMouseEvent& event) {
  const QPoint place = event.position().toPoint();
  const QModelIndex index = indexAt(place);
  if (event.button() != Qt::LeftButton || !index.isValid() || index.column() == ObjectModel::kName)
    return false;
  BaseObject* object = model_->ObjectAt(index);
  if (!object) return true;
  if (index.column() == ObjectModel::kTags) {
    PressTag(*object, index, event);
  } else if (index.column() == ObjectModel::kLayer) {
    AskLayer(*object, event.globalPosition().toPoint());
  } else if (index.data(ObjectModel::kMode).isValid()) {
    BeginSweep(*object, index, place.y());
  }
  viewport()->update();
  return true;
}

// The menu runs an event loop: the tag is found again by its identity.
void ObjectTree::PressTag(BaseObject& object, const QModelIndex& index, const QMouseEvent& event) {
  const bool add = event.modifiers() & Qt::ControlModifier;
  const QRect cell = visualRect(index);
  const TagHit hit = TagAt(cell, event.position().toPoint(), object);
  if (hit.tag) return engine::SelectTag(*hit.tag, add);
  if (!hit.more) return;
  QMenu menu(this);
  for (host::BaseTag* tag :
       TagsFrom(object, TagsFitting(object, cell.width()).tags.size(), kMostMenuEntries)) {
    menu.addAction(Icon(TagIcon(tag->GetType())), TagText(*tag).replace('&', "&&"))
        ->setData(QVariant::fromValue(engine::IdOf(*tag)));
  }
  const QAction* chosen = menu.exec(event.globalPosition().toPoint());
  host::BaseDocument* doc = chosen ? model_->Document() : nullptr;
  host::BaseTag* tag =
      doc ? engine::AsTag(engine::FindNode(doc, chosen->data().value<engine::NodeId>())) : nullptr;
  if (tag) engine::SelectTag(*tag, add);
}

// Here the object is found again.
void ObjectTree::AskLayer(BaseObject& object, const QPoint& place) {
  const engine::NodeId asked = engine::IdOf(object);
  QMenu menu(this);
  menu.addAction("No Layer")->setData(QVariant::fromValue(engine::NodeId{0}));
  menu.addSeparator();
  std::size_t left = kMostMenuEntries;
  const host::GeListNode* node = model_->Document()->GetLayerObjectRoot()->GetFirst();
  for (; node && left > 0; node = engine::NextInTree(node), --left) {
    const auto& layer = static_cast<const host::LayerObject&>(*node);
    menu.addAction(Swatch(engine::OwnLayerData(layer).color), MenuText(layer.GetName()))
        ->setData(QVariant::fromValue(engine::IdOf(layer)));
  }
  if (node)
    menu.addAction("More in the Layers panel: drop objects on them there")->setEnabled(false);
  const QAction* chosen = menu.exec(place);
  host::BaseDocument* doc = chosen ? model_->Document() : nullptr;
  BaseObject* still = doc ? engine::AsObject(engine::FindNode(doc, asked)) : nullptr;
  if (!still) return;
  auto* layer = engine::AsLayer(engine::FindNode(doc, chosen->data().value<engine::NodeId>()));
  RunEdit(*doc, engine::AssignLayer(*doc, SelectedWith(*still), layer));
}

// The undo group stays open until the button is let go, so that a sweep over twenty rows is one
// step.
void ObjectTree::BeginSweep(BaseObject& object, const QModelIndex& index, int y) {
  EndSweep();
  host::BaseDocument& doc = *object.GetDocument();
  const engine::Switch which = ObjectModel::SwitchIn(index.column());
  const host::LONG value = NextValue(which, index.data(ObjectModel::kMode).toInt());
  sweep_ = Sweep{doc_, index.column(), value, y};
  doc.StartUndo();
  engine::NameUndo(doc, engine::SwitchStep(which));
  engine::ChangeSwitch(doc, SelectedWith(object), which, value);
}

// All rows between the last place of the mouse and this one: a fast mouse skips rows.
void ObjectTree::SweepTo(int y) {
  host::BaseDocument* doc = FindOpenDocument(sweep_->doc);
  if (!doc || doc != model_->Document()) return;
  const int last = std::clamp(y, 0, viewport()->height() - 1);
  const int x = columnViewportPosition(sweep_->column) + columnWidth(sweep_->column) / 2;
  QModelIndex index = indexAt({x, std::min(sweep_->y, last)});
  for (; index.isValid() && visualRect(index).top() <= std::max(sweep_->y, last);
       index = indexBelow(index)) {
    BaseObject* object = model_->ObjectAt(index);
    const QModelIndex cell = index.siblingAtColumn(sweep_->column);
    if (object && cell.data(ObjectModel::kMode).isValid()) {
      engine::ChangeSwitch(*doc, {object}, ObjectModel::SwitchIn(sweep_->column), sweep_->value);
    }
  }
  sweep_->y = last;
}

void ObjectTree::EndSweep() {
  if (!sweep_) return;
  host::BaseDocument* doc = FindOpenDocument(sweep_->doc);
  sweep_.reset();
  if (!doc) return;
  doc->EndUndo();
  host::EventAdd();
}

// All get the value that follows that of the active one.
void ObjectTree::SwitchSelected(int column) {
  host::BaseDocument* doc = model_->Document();
  const BaseObject* active = doc ? doc->GetActiveObject() : nullptr;
  const engine::Switch which = ObjectModel::SwitchIn(column);
  if (!active) return;
  const host::LONG value = NextValue(which, engine::SwitchOf(*active, which));
  RunEdit(*doc, engine::SetSwitch(*doc, engine::SelectedObjects(*doc), which, value));
}

ObjectsPanel::ObjectsPanel(QWidget* parent)
    : QWidget(parent), search_(new QLineEdit(this)), tree_(new ObjectTree(this)) {
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(4, 4, 4, 0);
  layout->setSpacing(4);
  layout->addWidget(search_);
  layout->addWidget(tree_);
  setFocusProxy(tree_);
  search_->setPlaceholderText("Search objects");
  search_->setToolTip("Shows only objects with this in their names (Ctrl+L or /, Escape ends)");
  search_->setClearButtonEnabled(true);
  search_->addAction(Icon("search"), QLineEdit::LeadingPosition);
  search_->setAccessibleName("Search objects");
  connect(search_, &QLineEdit::textChanged, tree_, &ObjectTree::SetFilter);
  connect(search_, &QLineEdit::returnPressed, tree_, qOverload<>(&QWidget::setFocus));
  const auto find = [this] {
    search_->setFocus(Qt::ShortcutFocusReason);
    search_->selectAll();
  };
  const auto add = [](QWidget* place, const QKeySequence& keys, Qt::ShortcutContext where,
                      const char* what, auto act) {
    auto* shortcut = new QShortcut(keys, place, nullptr, nullptr, where);
    shortcut->setWhatsThis(what);
    connect(shortcut, &QShortcut::activated, place, act);
  };
  add(this, QKeySequence("Ctrl+L"), Qt::WindowShortcut, "Search objects", find);
  // Only in the tree, so that a slash can be typed everywhere else.
  add(tree_, QKeySequence("/"), Qt::WidgetShortcut, "Search objects", find);
  add(this, QKeySequence(Qt::Key_Escape), Qt::WidgetWithChildrenShortcut, "End the search",
      [this] { EndSearch(); });
}

void ObjectsPanel::EndSearch() {
  search_->clear();
  tree_->setFocus();
}

}  // namespace desktop
