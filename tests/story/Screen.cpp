#include "tests/story/Screen.h"

#include <sys/prctl.h>
#include <unistd.h>

#include <QThread>
#include <csignal>
#include <stdexcept>

namespace story {

namespace {

constexpr int kMillisecondsToStart = 30000;
constexpr int kMostTries = 100;

// However this program ends, what it started ends with it.
void EndWithParent(pid_t parent) {
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  if (getppid() != parent) _exit(1);
}

void Start(QProcess& program, const QString& name, const QStringList& arguments) {
  program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  program.setChildProcessModifier([parent = getpid()] { EndWithParent(parent); });
  program.start(name, arguments);
  if (!program.waitForStarted(kMillisecondsToStart))
    throw std::runtime_error("cannot start " + name.toStdString());
}

void End(QProcess& program) {
  program.terminate();
  if (!program.waitForFinished(5000)) program.kill();
  program.waitForFinished(5000);
}

}  // namespace

Screen::Screen() {
  Start(server_, "Xvfb", {"-displayfd", "1", "-screen", "0", "1600x1000x24", "-nolisten", "tcp"});
  while (!server_.canReadLine()) {
    if (!server_.waitForReadyRead(kMillisecondsToStart))
      throw std::runtime_error("the X server does not start");
  }
  qputenv("DISPLAY", ":" + server_.readLine().trimmed());
  qputenv("QT_QPA_PLATFORM", "xcb");
  Start(windowManager_, "openbox", {"--sm-disable"});
  // It answers this question once it is ready.
  for (int tries = 0; QProcess::execute("xdotool", {"get_num_desktops"}) != 0; ++tries) {
    if (tries == kMostTries) throw std::runtime_error("the window manager does not start");
    QThread::msleep(100);
  }
}

Screen::~Screen() {
  End(windowManager_);
  End(server_);
}

}  // namespace story
