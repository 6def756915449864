#include <CLI/CLI.hpp>

#include "program/commandline/Session.h"

namespace commandline {

namespace {

int RunNew(Program& program) {
  Session session(program);
  if (const int status = session.CheckTarget(); status != kDone) return status;
  if (session.Files().Kind(AbsolutePath(program.output)) != engine::FileKind::Missing && !program.write) {
    program.terminal.Error("\"" + program.output + "\" exists already. Give another name, or --force to replace it.");
    return kFailed;
  }
  session.App().NewDocument();
  Report report;
  return session.Keep(report);
}

}  // namespace

void AddNew(CLI::App& app, Program& program) {
  CLI::App* verb = app.add_subcommand("new", "Make an empty scene");
  verb->add_option("OUT", program.output, "The .c4d file to write")->required();
  verb->add_flag("--force", program.write, "Replace a file that is there");
  verb->add_flag("--json", program.json, "Print the result as JSON");
  verb->footer(
      "Example:\n"
      "  stagemarks new room.c4d");
  verb->callback([&program] { program.verb = [&program] { return RunNew(program); }; });
}

}  // namespace commandline
