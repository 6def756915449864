// A picture of each material that somebody asks for, rendered one after the other on a background
// job from a tiny scene of its own. Asking answers at once with what there is and orders what is
// missing or out of date; the last order comes first, because it is what a person has just scrolled
// to.
#include "program/desktop/panels/MaterialThumbnails.h"

#include <QPainter>
#include <QPainterPath>
#include <QTimer>
#include <algorithm>
#include <cmath>
#include <memory>

#include "engine/render/SceneScan.h"
#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/Ownership.h"
#include "engine/scene/TreeWalk.h"
#include "host/Parameters.h"

namespace desktop {

namespace {

// Scene units; angles in radians.
constexpr double kRadius = 100;
constexpr double kDistance = 400;
constexpr double kPitch = 0.22;
constexpr double kTurn = 0.5;

void AddBall(host::BaseDocument& doc, host::BaseMaterial* material) {
  host::BaseObject* ball = host::BaseObject::Alloc(host::Osphere);
  ball->GetDataInstance()->SetReal(host::PRIM_RADIUS, kRadius);
  ball->GetDataInstance()->SetLong(host::PRIM_SEGMENTS, 64);
  auto* tag = static_cast<host::TextureTag*>(ball->MakeTag(host::Ttexture));
  doc.AppendObject(ball);
  tag->SetMaterial(material);
}

// A tiny document with a ball that has one material. It has a copy of the material and shares
// textures with the document.
class MaterialPreviewScene {
 public:
  // `material` is one of `doc`.
  MaterialPreviewScene(const host::BaseDocument& doc, host::BaseMaterial& material);

  const host::BaseDocument& Document() const { return *doc_; }
  // A camera that sees the ball from side to side in a square picture.
  static engine::PictureCamera Camera();

 private:
  engine::OwnedDocument doc_;
};

// With the path of the document, from which its textures are found, and what is embedded in it.
MaterialPreviewScene::MaterialPreviewScene(const host::BaseDocument& doc,
                                           host::BaseMaterial& material)
    : doc_(host::BaseDocument::Alloc()) {
  doc_->SetDocumentPath(doc.GetDocumentPath());
  engine::SetEmbeddedFiles(*doc_, engine::EmbeddedFilesOf(doc));
  host::BaseMaterial* copy = engine::AsMaterial(material.GetClone(0, nullptr));
  if (copy) doc_->AppendMaterial(copy);
  AddBall(*doc_, copy);
}

// An orthonormal frame that looks down at the ball from the right; parallel, so that the ball is a
// circle which just fills the picture.
engine::PictureCamera MaterialPreviewScene::Camera() {
  engine::PictureCamera camera;
  const double up = std::sin(kPitch), flat = std::cos(kPitch);
  const double across = std::sin(kTurn), along = std::cos(kTurn);
  camera.frame.v1 = {along, 0, across};
  camera.frame.v3 = {-across * flat, -up, along * flat};
  camera.frame.v2 = {-across * up, flat, along * up};
  camera.frame.off = {across * flat * kDistance, up * kDistance, -along * flat * kDistance};
  camera.isParallel = true;
  camera.width = 2 * kRadius;
  return camera;
}

// All are forgotten beyond this many; those that can be seen are made again.
constexpr std::size_t kMostThumbnails = 3000;

// Of the material and all shaders below it.
std::vector<host::BaseContainer> ParametersOf(const host::BaseMaterial& material) {
  std::vector<host::BaseContainer> all;
  for (const host::GeListNode* node = &material; node; node = engine::NextInside(*node, material)) {
    all.push_back(*static_cast<const host::BaseList2D*>(node)->GetDataInstance());
  }
  return all;
}

// By the address of the shared contents: whatever is written gets another one. That may order a
// picture in vain, never miss one.
bool AreSame(const std::vector<host::BaseContainer>& a, const std::vector<host::BaseContainer>& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](const host::BaseContainer& x, const host::BaseContainer& y) {
                      return engine::BodyOf(x) == engine::BodyOf(y);
                    });
}

using Picture = std::unique_ptr<engine::PictureInProgress>;

// Null when it was stopped or memory is short.
Picture Render(engine::ScenePicture scene, std::uint32_t side, engine::RenderCaches& caches,
               const engine::ProgressCallback& progress) {
  auto prepared = engine::PreparedScene::Make(std::move(scene), caches, progress);
  if (!prepared) return nullptr;
  engine::PictureSetup setup;
  setup.width = setup.height = side;
  setup.camera = MaterialPreviewScene::Camera();
  // The picture of the scene needs the others.
  setup.threads = 1;
  auto begun = engine::PictureInProgress::Begin(prepared.Take(), setup);
  if (!begun) return nullptr;
  while (!begun.Value()->IsFinished()) {
    if (!begun.Value()->Refine(progress)) return nullptr;
  }
  return begun.Take();
}

