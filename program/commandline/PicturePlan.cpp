#include "program/commandline/PicturePlan.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>

#include "engine/render/TextureSearch.h"
#include "engine/states/Findings.h"
#include "program/commandline/Exporting.h"

namespace commandline {

namespace {

constexpr const char* kPattern = "{scene} {state}.";
constexpr const char* kPatternAsItIs = "{scene}.";
constexpr const char* kProgramVersion = STAGEMARKS_VERSION;
constexpr std::size_t kMostFrames = 100000;
constexpr std::size_t kMostPictures = 1000000;
// Of the very small picture that an estimate rests on.
constexpr PictureSize kProbeBox{128, 128};

// The pattern up to the folder that holds its first placeholder.
std::string FixedFolder(const std::string& pattern) {
  const std::string fixed = pattern.substr(0, pattern.find('{'));
  const std::size_t slash = fixed.rfind('/');
  const std::string folder = slash == std::string::npos ? "." : fixed.substr(0, slash + 1);
  std::string absolute = AbsolutePath(folder);
  while (absolute.size() > 1 && absolute.back() == '/') absolute.pop_back();
  if (absolute.ends_with("/.")) absolute.resize(absolute.size() - 2);
  return absolute;
}

double SecondsSince(std::chrono::steady_clock::time_point begin) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

}  // namespace

void AddPictureOrder(Verb verb, PictureOrder& order, std::string& pattern) {
  AddOnly(verb, order.states, "--state");
  verb.Add("-o,--output", pattern,
           "File names, ending in .png, .tif or .exr, with {scene}, {state}, {camera}, {size}, "
           "{frame}, {date} and {index}; {index:03} has three digits, {state:safe} plain letters "
           "only")
      .Word("FILES")
      .Default("{scene} {state}.png");
  verb.Add("--format", order.format,
           "png, tif: as a screen shows it; exr: OpenEXR with all the light, linear half floats")
      .OneOf({"png", "tif", "exr"})
      .Word("FORMAT");
  verb.Add("--size", order.sizes,
           "Picture sizes, as 1920x1080, instead of that of each state's render settings")
      .Word("WIDTHxHEIGHT...");
  verb.Add("--frames", order.frames,
           "Frames from and to, as 0:90, instead of the first one of each state's render settings")
      .Word("FROM:TO");
}

int PicturePlan::Refuse(const std::string& why) {
  session_.GetProgram().terminal.Error(why);
  return kUsage;
}

int PicturePlan::Fail(const std::string& why) {
  session_.GetProgram().terminal.Error(why);
  return kFailed;
}

int PicturePlan::CheckOrder() {
  for (const std::string& typed : order_.sizes) {
    const auto size = ParsePictureSize(typed);
    if (!size) return Refuse(size.Message());
    sizes_.push_back(size.Value());
  }
  if (!order_.frames.empty()) {
    const auto range = ReadFrameRange(order_.frames);
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
    return Refuse("\"" + pattern_ + "\" names pictures of another format than --format " + format +
                  ". Give one of the two.");
  }
  const engine::Status checked = CheckPattern(pattern_);
  return checked ? kDone : Refuse(checked.Message());
}

int PicturePlan::Make() {
  if (pattern_.empty())
    pattern_ = (pictures_.AsItIs() ? kPatternAsItIs : kPattern) +
               (order_.format.empty() ? "png" : order_.format);
  folder_ = FixedFolder(pattern_);
  const pictures::SceneHashes hashes(session_.Document(), session_.Files());
  scene_ = hashes.Scene();
  settings_ = SettingsHash(*KindOfName(pattern_));
  for (const Mark& state : pictures_.States()) {
    if (Terminal::Interrupted()) return kInterrupted;
    if (const int status = AddState(state, hashes); status != kDone) return status;
  }
  return CheckNames();
}

// Names and sizes may differ from state to state, so each is recalled before any is rendered.
int PicturePlan::AddState(const Mark& state, const pictures::SceneHashes& hashes) {
  return pictures_.InState(state, [&] {
    state_ = hashes.State();
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

int PicturePlan::AddPicture(const Mark& state, const PictureSize& size, int frame) {
  PictureFacts facts = pictures_.Facts(state);
  if (const auto fits = engine::CheckImageSize(size.width, size.height, 16); !fits) {
    return Fail("\"" + facts.state + "\": " + fits.Message() + " Give another size with --size.");
  }
  if (plan_.size() >= kMostPictures)
    return Fail("These are more pictures than one call renders, " + std::to_string(kMostPictures) +
                ". Choose some of the states with --only.");
  facts.frame = frame;
  facts.width = size.width;
  facts.height = size.height;
  facts.index = plan_.size() + 1;
  plan_.push_back({state,
                   facts.state,
                   AbsolutePath(FillPattern(pattern_, facts)),
                   size,
                   frame,
                   {scene_, state_, settings_, size, frame, kProgramVersion}});
  return kDone;
}

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

int PicturePlan::CheckScene(Report& report) {
  const Program& program = session_.GetProgram();
  if (const int status = session_.CheckTextures(report); status != kDone) return status;
  std::size_t errors = 0;
  std::size_t warnings = 0;
  for (const auto& finding : engine::FindFindings(session_.Document(), nullptr, {})) {
    const bool isMeant =
        finding.state.empty() || std::ranges::any_of(pictures_.States(), [&](const Mark& state) {
          return state.name == finding.state;
        });
    if (!isMeant || std::string_view(finding.kind->code).starts_with("file-name")) continue;
    errors += finding.kind->severity == engine::Severity::Error ? finding.count : 0;
    warnings += finding.kind->severity == engine::Severity::Warning ? finding.count : 0;
  }
  report.Put("findings", errors + warnings);
  if (errors + warnings == 0) return kDone;
  const std::string found =
      "`stagemarks check` finds " + (errors > 0 ? Counted(errors, "error") : std::string()) +
      (errors > 0 && warnings > 0 ? " and " : "") +
      (warnings > 0 ? Counted(warnings, "warning") : std::string()) + " in these Stagemarks.";
  if (!program.strict) session_.GetProgram().terminal.Note(found);
  return program.strict ? Fail(found + " Nothing was rendered (--strict).") : kDone;
}

std::uint64_t PicturePlan::PixelsToRender() const {
  std::uint64_t pixels = 0;
  for (const PlannedPicture& picture : plan_)
    pixels += picture.isThere ? 0 : std::uint64_t{picture.size.width} * picture.size.height;
  return pixels;
}

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
    const double kind = KindOfName(first.path) == PictureKind::Exr ? 2.2 : 1;
    if (bytes)
      estimate.bytes = static_cast<std::uint64_t>(kind * static_cast<double>(bytes.Value().size()) /
                                                  pixels * all);
    return kDone;
  });
  return status == kDone ? std::optional(estimate) : std::nullopt;
}

std::string SettingsHash(PictureKind kind) {
  return pictures::HashOfTexts({pictures::WordOf(kind)});
}

std::string PixelsText(std::uint64_t pixels) {
  if (pixels < 100000) return Counted(pixels, "pixel");
  char text[40];
  std::snprintf(text, sizeof text, "%.1f megapixels", static_cast<double>(pixels) / 1e6);
  return text;
}

std::string DurationText(double seconds) {
  const auto whole = static_cast<std::uint64_t>(std::ceil(std::clamp(seconds, 0.0, 1e12)));
  if (whole < 60) return std::to_string(whole) + " s";
  if (whole < 3600) return std::to_string(whole / 60) + " min " + std::to_string(whole % 60) + " s";
  return std::to_string(whole / 3600) + " h " + std::to_string(whole % 3600 / 60) + " min";
}

}  // namespace commandline
