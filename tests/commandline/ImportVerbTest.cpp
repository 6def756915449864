// Files of other formats from the shell: their states become Stagemarks, a newer file is brought
// into a scene that was worked on, textures come along, and the same file gives the same scene.
#include <cstring>
#include <filesystem>
#include <fstream>

#include "tests/commandline/CommandLine.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using tests::ChildResult;
using tests::CommandLine;

// One triangle.
constexpr const char* kPoints =
    "data:application/octet-stream;base64,"
    "AAAAAAAAAAAAAAAAAACAPwAAAAAAAAAAAAAAAAAAgD8AAAAA";

json Part(int material, const json& mappings = {}) {
  json part = {{"attributes", {{"POSITION", 0}}}, {"material", material}};
  if (!mappings.is_null()) part["extensions"]["KHR_materials_variants"]["mappings"] = mappings;
  return part;
}

// A chair of two parts and a lamp; the variants paint the seat red, blue and green.
json Chair() {
  const json seat =
      Part(0, {{{"material", 1}, {"variants", {1}}}, {{"material", 2}, {"variants", {2}}}});
  return {
      {"asset", {{"version", "2.0"}}},
      {"extensionsUsed", {"KHR_materials_variants"}},
      {"extensions",
       {{"KHR_materials_variants",
         {{"variants", {{{"name", "Beach"}}, {{"name", "Night"}}, {{"name", "Beach"}}}}}}}},
      {"buffers", {{{"byteLength", 36}, {"uri", kPoints}}}},
      {"bufferViews", {{{"buffer", 0}, {"byteLength", 36}}}},
      {"accessors", {{{"bufferView", 0}, {"componentType", 5126}, {"count", 3}, {"type", "VEC3"}}}},
      {"materials", {{{"name", "Red"}}, {{"name", "Blue"}}, {{"name", "Green"}}}},
      {"meshes", {{{"primitives", {seat, Part(1)}}}, {{"primitives", {Part(2)}}}}},
      {"cameras",
       {{{"type", "perspective"}, {"perspective", {{"yfov", 1}, {"znear", 0.1}}}},
        {{"type", "perspective"}, {"perspective", {{"yfov", 0.5}, {"znear", 0.1}}}}}},
      {"nodes",
       {{{"name", "Chair"}, {"mesh", 0}},
        {{"name", "Lamp"}, {"mesh", 1}},
        {{"name", "Front"}, {"camera", 0}},
        {{"name", "Side"}, {"camera", 1}}}},
      {"scenes", {{{"nodes", {0, 1, 2, 3}}}}},
      {"scene", 0}};
}

class ImportVerb : public CommandLine {
 protected:
  std::string Write(const std::string& name, const json& file) {
    fs::create_directories(fs::path(folder_ / name).parent_path());
    std::ofstream(folder_ / name) << file;
    return folder_ / name;
  }
};

TEST_F(ImportVerb, MakesAStagemarkOfEachVariantOfTheMaterials) {
  const std::string scene = folder_ / "chair.c4d";
  const json imported = Json({"import", Write("chair.gltf", Chair()), scene});
  EXPECT_EQ(imported["recorded"], json({"Beach", "Night", "Beach 2"}));
  EXPECT_EQ(Marks(scene), "*Beach Beach 2 Night ") << "the file looks like its first variant";
  const auto changes = [&](const std::string& mark) {
    return Call({"diff", scene, "Beach", mark}).out;
  };
  EXPECT_NE(changes("Night").find("\"Blue\""), std::string::npos) << changes("Night");
  EXPECT_NE(changes("Beach 2").find("\"Green\""), std::string::npos) << changes("Beach 2");
  EXPECT_EQ(Call({"load", scene, "Beach", "--dry-run"}).out.find("\"Blue\""), std::string::npos);
}

// States in files published from here hold more than materials: date, camera, hidden nodes, size.
TEST_F(ImportVerb, MakesStagemarksAsOurOwnFilesDescribeThem) {
  json file = Chair();
  file["extras"]["stagemarks"] = {{"version", 1},
                                  {"states",
                                   {{{"name", "Day"},
                                     {"date", "2025-03-04T05:06:07"},
                                     {"variant", 0},
                                     {"camera", 2},
                                     {"hidden", json::array()},
                                     {"size", {640, 480}}},
                                    {{"name", "Dark"},
                                     {"variant", 1},
                                     {"camera", 3},
                                     {"hidden", {1, 99}},
                                     {"size", {320, 200}}}}}};
  const std::string scene = folder_ / "room.c4d";
  EXPECT_EQ(Json({"import", Write("room.gltf", file), scene})["recorded"], json({"Day", "Dark"}));
  EXPECT_NE(Out({"list", scene}).find("03/04/25 05:06"), std::string::npos);
  const std::string diff = Call({"diff", scene, "Day", "Dark"}).out;
  for (const char* part : {"Lamp", "\"Blue\"", "Side", "320", "200", "Off"})
    EXPECT_NE(diff.find(part), std::string::npos) << part << "\n" << diff;
}

