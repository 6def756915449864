// Copies are made when the file system tells of the first change of a preview, whoever makes it
// (decision 87). They go through a file system of their own: what is done here must neither be
// heard here again nor stand in a command's report.
#include "program/desktop/recovery/SavedPreviews.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QScopedValueRollback>
#include <algorithm>
#include <utility>

#include "engine/outside/FileHandle.h"
#include "engine/states/StoredStates.h"
#include "program/desktop/OpenDocument.h"
#include "program/desktop/Text.h"

namespace desktop {

using engine::FileKind;

namespace {

constexpr std::uint64_t kLongestPlaceNote = 1 << 20;
constexpr std::uint64_t kMostBytesOfPreview = 64 << 20;
constexpr const char* kNote = "/scene.json";

std::string PlaceOf(const host::BaseDocument& doc) {
  return (doc.GetDocumentPath() + doc.GetDocumentName()).GetString().ToUtf8();
}

// Tells a file from a later one at the same place.
std::string StampText(const engine::FileStamp& stamp) {
  return std::to_string(stamp.size) + " " + std::to_string(stamp.changed) + " " +
         std::to_string(stamp.touched) + " " + std::to_string(stamp.device) + " " +
         std::to_string(stamp.number);
}

bool IsPreview(const std::string& name) { return name.ends_with(engine::kPreviewEnding); }

// Sizes first, since most previews differ in them.
bool AreAlike(engine::FileSystem& files, const std::string& one, const std::string& other) {
  if (files.Stamp(one).size != files.Stamp(other).size) return false;
  const auto first = files.ReadFile(one);
  const auto second = files.ReadFile(other);
  return first && second && first.Value() == second.Value();
}

// An empty file stands for a preview that was not there. True where there is nothing to do any
// more, also where something else stands at the place now.
bool GiveBackOne(engine::FileSystem& files, const std::string& kept, const std::string& place,
                 bool isSceneTheSame) {
  const FileKind there = files.Kind(place);
  if (there == FileKind::Unknown) return false;
  if (there != FileKind::Missing && (there != FileKind::File || !isSceneTheSame)) return true;
  if (files.Stamp(kept).size == 0)
    return there == FileKind::Missing || static_cast<bool>(files.RemoveFile(place));
  if (there == FileKind::File && AreAlike(files, kept, place)) return true;
  return files.MakeFolder(engine::FolderAndName(place).first) && files.CopyFile(kept, place, true);
}

}  // namespace

// The folder of copies goes only when all came back. A scene that is missing with its whole folder
// is on a disk that is not there, and its previews wait.
bool GiveBackPreviews(engine::FileSystem& files, const std::string& kept, GivenBack which) {
  if (files.Kind(kept) != FileKind::Folder) return true;
  const auto text = files.ReadFile(kept + kNote, kLongestPlaceNote);
  const QJsonObject note =
      QJsonDocument::fromJson(QByteArray::fromStdString(text ? text.Value() : "")).object();
  const std::string scene = note.value("scene").toString().toStdString();
  const std::string side = note.value("previews").toString().toStdString();
  const auto names = files.ListFiles(kept);
  if (!names) return false;
  bool isDone = true;
  if (files.Kind(scene) == FileKind::File) {
    files.FollowScene(scene);
    const bool isSame = which == GivenBack::All && note.value("stamp").toString().toStdString() ==
                                                       StampText(files.Stamp(scene));
    for (const std::string& name : names.Value()) {
      if (!IsPreview(name)) continue;
      isDone = GiveBackOne(files, kept + "/" + name, side + "/" + name, isSame) && isDone;
    }
  } else if (!scene.empty()) {
    // Its disk may come back; a scene that was taken away alone needs no previews.
    isDone = files.Kind(scene) == FileKind::Missing &&
             files.Kind(engine::FolderAndName(scene).first) == FileKind::Folder;
  }
  return isDone && files.RemoveFolder(kept);
}

// Whoever heard of changes before hears of them again afterwards.
SavedPreviews::SavedPreviews(const engine::Application& application, AutosaveFolder& folder)
    : application_(application), folder_(folder) {
  auto hears = [this](engine::Operation operation, const std::string& path) {
    BeforeChange(operation, path);
  };
  others_ = std::exchange(application.GetServices().files.beforeChange, std::move(hears));
}

SavedPreviews::~SavedPreviews() {
  application_.GetServices().files.beforeChange = std::move(others_);
}

// The side folder itself or a preview right in it.
const host::BaseDocument* SavedPreviews::OwnerOf(const std::string& path) const {
  const auto isOwner = [&](const host::BaseDocument* doc) {
    const std::string side = doc ? engine::SideFolderOf(*doc) : "";
    if (side.empty() || !path.starts_with(side)) return false;
    return path.size() == side.size() || (path.rfind('/') == side.size() && IsPreview(path));
  };
  // One scene may be open twice.
  if (isOwner(host::GetActiveDocument())) return host::GetActiveDocument();
  const auto open = application_.Documents();
  const auto owner = std::find_if(open.begin(), open.end(), isOwner);
  return owner == open.end() ? nullptr : *owner;
}

// A change of the whole folder changes every preview in it; a copy never replaces a folder.
void SavedPreviews::BeforeChange(engine::Operation operation, const std::string& path) {
  if (isWorking_) return;
  const host::BaseDocument* doc = OwnerOf(path);
  if (!doc) return;
  const QScopedValueRollback<bool> working(isWorking_, true);
  if (path != engine::SideFolderOf(*doc)) return Keep(*doc, path);
  const auto names = own_.ListFiles(path);
  if (operation == engine::Operation::CopyFile || !names) return;
  for (const std::string& name : names.Value())
    if (IsPreview(name)) Keep(*doc, path + "/" + name);
}

// Commands change plain files only. The target of a link is not ours to copy. A copy that is there
// is older and stays: it is what the scene's file knows.
void SavedPreviews::Keep(const host::BaseDocument& doc, const std::string& preview) {
  const FileKind kind = own_.Kind(preview);
  if (kind != FileKind::File && kind != FileKind::Missing) return;
  if (!application_.GetServices().files.CheckWay(preview)) return;
  const bool isTooLarge = own_.Stamp(preview).size > kMostBytesOfPreview;
  engine::Status kept =
      isTooLarge ? engine::FileFailure("Did not copy", preview, "it is too large") : Begin(doc);
  const std::string place =
      folder_.FilesOf(IdentityOf(&doc)).previews + "/" + engine::FolderAndName(preview).second;
  if (kept && own_.Kind(place) != FileKind::Missing) return;
  if (kept)
    kept =
        kind == FileKind::File ? own_.CopyFile(preview, place, false) : own_.ReplaceFile(place, "");
  if (!kept && failed)
    failed("A preview cannot be kept for the case that the scene is not saved. " + kept.Message());
}

// The stamp of the scene tells later whether somebody else has saved it since.
engine::Status SavedPreviews::Begin(const host::BaseDocument& doc) {
  if (scenes_.contains(IdentityOf(&doc))) return {};
  if (engine::Status ready = folder_.Prepare(); !ready) return ready;
  const std::string scene = PlaceOf(doc);
  const std::string folder = folder_.FilesOf(IdentityOf(&doc)).previews;
  const QJsonObject note{{"scene", QString::fromStdString(scene)},
                         {"previews", QString::fromStdString(engine::SideFolderOf(doc))},
                         {"stamp", QString::fromStdString(StampText(own_.Stamp(scene)))}};
  engine::Status begun = own_.MakeFolder(folder);
  if (begun) begun = own_.ReplaceFile(folder + kNote, QJsonDocument(note).toJson().toStdString());
  if (begun) scenes_.emplace(IdentityOf(&doc), scene);
  return begun;
}

// Saved where it was: the previews are as its file has them, and the copies go.
void SavedPreviews::Follow(const std::vector<host::BaseDocument*>& open) {
  for (auto at = scenes_.begin(); at != scenes_.end();) {
    const auto found = std::find_if(open.begin(), open.end(),
                                    [&](const auto* doc) { return IdentityOf(doc) == at->first; });
    const bool isThere = found != open.end() && PlaceOf(**found) == at->second;
    if (isThere && (*found)->GetChanged()) {
      ++at;
      continue;
    }
    if (isThere) {
      (void)own_.RemoveFolder(folder_.FilesOf(at->first).previews);
    } else {
      // Saved under another name, its new previews may be in the old place only.
      GiveBack(at->first, found == open.end() ? GivenBack::All : GivenBack::Missing);
    }
    at = scenes_.erase(at);
  }
}

void SavedPreviews::GiveBack(host::ULLONG document, GivenBack which) {
  const QScopedValueRollback<bool> working(isWorking_, true);
  engine::FileSystem& files = application_.GetServices().files;
  const std::size_t mark = application_.GetServices().ledger.Mark();
  if (GiveBackPreviews(files, folder_.FilesOf(document).previews, which) || !failed) return;
  const auto failures = application_.GetServices().ledger.FailuresSince(mark);
  failed("Not all previews are again as they were saved. " +
         (failures.empty() ? "" : failures.front().message));
}

void SavedPreviews::Adopt(const host::BaseDocument& doc) {
  if (own_.Kind(folder_.FilesOf(IdentityOf(&doc)).previews) == FileKind::Folder)
    scenes_.emplace(IdentityOf(&doc), PlaceOf(doc));
}

void SavedPreviews::End() {
  Follow(application_.Documents());
  for (const auto& [document, scene] : scenes_) GiveBack(document, GivenBack::All);
  scenes_.clear();
}

}  // namespace desktop
