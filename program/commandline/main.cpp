// The command line `stagemarks`: reads its arguments, runs the verb, answers its exit status.
#include <CLI/CLI.hpp>
#include <cstdlib>
#include <iostream>
#include <string_view>

#include "engine/import/Import.h"
#include "program/commandline/Program.h"

namespace commandline {
namespace {

// The child that an import runs in: `stagemarks --import-worker PATH FD`.
bool IsImportWorker(int count, char** words) { return count == 4 && std::string_view(words[1]) == "--import-worker"; }

void AddVerbs(CLI::App& app, Program& program) {
  for (auto* add : {AddNew,       AddImport,         AddInfo,      AddSet,    AddRecord, AddList,       AddLoad,    AddOptions,
                    AddRename,    AddDelete,         AddDeleteAll, AddCheck,  AddUpdate, AddSetObjects, AddSetTags, AddSetLayers,
                    AddSetCamera, AddCleanMaterials, AddExport,    AddRender, AddSheet,  AddDemo}) {
    add(app, program);
  }
}

void DescribeProgram(CLI::App& app, Program& program) {
  app.set_version_flag("--version", "stagemarks " STAGEMARKS_VERSION);
  app.add_flag("-q,--quiet", program.quiet, "No messages but errors");
  app.add_flag("-v,--verbose", program.verbose, "Say what is being done");
  app.require_subcommand(1);
  app.fallthrough();
  app.footer(
      "Nothing is written to your scene unless you say -o OUT or --write.\n"
      "Exit status: 0 done, 1 it did not work, 2 wrong usage or an unknown name, 130 stopped by Ctrl-C.\n\n"
      "Examples:\n"
      "  stagemarks import room.gltf room.c4d\n"
      "  stagemarks set room.c4d --object \"Lamp*\" --render off --write\n"
      "  stagemarks record room.c4d \"Lights out\" --write\n"
      "  stagemarks list room.c4d");
}

int Run(int count, char** words) {
  if (IsImportWorker(count, words)) return engine::RunImportWorker(words[2], std::atoi(words[3]), {});
  Program program;
  CLI::App app("Records, recalls and exports the states of a 3D scene.", "stagemarks");
  DescribeProgram(app, program);
  AddVerbs(app, program);
  try {
    app.parse(count, words);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kDone : kUsage;
  }
  Terminal::CatchInterrupts();
  program.terminal.Choose({program.yes, program.quiet, program.verbose});
  return program.verb();
}

}  // namespace
}  // namespace commandline

int main(int count, char** words) { return commandline::Run(count, words); }
