// Startup: starts without anybody at the window: `stagemarks-desktop --check` does everything a
// start does, then lists what was found and ends without a question; and a sentence for a person
// where there is no display, where the toolkit would only abort. Called by main. Main thread.
#pragma once

#include "program/desktop/MainWindow.h"

namespace desktop {

// Nobody sits there: what is told goes to the error stream and is counted, questions are answered
// no.
class CheckingPerson : public DesktopPerson {
 public:
  void Tell(const std::string& text) override;
  bool Ask(const std::string&) override { return false; }
  std::optional<std::string> ChooseFile(const engine::FileQuestion&) override {
    return std::nullopt;
  }
  // How often something was told.
  int Told() const { return told_; }

 private:
  int told_ = 0;
};

// Opens `scenes`, lets the window draw, prints places, plug-ins and scenes to the standard output.
// Recent files stay as they are. 0 when everything was found and opened, else 1.
int RunCheck(engine::Application& application, CheckingPerson& person, const QStringList& scenes);

// From now on a toolkit that cannot start ends the program with a message and status 1.
void ExplainMissingDisplay();
// Called once the toolkit runs: its messages go to the error stream again from then on, those up to
// now among them.
void StopExplaining();

}  // namespace desktop
