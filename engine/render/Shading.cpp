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

// A number without a pattern (the output permutation of PCG, by O'Neill).
std::uint32_t Scrambled(std::uint32_t n) {
  n = n * 747796405U + 2891336453U;
  n = ((n >> ((n >> 28U) + 4U)) ^ n) * 277803737U;
  return (n >> 22U) ^ n;
}

float ToShare(std::uint32_t n) { return static_cast<float>(n >> 8U) * (1.0F / 16777216.0F); }

// Of what is not negative and far below the end of the whole numbers: no call of a function.
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
  // That one and the three after it.
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

Vec Shading::LightAt(float x, float y, std::uint32_t pixel, std::uint32_t sample,
                     FirstHit* first) const {
  const auto backdrop = [&] { return BackdropColor(camera_.BackdropDirection(x, y)); };
  const Vec light = LightAlong(camera_.Through(x, y), backdrop, {pixel, sample}, 0, first);
  return IsFinite(light) ? light : Vec{};
}

template <class Beyond>
Vec Shading::LightAlong(const Ray& start, const Beyond& beyond, Tries tries, int depth,
                        FirstHit* first) const {
  Ray ray = start;
  Vec light;
  float open = 1;
  for (int layer = 0; layer < kMostLayers; ++layer) {
    SurfaceHit surface;
    if (!scene_.FindVisible(ray, camera_, &surface)) break;
    if (first && layer == 0) *first = {surface.instance, surface.distance};
    light += LightFrom(surface, ray, tries, depth) * (open * surface.alpha);
    open *= 1 - surface.alpha;
    if (open < 0.004F) return light;
    ray.near = surface.distance + scene_.Gap(surface);
  }
  return light + beyond() * open;
}

Vec Shading::LightFrom(const SurfaceHit& surface, const Ray& ray, Tries tries, int depth) const {
  const Vec toEye = -ray.direction;
  const float metallic = surface.metallic;
  const Vec diffuse = surface.color * (1 - metallic);
  const float open =
      (surface.instance->receivesShadows ? OpenShare(surface, tries) : 1) * surface.occlusion;
  const Vec ambient = AmbientOn(surface, open);
  Vec light = surface.luminance + diffuse * ambient;
  for (const LightSource& source : lights_) light += LightOf(source, surface, toEye, tries);
  if (metallic < 1) AddGloss(surface, ray, ambient, tries, depth, &light);
  if (metallic > 0) light += MetalOn(surface, ray, open, tries, depth) * metallic;
  return light;
}

void Shading::AddGloss(const SurfaceHit& surface, const Ray& ray, Vec ambient, Tries tries,
                       int depth, Vec* light) const {
  const float plain = 0.08F * surface.look->specular;
  const Vec straight{plain, plain, plain};
  const float share = 1 - surface.metallic;
  const float smooth = 1 - surface.roughness;
  const float cosine = std::max(0.0F, -Dot(surface.normal, ray.direction));
  const Vec mirrored = Mirrored(straight, cosine) * (smooth * smooth * share);
  const Vec blurred = straight * ((1 - smooth * smooth) * share);
  *light += blurred * ambient;
  const Vec direction = Reflected(ray.direction, surface.normal);
  const auto around = [&] { return BackdropColor(direction); };
  const bool traced = detail_ == ShadingDetail::Full && depth < kDeepestReflection &&
                      Largest(mirrored) >= kWeakestReflection;
  if (!traced) {
    *light += mirrored * around() * ambient;
    return;
  }
  const Ray reflected{surface.position + surface.faceNormal * scene_.Gap(surface), direction, 0,
                      std::numeric_limits<float>::infinity()};
  *light += mirrored * LightAlong(reflected, around, tries, depth + 1);
}

