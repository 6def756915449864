// Renderer: one picture of a document, made in passes that refine it, so that a view can show
// something at once and a file gets the finished one. Begin with a document reads it and its
// textures on the thread that owns it; a view that stays alive meanwhile reads with a SceneScan,
// prepares that on another thread and begins there. Afterwards the picture stands on its own. One
// thread at a time calls it; it spreads the work over all cores itself. The same document and setup
// give the same picture bit for bit, whatever the number of threads.
#pragma once

#include <memory>
#include <optional>

#include "engine/render/HitMap.h"
#include "engine/render/PreparedScene.h"
#include "engine/render/Shading.h"

namespace engine {

// Raised with each change after which a document may give other bytes, so that a picture made
// before is not taken for one made after.
inline constexpr int kPictureVersion = 2;

struct PictureSetup {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  SceneReading reading;
  // Looks through this instead of the scene camera. Without either, a camera that frames
  // everything.
  std::optional<PictureCamera> camera;
  unsigned threads = 0;  // 0: one for each core
  // One quick pass and no more: what a view shows while something moves.
  bool draft = false;
  // Takes down what is hit at each pixel.
  bool takesHits = false;
  // Keeps light as bright as it is, for files that hold it: see Light.
  bool isLinear = false;
};

class PictureInProgress {
 public:
  using Begun = Result<std::unique_ptr<PictureInProgress>>;
  // Fails with a message for sizes outside 1..16384 a side or beyond 64 million pixels, when memory
  // is short, and when `progress`, which is asked now and then while a large scene is read and
  // prepared, says no.
  static Begun Begin(const host::BaseDocument& doc, FileSystem& files, const PictureSetup& setup,
                     RenderCaches& caches, const ProgressCallback& progress = {});
  // For a scene that was read and prepared before; any thread. Fails for such sizes and when memory
  // is short.
  static Begun Begin(std::shared_ptr<const PreparedScene> scene, const PictureSetup& setup);
  PictureInProgress(const PictureInProgress&) = delete;
  PictureInProgress& operator=(const PictureInProgress&) = delete;

  // Does the next pass: the first one looks once at each pixel, the second one four times, the last
  // one sixteen times where neighbors differ. `progress` is asked from the calling thread. False
  // when it was stopped; the pass can be taken up again then.
  bool Refine(const ProgressCallback& progress = {});
  bool IsFinished() const { return pass_ == (setup_.draft ? 1 : kPasses); }

  // The picture as it stands: 8-bit sRGB, opaque. Empty before the first pass is through.
  Image Current() const;
  // Current as linear floats: with the full brightness of the light where the setup is linear, else
  // dimmed to what a screen can show.
  Image Light() const;
  // Brings `image`, kept from call to call and empty before the first, up to date with the tiles
  // that were finished since; what is not rendered yet is black. Also from inside `progress`.
  void ShowTiles(Image* image);
  // Filled after the first pass of a setup that takes hits; has the size of the picture.
  const HitMap& Hits() const { return hits_; }
  // The object nearest to the eye at a pixel, 0 for none.
  NodeId ObjectAt(std::uint32_t x, std::uint32_t y) const;
  // The camera that is looked through.
  const PictureCamera& Camera() const { return look_; }
  // Parts of the scene that were left out, and why.
  const std::vector<std::string>& Notes() const { return scene_->Scene().notes; }

 private:
  static constexpr int kPasses = 3;
  static constexpr std::uint32_t kTileSide = 32;

  struct Pixel {
    Vec sum;
    std::uint32_t samples = 0;
  };

  PictureInProgress(std::shared_ptr<const PreparedScene> scene, const PictureSetup& setup);
  void RenderTile(std::uint32_t tile, std::uint32_t samples);
  // Adds the light of the first `count` of the looks to their pixels.
  void TakeLooks(const PerRay<Shading::Look>& looks, std::size_t count);
  // Marks the pixels of the last pass.
  void FindContrasts();
  Vec ColorOf(const Pixel& pixel) const;
  // As a screen shows it.
  Vec ShownColorOf(const Pixel& pixel) const;
  void CopyTile(std::uint32_t tile, Image& image) const;

  std::shared_ptr<const PreparedScene> scene_;
  PictureSetup setup_;
  PictureCamera look_;
  RayCamera camera_;
  Shading shading_;
  std::uint32_t tilesAcross_;
  std::uint32_t tileCount_;
  std::vector<Pixel> pixels_;
  std::vector<std::uint8_t> refined_;  // by pixel: whether the last pass looks at it
  // By tile, 1 when the current pass has finished it, 2 when it was shown; atomic while a pass runs
  std::vector<std::uint8_t> tilesDone_;
  HitMap hits_;
  int pass_ = 0;
};

}  // namespace engine
