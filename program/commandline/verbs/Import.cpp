#include "engine/import/Import.h"

#include <filesystem>

#include "engine/application/ProgramPlaces.h"
#include "engine/import/Notes.h"
#include "engine/import/TextureCollection.h"
#include "engine/scene/DocumentState.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/SeededIds.h"
#include "engine/update/SceneUpdate.h"
#include "program/commandline/Arguments.h"
#include "program/commandline/Session.h"

namespace commandline {

namespace {

struct ImportChoices {
  std::string update;  // the scene to bring up to date; empty: a new one is made
  std::string gone = "keep";
  bool collect = false;
  bool dryRun = false;
};

constexpr std::size_t kMostLines = 12;  // of one list, for a person

// Reports the differences from the file, each with its count where it is counted.
void PutNotes(const std::vector<std::string>& notes, Report& report) {
  report.PutList("notes");
  for (const std::string& note : notes) {
    const engine::CountedNote counted = engine::AsCounted(note);
    report.Append("notes", {{"note", counted.what},
                            {"count", counted.times > 0 ? JsonValue(counted.times) : JsonValue()}});
  }
}

int RefuseFormat(Program& program) {
  program.terminal.Error(engine::WhyNotImportable(program.scene));
  return kUsage;
}

// Linked textures come beside the scene that is going to be written.
int Collect(Session& session, const std::string& scene, Report& report) {
  const auto collected =
      engine::CollectTextures(session.GetServices(), session.Document(),
                              std::filesystem::path(AbsolutePath(scene)).parent_path().string());
  if (!collected) {
    session.GetProgram().terminal.Error(collected.Message());
    return Terminal::Interrupted() ? kInterrupted : kFailed;
  }
  report.Put("collected", collected.Value());
  if (!collected.Value().empty())
    report.Line("Copied " + Counted(collected.Value().size(), "texture") + " beside the scene.");
  return kDone;
}

// Importing anew over a scene with Stagemarks is what updating is for.
int CheckTarget(Session& session) {
  const int status = session.CheckTarget();
  Program& program = session.GetProgram();
  if (status == kFailed &&
      session.Files().Kind(AbsolutePath(program.output)) == engine::FileKind::File)
    program.terminal.Note("--update " + program.output +
                          " --write brings that scene up to date instead; its Stagemarks stay.");
  return status;
}

// The dialog is there before the file is opened: states that come in with it are recorded by it.
int Import(Program& program, const ImportChoices& choices) {
  Session session(program);
  if (const int status = CheckTarget(session); status != kDone) return status;
  if (const int status = session.Start(); status != kDone) return status;
  if (const int status = session.Open(program.scene); status != kDone) return status;
  Report report;
  if (const int status = session.CheckTextures(report); status != kDone) return status;
  const engine::SceneCounts counts = engine::CountScene(session.Document());
  report.Line("Imported " + Counted(counts.objects, "object") + ", " +
              Counted(counts.materials, "material") + ", " + Counted(counts.cameras, "camera") +
              ", " + Counted(counts.lights, "light") + ", " + Counted(counts.polygons, "polygon") +
              ".");
  const std::vector<std::string>& marks = session.ImportedMarks();
  if (!marks.empty())
    report.Line("Recorded " + Counted(marks.size(), "Stagemark") + ": " + Listed(marks) + ".");
  report.Put("recorded", marks);
  PutNotes(session.ImportNotes(), report);
  report.Put("objects", counts.objects);
  report.Put("materials", counts.materials);
  report.Put("cameras", counts.cameras);
  report.Put("lights", counts.lights);
  report.Put("polygons", counts.polygons);
  const int status = choices.collect ? Collect(session, program.output, report) : kDone;
  return status == kDone ? session.Keep(report) : status;
}

// One call of `import --update`: the scene is opened as for any other change, the file is imported
// beside it, and what differs is brought into the scene.
class UpdateFromFile {
 public:
  UpdateFromFile(Program& program, const ImportChoices& choices, std::string source)
      : program_(program), choices_(choices), source_(std::move(source)), session_(program) {}

  int Run() {
    if (const int status = session_.StartWithScene(); status != kDone) return status;
    auto fresh =
        engine::ImportScene(session_.GetServices(), AbsolutePath(source_),
                            engine::ImportWorkerProgram(), session_.Opened()->importLimits);
    if (!fresh) {
      program_.terminal.Error(fresh.Message());
      return Terminal::Interrupted() ? kInterrupted : kFailed;
    }
    Update(fresh.Value());
    if (const int status = session_.CheckTextures(report_); status != kDone) return status;
    report_.Put("dryRun", choices_.dryRun);
    if (choices_.dryRun) {
      report_.Put("written", JsonValue());
      report_.Line("Nothing was written (--dry-run).");
      report_.Print(program_);
      return session_.CheckLedger();
    }
    const std::string scene = program_.output.empty() ? program_.scene : program_.output;
    const bool collects = choices_.collect && !WritesNothing();
    const int status = collects ? Collect(session_, scene, report_) : kDone;
    return status == kDone ? session_.Keep(report_) : status;
  }

 private:
  void Update(engine::Imported& fresh) {
    const engine::SeededIds ids(engine::IdOf(*fresh.document));
    const engine::SceneUpdate update = engine::UpdateScene(
        session_.Document(), *fresh.document, {.removeGone = choices_.gone == "remove"});
    session_.App().DeliverEvents();
    std::vector<std::string> notes = fresh.notes;
    notes.insert(notes.end(), update.notes.begin(), update.notes.end());
    for (const std::string& note : notes) program_.terminal.Note(note);
    PutNotes(notes, report_);
    const std::string done = update.removed > 0 ? "removed" : "kept; --gone remove deletes them";
    report_.Line((WritesNothing() ? "Would update " : "Updated ") + Listed({program_.scene}) +
                 " from " + Listed({source_}) + ":");
    Tell("object", "objects", update.objects, done);
    Tell("material", "materials", update.materials, "kept");
    report_.Put("removed", update.removed);
  }

