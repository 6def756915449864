#include "program/commandline/Demo.h"

#include <CLI/CLI.hpp>

namespace commandline {

namespace {

// Where the sample scene lies: beside an installed program, or in the source tree that the program was built from.
std::string SampleScene(Session& session) {
  for (const std::string& folder : {ProgramFolder() + "/../share/stagemarks/scenes", std::string(STAGEMARKS_SCENES)}) {
    const std::string path = AbsolutePath(folder + "/dungeon/dungeon.gltf");
    if (session.Files().Kind(path) == engine::FileKind::File) return path;
  }
  return "";
}

int RunDemo(Program& program) {
  Session session(program);
  if (const int status = session.Start(); status != kDone) return status;
  const std::string scene = program.scene.empty() ? SampleScene(session) : AbsolutePath(program.scene);
  if (scene.empty()) {
    program.terminal.Error("The sample scene was not found beside the program. Give a scene: stagemarks demo SCENE.");
    return kFailed;
  }
  return Demo(session, scene, AbsolutePath(program.output)).Run();
}

}  // namespace

void AddDemo(CLI::App& app, Program& program) {
  CLI::App* verb = app.add_subcommand("demo", "Show the main job on a sample scene: record three states, recall and check them");
  verb->add_option("scene", program.scene, "The scene to use instead of the sample");
  verb->add_option("--to", program.output, "Folder for what it writes")->default_str("stagemarks-demo");
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
