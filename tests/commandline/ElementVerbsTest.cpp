// The verbs objects, cameras, lights, materials and layers.
#include "tests/commandline/CommandLine.h"

namespace {

using nlohmann::json;
using tests::ChildResult;
using tests::CommandLine;

class ElementVerbs : public CommandLine {
 protected:
  // A null "Room" with two cubes "Box", a cube "Box" at the top, two materials "Oak", a layer.
  std::string Room() const {
    const std::string scene = Scene("room.c4d");
    Out({"new", scene});
    tests::WriteText(folder_ / "steps",
                     "objects add Room\n"
                     "objects add Box --type cube --under Room --at 10,0,0\n"
                     "objects add Box --type cube --under Room\nobjects add Box --type cube\n"
                     "cameras add Front --at 0,0,-500\nlights add Key --at 0,300,0\n"
                     "materials add Oak\nmaterials add Oak --color 1,0,0\nlayers add Props\n");
    Out({"run", scene, folder_ / "steps", "--write"});
    return scene;
  }
  std::string Listed(const std::string& kind, const std::string& scene) const {
    std::string text;
    const json list = Json({kind, "list", scene});
    for (const json& one : list["elements"])
      text += (one["path"].is_null() ? one["name"] : one["path"]).get<std::string>() + " ";
    return text;
  }
};

TEST_F(ElementVerbs, WhatCanBeDoneToThem) {
  const std::string scene = Room();
  const std::string out = Scene("out.c4d");
  const struct {
    std::vector<std::string> call;
    int changed;
    const char* kind;
    const char* listed;
  } rows[] = {
      {{"objects", "rename", scene, "/Box", "Crate"},
       1,
       "objects",
       "/Room /Room/Box /Room/Box /Crate /Front /Key "},
      {{"objects", "rename", scene, "Box", "Crate", "--all"},
       3,
       "objects",
       "/Room /Room/Crate /Room/Crate.1 /Crate.2 /Front /Key "},
      {{"objects", "rename", scene, "#2", "Lid"},
       1,
       "objects",
       "/Room /Room/Box /Room/Lid /Box /Front /Key "},
      {{"objects", "remove", scene, "Box", "--all"}, 3, "objects", "/Room /Front /Key "},
      {{"objects", "remove", scene, "B*", "Room"}, 4, "objects", "/Front /Key "},
      {{"cameras", "rename", scene, "Front", "Back"}, 1, "cameras", "/Back "},
      {{"lights", "remove", scene, "Key"}, 1, "lights", ""},
      {{"materials", "rename", scene, "#1", "Ash"}, 1, "materials", "Oak Ash "},
      {{"materials", "remove", scene, "Oak", "--all"}, 2, "materials", ""},
      {{"layers", "rename", scene, "Props", "Set"}, 1, "layers", "Set "},
      {{"layers", "rename", scene, "Props", "Props"}, 0, "layers", "Props "},
  };
  for (const auto& row : rows) {
    auto call = row.call;
    call.insert(call.end(), {"-o", out, "--force"});
    EXPECT_EQ(Json(call)["changed"], row.changed) << testing::PrintToString(row.call);
    EXPECT_EQ(Listed(row.kind, out), row.listed) << testing::PrintToString(row.call);
  }
}

TEST_F(ElementVerbs, WhatIsRemovedMayBeHeldByStagemarks) {
  const std::string scene = Room();
  for (const char* name : {"B", "A", "C"}) Out({"record", scene, name, "--write"});
  Out({"objects", "add", scene, "New", "--write"});
  Out({"materials", "add", scene, "Ash", "--write"});
  Out({"set", scene, "--object", "/Box", "--material", "#0", "--write"});
  Out({"options", scene, "--on", "materials", "--write"});
  Out({"record", scene, "D", "--write"});
  const struct {
    std::vector<std::string> what;
    const char* heldBy;
    const char* says;
  } rows[] = {
      {{"objects", "Room"},
       R"(["A","B","C","D"])",
       R"(4 Stagemarks hold something of it: "A", "B", "C" and "D". Loading passes over)"},
      {{"objects", "New"}, R"(["D"])", R"(1 Stagemark holds something of it: "D".)"},
      {{"layers", "Props"}, R"(["A","B","C","D"])", "4 Stagemarks"},
      {{"materials", "#0"}, R"(["D"])", "1 Stagemark holds"},
      {{"materials", "Ash"}, "[]", ""},
  };
  for (const auto& [what, heldBy, says] : rows) {
    const std::vector<std::string> call{what[0], "remove", scene, what[1]};
    EXPECT_EQ(Json(call)["heldBy"].dump(), heldBy) << what[1];
    const std::string err = Call(call).err;
    EXPECT_NE(err.find(says), std::string::npos) << err;
    EXPECT_EQ(err.find("hold") != std::string::npos, *says != '\0') << err;
  }
}

// As with all that is added: what a person has selected stays selected.
TEST_F(ElementVerbs, ANewLayerIsNotSelected) {
  const std::string scene = Room();
  Out({"record", scene, "Day", "--write"});
  Out({"layers", "add", scene, "Set", "--write"});
  const ChildResult nothing = Call({"set-layers", scene});
  EXPECT_EQ(nothing.status, 2);
  EXPECT_NE(nothing.err.find("No layer is selected"), std::string::npos) << nothing.err;
}

TEST_F(ElementVerbs, WhatIsMeantMustBeClear) {
  const std::string scene = Room();
  const std::string before = tests::ReadText(scene);
  const struct {
    std::vector<std::string> call;
    const char* says;
  } rows[] = {
      {{"objects", "remove", scene, "Box"}, "  #1  /Room/Box\n  #2  /Room/Box\n  #3  /Box\n"},
      {{"objects", "rename", scene, "B*", "X"}, "--all gives all of them the new name"},
      {{"materials", "remove", scene, "Oak"}, "  #0  Oak\n  #1  Oak\nGive the position."},
      {{"materials", "remove", scene, "#7"}, "There is no material #7"},
      {{"layers", "remove", scene, "Prop"}, "There is no layer \"Prop\". There are: Props."},
      {{"cameras", "remove", scene, "Key"}, "There is no camera \"Key\""},
      {{"cameras", "remove", scene, "#0"}, "#0 is no camera, it is /Room."},
      {{"cameras", "place", scene, "Front"}, "Say where to"},
      {{"cameras", "place", scene, "Front", "--look-at", "1,2"}, "There is no object \"1,2\""},
      {{"objects", "add", scene}, "Give one name"},
      {{"objects", "rename", scene, "Room"}, "Give two names"},
      {{"objects", "rename", scene, "Room", ""}, "A name is needed."},
      {{"layers", "place", scene, "Props"}, "place"},
  };
  for (const auto& row : rows) {
    auto call = row.call;
    call.emplace_back("--write");
    const ChildResult result = Call(call);
    EXPECT_EQ(result.status, 2) << testing::PrintToString(row.call);
    EXPECT_NE(result.err.find(row.says), std::string::npos) << result.err;
    EXPECT_EQ(tests::ReadText(scene), before);
  }
}

TEST_F(ElementVerbs, CamerasAreAimedAtPlacesAndThings) {
  const std::string scene = Room();
  const auto place = [&](const std::vector<std::string>& more) {
    std::vector<std::string> call{"cameras", "place", scene, "Front", "--write"};
    call.insert(call.end(), more.begin(), more.end());
    return Json(call);
  };
  EXPECT_EQ(place({"--at", "-5,0,20.5"})["elements"][0]["at"], json::array({-5.0, 0.0, 20.5}));
  EXPECT_EQ(place({"--look-at", "#1"})["changed"], 1);
  EXPECT_EQ(place({"--look-at", "10,0,0"})["changed"], 0) << "there the object stands";
  EXPECT_EQ(place({"--rotate", "0,90,0"})["changed"], 1);
  EXPECT_EQ(Out({"cameras", "list", scene, "--names"}), "Front\n");
  EXPECT_EQ(Out({"cameras", "add", scene, "All"}), "Added the camera /All.\n");
}

}  // namespace
