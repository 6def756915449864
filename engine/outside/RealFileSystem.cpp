#include "engine/outside/RealFileSystem.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>

#include "engine/outside/FilePlace.h"
#include "engine/outside/FormerFile.h"
#include "engine/outside/PendingFile.h"

namespace engine {
namespace {

FileKind KindOfMode(mode_t mode) {
  if (S_ISREG(mode)) return FileKind::File;
  return S_ISDIR(mode) ? FileKind::Folder : FileKind::Other;
}

std::int64_t Nanoseconds(const timespec& time) {
  return std::int64_t{time.tv_sec} * 1000000000 + time.tv_nsec;
}

Status TooLarge(const std::string& path, std::uint64_t limit) {
  return FileFailure(kCannotRead, path, "it is larger than " + std::to_string(limit) + " bytes");
}

// A name that is too long for every file is that of none.
bool CanBeThere(const std::string& path) {
  for (std::size_t begin = 0; begin < path.size();) {
    const std::size_t end = std::min(path.find('/', begin), path.size());
    if (end - begin > NAME_MAX) return false;
    begin = end + 1;
  }
  return true;
}

}  // namespace

FileKind RealFileSystem::DoKind(const std::string& path) {
  struct stat info;
  if (stat(path.c_str(), &info) == 0) return KindOfMode(info.st_mode);
  const int error = errno;
  const bool isMissing =
      error == ENOENT || error == ENOTDIR || (error == ENAMETOOLONG && !CanBeThere(path));
  errno = error;
  return isMissing ? FileKind::Missing : FileKind::Unknown;
}

Status RealFileSystem::DoCheckWay(const std::string& path) {
  const Result<FilePlace> place = FindPlace(kCannotWrite, path, NamedPart(path));
  if (!place) return errno == ELOOP ? place.GetStatus() : Status();
  const bool isRefused = NamedPart(path) < path.size() && IsLink(place.Value());
  return isRefused ? LinkRefusal(kCannotWrite, path, path) : Status();
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
    const ssize_t count = ReadSome(file.Value(), bytes.data() + filled, bytes.size() - filled);
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

// The former file is held before the new one takes its place and gets its own name after that: so
// the scene is at its path throughout, and a saving that fails leaves the former version as it was
// (decision 69).
Status RealFileSystem::DoReplaceFile(const std::string& path,
                                     std::span<const std::string_view> pieces,
                                     const Replacing& how) {
  if (!person_.Writing(path)) return Stopped(path);
  PendingFile file(path, NamedPart(path));
  Status status = file.Begin();
  for (std::size_t i = 0; status && i < pieces.size(); ++i) status = file.Write(pieces[i]);
  if (status && how.ready) status = how.ready();
  if (!status) return status;
  if (how.former.empty()) return file.Commit(true);
  FormerFile former(file.Path(), how.former);
  Status kept = former.Hold();
  status = file.Commit(true);
  if (status && kept) kept = former.Keep();
  if (status && !kept) Note(path, "The version before was not kept. " + kept.Message());
  return status;
}

Status RealFileSystem::DoMakeFolder(const std::string& path) {
  constexpr const char* kCannotMake = "Cannot make the folder";
  const Result<FilePlace> place = FindPlace(kCannotMake, path, NamedPart(path));
  if (!place) return place.GetStatus();
  if (mkdirat(place.Value().folder.Get(), place.Value().name.c_str(), 0777) == 0) return {};
  const int error = errno;
  if (error == EEXIST && DoKind(path) == FileKind::Folder) return {};
  errno = error;
  return SystemFailure(kCannotMake, path);
}

Status RealFileSystem::DoCopyFile(const std::string& from, const std::string& to, bool replace) {
  struct stat source;
  const Result<FileHandle> file = OpenPlainFile(from, source);
  if (!file) return file.GetStatus();
  struct stat target;
  if (stat(to.c_str(), &target) == 0) {
    // Also by two names or through a link.
    if (source.st_dev == target.st_dev && source.st_ino == target.st_ino) return {};
    if (!replace) return FileFailure(kCannotWrite, to, "it exists already");
  }
  const auto isWanted = [&] { return person_.Writing(to); };
  if (!isWanted()) return Stopped(to);
  PendingFile copy(to, NamedPart(to));
  Status status = copy.Begin();
  if (status) status = copy.WriteAllOf(file.Value(), from, isWanted);
  return status ? copy.Commit(replace) : status;
}

Status RealFileSystem::DoRemoveFile(const std::string& path) {
  const Result<FilePlace> place = FindPlace(kCannotRemove, path, NamedPart(path));
  if (!place) return place.GetStatus();
  const int folder = place.Value().folder.Get();
  const char* name = place.Value().name.c_str();
  struct stat info;
  if (fstatat(folder, name, &info, AT_SYMLINK_NOFOLLOW) != 0)
    return SystemFailure(kCannotRemove, path);
  if (!S_ISREG(info.st_mode) && !S_ISLNK(info.st_mode))
    return FileFailure(kCannotRemove, path, "it is no plain file");
  return unlinkat(folder, name, 0) == 0 ? Status() : SystemFailure(kCannotRemove, path);
}

Status RealFileSystem::DoRename(const std::string& from, const std::string& to) {
  const std::string cannot = "Cannot rename \"" + from + "\" to";
  const Result<FilePlace> source = FindPlace("Cannot rename", from, NamedPart(from));
  if (!source) return source.GetStatus();
  const Result<FilePlace> target = FindPlace(cannot.c_str(), to, NamedPart(to));
  if (!target) return target.GetStatus();
  if (RenameWithoutReplacing(source.Value().folder.Get(), source.Value().name,
                             target.Value().folder.Get(), target.Value().name))
    return {};
  return SystemFailure(cannot, to);
}

}  // namespace engine
