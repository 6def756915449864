#include <ctime>

#include "program/commandline/Arguments.h"
#include "program/commandline/Session.h"

namespace commandline {

namespace {

struct RestoreChoices {
  std::string keep;
  bool dryRun = false;
};

constexpr std::pair<const char*, engine::FormerPlace> kPlaces[] = {
    {"hidden", engine::FormerPlace::Hidden},
    {"beside", engine::FormerPlace::Beside},
    {"nowhere", engine::FormerPlace::Nowhere}};

std::string LocalTime(std::int64_t nanoseconds, const char* form) {
  const std::time_t seconds = nanoseconds / 1000000000;
  std::tm local{};
  localtime_r(&seconds, &local);
  char text[32];
  return std::string(text, std::strftime(text, sizeof text, form, &local));
}

// In ISO 8601, with the zone of this machine. strftime writes +0100 where ISO 8601 has +01:00.
std::string TimeForProgram(std::int64_t nanoseconds) {
  return LocalTime(nanoseconds, "%Y-%m-%dT%H:%M:%S%z").insert(22, ":");
}

int KeepThere(Session& session, const std::string& word, Report& report) {
  engine::FormerPlace chosen{};
  for (const auto& [name, place] : kPlaces) {
    if (word == name) chosen = place;
  }
  if (!session.App().SetPlaceOfFormerVersions(chosen)) return session.CheckLedger();
  report.Put("keep", word);
  report.Line(chosen == engine::FormerPlace::Hidden
                  ? "The version before is kept in a hidden folder from now on."
              : chosen == engine::FormerPlace::Beside
                  ? "The version before is kept beside the scene from now on, as SCENE.c4d~."
                  : "No version before is kept from now on.");
  return kDone;
}

// Neither version is lost: they change places (decision 69).
int RestoreScene(Session& session, bool dryRun, Report& report) {
  Program& program = session.GetProgram();
  const std::string scene = AbsolutePath(program.scene);
  const std::string former = session.App().FormerVersionOf(scene);
  if (former.empty()) {
    program.terminal.Error("No version of \"" + program.scene +
                           "\" from before its last saving is kept.");
    return kFailed;
  }
  const std::int64_t saved = session.Files().Stamp(former).changed;
  const std::string time = LocalTime(saved, "%Y-%m-%d %H:%M:%S");
  report.Put("savedAt", TimeForProgram(saved));
  report.Put("restored", dryRun ? JsonValue() : JsonValue(scene));
  if (dryRun) {
    report.Line("The version before was saved on " + time + ".");
    return kDone;
  }
  engine::SaveChoices choices;
  choices.longestWait = std::chrono::seconds(program.longestWait);
  if (const auto restored = session.App().RestoreFormerVersion(scene, choices); !restored) {
    program.terminal.Error(restored.Message());
    return Terminal::Interrupted() ? kInterrupted : kFailed;
  }
  report.Line("Restored: " + scene + ", as it was saved on " + time +
              ". The same command takes it back.");
  return kDone;
}

int RunRestore(Program& program, const RestoreChoices& choices) {
  if (program.scene.empty() && choices.keep.empty()) {
    program.terminal.Error("Name the SCENE to restore, or say --keep WHERE.");
    return kUsage;
  }
  Session session(program);
  Report report;
  for (const char* key : {"restored", "savedAt", "keep"}) report.Put(key, JsonValue());
  int status = choices.keep.empty() ? kDone : KeepThere(session, choices.keep, report);
  if (status == kDone && !program.scene.empty())
    status = RestoreScene(session, choices.dryRun, report);
  if (status != kDone) return status;
  report.Print(program);
  return session.CheckLedger();
}

}  // namespace

void AddRestore(Arguments& arguments, Program& program) {
  Verb verb = arguments.AddVerb("restore", "Bring back the scene as it was before its last saving");
  verb.Add("SCENE", program.scene, "The scene, a .c4d file; it may have been deleted");
  auto choices = std::make_shared<RestoreChoices>();
  verb.AddFlag("-n,--dry-run", choices->dryRun, "Only say when the version before was saved");
  verb.Add("--keep", choices->keep,
           "From now on keep versions there: in a hidden folder of yours, beside the scene as "
           "SCENE.c4d~, or nowhere")
      .Word("WHERE")
      .OneOf({kPlaces[0].first, kPlaces[1].first, kPlaces[2].first});
  AddWait(verb, program);
  verb.AddFlag("--json", program.json, "Print the result as JSON");
  verb.Footer(
      "Each saving keeps one version, the one that it replaces, in ~/.local/state/stagemarks or "
      "beside the scene. The version that is restored changes places with it: calling this again "
      "takes it back. Preview images stay as they are.\n\n"
      "Examples:\n"
      "  stagemarks restore room.c4d\n"
      "  stagemarks restore --keep beside");
  verb.Does([&program, choices] { return RunRestore(program, *choices); });
}

}  // namespace commandline
