#include "program/desktop/Display.h"

#include <QString>
#include <cstdio>
#include <cstdlib>

namespace desktop {

namespace {

QtMessageHandler before = nullptr;

// What the toolkit said before it gave up; shown where the display is not the reason.
QString& Heard() {
  static QString heard;
  return heard;
}

QString Reason(const QString& last) {
  const QString advice = "et DISPLAY, or use the command line: stagemarks --help.";
  const QString chosen = qEnvironmentVariable("QT_QPA_PLATFORM");
  if (!chosen.isEmpty() && !chosen.startsWith("xcb") && !chosen.startsWith("wayland"))
    return Heard() + last;
  const QString display = qEnvironmentVariable("DISPLAY");
  const QString wayland = qEnvironmentVariable("WAYLAND_DISPLAY");
  if (display.isEmpty() && wayland.isEmpty()) return "No display was found. S" + advice;
  if (display.isEmpty())
    return "The display \"" + wayland + "\" could not be opened. Install qt6-wayland, s" + advice;
  if (Heard().contains("could not connect to display"))
    return "The display \"" + display + "\" could not be opened. S" + advice;
  return Heard() + last;
}

void Explain(QtMsgType type, const QMessageLogContext&, const QString& text) {
  if (type == QtFatalMsg) {
    std::fprintf(stderr, "stagemarks-desktop: %s\n", qPrintable(Reason(text)));
    std::_Exit(EXIT_FAILURE);
  }
  Heard() += text + '\n';
}

}  // namespace

void ExplainMissingDisplay() { before = qInstallMessageHandler(Explain); }

void StopExplaining() {
  qInstallMessageHandler(before);
  if (!Heard().isEmpty()) std::fputs(qPrintable(Heard()), stderr);
  Heard().clear();
}

}  // namespace desktop
