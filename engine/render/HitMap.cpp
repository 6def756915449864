#include "engine/render/HitMap.h"

#include "engine/render/RayScene.h"
#include "engine/render/Workers.h"

namespace engine {

namespace {

// Pixels of the smaller map that have a marked and an unmarked one among themselves and their
// neighbors.
std::vector<std::uint8_t> EdgesIn(const HitMap& hits, const std::vector<std::uint8_t>& marked) {
  const auto isMarked = [&](std::uint32_t x, std::uint32_t y) {
    const std::uint32_t instance = hits.instances[std::size_t{y} * hits.width + x];
    return instance > 0 && instance <= marked.size() && marked[instance - 1];
  };
  std::vector<std::uint8_t> edges(hits.instances.size(), 0);
  for (std::uint32_t y = 0; y < hits.height; ++y) {
    for (std::uint32_t x = 0; x < hits.width; ++x) {
      if (!isMarked(x, y)) continue;
      bool whole = true;
      const std::uint32_t left = x > 0 ? x - 1 : 0;
      const std::uint32_t top = y > 0 ? y - 1 : 0;
      const std::uint32_t right = std::min(x + 1, hits.width - 1);
      const std::uint32_t bottom = std::min(y + 1, hits.height - 1);
      for (std::uint32_t v = top; v <= bottom; ++v) {
        for (std::uint32_t u = left; u <= right; ++u) whole = whole && isMarked(u, v);
      }
      if (whole) continue;
      for (std::uint32_t v = top; v <= bottom; ++v) {
        for (std::uint32_t u = left; u <= right; ++u) edges[std::size_t{v} * hits.width + u] = 1;
      }
    }
  }
  return edges;
}

}  // namespace

NodeId HitMap::ObjectAt(std::uint32_t x, std::uint32_t y) const {
  if (x >= width || y >= height) return 0;
  const std::uint32_t instance = instances[std::size_t{y} * width + x];
  return instance > 0 ? (*objects)[instance - 1] : 0;
}

std::optional<Vec> HitMap::PointAt(std::uint32_t x, std::uint32_t y) const {
  if (ObjectAt(x, y) == 0) return std::nullopt;
  const Ray ray = RayCamera(camera, width, height)
                      .Through(static_cast<float>(x) + 0.5F, static_cast<float>(y) + 0.5F);
  return ray.origin + ray.direction * distances[std::size_t{y} * width + x];
}

HitMap Enlarged(const HitMap& hits, std::uint32_t width, std::uint32_t height,
                const std::vector<std::uint8_t>& marked, const RayScene& rays) {
  const std::vector<std::uint8_t> edges = EdgesIn(hits, marked);
  HitMap map{width, height, hits.camera, {}, {}, hits.objects};
  map.instances.resize(std::size_t{width} * height);
  map.distances.resize(map.instances.size());
  const RayCamera camera(hits.camera, width, height);
  const auto row = [&](std::uint32_t y) {
    const std::size_t from = std::size_t{std::uint64_t{y} * hits.height / height} * hits.width;
    for (std::uint32_t x = 0; x < width; ++x) {
      const std::size_t near = from + std::uint64_t{x} * hits.width / width;
      const std::size_t here = std::size_t{y} * width + x;
      SurfaceHit surface;
      if (!edges[near]) {
        map.instances[here] = hits.instances[near];
        map.distances[here] = hits.distances[near];
      } else if (rays.FindVisible(
                     camera.Through(static_cast<float>(x) + 0.5F, static_cast<float>(y) + 0.5F),
                     camera, &surface)) {
        map.instances[here] = 1 + rays.IndexOf(*surface.instance);
        map.distances[here] = surface.distance;
      }
    }
  };
  std::atomic<std::uint32_t> next{0};
  OnThreads(CoreCount(0), [&](bool) {
    for (std::uint32_t y = next++; y < height; y = next++) row(y);
  });
  return map;
}

}  // namespace engine
