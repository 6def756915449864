#include "program/desktop/Startup.h"

#include <QApplication>
#include <QFileInfo>
#include <QString>
#include <cstdio>
#include <cstdlib>
#include <iostream>

#include "engine/application/ProgramPlaces.h"
#include "program/desktop/Text.h"

namespace desktop {

namespace {

// Read by people and by the tests of the package: one place a line.
void PrintFile(const char* what, const std::string& path) {
  std::cout << what << path
            << (QFileInfo::exists(QString::fromStdString(path)) ? "" : "  (not there)") << '\n';
}

void PrintPlaces(const engine::Application& application) {
  std::cout << "stagemarks-desktop " << QApplication::applicationVersion().toStdString() << '\n';
  PrintFile("plug-ins: ", engine::PluginFolder());
  for (const engine::CommandPlugin& command : application.Commands())
    std::cout << "  " << command.name.ToUtf8() << '\n';
  PrintFile("importer: ", engine::ImportWorkerProgram());
  PrintFile("sample:   ", engine::SampleScene());
}

}  // namespace

void CheckingPerson::Tell(const std::string& text) {
  ++told_;
  std::cerr << "stagemarks-desktop: " << text << '\n';
}

// One round of events, so that what only shows when a window is drawn has happened, too.
int RunCheck(engine::Application& application, CheckingPerson& person, const QStringList& scenes) {
  PrintPlaces(application);
  for (const QString& scene : scenes) {
    const auto opened = application.OpenDocument(QFileInfo(scene).absoluteFilePath().toStdString());
    if (!opened) {
      person.Tell(opened.Message());
      continue;
    }
    std::cout << "opened:   " << scene.toStdString()
              << ", objects: " << engine::CountScene(*opened.Value()).objects << '\n';
  }
  QApplication::processEvents();
  return person.Told() == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

namespace {

// The toolkit ends the program where it finds no display, after messages about its plug-ins that
// help nobody. They are held back and replaced by one sentence that says what to do.
QtMessageHandler before = nullptr;

// The messages of the toolkit before it gave up; shown where the display is not the reason.
QString& StartMessages() {
  static QString heard;
  return heard;
}

// A platform that the person chose himself is his own business: its messages stand as they are.
QString Reason(const QString& last) {
  const QString advice = "et DISPLAY, or use the command line: stagemarks --help.";
  const QString chosen = qEnvironmentVariable("QT_QPA_PLATFORM");
  if (!chosen.isEmpty() && !chosen.startsWith("xcb") && !chosen.startsWith("wayland"))
    return StartMessages() + last;
  const QString display = qEnvironmentVariable("DISPLAY");
  const QString wayland = qEnvironmentVariable("WAYLAND_DISPLAY");
  if (display.isEmpty() && wayland.isEmpty()) return "No display was found. S" + advice;
  if (display.isEmpty())
    return "The display \"" + wayland + "\" could not be opened. Install qt6-wayland, s" + advice;
  if (StartMessages().contains("could not connect to display"))
    return "The display \"" + display + "\" could not be opened. S" + advice;
  return StartMessages() + last;
}

// _Exit, because the destructors of a half-made application would end in a crash and hide the
// sentence.
void Explain(QtMsgType type, const QMessageLogContext&, const QString& text) {
  if (type == QtFatalMsg) {
    std::fprintf(stderr, "stagemarks-desktop: %s\n", qPrintable(Reason(text)));
    std::_Exit(EXIT_FAILURE);
  }
  StartMessages() += text + '\n';
}

}  // namespace

void ExplainMissingDisplay() { before = qInstallMessageHandler(Explain); }

void StopExplaining() {
  qInstallMessageHandler(before);
  if (!StartMessages().isEmpty()) std::fputs(qPrintable(StartMessages()), stderr);
  StartMessages().clear();
}

}  // namespace desktop
