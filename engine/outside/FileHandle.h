// FileHandle: an open file descriptor that closes itself; and words for a failed system call. Any
// thread.
#pragma once

#include <sys/stat.h>

#include <string>
#include <utility>

#include "engine/core/Result.h"

namespace engine {

class FileHandle {
 public:
  FileHandle() = default;
  explicit FileHandle(int descriptor) : descriptor_(descriptor) {}
  FileHandle(FileHandle&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  FileHandle& operator=(FileHandle&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  ~FileHandle() { Close(); }

  int Get() const { return descriptor_; }
  explicit operator bool() const { return descriptor_ >= 0; }
  // False when the system reports a write error only now; errno says which.
  bool Close();
  // The descriptor; this owns it no longer.
  int Release() { return std::exchange(descriptor_, -1); }

 private:
  int descriptor_ = -1;
};

// How messages begin.
inline constexpr const char* kCannotRead = "Cannot read";
inline constexpr const char* kCannotWrite = "Cannot write";
inline constexpr const char* kCannotRemove = "Cannot remove";

// "<what> "<path>": <text of errno>."
Status SystemFailure(const std::string& what, const std::string& path);
// "<what> "<path>": <reason>."
Status FileFailure(const std::string& what, const std::string& path, const std::string& reason);
// The failure for a file that was not written because the work was stopped.
Status Stopped(const std::string& path);

// The part before the last '/' ("/" for a name in the root folder) and the part after it, of a
// cleaned absolute path.
std::pair<std::string, std::string> FolderAndName(const std::string& path);
FileHandle OpenFolder(const std::string& path);
// A plain file for reading, by any path; `info` is about it. Pipes and devices are refused before
// they are opened, since opening alone can wait or act.
Result<FileHandle> OpenPlainFile(const std::string& path, struct stat& info);

}  // namespace engine
