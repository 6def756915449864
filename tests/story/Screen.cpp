#include "tests/story/Screen.h"

#include <sys/prctl.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>

namespace story {

namespace {

constexpr int kMillisecondsToStart = 30000;

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

// The next line that it prints, without its end.
QByteArray LineOf(QProcess& program) {
  while (!program.canReadLine()) {
    if (!program.waitForReadyRead(kMillisecondsToStart))
      throw std::runtime_error(program.program().toStdString() + " does not start");
  }
  return program.readLine().trimmed();
}

void End(QProcess& program) {
  program.terminate();
  if (!program.waitForFinished(5000)) program.kill();
  program.waitForFinished(5000);
}

}  // namespace

Screen::Screen() {
  Start(server_, "Xvfb", {"-displayfd", "1", "-screen", "0", "1600x1000x24", "-nolisten", "tcp"});
  qputenv("DISPLAY", ":" + LineOf(server_));
  qputenv("QT_QPA_PLATFORM", "xcb");
  // The command runs once the window manager is ready.
  Start(windowManager_, "openbox", {"--sm-disable", "--startup", "echo ready"});
  LineOf(windowManager_);
}

Screen::~Screen() {
  End(windowManager_);
  End(server_);
}

}  // namespace story
