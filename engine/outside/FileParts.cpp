#include "engine/outside/FileParts.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace engine {

Result<FileParts> FileParts::Open(const std::string& path) {
  struct stat info;
  Result<FileHandle> file = OpenPlainFile(path, info);
  if (!file) return file.GetStatus();
  return FileParts(file.Take(), static_cast<std::uint64_t>(info.st_size));
}

Result<std::string> FileParts::Read(std::uint64_t offset, std::uint64_t length) const {
  if (offset > size_ || length > size_ - offset)
    return Result<std::string>::Failure("The file is shorter than that.");
  std::string bytes(static_cast<std::size_t>(length), '\0');
  for (std::size_t done = 0; done < bytes.size();) {
    const ssize_t count = pread(file_.Get(), bytes.data() + done, bytes.size() - done,
                                static_cast<off_t>(offset + done));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return Result<std::string>::Failure(std::generic_category().message(errno));
    if (count == 0) return Result<std::string>::Failure("The file became shorter.");
    done += static_cast<std::size_t>(count);
  }
  return bytes;
}

}  // namespace engine
