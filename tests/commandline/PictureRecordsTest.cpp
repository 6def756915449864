// Every picture file records its inputs, which decide what is rendered again: nothing that is still
// the same, everything that is not; and no state's picture depends on the others.
#include <algorithm>
#include <filesystem>
#include <random>
#include <thread>

#include "engine/outside/WorkClaim.h"
#include "engine/render/Image.h"
#include "tests/commandline/CommandLine.h"
#include "tests/support/ScriptedServices.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using tests::ChildResult;
using tests::CommandLine;
using tests::ReadText;

class PictureRecords : public CommandLine {
 protected:
  // A scene with its textures, where "Bare" hides the body and knows nothing of the material that
  // "Full" sets, "Far" looks through another camera.
  std::string Project() {
    fs::create_directory(folder_ / "shot");
    fs::copy(TEST_SOURCE_DIR "/scenes/spider", folder_ / "shot/textures");
    for (const char* file : {"spider.obj", "spider.mtl"})
      fs::rename(folder_ / ("shot/textures/" + std::string(file)),
                 folder_ / ("shot/" + std::string(file)));
    std::string scene = folder_ / "shot/spider.c4d";
    Out({"import", folder_ / "shot/spider.obj", scene});
    Out({"set", scene, "--size", "48x32", "--add-camera", "Near", "--camera", "Near", "--write"});
    Out({"record", scene, "Full", "--write"});
    Out({"set", scene, "--object", "*", "--render", "off", "--write"});
    Out({"set", scene, "--object", "Kopf*", "--render", "on", "--write"});
    Out({"record", scene, "Bare", "--write"});
    Out({"set", scene, "--object", "*", "--render", "default", "--add-camera", "Wide", "--camera",
         "Wide", "--at", "0,100,-2000", "--look-at", "0,0,0", "--write"});
    Out({"record", scene, "Far", "--write"});
    return scene;
  }
  std::vector<std::string> RenderCall(const std::string& scene,
                                      const std::vector<std::string>& more = {}) const {
    std::vector<std::string> call{"render", scene, "-o", folder_ / "out/{state}.png"};
    call.insert(call.end(), more.begin(), more.end());
    return call;
  }
  // "Full rendered, Bare there, ..." of a call with --resume.
  std::string Resumed(const std::string& scene, const std::vector<std::string>& more = {}) const {
    std::vector<std::string> call = RenderCall(scene, more);
    call.emplace_back("--resume");
    std::string results;
    const json answer = Json(call);
    for (const json& picture : answer["pictures"])
      results += (results.empty() ? "" : ", ") + picture["state"].get<std::string>() + " " +
                 picture["result"].get<std::string>();
    return results;
  }
  std::string Bytes(const std::string& name) const { return ReadText(folder_ / ("out/" + name)); }
  std::vector<json> Manifest() const {
    std::vector<json> lines;
    std::istringstream text(Bytes("pictures.jsonl"));
    for (std::string line; std::getline(text, line);) lines.push_back(json::parse(line));
    return lines;
  }
};

TEST_F(PictureRecords, OnlyWhatIsNoLongerTheSameIsRenderedAgain) {
  const std::string scene = Project();
  const std::string all = "Bare rendered, Far rendered, Full rendered";
  const std::string none = "Bare there, Far there, Full there";
  EXPECT_EQ(Resumed(scene), all);
  EXPECT_EQ(Resumed(scene), none);
  const std::string bare = Bytes("Bare.png");

  const struct {
    const char* what;
    std::string shell;
    const char* resumed;
  } kRows[] = {
      {"a state that was loaded and recorded anew, as it was",
       "stagemarks load shot/spider.c4d Bare --write; stagemarks record shot/spider.c4d Bare "
       "--write --yes; stagemarks load shot/spider.c4d Far --write",
       "Bare there, Far there, Full there"},
      {"another state", "stagemarks record shot/spider.c4d Other --write",
       "Bare there, Far there, Full there, Other rendered"},
      {"a state recorded anew, the scene in another one",
       "stagemarks record shot/spider.c4d Bare --write --yes",
       "Bare rendered, Far there, Full there, Other there"},
      {"another scene camera",
       "stagemarks set shot/spider.c4d --add-camera New --at 5,5,-900 --write",
       "Bare rendered, Far rendered, Full rendered, Other rendered"},
      {"a texture at the same place", "cp shot/textures/SpiderTex.jpg shot/textures/drkwood2.jpg",
       "Bare rendered, Far rendered, Full rendered, Other rendered"},
      {"a scene that was moved with its textures", "mv shot moved; mkdir shot; mv moved/* shot/",
       "Bare there, Far there, Full there, Other there"},
      {"a broken picture of ours",
       "head -c 900 out/Far.png > f && cp f out/Far.png; rm out/Far.png; rm out/Bare.png",
       "Bare rendered, Far rendered, Full there, Other there"},
      {"a picture of another state under the name", "cp out/Bare.png out/Full.png",
       "Bare there, Far there, Full rendered, Other there"},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(Shell(row.shell).status, 0) << row.what;
    EXPECT_EQ(Resumed(scene), row.resumed) << row.what;
  }
  EXPECT_EQ(Resumed(scene, {"--size", "24x16"}),
            "Bare rendered, Far rendered, Full rendered, Other rendered");
  tests::WriteText(folder_ / "out/Far.png", Bytes("Far.png") + "x");
  std::vector<std::string> call = RenderCall(scene, {"--resume"});
  EXPECT_EQ(Call(call).status, 1) << "a changed picture may be somebody's work";
}

