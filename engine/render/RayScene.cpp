#include "engine/render/RayScene.h"

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

void Fill(RTCRay& to, const Ray& ray, unsigned mask) {
  to.org_x = ray.origin.x;
  to.org_y = ray.origin.y;
  to.org_z = ray.origin.z;
  to.dir_x = ray.direction.x;
  to.dir_y = ray.direction.y;
  to.dir_z = ray.direction.z;
  to.tnear = ray.near;
  to.tfar = ray.far;
  to.time = 0;
  to.mask = mask;
  to.id = 0;
  to.flags = 0;
}

// The ray tracer ends the process over a ray that leads nowhere. What is no number is not below.
inline bool IsSane(const Ray& ray) {
  constexpr float kFarthestOrigin = 4e9F;
  return std::abs(ray.origin.x) < kFarthestOrigin && std::abs(ray.origin.y) < kFarthestOrigin &&
         std::abs(ray.origin.z) < kFarthestOrigin &&
         std::abs(Dot(ray.direction, ray.direction) - 1) < 0.01F && ray.near >= 0 &&
         ray.far >= ray.near;
}

RTCRayHit Shoot(RTCScene scene, const Ray& ray, unsigned mask) {
  RTCRayHit hit;
  Fill(hit.ray, ray, mask);
  hit.hit.geomID = RTC_INVALID_GEOMETRY_ID;
  hit.hit.instID[0] = RTC_INVALID_GEOMETRY_ID;
  if (!IsSane(ray)) return hit;
  RTCIntersectContext context;
  rtcInitIntersectContext(&context);
  rtcIntersect1(scene, &context, &hit);
  return hit;
}

Vec Turned(const host::Matrix& m, Vec v) {
  return ToVec(m.v1) * v.x + ToVec(m.v2) * v.y + ToVec(m.v3) * v.z;
}

}  // namespace

// The triangle that was hit, in the world.
struct RayScene::Triangle {
  Vec edge1, edge2;
  std::array<float, 3> weights;
  const std::array<std::array<float, 2>, 3>* uvs = nullptr;
  const std::array<std::array<float, 4>, 3>* colors = nullptr;
  std::array<float, 2> uv{0, 0};
  std::array<float, 2> uvEdge1{0, 0}, uvEdge2{0, 0};

  // The same with the coordinates of an instance: as its tag moves and repeats them.
  Triangle On(const Instance& instance) const {
    Triangle triangle = *this;
    for (std::size_t k = 0; k < 2; ++k) {
      const auto at = [&](std::size_t c) { return (*uvs)[c][k] * instance.uvTiles[k]; };
      triangle.uv[k] =
          at(0) * weights[0] + at(1) * weights[1] + at(2) * weights[2] + instance.uvOffset[k];
      triangle.uvEdge1[k] = at(1) - at(0);
      triangle.uvEdge2[k] = at(2) - at(0);
    }
    return triangle;
  }
  // And with those of a texture.
  Triangle On(const TextureUse& use) const {
    if (use.IsPlain()) return *this;
    Triangle triangle = *this;
    const float cosine = std::cos(use.rotation);
    const float sine = std::sin(use.rotation);
    const auto turned = [&](const std::array<float, 2>& at) {
      const float u = at[0] * use.tiles[0];
      const float v = at[1] * use.tiles[1];
      return std::array<float, 2>{cosine * u + sine * v, cosine * v - sine * u};
    };
    triangle.uv = turned(uv);
    for (std::size_t k = 0; k < 2; ++k) triangle.uv[k] += use.offset[k];
    triangle.uvEdge1 = turned(uvEdge1);
    triangle.uvEdge2 = turned(uvEdge2);
    return triangle;
  }

  // Side in u and v of a square with side 1 in the world.
  float UvPerLength() const {
    const float area = Length(Cross(edge1, edge2));
    const float uvArea = std::abs(uvEdge1[0] * uvEdge2[1] - uvEdge1[1] * uvEdge2[0]);
    return area > 0 ? std::sqrt(uvArea / area) : 0;
  }
};

