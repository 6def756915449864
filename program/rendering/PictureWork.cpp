#include "program/rendering/PictureWork.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "program/publish/FileOrigin.h"

namespace rendering {

namespace {

constexpr std::chrono::milliseconds kBetweenLooks{50};

std::string NodeName() {
  const char* node = std::getenv("SLURMD_NODENAME");
  return node ? node : "";
}

}  // namespace

// The mark at the end of the file holds a hash of all that stands before it.
PictureAtPlace PictureWork::Look(const PlannedPicture& picture) {
  engine::FileSystem& files = scene_.Files();
  const engine::FileKind kind = files.Kind(picture.path);
  if (kind == engine::FileKind::Unknown) return PictureAtPlace::Foreign;
  if (kind != engine::FileKind::File) return PictureAtPlace::None;
  const auto bytes = files.ReadFile(picture.path, engine::kLargestImageBytes);
  if (!bytes || publishing::MakerOf(bytes.Value()) != kPictureMaker) return PictureAtPlace::Foreign;
  const auto record = pictures::FindRecord(bytes.Value());
  return record && *record == picture.record ? PictureAtPlace::Finished : PictureAtPlace::Other;
}

int PictureWork::Do(std::vector<PlannedPicture>& plan) {
  count_ = static_cast<std::size_t>(
      std::ranges::count_if(plan, [](const PlannedPicture& picture) { return !picture.isThere; }));
  std::size_t number = 0;
  for (PlannedPicture& picture : plan) {
    if (picture.isThere) continue;
    if (const int status = DoOne(picture, number++); status != kDone) return status;
    scene_.Listener().Step(number - others_.size(), count_, "Rendering");
  }
  const int status = DoLeftToOthers();
  return status == kDone && failed_ > 0 ? kFailed : status;
}

int PictureWork::DoOne(PlannedPicture& picture, std::size_t number) {
  std::optional<engine::WorkClaim> claim;
  if (rules_.isShared) {
    auto claimed = engine::WorkClaim::Try(scene_.Files(), picture.path);
    if (!claimed) {
      scene_.Listener().Error(claimed.Message());
      return kFailed;
    }
    if (!claimed.Value()) {
      others_.emplace_back(&picture, number);
      return kDone;
    }
    claim.emplace(std::move(*claimed.Value()));
    picture.isThere = IsDone(picture);
    if (picture.isThere && rules_.ended) rules_.ended(picture, nullptr, "");
    if (picture.isThere) return kDone;
  }
  if (rules_.begun) rules_.begun(picture);
  const auto begin = std::chrono::steady_clock::now();
  engine::Image image;
  std::uint64_t bytes = 0;
  const int status = RenderAndSave(picture, number, &image, &bytes);
  picture.isRendered = status == kDone;
  if (status == kInterrupted || (status != kDone && scene_.Listener().IsStopped())) return status;
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  if (const int written = TakeDown(picture, status, seconds, bytes); written != kDone)
    return written;
  if (rules_.ended)
    rules_.ended(picture, status == kDone ? &image : nullptr,
                 status == kDone ? "" : pictures_.LastFailure());
  if (status == kDone) return kDone;
  ++failed_;
  return rules_.keepsGoing ? kDone : status;
}

// Takes the pictures that others were at: once they can be claimed, the others are through or gone.
int PictureWork::DoLeftToOthers() {
  bool isSaid = false;
  while (!others_.empty()) {
    if (scene_.Listener().IsStopped()) return kInterrupted;
    auto left = std::move(others_);
    others_.clear();
    for (const auto& [picture, number] : left) {
      if (const int status = DoOne(*picture, number); status != kDone) return status;
      scene_.Listener().Step(count_ - others_.size(), count_, "Rendering");
    }
    if (others_.size() < left.size()) continue;
    if (!std::exchange(isSaid, true))
      scene_.Listener().Say("Waiting for others, who are at " + Counted(others_.size(), "picture") +
                            ".");
    std::this_thread::sleep_for(kBetweenLooks);
  }
  return kDone;
}

int PictureWork::RenderAndSave(const PlannedPicture& picture, std::size_t number,
                               engine::Image* image, std::uint64_t* bytes) {
  const PictureTurn turn{number, count_};
  const int status = pictures_.InState(picture.state, [&] {
    return KindOfName(picture.path) == PictureKind::Exr
               ? pictures_.RenderLight(picture.size, turn, picture.name, image)
               : pictures_.Render(picture.size, turn, picture.name, image);
  });
  return status == kDone
             ? pictures_.Save(*image, picture.path, kPictureMaker, &picture.record, bytes)
             : status;
}

int PictureWork::TakeDown(const PlannedPicture& picture, int status, double seconds,
                          std::uint64_t bytes) {
  const std::string folder = std::filesystem::path(rules_.manifest).parent_path().string();
  pictures::ManifestLine line;
  line.picture = pictures::RelativeTo(folder, picture.path);
  line.state = picture.state.name;
  line.record = picture.record;
  line.failed = status != kDone;
  line.why = line.failed ? pictures_.LastFailure() : "";
  line.time = pictures::TimeNow();
  line.host = pictures::HostName();
  line.node = NodeName();
  line.seconds = seconds;
  line.bytes = bytes;
  engine::Status written;
  if (!manifest_) {
    auto opened = engine::AppendedFile::Open(scene_.Files(), rules_.manifest);
    if (opened) manifest_ = std::make_unique<engine::AppendedFile>(opened.Take());
    if (!opened) written = opened.GetStatus();
  }
  if (manifest_) written = manifest_->Append(pictures::TextOf(line));
  if (!written) scene_.Listener().Error(written.Message());
  return written ? kDone : kFailed;
}

}  // namespace rendering
