// Files published from any scene of the repository, in every form, pass the format's own validator.
// It is fetched when the build is configured.
#include <gtest/gtest.h>

#include <filesystem>
#include <limits>

#include "engine/import/Import.h"
#include "engine/render/Image.h"
#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/PictureParameters.h"
#include "engine/scene/TreeWalk.h"
#include "host/Parameters.h"
#include "program/publish/PublishedFiles.h"
#include "tests/support/ChildProgram.h"
#include "tests/support/SceneBuilder.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/ScriptedServices.h"

namespace {

namespace fs = std::filesystem;
using engine::Publication;
using host::BaseObject;

constexpr int kStates = 3;

// State 0 is the scene as it came; the second hides every other object and has one material for
// all, the third has no camera and hides what stands first.
void BringInto(host::BaseDocument& doc, int state) {
  if (state == 0) return;
  int number = 0;
  for (BaseObject* object = doc.GetFirstObject(); object; object = engine::NextInTree(object)) {
    const bool hides = state == 1 ? ++number % 2 == 0 : object == doc.GetFirstObject();
    object->SetRenderMode(hides ? host::MODE_OFF : host::MODE_UNDEF);
    for (host::BaseTag* tag = object->GetFirstTag(); tag; tag = tag->GetNext()) {
      if (tag->GetType() == host::Ttexture && state == 1)
        static_cast<host::TextureTag*>(tag)->SetMaterial(doc.GetFirstMaterial());
    }
  }
  if (state == 2) doc.GetRenderBaseDraw()->SetSceneCamera(nullptr, host::FALSE);
}

class ValidatorTest : public testing::Test {
 protected:
  void Finish(Publication& publication, const std::string& name) {
    auto published = publication.Finish();
    ASSERT_TRUE(published.Ok()) << name << published.Message();
    const std::string path = folder_ / name;
    ASSERT_TRUE(publishing::WriteScene(services_.files, path, published.Take(), false).Ok());
    paths_.push_back(path);
  }

  // Both forms, what is hidden left out and marked, a state a file and all in one.
  void PublishAll(host::BaseDocument& doc, const std::string& name) {
    engine::PublishCaches caches;
    const auto begin = [&](bool omits, bool variants, const std::string& beside) {
      return std::make_unique<Publication>(doc, services_.files,
                                           engine::PublishOptions{name, omits, variants, beside},
                                           renderCaches_, caches);
    };
    const auto binary = begin(true, true, "");
    const auto text = begin(false, true, name);
    for (int state = 0; state < kStates; ++state) {
      BringInto(doc, state);
      const std::string named = name + std::to_string(state);
      const engine::StateFacts facts{named, state, ""};
      const auto omitting = begin(true, false, "");
      const auto marking = begin(false, false, named);
      for (Publication* one : {binary.get(), text.get(), omitting.get(), marking.get()})
        ASSERT_TRUE(one->AddState(facts).Ok());
      Finish(*omitting, named + ".glb");
      Finish(*marking, named + ".gltf");
    }
    Finish(*binary, name + ".glb");
    Finish(*text, name + ".gltf");
  }

  void ExpectValid() const {
    if (std::string(VALIDATOR_PACKAGES).empty())
      GTEST_SKIP() << "The validator could not be fetched when the build was configured.";
    std::vector<std::string> arguments = {TEST_SOURCE_DIR "/tests/publish/validate.js",
                                          VALIDATOR_PACKAGES "/node_modules"};
    arguments.insert(arguments.end(), paths_.begin(), paths_.end());
    const tests::ChildResult result = tests::RunChild(NODE_PROGRAM, arguments);
    EXPECT_EQ(result.status, 0) << result.out << result.err;
    EXPECT_EQ(result.out, std::to_string(paths_.size()) + " files, 0 errors and warnings\n");
  }

  tests::ScriptedServices services_;
  tests::ScratchFolder folder_;
  engine::RenderCaches renderCaches_;
  std::vector<std::string> paths_;
};

TEST_F(ValidatorTest, FindsNothingInWhatIsPublishedOfScenes) {
  std::vector<std::string> scenes;
  for (const char* folder : {TEST_SOURCE_DIR "/scenes", TEST_SOURCE_DIR "/tests/scenes"}) {
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
      if (engine::IsImportable(entry.path())) scenes.push_back(entry.path());
    }
  }
  ASSERT_GT(scenes.size(), 8U);
  for (const std::string& scene : scenes) {
    auto imported = engine::ImportScene(services_.Get(), scene, TEST_BINARY_DIR "/bin/stagemarks");
    ASSERT_TRUE(imported.Ok()) << imported.Message();
    PublishAll(*imported.Value().document, fs::path(scene).filename());
  }
  ExpectValid();
}

