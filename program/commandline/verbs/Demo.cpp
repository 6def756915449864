#include "program/commandline/Demo.h"
#include "program/commandline/Arguments.h"

#include <filesystem>

#include "engine/application/ProgramPlaces.h"

namespace commandline {

namespace {

constexpr const char* kFolder = "stagemarks-demo";

// A demo that was worked on is not replaced by the next one.
std::string FreeFolder(Session& session) {
  std::string folder = kFolder;
  for (int number = 2; session.Files().Kind(AbsolutePath(folder)) != engine::FileKind::Missing;
       ++number) {
    folder = kFolder + ("-" + std::to_string(number));
  }
  return AbsolutePath(folder);
}

int CheckFolder(Session& session, const std::string& folder, const std::string& scene) {
  const std::string saved = folder + "/" + std::filesystem::path(scene).stem().string() + ".c4d";
  for (const std::string& path : {saved, folder + "/export"}) {
    if (session.GetProgram().force || session.Files().Kind(path) == engine::FileKind::Missing)
      continue;
    session.GetProgram().terminal.Error(
        "\"" + path +
        "\" exists already. Name another folder with --to, or --force to replace it.");
    return kFailed;
  }
  return kDone;
}

int RunDemo(Program& program) {
  Session session(program);
  if (const int status = session.Start(); status != kDone) return status;
  const bool isSample = program.scene.empty();
  const std::string scene = isSample ? engine::SampleScene() : AbsolutePath(program.scene);
  if (isSample && session.Files().Kind(scene) != engine::FileKind::File) {
    program.terminal.Error("The sample scene is not at \"" + scene +
                           "\". Give a scene: stagemarks demo SCENE.");
    return kFailed;
  }
  const std::string folder =
      program.output.empty() ? FreeFolder(session) : AbsolutePath(program.output);
  if (const int status = CheckFolder(session, folder, scene); status != kDone) return status;
  return Demo(session, scene, folder).Run();
}

}  // namespace

void AddDemo(Arguments& arguments, Program& program) {
  Verb verb = arguments.AddVerb(
      "demo", "Show the main job on a sample scene: record three states, recall and check them");
  verb.Add("SCENE", program.scene, "The scene to use instead of the sample");
  verb.Add("--to", program.output,
           "Folder for what it writes; one that is not there yet by default")
      .Word("DIR")
      .Default(kFolder);
  AddForce(verb, program);
  verb.AddFlag("--json", program.json, "Print the steps as JSON when all is done");
  verb.Footer(
      "Examples:\n"
      "  stagemarks demo\n"
      "  stagemarks demo my.gltf --to tryout");
  verb.Does([&program] { return RunDemo(program); });
}

}  // namespace commandline
