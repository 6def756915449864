// The desktop's side of the child that loads states (decision 19). A copy of the document is taken
// when it is free, written into bytes by a job, and sent to the child through its input, followed
// by the requests. Answers come in the order of the requests, which wait in `asked_`.
#include "program/desktop/render/StateRenderer.h"

#include "engine/application/ProgramPlaces.h"
#include "engine/scene/NewNodes.h"
#include "engine/scenefile/SceneFile.h"
#include "program/desktop/background/DocumentBusy.h"
#include "program/pictures/SceneFingerprint.h"

namespace desktop {

namespace {

using engine::FrameKind;
using pictures::StagemarksDialog;

// Longest wait for a child asked to end, in milliseconds; it looks between two pieces of a picture.
constexpr int kLongestEnd = 3000;

}  // namespace

// "1" or "0" before each label, as the child reads them.
std::vector<std::string> StateRenderer::OptionsOfDialog() {
  std::vector<std::string> options;
  for (host::GeDialog* open : engine::OpenDialogs()) {
    StagemarksDialog dialog(*open);
    if (!dialog.Fits()) continue;
    for (const auto& [label, on] : dialog.Options()) options.push_back((on ? "1" : "0") + label);
    return options;
  }
  return options;
}

// Queued: whoever makes it can set things up before anything is told.
StateRenderer::StateRenderer(const host::BaseDocument& doc, News news)
    : doc_(IdentityOf(&doc)), news_(std::move(news)) {
  child_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  connect(&child_, &QProcess::readyReadStandardOutput, this, [this] { Read(); });
  connect(&child_, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
    if (error == QProcess::FailedToStart)
      Fail("\"" + child_.program().toStdString() + "\" cannot be run.");
  });
  connect(&child_, &QProcess::finished, this, [this] {
    Read();
    if (!stopped_) Fail("The program that renders the states ended too early.");
  });
  // While a plug-in works on it, the document is not in a consistent state.
  const auto begin = [this] { WhenDocumentIsFree(this, [this] { Begin(); }); };
  QMetaObject::invokeMethod(this, begin, Qt::QueuedConnection);
}

StateRenderer::~StateRenderer() { Stop(); }

// Ended by a signal that it hears where it is writing files, to take back its claim and its
// half-written picture; killed otherwise, since it has nothing to lose.
void StateRenderer::Stop() {
  stopped_ = true;
  writing_.Stop();
  writing_.Finish();
  deletion_.Take(std::move(copy_));
  child_.disconnect(this);
  // A child that is writing files has something to take back.
  const auto order = asked_.empty() ? std::nullopt : worker::PicturesFromText(asked_.front());
  const bool writesFiles = order && order->renders;
  if (writesFiles) child_.terminate();
  if (writesFiles && child_.waitForFinished(kLongestEnd)) return;
  child_.kill();
  child_.waitForFinished();
}

void StateRenderer::Fail(const std::string& problem) {
  Stop();
  if (news_.failed) news_.failed(problem);
}

void StateRenderer::FailUnread() {
  Fail("The program that renders the states sent what cannot be read.");
}

void StateRenderer::Measure() { Ask(worker::kMeasureStates); }

void StateRenderer::Render(const std::string& name, const pictures::PictureSize& box) {
  Ask(worker::RequestAsText({box, name}));
}

void StateRenderer::Publish(const publishing::PublishOrder& order) {
  Ask(worker::OrderAsText(order));
}

void StateRenderer::WritePictures(const worker::PicturesOrder& order) {
  Ask(worker::PicturesAsText(order));
}

void StateRenderer::Ask(const std::string& text) {
  asked_.push_back(text);
  if (isUp_ && !stopped_) Send(FrameKind::Note, text);
}

// Path first, then the options: the order in which the child reads them.
void StateRenderer::Begin() {
  if (stopped_) return;
  host::BaseDocument* doc = FindOpenDocument(doc_);
  if (!doc) return Fail("The document was closed before its states were read.");
  const host::Filename path = doc->GetDocumentPath().Content()
                                  ? doc->GetDocumentPath() + doc->GetDocumentName()
                                  : doc->GetDocumentName();
  order_ = OptionsOfDialog();
  order_.insert(order_.begin(), path.GetString().ToUtf8());
  copy_ = engine::CopyOf(*doc);
  if (!copy_) return Fail("There was not enough memory for a copy of the scene.");
  writing_.Start(
      [this](const BackgroundJob::Control& job) {
        fingerprint_ = pictures::FingerprintOf(*copy_);
        scene_ = engine::WriteScene(*copy_, [&job](double) { return !job.IsStopped(); });
      },
      [this](const std::string& problem) { StartChild(problem); });
}

