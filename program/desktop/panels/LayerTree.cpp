#include "program/desktop/panels/LayerTree.h"

#include <QColorDialog>
#include <QDragEnterEvent>
#include <QHeaderView>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QStyledItemDelegate>

#include "program/desktop/Icons.h"
#include "program/desktop/panels/EmptyText.h"
#include "program/desktop/panels/LayerSwitches.h"
#include "program/desktop/panels/RowDragging.h"

namespace desktop {

namespace {

constexpr int kSwitchColumn = 24;
constexpr int kColorColumn = 26;
constexpr int kIconSide = 16;
constexpr int kSwatchSide = 12;

QRect Centered(const QRect& cell, int side) {
  return {cell.center() - QPoint(side / 2 - 1, side / 2 - 1), QSize(side, side)};
}

// What stands behind a cell: chosen rows have another ground.
void PaintGround(QPainter& painter, const QStyleOptionViewItem& option) {
  option.widget->style()->drawPrimitive(QStyle::PE_PanelItemViewItem, &option, &painter,
                                        option.widget);
}

// The icon of a switch, faint when it is off.
class SwitchDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override {
    PaintGround(*painter, option);
    const bool isOn = index.data(LayerRows::kIsOn).toBool();
    index.data(Qt::DecorationRole)
        .value<QIcon>()
        .paint(painter, Centered(option.rect, kIconSide), Qt::AlignCenter,
               isOn ? QIcon::Normal : QIcon::Disabled);
  }
};

class SwatchDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override {
    PaintGround(*painter, option);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(index.data(Qt::BackgroundRole).value<QColor>());
    painter->drawRoundedRect(Centered(option.rect, kSwatchSide), 2.5, 2.5);
    painter->restore();
  }
};

}  // namespace

LayerTree::LayerTree(QWidget* parent) : QTreeView(parent), rows_(new LayerRows(this)) {
  setModel(rows_);
  setUniformRowHeights(true);
  setSelectionMode(ExtendedSelection);
  setEditTriggers(EditKeyPressed | DoubleClicked);
  setAlternatingRowColors(true);
  LetRowsBeDragged(*this);
  setAccessibleName("Layers");
  header()->setStretchLastSection(false);
  header()->setMinimumSectionSize(kSwitchColumn);
  header()->setSectionResizeMode(QHeaderView::Fixed);
  header()->setSectionResizeMode(LayerRows::kName, QHeaderView::Stretch);
  header()->setSectionsMovable(false);
  header()->setDefaultAlignment(Qt::AlignCenter);
  header()->moveSection(LayerRows::kColor, 0);
  setTreePosition(LayerRows::kName);
  setColumnWidth(LayerRows::kColor, kColorColumn);
  setItemDelegateForColumn(LayerRows::kColor, new SwatchDelegate(this));
  auto* switches = new SwitchDelegate(this);
  for (int column = LayerRows::kFirstSwitch; column < LayerRows::kColumnCount; ++column) {
    setColumnWidth(column, kSwitchColumn);
    setItemDelegateForColumn(column, switches);
  }
  showing_ = false;
}

void LayerTree::Follow(host::BaseDocument* doc) {
  const host::ULLONG count = doc ? engine::ChangeCount(*doc) : 0;
  if (IdentityOf(doc) == doc_ && count == seen_) return;
  doc_ = IdentityOf(doc);
  seen_ = count;
  showing_ = true;
  if (rows_->Update(doc)) expandAll();
  ShowSelection();
  showing_ = false;
  viewport()->update();
}

void LayerTree::EditName(const host::LayerObject& layer) {
  const QModelIndex index = rows_->IndexOf(engine::IdOf(layer));
  setCurrentIndex(index);
  edit(index);
}

