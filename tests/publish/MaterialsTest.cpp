// Materials as files of glTF have them: every picture with its strength and as it lies, and two
// pictures become one where the format has one.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "engine/publish/GltfMaterials.h"
#include "engine/render/Image.h"
#include "engine/render/SceneScan.h"
#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/PictureParameters.h"
#include "host/Parameters.h"
#include "tests/support/SceneBuilder.h"
#include "tests/support/ScriptedServices.h"

namespace {

using host::Vector;
using nlohmann::json;

class PublishedMaterials : public testing::Test {
 protected:
  PublishedMaterials() { scene_.Cube("Box").Material("M", Vector(1)).Texture("Box", "M"); }

  host::BaseContainer& Data() { return *scene_.GetMaterial("M")->GetDataInstance(); }
  // A picture of one color behind a link; its shader.
  host::BaseContainer& Picture(host::LONG link, const char* name, std::array<int, 4> color) {
    engine::Image image{2, 2, {}, {}};
    for (int i = 0; i < 16; ++i) image.bytes.push_back(static_cast<std::uint8_t>(color[i % 4]));
    engine::AddEmbeddedFile(scene_.Doc(), name, engine::EncodePng(image).Take());
    host::BaseShader* shader = scene_.Bitmap(scene_.GetMaterial("M"), name);
    Data().SetLink(link, shader);
    return *shader->GetDataInstance();
  }
  // The material of the box; the pictures go into `buffer_`.
  json Published() {
    engine::SceneScan scan(scene_.Doc(), services_.Get().files, {}, caches_);
    while (!scan.Advance(100)) {
    }
    const engine::ScenePicture picture = scan.Take();
    engine::GltfMaterials materials(scene_.Doc(), services_.Get().files, picture, buffer_);
    const std::size_t index = materials.IndexOf(picture.instances.at(0));
    textures_ = json::parse(materials.Textures().dump());
    samplers_ = json::parse(materials.Samplers().dump());
    return json::parse(materials.Materials().at(index).dump());
  }
  // The first pixel of the picture that a use of a texture shows.
  std::string PixelOf(const json& use) {
    const std::size_t image = textures_[use["index"].get<std::size_t>()]["source"];
    const auto pixels = engine::DecodeImage(buffer_.Pictures().at(image));
    std::string text;
    for (std::size_t c = 0; c < 4; ++c) text += std::to_string(pixels.Value().bytes.at(c)) + " ";
    return text;
  }

