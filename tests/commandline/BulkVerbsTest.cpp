// The verbs that edit, rename and delete Stagemarks, and what happens to their preview images.
#include <filesystem>

#include "tests/commandline/CommandLine.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using tests::ChildResult;
using tests::CommandLine;
using tests::ReadText;

class BulkVerbs : public CommandLine {
 protected:
  // Recalls a Stagemark and answers what `info --tree` says then.
  json Recalled(const std::string& scene, const std::string& name) {
    Out({"load", scene, name, "-o", folder_ / "recalled.c4d", "--force"});
    return Json({"info", folder_ / "recalled.c4d", "--tree"});
  }
  // Names of the objects hidden in renders, a blank after each.
  static std::string Hidden(const json& info) {
    std::string names;
    for (const json& object : info["objects"]) {
      if (object["render"] == 1) names += object["name"].get<std::string>() + " ";
    }
    return names;
  }
  std::string Previews(const std::string& stem) {
    return fs::exists(folder_ / (stem + "_SM")) ? tests::Names(folder_ / (stem + "_SM")) : "(none)";
  }
  // "Day" and "Night" with previews.
  std::string Pictured() {
    const std::string scene = Spider();
    Out({"set", scene, "--size", "64x48", "--write"});
    Out({"record", scene, "Day", "--preview", "--write"});
    Out({"record", scene, "Night", "--preview", "--write"});
    return scene;
  }
};

// The arguments lack the scene, which follows the verb.
const struct {
  std::vector<std::string> arguments;
  int status;
  const char* says;
} kBulkCalls[] = {
    {{"list", "--only", "Night"}, 0, "1 Stagemark meant, marked with a cross."},
    {{"list", "--only", "Nigth"}, 2, "Did you mean \"Night\"?"},
    {{"update"}, 0, "Brought \"Day\" and \"Night\" up to date."},
    {{"update", "--only", "Night"}, 0, "Nothing in the scene was new to \"Night\"."},
    {{"update", "--only", "Day", "Dusk"}, 2, "There is no Stagemark \"Dusk\""},
    {{"set-objects", "*", "--only", "Day"}, 0, "Wrote the switches of 22 objects into \"Day\"."},
    {{"set-objects", "/Kopf", "#3"},
     0,
     "Wrote the switches of 2 objects into \"Day\" and \"Night\"."},
    {{"set-objects", "Kopf", "--only", "Night"}, 0, "Nothing changed"},
    {{"set-objects", "Nobody"}, 2, "There is no object \"Nobody\""},
    {{"set-objects"}, 2, "No object is selected"},
    {{"set-tags", "Kopf", "--type", "texture"}, 0, "Nothing changed"},
    {{"set-tags", "Kopf", "--type", "5616"}, 0, "Nothing changed"},
    {{"set-tags", "Kopf", "--type", "Lens"}, 2, "Tags there are: Phong (5612), Texture (5616)."},
    {{"set-tags", "Lamp"}, 2, "These objects have no tags."},
    {{"set-tags"}, 2, "No tag is selected"},
    {{"set-layers", "Pr*", "--only", "Day"}, 0, "Wrote the switches of 1 layer into \"Day\"."},
    {{"set-layers", "Walls"}, 2, "There are: Props."},
    {{"set-layers"}, 2, "No layer is selected"},
    {{"set-camera", "Front"},
     0,
     "Made the camera /Front the render camera of \"Day\" and \"Night\"."},
    {{"set-camera", "Kopf"}, 2, "is no camera"},
    {{"set-camera"}, 2, "CAMERA is required"},
    {{"rename", "Day", "Dawn"}, 0, "Renamed \"Day\" to \"Dawn\"."},
    {{"rename", "Day", "Night"}, 2, "There is a Stagemark \"Night\" already."},
    {{"rename", "Day", ""}, 2, "You must enter a name for this element."},
    {{"rename", "Dusk", "Dawn"}, 2, "There is no Stagemark \"Dusk\""},
    {{"delete", "Day"},
     1,
     "Are you sure you want to delete this element?  This cannot be undone. no"},
    {{"delete", "Day", "Night"}, 1, "Nothing was deleted."},
    {{"delete", "Day", "Night", "--yes"}, 0, "Deleted \"Day\" and \"Night\"."},
    {{"delete", "Day", "Dusk", "--yes"}, 2, "There is no Stagemark \"Dusk\""},
    {{"delete-all"}, 0, "Deleted \"Day\" and \"Night\"."},
    {{"clean-materials"}, 0, "Every material is used by a Stagemark."},
};

