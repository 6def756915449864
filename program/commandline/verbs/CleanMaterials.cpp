#include <CLI/CLI.hpp>
#include <unordered_map>

#include "host/Host.h"
#include "program/commandline/Session.h"

namespace commandline {

namespace {

std::vector<std::string> Materials(const host::BaseDocument& doc) {
  std::vector<std::string> names;
  for (host::BaseMaterial* at = doc.GetFirstMaterial(); at; at = at->GetNext()) names.push_back(at->GetName().ToUtf8());
  return names;
}

// Names of `before` that `after` does not have as often.
std::vector<std::string> Gone(const std::vector<std::string>& before, const std::vector<std::string>& after) {
  std::unordered_map<std::string, int> left;
  for (const std::string& name : after) ++left[name];
  std::vector<std::string> gone;
  for (const std::string& name : before) {
    if (--left[name] < 0) gone.push_back(name);
  }
  return gone;
}

int RunCleanMaterials(Program& program) {
  Session session(program);
  if (const int status = session.StartWithScene(); status != kDone) return status;
  if (session.Dialog().Marks().empty()) {
    program.terminal.Error("There are no Stagemarks in this scene that could say which materials are used. Nothing was deleted.");
    return kFailed;
  }
  const auto before = Materials(session.Document());
  session.Dialog().Choose("Clean Material Editor");
  session.App().DeliverEvents();
  const auto after = Materials(session.Document());
  const auto gone = Gone(before, after);
  Report report;
  report.Json() = {{"deleted", JsonOf(gone)}, {"kept", JsonOf(after)}};
  report.Line(gone.empty() ? "Every material is used by a Stagemark."
                           : "Deleted " + Counted(gone.size(), "material") + ": " + Listed(gone) + ".");
  report.Line("Kept " + Counted(after.size(), "material") + (after.empty() ? "." : ": " + Listed(after) + "."));
  return session.Keep(report);
}

}  // namespace

void AddCleanMaterials(CLI::App& app, Program& program) {
  CLI::App* verb = app.add_subcommand("clean-materials", "Delete the materials that no Stagemark uses");
  AddScene(*verb, program);
  AddKeeping(*verb, program);
  verb->footer(
      "Only what a Stagemark has recorded counts: a material that the scene itself uses goes, too, when no Stagemark recorded "
      "it.\n\n"
      "Example:\n"
      "  stagemarks clean-materials room.c4d -o small.c4d");
  verb->callback([&program] { program.verb = [&program] { return RunCleanMaterials(program); }; });
}

}  // namespace commandline
