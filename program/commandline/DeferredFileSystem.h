// DeferredFileSystem: the real files with the manners of the command line. Changes beside the scene
// file can be held back until the scene itself is kept, so that a trial run touches nothing;
// written files can be counted as progress; after Ctrl-C no further file is begun. Owned by the
// session. Main thread.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "engine/outside/RealFileSystem.h"

namespace commandline {

class DeferredFileSystem : public engine::RealFileSystem {
 public:
  using engine::RealFileSystem::RealFileSystem;

  // From now on changes of files and folders whose path begins with `prefix` are taken down and
  // answered as done.
  void HoldChangesAt(const std::string& prefix);
  // From now on everything is done at once again. What was held stays held.
  void StopHolding() { holding_ = false; }
  // Carries out what was held, in order, `prefix` in place of the one it was held at; the ledger
  // names failures.
  void CarryOut(const std::string& prefix);

  // Calls `written` after every file written or copied, with its path.
  void OnWritten(std::function<void(const std::string&)> written) { written_ = std::move(written); }

 protected:
  engine::FileKind DoKind(const std::string& path) override;
  engine::Status DoReplaceFile(const std::string& path, std::span<const std::string_view> pieces,
                               const engine::Replacing& how) override;
  engine::Status DoMakeFolder(const std::string& path) override;
  engine::Status DoCopyFile(const std::string& from, const std::string& to, bool replace) override;
  engine::Status DoRemoveFile(const std::string& path) override;
  engine::Status DoRemoveFolder(const std::string& path) override;
  engine::Status DoRename(const std::string& from, const std::string& to) override;

 private:
  struct Change {
    engine::Operation operation;
    std::string path;
    std::string target = {};
    std::string bytes = {};
  };

  bool Holds(const std::string& path) const {
    return holding_ && path.compare(0, prefix_.size(), prefix_) == 0;
  }
  engine::Status Hold(Change change);
  engine::Status Written(const std::string& path, engine::Status status);
  static void SpareReplaced(std::vector<Change>& changes);
  void Do(const Change& change, const std::string& prefix);

  bool holding_ = false;
  std::string prefix_;
  std::vector<Change> held_;
  std::set<std::string> heldFolders_;
  std::function<void(const std::string&)> written_;
};

}  // namespace commandline
