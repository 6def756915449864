// Program: one call of the command line: what every verb was given, the terminal, and the verb that
// was chosen. Each verb registers itself with AddVerb functions and leaves a function that does the
// work and answers the exit status. Main thread.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "program/commandline/Terminal.h"

namespace CLI {
class App;
}

namespace commandline {

// Exit statuses, as the manual lists them.
inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;  // it did not work
inline constexpr int kUsage = 2;   // wrong usage or an unknown name
// Stopped by Ctrl-C; other signals that ask to stop give 128 + their number
inline constexpr int kInterrupted = 130;

struct Program {
  Terminal terminal;
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
};

// Adds the positional SCENE and --json; and the options of a verb that changes the scene (-o,
// --write).
inline constexpr const char* kAnyScene =
    "The scene: a .c4d file, or a .gltf, .glb, .fbx, .obj or .dae that is imported on the fly";
void AddScene(CLI::App& verb, Program& program, const char* help = kAnyScene);
void AddKeeping(CLI::App& verb, Program& program);
// The option --strict of a verb for which a missing texture may be a fault.
void AddStrict(CLI::App& verb, Program& program);
// The option --force of a verb that writes files.
void AddForce(CLI::App& verb, Program& program);
// The option --only NAME... of a verb that works on checked rows.
void AddOnly(CLI::App& verb, std::vector<std::string>& only);

// One function per verb, in the order of the help.
void AddNew(CLI::App& app, Program& program);
void AddImport(CLI::App& app, Program& program);
void AddInfo(CLI::App& app, Program& program);
void AddList(CLI::App& app, Program& program);
void AddRecord(CLI::App& app, Program& program);
void AddLoad(CLI::App& app, Program& program);
void AddSet(CLI::App& app, Program& program);
void AddOptions(CLI::App& app, Program& program);
void AddCheck(CLI::App& app, Program& program);
void AddUpdate(CLI::App& app, Program& program);
void AddSetObjects(CLI::App& app, Program& program);
void AddSetTags(CLI::App& app, Program& program);
void AddSetLayers(CLI::App& app, Program& program);
void AddSetCamera(CLI::App& app, Program& program);
void AddRename(CLI::App& app, Program& program);
void AddDelete(CLI::App& app, Program& program);
void AddDeleteAll(CLI::App& app, Program& program);
void AddCleanMaterials(CLI::App& app, Program& program);
void AddExport(CLI::App& app, Program& program);
void AddRender(CLI::App& app, Program& program);
void AddSheet(CLI::App& app, Program& program);
void AddDemo(CLI::App& app, Program& program);

}  // namespace commandline
