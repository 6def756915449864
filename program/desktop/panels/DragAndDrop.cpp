#include "program/desktop/panels/DragAndDrop.h"

#include <QDrag>
#include <QPainter>

#include "program/desktop/Theme.h"

namespace desktop {

// Identities in decimal, with blanks between: what is dragged is looked up again where it is
// dropped, and may be gone by then.
QMimeData* DraggedNodes(const char* mime, const std::vector<engine::NodeId>& nodes) {
  QByteArrayList texts;
  for (const engine::NodeId node : nodes)
    texts.append(QByteArray::number(static_cast<qulonglong>(node)));
  auto* data = new QMimeData;
  data->setData(mime, texts.join(' '));
  return data;
}

// From another program anything may come under this name: what is no number is left out.
std::vector<engine::NodeId> DroppedNodes(const QMimeData* data, const char* mime) {
  std::vector<engine::NodeId> nodes;
  if (!data || !data->hasFormat(mime)) return nodes;
  for (const QByteArray& text : data->data(mime).split(' ')) {
    bool isNumber = false;
    const qulonglong node = text.toULongLong(&isNumber);
    if (isNumber && node != 0) nodes.push_back(node);
  }
  return nodes;
}

namespace {

constexpr int kUnfoldDelay = 600;  // milliseconds that something dragged rests on a row
// Pixels inside the edges where a drag scrolls: less than half a row, so that one can aim at any.
constexpr int kScrollEdge = 5;
constexpr int kWidestLabel = 220;
constexpr int kAround = 8;
constexpr QPoint kBesideTheHand = {-14, -8};

QString LabelText(int count, const QString& name, const QFontMetrics& metrics) {
  const QString more = count > 1 ? QString(" and %1 more").arg(count - 1) : QString();
  return metrics.elidedText(name, Qt::ElideMiddle, kWidestLabel - metrics.horizontalAdvance(more)) +
         more;
}

// The label that hangs at the pointer while rows are dragged, in the resolution of the screen.
QPixmap Label(const QTreeView& tree, const QString& text) {
  const QFontMetrics metrics = tree.fontMetrics();
  const QSize size(metrics.horizontalAdvance(text) + 2 * kAround, metrics.height() + kAround);
  QPixmap plate(size * tree.devicePixelRatioF());
  plate.setDevicePixelRatio(tree.devicePixelRatioF());
  plate.fill(Qt::transparent);
  QPainter painter(&plate);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setFont(tree.font());
  painter.setPen(QColor(PresentTheme().accent));
  painter.setBrush(QColor(PresentTheme().button));
  painter.drawRoundedRect(QRectF(QPointF(), size).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
  painter.setPen(QColor(PresentTheme().text));
  painter.drawText(QRect(QPoint(), size), Qt::AlignCenter, text);
  return plate;
}

}  // namespace

// DragDrop and not InternalMove: objects and materials are dragged from one panel to another.
void EnableRowDragging(QTreeView& tree) {
  tree.setDragEnabled(true);
  tree.setAcceptDrops(true);
  tree.setDragDropMode(QAbstractItemView::DragDrop);
  tree.setDefaultDropAction(Qt::MoveAction);
  tree.setDropIndicatorShown(true);
  tree.setAutoScrollMargin(kScrollEdge);
  tree.setAutoExpandDelay(kUnfoldDelay);
}

void DragRows(QTreeView& tree, QMimeData* data, int count, const QString& name) {
  auto* drag = new QDrag(&tree);
  drag->setMimeData(data);
  drag->setPixmap(Label(tree, LabelText(count, name, tree.fontMetrics())));
  drag->setHotSpot(kBesideTheHand);
  drag->exec(Qt::MoveAction | Qt::CopyAction, Qt::MoveAction);
}

}  // namespace desktop
