#include "engine/render/RayScene.h"

#include <bit>
#include <cstddef>

#include "engine/scene/Vectors.h"

namespace engine {

namespace {

unsigned MaskOf(const Instance& instance, const SurfaceLook& look) {
  unsigned mask = instance.seenByCamera ? kSeenByCamera : 0;
  const bool mayBeClear =
      look.alphaMode != SurfaceLook::AlphaMode::Opaque && !instance.geometry->colors.empty();
  if (instance.castsShadows)
    mask |= mayBeClear || look.CanBeSeenThrough() ? kSeeThroughCaster : kOpaqueCaster;
  return mask;
}

// Written as the ray tracer reads it, 16 bytes at a time: a processor waits for what is written in
// smaller pieces.
RTCRay ToTracerRay(const Ray& ray, unsigned mask) {
  static_assert(sizeof(RTCRay) == 3 * sizeof(Four) && offsetof(RTCRay, tnear) == 12 &&
                offsetof(RTCRay, dir_x) == 16 && offsetof(RTCRay, tfar) == 32 &&
                offsetof(RTCRay, mask) == 36);
  return std::bit_cast<RTCRay>(
      std::array<Four, 3>{Four{ray.origin.x, ray.origin.y, ray.origin.z, ray.near},
                          Four{ray.direction.x, ray.direction.y, ray.direction.z, 0},
                          Four{ray.far, std::bit_cast<float>(mask), 0, 0}});
}

// The ray tracer ends the process over a ray that leads nowhere. What is no number is not below.
inline bool IsSane(const Ray& ray) {
  constexpr float kFarthestOrigin = 4e9F;
  constexpr float kUnitTolerance = 0.01F;
  return std::abs(ray.origin.x) < kFarthestOrigin && std::abs(ray.origin.y) < kFarthestOrigin &&
         std::abs(ray.origin.z) < kFarthestOrigin &&
         std::abs(Dot(ray.direction, ray.direction) - 1) < kUnitTolerance && ray.near >= 0 &&
         ray.far >= ray.near;
}

// From how many rays on a packet is quicker; never on a processor that knows none of that size.
int FewestTogether(RTCDevice device) {
  constexpr int kFewest = 2;
  return rtcGetDeviceProperty(device, RTC_DEVICE_PROPERTY_NATIVE_RAY8_SUPPORTED)
             ? kFewest
             : static_cast<int>(kPacketSize) + 1;
}

// The mask of the rays that are asked for, as the ray tracer reads it.
struct AskedRays {
  alignas(32) PerRay<int> valid{};

  // Gives the ray tracer those of the asked rays that lead somewhere.
  void Put(const PerRay<Ray>& rays, Lanes asked, unsigned mask, RTCRay8* to) {
    static_assert(sizeof(RTCRay8) == 12 * sizeof(PerRay<int>));
    *to = {};
    for (const std::size_t i : asked) {
      const Ray& ray = rays[i];
      if (!IsSane(ray)) continue;
      valid[i] = -1;
      to->org_x[i] = ray.origin.x;
      to->org_y[i] = ray.origin.y;
      to->org_z[i] = ray.origin.z;
      to->tnear[i] = ray.near;
      to->dir_x[i] = ray.direction.x;
      to->dir_y[i] = ray.direction.y;
      to->dir_z[i] = ray.direction.z;
      to->tfar[i] = ray.far;
      to->mask[i] = mask;
    }
  }
};

// The directions of a frame.
struct Axes {
  Vec x, y, z;

  Vec Turned(Vec v) const { return x * v.x + y * v.y + z * v.z; }
};

// Turns normals as the frame turns points: its cofactor matrix, the longest axis scaled to 1.
Axes NormalAxes(const host::Matrix& m) {
  const host::Vector x = CrossOf(m.v2, m.v3);
  const host::Vector y = CrossOf(m.v3, m.v1);
  const host::Vector z = CrossOf(m.v1, m.v2);
  const double scale = 1 / std::sqrt(std::max({DotOf(x, x), DotOf(y, y), DotOf(z, z)}));
  return {ToVec(Scaled(x, scale)), ToVec(Scaled(y, scale)), ToVec(Scaled(z, scale))};
}

bool HasTextures(const SurfaceLook& look) {
  return std::ranges::any_of(kTexturePlaces, [&](auto place) { return bool(look.*place); });
}

// Coordinates in a texture, at a place of a triangle and along its edges.
struct Coordinates {
  std::array<float, 2> at{0, 0};
  std::array<float, 2> edge1{0, 0}, edge2{0, 0};

