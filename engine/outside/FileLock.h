// Locks on files, which end with their program however that ends. FileLock: the right to replace a
// file, for programs that ask for it before they read what they are going to replace. It is the
// system's lock on the file itself: nothing lies beside the file, and a folder that cannot be
// written is no hindrance. A file is replaced by another one, so the lock counts for the file that
// the path leads to at the time. Owned by who took it. Any thread.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "engine/core/Progress.h"
#include "engine/core/Result.h"
#include "engine/outside/FilePlace.h"

namespace engine {

class FileLock {
 public:
  // A lock on nothing. Try and Take give one, too, where there is no plain file at `path` or its
  // file system knows no locks.
  FileLock() = default;

  // Takes the lock at once; nothing where somebody else has it. Links are followed. Fails where the
  // file cannot be opened.
  static Result<std::optional<FileLock>> Try(const std::string& path);
  // Try for a file that is open for writing; `path` is for messages.
  static Result<std::optional<FileLock>> TryOpen(FileHandle file, const std::string& path);
  // Waits for the lock at most that long; `progress` is asked meanwhile with the share of the time
  // that has passed. Fails when the time is over or `progress` answers false.
  static Result<FileLock> Take(const std::string& path, std::chrono::milliseconds longest,
                               const ProgressCallback& progress = {});

  // Whether the lock is on the file that `path` leads to now.
  bool Covers(const std::string& path) const;
  // Whether the lock is on the file that has the name now; a link there is none.
  bool Covers(const FilePlace& place) const;

 private:
  explicit FileLock(FileHandle file) : file_(std::move(file)) {}
  bool IsOn(const struct stat& now) const;

  FileHandle file_;
};

// Holds an existing file while the answer lives, for one running program to know of another. Reads
// and writes nothing, so that there is no entry in the ledger. Fails where somebody else holds it,
// and for a path that may not be written.
Result<FileHandle> HoldFile(const std::string& path);

}  // namespace engine
