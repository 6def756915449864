// Program: one call of the command line: what every verb was given, the terminal, and the verb that
// was chosen. Each verb has a function that declares it (see Arguments.h) and leaves a function
// that does the work and answers the exit status. Main thread.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "program/commandline/Terminal.h"
#include "program/outcome/ExitStatus.h"

namespace commandline {

class Arguments;

// Exit statuses, as the manual lists them.
using outcome::kDone;
using outcome::kFailed;
using outcome::kInterrupted;
using outcome::kUsage;
// Failure of the verbs whose status 1 says that something was found
inline constexpr int kTrouble = 2;

struct OpenScene;

struct Program {
  Program() : own(std::make_unique<Terminal>()), terminal(*own) {}
  // A step of `run`: with its terminal and its open scene.
  Program(Terminal& shared, std::shared_ptr<OpenScene> opened)
      : terminal(shared), open(std::move(opened)) {}

  std::unique_ptr<Terminal> own;
  Terminal& terminal;
  std::shared_ptr<OpenScene> open;  // null but in a step
  std::function<int()> verb;
  std::string verbName;

  // Options that many verbs share.
  std::string scene;
  std::string output;
  bool write = false;
  bool force = false;
  unsigned longestWait = 60;  // seconds, for another program that changes the scene
  bool json = false;
  bool yes = false;
  bool quiet = false;
  bool verbose = false;
  bool strict = false;
  bool allowOutside = false;  // textures outside the folder of an imported file

  // The choices for its terminal.
  TerminalChoices Choices() const { return {yes, quiet, verbose, json}; }
};

// Declares every verb.
void AddVerbs(Arguments& arguments, Program& program);
// One function per verb, in the order of the help.
void AddNew(Arguments& arguments, Program& program);
void AddImport(Arguments& arguments, Program& program);
void AddInfo(Arguments& arguments, Program& program);
void AddList(Arguments& arguments, Program& program);
void AddRecord(Arguments& arguments, Program& program);
void AddShow(Arguments& arguments, Program& program);
void AddDiff(Arguments& arguments, Program& program);
void AddMatrix(Arguments& arguments, Program& program);
void AddLoad(Arguments& arguments, Program& program);
void AddSet(Arguments& arguments, Program& program);
void AddOptions(Arguments& arguments, Program& program);
void AddElementVerbs(Arguments& arguments, Program& program);  // objects, cameras, lights, ...
void AddCheck(Arguments& arguments, Program& program);
void AddUpdate(Arguments& arguments, Program& program);
void AddSetObjects(Arguments& arguments, Program& program);
void AddSetTags(Arguments& arguments, Program& program);
void AddSetLayers(Arguments& arguments, Program& program);
void AddSetCamera(Arguments& arguments, Program& program);
void AddRename(Arguments& arguments, Program& program);
void AddDelete(Arguments& arguments, Program& program);
void AddDeleteAll(Arguments& arguments, Program& program);
void AddRun(Arguments& arguments, Program& program);
void AddRestore(Arguments& arguments, Program& program);
void AddStates(Arguments& arguments, Program& program);
void AddTrash(Arguments& arguments, Program& program);
void AddCleanMaterials(Arguments& arguments, Program& program);
void AddExport(Arguments& arguments, Program& program);
void AddRender(Arguments& arguments, Program& program);
void AddFarm(Arguments& arguments, Program& program);
void AddPublish(Arguments& arguments, Program& program);
void AddPage(Arguments& arguments, Program& program);
void AddSheet(Arguments& arguments, Program& program);
void AddDemo(Arguments& arguments, Program& program);

}  // namespace commandline
