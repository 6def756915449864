// FolderFiles: the importer's view of the disk: it reads files below the scene's own folder (and,
// where the scene is a link, below the folder of its target) and nothing else, so that a file
// cannot pull in what lies elsewhere. Works in a process that may not ask what a path leads to.
#pragma once

#include <assimp/DefaultIOSystem.h>

#include <ctime>
#include <string>
#include <vector>

namespace engine {

class FolderFiles : public Assimp::DefaultIOSystem {
 public:
  explicit FolderFiles(const std::string& scene);
  bool Exists(const char* file) const override;
  // Null for a file that lies elsewhere or is no plain one, and for any mode that writes.
  // OBJ, its materials and COLLADA come in the form that the library reads: UTF-16 as UTF-8,
  // COLLADA without the blanks that it stumbles over.
  Assimp::IOStream* Open(const char* file, const char* mode) override;
  // A file's bytes as they are; empty for one that may not or cannot be read.
  std::string ReadWhole(const std::string& file) const;
  // When its contents changed last; 0 as above.
  std::time_t ChangedAt(const std::string& file) const;

  // The files that were opened, as they were asked for.
  const std::vector<std::string>& Opened() const { return opened_; }

  // The folders that may be read. Found when asked first: a process that is confined since then
  // gets the same answer again.
  static const std::vector<std::string>& FoldersOf(const std::string& scene) {
    return PlacesOf(scene).folders;
  }

 private:
  struct Places {
    std::vector<std::string> folders;  // the scene's, and that of the file that it is a link to
    std::string file;                  // the name of that file, which need not be the link's
  };
  static const Places& PlacesOf(const std::string& scene);
  int OpenInside(const std::string& file) const;
  std::string scene_;    // as it was named
  std::string written_;  // its folder
  const Places& places_;
  std::vector<std::string> opened_;
};

}  // namespace engine
