#include "program/desktop/panels/ObjectCells.h"

#include <QHelpEvent>
#include <QPixmapCache>
#include <QStyledItemDelegate>
#include <QToolTip>
#include <cmath>

#include "engine/scene/NodeTypes.h"
#include "host/Parameters.h"
#include "program/desktop/Icons.h"
#include "program/desktop/Text.h"
#include "program/desktop/Theme.h"
#include "program/desktop/panels/ObjectModel.h"

namespace desktop {

using host::BaseObject;
using host::BaseTag;

namespace {

// Pixels.
constexpr int kTagSide = 16;
constexpr int kBallSide = 14;
constexpr int kTagPitch = 19;
constexpr int kMoreWidth = 28;
constexpr int kLongestTip = 100;

// A linear level as the screen shows it. An approximation of sRGB that nobody can tell apart in a
// ball of 14 pixels.
float Shown(double level) { return static_cast<float>(std::pow(qBound(0.0, level, 1.0), 1 / 2.2)); }

QRect PlaceOf(const QRect& cell, int number) {
  return {cell.left() + 1 + number * kTagPitch, cell.top() + (cell.height() - kTagSide) / 2,
          kTagSide, kTagSide};
}

host::BaseMaterial* MaterialOf(BaseTag& tag) {
  const host::TextureTag* texture = engine::AsTextureTag(&tag);
  return texture ? texture->GetMaterial() : nullptr;
}

// The picture of a material in the size of a tag: made once, as averaging all its pixels takes its
// time.
QPixmap Shrunk(const QPixmap& picture) {
  const QString key = QString("material-tag-%1").arg(picture.cacheKey());
  QPixmap small;
  if (QPixmapCache::find(key, &small)) return small;
  const double scale = picture.devicePixelRatio();
  small = picture.scaled(QSize(kBallSide, kBallSide) * scale, Qt::KeepAspectRatio,
                         Qt::SmoothTransformation);
  small.setDevicePixelRatio(scale);
  QPixmapCache::insert(key, small);
  return small;
}

// Until its picture is made, a material is a ball in its color.
void PaintBall(QPainter& painter, const QRect& place, const host::BaseMaterial& material) {
  const host::Vector color = material.GetDataInstance()->GetVector(host::MATERIAL_COLOR);
  const QColor shown = QColor::fromRgbF(Shown(color.x), Shown(color.y), Shown(color.z));
  QRadialGradient light(place.center() - QPointF(kTagSide * 0.18, kTagSide * 0.22),
                        kTagSide * 0.75);
  light.setColorAt(0, shown.lighter(135));
  light.setColorAt(0.5, shown);
  light.setColorAt(1, shown.darker(220));
  painter.setPen(QPen(QColor(0, 0, 0, 120), 1));
  painter.setBrush(light);
  painter.drawEllipse(QRectF(place).adjusted(2, 2, -2, -2));
}

void PaintMaterial(QPainter& painter, const QRect& place, host::BaseMaterial& material,
                   const MaterialBall& ball) {
  const QPixmap picture = ball(material);
  if (picture.isNull()) return PaintBall(painter, place, material);
  painter.drawPixmap(
      place.topLeft() + QPoint((kTagSide - kBallSide) / 2, (kTagSide - kBallSide) / 2),
      Shrunk(picture));
}

void PaintTag(QPainter& painter, const QRect& place, BaseTag& tag, const QPalette& palette,
              const MaterialBall& ball) {
  if (tag.GetBit(host::BIT_ACTIVE)) {
    painter.setPen(QPen(palette.color(QPalette::Link), 1.2));
    painter.setBrush(palette.color(QPalette::Highlight));
    painter.drawRoundedRect(QRectF(place).adjusted(-0.5, -0.5, 0.5, 0.5), 3, 3);
  }
  if (host::BaseMaterial* material = MaterialOf(tag))
    return PaintMaterial(painter, place, *material, ball);
  Icon(TagIcon(tag.GetType())).paint(&painter, place);
}

}  // namespace

// Room for "+3" is only kept where not all fit.
TagsShown TagsFitting(const BaseObject& object, int width) {
  TagsShown shown;
  int count = 0;
  for (const BaseTag* tag = object.GetFirstTag(); tag; tag = tag->GetNext()) ++count;
  const bool allFit = count * kTagPitch <= width;
  const int fitting = allFit ? count : std::max(0, (width - kMoreWidth) / kTagPitch);
  shown.tags = TagsFrom(object, 0, static_cast<std::size_t>(fitting));
  shown.more = count - fitting;
  return shown;
}

std::vector<BaseTag*> TagsFrom(const BaseObject& object, std::size_t first, std::size_t most) {
  std::vector<BaseTag*> tags;
  for (BaseTag* tag = object.GetFirstTag(); tag && tags.size() < most; tag = tag->GetNext()) {
    if (first > 0) {
      --first;
    } else {
      tags.push_back(tag);
    }
  }
  return tags;
}

void PaintTags(QPainter& painter, const QRect& cell, const BaseObject& object,
               const QPalette& palette, const MaterialBall& ball) {
  const TagsShown shown = TagsFitting(object, cell.width());
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  int number = 0;
  for (BaseTag* tag : shown.tags) PaintTag(painter, PlaceOf(cell, number++), *tag, palette, ball);
  if (shown.more > 0) {
    painter.setPen(palette.color(QPalette::PlaceholderText));
    const QRect rest(cell.left() + 1 + number * kTagPitch, cell.top(),
                     cell.width() - 1 - number * kTagPitch, cell.height());
    painter.drawText(rest, Qt::AlignVCenter | Qt::AlignLeft, "+" + QString::number(shown.more));
  }
  painter.restore();
}

// By the places that PaintTags uses: both count from the left in steps of kTagPitch.
TagHit TagAt(const QRect& cell, const QPoint& place, const BaseObject& object) {
  const TagsShown shown = TagsFitting(object, cell.width());
  const int number = place.x() < cell.left() ? -1 : (place.x() - cell.left()) / kTagPitch;
  if (number < 0) return {};
  if (number < static_cast<int>(shown.tags.size()))
    return {shown.tags[static_cast<std::size_t>(number)], false};
  return {nullptr, shown.more > 0};
}

QString TagIcon(host::LONG type) {
  switch (type) {
    case host::Ttexture:
      return "tag-texture";
    case host::Tcompositing:
      return "tag-compositing";
    case host::Tphong:
      return "tag-phong";
    case host::Texpresso:
      return "tag-xpresso";
    default:
      return "tag-other";
  }
}

QString TagText(const BaseTag& tag) {
  const QString type = ToQt(engine::TypeName(tag.GetType()));
  QString text = ToQt(tag.GetName()).left(kLongestTip);
  text = text.isEmpty() || text == type ? type : text + " (" + type + ")";
  const host::BaseMaterial* material = MaterialOf(const_cast<BaseTag&>(tag));
  return material ? text + ": " + ToQt(material->GetName()).left(kLongestTip) : text;
}

namespace {

constexpr double kDotRadius = 4.2;
constexpr int kCellSwatchSide = 10;
constexpr int kCellIconSide = 14;
// Colors of both themes: green, red and gray are what artists know for these dots.
constexpr QRgb kOn = 0xff8fb26b;
constexpr QRgb kOff = 0xffc7604f;
constexpr QRgb kUndefined = 0xff7a7a7a;

QRectF CenteredIn(const QRect& cell, double side) {
  const QPointF middle = QRectF(cell).center();
  return {middle.x() - side / 2, middle.y() - side / 2, side, side};
}

const host::BaseObject* ObjectOf(const QModelIndex& index) {
  return static_cast<const ObjectModel*>(index.model())->ObjectAt(index);
}

// Base of the delegates: paints the background, then the mark of the cell.
class ObjectCell : public QStyledItemDelegate {
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
class DotCell : public ObjectCell {
 public:
  using ObjectCell::ObjectCell;

