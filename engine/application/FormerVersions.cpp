#include "engine/application/FormerVersions.h"

#include <algorithm>
#include <cstdio>
#include <vector>

#include "engine/core/Utf8.h"
#include "engine/outside/FilePlace.h"
#include "engine/scenefile/FileAsRead.h"

namespace engine {
namespace {

// The program's own part of the preferences, and in it where former versions go.
constexpr host::LONG kOwnPreferences = 1;
constexpr host::LONG kFormerPlace = 1;

// Of scenes; and bytes of a name, which get a hash behind them.
constexpr std::size_t kMostKept = 100;
constexpr std::size_t kLongestName = 150;

// The file itself for a link to it: that is what saving replaces. It need not be there.
std::string FileItself(const std::string& path) {
  std::string real = RealPath(path);
  if (!real.empty()) return real;
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return path;
  const std::string folder = RealPath(path.substr(0, slash + 1));
  return folder.empty() ? path : folder + path.substr(slash);
}

std::string BesidePlace(const std::string& file) { return file + "~"; }

}  // namespace

std::string FormerVersions::FolderIn(const UserFolders& folders) {
  return folders.state.empty() ? "" : folders.state + "/previous";
}

// Known by a hash of where the scene is; its name is for whoever looks into the folder.
std::string FormerVersions::HiddenPlace(const std::string& file) const {
  if (folder_.empty()) return "";
  const std::string_view whole = file;
  char hash[17];
  std::snprintf(hash, sizeof hash, "%016llx",
                static_cast<unsigned long long>(HashOfContent({&whole, 1})));
  const std::string name = file.substr(file.rfind('/') + 1);
  const std::size_t dot = std::min(name.rfind('.'), name.size());
  std::string stem = name.substr(0, dot);
  CutTo(stem, kLongestName);
  return folder_ + "/" + stem + "-" + hash + name.substr(dot);
}

FormerPlace FormerVersions::Place() {
  const host::BaseContainer* own = preferences_.Get(kOwnPreferences);
  const host::LONG place = own != nullptr ? own->GetLong(kFormerPlace) : 0;
  return place > 0 && place <= static_cast<host::LONG>(FormerPlace::Nowhere)
             ? static_cast<FormerPlace>(place)
             : FormerPlace::Hidden;
}

Status FormerVersions::SetPlace(FormerPlace place) {
  host::BaseContainer own;
  own.SetLong(kFormerPlace, static_cast<host::LONG>(place));
  return preferences_.Set(kOwnPreferences, own, true);
}

std::string FormerVersions::PlaceFor(const std::string& path) {
  const FormerPlace place = Place();
  if (place == FormerPlace::Nowhere) return "";
  const std::string file = FileItself(path);
  return place == FormerPlace::Beside ? BesidePlace(file) : HiddenPlace(file);
}

// Wherever it was kept before the person changed her mind.
std::string FormerVersions::Find(const std::string& path) {
  const std::string file = FileItself(path);
  std::string places[] = {HiddenPlace(file), BesidePlace(file)};
  if (Place() == FormerPlace::Beside) std::swap(places[0], places[1]);
  for (std::string& place : places) {
    if (!place.empty() && files_.Kind(place) == FileKind::File) return std::move(place);
  }
  return "";
}

void FormerVersions::RemoveOldest() {
  if (folder_.empty() || files_.Kind(folder_) != FileKind::Folder) return;
  const auto names = files_.ListFiles(folder_);
  if (!names || names.Value().size() <= kMostKept) return;
  std::vector<std::pair<std::int64_t, std::string>> kept;
  for (const std::string& name : names.Value())
    // By the system's own date: the file's is that of an earlier saving.
    kept.emplace_back(files_.Stamp(folder_ + "/" + name).touched, folder_ + "/" + name);
  std::sort(kept.begin(), kept.end());
  for (std::size_t i = 0; i + kMostKept < kept.size(); ++i) (void)files_.RemoveFile(kept[i].second);
}

}  // namespace engine
