#include "program/desktop/recovery/LostWork.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>

namespace desktop {

namespace {

constexpr std::uint64_t kMostBytesOfNote = 1 << 20;
constexpr std::int64_t kNanosecondsPerMillisecond = 1000000;
const std::string kSceneSuffix = ".c4d";

}  // namespace

LostWork::LostWork(const engine::Services& services) : files_(services.files) {
  const std::string root = AutosaveRoot(services.folders);
  if (files_.Kind(root) != engine::FileKind::Folder) return;
  const auto names = files_.ListFolders(root);
  if (!names) return;
  for (const std::string& name : names.Value()) Find(root + "/" + name);
  Tidy();
  std::stable_sort(documents_.begin(), documents_.end(),
                   [](const LostDocument& a, const LostDocument& b) { return a.kept > b.kept; });
}

// A folder without the held file is one that another desktop is just making.
void LostWork::Find(const std::string& path) {
  auto held = engine::HoldFile(path + kHeldFile);
  if (!held) return;
  folders_.push_back({path, held.Take()});
  const auto names = files_.ListFiles(path);
  if (!names) return;
  for (const std::string& name : names.Value()) {
    if (!name.ends_with(kSceneSuffix)) continue;
    documents_.push_back(
        Describe(AutosaveFilesIn(path, name.substr(0, name.size() - kSceneSuffix.size()))));
  }
}

LostDocument LostWork::Describe(const AutosaveFiles& files) const {
  QJsonObject note;
  if (files_.Kind(files.note) == engine::FileKind::File) {
    const auto text = files_.ReadFile(files.note, kMostBytesOfNote);
    if (text) note = QJsonDocument::fromJson(QByteArray::fromStdString(text.Value())).object();
  }
  const QString title = note.value("title").toString("Untitled");
  const auto kept = QDateTime::fromMSecsSinceEpoch(files_.Stamp(files.scene).changed /
                                                   kNanosecondsPerMillisecond);
  return {files, note.value("path").toString().toStdString(), title, kept};
}

void LostWork::Discard() {
  for (const Folder& folder : folders_) (void)files_.RemoveFolder(folder.path);
  folders_.clear();
  documents_.clear();
}

std::string LostWork::KeepAside(const LostDocument& document) {
  const std::string aside = document.files.scene + ".damaged";
  return files_.Rename(document.files.scene, aside) ? aside : document.files.scene;
}

void LostWork::Tidy() {
  std::erase_if(folders_, [this](const Folder& folder) {
    return IsEmpty(folder.path) && files_.RemoveFolder(folder.path);
  });
}

bool LostWork::IsEmpty(const std::string& folder) const {
  const auto names = files_.ListFiles(folder);
  const auto isScene = [](const std::string& name) {
    return name.find(kSceneSuffix) != std::string::npos;
  };
  return names && std::none_of(names.Value().begin(), names.Value().end(), isScene);
}

}  // namespace desktop