 protected:
  void Mark(QPainter& painter, const QStyleOptionViewItem& option,
            const QModelIndex& index) const override {
    const int mode = index.data(ObjectModel::kMode).toInt();
    const bool hidden = index.data(ObjectModel::kHidden).toBool();
    const QColor color(mode == host::MODE_ON ? kOn : hidden ? kOff : kUndefined);
    painter.setPen(QPen(color, 1.4));
    painter.setBrush(mode == host::MODE_UNDEF ? QBrush(Qt::NoBrush) : QBrush(color));
    painter.drawEllipse(QRectF(option.rect).center(), kDotRadius, kDotRadius);
  }
};

class GeneratorCell : public ObjectCell {
 public:
  using ObjectCell::ObjectCell;

 protected:
  void Mark(QPainter& painter, const QStyleOptionViewItem& option,
            const QModelIndex& index) const override {
    const QVariant mode = index.data(ObjectModel::kMode);
    if (!mode.isValid()) return;
    Icon(mode.toInt() ? "generator-on" : "generator-off")
        .paint(&painter, CenteredIn(option.rect, kCellIconSide).toRect());
  }
};

class LayerCell : public ObjectCell {
 public:
  using ObjectCell::ObjectCell;

 protected:
  void Mark(QPainter& painter, const QStyleOptionViewItem& option,
            const QModelIndex& index) const override {
    const QVariant color = index.data(Qt::BackgroundRole);
    painter.setPen(color.isValid() ? Qt::NoPen : QPen(QColor(PresentTheme().idleBox)));
    painter.setBrush(color.isValid() ? QBrush(color.value<QColor>()) : QBrush(Qt::NoBrush));
    painter.drawRoundedRect(CenteredIn(option.rect, kCellSwatchSide), 2.5, 2.5);
  }
};

class TagsCell : public ObjectCell {
 public:
  TagsCell(MaterialBall ball, QObject* parent) : ObjectCell(parent), ball_(std::move(ball)) {}

  // A cell with several tags has several tips.
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
  tree.setItemDelegateForColumn(ObjectModel::kLayer, new LayerCell(&tree));
  auto* dots = new DotCell(&tree);
  tree.setItemDelegateForColumn(ObjectModel::kEditor, dots);
  tree.setItemDelegateForColumn(ObjectModel::kRender, dots);
  tree.setItemDelegateForColumn(ObjectModel::kGenerator, new GeneratorCell(&tree));
  tree.setItemDelegateForColumn(ObjectModel::kTags, new TagsCell(std::move(ball), &tree));
}

}  // namespace desktop
