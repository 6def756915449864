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
  Assimp::IOStream* Open(const char* file, const char* mode) override;

  // The folders that may be read.
  static std::vector<std::string> FoldersOf(const std::string& scene);

 private:
  bool IsInside(const std::string& file) const;
  std::vector<std::string> folders_;
};

}  // namespace engine
