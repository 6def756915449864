// Pictures that stay as they are, so that a night's rendering goes on tomorrow where it stopped
// today. Where a change is meant, look at the new ones in the folder pictures of the build and put
// them into tests/render/pictures.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>

#include "engine/render/Codecs.h"
#include "engine/render/Renderer.h"
#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/PictureParameters.h"
#include "host/Host.h"
#include "tests/support/SceneBuilder.h"
#include "tests/support/ScratchFolder.h"
#include "tests/support/ScriptedServices.h"

namespace {

using host::Vector;

class KeptPictures : public testing::Test, protected tests::SceneBuilder {
 protected:
  // Makes an object in its place, with a material of its own unless `color` is black.
  host::BaseContainer& Make(const std::string& name, host::LONG type, Vector place,
                            Vector color = Vector(0)) {
    Object(name, type).At(name, place.x, place.y, place.z);
    if (!(color == Vector(0))) Material(name, color).Texture(name, name);
    return *GetObject(name)->GetDataInstance();
  }
  host::BaseContainer& Look(const std::string& name) {
    return *GetMaterial(name)->GetDataInstance();
  }
  void Floor(double y) {
    host::BaseContainer& floor = Make("Floor", host::Oplane, Vector(0, y, 0), Vector(0.5));
    floor.SetReal(host::PRIM_WIDTH, 1600);
    floor.SetReal(host::PRIM_HEIGHT, 1200);
    Look("Floor").SetReal(host::MATERIAL_ROUGHNESS, 0.9);
  }
  void Ball(const std::string& name, Vector place, double radius, Vector color) {
    Make(name, host::Osphere, place, color).SetReal(host::PRIM_RADIUS, radius);
  }
  // Turns an object's axis z downwards by that angle.
  void Tilt(const std::string& name, double angle) {
    host::Matrix frame = GetObject(name)->GetMl();
    frame.v2 = Vector(0, std::cos(angle), std::sin(angle));
    frame.v3 = Vector(0, -std::sin(angle), std::cos(angle));
    GetObject(name)->SetMl(frame);
  }
  // A picture of 4 x 4 pixels behind a link of a material: red grows to the right, green downwards.
  host::BaseContainer& Picture(const std::string& material, host::LONG link, int blue) {
    engine::Image image{4, 4, {}, {}};
    for (int i = 0; i < 16; ++i) {
      for (const int part : {i % 4 * 70 + 40, i / 4 * 70 + 40, blue, i * 16})
        image.bytes.push_back(static_cast<std::uint8_t>(part));
    }
    host::BaseShader* shader =
        Bitmap(GetMaterial(material),
               engine::AddEmbeddedFile(Doc(), material + std::to_string(link) + ".png",
                                       engine::EncodePng(image).Take()));
    Look(material).SetLink(link, shader);
    return *shader->GetDataInstance();
  }

  void ExpectKept(const std::string& name, bool draft = false) {
    engine::RenderCaches caches;
    auto picture = engine::PictureInProgress::Begin(Doc(), services_.files,
                                                    {144, 96, {}, {}, 2, draft}, caches)
                       .Take();
    while (!picture->IsFinished()) picture->Refine();
    EXPECT_TRUE(picture->Notes().empty());
    const engine::Image seen = picture->Current();
    const auto kept =
        engine::DecodeImage(tests::ReadText(TEST_SOURCE_DIR "/tests/render/pictures/" + name));
    // Differences between processors and compilers are far below these limits.
    int sum = 0;
    std::size_t far = 0;
    for (std::size_t i = 0; kept && i < seen.bytes.size(); ++i) {
      const int difference = std::abs(seen.bytes[i] - kept.Value().bytes.at(i));
      sum += difference;
      far += difference > 3;
    }
    const auto count = static_cast<double>(seen.bytes.size());
    if (kept && sum < count * 0.02 && static_cast<double>(far) < count * 0.0005) return;
    std::filesystem::create_directories(TEST_BINARY_DIR "/pictures");
    const std::string now = TEST_BINARY_DIR "/pictures/" + name;
    tests::WriteText(now, engine::EncodePng(seen).Take());
    ADD_FAILURE() << now << " differs by " << sum / count << " shades, in " << far
                  << " bytes by many";
  }

