// FileHandle: an open file descriptor that closes itself; and words for a failed system call. Any
// thread.
#pragma once

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

// "<what> "<path>": <text of errno>."
Status SystemFailure(const std::string& what, const std::string& path);
// The same with a reason of our own.
Status FileFailure(const std::string& what, const std::string& path, const std::string& reason);

// The part before the last '/' ("/" for a name in the root folder) and the part after it, of a
// cleaned absolute path.
std::pair<std::string, std::string> FolderAndName(const std::string& path);
FileHandle OpenFolder(const std::string& path);

}  // namespace engine
