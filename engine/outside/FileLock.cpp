#include "engine/outside/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <thread>

#include "engine/outside/PathRules.h"

namespace engine {
namespace {

constexpr std::chrono::milliseconds kBetweenTries{20};

FileHandle OpenForLocking(const std::string& path, int access) {
  return FileHandle(open(path.c_str(), access | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
}

// Fails where the system does not say.
Result<bool> IsPlainFile(const std::string& path) {
  struct stat info;
  if (stat(path.c_str(), &info) == 0) return S_ISREG(info.st_mode);
  if (errno == ENOENT || errno == ENOTDIR) return false;
  return engine::SystemFailure("Cannot lock", path);
}

// 0, or the system's error.
int LockNow(const FileHandle& file) {
  while (flock(file.Get(), LOCK_EX | LOCK_NB) != 0) {
    if (errno != EINTR) return errno;
  }
  return 0;
}

// File systems over a network lock only what is open for writing.
int LockNow(FileHandle& file, const std::string& path) {
  const int error = LockNow(file);
  if (error != EBADF) return error;
  file = OpenForLocking(path, O_RDWR);
  return file ? LockNow(file) : errno;
}

// No lock is better than no work: whoever has the file on such a disk is mostly alone with it.
bool KnowsNoLocks(int error) {
  return error == ENOLCK || error == EOPNOTSUPP || error == ENOSYS || error == EINVAL;
}

}  // namespace

bool FileLock::IsOn(const struct stat& now) const {
  struct stat held;
  return file_ && fstat(file_.Get(), &held) == 0 && held.st_dev == now.st_dev &&
         held.st_ino == now.st_ino;
}

bool FileLock::Covers(const std::string& path) const {
  struct stat now;
  return stat(path.c_str(), &now) == 0 && IsOn(now);
}

bool FileLock::Covers(const FilePlace& place) const {
  struct stat now;
  return fstatat(place.folder.Get(), place.name.c_str(), &now, AT_SYMLINK_NOFOLLOW) == 0 &&
         IsOn(now);
}

Result<std::optional<FileLock>> FileLock::TryOpen(FileHandle file, const std::string& path) {
  const int error = LockNow(file, path);
  if (error == EWOULDBLOCK) return std::optional<FileLock>();
  if (KnowsNoLocks(error)) return std::optional(FileLock());
  errno = error;
  if (error != 0) return SystemFailure("Cannot lock", path);
  return std::optional(FileLock(std::move(file)));
}

Result<std::optional<FileLock>> FileLock::Try(const std::string& path) {
  // The file may be replaced between opening and locking, and the new one is the one to hold then.
  for (;;) {
    const Result<bool> isPlain = IsPlainFile(path);
    if (!isPlain) return isPlain.GetStatus();
    if (!isPlain.Value()) return std::optional(FileLock());
    FileHandle file = OpenForLocking(path, O_RDONLY);
    // A file may be there to be written and not to be read.
    if (!file) file = OpenForLocking(path, O_WRONLY);
    if (!file && errno == ENOENT) continue;
    if (!file) return SystemFailure("Cannot lock", path);
    Result<std::optional<FileLock>> lock = TryOpen(std::move(file), path);
    const bool isHeld = lock && lock.Value() && lock.Value()->file_;
    if (!isHeld || lock.Value()->Covers(path)) return lock;
  }
}

// Asked again and again instead of waiting in the kernel, which could not be stopped, nor follow a
// file that is replaced.
Result<FileLock> FileLock::Take(const std::string& path, std::chrono::milliseconds longest,
                                const ProgressCallback& progress) {
  const auto begin = std::chrono::steady_clock::now();
  for (;;) {
    Result<std::optional<FileLock>> lock = Try(path);
    if (!lock) return lock.GetStatus();
    if (lock.Value()) return std::move(*lock.Value());
    const auto waited = std::chrono::steady_clock::now() - begin;
    if (waited >= longest)
      return FileFailure("Cannot change", path, "another program is changing it");
    const double share =
        std::chrono::duration<double>(waited) / std::chrono::duration<double>(longest);
    if (progress && !progress(std::min(share, 1.0)))
      return FileFailure("Did not change", path, "the waiting was stopped");
    std::this_thread::sleep_for(kBetweenTries);
  }
}

Result<FileHandle> HoldFile(const std::string& path) {
  const Result<std::string> clean = PathForWriting(path);
  if (!clean) return clean.GetStatus();
  FileHandle file(open(clean.Value().c_str(), O_RDWR | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!file || flock(file.Get(), LOCK_EX | LOCK_NB) != 0) return SystemFailure("Cannot hold", path);
  return file;
}

}  // namespace engine
