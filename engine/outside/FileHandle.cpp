#include "engine/outside/FileHandle.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace engine {

bool FileHandle::Close() {
  const int descriptor = std::exchange(descriptor_, -1);
  // Closed all the same when a signal came: trying again could close a descriptor of another
  // thread.
  return descriptor < 0 || close(descriptor) == 0 || errno == EINTR;
}

Status FileFailure(const std::string& what, const std::string& path, const std::string& reason) {
  return Status::Failure(what + " \"" + path + "\": " + reason + ".");
}

Status SystemFailure(const std::string& what, const std::string& path) {
  return FileFailure(what, path, std::generic_category().message(errno));
}

Status Stopped(const std::string& path) {
  return FileFailure("Did not write", path, "the work was stopped");
}

std::pair<std::string, std::string> FolderAndName(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return {slash == 0 ? "/" : path.substr(0, slash), path.substr(slash + 1)};
}

FileHandle OpenFolder(const std::string& path) {
  return FileHandle(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

// The second look is for what was put in place in between.
Result<FileHandle> OpenPlainFile(const std::string& path, struct stat& info) {
  if (stat(path.c_str(), &info) != 0) return SystemFailure(kCannotRead, path);
  if (S_ISDIR(info.st_mode)) return FileFailure(kCannotRead, path, "it is a folder");
  if (!S_ISREG(info.st_mode)) return FileFailure(kCannotRead, path, "it is no plain file");
  FileHandle file(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!file || fstat(file.Get(), &info) != 0) return SystemFailure(kCannotRead, path);
  if (!S_ISREG(info.st_mode)) return FileFailure(kCannotRead, path, "it is no plain file");
  return file;
}

}  // namespace engine
