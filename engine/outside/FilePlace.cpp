#include "engine/outside/FilePlace.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <memory>

namespace engine {

std::string RealPath(const std::string& path) {
  const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr),
                                                         &std::free);
  return real ? real.get() : "";
}

bool IsLink(const FilePlace& place) {
  struct stat info;
  return fstatat(place.folder.Get(), place.name.c_str(), &info, AT_SYMLINK_NOFOLLOW) == 0 &&
         S_ISLNK(info.st_mode);
}

Status LinkRefusal(const char* cannot, const std::string& path, const std::string& link) {
  return FileFailure(cannot, path,
                     "\"" + link +
                         "\" is a symbolic link, and nothing but the scene itself is changed "
                         "through one. Take it away, or put a real file or folder in its place");
}

Result<FileHandle> OpenOrMake(const FilePlace& place, const std::string& path, int more) {
  constexpr int kOpening = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  FileHandle file(openat(place.folder.Get(), place.name.c_str(), kOpening | more, 0666));
  if (!file && errno == ELOOP) return LinkRefusal(kCannotWrite, path, path);
  struct stat info;
  if (!file || fstat(file.Get(), &info) != 0) return SystemFailure(kCannotWrite, path);
  if (!S_ISREG(info.st_mode)) return FileFailure(kCannotWrite, path, "it is no plain file");
  return file;
}

// One folder at a time on every system, where one call of newer ones would do: there is one way to
// test, it knows the link's name, and the program's own part is seldom deeper than two folders.
Result<FilePlace> FindPlace(const char* cannot, const std::string& path, std::size_t named) {
  constexpr int kFolder = O_PATH | O_DIRECTORY | O_CLOEXEC;
  std::size_t begin = std::min(named, path.rfind('/'));
  FilePlace place{FileHandle(open(begin == 0 ? "/" : path.substr(0, begin).c_str(), kFolder)), ""};
  while (place.folder) {
    const std::size_t end = path.find('/', begin + 1);
    place.name = path.substr(begin + 1, end - begin - 1);
    if (end == std::string::npos) return place;
    FileHandle next(openat(place.folder.Get(), place.name.c_str(), kFolder | O_NOFOLLOW));
    const int error = errno;
    if (!next && IsLink(place)) {
      Status refusal = LinkRefusal(cannot, path, path.substr(0, end));
      errno = ELOOP;
      return refusal;
    }
    errno = error;
    place.folder = std::move(next);
    begin = end;
  }
  return SystemFailure(cannot, path);
}

}  // namespace engine
