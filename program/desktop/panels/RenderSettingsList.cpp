#include "program/desktop/panels/RenderSettingsList.h"

#include <QHeaderView>
#include <QMouseEvent>
#include <QPainter>
#include <QStyledItemDelegate>

#include "program/desktop/panels/RowDragging.h"

namespace desktop {

namespace {

constexpr int kDotColumn = 26;
constexpr int kSizeColumn = 92;
constexpr int kFramesColumn = 76;
// Narrower lists leave columns out, so that the names can be read.
constexpr int kRoomForSize = 240;
constexpr int kRoomForFrames = 320;
constexpr double kRing = 5.5;
constexpr double kDot = 3;

// A ring, with a dot in the accent color where the settings are the active ones.
class ActiveDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override {
    QStyledItemDelegate::paint(painter, option, index);
    const bool isActive = index.data(RenderSettingsRows::kIsActive).toBool();
    const QColor color =
        option.palette.color(isActive ? QPalette::Link : QPalette::PlaceholderText);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(QPen(color, 1.2));
    painter->setBrush(Qt::NoBrush);
    painter->drawEllipse(QRectF(option.rect).center(), kRing, kRing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(color);
    if (isActive) painter->drawEllipse(QRectF(option.rect).center(), kDot, kDot);
    painter->restore();
  }
};

}  // namespace

RenderSettingsList::RenderSettingsList(QWidget* parent)
    : QTreeView(parent), rows_(new RenderSettingsRows(this)) {
  setModel(rows_);
  setUniformRowHeights(true);
  setSelectionMode(ExtendedSelection);
  setEditTriggers(EditKeyPressed);
  setExpandsOnDoubleClick(false);
  setAlternatingRowColors(true);
  setRootIsDecorated(false);
  LetRowsBeDragged(*this);
  setAccessibleName("Render settings");
  header()->setStretchLastSection(false);
  header()->setMinimumSectionSize(kDotColumn);
  header()->setSectionsMovable(false);
  header()->setSectionResizeMode(QHeaderView::Interactive);
  header()->setSectionResizeMode(RenderSettingsRows::kName, QHeaderView::Stretch);
  header()->setSectionResizeMode(RenderSettingsRows::kActive, QHeaderView::Fixed);
  header()->moveSection(RenderSettingsRows::kActive, 0);
  setTreePosition(RenderSettingsRows::kName);
  setColumnWidth(RenderSettingsRows::kActive, kDotColumn);
  setColumnWidth(RenderSettingsRows::kSize, kSizeColumn);
  setColumnWidth(RenderSettingsRows::kFrames, kFramesColumn);
  setItemDelegateForColumn(RenderSettingsRows::kActive, new ActiveDelegate(this));
  showing_ = false;
}

void RenderSettingsList::Follow(host::BaseDocument* doc) {
  const host::ULLONG count = doc ? engine::ChangeCount(*doc) : 0;
  if (IdentityOf(doc) == doc_ && count == seen_) return;
  doc_ = IdentityOf(doc);
  seen_ = count;
  const Ids before = *chosen_;
  showing_ = true;
  if (rows_->Update(doc)) {
    expandAll();
    SettingsList still;
    for (const engine::NodeId id : before)
      still.push_back(engine::AsRenderData(engine::FindNode(doc, id)));
    Choose(still);
  }
  showing_ = false;
  TakeChosen();
  viewport()->update();
}

void RenderSettingsList::Choose(const SettingsList& settings) {
  QItemSelection wanted;
  for (const host::RenderData* each : settings) {
    const QModelIndex index = each ? rows_->IndexOf(engine::IdOf(*each)) : QModelIndex();
    if (index.isValid())
      wanted.append(
          QItemSelectionRange(index, index.siblingAtColumn(RenderSettingsRows::kColumnCount - 1)));
  }
  if (!wanted.isEmpty())
    selectionModel()->setCurrentIndex(wanted.first().topLeft(), QItemSelectionModel::NoUpdate);
  selectionModel()->select(wanted, QItemSelectionModel::ClearAndSelect);
}

void RenderSettingsList::TakeChosen() {
  Ids ids;
  for (const host::RenderData* each : Chosen()) ids.push_back(engine::IdOf(*each));
  const host::BaseDocument* doc = Document();
  if (ids.empty() && doc) ids.push_back(engine::IdOf(*doc->GetActiveRenderData()));
  if (ids != *chosen_) chosen_ = std::make_shared<Ids>(std::move(ids));
}

QItemSelectionModel::SelectionFlags RenderSettingsList::selectionCommand(
    const QModelIndex& index, const QEvent* event) const {
  const bool isMouse =
      event && (event->type() == QEvent::MouseButtonPress ||
                event->type() == QEvent::MouseButtonRelease || event->type() == QEvent::MouseMove);
  if (isMouse && index.column() == RenderSettingsRows::kActive)
    return QItemSelectionModel::NoUpdate;
  return QTreeView::selectionCommand(index, event);
}

void RenderSettingsList::selectionChanged(const QItemSelection& selected,
                                          const QItemSelection& deselected) {
  QTreeView::selectionChanged(selected, deselected);
  if (!showing_) TakeChosen();
}

void RenderSettingsList::Activate(const QModelIndex& index) {
  host::RenderData* settings = rows_->SettingsAt(index);
  if (settings) ActivateRenderSettings(*Document(), *settings);
  viewport()->update();
}

void RenderSettingsList::startDrag(Qt::DropActions) {
  const QModelIndexList rows = selectionModel()->selectedRows();
  if (!rows.isEmpty())
    DragRows(*this, rows_->mimeData(rows), static_cast<int>(rows.size()),
             rows.front().data().toString());
}

void RenderSettingsList::resizeEvent(QResizeEvent* event) {
  setColumnHidden(RenderSettingsRows::kSize, width() < kRoomForSize);
  setColumnHidden(RenderSettingsRows::kFrames, width() < kRoomForFrames);
  QTreeView::resizeEvent(event);
}

void RenderSettingsList::mousePressEvent(QMouseEvent* event) {
  const QModelIndex index = indexAt(event->position().toPoint());
  const bool isDot =
      index.column() == RenderSettingsRows::kActive && event->button() == Qt::LeftButton;
  isDot ? Activate(index) : QTreeView::mousePressEvent(event);
}

void RenderSettingsList::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) Activate(indexAt(event->position().toPoint()));
}

}  // namespace desktop
