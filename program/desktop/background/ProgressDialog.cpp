#include "program/desktop/background/ProgressDialog.h"

#include <QApplication>
#include <QEvent>
#include <QPointer>
#include <limits>

namespace desktop {

namespace {

// Of the bar; more would not show.
constexpr int kSteps = 1000;
constexpr int kLongestDoing = 70;

// Gives keys to a window as long as it is shown. Shortcuts ask which window is active, not which
// ones are blocked, and the window manager takes its time to make a new window active.
class KeysWhileShown : public QObject {
 public:
  explicit KeysWhileShown(QWidget& window) : QObject(&window), window_(window) {
    window.installEventFilter(this);
  }

 protected:
  bool eventFilter(QObject*, QEvent* event) override {
    if (event->type() == QEvent::Show && QApplication::activeWindow() != &window_) {
      former_ = QApplication::activeWindow();
      if (former_) QApplication::setActiveWindow(&window_);
    }
    if (event->type() == QEvent::Hide && QApplication::activeWindow() == &window_ && former_)
      QApplication::setActiveWindow(former_);
    return false;
  }

 private:
  QWidget& window_;
  QPointer<QWidget> former_;
};

}  // namespace

// When it comes up is decided by the work: the toolkit would begin its waiting anew with each part
// of it.
ProgressDialog::ProgressDialog(QWidget* window)
    : QProgressDialog(window ? window : QApplication::activeWindow()),
      bar_(new QProgressBar(this)) {
  setWindowModality(Qt::ApplicationModal);
  setMinimumDuration(std::numeric_limits<int>::max());
  setCancelButtonText("Stop");
  // It stays at its end and open: the next part of the work goes on in the same box.
  setAutoReset(false);
  setAutoClose(false);
  new KeysWhileShown(*this);
  setBar(bar_);
  bar_->setRange(0, 0);
}

// A share below 0 leaves the bar as it is, busy until a first share is known.
void ProgressDialog::Tell(double share, const QString& doing) {
  setLabelText(fontMetrics().elidedText(doing, Qt::ElideMiddle,
                                        kLongestDoing * fontMetrics().averageCharWidth()));
  if (share >= 0) bar_->setMaximum(kSteps);
  if (share >= 0) bar_->setValue(static_cast<int>(share * kSteps));
  show();
}

}  // namespace desktop
