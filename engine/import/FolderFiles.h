// FolderFiles: the importer's view of the disk: it reads files below the scene's own folder (and,
// where the scene is a link, below the folder of its target) and nothing else, so that a file
// cannot pull in what lies elsewhere.
#pragma once

#include <assimp/DefaultIOSystem.h>

#include <filesystem>
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
  std::string ReadWhole(const std::string& file);

  // The files that were opened, as they were asked for.
  const std::vector<std::string>& Opened() const { return opened_; }

  // The folders that may be read.
  static std::vector<std::string> FoldersOf(const std::string& scene);

 private:
  Assimp::IOStream* OpenPlain(const char* file);
  bool IsInside(const std::string& file) const;
  std::vector<std::string> folders_;
  std::vector<std::string> opened_;
};

}  // namespace engine
