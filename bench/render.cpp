// Cost of a picture beside the bare search for the hits of its rays: spheres with a mesh of their
// own each, then the same number of instances of one mesh; prepared for the first time, prepared
// again after a switch, and rendered on one thread. The baseline is the very rays of the picture,
// traced once more with nothing around them (KeptRays.h).
#include <cstdio>
#include <string>

#include "bench/KeptRays.h"
#include "engine/outside/SystemServices.h"
#include "engine/render/Primitives.h"
#include "engine/render/Renderer.h"
#include "engine/scene/DocumentState.h"
#include "host/Host.h"
#include "tests/support/SceneBuilder.h"

namespace {

constexpr std::uint32_t kWidth = 320;
constexpr std::uint32_t kHeight = 240;

template <class Work>
double Milliseconds(const Work& work) {
  return 1e3 * Seconds(work);
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

// Renders the whole picture once to keep its rays; the bare search for them.
double SearchTime(const host::BaseDocument& doc, engine::RenderCaches& caches) {
  const auto picture = Begin(doc, caches);
  tracing.rays.clear();
  tracing.keeps = true;
  while (!picture->IsFinished()) picture->Refine();
  tracing.keeps = false;
  std::printf("  %zu rays\n", tracing.rays.size());
  return 1e3 * TraceAgain();
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
  std::printf("  quick draft    %10.1f ms\n  first pass     %10.1f ms\n", moving, draft);
  std::printf("  whole picture  %10.1f ms (%.2f times the search)\n", draft + rest,
              (draft + rest) / search);
}

}  // namespace

int main() {
  Measure("Meshes of their own", 8, 64, false);
  Measure("One mesh, many instances", 8, 64, true);
  Measure("Very many instances", 30, 16, true);
  return 0;
}