// The ball without what is around it.
QImage CutOut(const engine::Image& image) {
  const int side = static_cast<int>(image.width);
  const QImage all(image.bytes.data(), side, side, qsizetype{4} * side, QImage::Format_RGBX8888);
  QImage ball(side, side, QImage::Format_ARGB32_Premultiplied);
  ball.fill(Qt::transparent);
  QPainter painter(&ball);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(QBrush(all));
  painter.drawEllipse(QRectF(0.5, 0.5, side - 1, side - 1));
  return ball;
}

}  // namespace

MaterialThumbnails::MaterialThumbnails(const engine::Services& services,
                                       engine::RenderCaches& caches)
    : files_(services.files),
      person_(services.person),
      caches_(caches),
      job_("the picture of a material") {}

void MaterialThumbnails::Listen(QObject* listener, std::function<void(engine::NodeId)> ready) {
  listeners_.emplace_back(listener, std::move(ready));
}

// `scale`: pixels of the screen for each of the widget. A material that changes keeps its old
// picture until the new one is made.
QPixmap MaterialThumbnails::Of(host::BaseMaterial& material, double scale) {
  if (thumbnails_.size() > kMostThumbnails) thumbnails_.clear();
  const Key key(IdentityOf(material.GetDocument()), engine::IdOf(material));
  Thumbnail& thumbnail = thumbnails_[key];
  auto parameters = ParametersOf(material);
  if (thumbnail.scale != scale || !AreSame(parameters, thumbnail.parameters)) {
    thumbnail.scale = scale;
    thumbnail.parameters = std::move(parameters);
    wanted_.push_back(key);
    QTimer::singleShot(0, &job_, [this] { MakeNext(); });
  }
  return thumbnail.picture;
}

// For textures that have changed on the disk: the next one who asks orders it.
void MaterialThumbnails::MakeAgain() {
  for (auto& [key, thumbnail] : thumbnails_) {
    thumbnail.parameters.clear();
    Tell(key.second);
  }
}

void MaterialThumbnails::Tell(engine::NodeId material) const {
  for (const auto& [listener, ready] : listeners_) {
    if (listener) ready(material);
  }
}

// Materials that were forgotten meanwhile or are gone are passed over.
void MaterialThumbnails::MakeNext() {
  while (!job_.IsRunning() && !wanted_.empty()) {
    const Key next = wanted_.back();
    wanted_.pop_back();
    const host::BaseDocument* doc = FindOpenDocument(next.first);
    host::BaseMaterial* material =
        doc ? engine::AsMaterial(engine::FindNode(doc, next.second)) : nullptr;
    if (material && thumbnails_.contains(next)) Begin(next, *doc, *material);
  }
}

// Reads the cheap parts from the document here; textures are read on the other thread.
void MaterialThumbnails::Begin(Key key, const host::BaseDocument& doc,
                               host::BaseMaterial& material) {
  const MaterialPreviewScene ball(doc, material);
  engine::SceneScan scan(ball.Document(), files_, {}, caches_);
  while (!scan.Advance(1)) {
  }
  making_ = key;
  const auto scene = std::make_shared<engine::ScenePicture>(scan.Take());
  const auto side = static_cast<std::uint32_t>(kSide * thumbnails_[key].scale);
  const auto image = std::make_shared<QImage>();
  job_.Start(
      [this, scene, side, image](const BackgroundJob::Control& job) {
        const Picture picture =
            Render(std::move(*scene), side, caches_, [&job](double) { return !job.IsStopped(); });
        if (picture) *image = CutOut(picture->Current());
      },
      [this, image](const std::string& problem) {
        if (!problem.empty()) person_.ShowStatus(problem);
        Take(*image);
      });
}

// A picture that failed, for lack of memory, say, leaves its place empty and is not tried again
// until the material changes.
void MaterialThumbnails::Take(const QImage& image) {
  const auto it = thumbnails_.find(making_);
  if (it != thumbnails_.end() && !image.isNull()) {
    it->second.picture = QPixmap::fromImage(image);
    it->second.picture.setDevicePixelRatio(it->second.scale);
    ++made_;
    Tell(making_.second);
  }
  MakeNext();
}

}  // namespace desktop
