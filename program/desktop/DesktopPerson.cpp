#include "program/desktop/DesktopPerson.h"

#include <QApplication>
#include <QGridLayout>
#include <QMessageBox>
#include <QThread>

#include "program/desktop/FileChooser.h"
#include "program/desktop/Text.h"

namespace desktop {

namespace {

constexpr int kMillisecondsBeforeProgressShows = 150;
constexpr int kMillisecondsBetweenShows = 40;
constexpr int kMillisecondsOfSilence = 400;
constexpr int kProgressSteps = 1000;
constexpr int kNarrowestBox = 340;

int ShowBox(QWidget* window, QMessageBox::Icon icon, const std::string& text, QMessageBox::StandardButtons buttons) {
  QMessageBox box(icon, QApplication::applicationDisplayName(), ToQt(text), buttons, window);
  box.setTextFormat(Qt::PlainText);
  // A width for the text itself would take the place of what the text needs.
  if (auto* grid = qobject_cast<QGridLayout*>(box.layout())) {
    grid->addItem(new QSpacerItem(kNarrowestBox, 0), grid->rowCount(), 0, 1, grid->columnCount());
  }
  return box.exec();
}

}  // namespace

DesktopPerson::DesktopPerson() {
  idle_.setSingleShot(true);
  QObject::connect(&idle_, &QTimer::timeout, &idle_, [this] { EndProgress(); });
}

void DesktopPerson::Tell(const std::string& text) { ShowBox(window_, QMessageBox::Information, text, QMessageBox::Ok); }

bool DesktopPerson::Ask(const std::string& text) {
  return ShowBox(window_, QMessageBox::Question, text, QMessageBox::Yes | QMessageBox::No) == QMessageBox::Yes;
}

std::optional<std::string> DesktopPerson::ChooseFile(const engine::FileQuestion& question) {
  return desktop::ChooseFile(window_, question, kAnything);
}

void DesktopPerson::ShowStatus(const std::string& text) {
  if (status) status(ToQt(text));
}

void DesktopPerson::ClearStatus() {
  if (status) status({});
}

// Other threads only hear whether to go on: the box belongs to the main thread, which shows it where it reports itself.
bool DesktopPerson::Progress(double fraction, const std::string& what) {
  return QThread::currentThread() != QApplication::instance()->thread() || ShowProgress(fraction, what);
}

bool DesktopPerson::ShowProgress(double fraction, const std::string& what) {
  if (!progress_) {
    progress_ = new QProgressDialog(window_);
    progress_->setWindowModality(Qt::ApplicationModal);
    progress_->setMinimumDuration(kMillisecondsBeforeProgressShows);
    progress_->setCancelButtonText("Stop");
    progress_->setAutoReset(false);
    progress_->setAutoClose(false);
    progress_->setRange(0, kProgressSteps);
  }
  idle_.start(kMillisecondsOfSilence);
  // Work that tells often is not held up by drawing.
  if (shown_.isValid() && shown_.elapsed() < kMillisecondsBetweenShows && fraction < 1) return !progress_->wasCanceled();
  shown_.start();
  progress_->setLabelText(ToQt(what));
  progress_->setValue(static_cast<int>(fraction * kProgressSteps));
  const bool goOn = progress_ && !progress_->wasCanceled();
  if (!goOn || fraction >= 1) EndProgress();
  return goOn;
}

void DesktopPerson::EndProgress() {
  idle_.stop();
  shown_.invalidate();
  if (!progress_) return;
  progress_->reset();  // else it shows itself when its time to appear comes, over whatever is there then
  progress_->hide();
  progress_->deleteLater();
  progress_.clear();
}

}  // namespace desktop
