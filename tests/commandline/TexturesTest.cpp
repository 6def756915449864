// Textures from the shell: they move with the scene, and every verb tells alike which are missing.
#include <filesystem>

#include "tests/commandline/CommandLine.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using tests::ChildResult;
using tests::CommandLine;

class SceneTextures : public CommandLine {
 protected:
  // A scene with its five textures in a folder beside it, "Day" recorded.
  std::string Project(const std::string& folder) {
    fs::create_directory(folder_ / folder);
    fs::copy(TEST_SOURCE_DIR "/scenes/spider", folder_ / (folder + "/textures"));
    for (const char* file : {"spider.obj", "spider.mtl"}) {
      fs::rename(folder_ / (folder + "/textures/" + file), folder_ / (folder + "/" + file));
    }
    const std::string scene = folder_ / (folder + "/spider.c4d");
    Out({"import", folder_ / (folder + "/spider.obj"), scene});
    Out({"record", scene, "Day", "--write"});
    return scene;
  }
  json Missing(const std::string& scene) { return Json({"info", scene})["missingTextures"]; }
};

TEST_F(SceneTextures, MoveWithTheFolderOfTheScene) {
  Project("shot");
  fs::create_directory(folder_ / "elsewhere");
  fs::rename(folder_ / "shot", folder_ / "elsewhere/renamed");
  const std::string scene = folder_ / "elsewhere/renamed/spider.c4d";
  EXPECT_EQ(Missing(scene), json::array());
  const json exported = Json({"export", scene, "--layout", "one-tex", "--to", folder_ / "out"});
  EXPECT_EQ(exported["missingTextures"], json::array());
  EXPECT_EQ(Files("out"), "spider Day.c4d | tex/*5");
}

TEST_F(SceneTextures, AreFoundByASceneThatIsSavedElsewhere) {
  const std::string scene = Project("shot");
  fs::create_directory(folder_ / "other");
  Out({"load", scene, "Day", "-o", folder_ / "other/copy.c4d"});
  EXPECT_EQ(Missing(folder_ / "other/copy.c4d"), json::array());
  Out({"load", folder_ / "other/copy.c4d", "Day", "-o", folder_ / "shot/back.c4d"});
  Out({"export", scene, "--layout", "file", "--to", folder_ / "flat"});
  EXPECT_EQ(Missing(folder_ / "flat/spider Day.c4d"), json::array());
  fs::rename(folder_ / "shot", folder_ / "moved");
  EXPECT_EQ(Missing(folder_ / "moved/back.c4d"), json::array());
  EXPECT_EQ(Missing(folder_ / "other/copy.c4d").size(), 5U)
      << "the textures were not in its folder";
}

TEST_F(SceneTextures, EveryVerbTellsThoseThatAreMissing) {
  const std::string scene = Project("shot");
  const std::string texture = folder_ / "shot/textures/drkwood2.jpg";
  fs::remove(texture);
  const std::string before = tests::ReadText(scene);
  const std::vector<std::vector<std::string>> calls = {
      {"render", scene, "--size", "8x6", "-o", folder_ / "p.png"},
      {"sheet", scene, "-o", folder_ / "s.png"},
      {"load", scene, "Day"},
      {"record", scene, "Night", "--preview"},
      {"export", scene, "--layout", "file", "--force", "--to", folder_ / "flat"},
      {"info", scene},
      {"import", folder_ / "shot/spider.obj", folder_ / "again.c4d"},
  };
  for (std::vector<std::string> call : calls) {
    const bool isImport = call[0] == "import";
    EXPECT_EQ(Call(call).status, 0) << call[0];
    EXPECT_EQ(Json(call)["missingTextures"].size(), 1U) << call[0];
    for (const char* written : {"p.png", "s.png", "flat/spider Day.c4d", "again.c4d"})
      fs::remove(folder_ / written);
    call.emplace_back("--strict");
    const ChildResult strict = Call(call);
    EXPECT_EQ(strict.status, 1) << call[0];
    EXPECT_NE(strict.err.find("drkwood2.jpg\" was not found."), std::string::npos)
        << call[0] << strict.err;
    EXPECT_EQ(JsonAnyway(call)["missingTextures"].size(), 1U) << call[0];
    EXPECT_EQ(isImport || JsonAnyway(call)["missingTextures"][0] == texture, true) << call[0];
  }
  for (const char* written : {"p.png", "s.png", "flat/spider Day.c4d", "again.c4d"})
    EXPECT_FALSE(fs::exists(folder_ / written));
  EXPECT_EQ(tests::ReadText(scene), before);
  const ChildResult rendered = Call(calls[0]);
  EXPECT_EQ(rendered.err.find("drkwood2"), rendered.err.rfind("drkwood2"))
      << "told twice: " << rendered.err;
}

}  // namespace
