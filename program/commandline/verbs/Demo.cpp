#include "program/commandline/Demo.h"

#include <CLI/CLI.hpp>

#include "engine/application/ProgramPlaces.h"

namespace commandline {

namespace {

int RunDemo(Program& program) {
  Session session(program);
  if (const int status = session.Start(); status != kDone) return status;
  const bool isSample = program.scene.empty();
  const std::string scene = isSample ? engine::SampleScene() : AbsolutePath(program.scene);
  if (isSample && session.Files().Kind(scene) != engine::FileKind::File) {
    program.terminal.Error("The sample scene is not at \"" + scene + "\". Give a scene: stagemarks demo SCENE.");
    return kFailed;
  }
  return Demo(session, scene, AbsolutePath(program.output)).Run();
}

}  // namespace

void AddDemo(CLI::App& app, Program& program) {
  CLI::App* verb = app.add_subcommand("demo", "Show the main job on a sample scene: record three states, recall and check them");
  verb->add_option("SCENE", program.scene, "The scene to use instead of the sample");
  verb->add_option("--to", program.output, "Folder for what it writes")->type_name("DIR")->default_str("stagemarks-demo");
  verb->add_flag("--json", program.json, "Print the steps as JSON when all is done");
  verb->footer(
      "Examples:\n"
      "  stagemarks demo\n"
      "  stagemarks demo my.gltf --to tryout");
  verb->callback([&program] {
    if (program.output.empty()) program.output = "stagemarks-demo";
    program.verb = [&program] { return RunDemo(program); };
  });
}

}  // namespace commandline
