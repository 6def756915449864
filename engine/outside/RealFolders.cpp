// Removing a folder with all in it, and listing one. Works on directory handles, never follows a
// link, needs two handles however deep the tree is.

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <memory>

#include "engine/outside/FilePlace.h"
#include "engine/outside/RealFileSystem.h"

namespace engine {
namespace {

constexpr const char* kCannotList = "Cannot list";

struct Entry {
  std::string name;
  mode_t mode;  // of the entry itself, links not followed
};

// Everything in an open folder but "." and ".."; false when it cannot be read.
bool ReadEntries(int folder, std::vector<Entry>& entries) {
  const int copy = openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const std::unique_ptr<DIR, int (*)(DIR*)> stream(copy < 0 ? nullptr : fdopendir(copy), closedir);
  if (!stream) return false;
  errno = 0;
  while (const dirent* entry = readdir(stream.get())) {
    const std::string name = entry->d_name;
    struct stat info;
    if (name == "." || name == "..") continue;
    if (fstatat(folder, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) == 0) {
      entries.push_back({name, info.st_mode});
    } else if (errno != ENOENT) {
      return false;
    }
    errno = 0;
  }
  return errno == 0;
}

// Walks down a tree and removes on the way back up, with a handle on the folder it is in.
class TreeRemoval {
 public:
  explicit TreeRemoval(std::string path) : path_(std::move(path)) {}

  Status Run(FilePlace place) {
    const std::string name = std::move(place.name);
    current_ = std::move(place.folder);
    struct stat info;
    if (fstat(current_.Get(), &info) != 0) return Failure();
    levels_.push_back({"", info.st_dev, info.st_ino, {}});
    Status status = Enter(name);
    while (status && levels_.size() > 1) {
      std::vector<std::string>& folders = levels_.back().folders;
      if (folders.empty()) {
        status = Leave();
        continue;
      }
      const std::string next = std::move(folders.back());
      folders.pop_back();
      status = Enter(next);
    }
    return status;
  }

 private:
  struct Level {
    std::string name;
    dev_t device;
    ino_t inode;
    std::vector<std::string> folders;  // still to be entered
  };

  Status Failure() const { return SystemFailure(kCannotRemove, path_); }

  Status Enter(const std::string& name) {
    FileHandle folder(
        openat(current_.Get(), name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat info;
    if (!folder || fstat(folder.Get(), &info) != 0) return Failure();
    // A disk that somebody has mounted there is not a part of the folder.
    if (info.st_dev != levels_.front().device)
      return FileFailure(kCannotRemove, path_, "another file system is mounted in it");
    current_ = std::move(folder);
    levels_.push_back({name, info.st_dev, info.st_ino, {}});
    return RemoveFiles();
  }

  Status RemoveFiles() {
    std::vector<Entry> entries;
    if (!ReadEntries(current_.Get(), entries)) return Failure();
    for (Entry& entry : entries) {
      if (S_ISDIR(entry.mode)) {
        levels_.back().folders.push_back(std::move(entry.name));
      } else if (unlinkat(current_.Get(), entry.name.c_str(), 0) != 0 && errno != ENOENT) {
        return Failure();
      }
    }
    return {};
  }

  // Goes up by ".." and makes sure that this is where the walk came from: somebody may have moved
  // the folder meanwhile.
  Status Leave() {
    const std::string name = levels_.back().name;
    levels_.pop_back();
    FileHandle parent(openat(current_.Get(), "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    struct stat info;
    if (!parent || fstat(parent.Get(), &info) != 0) return Failure();
    if (info.st_dev != levels_.back().device || info.st_ino != levels_.back().inode) {
      return FileFailure(kCannotRemove, path_, "it was moved meanwhile");
    }
    current_ = std::move(parent);
    if (unlinkat(current_.Get(), name.c_str(), AT_REMOVEDIR) != 0) return Failure();
    return {};
  }

  std::string path_;
  FileHandle current_;
  std::vector<Level> levels_;
};

// A link without a target is no file and no folder, and no reason to fail.
bool LeadsNowhere(int error) { return error == ENOENT || error == ENOTDIR || error == ELOOP; }

// Names of what is of that kind (a file type of stat, links followed), in byte order.
Result<std::vector<std::string>> ListKind(const std::string& path, mode_t kind) {
  const FileHandle folder = OpenFolder(path);
  std::vector<Entry> entries;
  if (!folder || !ReadEntries(folder.Get(), entries)) return SystemFailure(kCannotList, path);
  std::vector<std::string> names;
  for (Entry& entry : entries) {
    struct stat info {};
    info.st_mode = entry.mode;
    if (S_ISLNK(entry.mode) && fstatat(folder.Get(), entry.name.c_str(), &info, 0) != 0 &&
        !LeadsNowhere(errno))
      return SystemFailure(kCannotList, path + "/" + entry.name);
    if ((info.st_mode & S_IFMT) == kind) names.push_back(std::move(entry.name));
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace

// Of a link to a folder only the link. Stops at the first thing that cannot be removed, and at the
// edge of another file system.
Status RealFileSystem::DoRemoveFolder(const std::string& path) {
  Result<FilePlace> place = FindPlace(kCannotRemove, path, NamedPart(path));
  if (!place) return place.GetStatus();
  const int folder = place.Value().folder.Get();
  const char* name = place.Value().name.c_str();
  struct stat itself;
  struct stat target;
  if (fstatat(folder, name, &itself, AT_SYMLINK_NOFOLLOW) != 0 ||
      fstatat(folder, name, &target, 0) != 0)
    return SystemFailure(kCannotRemove, path);
  if (!S_ISDIR(target.st_mode)) return FileFailure(kCannotRemove, path, "it is no folder");
  if (S_ISLNK(itself.st_mode))
    return unlinkat(folder, name, 0) == 0 ? Status() : SystemFailure(kCannotRemove, path);
  return TreeRemoval(path).Run(place.Take());
}

Result<std::vector<std::string>> RealFileSystem::DoListFiles(const std::string& folder) {
  return ListKind(folder, S_IFREG);
}

Result<std::vector<std::string>> RealFileSystem::DoListFolders(const std::string& folder) {
  return ListKind(folder, S_IFDIR);
}

}  // namespace engine
