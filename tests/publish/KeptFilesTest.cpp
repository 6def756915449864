// A published scene with whatever the format has a place for, in three states: the file as text,
// number by number. Where a change is meant, look at the new text and put it into
// tests/publish/kept.
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <nlohmann/json.hpp>
#include <regex>

#include "engine/publish/Publish.h"
#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/Extras.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/PictureParameters.h"
#include "host/Parameters.h"
#include "tests/support/KeptText.h"
#include "tests/support/SceneBuilder.h"
#include "tests/support/ScriptedServices.h"

namespace {

using host::Matrix;
using host::Vector;
using Json = nlohmann::ordered_json;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

class KeptFiles : public testing::Test, protected tests::SceneBuilder {
 protected:
  host::BaseContainer& Data(const std::string& path) { return *GetObject(path)->GetDataInstance(); }
  host::BaseContainer& Look(const std::string& name) {
    return *GetMaterial(name)->GetDataInstance();
  }
  host::BaseContainer& Light(const std::string& path, host::LONG kind, double brightness) {
    Object(path, host::Olight);
    Data(path).SetLong(host::LIGHT_TYPE, kind);
    Data(path).SetReal(host::LIGHT_BRIGHTNESS, brightness);
    return Data(path);
  }
  host::BaseContainer& Picture(const std::string& material, host::LONG link, const char* name) {
    host::BaseShader* shader = Bitmap(GetMaterial(material), name);
    Look(material).SetLink(link, shader);
    return *shader->GetDataInstance();
  }
  // A polygon object with that frame and a mesh of a triangle and a square.
  void Shape(const std::string& path, const Matrix& frame, bool isRich = false) {
    Object(path, host::Opolygon);
    GetObject(path)->SetMl(frame);
    engine::Mesh mesh;
    mesh.points = {{0, 0, 0}, {100, 0, 25}, {100, 200, 0}, {0, 150, 50}, {-50, 50, 10}};
    mesh.polygons = {{0, 3, 2, 1}, {0, 4, 3, -1}, {0, 1, 1, -1}, {0, 1, 7, -1}, {0, -2, 1, -1}};
    for (std::size_t i = 0; isRich && i < 20; ++i) {
      const auto part = static_cast<float>(i % 7) / 8;
      mesh.normals.push_back({part - 0.25F, 0.5F - part, i % 3 == 0 ? -1.0F : -0.5F});
      mesh.uvs.push_back({part, 1 - part * part});
      mesh.colors.push_back({part, 1, 2 * part, 1 - part});
    }
    if (isRich) mesh.normals[6] = {0, 0, 0};
    if (isRich) mesh.uvs[6] = {std::numeric_limits<float>::infinity(), 0};
    engine::SetMesh(*GetObject(path), std::make_shared<const engine::Mesh>(mesh));
  }

  void AddMaterials();
  void AddShapes();
  void AddCamerasAndLights();
  // The scene in three states, each with other things hidden, another camera and other materials.
  engine::PublishedScene Publish(const engine::PublishOptions& options);
  std::string Described(const std::string& json, const std::string& bytes) const;