TEST_F(BulkVerbs, EachSaysWhatItDid) {
  const std::string scene = Staged();
  const std::string before = ReadText(scene);
  for (const auto& call : kBulkCalls) {
    std::vector<std::string> arguments = call.arguments;
    arguments.insert(arguments.begin() + 1, scene);
    const ChildResult result = Call(arguments);
    EXPECT_EQ(result.status, call.status)
        << testing::PrintToString(arguments) << result.out << result.err;
    EXPECT_NE((result.out + result.err).find(call.says), std::string::npos)
        << call.says << "\n"
        << result.out << result.err;
    EXPECT_EQ(ReadText(scene), before) << testing::PrintToString(arguments);
    EXPECT_EQ(JsonAnyway(arguments).is_object(), call.status == 0)
        << testing::PrintToString(arguments);
  }
}

TEST_F(BulkVerbs, ASceneWithoutStagemarksHasNothingToEdit) {
  const std::string scene = Spider();
  for (const auto& arguments :
       std::vector<std::vector<std::string>>{{"matrix", scene},
                                             {"update", scene, "--write"},
                                             {"set-objects", scene, "*", "--write"},
                                             {"clean-materials", scene, "--write"},
                                             {"export", scene, "--to", folder_ / "out"}}) {
    const ChildResult result = Call(arguments);
    EXPECT_EQ(result.status, 1) << testing::PrintToString(arguments);
    EXPECT_NE(result.err.find("There are no Stagemarks in this scene"), std::string::npos)
        << result.err;
  }
  EXPECT_FALSE(fs::exists(folder_ / "out"));
  EXPECT_NE(Out({"delete-all", scene}).find("there are none"), std::string::npos);
}

TEST_F(BulkVerbs, WhatWasSetIsRecalled) {
  const std::string scene = Staged();
  EXPECT_EQ(Hidden(Recalled(scene, "Day")), "Front ");
  Out({"set-objects", scene, "Kopf", "Auge", "--only", "Day", "--write"});
  EXPECT_EQ(Hidden(Recalled(scene, "Day")), "Auge Kopf Front ");

  EXPECT_EQ(Recalled(scene, "Day")["sceneCamera"], "/Camera");
  Out({"set-camera", scene, "Front", "--only", "Day", "--write"});
  EXPECT_EQ(Recalled(scene, "Day")["sceneCamera"], "/Front");
  EXPECT_EQ(Recalled(scene, "Night")["sceneCamera"], "/Camera");

  Out({"set", scene, "--object", "Front", "--render", "default", "--write"});
  Out({"update", scene, "--only", "Day", "--write"});
  Out({"set", scene, "--object", "Front", "--render", "off", "--write"});
  EXPECT_EQ(Hidden(Recalled(scene, "Day")), "Auge Kopf ");
}

TEST_F(BulkVerbs, MaterialsAndLayersThatWereSetAreRecalled) {
  const std::string scene = Staged();
  const auto has = [&](const std::string& name, const std::string& fact) {
    Out({"load", scene, name, "-o", folder_ / "recalled.c4d", "--force"});
    return Out({"info", folder_ / "recalled.c4d", "--dump"}).find(fact) != std::string::npos;
  };
  Out({"set", scene, "--add-material", "Clay", "--layer", "Props", "--flag", "view=off",
       "--write"});
  Out({"set", scene, "--object", "Kopf", "--material", "Clay", "--write"});
  Out({"set-tags", scene, "Kopf", "--type", "Texture", "--only", "Day", "--write"});
  Out({"set-layers", scene, "Props", "--only", "Day", "--write"});
  Out({"set", scene, "--object", "Kopf", "--material", "Skin", "--layer", "Props", "--flag",
       "view=on", "--write"});
  EXPECT_TRUE(has("Day", "flags 001101111"));
  EXPECT_FALSE(has("Night", "flags 001101111"));
  const json cleaned = Json({"clean-materials", scene, "-o", folder_ / "clean.c4d", "--force"});
  EXPECT_EQ(cleaned["deleted"], json::array());
  Out({"delete", scene, "Day", "--yes", "--write"});
  EXPECT_EQ(Json({"clean-materials", scene, "-o", folder_ / "clean.c4d", "--force"})["deleted"],
            json::array({"Clay"}));
  EXPECT_EQ(Json({"info", folder_ / "clean.c4d"})["materials"].size(), 4U);
}

TEST_F(BulkVerbs, PreviewsFollowTheSceneThatIsKept) {
  const std::string scene = Pictured();
  EXPECT_EQ(Previews("spider"), "Day.tif Night.tif");
  const std::string day = ReadText(folder_ / "spider_SM/Day.tif");

  Out({"rename", scene, "Day", "Dawn"});
  Out({"delete", scene, "Day", "--yes"});
  Out({"record", scene, "Third", "--preview"});
  Out({"set", scene, "--object", "*", "--render", "off", "--write"});
  Out({"record", scene, "Day", "--preview", "--yes"});
  Out({"delete-all", scene, "--yes"});
  EXPECT_EQ(Previews("spider"), "Day.tif Night.tif");
  EXPECT_EQ(ReadText(folder_ / "spider_SM/Day.tif"), day);

  Out({"rename", scene, "Day", "Dawn", "-o", folder_ / "other.c4d"});
  EXPECT_EQ(Previews("spider"), "Day.tif Night.tif");
  EXPECT_EQ(Previews("other"), "Dawn.tif Night.tif");
  EXPECT_EQ(ReadText(folder_ / "other_SM/Dawn.tif"), day);

  Out({"rename", scene, "Day", "Dawn", "--write"});
  Out({"delete", scene, "Night", "--yes", "--write"});
  EXPECT_EQ(Previews("spider"), "Dawn.tif");
  EXPECT_EQ(Marks(scene), "Dawn ");
}

