// Published scenes as files: whole or not at all, and nobody else's file is lost.
#include "program/publish/PublishedFiles.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "engine/render/Image.h"
#include "engine/scene/EmbeddedFiles.h"
#include "tests/support/SceneBuilder.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/ScriptedServices.h"

namespace {

using engine::Operation;
using tests::Names;
using tests::ReadText;
using tests::SceneBuilder;
using tests::WriteText;

class PublishedFilesTest : public testing::Test {
 protected:
  PublishedFilesTest() {
    engine::Image image;
    image.width = image.height = 2;
    image.bytes.assign(16, 255);
    for (const char* name : {"w\xC3\xB6 od.tif", "copy.tif"}) {
      engine::AddEmbeddedFile(scene_.Doc(), name, engine::EncodeTiff(image).Value());
      scene_.Cube(name).Material(name).Texture(name, name);
      host::BaseMaterial* material = scene_.GetMaterial(name);
      material->GetDataInstance()->SetLink(host::MATERIAL_COLOR_SHADER,
                                           scene_.Bitmap(material, name));
    }
  }

  engine::PublishedScene Publish() {
    engine::PublishOptions options;
    options.scene = "room";
    options.beside = "room Day";
    engine::PublishCaches caches;
    engine::Publication publication(scene_.Doc(), services_.files, options, renderCaches_, caches);
    EXPECT_TRUE(publication.AddState({}).Ok());
    auto published = publication.Finish();
    EXPECT_TRUE(published.Ok()) << published.Message();
    return published.Take();
  }

  engine::Status Write(bool force = false) {
    return publishing::WriteScene(services_.files, folder_ / "room Day.gltf", Publish(), force);
  }

  SceneBuilder scene_;
  tests::ScriptedServices services_;
  tests::ScratchFolder folder_;
  engine::RenderCaches renderCaches_;
};

// Files that the text refers to lie beside it, pictures named by their content (here one for two)
// and with the suffix of their format. Bytes of the former file go when the new one stands; files
// that only look like them stay.
TEST_F(PublishedFilesTest, TextWithFilesBesideIt) {
  WriteText(folder_ / "room Day.0123456789abcdef.bin", "somebody else's");
  const auto first = Publish().beside;
  ASSERT_EQ(first.size(), 2U);
  ASSERT_TRUE(Write().Ok());
  const std::string text = ReadText(folder_ / "room Day.gltf");
  const auto file = nlohmann::json::parse(text);
  EXPECT_TRUE(publishing::HasMark(text));
  EXPECT_FALSE(publishing::HasMark(text + " "));
  ASSERT_EQ(file["images"].size(), 2U);
  const std::string uri = file["images"][0]["uri"].get<std::string>();
  EXPECT_TRUE(uri.starts_with("w%C3%B6%20od.") && uri.ends_with(".png")) << uri;
  EXPECT_FALSE(file["images"][0].contains("bufferView"));
  EXPECT_TRUE(engine::DecodeImage(ReadText(folder_ / first[0].name)).Ok());
  EXPECT_EQ(file["buffers"][0]["byteLength"], ReadText(folder_ / first[1].name).size());
  scene_.Object("Ball", host::Osphere);
  const auto second = Publish().beside;
  ASSERT_TRUE(Write().Ok());
  EXPECT_EQ(Names(folder_.Path()),
            "room Day.0123456789abcdef.bin " + second[1].name + " room Day.gltf " + second[0].name);
  EXPECT_NE(first[1].name, second[1].name);
}

// A disk that is full from the first, second, ... file on leaves what was there before.
TEST_F(PublishedFilesTest, AllOfASceneIsWrittenOrNothing) {
  std::string names;
  std::string text = "(missing)";
  for (const bool replaces : {false, true}) {
    for (std::size_t file = 1; file <= (replaces ? 2 : 3); ++file) {
      services_.files.BreakFrom(file, Operation::ReplaceFile);
      EXPECT_FALSE(Write().Ok()) << file;
      services_.files.Mend();
      EXPECT_EQ(Names(folder_.Path()), names) << file;
      EXPECT_EQ(ReadText(folder_ / "room Day.gltf"), text) << file;
    }
    ASSERT_TRUE(Write().Ok());
    names = Names(folder_.Path());
    text = ReadText(folder_ / "room Day.gltf");
    scene_.Object("Ball", host::Osphere);
  }
}

// A picture that somebody has changed is his.
TEST_F(PublishedFilesTest, ChangedFilesBesideAreKeptUnlessForced) {
  ASSERT_TRUE(Write().Ok());
  const std::string picture = folder_ / Publish().beside[0].name;
  WriteText(picture, "painted over");
  const engine::Status refused = Write();
  EXPECT_NE(refused.Message().find("--force"), std::string::npos) << refused.Message();
  EXPECT_EQ(ReadText(picture), "painted over");
  EXPECT_TRUE(Write(true).Ok());
  EXPECT_NE(ReadText(picture), "painted over");
}

}  // namespace
