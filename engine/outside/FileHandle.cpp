#include "engine/outside/FileHandle.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace engine {

bool FileHandle::Close() {
  const int descriptor = std::exchange(descriptor_, -1);
  return descriptor < 0 || close(descriptor) == 0 || errno == EINTR;
}

Status FileFailure(const std::string& what, const std::string& path, const std::string& reason) {
  return Status::Failure(what + " \"" + path + "\": " + reason + ".");
}

Status SystemFailure(const std::string& what, const std::string& path) {
  return FileFailure(what, path, std::generic_category().message(errno));
}

std::pair<std::string, std::string> FolderAndName(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return {slash == 0 ? "/" : path.substr(0, slash), path.substr(slash + 1)};
}

FileHandle OpenFolder(const std::string& path) {
  return FileHandle(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

}  // namespace engine
