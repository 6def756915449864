// Drops: what the toolkit tells a view when something that is dragged comes to a place in it and is
// let go of there.
#pragma once

#include <QAbstractItemView>
#include <QApplication>
#include <QDropEvent>
#include <QMimeData>
#include <memory>

#include "tests/desktop/Pictures.h"

namespace drops {

// Takes over `data`. Whether it was taken.
inline bool Drop(QAbstractItemView& view, QMimeData* data, const QPoint& place) {
  const std::unique_ptr<QMimeData> owned(data);
  QDragEnterEvent enter(place, Qt::MoveAction, data, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(view.viewport(), &enter);
  QDragMoveEvent move(place, Qt::MoveAction, data, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(view.viewport(), &move);
  QDropEvent drop(place, Qt::MoveAction, data, Qt::LeftButton, Qt::NoModifier);
  if (move.isAccepted()) QApplication::sendEvent(view.viewport(), &drop);
  pictures::Settle();
  return move.isAccepted() && drop.isAccepted();
}

// Onto a row, or with `before` between it and the row above.
inline bool Drop(QAbstractItemView& view, QMimeData* data, const QModelIndex& row,
                 bool before = false) {
  const QRect place = view.visualRect(row);
  return Drop(view, data, before ? QPoint(place.center().x(), place.top()) : place.center());
}

}  // namespace drops
