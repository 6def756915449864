// Services of the renderer for a view: reading in steps, knowing whether anything looks different,
// what is hit at a pixel, tiles while a pass runs, and cameras that frame what is asked for.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <set>

#include "engine/outside/SystemServices.h"
#include "engine/render/Renderer.h"
#include "engine/render/SceneScan.h"
#include "engine/scene/EmbeddedFiles.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/Ownership.h"
#include "engine/scene/PictureParameters.h"
#include "engine/scene/Vectors.h"
#include "host/Host.h"
#include "tests/support/SceneBuilder.h"

namespace {

using engine::PictureInProgress;
using engine::PictureSetup;
using engine::ScenePicture;
using host::Vector;
using tests::SceneBuilder;

// Where the textures of scenes are looked for.
engine::FileSystem& SystemFiles() {
  static const engine::SystemServices services;
  return services.Get().files;
}

// A row of boxes, the third one with a sphere below it, a light and a camera.
struct Row : SceneBuilder {
  Row() {
    Material("Red", Vector(0.8, 0.1, 0.1)).Layer("Layer");
    for (int i = 0; i < 4; ++i) {
      const std::string name = "Box" + std::to_string(i);
      Cube(name).At(name, i * 300.0 - 450, 0, 0);
    }
    Object("Box2/Ball", host::Osphere).At("Box2/Ball", 0, 180, 0);
    Object("Light", host::Olight).At("Light", -300, 900, -900);
    Camera("Camera").At("Camera", 0, 0, -1500).LookThrough("Camera");
  }
  void Delete(const std::string& path) {
    host::BaseObject* object = GetObject(path);
    object->Remove();
    engine::DestroyNode(object);
  }
};

ScenePicture Read(const host::BaseDocument& doc, engine::RenderCaches& caches,
                  std::size_t step = 1000000) {
  engine::SceneScan scan(doc, SystemFiles(), {}, caches);
  while (!scan.Advance(step)) {
  }
  return scan.Take();
}

TEST(SceneScan, ReadsTheSameInStepsOfAnySize) {
  Row scene;
  engine::RenderCaches caches;
  const ScenePicture whole = Read(scene.Doc(), caches);
  ASSERT_EQ(whole.instances.size(), 5U);
  for (const std::size_t step : {1U, 2U, 3U}) {
    const ScenePicture other = Read(scene.Doc(), caches, step);
    EXPECT_EQ(other.fingerprint, whole.fingerprint);
    EXPECT_EQ(other.instances.size(), whole.instances.size());
    EXPECT_TRUE(other.hasSceneCamera);
  }
}

TEST(SceneScan, WhatIsBelowASelectedObjectCountsAsSelected) {
  Row scene;
  scene.Select("Box2");
  engine::RenderCaches caches;
  const ScenePicture picture = Read(scene.Doc(), caches);
  std::set<engine::NodeId> selected;
  for (std::size_t i = 0; i < picture.instances.size(); ++i) {
    if (picture.selected[i]) selected.insert(picture.instances[i].object);
  }
  EXPECT_EQ(selected, (std::set<engine::NodeId>{engine::IdOf(*scene.GetObject("Box2")),
                                                engine::IdOf(*scene.GetObject("Box2/Ball"))}));
}

TEST(SceneScan, TheFingerprintTellsWhatLooksDifferent) {
  struct Case {
    const char* what;
    bool differs;
    std::function<void(Row&)> change;
  };
  const std::vector<Case> cases = {
      {"selection", false, [](Row& row) { row.Select("Box1"); }},
      {"a name", false, [](Row& row) { row.GetObject("Box1")->SetName("Other"); }},
      {"the camera", false, [](Row& row) { row.At("Camera", 10, 0, -1500); }},
      {"an editor mode", false,
       [](Row& row) { row.Modes("Box1", host::MODE_OFF, host::MODE_UNDEF); }},
      {"a render mode", true,
       [](Row& row) { row.Modes("Box1", host::MODE_UNDEF, host::MODE_OFF); }},
      {"a place", true, [](Row& row) { row.At("Box1", 0, 0, 1); }},
      {"a size", true,
       [](Row& row) {
         row.GetObject("Box1")->GetDataInstance()->SetVector(host::PRIM_SIZE, Vector(9));
       }},
      {"a material", true, [](Row& row) { row.Texture("Box1", "Red"); }},
      {"an unused material", false,
       [](Row& row) {
         row.GetMaterial("Red")->GetDataInstance()->SetVector(host::MATERIAL_COLOR, Vector(0));
       }},
      {"a light", true, [](Row& row) { row.At("Light", 0, 0, 0); }},
      {"one object less", true, [](Row& row) { row.Delete("Box0"); }},
  };
  for (const Case& test : cases) {
    Row scene;
    engine::RenderCaches caches;
    const ScenePicture before = Read(scene.Doc(), caches);
    test.change(scene);
    EXPECT_EQ(Read(scene.Doc(), caches).fingerprint != before.fingerprint, test.differs)
        << test.what;
  }
}

// Each number that a look, a picture on it, a light or a tag has.
TEST(SceneScan, TheFingerprintTellsEachParameter) {
  Row scene;
  scene.Texture("Box0", "Red").Tag("Box0", host::Tcompositing);
  const auto picture = [&](int red) {
    const engine::Image image{1, 1, {static_cast<std::uint8_t>(red), 0, 0, 255}, {}};
    return engine::AddEmbeddedFile(scene.Doc(), "a" + std::to_string(red) + ".png",
                                   engine::EncodePng(image).Take());
  };
  const std::string former = picture(1), other = picture(2);
  host::BaseShader* shader = scene.Bitmap(scene.GetMaterial("Red"), former);
  host::BaseContainer* look = scene.GetMaterial("Red")->GetDataInstance();
  host::BaseContainer* bitmap = shader->GetDataInstance();
  host::BaseContainer* light = scene.GetObject("Light")->GetDataInstance();
  host::BaseContainer* tag = scene.GetTag("Box0", host::Ttexture)->GetDataInstance();
  host::BaseContainer* shown = scene.GetTag("Box0", host::Tcompositing)->GetDataInstance();
  look->SetLink(host::MATERIAL_COLOR_SHADER, shader);
  struct Case {
    host::BaseContainer* data;
    host::LONG parameter;
    host::GeData value;
  };
  const host::GeData number(0.25), one(host::LONG{1}), none(host::LONG{0});
  const auto vector = [](double x, double y, double z) { return host::GeData(Vector(x, y, z)); };
  std::vector<Case> cases = {
      {look, host::MATERIAL_ALPHA_MODE, one},
      {look, host::MATERIAL_ALPHA_MODE, host::GeData(host::LONG{2})},
      {look, host::MATERIAL_DOUBLE_SIDED, none},
      {look, host::MATERIAL_LUMINANCE_SHADER, look->GetData(host::MATERIAL_COLOR_SHADER)},
      {bitmap, host::BITMAPSHADER_FILENAME, host::GeData(host::Filename(other.c_str()))},
      {bitmap, engine::kBitmapRotation, number},
      {bitmap, engine::kBitmapWrapU, one},
      {bitmap, engine::kBitmapWrapV, one},
      {bitmap, engine::kBitmapWrapV, host::GeData(host::LONG{2})},
      {bitmap, engine::kBitmapIsSharp, one},
      {light, host::LIGHT_TYPE, one},
      {light, host::LIGHT_SHADOW, one}};
  for (const host::LONG id :
       {host::MATERIAL_ALPHA, host::MATERIAL_ALPHA_CUTOFF, host::MATERIAL_SPECULAR,
        host::MATERIAL_ROUGHNESS, host::MATERIAL_METALLIC, engine::kMaterialTransmission,
        engine::kMaterialNormalStrength, engine::kMaterialOcclusion})
    cases.push_back({look, id, number});
  for (const host::LONG id : {host::LIGHT_BRIGHTNESS, host::LIGHT_INNER_ANGLE,
                              host::LIGHT_OUTER_ANGLE, host::LIGHT_RANGE, engine::kLightRadius})
    cases.push_back({light, id, number});
  for (const host::LONG id : {host::COMPOSITINGTAG_CASTSHADOW, host::COMPOSITINGTAG_RECEIVESHADOW,
                              host::COMPOSITINGTAG_SEENBYCAMERA})
    cases.push_back({shown, id, none});
  for (const auto& [data, id] : {std::pair(look, host::MATERIAL_COLOR),
                                 {look, host::MATERIAL_LUMINANCE},
                                 {bitmap, engine::kBitmapOffset},
                                 {bitmap, engine::kBitmapTiles},
                                 {light, host::LIGHT_COLOR},
                                 {tag, host::TEXTURETAG_OFFSET},
                                 {tag, host::TEXTURETAG_TILES}}) {
    cases.push_back({data, id, vector(0.25, 0, 0)});
    cases.push_back({data, id, vector(0, 0.25, 0)});
  }
  engine::RenderCaches caches;
  const auto plain = Read(scene.Doc(), caches);
  std::set<std::uint64_t> prints = {plain.fingerprint};
  for (const Case& test : cases) {
    const host::BaseContainer before = *test.data;
    test.data->SetData(test.parameter, test.value);
    EXPECT_TRUE(prints.insert(Read(scene.Doc(), caches).fingerprint).second) << test.parameter;
    *test.data = before;
    EXPECT_EQ(Read(scene.Doc(), caches).fingerprint, plain.fingerprint);
  }
}

TEST(SceneScan, LeavesOutWhatIsScaledToNothingOrTooFar) {
  struct Case {
    Vector off, height;
    bool isUsed;
  };
  const Case cases[] = {
      {Vector(0), Vector(0, 1e-7, 0), true},       {Vector(0), Vector(0, 1e-9, 0), false},
      {Vector(0), Vector(0, 9e5, 0), true},        {Vector(0), Vector(0, 2e6, 0), false},
      {Vector(0, -9e8, 0), Vector(0, 1, 0), true}, {Vector(0, -1e9, 0), Vector(0, 1, 0), false}};
  SceneBuilder scene;
  for (const Case& test : cases) {
    SceneBuilder alone;
    for (SceneBuilder* each : {&scene, &alone}) {
      host::Matrix frame;
      frame.off = test.off;
      frame.v2 = test.height;
      each->Cube("Cube").Last()->SetMl(frame);
    }
    engine::RenderCaches caches;
    EXPECT_EQ(Read(alone.Doc(), caches).instances.size(), test.isUsed ? 1U : 0U) << test.off.y;
  }
  engine::RenderCaches caches;
  EXPECT_EQ(Read(scene.Doc(), caches).notes,
            std::vector<std::string>{"3 objects are scaled to nothing or placed beyond all bounds "
                                     "and were left out."});
}

TEST(SceneScan, LightsAreWithinTheirBounds) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const auto read = [](const std::function<void(host::BaseContainer&)>& change) {
    SceneBuilder scene;
    scene.Object("Light", host::Olight);
    scene.Last()->GetDataInstance()->FlushAll();
    change(*scene.Last()->GetDataInstance());
    engine::RenderCaches caches;
    return Read(scene.Doc(), caches).lights;
  };
  const auto real = [&](host::LONG id, double value) {
    return read([=](host::BaseContainer& data) { data.SetReal(id, value); });
  };
  const engine::LightSource usual = read([](host::BaseContainer&) {}).at(0);
  EXPECT_EQ(usual.kind, engine::LightSource::Kind::Point);
  EXPECT_EQ(usual.color, (engine::Vec{1, 1, 1}));
  EXPECT_TRUE(usual.castsShadows && usual.shown);
  EXPECT_NEAR(usual.outerCosine, std::cos(0.785 / 2), 1e-6);
  EXPECT_NEAR(usual.innerCosine, std::cos(0.523 / 2), 1e-6);
  EXPECT_NEAR(real(host::LIGHT_OUTER_ANGLE, 10).at(0).outerCosine, -1, 1e-6);
  EXPECT_NEAR(real(host::LIGHT_OUTER_ANGLE, -1).at(0).outerCosine, 1, 1e-6);
  EXPECT_NEAR(real(host::LIGHT_INNER_ANGLE, 10).at(0).innerCosine, usual.outerCosine, 1e-6);
  EXPECT_NEAR(real(host::LIGHT_INNER_ANGLE, -1).at(0).innerCosine, 1, 1e-6);
  EXPECT_EQ(real(host::LIGHT_RANGE, -5).at(0).range, 0);
  EXPECT_EQ(real(engine::kLightRadius, -5).at(0).radius, 0);
  EXPECT_TRUE(real(host::LIGHT_BRIGHTNESS, nan).empty());
  for (const auto& [type, kind] : {std::pair(-1, 0), {0, 0}, {3, 3}, {4, 4}, {9, 4}}) {
    const auto lights =
        read([as = type](host::BaseContainer& data) { data.SetLong(host::LIGHT_TYPE, as); });
    EXPECT_EQ(static_cast<int>(lights.at(0).kind), kind) << type;
  }
}