  tests::ScriptedServices services_;
};

void KeptFiles::AddMaterials() {
  engine::AddEmbeddedFile(Doc(), "one.jpg", "\xFF\xD8\xFF and its end \xFF\xD9");
  engine::AddEmbeddedFile(Doc(), "two.x", "\x89PNG\r\n\x1a\n and its end IEND");
  for (const char* name : {"Full", "Cut", "Clear", "Plain"}) Material(name, Vector(0.5, 0.25, 1.5));
  host::BaseContainer& full = Look("Full");
  full.SetVector(host::MATERIAL_LUMINANCE, Vector(0.5, 3, 1));
  full.SetReal(host::MATERIAL_SPECULAR, 0.125);
  full.SetReal(host::MATERIAL_ROUGHNESS, 0.375);
  full.SetReal(host::MATERIAL_METALLIC, 0.625);
  full.SetReal(engine::kMaterialTransmission, 0.25);
  full.SetReal(engine::kMaterialNormalStrength, 2);
  full.SetReal(engine::kMaterialOcclusion, 0.5);
  engine::SetExtras(*GetMaterial("Full"), R"({"of":"a material"})");
  host::BaseContainer& color = Picture("Full", host::MATERIAL_COLOR_SHADER, "one.jpg");
  color.SetVector(engine::kBitmapOffset, Vector(0.25, 0.5, 0));
  color.SetVector(engine::kBitmapTiles, Vector(2, 3, 0));
  color.SetReal(engine::kBitmapRotation, 0.5);
  color.SetLong(engine::kBitmapWrapU, 1);
  color.SetLong(engine::kBitmapWrapV, 2);
  color.SetBool(engine::kBitmapIsSharp, host::TRUE);
  Picture("Full", host::MATERIAL_NORMAL_SHADER, "two.x");
  Picture("Full", host::MATERIAL_LUMINANCE_SHADER, "one.jpg").SetLong(engine::kBitmapWrapV, 1);
  for (const host::LONG link : {engine::kMaterialRoughnessShader, engine::kMaterialMetallicShader,
                                engine::kMaterialOcclusionShader})
    Picture("Full", link, "two.x");
  Look("Cut").SetLong(host::MATERIAL_ALPHA_MODE, 1);
  Look("Cut").SetReal(host::MATERIAL_ALPHA_CUTOFF, 0.75);
  Look("Cut").SetBool(host::MATERIAL_DOUBLE_SIDED, host::FALSE);
  Look("Cut").SetVector(host::MATERIAL_LUMINANCE, Vector(0.25, 0, 0.5));
  Look("Clear").SetLong(host::MATERIAL_ALPHA_MODE, 2);
  Look("Clear").SetReal(host::MATERIAL_ALPHA, 0.5);
  Picture("Clear", host::MATERIAL_COLOR_SHADER, "gone.png");
  Picture("Plain", host::MATERIAL_COLOR_SHADER, "two.x");
}

void KeptFiles::AddShapes() {
  const double c = 0.8;
  const double s = 0.6;
  Shape("Moved", {{100, 200, 300}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, true);
  Shape("Moved/Turned", {{0, 0, 0}, {c, s, 0}, {-s, c, 0}, {0, 0, 1}}, true);
  Shape("Long", {{0, 50, 0}, {20 * c, 0, 20 * s}, {0, 3, 0}, {-s, 0, c}});
  Shape("Long, half turned", {{}, {-20, 0, 0}, {0, -1, 0}, {0, 0, 1}});
  Shape("Long, turned over", {{}, {20, 0, 0}, {0, -c, s}, {0, -s, -c}});
  Shape("Long, around", {{}, {-10.5 * c, 0, s * 10.5}, {0, 1, 0}, {-s, 0, -c}});
  Shape("Long, mirrored", {{}, {0, 30, 0}, {40, 0, 0}, {0, 0, 2}});
  Shape("Leaning", {{1, 2, 3}, {1, 0, 0}, {0.5, 1, 0}, {0.25, -0.5, 2}});
  Shape("Leaning/Far", {{0, 0, 0}, {50, 0, 0}, {0, 5, 5}, {0, 0, 5}});
  Shape("Flat", {{0, 10, 0}, {1, 0, 0}, {0, 0, 0}, {0, 0, 1}});
  Shape("Nowhere", {{kNan, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
  Shape("Group/Hidden", Matrix());
  Texture("Moved", "Full").Texture("Moved/Turned", "Clear").Texture("Long", "Full");
  Texture("Leaning", "Plain").Texture("Flat", "Cut").Texture("Group/Hidden", "Plain");
  host::BaseContainer& tag = *GetTag("Moved", host::Ttexture)->GetDataInstance();
  tag.SetVector(host::TEXTURETAG_OFFSET, Vector(0.125, 0.25, 0));
  tag.SetVector(host::TEXTURETAG_TILES, Vector(4, kNan, 0));
  engine::SetExtras(*GetObject("Moved"), R"({"of":"a node"})");
  engine::SetExtras(*GetObject("Moved"), R"({"of":"a mesh"})", engine::kMeshExtras);
  engine::SetExtras(*GetObject("Long"), "no JSON");
  engine::SetExtras(Doc(), R"({"of":"the scene"})");
}

void KeptFiles::AddCamerasAndLights() {
  for (const char* name :
       {"Eye", "Eye/Tall", "Plan", "Endless", "Odd", "Flat/Seen", "Nowhere/Seen"})
    Camera(name);
  Data("Eye").SetReal(host::CAMERA_FOV, 1);
  Data("Eye").SetReal(host::CAMERA_NEAR, 50);
  Data("Eye").SetReal(host::CAMERA_FAR, 2000);
  Data("Eye/Tall").SetReal(host::CAMERA_FOV_VERTICAL, 0.5);
  Data("Eye/Tall").SetReal(host::CAMERA_FAR, 1);
  Data("Plan").SetLong(host::CAMERA_PROJECTION, 1);
  Data("Plan").SetReal(host::CAMERA_WIDTH, 640);
  Data("Plan").SetReal(host::CAMERA_NEAR, 10);
  Data("Plan").SetReal(host::CAMERA_FAR, 700);
  Data("Endless").SetLong(host::CAMERA_PROJECTION, 1);
  Data("Endless").SetReal(host::CAMERA_NEAR, 10);
  Data("Endless").RemoveData(host::CAMERA_WIDTH);
  for (const host::LONG key : {host::CAMERA_FOV, host::CAMERA_NEAR, host::CAMERA_FAR})
    Data("Odd").SetReal(key, kNan);
  At("Eye", 0, 100, -500);
  Light("Bulb", 0, 2).SetReal(engine::kLightUnit, 40);
  Data("Bulb").SetVector(host::LIGHT_COLOR, Vector(2, 0.5, -1));
  Data("Bulb").SetReal(host::LIGHT_RANGE, 250);
  Data("Bulb").SetReal(engine::kLightRadius, 12.5);
  Light("Weaker", 0, 1).SetReal(engine::kLightUnit, 8);
  Light("Bulb/Cone", 1, 0.5).SetReal(host::LIGHT_INNER_ANGLE, 0.5);
  Data("Bulb/Cone").SetReal(host::LIGHT_OUTER_ANGLE, 1.5);
  Light("Wide cone", 1, 1).SetReal(host::LIGHT_INNER_ANGLE, 9);
  Data("Wide cone").SetReal(host::LIGHT_OUTER_ANGLE, 9);
  Light("Cone as preset", 1, 1).RemoveData(host::LIGHT_INNER_ANGLE);
  Data("Cone as preset").RemoveData(host::LIGHT_OUTER_ANGLE);
  Light("Sun", 2, 3).SetReal(host::LIGHT_RANGE, 10);
  Data("Sun").SetReal(engine::kLightRadius, 10);
  Data("Sun").SetReal(engine::kLightUnit, 20000);
  Light("Second sun", 2, 0.5);
  Light("Window", 3, 1);
  Light("Sky", 4, 1);
  Layer("Walls").Layer("Props", {.render = host::FALSE}).Layer("Props/Small").Layer("Others");
  OnLayer("Long", "Walls").OnLayer("Flat", "Others");
}

engine::PublishedScene KeptFiles::Publish(const engine::PublishOptions& options) {
  engine::RenderCaches renderCaches;
  engine::PublishCaches caches;
  engine::Publication publication(Doc(), services_.Get().files, options, renderCaches, caches);
  LookThrough("Eye").Modes("Group/Hidden", 2, host::MODE_OFF).Modes("Bulb", 2, host::MODE_OFF);
  Modes("Bulb/Cone", 2, host::MODE_ON);
  EXPECT_TRUE(publication.AddState({"First", 3, "2026-01-02T03:04:05"}).Ok());
  if (options.asVariants) {
    Modes("Moved", 2, host::MODE_OFF).Modes("Moved/Turned", 2, host::MODE_ON).LookThrough("Plan");
    Modes("Bulb", 2, host::MODE_ON);
    static_cast<host::TextureTag*>(GetTag("Leaning", host::Ttexture))
        ->SetMaterial(GetMaterial("Full"));
    EXPECT_TRUE(publication.AddState({"Second", 4, ""}).Ok());
    LookThrough("").Settings("Small", 320, 200).Active("Small");
    Modes("Group/Hidden", 2, host::MODE_ON).Layer("Alone", {.solo = host::TRUE});
    OnLayer("Group/Hidden", "Alone");
    EXPECT_TRUE(publication.AddState({"", 0, ""}).Ok());
  }
  auto published = publication.Finish();
  EXPECT_TRUE(published.Ok()) << published.Message();
  return published.Take();
}

// Each entry of a list in a line, and behind them the numbers of each accessor.
std::string KeptFiles::Described(const std::string& json, const std::string& bytes) const {
  const Json file = Json::parse(json);
  std::string text;
  for (const auto& [key, value] : file.items()) {
    if (!value.is_array()) text += key + " " + value.dump() + "\n";
    for (std::size_t i = 0; value.is_array() && i < value.size(); ++i)
      text += key + " " + std::to_string(i) + " " + value[i].dump() + "\n";
  }
  for (const Json& accessor : file["accessors"]) {
    const Json& view = file["bufferViews"][accessor["bufferView"].get<std::size_t>()];
    const std::size_t begin =
        view["byteOffset"].get<std::size_t>() + accessor["byteOffset"].get<std::size_t>();
    const std::string type = accessor["type"];
    const std::size_t width = type == "SCALAR" ? 1 : static_cast<std::size_t>(type[3] - '0');
    text += type;
    for (std::size_t i = 0; i < accessor["count"].get<std::size_t>() * width; ++i) {
      float number = 0;
      std::uint16_t index = 0;
      if (accessor["componentType"] == 5126)
        std::memcpy(&number, &bytes.at(begin + i * sizeof number), sizeof number);
      else
        std::memcpy(&index, &bytes.at(begin + i * sizeof index), sizeof index);
      text += (i % width == 0 ? "\n  " : " ") + Json(number + static_cast<float>(index)).dump();
    }
    text += "\n";
  }
  return text;
}

TEST_F(KeptFiles, AreWhatTheyWere) {
  AddMaterials();
  AddShapes();
  AddCamerasAndLights();
  const std::string kept = TEST_SOURCE_DIR "/tests/publish/kept/";
  engine::PublishOptions options{.scene = "room", .omitHidden = true};
  const engine::PublishedScene binary = Publish(options);
  const std::size_t end = binary.bytes.find("BIN") - 4;
  tests::ExpectKept(Described(binary.bytes.substr(20, end - 20), binary.bytes.substr(end + 8)),
                    kept + "state.glb.txt");
  options = {.scene = "room", .omitHidden = false, .asVariants = true, .beside = "room All"};
  const engine::PublishedScene scene = Publish(options);
  std::string text = Described(scene.bytes, scene.beside.back().bytes);
  for (const engine::PublishedFile& file : scene.beside)
    text += "beside " + file.name + " " + std::to_string(file.bytes.size()) + "\n";
  for (const std::string& note : scene.notes) text += "note " + note + "\n";
  text += std::to_string(scene.objects) + " objects " + std::to_string(scene.triangles) +
          " triangles\n";
  // That of the numbers has every bit of them in it, those of the pictures are kept.
  text = std::regex_replace(text, std::regex("[0-9a-f]{16}.bin"), "(hash).bin");
  tests::ExpectKept(text, kept + "variants.gltf.txt");
}

}  // namespace
