// What does a picture cost beside the bare search for what its rays hit? Spheres of a mesh of their
// own each, then the same number of instances of one mesh; prepared for the first time, prepared
// again after a switch, and rendered on one thread. The baseline is one ray a pixel that looks for
// the nearest surface and does nothing with it.
#include <cstdio>
#include <ctime>
#include <functional>
#include <string>

#include "engine/outside/SystemServices.h"
#include "engine/render/Primitives.h"
#include "engine/render/Renderer.h"
#include "engine/scene/DocumentState.h"
#include "host/Host.h"
#include "tests/support/SceneBuilder.h"

namespace {

constexpr std::uint32_t kWidth = 640;
constexpr std::uint32_t kHeight = 480;

// Of this process, all threads together, so that other programs on the machine count little.
double Milliseconds(const std::function<void()>& work) {
  const std::clock_t begin = std::clock();
  work();
  return 1000.0 * static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
}

std::shared_ptr<const engine::Mesh> Sphere(host::LONG segments) {
  host::BaseContainer data;
  data.SetReal(host::PRIM_RADIUS, 40);
  data.SetLong(host::PRIM_SEGMENTS, segments);
  return std::make_shared<const engine::Mesh>(engine::MakePrimitive(host::Osphere, data));
}

void Fill(tests::SceneBuilder& scene, int side, host::LONG segments, bool shared) {
  const std::shared_ptr<const engine::Mesh> one = Sphere(segments);
  for (int i = 0; i < side * side * side; ++i) {
    const std::string name = "S" + std::to_string(i);
    scene.Object(name, host::Opolygon)
        .At(name, i % side * 100, i / side % side * 100, i / side / side * 100);
    engine::SetMesh(*scene.Last(), shared ? one : Sphere(segments));
  }
}

// Where the textures of scenes are looked for.
engine::FileSystem& Files() {
  static const engine::SystemServices services;
  return services.Get().files;
}

std::unique_ptr<engine::PictureInProgress> Begin(const host::BaseDocument& doc,
                                                 engine::RenderCaches& caches) {
  return engine::PictureInProgress::Begin(doc, Files(), {kWidth, kHeight, {}, {}, 1, false}, caches)
      .Take();
}

// The bare search.
double SearchTime(const host::BaseDocument& doc, engine::RenderCaches& caches) {
  engine::ScenePicture scene = engine::ReadScenePicture(doc, Files(), {}, caches);
  scene.camera = engine::FramingCamera(engine::OutlineOf(scene), double{kWidth} / kHeight);
  const engine::RayScene rays(scene, caches.Device());
  const engine::RayCamera camera(scene.camera, kWidth, kHeight);
  std::size_t hits = 0;
  const double time = Milliseconds([&] {
    for (std::uint32_t y = 0; y < kHeight; ++y) {
      for (std::uint32_t x = 0; x < kWidth; ++x)
        hits += rays.IsBlocked(camera.Through(static_cast<float>(x), static_cast<float>(y)));
    }
  });
  std::printf("  %zu of %u rays hit something\n", hits, kWidth * kHeight);
  return time;
}

void Measure(const char* name, int side, host::LONG segments, bool shared) {
  tests::SceneBuilder scene;
  Fill(scene, side, segments, shared);
  engine::RenderCaches caches;
  std::unique_ptr<engine::PictureInProgress> picture;
  std::printf("%s: %d objects, %zu polygons\n", name, side * side * side,
              engine::CountScene(scene.Doc()).polygons);
  const double first = Milliseconds([&] { picture = Begin(scene.Doc(), caches); });
  scene.Modes("S0", host::MODE_UNDEF, host::MODE_OFF);
  const double again = Milliseconds([&] { picture = Begin(scene.Doc(), caches); });
  const double search = SearchTime(scene.Doc(), caches);
  const double draft = Milliseconds([&] { picture->Refine(); });
  const double rest = Milliseconds([&] {
    while (!picture->IsFinished()) picture->Refine();
  });
  std::unique_ptr<engine::PictureInProgress> quick =
      engine::PictureInProgress::Begin(scene.Doc(), Files(), {kWidth, kHeight, {}, {}, 1, true},
                                       caches)
          .Take();
  const double moving = Milliseconds([&] { quick->Refine(); });
  std::printf("  prepared first %10.1f ms\n  after a switch %10.1f ms\n", first, again);
  std::printf("  search alone   %10.1f ms\n", search);
  std::printf("  quick draft    %10.1f ms (%.1f times the search)\n", moving, moving / search);
  std::printf("  first pass     %10.1f ms (%.1f times the search)\n", draft, draft / search);
  std::printf("  whole picture  %10.1f ms (%.1f times the search)\n", draft + rest,
              (draft + rest) / search);
}

}  // namespace

int main() {
  Measure("Meshes of their own", 8, 64, false);
  Measure("One mesh, many instances", 8, 64, true);
  Measure("Very many instances", 30, 16, true);
  return 0;
}