TEST_F(ImportVerb, GivesTheSameBytesForTheSameFile) {
  const std::string file = Write("chair.gltf", Chair());
  for (const char* folder : {"one", "two"}) {
    fs::create_directory(folder_ / folder);
    Out({"import", file, folder_ / (std::string(folder) + "/chair.c4d")});
    Out({"import", TEST_SOURCE_DIR "/scenes/spider/spider.fbx",
         folder_ / (std::string(folder) + "/spider.c4d")});
  }
  for (const char* name : {"/chair.c4d", "/spider.c4d"}) {
    EXPECT_EQ(tests::ReadText(folder_ / (std::string("one") + name)),
              tests::ReadText(folder_ / (std::string("two") + name)))
        << name;
  }
}

TEST_F(ImportVerb, TellsProgramsWhatIsLeftOutAndHowOften) {
  json file = Chair();
  file["animations"] = {{{"channels", json::array()}, {"samplers", json::array()}}};
  file["extensionsUsed"].push_back("ACME_smell");
  file["nodes"][1]["extensions"]["ACME_smell"] = {{"rose", 1}};
  file["nodes"][2]["extensions"]["ACME_smell"] = {{"rose", 2}};
  const json notes = Json({"import", Write("chair.gltf", file), folder_ / "chair.c4d"})["notes"];
  std::string text;
  for (const json& note : notes)
    text += note["note"].get<std::string>() + "=" + note["count"].dump() + "\n";
  EXPECT_NE(text.find("Animations are left out, the scene is shown at rest=1"), std::string::npos)
      << text;
  EXPECT_NE(text.find("The extension ACME_smell is left out, uses=2"), std::string::npos) << text;
}

// The JSON of a published file.
json Published(const std::string& path) {
  const std::string bytes = tests::ReadText(path);
  std::uint32_t length = 0;
  std::memcpy(&length, bytes.data() + 12, sizeof length);
  return json::parse(bytes.substr(20, length));
}

TEST_F(ImportVerb, BringsBackWhatWasPublished) {
  const std::string scene = folder_ / "chair.c4d";
  Out({"import", Write("chair.gltf", Chair()), scene});
  Out({"set", scene, "--object", "Lamp", "--render", "off", "--editor", "off", "--camera", "Side",
       "--size", "640x360", "--write"});
  Out({"record", scene, "No lamp", "--write"});
  Out({"publish", scene, "--to", folder_ / "one", "--all-in-one"});
  const std::string back = folder_ / "back/chair.c4d";
  fs::create_directory(folder_ / "back");
  Out({"import", folder_ / "one/chair.glb", back});
  EXPECT_EQ(Marks(back), "*Beach Beach 2 Night No lamp ");
  for (const char* state : {"Beach", "Beach 2", "Night", "No lamp"}) {
    const ChildResult diff = Call({"diff", scene + ":" + state, back + ":" + state});
    EXPECT_EQ(diff.status, 0) << diff.out << diff.err;
  }
  Out({"publish", back, "--to", folder_ / "two", "--all-in-one"});
  const json one = Published(folder_ / "one/chair.glb");
  const json two = Published(folder_ / "two/chair.glb");
  for (const char* part : {"nodes", "meshes", "materials", "cameras", "scenes", "extensions"})
    EXPECT_EQ(two[part], one[part]) << part;
}

TEST_F(ImportVerb, KeepsExtrasAndUnitsOfLightForPublishing) {
  json file = Chair();
  file["nodes"][0]["extras"] = {{"price", 12.5}, {"tags", {"oak", "\u00e9"}}};
  file["meshes"][1]["extras"] = "shade";
  file["materials"][1]["extras"] = {{"paint", 7}};
  file["scenes"][0]["extras"] = {{"client", "Nobody"}};
  file["extensionsUsed"].push_back("KHR_lights_punctual");
  file["extensions"]["KHR_lights_punctual"]["lights"] = {{{"type", "point"}, {"intensity", 800}},
                                                         {{"type", "point"}, {"intensity", 200}}};
  for (int i : {0, 1}) {
    file["nodes"].push_back(
        {{"name", "L"}, {"extensions", {{"KHR_lights_punctual", {{"light", i}}}}}});
    file["scenes"][0]["nodes"].push_back(4 + i);
  }
  const std::string scene = folder_ / "chair.c4d";
  Out({"import", Write("chair.gltf", file), scene});
  Out({"publish", scene, "--to", folder_ / "out", "--only", "Night"});
  const json published = Published(folder_ / "out/chair Night.glb");
  const json& nodes = published["nodes"];
  EXPECT_EQ(nodes[0]["extras"], file["nodes"][0]["extras"]);
  EXPECT_EQ(published["meshes"].back()["extras"], "shade");
  EXPECT_EQ(published["materials"][0]["extras"], file["materials"][1]["extras"]);
  EXPECT_EQ(published["scenes"][0]["extras"]["client"], "Nobody");
  const json& lights = published["extensions"]["KHR_lights_punctual"]["lights"];
  EXPECT_EQ(lights[0]["intensity"], 800);
  EXPECT_EQ(lights[1]["intensity"], 200);
}

