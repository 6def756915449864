// ScenePicture: what of a document can be seen in a picture, taken out of it: instances of meshes,
// surfaces, lights and the camera. It holds nothing of the document, so that it is made ready for
// rays (PreparedScene.h) and rendered on any thread while the document goes on changing. Owned by
// whoever made it; making it needs the thread that owns the document.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "engine/core/ContainerContents.h"
#include "engine/render/RenderCaches.h"
#include "engine/scene/EditorView.h"
#include "host/BaseDocument.h"

namespace engine {

// How a texture lies on a surface: u and v (growing downwards) are scaled, then turned
// anticlockwise, then moved, as the extension for texture transforms of glTF has it.
struct TextureUse {
  std::shared_ptr<const Texture> texture;  // null: none, or not prepared
  Sampling sampling;
  std::array<float, 2> offset{0, 0};
  std::array<float, 2> tiles{1, 1};
  float rotation = 0;

  explicit operator bool() const { return texture != nullptr; }
  bool operator==(const TextureUse&) const = default;
  bool IsPlain() const {
    return rotation == 0 && offset == std::array<float, 2>{0, 0} &&
           tiles == std::array<float, 2>{1, 1};
  }
};

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
  float transmission = 0;
  bool isDoubleSided = true;
  float normalStrength = 1;
  float occlusion = 1;  // strength of its texture
  std::string name;     // of the material, empty for none
  TextureUse colorTexture;
  TextureUse luminanceTexture;
  TextureUse normalTexture;
  TextureUse roughnessTexture;  // green
  TextureUse metallicTexture;   // blue
  TextureUse occlusionTexture;  // red
  TextureUse alphaTexture;      // gray

  // For a mesh whose corners are opaque.
  bool CanBeSeenThrough() const {
    return transmission > 0 ||
           (alphaMode != AlphaMode::Opaque && (alpha < 1 || colorTexture || alphaTexture));
  }
  bool operator==(const SurfaceLook&) const = default;
};

// All textures of a look.
inline constexpr TextureUse SurfaceLook::*kTexturePlaces[] = {
    &SurfaceLook::colorTexture,     &SurfaceLook::luminanceTexture, &SurfaceLook::normalTexture,
    &SurfaceLook::roughnessTexture, &SurfaceLook::metallicTexture,  &SurfaceLook::occlusionTexture,
    &SurfaceLook::alphaTexture};

// A light's place and direction in the world. The color has the brightness multiplied in.
struct LightSource {
  enum class Kind { Point, Spot, Sun, Area, Ambient };

  Kind kind = Kind::Point;
  NodeId object = 0;
  Vec color{1, 1, 1};
  Vec position;
  Vec direction{0, 0, 1};  // in which it shines, unit
  bool castsShadows = true;
  bool shown = true;  // as of an instance
  float innerCosine = 1;
  float outerCosine = 1;
  float range = 0;   // 0: no end
  float radius = 0;  // of what shines, 0: a point

  bool IsDisc() const { return radius > 0 && kind != Kind::Sun; }
};

// One object in the picture.
struct Instance {
  std::shared_ptr<const Mesh> mesh;
  // Null until prepared, and where nothing of the mesh can be seen
  std::shared_ptr<const Geometry> geometry;
  host::Matrix frame;
  std::uint32_t look = 0;  // into the looks of the picture
  NodeId object = 0;
  bool castsShadows = true;
  bool receivesShadows = true;
  bool seenByCamera = true;
  std::array<float, 2> uvOffset{0, 0};
  std::array<float, 2> uvTiles{1, 1};
  bool isGenerated = false;  // a primitive
  bool shown = true;         // false: hidden, and there because SceneReading::hiddenToo asks for it
};

// A texture that a look wants: the files it may be in, in the order of trying.
struct TextureWish {
  std::uint32_t look = 0;
  TextureUse SurfaceLook::*place = nullptr;
  std::string name = {};
  std::vector<std::shared_ptr<TextureFile>> files = {};
};

struct ScenePicture {
  std::vector<Instance> instances;
  std::vector<std::uint8_t> selected;  // by instance: 1 where it or something above it is selected
  std::vector<SurfaceLook> looks;      // the first one is that of objects without a material
  std::vector<TextureWish> textures;   // none once prepared
  std::vector<LightSource> lights;
  PictureCamera camera;
  bool hasSceneCamera = false;
  std::optional<EditorView> editorView;  // of the document
  // Equal for scenes that look alike, whatever is selected and whatever the camera is. Good while
  // either of them lives.
  std::uint64_t fingerprint = 0;
  Box bounds;                      // of all instances, in the world; empty until prepared
  std::vector<std::string> notes;  // what was left out and why, each once
};

struct SceneReading {
  // Follow the editor modes and the layers' view flags instead of the render modes and flags: for a
  // viewport.
  bool editorView = false;
  // Take in what is hidden, too, marked as not shown; such a picture is not for rendering.
  bool hiddenToo = false;
};

// Reads what can be seen and prepares it. Without a scene camera the camera is left at its
// defaults.
ScenePicture ReadScenePicture(const host::BaseDocument& doc, FileSystem& files,
                              const SceneReading& how, RenderCaches& caches);
// The camera that an object is; nothing when it stands beyond all bounds.
std::optional<PictureCamera> CameraOf(const host::BaseObject& object);

// Points of the world that show the outline of the instances of a prepared scene: corners of
// triangles spread over each of them. Of all, or of those that `chosen` has a 1 for.
std::vector<Vec> OutlineOf(const ScenePicture& picture,
                           const std::vector<std::uint8_t>* chosen = nullptr);

// A camera that shows all of the points in a picture of that width over height: `turn` radians
// around the vertical axis, 0 from the front, a little above; a three-quarter view unless told.
// Without any point it looks at the origin.
PictureCamera FramingCamera(std::vector<Vec> points, double aspect, double turn = 0.65);
// FramingCamera with the direction and lens of `camera`.
PictureCamera FramingCameraLike(PictureCamera camera, std::vector<Vec> points, double aspect);
// A camera that shows all that is seen in a view in a picture of that width over height, and no
// more than it must.
PictureCamera ShowingAllOf(const EditorView& view, double aspect);

}  // namespace engine
