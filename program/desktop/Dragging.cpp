#include "program/desktop/Dragging.h"

namespace desktop {

QMimeData* DraggedNodes(const char* mime, const std::vector<engine::NodeId>& nodes) {
  QByteArrayList texts;
  for (const engine::NodeId node : nodes)
    texts.append(QByteArray::number(static_cast<qulonglong>(node)));
  auto* data = new QMimeData;
  data->setData(mime, texts.join(' '));
  return data;
}

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

}  // namespace desktop
