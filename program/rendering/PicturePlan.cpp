#include "program/rendering/PicturePlan.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <set>

#include "engine/render/Renderer.h"
#include "engine/states/Findings.h"

namespace rendering {

namespace {

// The patterns up to the suffix, for several states and for the scene as it is.
constexpr const char* kPattern = "{scene} {state}.";
constexpr const char* kPatternAsItIs = "{scene}.";
constexpr const char* kProgramVersion = STAGEMARKS_VERSION;
// Bounds against a typing error ("1:10000000"): a plan keeps some hundred bytes for each picture
// and is checked whole.
constexpr std::size_t kMostFrames = 100000;
constexpr std::size_t kMostPictures = 1000000;
// Largest size of the very small picture that an estimate rests on, in pixels.
constexpr PictureSize kProbeBox{128, 128};

double SecondsSince(std::chrono::steady_clock::time_point begin) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

}  // namespace

// Against the folder of the order, not of the process: the desktop's child runs somewhere else. By
// text only: what the pattern makes need not be there yet.
std::string PicturePlan::Absolute(const std::string& path) const {
  return (std::filesystem::path(order_.folder) / path).lexically_normal().string();
}

// The pattern up to the folder that holds its first placeholder.
std::string PicturePlan::FixedFolder() const {
  const std::string fixed = pattern_.substr(0, pattern_.find('{'));
  const std::size_t slash = fixed.rfind('/');
  std::string folder = Absolute(slash == std::string::npos ? "." : fixed.substr(0, slash + 1));
  while (folder.size() > 1 && folder.back() == '/') folder.pop_back();
  return folder;
}

// Answers the exit status for a faulty call.
int PicturePlan::Refuse(const std::string& why) {
  scene_.Listener().Error(why);
  return kUsage;
}

// The scene or the disk is in the way.
int PicturePlan::Fail(const std::string& why) {
  scene_.Listener().Error(why);
  return kFailed;
}

// Needs no scene, so a typing error is told before a large one is read.
int PicturePlan::CheckOrder() {
  for (const std::string& typed : order_.sizes) {
    const auto size = ParsePictureSize(typed);
    if (!size) return Refuse(size.Message());
    sizes_.push_back(size.Value());
  }
  if (!order_.frames.empty()) {
    const auto range = pictures::ReadFrameRange(order_.frames);
    if (!range) return Refuse(range.Message());
    const auto [from, to] = range.Value();
    if (static_cast<std::size_t>(to - from) >= kMostFrames)
      return Refuse("These are more frames than can be rendered in one call, " +
                    std::to_string(kMostFrames) + ".");
    for (int frame = from; frame <= to; ++frame) frames_.push_back(frame);
  }
  return CheckPatternAndFormat();
}

int PicturePlan::CheckPatternAndFormat() {
  pattern_ = order_.pattern;
  if (pattern_.empty()) return kDone;
  const std::string& format = order_.format;
  const auto kind = KindOfName(pattern_);
  if (!format.empty() && !kind) pattern_ += "." + format;
  if (!format.empty() && kind && kind != pictures::KindOfWord(format)) {
    return Refuse("\"" + pattern_ + "\" names pictures of another format than " + format +
                  ". Give one of the two.");
  }
  const engine::Status checked = CheckPattern(pattern_);
  return checked ? kDone : Refuse(checked.Message());
}

// The hash of the scene is made once, before any state is recalled: loading leaves it as it is.
// Frames and sizes cost nothing more, the hash of a state is the same for all of them.
int PicturePlan::Make() {
  if (pattern_.empty())
    pattern_ = (pictures_.AsItIs() ? kPatternAsItIs : kPattern) +
               (order_.format.empty() ? "png" : order_.format);
  folder_ = FixedFolder();
  scene_.Files().Follow(folder_);
  const pictures::SceneHashes hashes(scene_.Document(), scene_.Files());
  sceneHash_ = hashes.Scene();
  settingsHash_ = SettingsHash(*KindOfName(pattern_));
  for (const Mark& state : pictures_.States()) {
    if (scene_.Listener().IsStopped()) return kInterrupted;
    if (const int status = AddState(state, hashes); status != kDone) return status;
  }
  return CheckNames();
}

// Names and sizes may differ from state to state, so each is recalled before any is rendered.
int PicturePlan::AddState(const Mark& state, const pictures::SceneHashes& hashes) {
  return pictures_.InState(state, [&] {
    stateHash_ = hashes.State();
    const std::vector<PictureSize> own{pictures_.Size()};
    const std::vector<int> first{pictures_.Facts(state).frame};
    for (const PictureSize& size : sizes_.empty() ? own : sizes_) {
      for (const int frame : frames_.empty() ? first : frames_) {
        if (const int status = AddPicture(state, size, frame); status != kDone) return status;
      }
    }
    return kDone;
  });
}

// 16 bytes a pixel is what the renderer keeps while it works (light as floats).
int PicturePlan::AddPicture(const Mark& state, const PictureSize& size, int frame) {
  PictureFacts facts = pictures_.Facts(state);
  if (const auto fits = engine::CheckImageSize(size.width, size.height, 16); !fits) {
    return Fail("\"" + facts.state + "\": " + fits.Message() + " Choose another size.");
  }
  if (plan_.size() >= kMostPictures)
    return Fail("These are more pictures than one call renders, " + std::to_string(kMostPictures) +
                ". Choose some of the states only.");
  facts.frame = frame;
  facts.width = size.width;
  facts.height = size.height;
  facts.index = plan_.size() + 1;
  plan_.push_back({state,
                   facts.state,
                   Absolute(FillPattern(pattern_, facts)),
                   size,
                   frame,
                   {sceneHash_, stateHash_, settingsHash_, size, frame, kProgramVersion}});
  return kDone;
}

// Of all pictures at once, folded to one letter case: names that differ in it only would overwrite
// each other on some disks, and that shall show here and not on the machine with that disk.
int PicturePlan::CheckNames() {
  std::vector<std::string> paths;
  for (const PlannedPicture& picture : plan_) paths.push_back(picture.path);
  const auto clash = FindClash(paths);
  if (!clash) return kDone;
  const PlannedPicture& one = plan_[clash->first];
  const PlannedPicture& other = plan_[clash->second];
  const bool same = one.state.name == other.state.name;
  return Refuse((same ? "Two pictures of \"" + one.name + "\""
                      : "\"" + one.name + "\" and \"" + other.name + "\"") +
                " would be written to " + WhyOneFile(one, other) + " Nothing was rendered.");
}

// The advice depends on the cause: a placeholder that is missing, or names that became one because
// letters were replaced, where no placeholder helps.
std::string PicturePlan::WhyOneFile(const PlannedPicture& one, const PlannedPicture& other) const {
  if (one.path != other.path) {
    return "\"" + one.path + "\" and \"" + other.path +
           "\", which differ in upper and lower case only and are one file on some disks. Rename "
           "one of them, or render them apart.";
  }
  const bool differInSize =
      one.size.width != other.size.width || one.size.height != other.size.height;
  const char* missing = one.state.name != other.state.name ? "state"
                        : differInSize                     ? "size"
                                                           : "frame";
  if (HasPlaceholder(pattern_, "index") || HasPlaceholder(pattern_, missing)) {
    return "one file, " + other.path +
           ", because what a file's name cannot hold is replaced in it. Rename one of them, or "
           "render them apart.";
  }
  return "one file, " + other.path + ". Put {" + missing +
         "} into the pattern, or render them apart.";
}

int PicturePlan::MakeFolders() {
  std::set<std::string> folders{folder_};
  for (const PlannedPicture& picture : plan_)
    folders.insert(std::filesystem::path(picture.path).parent_path().string());
  for (const std::string& folder : folders) {
    if (const auto made = scene_.Files().MakeFolders(folder); !made) return Fail(made.Message());
  }
  return kDone;
}

// File names of previews do not matter for pictures, whose names come from the pattern.
PictureFindings PicturePlan::Findings() {
  PictureFindings found;
  for (const auto& finding : engine::FindFindings(scene_.Document(), nullptr, {})) {
    const bool isMeant =
        finding.state.empty() || std::ranges::any_of(pictures_.States(), [&](const Mark& state) {
          return state.name == finding.state;
        });
    if (!isMeant || std::string_view(finding.kind->code).starts_with("file-name")) continue;
    found.errors += finding.kind->severity == engine::Severity::Error ? finding.count : 0;
    found.warnings += finding.kind->severity == engine::Severity::Warning ? finding.count : 0;
  }
  if (found.errors + found.warnings == 0) return found;
  found.text = "`stagemarks check` finds " +
               (found.errors > 0 ? Counted(found.errors, "error") : std::string()) +
               (found.errors > 0 && found.warnings > 0 ? " and " : "") +
               (found.warnings > 0 ? Counted(found.warnings, "warning") : std::string()) +
               " in these Stagemarks.";
  return found;
}

std::uint64_t PicturePlan::PixelsToRender() const {
  std::uint64_t pixels = 0;
  for (const PlannedPicture& picture : plan_)
    pixels += picture.isThere ? 0 : std::uint64_t{picture.size.width} * picture.size.height;
  return pixels;
}

// Three pictures of one state: the first of one pixel pays for reading meshes and textures, the
// second for what each picture costs again, the third, less that, for its pixels. What comes of it
// is one state's cost times the pixels that are missing; a plan with states of very unlike cost is
// estimated as badly as its first one is typical.
std::optional<PictureEstimate> PicturePlan::Estimate() {
  const auto isMissing = [](const PlannedPicture& picture) { return !picture.isThere; };
  const auto count = static_cast<double>(std::ranges::count_if(plan_, isMissing));
  if (count < 2) return std::nullopt;
  const PlannedPicture& first = *std::ranges::find_if(plan_, isMissing);
  const PictureSize small = FittedInto(first.size, kProbeBox);
  PictureEstimate estimate;
  const int status = pictures_.InState(first.state, [&] {
    using Clock = std::chrono::steady_clock;
    engine::Image picture;
    const auto begin = Clock::now();
    if (pictures_.Probe({1, 1}, nullptr) != kDone) return kFailed;
    estimate.reading = SecondsSince(begin);
    const auto again = Clock::now();
    if (pictures_.Probe({1, 1}, nullptr) != kDone) return kFailed;
    const double each = SecondsSince(again);
    const auto rendered = Clock::now();
    if (pictures_.Probe(small, &picture) != kDone) return kFailed;
    const double pixels = static_cast<double>(small.width) * small.height;
    const double all = static_cast<double>(PixelsToRender());
    const double perPixel = std::max(0.0, SecondsSince(rendered) - each) / pixels;
    estimate.seconds = std::max(0.0, estimate.reading - each) + count * each + perPixel * all;
    const auto bytes = pictures::EncodePicture(picture, "probe.png");
    // The probe is packed as a PNG file; a file of floats is about that much larger.
    const double kind = KindOfName(first.path) == PictureKind::Exr ? 2.2 : 1;
    if (bytes)
      estimate.bytes = static_cast<std::uint64_t>(kind * static_cast<double>(bytes.Value().size()) /
                                                  pixels * all);
    return kDone;
  });
  return status == kDone ? std::optional(estimate) : std::nullopt;
}

// With the version of the renderer: pictures of an older one are out of date.
std::string SettingsHash(PictureKind kind) {
  return pictures::HashOfTexts({pictures::WordOf(kind), std::to_string(engine::kPictureVersion)});
}

std::string PixelsText(std::uint64_t pixels) {
  if (pixels < 100000) return Counted(pixels, "pixel");
  char text[40];
  std::snprintf(text, sizeof text, "%.1f megapixels", static_cast<double>(pixels) / 1e6);
  return text;
}

// Rounded up and cut at a number that a counter can hold: an estimate may be infinite.
std::string DurationText(double seconds) {
  const auto whole = static_cast<std::uint64_t>(std::ceil(std::clamp(seconds, 0.0, 1e12)));
  if (whole < 60) return std::to_string(whole) + " s";
  if (whole < 3600) return std::to_string(whole / 60) + " min " + std::to_string(whole % 60) + " s";
  return std::to_string(whole / 3600) + " h " + std::to_string(whole % 3600 / 60) + " min";
}

}  // namespace rendering
