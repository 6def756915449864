#include "engine/render/Renderer.h"

#include <new>

#include "engine/render/SceneScan.h"
#include "engine/render/Workers.h"

namespace engine {

namespace {

constexpr std::uint32_t kSamples[] = {1, 4, 16};
// Share of the work that is done before each pass and after the last one, about.
constexpr double kDoneBefore[] = {0, 0.12, 0.5, 1};
// Difference of sRGB bytes between neighbors from which on a pixel is looked at more closely.
constexpr float kContrast = 6.0F / 255;
constexpr std::uint64_t kBytesPerPixel = 16;
constexpr std::size_t kObjectsBetweenAsking = 4096;

// Place of a sample in its pixel on a grid of 4 x 4, so ordered that the first four lie in the four
// quarters.
float SampleX(std::uint32_t i) {
  return (static_cast<float>((i & 1U) * 2 + (i >> 2U & 1U)) + 0.5F) / 4;
}
float SampleY(std::uint32_t i) {
  return (static_cast<float>(((i ^ i >> 1U) & 1U) * 2 + ((i >> 2U ^ i >> 3U) & 1U)) + 0.5F) / 4;
}

// Bends the brightest light toward white instead of cutting it off, and leaves all below alone.
float Shoulder(float light) {
  constexpr float kFrom = 0.8F;
  return light <= kFrom ? light
                        : kFrom + (1 - kFrom) * (1 - std::exp((kFrom - light) / (1 - kFrom)));
}

Vec Bent(Vec light) { return {Shoulder(light.x), Shoulder(light.y), Shoulder(light.z)}; }

// Thresholds of 0..1 that differ from all around (interleaved gradient noise, Jimenez 2014).
float Threshold(std::uint32_t x, std::uint32_t y) {
  const auto fraction = [](float value) { return value - std::floor(value); };
  return fraction(52.9829189F * fraction(0.06711056F * static_cast<float>(x) +
                                         0.00583715F * static_cast<float>(y)));
}

}  // namespace

PictureInProgress::Begun PictureInProgress::Begin(const host::BaseDocument& doc, FileSystem& files,
                                                  const PictureSetup& setup, RenderCaches& caches,
                                                  const ProgressCallback& progress) {
  if (Status size = CheckImageSize(setup.width, setup.height, kBytesPerPixel); !size) return size;
  try {
    SceneScan scan(doc, files, setup.reading, caches);
    while (!scan.Advance(kObjectsBetweenAsking)) {
      if (progress && !progress(0)) return Begun::Failure("It was stopped.");
    }
    auto scene = PreparedScene::Make(
        scan.Take(), caches,
        progress ? ProgressCallback([&](double) { return progress(0); }) : ProgressCallback());
    return scene ? Begin(scene.Take(), setup) : Begun(scene.GetStatus());
  } catch (const std::bad_alloc&) {
    return Begun::Failure("There is not enough memory for the picture.");
  }
}

PictureInProgress::Begun PictureInProgress::Begin(std::shared_ptr<const PreparedScene> scene,
                                                  const PictureSetup& setup) {
  if (Status size = CheckImageSize(setup.width, setup.height, kBytesPerPixel); !size) return size;
  try {
    return std::unique_ptr<PictureInProgress>(new PictureInProgress(std::move(scene), setup));
  } catch (const std::bad_alloc&) {
    return Begun::Failure("There is not enough memory for the picture.");
  }
}

PictureInProgress::PictureInProgress(std::shared_ptr<const PreparedScene> scene,
                                     const PictureSetup& setup)
    : scene_(std::move(scene)),
      setup_(setup),
      look_(setup.camera ? *setup.camera
                         : scene_->UsualCamera(static_cast<double>(setup.width) / setup.height)),
      camera_(look_, setup.width, setup.height),
      shading_(scene_->Scene(), scene_->Rays(), camera_,
               setup.draft ? ShadingDetail::Quick : ShadingDetail::Full),
      tilesAcross_((setup.width + kTileSide - 1) / kTileSide),
      tileCount_(tilesAcross_ * ((setup.height + kTileSide - 1) / kTileSide)),
      pixels_(static_cast<std::size_t>(setup.width) * setup.height),
      tilesDone_(tileCount_, 0),
      hits_{setup.width, setup.height, look_, {}, {}, scene_->Objects()} {
  if (!setup.takesHits) return;
  hits_.instances.resize(pixels_.size());
  hits_.distances.resize(pixels_.size());
}

bool PictureInProgress::Refine(const ProgressCallback& progress) {
  if (IsFinished()) return true;
  std::atomic<std::uint32_t> next{0};
  std::atomic<std::uint32_t> done{0};
  std::atomic<bool> stopped{false};
  const double before = kDoneBefore[pass_];
  const double whole = kDoneBefore[pass_ + 1] - before;
  const auto continues = [&] {
    return !progress || progress(before + whole * done.load() / tileCount_);
  };
  if (!continues()) return false;
  const auto work = [&](bool isCaller) {
    while (!stopped.load()) {
      if (isCaller && !continues()) stopped.store(true);
      const std::uint32_t tile = next.fetch_add(1);
      if (stopped.load() || tile >= tileCount_) return;
      // A tile that an interrupted pass has finished already.
      std::atomic_ref isDone(tilesDone_[tile]);
      if (isDone.load(std::memory_order_relaxed) == 0) {
        RenderTile(tile, kSamples[pass_]);
        isDone.store(1, std::memory_order_release);
      }
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

// Which looks are taken together depends on nothing but the tile, or threads would show in the
// picture.
void PictureInProgress::RenderTile(std::uint32_t tile, std::uint32_t samples) {
  const std::uint32_t left = tile % tilesAcross_ * kTileSide;
  const std::uint32_t top = tile / tilesAcross_ * kTileSide;
  PerRay<Shading::Look> looks;
  std::size_t count = 0;
  for (std::uint32_t y = top; y < std::min(top + kTileSide, setup_.height); ++y) {
    for (std::uint32_t x = left; x < std::min(left + kTileSide, setup_.width); ++x) {
      const std::uint32_t index = y * setup_.width + x;
      if (!refined_.empty() && !refined_[index]) continue;
      for (std::uint32_t i = pixels_[index].samples; i < samples; ++i) {
        looks[count++] = {static_cast<float>(x) + SampleX(i), static_cast<float>(y) + SampleY(i),
                          index, i};
        if (count < looks.size()) continue;
        TakeLooks(looks, count);
        count = 0;
      }
    }
  }
  TakeLooks(looks, count);
}

void PictureInProgress::TakeLooks(const PerRay<Shading::Look>& looks, std::size_t count) {
  PerRay<FirstHit> first;
  const PerRay<Vec> light = shading_.LightAt(looks, count, &first);
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint32_t index = looks[i].pixel;
    if (looks[i].sample == 0 && setup_.takesHits && first[i].instance) {
      hits_.instances[index] = 1 + scene_->Rays().IndexOf(*first[i].instance);
      hits_.distances[index] = first[i].distance;
    }
    // Each sample counts as what a screen can show, or one bright spot would leave stairs around
    // it.
    pixels_[index].sum += setup_.isLinear ? light[i] : Bent(light[i]);
    ++pixels_[index].samples;
  }
}

Vec PictureInProgress::ColorOf(const Pixel& pixel) const {
  return pixel.sum * (1.0F / static_cast<float>(pixel.samples));
}

Vec PictureInProgress::ShownColorOf(const Pixel& pixel) const {
  return setup_.isLinear ? Bent(ColorOf(pixel)) : ColorOf(pixel);
}

void PictureInProgress::FindContrasts() {
  const std::size_t width = setup_.width;
  refined_.assign(pixels_.size(), 0);
  const auto compare = [&](std::size_t a, Vec shadeA, std::size_t b, Vec shadeB) {
    const Vec d = shadeA - shadeB;
    if (std::max({std::abs(d.x), std::abs(d.y), std::abs(d.z)}) > kContrast)
      refined_[a] = refined_[b] = 1;
  };
  // Of a row and the one above it: each pixel is looked at once.
  std::vector<Vec> above(width);
  std::vector<Vec> row(width);
  for (std::size_t y = 0; y < setup_.height; ++y, std::swap(above, row)) {
    for (std::size_t x = 0; x < width; ++x) {
      const std::size_t here = y * width + x;
      const Vec c = ShownColorOf(pixels_[here]);
      row[x] = {std::sqrt(std::max(0.0F, c.x)), std::sqrt(std::max(0.0F, c.y)),
                std::sqrt(std::max(0.0F, c.z))};
      if (x > 0) compare(here, row[x], here - 1, row[x - 1]);
      if (y > 0) compare(here, row[x], here - width, above[x]);
    }
  }
}

namespace {

void PutPixel(Vec color, float threshold, std::uint8_t* to) {
  for (const float light : {color.x, color.y, color.z}) *to++ = LinearToSrgb(light, threshold);
  *to = 255;
}

}  // namespace

Image PictureInProgress::Current() const {
  if (pass_ == 0) return {};
  Image image{setup_.width, setup_.height, {}, {}};
  image.bytes.resize(pixels_.size() * 4);
  for (std::uint32_t tile = 0; tile < tileCount_; ++tile) CopyTile(tile, image);
  return image;
}

Image PictureInProgress::Light() const {
  if (pass_ == 0) return {};
  Image image{setup_.width, setup_.height, {}, {}};
  image.floats.reserve(pixels_.size() * 4);
  for (const Pixel& pixel : pixels_) {
    const Vec color = ColorOf(pixel);
    image.floats.insert(image.floats.end(), {color.x, color.y, color.z, 1.0F});
  }
  return image;
}

void PictureInProgress::ShowTiles(Image* image) {
  if (image->bytes.empty()) {
    *image = {setup_.width, setup_.height, {}, {}};
    image->bytes.resize(pixels_.size() * 4);
  }
  for (std::uint32_t tile = 0; tile < tileCount_; ++tile) {
    std::atomic_ref done(tilesDone_[tile]);
    if (done.load(std::memory_order_acquire) != 1) continue;
    CopyTile(tile, *image);
    done.store(2, std::memory_order_relaxed);
  }
}

void PictureInProgress::CopyTile(std::uint32_t tile, Image& image) const {
  const std::uint32_t left = tile % tilesAcross_ * kTileSide;
  const std::uint32_t top = tile / tilesAcross_ * kTileSide;
  for (std::uint32_t y = top; y < std::min(top + kTileSide, setup_.height); ++y) {
    for (std::uint32_t x = left; x < std::min(left + kTileSide, setup_.width); ++x) {
      const std::size_t index = static_cast<std::size_t>(y) * setup_.width + x;
      PutPixel(ShownColorOf(pixels_[index]), Threshold(x, y), &image.bytes[index * 4]);
    }
  }
}

NodeId PictureInProgress::ObjectAt(std::uint32_t x, std::uint32_t y) const {
  const Ray ray = camera_.Through(static_cast<float>(x) + 0.5F, static_cast<float>(y) + 0.5F);
  SurfaceHit surface;
  return scene_->Rays().FindVisible(ray, camera_, &surface) ? surface.instance->object : 0;
}

}  // namespace engine
