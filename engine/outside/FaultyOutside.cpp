#include "engine/outside/FaultyOutside.h"

#include <cerrno>

#include "engine/outside/FileHandle.h"

namespace engine {
namespace {

Status InputOutputError(const std::string& path) {
  errno = EIO;
  return SystemFailure("Cannot work on", path);
}

// All of it, or the first half where that is the fault.
template <class T>
Result<T> Shortened(const std::optional<Fault>& fault, Result<T> whole) {
  if (fault && whole) whole.Value().resize(whole.Value().size() / 2);
  return whole;
}

}  // namespace

void FaultyOutside::Break(std::size_t number, Fault fault, std::optional<Operation> only) {
  left_ = number;
  stays_ = false;
  fault_ = fault;
  only_ = only;
  count_ = 0;
}

void FaultyOutside::BreakFrom(std::size_t number, std::optional<Operation> only) {
  Break(number, Fault::Fail, only);
  stays_ = true;
}

std::optional<Fault> FaultyOutside::Next(Operation operation) {
  if (only_ && *only_ != operation) return std::nullopt;
  ++count_;
  if (left_ == 0) return std::nullopt;
  if (left_ == 1 && stays_) return fault_;
  return --left_ == 0 ? std::optional(fault_) : std::nullopt;
}

Result<std::string> FaultyOutside::DoReadFile(const std::string& path, std::uint64_t limit) {
  const std::optional<Fault> fault = Next(Operation::ReadFile);
  return fault == Fault::Fail ? InputOutputError(path)
                              : Shortened(fault, ForwardingOutside::DoReadFile(path, limit));
}

Result<std::vector<std::string>> FaultyOutside::DoListFiles(const std::string& folder) {
  const std::optional<Fault> fault = Next(Operation::ListFolder);
  return fault == Fault::Fail ? InputOutputError(folder)
                              : Shortened(fault, ForwardingOutside::DoListFiles(folder));
}

Result<std::vector<std::string>> FaultyOutside::DoListFolders(const std::string& folder) {
  const std::optional<Fault> fault = Next(Operation::ListFolder);
  return fault == Fault::Fail ? InputOutputError(folder)
                              : Shortened(fault, ForwardingOutside::DoListFolders(folder));
}

Status FaultyOutside::DoReplaceFile(const std::string& path,
                                    std::span<const std::string_view> pieces,
                                    const BeforePlacing& ready) {
  return Next(Operation::ReplaceFile) ? InputOutputError(path)
                                      : ForwardingOutside::DoReplaceFile(path, pieces, ready);
}

Status FaultyOutside::DoMakeFolder(const std::string& path) {
  return Next(Operation::MakeFolder) ? InputOutputError(path)
                                     : ForwardingOutside::DoMakeFolder(path);
}

Status FaultyOutside::DoCopyFile(const std::string& from, const std::string& to, bool replace) {
  return Next(Operation::CopyFile) ? InputOutputError(to)
                                   : ForwardingOutside::DoCopyFile(from, to, replace);
}

Status FaultyOutside::DoRemoveFile(const std::string& path) {
  return Next(Operation::RemoveFile) ? InputOutputError(path)
                                     : ForwardingOutside::DoRemoveFile(path);
}

Status FaultyOutside::DoRemoveFolder(const std::string& path) {
  return Next(Operation::RemoveFolder) ? InputOutputError(path)
                                       : ForwardingOutside::DoRemoveFolder(path);
}

Status FaultyOutside::DoRename(const std::string& from, const std::string& to) {
  return Next(Operation::Rename) ? InputOutputError(to) : ForwardingOutside::DoRename(from, to);
}

}  // namespace engine
