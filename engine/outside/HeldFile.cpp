#include "engine/outside/HeldFile.h"

#include <fcntl.h>
#include <sys/file.h>

#include "engine/outside/PathRules.h"

namespace engine {

Result<FileHandle> HoldFile(const std::string& path) {
  const Result<std::string> clean = PathForWriting(path);
  if (!clean) return clean.GetStatus();
  FileHandle file(open(clean.Value().c_str(), O_RDWR | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!file || flock(file.Get(), LOCK_EX | LOCK_NB) != 0) return SystemFailure("Cannot hold", path);
  return file;
}

}  // namespace engine
