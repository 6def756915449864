// FileParts: a file of which parts are read where they are needed, because reading all of it would
// take longer than what is wanted of it. It stays the file that was opened, also when another one
// takes its place meanwhile. Owns the open file. One thread.
#pragma once

#include <cstdint>
#include <string>

#include "engine/outside/FileHandle.h"

namespace engine {

class FileParts {
 public:
  // A file on the disk, by any path; folders, pipes and devices are refused.
  static Result<FileParts> Open(const std::string& path);

  std::uint64_t Size() const { return size_; }
  // Exactly these bytes; fails where the file does not have them any more.
  Result<std::string> Read(std::uint64_t offset, std::uint64_t length) const;

 private:
  FileParts(FileHandle file, std::uint64_t size) : file_(std::move(file)), size_(size) {}

  FileHandle file_;
  std::uint64_t size_;
};

}  // namespace engine
