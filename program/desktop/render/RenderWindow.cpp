#include "program/desktop/render/RenderWindow.h"

#include "host/RenderData.h"
#include "program/desktop/DocumentCommands.h"
#include "program/desktop/Text.h"
#include "program/pictures/PictureNames.h"
#include "program/pictures/PictureSize.h"

namespace desktop {

namespace {

// Minutes and seconds.
QString Clock(qint64 milliseconds) {
  const qint64 seconds = milliseconds / 1000;
  return QString("%1:%2").arg(seconds / 60).arg(seconds % 60, 2, 10, QChar('0'));
}

// Beside the scene, where that has a file.
std::string ProposedPicture(const host::BaseDocument& doc) {
  const std::string folder = doc.GetDocumentPath().GetString().ToUtf8();
  const std::string scene = pictures::SceneName(doc);
  return (folder.empty() ? "" : folder + "/") +
         pictures::SafeFileName(scene.empty() ? "picture" : scene) + ".png";
}

}  // namespace

// The scene is read in slices of the event loop; then a job renders it, and the document may
// change.
RenderWindow::RenderWindow(QWidget* window, const engine::Services& services,
                           const host::BaseDocument& doc)
    : PictureWindow(window, services, "Render", doc),
      feed_(services.files, engine::RenderCaches::Shared(), {},
            [this](engine::ScenePicture scene) { Start(std::move(scene)); }),
      stop_(AddButton("Stop", "End the render and keep what is there", [this] { Stop(); })) {
  Propose(ProposedPicture(doc));
  const pictures::PictureSize size = pictures::SizeOf(doc);
  setup_.width = size.width;
  setup_.height = size.height;
  subject_ = QString::fromUtf8("%1 \u00d7 %2 pixels").arg(size.width).arg(size.height);
  connect(&clock_, &QTimer::timeout, this, [this] { ShowTime(); });
  clock_.start(250);
  time_.start();
  feed_.lost = [this] {
    RenderNews news;
    news.problem = "The document was closed before it could be read.";
    End(news);
  };
  ShowTime();
  feed_.Follow(&doc);
}

void RenderWindow::Start(engine::ScenePicture scene) {
  if (ended_ || job_) return;
  doing_ = "Preparing";
  job_ = std::make_unique<RenderJob>(std::move(scene), setup_, engine::RenderCaches::Shared(), true,
                                     [this](const RenderNews& news) { Take(news); });
}

// While the scene is being read there is no job yet.
void RenderWindow::Stop() {
  if (job_) return job_->Stop();
  RenderNews news;
  news.stopped = true;
  End(news);
}

void RenderWindow::Take(const RenderNews& news) {
  if (!news.image.isNull()) View().Show(news.image);
  if (!news.notes.empty()) SayNotes(news.notes);
  if (news.ended) return End(news);
  if (news.pass > 0) doing_ = QString("Pass %1 of %2").arg(news.pass).arg(news.passes);
  Progress().setValue(static_cast<int>(news.done * Progress().maximum()));
  ShowTime();
}

void RenderWindow::End(const RenderNews& news) {
  ended_ = true;
  clock_.stop();
  Keep(news.picture);
  stop_->setEnabled(false);
  Progress().hide();
  doing_ = !news.problem.empty() ? "Not rendered: " + ToQt(news.problem)
           : !news.stopped       ? QString("Finished")
           : news.picture        ? QString("Stopped; coarser than a finished picture")
                                 : QString("Stopped before the picture was whole");
  ShowTime();
}

void RenderWindow::ShowTime() {
  Say(QString::fromUtf8("%1 \u00b7 %2 \u00b7 %3").arg(doing_, Clock(time_.elapsed()), subject_));
}

}  // namespace desktop
