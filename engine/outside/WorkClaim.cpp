#include "engine/outside/WorkClaim.h"

#include <fcntl.h>
#include <unistd.h>

#include "engine/outside/PathRules.h"

namespace engine {

namespace {

constexpr int kTries = 100;

std::string ClaimFileOf(const std::string& path) {
  const auto [folder, name] = FolderAndName(path);
  return (folder == "/" ? "" : folder) + "/." + name.substr(0, 200) + ".claim";
}

}  // namespace

Result<std::optional<WorkClaim>> WorkClaim::Try(const std::string& path) {
  using Claimed = Result<std::optional<WorkClaim>>;
  const Result<std::string> clean = PathForWriting(path);
  if (!clean) return clean.GetStatus();
  const std::string file = ClaimFileOf(clean.Value());
  // The former owner may take the file away after it was opened here. Where there are no locks, no
  // lock ever covers it.
  for (int tries = 0; tries < kTries; ++tries) {
    const FileHandle made(open(file.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0666));
    if (!made) return SystemFailure("Cannot write", file);
    auto lock = FileLock::Try(file);
    if (!lock) return lock.GetStatus();
    if (!lock.Value()) return Claimed(std::nullopt);
    if (lock.Value()->Covers(file)) return Claimed(WorkClaim(file, std::move(*lock.Value())));
  }
  return Claimed(WorkClaim(file, FileLock()));
}

WorkClaim::WorkClaim(WorkClaim&& other) noexcept
    : file_(std::exchange(other.file_, {})), lock_(std::move(other.lock_)) {}

WorkClaim::~WorkClaim() {
  if (!file_.empty()) (void)unlink(file_.c_str());
}

bool WorkClaim::IsTaken(const std::string& path) {
  const std::string file = ClaimFileOf(path);
  if (access(file.c_str(), F_OK) != 0) return false;
  const auto lock = FileLock::Try(file);
  return lock && !lock.Value();
}

}  // namespace engine
