// DocumentCommands: what the File menu does with documents: new, open, save, close, each with its
// questions; failures are told in a box and change nothing. It owns the list of recent files. Main
// thread.
#pragma once

#include <QWidget>
#include <unordered_map>
#include <unordered_set>

#include "engine/application/Application.h"
#include "program/desktop/DesktopPerson.h"
#include "program/desktop/Settings.h"
#include "program/outcome/Outcome.h"
#include "program/recording/ImportedStates.h"

namespace desktop {

// "Name" or "Untitled" as a window shows it.
QString DocumentTitle(const host::BaseDocument& doc);
// DocumentTitle on one line, cut where it is very long.
QString ShortTitle(const host::BaseDocument& doc);

class DocumentCommands {
 public:
  DocumentCommands(engine::Application& application, DesktopPerson& person, Settings& settings,
                   QWidget* window);

  void New();
  // Asks for a scene; `filter` is one of the chooser's.
  void AskAndOpen(const char* filter);
  // False when it failed, which was told then.
  bool Open(const std::string& path);
  // Opens each; what cannot be opened is told at the end in one box.
  void OpenAll(const std::vector<std::string>& paths);
  // Opens work that was kept when a desktop crashed, as a changed document that stood at `path`
  // (empty: nowhere). Its first saving asks for the place.
  engine::Result<host::BaseDocument*> OpenRecovered(const std::string& kept,
                                                    const std::string& path);
  // Asks for a place where the document has none of our own yet, and what to do where another
  // program has changed the file. False when canceled, failed, or when the document was given up
  // for the changed file.
  bool Save(host::BaseDocument& doc);
  bool SaveAs(host::BaseDocument& doc);
  // Asks, then brings back the scene as it was before its last saving, in the file and here. The
  // version that is in the file now changes places with it.
  void RevertToPrevious(host::BaseDocument& doc);
  // Whether there is a version to bring back.
  bool HasPrevious(const host::BaseDocument& doc) const;
  // Where previous versions are kept from now on.
  void KeepPrevious(engine::FormerPlace place);
  engine::FormerPlace PlaceOfPrevious() const { return application_.PlaceOfFormerVersions(); }
  // Asks what to do when another program has changed the file of the document, once for each
  // change; says so in the status line when the file is gone. For when a person comes back to the
  // window or to the document.
  void LookAtFile(host::BaseDocument& doc);
  // Asks about unsaved changes; there is always one document left. False when the person wants it
  // to stay.
  bool Close(host::BaseDocument& doc);
  // Asks about every changed document; true when all may go.
  bool MayCloseAll();
  QStringList RecentFiles() const;
  // Records the states that came in with the document that was just opened; their names, and what
  // is to be said of them.
  std::function<recording::RecordedStates()> recordStates;
  // Hears what came of opening and saving.
  std::function<void(const outcome::Outcome&)> told;
  DesktopPerson& Person() { return person_; }

 private:
  engine::Status TryToOpen(const std::string& path);
  bool MayClose(host::BaseDocument& doc);
  // Asks what to do where another program has changed the file; false when nothing was written,
  // which was told then.
  bool Write(host::BaseDocument& doc, const std::string& path);
  // Writes without questions; tells the result where it went well.
  engine::Status WriteOnce(host::BaseDocument& doc, const std::string& path);
  // Opens the file of the document anew in its place.
  void Reload(host::BaseDocument& doc);
  void Remember(const std::string& path);
  // The empty document of the start makes room for the first one opened.
  void DropUntouched(host::BaseDocument* opened);

  engine::Application& application_;
  DesktopPerson& person_;
  Settings& settings_;
  QWidget* window_;
  // Imported or recovered: the first saving asks where to
  std::unordered_set<host::ULLONG> unplaced_;
  // The file of a document when its change was told of last
  std::unordered_map<host::ULLONG, engine::FileStamp> told_;
};

}  // namespace desktop
