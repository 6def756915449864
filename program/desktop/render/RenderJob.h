// RenderJob: renders one scene that was read, on a thread of its own, and tells the main thread how
// far it is. It holds nothing of the document. Destroying it stops the work. Called from the main
// thread.
#pragma once

#include <QImage>
#include <QObject>
#include <atomic>
#include <functional>
#include <memory>
#include <thread>

#include "engine/render/Renderer.h"

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

class RenderJob : public QObject {
 public:
  // `news`: called on the main thread, some times a second, and when it ended. `shows`: whether
  // pictures on the way are wanted.
  RenderJob(engine::ScenePicture scene, const engine::PictureSetup& setup,
            engine::RenderCaches& caches, bool shows, std::function<void(const RenderNews&)> news);
  ~RenderJob() override;

  // Ends it soon; the news that follow say so.
  void Stop() { stops_ = true; }

 private:
  void Run(engine::ScenePicture scene);
  void Render(engine::PictureInProgress& picture);
  bool Tell(engine::PictureInProgress& picture, double done, int pass);
  void End(RenderNews news);
  void Send(RenderNews news);

  engine::PictureSetup setup_;
  engine::RenderCaches& caches_;
  bool shows_;
  std::function<void(const RenderNews&)> news_;
  std::atomic<bool> stops_{false};
  engine::Image shown_;                           // the thread's
  std::chrono::steady_clock::time_point toldAt_;  // the thread's
  std::thread thread_;
};

// The image for a widget, with pixels of its own.
QImage ToQImage(const engine::Image& image);
// The same without a copy; the image lives as long as it.
QImage Viewed(std::shared_ptr<const engine::Image> image);

}  // namespace desktop
