#include "engine/render/Shading.h"

namespace engine {

namespace {

constexpr float kPi = 3.14159265358979F;
constexpr int kDeepestReflection = 1;
constexpr std::uint32_t kOpenTries = 4;  // directions tried per sample for what lies around a point
constexpr float kUsualOpenShare = 0.9F;
constexpr float kOpenReach = 0.06F;  // how far, as a share of the scene
constexpr float kWeakestReflection = 0.04F;
constexpr float kSharpestRoughness = 0.06F;
constexpr std::uint32_t kDiscTries = 4;  // places tried per sample on a light that is no point
constexpr float kLeastOpen = 0.004F;     // what less of the light behind passes is not seen

// A number without a pattern (the output permutation of PCG, by O'Neill).
std::uint32_t Scrambled(std::uint32_t n) {
  n = n * 747796405U + 2891336453U;
  n = ((n >> ((n >> 28U) + 4U)) ^ n) * 277803737U;
  return (n >> 22U) ^ n;
}

float ToShare(std::uint32_t n) { return static_cast<float>(n >> 8U) * (1.0F / 16777216.0F); }

// For numbers from 0 to far below the largest 32-bit integer, without a function call.
float Fraction(float x) { return x - static_cast<float>(static_cast<std::int32_t>(x)); }

// The plastic number's sequence spreads evenly however many are taken of it (Roberts 2018): its
// n-th pair, moved by two seeds.
struct Pair {
  float a;
  float b;
};
class Spread {
 public:
  Spread(std::uint32_t seedA, std::uint32_t seedB)
      : a_(ToShare(Scrambled(seedA))), b_(ToShare(Scrambled(seedB))) {}
  Pair At(std::uint32_t count) const {
    const auto n = static_cast<float>(count);
    return {Fraction(a_ + n * kStepA), Fraction(b_ + n * kStepB)};
  }
  // The pairs At(count) to At(count + 3).
  struct FourPairs {
    Four a;
    Four b;
  };
  FourPairs FourFrom(std::uint32_t count) const {
    const Four n{static_cast<float>(count), static_cast<float>(count + 1),
                 static_cast<float>(count + 2), static_cast<float>(count + 3)};
    const Four a = a_ + n * kStepA;
    const Four b = b_ + n * kStepB;
    return {a - ToFour(WholeOf(a)), b - ToFour(WholeOf(b))};
  }

 private:
  static constexpr float kStepA = 0.7548776662F;
  static constexpr float kStepB = 0.5698402910F;
  float a_;
  float b_;
};

// Two directions across a third one.
struct Sides {
  Vec side;
  Vec other;

