// Pictures of documents: what each switch changes, and that a hostile scene costs a note only.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <set>

#include "engine/outside/SystemServices.h"
#include "engine/render/Renderer.h"
#include "engine/scene/NodeIds.h"
#include "host/Host.h"
#include "tests/support/SceneBuilder.h"
#include "tests/support/ScriptedServices.h"

namespace {

using engine::PictureInProgress;
using engine::PictureSetup;
using host::Vector;
using tests::SceneBuilder;

// A box on a floor before a camera, a second box on a layer beside it, and a light.
class Stage {
 public:
  Stage() {
    scene_.Material("Red", Vector(0.8, 0.05, 0.05))
        .Material("Green", Vector(0.05, 0.7, 0.1))
        .Layer("Layer");
    scene_.Object("Floor", host::Oplane).At("Floor", 0, -100, 0);
    Data("Floor").SetReal(host::PRIM_WIDTH, 1000);
    Data("Floor").SetReal(host::PRIM_HEIGHT, 1000);
    scene_.Object("Group").Cube("Group/Box").Texture("Group/Box", "Red");
    scene_.Object("Other", host::Osphere).At("Other", 250, 0, 0).OnLayer("Other", "Layer");
    scene_.Camera("Camera").At("Camera", 0, 100, -900).LookThrough("Camera");
    scene_.Object("Light", host::Olight).At("Light", -300, 500, -300);
    Data("Light").SetLong(host::LIGHT_SHADOW, 1);
  }
  SceneBuilder& Scene() { return scene_; }
  host::BaseContainer& Data(const std::string& path) {
    return *scene_.GetObject(path)->GetDataInstance();
  }
  host::BaseContainer& Look(const std::string& name) {
    return *scene_.GetMaterial(name)->GetDataInstance();
  }
  host::BaseTag& MakeTag(const std::string& path, host::LONG type) {
    return *scene_.GetObject(path)->MakeTag(type);
  }
  void SetLayer(host::LayerData flags) {
    scene_.GetLayer("Layer")->SetLayerData(&scene_.Doc(), flags);
  }
  // Puts the layer below another one with these flags.
  void Outer(host::LayerData flags) {
    host::LayerObject* outer = host::LayerObject::Alloc();
    scene_.Doc().AppendLayer(outer);
    host::LayerObject* layer = scene_.GetLayer("Layer");
    layer->Remove();
    scene_.Doc().AppendLayer(layer, outer);
    outer->SetLayerData(&scene_.Doc(), flags);
  }

