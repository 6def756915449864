#include "engine/outside/RealFileSystem.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <functional>

#include "engine/outside/PendingFile.h"

namespace engine {
namespace {

constexpr const char* kCannotRead = "Cannot read";

FileKind KindOfMode(mode_t mode) {
  if (S_ISREG(mode)) return FileKind::File;
  return S_ISDIR(mode) ? FileKind::Folder : FileKind::Other;
}

std::int64_t Nanoseconds(const timespec& time) {
  return std::int64_t{time.tv_sec} * 1000000000 + time.tv_nsec;
}

// An open plain file. Pipes and devices are refused before they are opened, since opening alone can
// wait or act; the second look is for what was put in place in between.
Result<FileHandle> OpenPlainFile(const std::string& path, struct stat& info) {
  if (stat(path.c_str(), &info) != 0) return SystemFailure(kCannotRead, path);
  if (S_ISDIR(info.st_mode)) return FileFailure(kCannotRead, path, "it is a folder");
  if (!S_ISREG(info.st_mode)) return FileFailure(kCannotRead, path, "it is no plain file");
  FileHandle file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!file || fstat(file.Get(), &info) != 0) return SystemFailure(kCannotRead, path);
  if (!S_ISREG(info.st_mode)) return FileFailure(kCannotRead, path, "it is no plain file");
  return file;
}

// Up to `size` bytes into `to`; fewer at the end of the file, -1 on an error.
ssize_t ReadSome(int file, char* to, std::size_t size) {
  ssize_t count = -1;
  do {
    count = read(file, to, size);
  } while (count < 0 && errno == EINTR);
  return count;
}

Status TooLarge(const std::string& path, std::uint64_t limit) {
  return FileFailure(kCannotRead, path, "it is larger than " + std::to_string(limit) + " bytes");
}

Status Stopped(const std::string& path) {
  return FileFailure("Did not write", path, "the work was stopped");
}

// `isWanted`: asked now and then.
Status CopyBytes(int from, const std::string& path, PendingFile& to,
                 const std::function<bool()>& isWanted) {
  std::string buffer(std::size_t{1} << 18, '\0');
  for (;;) {
    const ssize_t count = ReadSome(from, buffer.data(), buffer.size());
    if (count < 0) return SystemFailure(kCannotRead, path);
    if (count == 0) return {};
    Status written = to.Write(std::string_view(buffer).substr(0, static_cast<std::size_t>(count)));
    if (!written) return written;
    if (!isWanted()) return Stopped(path);
  }
}

}  // namespace

FileKind RealFileSystem::DoKind(const std::string& path) {
  struct stat info;
  return stat(path.c_str(), &info) == 0 ? KindOfMode(info.st_mode) : FileKind::Missing;
}

Result<std::string> RealFileSystem::DoReadFile(const std::string& path, std::uint64_t limit) {
  struct stat info;
  const Result<FileHandle> file = OpenPlainFile(path, info);
  if (!file) return file.GetStatus();
  if (static_cast<std::uint64_t>(info.st_size) > limit) return TooLarge(path, limit);
  // One byte more than the size says, so that the end is seen without another turn.
  std::string bytes(static_cast<std::size_t>(info.st_size) + 1, '\0');
  std::size_t filled = 0;
  for (;;) {
    const ssize_t count =
        ReadSome(file.Value().Get(), bytes.data() + filled, bytes.size() - filled);
    if (count < 0) return SystemFailure(kCannotRead, path);
    if (count == 0) break;
    filled += static_cast<std::size_t>(count);
    if (filled > limit) return TooLarge(path, limit);
    if (filled == bytes.size()) bytes.resize(bytes.size() * 2);
  }
  bytes.resize(filled);
  return bytes;
}

FileStamp RealFileSystem::DoStamp(const std::string& path) {
  struct stat info;
  if (stat(path.c_str(), &info) != 0) return {};
  return {static_cast<std::uint64_t>(info.st_size), Nanoseconds(info.st_mtim),
          Nanoseconds(info.st_ctim), info.st_dev, info.st_ino};
}

// The system's own file trees have no size, so that nothing can be said of them.
std::optional<DiskSpace> RealFileSystem::DoSpace(const std::string& path) {
  struct statvfs disk;
  if (statvfs(path.c_str(), &disk) != 0 || disk.f_blocks == 0) return std::nullopt;
  const std::uint64_t block = std::max<std::uint64_t>(1, disk.f_frsize);
  return DiskSpace{disk.f_bavail * block, block};
}

Status RealFileSystem::DoReplaceFile(const std::string& path,
                                     std::span<const std::string_view> pieces,
                                     const BeforePlacing& ready) {
  if (!person_.Writing(path)) return Stopped(path);
  PendingFile file(path);
  Status status = file.Begin();
  for (std::size_t i = 0; status && i < pieces.size(); ++i) status = file.Write(pieces[i]);
  if (status && ready) status = ready();
  return status ? file.Commit(true) : status;
}

Status RealFileSystem::DoMakeFolder(const std::string& path) {
  if (mkdir(path.c_str(), 0777) == 0) return {};
  if (errno == EEXIST && DoKind(path) == FileKind::Folder) return {};
  return SystemFailure("Cannot make the folder", path);
}

Status RealFileSystem::DoCopyFile(const std::string& from, const std::string& to, bool replace) {
  struct stat source;
  const Result<FileHandle> file = OpenPlainFile(from, source);
  if (!file) return file.GetStatus();
  struct stat target;
  if (stat(to.c_str(), &target) == 0) {
    if (source.st_dev == target.st_dev && source.st_ino == target.st_ino) return {};
    if (!replace) return FileFailure("Cannot write", to, "it exists already");
  }
  const auto isWanted = [&] { return person_.Writing(to); };
  if (!isWanted()) return Stopped(to);
  PendingFile copy(to);
  Status status = copy.Begin();
  if (status) status = CopyBytes(file.Value().Get(), from, copy, isWanted);
  return status ? copy.Commit(replace) : status;
}

Status RealFileSystem::DoRemoveFile(const std::string& path) {
  struct stat info;
  if (lstat(path.c_str(), &info) != 0) return SystemFailure("Cannot remove", path);
  if (!S_ISREG(info.st_mode) && !S_ISLNK(info.st_mode))
    return FileFailure("Cannot remove", path, "it is no plain file");
  return unlink(path.c_str()) == 0 ? Status() : SystemFailure("Cannot remove", path);
}

Status RealFileSystem::DoRename(const std::string& from, const std::string& to) {
  if (RenameWithoutReplacing(AT_FDCWD, from, AT_FDCWD, to)) return {};
  return SystemFailure("Cannot rename \"" + from + "\" to", to);
}

}  // namespace engine
