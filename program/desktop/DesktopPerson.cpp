// Boxes and progress for work that is one call on the main thread. The box of long work comes up
// after a moment of patience, from within the report of progress, and goes when a timer of 0 fires:
// the event loop runs again only when the work has returned, said or not that it ended.
#include "program/desktop/DesktopPerson.h"

#include <QApplication>
#include <QGridLayout>
#include <QMessageBox>
#include <QRegularExpression>
#include <QThread>

#include "engine/outside/Viewer.h"
#include "program/desktop/FileDialogs.h"
#include "program/desktop/Text.h"
#include "program/desktop/background/DocumentBusy.h"
#include "program/desktop/dialog/PluginCall.h"

namespace desktop {

namespace {

// 25 times a second looks steady.
constexpr int kMillisecondsBetweenShows = 40;
// ProgressDialog shows a busy bar for it.
constexpr double kUnknownShare = -1;
constexpr int kNarrowestBox = 340;
constexpr int kLongestAbout = 200;

bool SaysItWarns(const std::string& text) {
  static const QRegularExpression kFirstWords("^\\s*(\\w+\\s+)?(warning|error)\\b",
                                              QRegularExpression::CaseInsensitiveOption);
  return kFirstWords.match(ToQt(text)).hasMatch();
}

// Plain text: what a plug-in or a scene says is never taken for markup. `about` is cut, since it
// may hold a name of any length.
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

// Viewers fail in a thread that waits for them, hence the queued call to this one.
DesktopPerson::DesktopPerson() {
  over_.setSingleShot(true);
  over_.setInterval(0);
  QObject::connect(&over_, &QTimer::timeout, &over_, [this] {
    // Fired by the events that are handled in the middle of the work: that is not its end.
    if (drawing_) return over_.start();
    EndProgress();
  });
  engine::ListenForFailedViewers([this](const std::string& path) {
    const std::string text =
        "\"" + path + "\" cannot be shown: the system has no program for it, or that failed.";
    QMetaObject::invokeMethod(
        &over_, [this, text] { Warn(text); }, Qt::QueuedConnection);
  });
}

DesktopPerson::~DesktopPerson() { engine::ListenForFailedViewers({}); }

// Whatever asks ends the progress first: a box that waits for a person is no work, and two modal
// ones would stand in front of each other.
void DesktopPerson::Tell(const std::string& text) {
  EndProgress();
  const NormalPointer pointer;
  ShowBox(window_, SaysItWarns(text) ? QMessageBox::Warning : QMessageBox::Information, text,
          QMessageBox::Ok, QMessageBox::Ok);
}

void DesktopPerson::Warn(const std::string& text) {
  EndProgress();
  const NormalPointer pointer;
  ShowBox(window_, QMessageBox::Warning, text, QMessageBox::Ok, QMessageBox::Ok);
}

bool DesktopPerson::Ask(const std::string& text) {
  EndProgress();
  const NormalPointer pointer;
  return ShowBox(window_, QMessageBox::Question, text, QMessageBox::Yes | QMessageBox::No,
                 QMessageBox::No, CallSubject::Present()) == QMessageBox::Yes;
}

// Refused by `choosing` is as if nothing was chosen: a plug-in knows no other answer.
std::optional<std::string> DesktopPerson::ChooseFile(const engine::FileQuestion& question) {
  EndProgress();
  const NormalPointer pointer;
  auto chosen = desktop::ChooseFile(window_, question, kAnything, files);
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

// Told again while events are handled: the work beneath must go on. A stop is answered each time
// from then on, until the work listens.
bool DesktopPerson::ShowProgress(double fraction, const std::string& what) {
  if (drawing_) return true;
  if (!begun_.isValid()) {
    begun_.start();
    over_.start();
  }
  if (begun_.elapsed() < ProgressDialog::patience) return true;
  if (!progress_) progress_ = new ProgressDialog(window_);
  // Work that tells often is not held up by drawing.
  if (!shown_.isValid() || shown_.elapsed() >= kMillisecondsBetweenShows) LetDraw(fraction, what);
  return !progress_->wasCanceled();
}

// The work is one call, of a plug-in or of a scene's file: it goes on only when this returns, and
// the box is drawn and its button heard only if the events are handled here. The box is modal and
// the documents are busy, so nothing else comes of them.
void DesktopPerson::LetDraw(double fraction, const std::string& what) {
  const DocumentBusy busy;
  const NormalPointer pointer;
  drawing_ = true;
  progress_->Tell(fraction, ToQt(what));
  QCoreApplication::processEvents();
  drawing_ = false;
  shown_.start();
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