std::shared_ptr<const engine::PreparedScene> Prepared(const host::BaseDocument& doc,
                                                      engine::RenderCaches& caches) {
  return engine::PreparedScene::Make(Read(doc, caches), caches).Take();
}

std::unique_ptr<PictureInProgress> Drawn(const std::shared_ptr<const engine::PreparedScene>& scene,
                                         std::uint32_t width, std::uint32_t height,
                                         bool draft = false) {
  PictureSetup setup;
  setup.width = width;
  setup.height = height;
  setup.takesHits = true;
  setup.draft = draft;
  auto picture = PictureInProgress::Begin(scene, setup).Take();
  while (!picture->IsFinished()) picture->Refine();
  return picture;
}

TEST(HitMap, NamesWhatIsSeenAndWhere) {
  Row scene;
  engine::RenderCaches caches;
  const auto picture = Drawn(Prepared(scene.Doc(), caches), 120, 60);
  const engine::HitMap& hits = picture->Hits();
  int same = 0;
  for (std::uint32_t y = 0; y < 60; ++y) {
    for (std::uint32_t x = 0; x < 120; ++x) same += hits.ObjectAt(x, y) == picture->ObjectAt(x, y);
  }
  // A sample need not lie in the middle of its pixel.
  EXPECT_GT(same, 120 * 60 * 95 / 100);
  EXPECT_EQ(hits.ObjectAt(120, 3), 0U);
  EXPECT_FALSE(hits.PointAt(0, 0).has_value());
  int fronts = 0;
  for (std::uint32_t x = 0; x < 120; ++x) {
    const auto point = hits.PointAt(x, 30);
    if (!point) continue;
    EXPECT_LE(std::abs(point->z), 103) << x;
    fronts += std::abs(point->z + 100) < 1;
  }
  EXPECT_GT(fronts, 20);
}