  // Tiled, rotated and moved as a texture lies on the surface.
  Coordinates On(const TextureUse& use) const {
    const float cosine = std::cos(use.rotation);
    const float sine = std::sin(use.rotation);
    const auto turned = [&](const std::array<float, 2>& uv) {
      const float u = uv[0] * use.tiles[0];
      const float v = uv[1] * use.tiles[1];
      return std::array<float, 2>{cosine * u + sine * v, cosine * v - sine * u};
    };
    Coordinates on{turned(at), turned(edge1), turned(edge2)};
    for (std::size_t k = 0; k < 2; ++k) on.at[k] += use.offset[k];
    return on;
  }

  // Of the edges' parallelogram; negative where it is turned over.
  float Area() const { return edge1[0] * edge2[1] - edge1[1] * edge2[0]; }
};

}  // namespace

// Data of an instance that every hit needs, close together in memory.
struct RayScene::Placed {
  const Instance* instance;
  const Geometry* geometry;
  const SurfaceLook* look;
  Axes axes;
  Axes normals;
  float handedness;  // -1 where the frame mirrors
  bool hasBack;
  bool hasTextures;

  Placed(const Instance& of, const SurfaceLook& itsLook)
      : instance(&of),
        geometry(of.geometry.get()),
        look(&itsLook),
        axes{ToVec(of.frame.v1), ToVec(of.frame.v2), ToVec(of.frame.v3)},
        normals(NormalAxes(of.frame)),
        handedness(Determinant(of.frame) < 0 ? -1.0F : 1.0F),
        hasBack(geometry && !look->isDoubleSided && geometry->hasFront),
        hasTextures(geometry && !geometry->uvs.empty() && HasTextures(itsLook)) {}
};

// The triangle that was hit, in the world.
struct RayScene::Triangle {
  std::size_t index;  // in its geometry
  std::array<float, 3> weights;
  Vec edge1, edge2;
  float area;  // of the edges' parallelogram

