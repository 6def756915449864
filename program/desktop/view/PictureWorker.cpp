#include "program/desktop/view/PictureWorker.h"

#include "program/desktop/Text.h"
#include "program/desktop/render/RenderJob.h"
#include "program/desktop/view/Outline.h"

namespace desktop {

namespace {

engine::Box BoxOf(const std::vector<engine::Vec>& points) {
  engine::Box box;
  for (const engine::Vec& point : points) box.Add(point);
  return box;
}

}  // namespace

PictureWorker::PictureWorker(engine::RenderCaches& caches,
                             std::function<void(const PicturePass&)> passed)
    : caches_(caches), passed_(std::move(passed)), thread_([this] { Run(); }) {}

PictureWorker::~PictureWorker() {
  {
    const std::lock_guard lock(mutex_);
    ends_ = true;
    ++number_;
    ++sceneNumber_;
  }
  news_.notify_one();
  thread_.join();
}

void PictureWorker::Work(PictureOrder order) {
  busy_ = !order.size.isEmpty();
  {
    const std::lock_guard lock(mutex_);
    ++number_;
    if (order.scene || order.size.isEmpty()) {
      sceneNumber_ = number_.load();
    } else if (next_) {
      order.scene = std::move(next_->scene);
    }
    next_ = std::make_unique<PictureOrder>(std::move(order));
  }
  news_.notify_one();
}

void PictureWorker::Run() {
  std::unique_lock lock(mutex_);
  for (;;) {
    news_.wait(lock, [this] { return ends_ || next_; });
    if (ends_) return;
    const auto order = std::move(next_);
    const std::uint64_t number = number_;
    lock.unlock();
    Do(*order, number);
    lock.lock();
  }
}

void PictureWorker::Do(PictureOrder& order, std::uint64_t number) {
  if (order.size.isEmpty()) {
    scene_.reset();
    return;
  }
  try {
    if (order.scene && !Prepare(std::move(*order.scene), number)) return;
    scene_ ? Render(order, number) : Fail(problem_, number);
  } catch (const std::bad_alloc&) {
    Fail("There is not enough memory for the picture.", number);
  }
}

bool PictureWorker::Prepare(engine::ScenePicture scene, std::uint64_t number) {
  scene_.reset();
  const auto isWanted = [&](double) { return sceneNumber_ <= number; };
  auto made = engine::PreparedScene::Make(std::move(scene), caches_, isWanted);
  problem_ = made.Message();
  if (made) scene_ = made.Take();
  return isWanted(0);
}

engine::PictureSetup PictureWorker::SetupOf(const PictureOrder& order, PicturePass& pass) const {
  engine::PictureSetup setup;
  setup.width = static_cast<std::uint32_t>(order.size.width());
  setup.height = static_cast<std::uint32_t>(order.size.height());
  setup.draft = order.draft;
  setup.takesHits = true;
  setup.camera = order.camera;
  pass.bounds = scene_->Scene().bounds;
  if (order.framing == Framing::None && order.camera) return setup;
  const bool some = order.framing == Framing::Selection && order.marks &&
                    order.marks->size() == scene_->Objects()->size();
  const auto points = engine::OutlineOf(scene_->Scene(), some ? order.marks.get() : nullptr);
  const double aspect = static_cast<double>(setup.width) / setup.height;
  setup.camera = order.camera ? engine::FramingCameraLike(*order.camera, points, aspect)
                              : engine::FramingCamera(points, aspect);
  pass.bounds = BoxOf(points);
  return setup;
}

void PictureWorker::Render(const PictureOrder& order, std::uint64_t number) {
  PicturePass pass;
  pass.framing = order.framing;
  pass.isDraft = order.draft;
  pass.marks = order.marks;
  auto begun = engine::PictureInProgress::Begin(scene_, SetupOf(order, pass));
  if (!begun) return Fail(begun.Message(), number);
  engine::PictureInProgress& picture = *begun.Value();
  pass.camera = picture.Camera();
  while (!picture.IsFinished()) {
    if (!picture.Refine([&](double) { return number_ == number; })) return;
    pass.image = ToQImage(picture.Current());
    if (!pass.hits) {
      pass.hits = HitsOf(picture, order);
      pass.outline = OutlineImage(*pass.hits, order.marks ? *order.marks : Marks(), order.scale);
    }
    pass.isLast = picture.IsFinished();
    Send(pass, number);
  }
}

std::shared_ptr<const engine::HitMap> PictureWorker::HitsOf(
    const engine::PictureInProgress& picture, const PictureOrder& order) const {
  if (order.hits == order.size) return std::make_shared<const engine::HitMap>(picture.Hits());
  return std::make_shared<const engine::HitMap>(
      engine::Enlarged(picture.Hits(), static_cast<std::uint32_t>(order.hits.width()),
                       static_cast<std::uint32_t>(order.hits.height()),
                       order.marks ? *order.marks : Marks(), scene_->Rays()));
}

void PictureWorker::Fail(const std::string& problem, std::uint64_t number) {
  PicturePass pass;
  pass.problem = ToQt(problem);
  pass.isLast = true;
  Send(std::move(pass), number);
}

void PictureWorker::Send(PicturePass pass, std::uint64_t number) {
  QMetaObject::invokeMethod(
      this, [this, pass = std::move(pass), number] { Deliver(pass, number); },
      Qt::QueuedConnection);
}

void PictureWorker::Deliver(const PicturePass& pass, std::uint64_t number) {
  if (number != number_) return;
  if (pass.isLast) busy_ = false;
  passed_(pass);
}

}  // namespace desktop
