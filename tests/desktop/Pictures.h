// Pictures of widgets, written into the build folder for people to look at. Main thread.
#pragma once

#include <QApplication>
#include <QDir>
#include <QEventLoop>
#include <QPixmap>
#include <QTimer>
#include <QWidget>

namespace pictures {

// Lets all that is posted and due happen, in a loop that waits for more as the program's own does.
inline void Settle(int milliseconds = 40) {
  QEventLoop loop;
  QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
  loop.exec();
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
