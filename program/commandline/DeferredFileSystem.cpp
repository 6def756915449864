// The plug-in writes and removes files beside the scene while a verb works, but the scene itself is
// written at the end, elsewhere, or not at all. So changes beside it are kept in a list, answered
// as done, and carried out when the scene stands, beside the place where it stands then.
#include "program/commandline/DeferredFileSystem.h"

#include <iterator>

#include "program/commandline/Terminal.h"

namespace commandline {

using engine::FileKind;
using engine::Operation;
using engine::Status;

namespace {

Status Stopped(const std::string& path) {
  return Status::Failure("Stopped before \"" + path + "\" was written.");
}

}  // namespace

void DeferredFileSystem::HoldChangesAt(const std::string& prefix) {
  holding_ = true;
  prefix_ = prefix;
}

// Paths are taken from the scene that was opened (`prefix_`) to the one that was written.
void DeferredFileSystem::CarryOut(const std::string& prefix) {
  StopHolding();
  std::vector<Change> changes = std::move(held_);
  held_.clear();
  heldFolders_.clear();
  SpareReplaced(changes);
  for (const Change& change : changes) Do(change, prefix);
}

// Drops the removal of files that a later change replaces: the old file stays until the new one is
// complete. Where names or folders change in between, everything is done as it was asked for.
void DeferredFileSystem::SpareReplaced(std::vector<Change>& changes) {
  std::set<std::string> replaced;
  std::vector<Change> wanted;
  for (auto change = changes.rbegin(); change != changes.rend(); ++change) {
    if (change->operation == Operation::ReplaceFile) {
      replaced.insert(change->path);
    } else if (change->operation == Operation::RemoveFile) {
      if (replaced.contains(change->path)) continue;
    } else {
      replaced.clear();
    }
    wanted.push_back(std::move(*change));
  }
  changes.assign(std::make_move_iterator(wanted.rbegin()), std::make_move_iterator(wanted.rend()));
}

void DeferredFileSystem::Do(const Change& change, const std::string& prefix) {
  const auto moved = [&](const std::string& path) { return prefix + path.substr(prefix_.size()); };
  const std::string path = moved(change.path);
  if (change.operation == Operation::ReplaceFile) (void)ReplaceFile(path, change.bytes);
  if (change.operation == Operation::MakeFolder) (void)MakeFolder(path);
  if (change.operation == Operation::RemoveFile) (void)RemoveFile(path);
  if (change.operation == Operation::RemoveFolder) (void)RemoveFolder(path);
  if (change.operation != Operation::Rename) return;
  const std::string target = moved(change.target);
  // Nothing was in the way where the plug-in looked. Here it is of an earlier scene, which was
  // given up for this one.
  if (prefix != prefix_ && DoKind(target) == FileKind::File) (void)RemoveFile(target);
  (void)Rename(path, target);
}

Status DeferredFileSystem::Hold(Change change) {
  held_.push_back(std::move(change));
  return {};
}

// Tells a person of each file of an export.
Status DeferredFileSystem::Written(const std::string& path, Status status) {
  if (status && written_) written_(path);
  return status;
}

// A folder that was only promised counts as there, because the plug-in looks for it before it
// writes into it.
FileKind DeferredFileSystem::DoKind(const std::string& path) {
  return holding_ && heldFolders_.count(path) > 0 ? FileKind::Folder : RealFileSystem::DoKind(path);
}

// Ctrl-C ends the work before the next file, never within one.
Status DeferredFileSystem::DoReplaceFile(const std::string& path,
                                         std::span<const std::string_view> pieces,
                                         const engine::Replacing& how) {
  if (Terminal::Interrupted()) return Stopped(path);
  if (!Holds(path)) return Written(path, RealFileSystem::DoReplaceFile(path, pieces, how));
  std::string bytes;
  for (const std::string_view piece : pieces) bytes += piece;
  return Hold({Operation::ReplaceFile, path, "", std::move(bytes)});
}

// Making one that is there is no error, so this needs no look.
Status DeferredFileSystem::DoMakeFolder(const std::string& path) {
  if (!Holds(path)) return RealFileSystem::DoMakeFolder(path);
  heldFolders_.insert(path);
  return Hold({Operation::MakeFolder, path});
}

Status DeferredFileSystem::DoCopyFile(const std::string& from, const std::string& to,
                                      bool replace) {
  if (Terminal::Interrupted()) return Stopped(to);
  return Written(to, RealFileSystem::DoCopyFile(from, to, replace));
}

// A removal that would fail now is not held back, so that it fails with the system's own message.
Status DeferredFileSystem::DoRemoveFile(const std::string& path) {
  if (!Holds(path) || DoKind(path) == FileKind::Missing) return RealFileSystem::DoRemoveFile(path);
  return Hold({Operation::RemoveFile, path});
}

Status DeferredFileSystem::DoRemoveFolder(const std::string& path) {
  if (!Holds(path) || DoKind(path) == FileKind::Missing)
    return RealFileSystem::DoRemoveFolder(path);
  return Hold({Operation::RemoveFolder, path});
}

// A renaming that would fail now fails now, with the system's own message.
Status DeferredFileSystem::DoRename(const std::string& from, const std::string& to) {
  const bool fails = DoKind(from) == FileKind::Missing || DoKind(to) != FileKind::Missing;
  if (!Holds(from) || !Holds(to) || fails) return RealFileSystem::DoRename(from, to);
  return Hold({Operation::Rename, from, to});
}

}  // namespace commandline
