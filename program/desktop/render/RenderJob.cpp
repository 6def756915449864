#include "program/desktop/render/RenderJob.h"

#include <chrono>

namespace desktop {

namespace {

// Each news copies the picture; more often would slow the render down and nobody sees it.
constexpr std::chrono::milliseconds kBetweenNews(150);
// Of a finished picture: the renderer refines it so often.
constexpr int kPasses = 3;

// The work of the thread.
class Rendering {
 public:
  Rendering(const BackgroundJob::Control& job, bool shows,
            std::function<void(const RenderNews&)> send)
      : job_(job), shows_(shows), send_(std::move(send)) {}

  // The last news.
  RenderNews Run(engine::ScenePicture scene, const engine::PictureSetup& setup,
                 engine::RenderCaches& caches) {
    const auto progress = [this](double) { return !job_.IsStopped(); };
    auto prepared = engine::PreparedScene::Make(std::move(scene), caches, progress);
    auto begun = prepared ? engine::PictureInProgress::Begin(prepared.Take(), setup)
                          : engine::PictureInProgress::Begun(prepared.GetStatus());
    if (begun) return Refine(*begun.Value());
    RenderNews failed;
    failed.problem = begun.Message();
    return failed;
  }

 private:
  // A stopped render gives the last whole pass, if there is one.
  RenderNews Refine(engine::PictureInProgress& picture) {
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
    return last;
  }

  // Tiles that are done are shown over the pass before, so that the picture sharpens piece by
  // piece.
  bool Tell(engine::PictureInProgress& picture, double done, int pass) {
    const auto now = std::chrono::steady_clock::now();
    if (job_.IsStopped() || now - toldAt_ < kBetweenNews) return !job_.IsStopped();
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

  void Send(RenderNews news) {
    job_.OnMainThread([send = send_, news = std::move(news)] { send(news); });
  }

  const BackgroundJob::Control& job_;
  bool shows_;
  std::function<void(const RenderNews&)> send_;
  engine::Image shown_;
  std::chrono::steady_clock::time_point toldAt_;
};

}  // namespace

QImage ToQImage(const engine::Image& image) {
  const QImage view(image.bytes.data(), static_cast<int>(image.width),
                    static_cast<int>(image.height), static_cast<qsizetype>(image.width) * 4,
                    QImage::Format_RGBX8888);
  return view.convertToFormat(QImage::Format_RGB32);
}

// Shares the bytes with the picture instead of copying them: a sheet may have hundreds of
// megabytes. The image owns a share until its last copy goes.
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

// `last` is written by the work and read when that has ended. A problem of a render that was
// stopped is none.
RenderJob::RenderJob(engine::ScenePicture scene, const engine::PictureSetup& setup,
                     engine::RenderCaches& caches, bool shows,
                     std::function<void(const RenderNews&)> news)
    : news_(std::move(news)) {
  const auto shared = std::make_shared<engine::ScenePicture>(std::move(scene));
  const auto last = std::make_shared<RenderNews>();
  const auto send = [this](const RenderNews& sent) { news_(sent); };
  job_.Start(
      [=, &caches](const BackgroundJob::Control& job) {
        *last = Rendering(job, shows, send).Run(std::move(*shared), setup, caches);
        last->stopped = job.IsStopped();
      },
      [this, last](const std::string& problem) {
        last->ended = true;
        if (!problem.empty()) last->problem = problem;
        if (last->stopped) last->problem.clear();
        news_(*last);
      });
}

}  // namespace desktop