void LayerTree::AskColor(const LayerList& layers) {
  if (layers.empty()) return;
  std::vector<engine::NodeId> ids;
  for (const host::LayerObject* layer : layers) ids.push_back(engine::IdOf(*layer));
  const QColor now =
      rows_->IndexOf(ids.front(), LayerRows::kColor).data(Qt::BackgroundRole).value<QColor>();
  const QColor color = QColorDialog::getColor(now, this, "Color of the layer");
  host::BaseDocument* doc = color.isValid() ? Document() : nullptr;
  if (!doc) return;
  LayerList still;
  for (const engine::NodeId id : ids) still.push_back(engine::AsLayer(engine::FindNode(doc, id)));
  SetLayerColor(*doc, still, {color.redF(), color.greenF(), color.blueF()});
}

QItemSelectionModel::SelectionFlags LayerTree::selectionCommand(const QModelIndex& index,
                                                                const QEvent* event) const {
  const bool isMouse =
      event && (event->type() == QEvent::MouseButtonPress ||
                event->type() == QEvent::MouseButtonRelease || event->type() == QEvent::MouseMove);
  if (isMouse && index.isValid() && index.column() != LayerRows::kName)
    return QItemSelectionModel::NoUpdate;
  return QTreeView::selectionCommand(index, event);
}

void LayerTree::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
  QTreeView::selectionChanged(selected, deselected);
  host::BaseDocument* doc = showing_ ? nullptr : Document();
  if (doc) SelectLayers(*doc, Chosen());
}

void LayerTree::mousePressEvent(QMouseEvent* event) {
  if (!ClickedCell(*event)) QTreeView::mousePressEvent(event);
}

void LayerTree::mouseDoubleClickEvent(QMouseEvent* event) {
  if (!ClickedCell(*event)) QTreeView::mouseDoubleClickEvent(event);
}

bool LayerTree::ClickedCell(const QMouseEvent& event) {
  const QModelIndex index = indexAt(event.position().toPoint());
  if (!index.isValid() || index.column() == LayerRows::kName || event.button() != Qt::LeftButton)
    return false;
  if (index.column() == LayerRows::kColor) {
    AskColor(MeantBy(index));
  } else {
    SetLayerSwitch(*Document(), MeantBy(index),
                   static_cast<std::size_t>(index.column() - LayerRows::kFirstSwitch),
                   !index.data(LayerRows::kIsOn).toBool());
  }
  viewport()->update();
  return true;
}

void LayerTree::startDrag(Qt::DropActions) {
  const QModelIndexList rows = selectionModel()->selectedRows();
  if (!rows.isEmpty())
    DragRows(*this, rows_->mimeData(rows), static_cast<int>(rows.size()),
             rows.front().data().toString());
}

void LayerTree::dragEnterEvent(QDragEnterEvent* event) {
  // Objects go onto layers, never between them.
  setDragDropOverwriteMode(event->mimeData()->hasFormat(kObjectsMime));
  QTreeView::dragEnterEvent(event);
}

LayerList LayerTree::MeantBy(const QModelIndex& index) const {
  const QModelIndex row = index.siblingAtColumn(0);
  return selectionModel()->isSelected(row) ? Chosen() : rows_->LayersAt({row});
}

void LayerTree::ShowSelection() {
  QItemSelection wanted;
  if (const host::BaseDocument* doc = Document()) {
    for (const host::GeListNode* node = doc->GetLayerObjectRoot()->GetFirst(); node;
         node = engine::NextInTree(node)) {
      if (!static_cast<const host::LayerObject*>(node)->GetBit(host::BIT_ACTIVE)) continue;
      const QModelIndex index = rows_->IndexOf(engine::IdOf(*node));
      wanted.append(QItemSelectionRange(index, index.siblingAtColumn(LayerRows::kColumnCount - 1)));
    }
  }
  selectionModel()->select(wanted, QItemSelectionModel::ClearAndSelect);
}

void LayerTree::paintEvent(QPaintEvent* event) {
  QTreeView::paintEvent(event);
  if (rows_->rowCount() == 0)
    PaintEmptyText(*this, "No layers yet: add one to switch many objects at once");
}

}  // namespace desktop