  // Texture coordinates, moved and repeated as the instance's texture tag says.
  Coordinates On(const Placed& placed) const {
    Coordinates on;
    const auto& uvs = placed.geometry->uvs[index];
    const Instance& instance = *placed.instance;
    for (std::size_t k = 0; k < 2; ++k) {
      const auto at = [&](std::size_t c) { return uvs[c][k] * instance.uvTiles[k]; };
      on.at[k] =
          at(0) * weights[0] + at(1) * weights[1] + at(2) * weights[2] + instance.uvOffset[k];
      on.edge1[k] = at(1) - at(0);
      on.edge2[k] = at(2) - at(0);
    }
    return on;
  }
};

RayScene::RayScene(const ScenePicture& picture, RTCDevice device)
    : picture_(picture), scene_(device), fewestTogether_(FewestTogether(device)) {
  placed_.reserve(picture.instances.size());
  for (std::size_t i = 0; i < picture.instances.size(); ++i) {
    const Instance& instance = picture.instances[i];
    if (instance.geometry) Attach(instance, static_cast<unsigned>(i), device);
    placed_.emplace_back(instance, picture.looks[instance.look]);
  }
  scene_.Build();
  if (!picture.bounds.IsEmpty()) size_ = Length(picture.bounds.high - picture.bounds.low);
}

RayScene::~RayScene() = default;

void RayScene::Attach(const Instance& instance, unsigned index, RTCDevice device) {
  const host::Matrix& m = instance.frame;
  const Vec columns[4] = {ToVec(m.v1), ToVec(m.v2), ToVec(m.v3), ToVec(m.off)};
  RTCGeometry geometry = rtcNewGeometry(device, RTC_GEOMETRY_TYPE_INSTANCE);
  rtcSetGeometryInstancedScene(geometry, instance.geometry->scene->Get());
  rtcSetGeometryTransform(geometry, 0, RTC_FORMAT_FLOAT3X4_COLUMN_MAJOR, columns);
  const unsigned mask = MaskOf(instance, picture_.looks[instance.look]);
  hasSeeThroughCasters_ = hasSeeThroughCasters_ || (mask & kSeeThroughCaster);
  rtcSetGeometryMask(geometry, mask);
  rtcCommitGeometry(geometry);
  rtcAttachGeometryByID(scene_.Get(), geometry, index);
  rtcReleaseGeometry(geometry);
}

bool RayScene::Shoot(const Ray& ray, unsigned mask, TriangleHit* hit) const {
  if (!IsSane(ray)) return false;
  RTCRayHit found;
  found.ray = ToTracerRay(ray, mask);
  found.hit.geomID = RTC_INVALID_GEOMETRY_ID;
  found.hit.instID[0] = RTC_INVALID_GEOMETRY_ID;
  RTCIntersectContext context;
  rtcInitIntersectContext(&context);
  rtcIntersect1(scene_.Get(), &context, &found);
  if (found.hit.geomID == RTC_INVALID_GEOMETRY_ID) return false;
  *hit = {found.hit.instID[0], found.hit.primID, found.hit.u, found.hit.v, found.ray.tfar};
  return true;
}

Lanes RayScene::Shoot(const PerRay<Ray>& rays, Lanes asked, unsigned mask,
                      PerRay<TriangleHit>* hits) const {
  Lanes found;
  if (!AreTracedTogether(asked)) {
    for (const std::size_t i : asked) {
      if (Shoot(rays[i], mask, &(*hits)[i])) found.Add(i);
    }
    return found;
  }
  RTCRayHit8 packet;
  AskedRays together;
  together.Put(rays, asked, mask, &packet.ray);
  std::ranges::fill(packet.hit.geomID, RTC_INVALID_GEOMETRY_ID);
  std::ranges::fill(packet.hit.instID[0], RTC_INVALID_GEOMETRY_ID);
  RTCIntersectContext context;
  rtcInitIntersectContext(&context);
  rtcIntersect8(together.valid.data(), scene_.Get(), &context, &packet);
  for (const std::size_t i : asked) {
    if (packet.hit.geomID[i] == RTC_INVALID_GEOMETRY_ID) continue;
    found.Add(i);
    (*hits)[i] = {packet.hit.instID[0][i], packet.hit.primID[i], packet.hit.u[i], packet.hit.v[i],
                  packet.ray.tfar[i]};
  }
  return found;
}

bool RayScene::Find(const Ray& ray, unsigned mask, const RayCamera& camera,
                    SurfaceHit* surface) const {
  TriangleHit hit;
  if (!Shoot(ray, mask, &hit)) return false;
  Describe(hit, ray, camera, surface);
  return true;
}

bool RayScene::FindVisible(const Ray& ray, const RayCamera& camera, SurfaceHit* surface) const {
  Ray rest = ray;
  for (int layer = 0; layer < kMostLayers; ++layer) {
    if (!Find(rest, kSeenByCamera, camera, surface)) return false;
    if (surface->IsVisible()) return true;
    rest.near = surface->distance + Gap(*surface);
  }
  return false;
}

Lanes RayScene::FindVisible(const PerRay<Ray>& rays, Lanes asked, const RayCamera& camera,
                            PerRay<SurfaceHit>* surfaces) const {
  PerRay<TriangleHit> hits;
  Lanes seen = Shoot(rays, asked, kSeenByCamera, &hits);
  for (const std::size_t i : seen) {
    SurfaceHit& surface = (*surfaces)[i];
    Describe(hits[i], rays[i], camera, &surface);
    if (surface.IsVisible()) continue;
    Ray rest = rays[i];
    rest.near = surface.distance + Gap(surface);
    if (!FindVisible(rest, camera, &surface)) seen.Remove(i);
  }
  return seen;
}

bool RayScene::IsBlocked(const Ray& ray) const {
  if (!IsSane(ray)) return false;
  RTCRay shadow = ToTracerRay(ray, kOpaqueCaster);
  RTCIntersectContext context;
  rtcInitIntersectContext(&context);
  rtcOccluded1(scene_.Get(), &context, &shadow);
  return shadow.tfar < 0;
}

Lanes RayScene::FindBlocked(const PerRay<Ray>& rays, Lanes asked) const {
  Lanes blocked;
  if (!AreTracedTogether(asked)) {
    for (const std::size_t i : asked) {
      if (IsBlocked(rays[i])) blocked.Add(i);
    }
    return blocked;
  }
  RTCRay8 packet;
  AskedRays together;
  together.Put(rays, asked, kOpaqueCaster, &packet);
  RTCIntersectContext context;
  rtcInitIntersectContext(&context);
  rtcOccluded8(together.valid.data(), scene_.Get(), &context, &packet);
  for (const std::size_t i : asked) {
    if (packet.tfar[i] < 0) blocked.Add(i);
  }
  return blocked;
}

float RayScene::Gap(const SurfaceHit& surface) const {
  const Vec p = surface.position;
  const float farthest = std::max({std::abs(p.x), std::abs(p.y), std::abs(p.z), surface.distance});
  return 1e-5F * farthest + 1e-6F * size_;
}

namespace {

// The normal that a normal map asks for; its green channel points against v.
Vec Bent(Vec normal, Vec alongU, Vec alongV, Vec map, float strength) {
  const Vec u = Normalized(alongU - normal * Dot(normal, alongU));
  const Vec v = Normalized(alongV - normal * Dot(normal, alongV));
  const Vec bent = u * ((map.x * 2 - 1) * strength) - v * ((map.y * 2 - 1) * strength) +
                   normal * std::max(0.05F, map.z * 2 - 1);
  const Vec unit = Normalized(bent);
  return IsFinite(unit) && Dot(unit, unit) > 0.5F ? unit : normal;
}

float AlphaOf(const SurfaceLook& look, float alpha) {
  if (look.alphaMode == SurfaceLook::AlphaMode::Opaque) return 1;
  if (look.alphaMode == SurfaceLook::AlphaMode::Blend) return alpha;
  return alpha < look.cutoff ? 0.0F : 1.0F;
}

// Even the clearest glass shows a little of itself.
constexpr float kMostTransmitted = 0.75F;

float GrayOf(const Texel& texel) {
  return (texel.color.x + texel.color.y + texel.color.z) * (1.0F / 3) * texel.alpha;
}

// Puts the material's values into `surface`, before its textures and with the colors of the
// corners; `alpha` gets the opacity of both.
void Color(const Geometry& geometry, std::size_t triangle, const std::array<float, 3>& weights,
           float* alpha, SurfaceHit* surface) {
  const SurfaceLook& look = *surface->look;
  *alpha = look.alpha;
  surface->color = look.color;
  surface->luminance = look.luminance;
  surface->roughness = look.roughness;
  surface->metallic = look.metallic;
  surface->occlusion = 1;
  if (geometry.colors.empty()) return;
  std::array<float, 4> sum{};
  for (std::size_t c = 0; c < 3; ++c) {
    for (std::size_t k = 0; k < 4; ++k) sum[k] += geometry.colors[triangle][c][k] * weights[c];
  }
  surface->color = surface->color * Vec{sum[0], sum[1], sum[2]};
  *alpha *= sum[3];
}

}  // namespace

void RayScene::Describe(const TriangleHit& hit, const Ray& ray, const RayCamera& camera,
                        SurfaceHit* surface) const {
  const Placed& placed = placed_[hit.instance];
  const Geometry& geometry = *placed.geometry;
  const Geometry::Corners& corners = geometry.triangles[hit.triangle];
  const Vec corner = geometry.points[corners[0]];
  Triangle triangle;
  triangle.index = hit.triangle;
  triangle.weights = {1 - hit.u - hit.v, hit.u, hit.v};
  triangle.edge1 = placed.axes.Turned(geometry.points[corners[1]] - corner);
  triangle.edge2 = placed.axes.Turned(geometry.points[corners[2]] - corner);
  const Vec across = Cross(triangle.edge1, triangle.edge2);
  triangle.area = Length(across);

  surface->instance = placed.instance;
  surface->look = placed.look;
  surface->distance = hit.distance;
  surface->position = ray.origin + ray.direction * hit.distance;
  surface->faceNormal = triangle.area > 0 ? across * (1 / triangle.area) : across;
  const std::array<Vec, 3> n = geometry.NormalsOf(triangle.index);
  surface->normal = Normalized(placed.normals.Turned(
      n[0] * triangle.weights[0] + n[1] * triangle.weights[1] + n[2] * triangle.weights[2]));
  surface->isBack = placed.hasBack && Dot(surface->normal, ray.direction) * placed.handedness > 0;
  const float slant = Dot(surface->faceNormal, ray.direction);
  if (slant > 0) surface->faceNormal = -surface->faceNormal;
  if (Dot(surface->normal, surface->faceNormal) < 0) surface->normal = -surface->normal;

  float alpha = 1;
  Color(geometry, triangle.index, triangle.weights, &alpha, surface);
  if (placed.hasTextures) {
    const float pixel = camera.PixelSize(surface->distance);
    AddTextures(placed, triangle, pixel / std::sqrt(std::max(0.15F, std::abs(slant))), &alpha,
                surface);
  }
  surface->alpha = AlphaOf(*placed.look, alpha) *
                   (1 - kMostTransmitted * placed.look->transmission * (1 - surface->metallic));
}

namespace {

// Reads the textures of a surface at a hit.
class TextureReading {
 public:
  TextureReading(const Coordinates& plain, float detail, float area)
      : plain_(plain), detail_(detail), area_(area) {}

