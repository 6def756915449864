// Shading: how much light comes along a ray. It refers to the scene and the camera, which must
// outlive it. Pure: the same ray and number give the same light, on any thread.
#pragma once

#include "engine/render/RayScene.h"

namespace engine {

// Color of the sky and the ground below it in that direction, linear.
Vec BackdropColor(Vec direction);

// How much is looked for: Quick leaves out what lies around a point and what is mirrored in it, at
// about a quarter of the cost.
enum class ShadingDetail { Full, Quick };

struct FirstHit {
  const Instance* instance = nullptr;
  float distance = 0;  // along the ray from the eye
};

class Shading {
 public:
  Shading(const ScenePicture& picture, const RayScene& scene, const RayCamera& camera,
          ShadingDetail detail = ShadingDetail::Full);

  // Light at a place of the picture, in pixels. `pixel` and `sample` choose the directions that are
  // tried out. `first`, unless null, takes the nearest surface that the eye sees there; it stays as
  // it is where there is none.
  Vec LightAt(float x, float y, std::uint32_t pixel, std::uint32_t sample,
              FirstHit* first = nullptr) const;

 private:
  struct Tries {
    std::uint32_t pixel;
    std::uint32_t sample;
  };

  // Light that a surface sends against the ray. `depth` counts reflections on the way.
  Vec LightFrom(const Finding& finding, const Ray& ray, Tries tries, int depth) const;
  Vec LightAlong(const Ray& ray, Vec beyond, Tries tries, int depth,
                 FirstHit* first = nullptr) const;
  Vec LightOf(const LightSource& light, const Finding& finding, Vec toEye) const;
  Vec AmbientOn(const Finding& finding, Tries tries) const;
  // Share of light that reaches a point from a direction, by color.
  Vec Passing(const Finding& from, Vec direction, float distance) const;
  float OpenShare(const Finding& finding, Tries tries) const;

  const RayScene& scene_;
  const RayCamera& camera_;
  ShadingDetail detail_;
  std::vector<LightSource> lights_;  // those with a place or direction
  Vec skyAmbient_;
  Vec groundAmbient_;
};

}  // namespace engine