 private:
  SceneBuilder scene_;
};

// Where the textures of scenes are looked for.
engine::FileSystem& Files() {
  static const engine::SystemServices services;
  return services.Get().files;
}

constexpr PictureSetup kSmall{64, 48, {}, {}, 2, false};

std::vector<std::uint8_t> Render(const host::BaseDocument& doc, PictureSetup setup = kSmall) {
  engine::RenderCaches caches;
  auto picture = PictureInProgress::Begin(doc, Files(), setup, caches);
  if (!picture) return {};
  while (!picture.Value()->IsFinished()) picture.Value()->Refine();
  return picture.Value()->Current().bytes;
}

int CountDifferent(const std::vector<std::uint8_t>& a, const std::vector<std::uint8_t>& b) {
  int count = 0;
  for (std::size_t i = 0; i < a.size() && i < b.size(); i += 4) {
    for (std::size_t c = 0; c < 3; ++c) {
      if (std::abs(a[i + c] - b[i + c]) > 8) {
        ++count;
        break;
      }
    }
  }
  return a.size() == b.size() ? count : -1;
}

struct SwitchCase {
  const char* name;
  void (*change)(Stage&);
  int pixels;  // that differ at least
};

constexpr SwitchCase kSwitches[] = {
    {"render mode off",
     [](Stage& s) { s.Scene().Modes("Group/Box", host::MODE_UNDEF, host::MODE_OFF); }, 100},
    {"parent's render mode off",
     [](Stage& s) { s.Scene().Modes("Group", host::MODE_UNDEF, host::MODE_OFF); }, 100},
    {"layer not rendered", [](Stage& s) { s.SetLayer({.render = false}); }, 100},
    {"generators of the layer off", [](Stage& s) { s.SetLayer({.generators = false}); }, 100},
    {"solo layer", [](Stage& s) { s.SetLayer({.solo = true}); }, 400},
    {"layer above not rendered", [](Stage& s) { s.Outer({.render = false}); }, 100},
    {"generators of the layer above off", [](Stage& s) { s.Outer({.generators = false}); }, 100},
    {"solo layer above", [](Stage& s) { s.Outer({.solo = true}); }, 400},
    {"deform mode off", [](Stage& s) { s.Scene().Modes("Group/Box", 2, 2, false); }, 100},
    {"another material", [](Stage& s) { s.Scene().Texture("Group/Box", "Green"); }, 100},
    {"casts no shadow",
     [](Stage& s) {
       s.MakeTag("Other", host::Tcompositing).GetDataInstance()->SetBool(1000, false);
     },
     15},
    {"receives no shadow",
     [](Stage& s) {
       s.MakeTag("Floor", host::Tcompositing).GetDataInstance()->SetBool(1001, false);
     },
     60},
    {"not seen by the camera",
     [](Stage& s) {
       s.MakeTag("Group", host::Tcompositing).GetDataInstance()->SetBool(1002, false);
     },
     90},
    {"another camera",
     [](Stage& s) { s.Scene().Camera("New").At("New", 300, 0, -500).LookThrough("New"); }, 500},
    {"no camera", [](Stage& s) { s.Scene().LookThrough(""); }, 500},
    {"parallel camera", [](Stage& s) { s.Data("Camera").SetLong(host::CAMERA_PROJECTION, 1); },
     300},
    {"camera's angle", [](Stage& s) { s.Data("Camera").SetReal(host::CAMERA_FOV, 0.4); }, 500},
    {"camera's far end", [](Stage& s) { s.Data("Camera").SetReal(host::CAMERA_FAR, 700); }, 300},
    {"light hidden", [](Stage& s) { s.Scene().Modes("Light", host::MODE_UNDEF, host::MODE_OFF); },
     300},
    {"light without shadows", [](Stage& s) { s.Data("Light").SetLong(host::LIGHT_SHADOW, 0); }, 30},
    {"light's color",
     [](Stage& s) { s.Data("Light").SetVector(host::LIGHT_COLOR, Vector(0.2, 0.4, 1)); }, 500},
    {"spot light", [](Stage& s) { s.Data("Light").SetLong(host::LIGHT_TYPE, 1); }, 500},
    {"sun", [](Stage& s) { s.Data("Light").SetLong(host::LIGHT_TYPE, 2); }, 500},
    {"ambient light", [](Stage& s) { s.Data("Light").SetLong(host::LIGHT_TYPE, 4); }, 500},
    {"light's range", [](Stage& s) { s.Data("Light").SetReal(host::LIGHT_RANGE, 600); }, 500},
    {"metal", [](Stage& s) { s.Look("Red").SetReal(host::MATERIAL_METALLIC, 1); }, 60},
    {"luminance", [](Stage& s) { s.Look("Red").SetVector(host::MATERIAL_LUMINANCE, Vector(0.5)); },
     100},
    {"see-through",
     [](Stage& s) {
       s.Look("Red").SetLong(host::MATERIAL_ALPHA_MODE, 2);
       s.Look("Red").SetReal(host::MATERIAL_ALPHA, 0.3);
     },
     100},
    {"cut away",
     [](Stage& s) {
       s.Look("Red").SetLong(host::MATERIAL_ALPHA_MODE, 1);
       s.Look("Red").SetReal(host::MATERIAL_ALPHA, 0.3);
     },
     100},
};

TEST(Render, EverySwitchCanBeSeen) {
  const std::vector<std::uint8_t> plain = Render(Stage().Scene().Doc());
  ASSERT_EQ(plain.size(), 64U * 48U * 4U);
  for (const SwitchCase& c : kSwitches) {
    Stage stage;
    c.change(stage);
    EXPECT_GE(CountDifferent(plain, Render(stage.Scene().Doc())), c.pixels) << c.name;
  }
}

TEST(Render, SwitchesWithoutAMeaningChangeNothing) {
  struct Case {
    const char* name;
    void (*change)(Stage&);
  };
  const Case cases[] = {
      {"editor mode off",
       [](Stage& s) { s.Scene().Modes("Group/Box", host::MODE_OFF, host::MODE_UNDEF); }},
      {"on below off",
       [](Stage& s) {
         s.Scene()
             .Modes("Group", host::MODE_UNDEF, host::MODE_OFF)
             .Modes("Group/Box", host::MODE_UNDEF, host::MODE_ON);
       }},
      {"deform mode of the null above", [](Stage& s) { s.Scene().Modes("Group", 2, 2, false); }},
      {"layer not viewed", [](Stage& s) { s.SetLayer({.view = false}); }},
      {"layer above not viewed", [](Stage& s) { s.Outer({.view = false}); }},
      {"what lights are unless told", [](Stage& s) { s.Data("Light").FlushAll(); }},
      {"what materials are unless told",
       [](Stage& s) {
         s.Look("Red").FlushAll();
         s.Look("Red").SetVector(host::MATERIAL_COLOR, Vector(0.8, 0.05, 0.05));
       }},
  };
  const std::vector<std::uint8_t> plain = Render(Stage().Scene().Doc());
  for (const Case& c : cases) {
    Stage stage;
    c.change(stage);
    EXPECT_EQ(Render(stage.Scene().Doc()), plain) << c.name;
  }
}

TEST(Render, TheEditorViewFollowsTheEditorSwitches) {
  Stage stage;
  PictureSetup setup = kSmall;
  setup.reading.editorView = true;
  const auto plain = Render(stage.Scene().Doc(), setup);
  stage.Scene().Modes("Group/Box", host::MODE_UNDEF, host::MODE_OFF);
  EXPECT_EQ(Render(stage.Scene().Doc(), setup), plain);
  stage.SetLayer({.view = false});
  EXPECT_GT(CountDifferent(Render(stage.Scene().Doc(), setup), plain), 100);
}

TEST(Render, IsTheSameForAnyNumberOfThreads) {
  Stage stage;
  PictureSetup setup = kSmall;
  setup.threads = 1;
  const auto one = Render(stage.Scene().Doc(), setup);
  for (const unsigned threads : {2U, 3U, 7U}) {
    setup.threads = threads;
    EXPECT_EQ(Render(stage.Scene().Doc(), setup), one) << threads;
  }
}

TEST(Render, StopsAndGoesOnWhereItStopped) {
  Stage stage;
  engine::RenderCaches caches;
  auto picture = PictureInProgress::Begin(stage.Scene().Doc(), Files(), kSmall, caches).Take();
  EXPECT_FALSE(picture->Refine([](double) { return false; }));
  EXPECT_FALSE(picture->IsFinished());
  EXPECT_TRUE(picture->Current().bytes.empty());
  double last = -1;
  const auto progress = [&](double done) {
    EXPECT_GE(done, last);
    last = done;
    return true;
  };
  while (!picture->IsFinished()) ASSERT_TRUE(picture->Refine(progress));
  EXPECT_GT(last, 0.5);
  EXPECT_LE(last, 1.0);
  EXPECT_EQ(picture->Current().bytes, Render(stage.Scene().Doc()));
}

TEST(Render, ADraftIsReadyAfterOnePassAndComesNear) {
  Stage stage;
  PictureSetup setup = kSmall;
  setup.draft = true;
  engine::RenderCaches caches;
  auto picture = PictureInProgress::Begin(stage.Scene().Doc(), Files(), setup, caches).Take();
  EXPECT_TRUE(picture->Refine());
  EXPECT_TRUE(picture->IsFinished());
  const auto draft = picture->Current().bytes;
  const auto whole = Render(stage.Scene().Doc());
  double sum = 0;
  for (std::size_t i = 0; i < whole.size(); ++i) sum += std::abs(draft[i] - whole[i]);
  EXPECT_LT(sum / static_cast<double>(whole.size()), 6);
  EXPECT_NE(draft, whole);
}

TEST(Render, KeepsGeometryFromPictureToPicture) {
  Stage stage;
  engine::RenderCaches caches;
  ASSERT_TRUE(PictureInProgress::Begin(stage.Scene().Doc(), Files(), kSmall, caches));
  const std::size_t made = caches.WorkDone().geometries;
  EXPECT_EQ(made, 3U);
  stage.Scene().At("Other", 0, 200, 0).Modes("Group", 2, host::MODE_OFF).Cube("Another");
  stage.Look("Red").SetVector(host::MATERIAL_COLOR, Vector(0));
  ASSERT_TRUE(PictureInProgress::Begin(stage.Scene().Doc(), Files(), kSmall, caches));
  EXPECT_EQ(caches.WorkDone().geometries, made);
  stage.Data("Other").SetReal(host::PRIM_RADIUS, 55);
  ASSERT_TRUE(PictureInProgress::Begin(stage.Scene().Doc(), Files(), kSmall, caches));
  EXPECT_EQ(caches.WorkDone().geometries, made + 1);
}

TEST(Render, SlowGradientsShowNoBands) {
  PictureSetup setup = kSmall;
  setup.width = 16;
  setup.height = 1024;
  const auto bytes = Render(SceneBuilder().Doc(), setup);
  int plain = 0;  // rows of one shade, which are the bands
  for (std::size_t row = 0; row < 1024; ++row) {
    std::set<int> shades;
    for (std::size_t x = 0; x < 16; ++x) shades.insert(bytes[(row * 16 + x) * 4]);
    plain += shades.size() == 1;
  }
  EXPECT_LT(plain, 350);
}

TEST(Render, FindsTheObjectUnderAPixel) {
  Stage stage;
  engine::RenderCaches caches;
  auto picture = PictureInProgress::Begin(stage.Scene().Doc(), Files(), kSmall, caches).Take();
  EXPECT_EQ(picture->ObjectAt(32, 28), engine::IdOf(*stage.Scene().GetObject("Group/Box")));
  EXPECT_EQ(picture->ObjectAt(0, 0), 0U);
}

TEST(Render, RefusesImpossibleSizes) {
  Stage stage;
  engine::RenderCaches caches;
  for (const auto& [width, height] : {std::pair{0U, 10U},
                                      {10U, 0U},
                                      {16385U, 1U},
                                      {100000U, 100000U},
                                      {16384U, 16384U},
                                      {4294967295U, 4294967295U}}) {
    PictureSetup setup;
    setup.width = width;
    setup.height = height;
    EXPECT_FALSE(PictureInProgress::Begin(stage.Scene().Doc(), Files(), setup, caches))
        << width << "x" << height;
  }
}

// --- Meshes that no sane program writes.

std::shared_ptr<engine::Mesh> Quad() {
  auto mesh = std::make_shared<engine::Mesh>();
  mesh->points = {{-100, -100, 0}, {100, -100, 0}, {100, 100, 0}, {-100, 100, 0}};
  mesh->polygons = {{0, 1, 2, 3}};
  return mesh;
}

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

struct MeshCase {
  const char* name;
  void (*spoil)(engine::Mesh&);
  const char* note;
};

constexpr const char* kNoObject = "1 objects had no usable polygon and were left out.";
constexpr const char* kNoTriangle =
    "1 triangles without an area or with impossible corners were left out.";

constexpr MeshCase kHostileMeshes[] = {
    {"whole", [](engine::Mesh&) {}, nullptr},
    {"nothing at all", [](engine::Mesh& m) { m = {}; }, nullptr},
    {"no points", [](engine::Mesh& m) { m.points.clear(); }, kNoObject},
    {"no polygons", [](engine::Mesh& m) { m.polygons.clear(); }, nullptr},
    {"corner is no number", [](engine::Mesh& m) { m.points[2][1] = kNan; }, kNoObject},
    {"corner at infinity", [](engine::Mesh& m) { m.points[0][0] = kInfinity; }, kNoObject},
    {"index behind the end", [](engine::Mesh& m) { m.polygons[0][1] = 4; }, kNoTriangle},
    {"largest index",
     [](engine::Mesh& m) {
       m.polygons.push_back({0, 1, 2147483647, -1});
     },
     kNoTriangle},
    {"negative index",
     [](engine::Mesh& m) {
       m.polygons.push_back({-2, 1, 2, -1});
     },
     kNoTriangle},
    {"no area",
     [](engine::Mesh& m) {
       m.polygons.push_back({1, 1, 2, -1});
     },
     kNoTriangle},
    {"normals are no numbers",
     [](engine::Mesh& m) {
       m.normals.assign(4, {kNan, 0, 0});
     },
     nullptr},
    {"normals of no length",
     [](engine::Mesh& m) {
       m.normals.assign(4, {0, 0, 0});
     },
     nullptr},
    {"too few normals",
     [](engine::Mesh& m) {
       m.normals.assign(1, {0, 0, -1});
     },
     nullptr},
    {"too few texture coordinates",
     [](engine::Mesh& m) {
       m.uvs.assign(3, {0, 0});
     },
     nullptr},
    {"texture coordinates at infinity",
     [](engine::Mesh& m) {
       m.uvs.assign(4, {kInfinity, kNan});
     },
     nullptr},
};

TEST(Render, HostileMeshesCostANote) {
  for (const MeshCase& c : kHostileMeshes) {
    SceneBuilder scene;
    auto mesh = Quad();
    c.spoil(*mesh);
    scene.Object("Mesh", host::Opolygon);
    engine::SetMesh(*scene.Last(), mesh);
    engine::RenderCaches caches;
    auto picture = PictureInProgress::Begin(scene.Doc(), Files(), kSmall, caches);
    ASSERT_TRUE(picture) << c.name;
    while (!picture.Value()->IsFinished()) picture.Value()->Refine();
    const std::vector<std::string> notes(c.note ? 1 : 0, c.note ? c.note : "");
    EXPECT_EQ(picture.Value()->Notes(), notes) << c.name;
  }
}

TEST(Render, ASurfaceWithOnlyAFrontCannotBeSeenFromBehind) {
  SceneBuilder scene;
  scene.Material("Sheet", Vector(1, 0, 0)).Object("Mesh", host::Opolygon).Texture("Mesh", "Sheet");
  scene.Camera("Camera").At("Camera", 0, 0, -500).LookThrough("Camera");
  const auto empty = Render(SceneBuilder().Camera("C").At("C", 0, 0, -500).LookThrough("C").Doc());
  const auto shown = [&](bool doubleSided, float normal, double mirror) {
    auto mesh = Quad();
    if (normal != 0) mesh->normals.assign(4, {0, 0, normal});
    engine::SetMesh(*scene.GetObject("Mesh"), mesh);
    host::Matrix frame;
    frame.v1 = Vector(mirror, 0, 0);
    scene.GetObject("Mesh")->SetMl(frame);
    scene.GetMaterial("Sheet")->GetDataInstance()->SetBool(host::MATERIAL_DOUBLE_SIDED,
                                                           doubleSided);
    return CountDifferent(Render(scene.Doc()), empty) > 200;
  };
  EXPECT_TRUE(shown(true, 1, 1));
  EXPECT_TRUE(shown(false, -1, 1));
  EXPECT_FALSE(shown(false, 1, 1));
  EXPECT_FALSE(shown(false, 1, -1)) << "mirroring turns no surface round";
  EXPECT_TRUE(shown(false, 0, 1)) << "without normals there is no front";
}

TEST(Render, FramesWhatThereIs) {
  SceneBuilder scene;
  scene.Cube("A").At("A", -5000, 300, 40).Cube("B").At("B", 900, 0, -2000);
  engine::RenderCaches caches;
  auto picture = PictureInProgress::Begin(scene.Doc(), Files(), kSmall, caches).Take();
  const engine::RayCamera eye(picture->Camera(), 64, 48);
  // Every corner of both cubes lies inside the picture, and they are not lost in its middle.
  float widest = 0;
  const float half = std::tan(static_cast<float>(picture->Camera().fov) / 2);
  for (const engine::Vec& center : {engine::Vec{-5000, 300, 40}, engine::Vec{900, 0, -2000}}) {
    engine::Box cube;
    cube.Add(center - engine::Vec{100, 100, 100});
    cube.Add(center + engine::Vec{100, 100, 100});
    for (int i = 0; i < 8; ++i) {
      const engine::Vec toCorner = cube.Corner(i) - engine::ToVec(picture->Camera().frame.off);
      const float across = std::abs(engine::Dot(toCorner, eye.Right())) /
                           engine::Dot(toCorner, eye.Forward()) / half;
      widest = std::max(widest, across);
      EXPECT_LE(across, 1) << i;
    }
  }
  EXPECT_GT(widest, 0.85F);
}

TEST(Render, HostileFramesAndParametersDoNoHarm) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  Stage stage;
  host::Matrix flat;
  flat.v2 = Vector(0);
  stage.Scene().GetObject("Other")->SetMl(flat);
  stage.Scene().Cube("Far").At("Far", 1e30, nan, 0);
  for (const double scale : {1e-300, 1e-30, 1e-12, 1e-7, 1e5, 1e12, 1e300}) {
    host::Matrix frame;
    frame.v1 = Vector(scale, 0, 0);
    frame.v3 = Vector(1, scale, 1);
    stage.Scene().Cube("Scaled").Last()->SetMl(frame);
  }
  stage.Data("Floor").SetReal(host::PRIM_WIDTH, nan);
  stage.Data("Light").SetReal(host::LIGHT_BRIGHTNESS, nan);
  stage.Data("Camera").SetReal(host::CAMERA_FOV, nan);
  stage.Data("Camera").SetReal(host::CAMERA_WIDTH, -1);
  stage.Look("Red").SetVector(host::MATERIAL_COLOR, Vector(nan));
  stage.Look("Red").SetReal(host::MATERIAL_ROUGHNESS, -5);
  EXPECT_EQ(Render(stage.Scene().Doc()).size(), 64U * 48U * 4U);
}