// Light that goes from facet to facet comes out again, so that nothing is taken off for shadowing:
// a white metal in a white room is white.
Vec Shading::MetalOn(const SurfaceHit& surface, const Ray& ray, float open, Tries tries,
                     int depth) const {
  const Vec toEye = -ray.direction;
  if (detail_ == ShadingDetail::Quick || depth >= kDeepestReflection) {
    const float cosine = std::max(0.0F, Dot(surface.normal, toEye));
    const Vec direction = Reflected(ray.direction, surface.normal);
    return Mirrored(surface.color, cosine) * RoomLight(direction, surface.roughness) * open;
  }
  const Pair pair =
      Spread(tries.pixel * 2 + 0x68bc21ebU, tries.pixel * 2 + 0x02e5be93U).At(tries.sample);
  const Vec facet = FacetToward(toEye, surface.normal, surface.roughness, pair);
  const Vec weight = Mirrored(surface.color, std::max(0.0F, Dot(facet, toEye)));
  Vec direction = Reflected(ray.direction, facet);
  if (Dot(direction, surface.normal) < 0) direction = Reflected(direction, surface.normal);
  const auto room = [&] { return RoomLight(direction, 0); };
  if (Dot(direction, surface.faceNormal) <= 0) return weight * room() * open;
  const Ray reflected{surface.position + surface.faceNormal * scene_.Gap(surface), direction, 0,
                      std::numeric_limits<float>::infinity()};
  return weight * LightAlong(reflected, room, tries, depth + 1);
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

Vec Shading::LightOf(const LightSource& light, const SurfaceHit& surface, Vec toEye,
                     Tries tries) const {
  Vec toLight = -light.direction;
  float distance = std::numeric_limits<float>::infinity();
  float strength = 1;
  if (light.kind != LightSource::Kind::Sun) {
    const Vec way = light.position - surface.position;
    distance = Length(way);
    toLight = distance > 0 ? way * (1 / distance) : way;
    if (light.kind == LightSource::Kind::Spot) {
      strength = SmoothStep(light.outerCosine, light.innerCosine, -Dot(toLight, light.direction));
    }
    if (light.range > 0) strength *= 1 - SmoothStep(0, light.range, distance);
  }
  const float cosine = Dot(surface.normal, toLight);
  if (cosine <= 0 || strength <= 0) return {};
  Vec passing{1, 1, 1};
  if (light.castsShadows && surface.instance->receivesShadows) {
    if (Dot(surface.faceNormal, toLight) <= 0) return {};
    const bool isDisc = light.radius > 0 && light.kind != LightSource::Kind::Sun;
    passing = isDisc && detail_ == ShadingDetail::Full ? PassingFromDisc(surface, light, tries)
                                                       : Passing(surface, toLight, distance);
  }
  if (!(Largest(passing) > 0)) return {};
  const Vec half = Normalized(toLight + toEye);
  const Vec mirrored = Mirrored(StraightReflection(surface), std::max(0.0F, Dot(half, toEye)));
  const Vec diffuse = surface.color * (1 - surface.metallic) * (Vec{1, 1, 1} - mirrored);
  return light.color * passing * (diffuse + mirrored * Gloss(surface, half, toEye, cosine)) *
         (cosine * strength);
}

Vec Shading::Passing(const SurfaceHit& from, Vec direction, float distance) const {
  const float gap = scene_.Gap(from);
  Ray ray{from.position + from.faceNormal * gap, direction, 0, distance - 2 * gap};
  if (!(ray.far > 0)) return {1, 1, 1};
  if (scene_.IsBlocked(ray)) return {};
  Vec passing{1, 1, 1};
  if (!scene_.HasSeeThroughCasters()) return passing;
  for (int layer = 0; layer < kMostLayers && ray.near < ray.far; ++layer) {
    SurfaceHit surface;
    if (!scene_.Find(ray, kSeeThroughCaster, camera_, &surface)) break;
    passing = passing * (1 - surface.alpha);
    if (Largest(passing) < 0.004F) return {};
    ray.near = surface.distance + scene_.Gap(surface);
  }
  return passing;
}

Vec Shading::PassingFromDisc(const SurfaceHit& from, const LightSource& light, Tries tries) const {
  const Sides sides(Normalized(light.position - from.position));
  const Spread spread(tries.pixel * 2 + 0x967a889bU, tries.pixel * 2 + 0x368cc8b7U);
  Vec sum;
  for (std::uint32_t i = 0; i < kDiscTries; ++i) {
    const Pair pair = spread.At(tries.sample * kDiscTries + i);
    const float r = light.radius * std::sqrt(pair.a);
    const Vec way = light.position + sides.side * (r * std::cos(2 * kPi * pair.b)) +
                    sides.other * (r * std::sin(2 * kPi * pair.b)) - from.position;
    sum += Passing(from, Normalized(way), Length(way));
  }
  return sum * (1.0F / kDiscTries);
}

Vec Shading::AmbientOn(const SurfaceHit& surface, float open) const {
  return Mix(groundAmbient_, skyAmbient_, surface.normal.y * 0.5F + 0.5F) * open;
}

float Shading::OpenShare(const SurfaceHit& surface, Tries tries) const {
  if (detail_ == ShadingDetail::Quick) return kUsualOpenShare;
  const Vec start = surface.position + surface.faceNormal * (scene_.Gap(surface) * 2);
  const Spread spread(tries.pixel * 2 + 1, tries.pixel * 2 + 0x9e3779b9U);
  static_assert(kOpenTries == 4);
  const FourVecs ways = Around(surface.normal, spread.FourFrom(tries.sample * kOpenTries));
  // Those below the face see nothing.
  const FourWhole above = ways.Dot(surface.faceNormal) > 0;
  const int blocked = scene_.CountBlocked(start, ways, above, scene_.Size() * kOpenReach);
  const auto open = static_cast<float>(static_cast<int>(kOpenTries) - blocked);
  return 0.25F + 0.75F * open / static_cast<float>(kOpenTries);
}

}  // namespace engine
