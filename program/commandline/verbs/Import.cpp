
#include "engine/import/Import.h"
#include "engine/import/Notes.h"
#include "engine/scene/DocumentState.h"
#include "program/commandline/Arguments.h"
#include "program/commandline/Session.h"

namespace commandline {

namespace {

// What is not as in the file, each with how often where that is counted.
void PutNotes(const std::vector<std::string>& notes, Report& report) {
  report.PutList("notes");
  for (const std::string& note : notes) {
    const engine::CountedNote counted = engine::AsCounted(note);
    report.Append("notes", {{"note", counted.what},
                            {"count", counted.times > 0 ? JsonValue(counted.times) : JsonValue()}});
  }
}

int RunImport(Program& program) {
  if (!engine::IsImportable(program.scene)) {
    program.terminal.Error(
        "\"" + program.scene +
        "\" is of no format that can be imported. Those are .gltf, .glb, .fbx, .obj and .dae.");
    return kUsage;
  }
  Session session(program);
  if (const int status = session.CheckTarget(); status != kDone) return status;
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
  return session.Keep(report);
}

}  // namespace

void AddImport(Arguments& arguments, Program& program) {
  Verb verb =
      arguments.AddVerb("import", "Turn a glTF, FBX, OBJ or COLLADA file into a scene of ours");
  AddScene(verb, program, "The file to import: .gltf, .glb, .fbx, .obj or .dae");
  verb.Add("OUT", program.output, "The .c4d file to write").Required();
  AddStrict(verb, program);
  AddForce(verb, program);
  verb.Footer(
      "Examples:\n"
      "  stagemarks import room.gltf room.c4d\n"
      "  stagemarks import models/spider.fbx spider.c4d --json");
  verb.Does([&program] { return RunImport(program); });
}

}  // namespace commandline