TEST(Render, HasAPictureFromInsideAnObjectAndOfNothing) {
  struct Case {
    const char* name;
    void (*make)(SceneBuilder&);
  };
  const Case cases[] = {
      {"nothing at all", [](SceneBuilder&) {}},
      {"a camera alone", [](SceneBuilder& s) { s.Camera("Camera").LookThrough("Camera"); }},
      {"a light alone", [](SceneBuilder& s) { s.Object("Light", host::Olight); }},
      {"a camera inside a ball",
       [](SceneBuilder& s) {
         s.Object("Ball", host::Osphere).Camera("Camera").LookThrough("Camera");
       }},
      {"a camera on a surface",
       [](SceneBuilder& s) {
         s.Object("Floor", host::Oplane).Camera("Camera").LookThrough("Camera");
       }},
      {"a light and a camera inside a box",
       [](SceneBuilder& s) {
         s.Cube("Box").Object("Light", host::Olight).Camera("Camera").LookThrough("Camera");
       }},
  };
  for (const Case& c : cases) {
    SceneBuilder scene;
    c.make(scene);
    const auto bytes = Render(scene.Doc());
    ASSERT_EQ(bytes.size(), 64U * 48U * 4U) << c.name;
    EXPECT_GT(*std::max_element(bytes.begin(), bytes.end() - 4), 20) << c.name << " is not black";
  }
}

