// FileSystem: the files and folders that the program reads and writes. Public functions check the
// path rules, call the virtual part and write the ledger, which it does not own; what lies behind
// the virtual part is RealFileSystem, and in tests one that fails when it is told to. Main thread;
// one of its own, with a ledger of its own, on any one thread.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/core/Result.h"
#include "engine/outside/Ledger.h"

namespace engine {

// Unknown: the system does not say, as with a broken disk or without the right to look.
enum class FileKind { Missing, File, Folder, Other, Unknown };

// Tells whether a file is still the one read before. Differing stamps need not mean differing
// bytes: a copied file and one whose rights changed have new ones.
struct FileStamp {
  std::uint64_t size = 0;
  std::int64_t changed = 0;  // nanoseconds since 1970
  std::int64_t touched = 0;  // the same of the system's own date, which nobody can set
  std::uint64_t device = 0;
  std::uint64_t number = 0;  // of the file on its device
  bool operator==(const FileStamp&) const = default;
};

// The disk that a path is on: what may still be written there, and the size in steps of which files
// take room.
struct DiskSpace {
  std::uint64_t free = 0;   // bytes
  std::uint64_t block = 1;  // bytes
};

// Asked when a file is written completely, before it takes its place; a failure leaves everything
// as it was.
using BeforePlacing = std::function<Status()>;

// How a file is replaced.
struct Replacing {
  BeforePlacing ready = {};
  // Where the replaced file is kept, in place of what is there; empty: nowhere. Its folder is made.
  // That it could not be kept is a note in the ledger and no failure.
  std::string former = {};
};

// Paths are absolute UTF-8 texts. Reading operations refuse relative paths; the others refuse
// relative paths, ".." components and NUL bytes. Failure messages name the path.
//
// A path has two parts: one that a person named, and behind it the program's own. In the own part
// nothing is written, made, renamed or removed through a symbolic link, whatever becomes of the
// folders meanwhile; the refusal names the link. A link itself is removed or renamed. What Follow
// was told of, and the folders on the way to it, are named; of any other path all but the last
// name.
class FileSystem {
 public:
  explicit FileSystem(Ledger& ledger) : ledger_(ledger) {}
  FileSystem(const FileSystem&) = delete;
  FileSystem& operator=(const FileSystem&) = delete;
  virtual ~FileSystem() = default;

  // Called before a file or folder is replaced, removed or renamed, with a clean path of what is
  // going to be another one; for whoever keeps what is there. It may use these files.
  std::function<void(Operation, const std::string&)> beforeChange;

  // A person named this file or folder: from now on links on the way to it are followed, and where
  // it is a link itself, what that leads to is meant. The rest of a path below it is the program's
  // own. A path that is refused for reading is passed over.
  void Follow(const std::string& path);
  // Follow for a scene and for the folder that it is in, where the program puts more files.
  void FollowScene(const std::string& path);
  // Length of the part of a clean path that a person named; all of it is for a path that Follow was
  // told of.
  std::size_t NamedPart(const std::string& path) const;
  // Fails only where a link lies in the program's own part of `path`, so that nothing could be made
  // there. Changes nothing and is not in the ledger.
  Status CheckWay(const std::string& path);
  // Links are followed. Never fails: a refused path is Missing. Not in the ledger.
  FileKind Kind(const std::string& path);
  // Kind, but Unknown is a failure, and in the ledger.
  Result<FileKind> Look(const std::string& path);
  // Links are followed; zeros where `path` is Missing. Not in the ledger.
  FileStamp Stamp(const std::string& path);
  // Space on the disk that `path`, or the nearest folder above it that is there, is on; nothing
  // where the system does not tell. Not in the ledger.
  std::optional<DiskSpace> Space(const std::string& path);
  // The whole file; one larger than `limit` bytes, a folder, pipe or device is refused without
  // reading it.
  Result<std::string> ReadFile(const std::string& path, std::uint64_t limit = 16ull << 30);
  // Atomic and durable: a temporary file in the same folder, everything written, sync checked,
  // rename, folder sync checked. On failure the old file is whole and the temporary one is gone.
  // `pieces` are written in order. A followed link to a file stays a link and the file it points to
  // is replaced; a write-protected file is refused.
  Status ReplaceFile(const std::string& path, std::span<const std::string_view> pieces,
                     const Replacing& how = {});
  Status ReplaceFile(const std::string& path, std::string_view bytes) {
    return ReplaceFile(path, std::span(&bytes, 1));
  }
  // Makes no parents; success when the folder is there afterwards.
  Status MakeFolder(const std::string& path);
  // MakeFolder for each missing parent, too. For the program's own folders.
  Status MakeFolders(const std::string& path);
  // Regular files only, atomically as ReplaceFile; a file onto itself (same device and inode) is
  // left alone. Without `replace` an existing target is refused. `from` is read only, so
  // that a ".." component in it is no reason to refuse.
  Status CopyFile(const std::string& from, const std::string& to, bool replace);
  // Removes a plain file, or a symbolic link itself.
  Status RemoveFile(const std::string& path);
  // Removes the folder and all in it, by directory handles, never following a link; of a link to a
  // folder the link only.
  Status RemoveFolder(const std::string& path);
  // Refuses when the target exists.
  Status Rename(const std::string& from, const std::string& to);
  // Names of the plain files (links followed) at the top level, in byte order.
  Result<std::vector<std::string>> ListFiles(const std::string& folder);
  // Names of the folders (links followed) at the top level, in byte order.
  Result<std::vector<std::string>> ListFolders(const std::string& folder);

 protected:
  // Something a person should know about `path`.
  void Note(const std::string& path, const std::string& message);

  // The real work behind the public functions; paths are checked already. Where DoKind answers
  // Unknown, errno says why.
  virtual FileKind DoKind(const std::string& path) = 0;
  virtual Status DoCheckWay(const std::string& path) = 0;
  virtual FileStamp DoStamp(const std::string& path) = 0;
  // `path` is there.
  virtual std::optional<DiskSpace> DoSpace(const std::string& path) = 0;
  virtual Result<std::string> DoReadFile(const std::string& path, std::uint64_t limit) = 0;
  virtual Status DoReplaceFile(const std::string& path, std::span<const std::string_view> pieces,
                               const Replacing& how) = 0;
  virtual Status DoMakeFolder(const std::string& path) = 0;
  virtual Status DoCopyFile(const std::string& from, const std::string& to, bool replace) = 0;
  virtual Status DoRemoveFile(const std::string& path) = 0;
  virtual Status DoRemoveFolder(const std::string& path) = 0;
  virtual Status DoRename(const std::string& from, const std::string& to) = 0;
  virtual Result<std::vector<std::string>> DoListFiles(const std::string& folder) = 0;
  virtual Result<std::vector<std::string>> DoListFolders(const std::string& folder) = 0;

 private:
  // Write the ledger's entry for one operation and hand its result on.
  Status Enter(LedgerEntry entry, Status status);
  template <class Work>
  auto Read(Operation operation, const std::string& path, Work work);
  template <class Work>
  Status Change(Operation operation, const std::string& path, Work work);
  template <class Work>
  Status ChangeTwo(Operation operation, const std::string& from, const std::string& to, Work work);

  void TellBefore(Operation operation, const std::string& path) const {
    if (beforeChange && operation != Operation::MakeFolder) beforeChange(operation, path);
  }

  Ledger& ledger_;
  std::set<std::string> named_;
};

}  // namespace engine
