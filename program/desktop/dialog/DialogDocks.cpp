#include "program/desktop/dialog/DialogDocks.h"

#include <QCloseEvent>
#include <algorithm>

#include "program/desktop/Text.h"
#include "program/desktop/dialog/StagemarksDialogExtras.h"

namespace desktop {

namespace {

// Leaves the most of the window to the picture.
constexpr int kFirstWidth = 590;
constexpr double kMostOfWindow = 0.4;

// Closing asks the dialog, which may refuse; hiding it is for DialogClosed.
class DialogDock : public QDockWidget {
 public:
  using QDockWidget::QDockWidget;

 protected:
  void closeEvent(QCloseEvent* event) override {
    auto* view = static_cast<DialogView*>(widget());
    const bool stays = view->Dialog() && !view->Dialog()->Close();
    event->setAccepted(!stays);
  }
};

}  // namespace

// Dialogs that are open already are taken in: plug-ins may have opened them before the window.
DialogDocks::DialogDocks(QMainWindow& window, engine::FileSystem& files)
    : window_(window), files_(files) {
  engine::AddDialogObserver(*this);
  for (host::GeDialog* dialog : engine::OpenDialogs()) DialogOpened(*dialog);
}

DialogDocks::~DialogDocks() { engine::RemoveDialogObserver(*this); }

DialogView* DialogDocks::ViewOf(const host::GeDialog& dialog) const {
  const auto it = docks_.find(&dialog);
  return it == docks_.end() ? nullptr : static_cast<DialogView*>(it->second->widget());
}

// As a tab over a panel that stands there, so that it is in front (decision 51).
void DialogDocks::PutOnTheRight(QDockWidget& dock) {
  window_.addDockWidget(Qt::RightDockWidgetArea, &dock);
  for (QDockWidget* other : window_.findChildren<QDockWidget*>()) {
    const bool isPanel = !other->isFloating() && !dynamic_cast<DialogDock*>(other);
    if (!isPanel || window_.dockWidgetArea(other) != Qt::RightDockWidgetArea) continue;
    window_.tabifyDockWidget(other, &dock);
    break;
  }
}

void DialogDocks::ResetPlaces() {
  for (const auto& [dialog, dock] : docks_) {
    dock->setFloating(false);
    PutOnTheRight(*dock);
    dock->show();
    dock->raise();
  }
}

void DialogDocks::DialogOpened(host::GeDialog& dialog) {
  QDockWidget*& dock = docks_[&dialog];
  if (!dock) dock = Make(dialog);
  dock->show();
  dock->raise();
  Remember(dialog);
}

// A dialog object may be made anew at each opening: then it takes the place of its plug-in's closed
// one, and the Window menu has one entry.
void DialogDocks::Remember(host::GeDialog& dialog) {
  const host::LONG plugin = engine::DialogPluginId(dialog);
  const QString title = ToQt(engine::DialogTitle(dialog)).simplified();
  const auto it = std::find_if(known_.begin(), known_.end(), [&](const Known& one) {
    return one.plugin == plugin && (!one.dialog || one.dialog == &dialog);
  });
  if (it == known_.end()) {
    known_.push_back({plugin, title, &dialog});
  } else {
    *it = {plugin, title, &dialog};
  }
}

// The object name is the key of the saved layout.
QDockWidget* DialogDocks::Make(host::GeDialog& dialog) {
  auto* dock = new DialogDock(&window_);
  dock->setObjectName("dialog-" + QString::number(engine::DialogPluginId(dialog)));
  auto* view = new DialogView(dialog, files_, dock);
  view->titled = [dock, &dialog] { dock->setWindowTitle(ToQt(engine::DialogTitle(dialog))); };
  view->titled();
  if (pictures::StagemarksDialog(dialog).Fits()) new StagemarksDialogExtras(*view);
  view->SetAround(
      [this](host::GeDialog& acted, const std::string& label, const std::function<bool()>& act) {
        if (!around) return static_cast<void>(act());
        around(acted, label, act);
      });
  dock->setWidget(view);
  // A place that a saved layout has for it comes first.
  if (!window_.restoreDockWidget(dock)) {
    PutOnTheRight(*dock);
    window_.resizeDocks({dock},
                        {std::min(kFirstWidth, static_cast<int>(window_.width() * kMostOfWindow))},
                        Qt::Horizontal);
  }
  return dock;
}

void DialogDocks::DialogClosed(host::GeDialog& dialog) {
  for (Known& one : known_) {
    if (one.dialog == &dialog) one.dialog = nullptr;
  }
  const auto it = docks_.find(&dialog);
  if (it == docks_.end()) return;
  it->second->hide();
  it->second->deleteLater();
  docks_.erase(it);
}

}  // namespace desktop
