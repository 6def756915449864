// FaultyFileSystem: real files, where the n-th operation goes wrong if told so, to see what becomes
// of the files and whether somebody hears of it. How much room its disks have can be told, too.
// Main thread.
#pragma once

#include <optional>

#include "engine/outside/RealFileSystem.h"

namespace tests {

enum class Fault {
  Fail,      // nothing is done, the operation reports an input/output error
  CutShort,  // reading and listing give the first half and no error; anything else fails
};

class FaultyFileSystem : public engine::RealFileSystem {
 public:
  using RealFileSystem::RealFileSystem;

  // Makes the `number`-th operation from now on (1 is the next one) go wrong; with `only`
  // operations of that kind are counted only. Asking what a path is counts as none.
  void Break(std::size_t number, Fault fault, std::optional<engine::Operation> only = std::nullopt);
  // As Break, and every counted operation after it fails, too: a disk that is full or gone.
  void BreakFrom(std::size_t number, std::optional<engine::Operation> only = std::nullopt);
  void Mend() { left_ = 0; }
  // Looking at `path` or anything below it fails with EIO; empty: everything can be looked at.
  void HideFromView(const std::string& path) { hidden_ = path; }
  // Operations seen so far that the present rule counts.
  std::size_t Count() const { return count_; }
  // Every disk has this much room, in blocks of 4096 bytes; nothing: what the system says.
  void SetSpace(std::optional<std::uint64_t> free) { space_ = free; }

 protected:
  engine::FileKind DoKind(const std::string& path) override;
  std::optional<engine::DiskSpace> DoSpace(const std::string& path) override;
  engine::Result<std::string> DoReadFile(const std::string& path, std::uint64_t limit) override;
  engine::Status DoReplaceFile(const std::string& path, std::span<const std::string_view> pieces,
                               const engine::Replacing& how) override;
  engine::Status DoMakeFolder(const std::string& path) override;
  engine::Status DoCopyFile(const std::string& from, const std::string& to, bool replace) override;
  engine::Status DoRemoveFile(const std::string& path) override;
  engine::Status DoRemoveFolder(const std::string& path) override;
  engine::Status DoRename(const std::string& from, const std::string& to) override;
  engine::Result<std::vector<std::string>> DoListFiles(const std::string& folder) override;
  engine::Result<std::vector<std::string>> DoListFolders(const std::string& folder) override;

 private:
  // The fault of the operation that begins now, if it has one.
  std::optional<Fault> Next(engine::Operation operation);

  std::size_t left_ = 0;  // operations until the fault, this one included; 0: none
  bool stays_ = false;
  Fault fault_ = Fault::Fail;
  std::optional<engine::Operation> only_;
  std::size_t count_ = 0;
  std::optional<std::uint64_t> space_;
  std::string hidden_;
};

}  // namespace tests
