// ScenePicture: what of a document can be seen in a picture, taken out of it and ready for rays: instances of geometry, surfaces,
// lights and the camera. It holds nothing of the document, so that rays run on any thread while the document goes on changing.
// Owned by whoever made it; making it needs the thread that owns the document.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "engine/core/ContainerAccess.h"
#include "engine/render/RenderCaches.h"
#include "host/BaseDocument.h"

namespace engine {

// How a material looks, parameters and textures resolved.
struct SurfaceLook {
  enum class AlphaMode { Opaque, Cut, Blend };

  Vec color{0.75F, 0.75F, 0.75F};
  Vec luminance;
  float alpha = 1;
  float cutoff = 0.5F;
  AlphaMode alphaMode = AlphaMode::Opaque;
  float specular = 0.5F;
  float roughness = 0.5F;
  float metallic = 0;
  bool isDoubleSided = true;
  std::shared_ptr<const Texture> colorTexture;
  std::shared_ptr<const Texture> luminanceTexture;
  std::shared_ptr<const Texture> normalTexture;

  bool CanBeSeenThrough() const { return alphaMode != AlphaMode::Opaque && (alpha < 1 || colorTexture); }
};

// A light's place and direction in the world. The colour has the brightness multiplied in.
struct LightSource {
  enum class Kind { Point, Spot, Sun, Area, Ambient };

  Kind kind = Kind::Point;
  Vec color{1, 1, 1};
  Vec position;
  Vec direction{0, 0, 1};  // in which it shines, unit
  bool castsShadows = true;
  float innerCosine = 1;
  float outerCosine = 1;
  float range = 0;  // 0: no end
};

// One object in the picture.
struct Instance {
  std::shared_ptr<const Geometry> geometry;
  host::Matrix frame;
  std::uint32_t look = 0;  // into the looks of the picture
  NodeId object = 0;
  bool castsShadows = true;
  bool receivesShadows = true;
  bool seenByCamera = true;
  std::array<float, 2> uvOffset{0, 0};
  std::array<float, 2> uvTiles{1, 1};
};

struct PictureCamera {
  host::Matrix frame;  // looks along +z
  bool isParallel = false;
  double fov = 0.9273;     // horizontal, radians
  double fovVertical = 0;  // 0: follows the horizontal one and the picture
  double width = 1000;     // of a parallel camera
  double near = 0;
  double far = 0;  // 0: no limit
};

struct ScenePicture {
  std::vector<Instance> instances;
  std::vector<SurfaceLook> looks;  // the first one is that of objects without a material
  std::vector<LightSource> lights;
  PictureCamera camera;
  bool hasSceneCamera = false;
  Box bounds;                      // of all instances, in the world
  std::vector<std::string> notes;  // what was left out and why, each once
};

struct SceneReading {
  // Follow the editor modes and the layers' view flags instead of the render modes and flags: for a viewport.
  bool editorView = false;
};

// Reads what can be seen. Without a scene camera the camera is left at its defaults.
ScenePicture ReadScene(const host::BaseDocument& doc, const SceneReading& how, RenderCaches& caches);

// Points of the world that show the outline of all instances: corners of triangles spread over each of them.
std::vector<Vec> OutlineOf(const ScenePicture& picture);

// A camera that shows all of the points in a picture of that width over height: `turn` radians around the vertical axis, 0 from
// the front, a little above; a three-quarter view unless told. Without any point it looks at the origin.
PictureCamera FramingCamera(std::vector<Vec> points, double aspect, double turn = 0.65);

}  // namespace engine