TEST(HitMap, IsExactAroundWhatIsMarkedInADraft) {
  Row scene;
  scene.Select("Box0");
  engine::RenderCaches caches;
  const auto prepared = Prepared(scene.Doc(), caches);
  const std::vector<std::uint8_t>& marked = prepared->Scene().selected;
  const auto draft = Drawn(prepared, 100, 50, true);
  const engine::HitMap large = engine::Enlarged(draft->Hits(), 400, 200, marked, prepared->Rays());
  const auto whole = Drawn(prepared, 400, 200);
  const engine::NodeId box = engine::IdOf(*scene.GetObject("Box0"));
  int wrong = 0;
  int far = 0;
  int seen = 0;
  for (std::uint32_t y = 0; y < 200; ++y) {
    for (std::uint32_t x = 0; x < 400; ++x) {
      const bool isBox = whole->ObjectAt(x, y) == box;
      seen += isBox;
      wrong += (large.ObjectAt(x, y) == box) != isBox;
      if (!isBox || large.ObjectAt(x, y) != box || whole->Hits().ObjectAt(x, y) != box) continue;
      far += engine::Length(*large.PointAt(x, y) - *whole->Hits().PointAt(x, y)) > 8;
    }
  }
  EXPECT_GT(seen, 1000);
  EXPECT_EQ(wrong, 0);
  EXPECT_LT(far, seen / 20) << "but where it is seen from the side";
}

