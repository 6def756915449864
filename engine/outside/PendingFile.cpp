#include "engine/outside/PendingFile.h"

#include <dirent.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <utility>

#include "engine/outside/FilePlace.h"

namespace engine {
namespace {

constexpr std::string_view kHiddenBegin = ".stagemarks-";
constexpr std::string_view kHiddenEnd = ".tmp";

// The way to a file without a name, for giving it one.
std::string PathOfHandle(const FileHandle& file) {
  return "/proc/self/fd/" + std::to_string(file.Get());
}

// Whoever writes a file with a hidden name has it locked; false where the system knows no locks or
// somebody has it.
bool LockHidden(const FileHandle& file) { return flock(file.Get(), LOCK_EX | LOCK_NB) == 0; }

// Whether a new hidden file is ours: somebody who takes it for a dead one may be faster than the
// lock.
bool IsOurs(const FileHandle& file) {
  if (!LockHidden(file) && errno == EWOULDBLOCK) return false;
  struct stat info;
  return fstat(file.Get(), &info) == 0 && info.st_nlink > 0;
}

// A hidden file that nobody has locked belongs to a program that is no more.
void RemoveWhenDead(int folder, const char* name) {
  const FileHandle file(
      openat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  struct stat info;
  if (file && fstat(file.Get(), &info) == 0 && S_ISREG(info.st_mode) && LockHidden(file))
    unlinkat(folder, name, 0);
}

// For each folder, how many more files are written there before it is read again: as many as it
// had entries, so that reading costs less than writing however many there are.
class Readings {
 public:
  bool IsDue(const std::string& folder) {
    const std::lock_guard<std::mutex> lock(guard_);
    std::size_t& left = left_[folder];
    return left == 0 || --left == 0;
  }
  void Put(const std::string& folder, std::size_t entries) {
    const std::lock_guard<std::mutex> lock(guard_);
    left_[folder] = entries;
  }

 private:
  std::mutex guard_;
  std::map<std::string, std::size_t> left_;
};

void RemoveDeadFiles(int folder, const std::string& path) {
  static Readings readings;
  if (!readings.IsDue(path)) return;
  FileHandle listing(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  DIR* entries = listing ? fdopendir(listing.Get()) : nullptr;
  if (entries == nullptr) return;
  (void)listing.Release();
  std::size_t count = 0;
  while (const dirent* entry = readdir(entries)) {
    ++count;
    const std::string_view name = entry->d_name;
    if (name.starts_with(kHiddenBegin) && name.ends_with(kHiddenEnd))
      RemoveWhenDead(folder, entry->d_name);
  }
  closedir(entries);
  readings.Put(path, count);
}

// Some file systems cannot sync a folder and say so with these; nothing more can be done there.
bool SyncFolder(int folder) { return fsync(folder) == 0 || errno == EINVAL || errno == ENOTSUP; }

bool Exists(int folder, const std::string& name) {
  struct stat info;
  return fstatat(folder, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) == 0;
}

// For file systems without the flag: a second link fails on an existing target. Folders have none
// and leave a gap between looking and renaming.
bool RenameByLink(int fromFolder, const std::string& from, int toFolder, const std::string& to) {
  if (linkat(fromFolder, from.c_str(), toFolder, to.c_str(), 0) == 0)
    return unlinkat(fromFolder, from.c_str(), 0) == 0;
  if (errno == EEXIST || errno == ENOENT) return false;
  if (Exists(toFolder, to)) {
    errno = EEXIST;
    return false;
  }
  return renameat(fromFolder, from.c_str(), toFolder, to.c_str()) == 0;
}

}  // namespace

std::string HiddenName() {
  // Behind a pointer: a program that loads the engine late, as Python does, has little room for
  // what is a thread's own.
  thread_local const auto random = std::make_unique<std::mt19937_64>(std::random_device{}());
  return std::string(kHiddenBegin) + std::to_string(getpid()) + "-" + std::to_string((*random)()) +
         std::string(kHiddenEnd);
}

ssize_t ReadSome(const FileHandle& file, char* to, std::size_t size) {
  ssize_t count = -1;
  do {
    count = read(file.Get(), to, size);
  } while (count < 0 && errno == EINTR);
  return count;
}

bool RenameWithoutReplacing(int fromFolder, const std::string& from, int toFolder,
                            const std::string& to) {
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
  if (status) status = Open();
  if (status) status = TakeOverRights();
  return status;
}

Status PendingFile::FollowLink() {
  struct stat info;
  if (named_ < path_.size()) return {};
  if (lstat(path_.c_str(), &info) != 0 || !S_ISLNK(info.st_mode)) return {};
  std::string real = RealPath(path_);
  if (real.empty()) return FileFailure(kCannotWrite, path_, "it is a link that leads nowhere");
  path_ = std::move(real);
  named_ = path_.size();
  return {};
}

Status PendingFile::CheckPlace() {
  Result<FilePlace> place = FindPlace(kCannotWrite, path_, named_);
  if (!place) return place.GetStatus();
  name_ = place.Value().name;
  // Opened for reading, since the folder itself is synced in the end.
  folder_ = FileHandle(openat(place.Value().folder.Get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder_) return SystemFailure(kCannotWrite, path_);
  RemoveDeadFiles(folder_.Get(), FolderAndName(path_).first);
  struct stat info;
  if (fstatat(folder_.Get(), name_.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0)
    return errno == ENOENT ? Status() : SystemFailure(kCannotWrite, path_);
  if (S_ISLNK(info.st_mode)) return LinkRefusal(kCannotWrite, path_, path_);
  if (S_ISDIR(info.st_mode)) return FileFailure(kCannotWrite, path_, "a folder is in its place");
  if (!S_ISREG(info.st_mode))
    return FileFailure(kCannotWrite, path_, "something that is no plain file is in its place");
  // Renaming would replace it nevertheless; who has write-protected a file means it.
  if (faccessat(folder_.Get(), name_.c_str(), W_OK, AT_EACCESS) != 0)
    return SystemFailure(kCannotWrite, path_);
  return {};
}

Status PendingFile::Open() {
  return OpenUnnamed() || OpenHidden() ? Status() : SystemFailure(kCannotWrite, path_);
}

// Without the folder of handles the file could not be given a name later.
bool PendingFile::OpenUnnamed() {
  file_ = FileHandle(openat(folder_.Get(), ".", O_WRONLY | O_TMPFILE | O_CLOEXEC, 0666));
  if (!file_ || access(PathOfHandle(file_).c_str(), F_OK) != 0) return false;
  (void)LockHidden(file_);
  return true;
}

bool PendingFile::OpenHidden() {
  do {
    hidden_ = HiddenName();
    file_ = FileHandle(openat(folder_.Get(), hidden_.c_str(),
                              O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666));
    if (!file_) hidden_.clear();
    if (!file_) return false;
  } while (!IsOurs(file_));
  return true;
}

bool PendingFile::NameIt() {
  std::string name = HiddenName();
  if (linkat(AT_FDCWD, PathOfHandle(file_).c_str(), folder_.Get(), name.c_str(),
             AT_SYMLINK_FOLLOW) != 0)
    return false;
  hidden_ = std::move(name);  // a copy could fail where memory is short, and leave the file there
  return true;
}

Status PendingFile::TakeOverRights() {
  struct stat old;
  if (fstatat(folder_.Get(), name_.c_str(), &old, AT_SYMLINK_NOFOLLOW) != 0) return {};
  // The new file takes over owner and rights where the system lets it; the bytes matter more.
  const bool owned = fchown(file_.Get(), old.st_uid, old.st_gid) == 0;
  // Not the bits that lend another owner's rights.
  const mode_t rights = old.st_mode & (owned ? 07777U : 0777U);
  if (fchmod(file_.Get(), rights) != 0) return SystemFailure(kCannotWrite, path_);
  return {};
}

Status PendingFile::Write(std::string_view bytes) {
  // The kernel writes little more than 2 GB in one call.
  constexpr std::size_t kMost = std::size_t{1} << 30;
  while (!bytes.empty()) {
    const ssize_t count = write(file_.Get(), bytes.data(), std::min(bytes.size(), kMost));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return SystemFailure(kCannotWrite, path_);
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return {};
}

Status PendingFile::WriteAllOf(const FileHandle& file, const std::string& path,
                               const std::function<bool()>& isWanted) {
  // Copies that share their blocks, as some file systems have them, take no time.
  if (ioctl(file_.Get(), FICLONE, file.Get()) == 0) return {};
  std::string buffer(std::size_t{1} << 18, '\0');
  for (;;) {
    const ssize_t count = ReadSome(file, buffer.data(), buffer.size());
    if (count < 0) return SystemFailure(kCannotRead, path);
    if (count == 0) return {};
    Status written = Write(std::string_view(buffer).substr(0, static_cast<std::size_t>(count)));
    if (!written) return written;
    if (!isWanted()) return Stopped(path_);
  }
}

Status PendingFile::TakeRightsOf(const FileHandle& file) {
  struct stat info;
  const bool taken =
      fstat(file.Get(), &info) == 0 && fchmod(file_.Get(), info.st_mode & 0777U) == 0;
  return taken ? Status() : SystemFailure(kCannotWrite, path_);
}

// A name cannot be given to a file in place of another one, so that the file has a hidden one for a
// moment.
bool PendingFile::Place(bool replace) {
  const int folder = folder_.Get();
  if (!replace && hidden_.empty()) {
    return linkat(AT_FDCWD, PathOfHandle(file_).c_str(), folder, name_.c_str(),
                  AT_SYMLINK_FOLLOW) == 0;
  }
  if (hidden_.empty() && !NameIt()) return false;
  const bool placed = replace ? renameat(folder, hidden_.c_str(), folder, name_.c_str()) == 0
                              : RenameWithoutReplacing(folder, hidden_, folder, name_);
  if (placed) hidden_.clear();
  return placed;
}

// It stays locked until it is in its place.
Status PendingFile::Commit(bool replace) {
  // The bytes before the name: after a power cut the name must not lead to less than all.
  if (fsync(file_.Get()) != 0 || !Place(replace)) return SystemFailure(kCannotWrite, path_);
  (void)file_.Close();
  if (!SyncFolder(folder_.Get()))
    return SystemFailure("Cannot make sure that the disk holds", path_);
  return {};
}

}  // namespace engine
