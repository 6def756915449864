// Renderer: one picture of a document, made in passes that refine it, so that a view can show something at once and a file gets
// the finished one. Begin reads the document and needs the thread that owns it; afterwards the picture stands on its own. One
// thread at a time calls it; it spreads the work over all cores itself. The same document and setup give the same picture bit for
// bit, whatever the number of threads.
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "engine/render/Shading.h"

namespace engine {

struct PictureSetup {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  SceneReading reading;
  // Looks through this instead of the scene camera. Without either, a camera that frames everything.
  std::optional<PictureCamera> camera;
  unsigned threads = 0;  // 0: one for each core
  // One quick pass and no more: what a view shows while something moves.
  bool draft = false;
};

class PictureInProgress {
 public:
  // Fails with a message for sizes outside 1..16384 a side or beyond 64 million pixels, and when memory is short.
  static Result<std::unique_ptr<PictureInProgress>> Begin(const host::BaseDocument& doc, const PictureSetup& setup,
                                                          RenderCaches& caches);
  PictureInProgress(const PictureInProgress&) = delete;
  PictureInProgress& operator=(const PictureInProgress&) = delete;

  // Asked now and then, from the calling thread, with the share of the whole work that is done, 0..1; false stops.
  using GoOn = std::function<bool(double)>;

  // Does the next pass: the first one looks once at each pixel, the second one four times, the last one sixteen times where
  // neighbours differ. False when it was stopped; the pass can be taken up again then.
  bool Refine(const GoOn& goOn = {});
  bool IsFinished() const { return pass_ == (setup_.draft ? 1 : kPasses); }

  // The picture as it stands: 8-bit sRGB, opaque. Empty before the first pass is through.
  Image Current() const;
  // The object nearest to the eye at a pixel, 0 for none.
  NodeId ObjectAt(std::uint32_t x, std::uint32_t y) const;
  // The camera that is looked through.
  const PictureCamera& Camera() const { return scene_.camera; }
  const Box& Bounds() const { return scene_.bounds; }
  // What of the scene was left out and why.
  const std::vector<std::string>& Notes() const { return scene_.notes; }

 private:
  static constexpr int kPasses = 3;
  static constexpr std::uint32_t kTileSide = 32;

  struct Pixel {
    Vec sum;
    std::uint32_t samples = 0;
  };

  PictureInProgress(ScenePicture scene, const PictureSetup& setup, RTCDevice device);
  void RenderTile(std::uint32_t tile, std::uint32_t samples);
  void RenderPixel(std::uint32_t x, std::uint32_t y, std::uint32_t samples);
  // Marks the pixels of the last pass.
  void FindContrasts();
  Vec ColorOf(const Pixel& pixel) const;

  ScenePicture scene_;
  PictureSetup setup_;
  RayCamera camera_;
  RayScene rays_;
  Shading shading_;
  std::uint32_t tilesAcross_;
  std::uint32_t tileCount_;
  std::vector<Pixel> pixels_;
  std::vector<std::uint8_t> refined_;    // by pixel: whether the last pass looks at it
  std::vector<std::uint8_t> tilesDone_;  // of the current pass
  int pass_ = 0;
};

}  // namespace engine
