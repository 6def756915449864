#include "program/desktop/render/RenderJob.h"

namespace desktop {

namespace {

constexpr std::chrono::milliseconds kBetweenNews(150);
constexpr int kPasses = 3;

}  // namespace

QImage ToQImage(const engine::Image& image) {
  const QImage view(image.bytes.data(), static_cast<int>(image.width),
                    static_cast<int>(image.height), static_cast<qsizetype>(image.width) * 4,
                    QImage::Format_RGBX8888);
  return view.convertToFormat(QImage::Format_RGB32);
}

QImage Viewed(std::shared_ptr<const engine::Image> image) {
  const engine::Image& seen = *image;
  auto* owner = new std::shared_ptr<const engine::Image>(std::move(image));
  const auto end = [](void* kept) {
    delete static_cast<std::shared_ptr<const engine::Image>*>(kept);
  };
  return {seen.bytes.data(),
          static_cast<int>(seen.width),
          static_cast<int>(seen.height),
          static_cast<qsizetype>(seen.width) * 4,
          QImage::Format_RGBX8888,
          end,
          owner};
}

RenderJob::RenderJob(engine::ScenePicture scene, const engine::PictureSetup& setup,
                     engine::RenderCaches& caches, bool shows,
                     std::function<void(const RenderNews&)> news)
    : setup_(setup), caches_(caches), shows_(shows), news_(std::move(news)) {
  auto shared = std::make_shared<engine::ScenePicture>(std::move(scene));
  thread_ = std::thread([this, shared] { Run(std::move(*shared)); });
}

RenderJob::~RenderJob() {
  stops_ = true;
  thread_.join();
}

void RenderJob::Run(engine::ScenePicture scene) {
  RenderNews news;
  try {
    auto prepared =
        engine::PreparedScene::Make(std::move(scene), caches_, [this](double) { return !stops_; });
    auto begun = prepared ? engine::PictureInProgress::Begin(prepared.Take(), setup_)
                          : engine::PictureInProgress::Begun(prepared.GetStatus());
    if (begun) return Render(*begun.Value());
    news.problem = begun.Message();
  } catch (const std::bad_alloc&) {
    news.problem = "There is not enough memory for the picture.";
  }
  End(std::move(news));
}

void RenderJob::Render(engine::PictureInProgress& picture) {
  RenderNews first;
  first.notes = picture.Notes();
  first.passes = kPasses;
  Send(std::move(first));
  int pass = 1;
  while (!picture.IsFinished() &&
         picture.Refine([&](double done) { return Tell(picture, done, pass); })) {
    shown_ = picture.Current();
    ++pass;
  }
  RenderNews last;
  last.done = picture.IsFinished() ? 1 : 0;
  last.passes = kPasses;
  last.notes = picture.Notes();
  if (pass > 1) last.picture = std::make_shared<const engine::Image>(picture.Current());
  if (last.picture && shows_) last.image = ToQImage(*last.picture);
  End(std::move(last));
}

bool RenderJob::Tell(engine::PictureInProgress& picture, double done, int pass) {
  const auto now = std::chrono::steady_clock::now();
  if (stops_ || now - toldAt_ < kBetweenNews) return !stops_;
  toldAt_ = now;
  RenderNews news;
  news.done = done;
  news.pass = pass;
  news.passes = kPasses;
  if (shows_) {
    picture.ShowTiles(&shown_);
    news.image = ToQImage(shown_);
  }
  Send(std::move(news));
  return true;
}

void RenderJob::End(RenderNews news) {
  news.ended = true;
  news.stopped = stops_;
  if (stops_) news.problem.clear();
  Send(std::move(news));
}

void RenderJob::Send(RenderNews news) {
  QMetaObject::invokeMethod(
      this, [this, news = std::move(news)] { news_(news); }, Qt::QueuedConnection);
}

}  // namespace desktop
