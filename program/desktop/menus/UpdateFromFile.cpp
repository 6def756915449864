#include "program/desktop/menus/UpdateFromFile.h"

#include <QFileInfo>

#include "engine/application/ProgramPlaces.h"
#include "engine/import/Import.h"
#include "engine/update/SceneUpdate.h"
#include "program/desktop/FileDialogs.h"
#include "program/desktop/MainWindow.h"
#include "program/desktop/OpenDocument.h"
#include "program/desktop/Text.h"
#include "program/desktop/background/DocumentBusy.h"
#include "program/outcome/Words.h"

namespace desktop {

namespace {

std::string Summary(const engine::SceneUpdate& update, const std::string& path) {
  const std::string name = outcome::Listed({QFileInfo(ToQt(path)).fileName().toStdString()});
  if (!update.ChangesAnything() && update.objects.goneCount == 0)
    return "Nothing is new in " + name + ".";
  const auto count = [](const engine::ElementChanges& changes, const char* what) {
    return outcome::Counted(changes.changed.size(), what) + " changed and " +
           std::to_string(changes.addedCount) + " new";
  };
  return "Updated from " + name + ": " + count(update.objects, "object") + ", " +
         count(update.materials, "material") + ".";
}

// Objects that are gone from the file are named and never deleted: Stagemarks may know them.
std::vector<std::string> Remarks(const engine::SceneUpdate& update,
                                 const std::vector<std::string>& notes) {
  std::vector<std::string> remarks = update.notes;
  if (!update.objects.gone.empty()) {
    remarks.push_back(
        "Gone from the file, and kept in the scene: " + outcome::Listed(update.objects.gone) +
        ". Delete what is not wanted any more.");
  }
  remarks.insert(remarks.end(), notes.begin(), notes.end());
  return remarks;
}

}  // namespace

void AskAndUpdate(MainWindow& window) {
  const host::BaseDocument* doc = host::GetActiveDocument();
  if (!doc || IsDocumentBusy()) return;
  const auto path =
      ChooseFile(&window,
                 {host::FILESELECTTYPE_ANYTHING, host::FILESELECT_LOAD, "Update the scene from",
                  doc->GetDocumentPath().GetString().ToUtf8()},
                 kForeignScenes);
  if (path) UpdateFromFile(window, *path);
}

// Importing shows its progress, with an event loop: afterwards the document may be closed. It is
// one undo step (decision 58).
void UpdateFromFile(MainWindow& window, const std::string& path) {
  const host::ULLONG id = IdentityOf(host::GetActiveDocument());
  const engine::Services& services = window.App().GetServices();
  auto fresh = engine::ImportScene(services, path, engine::ImportWorkerProgram(),
                                   engine::ChosenImportLimits(services.person));
  if (!fresh) return window.Commands().Person().Warn(fresh.Message());
  host::BaseDocument* doc = FindOpenDocument(id);
  if (!doc) return;
  const engine::SceneUpdate update =
      engine::UpdateScene(*doc, *fresh.Value().document, engine::UpdateOptions());
  host::EventAdd();
  if (window.Commands().told)
    window.Commands().told({Summary(update, path), Remarks(update, fresh.Value().notes), {}, ""});
}

}  // namespace desktop
