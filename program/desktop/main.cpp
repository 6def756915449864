// The desktop `stagemarks-desktop [SCENE...]`.
#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>

#include "engine/outside/RealOutside.h"
#include "program/desktop/MainWindow.h"
#include "program/desktop/Text.h"
#include "program/desktop/Theme.h"

namespace desktop {
namespace {

QString PluginFolder() {
  const QString chosen = qEnvironmentVariable("STAGEMARKS_PLUGINS");
  return chosen.isEmpty() ? QApplication::applicationDirPath() + "/../lib/stagemarks/plugins"
                          : QFileInfo(chosen).absoluteFilePath();
}

QStringList ScenesToOpen() {
  QCommandLineParser parser;
  parser.setApplicationDescription("Records, recalls and exports the states of a 3D scene.");
  parser.addPositionalArgument("scene", "Scenes to open; other formats are imported.", "[SCENE...]");
  parser.addHelpOption();
  parser.addVersionOption();
  parser.process(*QApplication::instance());
  return parser.positionalArguments();
}

void LoadPlugins(engine::Application& application, DesktopPerson& person) {
  const auto reports = application.LoadPlugins(QFileInfo(PluginFolder()).canonicalFilePath().toStdString());
  for (const engine::LoadReport& report : reports) {
    if (report.outcome != engine::LoadOutcome::Loaded) person.Tell(report.message);
  }
  if (reports.empty()) person.Tell("No plug-ins were found in \"" + PluginFolder().toStdString() + "\".");
}

int Run() {
  const QStringList scenes = ScenesToOpen();
  DesktopPerson person;
  engine::RealOutside outside(person);
  const engine::OutsideInUse inUse(outside);
  engine::ApplicationSetup setup;
  setup.importWorker = (QApplication::applicationDirPath() + "/stagemarks").toStdString();
  engine::Application application(outside, setup);
  application.NewDocument();
  MainWindow window(application, person, ToQt(outside.ConfigFolder() + "/desktop.ini"));
  window.show();
  LoadPlugins(application, person);
  window.RestoreLayout();
  for (const QString& scene : scenes) window.Commands().Open(QFileInfo(scene).absoluteFilePath().toStdString());
  return QApplication::exec();
}

}  // namespace
}  // namespace desktop

int main(int count, char** words) {
  QApplication application(count, words);
  QApplication::setApplicationName("stagemarks-desktop");
  QApplication::setApplicationDisplayName("Stagemarks");
  QApplication::setApplicationVersion(STAGEMARKS_VERSION);
  desktop::ApplyTheme(application);
  return desktop::Run();
}
