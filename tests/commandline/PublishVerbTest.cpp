// Publishing from the shell: names that are no file names, what is told, and what is refused.
#include <filesystem>

#include "tests/commandline/CommandLine.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using tests::ChildResult;
using tests::CommandLine;

class PublishVerb : public CommandLine {
 protected:
  std::string WithStates(const std::vector<std::string>& names) {
    const std::string scene = Spider();
    for (const std::string& name : names) Out({"record", scene, name, "--write"});
    return scene;
  }
};

TEST_F(PublishVerb, NamesThatAreNoFileNamesStayInTheFolder) {
  const std::string scene = WithStates({"a/b", "../up", "what?\x01", std::string(300, 'x')});
  const json result = Json({"publish", scene, "--to", Scene("web/deep")});
  ASSERT_EQ(result["published"].size(), 4U);
  for (const json& one : result["published"]) {
    const fs::path file = one["file"].get<std::string>();
    EXPECT_EQ(file.parent_path(), Scene("web/deep"));
    EXPECT_EQ(fs::file_size(file), one["bytes"].get<std::size_t>());
    EXPECT_EQ(one["objects"], 19);
  }
  const json all = Json({"publish", scene, "--to", Scene("web"), "--all-in-one", "--as", "gltf"});
  ASSERT_EQ(all["published"].size(), 1U);
  EXPECT_EQ(all["published"][0]["stagemarks"].size(), 4U);
  EXPECT_EQ(all["published"][0]["file"], Scene("web/spider.gltf"));
  for (const json& beside : all["published"][0]["beside"])
    EXPECT_TRUE(fs::exists(beside.get<std::string>())) << beside;
}

TEST_F(PublishVerb, NamesThatSomeDisksTakeForOneAreRefused) {
  const std::string scene = WithStates({"Day", "DAY"});
  const ChildResult refused = Call({"publish", scene, "--to", Scene("web")});
  EXPECT_EQ(refused.status, 1);
  EXPECT_NE(refused.err.find("--only"), std::string::npos) << refused.err;
  EXPECT_FALSE(fs::exists(Scene("web")));
  Out({"publish", scene, "--to", Scene("web"), "--only", "Day"});
  Out({"publish", scene, "--to", Scene("web"), "--all-in-one"});
  EXPECT_EQ(Files("web"), "spider Day.glb | spider.glb");
}

TEST_F(PublishVerb, AFolderThatCannotBeIsRefused) {
  const std::string scene = WithStates({"Day"});
  tests::WriteText(Scene("file"), "somebody's");
  for (const std::string& to : {Scene("file"), Scene("file/web"), std::string("/proc/web")}) {
    const ChildResult refused = Call({"publish", scene, "--to", to});
    EXPECT_EQ(refused.status, 1) << to;
    EXPECT_NE(refused.err.find("Cannot make the folder"), std::string::npos) << refused.err;
  }
  EXPECT_EQ(tests::ReadText(Scene("file")), "somebody's");
}

}  // namespace
