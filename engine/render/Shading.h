// Shading: how much light comes along a ray. Surfaces are those of metal and roughness: Trowbridge
// and Reitz's facets with Smith's shadowing and Schlick's reflection (Karis 2013). It refers to the
// scene and the camera, which must outlive it. Eight rays are followed at a time, and with them
// those that go on from what they hit. Pure: the same rays and numbers give the same light, on any
// thread.
#pragma once

#include "engine/render/RayScene.h"

namespace engine {

// Color of the sky and the ground below it in that direction, linear.
Vec BackdropColor(Vec direction);

// Quick leaves out the shade of things nearby and mirrored surroundings, at about a quarter of the
// cost.
enum class ShadingDetail { Full, Quick };

struct FirstHit {
  const Instance* instance = nullptr;
  float distance = 0;  // along the ray from the eye
};

// A light as a surface sees it: where it is, and how strongly it shines.
struct Facing {
  Vec direction;  // to the light
  float distance = std::numeric_limits<float>::infinity();
  float strength = 1;
  float cosine = 0;  // between the direction and the surface's normal
};

class Shading {
 public:
  Shading(const ScenePicture& picture, const RayScene& scene, const RayCamera& camera,
          ShadingDetail detail = ShadingDetail::Full);

  // A place in the picture, in pixels, that is looked at. `pixel` and `sample` choose the
  // directions that are tried out.
  struct Look {
    float x = 0;
    float y = 0;
    std::uint32_t pixel = 0;
    std::uint32_t sample = 0;
  };

  // Light at the first `count` of the places. `first`, unless null, takes the nearest surface that
  // the eye sees there; it stays as it is where there is none.
  PerRay<Vec> LightAt(const PerRay<Look>& looks, std::size_t count,
                      PerRay<FirstHit>* first = nullptr) const;

 private:
  // Rays on their way, and how many times they were reflected.
  struct Rays {
    PerRay<Ray> ray;
    const PerRay<Look>& looks;
    int depth = 0;
  };
  struct Reflections;
  using Surfaces = PerRay<SurfaceHit>;

  // Light along the rays in `lanes`. `beyond` gives the light behind everything for a ray; it is
  // asked only where that is seen.
  template <class Beyond>
  PerRay<Vec> LightAlong(const Rays& rays, Lanes lanes, const Beyond& beyond,
                         PerRay<FirstHit>* first = nullptr) const;
  // Light that surfaces send against the rays.
  PerRay<Vec> LightFrom(const Surfaces& surfaces, Lanes lanes, const Rays& rays) const;
  // Adds the part of one light that surfaces send against the rays.
  void AddLight(const LightSource& light, const Surfaces& surfaces, Lanes lanes, const Rays& rays,
                PerRay<Vec>* sum) const;
  // Light from around a surface, of which it sees the share `open`.
  Vec AmbientOn(const SurfaceHit& surface, float open) const;
  // Add the reflections of surfaces as far as they are no metal, and as far as they are metal.
  void AddGloss(const Surfaces& surfaces, Lanes lanes, const Rays& rays, const PerRay<Vec>& ambient,
                PerRay<Vec>* sum) const;
  void AddMetal(const Surfaces& surfaces, Lanes lanes, const Rays& rays, const PerRay<float>& open,
                PerRay<Vec>* sum) const;
  template <class Beyond>
  void AddReflections(const Reflections& reflected, const Beyond& beyond, PerRay<Vec>* sum) const;
  // The room that metals mirror where nothing of the scene is: soft, without a color, as bright as
  // the light from around.
  Vec RoomLight(Vec direction, float roughness) const;
  // Puts the share of light, by color, that reaches surfaces into `passing`, where something may be
  // in its way.
  void LetPass(const Surfaces& from, Lanes lanes, const PerRay<Facing>& facing,
               PerRay<Vec>* passing) const;
  // LetPass for a light with an extent.
  void LetPassFromDisc(const Surfaces& from, Lanes lanes, const LightSource& light,
                       const Rays& rays, PerRay<Vec>* passing) const;
  // Share of the light along a ray, by color, that passes the see-through surfaces in its way.
  Vec PassingThrough(Ray ray) const;
  // Shares of their surroundings that the surfaces see, 0..1.
  PerRay<float> OpenShares(const Surfaces& surfaces, Lanes lanes, const Rays& rays) const;

  const RayScene& scene_;
  const RayCamera& camera_;
  ShadingDetail detail_;
  std::vector<LightSource> lights_;  // those with a place or direction
  Vec skyAmbient_;
  Vec groundAmbient_;
};

}  // namespace engine
