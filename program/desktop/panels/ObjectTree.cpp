#include "program/desktop/panels/ObjectTree.h"

#include <QHeaderView>
#include <QMouseEvent>
#include <QPainter>
#include <QStyledItemDelegate>

#include "host/AtomArray.h"
#include "host/BaseObject.h"

namespace desktop {

namespace {

constexpr int kDotColumn = 22;
constexpr double kDotRadius = 4.2;
constexpr QRgb kOn = 0xff8fb26b;
constexpr QRgb kOff = 0xffc7604f;
constexpr QRgb kUndefined = 0xff6a6a6a;

// A full dot for a mode of the object's own; an empty one follows the parent, in the colour of what comes of it.
class DotDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    QStyledItemDelegate::paint(painter, option, index);
    const int mode = index.data(ObjectRows::kMode).toInt();
    const bool hidden = index.data(ObjectRows::kHidden).toBool();
    const QColor color(mode == host::MODE_ON ? kOn : hidden ? kOff : kUndefined);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(QPen(color, 1.4));
    painter->setBrush(mode == host::MODE_UNDEF ? QBrush(Qt::NoBrush) : QBrush(color));
    painter->drawEllipse(QRectF(option.rect).center(), kDotRadius, kDotRadius);
    painter->restore();
  }
};

host::LONG NextMode(int mode) {
  switch (mode) {
    case host::MODE_UNDEF:
      return host::MODE_ON;
    case host::MODE_ON:
      return host::MODE_OFF;
    default:
      return host::MODE_UNDEF;
  }
}

}  // namespace

ObjectTree::ObjectTree(QWidget* parent) : QTreeView(parent), rows_(new ObjectRows(this)) {
  setModel(rows_);
  setHeaderHidden(true);
  setUniformRowHeights(true);
  setSelectionMode(ExtendedSelection);
  setEditTriggers(EditKeyPressed | DoubleClicked);
  setAlternatingRowColors(true);
  header()->setStretchLastSection(false);
  header()->setMinimumSectionSize(kDotColumn);
  header()->setSectionResizeMode(ObjectRows::kName, QHeaderView::Stretch);
  for (const int column : {ObjectRows::kEditor, ObjectRows::kRender}) {
    header()->setSectionResizeMode(column, QHeaderView::Fixed);
    setColumnWidth(column, kDotColumn);
    setItemDelegateForColumn(column, new DotDelegate(this));
  }
  showing_ = false;
}

void ObjectTree::Follow(host::BaseDocument* doc) {
  const host::ULLONG count = doc ? engine::ChangeCount(*doc) : 0;
  if (IdentityOf(doc) == doc_ && count == seen_) return;
  const bool isNew = IdentityOf(doc) != doc_ || rows_->rowCount() == 0;
  doc_ = IdentityOf(doc);
  seen_ = count;
  showing_ = true;
  const auto expanded = isNew ? std::vector<engine::NodeId>() : Expanded();
  if (rows_->Update(doc)) isNew ? expandToDepth(0) : Expand(expanded);
  ShowSelection();
  showing_ = false;
  viewport()->update();
}

// Only what can be seen open is walked: children of closed objects are not looked at.
std::vector<engine::NodeId> ObjectTree::Expanded() const {
  std::vector<engine::NodeId> found;
  std::vector<QModelIndex> open = {QModelIndex()};
  while (!open.empty()) {
    const QModelIndex above = open.back();
    open.pop_back();
    for (int row = 0; row < rows_->rowCount(above); ++row) {
      const QModelIndex index = rows_->index(row, 0, above);
      if (!isExpanded(index)) continue;
      found.push_back(rows_->IdAt(index));
      open.push_back(index);
    }
  }
  return found;
}

void ObjectTree::Expand(const std::vector<engine::NodeId>& objects) {
  for (const engine::NodeId object : objects) expand(rows_->IndexOf(object));
}

void ObjectTree::ShowSelection() {
  QItemSelection wanted;
  if (const host::BaseDocument* doc = rows_->Document()) {
    host::AtomArray chosen;
    doc->GetActiveObjects(chosen, host::GETACTIVEOBJECTFLAGS_CHILDREN);
    for (host::LONG i = 0; i < chosen.GetCount(); ++i) {
      const QModelIndex index = rows_->IndexOf(engine::IdOf(*engine::AsObject(chosen.GetIndex(i))));
      const bool goesOn =
          !wanted.isEmpty() && wanted.last().parent() == index.parent() && wanted.last().bottom() + 1 == index.row();
      const QModelIndex from = goesOn ? QModelIndex(wanted.takeLast().topLeft()) : index;
      wanted.append(QItemSelectionRange(from, index.siblingAtColumn(ObjectRows::kRender)));
    }
  }
  selectionModel()->select(wanted, QItemSelectionModel::ClearAndSelect);
}

QItemSelectionModel::SelectionFlags ObjectTree::selectionCommand(const QModelIndex& index, const QEvent* event) const {
  const bool isMouse = event && (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonRelease);
  if (isMouse && index.column() > ObjectRows::kName) return QItemSelectionModel::NoUpdate;
  return QTreeView::selectionCommand(index, event);
}

void ObjectTree::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
  QTreeView::selectionChanged(selected, deselected);
  host::BaseDocument* doc = showing_ ? nullptr : rows_->Document();
  if (!doc) return;
  doc->SetActiveObject(nullptr);
  for (const QModelIndex& row : selectionModel()->selectedRows()) doc->SetActiveObject(rows_->ObjectAt(row), host::SELECTION_ADD);
  host::EventAdd();
}

void ObjectTree::mousePressEvent(QMouseEvent* event) {
  if (!ClickedDot(*event)) QTreeView::mousePressEvent(event);
}

void ObjectTree::mouseDoubleClickEvent(QMouseEvent* event) {
  if (!ClickedDot(*event)) QTreeView::mouseDoubleClickEvent(event);
}

bool ObjectTree::ClickedDot(const QMouseEvent& event) {
  const QModelIndex index = indexAt(event.position().toPoint());
  if (!index.isValid() || index.column() == ObjectRows::kName || event.button() != Qt::LeftButton) return false;
  const QModelIndexList chosen = selectionModel()->selectedRows();
  const QModelIndex row = index.siblingAtColumn(0);
  rows_->SetMode(chosen.contains(row) ? chosen : QModelIndexList{row}, index.column(),
                 NextMode(index.data(ObjectRows::kMode).toInt()));
  viewport()->update();
  return true;
}

void ObjectTree::paintEvent(QPaintEvent* event) {
  QTreeView::paintEvent(event);
  if (rows_->rowCount() > 0) return;
  QPainter painter(viewport());
  painter.setPen(palette().color(QPalette::PlaceholderText));
  painter.drawText(viewport()->rect().adjusted(12, 12, -12, -12), Qt::AlignCenter | Qt::TextWordWrap, "No objects in this scene");
}

}  // namespace desktop
