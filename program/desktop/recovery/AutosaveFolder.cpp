// Each desktop has a folder of its own, named by when it began and held by a lock on a file in it.
// A folder whose lock can be taken is that of a desktop that has ended, well or not.
#include "program/desktop/recovery/AutosaveFolder.h"

#include <unistd.h>

#include <QString>

namespace desktop {

std::string AutosaveRoot(const engine::UserFolders& folders) {
  return folders.state.empty() ? "" : folders.state + "/autosave";
}

AutosaveFiles AutosaveFilesIn(const std::string& folder, const std::string& name) {
  const std::string file = folder + "/" + name;
  return {file + ".c4d", file + ".json", file + kSavedPreviewsEnding};
}

// The folder is made with the first copy only: most runs need none.
engine::Status AutosaveFolder::Prepare() {
  if (held_) return {};
  const std::string root = AutosaveRoot(services_.folders);
  if (root.empty()) return engine::Status::Failure("There is no home folder to keep it in.");
  const std::string folder = NewPlace(root);
  engine::Status status = files_.MakeFolders(folder);
  if (status)
    status = files_.ReplaceFile(folder + kHeldFile, "process " + std::to_string(getpid()) + "\n");
  if (!status) return status;
  auto held = engine::HoldFile(folder + kHeldFile);
  if (!held) return held.GetStatus();
  held_ = held.Take();
  folder_ = folder;
  return status;
}

// Seconds and process number, and a count where clocks were set back.
std::string AutosaveFolder::NewPlace(const std::string& root) const {
  const host::LocalFileTime now = services_.clock.Now();
  const QString start =
      QString::asprintf("/%04d-%02d-%02d-%02d%02d%02d-%d", now.year, now.month, now.day, now.hour,
                        now.minute, now.second, static_cast<int>(getpid()));
  std::string place = root + start.toStdString();
  const auto isTaken = [&] {
    const engine::FileKind kind = files_.Kind(place);
    return kind != engine::FileKind::Missing && kind != engine::FileKind::Unknown;
  };
  for (int more = 2; isTaken(); ++more) {
    place = root + start.toStdString() + "-" + std::to_string(more);
  }
  return place;
}

AutosaveFiles AutosaveFolder::FilesOf(host::ULLONG document) const {
  return AutosaveFilesIn(folder_, std::to_string(document));
}

// Renamed, not copied: at no moment is there none and never are there two.
engine::Status AutosaveFolder::Adopt(const AutosaveFiles& files, host::ULLONG document) {
  engine::Status status = Prepare();
  const AutosaveFiles own = FilesOf(document);
  // The note may be missing; the scene counts.
  if (status && files_.Kind(files.note) == engine::FileKind::File)
    status = files_.Rename(files.note, own.note);
  if (status && files_.Kind(files.previews) == engine::FileKind::Folder)
    status = files_.Rename(files.previews, own.previews);
  return status ? files_.Rename(files.scene, own.scene) : status;
}

void AutosaveFolder::Remove(host::ULLONG document) {
  if (!held_) return;
  const AutosaveFiles files = FilesOf(document);
  for (const std::string& file : {files.scene, files.note}) {
    if (files_.Kind(file) == engine::FileKind::File) (void)files_.RemoveFile(file);
  }
}

// Previews that could not be given back stay for the next start, the copies of scenes go.
void AutosaveFolder::RemoveAll() {
  if (!held_) return;
  const auto previews = files_.ListFolders(folder_);
  if (previews && !previews.Value().empty()) {
    const auto names = files_.ListFiles(folder_);
    for (const std::string& name : names ? names.Value() : std::vector<std::string>())
      if ("/" + name != kHeldFile) (void)files_.RemoveFile(folder_ + "/" + name);
  } else {
    (void)files_.RemoveFolder(folder_);
  }
  held_.Close();
}

}  // namespace desktop
