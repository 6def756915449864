// PictureWorker: prepares scenes and renders pictures of them, each order a background job, and
// hands each pass to the main thread. It owns the scene it works on, also its end: freeing a large
// one takes time, too. A new order takes the place of the old one. Called from the main thread.
#pragma once

#include <QImage>
#include <atomic>
#include <functional>
#include <memory>

#include "engine/render/Renderer.h"
#include "program/desktop/background/BackgroundJob.h"

namespace desktop {

// By instance of a scene: 1 where it is selected.
using Marks = std::vector<std::uint8_t>;

enum class Framing { None, All, Selection };

struct PictureOrder {
  std::unique_ptr<engine::ScenePicture> scene;  // null: the scene of the order before
  // Size in pixels; empty: the scene is not needed any more
  QSize size;
  QSize hits;  // size of the map of what is hit
  // Pixels of the screen for a plain one, for the width of lines
  double scale = 1;
  std::optional<engine::PictureCamera> camera;  // none: one that frames everything
  Framing framing = Framing::None;              // moves the camera so that it shows all of this
  bool draft = false;
  // Marks of the scene; their outline is exact in the map also of a draft
  std::shared_ptr<const Marks> marks;
};

struct PicturePass {
  QImage image;  // null when it failed
  QString problem;
  std::shared_ptr<const engine::HitMap> hits;
  std::shared_ptr<const Marks> marks;
  QImage outline;  // of the marks
  engine::PictureCamera camera;
  engine::Box bounds;  // of what was framed, or of everything
  Framing framing = Framing::None;
  bool isDraft = false;
  bool isLast = false;
};

class PictureWorker {
 public:
  // `passed`: called on the main thread after each pass; never with a pass of an order that was
  // replaced.
  PictureWorker(engine::RenderCaches& caches, std::function<void(const PicturePass&)> passed);
  PictureWorker(const PictureWorker&) = delete;
  PictureWorker& operator=(const PictureWorker&) = delete;
  ~PictureWorker();

  void Work(PictureOrder order);
  bool IsBusy() const { return busy_; }

 private:
  void StartNext();
  // Of the job: this and all that it calls, to Send.
  void Do(PictureOrder& order);
  // False when a newer scene is wanted.
  bool Prepare(engine::ScenePicture scene);
  void Render(const PictureOrder& order);
  engine::PictureSetup SetupOf(const PictureOrder& order, PicturePass& pass) const;
  std::shared_ptr<const engine::HitMap> HitsOf(const engine::PictureInProgress& picture,
                                               const PictureOrder& order) const;
  void Fail(const std::string& problem);
  void Send(PicturePass pass);
  void Deliver(const PicturePass& pass, std::uint64_t number);

  engine::RenderCaches& caches_;
  std::function<void(const PicturePass&)> passed_;
  std::shared_ptr<const engine::PreparedScene> scene_;  // the job's
  std::string problem_;                                 // the job's: why there is no scene
  const BackgroundJob::Control* control_ = nullptr;     // the job's
  std::uint64_t doing_ = 0;                             // number of the order that the job does
  std::unique_ptr<PictureOrder> next_;
  std::atomic<std::uint64_t> number_{0};       // of the order that is wanted
  std::atomic<std::uint64_t> sceneNumber_{0};  // of the newest order with a scene
  bool busy_ = false;
  BackgroundJob job_{"the picture"};  // last: it ends before what it uses
};

}  // namespace desktop
