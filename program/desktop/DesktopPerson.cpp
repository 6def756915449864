#include "program/desktop/DesktopPerson.h"

#include <QApplication>
#include <QGridLayout>
#include <QMessageBox>
#include <QRegularExpression>
#include <QThread>
#include <limits>

#include "engine/outside/Viewer.h"
#include "program/desktop/FileDialogs.h"
#include "program/desktop/HeldBack.h"
#include "program/desktop/Text.h"
#include "program/desktop/dialog/Busy.h"

namespace desktop {

namespace {

constexpr int kMillisecondsBetweenShows = 40;
constexpr int kProgressSteps = 1000;
constexpr int kLongestDoing = 70;
constexpr double kUnknownShare = -1;
constexpr int kNarrowestBox = 340;
constexpr int kLongestAbout = 200;

bool SaysItWarns(const std::string& text) {
  static const QRegularExpression kFirstWords("^\\s*(\\w+\\s+)?(warning|error)\\b",
                                              QRegularExpression::CaseInsensitiveOption);
  return kFirstWords.match(ToQt(text)).hasMatch();
}

int ShowBox(QWidget* window, QMessageBox::Icon icon, const std::string& text,
            QMessageBox::StandardButtons buttons, QMessageBox::StandardButton proposed,
            const QString& about = {}) {
  QMessageBox box(icon, QApplication::applicationDisplayName(), ToQt(text), buttons, window);
  box.setDefaultButton(proposed);
  box.setTextFormat(Qt::PlainText);
  box.setInformativeText(about.size() > kLongestAbout ? about.left(kLongestAbout) + QChar(0x2026)
                                                      : about);
  // A width for the text itself would take the place of what the text needs.
  if (auto* grid = qobject_cast<QGridLayout*>(box.layout())) {
    grid->addItem(new QSpacerItem(kNarrowestBox, 0), grid->rowCount(), 0, 1, grid->columnCount());
  }
  return box.exec();
}

}  // namespace

DesktopPerson::DesktopPerson() {
  over_.setSingleShot(true);
  over_.setInterval(0);
  QObject::connect(&over_, &QTimer::timeout, &over_, [this] { EndProgress(); });
  engine::ListenForFailedViewers([this](const std::string& path) {
    const std::string text =
        "\"" + path + "\" cannot be shown: the system has no program for it, or that failed.";
    QMetaObject::invokeMethod(
        &over_, [this, text] { Warn(text); }, Qt::QueuedConnection);
  });
}

DesktopPerson::~DesktopPerson() { engine::ListenForFailedViewers({}); }

void DesktopPerson::Tell(const std::string& text) {
  EndProgress();
  const FreePointer pointer;
  ShowBox(window_, SaysItWarns(text) ? QMessageBox::Warning : QMessageBox::Information, text,
          QMessageBox::Ok, QMessageBox::Ok);
}

void DesktopPerson::Warn(const std::string& text) {
  EndProgress();
  const FreePointer pointer;
  ShowBox(window_, QMessageBox::Warning, text, QMessageBox::Ok, QMessageBox::Ok);
}

bool DesktopPerson::Ask(const std::string& text) {
  EndProgress();
  const FreePointer pointer;
  return ShowBox(window_, QMessageBox::Question, text, QMessageBox::Yes | QMessageBox::No,
                 QMessageBox::No, Concern::Present()) == QMessageBox::Yes;
}

std::optional<std::string> DesktopPerson::ChooseFile(const engine::FileQuestion& question) {
  EndProgress();
  const FreePointer pointer;
  auto chosen = desktop::ChooseFile(window_, question, kAnything);
  if (chosen && choosing && !choosing(question, *chosen)) chosen.reset();
  return chosen;
}

void DesktopPerson::ShowStatus(const std::string& text) {
  if (status) status(ToQt(text));
}

void DesktopPerson::ClearStatus() {
  if (status) status({});
}

// Other threads only hear whether to go on: the box belongs to the main thread, which shows it
// where it reports itself.
bool DesktopPerson::Progress(double fraction, const std::string& what) {
  return QThread::currentThread() != QApplication::instance()->thread() ||
         ShowProgress(fraction, what);
}

bool DesktopPerson::Writing(const std::string& path) {
  return Progress(kUnknownShare, "Writing " + path.substr(path.rfind('/') + 1));
}

bool DesktopPerson::ShowProgress(double fraction, const std::string& what) {
  if (living_) return true;
  if (!begun_.isValid()) {
    begun_.start();
    over_.start();
  }
  if (begun_.elapsed() < patience.count()) return true;
  if (!progress_) MakeBox();
  // Work that tells often is not held up by drawing.
  if (shown_.isValid() && shown_.elapsed() < kMillisecondsBetweenShows)
    return !progress_->wasCanceled();
  progress_->setLabelText(progress_->fontMetrics().elidedText(
      ToQt(what), Qt::ElideMiddle, kLongestDoing * progress_->fontMetrics().averageCharWidth()));
  if (fraction >= 0) progress_->setMaximum(kProgressSteps);
  if (fraction >= 0) progress_->setValue(static_cast<int>(fraction * kProgressSteps));
  LetLive();
  shown_.start();
  return !progress_->wasCanceled();
}

// When it comes up is decided here: the toolkit would begin its waiting anew with each part of the
// work.
void DesktopPerson::MakeBox() {
  progress_ = new QProgressDialog(window_);
  progress_->setWindowModality(Qt::ApplicationModal);
  progress_->setMinimumDuration(std::numeric_limits<int>::max());
  progress_->setCancelButtonText("Stop");
  progress_->setAutoReset(false);
  progress_->setAutoClose(false);
  progress_->setRange(0, 0);
}

void DesktopPerson::LetLive() {
  const HeldBack others(*progress_);
  const FreePointer pointer;
  living_ = true;
  progress_->show();
  QCoreApplication::processEvents();
  living_ = false;
}

void DesktopPerson::EndProgress() {
  over_.stop();
  begun_.invalidate();
  shown_.invalidate();
  if (!progress_) return;
  progress_->hide();
  progress_->deleteLater();
  progress_.clear();
}

}  // namespace desktop
