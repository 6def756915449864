// A scene of our own with everything that the importing library drops or gets wrong.
#include <cmath>

#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/PictureParameters.h"
#include "engine/scene/TreeWalk.h"
#include "host/Parameters.h"
#include "tests/import/ImportSession.h"

namespace tests {
namespace {

class GltfFeatures : public ImportSession {
 protected:
  void SetUp() override { Open(SceneFile("tests/scenes/features/features.gltf")); }
  host::BaseContainer CameraOf(const std::vector<host::BaseObject*>& objects,
                               std::size_t index) const {
    return objects.at(index)->GetData();
  }
};

TEST_F(GltfFeatures, TheHierarchyIsThatOfTheChosenScene) {
  std::string names;
  for (host::BaseObject* object = Doc().GetFirstObject(); object != nullptr;
       object = engine::NextInTree(object)) {
    names += std::string(object->GetUp() == nullptr ? "" : ".") + object->GetName().ToUtf8() + " " +
             std::to_string(object->GetType()) + "\n";
  }
  EXPECT_EQ(names,
            "Root 5140\n.A 5100\n.A 5103\n.Camera 5103\n.Spot 5102\n.Spot 5102\n.Below the spot "
            "5140\n.Sun 5102\n.Bulb 5102\n"
            ".Two 5140\n.Two (Cut) 5100\n.Two (Clear) 5100\n.Mirrored 5100\n.Both 5140\n.Both "
            "5100\n.Both 5103\nSecond root 5103\n");
  EXPECT_TRUE(HasNote("Other scenes of the file are left out: 1."));
  EXPECT_TRUE(HasNote("The extension EXT_of_nobody is left out."));
  EXPECT_TRUE(HasNote("Lines are left out, meshes: 1."));
}

TEST_F(GltfFeatures, PlacesAreMirroredInZAndInCentimetres) {
  const host::BaseObject* object = Named("A").at(0);
  EXPECT_EQ(object->GetMl().off, host::Vector(100, 200, -300));
  EXPECT_EQ(object->GetMg().off, host::Vector(1100, 200, -300));
  EXPECT_EQ(object->GetMl().v3, host::Vector(0, 0, 1));
  const engine::Mesh& mesh = *engine::MeshOf(*object);
  EXPECT_EQ(mesh.points,
            (std::vector<std::array<float, 3>>{{0, 0, 0}, {100, 0, 0}, {0, 200, 0}, {0, 0, -300}}));
}

TEST_F(GltfFeatures, CornersFaceOutwards) {
  const engine::Mesh& mesh = *engine::MeshOf(*Named("A").at(0));
  ASSERT_EQ(mesh.polygons.size(), 4U);
  EXPECT_TRUE(mesh.normals.empty()) << "the file gives none: flat faces";
  for (const engine::Mesh::Polygon& polygon : mesh.polygons) {
    const auto point = [&](std::size_t i) {
      const auto& p = mesh.points[static_cast<std::size_t>(polygon[i])];
      return host::Vector(p[0], p[1], p[2]);
    };
    EXPECT_EQ(polygon[3], -1);
    const host::Vector across = Cross(Minus(point(1), point(0)), Minus(point(2), point(0)));
    EXPECT_GT(Dot(across, Minus(point(0), host::Vector(25, 50, -75))), 0);
  }
}

TEST_F(GltfFeatures, WhatIsRightInTheFileIsRightInTheCamera) {
  // The camera stands 5 m before the tetrahedron's node, looking at it: +x of the file is on its
  // right, +y above.
  const host::Matrix camera = Named("A").at(1)->GetMg();
  const host::Matrix other = Named("A").at(0)->GetMg();
  const host::Vector corner = Minus(InWorld(other, 100, 0, 0), other.off);
  EXPECT_GT(Dot(camera.v1, corner), 0);
  EXPECT_GT(Dot(camera.v2, Minus(InWorld(other, 0, 200, 0), other.off)), 0);
  EXPECT_GT(Dot(camera.v3, Minus(other.off, camera.off)), 0);
}

TEST_F(GltfFeatures, EveryUserOfACameraHasItWithTheRightAngle) {
  const host::BaseContainer known = CameraOf(Named("A"), 1);
  EXPECT_NEAR(known.GetReal(host::CAMERA_FOV), 1.1302, 5e-4);
  EXPECT_NEAR(known.GetReal(host::CAMERA_FOV_VERTICAL), 0.8, 1e-6);
  EXPECT_EQ(known.GetReal(host::CAMERA_FAR), 0) << "no end was given";
  EXPECT_EQ(CameraOf(Named("Second root"), 0), known);
  const host::BaseContainer noAspect = CameraOf(Named("Camera"), 0);
  EXPECT_NEAR(noAspect.GetReal(host::CAMERA_FOV_VERTICAL), 0.8, 1e-6);
  EXPECT_NEAR(noAspect.GetReal(host::CAMERA_FOV), 1.2888, 5e-4) << "in a picture of 16 to 9";
  EXPECT_NEAR(noAspect.GetReal(host::CAMERA_FAR), 5000, 1e-3);
  const host::BaseContainer parallel = CameraOf(Named("Both"), 2);
  EXPECT_EQ(parallel.GetLong(host::CAMERA_PROJECTION), 1);
  EXPECT_NEAR(parallel.GetReal(host::CAMERA_WIDTH), 300, 1e-6);
}

TEST_F(GltfFeatures, EveryUserOfALightHasItInPlainNumbers) {
  for (const host::BaseObject* spot : Named("Spot")) {
    const host::BaseContainer& data = *spot->GetDataInstance();
    EXPECT_EQ(data.GetLong(host::LIGHT_TYPE), 1);
    EXPECT_NEAR(data.GetReal(host::LIGHT_BRIGHTNESS), 1, 1e-6);
    EXPECT_EQ(data.GetVector(host::LIGHT_COLOR), host::Vector(1, 0.5, 0.25));
    EXPECT_NEAR(data.GetReal(host::LIGHT_INNER_ANGLE), 0.4, 1e-6) << "the file gives half angles";
    EXPECT_NEAR(data.GetReal(host::LIGHT_OUTER_ANGLE), 0.8, 1e-6);
    EXPECT_NEAR(data.GetReal(host::LIGHT_RANGE), 500, 1e-6);
  }
  EXPECT_NEAR(Only("Bulb")->GetDataInstance()->GetReal(host::LIGHT_BRIGHTNESS), 0.25, 1e-6)
      << "a quarter of the brightest";
  const host::BaseContainer& sun = *Only("Sun")->GetDataInstance();
  EXPECT_EQ(sun.GetLong(host::LIGHT_TYPE), 2);
  EXPECT_NEAR(sun.GetReal(host::LIGHT_BRIGHTNESS), 1, 1e-6);
}

TEST_F(GltfFeatures, LayersAndVisibility) {
  host::LayerObject* props = Named("A").at(0)->GetLayerObject(&Doc());
  ASSERT_NE(props, nullptr);
  EXPECT_EQ(props->GetName().ToUtf8(), "Props");
  EXPECT_EQ(Only("Two")->GetLayerObject(&Doc()), props);
  EXPECT_EQ(Only("Bulb")->GetLayerObject(&Doc())->GetName().ToUtf8(), "Lamps");
  EXPECT_EQ(Counts().layers, 2U);
  EXPECT_EQ(Named("A").at(1)->GetEditorMode(), host::MODE_OFF);
  EXPECT_EQ(Named("A").at(1)->GetRenderMode(), host::MODE_OFF);
  EXPECT_EQ(Named("A").at(0)->GetRenderMode(), host::MODE_UNDEF);
}

TEST_F(GltfFeatures, MaterialsKeepWhatTheSceneKnows) {
  const host::BaseContainer cut = Material("Cut")->GetData();
  EXPECT_NEAR(cut.GetVector(host::MATERIAL_COLOR).y, 0.2, 1e-6);
  EXPECT_NEAR(cut.GetReal(host::MATERIAL_ALPHA), 0.4, 1e-6);
  EXPECT_EQ(cut.GetLong(host::MATERIAL_ALPHA_MODE), 1);
  EXPECT_NEAR(cut.GetReal(host::MATERIAL_ALPHA_CUTOFF), 0.3, 1e-6);
  EXPECT_TRUE(cut.GetBool(host::MATERIAL_DOUBLE_SIDED));
  EXPECT_NEAR(cut.GetReal(host::MATERIAL_METALLIC), 0.6, 1e-6);
  EXPECT_NEAR(cut.GetReal(host::MATERIAL_ROUGHNESS), 0.7, 1e-6);
  EXPECT_EQ(cut.GetVector(host::MATERIAL_LUMINANCE), host::Vector(4, 2, 0))
      << "strength times color";
  const host::BaseContainer clear = Material("Clear")->GetData();
  EXPECT_EQ(clear.GetLong(host::MATERIAL_ALPHA_MODE), 2);
  EXPECT_NEAR(clear.GetReal(host::MATERIAL_ALPHA), 0.25, 1e-6);
  EXPECT_EQ(clear.GetReal(host::MATERIAL_METALLIC), 1) << "times its texture";
  for (const host::LONG link : {engine::kMaterialMetallicShader, engine::kMaterialRoughnessShader})
    EXPECT_EQ(ShaderFile(*Material("Clear"), link), "nowhere\\missing.png");
  EXPECT_EQ(Counts().materials, 2U) << "the library's own default is used by nobody";
  host::TextureTag* tag = engine::AsTextureTag(Only("Two (Clear)")->GetTag(host::Ttexture));
  ASSERT_NE(tag, nullptr);
  EXPECT_EQ(tag->GetMaterial(), Material("Clear"));
}

TEST_F(GltfFeatures, TexturesAreFoundNamedOrNotedAsMissing) {
  const host::BaseMaterial& cut = *Material("Cut");
  EXPECT_EQ(ShaderFile(cut, host::MATERIAL_COLOR_SHADER),
            SceneFile("tests/scenes/features/sub folder/base color.png"));
  EXPECT_EQ(ShaderFile(cut, host::MATERIAL_NORMAL_SHADER), "nowhere\\missing.png");
  EXPECT_TRUE(HasNote("The texture \"nowhere\\missing.png\" was not found."));
  const std::string glow = ShaderFile(cut, host::MATERIAL_LUMINANCE_SHADER);
  EXPECT_EQ(glow, "glow_ hot.png") << "a name that is safe on any disk";
  EXPECT_NE(engine::FindEmbeddedFile(Doc(), glow), nullptr);
}

TEST_F(GltfFeatures, TextureCoordinatesGrowDownwards) {
  const engine::Mesh& mesh = *engine::MeshOf(*Named("A").at(0));
  ASSERT_EQ(mesh.uvs.size(), 16U);
  // First face of the file: points 0, 2, 1 at (0, 0), (0, 1), (1, 0). The texture of the color is
  // scaled by (2, 3), then moved by (0.5, 0.25).
  const host::BaseShader* color = static_cast<const host::BaseShader*>(
      Material("Cut")->GetDataInstance()->GetLink(host::MATERIAL_COLOR_SHADER, &Doc()));
  ASSERT_NE(color, nullptr);
  EXPECT_EQ(color->GetDataInstance()->GetVector(engine::kBitmapTiles), host::Vector(2, 3, 0));
  EXPECT_EQ(color->GetDataInstance()->GetVector(engine::kBitmapOffset), host::Vector(0.5, 0.25, 0));
  const auto near = [](const std::array<float, 2>& a, float u, float v) {
    return std::abs(a[0] - u) + std::abs(a[1] - v) < 1e-5;
  };
  const engine::Mesh::Polygon& face = mesh.polygons[0];
  for (std::size_t i = 0; i < 3; ++i) {
    const float u = face[i] == 1 ? 1 : 0;
    const float v = face[i] == 2 ? 1 : 0;
    EXPECT_TRUE(near(mesh.uvs[i], u, v))
        << face[i] << ": " << mesh.uvs[i][0] << " " << mesh.uvs[i][1];
  }
}

TEST_F(GltfFeatures, SharedMeshesAreOne) {
  EXPECT_EQ(engine::MeshOf(*Named("A").at(0)), engine::MeshOf(*Only("Mirrored")));
  EXPECT_EQ(Only("Mirrored")->GetMl().v1, host::Vector(-1, 0, 0));
}

}  // namespace
}  // namespace tests