RayScene::RayScene(const ScenePicture& picture, RTCDevice device)
    : picture_(picture), scene_(device) {
  normals_.reserve(picture.instances.size());
  for (std::size_t i = 0; i < picture.instances.size(); ++i) {
    if (picture.instances[i].geometry)
      Attach(picture.instances[i], static_cast<unsigned>(i), device);
    AddNormals(picture.instances[i].frame);
  }
  scene_.Build();
  if (!picture.bounds.IsEmpty()) size_ = Length(picture.bounds.high - picture.bounds.low);
}

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

void RayScene::AddNormals(const host::Matrix& m) {
  const host::Vector x = CrossOf(m.v2, m.v3);
  const host::Vector y = CrossOf(m.v3, m.v1);
  const host::Vector z = CrossOf(m.v1, m.v2);
  const double scale = 1 / std::sqrt(std::max({DotOf(x, x), DotOf(y, y), DotOf(z, z)}));
  handedness_.push_back(Determinant(m) < 0 ? -1.0F : 1.0F);
  normals_.push_back({ToVec(Scaled(x, scale)), ToVec(Scaled(y, scale)), ToVec(Scaled(z, scale))});
}

bool RayScene::Find(const Ray& ray, unsigned mask, const RayCamera& camera,
                    SurfaceHit* surface) const {
  const RTCRayHit hit = Shoot(scene_.Get(), ray, mask);
  if (hit.hit.geomID == RTC_INVALID_GEOMETRY_ID) return false;
  Describe(hit, ray, camera, surface);
  return true;
}

bool RayScene::FindVisible(const Ray& ray, const RayCamera& camera, SurfaceHit* surface) const {
  Ray rest = ray;
  for (int layer = 0; layer < kMostLayers; ++layer) {
    if (!Find(rest, kSeenByCamera, camera, surface)) return false;
    if (!surface->isBack && surface->alpha > 0) return true;
    rest.near = surface->distance + Gap(*surface);
  }
  return false;
}

bool RayScene::IsBlocked(const Ray& ray) const {
  if (!IsSane(ray)) return false;
  RTCRay shadow;
  Fill(shadow, ray, kOpaqueCaster);
  RTCIntersectContext context;
  rtcInitIntersectContext(&context);
  rtcOccluded1(scene_.Get(), &context, &shadow);
  return shadow.tfar < 0;
}

float RayScene::Gap(const SurfaceHit& surface) const {
  const Vec p = surface.position;
  const float farthest = std::max({std::abs(p.x), std::abs(p.y), std::abs(p.z), surface.distance});
  return 1e-5F * farthest + 1e-6F * size_;
}

void RayScene::Describe(const RTCRayHit& hit, const Ray& ray, const RayCamera& camera,
                        SurfaceHit* surface) const {
  const std::size_t index = hit.hit.instID[0];
  const Instance& instance = picture_.instances[index];
  const Geometry& geometry = *instance.geometry;
  const Geometry::Corners& corners = geometry.triangles[hit.hit.primID];
  Triangle triangle;
  triangle.edge1 =
      Turned(instance.frame, geometry.points[corners[1]] - geometry.points[corners[0]]);
  triangle.edge2 =
      Turned(instance.frame, geometry.points[corners[2]] - geometry.points[corners[0]]);
  triangle.weights = {1 - hit.hit.u - hit.hit.v, hit.hit.u, hit.hit.v};
  if (!geometry.uvs.empty()) triangle.uvs = &geometry.uvs[hit.hit.primID];
  if (!geometry.colors.empty()) triangle.colors = &geometry.colors[hit.hit.primID];

  surface->instance = &instance;
  surface->look = &picture_.looks[instance.look];
  surface->distance = hit.ray.tfar;
  surface->position = ray.origin + ray.direction * hit.ray.tfar;
  surface->faceNormal = Normalized(Cross(triangle.edge1, triangle.edge2));
  const auto& n = geometry.normals[hit.hit.primID];
  const Vec inside =
      n[0] * triangle.weights[0] + n[1] * triangle.weights[1] + n[2] * triangle.weights[2];
  const Normals& turn = normals_[index];
  surface->normal = Normalized(turn.x * inside.x + turn.y * inside.y + turn.z * inside.z);
  const bool hasBack = !surface->look->isDoubleSided && geometry.hasFront;
  surface->isBack = hasBack && Dot(surface->normal, ray.direction) * handedness_[index] > 0;
  if (Dot(surface->faceNormal, ray.direction) > 0) surface->faceNormal = -surface->faceNormal;
  if (Dot(surface->normal, surface->faceNormal) < 0) surface->normal = -surface->normal;
  const float slant = std::max(0.15F, std::abs(Dot(surface->faceNormal, ray.direction)));
  Color(triangle, camera.PixelSize(surface->distance) / std::sqrt(slant), surface);
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

bool HasTextures(const SurfaceLook& look) {
  return look.colorTexture || look.luminanceTexture || look.normalTexture ||
         look.roughnessTexture || look.metallicTexture || look.occlusionTexture ||
         look.alphaTexture;
}

float GrayOf(const Texel& texel) {
  return (texel.color.x + texel.color.y + texel.color.z) * (1.0F / 3) * texel.alpha;
}

}  // namespace

