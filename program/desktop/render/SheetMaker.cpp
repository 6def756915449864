#include "program/desktop/render/SheetMaker.h"

#include <algorithm>
#include <cmath>

#include "engine/application/ProgramPlaces.h"
#include "engine/scene/NewNodes.h"
#include "engine/scenefile/SceneFile.h"
#include "program/desktop/Text.h"
#include "program/desktop/background/DocumentBusy.h"
#include "program/desktop/render/RenderJob.h"

namespace desktop {

namespace {

using engine::FrameKind;
using pictures::Mark;
using pictures::StagemarksDialog;

// Of the whole work: finding out the sizes.
constexpr double kMeasuring = 0.1;

// The options as they stand in the dialog: not all of them are kept in the scene.
std::vector<std::string> OptionsOfDialog() {
  std::vector<std::string> options;
  for (host::GeDialog* open : engine::OpenDialogs()) {
    StagemarksDialog dialog(*open);
    if (!dialog.Fits()) continue;
    for (const auto& [label, on] : dialog.Options()) options.push_back((on ? "1" : "0") + label);
    return options;
  }
  return options;
}

// A large sheet is shown by every so manyth pixel until it is finished.
QImage Sampled(const engine::Image& image) {
  constexpr double kMostPixels = 1.5e6;
  const double pixels = static_cast<double>(image.width) * image.height;
  if (pixels <= kMostPixels) return ToQImage(image);
  const auto step = static_cast<std::size_t>(std::ceil(std::sqrt(pixels / kMostPixels)));
  QImage shown(static_cast<int>(image.width / step), static_cast<int>(image.height / step),
               QImage::Format_RGB32);
  for (int y = 0; y < shown.height(); ++y) {
    const std::uint8_t* from =
        image.bytes.data() + static_cast<std::size_t>(y) * step * image.width * 4;
    auto* to = reinterpret_cast<QRgb*>(shown.scanLine(y));
    for (int x = 0; x < shown.width(); ++x, from += step * 4)
      to[x] = qRgb(from[0], from[1], from[2]);
  }
  return shown;
}

}  // namespace

SheetMaker::SheetMaker(engine::FileSystem& files, const host::BaseDocument& doc,
                       std::function<void(const SheetNews&)> news)
    : files_(files),
      doc_(IdentityOf(&doc)),
      news_(std::move(news)),
      title_(pictures::SceneName(doc)) {
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
  // In the middle of what a plug-in does the document is nothing whole.
  const auto begin = [this] { WhenDocumentIsFree(this, [this] { Begin(); }); };
  QMetaObject::invokeMethod(this, begin, Qt::QueuedConnection);
}

SheetMaker::~SheetMaker() { Stop(); }

void SheetMaker::Stop() {
  stopped_ = true;
  writing_.Stop();
  writing_.Finish();
  deletion_.Take(std::move(copy_));
  child_.disconnect(this);
  child_.kill();
  child_.waitForFinished();
}

void SheetMaker::Fail(const std::string& problem) {
  Stop();
  SheetNews news;
  news.ended = true;
  news.problem = problem;
  news_(news);
}

std::string SheetMaker::NameOf(std::size_t state) const {
  return states_[state].mark.name.empty() ? pictures::kAsItIs : states_[state].mark.name;
}

void SheetMaker::Begin() {
  if (stopped_) return;
  host::BaseDocument* doc = FindOpenDocument(doc_);
  if (!doc) return Fail("The document was closed before the sheet was begun.");
  const host::Filename path = doc->GetDocumentPath().Content()
                                  ? doc->GetDocumentPath() + doc->GetDocumentName()
                                  : doc->GetDocumentName();
  order_ = OptionsOfDialog();
  order_.insert(order_.begin(), path.GetString().ToUtf8());
  copy_ = engine::CopyOf(*doc);
  if (!copy_) return Fail("There was not enough memory for a copy of the scene.");
  writing_.Start(
      [this](const BackgroundJob::Control& job) {
        scene_ = engine::WriteScene(*copy_, [&job](double) { return !job.IsStopped(); });
      },
      [this](const std::string& problem) { StartChild(problem); });
}

void SheetMaker::StartChild(const std::string& problem) {
  if (stopped_) return;
  deletion_.Take(std::move(copy_));
  if (!problem.empty()) return Fail(problem);
  if (!scene_) return Fail(scene_.Message());
  child_.start(QString::fromStdString(engine::ImportWorkerProgram()), {pictures::kStateWorkerVerb});
  for (const std::string& note : order_) Send(FrameKind::Note, note);
  for (const std::string& piece : scene_.Value()) Send(FrameKind::Scene, piece);
  Send(FrameKind::Done, "");
  scene_ = std::vector<std::string>();
}

void SheetMaker::Send(FrameKind kind, std::string_view bytes) {
  const std::string frames = engine::AsFrames(kind, bytes);
  child_.write(frames.data(), static_cast<qint64>(frames.size()));
}

void SheetMaker::Read() {
  const QByteArray bytes = child_.readAllStandardOutput();
  parser_.Feed({bytes.data(), static_cast<std::size_t>(bytes.size())});
  while (!stopped_) {
    const auto frame = parser_.Next();
    if (!frame) break;
    Take(*frame);
  }
  if (!stopped_ && parser_.Damaged())
    Fail("The program that renders the states sent what cannot be read.");
}

void SheetMaker::Take(const engine::Frame& frame) {
  switch (frame.kind) {
    case FrameKind::State:
      return TakeState(frame.bytes);
    case FrameKind::Progress:
      return Tell(std::atoi(frame.bytes.c_str()) / 1000.0, false);
    case FrameKind::Note:
      if (std::find(notes_.begin(), notes_.end(), frame.bytes) == notes_.end())
        notes_.push_back(frame.bytes);
      return;
    case FrameKind::Picture:
      picture_.bytes.insert(picture_.bytes.end(), frame.bytes.begin(), frame.bytes.end());
      return;
    case FrameKind::Failure:
      return Fail(frame.bytes);
    case FrameKind::Done:
      return sheet_ ? Place() : LayOut();
    case FrameKind::Scene:
      return;
  }
}

void SheetMaker::TakeState(const std::string& text) {
  auto state = pictures::StateFromText(text);
  if (!state) return Fail("The program that renders the states sent what cannot be read.");
  states_.push_back(std::move(*state));
  Tell(0, false);
}

void SheetMaker::LayOut() {
  if (states_.empty()) return Fail("The program that renders the states sent what cannot be read.");
  std::vector<pictures::PictureSize> sizes;
  for (const pictures::StateFacts& state : states_) sizes.push_back(state.size);
  const std::size_t named = states_.front().mark.name.empty() ? 0 : states_.size();
  auto sheet = pictures::ContactSheet::Make(files_, sizes, title_, pictures::SheetSubtitle(named));
  if (!sheet) return Fail(sheet.Message());
  sheet_ = std::make_unique<pictures::ContactSheet>(sheet.Take());
  Send(FrameKind::Note,
       std::to_string(sheet_->Box().width) + " " + std::to_string(sheet_->Box().height));
  Tell(0, true);
}

void SheetMaker::Place() {
  const pictures::PictureSize size = pictures::FittedInto(states_[placed_].size, sheet_->Box());
  picture_.width = size.width;
  picture_.height = size.height;
  if (picture_.bytes.size() != picture_.PixelCount() * 4)
    return Fail("The program that renders the states sent what cannot be read.");
  Mark caption = states_[placed_].mark;
  caption.name = NameOf(placed_);
  sheet_->Place(placed_, picture_, caption);
  picture_ = {};
  ++placed_;
  if (placed_ == states_.size()) return End();
  Tell(0, true);
}

void SheetMaker::End() {
  Stop();
  SheetNews news;
  news.done = 1;
  news.ended = true;
  news.notes = notes_;
  news.picture = std::make_shared<const engine::Image>(sheet_->TakePicture());
  news_(news);
}

// `done`: of the picture that is being rendered.
void SheetMaker::Tell(double done, bool showsSheet) {
  SheetNews news;
  const auto count = static_cast<double>(states_.size());
  news.done =
      sheet_ ? kMeasuring + (1 - kMeasuring) * (static_cast<double>(placed_) + done) / count : 0;
  news.doing = sheet_ ? QString("Rendering %1 of %2: ").arg(placed_ + 1).arg(states_.size()) +
                            ToQt(NameOf(placed_))
                      : QString("Reading the states: ") + ToQt(NameOf(states_.size() - 1));
  news.notes = notes_;
  if (showsSheet) news.sheet = Sampled(sheet_->Picture());
  news_(news);
}

}  // namespace desktop
