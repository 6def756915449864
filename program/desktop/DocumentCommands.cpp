#include "program/desktop/DocumentCommands.h"

#include <QDateTime>
#include <QFileInfo>
#include <QLocale>
#include <QMessageBox>
#include <QPushButton>

#include "engine/render/TextureSearch.h"
#include "program/desktop/FileDialogs.h"
#include "program/desktop/OpenDocument.h"
#include "program/desktop/Text.h"
#include "program/outcome/Words.h"

namespace desktop {

namespace {

constexpr const char* kRecentFiles = "recentFiles";
// In letters and rows of a menu or a box.
constexpr int kMostRecentFiles = 10;
constexpr int kLongestFileName = 60;
constexpr std::size_t kMostToldAtOnce = 5;
constexpr const char* kOwnSuffix = ".c4d";

std::string PathOfDocument(const host::BaseDocument& doc) {
  return doc.GetDocumentPath().Content()
             ? (doc.GetDocumentPath() + doc.GetDocumentName()).GetString().ToUtf8()
             : "";
}

// By the name: whatever else stands in such a file, saving writes our format there.
bool IsOwnScene(const std::string& path) { return path.ends_with(kOwnSuffix); }

// Beside the file that an imported document came from, else only a name.
std::string ProposedPath(const host::BaseDocument& doc) {
  std::string path = PathOfDocument(doc);
  if (IsOwnScene(path)) return path;
  const QFileInfo from(path.empty() ? DocumentTitle(doc) : ToQt(path));
  return (from.path() + "/" + from.completeBaseName()).toStdString() + kOwnSuffix;
}

std::string JoinedNotes(const std::string& path, const std::vector<std::string>& notes) {
  std::string text = "\"" + QFileInfo(ToQt(path)).fileName().toStdString() +
                     "\" was opened. Not all of it came along:\n";
  for (const std::string& note : notes) text += "\n\u2022 " + note;
  return text;
}

// Missing textures are counted now, when somebody can still fetch them, and not at the render.
std::string Opened(engine::FileSystem& files, const std::string& path,
                   const host::BaseDocument& doc, const std::vector<std::string>& states) {
  std::string opened =
      "Opened " + outcome::Listed({QFileInfo(ToQt(path)).fileName().toStdString()});
  if (!states.empty())
    opened +=
        " with " + outcome::Counted(states.size(), "Stagemark") + ": " + outcome::Listed(states);
  const std::vector<std::string> missing = engine::MissingTextures(files, doc);
  if (missing.empty()) return opened + ".";
  const std::string count = outcome::Counted(missing.size(), "texture");
  return opened + "; " + count + (missing.size() == 1 ? " was" : " were") +
         " found nowhere: " + outcome::Listed(missing) + ".";
}

}  // namespace

QString DocumentTitle(const host::BaseDocument& doc) {
  const QString name = ToQt(doc.GetDocumentName().GetString());
  return name.isEmpty() ? QString("Untitled") : name;
}

QString ShortTitle(const host::BaseDocument& doc) {
  const QString title = DocumentTitle(doc).simplified();
  return title.size() > kLongestFileName ? title.left(kLongestFileName - 1) + QChar(0x2026) : title;
}

DocumentCommands::DocumentCommands(engine::Application& application, DesktopPerson& person,
                                   Settings& settings, QWidget* window)
    : application_(application), person_(person), settings_(settings), window_(window) {}

void DocumentCommands::New() {
  host::BaseDocument* doc = application_.NewDocument();
  if (doc) host::SetActiveDocument(doc);
  host::EventAdd();
}

void DocumentCommands::AskAndOpen(const char* filter) {
  const QString recent = RecentFiles().value(0);
  const std::string folder = recent.isEmpty() ? "" : QFileInfo(recent).path().toStdString();
  const auto path = ChooseFile(
      window_, {host::FILESELECTTYPE_ANYTHING, host::FILESELECT_LOAD, "Open a scene", folder},
      filter);
  if (path) Open(*path);
}

bool DocumentCommands::Open(const std::string& path) {
  const engine::Status opened = TryToOpen(path);
  if (!opened) person_.Warn(opened.Message());
  return opened.Ok();
}

// One box for all: twenty files that cannot be opened are not twenty boxes.
void DocumentCommands::OpenAll(const std::vector<std::string>& paths) {
  std::size_t failed = 0;
  std::string messages;
  for (const std::string& path : paths) {
    const engine::Status opened = TryToOpen(path);
    if (!opened && ++failed <= kMostToldAtOnce)
      messages += (failed > 1 ? "\n\n" : "") + opened.Message();
  }
  if (failed > kMostToldAtOnce)
    messages += "\n\nand " + std::to_string(failed - kMostToldAtOnce) + " more.";
  if (failed > 0) person_.Warn(messages);
}

// The document is shown before its states are recorded, because the plug-in records the active one.
// Notes come last, in a box, when everything stands.
engine::Status DocumentCommands::TryToOpen(const std::string& path) {
  std::vector<std::string> notes;
  const auto opened = application_.OpenDocument(path, &notes);
  if (!opened) return opened.GetStatus();
  // An imported one has the name that it would get, where another file of the person's may stand.
  if (!IsOwnScene(path)) unplaced_.insert(IdentityOf(opened.Value()));
  DropUntouched(opened.Value());
  Remember(path);
  host::EventAdd();
  const recording::RecordedStates states =
      recordStates ? recordStates() : recording::RecordedStates();
  notes.insert(notes.end(), states.notes.begin(), states.notes.end());
  if (told) {
    told({Opened(application_.GetServices().files, path, *opened.Value(), states.names),
          {},
          {},
          ""});
  }
  if (!notes.empty()) person_.Warn(JoinedNotes(path, notes));
  return {};
}

// Path and name are those that it had, so that textures and previews are found; its first saving
// asks, because the file there may be newer than the copy.
engine::Result<host::BaseDocument*> DocumentCommands::OpenRecovered(const std::string& kept,
                                                                    const std::string& path) {
  auto opened = application_.OpenDocument(kept);
  if (!opened) return opened;
  host::BaseDocument& doc = *opened.Value();
  application_.GetServices().files.FollowScene(path);
  const host::Filename place{ToHost(ToQt(path))};
  doc.SetDocumentPath(place.GetDirectory());
  doc.SetDocumentName(place.GetFile());
  doc.SetChanged();
  unplaced_.insert(IdentityOf(&doc));
  DropUntouched(&doc);
  host::EventAdd();
  return opened;
}

// Only when there are these two: whoever made another empty scene meant it.
void DocumentCommands::DropUntouched(host::BaseDocument* opened) {
  const auto documents = application_.Documents();
  if (documents.size() != 2) return;
  host::BaseDocument* other = documents[0] == opened ? documents[1] : documents[0];
  if (PathOfDocument(*other).empty() && !other->GetChanged() && !other->GetFirstObject())
    host::KillDocument(other);
}

bool DocumentCommands::Save(host::BaseDocument& doc) {
  if (!IsOwnScene(PathOfDocument(doc)) || unplaced_.contains(IdentityOf(&doc))) return SaveAs(doc);
  return Write(doc, PathOfDocument(doc));
}

// The file may change also while a question stands there, or while this waits for another program
// that writes it. A loop, since the file may change again while its question stands there. The
// stamp from before the question decides: KeepMine overwrites the version that the person was asked
// about and no later one. The document may be closed meanwhile, hence the identity.
bool DocumentCommands::Write(host::BaseDocument& doc, const std::string& path) {
  const host::ULLONG id = IdentityOf(&doc);
  for (;;) {
    const engine::Status saved = WriteOnce(doc, path);
    if (saved) told_.erase(id);
    if (saved) return true;
    if (application_.LookAtFileOf(doc) != engine::FileNow::Changed) {
      person_.Warn(saved.Message());
      return false;
    }
    const engine::FileStamp stamp = application_.GetServices().files.Stamp(path);
    const ChangedFileAnswer answer = AskAboutChangedFile(window_, doc, true);
    if (FindOpenDocument(id) != &doc || answer == ChangedFileAnswer::Later) return false;
    if (answer == ChangedFileAnswer::SaveAs) return SaveAs(doc);
    if (answer == ChangedFileAnswer::Reload) Reload(doc);
    if (answer == ChangedFileAnswer::Reload) return false;
    if (application_.GetServices().files.Stamp(path) == stamp) application_.AcceptFileOf(doc);
  }
}

engine::Status DocumentCommands::WriteOnce(host::BaseDocument& doc, const std::string& path) {
  const engine::Services& services = application_.GetServices();
  const std::size_t mark = services.ledger.Mark();
  const std::string former = PathOfDocument(doc);
  engine::Status saved = application_.SaveDocumentAs(doc, path);
  if (saved && told) told(outcome::OfSaving(services, mark, former, path));
  return saved;
}

// Opened before the old one goes: a file that cannot be read takes nothing away.
void DocumentCommands::Reload(host::BaseDocument& doc) {
  const auto opened = application_.OpenDocument(PathOfDocument(doc));
  if (!opened) return person_.Warn(opened.Message());
  told_.erase(IdentityOf(&doc));
  host::KillDocument(&doc);
  host::EventAdd();
}

bool DocumentCommands::HasPrevious(const host::BaseDocument& doc) const {
  const std::string path = PathOfDocument(doc);
  return IsOwnScene(path) && !unplaced_.contains(IdentityOf(&doc)) &&
         !application_.FormerVersionOf(path).empty();
}

// The stamp's time is in nanoseconds since 1970.
void DocumentCommands::RevertToPrevious(host::BaseDocument& doc) {
  const host::ULLONG id = IdentityOf(&doc);
  const std::string path = PathOfDocument(doc);
  if (!HasPrevious(doc)) return;
  const std::string former = application_.FormerVersionOf(path);
  const engine::FileStamp stamp = application_.GetServices().files.Stamp(former);
  QMessageBox box(QMessageBox::Question, "Revert to Previous",
                  "Bring back \"" + ShortTitle(doc) + "\" as it was saved on " +
                      QLocale().toString(QDateTime::fromMSecsSinceEpoch(stamp.changed / 1000000),
                                         QLocale::ShortFormat) +
                      "?",
                  QMessageBox::Cancel, window_);
  QPushButton* revert = box.addButton("Revert", QMessageBox::AcceptRole);
  box.setTextFormat(Qt::PlainText);
  box.setInformativeText(
      QString(doc.GetChanged() ? "The changes since the last saving are lost. " : "") +
      "The version in the file now is kept: the same command brings it back.");
  // Unsaved changes would be lost for good: Enter alone does not discard them.
  if (doc.GetChanged()) {
    box.setDefaultButton(QMessageBox::Cancel);
  } else {
    box.setDefaultButton(revert);
  }
  box.exec();
  if (box.clickedButton() != revert || FindOpenDocument(id) != &doc) return;
  const engine::Status restored = application_.RestoreFormerVersion(path);
  if (!restored) return person_.Warn(restored.Message());
  Reload(doc);
  if (told) told({"Reverted to the version before the last saving.", {}, {}, ""});
}

void DocumentCommands::KeepPrevious(engine::FormerPlace place) {
  const engine::Status kept = application_.SetPlaceOfFormerVersions(place);
  if (!kept) person_.Warn("The choice was not kept. " + kept.Message());
}

// Told once for each stamp of the file; what was answered "later" is not asked again until it
// changes again.
void DocumentCommands::LookAtFile(host::BaseDocument& doc) {
  const host::ULLONG id = IdentityOf(&doc);
  // A document that still needs a place to be saved was not read from the file at its path.
  const engine::FileNow now =
      unplaced_.contains(id) ? engine::FileNow::AsRead : application_.LookAtFileOf(doc);
  if (now == engine::FileNow::AsRead) {
    told_.erase(id);
    return;
  }
  const engine::FileStamp stamp = application_.GetServices().files.Stamp(PathOfDocument(doc));
  if (const auto before = told_.find(id); before != told_.end() && before->second == stamp) return;
  told_[id] = stamp;
  if (now == engine::FileNow::Gone) {
    // Closing the document asks then.
    doc.SetChanged();
    return person_.ShowStatus("The file of \"" + ShortTitle(doc).toStdString() +
                              "\" is not there any more. Save writes it again.");
  }
  const ChangedFileAnswer answer = AskAboutChangedFile(window_, doc, false);
  if (FindOpenDocument(id) != &doc) return;
  if (answer == ChangedFileAnswer::Reload) Reload(doc);
  if (answer == ChangedFileAnswer::SaveAs) SaveAs(doc);
  if (answer != ChangedFileAnswer::KeepMine ||
      application_.GetServices().files.Stamp(PathOfDocument(doc)) != stamp)
    return;
  application_.AcceptFileOf(doc);
  // The scene as it is here is in no file any more.
  doc.SetChanged();
}

// The path is asked of the document again: reloading in the middle gives up the new place.
bool DocumentCommands::SaveAs(host::BaseDocument& doc) {
  const auto path = ChooseFile(window_,
                               {host::FILESELECTTYPE_ANYTHING, host::FILESELECT_SAVE,
                                "Save the scene as", ProposedPath(doc)},
                               kOwnScenes);
  if (!path) return false;
  const bool saved = Write(doc, *path);
  if (saved && PathOfDocument(doc) == *path) {
    unplaced_.erase(IdentityOf(&doc));
    Remember(*path);
  }
  host::EventAdd();
  return saved;
}

// The panels are made for a document: the last one makes room for an empty one.
bool DocumentCommands::Close(host::BaseDocument& doc) {
  if (!MayClose(doc)) return false;
  host::KillDocument(&doc);
  if (application_.Documents().empty()) New();
  host::EventAdd();
  return true;
}

bool DocumentCommands::MayCloseAll() {
  for (host::BaseDocument* doc : application_.Documents()) {
    if (!MayClose(*doc)) return false;
  }
  return true;
}

bool DocumentCommands::MayClose(host::BaseDocument& doc) {
  if (!doc.GetChanged()) return true;
  QMessageBox box(QMessageBox::Warning, "Unsaved changes",
                  "Save the changes to \"" + ShortTitle(doc) + "\"?",
                  QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, window_);
  box.setTextFormat(Qt::PlainText);
  box.setInformativeText("Without saving they are lost.");
  box.setDefaultButton(QMessageBox::Save);
  const int answer = box.exec();
  return answer == QMessageBox::Discard || (answer == QMessageBox::Save && Save(doc));
}

QStringList DocumentCommands::RecentFiles() const { return settings_.Texts(kRecentFiles); }

// Newest first, each once. A list that cannot be kept is no reason for a box.
void DocumentCommands::Remember(const std::string& path) {
  QStringList files = RecentFiles();
  files.removeAll(ToQt(path));
  files.prepend(ToQt(path));
  const engine::Status kept = settings_.Set(kRecentFiles, files.mid(0, kMostRecentFiles));
  if (!kept) person_.ShowStatus("The list of recent files was not kept. " + kept.Message());
}

}  // namespace desktop