void RayScene::Color(const Triangle& hit, float detail, SurfaceHit* surface) {
  const SurfaceLook& look = *surface->look;
  float alpha = look.alpha;
  surface->color = look.color;
  surface->luminance = look.luminance;
  surface->roughness = look.roughness;
  surface->metallic = look.metallic;
  surface->occlusion = 1;
  if (hit.colors) {
    std::array<float, 4> sum{};
    for (std::size_t c = 0; c < 3; ++c) {
      for (std::size_t k = 0; k < 4; ++k) sum[k] += (*hit.colors)[c][k] * hit.weights[c];
    }
    surface->color = surface->color * Vec{sum[0], sum[1], sum[2]};
    alpha *= sum[3];
  }
  if (hit.uvs && HasTextures(look))
    AddTextures(hit.On(*surface->instance), detail, &alpha, surface);
  surface->alpha = AlphaOf(look, alpha);
}

void RayScene::AddTextures(const Triangle& triangle, float detail, float* alpha,
                           SurfaceHit* surface) {
  const SurfaceLook& look = *surface->look;
  const float plainDetail = detail * triangle.UvPerLength();
  const auto sample = [&](const TextureUse& use, bool isColor = false) {
    const Texture& texture = *use.texture;
    if (use.IsPlain())
      return texture.Sample(triangle.uv[0], triangle.uv[1], plainDetail, isColor, use.wraps);
    const Triangle on = triangle.On(use);
    return texture.Sample(on.uv[0], on.uv[1], detail * on.UvPerLength(), isColor, use.wraps);
  };
  if (look.colorTexture) {
    const Texel texel = sample(look.colorTexture, true);
    surface->color = surface->color * texel.color;
    *alpha *= texel.alpha;
  }
  if (look.alphaTexture) *alpha *= GrayOf(sample(look.alphaTexture));
  if (look.luminanceTexture)
    surface->luminance = look.luminance * sample(look.luminanceTexture, true).color;
  if (look.roughnessTexture || look.metallicTexture) {
    const Texel rough = look.roughnessTexture ? sample(look.roughnessTexture) : Texel{{1, 1, 1}};
    const bool same = look.metallicTexture == look.roughnessTexture;
    const Texel metal = same                   ? rough
                        : look.metallicTexture ? sample(look.metallicTexture)
                                               : Texel{{1, 1, 1}};
    surface->roughness *= rough.color.y;
    surface->metallic *= metal.color.z;
  }
  if (look.occlusionTexture)
    surface->occlusion = 1 + look.occlusion * (sample(look.occlusionTexture).color.x - 1);
  if (!look.normalTexture) return;
  const Triangle on = triangle.On(look.normalTexture);
  const float turn = on.uvEdge1[0] * on.uvEdge2[1] - on.uvEdge1[1] * on.uvEdge2[0];
  if (std::abs(turn) < 1e-20F) return;
  const Vec alongU = (on.edge1 * on.uvEdge2[1] - on.edge2 * on.uvEdge1[1]) * (1 / turn);
  const Vec alongV = (on.edge2 * on.uvEdge1[0] - on.edge1 * on.uvEdge2[0]) * (1 / turn);
  surface->normal =
      Bent(surface->normal, alongU, alongV, sample(look.normalTexture).color, look.normalStrength);
}

}  // namespace engine