TEST(Render, ADeepChainOfObjectsIsWalkedFlat) {
  SceneBuilder scene;
  host::BaseObject* parent = nullptr;
  for (int i = 0; i < 200000; ++i) {
    host::BaseObject* op = host::BaseObject::Alloc(host::Onull);
    scene.Doc().AppendObject(op, parent);
    parent = op;
  }
  scene.Doc().AppendObject(host::BaseObject::Alloc(host::Ocube), parent);
  const auto picture = Render(scene.Doc());
  EXPECT_GT(CountDifferent(picture, Render(SceneBuilder().Doc())), 300);
}

// --- The published function.

TEST(RenderDocument, TakesItsSizeFromTheSettings) {
  tests::ScriptedServices services;
  const engine::PublishedServicesScope published(services.Get());
  Stage stage;
  host::BaseBitmap* bitmap = host::BaseBitmap::Alloc();
  const auto render = [&](host::LONG width, host::LONG height) {
    host::BaseContainer settings;
    if (width != 0) settings.SetLong(host::RDATA_XRES, width);
    if (height != 0) settings.SetLong(host::RDATA_YRES, height);
    return host::RenderDocument(&stage.Scene().Doc(), settings, nullptr, nullptr, bitmap, 0,
                                nullptr);
  };
  EXPECT_EQ(render(0, 0), host::RENDERRESULT_FAILED)
      << "neither the settings nor the bitmap have a size";
  EXPECT_EQ(render(40, 30), host::RENDERRESULT_OK);
  EXPECT_EQ(bitmap->GetBw(), 40);
  bitmap->Init(20, 10);
  EXPECT_EQ(render(0, 0), host::RENDERRESULT_OK);
  EXPECT_EQ(bitmap->GetBw(), 20);
  for (const auto& [width, height] : {std::pair(20, 16), {24, 16}}) {
    EXPECT_EQ(render(width, height), host::RENDERRESULT_OK);
    EXPECT_EQ(std::pair(bitmap->GetBw(), bitmap->GetBh()), std::pair(width, height));
  }
  const auto seen = Render(stage.Scene().Doc(), {24, 16, {}, {}, 2, false});
  for (int i = 0; i < 24 * 16; ++i) {
    std::array<host::LONG, 3> pixel;
    bitmap->GetPixel(i % 24, i / 24, &pixel[0], &pixel[1], &pixel[2]);
    EXPECT_TRUE(std::equal(pixel.begin(), pixel.end(), &seen[i * 4])) << i;
  }
  for (const host::LONG size : {-1, 100000, 2147483647})
    EXPECT_EQ(render(size, size), host::RENDERRESULT_FAILED);
  EXPECT_EQ(services.ledger.FailuresSince(0).size(), 4U);
  EXPECT_EQ(host::RenderDocument(nullptr, {}, nullptr, nullptr, bitmap, 0, nullptr),
            host::RENDERRESULT_FAILED);
  host::BaseBitmap::Free(bitmap);
}

