// The web page as a person calls for it: what is written where, what is refused, and what a
// program that was built without the viewer says. The page itself is tried in a browser
// (tests/page).
#include <filesystem>

#include "tests/commandline/CommandLine.h"

namespace tests {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

constexpr const char* kViewer = TEST_BINARY_DIR "/share/stagemarks/page/page.html";

class Page : public CommandLine {
 protected:
  void SetUp() override {
    const char* inCi = std::getenv("CI");
    const bool isNeeded = inCi && std::string(inCi) == "true";
    if (!fs::exists(kViewer) && !isNeeded)
      GTEST_SKIP() << "built without the viewer: node and npm are missing, or the network is";
  }

  json ContentsOf(const std::string& page) const {
    const std::string text = ReadText(page);
    const std::string begin = "id=\"contents\">";
    const std::size_t at = text.find(begin) + begin.size();
    return json::parse(text.substr(at, text.find("</script>", at) - at), nullptr, false);
  }
};

TEST_F(Page, HasAllStatesOrThoseThatAreMeant) {
  const std::string scene = Staged();
  const std::string page = Scene("web/index.html");
  const json made = Json({"page", scene, "--to", Scene("web")});
  EXPECT_EQ(made["page"], page);
  EXPECT_EQ(made["states"], 2);
  EXPECT_GT(made["triangles"], 1000);
  EXPECT_EQ(tests::Names(Scene("web")), "LICENSE-three.txt index.html");
  json contents = ContentsOf(page);
  EXPECT_EQ(contents["title"], "spider");
  ASSERT_EQ(contents["states"].size(), 2U);
  for (const json& state : contents["states"]) {
    EXPECT_EQ(state["thumbnail"].get<std::string>().rfind("data:image/jpeg;base64,/9j/", 0), 0U);
    EXPECT_EQ(state["date"].get<std::string>().find('T'), 10U) << state["date"];
  }
  Out({"page", scene, "--to", Scene("web"), "--only", "N*", "--title", "<b>\"Spider\" & more"});
  contents = ContentsOf(page);
  EXPECT_EQ(contents["title"], "<b>\"Spider\" & more");
  ASSERT_EQ(contents["states"].size(), 1U);
  EXPECT_EQ(contents["states"][0]["name"], "Night");
  EXPECT_EQ(Marks(scene), "Day *Night ") << "the scene is left alone";
}

TEST_F(Page, ShowsASceneWithoutStatesAsItIs) {
  Out({"page", TEST_SOURCE_DIR "/scenes/spider/spider.obj", "--to", Scene("web")});
  const json contents = ContentsOf(Scene("web/index.html"));
  ASSERT_EQ(contents["states"].size(), 1U);
  EXPECT_EQ(contents["states"][0]["name"], "As it is");
}

// Nothing is written where something cannot be.
TEST_F(Page, RefusesWhatItDidNotMake) {
  const std::string scene = Staged();
  const std::vector<std::string> call{"page", scene, "--to", Scene("web")};
  Out({"sheet", scene, "--html", Scene("web")});
  const std::string sheet = ReadText(Scene("web/index.html"));
  EXPECT_EQ(Call(call).status, 1) << "a page of another verb";
  EXPECT_EQ(ReadText(Scene("web/index.html")), sheet);
  fs::remove_all(Scene("web"));
  WriteText(Scene("web"), "a file");
  EXPECT_EQ(Call(call).status, 1);
  EXPECT_EQ(ReadText(Scene("web")), "a file");
  fs::remove(Scene("web"));
  Out(call);
  WriteText(Scene("web/LICENSE-three.txt"), "mine");
  const ChildResult refused = Call(call);
  EXPECT_EQ(refused.status, 1);
  EXPECT_NE(refused.err.find("LICENSE-three.txt"), std::string::npos) << refused.err;
  EXPECT_EQ(Call({"page", scene, "--to", Scene("none"), "--only", "Dawn"}).status, 2);
  EXPECT_FALSE(fs::exists(Scene("none")));
  const ChildResult full = Shell("ulimit -f 300; stagemarks page spider.c4d --to full");
  EXPECT_EQ(full.status, 1) << full.err;
  EXPECT_EQ(tests::Names(Scene("full")), "LICENSE-three.txt");
}

// The program in a tree of its own that has the other parts.
TEST_F(Page, SaysWhatToDoWithoutTheViewer) {
  const std::string scene = Spider();
  fs::create_directory(Scene("bin"));
  fs::copy_file(TEST_BINARY_DIR "/bin/stagemarks", Scene("bin/stagemarks"));
  fs::copy(TEST_BINARY_DIR "/lib", Scene("lib"), fs::copy_options::recursive);
  const ChildResult refused =
      RunChild(Scene("bin/stagemarks"), {"page", scene, "--to", Scene("web")}, {});
  EXPECT_EQ(refused.status, 1);
  EXPECT_NE(refused.err.find("Install node and npm"), std::string::npos) << refused.err;
  EXPECT_FALSE(fs::exists(Scene("web")));
}

}  // namespace
}  // namespace tests
