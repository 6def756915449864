#include "program/desktop/render/SheetMaker.h"

#include <QElapsedTimer>
#include <algorithm>
#include <cmath>

#include "program/desktop/Text.h"

namespace desktop {

namespace {

using pictures::Mark;
using pictures::StagemarksDialog;

// Of the whole work: finding out the sizes.
constexpr double kMeasuring = 0.1;
constexpr int kPause = 5;  // milliseconds
constexpr std::size_t kObjectsBetweenLooks = 500;
constexpr int kMillisecondsOfSlice = 20;
constexpr host::LONG kWholeDocument = 1024;

std::optional<StagemarksDialog> FindDialog() {
  for (host::GeDialog* open : engine::OpenDialogs()) {
    StagemarksDialog dialog(*open);
    if (dialog.Fits()) return dialog;
  }
  return std::nullopt;
}

// Opens it where a command of that name does.
std::optional<StagemarksDialog> OpenDialog(engine::Application& application) {
  auto dialog = FindDialog();
  for (const engine::CommandPlugin& command : application.Commands()) {
    if (!dialog && command.name.ToUtf8() == "Stagemarks" && application.ExecuteCommand(command.id)) dialog = FindDialog();
  }
  return dialog;
}

// A large sheet is shown by every so manyth pixel until it is finished.
QImage Sampled(const engine::Image& image) {
  constexpr double kMostPixels = 1.5e6;
  const double pixels = static_cast<double>(image.width) * image.height;
  if (pixels <= kMostPixels) return ToQImage(image);
  const auto step = static_cast<std::size_t>(std::ceil(std::sqrt(pixels / kMostPixels)));
  QImage shown(static_cast<int>(image.width / step), static_cast<int>(image.height / step), QImage::Format_RGB32);
  for (int y = 0; y < shown.height(); ++y) {
    const std::uint8_t* from = image.bytes.data() + static_cast<std::size_t>(y) * step * image.width * 4;
    auto* to = reinterpret_cast<QRgb*>(shown.scanLine(y));
    for (int x = 0; x < shown.width(); ++x, from += step * 4) to[x] = qRgb(from[0], from[1], from[2]);
  }
  return shown;
}

}  // namespace

SheetMaker::SheetMaker(engine::Application& application, const host::BaseDocument& doc,
                       std::function<void(const SheetNews&)> news)
    : application_(application), doc_(IdentityOf(&doc)), news_(std::move(news)), title_(pictures::SceneName(doc)) {
  next_.setSingleShot(true);
  // A dialog that waits for an answer in the middle of its work is not entered a second time; a copy ends before the next is
  // made.
  connect(&next_, &QTimer::timeout, this,
          [this] { engine::InsideDialogCall() || !ended_.IsEmpty() ? next_.start(kPause) : (this->*step_)(); });
  Next(&SheetMaker::Begin);
}

void SheetMaker::Stop() {
  next_.stop();
  scan_.reset();
  ended_.Take(std::move(copy_));
  job_.reset();
}

void SheetMaker::Next(void (SheetMaker::*step)()) {
  step_ = step;
  next_.start(0);
}

void SheetMaker::Fail(const std::string& problem) {
  Stop();
  SheetNews news;
  news.ended = true;
  news.problem = problem;
  news_(news);
}

std::string SheetMaker::NameOf(std::size_t state) const { return asItIs_ ? pictures::kAsItIs : states_[state].name; }

void SheetMaker::Begin() {
  const auto dialog = OpenDialog(application_);
  if (!dialog) return Fail("The plug-in's dialog could not be opened, so its states cannot be loaded.");
  application_.DeliverEvents();
  states_ = dialog->Marks();
  asItIs_ = states_.empty();
  if (asItIs_) states_.emplace_back();
  Next(&SheetMaker::Measure);
}

OwnedDocument SheetMaker::Visit(std::size_t state) {
  host::BaseDocument* doc = FindOpenDocument(doc_);
  auto dialog = FindDialog();
  if (!doc || !dialog) {
    Fail(doc ? "The plug-in's dialog was closed before the sheet was finished."
             : "The document was closed before the sheet was finished.");
    return nullptr;
  }
  host::BaseDocument* active = host::GetActiveDocument();
  const std::vector<std::string> selected = dialog->SelectedNames();
  OwnedDocument copy(static_cast<host::BaseDocument*>(doc->GetClone(kWholeDocument, nullptr)));
  host::InsertBaseDocument(copy.get());
  host::SetActiveDocument(copy.get());
  const bool loaded = copy && (asItIs_ || (dialog->Select(states_[state].name) && dialog->Press("Load")));
  host::SetActiveDocument(active);
  application_.ReleaseDocument(copy.get());
  application_.DeliverEvents();
  if (!selected.empty()) dialog->SelectNames(selected);
  if (loaded) return copy;
  Fail("\"" + NameOf(state) + "\" was not loaded.");
  return nullptr;
}

void SheetMaker::Measure() {
  OwnedDocument copy = Visit(sizes_.size());
  if (!copy) return;
  sizes_.push_back(pictures::SizeOf(*copy));
  ended_.Take(std::move(copy));
  Tell(kMeasuring * static_cast<double>(sizes_.size()) / static_cast<double>(states_.size()), false);
  Next(sizes_.size() < states_.size() ? &SheetMaker::Measure : &SheetMaker::LayOut);
}

void SheetMaker::LayOut() {
  auto sheet = pictures::ContactSheet::Make(sizes_, title_, pictures::SheetSubtitle(asItIs_ ? 0 : states_.size()));
  if (!sheet) return Fail(sheet.Message());
  sheet_ = std::make_unique<pictures::ContactSheet>(sheet.Take());
  Next(&SheetMaker::Render);
}

void SheetMaker::Render() {
  copy_ = Visit(placed_);
  if (!copy_) return;
  scan_.emplace(*copy_, engine::SceneReading(), engine::RenderCaches::Shared());
  Next(&SheetMaker::Scan);
}

void SheetMaker::Scan() {
  QElapsedTimer time;
  time.start();
  while (!scan_->Advance(kObjectsBetweenLooks)) {
    if (time.elapsed() >= kMillisecondsOfSlice) return Next(&SheetMaker::Scan);
  }
  engine::ScenePicture scene = scan_->Take();
  scan_.reset();
  ended_.Take(std::move(copy_));
  const pictures::PictureSize size = pictures::FittedInto(sizes_[placed_], sheet_->Box());
  engine::PictureSetup setup;
  setup.width = size.width;
  setup.height = size.height;
  Tell(0, placed_ == 0);
  job_ = std::make_unique<RenderJob>(std::move(scene), setup, engine::RenderCaches::Shared(), false,
                                     [this](const RenderNews& news) { Take(news); });
}

void SheetMaker::Take(const RenderNews& news) {
  for (const std::string& note : news.notes) {
    if (std::find(notes_.begin(), notes_.end(), note) == notes_.end()) notes_.push_back(note);
  }
  if (!news.ended) return Tell(news.done, false);
  if (!news.picture) return Fail("\"" + NameOf(placed_) + "\" was not rendered: " + news.problem);
  Mark caption = states_[placed_];
  caption.name = NameOf(placed_);
  sheet_->Place(placed_, *news.picture, caption);
  ++placed_;
  Tell(0, true);
  Next(placed_ < states_.size() ? &SheetMaker::Render : &SheetMaker::End);
}

void SheetMaker::End() {
  job_.reset();
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
  news.done = sheet_ ? kMeasuring + (1 - kMeasuring) * (static_cast<double>(placed_) + done) / count : done;
  const std::size_t state = std::min(sheet_ ? placed_ : sizes_.size(), states_.size() - 1);
  news.doing =
      QString(sheet_ ? "Rendering %1 of %2: " : "Reading %1 of %2: ").arg(state + 1).arg(states_.size()) + ToQt(NameOf(state));
  news.notes = notes_;
  if (showsSheet) news.sheet = Sampled(sheet_->Picture());
  news_(news);
}

}  // namespace desktop
