#include <CLI/CLI.hpp>

#include "program/commandline/Program.h"

namespace commandline {

void AddScene(CLI::App& verb, Program& program, const char* help) {
  verb.add_option("SCENE", program.scene, help)->required();
  verb.add_flag("--json", program.json, "Print the result as JSON");
}

void AddKeeping(CLI::App& verb, Program& program) {
  auto* output =
      verb.add_option("-o,--output", program.output, "Write the changed scene to this .c4d file")
          ->type_name("OUT");
  verb.add_flag("--write", program.write, "Write the change into the scene file itself")
      ->excludes(output);
  AddForce(verb, program);
  verb.add_option("--wait", program.longestWait,
                  "Seconds to wait for another program that changes the scene")
      ->type_name("SECONDS")
      ->check(CLI::Range(0U, 86400U))
      ->default_str("60");
  verb.add_flag("-y,--yes", program.yes, "Answer every question with yes");
}

void AddStrict(CLI::App& verb, Program& program) {
  verb.add_flag("--strict", program.strict,
                "Fail, before anything is written, when a texture of the scene is missing");
}

void AddForce(CLI::App& verb, Program& program) {
  verb.add_flag("--force", program.force,
                "Replace a file that this command did not write, or a scene with Stagemarks");
}

void AddOnly(CLI::App& verb, std::vector<std::string>& only) {
  verb.add_option("--only", only, "The Stagemarks that are meant; all of them without it")
      ->type_name("STAGEMARK...");
}

}  // namespace commandline