TEST(PictureInProgress, ShowsTilesWhileAPassRuns) {
  Row scene;
  engine::RenderCaches caches;
  PictureSetup setup;
  setup.width = 200;
  setup.height = 150;
  setup.threads = 1;
  auto picture = PictureInProgress::Begin(Prepared(scene.Doc(), caches), setup).Take();
  engine::Image image;
  std::size_t shown = 0;
  bool stopped = false;
  const auto progress = [&](double) {
    picture->ShowTiles(&image);
    std::size_t now = 0;
    for (std::size_t i = 3; i < image.bytes.size(); i += 4) now += image.bytes[i] == 255;
    EXPECT_GE(now, shown);
    shown = now;
    if (stopped || now < 200 * 150 / 2) return true;
    stopped = true;
    return false;
  };
  EXPECT_FALSE(picture->Refine(progress));
  EXPECT_TRUE(picture->Current().bytes.empty());
  EXPECT_TRUE(picture->Refine(progress));
  const engine::Image pass = picture->Current();
  for (std::size_t i = 0; i < pass.bytes.size(); i += 4) {
    const bool isShown = image.bytes[i + 3] == 255;
    ASSERT_EQ(isShown ? image.bytes[i] : pass.bytes[i], pass.bytes[i]) << i;
  }
}

