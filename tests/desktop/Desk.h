// Desk: the desktop as a person finds it: the window with the built plug-in, real files in a folder
// of its own, and hands that answer the boxes that come up.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QMenuBar>
#include <QPointer>
#include <QProgressDialog>
#include <QTimer>
#include <functional>
#include <memory>
#include <optional>
#include <type_traits>

#include "engine/outside/SystemServices.h"
#include "program/desktop/MainWindow.h"
#include "tests/desktop/Pictures.h"
#include "tests/support/ScratchFolder.h"

namespace desk {

// Does `act` to the next modal dialog of a kind that comes up; one that is up already is not meant,
// nor is a box that only shows progress, which a busy machine brings up and a quick one does not.
// Fails to end a test that waits for a box which never comes: so does life. A desk that is left
// while an answer is still waiting for its box fails its test.
template <class Dialog = QDialog>
void AnswerNext(std::function<void(std::type_identity_t<Dialog>&)> act) {
  const QPointer<QWidget> present = QApplication::activeModalWidget();
  auto* timer = new QTimer(QApplication::instance());
  timer->setObjectName("answer");
  QObject::connect(timer, &QTimer::timeout, timer, [timer, act, present] {
    auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
    if (!dialog || dialog == present) return;
    if (!std::is_same_v<Dialog, QProgressDialog> && qobject_cast<QProgressDialog*>(dialog)) return;
    timer->stop();
    timer->deleteLater();
    act(*dialog);
  });
  timer->start(5);
}

// The document that is worked on.
inline host::BaseDocument& Scene() { return *host::GetActiveDocument(); }

class Desk {
 public:
  Desk() {
    for (const char* folder : {"CONFIG", "DATA", "CACHE", "STATE"}) {
      qputenv((QByteArray("XDG_") + folder + "_HOME").constData(),
              QByteArray::fromStdString(Folder() + "/" + folder));
    }
    services_.emplace(person_);
    Begin(TEST_PLUGIN_DIR);
  }
  ~Desk() {
    for (QTimer* answer : QApplication::instance()->findChildren<QTimer*>("answer")) {
      if (!answer->isActive()) continue;  // given, and about to go
      ADD_FAILURE() << "a box that was to be answered never came";
      delete answer;
    }
  }

  // Ends the program and starts it again, with the plug-ins of a folder.
  void Restart(const std::string& plugins = TEST_PLUGIN_DIR) {
    window_.reset();
    application_.reset();
    Begin(plugins);
  }
  // How loading each plug-in went.
  const std::vector<engine::LoadReport>& Reports() const { return reports_; }
  desktop::MainWindow& Window() { return *window_; }
  desktop::DesktopPerson& Person() { return person_; }
  engine::Application& App() { return *application_; }
  const engine::Services& Services() { return services_->Get(); }
  const std::string& Folder() const { return folder_.Path(); }
  // Lets the event loop come to rest.
  static void Rest() { pictures::Settle(); }

  // The plug-in's dialog; null when it is not open.
  host::GeDialog* Dialog() const {
    return engine::OpenDialogs().empty() ? nullptr : engine::OpenDialogs().front();
  }
  // The dock that it stands in.
  QDockWidget* PluginDock() const {
    return Dialog() ? dynamic_cast<QDockWidget*>(window_->Docks().ViewOf(*Dialog())->parentWidget())
                    : nullptr;
  }
  template <class Widget>
  Widget& Gadget(host::LONG id) {
    return dynamic_cast<Widget&>(*window_->Docks().ViewOf(*Dialog())->WidgetOf(id));
  }
  // The widget in the dock of that object name.
  template <class Widget>
  Widget& Panel(const char* name) {
    return dynamic_cast<Widget&>(*window_->findChild<QDockWidget*>(name)->widget());
  }
  // Brings a dock that is one of several tabs to the front.
  void Raise(const char* name) {
    window_->findChild<QDockWidget*>(name)->raise();
    Rest();
  }
  // The entry of a menu whose text begins with `text`, wherever it stands.
  QAction& Entry(const QString& menu, const QString& text) {
    for (QAction* top : window_->menuBar()->actions()) {
      if (top->text().remove('&') != menu) continue;
      emit top->menu()->aboutToShow();
      for (QAction* action : top->menu()->actions()) {
        if (action->text().remove('&').startsWith(text)) return *action;
      }
    }
    throw std::runtime_error("no menu entry " + text.toStdString());
  }

 private:
  void Begin(const std::string& plugins) {
    engine::ApplicationSetup setup;
    setup.importWorker = TEST_BINARY_DIR "/bin/stagemarks";
    application_ = std::make_unique<engine::Application>(Services(), setup);
    application_->NewDocument();
    window_ = std::make_unique<desktop::MainWindow>(*application_, person_,
                                                    Services().folders.config + "/desktop.json");
    window_->show();
    reports_ = application_->LoadPlugins(plugins);
    window_->RestoreLayout();
    Rest();
  }

  tests::ScratchFolder folder_;
  desktop::DesktopPerson person_;
  std::optional<engine::SystemServices> services_;
  std::unique_ptr<engine::Application> application_;
  std::vector<engine::LoadReport> reports_;
  std::unique_ptr<desktop::MainWindow> window_;
};

}  // namespace desk
