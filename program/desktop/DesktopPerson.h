// DesktopPerson: the person in front of the window: messages and questions are boxes, files are
// chosen in a dialog, status and progress show in the window. Work within one call on the main
// thread that reports its progress gets a box that can stop it. Main thread, except Progress.
#pragma once

#include <QElapsedTimer>
#include <QPointer>
#include <QTimer>
#include <functional>

#include "engine/outside/FileSystem.h"
#include "engine/outside/Person.h"
#include "program/desktop/background/ProgressDialog.h"

namespace desktop {

class DesktopPerson : public engine::Person {
 public:
  DesktopPerson();
  ~DesktopPerson() override;

  // The window that boxes stand in front of; may be gone or never come.
  void SetWindow(QWidget* window) { window_ = window; }
  // Where the status line shows; an empty text clears it.
  std::function<void(const QString&)> status;
  // Hears of a file or folder that a plug-in asked for and the person chose; with false it is not
  // taken, as if it was called off.
  std::function<bool(const engine::FileQuestion& question, const std::string& path)> choosing;
  // Where folders are made whose name is typed; null: only those that are there can be chosen.
  engine::FileSystem* files = nullptr;

  // A text whose first words are a warning or an error looks like one.
  void Tell(const std::string& text) override;
  // Something did not work: shown as a warning.
  void Warn(const std::string& text);
  // The answer that Enter gives is no: what plug-ins ask about is deleting and overwriting, which
  // no undo brings back.
  bool Ask(const std::string& text) override;
  std::optional<std::string> ChooseFile(const engine::FileQuestion& question) override;
  void ShowStatus(const std::string& text) override;
  void ClearStatus() override;
  bool Progress(double fraction, const std::string& what) override;
  bool Writing(const std::string& path) override;

 private:
  // Shows the box when the work has gone on for longer than the box's patience. False when it shall
  // stop.
  bool ShowProgress(double fraction, const std::string& what);
  // Draws the box and hears its button.
  void LetDraw(double fraction, const std::string& what);
  // Closes the box; also when the work has ended without a word.
  void EndProgress();

  QPointer<QWidget> window_;
  QPointer<ProgressDialog> progress_;
  QElapsedTimer begun_;   // valid while something works
  QElapsedTimer shown_;   // since it was drawn last
  bool drawing_ = false;  // events are being handled in the middle of the work
  // Fires when the work has come back to the event loop, since much work says nothing at its end
  QTimer over_;
};

}  // namespace desktop
