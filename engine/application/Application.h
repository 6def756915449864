// Application: the running stand-in: documents, plug-ins, events, preferences. A program makes one,
// gives it the services to use, loads plug-ins and runs its event loop; the published free
// functions act on it. Main thread.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "engine/core/Result.h"
#include "engine/import/Import.h"
#include "engine/outside/FileLock.h"
#include "engine/outside/Services.h"
#include "engine/scenefile/FileAsRead.h"
#include "host/Application.h"
#include "host/BaseDocument.h"
#include "host/Plugins.h"

namespace engine {

// Every way a plug-in's loading can end.
enum class LoadOutcome {
  Loaded,
  Missing,          // no file at the path
  Untrusted,        // the path is relative, or others may change what lies there
  NotALibrary,      // the file is no loadable library
  NoEntryPoints,    // PluginStart, PluginMessage or PluginEnd is not exported
  ResourceRefused,  // PluginMessage(1) answered false
  StartRefused,     // PluginStart answered false
  IdTaken,          // it registered an ID that another plug-in holds
};

struct LoadReport {
  LoadOutcome outcome;
  std::string path;
  std::string message;  // one sentence for a person, with the outcome's name
};

struct CommandPlugin {
  host::LONG id;
  host::String name;
  host::String help;
  host::CommandData* data;  // owned by the application
  host::BaseBitmap* icon;   // owned by the application, may be null
};

// How to find things: the folders of the installed program.
struct ApplicationSetup {
  std::string importWorker;               // program that is run as the import child
  std::vector<std::string> texturePaths;  // global texture paths, at most 10
  ImportLimits importLimits = {};
};

// How a document is saved.
struct SaveChoices {
  // On the file, where the caller has it already; else it is taken for the time of the saving.
  const FileLock* lock = nullptr;
  std::chrono::milliseconds longestWait{10000};  // for another program that has the lock
  // Replace also a file that somebody has changed since the document was read from it.
  bool replaceChanged = false;
  // Asked last, when all is written and before it takes the file's place.
  BeforePlacing ready = {};
};

// Where the version of a scene that saving replaces is kept: in a hidden folder of the user's,
// beside the scene as "scene.c4d~", or nowhere. The numbers stand in the preferences.
enum class FormerPlace { Hidden = 0, Beside = 1, Nowhere = 2 };

struct ApplicationBody;

class Application {
 public:
  // Becomes the application that the published functions act on, with its services. What they name
  // must outlive it.
  Application(const Services& services, ApplicationSetup setup);
  Application(const Application&) = delete;
  Application& operator=(const Application&) = delete;
  // Unloads plug-ins (PluginEnd, then their commands and hooks go, then the libraries) and destroys
  // all documents.
  ~Application();
  // The one that lives, or null.
  static Application* Current();
  const Services& GetServices() const;

  // Loads one plug-in library by its path. The application goes on whatever the outcome.
  LoadReport LoadPlugin(const std::string& path);
  // Loads "<folder>/<Name>/<Name>.so" for every sub-folder, in name order.
  std::vector<LoadReport> LoadPlugins(const std::string& folder);
  void UnloadPlugins();
  const std::vector<CommandPlugin>& Commands() const;
  // Runs a registered command as its menu entry does; false when there is none or it answered
  // false.
  bool ExecuteCommand(host::LONG id);
  // Tells every command to restore its dialog, as when a window layout is restored.
  void RestoreLayouts();

  // --- Documents. The application owns them; each has one instance of every registered scene hook.
  host::BaseDocument* NewDocument();
  // Opens a native scene file or imports another format, inserts the document and makes it active.
  // Notes of the import go to `notes` where given.
  Result<host::BaseDocument*> OpenDocument(const std::string& path,
                                           std::vector<std::string>* notes = nullptr);
  // The host's Save and Save As: writes a new file (embedded textures beside it, too), sends the
  // document message to the document's scene hooks while path and name are still the old ones,
  // brings the file to its place, then sets path and name and clears "changed". A place where no
  // file can be is refused before hooks hear of it. So is the document's own file when somebody has
  // changed it since it was read.
  Status SaveDocumentAs(host::BaseDocument& doc, const std::string& path,
                        const SaveChoices& choices = {});
  // Same with the document's own path; fails for one never saved.
  Status SaveDocument(host::BaseDocument& doc, const SaveChoices& choices = {});
  // Whether the document's file was changed or removed since the document was read from it or last
  // saved to it; AsRead for a document that is of no scene file. Cheap: see LookAtFile.
  FileNow LookAtFileOf(const host::BaseDocument& doc);
  // From now on the file as it is now is the one that saving replaces, whoever changed it.
  void AcceptFileOf(const host::BaseDocument& doc);
  // --- Former versions: the file that the last Save or Save As replaced, one for each scene.
  FormerPlace PlaceOfFormerVersions() const;
  Status SetPlaceOfFormerVersions(FormerPlace place);
  // The file that it is kept in; empty where there is none.
  std::string FormerVersionOf(const std::string& path) const;
  // Brings it back to `path`, whatever is there, which becomes the former version: doing it again
  // takes it back. Open documents stay as they are. Refused where it is damaged.
  Status RestoreFormerVersion(const std::string& path, const SaveChoices& choices = {});
  std::vector<host::BaseDocument*> Documents() const;
  // As closing it, but hands the document to the caller, who frees it. False when it is none of the
  // application's.
  bool ReleaseDocument(host::BaseDocument* doc);

  // --- Events. Undo and redo of the active document post a change as EventAdd does.
  bool Undo();
  bool Redo();
  // Delivers what is posted: at most one core message 604 to every open dialog. Does nothing inside
  // a running command.
  void DeliverEvents();
  bool HasPendingEvents() const;

 private:
  friend struct ApplicationBody;
  std::unique_ptr<ApplicationBody> body_;
};

}  // namespace engine
