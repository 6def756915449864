// Every way to build that a person can ask for configures from an empty folder: what a preset needs
// is there, and no target links to one that is missing.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/support/ChildProgram.h"
#include "tests/support/ScratchFolder.h"

namespace {

using nlohmann::json;
using tests::ChildResult;

// Runs a line in a shell at the root of the tree.
ChildResult Shell(const std::string& line) {
  return tests::RunChild("/bin/sh", {"-c", "cd '" TEST_SOURCE_DIR "' && " + line});
}

// A preset that asks for a compiler which is not on this machine cannot be tried here.
bool HasCompiler(const json& preset) {
  const std::string compiler =
      preset.value("/cacheVariables/CMAKE_CXX_COMPILER"_json_pointer, std::string("sh"));
  return Shell("command -v '" + compiler + "'").status == 0;
}

std::vector<std::string> WaysToConfigure() {
  std::vector<std::string> ways{"-G Ninja -DSTAGEMARKS_DESKTOP=OFF"};
  const json presets = json::parse(tests::ReadText(TEST_SOURCE_DIR "/CMakePresets.json"));
  for (const json& preset : presets["configurePresets"]) {
    if (!preset.value("hidden", false) && HasCompiler(preset))
      ways.push_back("--preset " + preset["name"].get<std::string>());
  }
  return ways;
}

TEST(Presets, ConfigureFromAnEmptyFolder) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "none of this project's code runs here";
#endif
  const std::vector<std::string> ways = WaysToConfigure();
  EXPECT_GE(ways.size(), 8U);
  for (const std::string& way : ways) {
    const tests::ScratchFolder folder;
    const ChildResult result =
        Shell("cmake " + way + " -DSTAGEMARKS_NODE=OFF -S . -B '" + folder.Path() + "'");
    EXPECT_EQ(result.status, 0) << way << "\n" << result.out << result.err;
  }
}

}  // namespace