  bool WritesNothing() const {
    return choices_.dryRun || (program_.output.empty() && !program_.write);
  }

  void Tell(const char* one, const char* key, const engine::ElementChanges& changes,
            const std::string& done) {
    const std::string gone = changes.goneCount > 0
                                 ? ", " + std::to_string(changes.goneCount) + " gone (" + done + ")"
                                 : std::string();
    report_.Line("  " + Counted(changes.found, one) + " found, " +
                 std::to_string(changes.changed.size()) + " changed, " +
                 std::to_string(changes.addedCount) + " new" + gone);
    std::vector<JsonValue> changed;
    std::vector<std::string> lines;
    for (const engine::ChangedElement& element : changes.changed) {
      changed.push_back(
          JsonValue::Object({{"path", element.path}, {"what", JsonValue(element.what)}}));
      lines.push_back(Shown(element.path) + "  (" + Joined(element.what) + ")");
    }
    TellEach("changed", lines);
    TellEach("new", ShownAll(changes.added));
    TellEach("gone", ShownAll(changes.gone));
    report_.PutObject(key, {{"found", changes.found},
                            {"changed", JsonValue::List(changed)},
                            {"new", JsonValue(changes.added)},
                            {"newCount", changes.addedCount},
                            {"gone", JsonValue(changes.gone)},
                            {"goneCount", changes.goneCount}});
  }

  static std::vector<std::string> ShownAll(const std::vector<std::string>& paths) {
    std::vector<std::string> shown;
    shown.reserve(paths.size());
    for (const std::string& path : paths) shown.push_back(Shown(path));
    return shown;
  }

  void TellEach(const std::string& word, const std::vector<std::string>& lines) {
    for (std::size_t i = 0; i < lines.size() && i < kMostLines; ++i)
      report_.Line("    " + word + "  " + lines[i]);
    if (lines.size() > kMostLines)
      report_.Line("    " + word + "  and " + std::to_string(lines.size() - kMostLines) +
                   " more; --json lists all");
  }

  Program& program_;
  const ImportChoices& choices_;
  const std::string source_;
  Session session_;
  Report report_;
};

int RunImport(Program& program, const ImportChoices& choices) {
  if (!engine::IsImportable(program.scene)) return RefuseFormat(program);
  if (choices.update.empty() && program.output.empty()) {
    program.terminal.Error(
        "Where to? Give the .c4d file to write, or --update SCENE to bring a scene up to date.");
    return kUsage;
  }
  if (choices.update.empty()) return Import(program, choices);
  const std::string source = program.scene;
  program.scene = choices.update;
  return UpdateFromFile(program, choices, source).Run();
}

// The options of bringing a scene up to date; `choices` live until the verb has run.
void AddUpdating(Verb verb, Program& program, ImportChoices& choices) {
  verb.Add("--update", choices.update,
           "Bring a scene up to date that came from this file: its Stagemarks stay")
      .Word("SCENE");
  verb.Add("--gone", choices.gone,
           "With --update, what the file does not have any more: keep: stays in the scene; remove: "
           "is deleted")
      .OneOf({"keep", "remove"})
      .Default("keep")
      .Word("HOW")
      .Needs("--update");
  verb.AddFlag("--write", program.write, "With --update, write the change into SCENE itself")
      .Needs("--update");
  verb.AddFlag("-n,--dry-run", choices.dryRun, "Say what --update would change, write nothing")
      .Needs("--update")
      .Excludes("--write");
  verb.Add("-o,--output", program.output, "The same as OUT")
      .Word("OUT")
      .Needs("--update")
      .Excludes("--write");
}

}  // namespace

void AddImport(Arguments& arguments, Program& program) {
  Verb verb =
      arguments.AddVerb("import", "Turn a glTF, FBX, OBJ or COLLADA file into a scene of ours");
  AddScene(verb, program, "The file to import: .gltf, .glb, .fbx, .obj or .dae");
  auto choices = std::make_shared<ImportChoices>();
  verb.Add("OUT", program.output, "The .c4d file to write");
  AddUpdating(verb, program, *choices);
  verb.AddFlag("--collect", choices->collect,
               "Copy linked textures into the folder \"tex\" beside the scene");
  verb.AddFlag(
      "--allow-outside", program.allowOutside,
      "Use pictures outside the folder of the file, too; else they are named and left out");
  AddStrict(verb, program);
  AddForce(verb, program);
  verb.Footer(
      "A glTF file with material variants comes in with one Stagemark per variant. --update finds "
      "objects by their names from the top and changes what the file says differently since the "
      "last import; what was changed here stays. Like every verb it writes only to OUT, or to "
      "SCENE with --write. The file is read by a child with 1.5 GiB of memory and 30 seconds; for "
      "a "
      "giant one that you trust STAGEMARKS_IMPORT_MEMORY (GiB) and STAGEMARKS_IMPORT_SECONDS set "
      "other limits.\n\n"
      "Examples:\n"
      "  stagemarks import room.gltf room.c4d\n"
      "  stagemarks import models/spider.fbx spider.c4d --collect\n"
      "  stagemarks import room.gltf --update room.c4d --dry-run\n"
      "  stagemarks import room.gltf --update room.c4d --write");
  verb.Does([&program, choices] { return RunImport(program, *choices); });
}

}  // namespace commandline
