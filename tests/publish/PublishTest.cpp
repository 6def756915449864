// Published files hold the things that a picture shows, in forms that other programs can read.
#include "engine/publish/Publish.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <nlohmann/json.hpp>

#include "engine/render/Image.h"
#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/Extras.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/PictureParameters.h"
#include "host/Parameters.h"
#include "tests/support/SceneBuilder.h"
#include "tests/support/ScriptedServices.h"

namespace {

using nlohmann::json;
using tests::SceneBuilder;

std::uint32_t NumberAt(const std::string& bytes, std::size_t at) {
  std::uint32_t number = 0;
  std::memcpy(&number, bytes.data() + at, sizeof number);
  return number;
}

class PublishTest : public testing::Test {
 protected:
  // The scene as it stands is one more state of `publication`.
  static void Add(engine::Publication& publication, const std::string& name) {
    ASSERT_TRUE(publication.AddState({name, 7, "2026-03-05T14:07:09"}).Ok());
  }

  engine::PublishOptions Options() const {
    engine::PublishOptions options;
    options.scene = "room";
    return options;
  }

  json Publish(bool omitHidden = true) {
    engine::PublishOptions options = Options();
    options.omitHidden = omitHidden;
    engine::Publication publication(scene_.Doc(), services_.Get().files, options, renderCaches_,
                                    caches_);
    Add(publication, "Day");
    return Finished(publication);
  }

  // The JSON part of the file; the bytes behind it go into `bytes_`.
  json Finished(engine::Publication& publication) {
    auto published = publication.Finish();
    EXPECT_TRUE(published.Ok()) << published.Message();
    notes_ = published.Value().notes;
    file_ = published.Value().bytes;
    EXPECT_EQ(file_.substr(0, 4), "glTF");
    EXPECT_EQ(NumberAt(file_, 8), file_.size());
    const std::size_t length = NumberAt(file_, 12);
    EXPECT_EQ(length % 4, 0U);
    bytes_ = file_.size() > 28 + length ? file_.substr(28 + length) : "";
    return json::parse(file_.substr(20, length));
  }

  // Names of the nodes, each with "/" and the one above it; "!" marks one that is not visible.
  static std::string NodesOf(const json& file) {
    std::map<std::size_t, std::size_t> above;
    for (std::size_t i = 0; i < file.value("nodes", json::array()).size(); ++i) {
      for (const json& child : file["nodes"][i].value("children", json::array()))
        above[child.get<std::size_t>()] = i;
    }
    std::string text;
    for (std::size_t i = 0; i < file.value("nodes", json::array()).size(); ++i) {
      const json& node = file["nodes"][i];
      text += text.empty() ? "" : " ";
      if (above.contains(i)) text += file["nodes"][above[i]]["name"].get<std::string>() + "/";
      text += node["name"].get<std::string>() + (node.contains("mesh") ? "*" : "");
      if (node.contains("extensions") && node["extensions"].contains("KHR_node_visibility"))
        text += "!";
    }
    return text;
  }

  std::vector<float> FloatsOf(const json& file, const json& accessor) const {
    const json& one = file["accessors"][accessor.get<std::size_t>()];
    const json& view = file["bufferViews"][one["bufferView"].get<std::size_t>()];
    const std::size_t stride = view["byteStride"].get<std::size_t>();
    std::vector<float> numbers(one["count"].get<std::size_t>() * stride / sizeof(float));
    std::memcpy(numbers.data(),
                bytes_.data() + view["byteOffset"].get<std::size_t>() +
                    one["byteOffset"].get<std::size_t>(),
                numbers.size() * sizeof(float));
    return numbers;
  }

