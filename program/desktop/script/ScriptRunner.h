// ScriptRunner: runs Python scripts in the desktop. Python is loaded when the first one runs. While
// a script runs the documents are busy, and a box can stop it. Owned by the window. Main thread.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "program/desktop/DesktopPerson.h"
#include "program/python/interpreter/Interpreter.h"

namespace desktop {

class ScriptRunner {
 public:
  explicit ScriptRunner(DesktopPerson& person) : person_(person) {}
  ScriptRunner(const ScriptRunner&) = delete;
  ScriptRunner& operator=(const ScriptRunner&) = delete;
  ~ScriptRunner();

  // Hears what scripts print.
  std::function<void(const QString& text, bool isError)> written;

  bool IsRunning() const { return !doing_.empty(); }
  bool IsLoaded() const { return interpreter_ != nullptr; }
  // An absolute path. What came of it stands in the end, which says why where nothing could run.
  scripting::ScriptEnd RunFile(const std::string& path);
  scripting::ScriptEnd RunLines(const std::string& lines);
  std::vector<std::string> Complete(const std::string& line);

 private:
  scripting::ScriptEnd Run(const std::string& doing,
                           const std::function<scripting::ScriptEnd()>& run);
  // Why there is no interpreter; empty where there is one.
  std::string Load();

  DesktopPerson& person_;
  scripting::Interpreter* interpreter_ = nullptr;  // lives as long as the process
  std::string doing_;                              // for the box; empty while nothing runs
};

}  // namespace desktop
