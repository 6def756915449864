// RenderJob: renders one scene that was read as a background job, and tells the main thread how far
// it is. It holds nothing of the document. Destroying it stops the work. Called from the main
// thread.
#pragma once

#include <QImage>
#include <functional>
#include <memory>

#include "engine/render/Renderer.h"
#include "program/desktop/background/BackgroundJob.h"

namespace desktop {

struct RenderNews {
  double done = 0;  // share of the whole work
  int pass = 0;     // 1 the first of `passes`; 0 while the scene is prepared
  int passes = 0;
  QImage image;  // as it stands; null while there is nothing new to see
  bool ended = false;
  bool stopped = false;
  // Why there is no picture, when it ended without one
  std::string problem;
  // With the first picture: what of the scene was left out
  std::vector<std::string> notes;
  // When it ended: the picture as far as it was made, null without a whole pass
  std::shared_ptr<const engine::Image> picture;
};

class RenderJob {
 public:
  // `news`: called on the main thread, some times a second, and when it ended. `shows`: whether
  // pictures on the way are wanted.
  RenderJob(engine::ScenePicture scene, const engine::PictureSetup& setup,
            engine::RenderCaches& caches, bool shows, std::function<void(const RenderNews&)> news);

  // Ends it soon; the news that follow say so.
  void Stop() { job_.Stop(); }

 private:
  std::function<void(const RenderNews&)> news_;
  BackgroundJob job_{"the picture"};  // last: it ends before what it tells
};

// The image for a widget, with pixels of its own.
QImage ToQImage(const engine::Image& image);
// ToQImage without a copy; the image lives as long as the result.
QImage Viewed(std::shared_ptr<const engine::Image> image);

}  // namespace desktop
