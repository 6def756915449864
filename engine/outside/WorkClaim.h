// WorkClaim: "I am making this file", said to all programs that share a folder, so that none does
// the same work at the same time. It is a lock on a hidden file beside the one to be made: it ends
// with its program however that ends, and leaves an empty file then, which the next claim takes
// away. Where the file system knows no locks every claim is granted, and work may be done twice.
// Any thread.
#pragma once

#include <optional>
#include <string>

#include "engine/outside/FileLock.h"
#include "engine/outside/FileSystem.h"

namespace engine {

class WorkClaim {
 public:
  // Claims the file that is going to be at `path`; its folder must be there. Nothing where somebody
  // else is at it. `files` knows what a person named of the path: a link behind that, or in the
  // place of the hidden file, is refused.
  static Result<std::optional<WorkClaim>> Try(const FileSystem& files, const std::string& path);
  WorkClaim(WorkClaim&& other) noexcept = default;
  WorkClaim& operator=(WorkClaim&& other) = delete;
  // Ends the claim.
  ~WorkClaim();

  // Whether somebody is making the file now; asking claims nothing.
  static bool IsTaken(const std::string& path);

 private:
  WorkClaim(FilePlace place, FileLock lock) : place_(std::move(place)), lock_(std::move(lock)) {}

  FilePlace place_;  // of the hidden file; without a folder once moved from
  FileLock lock_;
};

}  // namespace engine
