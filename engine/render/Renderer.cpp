#include "engine/render/Renderer.h"

#include <atomic>
#include <new>
#include <thread>

namespace engine {

namespace {

constexpr std::uint32_t kSamples[] = {1, 4, 16};
// Share of the work that is done after each pass, about.
constexpr double kDoneBefore[] = {0, 0.12, 0.5};
constexpr double kDoneAfter[] = {0.12, 0.5, 1};
// Difference of sRGB bytes between neighbours from which on a pixel is looked at more closely.
constexpr float kContrast = 6.0F / 255;
constexpr std::uint64_t kBytesPerPixel = 16;

// Place of a sample in its pixel on a grid of 4 x 4, so ordered that the first four lie in the four quarters.
float SampleX(std::uint32_t i) { return (static_cast<float>((i & 1U) * 2 + (i >> 2U & 1U)) + 0.5F) / 4; }
float SampleY(std::uint32_t i) { return (static_cast<float>(((i ^ i >> 1U) & 1U) * 2 + ((i >> 2U ^ i >> 3U) & 1U)) + 0.5F) / 4; }

// Bends the brightest light toward white instead of cutting it off, and leaves all below alone.
float Shoulder(float light) {
  constexpr float kFrom = 0.8F;
  return light <= kFrom ? light : kFrom + (1 - kFrom) * (1 - std::exp((kFrom - light) / (1 - kFrom)));
}

// Thresholds of 0..1 that differ from all around (interleaved gradient noise, Jimenez 2014).
float Threshold(std::uint32_t x, std::uint32_t y) {
  const auto fraction = [](float value) { return value - std::floor(value); };
  return fraction(52.9829189F * fraction(0.06711056F * static_cast<float>(x) + 0.00583715F * static_cast<float>(y)));
}

unsigned CoreCount(unsigned asked) { return asked > 0 ? asked : std::max(1U, std::thread::hardware_concurrency()); }

// Runs `work` on that many threads, the calling one among them; fewer when the system has no more.
template <class Work>
void OnThreads(unsigned count, const Work& work) {
  std::vector<std::thread> others;
  try {
    for (unsigned i = 1; i < count; ++i) others.emplace_back([&work] { work(false); });
  } catch (const std::system_error&) {
    // The others take the whole work over.
  }
  work(true);
  for (std::thread& other : others) other.join();
}

}  // namespace

Result<std::unique_ptr<PictureInProgress>> PictureInProgress::Begin(const host::BaseDocument& doc, const PictureSetup& setup,
                                                                    RenderCaches& caches) {
  using Answer = Result<std::unique_ptr<PictureInProgress>>;
  if (Status size = CheckImageSize(setup.width, setup.height, kBytesPerPixel); !size) return size;
  if (!caches.Device()) return Answer::Failure("The ray tracer could not be started.");
  try {
    ScenePicture scene = ReadScene(doc, setup.reading, caches);
    if (setup.camera) {
      scene.camera = *setup.camera;
    } else if (!scene.hasSceneCamera) {
      scene.camera = FramingCamera(OutlineOf(scene), static_cast<double>(setup.width) / setup.height);
    }
    std::unique_ptr<PictureInProgress> picture(new PictureInProgress(std::move(scene), setup, caches.Device()));
    if (caches.TakeError()) return Answer::Failure("There is not enough memory for the geometry of the scene.");
    return picture;
  } catch (const std::bad_alloc&) {
    return Answer::Failure("There is not enough memory for the picture.");
  }
}

PictureInProgress::PictureInProgress(ScenePicture scene, const PictureSetup& setup, RTCDevice device)
    : scene_(std::move(scene)),
      setup_(setup),
      camera_(scene_.camera, setup.width, setup.height),
      rays_(scene_, device),
      shading_(scene_, rays_, camera_, setup.draft ? ShadingDetail::Quick : ShadingDetail::Full),
      tilesAcross_((setup.width + kTileSide - 1) / kTileSide),
      tileCount_(tilesAcross_ * ((setup.height + kTileSide - 1) / kTileSide)),
      pixels_(static_cast<std::size_t>(setup.width) * setup.height),
      tilesDone_(tileCount_, 0) {}

bool PictureInProgress::Refine(const GoOn& goOn) {
  if (IsFinished()) return true;
  std::atomic<std::uint32_t> next{0};
  std::atomic<std::uint32_t> done{0};
  std::atomic<bool> stopped{false};
  const double before = kDoneBefore[pass_];
  const double whole = kDoneAfter[pass_] - before;
  const auto mayGoOn = [&] { return !goOn || goOn(before + whole * done.load() / tileCount_); };
  if (!mayGoOn()) return false;
  const auto work = [&](bool isCaller) {
    while (!stopped.load()) {
      if (isCaller && !mayGoOn()) stopped.store(true);
      const std::uint32_t tile = next.fetch_add(1);
      if (stopped.load() || tile >= tileCount_) return;
      if (!tilesDone_[tile]) RenderTile(tile, kSamples[pass_]);
      tilesDone_[tile] = 1;
      ++done;
    }
  };
  OnThreads(std::min(CoreCount(setup_.threads), tileCount_), work);
  if (done.load() < tileCount_) return false;
  std::fill(tilesDone_.begin(), tilesDone_.end(), std::uint8_t{0});
  ++pass_;
  if (pass_ == kPasses - 1) FindContrasts();
  return true;
}

void PictureInProgress::RenderTile(std::uint32_t tile, std::uint32_t samples) {
  const std::uint32_t left = tile % tilesAcross_ * kTileSide;
  const std::uint32_t top = tile / tilesAcross_ * kTileSide;
  for (std::uint32_t y = top; y < std::min(top + kTileSide, setup_.height); ++y) {
    for (std::uint32_t x = left; x < std::min(left + kTileSide, setup_.width); ++x) RenderPixel(x, y, samples);
  }
}

void PictureInProgress::RenderPixel(std::uint32_t x, std::uint32_t y, std::uint32_t samples) {
  const std::size_t index = static_cast<std::size_t>(y) * setup_.width + x;
  if (!refined_.empty() && !refined_[index]) return;
  Pixel& pixel = pixels_[index];
  for (; pixel.samples < samples; ++pixel.samples) {
    const float px = static_cast<float>(x) + SampleX(pixel.samples);
    const float py = static_cast<float>(y) + SampleY(pixel.samples);
    const Vec light = shading_.LightAt(px, py, static_cast<std::uint32_t>(index), pixel.samples);
    // Each sample counts as what a screen can show, or one bright spot would leave stairs around it.
    pixel.sum += Vec{Shoulder(light.x), Shoulder(light.y), Shoulder(light.z)};
  }
}

Vec PictureInProgress::ColorOf(const Pixel& pixel) const { return pixel.sum * (1.0F / static_cast<float>(pixel.samples)); }

void PictureInProgress::FindContrasts() {
  const std::size_t width = setup_.width;
  const auto shade = [&](std::size_t index) {
    const Vec c = ColorOf(pixels_[index]);
    return Vec{std::sqrt(std::max(0.0F, c.x)), std::sqrt(std::max(0.0F, c.y)), std::sqrt(std::max(0.0F, c.z))};
  };
  refined_.assign(pixels_.size(), 0);
  const auto compare = [&](std::size_t a, std::size_t b) {
    const Vec d = shade(a) - shade(b);
    if (std::max({std::abs(d.x), std::abs(d.y), std::abs(d.z)}) > kContrast) refined_[a] = refined_[b] = 1;
  };
  for (std::size_t y = 0; y < setup_.height; ++y) {
    for (std::size_t x = 0; x < width; ++x) {
      const std::size_t here = y * width + x;
      if (x + 1 < width) compare(here, here + 1);
      if (y + 1 < setup_.height) compare(here, here + width);
    }
  }
}

Image PictureInProgress::Current() const {
  if (pass_ == 0) return {};
  Image image{setup_.width, setup_.height, {}, {}};
  image.bytes.resize(pixels_.size() * 4);
  std::uint8_t* to = image.bytes.data();
  const Pixel* pixel = pixels_.data();
  for (std::uint32_t y = 0; y < setup_.height; ++y) {
    for (std::uint32_t x = 0; x < setup_.width; ++x) {
      const Vec c = ColorOf(*pixel++);
      const float threshold = Threshold(x, y);
      for (const float light : {c.x, c.y, c.z}) *to++ = LinearToSrgb(light, threshold);
      *to++ = 255;
    }
  }
  return image;
}

NodeId PictureInProgress::ObjectAt(std::uint32_t x, std::uint32_t y) const {
  const Ray ray = camera_.Through(static_cast<float>(x) + 0.5F, static_cast<float>(y) + 0.5F);
  Finding finding;
  return rays_.FindVisible(ray, camera_, &finding) ? finding.instance->object : 0;
}

}  // namespace engine