TEST(PictureInProgress, IsWholeWhateverItsSize) {
  Row scene;
  engine::RenderCaches caches;
  const auto prepared = Prepared(scene.Doc(), caches);
  for (const std::uint32_t side : {1U, 15U, 16U, 17U, 31U, 32U, 33U, 64U, 65U}) {
    for (const auto& [width, height] : {std::pair(side, 3U), {3U, side}}) {
      const auto bytes = Drawn(prepared, width, height, true)->Current().bytes;
      std::size_t set = 0;
      for (std::size_t i = 3; i < bytes.size(); i += 4) set += bytes[i] == 255 && bytes[i - 1] > 0;
      EXPECT_EQ(set, 3 * side) << width << " x " << height;
    }
  }
}

TEST(PictureInProgress, ItsLightIsWhatItShows) {
  Row scene;
  PictureSetup setup;
  setup.width = 64;
  setup.height = 48;
  setup.isLinear = true;
  engine::RenderCaches caches;
  auto picture = PictureInProgress::Begin(Prepared(scene.Doc(), caches), setup).Take();
  EXPECT_TRUE(picture->Light().floats.empty());
  while (!picture->IsFinished()) picture->Refine();
  const engine::Image light = picture->Light();
  const engine::Image shown = picture->Current();
  ASSERT_EQ(light.floats.size(), shown.bytes.size());
  int wrong = 0;
  int plain = 0;  // that no shoulder bends
  for (std::size_t i = 0; i < light.floats.size(); ++i) {
    wrong += i % 4 == 3 && light.floats[i] != 1;
    if (i % 4 == 3 || light.floats[i] > 0.8F) continue;
    ++plain;
    wrong += std::abs(engine::LinearToSrgb(light.floats[i]) - shown.bytes[i]) > 1;
  }
  EXPECT_EQ(wrong, 0);
  EXPECT_GT(plain, 64 * 48);
}

TEST(PictureInProgress, TellsItsCallerWhatIsThrownWhileAPassRuns) {
  Row scene;
  engine::RenderCaches caches;
  PictureSetup setup;
  setup.width = 200;
  setup.height = 150;
  setup.threads = 3;
  auto picture = PictureInProgress::Begin(Prepared(scene.Doc(), caches), setup).Take();
  const auto throws = [](double done) -> bool {
    if (done > 0) throw std::bad_alloc();
    return true;
  };
  EXPECT_THROW(picture->Refine(throws), std::bad_alloc);
  EXPECT_TRUE(picture->Refine({}));
}

TEST(Framing, ShowsWhatIsAskedForAsTheCameraIsTurned) {
  Row scene;
  scene.Select("Box3");
  engine::RenderCaches caches;
  const auto prepared = Prepared(scene.Doc(), caches);
  for (const bool parallel : {false, true}) {
    engine::PictureCamera like = prepared->Scene().camera;
    like.isParallel = parallel;
    const auto points = engine::OutlineOf(prepared->Scene(), &prepared->Scene().selected);
    const engine::PictureCamera camera = engine::FramingCameraLike(like, points, 1.5);
    EXPECT_EQ(camera.frame.v3, like.frame.v3);
    PictureSetup setup;
    setup.width = 150;
    setup.height = 100;
    setup.camera = camera;
    setup.draft = true;
    setup.takesHits = true;
    auto picture = PictureInProgress::Begin(prepared, setup).Take();
    picture->Refine();
    const engine::NodeId box = engine::IdOf(*scene.GetObject("Box3"));
    EXPECT_EQ(picture->ObjectAt(75, 50), box);
    int high = 0;
    for (std::uint32_t y = 0; y < 100; ++y) high += picture->ObjectAt(75, y) == box;
    EXPECT_GT(high, 75);
    EXPECT_NE(picture->ObjectAt(75, 0), box);
    EXPECT_NE(picture->ObjectAt(75, 99), box);
  }
}