  tests::SceneBuilder scene_;
  tests::ScriptedServices services_;
  engine::RenderCaches caches_;
  engine::GltfBuffer buffer_;
  json textures_;
  json samplers_;
};

TEST_F(PublishedMaterials, SayHowEachPictureLies) {
  host::BaseContainer& color = Picture(host::MATERIAL_COLOR_SHADER, "a.png", {1, 2, 3, 255});
  color.SetLong(engine::kBitmapWrapU, 1);
  color.SetLong(engine::kBitmapWrapV, 2);
  color.SetBool(engine::kBitmapIsSharp, host::TRUE);
  color.SetReal(engine::kBitmapRotation, 1.5707963267948966);
  color.SetVector(engine::kBitmapTiles, Vector(2, 3, 0));
  color.SetVector(engine::kBitmapOffset, Vector(0.5, 0.25, 0));
  Picture(host::MATERIAL_NORMAL_SHADER, "n.png", {128, 128, 255, 255});
  Picture(engine::kMaterialOcclusionShader, "o.png", {9, 9, 9, 255});
  Data().SetReal(engine::kMaterialNormalStrength, 0.5);
  Data().SetReal(engine::kMaterialOcclusion, 0.25);
  Data().SetReal(engine::kMaterialTransmission, 0.75);
  host::BaseContainer& tag = *scene_.GetTag("Box", host::Ttexture)->GetDataInstance();
  tag.SetVector(host::TEXTURETAG_OFFSET, Vector(0.125, 0, 0));
  tag.SetVector(host::TEXTURETAG_TILES, Vector(4, 1, 0));
  const json material = Published();
  const json& use = material["pbrMetallicRoughness"]["baseColorTexture"];
  const json& transform = use["extensions"]["KHR_texture_transform"];
  EXPECT_EQ(transform["scale"], json::array({8, 3}));
  // The tag's 0.125 is scaled by 2, then turned by a quarter: -u becomes v.
  EXPECT_NEAR(transform["offset"][0].get<double>(), 0.5, 1e-6);
  EXPECT_NEAR(transform["offset"][1].get<double>(), 0, 1e-6);
  EXPECT_EQ(samplers_, json::parse(R"([{"wrapS": 33071, "wrapT": 33648, "magFilter": 9728}])"));
  EXPECT_EQ(material["normalTexture"]["scale"], 0.5);
  EXPECT_EQ(material["occlusionTexture"]["strength"], 0.25);
  EXPECT_EQ(material["extensions"]["KHR_materials_transmission"]["transmissionFactor"], 0.75);
  tag.SetVector(host::TEXTURETAG_OFFSET, Vector(0));
  color.SetVector(engine::kBitmapOffset, Vector(0));
  buffer_ = {};
  const json unmoved = Published()["pbrMetallicRoughness"]["baseColorTexture"];
  EXPECT_FALSE(unmoved["extensions"]["KHR_texture_transform"].contains("offset"));
  EXPECT_FALSE(
      textures_[material["normalTexture"]["index"].get<std::size_t>()].contains("sampler"));
}

TEST_F(PublishedMaterials, JoinPicturesWhereTheFormatHasOne) {
  struct Row {
    const char* what;
    bool isBlended;
    double metallic;
    std::vector<std::pair<host::LONG, const char*>> pictures;
    const char* color;  // empty: no picture
    const char* rough;
  };
  const host::LONG kColor = host::MATERIAL_COLOR_SHADER;
  const host::LONG kOpacity = engine::kMaterialOpacityShader;
  const host::LONG kRough = engine::kMaterialRoughnessShader;
  const host::LONG kMetal = engine::kMaterialMetallicShader;
  // c.png is 10 20 30 204, g.png is 90 100 110 255.
  const Row rows[] = {
      {"opacity", true, 0, {{kColor, "c.png"}, {kOpacity, "g.png"}}, "10 20 30 80 ", ""},
      {"opacity alone", true, 0, {{kOpacity, "g.png"}}, "255 255 255 100 ", ""},
      {"opacity that is not meant",
       false,
       0,
       {{kColor, "c.png"}, {kOpacity, "g.png"}},
       "10 20 30 204 ",
       ""},
      {"both of one", false, 1, {{kRough, "c.png"}, {kMetal, "c.png"}}, "", "10 20 30 204 "},
      {"of two", false, 1, {{kRough, "c.png"}, {kMetal, "g.png"}}, "", "255 20 110 255 "},
      {"metal alone", false, 1, {{kMetal, "g.png"}}, "", "255 255 110 255 "},
      {"rough alone", false, 0.5, {{kRough, "g.png"}}, "", "255 100 255 255 "},
      {"no metal", false, 0, {{kRough, "c.png"}}, "", "10 20 30 204 "}};
  for (const Row& row : rows) {
    for (const host::LONG link : {kColor, kOpacity, kRough, kMetal}) Data().RemoveData(link);
    Data().SetLong(host::MATERIAL_ALPHA_MODE, row.isBlended ? 2 : 0);
    Data().SetReal(host::MATERIAL_METALLIC, row.metallic);
    engine::SetEmbeddedFiles(scene_.Doc(), {});
    for (const auto& [link, name] : row.pictures)
      Picture(link, name,
              *name == 'c' ? std::array{10, 20, 30, 204} : std::array{90, 100, 110, 255});
    buffer_ = {};
    const json surface = Published()["pbrMetallicRoughness"];
    const auto shown = [&](const char* key) {
      return surface.contains(key) ? PixelOf(surface[key]) : std::string();
    };
    EXPECT_EQ(shown("baseColorTexture"), row.color) << row.what;
    EXPECT_EQ(shown("metallicRoughnessTexture"), row.rough) << row.what;
  }
}

}  // namespace
