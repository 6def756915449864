#include "program/desktop/HeldBack.h"

#include <QCoreApplication>
#include <QEvent>

namespace desktop {

namespace {

bool IsHeldBack(QEvent::Type type) {
  switch (type) {
    case QEvent::Timer:
    case QEvent::FocusOut:
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
    case QEvent::Close:
    case QEvent::Shortcut:
      return true;
    default:
      return false;
  }
}

bool BelongsTo(const QObject* object, const QObject& owner) {
  while (object && object != &owner) object = object->parent();
  return object != nullptr;
}

}  // namespace

HeldBack::HeldBack(QObject& heard) : heard_(heard) {
  QCoreApplication::instance()->installEventFilter(this);
}

// The toolkit's own windows pass events on to widgets, where they are met again. A window that
// nobody told to stay would close.
bool HeldBack::eventFilter(QObject* receiver, QEvent* event) {
  if (!IsHeldBack(event->type()) || receiver->isWindowType() || BelongsTo(receiver, heard_))
    return false;
  event->ignore();
  return true;
}

}  // namespace desktop
