#include "engine/outside/FileParts.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace engine {

Result<FileParts> FileParts::Open(const std::string& path) {
  const auto fail = [&](const std::string& why) {
    return Result<FileParts>::Failure("Cannot read \"" + path + "\": " + why + ".");
  };
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file < 0) return fail(std::generic_category().message(errno));
  FileParts parts(file, 0);
  struct stat about {};
  if (fstat(file, &about) != 0) return fail(std::generic_category().message(errno));
  if (!S_ISREG(about.st_mode)) return fail("it is no file");
  parts.size_ = static_cast<std::uint64_t>(about.st_size);
  return parts;
}

FileParts::FileParts(FileParts&& other) noexcept
    : file_(std::exchange(other.file_, -1)), size_(other.size_) {}

FileParts::~FileParts() {
  if (file_ >= 0) close(file_);
}

Result<std::string> FileParts::Read(std::uint64_t offset, std::uint64_t length) const {
  if (offset > size_ || length > size_ - offset)
    return Result<std::string>::Failure("The file is shorter than that.");
  std::string bytes(static_cast<std::size_t>(length), '\0');
  for (std::size_t done = 0; done < bytes.size();) {
    const ssize_t count =
        pread(file_, bytes.data() + done, bytes.size() - done, static_cast<off_t>(offset + done));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return Result<std::string>::Failure(std::generic_category().message(errno));
    if (count == 0) return Result<std::string>::Failure("The file became shorter.");
    done += static_cast<std::size_t>(count);
  }
  return bytes;
}

}  // namespace engine
