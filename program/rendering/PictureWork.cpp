// Sharing without a server: before a picture is begun its file is claimed by a lock beside it, then
// looked at once more, then rendered and put into place in one step. Two programs at one plan
// therefore meet at single pictures only, and one that dies leaves its claim to the others.
// Decisions 62 and 63 say why the files themselves are the only truth.
#include "program/rendering/PictureWork.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "program/publish/FileOrigin.h"

namespace rendering {

namespace {

// Between two looks at claimed pictures: nobody tells when a claim of another machine ends.
// Pictures take seconds, so this is soon enough and costs nothing.
constexpr std::chrono::milliseconds kBetweenLooks{50};

// A scheduler sets it for the processes of a job; it stands in the manifest beside the machine's
// own name.
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

// Pictures that somebody else is at are put aside and looked at again at the end: they cost no
// waiting as long as there is work of one's own.
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

// With a claim in hand the file is looked at once more: who held the claim before may have finished
// the picture after it was looked for, and then there is nothing to do. The claim is given up when
// this returns, after the picture stands at its place. A stop is no failure of the picture: it goes
// into no manifest.
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

// Saved after the state is taken back: the scene is as it was opened before a disk can fail.
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

// A line for failures, too. A manifest that cannot be written ends the work: it is the only account
// of a night's rendering.
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
