#include "program/commandline/FinishedPictures.h"

#include <algorithm>

#include "program/publish/FileOrigin.h"

namespace commandline {

namespace {

constexpr std::uint64_t kLargestManifest = 1ULL << 30;

bool IsSame(const PictureSize& one, const PictureSize& other) {
  return one.width == other.width && one.height == other.height;
}

}  // namespace

// A folder without a manifest has none. Lines of pictures that are gone are found out when one is
// read.
void FinishedPictures::LookIn(const std::string& folder) {
  const std::string path = folder + "/" + pictures::kManifestName;
  if (session_.Files().Kind(path) != engine::FileKind::File) return;
  const auto text = session_.Files().ReadFile(path, kLargestManifest);
  if (!text) return;
  for (pictures::ManifestLine& line : pictures::ReadManifest(text.Value())) {
    line.picture = pictures::AbsoluteFrom(folder, line.picture);
    const std::string state = line.record.state;
    if (!line.failed) found_.emplace(state, std::move(line));
  }
}

// Of those made from the same, the smallest that is large enough: it costs the least to read.
// Shapes must fit to the pixel, or the picture would be squeezed.
std::optional<engine::Image> FinishedPictures::Find(const PictureRecord& wanted,
                                                    const std::vector<std::string>& settings,
                                                    const PictureSize& size) {
  std::vector<const pictures::ManifestLine*> fitting;
  const auto [begin, end] = found_.equal_range(wanted.state);
  for (auto at = begin; at != end; ++at) {
    const PictureRecord& record = at->second.record;
    const bool isMade = record.scene == wanted.scene && record.program == wanted.program &&
                        std::ranges::find(settings, record.settings) != settings.end();
    const bool isLarger = record.size.width >= size.width && record.size.height >= size.height;
    if (isMade && isLarger && IsSame(FittedInto(record.size, size), size))
      fitting.push_back(&at->second);
  }
  std::ranges::stable_sort(fitting, {}, [](const auto* line) { return line->record.size.width; });
  for (const pictures::ManifestLine* line : fitting) {
    if (auto picture = Read(*line)) return engine::ScaledDown(*picture, size.width, size.height);
  }
  return std::nullopt;
}

// The manifest may be older than the file: the record in the file itself decides, and its mark says
// that nobody changed it.
std::optional<engine::Image> FinishedPictures::Read(const pictures::ManifestLine& line) {
  if (session_.Files().Kind(line.picture) != engine::FileKind::File) return std::nullopt;
  const auto bytes = session_.Files().ReadFile(line.picture, engine::kLargestImageBytes);
  if (!bytes) return std::nullopt;
  const auto record = pictures::FindRecord(bytes.Value());
  if (!record || *record != line.record || publishing::MakerOf(bytes.Value()) != "render")
    return std::nullopt;
  auto image = engine::DecodeImage(bytes.Value());
  return image ? std::optional(image.Take()) : std::nullopt;
}

}  // namespace commandline
