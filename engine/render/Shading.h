// Shading: how much light comes along a ray. Surfaces are those of metal and roughness: Trowbridge
// and Reitz's facets with Smith's shadowing and Schlick's reflection (Karis 2013). It refers to the scene and the camera, which must
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
  Vec LightFrom(const SurfaceHit& surface, const Ray& ray, Tries tries, int depth) const;
  // `beyond`: the light behind everything, asked for where it is seen only.
  template <class Beyond>
  Vec LightAlong(const Ray& ray, const Beyond& beyond, Tries tries, int depth,
                 FirstHit* first = nullptr) const;
  Vec LightOf(const LightSource& light, const SurfaceHit& surface, Vec toEye, Tries tries) const;
  // Light from around a surface, of which it sees the share `open`.
  Vec AmbientOn(const SurfaceHit& surface, float open) const;
  // What is mirrored by a surface as far as it is no metal, and by one that is.
  void AddGloss(const SurfaceHit& surface, const Ray& ray, Vec ambient, Tries tries, int depth,
                Vec* light) const;
  Vec MetalOn(const SurfaceHit& surface, const Ray& ray, float open, Tries tries, int depth) const;
  // The room that metals mirror where nothing of the scene is: soft, without a color, as bright as
  // the light from around.
  Vec RoomLight(Vec direction, float roughness) const;
  // Share of light that reaches a point from a direction, by color.
  Vec Passing(const SurfaceHit& from, Vec direction, float distance) const;
  // The same of a light that is no point.
  Vec PassingFromDisc(const SurfaceHit& from, const LightSource& light, Tries tries) const;
  float OpenShare(const SurfaceHit& surface, Tries tries) const;

  const RayScene& scene_;
  const RayCamera& camera_;
  ShadingDetail detail_;
  std::vector<LightSource> lights_;  // those with a place or direction
  Vec skyAmbient_;
  Vec groundAmbient_;
};

}  // namespace engine
