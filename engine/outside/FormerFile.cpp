#include "engine/outside/FormerFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "engine/outside/FilePlace.h"
#include "engine/outside/PendingFile.h"

namespace engine {
namespace {

constexpr const char* kCannotKeep = "Cannot keep";

// Makes each folder on the way to a file that is not there. By text: the standard library's paths
// end the program where memory fails within them.
Status MakeWayTo(const std::string& path) {
  for (std::size_t end = path.find('/', 1); end != std::string::npos;
       end = path.find('/', end + 1)) {
    const std::string folder = path.substr(0, end);
    if (mkdir(folder.c_str(), 0777) != 0 && errno != EEXIST && access(folder.c_str(), F_OK) != 0)
      return SystemFailure(kCannotKeep, path);
  }
  return {};
}

}  // namespace

FormerFile::~FormerFile() {
  if (!hidden_.empty()) (void)unlinkat(folder_.Get(), hidden_.c_str(), 0);
}

Status FormerFile::Hold() {
  constexpr int kOpening = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  bytes_ = FileHandle(open(file_.c_str(), kOpening));
  if (!bytes_) return errno == ENOENT ? Status() : SystemFailure(kCannotKeep, file_);
  if (Status made = MakeWayTo(place_); !made) return made;
  Result<FilePlace> place = FindPlace(kCannotKeep, place_, place_.rfind('/'));
  if (!place) return place.GetStatus();
  folder_ = std::move(place.Value().folder);
  name_ = std::move(place.Value().name);
  // Then the open handle alone keeps the bytes, until they are copied.
  if (!LinkIt()) hidden_.clear();
  return {};
}

// Somebody may put another file there between opening and linking.
bool FormerFile::LinkIt() {
  hidden_ = HiddenName();
  if (linkat(AT_FDCWD, file_.c_str(), folder_.Get(), hidden_.c_str(), 0) != 0) return false;
  struct stat linked;
  struct stat held;
  const bool isIt = fstatat(folder_.Get(), hidden_.c_str(), &linked, AT_SYMLINK_NOFOLLOW) == 0 &&
                    fstat(bytes_.Get(), &held) == 0 && linked.st_dev == held.st_dev &&
                    linked.st_ino == held.st_ino;
  if (!isIt) (void)unlinkat(folder_.Get(), hidden_.c_str(), 0);
  return isIt;
}

// Two names of one file are left alone by renaming, so that the hidden one goes in the end either
// way.
Status FormerFile::Keep() {
  if (!bytes_) return {};
  if (!hidden_.empty()) {
    return renameat(folder_.Get(), hidden_.c_str(), folder_.Get(), name_.c_str()) == 0
               ? Status()
               : SystemFailure(kCannotKeep, place_);
  }
  PendingFile copy(place_, place_.rfind('/'));
  Status status = copy.Begin();
  if (status) status = copy.TakeRightsOf(bytes_);
  if (status) status = copy.WriteAllOf(bytes_, file_, [] { return true; });
  return status ? copy.Commit(true) : status;
}

}  // namespace engine
