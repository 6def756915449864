// PreparedScene: a scene made ready for rays: geometry, textures and the search structure over all
// instances. Never changes once made, so that pictures with any cameras share it. Making and
// looking: any thread.
#pragma once

#include "engine/core/Progress.h"
#include "engine/render/RayScene.h"

namespace engine {

// Gives the instances their geometry, the looks their textures, and the scene its bounds and the
// notes about what of these failed. False when stopped.
bool Prepare(ScenePicture& scene, RenderCaches& caches, const ProgressCallback& progress = {});

class PreparedScene {
 public:
  // Prepares a scene that was read. Fails when it was stopped and, with a message, when memory is
  // short.
  static Result<std::shared_ptr<const PreparedScene>> Make(ScenePicture scene, RenderCaches& caches,
                                                           const ProgressCallback& progress = {});
  PreparedScene(const PreparedScene&) = delete;
  PreparedScene& operator=(const PreparedScene&) = delete;

  const ScenePicture& Scene() const { return scene_; }
  const RayScene& Rays() const { return rays_; }
  RTCDevice Device() const { return device_; }
  // The object of each instance. May be kept longer than the scene.
  const std::shared_ptr<const std::vector<NodeId>>& Objects() const { return objects_; }
  // The scene camera, or one that frames everything in a picture of that width over height.
  PictureCamera UsualCamera(double aspect) const;

 private:
  PreparedScene(ScenePicture scene, RTCDevice device);

  ScenePicture scene_;
  RTCDevice device_;
  RayScene rays_;
  std::shared_ptr<const std::vector<NodeId>> objects_;
};

}  // namespace engine
