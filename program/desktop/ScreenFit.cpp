#include "program/desktop/ScreenFit.h"

#include <QScreen>
#include <QWidget>
#include <QWindow>
#include <algorithm>

namespace desktop {

namespace {

// Usual size of title bar and edges, for a window that has none yet.
constexpr QMargins kUsualFrame(4, 32, 4, 4);

// A window that was never shown has no frame yet: the window manager decides about it later.
QMargins FrameOf(const QWidget& window) {
  const QMargins known = window.windowHandle() ? window.windowHandle()->frameMargins() : QMargins();
  return known.isNull() ? kUsualFrame : known;
}

}  // namespace

QSize FittingSize(const QWidget& window, QSize wanted) {
  return wanted.boundedTo(window.screen()->availableGeometry().marginsRemoved(kUsualFrame).size());
}

// First smaller, then inwards: a window that was kept on a screen that is gone comes back whole.
void FitToScreen(QWidget& window) {
  if (window.isMaximized() || window.isFullScreen()) return;
  const QRect room = window.screen()->availableGeometry().marginsRemoved(FrameOf(window));
  QRect place = window.geometry();
  place.setSize(place.size().boundedTo(room.size()));
  place.moveLeft(std::clamp(place.left(), room.left(), room.right() - place.width() + 1));
  place.moveTop(std::clamp(place.top(), room.top(), room.bottom() - place.height() + 1));
  if (place != window.geometry()) window.setGeometry(place);
}

}  // namespace desktop
