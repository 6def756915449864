// Orders replace each other: a number goes up with each, and the work asks whether its own is still
// wanted. Preparing a scene is asked by the number of the last order with a scene, since a new
// camera needs the same scene; rendering by the number of the last order.
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
    : caches_(caches), passed_(std::move(passed)) {}

// Makes the work that goes on unwanted; the job's own end waits for it.
PictureWorker::~PictureWorker() { sceneNumber_ = ++number_; }

// An order without a scene takes that of the order it replaces, if that was not begun.
void PictureWorker::Work(PictureOrder order) {
  busy_ = !order.size.isEmpty();
  ++number_;
  if (order.scene || order.size.isEmpty()) {
    sceneNumber_ = number_.load();
  } else if (next_) {
    order.scene = std::move(next_->scene);
  }
  next_ = std::make_unique<PictureOrder>(std::move(order));
  if (!job_.IsRunning()) StartNext();
}

// An order that was replaced ends by itself, as it sees that its number is not wanted any more.
void PictureWorker::StartNext() {
  if (!next_) return;
  doing_ = number_;
  const auto work = [this, order = std::shared_ptr<PictureOrder>(std::move(next_))](
                        const BackgroundJob::Control& control) {
    control_ = &control;
    Do(*order);
  };
  job_.Start(work, [this](const std::string& problem) {
    PicturePass failed;
    failed.problem = ToQt(problem);
    failed.isLast = true;
    if (!problem.empty()) Deliver(failed, doing_);
    StartNext();
  });
}

// An empty size frees the scene, on the worker's thread.
void PictureWorker::Do(PictureOrder& order) {
  if (order.size.isEmpty()) {
    scene_.reset();
    return;
  }
  if (order.scene && !Prepare(std::move(*order.scene))) return;
  scene_ ? Render(order) : Fail(problem_);
}

bool PictureWorker::Prepare(engine::ScenePicture scene) {
  scene_.reset();
  const auto isWanted = [&](double) { return sceneNumber_ <= doing_; };
  auto made = engine::PreparedScene::Make(std::move(scene), caches_, isWanted);
  problem_ = made.Message();
  if (made) scene_ = made.Take();
  return isWanted(0);
}

// Framing is done here, where the prepared scene with its outline is.
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

// The map of hits and the outline come with the first pass; later ones only sharpen the picture.
void PictureWorker::Render(const PictureOrder& order) {
  PicturePass pass;
  pass.framing = order.framing;
  pass.isDraft = order.draft;
  pass.marks = order.marks;
  auto begun = engine::PictureInProgress::Begin(scene_, SetupOf(order, pass));
  if (!begun) return Fail(begun.Message());
  engine::PictureInProgress& picture = *begun.Value();
  pass.camera = picture.Camera();
  while (!picture.IsFinished()) {
    if (!picture.Refine([&](double) { return number_ == doing_; })) return;
    pass.image = ToQImage(picture.Current());
    if (!pass.hits) {
      pass.hits = HitsOf(picture, order);
      pass.outline = OutlineImage(*pass.hits, order.marks ? *order.marks : Marks(), order.scale);
    }
    pass.isLast = picture.IsFinished();
    Send(pass);
  }
}

// A draft has fewer pixels than the widget: the map is enlarged, with new rays along the edges of
// what is marked, so that clicks and outline are exact in a draft, too.
std::shared_ptr<const engine::HitMap> PictureWorker::HitsOf(
    const engine::PictureInProgress& picture, const PictureOrder& order) const {
  if (order.hits == order.size) return std::make_shared<const engine::HitMap>(picture.Hits());
  return std::make_shared<const engine::HitMap>(
      engine::Enlarged(picture.Hits(), static_cast<std::uint32_t>(order.hits.width()),
                       static_cast<std::uint32_t>(order.hits.height()),
                       order.marks ? *order.marks : Marks(), scene_->Rays()));
}

void PictureWorker::Fail(const std::string& problem) {
  PicturePass pass;
  pass.problem = ToQt(problem);
  pass.isLast = true;
  Send(std::move(pass));
}

void PictureWorker::Send(PicturePass pass) {
  control_->OnMainThread(
      [this, pass = std::move(pass), number = doing_] { Deliver(pass, number); });
}

// Replaced while it was on its way to the main thread.
void PictureWorker::Deliver(const PicturePass& pass, std::uint64_t number) {
  if (number != number_) return;
  if (pass.isLast) busy_ = false;
  passed_(pass);
}

}  // namespace desktop