// The toolkit keeps what is sent and writes it as the child reads, so our own bytes can go.
void StateRenderer::StartChild(const std::string& problem) {
  if (stopped_) return;
  deletion_.Take(std::move(copy_));
  if (!problem.empty()) return Fail(problem);
  if (!scene_) return Fail(scene_.Message());
  child_.start(QString::fromStdString(engine::ImportWorkerProgram()), {worker::kStateWorkerVerb});
  for (const std::string& note : order_) Send(FrameKind::Note, note);
  for (const std::string& piece : scene_.Value()) Send(FrameKind::Scene, piece);
  Send(FrameKind::Done, "");
  scene_ = std::vector<std::string>();
  isUp_ = true;
  for (const std::string& text : asked_) Send(FrameKind::Note, text);
}

void StateRenderer::Send(FrameKind kind, std::string_view bytes) {
  const std::string frames = engine::AsFrames(kind, bytes);
  child_.write(frames.data(), static_cast<qint64>(frames.size()));
}

// A callback may have stopped it in the middle of the frames.
void StateRenderer::Read() {
  const QByteArray bytes = child_.readAllStandardOutput();
  parser_.Feed({bytes.data(), static_cast<std::size_t>(bytes.size())});
  while (!stopped_) {
    const auto frame = parser_.Next();
    if (!frame) break;
    Take(*frame);
  }
  if (!stopped_ && parser_.Damaged()) FailUnread();
}

void StateRenderer::Take(const engine::Frame& frame) {
  switch (frame.kind) {
    case FrameKind::State:
      return TakeState(frame.bytes);
    case FrameKind::Progress:
      if (news_.progress) news_.progress(std::atoi(frame.bytes.c_str()) / 1000.0);
      return;
    case FrameKind::Note:
      if (news_.noted) news_.noted(frame.bytes);
      return;
    case FrameKind::Picture:
      picture_.bytes.insert(picture_.bytes.end(), frame.bytes.begin(), frame.bytes.end());
      return;
    case FrameKind::Written:
      if (news_.written) news_.written(frame.bytes);
      return;
    case FrameKind::Pictures:
      return TakeNews(frame.bytes);
    case FrameKind::Failure:
      return Fail(frame.bytes);
    case FrameKind::Done:
      return TakeDone();
    case FrameKind::Weakness:
    case FrameKind::Scene:
      return;
  }
}

void StateRenderer::TakeState(const std::string& text) {
  auto state = worker::StateFromText(text);
  if (!state) return FailUnread();
  state_ = std::move(*state);
  const bool isMeasuring = !asked_.empty() && asked_.front() == worker::kMeasureStates;
  if (isMeasuring && news_.measured) news_.measured(state_);
}

// The thumbnail has come in frames before, and must have the size that the news says.
void StateRenderer::TakeNews(const std::string& text) {
  const auto news = worker::NewsFromText(text);
  engine::Image thumbnail;
  const bool isRendered = news && news->kind == worker::PictureNews::Kind::Rendered;
  if (isRendered) {
    thumbnail = std::exchange(picture_, {});
    thumbnail.width = news->size.width;
    thumbnail.height = news->size.height;
  }
  if (!news || (isRendered && thumbnail.bytes.size() != thumbnail.PixelCount() * 4))
    return FailUnread();
  if (news_.pictured) news_.pictured(*news, thumbnail);
}

// Which request it answers decides what is told. A picture must have the bytes that its size asks
// for: the child may have been damaged by what it read.
void StateRenderer::TakeDone() {
  if (asked_.empty()) return FailUnread();
  const std::string answered = std::move(asked_.front());
  asked_.pop_front();
  if (worker::OrderFromText(answered)) {
    if (news_.published) news_.published();
    return;
  }
  if (worker::PicturesFromText(answered)) {
    if (news_.pictureFilesDone) news_.pictureFilesDone();
    return;
  }
  const auto request = worker::RequestFromText(answered);
  if (!request) {
    if (news_.allMeasured) news_.allMeasured();
    return;
  }
  const pictures::PictureSize size = pictures::FittedInto(state_.size, request->box);
  picture_.width = size.width;
  picture_.height = size.height;
  if (picture_.bytes.size() != picture_.PixelCount() * 4) return FailUnread();
  engine::Image picture = std::exchange(picture_, {});
  if (news_.rendered) news_.rendered(std::move(picture));
}

}  // namespace desktop
