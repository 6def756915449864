// The desktop `stagemarks-desktop [SCENE...]`.
#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>
#include <QIcon>
#include <algorithm>
#include <cstdio>

#include "engine/application/ProgramPlaces.h"
#include "engine/outside/SystemServices.h"
#include "engine/render/ImageDecoder.h"
#include "program/desktop/Appearance.h"
#include "program/desktop/ApplicationStyle.h"
#include "program/desktop/MainWindow.h"
#include "program/desktop/Startup.h"

namespace desktop {
namespace {

constexpr int kDone = 0;
constexpr int kUsage = 2;
const QCommandLineOption kCheck("check", "Start, open the scenes, print what was found, and quit.");

void Describe(QCommandLineParser& parser) {
  parser.setApplicationDescription("Records, recalls and exports the states of a 3D scene.");
  parser.addPositionalArgument("scene", "Scenes to open; other formats are imported.",
                               "[SCENE...]");
  parser.addOption(kCheck);
  parser.addHelpOption();
  parser.addVersionOption();
}

// A plug-in that is refused is told and left out; the program works without any.
void LoadPlugins(engine::Application& application, DesktopPerson& person) {
  const auto reports = application.LoadPlugins(engine::PluginFolder());
  for (const engine::LoadReport& report : reports) {
    if (report.outcome != engine::LoadOutcome::Loaded) person.Tell(report.message);
  }
  if (reports.empty()) person.Tell("No plug-ins were found in \"" + engine::PluginFolder() + "\".");
}

std::string SettingsFile(const std::string& folder) {
  return folder.empty() ? "" : folder + "/desktop.json";
}

// The order matters: services before the application, a document before the window, the window
// before plug-ins (their messages want something to stand in front of), dialogs before the layout,
// and lost work before the scenes that were named.
int Run(const QCommandLineParser& parser) {
  const QStringList scenes = parser.positionalArguments();
  DesktopPerson person;
  CheckingPerson checking;
  const bool check = parser.isSet(kCheck);
  DesktopPerson& there = check ? checking : person;
  const engine::SystemServices services(there);
  engine::ApplicationSetup setup;
  setup.importWorker = engine::ImportWorkerProgram();
  setup.importLimits = engine::ChosenImportLimits(there);
  // Pictures of scenes are decoded in a child, as scenes are imported: both may be anybody's.
  engine::DecodeImagesBy(setup.importWorker);
  engine::Application application(services.Get(), setup);
  application.NewDocument();
  MainWindow window(application, there, SettingsFile(services.Get().folders.config));
  window.show();
  const SystemAppearance system(
      [&window](bool light) { window.Appearance().SystemPrefers(light); });
  LoadPlugins(application, there);
  window.RestoreLayout();
  if (check) return RunCheck(application, checking, scenes);
  window.OfferLostWork();
  std::vector<std::string> paths;
  for (const QString& scene : scenes)
    paths.push_back(QFileInfo(scene).absoluteFilePath().toStdString());
  window.Commands().OpenAll(paths);
  return QApplication::exec();
}

// Help and version need no display.
bool NeedsNoWindow(int count, char** words) {
  const QStringList asked{"-h", "--help", "--help-all", "-v", "--version"};
  return std::any_of(words + 1, words + count,
                     [&](const char* word) { return asked.contains(QString(word)); });
}

// Never comes back where help or version were asked for.
int Read(QCommandLineParser& parser) {
  if (parser.parse(QCoreApplication::arguments())) {
    parser.process(QCoreApplication::arguments());
    return kDone;
  }
  std::fprintf(stderr, "stagemarks-desktop: %s\n`stagemarks-desktop --help` explains it.\n",
               qPrintable(parser.errorText()));
  return kUsage;
}

}  // namespace
}  // namespace desktop

int main(int count, char** words) {
  QCoreApplication::setApplicationName("stagemarks-desktop");
  QCoreApplication::setApplicationVersion(STAGEMARKS_VERSION);
  QCommandLineParser parser;
  desktop::Describe(parser);
  if (desktop::NeedsNoWindow(count, words)) {
    const QCoreApplication application(count, words);
    return desktop::Read(parser);
  }
  desktop::ExplainMissingDisplay();
  QApplication application(count, words);
  desktop::StopExplaining();
  QApplication::setApplicationDisplayName("Stagemarks");
  QApplication::setDesktopFileName("stagemarks-desktop");
  QApplication::setWindowIcon(QIcon(":/stagemarks.png"));
  desktop::ApplyTheme(application);
  const int status = desktop::Read(parser);
  return status == desktop::kDone ? desktop::Run(parser) : status;
}
