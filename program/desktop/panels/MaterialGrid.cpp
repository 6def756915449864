#include "program/desktop/panels/MaterialGrid.h"

#include <QDrag>
#include <QLineEdit>
#include <QPainter>
#include <QStyledItemDelegate>

#include "program/desktop/panels/EmptyText.h"

namespace desktop {

namespace {

constexpr int kSide = MaterialThumbnails::kSide;
constexpr int kMargin = 6;
constexpr int kCellWidth = kSide + 4 * kMargin;
constexpr int kSpacing = 2;

QRect BallIn(const QRect& cell) {
  return {cell.left() + (cell.width() - kSide) / 2, cell.top() + kMargin, kSide, kSide};
}

QRect NameIn(const QRect& cell) {
  return QRect(cell.left() + 2, cell.top() + kSide + kMargin, cell.width() - 4,
               cell.height() - kSide - kMargin);
}

class MaterialDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override {
    PaintGround(*painter, option);
    const auto ball = index.data(Qt::DecorationRole).value<QPixmap>();
    if (ball.isNull()) {
      PaintWaiting(*painter, option);
    } else {
      painter->drawPixmap(BallIn(option.rect), ball);
    }
    const QRect place = NameIn(option.rect);
    painter->setPen(option.palette.color(QPalette::Text));
    painter->drawText(
        place, Qt::AlignCenter,
        option.fontMetrics.elidedText(index.data().toString(), Qt::ElideRight, place.width()));
  }

  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const override {
    return {kCellWidth, kSide + 2 * kMargin + option.fontMetrics.height()};
  }

  QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                        const QModelIndex& index) const override {
    QWidget* editor = QStyledItemDelegate::createEditor(parent, option, index);
    if (auto* line = qobject_cast<QLineEdit*>(editor)) line->setAlignment(Qt::AlignCenter);
    return editor;
  }

  void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                            const QModelIndex&) const override {
    const QRect place = NameIn(option.rect);
    const int height = std::max(place.height(), editor->sizeHint().height());
    editor->setGeometry(place.left(), place.bottom() + 1 - height, place.width(), height);
  }

 private:
  static void PaintGround(QPainter& painter, const QStyleOptionViewItem& option) {
    const bool isChosen = option.state & QStyle::State_Selected;
    const bool hasFocus = option.state & QStyle::State_HasFocus;
    if (!isChosen && !hasFocus) return;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(hasFocus ? QPen(option.palette.color(QPalette::Link)) : QPen(Qt::NoPen));
    painter.setBrush(isChosen ? option.palette.brush(QPalette::Highlight) : QBrush(Qt::NoBrush));
    painter.drawRoundedRect(QRectF(option.rect).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
    painter.restore();
  }

  static void PaintWaiting(QPainter& painter, const QStyleOptionViewItem& option) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(option.palette.color(QPalette::Button));
    painter.drawEllipse(BallIn(option.rect));
    painter.restore();
  }
};

}  // namespace

MaterialGrid::MaterialGrid(std::shared_ptr<MaterialThumbnails> thumbnails, QWidget* parent)
    : QListView(parent),
      rows_(new MaterialRows(
          std::move(thumbnails), [this] { return devicePixelRatioF(); }, this)) {
  setModel(rows_);
  setItemDelegate(new MaterialDelegate(this));
  setViewMode(IconMode);
  setMovement(Static);
  setResizeMode(Adjust);
  setUniformItemSizes(true);
  setSpacing(kSpacing);
  setSelectionMode(ExtendedSelection);
  setEditTriggers(EditKeyPressed);
  setDragEnabled(true);
  setAccessibleName("Materials");
  showing_ = false;
}

void MaterialGrid::Follow(host::BaseDocument* doc) {
  const host::ULLONG count = doc ? engine::ChangeCount(*doc) : 0;
  if (IdentityOf(doc) == doc_ && count == seen_) return;
  doc_ = IdentityOf(doc);
  seen_ = count;
  showing_ = true;
  rows_->Update(doc);
  ShowSelection();
  showing_ = false;
  viewport()->update();
}

void MaterialGrid::EditName(const host::BaseMaterial& material) {
  const QModelIndex index = rows_->IndexOf(engine::IdOf(material));
  selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
  scrollTo(index);
  edit(index);
}

void MaterialGrid::selectionChanged(const QItemSelection& selected,
                                    const QItemSelection& deselected) {
  QListView::selectionChanged(selected, deselected);
  host::BaseDocument* doc = showing_ ? nullptr : Document();
  if (doc) SelectMaterials(*doc, Chosen());
}

void MaterialGrid::ShowSelection() {
  QItemSelection wanted;
  int row = 0;
  const host::BaseDocument* doc = Document();
  for (const host::BaseMaterial* material = doc ? doc->GetFirstMaterial() : nullptr; material;
       material = material->GetNext()) {
    const QModelIndex index = rows_->index(row++);
    if (material->GetBit(host::BIT_ACTIVE)) wanted.append(QItemSelectionRange(index));
  }
  selectionModel()->select(wanted, QItemSelectionModel::ClearAndSelect);
}

void MaterialGrid::startDrag(Qt::DropActions) {
  QMimeData* dragged = rows_->mimeData({currentIndex()});
  if (!dragged) return;
  auto* drag = new QDrag(this);
  drag->setMimeData(dragged);
  const auto ball = currentIndex().data(Qt::DecorationRole).value<QPixmap>();
  drag->setPixmap(ball);
  drag->setHotSpot({kSide / 2, kSide / 2});
  drag->exec(Qt::CopyAction);
}

void MaterialGrid::paintEvent(QPaintEvent* event) {
  QListView::paintEvent(event);
  if (rows_->rowCount() == 0)
    PaintEmptyText(*this, "No materials yet: make one and drag it onto an object");
}

}  // namespace desktop