TEST_F(PictureRecords, EqualWorkGivesEqualBytesInAnyOrder) {
  const std::string scene = Project();
  Out({"render", scene, "-o", folder_ / "out/all {state}.png"});
  std::vector<std::string> names{"Full", "Bare", "Far"};
  std::mt19937 order(713);
  for (int round = 0; round < 6; ++round) {
    std::ranges::shuffle(names, order);
    const std::size_t count = 1 + round % names.size();
    std::vector<std::string> call{"render", scene, "-o", folder_ / "out/some {state}.png",
                                  "--only"};
    call.insert(call.end(), names.begin(), names.begin() + static_cast<std::ptrdiff_t>(count));
    Out(call);
    for (std::size_t i = 0; i < count; ++i)
      EXPECT_EQ(Bytes("some " + names[i] + ".png"), Bytes("all " + names[i] + ".png")) << names[i];
  }
  EXPECT_NE(Bytes("all Full.png"), Bytes("all Bare.png"));
}

// "Zlast" holds no layers: they stay as they are in the scene, or as the state before left them.
TEST_F(PictureRecords, AnIsolatedExportDoesNotInherit) {
  const std::string scene = Project();
  Out({"set", scene, "--add-layer", "L", "--write"});
  Out({"set", scene, "--layer", "L", "--flag", "render=off", "--write"});
  Out({"record", scene, "Off", "--write"});
  Out({"set", scene, "--layer", "L", "--flag", "render=on", "--write"});
  Out({"options", scene, "--toggle", "Layers", "--write"});
  Out({"record", scene, "Zlast", "--write"});
  Out({"options", scene, "--toggle", "Layers", "--write"});
  const auto differs = [&](const std::string& folder) {
    return Call({"diff", folder_ / (folder + "/spider Zlast.c4d"), "Off", "--scene"}).out;
  };
  const std::vector<std::string> call{"export", scene, "--layout", "file",
                                      "--only", "Off", "Zlast",    "--to"};
  for (const char* folder : {"heirs", "both"}) {
    std::vector<std::string> to = call;
    to.push_back(folder_ / folder);
    if (folder == std::string("both")) to.emplace_back("--isolated");
    Out(to);
  }
  EXPECT_EQ(differs("heirs"), "\"Off\" and the scene are the same.\n");
  EXPECT_NE(differs("both").find("L  Render  Off -> On"), std::string::npos) << differs("both");
  EXPECT_EQ(Files("both"), Files("heirs"));
}

TEST_F(PictureRecords, TheManifestTellsWhatTheFilesTell) {
  const std::string scene = Project();
  Out(RenderCall(scene, {"--only", "Full", "--format", "png"}));
  Out({"render", scene, "--only", "Full", "-o", folder_ / "out/Full.tif"});
  Out({"render", scene, "--only", "Full", "-o", folder_ / "out/Full.exr"});
  const std::vector<json> lines = Manifest();
  ASSERT_EQ(lines.size(), 3U);
  for (const json& line : lines) {
    const std::string file = Bytes(line["picture"]);
    EXPECT_EQ(line["result"], "rendered");
    EXPECT_EQ(line["bytes"], file.size());
    EXPECT_NE(file.find("scene " + line["scene"].get<std::string>() + " state " +
                        line["state"].get<std::string>() + " settings " +
                        line["settings"].get<std::string>() + " size 48x32 frame 0 program " +
                        line["program"].get<std::string>() + ";"),
              std::string::npos);
    EXPECT_FALSE(line["time"].get<std::string>().empty() ||
                 line["host"].get<std::string>().empty());
    EXPECT_EQ(file.find(line["time"].get<std::string>()), std::string::npos);
    const auto image = engine::DecodeImage(file);
    ASSERT_TRUE(image) << image.Message();
    EXPECT_EQ(image.Value().IsFloat(), line["picture"] == "Full.exr");
    EXPECT_EQ(image.Value().width, 48U);
  }
  EXPECT_NE(lines[0]["settings"], lines[2]["settings"]);
}

