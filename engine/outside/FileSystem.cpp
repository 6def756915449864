#include "engine/outside/FileSystem.h"

#include <algorithm>

#include "engine/outside/FileHandle.h"
#include "engine/outside/PathRules.h"

namespace engine {
// Each operation that the ledger is to know ends here, once.
Status FileSystem::Enter(LedgerEntry entry, Status status) {
  entry.succeeded = status.Ok();
  entry.message = status.Message();
  ledger_.Add(std::move(entry));
  return status;
}

template <class Work>
auto FileSystem::Read(Operation operation, const std::string& path, Work work) {
  const Result<std::string> clean = PathForReading(path);
  using Answer = decltype(work(path));
  Answer answer = clean ? work(clean.Value()) : Answer(clean.GetStatus());
  // Looked for afterwards, and only where it failed: a reading that succeeds costs no further call.
  const bool absent = clean && !answer && DoKind(clean.Value()) == FileKind::Missing;
  Status status = answer ? Status() : Status::Failure(answer.Message());
  (void)Enter({operation, clean ? clean.Value() : path, "", false, "", absent}, status);
  return answer;
}

template <class Work>
Status FileSystem::Change(Operation operation, const std::string& path, Work work) {
  const Result<std::string> clean = PathForWriting(path);
  if (!clean) return Enter({operation, path, "", false, ""}, clean.GetStatus());
  const bool removes = operation == Operation::RemoveFile || operation == Operation::RemoveFolder;
  const bool absent = removes && DoKind(clean.Value()) == FileKind::Missing;
  if (!absent) TellBefore(operation, clean.Value());
  return Enter({operation, clean.Value(), "", false, "", absent}, work(clean.Value()));
}

template <class Work>
Status FileSystem::ChangeTwo(Operation operation, const std::string& from, const std::string& to,
                             Work work) {
  const Result<std::string> source =
      operation == Operation::CopyFile ? PathForReading(from) : PathForWriting(from);
  const Result<std::string> target = PathForWriting(to);
  if (!source) return Enter({operation, from, to, false, ""}, source.GetStatus());
  if (!target) return Enter({operation, from, to, false, ""}, target.GetStatus());
  const bool absent = operation == Operation::Rename && DoKind(source.Value()) == FileKind::Missing;
  if (operation == Operation::Rename && !absent) TellBefore(operation, source.Value());
  if (!absent) TellBefore(operation, target.Value());
  return Enter({operation, source.Value(), target.Value(), false, "", absent},
               work(source.Value(), target.Value()));
}

void FileSystem::Follow(const std::string& path) {
  if (Result<std::string> clean = PathForReading(path)) named_.insert(clean.Take());
}

void FileSystem::FollowScene(const std::string& path) {
  Follow(path);
  const Result<std::string> clean = PathForReading(path);
  if (clean && clean.Value().size() > 1) Follow(FolderAndName(clean.Value()).first);
}

// From the longest part on, so that the nearest named folder counts.
std::size_t FileSystem::NamedPart(const std::string& path) const {
  for (std::size_t end = path.size(); end > 0; end = path.rfind('/', end - 1)) {
    if (named_.contains(path.substr(0, end))) return end;
  }
  return path.rfind('/');
}

void FileSystem::Note(const std::string& path, const std::string& message) {
  ledger_.AddNote(path, message);
}

Status FileSystem::CheckWay(const std::string& path) {
  const Result<std::string> clean = PathForWriting(path);
  return clean ? DoCheckWay(clean.Value()) : clean.GetStatus();
}

FileKind FileSystem::Kind(const std::string& path) {
  const Result<std::string> clean = PathForReading(path);
  return clean ? DoKind(clean.Value()) : FileKind::Missing;
}

Result<FileKind> FileSystem::Look(const std::string& path) {
  const FileKind kind = Kind(path);
  if (kind != FileKind::Unknown) return kind;
  return Enter({Operation::Look, path, "", false, ""}, SystemFailure("Cannot look at", path));
}

FileStamp FileSystem::Stamp(const std::string& path) {
  const Result<std::string> clean = PathForReading(path);
  return clean ? DoStamp(clean.Value()) : FileStamp();
}

std::optional<DiskSpace> FileSystem::Space(const std::string& path) {
  const Result<std::string> clean = PathForReading(path);
  if (!clean) return std::nullopt;
  std::string there = clean.Value();
  while (there.size() > 1 && DoKind(there) == FileKind::Missing) {
    const std::size_t end = there.rfind('/');
    there.resize(std::max<std::size_t>(end, 1));
  }
  return DoSpace(there);
}

Result<std::string> FileSystem::ReadFile(const std::string& path, std::uint64_t limit) {
  return Read(Operation::ReadFile, path,
              [&](const std::string& clean) { return DoReadFile(clean, limit); });
}

Status FileSystem::ReplaceFile(const std::string& path, std::span<const std::string_view> pieces,
                               const Replacing& how) {
  return Change(Operation::ReplaceFile, path,
                [&](const std::string& clean) { return DoReplaceFile(clean, pieces, how); });
}

// A folder that is there already is no entry in the ledger: nothing was made.
Status FileSystem::MakeFolder(const std::string& path) {
  const Result<std::string> existing = PathForWriting(path);
  if (existing && DoKind(existing.Value()) == FileKind::Folder) return {};
  return Change(Operation::MakeFolder, path,
                [&](const std::string& clean) { return DoMakeFolder(clean); });
}

Status FileSystem::MakeFolders(const std::string& path) {
  const Result<std::string> clean = PathForWriting(path);
  if (!clean) return MakeFolder(path);
  for (std::size_t end = clean.Value().find('/', 1); end != std::string::npos;
       end = clean.Value().find('/', end + 1)) {
    Status made = MakeFolder(clean.Value().substr(0, end));
    if (!made) return made;
  }
  return MakeFolder(clean.Value());
}

Status FileSystem::CopyFile(const std::string& from, const std::string& to, bool replace) {
  return ChangeTwo(Operation::CopyFile, from, to,
                   [&](const std::string& source, const std::string& target) {
                     return DoCopyFile(source, target, replace);
                   });
}

Status FileSystem::RemoveFile(const std::string& path) {
  return Change(Operation::RemoveFile, path,
                [&](const std::string& clean) { return DoRemoveFile(clean); });
}

Status FileSystem::RemoveFolder(const std::string& path) {
  return Change(Operation::RemoveFolder, path,
                [&](const std::string& clean) { return DoRemoveFolder(clean); });
}

Status FileSystem::Rename(const std::string& from, const std::string& to) {
  return ChangeTwo(Operation::Rename, from, to,
                   [&](const std::string& source, const std::string& target) {
                     return DoRename(source, target);
                   });
}

Result<std::vector<std::string>> FileSystem::ListFiles(const std::string& folder) {
  return Read(Operation::ListFolder, folder,
              [&](const std::string& clean) { return DoListFiles(clean); });
}

Result<std::vector<std::string>> FileSystem::ListFolders(const std::string& folder) {
  return Read(Operation::ListFolder, folder,
              [&](const std::string& clean) { return DoListFolders(clean); });
}

}  // namespace engine
