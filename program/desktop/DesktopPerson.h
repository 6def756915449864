// DesktopPerson: the person in front of the window: messages and questions are boxes, files are chosen in a dialog, status and
// progress show in the window. Work on the main thread that reports its progress keeps the window alive and can be stopped.
// Main thread, except Progress.
#pragma once

#include <QElapsedTimer>
#include <QPointer>
#include <QProgressDialog>
#include <QTimer>
#include <functional>

#include "engine/outside/Person.h"

namespace desktop {

class DesktopPerson : public engine::Person {
 public:
  DesktopPerson();

  // The window that boxes stand in front of; may be gone or never come.
  void SitAt(QWidget* window) { window_ = window; }
  // Where the status line shows; an empty text clears it.
  std::function<void(const QString&)> status;

  void Tell(const std::string& text) override;
  bool Ask(const std::string& text) override;
  std::optional<std::string> ChooseFile(const engine::FileQuestion& question) override;
  void ShowStatus(const std::string& text) override;
  void ClearStatus() override;
  bool Progress(double fraction, const std::string& what) override;

 private:
  bool ShowProgress(double fraction, const std::string& what);
  void EndProgress();

  QPointer<QWidget> window_;
  QPointer<QProgressDialog> progress_;
  QElapsedTimer shown_;  // since it was drawn last
  QTimer idle_;          // work that ends early says nothing: after a while without news its box goes
};

}  // namespace desktop
