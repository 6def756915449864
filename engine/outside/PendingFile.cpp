#include "engine/outside/PendingFile.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <random>
#include <tuple>

namespace engine {
namespace {

constexpr const char* kCannotWrite = "Cannot write";

std::string HiddenName() {
  thread_local std::mt19937_64 random{std::random_device{}()};
  return ".stagemarks-" + std::to_string(getpid()) + "-" + std::to_string(random()) + ".tmp";
}

// Some file systems cannot sync a folder and say so with these; nothing more can be done there.
bool SyncFolder(int folder) { return fsync(folder) == 0 || errno == EINVAL || errno == ENOTSUP; }

bool Exists(int folder, const std::string& name) {
  struct stat info;
  return fstatat(folder, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) == 0;
}

// For file systems without the flag: a second link fails on an existing target. Folders have none and leave a gap
// between looking and renaming.
bool RenameByLink(int fromFolder, const std::string& from, int toFolder, const std::string& to) {
  if (linkat(fromFolder, from.c_str(), toFolder, to.c_str(), 0) == 0) return unlinkat(fromFolder, from.c_str(), 0) == 0;
  if (errno == EEXIST || errno == ENOENT) return false;
  if (Exists(toFolder, to)) {
    errno = EEXIST;
    return false;
  }
  return renameat(fromFolder, from.c_str(), toFolder, to.c_str()) == 0;
}

}  // namespace

bool RenameWithoutReplacing(int fromFolder, const std::string& from, int toFolder, const std::string& to) {
  if (renameat2(fromFolder, from.c_str(), toFolder, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  if (errno != EINVAL && errno != ENOSYS) return false;
  return RenameByLink(fromFolder, from, toFolder, to);
}

PendingFile::~PendingFile() {
  if (!hidden_.empty()) unlinkat(folder_.Get(), hidden_.c_str(), 0);
}

Status PendingFile::Begin() {
  Status status = FollowLink();
  if (status) status = CheckPlace();
  if (status) status = OpenHidden();
  return status;
}

Status PendingFile::FollowLink() {
  struct stat info;
  if (lstat(path_.c_str(), &info) != 0 || !S_ISLNK(info.st_mode)) return {};
  char* real = realpath(path_.c_str(), nullptr);
  if (real == nullptr) return FileFailure(kCannotWrite, path_, "it is a link that leads nowhere");
  path_ = real;
  free(real);
  return {};
}

Status PendingFile::CheckPlace() {
  std::string folder;
  std::tie(folder, name_) = FolderAndName(path_);
  folder_ = OpenFolder(folder);
  if (!folder_) return SystemFailure(kCannotWrite, path_);
  struct stat info;
  if (fstatat(folder_.Get(), name_.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0) return {};
  if (S_ISDIR(info.st_mode)) return FileFailure(kCannotWrite, path_, "a folder is in its place");
  if (!S_ISREG(info.st_mode)) return FileFailure(kCannotWrite, path_, "something that is no plain file is in its place");
  if (faccessat(folder_.Get(), name_.c_str(), W_OK, AT_EACCESS) != 0) return SystemFailure(kCannotWrite, path_);
  return {};
}

Status PendingFile::OpenHidden() {
  const std::string hidden = HiddenName();
  file_ = FileHandle(openat(folder_.Get(), hidden.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
  if (!file_) return SystemFailure(kCannotWrite, path_);
  hidden_ = hidden;
  struct stat old;
  if (fstatat(folder_.Get(), name_.c_str(), &old, AT_SYMLINK_NOFOLLOW) != 0) return {};
  // The new file takes over owner and rights where the system lets it; the bytes matter more.
  const bool owned = fchown(file_.Get(), old.st_uid, old.st_gid) == 0;
  const mode_t rights = old.st_mode & (owned ? 07777U : 0777U);
  if (fchmod(file_.Get(), rights) != 0) return SystemFailure(kCannotWrite, path_);
  return {};
}

Status PendingFile::Write(std::string_view bytes) {
  constexpr std::size_t kMost = std::size_t{1} << 30;
  while (!bytes.empty()) {
    const ssize_t count = write(file_.Get(), bytes.data(), std::min(bytes.size(), kMost));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return SystemFailure(kCannotWrite, path_);
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return {};
}

Status PendingFile::Commit(bool replace) {
  if (fsync(file_.Get()) != 0 || !file_.Close()) return SystemFailure(kCannotWrite, path_);
  const int folder = folder_.Get();
  const bool placed = replace ? renameat(folder, hidden_.c_str(), folder, name_.c_str()) == 0
                              : RenameWithoutReplacing(folder, hidden_, folder, name_);
  if (!placed) return SystemFailure(kCannotWrite, path_);
  hidden_.clear();
  if (!SyncFolder(folder)) return SystemFailure("Cannot make sure that the disk holds", path_);
  return {};
}

}  // namespace engine
