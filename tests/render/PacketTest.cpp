// Rays that are traced together find what each of them finds by itself.
#include <gtest/gtest.h>

#include "engine/render/PreparedScene.h"
#include "engine/render/Shading.h"
#include "engine/scene/PictureParameters.h"
#include "host/Host.h"
#include "tests/support/SceneBuilder.h"
#include "tests/support/ScriptedServices.h"

namespace {

using engine::kPacketSize;
using engine::PerRay;
using engine::Shading;
using host::Vector;

constexpr std::uint32_t kWidth = 64;
constexpr std::uint32_t kHeight = 48;

// Glass, rough and polished metal, a plain floor, a large lamp and the sun.
void Furnish(tests::SceneBuilder& scene) {
  const auto data = [&](const char* path) -> host::BaseContainer& {
    return *scene.GetObject(path)->GetDataInstance();
  };
  int count = 0;
  for (const auto& [name, metallic, roughness, transmission] : {std::tuple{"Glass", 0.0, 0.1, 0.8},
                                                                {"Brushed", 1.0, 0.4, 0.0},
                                                                {"Mirror", 1.0, 0.0, 0.0}}) {
    scene.Material(name, Vector(0.8, 0.6, 0.4)).Object(name, host::Osphere).Texture(name, name);
    scene.At(name, -150.0 + 150 * count++, 0, 0);
    data(name).SetReal(host::PRIM_RADIUS, 90);
    host::BaseContainer& look = *scene.GetMaterial(name)->GetDataInstance();
    look.SetReal(host::MATERIAL_METALLIC, metallic);
    look.SetReal(host::MATERIAL_ROUGHNESS, roughness);
    look.SetReal(engine::kMaterialTransmission, transmission);
  }
  scene.Object("Floor", host::Oplane).At("Floor", 0, -90, 0).Cube("Box").At("Box", 40, 0, 200);
  scene.Object("Lamp", host::Olight).At("Lamp", 0, 400, -300).Object("Sun", host::Olight);
  data("Lamp").SetReal(engine::kLightRadius, 60);
  data("Lamp").SetLong(host::LIGHT_SHADOW, 1);
  data("Sun").SetLong(host::LIGHT_TYPE, 3);
  data("Sun").SetLong(host::LIGHT_SHADOW, 1);
}

struct Seen {
  PerRay<engine::Vec> light;
  PerRay<engine::FirstHit> first;
};

// Whether two looks saw the same, but for what a ray is bent by a last bit.
bool AreAlike(const Seen& a, std::size_t i, const Seen& b, std::size_t k) {
  const engine::Vec d = a.light[i] - b.light[k];
  return a.first[i].instance == b.first[k].instance &&
         std::abs(a.first[i].distance - b.first[k].distance) < 0.01F &&
         std::max({std::abs(d.x), std::abs(d.y), std::abs(d.z)}) < 1e-3F;
}

// Looks at places far apart, so that nearly every packet has rays of several kinds.
PerRay<Shading::Look> LooksFrom(std::uint32_t place, std::uint32_t step, std::size_t count) {
  PerRay<Shading::Look> looks;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint32_t pixel = place + i * step;
    const std::uint32_t row = pixel / kWidth;
    looks[i] = {static_cast<float>(pixel % kWidth) + 0.5F, static_cast<float>(row) + 0.5F, pixel,
                i};
  }
  return looks;
}

