// A scene that is published, imported, recorded and published again is described by the second file
// as by the first.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "engine/scene/Mesh.h"
#include "engine/scenefile/SceneFile.h"
#include "tests/support/ChildProgram.h"
#include "tests/support/SceneBuilder.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/ScriptedServices.h"

namespace {

namespace fs = std::filesystem;
using Object = nlohmann::json;

Object JsonIn(const std::string& path) {
  const std::string bytes = tests::ReadText(path);
  std::uint32_t length = 0;
  std::memcpy(&length, bytes.data() + 12, sizeof length);
  return Object::parse(bytes.substr(20, length));
}

// The entry of a list that `holder` names by its index under `key`, in its place.
void Resolve(Object& holder, const char* key, const Object& list) {
  if (holder.contains(key)) holder[key] = list[holder[key].get<std::size_t>()];
}

// The nodes of a file, each with all that it uses; how the bytes lie is left out. Points that only
// rounding keeps apart may become one.
Object Described(const std::string& path) {
  Object file = JsonIn(path);
  for (Object& image : file["images"]) image.erase("bufferView");
  for (Object& texture : file["textures"]) Resolve(texture, "source", file["images"]);
  const Object textures = file["textures"];
  for (Object& material : file["materials"]) {
    for (Object* holder : {&material, &material["pbrMetallicRoughness"]}) {
      for (auto& [key, value] : holder->items()) {
        if (key.ends_with("Texture")) Resolve(value, "index", textures);
      }
    }
  }
  for (Object& mesh : file["meshes"]) {
    Object& primitive = mesh["primitives"][0];
    Resolve(primitive, "material", file["materials"]);
    primitive["indices"] = file["accessors"][primitive["indices"].get<std::size_t>()]["count"];
    Object& positions = primitive["attributes"]["POSITION"];
    const Object& accessor = file["accessors"][positions.get<std::size_t>()];
    positions = {{"min", accessor["min"]}, {"max", accessor["max"]}};
    for (auto& [key, value] : primitive["attributes"].items()) {
      if (key != "POSITION") value = "there";
    }
  }
  for (Object& node : file["nodes"]) {
    Resolve(node, "mesh", file["meshes"]);
    Resolve(node, "camera", file["cameras"]);
    if (node["extensions"].contains("KHR_lights_punctual")) {
      Resolve(node["extensions"]["KHR_lights_punctual"], "light",
              file["extensions"]["KHR_lights_punctual"]["lights"]);
    }
  }
  return {{"nodes", file["nodes"]}, {"roots", file["scenes"][0].value("nodes", Object())}};
}

bool AreAlike(const Object& a, const Object& b) {
  if (!a.is_number() || !b.is_number()) return a == b;
  const double number = a.get<double>();
  return std::abs(number - b.get<double>()) <= 1e-5 * std::max(1.0, std::abs(number));
}

// A line for each place in which two descriptions differ by more than single precision.
std::string Differences(const Object& first, const Object& second) {
  const Object a = first.flatten();
  const Object b = second.flatten();
  std::string lines;
  for (const auto& [place, value] : a.items()) {
    const Object other = b.contains(place) ? b[place] : Object("(nothing)");
    if (!AreAlike(value, other)) lines += place + ": " + value.dump() + " / " + other.dump() + "\n";
  }
  for (const auto& [place, value] : b.items()) {
    if (!a.contains(place)) lines += place + ": (nothing) / " + value.dump() + "\n";
  }
  return lines;
}

class RoundTripTest : public testing::Test {
 protected:
  void Run(const std::vector<std::string>& arguments) const {
    const tests::ChildResult result =
        tests::RunChild(TEST_BINARY_DIR "/bin/stagemarks", arguments,
                        {{"HOME", folder_.Path()}, {"XDG_CONFIG_HOME", folder_ / "config"}});
    ASSERT_EQ(result.status, 0) << testing::PrintToString(arguments) << result.err;
  }

  void ExpectSame(const std::string& scene) const {
    const std::string name = fs::path(scene).stem();
    const std::string again = folder_ / "again " + name + ".c4d";
    Run({"publish", scene, "--to", folder_ / "first", "--hidden", "mark"});
    Run({"import", folder_ / "first/" + name + ".glb", again});
    Run({"record", again, "Again", "--write"});
    Run({"publish", again, "--to", folder_ / "second", "--hidden", "mark"});
    EXPECT_EQ(Differences(Described(folder_ / "first/" + name + ".glb"),
                          Described(folder_ / "second/again " + name + " Again.glb")),
              "")
        << scene;
  }

  tests::ScratchFolder folder_;
};

TEST_F(RoundTripTest, DescribesTheSameScene) {
  for (const char* scene :
       {"scenes/dungeon/dungeon.gltf", "scenes/spider/spider.obj",
        "tests/scenes/features/features.gltf", "tests/scenes/collada/lights.dae",
        "tests/scenes/fbx/global_settings.fbx", "tests/scenes/draco/suzi.glb"})
    ExpectSame(TEST_SOURCE_DIR "/" + std::string(scene));
}

// Frames that lean are taken apart, long ones into their parts; hidden things have things below.
TEST_F(RoundTripTest, DescribesTheSameOddScene) {
  tests::SceneBuilder scene;
  scene.Material("Red", host::Vector(1, 0, 0));
  const auto framed = [&](const std::string& path, const host::Matrix& frame) {
    scene.Cube(path).Texture(path, "Red");
    scene.GetObject(path)->SetMl(frame);
  };
  framed("Leans", {{1, 2, 3}, {1, 0, 0}, {0.7, 1, 0}, {0.2, -0.4, 3}});
  framed("Leans/Long", {{100, 200, 300}, {0, 0, 40}, {0, -30, 0}, {20, 0, 0}});
  framed("Hidden", {{0, 50, 0}, {0.6, 0.8, 0}, {-0.8, 0.6, 0}, {0, 0, 1}});
  scene.Cube("Hidden/Shown").Modes("Hidden", 2, host::MODE_OFF).Modes("Hidden/Shown", 2, 0);
  scene.Camera("Eye").At("Eye", 0, 100, -500).LookThrough("Eye");
  tests::ScriptedServices services;
  const std::string path = folder_ / "odd.c4d";
  ASSERT_TRUE(engine::SaveSceneFile(services.Get(), scene.Doc(), path).Ok());
  ExpectSame(path);
}

}  // namespace
