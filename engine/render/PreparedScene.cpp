#include "engine/render/PreparedScene.h"

#include <algorithm>
#include <new>
#include <set>

#include "engine/scene/Vectors.h"

namespace engine {

namespace {

// Instances between two questions whether to go on.
constexpr std::size_t kStride = 256;

void AddToBounds(const Instance& instance, Box& bounds) {
  for (int i = 0; i < 8; ++i) {
    const Vec corner = instance.geometry->bounds.Corner(i);
    bounds.Add(ToVec(PlacedBy(instance.frame, {corner.x, corner.y, corner.z})));
  }
}

void TakeTextures(ScenePicture& scene, RenderCaches& caches) {
  std::set<std::string> noted;
  for (const TextureWish& wish : scene.textures) {
    std::string problem = "it was not found.";
    std::shared_ptr<const Texture> texture;
    for (const auto& file : wish.files) {
      if (!texture) texture = caches.TextureOf(*file, &problem);
    }
    if (texture) {
      (scene.looks[wish.look].*wish.place).texture = texture;
    } else if (noted.insert(wish.name).second) {
      scene.notes.push_back("The texture \"" + wish.name + "\" is not shown: " + problem);
    }
  }
}

bool TakeGeometry(ScenePicture& scene, RenderCaches& caches, const ProgressCallback& progress) {
  std::size_t droppedTriangles = 0;
  std::size_t emptyObjects = 0;
  for (std::size_t i = 0; i < scene.instances.size(); ++i) {
    const double done = static_cast<double>(i) / static_cast<double>(scene.instances.size());
    if (progress && i % kStride == 0 && !progress(done)) return false;
    Instance& instance = scene.instances[i];
    instance.geometry = caches.GeometryOf(instance.mesh);
    if (!instance.geometry) {
      emptyObjects += !instance.mesh->polygons.empty();
      continue;
    }
    // The poles of generated forms are flat by nature.
    if (!instance.isGenerated) droppedTriangles += instance.geometry->dropped;
    AddToBounds(instance, scene.bounds);
  }
  const auto note = [&](std::size_t count, const char* text) {
    if (count > 0) scene.notes.push_back(std::to_string(count) + text);
  };
  note(droppedTriangles, " triangles without an area or with impossible corners were left out.");
  note(emptyObjects, " objects had no usable polygon and were left out.");
  return true;
}

std::vector<NodeId> ObjectsOf(const ScenePicture& scene) {
  std::vector<NodeId> objects;
  objects.reserve(scene.instances.size());
  for (const Instance& instance : scene.instances) objects.push_back(instance.object);
  return objects;
}

}  // namespace

bool Prepare(ScenePicture& scene, RenderCaches& caches, const ProgressCallback& progress) {
  TakeTextures(scene, caches);
  const bool whole = TakeGeometry(scene, caches, progress);
  caches.TidyGeometry();
  return whole;
}

Result<std::shared_ptr<const PreparedScene>> PreparedScene::Make(ScenePicture scene,
                                                                 RenderCaches& caches,
                                                                 const ProgressCallback& progress) {
  using Answer = Result<std::shared_ptr<const PreparedScene>>;
  if (!caches.Device()) return Answer::Failure("The ray tracer could not be started.");
  try {
    if (!Prepare(scene, caches, progress)) return Answer::Failure("The picture was stopped.");
    bool isShort = std::ranges::any_of(scene.instances, [](const Instance& instance) {
      return instance.geometry && instance.geometry->IsBroken();
    });
    std::shared_ptr<const PreparedScene> made;
    if (!isShort) made.reset(new PreparedScene(std::move(scene), caches.Device()));
    isShort = isShort || made->rays_.IsBroken();
    if (isShort) caches.ForgetGeometry();
    if (isShort)
      return Answer::Failure("There is not enough memory for the geometry of the scene.");
    return made;
  } catch (const std::bad_alloc&) {
    return Answer::Failure("There is not enough memory for the picture.");
  }
}

PreparedScene::PreparedScene(ScenePicture scene, RTCDevice device)
    : scene_(std::move(scene)),
      device_(device),
      rays_(scene_, device),
      objects_(std::make_shared<const std::vector<NodeId>>(ObjectsOf(scene_))) {}

PictureCamera PreparedScene::UsualCamera(double aspect) const {
  if (scene_.hasSceneCamera) return scene_.camera;
  return scene_.editorView ? ShowingAllOf(*scene_.editorView, aspect)
                           : FramingCamera(OutlineOf(scene_), aspect);
}

}  // namespace engine