// Before the first pixel and later.
TEST(RenderDocument, StopsWhenAskedTo) {
  for (const int call : {1, 2, 3, 5}) {
    tests::ScriptedServices services;
    const engine::PublishedServicesScope published(services.Get());
    services.person.StopProgressAt(call);
    Stage stage;
    host::BaseBitmap* bitmap = host::BaseBitmap::Alloc();
    bitmap->Init(64, 48);
    EXPECT_EQ(host::RenderDocument(&stage.Scene().Doc(), {}, nullptr, nullptr, bitmap, 0, nullptr),
              host::RENDERRESULT_USERBREAK)
        << call;
    EXPECT_TRUE(services.ledger.FailuresSince(0).empty()) << "who stopped it knows";
    host::BaseBitmap::Free(bitmap);
  }
}

TEST(RenderDocument, SaysWhenThereIsNotEnoughMemory) {
  struct Case {
    host::ProgressHook* takesMemory;
    host::LONG result;
  };
  const Case cases[] = {
      {[](host::Real, host::LONG, void*) { throw std::bad_alloc(); }, host::RENDERRESULT_FAILED},
      {[](host::Real done, host::LONG, void*) {
         if (done > 0) throw std::bad_alloc();
       },
       host::RENDERRESULT_OUTOFMEMORY}};
  for (const Case& c : cases) {
    tests::ScriptedServices services;
    const engine::PublishedServicesScope published(services.Get());
    Stage stage;
    host::BaseBitmap* bitmap = host::BaseBitmap::Alloc();
    bitmap->Init(64, 48);
    EXPECT_EQ(
        host::RenderDocument(&stage.Scene().Doc(), {}, c.takesMemory, nullptr, bitmap, 0, nullptr),
        c.result);
    const auto failures = services.ledger.FailuresSince(0);
    ASSERT_EQ(failures.size(), 1U);
    EXPECT_NE(failures[0].message.find("not enough memory"), std::string::npos)
        << failures[0].message;
    host::BaseBitmap::Free(bitmap);
  }
}

}  // namespace
