
#include "program/commandline/Arguments.h"
#include "program/commandline/Session.h"

namespace commandline {

namespace {

int RunCheck(Program& program, const std::vector<std::string>& only) {
  Session session(program);
  if (const int status = session.StartWithScene(); status != kDone) return status;
  if (const int status = session.Check(only); status != kDone) return status;
  Report report;
  report.Put("checked", session.Dialog().CheckedNames());
  report.Line(session.Dialog().ListText());
  report.Line(Counted(session.Dialog().CheckedNames().size(), "Stagemark") + " checked.");
  report.Print(program.json);
  return kDone;
}

}  // namespace

void AddCheck(Arguments& arguments, Program& program) {
  Verb verb = arguments.AddVerb("check", "Show which Stagemarks a list of names means");
  AddScene(verb, program);
  auto only = std::make_shared<std::vector<std::string>>();
  AddOnly(verb, *only);
  verb.Footer(
      "Check marks live in the list only and are not kept in the scene: every verb that works on "
      "checked Stagemarks takes\n"
      "--only itself. This one shows beforehand what such a list selects, and refuses unknown "
      "names.\n\n"
      "Example:\n"
      "  stagemarks check room.c4d --only Day Night");
  verb.Does([&program, only] { return RunCheck(program, *only); });
}

}  // namespace commandline
