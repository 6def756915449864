
#include "program/commandline/Arguments.h"
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

void AddNew(Arguments& arguments, Program& program) {
  Verb verb = arguments.AddVerb("new", "Make an empty scene");
  verb.Add("OUT", program.output, "The .c4d file to write").Required();
  AddForce(verb, program);
  verb.AddFlag("--json", program.json, "Print the result as JSON");
  verb.Footer(
      "Example:\n"
      "  stagemarks new room.c4d");
  verb.Does([&program] { return RunNew(program); });
}

}  // namespace commandline
