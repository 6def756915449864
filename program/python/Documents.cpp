#include "program/python/Documents.h"

#include <chrono>
#include <filesystem>

#include "engine/application/ProgramPlaces.h"
#include "engine/import/Import.h"
#include "engine/scene/DocumentState.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/SeededIds.h"
#include "host/Application.h"
#include "program/lookup/SceneLookup.h"
#include "program/recording/ImportedStates.h"

namespace scripting {

namespace {

namespace fs = std::filesystem;

// Empty for a document that was imported or never saved: its path is only where it came from.
std::string SavedPath(const host::BaseDocument& doc) {
  const bool isPlaced = Session::Get().IsPlaced(engine::NumberOf(doc));
  if (!isPlaced || !doc.GetDocumentPath().Content()) return "";
  return (doc.GetDocumentPath() + doc.GetDocumentName()).GetString().ToUtf8();
}

// The absolute path to save a scene at; throws where it may not be written there. The document's
// own file may be replaced, whichever link leads to it.
std::string CheckTarget(const host::BaseDocument& doc, const std::string& path, bool overwrite) {
  const std::string own = SavedPath(doc);
  if (path.empty() && own.empty())
    throw Failure(Fault::Misused, "The document was never saved; it needs a file name.");
  std::string target = path.empty() ? own : lookup::AbsolutePath(path);
  if (engine::IsImportable(target)) {
    throw Failure(Fault::Misused,
                  "\"" + target +
                      "\" has the name of another format, which this program reads and does not "
                      "write. Give a name that ends in .c4d instead.");
  }
  std::error_code error;
  const bool isOwn = target == own || fs::equivalent(target, own, error);
  if (!isOwn && !overwrite && fs::exists(target, error)) {
    throw Failure(Fault::Refused, "\"" + target +
                                      "\" exists already. Give another name, or overwrite=True to "
                                      "replace it.");
  }
  return target;
}

void CheckNoStep(DocumentId document) {
  if (!Session::Get().HasStep(document)) return;
  throw Failure(Fault::Misused, "A step of this document is open: undo works between steps.");
}

}  // namespace

// Remembered until the call ends well: one that fails closes what it opened.
Opened Open(const std::string& path, bool allowOutside) {
  Session& session = Session::Get();
  Session::Person().Answer(allowOutside);
  Opened opened;
  const DocumentId activeBefore = ActiveDocument();
  const auto document = session.App().OpenDocument(lookup::AbsolutePath(path), &opened.notes);
  Check(document.GetStatus());
  host::BaseDocument& doc = *document.Value();
  opened.document = engine::NumberOf(doc);
  session.Opening(opened.document, activeBefore);
  if (!engine::IsImportable(path)) return opened;
  session.SetPlaced(opened.document, false);
  pictures::StagemarksDialog dialog = session.DialogFor(doc);
  recording::RecordedStates recorded =
      recording::RecordImportedStates(session.Services(), dialog, doc);
  opened.states = std::move(recorded.names);
  opened.notes.insert(opened.notes.end(), recorded.notes.begin(), recorded.notes.end());
  return opened;
}

Opened New() {
  Opened opened;
  opened.document = engine::NumberOf(*Session::Get().App().NewDocument());
  return opened;
}

// A desktop is never without a document.
void Close(DocumentId document, bool discard) {
  Session& session = Session::Get();
  host::BaseDocument& doc = session.Document(document);
  if (!discard && doc.GetChanged()) {
    throw Failure(Fault::Refused, "\"" + NameOfDocument(document) +
                                      "\" has unsaved changes. Save it, or close it with "
                                      "discard=True.");
  }
  if (session.IsInDesktop() && session.App().Documents().size() == 1) session.App().NewDocument();
  session.DropSteps(document);
  host::KillDocument(&doc);
}

std::vector<DocumentId> AllDocuments() {
  std::vector<DocumentId> numbers;
  for (const host::BaseDocument* doc : Session::Get().App().Documents())
    numbers.push_back(engine::NumberOf(*doc));
  return numbers;
}

DocumentId ActiveDocument() {
  const host::BaseDocument* doc = host::GetActiveDocument();
  return doc ? engine::NumberOf(*doc) : 0;
}

void Activate(DocumentId document) { host::SetActiveDocument(&Find(document)); }

std::string PathOfDocument(DocumentId document) { return SavedPath(Find(document)); }

std::string NameOfDocument(DocumentId document) {
  return Find(document).GetDocumentName().GetString().ToUtf8();
}

bool IsChanged(DocumentId document) { return Find(document).GetChanged(); }

std::string Save(DocumentId document, const std::string& path, bool overwrite, double seconds) {
  Session& session = Session::Get();
  host::BaseDocument& doc = session.Document(document);
  std::string target = CheckTarget(doc, path, overwrite);
  session.DialogFor(doc);
  engine::SaveChoices choices;
  choices.longestWait = std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1000));
  choices.replaceChanged = overwrite;
  Check(session.App().SaveDocumentAs(doc, target, choices));
  session.SetPlaced(document, true);
  return target;
}

// Notes of the import stand before those of the update.
engine::SceneUpdate UpdateFrom(DocumentId document, const std::string& path, bool removeGone,
                               bool allowOutside) {
  host::BaseDocument& doc = Find(document);
  if (!engine::IsImportable(path)) throw Failure(Fault::Misused, engine::WhyNotImportable(path));
  engine::ImportLimits limits = engine::ChosenImportLimits(Session::Person());
  limits.outside = allowOutside ? engine::OutsideTextures::Take : engine::OutsideTextures::Leave;
  const auto fresh = engine::ImportScene(Session::Get().Services(), lookup::AbsolutePath(path),
                                         engine::ImportWorkerProgram(), limits);
  Check(fresh.GetStatus());
  host::BaseDocument& imported = *fresh.Value().document;
  const engine::SeededIds ids(engine::IdOf(imported));
  engine::SceneUpdate update = engine::UpdateScene(doc, imported, {.removeGone = removeGone});
  update.notes.insert(update.notes.begin(), fresh.Value().notes.begin(), fresh.Value().notes.end());
  host::EventAdd();
  return update;
}

bool Undo(DocumentId document) {
  CheckNoStep(document);
  const bool done = Find(document).DoUndo();
  if (done) host::EventAdd();
  return done;
}

bool Redo(DocumentId document) {
  CheckNoStep(document);
  const bool done = Find(document).DoRedo();
  if (done) host::EventAdd();
  return done;
}

Names DoneSteps(DocumentId document) { return engine::DoneNames(Find(document)); }
Names UndoneSteps(DocumentId document) { return engine::UndoneNames(Find(document)); }

int BeginStep(DocumentId document, const std::string& name) {
  return Session::Get().BeginStep(document, name);
}
void EndStep(int step, bool keep) { Session::Get().EndStep(step, keep); }

std::string ImporterPath() { return engine::ImportWorkerProgram(); }

}  // namespace scripting