  explicit Sides(Vec normal) {
    const Vec helper = std::abs(normal.x) > 0.7F ? Vec{0, 1, 0} : Vec{1, 0, 0};
    side = Normalized(Cross(helper, normal));
    other = Cross(normal, side);
  }
};

// A facet of a rough surface as the eye sees them (Heitz 2018), from two numbers of 0..1.
Vec FacetToward(Vec toEye, Vec normal, float roughness, Pair pair) {
  const Sides sides(normal);
  const float width = roughness * roughness;
  const Vec seen = Normalized({width * Dot(toEye, sides.side), width * Dot(toEye, sides.other),
                               std::max(1e-3F, Dot(toEye, normal))});
  const float across = seen.x * seen.x + seen.y * seen.y;
  const Vec t1 = across > 0 ? Vec{-seen.y, seen.x, 0} * (1 / std::sqrt(across)) : Vec{1, 0, 0};
  const Vec t2 = Cross(seen, t1);
  const float r = std::sqrt(pair.a);
  const float x = r * std::cos(2 * kPi * pair.b);
  const float s = 0.5F * (1 + seen.z);
  const float y =
      (1 - s) * std::sqrt(std::max(0.0F, 1 - x * x)) + s * r * std::sin(2 * kPi * pair.b);
  const Vec facet = t1 * x + t2 * y + seen * std::sqrt(std::max(0.0F, 1 - x * x - y * y));
  return Normalized(sides.side * (width * facet.x) + sides.other * (width * facet.y) +
                    normal * std::max(1e-6F, facet.z));
}

Vec Reflected(Vec direction, Vec normal) {
  return Normalized(direction - normal * (2 * Dot(normal, direction)));
}

// Directions around `normal`, more often near it (by the cosine), from pairs of numbers of 0..1.
FourVecs Around(Vec normal, const Spread::FourPairs& pairs) {
  const Sides sides(normal);
  const Four r = Root(pairs.a);
  const Four turn = 2 * kPi * pairs.b;
  const Four along =
      r * Four{std::cos(turn[0]), std::cos(turn[1]), std::cos(turn[2]), std::cos(turn[3])};
  const Four across =
      r * Four{std::sin(turn[0]), std::sin(turn[1]), std::sin(turn[2]), std::sin(turn[3])};
  const Four below = 1 - pairs.a;
  const Four up = Root(below > 0 ? below : Four{});
  const auto sum = [&](float side, float other, float straight) {
    return side * along + other * across + straight * up;
  };
  const FourVecs way{sum(sides.side.x, sides.other.x, normal.x),
                     sum(sides.side.y, sides.other.y, normal.y),
                     sum(sides.side.z, sides.other.z, normal.z)};
  const Four length = Root(way.x * way.x + way.y * way.y + way.z * way.z);
  const Four scale = length > 0 ? 1 / length : Four{1, 1, 1, 1};
  return {way.x * scale, way.y * scale, way.z * scale};
}

float SmoothStep(float low, float high, float x) {
  const float t = std::clamp((x - low) / std::max(1e-6F, high - low), 0.0F, 1.0F);
  return t * t * (3 - 2 * t);
}

// Share of light that a surface mirrors at that cosine (Schlick's approximation).
Vec Mirrored(Vec straight, float cosine) {
  const float away = std::clamp(1 - cosine, 0.0F, 1.0F);
  const float square = away * away;
  return straight + (Vec{1, 1, 1} - straight) * (square * square * away);
}

Vec StraightReflection(const SurfaceHit& surface) {
  const float plain = 0.08F * surface.look->specular;
  return Mix({plain, plain, plain}, surface.color, surface.metallic);
}

// The bright spot of a light on a rough surface: Trowbridge and Reitz's distribution with Smith's
// shadowing (Karis 2013), scaled so that a white diffuse surface facing the light returns 1.
// `half` is the direction between those to the light and to the eye.
float Gloss(const SurfaceHit& surface, Vec half, Vec toEye, float lightCosine) {
  const float rough = std::max(kSharpestRoughness, surface.roughness);
  const float a2 = rough * rough * rough * rough;
  const float nh = std::max(0.0F, Dot(surface.normal, half));
  const float nv = std::max(1e-3F, Dot(surface.normal, toEye));
  const float d = nh * nh * (a2 - 1) + 1;
  const float k = (rough + 1) * (rough + 1) / 8;
  const float shadowing = 1 / ((nv * (1 - k) + k) * (lightCosine * (1 - k) + k) * 4);
  return a2 / (d * d) * shadowing;
}

// A facet of a rough surface that is seen along a direction, another one for each look.
Vec FacetSeen(const SurfaceHit& surface, Vec way, const Shading::Look& look) {
  const Spread spread(look.pixel * 2 + 0x68bc21ebU, look.pixel * 2 + 0x02e5be93U);
  return FacetToward(-way, surface.normal, surface.roughness, spread.At(look.sample));
}

// Where a surface reflects a ray to; `gap` keeps that from the surface.
Ray ReflectedRay(const SurfaceHit& surface, Vec direction, float gap) {
  return {surface.position + surface.faceNormal * gap, direction, 0,
          std::numeric_limits<float>::infinity()};
}

// A light as a surface sees it.
Facing Face(const LightSource& light, const SurfaceHit& surface) {
  Facing facing;
  facing.direction = -light.direction;
  if (light.kind != LightSource::Kind::Sun) {
    const Vec way = light.position - surface.position;
    facing.distance = Length(way);
    facing.direction = facing.distance > 0 ? way * (1 / facing.distance) : way;
    if (light.kind == LightSource::Kind::Spot) {
      facing.strength =
          SmoothStep(light.outerCosine, light.innerCosine, -Dot(facing.direction, light.direction));
    }
    if (light.range > 0) facing.strength *= 1 - SmoothStep(0, light.range, facing.distance);
  }
  facing.cosine = Dot(surface.normal, facing.direction);
  return facing;
}

// Share of a light, by color, that a surface sends to the eye.
Vec Returned(const SurfaceHit& surface, const Facing& facing, Vec toEye) {
  const Vec half = Normalized(facing.direction + toEye);
  const Vec mirrored = Mirrored(StraightReflection(surface), std::max(0.0F, Dot(half, toEye)));
  const Vec diffuse = surface.color * (1 - surface.metallic) * (Vec{1, 1, 1} - mirrored);
  return diffuse + mirrored * Gloss(surface, half, toEye, facing.cosine);
}

// The way to a place on a light that is no point, another one for each look and attempt.
Vec WayToDisc(const LightSource& light, Vec from, const Shading::Look& look,
              std::uint32_t attempt) {
  const Sides sides(Normalized(light.position - from));
  const Spread spread(look.pixel * 2 + 0x967a889bU, look.pixel * 2 + 0x368cc8b7U);
  const Pair pair = spread.At(look.sample * kDiscTries + attempt);
  const float r = light.radius * std::sqrt(pair.a);
  return light.position + sides.side * (r * std::cos(2 * kPi * pair.b)) +
         sides.other * (r * std::sin(2 * kPi * pair.b)) - from;
}

// The light of a scene that has none: one from behind the shoulder of whoever looks.
LightSource ShoulderLight(const RayCamera& camera) {
  LightSource light;
  light.kind = LightSource::Kind::Sun;
  light.color = {0.92F, 0.89F, 0.84F};
  const Vec flat =
      Normalized(Vec{camera.Forward().x, 0, camera.Forward().z} + camera.Forward() * 0.05F);
  light.direction = Normalized(flat * 0.42F + camera.Right() * 0.72F + Vec{0, -1, 0});
  return light;
}

}  // namespace

Vec BackdropColor(Vec direction) {
  const Vec ground{0.066F, 0.075F, 0.090F};
  const Vec horizon{0.34F, 0.38F, 0.43F};
  const Vec zenith{0.055F, 0.085F, 0.140F};
  const float up = direction.y;
  if (up < 0) return Mix(horizon * 0.62F, ground, SmoothStep(0.0F, 0.55F, -up));
  return Mix(Mix(horizon * 0.62F, horizon, SmoothStep(0.0F, 0.035F, up)), zenith,
             std::pow(up, 0.55F));
}

Shading::Shading(const ScenePicture& picture, const RayScene& scene, const RayCamera& camera,
                 ShadingDetail detail)
    : scene_(scene), camera_(camera), detail_(detail) {
  Vec ambient;
  for (const LightSource& light : picture.lights) {
    if (light.kind == LightSource::Kind::Ambient) {
      ambient += light.color;
    } else if (Largest(light.color) > 0) {
      lights_.push_back(light);
    }
  }
  const bool dark = lights_.empty() && !(Largest(ambient) > 0);
  if (dark) lights_.push_back(ShoulderLight(camera));
  const float fill = dark ? 1.0F : 0.7F;
  skyAmbient_ = Vec{0.30F, 0.335F, 0.385F} * fill + ambient;
  groundAmbient_ = Vec{0.150F, 0.140F, 0.128F} * fill + ambient;
}

PerRay<Vec> Shading::LightAt(const PerRay<Look>& looks, std::size_t count,
                             PerRay<FirstHit>* first) const {
  const Lanes all = Lanes::First(count);
  Rays rays{{}, looks};
  for (const std::size_t i : all) rays.ray[i] = camera_.Through(looks[i].x, looks[i].y);
  const auto backdrop = [&](std::size_t i) {
    return BackdropColor(camera_.BackdropDirection(looks[i].x, looks[i].y));
  };
  PerRay<Vec> light = LightAlong(rays, all, backdrop, first);
  for (const std::size_t i : all) {
    if (!IsFinite(light[i])) light[i] = {};
  }
  return light;
}

// Rays that go on from surfaces, and what the light along each counts for there.
struct Shading::Reflections {
  explicit Reflections(const Rays& from) : rays{{}, from.looks, from.depth + 1} {}
  void Send(std::size_t i, const Ray& ray, Vec weight) {
    rays.ray[i] = ray;
    weights[i] = weight;
    sent.Add(i);
  }

