// Scenes that others made, against what is known of them.
#include <algorithm>
#include <cmath>
#include <filesystem>

#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/ShaderWalk.h"
#include "tests/import/ImportSession.h"

namespace tests {
namespace {

using SampleScenes = ImportSession;

bool AllExist(const std::vector<std::string>& files) {
  return std::all_of(files.begin(), files.end(), [](const std::string& file) {
    return std::filesystem::is_regular_file(file);
  });
}

TEST_F(SampleScenes, TheDungeonIsWhole) {
  Open(SceneFile("scenes/dungeon/dungeon.gltf"));
  const engine::SceneCounts counts = Counts();
  // 37 nodes; 16 of them have meshes of several materials, 48 parts in all.
  EXPECT_EQ(counts.objects, 37U + 48U);
  EXPECT_EQ(OfType(host::Opolygon).size(), 57U);
  EXPECT_EQ(counts.polygons, 32397U);
  EXPECT_EQ(counts.cameras, 0U);
  EXPECT_EQ(counts.lights, 4U) << "two suns and two bulbs, each pair of one light in the file";
  EXPECT_EQ(counts.materials, 11U);
  EXPECT_EQ(TextureFiles().size(), 20U);
  EXPECT_TRUE(AllExist(TextureFiles()));
  EXPECT_EQ(Doc().GetDocumentName().GetString().ToUtf8(), "dungeon.c4d");
  EXPECT_EQ(Doc().GetDocumentPath().GetString().ToUtf8(), SceneFile("scenes/dungeon"));
  EXPECT_EQ(Doc().GetActiveRenderData()->GetName().ToUtf8(), "My Render Setting");
  EXPECT_FALSE(Doc().GetChanged());
}

TEST_F(SampleScenes, TheDungeonStandsOnItsFloorInCentimetres) {
  Open(SceneFile("scenes/dungeon/dungeon.gltf"));
  // The file's places are in metres: the floor's upper side at y 0 under walls of 4 m and stairs,
  // all on a rock of 15 m.
  const Box rock = WorldBox();
  EXPECT_NEAR(rock.low[1], -1488.1, 0.1);
  EXPECT_NEAR(rock.high[1], 461.3, 0.5);
  const Box wall = WorldBox(Only("caslte-wall-w-torch-2.001 (wall-1)"));
  EXPECT_NEAR(wall.low[0], -2850, 0.5);
  EXPECT_NEAR(wall.high[0], -1650, 0.5);
  EXPECT_NEAR(wall.low[1], 4.2, 0.5);
  EXPECT_NEAR(wall.high[1], 404.1, 0.5);
  // In the file from 2.227 to 2.836.
  EXPECT_NEAR(wall.low[2], -283.6, 0.5);
  EXPECT_NEAR(wall.high[2], -222.7, 0.5);
  const host::BaseObject* bulb = Only("Point");
  ASSERT_NE(bulb, nullptr);
  EXPECT_NEAR(bulb->GetMg().off.x, 2072.74, 0.01);
  EXPECT_NEAR(bulb->GetMg().off.y, 146.14, 0.01);
  EXPECT_NEAR(bulb->GetMg().off.z, -254.74, 0.01);
}

TEST_F(SampleScenes, TheDungeonsSunsShineDownAndItsBulbsKeepTheirRange) {
  Open(SceneFile("scenes/dungeon/dungeon.gltf"));
  for (const host::BaseObject* light : OfType(host::Olight)) {
    const host::BaseContainer& data = *light->GetDataInstance();
    const bool isSun = data.GetLong(host::LIGHT_TYPE) == 2;
    if (isSun) {
      EXPECT_LT(light->GetMg().v3.y, -0.5) << light->GetName().ToUtf8();
    }
    EXPECT_NEAR(data.GetReal(host::LIGHT_BRIGHTNESS), isSun ? 0.8 : 1, 1e-6);
    EXPECT_NEAR(data.GetReal(host::LIGHT_RANGE), isSun ? 0 : 400, 1e-3);
    EXPECT_NEAR(data.GetVector(host::LIGHT_COLOR).z, isSun ? 1 : 0.02936, 1e-4);
  }
}

TEST_F(SampleScenes, NormalsAndCornersFaceTheSameWay) {
  for (const char* scene :
       {"scenes/dungeon/dungeon.gltf", "scenes/spider/spider.fbx", "scenes/spider/spider.obj",
        "tests/scenes/collada/COLLADA.dae", "tests/scenes/draco/suzi.glb"}) {
    Open(SceneFile(scene));
    ASSERT_FALSE(OfType(host::Opolygon).empty()) << scene;
    for (const host::BaseObject* object : OfType(host::Opolygon)) {
      const engine::Mesh& mesh = *engine::MeshOf(*object);
      ASSERT_EQ(mesh.normals.size(), 4 * mesh.polygons.size());
      EXPECT_GT(FacingShare(mesh), 0.9) << scene << " " << object->GetName().ToUtf8();
    }
  }
}

TEST_F(SampleScenes, TheSpidersTexturesAreFoundByName) {
  Open(SceneFile("scenes/spider/spider.fbx"));
  EXPECT_EQ(OfType(host::Opolygon).size(), 19U);
  EXPECT_EQ(Counts().cameras, 1U);
  EXPECT_EQ(Counts().lights, 1U);
  EXPECT_EQ(Counts().polygons, 1368U);
  EXPECT_EQ(TextureFiles().size(), 4U);
  EXPECT_TRUE(AllExist(TextureFiles()));
  Open(SceneFile("scenes/spider/spider.obj"));
  EXPECT_EQ(OfType(host::Opolygon).size(), 19U);
  EXPECT_EQ(Counts().polygons, 1368U);
  EXPECT_EQ(Counts().cameras, 0U);
  EXPECT_EQ(TextureFiles().size(), 5U);
  EXPECT_TRUE(AllExist(TextureFiles()));
}

TEST_F(SampleScenes, TheSpidersCameraLooksAtIt) {
  Open(SceneFile("scenes/spider/spider.fbx"));
  const host::BaseObject* camera = Only("Camera");
  ASSERT_NE(camera, nullptr);
  const Box box = WorldBox();
  const host::Matrix frame = camera->GetMg();
  const host::Vector middle((box.low[0] + box.high[0]) / 2, (box.low[1] + box.high[1]) / 2,
                            (box.low[2] + box.high[2]) / 2);
  const host::Vector toMiddle = Minus(middle, frame.off);
  EXPECT_GT(Dot(frame.v3, toMiddle) / std::sqrt(Dot(toMiddle, toMiddle)), 0.9);
  EXPECT_GT(frame.v2.y, 0.5) << "upright";
  EXPECT_NEAR(Dot(Cross(frame.v2, frame.v3), frame.v1), 1, 1e-3)
      << "not mirrored, axes of length 1";
  EXPECT_EQ(Doc().GetRenderBaseDraw()->GetSceneCamera(&Doc()), camera);
}

TEST_F(SampleScenes, BothSpidersAreTheSameWayRound) {
  Open(SceneFile("scenes/spider/spider.obj"));
  const host::BaseObject* left = Only("Bein1Li");
  const host::BaseObject* right = Only("Bein1Re");
  ASSERT_TRUE(left != nullptr && right != nullptr);
  const double objSide = engine::MeshOf(*left)->points[0][0] - engine::MeshOf(*right)->points[0][0];
  Open(SceneFile("scenes/spider/spider.fbx"));
  left = Only("Bein1Li");
  right = Only("Bein1Re");
  ASSERT_TRUE(left != nullptr && right != nullptr);
  const double fbxSide = InWorld(left->GetMg(), engine::MeshOf(*left)->points[0][0], 0, 0).x -
                         InWorld(right->GetMg(), engine::MeshOf(*right)->points[0][0], 0, 0).x;
  EXPECT_GT(objSide * fbxSide, 0);
}

TEST_F(SampleScenes, CamerasOfColladaHaveTheirAngles) {
  Open(SceneFile("tests/scenes/collada/cameras.dae"));
  EXPECT_EQ(Counts().objects, 3U) << "the library's own skeleton mesh is none of the file's";
  const double degree = std::acos(-1.0) / 180;
  EXPECT_NEAR(Only("Camera")->GetDataInstance()->GetReal(host::CAMERA_FOV), 49.13434 * degree,
              1e-5);
  EXPECT_NEAR(Only("Camera_003")->GetDataInstance()->GetReal(host::CAMERA_FOV), 29.86284 * degree,
              1e-5);
  EXPECT_NEAR(Only("Camera_003")->GetDataInstance()->GetReal(host::CAMERA_FAR), 5000, 1e-2);
  const host::BaseContainer parallel = Only("Camera_002")->GetData();
  EXPECT_EQ(parallel.GetLong(host::CAMERA_PROJECTION), 1);
  EXPECT_NEAR(parallel.GetReal(host::CAMERA_WIDTH), 600, 1e-6);
  // Z up in the file: the first camera sits on +x and looks along -x, the third above... along the
  // file's -y.
  const host::Matrix first = Only("Camera")->GetMg();
  EXPECT_NEAR(first.off.x, 1000, 1e-3);
  EXPECT_NEAR(first.v3.x, -1, 1e-5);
}

TEST_F(SampleScenes, LightsOfColladaKeepTheirKinds) {
  Open(SceneFile("tests/scenes/collada/lights.dae"));
  const std::vector<std::pair<const char*, host::LONG>> kinds = {
      {"Lamp", 0}, {"Sun", 2}, {"Spot", 1}, {"Hemi", 4}, {"Area", 0}};
  for (const auto& [name, kind] : kinds) {
    const host::BaseObject* light = Only(name);
    ASSERT_NE(light, nullptr);
    EXPECT_EQ(light->GetDataInstance()->GetLong(host::LIGHT_TYPE), kind) << name;
    EXPECT_NEAR(light->GetDataInstance()->GetReal(host::LIGHT_BRIGHTNESS), 1, 1e-6) << name;
  }
  EXPECT_NEAR(Only("Spot")->GetDataInstance()->GetReal(host::LIGHT_OUTER_ANGLE),
              std::acos(-1.0) / 4, 1e-5);
  EXPECT_NEAR(Only("Sun")->GetMg().v3.y, -1, 1e-5) << "Z up in the file: shining down";
  EXPECT_NEAR(Only("Sun")->GetMg().off.y, 514.722, 1e-2);
}

TEST_F(SampleScenes, CentimetresOfColladaStayCentimetres) {
  Open(SceneFile("tests/scenes/collada/COLLADA.dae"));
  EXPECT_EQ(Counts().polygons, 6722U);
  EXPECT_EQ(Counts().cameras, 2U);
  EXPECT_EQ(Counts().lights, 2U);
  for (host::BaseObject* top = Doc().GetFirstObject(); top != nullptr; top = top->GetNext()) {
    const host::Vector axis = top->GetMl().v1;
    EXPECT_GT(Dot(axis, axis), 0.01)
        << "the file's unit is in the lengths, not in the frames: " << top->GetName().ToUtf8();
  }
}

TEST_F(SampleScenes, CamerasOfGltfAreRight) {
  Open(SceneFile("tests/scenes/gltf/Cameras.gltf"));
  ASSERT_EQ(OfType(host::Ocamera).size(), 2U);
  const host::BaseContainer perspective = OfType(host::Ocamera)[0]->GetData();
  EXPECT_EQ(perspective.GetLong(host::CAMERA_PROJECTION), 0);
  EXPECT_NEAR(perspective.GetReal(host::CAMERA_FOV), 0.7, 1e-6);
  EXPECT_NEAR(perspective.GetReal(host::CAMERA_FOV_VERTICAL), 0.7, 1e-6);
  EXPECT_NEAR(perspective.GetReal(host::CAMERA_NEAR), 1, 1e-6);
  const host::BaseContainer parallel = OfType(host::Ocamera)[1]->GetData();
  EXPECT_EQ(parallel.GetLong(host::CAMERA_PROJECTION), 1);
  EXPECT_NEAR(parallel.GetReal(host::CAMERA_WIDTH), 200, 1e-6);
  EXPECT_NEAR(parallel.GetReal(host::CAMERA_FAR), 10000, 1e-6);
  EXPECT_EQ(OfType(host::Ocamera)[0]->GetName().ToUtf8(), "Camera")
      << "a node without a name is named after its kind";
  EXPECT_NEAR(OfType(host::Ocamera)[0]->GetMg().off.x, 50, 1e-4)
      << "the library adds the place twice";
}

TEST_F(SampleScenes, UnitsOfFbxCount) {
  Open(SceneFile("tests/scenes/fbx/global_settings.fbx"));
  // Half a cube of 2 units, a unit of 500 cm.
  const host::BaseObject* cube = Only("Cube");
  ASSERT_NE(cube, nullptr);
  EXPECT_NEAR(std::abs(engine::MeshOf(*cube)->points[0][0]), 500, 1e-2);
  EXPECT_EQ(Counts().cameras, 2U);
  EXPECT_EQ(Counts().lights, 2U);
  const host::Matrix camera = Only("Camera")->GetMg();
  const double distance = std::sqrt(Dot(camera.off, camera.off));
  EXPECT_LT(Dot(camera.v3, camera.off) / distance, -0.99) << "looks at the origin";
}

TEST_F(SampleScenes, PivotsBecomePartOfTheirFrames) {
  Open(SceneFile("tests/scenes/fbx/cubes_with_mirroring_and_pivot.fbx"));
  EXPECT_EQ(Counts().objects, 4U);
  EXPECT_EQ(Named("Cube1").size(), 2U) << "equal names stay equal";
  const host::BaseObject* mirrored = Only("Cube2");
  ASSERT_NE(mirrored, nullptr);
  const host::Matrix frame = mirrored->GetMl();
  EXPECT_LT(Dot(Cross(frame.v1, frame.v2), frame.v3), 0);
  EXPECT_NEAR(frame.off.x, -1.04024, 1e-4);
  const host::Matrix pivoted = Only("Cube3")->GetDown()->GetMl();
  // translation + rotation pivot (canceled) + scaling offset + pivot - scale * pivot
  EXPECT_NEAR(pivoted.off.x, 100 * (1.04024 + 0.168946 - 0.747049 + 0.773848 * 0.747049), 1e-2);
}

TEST_F(SampleScenes, TexturesInsideABinaryFileComeAlong) {
  Open(SceneFile("tests/scenes/controller/generic-trigger-squeeze-left.glb"));
  EXPECT_EQ(Counts().objects, 15U);
  EXPECT_EQ(Counts().polygons, 4473U);
  EXPECT_EQ(engine::EmbeddedFilesOf(Doc()).size(), 3U);
  for (const std::string& file : TextureFiles()) {
    const std::string* bytes = engine::FindEmbeddedFile(Doc(), file);
    ASSERT_NE(bytes, nullptr) << file;
    EXPECT_EQ(bytes->substr(0, 3), "\xFF\xD8\xFF") << file;
  }
  EXPECT_EQ(TextureFiles().size(), 3U) << "that of roughness and metal, too";
}

TEST_F(SampleScenes, DracoIsUnpacked) {
  Open(SceneFile("tests/scenes/draco/suzi.glb"));
  EXPECT_EQ(Counts().polygons, 14842U);
}

TEST_F(SampleScenes, TheLevelHasItsCameraAndNamesWhatIsMissing) {
  const std::string level = ExtraScene("level/example_level.gltf");
  if (level.empty())
    GTEST_SKIP()
        << "level/example_level.gltf is missing (STAGEMARKS_EXTRA_SCENES names its folder)";
  Open(level);
  EXPECT_EQ(Counts().polygons, 2908U);
  EXPECT_EQ(Counts().cameras, 1U);
  EXPECT_EQ(Counts().lights, 6U);
  EXPECT_EQ(Counts().materials, 6U);
  EXPECT_NEAR(OfType(host::Ocamera)[0]->GetDataInstance()->GetReal(host::CAMERA_FOV), 0.857556,
              1e-5);
  EXPECT_TRUE(HasNote("concrete-normalmap.png\" was not found"));
}

TEST_F(SampleScenes, InstancesShareTheirMesh) {
  const std::string engineModel =
      PackagedModel("glTF2/2CylinderEngine-glTF-Binary/2CylinderEngine.glb");
  if (engineModel.empty()) GTEST_SKIP() << "the Debian package assimp-testmodels is missing";
  Open(engineModel);
  EXPECT_EQ(Counts().polygons, 121496U);
  std::vector<const engine::Mesh*> meshes;
  std::size_t triangles = 0;
  for (const host::BaseObject* object : OfType(host::Opolygon)) {
    const engine::Mesh* mesh = engine::MeshOf(*object).get();
    if (std::find(meshes.begin(), meshes.end(), mesh) != meshes.end()) continue;
    meshes.push_back(mesh);
    triangles += mesh->polygons.size();
  }
  EXPECT_EQ(meshes.size(), 34U);
  EXPECT_EQ(triangles, 75730U);
}

}  // namespace
}  // namespace tests
