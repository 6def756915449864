#include "program/desktop/render/StatePictures.h"

#include <algorithm>

#include "engine/render/Image.h"
#include "program/desktop/render/RenderJob.h"
#include "program/pictures/PictureSize.h"

namespace desktop {

namespace {

constexpr const char* kSideFolderEnding = "_SM";
constexpr const char* kPreviewSuffix = ".tif";
constexpr std::uint64_t kLargestPreview = 8u << 20;

std::string PreviewFolder(const host::BaseDocument& doc) {
  const std::string folder = doc.GetDocumentPath().GetString().ToUtf8();
  return folder.empty() ? "" : folder + "/" + pictures::SceneName(doc) + kSideFolderEnding;
}

// Names that lead elsewhere have no preview.
bool IsFileName(const std::string& name) {
  return !name.empty() && name.find_first_of("/\\") == std::string::npos;
}

}  // namespace

StatePictures::StatePictures(const engine::Services& services,
                             std::function<void(host::LONG)> changed)
    : files_(services.files),
      changed_(std::move(changed)),
      reading_("the pictures of the Stagemarks", [this] { return ReadNext(); }) {}

void StatePictures::Follow(const host::BaseDocument* doc,
                           const std::vector<engine::StoredState>& states) {
  const std::string previews = doc ? PreviewFolder(*doc) : "";
  if (IdentityOf(doc) != doc_ || previews != previews_) pictures_.clear();
  doc_ = IdentityOf(doc);
  previews_ = previews;
  names_.clear();
  for (const engine::StoredState& state : states) names_[state.id] = state.name;
}

const StatePicture& StatePictures::Of(host::LONG id) const {
  static const auto* const none = new StatePicture;
  const auto it = pictures_.find(id);
  return it == pictures_.end() ? *none : it->second;
}

void StatePictures::See(const std::vector<host::LONG>& visible) {
  wanted_.clear();
  for (const host::LONG id : visible) {
    if (!pictures_.contains(id)) wanted_.push_back(id);
  }
  std::reverse(wanted_.begin(), wanted_.end());
  if (!wanted_.empty()) reading_.Start();
}

bool StatePictures::ReadNext() {
  if (wanted_.empty()) return false;
  const host::LONG id = wanted_.back();
  wanted_.pop_back();
  StatePicture& picture = pictures_[id];
  const std::string path = previews_ + "/" + names_[id] + kPreviewSuffix;
  if (previews_.empty() || !IsFileName(names_[id]) || files_.Kind(path) != engine::FileKind::File)
    return !wanted_.empty();
  const auto bytes = files_.ReadFile(path, kLargestPreview);
  if (!bytes) return !wanted_.empty();
  const auto image = engine::DecodeImage(bytes.Value());
  if (image) picture = {ToQImage(engine::ToBytes(image.Value())), true};
  if (image) changed_(id);
  return !wanted_.empty();
}

}  // namespace desktop
