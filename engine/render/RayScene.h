// RayScene: the search structure over all instances of a picture, and what a ray finds there. It
// refers to the ScenePicture it was made from, which must outlive it. Making it costs little: the
// geometry below is shared. Looking: any thread.
#pragma once

#include <embree3/rtcore.h>

#include "engine/render/RayPacket.h"
#include "engine/render/TracerScene.h"

namespace engine {

// Which instances a ray can hit.
inline constexpr unsigned kSeenByCamera = 1;
inline constexpr unsigned kOpaqueCaster = 2;
inline constexpr unsigned kSeeThroughCaster = 4;

// A ray is followed through this many see-through surfaces at most.
inline constexpr int kMostLayers = 24;

// The point where a ray hit a surface, and the surface's look there.
struct SurfaceHit {
  const Instance* instance = nullptr;
  const SurfaceLook* look = nullptr;
  float distance = 0;
  Vec position;
  Vec faceNormal;  // unit, toward the ray's origin
  Vec normal;      // unit, smooth, with the normal map applied
  Vec color;
  Vec luminance;
  float alpha = 1;  // what the surface covers, 0..1
  float roughness = 0.5F;
  float metallic = 0;
  float occlusion = 1;  // share of the light around that its picture lets through
  bool isBack = false;  // the back of a surface that has only a front

  bool IsVisible() const { return !isBack && alpha > 0; }
};

class RayScene {
 public:
  RayScene(const ScenePicture& picture, RTCDevice device);
  ~RayScene();
  RayScene(const RayScene&) = delete;
  RayScene& operator=(const RayScene&) = delete;
  // Whether memory was too short for it: nothing is found in it then.
  bool IsBroken() const { return scene_.IsBroken(); }

  // The nearest surface; `pixelSize` is the side of the seen area per distance and at no distance,
  // for the detail of textures.
  bool Find(const Ray& ray, unsigned mask, const RayCamera& camera, SurfaceHit* surface) const;
  // The first hit as an eye sees it: through backs of surfaces that have only a front, and through
  // what is wholly transparent.
  bool FindVisible(const Ray& ray, const RayCamera& camera, SurfaceHit* surface) const;
  // FindVisible for the `asked` rays of a packet; the result is those that see a surface.
  Lanes FindVisible(const PerRay<Ray>& rays, Lanes asked, const RayCamera& camera,
                    PerRay<SurfaceHit>* surfaces) const;
  // The `asked` rays that something wholly opaque blocks.
  Lanes FindBlocked(const PerRay<Ray>& rays, Lanes asked) const;
  // Index of an instance that was found, among those of the picture.
  std::uint32_t IndexOf(const Instance& instance) const {
    return static_cast<std::uint32_t>(&instance - picture_.instances.data());
  }
  bool HasSeeThroughCasters() const { return hasSeeThroughCasters_; }
  // Diagonal of everything, and the least distance of a ray's start from the surface it leaves.
  float Size() const { return size_; }
  float Gap(const SurfaceHit& surface) const;

 private:
  struct Placed;
  struct Triangle;
  // Where a ray hit a triangle.
  struct TriangleHit {
    unsigned instance;
    unsigned triangle;
    float u, v;
    float distance;
  };

  void Attach(const Instance& instance, unsigned index, RTCDevice device);
  // Rays that hit something, and where.
  Lanes Shoot(const PerRay<Ray>& rays, Lanes asked, unsigned mask,
              PerRay<TriangleHit>* spots) const;
  bool Shoot(const Ray& ray, unsigned mask, TriangleHit* hit) const;
  bool IsBlocked(const Ray& ray) const;
  // Whether that many rays are quicker together than one by one.
  bool AreTracedTogether(Lanes lanes) const { return lanes.Count() >= fewestTogether_; }
  void Describe(const TriangleHit& hit, const Ray& ray, const RayCamera& camera,
                SurfaceHit* surface) const;
  static void AddTextures(const Placed& placed, const Triangle& triangle, float detail,
                          float* alpha, SurfaceHit* surface);

  const ScenePicture& picture_;
  std::vector<Placed> placed_;  // one per instance
  TracerScene scene_;
  int fewestTogether_;
  bool hasSeeThroughCasters_ = false;
  float size_ = 1;
};

}  // namespace engine
