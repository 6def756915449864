// SavedPreviews: the previews beside open scenes as the scenes' files know them. A command changes
// previews at once, but the scene only when it is saved. So each preview is copied into the
// autosave folder before its first change, and comes back when the document is closed without
// saving, or with the lost work of a desktop that did not end well. It owns neither. Main thread.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "engine/application/Application.h"
#include "engine/outside/RealFileSystem.h"
#include "program/desktop/recovery/AutosaveFolder.h"

namespace desktop {

enum class GivenBack { All, Missing };  // Missing: nothing is replaced or removed

// Gives back what is in such a folder of AutosaveFiles, and removes it. Where the scene was saved
// by somebody else meanwhile, only what is missing comes back. What fails is in the ledger of
// `files`; the folder stays then, and the answer is false.
bool GiveBackPreviews(engine::FileSystem& files, const std::string& kept,
                      GivenBack which = GivenBack::All);

class SavedPreviews {
 public:
  // Listens to all changes of files from now on. The `folder` is prepared when it is needed.
  SavedPreviews(const engine::Application& application, AutosaveFolder& folder);
  SavedPreviews(const SavedPreviews&) = delete;
  SavedPreviews& operator=(const SavedPreviews&) = delete;
  // Leaves what was kept, as a crash does.
  ~SavedPreviews();

  // Told where a preview could not be kept or given back.
  std::function<void(const std::string&)> failed;

  // Takes up which documents were saved or closed since the last call. Cheap when nothing is kept.
  void Follow(const std::vector<host::BaseDocument*>& open);
  // The document was recovered, its previews were taken over into the folder.
  void Adopt(const host::BaseDocument& doc);
  // No document is worked on any more: the previews of those that are not saved come back.
  void End();

 private:
  void BeforeChange(engine::Operation operation, const std::string& path);
  const host::BaseDocument* OwnerOf(const std::string& path) const;
  void Keep(const host::BaseDocument& doc, const std::string& preview);
  engine::Status Begin(const host::BaseDocument& doc);
  void GiveBack(host::ULLONG document, GivenBack which);

  const engine::Application& application_;
  AutosaveFolder& folder_;
  engine::AbsentPerson nobody_;
  engine::Ledger ledger_;
  engine::RealFileSystem own_{ledger_, nobody_};  // a command's report is about its own files
  std::map<host::ULLONG, std::string> scenes_;    // where those documents stand that have some kept
  bool isWorking_ = false;
  std::function<void(engine::Operation, const std::string&)> others_;
};

}  // namespace desktop
