#include "tests/support/FaultyFileSystem.h"

#include <cerrno>

#include "engine/outside/FileHandle.h"

namespace tests {

using engine::Operation;
using engine::Result;
using engine::Status;

namespace {

Status InputOutputError(const std::string& path) {
  errno = EIO;
  return engine::SystemFailure("Cannot work on", path);
}

// All of it, or the first half where that is the fault.
template <class T>
Result<T> Shortened(const std::optional<Fault>& fault, Result<T> whole) {
  if (fault && whole) whole.Value().resize(whole.Value().size() / 2);
  return whole;
}

}  // namespace

void FaultyFileSystem::Break(std::size_t number, Fault fault, std::optional<Operation> only) {
  left_ = number;
  stays_ = false;
  fault_ = fault;
  only_ = only;
  count_ = 0;
}

void FaultyFileSystem::BreakFrom(std::size_t number, std::optional<Operation> only) {
  Break(number, Fault::Fail, only);
  stays_ = true;
}

std::optional<Fault> FaultyFileSystem::Next(Operation operation) {
  if (only_ && *only_ != operation) return std::nullopt;
  ++count_;
  if (left_ == 0) return std::nullopt;
  if (left_ == 1 && stays_) return fault_;
  return --left_ == 0 ? std::optional(fault_) : std::nullopt;
}

engine::FileKind FaultyFileSystem::DoKind(const std::string& path) {
  if (hidden_.empty() || !(path + "/").starts_with(hidden_ + "/"))
    return RealFileSystem::DoKind(path);
  errno = EIO;
  return engine::FileKind::Unknown;
}

std::optional<engine::DiskSpace> FaultyFileSystem::DoSpace(const std::string& path) {
  return space_ ? engine::DiskSpace{*space_, 4096} : RealFileSystem::DoSpace(path);
}

Result<std::string> FaultyFileSystem::DoReadFile(const std::string& path, std::uint64_t limit) {
  const std::optional<Fault> fault = Next(Operation::ReadFile);
  return fault == Fault::Fail ? InputOutputError(path)
                              : Shortened(fault, RealFileSystem::DoReadFile(path, limit));
}

Result<std::vector<std::string>> FaultyFileSystem::DoListFiles(const std::string& folder) {
  const std::optional<Fault> fault = Next(Operation::ListFolder);
  return fault == Fault::Fail ? InputOutputError(folder)
                              : Shortened(fault, RealFileSystem::DoListFiles(folder));
}

Result<std::vector<std::string>> FaultyFileSystem::DoListFolders(const std::string& folder) {
  const std::optional<Fault> fault = Next(Operation::ListFolder);
  return fault == Fault::Fail ? InputOutputError(folder)
                              : Shortened(fault, RealFileSystem::DoListFolders(folder));
}

Status FaultyFileSystem::DoReplaceFile(const std::string& path,
                                       std::span<const std::string_view> pieces,
                                       const engine::Replacing& how) {
  return Next(Operation::ReplaceFile) ? InputOutputError(path)
                                      : RealFileSystem::DoReplaceFile(path, pieces, how);
}

Status FaultyFileSystem::DoMakeFolder(const std::string& path) {
  return Next(Operation::MakeFolder) ? InputOutputError(path) : RealFileSystem::DoMakeFolder(path);
}

Status FaultyFileSystem::DoCopyFile(const std::string& from, const std::string& to, bool replace) {
  return Next(Operation::CopyFile) ? InputOutputError(to)
                                   : RealFileSystem::DoCopyFile(from, to, replace);
}

Status FaultyFileSystem::DoRemoveFile(const std::string& path) {
  return Next(Operation::RemoveFile) ? InputOutputError(path) : RealFileSystem::DoRemoveFile(path);
}

Status FaultyFileSystem::DoRemoveFolder(const std::string& path) {
  return Next(Operation::RemoveFolder) ? InputOutputError(path)
                                       : RealFileSystem::DoRemoveFolder(path);
}

Status FaultyFileSystem::DoRename(const std::string& from, const std::string& to) {
  return Next(Operation::Rename) ? InputOutputError(to) : RealFileSystem::DoRename(from, to);
}

}  // namespace tests
