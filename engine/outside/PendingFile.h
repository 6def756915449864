// PendingFile: a file that is being written where nobody sees it and takes its place in one step,
// or leaves no trace. Where the file system has files without a name it has none until it is
// complete, so that not even a killed program leaves anything; elsewhere it has a hidden name
// beside its place, and what killed programs left there goes with the next file written in the
// folder. Any thread, one at a time for each file.
#pragma once

#include <string>
#include <string_view>

#include "engine/core/Result.h"
#include "engine/outside/FileHandle.h"

namespace engine {

class PendingFile {
 public:
  // `path`: the place, cleaned and absolute.
  explicit PendingFile(std::string path) : path_(std::move(path)) {}
  PendingFile(const PendingFile&) = delete;
  PendingFile& operator=(const PendingFile&) = delete;
  // Removes the file unless Commit took it to its place.
  ~PendingFile();

  // Opens the file. Follows a link at the place to the file it points to; refuses anything there
  // but a plain file that may be written.
  Status Begin();
  Status Write(std::string_view bytes);
  // Brings the bytes to the disk and the file to its place. Without `replace` it fails when
  // something is there.
  Status Commit(bool replace);

 private:
  Status FollowLink();
  Status CheckPlace();
  Status Open();
  Status TakeOverRights();
  bool OpenUnnamed();
  bool OpenHidden();
  bool NameIt();
  bool Place(bool replace);

  std::string path_;
  std::string name_;
  std::string hidden_;  // empty: it has no name
  FileHandle folder_;
  FileHandle file_;
};

// Renames without ever replacing: fails with EEXIST when something is at the target. The paths lie
// below the folders.
bool RenameWithoutReplacing(int fromFolder, const std::string& from, int toFolder,
                            const std::string& to);

}  // namespace engine
