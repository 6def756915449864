#include "program/desktop/script/ScriptRunner.h"

#include <dlfcn.h>

#include <QFileInfo>

#include "host/Application.h"
#include "program/desktop/Text.h"
#include "program/desktop/background/DocumentBusy.h"

namespace desktop {

namespace {

using scripting::ScriptEnd;

constexpr double kUnknownShare = -1;

// One per process: Python cannot be started twice. Its output goes to the runner that runs.
ScriptRunner* running = nullptr;
// Of the script that runs; Python asks it every 50 milliseconds (decision 65).
std::function<bool()> goesOn;

// Never unloaded: modules of Python cannot be loaded twice into one process.
scripting::Interpreter* Make(std::string& problem) {
  static scripting::Interpreter* made = nullptr;
  if (made) return made;
  // Modules of Python that are loaded later look for it among what is loaded for all.
  void* library = dlopen(scripting::kInterpreterLibrary, RTLD_NOW | RTLD_GLOBAL);
  auto* make = library ? reinterpret_cast<scripting::MakeInterpreter*>(
                             dlsym(library, scripting::kMakeInterpreter))
                       : nullptr;
  if (!make) {
    problem = "Scripts need Python. Install the package python3-stagemarks.";
    return nullptr;
  }
  scripting::ScriptHooks hooks;
  hooks.write = [](const std::string& text, bool isError) {
    if (running && running->written) running->written(ToQt(text), isError);
  };
  hooks.goesOn = [] { return !goesOn || goesOn(); };
  made = make(hooks, &problem);
  if (!made) problem = "Python could not be started: " + problem;
  return made;
}

}  // namespace

ScriptRunner::~ScriptRunner() {
  if (running == this) running = nullptr;
}

std::string ScriptRunner::Load() {
  std::string problem;
  if (!interpreter_) interpreter_ = Make(problem);
  return problem;
}

// The documents are busy while it runs, as in a plug-in's call; events are delivered afterwards.
ScriptEnd ScriptRunner::Run(const std::string& doing, const std::function<ScriptEnd()>& run) {
  ScriptEnd end;
  if (IsRunning() || IsDocumentBusy()) {
    end.problem = "Something else is going on; run it again when that is over.";
    return end;
  }
  running = this;
  if (end.problem = Load(); !end.problem.empty()) return end;
  doing_ = doing;
  goesOn = [this] { return person_.Progress(kUnknownShare, doing_); };
  {
    const DocumentBusy busy;
    end = run();
  }
  goesOn = nullptr;
  doing_.clear();
  host::EventAdd();
  return end;
}

ScriptEnd ScriptRunner::RunFile(const std::string& path) {
  const std::string name = QFileInfo(ToQt(path)).fileName().toStdString();
  return Run("Running " + name, [&] { return interpreter_->RunFile(path, "Script " + name); });
}

ScriptEnd ScriptRunner::RunLines(const std::string& lines) {
  return Run("Running a script", [&] { return interpreter_->RunLines(lines, "Console"); });
}

std::vector<std::string> ScriptRunner::Complete(const std::string& line) {
  if (IsRunning() || !Load().empty()) return {};
  return interpreter_->Complete(line);
}

}  // namespace desktop
