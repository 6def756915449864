// Pictures of widgets, written into the build folder for people to look at. Main thread.
#pragma once

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QDeadlineTimer>
#include <QDir>
#include <QEventLoop>
#include <QPixmap>
#include <QTimer>
#include <QWidget>
#include <chrono>

namespace pictures {

// Lets all that is posted and due happen, as the program's own loop does, until it finds nothing
// more to do and would wait.
inline void Settle() {
  constexpr int kTurnsOfRest = 2;  // before it waits the loop delivers events, which makes new ones
  const QDeadlineTimer deadline(std::chrono::seconds(20));
  QAbstractEventDispatcher& loop = *QAbstractEventDispatcher::instance();
  for (int quiet = 0; quiet < kTurnsOfRest && !deadline.hasExpired();) {
    const bool worked = loop.processEvents(QEventLoop::AllEvents);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    quiet = worked ? 0 : quiet + 1;
    loop.wakeUp();
    loop.processEvents(QEventLoop::WaitForMoreEvents);
  }
}

// Lets the program go on, as its own loop does, until something holds; false when that does not
// come about.
template <class Condition>
bool WaitFor(Condition holds) {
  constexpr std::chrono::seconds kLongest(60);
  constexpr std::chrono::milliseconds kBetweenLooks(5);
  QDeadlineTimer deadline(kLongest);
  QTimer look;
  look.start(kBetweenLooks);
  while (!holds() && !deadline.hasExpired()) {
    QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
  return holds();
}

// Writes <build>/pictures/<name>-<scale>.png of the widget as shown; false when that failed.
inline bool Write(QWidget& widget, const QString& name) {
  Settle();
  const QString folder = TEST_BINARY_DIR "/pictures";
  const QPixmap picture = widget.grab();
  return QDir().mkpath(folder) &&
         picture.save(QString("%1/%2-%3.png").arg(folder, name).arg(picture.devicePixelRatio()));
}

}  // namespace pictures
