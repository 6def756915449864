// RealFileSystem: the files and folders of a POSIX system. A person is asked before a file is
// written and while one is copied; person and ledger must outlive it. Main thread; one of its own,
// without a person to ask, on any one thread.
#pragma once

#include "engine/outside/FileSystem.h"
#include "engine/outside/Person.h"

namespace engine {

class RealFileSystem : public FileSystem {
 public:
  RealFileSystem(Ledger& ledger, Person& person) : FileSystem(ledger), person_(person) {}

 protected:
  FileKind DoKind(const std::string& path) override;
  Status DoCheckWay(const std::string& path) override;
  FileStamp DoStamp(const std::string& path) override;
  std::optional<DiskSpace> DoSpace(const std::string& path) override;
  Result<std::string> DoReadFile(const std::string& path, std::uint64_t limit) override;
  Status DoReplaceFile(const std::string& path, std::span<const std::string_view> pieces,
                       const Replacing& how) override;
  Status DoMakeFolder(const std::string& path) override;
  Status DoCopyFile(const std::string& from, const std::string& to, bool replace) override;
  Status DoRemoveFile(const std::string& path) override;
  Status DoRemoveFolder(const std::string& path) override;
  Status DoRename(const std::string& from, const std::string& to) override;
  Result<std::vector<std::string>> DoListFiles(const std::string& folder) override;
  Result<std::vector<std::string>> DoListFolders(const std::string& folder) override;

 private:
  Person& person_;
};

}  // namespace engine
