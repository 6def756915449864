// PendingFile: a file that is being written where nobody sees it and takes its place in one step,
// or leaves no trace. Where the file system has files without a name it has none until it is
// complete, so that not even a killed program leaves anything; elsewhere it has a hidden name
// beside its place, and what killed programs left there goes when files are written in the
// folder. Any thread, one at a time for each file.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <string_view>

#include "engine/core/Result.h"
#include "engine/outside/FileHandle.h"

namespace engine {

class PendingFile {
 public:
  // `path`: the place, cleaned and absolute. Links are followed in the first `named` bytes of it
  // only, and at its end where they are the whole path.
  PendingFile(std::string path, std::size_t named) : path_(std::move(path)), named_(named) {}
  PendingFile(const PendingFile&) = delete;
  PendingFile& operator=(const PendingFile&) = delete;
  // Removes the file unless Commit took it to its place.
  ~PendingFile();

  // Opens the file. Refuses anything at its place but a plain file that may be written.
  Status Begin();
  Status Write(std::string_view bytes);
  // Writes what is in an open file, shared where the disk can. `path`: that of the file, for
  // messages. `isWanted` is asked now and then; with false the work stops and fails.
  Status WriteAllOf(const FileHandle& file, const std::string& path,
                    const std::function<bool()>& isWanted);
  // Gives it the rights of an open file.
  Status TakeRightsOf(const FileHandle& file);
  // The place, links followed.
  const std::string& Path() const { return path_; }
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
  std::size_t named_;
  std::string name_;
  std::string hidden_;  // empty: it has no name
  FileHandle folder_;
  FileHandle file_;
};

// Up to `size` bytes into `to`; fewer at the end of the file, -1 on an error.
ssize_t ReadSome(const FileHandle& file, char* to, std::size_t size);

// A name for a file that is not to be seen. What has one and is locked by nobody is removed in
// time.
std::string HiddenName();

// Renames without ever replacing: fails with EEXIST when something is at the target. The paths lie
// below the folders.
bool RenameWithoutReplacing(int fromFolder, const std::string& from, int toFolder,
                            const std::string& to);

}  // namespace engine