TEST_F(PictureRecords, ASheetUsesWhatWasRendered) {
  const std::string scene = Project();
  Out(RenderCall(scene, {"--size", "960x640"}));
  const std::string full = Bytes("Full.png");
  const struct {
    std::vector<std::string> more;
    std::size_t used;
  } kRows[] = {
      {{"--from", folder_ / "out"}, 3},
      {{}, 0},
      {{"--size", "2000x2000", "--from", folder_ / "out", "--only", "Full"}, 0},
      {{"--size", "90x60", "--from", folder_ / "out", "--html", folder_ / "page"}, 3},
      {{"--size", "90x60", "--resume"}, 0},
      {{"--size", "90x60", "--resume"}, 3},
  };
  for (const auto& row : kRows) {
    std::vector<std::string> call{"sheet", scene, "-o", folder_ / "sheet.png"};
    call.insert(call.end(), row.more.begin(), row.more.end());
    EXPECT_EQ(Json(call)["finishedPictures"], row.used) << testing::PrintToString(row.more);
  }
  EXPECT_EQ(Files("page"), "index.html | pictures/Bare.png | pictures/Far.png | pictures/Full.png");
  EXPECT_EQ(Files("sheet pictures"), "Bare.png | Far.png | Full.png");
  Out({"set", scene, "--object", "Kopf*", "--render", "off", "--write"});
  Out({"record", scene, "Full", "--write", "--yes"});
  EXPECT_EQ(Json({"sheet", scene, "-o", folder_ / "sheet.png", "--from",
                  folder_ / "out"})["finishedPictures"],
            2);
  EXPECT_EQ(Bytes("Full.png"), full) << "a sheet never writes over a picture";
  tests::WriteText(folder_ / "out/Far.png", "no picture");
  EXPECT_EQ(Json({"sheet", scene, "-o", folder_ / "sheet.png", "--from",
                  folder_ / "out"})["finishedPictures"],
            1);
}

// Two calls share the work; a picture that somebody is at is waited for, and not done twice.
TEST_F(PictureRecords, SeveralCallsShareTheWork) {
  const std::string scene = Project();
  const ChildResult both = Shell(
      "for i in 1 2 3; do stagemarks render shot/spider.c4d -o 'out/{state} {frame}.png' --frames "
      "0:9 --jobs 1 --resume --json > $i.json & pids=\"$pids $!\"; done; for p in $pids; do wait "
      "$p "
      "|| exit 1; done");
  EXPECT_EQ(both.status, 0) << both.err;
  std::size_t rendered = 0;
  for (const char* file : {"1.json", "2.json", "3.json"}) {
    const json answer = json::parse(ReadText(folder_ / file));
    for (const json& picture : answer["pictures"]) rendered += picture["result"] == "rendered";
  }
  EXPECT_EQ(rendered, 30U);
  EXPECT_EQ(Manifest().size(), 30U);
  EXPECT_EQ(tests::Names(folder_ / "out").find(".claim"), std::string::npos);

  fs::remove(folder_ / "out/Far 0003.png");
  const tests::ScriptedServices services;
  auto claim = engine::WorkClaim::Try(services.files, folder_ / "out/Far 0003.png");
  ASSERT_TRUE(claim && claim.Value());
  EXPECT_TRUE(engine::WorkClaim::IsTaken(folder_ / "out/Far 0003.png"));
  ChildResult waiting;
  std::thread call([&] {
    waiting = Shell(
        "stagemarks render shot/spider.c4d -o 'out/{state} {frame}.png' --frames 0:9 "
        "--resume 2> err & while ! grep -q Waiting err; do :; done; touch seen; wait $!");
  });
  while (!fs::exists(folder_ / "seen")) std::this_thread::yield();
  EXPECT_FALSE(fs::exists(folder_ / "out/Far 0003.png"));
  { const auto ended = std::move(*claim.Value()); }
  call.join();
  EXPECT_EQ(waiting.status, 0) << waiting.err;
  EXPECT_TRUE(fs::exists(folder_ / "out/Far 0003.png"));
}

TEST_F(PictureRecords, ThePlanIsToldBeforeAnythingIsRendered) {
  const std::string scene = Project();
  const ChildResult dry = Call(RenderCall(scene, {"--dry-run", "--size", "64x40", "32x20"}));
  EXPECT_EQ(dry.status, 2) << "two pictures of one name";
  const std::string said =
      Out({"render", scene, "--dry-run", "--frames", "0:1", "-o",
           folder_ / "out/{state} {size} {frame}.exr", "--size", "64x40", "600x400"});
  for (const char* what :
       {"12 pictures:", "/Full 600x400 0001.exr  600 x 400", "1.5 megapixels to render, about "})
    EXPECT_NE(said.find(what), std::string::npos) << what << "\n" << said;
  EXPECT_FALSE(fs::exists(folder_ / "out"));
  const ChildResult rendered = Call(RenderCall(scene));
  EXPECT_NE(rendered.err.find("Rendering: 2 of 3 (66 %)"), std::string::npos) << rendered.err;
}

}  // namespace
