// StatePictureFiles: where the gallery keeps the pictures of a scene's Stagemarks between runs:
// "<cache>/gallery/<hash of the scene's path>/<ID>.png", with what they show in the files. Behind
// the cache nothing is changed through a symbolic link. What cannot be read is as if it were not
// there. Main thread.
#pragma once

#include <QImage>
#include <optional>

#include "engine/outside/Services.h"
#include "host/BaseDocument.h"

namespace desktop {

struct KeptPicture {
  QImage image;
  std::string name;               // of its Stagemark
  std::string recorded;           // when that was recorded, as its date says
  std::uint64_t fingerprint = 0;  // of the scene, see SceneFingerprint
};

class StatePictureFiles {
 public:
  explicit StatePictureFiles(const engine::Services& services);

  // Folder of the scene; empty where the scene has no file, and where there is no cache.
  std::string FolderOf(const host::BaseDocument& doc) const;
  std::optional<KeptPicture> Read(const std::string& folder, host::LONG id) const;
  // Makes the folder when it is not there; folders of scenes that were not looked at for long go
  // then.
  engine::Status Keep(const std::string& folder, host::LONG id, const KeptPicture& picture) const;
  // Does nothing where there is none.
  void Remove(const std::string& folder, host::LONG id) const;

 private:
  std::string Root() const;
  engine::Status Prepare(const std::string& folder) const;
  void RemoveOldest(const std::string& but) const;

  const engine::Services& services_;
};

}  // namespace desktop