// How much of a picture the points take up: to the left, to the right, downwards and upwards.
std::array<double, 4> Extent(const engine::PictureCamera& camera, double aspect,
                             const std::vector<engine::Vec>& points) {
  std::array<double, 4> extent{1e9, -1e9, 1e9, -1e9};
  const double wide = camera.isParallel        ? camera.width / 2
                      : camera.fovVertical > 0 ? std::tan(camera.fovVertical / 2) * aspect
                                               : std::tan(camera.fov / 2);
  for (const engine::Vec& point : points) {
    const Vector way =
        engine::Sum(Vector(point.x, point.y, point.z), engine::Scaled(camera.frame.off, -1));
    const auto along = [&way](const Vector& axis) {
      return engine::DotOf(way, engine::UnitOf(axis));
    };
    const double depth = along(camera.frame.v3);
    EXPECT_GT(depth, 0);
    const double x = along(camera.frame.v1) / wide / (camera.isParallel ? 1 : depth);
    const double y = along(camera.frame.v2) / wide * aspect / (camera.isParallel ? 1 : depth);
    extent = {std::min(extent[0], x), std::max(extent[1], x), std::min(extent[2], y),
              std::max(extent[3], y)};
  }
  return extent;
}

TEST(Framing, PutsWhatItShowsIntoTheMiddleWithAMargin) {
  const std::vector<engine::Vec> clouds[] = {
      {{1000, 20, 3000}, {1400, 60, 3100}, {1100, -300, 2900}, {1390, 0, 2500}, {1010, 10, 3300}},
      {{-5, 0, 0}, {5, 1, 2}},
      {{0, -700, 0}, {10, 700, 30}, {-8, 0, 90}}};
  for (const auto& cloud : clouds) {
    for (const double aspect : {0.4, 1.0, 2.5}) {
      engine::PictureCamera like = engine::FramingCamera(cloud, aspect);
      EXPECT_NEAR(std::atan2(-like.frame.v3.x, like.frame.v3.z), 0.65, 1e-6);
      EXPECT_NEAR(like.frame.v3.y, -0.42313, 1e-4);
      EXPECT_NEAR(engine::FramingCamera(cloud, aspect, -2).frame.v3.x, std::sin(2.0) * 0.906, 1e-3);
      like.frame.v1 = engine::Scaled(like.frame.v1, 3);
      for (int kind = 0; kind < 4; ++kind) {
        like.isParallel = kind == 1;
        like.fovVertical = kind == 2 ? 0.3 : kind == 3 ? 0.9 : 0;
        const engine::PictureCamera camera = engine::FramingCameraLike(like, cloud, aspect);
        const auto [left, right, low, high] = Extent(camera, aspect, cloud);
        EXPECT_NEAR(std::max(right, high), 1 / 1.1, 0.02) << aspect << " " << kind;
        EXPECT_NEAR(left + right, 0, 0.02) << aspect << " " << kind;
        EXPECT_NEAR(low + high, 0, 0.02) << aspect << " " << kind;
      }
    }
  }
  const auto [left, right, low, high] =
      Extent(engine::FramingCamera({}, 1.5), 1.5, {{-100, -100, -100}, {100, 100, 100}});
  EXPECT_NEAR(left + right, 0, 0.02) << "the origin where there is nothing";
  EXPECT_NEAR(low + high, 0, 0.02);
  EXPECT_NEAR(std::max(right, high), 1 / 1.1, 0.02);
}

TEST(Framing, LooksAtEveryCornerOfASmallMesh) {
  SceneBuilder scene;
  scene.Object("Triangle", host::Opolygon);
  engine::Mesh mesh;
  mesh.points = {{-300, 0, 0}, {50, 0, 0}, {0, 70, 0}};
  mesh.polygons = {{0, 1, 2, -1}};
  engine::SetMesh(*scene.Last(), std::make_shared<const engine::Mesh>(mesh));
  engine::RenderCaches caches;
  engine::Box box;
  for (const engine::Vec& p : engine::OutlineOf(Prepared(scene.Doc(), caches)->Scene(), nullptr))
    box.Add(p);
  EXPECT_EQ(box.low, (engine::Vec{-300, 0, 0}));
  EXPECT_EQ(box.high, (engine::Vec{50, 70, 0}));
}

