#include "engine/outside/AppendedFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "engine/outside/FilePlace.h"
#include "engine/outside/PathRules.h"

namespace engine {

Result<AppendedFile> AppendedFile::Open(const FileSystem& files, const std::string& path) {
  const Result<std::string> clean = PathForWriting(path);
  if (!clean) return clean.GetStatus();
  const Result<FilePlace> place =
      FindPlace(kCannotWrite, clean.Value(), files.NamedPart(clean.Value()));
  if (!place) return place.GetStatus();
  Result<FileHandle> file = OpenOrMake(place.Value(), clean.Value(), O_APPEND);
  if (!file) return file.GetStatus();
  return AppendedFile(clean.Value(), file.Take());
}

// Where the file system knows no locks, the lines of two programs may run into one another, and are
// told apart by being no lines.
Status AppendedFile::Append(std::string_view line) {
  while (flock(file_.Get(), LOCK_EX) != 0 && errno == EINTR) {
  }
  Status status = Write(line);
  (void)flock(file_.Get(), LOCK_UN);
  return status;
}

Status AppendedFile::Write(std::string_view line) {
  struct stat info;
  if (fstat(file_.Get(), &info) != 0) return SystemFailure(kCannotWrite, path_);
  char last = '\n';
  if (info.st_size > 0 && pread(file_.Get(), &last, 1, info.st_size - 1) != 1)
    return SystemFailure(kCannotRead, path_);
  // Both ends and the line in one call, so that little can come between.
  const std::string bytes = (last == '\n' ? "" : "\n") + std::string(line) + "\n";
  ssize_t written = 0;
  do {
    written = write(file_.Get(), bytes.data(), bytes.size());
  } while (written < 0 && errno == EINTR);
  if (written == static_cast<ssize_t>(bytes.size())) return {};
  if (written >= 0) errno = ENOSPC;
  Status failure = SystemFailure(kCannotWrite, path_);
  // A part of a line is taken off again while the lock is held.
  if (written > 0) (void)!ftruncate(file_.Get(), info.st_size);
  return failure;
}

}  // namespace engine
