// The program as a person calls it: verb, arguments, exit status, what it prints and what it
// writes.
#include <filesystem>
#include <set>
#include <sstream>

#include "tests/commandline/CommandLine.h"

namespace {

using nlohmann::json;
using tests::ChildResult;
using tests::CommandLine;
using tests::ReadText;
using tests::RunChild;
using tests::WriteText;

TEST_F(CommandLine, UsageIsRefusedWithStatusTwo) {
  const struct {
    std::vector<std::string> arguments;
    int status;
    const char* says;
  } kCalls[] = {
      {{}, 2, "No verb was given"},
      {{"fly"}, 2, "There is no verb \"fly\""},
      {{"lisst", "a.c4d"}, 2, "Did you mean \"list\""},
      {{"rec", "a.c4d"}, 2, "Did you mean \"record\""},
      {{"list"}, 2, "SCENE is required"},
      {{"record", "a.c4d"}, 2, "NAME is required"},
      {{"record", "a.c4d", "A", "-o", "b.c4d", "--write"}, 2, "--write"},
      {{"import", "scene.blend", "out.c4d"}, 2, "no format"},
      {{"--help"}, 0, "record"},
      {{"--version"}, 0, "stagemarks 0.713"},
      {{"set", "--help"}, 0, "--look-at"},
      {{"export", "a.c4d", "--to", "x", "--layout", "heap"}, 2, "one-tex"},
      {{"export", "a.c4d", "--to", "x", "--frames", "9:1"}, 2, "no frame range"},
      {{"import", "a.gltf", "b.gltf"}, 2, "\"b.gltf\" has the name of another format"},
      {{"import", "a.gltf", "-"}, 2, "cannot be written to standard output"},
      {{"new", "a.gltf"}, 2, "\"a.gltf\" has the name of another format"},
      {{"record", "a.gltf", "A", "--write"}, 2, "Give -o OUT.c4d instead."},
      {{"list", "missing.c4d"}, 1, "missing.c4d"},
  };
  for (const auto& call : kCalls) {
    const ChildResult result = Call(call.arguments);
    EXPECT_EQ(result.status, call.status) << testing::PrintToString(call.arguments) << result.err;
    EXPECT_NE((result.out + result.err).find(call.says), std::string::npos)
        << result.out << result.err;
  }
}

TEST_F(CommandLine, AnEmptySceneIsMade) {
  const std::string scene = Scene("empty.c4d");
  Out({"new", scene});
  EXPECT_EQ(Json({"info", scene})["counts"]["objects"], 0);
  EXPECT_NE(Out({"list", scene}).find("No Stagemarks yet"), std::string::npos);
}

TEST_F(CommandLine, RecordsAndRecallsAState) {
  const std::string scene = Spider();
  Out({"record", scene, "All", "--write"});
  Out({"set", scene, "--object", "*", "--render", "off", "--size", "320x200", "--write"});
  Out({"record", scene, "None", "--write"});
  EXPECT_EQ(Marks(scene), "All *None ");

  const auto renderModes = [&] {
    std::set<int> modes;
    const json info = Json({"info", scene, "--tree"});
    for (const json& object : info["objects"]) modes.insert(object["render"].get<int>());
    return modes;
  };
  EXPECT_EQ(renderModes(), std::set<int>{1});
  Out({"load", scene, "All", "--write"});
  EXPECT_EQ(renderModes(), std::set<int>{2});
  EXPECT_EQ(Json({"info", scene})["renderSettings"][0]["width"], 1280);
  Out({"load", scene, "None", "--write"});
  EXPECT_EQ(renderModes(), std::set<int>{1});
  EXPECT_EQ(Json({"info", scene})["renderSettings"][0]["width"], 320);
  EXPECT_EQ(Marks(scene), "All *None ");
}

TEST_F(CommandLine, LoadTellsWhatItChanged) {
  const std::string scene = Staged();
  const json changes = Json({"load", scene, "Day"});
  EXPECT_TRUE(changes["changed"]);
  EXPECT_EQ(changes["changes"], json({{"objects", 21},
                                      {"tags", 0},
                                      {"layers", 0},
                                      {"renderSettings", false},
                                      {"sceneCamera", false}}));
  EXPECT_FALSE(Json({"load", scene, "Night"})["changed"]);
  const std::string told = Out({"load", scene, "Day", "-v", "-o", Scene("day.c4d")});
  EXPECT_NE(told.find("It changed 21 objects.\n"), std::string::npos) << told;
  EXPECT_NE(told.find("  object \"Kopf2\" render off -> default\n"), std::string::npos) << told;
}

// Empty objects enough for a dump that fits into no pipe.
std::string ManyObjects(const std::string& file) {
  json nodes = json::array();
  json roots = json::array();
  for (int i = 0; i < 5000; ++i) {
    nodes.push_back({{"name", "Lamp " + std::to_string(i)}});
    roots.push_back(i);
  }
  const json scene = {{"asset", {{"version", "2.0"}}},
                      {"scene", 0},
                      {"scenes", {{{"nodes", roots}}}},
                      {"nodes", nodes}};
  WriteText(file, scene.dump());
  return file;
}

TEST_F(CommandLine, DumpIsWrittenPieceByPiece) {
  const std::string scene = ManyObjects(Scene("many.gltf"));
  const std::string text = Out({"info", scene, "--dump"});
  EXPECT_GT(text.size(), 300000U);
  EXPECT_NE(text.find("\"Lamp 4999\""), std::string::npos);
  EXPECT_EQ(Json({"info", scene, "--dump"})["dump"], text);

  // Programs that a shell starts in the background ignore Ctrl-C unless `env` undoes that.
  // Nobody reads on until Ctrl-C has come, so that the program stands before a full pipe.
  WriteText(Scene("stop.sh"),
            "mkfifo pipe\nenv --default-signal=INT \"$1\" info many.gltf --dump >pipe & "
            "child=$!\nexec 3<pipe\nread first <&3\n"
            "kill -INT $child\ncat <&3 >rest\nwait $child\n");
  const std::string stop =
      "cd '" + folder_.Path() + "' && sh stop.sh " TEST_BINARY_DIR "/bin/stagemarks";
  EXPECT_EQ(RunChild("/bin/sh", {"-c", stop}).status, 130);
  EXPECT_LT(ReadText(Scene("rest")).size(), text.size() / 2);

  const std::string full =
      "'" TEST_BINARY_DIR "/bin/stagemarks' info '" + scene + "' --dump >/dev/full";
  const ChildResult failed = RunChild("/bin/sh", {"-c", full});
  EXPECT_EQ(failed.status, 1);
  EXPECT_NE(failed.err.find("No space left on device"), std::string::npos) << failed.err;
  const std::string enough =
      "'" TEST_BINARY_DIR "/bin/stagemarks' info '" + scene + "' --dump | head -n 1";
  EXPECT_EQ(RunChild("/bin/sh", {"-c", enough}).err, "")
      << "a reader that has had enough is no failure";
}

TEST_F(CommandLine, WritesNothingUnlessTold) {
  const std::string scene = Spider();
  const std::string before = ReadText(scene);
  const ChildResult result = Call({"record", scene, "A"});
  EXPECT_EQ(result.status, 0);
  EXPECT_NE(result.err.find("nothing was written"), std::string::npos);
  EXPECT_EQ(ReadText(scene), before);
  Out({"record", scene, "A", "-o", Scene("copy.c4d")});
  EXPECT_EQ(ReadText(scene), before);
  EXPECT_EQ(Marks(Scene("copy.c4d")), "*A ");
}

TEST_F(CommandLine, OverwritingNeedsConsent) {
  const std::string scene = Spider();
  Out({"record", scene, "A", "--write"});
  const std::string before = ReadText(scene);
  const ChildResult refused = Call({"record", scene, "A", "--write"});
  EXPECT_EQ(refused.status, 1);
  EXPECT_NE(
      refused.err.find("An element with that name already exists.  Do you want to overwrite it?"),
      std::string::npos);
  EXPECT_EQ(ReadText(scene), before);
  EXPECT_TRUE(Json({"record", scene, "A", "--write", "--yes"})["overwritten"]);
  EXPECT_EQ(Marks(scene), "*A ");
}

TEST_F(CommandLine, UnknownNamesAreRefusedWithAHint) {
  const std::string scene = Spider();
  Out({"record", scene, "Evening", "--write"});
  const std::string before = ReadText(scene);
  const struct {
    std::vector<std::string> arguments;
    const char* says;
  } kCalls[] = {
      {{"load", scene, "Evenin", "--write"}, "Did you mean \"Evening\"?"},
      {{"load", scene, "Zebra", "--write"}, "There is no Stagemark \"Zebra\""},
      {{"record", scene, "", "--write"}, "You must enter a name for this element."},
      {{"set", scene, "--object", "Nobody", "--render", "off", "--write"},
       "There is no object \"Nobody\""},
      {{"set", scene, "--object", "#9999", "--render", "off", "--write"},
       "There is no object #9999"},
      {{"set", scene, "--render", "off", "--write"}, "--object"},
      {{"set", scene, "--size", "0x5", "--write"}, "no picture size"},
      {{"set", scene, "--frames", "9:1", "--write"}, "no frame range"},
      {{"set", scene, "--layer", "None", "--flag", "view=off", "--write"},
       "There is no layer \"None\""},
      {{"set", scene, "--camera", "*", "--write"}, "names"},
      {{"set", scene, "--write"}, "Nothing to change"},
      {{"options", scene, "--toggle", "Everything", "--write"},
       "There is no option \"Everything\""},
  };
  for (const auto& call : kCalls) {
    const ChildResult result = Call(call.arguments);
    EXPECT_EQ(result.status, 2) << testing::PrintToString(call.arguments) << result.err;
    EXPECT_NE(result.err.find(call.says), std::string::npos) << result.err;
    EXPECT_EQ(ReadText(scene), before);
  }
}

TEST_F(CommandLine, SetChangesWhatItNames) {
  const std::string scene = Spider();
  Out({"set", scene, "--add-camera", "Front", "--at", "0,10,-900", "--look-at", "0,0,0",
       "--add-layer", "Props", "--add-material", "Red", "--color", "1,0,0", "--write"});
  Out({"set", scene, "--camera", "/Front", "--layer", "Props", "--flag", "view=off", "--flag",
       "solo=on", "--frames", "5:25", "--write"});
  const json info = Json({"info", scene});
  EXPECT_EQ(info["sceneCamera"], "/Front");
  EXPECT_EQ(info["renderSettings"][0]["from"], 5);
  EXPECT_EQ(info["renderSettings"][0]["to"], 25);
  EXPECT_EQ(info["layers"], json::array({"Props"}));
  EXPECT_NE(Out({"info", scene, "--dump"}).find("Red"), std::string::npos);
}

TEST_F(CommandLine, OptionsAreShownToggledAndSaved) {
  const std::string scene = Spider();
  EXPECT_TRUE(Json({"options", scene})["options"]["Layers"]);
  EXPECT_EQ(Json({"options", scene})["options"].size(), 12U);
  EXPECT_FALSE(
      Json({"options", scene, "--toggle", "Layers", "--save-default"})["options"]["Layers"]);
  // The scene itself was not written, but the defaults hold for every scene without a choice of its
  // own.
  EXPECT_FALSE(Json({"options", scene})["options"]["Layers"]);
  EXPECT_TRUE(Json({"options", scene})["options"]["Objects"]);
}

// A program gets names as they are and can give them back; a terminal is spared what would garble
// it.
TEST_F(CommandLine, NamesGoThroughAPipeUnchanged) {
  const std::string scene = Spider();
  const std::string name = "\x1b[31m red " + std::string(200, 'x');
  Out({"record", scene, name, "--write"});
  EXPECT_EQ(Out({"list", scene, "--names"}), name + "\n");
  EXPECT_EQ(CallOnTerminal({"list", scene, "--names"}, {}).out.find('\x1b'), std::string::npos);
}

// In any letters, straight from the file: the same as the dialog has them.
TEST_F(CommandLine, NamesCanBeAddressedByWhatIsPrinted) {
  const std::string scene = Spider();
  const std::string odd = "caf\xe9 \x1b[1m";
  for (const std::string& name : {std::string("Zoo"), odd, std::string("a"), std::string("B")})
    Out({"record", scene, name, "--write"});
  Out({"objects", "rename", scene, "Kopf2", "\xff\xfehead", "--write"});
  EXPECT_EQ(Out({"list", scene, "--names"}), "B\nZoo\na\n" + odd + "\n");
  EXPECT_EQ(Out({"list", scene, "--names", "--only", "?"}), "B\na\n");
  const std::string inJson = Json({"list", scene})["stagemarks"][3]["name"];
  const std::string onScreen = "caf\uFFFD \uFFFD[1m";
  for (const std::string& typed : {odd, inJson, onScreen})
    EXPECT_EQ(Json({"load", scene, typed})["wouldLoad"], inJson) << typed;
  Out({"record", scene, "caf\xea \x1b[1m", "--write"});
  EXPECT_EQ(Call({"load", scene, onScreen}).status, 2) << "two are printed so";
  EXPECT_EQ(Json({"load", scene, odd})["wouldLoad"], inJson);
  EXPECT_EQ(Json({"set", scene, "--object", "\uFFFDhead", "--editor", "off"})["counts"]["objects"],
            1);
}

TEST_F(CommandLine, APreviewOfANameThatIsNoFileNameIsRefusedWithTheReason) {
  const std::string scene = Spider();
  const ChildResult result = Call({"record", scene, "/abs", "--preview", "--write"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.err,
            "stagemarks: There is no preview: the name \"/abs\" cannot be that of a file, it holds "
            "a slash.\n");
  EXPECT_EQ(Marks(scene), "*/abs ");
}

TEST_F(CommandLine, DamagedScenesAndPluginsGetAMessage) {
  tests::WriteText(Scene("foreign.c4d"), "no scene");
  const ChildResult foreign = Call({"list", Scene("foreign.c4d")});
  EXPECT_EQ(foreign.status, 1);
  EXPECT_NE(foreign.err.find("foreign.c4d"), std::string::npos) << foreign.err;

  const ChildResult noPlugin =
      tests::RunChild(TEST_BINARY_DIR "/bin/stagemarks", {"list", Scene("foreign.c4d")},
                      {{"STAGEMARKS_PLUGINS", folder_ / "nowhere"}});
  EXPECT_EQ(noPlugin.status, 1);
  EXPECT_NE(noPlugin.err.find("Stagemarks.so"), std::string::npos) << noPlugin.err;
  const ChildResult relative = tests::RunChild(TEST_BINARY_DIR "/bin/stagemarks", {"list", "x.c4d"},
                                               {{"STAGEMARKS_PLUGINS", "plugins"}});
  EXPECT_EQ(relative.status, 1);
  EXPECT_NE(relative.err.find("is no full path"), std::string::npos) << relative.err;
}

TEST_F(CommandLine, TheDemoChecksItself) {
  const std::string out = Out({"demo", "--to", folder_ / "demo"});
  EXPECT_EQ(out.find("\u2717"), std::string::npos) << out;
  EXPECT_NE(out.find("Undid that recall"), std::string::npos) << out;
  EXPECT_NE(out.find("Exported 3 standalone scene files"), std::string::npos) << out;
  EXPECT_NE(out.find("      tex/  20 textures\n"), std::string::npos) << out;
  EXPECT_EQ(Marks(folder_ / "demo/dungeon.c4d"), "*Clay Emptier Overview ");
  EXPECT_EQ(Files("demo/export"),
            "dungeon Clay/dungeon Clay.c4d | dungeon Clay/tex/*20 | dungeon Emptier/dungeon "
            "Emptier.c4d | dungeon Emptier/tex/*20 | "
            "dungeon Overview/dungeon Overview.c4d | dungeon Overview/tex/*20");
  EXPECT_EQ(Call({"demo", "--to", folder_ / "demo"}).status, 1)
      << "there is a scene with Stagemarks";
  const json again = Json({"demo", "--to", folder_ / "demo", "--force"});
  for (const json& step : again["steps"]) EXPECT_TRUE(step["worked"]) << step;
  EXPECT_EQ(again["files"].size(), 68U);
}

}  // namespace
