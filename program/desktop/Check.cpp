#include "program/desktop/Check.h"

#include <QApplication>
#include <QFileInfo>
#include <iostream>

#include "engine/application/ProgramPlaces.h"
#include "engine/scene/Nodes.h"
#include "program/desktop/Text.h"

namespace desktop {

namespace {

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

}  // namespace desktop