TEST_F(BulkVerbs, AFirstPreviewIsWrittenBesideTheSceneThatIsKept) {
  const std::string scene = Spider();
  Out({"set", scene, "--size", "64x48", "--write"});
  Out({"record", scene, "Day", "--preview", "-o", folder_ / "other.c4d"});
  EXPECT_EQ(Previews("spider"), "(none)");
  EXPECT_EQ(Previews("other"), "Day.tif");
}

TEST_F(BulkVerbs, DeletingAllAsksAboutTheFolderWithPreviews) {
  const std::string scene = Pictured();
  tests::WriteText(folder_ / "spider_SM/notes.txt", "keep");
  const ChildResult unasked = Call({"delete-all", scene, "-o", folder_ / "other.c4d"});
  EXPECT_EQ(unasked.status, 0) << unasked.err;
  EXPECT_NE(unasked.err.find("Delete Bitmap Preview Folder"), std::string::npos) << unasked.err;
  EXPECT_NE(unasked.out.find("The folder with the preview images stays."), std::string::npos)
      << unasked.out;
  EXPECT_EQ(Previews("other"), "notes.txt");
  Out({"delete-all", scene, "--yes", "--write"});
  EXPECT_EQ(Previews("spider"), "(none)");
  EXPECT_EQ(Marks(scene), "");
}

TEST_F(BulkVerbs, SavingElsewhereAsksBeforeItTouchesAnotherSideFolder) {
  const std::string scene = Pictured();
  fs::create_directory(folder_ / "other_SM");
  tests::WriteText(folder_ / "other_SM/Day.tif", "another's");
  const ChildResult refused = Call({"rename", scene, "Day", "Dawn", "-o", folder_ / "other.c4d"});
  EXPECT_EQ(refused.status, 1);
  EXPECT_NE(refused.err.find("A Stagemark directory with the same name already exists"),
            std::string::npos)
      << refused.err;
  EXPECT_NE(refused.err.find("preview images were not taken along"), std::string::npos)
      << refused.err;
  EXPECT_EQ(Previews("other"), "Day.tif");
  EXPECT_FALSE(fs::exists(folder_ / "other.c4d"));
  Out({"load", scene, "Day", "-o", folder_ / "other.c4d", "--yes"});
  EXPECT_EQ(Previews("other"), "Day.tif Night.tif");
  EXPECT_EQ(ReadText(folder_ / "other_SM/Day.tif"), ReadText(folder_ / "spider_SM/Day.tif"));
}

TEST_F(BulkVerbs, ATerminalIsAsked) {
  const std::string scene = Staged();
  const ChildResult no = CallOnTerminal({"delete", scene, "Day", "--write"}, {{"[y/N]", "n\n"}});
  EXPECT_EQ(no.status, 1) << no.out;
  EXPECT_EQ(Marks(scene), "Day *Night ");
  const ChildResult stopped =
      CallOnTerminal({"delete", scene, "Day", "--write"}, {{"[y/N]", "\x03"}});
  EXPECT_EQ(stopped.status, 130) << stopped.out;
  EXPECT_EQ(Marks(scene), "Day *Night ");
  const ChildResult yes = CallOnTerminal({"delete", scene, "Day", "--write"}, {{"[y/N]", "y\n"}});
  EXPECT_EQ(yes.status, 0) << yes.out;
  EXPECT_EQ(Marks(scene), "*Night ");
}

TEST_F(BulkVerbs, CtrlCStopsAnImport) {
  std::string mesh;
  for (int i = 0; i < 600000; ++i)
    mesh += "v " + std::to_string(i % 997) + " " + std::to_string(i % 89) + " 0\n";
  for (int i = 1; i < 599998; ++i)
    mesh +=
        "f " + std::to_string(i) + " " + std::to_string(i + 1) + " " + std::to_string(i + 2) + "\n";
  tests::WriteText(folder_ / "large.obj", mesh);
  const ChildResult result = CallOnTerminal(
      {"import", folder_ / "large.obj", folder_ / "large.c4d"}, {{"Importing large.obj", "\x03"}});
  EXPECT_EQ(result.status, 130) << result.out;
  EXPECT_NE(result.out.find("The import was stopped."), std::string::npos) << result.out;
  EXPECT_FALSE(fs::exists(folder_ / "large.c4d"));
}

}  // namespace