  Rays rays;
  PerRay<Vec> weights;
  Lanes sent;
};

template <class Beyond>
PerRay<Vec> Shading::LightAlong(const Rays& start, Lanes lanes, const Beyond& beyond,
                                PerRay<FirstHit>* first) const {
  Rays rays = start;
  PerRay<Vec> light{};
  PerRay<float> open;
  open.fill(1);
  Lanes going = lanes;
  for (int layer = 0; layer < kMostLayers && going; ++layer) {
    Surfaces surfaces;
    going = scene_.FindVisible(rays.ray, going, camera_, &surfaces);
    const PerRay<Vec> sent = LightFrom(surfaces, going, rays);
    for (const std::size_t i : going) {
      const SurfaceHit& surface = surfaces[i];
      if (first && layer == 0) (*first)[i] = {surface.instance, surface.distance};
      light[i] += sent[i] * (open[i] * surface.alpha);
      open[i] *= 1 - surface.alpha;
      rays.ray[i].near = surface.distance + scene_.Gap(surface);
      if (open[i] >= kLeastOpen) continue;
      going.Remove(i);
      lanes.Remove(i);
    }
  }
  for (const std::size_t i : lanes) light[i] += beyond(i) * open[i];
  return light;
}

PerRay<Vec> Shading::LightFrom(const Surfaces& surfaces, Lanes lanes, const Rays& rays) const {
  PerRay<Vec> light;
  if (!lanes) return light;
  PerRay<float> open = OpenShares(surfaces, lanes, rays);
  PerRay<Vec> ambient;
  for (const std::size_t i : lanes) {
    const SurfaceHit& surface = surfaces[i];
    open[i] *= surface.occlusion;
    ambient[i] = AmbientOn(surface, open[i]);
    light[i] = surface.luminance + surface.color * (1 - surface.metallic) * ambient[i];
  }
  for (const LightSource& source : lights_) AddLight(source, surfaces, lanes, rays, &light);
  AddGloss(surfaces, lanes, rays, ambient, &light);
  AddMetal(surfaces, lanes, rays, open, &light);
  return light;
}

void Shading::AddGloss(const Surfaces& surfaces, Lanes lanes, const Rays& rays,
                       const PerRay<Vec>& ambient, PerRay<Vec>* sum) const {
  Reflections reflected(rays);
  for (const std::size_t i : lanes) {
    const SurfaceHit& surface = surfaces[i];
    if (!(surface.metallic < 1)) continue;
    const Vec way = rays.ray[i].direction;
    const float plain = 0.08F * surface.look->specular;
    const Vec straight{plain, plain, plain};
    const float share = 1 - surface.metallic;
    const float smooth = 1 - surface.roughness;
    const float cosine = std::max(0.0F, -Dot(surface.normal, way));
    const Vec mirrored = Mirrored(straight, cosine) * (smooth * smooth * share);
    const Vec blurred = straight * ((1 - smooth * smooth) * share);
    (*sum)[i] += blurred * ambient[i];
    const Vec direction = Reflected(way, surface.normal);
    if (detail_ == ShadingDetail::Full && rays.depth < kDeepestReflection &&
        Largest(mirrored) >= kWeakestReflection) {
      reflected.Send(i, ReflectedRay(surface, direction, scene_.Gap(surface)), mirrored);
    } else {
      (*sum)[i] += mirrored * BackdropColor(direction) * ambient[i];
    }
  }
  const auto around = [&](std::size_t i) { return BackdropColor(reflected.rays.ray[i].direction); };
  AddReflections(reflected, around, sum);
}

// Light that goes from facet to facet comes out again, so that nothing is taken off for shadowing:
// a white metal in a white room is white.
void Shading::AddMetal(const Surfaces& surfaces, Lanes lanes, const Rays& rays,
                       const PerRay<float>& open, PerRay<Vec>* sum) const {
  Reflections reflected(rays);
  for (const std::size_t i : lanes) {
    const SurfaceHit& surface = surfaces[i];
    if (!(surface.metallic > 0)) continue;
    const Vec way = rays.ray[i].direction;
    if (detail_ == ShadingDetail::Quick || rays.depth >= kDeepestReflection) {
      const float cosine = std::max(0.0F, -Dot(surface.normal, way));
      const Vec direction = Reflected(way, surface.normal);
      (*sum)[i] += Mirrored(surface.color, cosine) * RoomLight(direction, surface.roughness) *
                   (open[i] * surface.metallic);
      continue;
    }
    const Vec facet = FacetSeen(surface, way, rays.looks[i]);
    const Vec weight = Mirrored(surface.color, std::max(0.0F, -Dot(facet, way))) * surface.metallic;
    Vec direction = Reflected(way, facet);
    if (Dot(direction, surface.normal) < 0) direction = Reflected(direction, surface.normal);
    if (Dot(direction, surface.faceNormal) > 0) {
      reflected.Send(i, ReflectedRay(surface, direction, scene_.Gap(surface)), weight);
    } else {
      (*sum)[i] += weight * RoomLight(direction, 0) * open[i];
    }
  }
  const auto room = [&](std::size_t i) { return RoomLight(reflected.rays.ray[i].direction, 0); };
  AddReflections(reflected, room, sum);
}

template <class Beyond>
void Shading::AddReflections(const Reflections& reflected, const Beyond& beyond,
                             PerRay<Vec>* sum) const {
  if (!reflected.sent) return;
  const PerRay<Vec> light = LightAlong(reflected.rays, reflected.sent, beyond);
  for (const std::size_t i : reflected.sent) (*sum)[i] += reflected.weights[i] * light[i];
}

Vec Shading::RoomLight(Vec direction, float roughness) const {
  const Vec key{-0.497F, 0.746F, -0.443F};  // a large soft lamp in front above
  const Vec rim{0.793F, 0.397F, 0.463F};    // a smaller one behind
  const float wide = 0.3F * roughness;
  const float shape = 0.45F + 0.45F * SmoothStep(-0.3F - wide, 0.35F + wide, direction.y) +
                      2.4F * SmoothStep(0.7F - wide, 0.94F + wide, Dot(direction, key)) +
                      1.3F * SmoothStep(0.75F - wide, 0.95F + wide, Dot(direction, rim));
  const Vec ambient = Mix(groundAmbient_, skyAmbient_, direction.y * 0.5F + 0.5F);
  const float level = (ambient.x + ambient.y + ambient.z) * (1.0F / 3) * shape;
  return {level, level, level};
}

void Shading::AddLight(const LightSource& light, const Surfaces& surfaces, Lanes lanes,
                       const Rays& rays, PerRay<Vec>* sum) const {
  PerRay<Facing> facing;
  Lanes lit;
  Lanes maybeShadowed;
  for (const std::size_t i : lanes) {
    const SurfaceHit& surface = surfaces[i];
    facing[i] = Face(light, surface);
    if (facing[i].cosine <= 0 || facing[i].strength <= 0) continue;
    const bool takesShadows = light.castsShadows && surface.instance->receivesShadows;
    if (takesShadows && Dot(surface.faceNormal, facing[i].direction) <= 0) continue;
    lit.Add(i);
    if (takesShadows) maybeShadowed.Add(i);
  }
  PerRay<Vec> passing;
  passing.fill({1, 1, 1});
  if (light.IsDisc() && detail_ == ShadingDetail::Full) {
    LetPassFromDisc(surfaces, maybeShadowed, light, rays, &passing);
  } else {
    LetPass(surfaces, maybeShadowed, facing, &passing);
  }
  for (const std::size_t i : lit) {
    if (!(Largest(passing[i]) > 0)) continue;
    (*sum)[i] += light.color * passing[i] *
                 Returned(surfaces[i], facing[i], -rays.ray[i].direction) *
                 (facing[i].cosine * facing[i].strength);
  }
}

void Shading::LetPass(const Surfaces& from, Lanes lanes, const PerRay<Facing>& facing,
                      PerRay<Vec>* passing) const {
  PerRay<Ray> rays;
  Lanes sent;
  for (const std::size_t i : lanes) {
    const float gap = scene_.Gap(from[i]);
    rays[i] = {from[i].position + from[i].faceNormal * gap, facing[i].direction, 0,
               facing[i].distance - 2 * gap};
    if (rays[i].far > 0) sent.Add(i);
  }
  const Lanes blocked = scene_.FindBlocked(rays, sent);
  for (const std::size_t i : blocked) (*passing)[i] = {};
  if (!scene_.HasSeeThroughCasters()) return;
  for (const std::size_t i : sent) {
    if (!blocked.Has(i)) (*passing)[i] = PassingThrough(rays[i]);
  }
}

Vec Shading::PassingThrough(Ray ray) const {
  Vec passing{1, 1, 1};
  for (int layer = 0; layer < kMostLayers && ray.near < ray.far; ++layer) {
    SurfaceHit surface;
    if (!scene_.Find(ray, kSeeThroughCaster, camera_, &surface)) break;
    passing = passing * (1 - surface.alpha);
    if (Largest(passing) < kLeastOpen) return {};
    ray.near = surface.distance + scene_.Gap(surface);
  }
  return passing;
}

void Shading::LetPassFromDisc(const Surfaces& from, Lanes lanes, const LightSource& light,
                              const Rays& rays, PerRay<Vec>* passing) const {
  for (const std::size_t i : lanes) (*passing)[i] = {};
  for (std::uint32_t attempt = 0; attempt < kDiscTries; ++attempt) {
    PerRay<Facing> facing;
    for (const std::size_t i : lanes) {
      const Vec way = WayToDisc(light, from[i].position, rays.looks[i], attempt);
      facing[i].direction = Normalized(way);
      facing[i].distance = Length(way);
    }
    PerRay<Vec> share;
    share.fill({1, 1, 1});
    LetPass(from, lanes, facing, &share);
    for (const std::size_t i : lanes) (*passing)[i] += share[i] * (1.0F / kDiscTries);
  }
}

Vec Shading::AmbientOn(const SurfaceHit& surface, float open) const {
  return Mix(groundAmbient_, skyAmbient_, surface.normal.y * 0.5F + 0.5F) * open;
}

PerRay<float> Shading::OpenShares(const Surfaces& surfaces, Lanes lanes, const Rays& rays) const {
  PerRay<float> open;
  open.fill(1);
  static_assert(kOpenTries == 4);
  std::array<PerRay<Ray>, kOpenTries> ways;
  std::array<Lanes, kOpenTries> sent;
  for (const std::size_t i : lanes) {
    const SurfaceHit& surface = surfaces[i];
    if (!surface.instance->receivesShadows) continue;
    open[i] = kUsualOpenShare;
    if (detail_ == ShadingDetail::Quick) continue;
    const Vec start = surface.position + surface.faceNormal * (scene_.Gap(surface) * 2);
    const Look& look = rays.looks[i];
    const Spread spread(look.pixel * 2 + 1, look.pixel * 2 + 0x9e3779b9U);
    const FourVecs around = Around(surface.normal, spread.FourFrom(look.sample * kOpenTries));
    // Those below the face see nothing.
    const FourWhole above = around.Dot(surface.faceNormal) > 0;
    for (std::size_t k = 0; k < kOpenTries; ++k) {
      if (above[k] == 0) continue;
      ways[k][i] = {start, {around.x[k], around.y[k], around.z[k]}, 0, scene_.Size() * kOpenReach};
      sent[k].Add(i);
    }
    open[i] = 1;
  }
  for (std::size_t k = 0; k < kOpenTries; ++k) {
    for (const std::size_t i : scene_.FindBlocked(ways[k], sent[k]))
      open[i] -= 0.75F / static_cast<float>(kOpenTries);
  }
  return open;
}

}  // namespace engine
