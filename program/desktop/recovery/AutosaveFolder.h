// AutosaveFolder: where one running desktop keeps its unsaved work:
// "<state>/autosave/<start>-<process>", with a scene and a note per document, and a folder of its
// previews where they are others than the saved ones. A file in it is held
// as long as the desktop runs, so that others know whose work is lost and whose is live. Made when
// first needed. Main thread.
#pragma once

#include <string>

#include "engine/outside/FileLock.h"
#include "engine/outside/Services.h"

namespace desktop {

// "" where the user has no state folder.
std::string AutosaveRoot(const engine::UserFolders& folders);
// The file in such a folder that its desktop holds.
inline constexpr const char* kHeldFile = "/running";

// The files of one document: the scene, and where it stood and how it was called as JSON; the
// folder of its previews as its file has them (SavedPreviews).
struct AutosaveFiles {
  std::string scene;
  std::string note;
  std::string previews;
};
inline constexpr const char* kSavedPreviewsEnding = ".previews";
AutosaveFiles AutosaveFilesIn(const std::string& folder, const std::string& name);

class AutosaveFolder {
 public:
  explicit AutosaveFolder(const engine::Services& services)
      : files_(services.files), services_(services) {}

  // Makes the folder and holds it, unless that is done already.
  engine::Status Prepare();
  // Files of a document by its number; after Prepare.
  AutosaveFiles FilesOf(host::ULLONG document) const;
  // Takes over files that another desktop left.
  engine::Status Adopt(const AutosaveFiles& files, host::ULLONG document);
  // Its scene and note.
  void Remove(host::ULLONG document);
  // The folder with all in it; where there are saved previews still, all but these.
  void RemoveAll();

 private:
  std::string NewPlace(const std::string& root) const;

  engine::FileSystem& files_;
  const engine::Services& services_;
  std::string folder_;  // empty: not made yet
  engine::FileHandle held_;
};

}  // namespace desktop