// Numbers that are none, frames that lean or are flat, names that are no text.
TEST_F(ValidatorTest, FindsNothingInWhatIsPublishedOfOddScenes) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double endless = std::numeric_limits<double>::infinity();
  tests::SceneBuilder scene;
  const auto framed = [&](const std::string& path, const host::Matrix& frame) {
    scene.Cube(path);
    scene.Last()->SetMl(frame);
  };
  framed("\xff\"<\x01", {{nan, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
  framed("Leans", {{1, 2, 3}, {1, 0, 0}, {0.7, 1, 0}, {0.2, -0.4, 3}});
  framed("Leans/Child", {{1, 2, 3}, {0.001, 0, 0}, {7, 1, 0}, {0, 0, -1e4}});
  framed("Flat", {{1, 2, 3}, {1, 0, 0}, {0, 0, 0}, {0, 0, 1}});
  framed("Far", {{1e300, 1e-300, -1e30}, {1e5, 0, 0}, {0, 1e5, 0}, {0, 0, 1e5}});
  for (const char* path : {"Flat/Eye", "Far/Eye", "Eye"}) {
    scene.Camera(path);
    for (const host::LONG number : {host::CAMERA_FOV, host::CAMERA_NEAR, host::CAMERA_FAR})
      scene.Last()->GetDataInstance()->SetReal(number, *path == 'E' ? endless : nan);
  }
  scene.LookThrough("Eye");
  engine::AddEmbeddedFile(scene.Doc(), "dot.png",
                          engine::EncodePng({1, 1, {255, 255, 255, 255}, {}}).Value());
  for (const double number : {nan, endless, -1.0, 1e300}) {
    const std::string name = std::to_string(number);
    scene.Object(name, host::Olight);
    host::BaseContainer& light = *scene.Last()->GetDataInstance();
    light.SetLong(host::LIGHT_TYPE, 1);
    light.SetVector(host::LIGHT_COLOR, host::Vector(number));
    for (const host::LONG parameter : {host::LIGHT_BRIGHTNESS, host::LIGHT_RANGE,
                                       host::LIGHT_OUTER_ANGLE, host::LIGHT_INNER_ANGLE})
      light.SetReal(parameter, number);
    scene.Cube("Cube" + name).Material(name, host::Vector(number)).Texture("Cube" + name, name);
    host::BaseContainer& surface = *scene.GetMaterial(name)->GetDataInstance();
    for (const host::LONG parameter :
         {host::MATERIAL_ALPHA, host::MATERIAL_ALPHA_CUTOFF, host::MATERIAL_SPECULAR,
          host::MATERIAL_ROUGHNESS, host::MATERIAL_METALLIC})
      surface.SetReal(parameter, number);
    surface.SetVector(host::MATERIAL_LUMINANCE, host::Vector(number));
    surface.SetLong(host::MATERIAL_ALPHA_MODE, 1);
    surface.SetReal(engine::kMaterialOcclusion, number);
    surface.SetReal(engine::kMaterialNormalStrength, number);
    host::BaseShader* bitmap = scene.Bitmap(scene.GetMaterial(name), "dot.png");
    for (const host::LONG link : {host::MATERIAL_COLOR_SHADER, host::MATERIAL_NORMAL_SHADER,
                                  engine::kMaterialOcclusionShader})
      surface.SetLink(link, bitmap);
    for (const host::LONG parameter : {engine::kBitmapOffset, engine::kBitmapTiles})
      bitmap->GetDataInstance()->SetVector(parameter, host::Vector(number));
    bitmap->GetDataInstance()->SetReal(engine::kBitmapRotation, number);
    host::BaseContainer& tag = *scene.GetTag("Cube" + name, host::Ttexture)->GetDataInstance();
    tag.SetVector(host::TEXTURETAG_TILES, host::Vector(number));
    tag.SetVector(host::TEXTURETAG_OFFSET, host::Vector(number));
  }
  engine::Mesh mesh;
  const auto bad = static_cast<float>(nan);
  mesh.points = {{0, 0, 0}, {100, 0, 0}, {0, 100, 0}, {bad, 0, 0}, {3e38F, 3e38F, 0}};
  mesh.polygons = {{0, 1, 2, -1}, {0, 1, 3, -1}, {0, 1, 4, 2}, {1, 1, 1, 1}};
  mesh.normals.assign(16, {0, 0, 0});
  mesh.normals[0] = {bad, 1, 0};
  mesh.uvs.assign(16, {bad, 1e38F});
  scene.Object("Mesh", host::Opolygon);
  engine::SetMesh(*scene.Last(), std::make_shared<const engine::Mesh>(mesh));
  PublishAll(scene.Doc(), "odd");
  PublishAll(tests::SceneBuilder().Doc(), "empty");
  ExpectValid();
}

}  // namespace
