// First all states are measured, because the layout needs their sizes; then one picture after the
// other is asked for and put into its place, so that the sheet can be watched while it grows.
#include "program/desktop/render/SheetMaker.h"

#include <algorithm>
#include <cmath>

#include "program/desktop/Text.h"
#include "program/desktop/render/RenderJob.h"

namespace desktop {

namespace {

using pictures::Mark;

// Share of the whole work that finding out the sizes takes.
constexpr double kMeasuring = 0.1;

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
      news_(std::move(news)),
      title_(pictures::SceneName(doc)),
      renderer_(doc, Hearing()) {
  renderer_.Measure();
}

StateRenderer::News SheetMaker::Hearing() {
  StateRenderer::News hearing;
  hearing.measured = [this](const worker::StateFacts& state) {
    states_.push_back(state);
    Tell(0, false);
  };
  hearing.allMeasured = [this] { LayOut(); };
  hearing.progress = [this](double done) { Tell(done, false); };
  hearing.noted = [this](const std::string& note) {
    if (std::find(notes_.begin(), notes_.end(), note) == notes_.end()) notes_.push_back(note);
  };
  hearing.rendered = [this](const engine::Image& picture) { Place(picture); };
  hearing.failed = [this](const std::string& problem) { Fail(problem); };
  return hearing;
}

void SheetMaker::Stop() { renderer_.Stop(); }

void SheetMaker::Fail(const std::string& problem) {
  Stop();
  SheetNews news;
  news.ended = true;
  news.problem = problem;
  news_(news);
}

// A scene without Stagemarks is one state without a name.
std::string SheetMaker::NameOf(std::size_t state) const {
  return states_[state].mark.name.empty() ? pictures::kAsItIs : states_[state].mark.name;
}

// A sheet that would be too large fails here and costs no rendering.
void SheetMaker::LayOut() {
  if (states_.empty()) return Fail("The program that renders the states sent what cannot be read.");
  std::vector<pictures::PictureSize> sizes;
  for (const worker::StateFacts& state : states_) sizes.push_back(state.size);
  const std::size_t named = states_.front().mark.name.empty() ? 0 : states_.size();
  auto sheet = pictures::ContactSheet::Make(files_, sizes, title_, pictures::SheetSubtitle(named));
  if (!sheet) return Fail(sheet.Message());
  sheet_ = std::make_unique<pictures::ContactSheet>(sheet.Take());
  Tell(0, true);
  RenderNext();
}

void SheetMaker::RenderNext() { renderer_.Render(states_[placed_].mark.name, sheet_->Box()); }

void SheetMaker::Place(const engine::Image& picture) {
  Mark caption = states_[placed_].mark;
  caption.name = NameOf(placed_);
  sheet_->Place(placed_, picture, caption);
  ++placed_;
  if (placed_ == states_.size()) return End();
  Tell(0, true);
  RenderNext();
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

// The sheet goes along only when a picture has come to it: copying it is the dear part.
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