class UpdateVerb : public ImportVerb {
 protected:
  UpdateVerb() {
    Out({"import", Write("chair.gltf", Chair()), scene_});
    Out({"set", scene_, "--object", "Lamp", "--render", "off", "--write"});
    Out({"record", scene_, "No lamp", "--write"});
  }
  // The next day's model: the chair has moved, the lamp is gone, there is a rug.
  std::string NextDay() {
    json file = Chair();
    file["nodes"][0]["translation"] = {1, 2, 3};
    file["nodes"][1]["name"] = "Rug";
    file["materials"][0]["pbrMetallicRoughness"]["baseColorFactor"] = {1, 0, 0, 1};
    return Write("next/chair.gltf", file);
  }

  const std::string scene_ = folder_ / "chair.c4d";
};

TEST_F(UpdateVerb, KeepsTheStagemarks) {
  const json updated = Json({"import", NextDay(), "--update", scene_, "--write"});
  EXPECT_EQ(updated["objects"]["changed"][0]["path"], "Chair");
  EXPECT_EQ(updated["objects"]["changed"][0]["what"], json({"place"}));
  EXPECT_EQ(updated["objects"]["new"], json({"Rug"}));
  EXPECT_EQ(updated["objects"]["gone"], json({"Lamp"}));
  EXPECT_EQ(updated["materials"]["changed"][0]["path"], "Red");
  EXPECT_EQ(updated["written"], scene_);
  EXPECT_EQ(Marks(scene_), "Beach Beach 2 Night *No lamp ");
  EXPECT_EQ(Call({"check", scene_}).out.find("error"), std::string::npos);
  Out({"load", scene_, "Night", "--write"});
  EXPECT_EQ(Json({"load", scene_, "Night", "--dry-run"})["changed"], false);
  EXPECT_FALSE(Json({"import", NextDay(), "--update", scene_})["objects"]["changed"].size());
}

TEST_F(UpdateVerb, WhatCannotBeFollowedIsSaidOnce) {
  NextDay();
  const ChildResult result =
      Shell("STAGEMARKS_IMPORT_SECONDS=soon stagemarks import next/chair.gltf --update chair.c4d");
  EXPECT_EQ(result.status, 0) << result.err;
  const std::size_t first = result.err.find("STAGEMARKS_IMPORT_SECONDS");
  EXPECT_NE(first, std::string::npos) << result.err;
  EXPECT_EQ(result.err.find("STAGEMARKS_IMPORT_SECONDS", first + 1), std::string::npos)
      << result.err;
}

TEST_F(UpdateVerb, WritesOnlyWhereItIsTold) {
  const std::string before = tests::ReadText(scene_);
  for (const std::vector<std::string>& more :
       std::vector<std::vector<std::string>>{{}, {"--dry-run"}}) {
    std::vector<std::string> call = {"import", NextDay(), "--update", scene_};
    call.insert(call.end(), more.begin(), more.end());
    EXPECT_NE(Out(call).find("Would update"), std::string::npos);
    EXPECT_EQ(tests::ReadText(scene_), before);
  }
  Out({"import", NextDay(), folder_ / "other.c4d", "--update", scene_, "--gone", "remove"});
  EXPECT_EQ(tests::ReadText(scene_), before);
  EXPECT_EQ(Marks(folder_ / "other.c4d"), Marks(scene_));
  EXPECT_EQ(Json({"import", folder_ / "chair.gltf", "--update", scene_})["objects"]["goneCount"],
            0);
  for (const std::vector<std::string>& wrong : std::vector<std::vector<std::string>>{
           {"import", NextDay()},
           {"import", NextDay(), "--update", scene_, "--write", "--dry-run"},
           {"import", NextDay(), folder_ / "x.c4d", "--gone", "remove"}}) {
    EXPECT_EQ(Call(wrong).status, 2);
  }
}

TEST_F(ImportVerb, CollectsTexturesBesideTheScene) {
  fs::create_directory(folder_ / "out");
  const std::string scene = folder_ / "out/spider.c4d";
  const json imported =
      Json({"import", TEST_SOURCE_DIR "/scenes/spider/spider.obj", scene, "--collect"});
  EXPECT_EQ(imported["collected"].size(), 5U);
  EXPECT_EQ(Files("out"), "spider.c4d | tex/*5");
  fs::rename(folder_ / "out", folder_ / "moved");
  EXPECT_EQ(Json({"info", folder_ / "moved/spider.c4d"})["missingTextures"], json::array());
  Out({"import", TEST_SOURCE_DIR "/scenes/spider/spider.obj", folder_ / "moved/again.c4d",
       "--collect"});
  EXPECT_EQ(Files("moved"), "again.c4d | spider.c4d | tex/*5") << "the files were there already";
}

}  // namespace
