#include "engine/outside/WorkClaim.h"

#include <unistd.h>

#include "engine/outside/PathRules.h"

namespace engine {

namespace {

// More former owners than that do not follow one another so closely.
constexpr int kTries = 100;

std::string ClaimFileOf(const std::string& path) {
  const auto [folder, name] = FolderAndName(path);
  return (folder == "/" ? "" : folder) + "/." + name.substr(0, 200) + ".claim";
}

}  // namespace

Result<std::optional<WorkClaim>> WorkClaim::Try(const FileSystem& files, const std::string& path) {
  using Claimed = Result<std::optional<WorkClaim>>;
  const Result<std::string> clean = PathForWriting(path);
  if (!clean) return clean.GetStatus();
  const std::string file = ClaimFileOf(clean.Value());
  Result<FilePlace> place = FindPlace(kCannotWrite, file, files.NamedPart(clean.Value()));
  if (!place) return place.GetStatus();
  // The former owner may take the file away after it was opened here. Where there are no locks, no
  // lock ever covers it.
  for (int tries = 0; tries < kTries; ++tries) {
    Result<FileHandle> made = OpenOrMake(place.Value(), file);
    if (!made) return made.GetStatus();
    auto lock = FileLock::TryOpen(made.Take(), file);
    if (!lock) return lock.GetStatus();
    if (!lock.Value()) return Claimed(std::nullopt);
    if (lock.Value()->Covers(place.Value()))
      return Claimed(WorkClaim(place.Take(), std::move(*lock.Value())));
  }
  return Claimed(WorkClaim(place.Take(), FileLock()));
}

WorkClaim::~WorkClaim() {
  // Removed while it is still locked: whoever waits finds that its file has no name any more, and
  // makes another.
  if (place_.folder) (void)unlinkat(place_.folder.Get(), place_.name.c_str(), 0);
}

bool WorkClaim::IsTaken(const std::string& path) {
  const std::string file = ClaimFileOf(path);
  if (access(file.c_str(), F_OK) != 0) return false;
  const auto lock = FileLock::Try(file);
  return lock && !lock.Value();
}

}  // namespace engine
