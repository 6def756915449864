// The sample scene of our own: that it is whole, and what its script makes.
#include <filesystem>

#include "tests/commandline/CommandLine.h"

namespace tests {
namespace {

using Teapot = CommandLine;

const std::string kTeapot = TEST_SOURCE_DIR "/scenes/teapot/teapot.c4d";

TEST_F(Teapot, HasSixStagemarksAndAllThatTheyNeed) {
  EXPECT_EQ(
      Marks(kTeapot),
      "*1 Copper, morning 2 Enamel, morning 3 Steel, evening 4 Lid open, evening 5 From above "
      "6 Catalog ");
  EXPECT_EQ(Call({"check", kTeapot, "--strict"}).status, 0);
  const ChildResult rendered =
      Call({"render", kTeapot, "--strict", "--size", "32x18", "-o", folder_ / "{state}.png"});
  EXPECT_EQ(rendered.status, 0) << rendered.err;
  std::set<std::string> pictures;
  for (const auto& file : std::filesystem::directory_iterator(folder_.Path())) {
    if (file.path().extension() == ".png") pictures.insert(ReadText(file.path()));
  }
  EXPECT_EQ(pictures.size(), 6U) << "no two look alike";
}

TEST_F(Teapot, ComesFromItsScript) {
  const ChildResult made = Shell(
      "command -v python3 >/dev/null || exit 77; PYTHONDONTWRITEBYTECODE=1 python3 "
      "'" TEST_SOURCE_DIR "/scenes/teapot/make_scene.py' '" TEST_BINARY_DIR
      "/bin/stagemarks' made");
  if (made.status == 77) GTEST_SKIP() << "there is no python3";
  ASSERT_EQ(made.status, 0) << made.err;
  const std::string scene = folder_ / "made/teapot.c4d";
  nlohmann::json here = Json({"info", kTeapot});
  nlohmann::json there = Json({"info", scene});
  EXPECT_EQ(here["counts"], there["counts"]);
  EXPECT_EQ(here["materials"], there["materials"]);
  EXPECT_EQ(Out({"matrix", kTeapot, "--csv"}), Out({"matrix", scene, "--csv"}));
}

}  // namespace
}  // namespace tests