  tests::ScriptedServices services_;
};

// Seen by nobody's camera in nobody's light, and a mesh whose normals are made.
TEST_F(KeptPictures, OfEveryKindOfObject) {
  Make("Cube", host::Ocube, Vector(-300, 0, 0), Vector(0.8, 0.2, 0.1))
      .SetVector(host::PRIM_SIZE, Vector(120, 160, 80));
  Ball("Sphere", Vector(-100, 0, 40), 70, Vector(0.1, 0.6, 0.2));
  host::BaseContainer& cone = Make("Cone", host::Ocone, Vector(90, 0, 0), Vector(0.2, 0.3, 0.9));
  cone.SetReal(host::PRIM_RADIUS, 60);
  cone.SetReal(host::PRIM_HEIGHT, 170);
  host::BaseContainer& torus =
      Make("Torus", host::Otorus, Vector(280, 0, 0), Vector(0.9, 0.7, 0.1));
  torus.SetReal(host::PRIM_RADIUS, 70);
  torus.SetReal(host::PRIM_RADIUS2, 25);
  host::BaseContainer& disc = Make("Disc", host::Odisc, Vector(-250, -60, -240), Vector(0.8));
  disc.SetReal(host::PRIM_RADIUS, 90);
  disc.SetLong(host::PRIM_SEGMENTS, 7);
  host::BaseContainer& cylinder =
      Make("Cylinder", host::Ocylinder, Vector(0, 0, -240), Vector(0.6, 0.2, 0.7));
  cylinder.SetReal(host::PRIM_RADIUS, 50);
  cylinder.SetReal(host::PRIM_HEIGHT, 90);
  host::BaseContainer& plane = Make("Plane", host::Oplane, Vector(60, -80, 0));
  plane.SetReal(host::PRIM_WIDTH, 900);
  plane.SetReal(host::PRIM_HEIGHT, 600);
  // A strip with a soft and a sharp fold, and a triangle at its end.
  Make("Strip", host::Opolygon, Vector(200, -60, -240), Vector(0.2, 0.7, 0.7));
  engine::Mesh mesh;
  for (const auto& [x, y] : {std::pair{-80.0F, 0.0F}, {-30, 10}, {20, 0}, {20, 100}}) {
    mesh.points.push_back({x, y, -50});
    mesh.points.push_back({x, y, 50});
  }
  mesh.points.push_back({60, 120, 0});
  mesh.polygons = {{0, 1, 3, 2}, {2, 3, 5, 4}, {4, 5, 7, 6}, {6, 7, 8, -1}};
  engine::SetMesh(*GetObject("Strip"), std::make_shared<const engine::Mesh>(mesh));
  ExpectKept("kept-objects.png");
}

TEST_F(KeptPictures, OfEveryKindOfLight) {
  Floor(-60);
  Make("Box", host::Ocube, Vector(-160, 0, 60), Vector(0.7, 0.6, 0.5));
  Ball("Ball", Vector(60, 60, 0), 60, Vector(0.8));
  Ball("Veil", Vector(190, 70, -60), 60, Vector(0.9, 0.4, 0.4));
  Look("Veil").SetLong(host::MATERIAL_ALPHA_MODE, 2);
  Look("Veil").SetReal(host::MATERIAL_ALPHA, 0.4);
  const auto light = [this](const char* name, host::LONG type, Vector place, Vector color,
                            double brightness) -> host::BaseContainer& {
    host::BaseContainer& data = Make(name, host::Olight, place);
    data.SetLong(host::LIGHT_TYPE, type);
    data.SetVector(host::LIGHT_COLOR, color);
    data.SetReal(host::LIGHT_BRIGHTNESS, brightness);
    data.SetLong(host::LIGHT_SHADOW, 1);
    return data;
  };
  host::BaseContainer& lamp = light("Lamp", 0, Vector(-40, 440, -200), Vector(1, 0.8, 0.6), 1);
  lamp.SetReal(engine::kLightRadius, 40);
  lamp.SetReal(host::LIGHT_RANGE, 1500);
  host::BaseContainer& spot = light("Spot", 1, Vector(-160, 400, -300), Vector(0.5, 0.7, 1), 0.6);
  spot.SetReal(host::LIGHT_INNER_ANGLE, 0.4);
  spot.SetReal(host::LIGHT_OUTER_ANGLE, 0.7);
  Tilt("Spot", 0.95);
  light("Sun", 2, Vector(0), Vector(0.3, 0.4, 0.3), 0.3);
  Tilt("Sun", 0.5);
  light("Around", 4, Vector(0), Vector(0.2, 0.2, 0.3), 0.2);
  light("Fill", 0, Vector(-500, 80, -200), Vector(0.3, 0.1, 0.1), 0.3)
      .SetLong(host::LIGHT_SHADOW, 0);
  Camera("Camera").At("Camera", 0, 300, -760).LookThrough("Camera");
  GetObject("Camera")->GetDataInstance()->SetReal(host::CAMERA_FOV_VERTICAL, 0.55);
  Tilt("Camera", 0.38);
  ExpectKept("kept-lights.png");
  ExpectKept("kept-lights-draft.png", true);
}

// From near to far for a parallel camera, which cuts the floor on both sides.
TEST_F(KeptPictures, OfEveryKindOfSurface) {
  Floor(-90);
  struct Surface {
    const char* name;
    Vector color;
    double roughness, metallic, transmission;
  };
  const Surface surfaces[] = {
      {"Clay", Vector(0.7, 0.4, 0.3), 1, 0, 0},  {"Lacquer", Vector(0.5, 0.05, 0.05), 0.15, 0, 0},
      {"Mirror", Vector(0.95), 0, 1, 0},         {"Copper", Vector(0.95, 0.6, 0.4), 0.35, 1, 0},
      {"Glass", Vector(0.8, 0.9, 1), 0, 0, 0.9}, {"Printed", Vector(1), 0.6, 0, 0},
      {"Embossed", Vector(0.6), 0.4, 0, 0},      {"Worn", Vector(0.8, 0.7, 0.5), 1, 1, 0},
      {"Cut", Vector(0.2, 0.5, 0.2), 0.8, 0, 0}, {"Lamp", Vector(0.1), 0.5, 0, 0}};
  int i = 0;
  for (const Surface& s : surfaces) {
    Ball(s.name, Vector(i % 5 * 160 - 320, i / 5 * 150 - 20, i / 5 * 60), 70, s.color);
    Look(s.name).SetReal(host::MATERIAL_ROUGHNESS, s.roughness);
    Look(s.name).SetReal(host::MATERIAL_METALLIC, s.metallic);
    Look(s.name).SetReal(engine::kMaterialTransmission, s.transmission);
    ++i;
  }
  Picture("Printed", host::MATERIAL_COLOR_SHADER, 20).SetReal(engine::kBitmapRotation, 0.5);
  host::BaseContainer& tag = *GetTag("Printed", host::Ttexture)->GetDataInstance();
  tag.SetVector(host::TEXTURETAG_TILES, Vector(4, 2, 0));
  tag.SetVector(host::TEXTURETAG_OFFSET, Vector(0.3, 0.1, 0));
  Picture("Embossed", host::MATERIAL_NORMAL_SHADER, 255)
      .SetVector(engine::kBitmapTiles, Vector(6, 3, 0));
  Picture("Worn", engine::kMaterialRoughnessShader, 200);
  Picture("Worn", engine::kMaterialMetallicShader, 200).SetLong(engine::kBitmapWrapU, 1);
  Picture("Worn", engine::kMaterialOcclusionShader, 200);
  Picture("Cut", engine::kMaterialOpacityShader, 80).SetBool(engine::kBitmapIsSharp, true);
  Look("Cut").SetLong(host::MATERIAL_ALPHA_MODE, 1);
  Look("Cut").SetReal(host::MATERIAL_ALPHA_CUTOFF, 0.4);
  Look("Lamp").SetVector(host::MATERIAL_LUMINANCE, Vector(0.9, 0.5, 0.1));
  host::BaseContainer& sun = Make("Sun", host::Olight, Vector(0));
  sun.SetLong(host::LIGHT_TYPE, 2);
  sun.SetLong(host::LIGHT_SHADOW, 1);
  Tilt("Sun", 0.9);
  Camera("Camera").At("Camera", 0, 250, -500).LookThrough("Camera");
  host::BaseContainer& camera = *GetObject("Camera")->GetDataInstance();
  camera.SetLong(host::CAMERA_PROJECTION, 1);
  camera.SetReal(host::CAMERA_WIDTH, 860);
  camera.SetReal(host::CAMERA_NEAR, 250);
  camera.SetReal(host::CAMERA_FAR, 900);
  Tilt("Camera", 0.35);
  ExpectKept("kept-surfaces.png");
  ExpectKept("kept-surfaces-draft.png", true);
}

}  // namespace
