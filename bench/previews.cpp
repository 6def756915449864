// Cost of a preview beside the ray tracer alone (KeptRays.h). One thread, processor time, pictures
// of 160 x 120. A preview traces rays together and the baseline does not, so that a share may be
// more than a hundred.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/KeptRays.h"
#include "engine/application/Application.h"
#include "engine/outside/SystemServices.h"
#include "engine/render/Renderer.h"
#include "engine/scene/DocumentState.h"
#include "engine/scene/TreeWalk.h"
#include "host/Host.h"
#include "source/Stagemarks/keys/Gadgets.h"
#include "tests/support/PluginSession.h"
#include "tests/support/SceneBuilder.h"
#include "tests/support/ScriptedServices.h"

namespace {

using engine::PictureInProgress;
using host::LONG;

void Require(bool holds, const std::string& what) {
  if (holds) return;
  std::fprintf(stderr, "%s\n", what.c_str());
  std::exit(1);
}

engine::PictureSetup Preview() {
  engine::PictureSetup setup;
  setup.width = 160;
  setup.height = 120;
  setup.threads = 1;
  return setup;
}

constexpr std::size_t kRounds = 5;

double Median(std::array<double, kRounds> numbers) {
  std::ranges::sort(numbers);
  return numbers[kRounds / 2];
}

struct Costs {
  double preparing = 0;  // seconds: reading the document and building
  double building = 0;   // seconds of that inside the ray tracer
  double rendering = 0;  // seconds
};

// Where the textures of scenes are looked for.
engine::FileSystem& Files() {
  static const engine::SystemServices services;
  return services.Get().files;
}

Costs Render(const host::BaseDocument& doc, engine::RenderCaches& caches,
             std::unique_ptr<PictureInProgress>* kept = nullptr) {
  Costs costs;
  const double before = tracing.building;
  std::unique_ptr<PictureInProgress> picture;
  costs.preparing = Seconds([&] {
    auto begun = PictureInProgress::Begin(doc, Files(), Preview(), caches);
    Require(begun.Ok(), begun.Message());
    picture = begun.Take();
  });
  costs.building = tracing.building - before;
  costs.rendering = Seconds([&] {
    while (!picture->IsFinished()) picture->Refine();
  });
  if (kept) *kept = std::move(picture);
  return costs;
}

void Line(const char* what, const Costs& costs, double rays) {
  std::printf("  %-36s %9.2f %9.2f %9.2f %9.2f\n", what, 1e3 * costs.preparing,
              1e3 * costs.building, 1e3 * costs.rendering, rays / costs.rendering / 1e6);
}

std::size_t Triangles(const host::BaseDocument& doc) { return engine::CountScene(doc).polygons; }

// Changes every switch and material that moves no geometry.
void ChangeLooks(host::BaseDocument& doc) {
  for (auto* material = doc.GetFirstMaterial(); material; material = material->GetNext()) {
    material->GetDataInstance()->SetVector(host::MATERIAL_COLOR, host::Vector(0.3, 0.5, 0.7));
  }
  LONG count = 0;
  for (auto* object = doc.GetFirstObject(); object; object = engine::NextInTree(object)) {
    if (++count % 3 == 0) object->SetRenderMode(host::MODE_OFF);
  }
}

void Measure(const std::string& name, host::BaseDocument& doc) {
  engine::RenderCaches caches;
  std::printf("%s: %zu polygons\n  %-36s %9s %9s %9s %9s\n", name.c_str(), Triangles(doc), "",
              "prepare", "of it BVH", "render", "Mrays/s");
  tracing.rays.clear();
  const Costs first = Render(doc, caches);
  const std::size_t built = caches.WorkDone().geometries;
  const Costs second = Render(doc, caches);
  tracing.keeps = true;
  std::unique_ptr<PictureInProgress> picture;
  Render(doc, caches, &picture);
  tracing.keeps = false;
  const auto rays = static_cast<double>(tracing.rays.size());
  std::array<double, kRounds> plains;
  std::array<double, kRounds> shares;
  for (std::size_t i = 0; i < kRounds; ++i) {
    const double rendering = Render(doc, caches).rendering;
    plains[i] = TraceAgain();
    shares[i] = plains[i] / rendering;
  }
  const double plain = Median(plains);
  Line("first preview, ms", first, rays);
  Line("second preview, ms", second, rays);
  std::printf("  %-36s %9.2f\n", "prepared beside the BVH, ms",
              1e3 * (first.preparing - first.building));
  std::printf("  %-36s %9s %9.2f %9.2f %9.2f\n", "the ray tracer alone, ray by ray, ms", "",
              1e3 * first.building, 1e3 * plain, rays / plain / 1e6);
  std::printf("  %-36s %9.0f rays, %.1f %% of the time is the rays'\n",
              "median of further previews", rays, 100 * Median(shares));
  ChangeLooks(doc);
  const Costs changed = Render(doc, caches);
  std::printf("  %-36s %9.2f %9.2f %9.2f   built anew: %zu\n\n", "other switches and materials, ms",
              1e3 * changed.preparing, 1e3 * changed.building, 1e3 * changed.rendering,
              caches.WorkDone().geometries - built);
}

void MeasureSample(const std::string& file) {
  tests::ScriptedServices services;
  engine::ApplicationSetup setup;
  setup.importWorker = TEST_BINARY_DIR "/bin/stagemarks";
  engine::Application application(services.Get(), setup);
  const auto opened = application.OpenDocument(TEST_SOURCE_DIR "/scenes/" + file);
  Require(opened.Ok(), opened.Message());
  Measure(file, *opened.Value());
}

// Hills of about that many triangles.
std::shared_ptr<const engine::Mesh> Hills(std::size_t triangles) {
  auto mesh = std::make_shared<engine::Mesh>();
  const auto side = static_cast<std::int32_t>(std::sqrt(static_cast<double>(triangles) / 2));
  for (std::int32_t z = 0; z <= side; ++z) {
    for (std::int32_t x = 0; x <= side; ++x) {
      const auto fx = static_cast<float>(x);
      const auto fz = static_cast<float>(z);
      mesh->points.push_back(
          {fx, 40 * std::sin(fx * 0.02F) * std::cos(fz * 0.03F) + 2 * std::sin(fx * 0.7F + fz),
           fz});
    }
  }
  for (std::int32_t i = 0; i < side * side; ++i) {
    const std::int32_t corner = i / side * (side + 1) + i % side;
    mesh->polygons.push_back({corner, corner + 1, corner + side + 2, corner + side + 1});
  }
  return mesh;
}

void MeasureHills(std::size_t triangles) {
  tests::SceneBuilder scene;
  scene.Material("Grass", host::Vector(0.2, 0.5, 0.1))
      .Object("Hills", host::Opolygon)
      .Texture("Hills", "Grass");
  engine::SetMesh(*scene.Last(), Hills(triangles));
  Measure("hills of " + std::to_string(triangles) + " triangles", scene.Doc());
}

void MeasureRecording(std::size_t triangles) {
  tests::PluginSession session;
  tests::SceneBuilder scene(session.Doc());
  scene.Object("Hills", host::Opolygon);
  engine::SetMesh(*scene.Last(), Hills(triangles));
  session.PretendSaved("shot.c4d");
  std::printf("Recording ten Stagemarks of %zu triangles with previews\n", triangles);
  for (const bool preview : {false, true}) {
    session.Tick(stagemarks::kGeneratePreview, preview);
    const std::size_t before = engine::RenderCaches::Shared().WorkDone().geometries;
    const double building = tracing.building;
    const double all = Seconds([&] {
      for (int i = 0; i < 10; ++i) session.Record((preview ? "P" : "N") + std::to_string(i));
    });
    std::printf("  %-36s %9.1f ms, of it BVH %.1f ms, built %zu\n",
                preview ? "with previews" : "without", 1e3 * all,
                1e3 * (tracing.building - building),
                engine::RenderCaches::Shared().WorkDone().geometries - before);
  }
}

}  // namespace

// With a number: the big mesh has so many triangles instead of a million.
int main(int count, char** arguments) {
  const std::size_t triangles =
      count > 1 ? static_cast<std::size_t>(std::atoll(arguments[1])) : 1000000;
  MeasureSample("spider/spider.fbx");
  MeasureSample("dungeon/dungeon.gltf");
  MeasureSample("teapot/teapot.c4d");
  MeasureHills(triangles);
  MeasureRecording(triangles);
}