  Texel Color(const TextureUse& use) { return use.texture->ColorAt(SpotOf(use)); }
  Texel Numbers(const TextureUse& use) { return use.texture->NumbersAt(SpotOf(use)); }

 private:
  void FindSpot(const TextureUse& use, const Coordinates& on) {
    const float perLength = area_ > 0 ? std::sqrt(std::abs(on.Area()) / area_) : 0;
    spot_ = use.texture->SpotAt(on.at[0], on.at[1], detail_ * perLength, use.sampling);
  }
  // Most textures of a surface are of one size and lie on it alike: their spot is found once.
  const Texture::Spot& SpotOf(const TextureUse& use) {
    const bool isPlain = use.IsPlain();
    const bool isSame = isPlain && found_ && found_->sampling == use.sampling &&
                        found_->texture->IsLike(*use.texture);
    if (!isSame) FindSpot(use, isPlain ? plain_ : plain_.On(use));
    found_ = isPlain ? &use : nullptr;
    return spot_;
  }

  const Coordinates& plain_;
  float detail_;                       // side of the seen area
  float area_;                         // in the world, of what has the coordinates' area
  const TextureUse* found_ = nullptr;  // what the spot is of, null where it is not plain
  Texture::Spot spot_;
};

}  // namespace

void RayScene::AddTextures(const Placed& placed, const Triangle& triangle, float detail,
                           float* alpha, SurfaceHit* surface) {
  const SurfaceLook& look = *surface->look;
  const Coordinates plain = triangle.On(placed);
  TextureReading read(plain, detail, triangle.area);
  if (look.colorTexture) {
    const Texel texel = read.Color(look.colorTexture);
    surface->color = surface->color * texel.color;
    *alpha *= texel.alpha;
  }
  if (look.alphaTexture) *alpha *= GrayOf(read.Numbers(look.alphaTexture));
  if (look.luminanceTexture)
    surface->luminance = look.luminance * read.Color(look.luminanceTexture).color;
  if (look.roughnessTexture || look.metallicTexture) {
    const auto numbers = [&](const TextureUse& use) {
      return use ? read.Numbers(use) : Texel{{1, 1, 1}};
    };
    const Texel rough = numbers(look.roughnessTexture);
    const bool same = look.metallicTexture == look.roughnessTexture;
    surface->roughness *= rough.color.y;
    surface->metallic *= (same ? rough : numbers(look.metallicTexture)).color.z;
  }
  if (look.occlusionTexture)
    surface->occlusion = 1 + look.occlusion * (read.Numbers(look.occlusionTexture).color.x - 1);
  if (!look.normalTexture) return;
  const Coordinates on = look.normalTexture.IsPlain() ? plain : plain.On(look.normalTexture);
  const float turn = on.Area();
  if (std::abs(turn) < 1e-20F) return;
  const Vec alongU = (triangle.edge1 * on.edge2[1] - triangle.edge2 * on.edge1[1]) * (1 / turn);
  const Vec alongV = (triangle.edge2 * on.edge1[0] - triangle.edge1 * on.edge2[0]) * (1 / turn);
  surface->normal = Bent(surface->normal, alongU, alongV, read.Numbers(look.normalTexture).color,
                         look.normalStrength);
}

}  // namespace engine