TEST(Packets, SeeWhatEachOfTheirRaysSees) {
  tests::SceneBuilder scene;
  Furnish(scene);
  const tests::ScriptedServices services;
  engine::RenderCaches caches;
  const auto prepared = engine::PreparedScene::Make(
      engine::ReadScenePicture(scene.Doc(), services.Get().files, {}, caches), caches);
  ASSERT_TRUE(prepared) << prepared.Message();
  const engine::RayCamera camera(prepared.Value()->UsualCamera(double{kWidth} / kHeight), kWidth,
                                 kHeight);
  const Shading shading(prepared.Value()->Scene(), prepared.Value()->Rays(), camera);
  std::size_t hits = 0;
  std::size_t different = 0;
  const std::uint32_t places = kWidth * kHeight / kPacketSize;
  for (std::uint32_t place = 0; place < places; ++place) {
    // Not always all of a packet.
    const std::size_t count = 2 + place % (kPacketSize - 1);
    const PerRay<Shading::Look> looks = LooksFrom(place, places, count);
    Seen together;
    together.light = shading.LightAt(looks, count, &together.first);
    for (std::size_t i = 0; i < count; ++i) {
      Seen alone;
      alone.light = shading.LightAt({looks[i]}, 1, &alone.first);
      hits += alone.first[0].instance != nullptr;
      different += !AreAlike(together, i, alone, 0);
    }
    for (std::size_t i = count; i < kPacketSize; ++i) EXPECT_FALSE(together.first[i].instance);
  }
  EXPECT_GT(hits, places);
  EXPECT_LT(different, hits / 100);
}

// The ray tracer would end the process over some of these.
TEST(Packets, RaysThatLeadNowhereFindNothing) {
  tests::SceneBuilder scene;
  Furnish(scene);
  const tests::ScriptedServices services;
  engine::RenderCaches caches;
  const auto prepared = engine::PreparedScene::Make(
      engine::ReadScenePicture(scene.Doc(), services.Get().files, {}, caches), caches);
  ASSERT_TRUE(prepared) << prepared.Message();
  const engine::RayScene& rays = prepared.Value()->Rays();
  const engine::RayCamera camera({}, kWidth, kHeight);
  const engine::Ray sane{{0, 0, -500}, {0, 0, 1}};
  constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
  using Change = void (*)(engine::Ray&);
  const std::pair<const char*, Change> kRows[] = {
      {"x is no number", [](engine::Ray& ray) { ray.origin.x = kNan; }},
      {"y is no number", [](engine::Ray& ray) { ray.origin.y = kNan; }},
      {"z is no number", [](engine::Ray& ray) { ray.origin.z = kNan; }},
      {"too far", [](engine::Ray& ray) { ray.origin.z = -5e9F; }},
      {"no direction", [](engine::Ray& ray) { ray.direction = {}; }},
      {"a direction that is no number", [](engine::Ray& ray) { ray.direction.z = kNan; }},
      {"a long direction", [](engine::Ray& ray) { ray.direction.z = 1.03F; }},
      {"a short direction", [](engine::Ray& ray) { ray.direction.z = 0.97F; }},
      {"behind", [](engine::Ray& ray) { ray.near = -1; }},
      {"no begin", [](engine::Ray& ray) { ray.near = kNan; }},
      {"no end", [](engine::Ray& ray) { ray.far = kNan; }},
      {"an end before the begin", [](engine::Ray& ray) { ray.far = -1; }}};
  engine::SurfaceHit surface;
  EXPECT_TRUE(rays.FindVisible(sane, camera, &surface));
  for (const auto& [what, spoil] : kRows) {
    PerRay<engine::Ray> packet;
    packet.fill(sane);
    for (std::size_t i = 1; i < kPacketSize; i += 2) spoil(packet[i]);
    EXPECT_FALSE(rays.FindVisible(packet[1], camera, &surface)) << what;
    PerRay<engine::SurfaceHit> surfaces;
    const engine::Lanes all = engine::Lanes::First(kPacketSize);
    const engine::Lanes seen = rays.FindVisible(packet, all, camera, &surfaces);
    const engine::Lanes blocked = rays.FindBlocked(packet, all);
    EXPECT_TRUE(rays.FindBlocked(packet, engine::Lanes::First(1)));
    engine::Lanes second = engine::Lanes::First(2);
    second.Remove(0);
    EXPECT_FALSE(rays.FindBlocked(packet, second)) << what;
    for (std::size_t i = 0; i < kPacketSize; ++i) {
      EXPECT_EQ(seen.Has(i), i % 2 == 0) << what;
      EXPECT_EQ(blocked.Has(i), i % 2 == 0) << what;
    }
  }
}

}  // namespace
