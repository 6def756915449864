#include <CLI/CLI.hpp>

#include "program/commandline/Session.h"

namespace commandline {

namespace {

int RunNew(Program& program) {
  Session session(program);
  if (const int status = session.CheckTarget(); status != kDone) return status;
  session.App().NewDocument();
  Report report;
  return session.Keep(report);
}

}  // namespace

void AddNew(CLI::App& app, Program& program) {
  CLI::App* verb = app.add_subcommand("new", "Make an empty scene");
  verb->add_option("OUT", program.output, "The .c4d file to write")->required();
  AddForce(*verb, program);
  verb->add_flag("--json", program.json, "Print the result as JSON");
  verb->footer(
      "Example:\n"
      "  stagemarks new room.c4d");
  verb->callback([&program] { program.verb = [&program] { return RunNew(program); }; });
}

}  // namespace commandline
