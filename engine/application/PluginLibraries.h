// PluginLibraries: the loaded plug-ins and the commands they registered; from the path of a library
// to a started plug-in and back. Owns libraries, command objects and icons. Main thread.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/application/Application.h"
#include "engine/application/SceneHooks.h"

namespace engine {

// The words of an outcome as reports hold it: "Loaded", "Missing", ...
const char* NameOf(LoadOutcome outcome);

class PluginLibraries {
 public:
  PluginLibraries() = default;
  PluginLibraries(const PluginLibraries&) = delete;
  PluginLibraries& operator=(const PluginLibraries&) = delete;

  LoadReport Load(const std::string& path, FileSystem& files, SceneHooks& hooks);
  // PluginEnd of each, the last loaded first; then hook instances and commands go, then the
  // libraries.
  void UnloadAll(SceneHooks& hooks);
  const std::vector<CommandPlugin>& Commands() const { return commands_; }

  // Registrations of the plug-in that is just starting; false when none is, or the ID is taken.
  bool Register(CommandPlugin command);
  bool Register(const RegisteredHook& hook);

  // Folder of the plug-in whose code holds `address`, or else of the one whose entry point is
  // running; nothing when it is neither.
  std::optional<std::string> FolderOf(const void* address) const;

 private:
  struct Entries {
    host::Bool (*start)() = nullptr;
    host::Bool (*message)(host::LONG, void*) = nullptr;
    void (*end)() = nullptr;
  };
  struct Library {
    std::string path;
    void* handle = nullptr;
    Entries entries;
    std::vector<host::LONG> ids;        // of everything it registered
    std::vector<RegisteredHook> hooks;  // registered, not yet handed to the scene hooks
    bool idTaken = false;
    host::LONG takenId = 0;
  };

  LoadReport CheckFile(const Library& library, FileSystem& files) const;
  LoadReport Try(Library& library, FileSystem& files, SceneHooks& hooks);
  LoadReport Open(Library& library);
  LoadReport Start(Library& library, FileSystem& files);
  bool IsTaken(host::LONG id) const;
  bool ClaimId(host::LONG id);
  void TakeBack(const Library& library);

  std::vector<std::unique_ptr<Library>> libraries_;
  std::vector<CommandPlugin> commands_;
  Library* starting_ = nullptr;  // inside its PluginStart
  Library* running_ = nullptr;   // inside one of its entry points
};

}  // namespace engine
