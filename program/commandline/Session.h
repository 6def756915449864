// Session: the application with the plug-in loaded and its dialog open, and the scene that a verb works on. It owns the
// application; files are written only by Keep. Every function that can fail says why on the terminal and answers an exit
// status, kDone when all went well. Main thread.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/application/Application.h"
#include "engine/outside/RealOutside.h"
#include "program/commandline/Program.h"
#include "program/commandline/Report.h"
#include "program/commandline/StagemarksDialog.h"

namespace commandline {

// Folder of the running program, without a separator at its end.
std::string ProgramFolder();
// An absolute path for one as typed.
std::string AbsolutePath(const std::string& typed);

class Session {
 public:
  explicit Session(Program& program);

  // Loads the plug-in and opens its dialog.
  int Start();
  // Start, then opens the scene that the verb was given; other formats are imported on the fly.
  int StartWithScene();
  // Opens or imports a file and makes it the active document.
  int Open(const std::string& path);

  engine::Application& App() { return *application_; }
  engine::Outside& Files() { return outside_; }
  StagemarksDialog& Dialog() { return *dialog_; }
  host::BaseDocument& Document() { return *host::GetActiveDocument(); }
  Program& GetProgram() { return program_; }

  // An unknown Stagemark is refused here, with the names that come close: the dialog would take it for the first one.
  int RequireMark(const std::string& name);
  // Writes the scene where -o or --write say so, and puts the file into the report; else says how to keep the change.
  int Keep(Report& report);
  // Names every file operation that failed since the start; kFailed when there was one.
  int CheckLedger();

 private:
  int LoadPlugin();

  Program& program_;
  engine::RealOutside outside_;
  engine::OutsideInUse inUse_;
  std::unique_ptr<engine::Application> application_;
  std::unique_ptr<StagemarksDialog> dialog_;
  bool imported_ = false;
};

}  // namespace commandline