TEST(Framing, APictureShowsAllOfAViewAndNoMore) {
  engine::EditorView view;
  view.aspect = 0.8;
  const auto halves = [](const engine::PictureCamera& camera, double aspect) {
    if (camera.isParallel) return std::pair(camera.width / 2, camera.width / 2 / aspect);
    const double vertical = std::tan(camera.fovVertical / 2);
    const double horizontal = camera.fovVertical > 0 ? vertical * aspect : std::tan(camera.fov / 2);
    return std::pair(horizontal, horizontal / aspect);
  };
  for (const bool parallel : {false, true}) {
    for (const double vertical : {0.0, 0.7}) {
      view.camera.isParallel = parallel;
      view.camera.fovVertical = vertical;
      const auto [wide, high] = halves(view.camera, view.aspect);
      for (const double aspect : {0.3, 0.8, 1.3333, 3.0}) {
        const auto [w, h] = halves(engine::ShowingAllOf(view, aspect), aspect);
        EXPECT_NEAR(std::min(w / wide, h / high), 1, 1e-9)
            << parallel << " " << vertical << " " << aspect;
      }
    }
  }
}

TEST(Framing, AnglesThatNoLensHasAreTheNearestThatOneHas) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const struct {
    double asked, meant;
  } kRows[] = {{3.2, 3.1}, {7, 3.1}, {0, 0.001}, {-1, 0.001}, {nan, 0.001}, {1, 1}};
  for (const auto& row : kRows) {
    for (const bool vertical : {false, true}) {
      const auto corner = [vertical](double angle) {
        engine::PictureCamera camera;
        (vertical ? camera.fovVertical : camera.fov) = angle;
        return engine::RayCamera(camera, 64, 48).Through(0, 0).direction;
      };
      // No vertical angle is that which goes with the horizontal one.
      if (vertical && !(row.asked > 0)) continue;
      EXPECT_EQ(corner(row.asked), corner(row.meant)) << row.asked;
      EXPECT_NE(corner(0.0011), corner(0.001));
      EXPECT_NE(corner(3.09), corner(3.1));
    }
  }
  engine::PictureCamera camera;
  camera.near = 10;
  camera.far = 300;
  const engine::Ray ray = engine::RayCamera(camera, 64, 48).Through(0, 0);
  EXPECT_NEAR(ray.direction.z * ray.near, 10, 1e-3) << "along the camera's axis";
  EXPECT_NEAR(ray.direction.z * ray.far, 300, 1e-2);
}

// A preview is rendered from a copy.
TEST(EditorView, IsRenderedFromACopyUnlessThereIsASceneCamera) {
  Row scene;
  engine::EditorView view;
  view.camera.frame.off = {12, 34, -2000};
  engine::SetEditorView(scene.Doc(), view);
  PictureSetup setup;
  setup.width = setup.height = 16;
  engine::RenderCaches caches;
  const auto seenFrom = [&] {
    const engine::OwnedDocument copy(
        static_cast<host::BaseDocument*>(scene.Doc().GetClone(host::COPY_DOCUMENT, nullptr)));
    const auto begun = PictureInProgress::Begin(*copy, SystemFiles(), setup, caches);
    const Vector place = begun.Value()->Camera().frame.off;
    return place;
  };
  EXPECT_EQ(seenFrom(), Vector(0, 0, -1500));
  scene.LookThrough("");
  EXPECT_EQ(seenFrom(), view.camera.frame.off);
  engine::SetEditorView(scene.Doc(), std::nullopt);
  EXPECT_NE(seenFrom(), view.camera.frame.off);
}

TEST(PreparedScene, CanBeStoppedAndSharedByCameras) {
  Row scene;
  engine::RenderCaches caches;
  EXPECT_FALSE(
      engine::PreparedScene::Make(Read(scene.Doc(), caches), caches, [](double) { return false; }));
  const auto prepared = Prepared(scene.Doc(), caches);
  scene.Delete("Box0");
  const auto front = Drawn(prepared, 60, 40)->Current().bytes;
  const auto again = Drawn(prepared, 60, 40)->Current().bytes;
  EXPECT_EQ(front, again);
}

}  // namespace
