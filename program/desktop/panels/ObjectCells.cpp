#include "program/desktop/panels/ObjectCells.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QToolTip>

#include "program/desktop/Icons.h"
#include "program/desktop/Look.h"
#include "program/desktop/panels/ObjectRows.h"

namespace desktop {

namespace {

constexpr double kDotRadius = 4.2;
constexpr int kSwatchSide = 10;
constexpr int kIconSide = 14;
constexpr QRgb kOn = 0xff8fb26b;
constexpr QRgb kOff = 0xffc7604f;
constexpr QRgb kUndefined = 0xff7a7a7a;

QRectF Centered(const QRect& cell, double side) {
  const QPointF middle = QRectF(cell).center();
  return {middle.x() - side / 2, middle.y() - side / 2, side, side};
}

const host::BaseObject* ObjectOf(const QModelIndex& index) {
  return static_cast<const ObjectRows*>(index.model())->ObjectAt(index);
}

// What stands behind a cell, then its own mark.
class Cell : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const final {
    // Not by the base class: its colors are those of the cell that was measured last.
    option.widget->style()->drawControl(QStyle::CE_ItemViewItem, &option, painter, option.widget);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    Mark(*painter, option, index);
    painter->restore();
  }

 protected:
  virtual void Mark(QPainter& painter, const QStyleOptionViewItem& option,
                    const QModelIndex& index) const = 0;
};

// A full dot for a mode of the object's own; an empty one follows the parent, in the color of what
// comes of it.
class DotCell : public Cell {
 public:
  using Cell::Cell;

 protected:
  void Mark(QPainter& painter, const QStyleOptionViewItem& option,
            const QModelIndex& index) const override {
    const int mode = index.data(ObjectRows::kMode).toInt();
    const bool hidden = index.data(ObjectRows::kHidden).toBool();
    const QColor color(mode == host::MODE_ON ? kOn : hidden ? kOff : kUndefined);
    painter.setPen(QPen(color, 1.4));
    painter.setBrush(mode == host::MODE_UNDEF ? QBrush(Qt::NoBrush) : QBrush(color));
    painter.drawEllipse(QRectF(option.rect).center(), kDotRadius, kDotRadius);
  }
};

class GeneratorCell : public Cell {
 public:
  using Cell::Cell;

 protected:
  void Mark(QPainter& painter, const QStyleOptionViewItem& option,
            const QModelIndex& index) const override {
    const QVariant mode = index.data(ObjectRows::kMode);
    if (!mode.isValid()) return;
    Icon(mode.toInt() ? "generator-on" : "generator-off")
        .paint(&painter, Centered(option.rect, kIconSide).toRect());
  }
};

class LayerCell : public Cell {
 public:
  using Cell::Cell;

 protected:
  void Mark(QPainter& painter, const QStyleOptionViewItem& option,
            const QModelIndex& index) const override {
    const QVariant color = index.data(Qt::BackgroundRole);
    painter.setPen(color.isValid() ? Qt::NoPen : QPen(QColor(PresentLook().idleBox)));
    painter.setBrush(color.isValid() ? QBrush(color.value<QColor>()) : QBrush(Qt::NoBrush));
    painter.drawRoundedRect(Centered(option.rect, kSwatchSide), 2.5, 2.5);
  }
};

class TagsCell : public Cell {
 public:
  TagsCell(MaterialBall ball, QObject* parent) : Cell(parent), ball_(std::move(ball)) {}

  bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                 const QModelIndex& index) override {
    const host::BaseObject* object = event->type() == QEvent::ToolTip ? ObjectOf(index) : nullptr;
    if (!object) return QStyledItemDelegate::helpEvent(event, view, option, index);
    const TagHit hit = TagAt(option.rect, event->pos(), *object);
    QToolTip::showText(event->globalPos(),
                       hit.tag    ? TagText(*hit.tag)
                       : hit.more ? QString("More tags")
                                  : QString(),
                       view);
    return true;
  }

 protected:
  void Mark(QPainter& painter, const QStyleOptionViewItem& option,
            const QModelIndex& index) const override {
    if (const host::BaseObject* object = ObjectOf(index))
      PaintTags(painter, option.rect, *object, option.palette, ball_);
  }

 private:
  MaterialBall ball_;
};

}  // namespace

void InstallObjectCells(QTreeView& tree, MaterialBall ball) {
  tree.setItemDelegateForColumn(ObjectRows::kLayer, new LayerCell(&tree));
  auto* dots = new DotCell(&tree);
  tree.setItemDelegateForColumn(ObjectRows::kEditor, dots);
  tree.setItemDelegateForColumn(ObjectRows::kRender, dots);
  tree.setItemDelegateForColumn(ObjectRows::kGenerator, new GeneratorCell(&tree));
  tree.setItemDelegateForColumn(ObjectRows::kTags, new TagsCell(std::move(ball), &tree));
}

}  // namespace desktop
