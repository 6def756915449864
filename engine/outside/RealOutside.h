// RealOutside: the door to the real files, clock, viewer and user folders of a POSIX system. The
// person's part goes to a Person, which must outlive it. Main thread, except Progress; one without
// a person on any one thread.
#pragma once

#include <memory>

#include "engine/outside/Outside.h"
#include "engine/outside/Person.h"

namespace engine {

class RealOutside : public Outside {
 public:
  // Without a person: texts to the standard error stream, questions answered no.
  RealOutside();
  explicit RealOutside(Person& person);
  ~RealOutside() override;

  host::LocalFileTime Now() override;
  void Tell(const std::string& text) override { person_->Tell(text); }
  bool Ask(const std::string& text) override { return person_->Ask(text); }
  std::optional<std::string> ChooseFile(const FileQuestion& question) override {
    return person_->ChooseFile(question);
  }
  void ShowStatus(const std::string& text) override { person_->ShowStatus(text); }
  void ClearStatus() override { person_->ClearStatus(); }
  bool Progress(double fraction, const std::string& what) override {
    return person_->Progress(fraction, what);
  }

  std::string ConfigFolder() override;
  std::string DataFolder() override;
  std::string CacheFolder() override;
  std::string StateFolder() override;

 protected:
  FileKind DoKind(const std::string& path) override;
  FileStamp DoStamp(const std::string& path) override;
  std::optional<DiskSpace> DoSpace(const std::string& path) override;
  Result<std::string> DoReadFile(const std::string& path, std::uint64_t limit) override;
  Status DoReplaceFile(const std::string& path, std::span<const std::string_view> pieces,
                       const BeforePlacing& ready) override;
  Status DoMakeFolder(const std::string& path) override;
  Status DoCopyFile(const std::string& from, const std::string& to, bool replace) override;
  Status DoRemoveFile(const std::string& path) override;
  Status DoRemoveFolder(const std::string& path) override;
  Status DoRename(const std::string& from, const std::string& to) override;
  Result<std::vector<std::string>> DoListFiles(const std::string& folder) override;
  Result<std::vector<std::string>> DoListFolders(const std::string& folder) override;
  Status DoOpenWithViewer(const std::string& path) override;

 private:
  std::unique_ptr<Person> absent_;
  Person* person_;
};

}  // namespace engine
