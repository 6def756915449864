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

constexpr int kMillisecondsBetweenShows = 40;
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
  QObject::connect(&over_, &QTimer::timeout, &over_, [this] {
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
