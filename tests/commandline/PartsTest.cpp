// The parts of a load, which are for that load only, and the options that a scene keeps.
#include "tests/commandline/CommandLine.h"

namespace {

using nlohmann::json;
using tests::ChildResult;
using tests::CommandLine;

class Parts : public CommandLine {
 protected:
  // Render mode of the first object, the scene camera, and whether the layer is shown in renders,
  // after a load of "Night".
  std::string After(const std::vector<std::string>& choice) {
    std::vector<std::string> call{"load", scene_, "Night", "--force", "-o", Scene("after.c4d")};
    call.insert(call.end(), choice.begin(), choice.end());
    Out(call);
    const json info = Json({"info", Scene("after.c4d"), "--tree"});
    const std::string dump = Out({"info", Scene("after.c4d"), "--dump"});
    return std::to_string(info["objects"][0]["render"].get<int>()) + " " +
           (info["sceneCamera"].is_null() ? "none" : info["sceneCamera"].get<std::string>()) + " " +
           std::to_string(info["renderSettings"][0]["width"].get<int>());
  }

  std::string scene_;
};

TEST_F(Parts, OnlyThoseAreAppliedAndOnlyThisOnce) {
  scene_ = Spider();
  Out({"set", scene_, "--add-camera", "Front", "--camera", "Front", "--object", "*", "--render",
       "off", "--size", "64x48", "--write"});
  Out({"record", scene_, "Night", "--write"});
  Out({"set", scene_, "--add-camera", "Side", "--camera", "Side", "--object", "*", "--render", "on",
       "--size", "80x60", "--write"});
  const json options = Json({"options", scene_})["options"];
  const struct {
    std::vector<std::string> choice;
    const char* after;
  } kRows[] = {{{}, "1 /Front 64"},
               {{"--parts", "camera"}, "0 /Front 80"},
               {{"--parts", "camera,render-settings"}, "0 /Front 64"},
               {{"--parts", "objects", "--parts", "layers"}, "1 /Side 80"},
               {{"--without", "objects"}, "0 /Front 64"},
               {{"--without", "camera,objects"}, "0 /Side 64"},
               {{"--parts", "style"}, "0 /Side 80"}};
  for (const auto& row : kRows) {
    EXPECT_EQ(After(row.choice), row.after) << testing::PrintToString(row.choice);
    EXPECT_EQ(Json({"options", Scene("after.c4d")})["options"], options)
        << testing::PrintToString(row.choice);
  }
  EXPECT_EQ(Json({"load", scene_, "Night", "--parts", "camera,layers"})["parts"],
            (json{"layers", "camera"}));
  for (const char* both : {"--parts", "--without"})
    EXPECT_EQ(Call({"load", scene_, "Night", both, "everything"}).status, 2);
  EXPECT_EQ(Call({"load", scene_, "Night", "--parts", "camera", "--without", "layers"}).status, 2);
}

// Nothing of the choice is left in a scene that has none of its own.
TEST_F(Parts, LeaveNoTraceInTheScene) {
  scene_ = Spider();
  Out({"record", scene_, "Night", "--write"});
  Out({"load", scene_, "Night", "-o", Scene("plain.c4d")});
  Out({"load", scene_, "Night", "--without", "objects,camera", "-o", Scene("without.c4d")});
  EXPECT_EQ(tests::ReadText(Scene("plain.c4d")), tests::ReadText(Scene("without.c4d")));
}

TEST_F(Parts, AnOptionThatASceneDoesNotKeepIsNamed) {
  scene_ = Spider();
  const ChildResult early = Call({"options", scene_, "--toggle", "Layers", "--write"});
  EXPECT_EQ(early.status, 1);
  EXPECT_NE(early.err.find("\"Layers\" is not kept in the scene. A scene has options of its own"),
            std::string::npos)
      << early.err;
  Out({"record", scene_, "Day", "--write"});
  const ChildResult both =
      Call({"options", scene_, "--toggle", "Layers", "--toggle", "Objects", "--write"});
  EXPECT_EQ(both.status, 1);
  EXPECT_NE(both.err.find(
                "\"Objects\" is not kept in the scene. `stagemarks load SCENE STAGEMARK --parts"),
            std::string::npos)
      << both.err;
  const json options = Json({"options", scene_})["options"];
  EXPECT_FALSE(options["Layers"]);
  EXPECT_TRUE(options["Objects"]);
  Out({"options", scene_, "--toggle", "Layers", "--write"});
  EXPECT_TRUE(Json({"options", scene_})["options"]["Layers"]);
  EXPECT_EQ(JsonAnyway({"options", scene_, "--toggle", "Objects", "--write"})["notKept"],
            json{"Objects"});
}

}  // namespace
