#include "engine/import/FolderFiles.h"

#include <algorithm>
#include <cstring>
#include <system_error>

namespace engine {
namespace {

namespace fs = std::filesystem;

}  // namespace

std::vector<std::string> FolderFiles::FoldersOf(const std::string& scene) {
  std::error_code error;
  std::vector<std::string> folders{
      fs::weakly_canonical(fs::path(scene).parent_path(), error).string()};
  const std::string target = fs::weakly_canonical(scene, error).parent_path().string();
  if (target != folders.front()) folders.push_back(target);
  return folders;
}

FolderFiles::FolderFiles(const std::string& scene) : folders_(FoldersOf(scene)) {}

bool FolderFiles::IsInside(const std::string& file) const {
  std::error_code error;
  const std::string path = fs::weakly_canonical(file, error).string();
  return !error && std::any_of(folders_.begin(), folders_.end(), [&](const std::string& folder) {
    return path.rfind(folder == "/" ? folder : folder + "/", 0) == 0;
  });
}

bool FolderFiles::Exists(const char* file) const {
  return IsInside(file) && Assimp::DefaultIOSystem::Exists(file);
}

Assimp::IOStream* FolderFiles::Open(const char* file, const char* mode) {
  const bool writes = std::strpbrk(mode, "wa+") != nullptr;
  std::error_code error;
  return !writes && IsInside(file) && fs::is_regular_file(file, error)
             ? Assimp::DefaultIOSystem::Open(file, mode)
             : nullptr;
}

}  // namespace engine