  SceneBuilder scene_;
  tests::ScriptedServices services_;
  engine::RenderCaches renderCaches_;
  engine::PublishCaches caches_;
  std::vector<std::string> notes_;
  std::string file_;
  std::string bytes_;
};

// Groups without anything in them are not there; what shows below something hidden keeps its place.
TEST_F(PublishTest, HiddenObjectsAreLeftOutOrMarked) {
  scene_.Cube("Room/Shown").Cube("Room/Off").Cube("Room/Off/Inside").Object("Empty");
  scene_.Modes("Room/Off", host::MODE_UNDEF, host::MODE_OFF);
  scene_.Modes("Room/Off/Inside", host::MODE_UNDEF, host::MODE_ON);
  scene_.Cube("Layered").Layer("Hidden", {.render = host::FALSE}).OnLayer("Layered", "Hidden");
  host::BaseContainer unseen;
  unseen.SetBool(host::COMPOSITINGTAG_SEENBYCAMERA, host::FALSE);
  scene_.Cube("Unseen").Tag("Unseen", host::Tcompositing, unseen);
  EXPECT_EQ(NodesOf(Publish()), "Room Room/Shown* Room/Off Off/Inside*");
  const json marked = Publish(false);
  EXPECT_EQ(NodesOf(marked), "Room Room/Shown* Room/Off Off/Off*! Off/Inside* Layered*! Unseen*!");
  EXPECT_EQ(marked["extensionsUsed"], json::array({"KHR_node_visibility"}));
}

// Metres, y up, z towards the viewer, corners turned round with the mirroring; the geometry of two
// objects stands in the file once, and materials come from the tags.
TEST_F(PublishTest, GeometryIsThereOnceWithItsMaterials) {
  engine::Mesh mesh;
  mesh.points = {{0, 0, 100}, {100, 0, 100}, {0, 100, 100}, {500, 0, 0}};
  mesh.polygons = {{0, 1, 2, -1}, {0, 1, 1, -1}, {0, 1, 9, -1}};
  const auto shared = std::make_shared<const engine::Mesh>(mesh);
  for (const char* name : {"A", "B", "C"}) {
    scene_.Object(name, host::Opolygon);
    engine::SetMesh(*scene_.Last(), shared);
  }
  scene_.Material("Red", host::Vector(1, 0, 0)).Texture("A", "Red").Texture("B", "Red");
  const json file = Publish();
  ASSERT_EQ(file["meshes"].size(), 2U) << "with the material, and without one";
  EXPECT_EQ(file["meshes"][0]["primitives"][0]["attributes"],
            file["meshes"][1]["primitives"][0]["attributes"]);
  EXPECT_EQ(file["nodes"][0]["mesh"], file["nodes"][1]["mesh"]);
  const json& material =
      file["materials"][file["meshes"][0]["primitives"][0]["material"].get<std::size_t>()];
  EXPECT_EQ(material["name"], "Red");
  EXPECT_EQ(material["pbrMetallicRoughness"]["baseColorFactor"], json::array({1, 0, 0, 1}));
  const json& primitive = file["meshes"][0]["primitives"][0];
  EXPECT_EQ(FloatsOf(file, primitive["attributes"]["POSITION"]),
            (std::vector<float>{0, 0, -1, 0, 1, -1, 1, 0, -1}));
  const json& accessor = file["accessors"][primitive["attributes"]["POSITION"].get<std::size_t>()];
  EXPECT_EQ(accessor["max"], json::array({1, 1, -1}));
  EXPECT_EQ(file["accessors"][primitive["indices"].get<std::size_t>()]["componentType"], 5123);
  host::BaseObject* last = scene_.Last();
  last->SetName("D");
  EXPECT_EQ(Publish()["nodes"][2]["name"], "D") << "what is kept for it is made anew";
  last->SetMl({{100, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
  EXPECT_EQ(Publish()["nodes"][2]["translation"], json::array({1, 0, 0}));
}

TEST_F(PublishTest, IndicesOfALargeMeshAreOf32Bits) {
  engine::Mesh mesh;
  for (std::int32_t i = 0; i < 70000; ++i) {
    mesh.points.push_back({static_cast<float>(i), static_cast<float>(i % 2), 0});
    if (i >= 2) mesh.polygons.push_back({i - 2, i - 1, i, -1});
  }
  scene_.Object("Large", host::Opolygon);
  engine::SetMesh(*scene_.Last(), std::make_shared<const engine::Mesh>(mesh));
  const json file = Publish();
  const json& indices = file["meshes"][0]["primitives"][0]["indices"];
  const json& accessor = file["accessors"][indices.get<std::size_t>()];
  EXPECT_EQ(accessor["componentType"], 5125);
  EXPECT_EQ(accessor["count"], 3 * 69998);
}

// The scene camera is the file's first; a frame, a light and what the file says of its state.
TEST_F(PublishTest, CamerasLightsAndFacts) {
  scene_.Camera("One").Camera("Two").LookThrough("Two").At("Two", 100, 200, 300);
  scene_.Object("Lamp", host::Olight);
  host::BaseContainer& lamp = *scene_.Last()->GetDataInstance();
  lamp.SetLong(host::LIGHT_TYPE, 1);
  lamp.SetReal(host::LIGHT_BRIGHTNESS, 3);
  lamp.SetReal(engine::kLightRadius, 25);
  scene_.Object("Sun", host::Olight);
  scene_.Last()->GetDataInstance()->SetLong(host::LIGHT_TYPE, 2);
  scene_.Last()->GetDataInstance()->SetReal(host::LIGHT_BRIGHTNESS, 2);
  scene_.Object("Ambient", host::Olight);
  scene_.Last()->GetDataInstance()->SetLong(host::LIGHT_TYPE, 4);
  const json file = Publish();
  EXPECT_EQ(file["cameras"][0]["name"], "Two");
  EXPECT_EQ(file["nodes"][1]["camera"], 0);
  EXPECT_EQ(file["nodes"][1]["translation"], json::array({1, 2, -3}));
  const json& light = file["extensions"]["KHR_lights_punctual"]["lights"];
  ASSERT_EQ(light.size(), 2U) << "the format has no ambient light";
  EXPECT_EQ(light[0]["type"], "spot");
  EXPECT_EQ(light[0]["extras"]["radius"], 0.25);
  EXPECT_EQ(light[0]["intensity"], 3.0);
  EXPECT_EQ(light[1]["intensity"], 2.0) << "no light has another unit";
  EXPECT_LT(light[0]["spot"]["innerConeAngle"], light[0]["spot"]["outerConeAngle"]);
  ASSERT_EQ(notes_.size(), 1U);
  EXPECT_NE(notes_[0].find("Ambient"), std::string::npos);
  EXPECT_EQ(file["scenes"][0]["name"], "Day");
  EXPECT_EQ(file["scenes"][0]["extras"]["renderSize"], json::array({1280, 720}));
}

// One file for all states: what differs is said of each, and what does not is there once.
TEST_F(PublishTest, StatesAreVariantsOfOneFile) {
  scene_.Cube("Group").Cube("Group/Box").Cube("Leaf").Cube("Never").Camera("One").Camera("Two");
  scene_.Object("Lamp", host::Olight).Layer("Props").Layer("Walls", {.render = host::FALSE});
  scene_.Material("Red").Material("Blue").Texture("Group/Box", "Red").Texture("Leaf", "Red");
  scene_.Modes("Never", host::MODE_UNDEF, host::MODE_OFF);
  engine::PublishOptions options = Options();
  options.asVariants = true;
  engine::Publication publication(scene_.Doc(), services_.Get().files, options, renderCaches_,
                                  caches_);
  scene_.LookThrough("Two");
  scene_.Modes("Group", host::MODE_UNDEF, host::MODE_OFF).Modes("Group/Box", 2, host::MODE_ON);
  Add(publication, "Day");
  scene_.LookThrough("One").Modes("Group", host::MODE_UNDEF, host::MODE_UNDEF);
  scene_.Modes("Leaf", host::MODE_UNDEF, host::MODE_OFF).Modes("Lamp", 2, host::MODE_OFF);
  static_cast<host::TextureTag*>(scene_.GetTag("Group/Box", host::Ttexture))
      ->SetMaterial(scene_.GetMaterial("Blue"));
  Add(publication, "Night");
  const json file = Finished(publication);
  EXPECT_EQ(NodesOf(file), "Group Group/Group*! Group/Box* Leaf* One Two Lamp");
  EXPECT_EQ(file["cameras"][0]["name"], "Two");
  EXPECT_EQ(file["extensions"]["KHR_materials_variants"],
            json::parse(R"({"variants": [{"name": "Day"}, {"name": "Night"}]})"));
  const auto primitiveOf = [&](std::size_t node) {
    return file["meshes"][file["nodes"][node]["mesh"].get<std::size_t>()]["primitives"][0];
  };
  const json box = primitiveOf(2);
  const std::size_t red = primitiveOf(3)["material"].get<std::size_t>();
  EXPECT_FALSE(primitiveOf(3).contains("extensions"));
  EXPECT_EQ(file["materials"][red]["name"], "Red");
  EXPECT_EQ(box["material"], red);
  const json mappings = box["extensions"]["KHR_materials_variants"]["mappings"];
  ASSERT_EQ(mappings.size(), 2U);
  EXPECT_EQ(mappings[0], (json{{"material", red}, {"variants", {0}}}));
  EXPECT_EQ(file["materials"][mappings[1]["material"].get<std::size_t>()]["name"], "Blue");
  EXPECT_EQ(box["attributes"], primitiveOf(1)["attributes"]) << "cubes are there once";
  EXPECT_EQ(file["extras"]["stagemarks"]["brightness"], json::array({1}));
  const json states = file["extras"]["stagemarks"]["states"];
  EXPECT_EQ(states[0], json::parse(R"({"name": "Day", "id": 7, "date": "2026-03-05T14:07:09",
    "variant": 0, "camera": 5, "hidden": [1], "size": [1280, 720], "layers": ["Props"]})"));
  EXPECT_EQ(states[1]["hidden"], json::array({3, 6}));
  EXPECT_EQ(states[1]["camera"], 4);
}

// Pictures of kinds that the format does not know become PNG; what cannot be read is named, and the
// rest of the file is whole.
TEST_F(PublishTest, TexturesAreEmbeddedOrNamed) {
  engine::Image image;
  image.width = image.height = 2;
  image.bytes.assign(16, 255);
  const std::string png = engine::EncodePng(image).Value();
  const struct {
    const char* name;
    std::optional<std::string> bytes;
    bool isKept;
  } kPictures[] = {
      {"wood.tif", engine::EncodeTiff(image).Value(), true},
      {"whole.png", png, true},
      {"cut.png", png.substr(0, png.size() - 20), false},
      {"cut.jpg", "\xFF\xD8\xFF\xE0 and no more", false},
      {"layers.psd", "8BPS of another program", false},
      {"nowhere.png", std::nullopt, false},
  };
  for (const auto& picture : kPictures) {
    if (picture.bytes) engine::AddEmbeddedFile(scene_.Doc(), picture.name, *picture.bytes);
    const std::string name = picture.name;
    scene_.Cube(name).Material(name).Texture(name, name);
    host::BaseMaterial* material = scene_.GetMaterial(name);
    material->GetDataInstance()->SetLink(host::MATERIAL_COLOR_SHADER,
                                         scene_.Bitmap(material, name));
  }
  const json file = Publish();
  ASSERT_EQ(file["images"].size(), 2U);
  std::string notes;
  for (const std::string& note : notes_) notes += note + "\n";
  EXPECT_EQ(notes_.size(), 4U) << notes;
  for (std::size_t i = 0; i < std::size(kPictures); ++i) {
    EXPECT_EQ(file["materials"][i]["pbrMetallicRoughness"].contains("baseColorTexture"),
              kPictures[i].isKept)
        << kPictures[i].name;
    EXPECT_EQ(notes.find(kPictures[i].name) == std::string::npos, kPictures[i].isKept) << notes;
  }
  for (const json& one : file["images"]) {
    const json& view = file["bufferViews"][one["bufferView"].get<std::size_t>()];
    const std::string picture =
        bytes_.substr(view["byteOffset"].get<std::size_t>(), view["byteLength"].get<std::size_t>());
    EXPECT_EQ(one["mimeType"], "image/png");
    EXPECT_TRUE(engine::DecodeImage(picture).Ok());
  }
}

// A chain of 100,000 objects, each inside the one before it, lists of an imported file likewise,
// and shaders that lead to themselves.
TEST_F(PublishTest, DeepScenesAndRingsOfLinksCome) {
  host::BaseObject* above = nullptr;
  constexpr std::size_t kDepth = 100000;
  for (std::size_t i = 0; i < kDepth; ++i) {
    host::BaseObject* object = host::BaseObject::Alloc(i + 1 < kDepth ? host::Onull : host::Ocube);
    scene_.Doc().AppendObject(object, above);
    above = object;
  }
  scene_.Cube("Box").Material("Ring").Texture("Box", "Ring");
  host::BaseMaterial* material = scene_.GetMaterial("Ring");
  host::BaseShader* outer = scene_.Bitmap(material, "nowhere.png");
  host::BaseShader* inner = scene_.Bitmap(material, "nowhere.png", outer);
  for (host::BaseShader* shader : {outer, inner})
    shader->GetDataInstance()->SetLink(host::MATERIAL_COLOR_SHADER, outer);
  material->GetDataInstance()->SetLink(host::MATERIAL_COLOR_SHADER, outer);
  material->GetDataInstance()->SetLink(host::MATERIAL_LUMINANCE_SHADER, material);
  const std::string nested = std::string(kDepth, '[') + std::string(kDepth, ']');
  engine::SetExtras(*material, R"({"kept": 1, "nested": )" + nested + "}");
  const json file = Publish();
  ASSERT_EQ(file["nodes"].size(), kDepth + 1);
  EXPECT_EQ(file["materials"][1]["extras"]["kept"], 1);
  EXPECT_TRUE(file["nodes"][kDepth - 1].contains("mesh"));
  EXPECT_EQ(file["nodes"][kDepth - 2]["children"], json::array({kDepth - 1}));
}

// Publications that are stopped or too large give a reason and no file.
TEST_F(PublishTest, AFileTooLargeAndOneStoppedAreRefused) {
  for (int i = 0; i < 10000; ++i) scene_.Cube("Cube" + std::to_string(i));
  for (const char* beside : {"", "room"}) {
    engine::PublishOptions options = Options();
    options.beside = beside;
    options.largest = 1000;
    engine::Publication publication(scene_.Doc(), services_.Get().files, options, renderCaches_,
                                    caches_);
    Add(publication, "Day");
    EXPECT_NE(publication.Finish().Message().find("4 GiB"), std::string::npos) << beside;
  }
  engine::Publication publication(scene_.Doc(), services_.Get().files, Options(), renderCaches_,
                                  caches_);
  std::vector<double> told;
  const auto stop = [&](double fraction) {
    told.push_back(fraction);
    return false;
  };
  EXPECT_FALSE(publication.AddState({}, stop).Ok());
  EXPECT_NE(publication.Finish().Message().find("no state"), std::string::npos);
  Add(publication, "Day");
  EXPECT_FALSE(publication.Finish(stop).Ok());
  ASSERT_EQ(told.size(), 2U);
  EXPECT_EQ(told[0], 0) << "the scan is not counted";
  EXPECT_NEAR(told[1], 0.1, 0.001) << "each thousand of the objects";
}

// Numbers that are none, names that are no text, chains that are deep: a file that can be read.
TEST_F(PublishTest, OddScenesGiveFilesAllTheSame) {
  EXPECT_FALSE(Publish().contains("nodes")) << "an empty list is not allowed";
  std::string path = "Deep";
  for (int i = 0; i < 300; ++i) path += "/x";
  scene_.Cube(path);
  scene_.Last()->SetName(host::String("\xff\"<"));
  scene_.Object("Broken");
  host::Matrix frame;
  frame.off.x = std::numeric_limits<double>::quiet_NaN();
  scene_.Last()->SetMl(frame);
  scene_.Camera("Broken/Eye");
  scene_.Last()->GetDataInstance()->SetReal(host::CAMERA_FOV,
                                            std::numeric_limits<double>::infinity());
  const json file = Publish();
  EXPECT_EQ(file.dump().find("null"), std::string::npos);
  EXPECT_EQ(notes_.size(), 1U);
}

}  // namespace
