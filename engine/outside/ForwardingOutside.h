// ForwardingOutside: a door in front of another one, which must outlive it. It has a ledger of its
// own. Main thread, except Progress.
#pragma once

#include "engine/outside/Outside.h"

namespace engine {

class ForwardingOutside : public Outside {
 public:
  explicit ForwardingOutside(Outside& inner) : inner_(inner) {}

  host::LocalFileTime Now() override { return inner_.Now(); }
  void Tell(const std::string& text) override { inner_.Tell(text); }
  bool Ask(const std::string& text) override { return inner_.Ask(text); }
  std::optional<std::string> ChooseFile(const FileQuestion& question) override {
    return inner_.ChooseFile(question);
  }
  void ShowStatus(const std::string& text) override { inner_.ShowStatus(text); }
  void ClearStatus() override { inner_.ClearStatus(); }
  bool Progress(double fraction, const std::string& what) override {
    return inner_.Progress(fraction, what);
  }
  std::string ConfigFolder() override { return inner_.ConfigFolder(); }
  std::string DataFolder() override { return inner_.DataFolder(); }
  std::string CacheFolder() override { return inner_.CacheFolder(); }
  std::string StateFolder() override { return inner_.StateFolder(); }

 protected:
  FileKind DoKind(const std::string& path) override { return inner_.Kind(path); }
  FileStamp DoStamp(const std::string& path) override { return inner_.Stamp(path); }
  std::optional<DiskSpace> DoSpace(const std::string& path) override { return inner_.Space(path); }
  Result<std::string> DoReadFile(const std::string& path, std::uint64_t limit) override {
    return inner_.ReadFile(path, limit);
  }
  Status DoReplaceFile(const std::string& path, std::span<const std::string_view> pieces,
                       const BeforePlacing& ready) override {
    return inner_.ReplaceFile(path, pieces, ready);
  }
  Status DoMakeFolder(const std::string& path) override { return inner_.MakeFolder(path); }
  Status DoCopyFile(const std::string& from, const std::string& to, bool replace) override {
    return inner_.CopyFile(from, to, replace);
  }
  Status DoRemoveFile(const std::string& path) override { return inner_.RemoveFile(path); }
  Status DoRemoveFolder(const std::string& path) override { return inner_.RemoveFolder(path); }
  Status DoRename(const std::string& from, const std::string& to) override {
    return inner_.Rename(from, to);
  }
  Result<std::vector<std::string>> DoListFiles(const std::string& folder) override {
    return inner_.ListFiles(folder);
  }
  Result<std::vector<std::string>> DoListFolders(const std::string& folder) override {
    return inner_.ListFolders(folder);
  }
  Status DoOpenWithViewer(const std::string& path) override { return inner_.OpenWithViewer(path); }

 private:
  Outside& inner_;
};

}  // namespace engine
