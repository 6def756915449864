#include "engine/publish/CamerasAndLights.h"

#include <algorithm>
#include <cmath>

#include "engine/publish/GltfGeometry.h"
#include "engine/publish/NodeTexts.h"
#include "engine/scene/Extras.h"
#include "engine/scene/PictureParameters.h"
#include "engine/scene/TreeWalk.h"
#include "host/Parameters.h"

namespace engine {

namespace {

using Json = nlohmann::ordered_json;

constexpr double kPi = 3.14159265358979323846;
constexpr double kNearest = 0.01;   // metres, where a camera has no near limit
constexpr int kSun = 2;             // of the kinds of lights
constexpr double kFarthest = 1000;  // metres, of a parallel camera without a limit

// The number where it is one, within bounds; else `other`.
double Within(double value, double low, double high, double other) {
  return std::isfinite(value) ? std::clamp(value, low, high) : other;
}

constexpr double kMost = 1e30;  // fits a float of whoever reads it

// The format wants a far limit of parallel cameras, and of no others.
Json Parallel(const host::BaseContainer& data, double aspect, double near, double far) {
  const double wide =
      Within(data.GetReal(host::CAMERA_WIDTH, 1000) * kMetresPerUnit, 1e-6, kMost, 10) / 2;
  return {{"xmag", wide},
          {"ymag", wide / aspect},
          {"zfar", far > near ? far : near + kFarthest},
          {"znear", near}};
}

Json Perspective(const host::BaseContainer& data, double aspect, double near, double far) {
  const double fov = Within(data.GetReal(host::CAMERA_FOV, 0.9273), 0.001, kPi - 0.001, 0.9273);
  const double vertical = data.GetReal(host::CAMERA_FOV_VERTICAL);
  // A camera with a vertical angle of its own has a shape of its own; of all others the horizontal
  // angle holds, whatever the picture's shape.
  const bool own = vertical > 0 && vertical < kPi;
  const double high = own ? vertical : 2 * std::atan(std::tan(fov / 2) / aspect);
  Json camera = {{"aspectRatio", own ? std::tan(fov / 2) / std::tan(vertical / 2) : aspect},
                 {"yfov", high},
                 {"znear", near > 0 ? near : kNearest}};
  if (far > (near > 0 ? near : kNearest)) camera["zfar"] = far;
  return camera;
}

Json CameraJson(const host::BaseObject& object, double aspect) {
  const host::BaseContainer& data = *object.GetDataInstance();
  const double near = Within(data.GetReal(host::CAMERA_NEAR) * kMetresPerUnit, 0, kMost, 0);
  const double far = Within(data.GetReal(host::CAMERA_FAR) * kMetresPerUnit, 0, kMost, 0);
  const bool isParallel = data.GetLong(host::CAMERA_PROJECTION) == 1;
  const char* kind = isParallel ? "orthographic" : "perspective";
  return {{"name", NodeNameOf(object)},
          {"type", kind},
          {kind,
           isParallel ? Parallel(data, aspect, near, far) : Perspective(data, aspect, near, far)}};
}

// The format has half angles, the inner one smaller than the outer.
Json SpotOf(const host::BaseContainer& data) {
  const double outer =
      Within(data.GetReal(host::LIGHT_OUTER_ANGLE, 0.785) / 2, 0.001, kPi / 2, 0.3925);
  const double inner = Within(data.GetReal(host::LIGHT_INNER_ANGLE, 0.523) / 2, 0, outer, 0);
  return {{"innerConeAngle", std::min(inner, outer * 0.999)}, {"outerConeAngle", outer}};
}

// The format's own unit where the light came from a file that has one.
double IntensityOf(const host::BaseContainer& data, double unit) {
  return Within(data.GetReal(host::LIGHT_BRIGHTNESS, 1) * data.GetReal(kLightUnit, unit), 0, kMost,
                1);
}

Json LightJson(const host::BaseObject& object, host::LONG kind, double unit) {
  static constexpr const char* kKinds[] = {"point", "spot", "directional", "point"};
  const host::BaseContainer& data = *object.GetDataInstance();
  const bool colored = data.FindIndex(host::LIGHT_COLOR) != host::NOTOK;
  const host::Vector color = colored ? data.GetVector(host::LIGHT_COLOR) : host::Vector(1);
  const auto share = [](double value) { return Within(value, 0, 1, 1); };
  Json light = {{"name", NodeNameOf(object)},
                {"type", kKinds[kind]},
                {"color", Json::array({share(color.x), share(color.y), share(color.z)})},
                {"intensity", IntensityOf(data, unit)}};
  const double range = data.GetReal(host::LIGHT_RANGE) * kMetresPerUnit;
  if (range > 0 && range < kMost && kind != kSun) light["range"] = range;
  if (kind == 1) light["spot"] = SpotOf(data);
  // The format has no lamps of a size: what the importer reads.
  const double radius = data.GetReal(kLightRadius) * kMetresPerUnit;
  if (radius > 0 && radius < kMost && kind != kSun) light["extras"]["radius"] = radius;
  return light;
}

}  // namespace

// A light that was made here beside imported ones is as bright beside them in the file as in the
// picture.
LightUnits LightUnitsOf(const host::BaseDocument& doc) {
  LightUnits units{0, 0};
  for (const host::BaseObject* object = doc.GetFirstObject(); object; object = NextInTree(object)) {
    if (object->GetType() != host::Olight) continue;
    const host::BaseContainer& data = *object->GetDataInstance();
    double& unit = data.GetLong(host::LIGHT_TYPE) == kSun ? units.lux : units.candela;
    unit = std::max(unit, Within(data.GetReal(kLightUnit), 0, kMost, 0));
  }
  return {units.candela > 0 ? units.candela : 1, units.lux > 0 ? units.lux : 1};
}

std::size_t CamerasAndLights::CameraOf(const host::BaseObject& object) {
  const auto [place, isNew] = cameraIndices_.try_emplace(IdOf(object), cameras_.size());
  if (isNew) cameras_.push_back(CameraJson(object, aspect_));
  return place->second;
}

std::size_t CamerasAndLights::LightOf(const host::BaseObject& object) {
  const auto kind =
      std::clamp<host::LONG>(object.GetDataInstance()->GetLong(host::LIGHT_TYPE), 0, 3);
  hasAreaLights_ = hasAreaLights_ || kind == 3;
  const auto [place, isNew] = lightIndices_.try_emplace(IdOf(object), lights_.size());
  const double unit = kind == kSun ? units_.lux : units_.candela;
  if (isNew) {
    const double brightness = object.GetDataInstance()->GetReal(host::LIGHT_BRIGHTNESS, 1);
    lights_.push_back(LightJson(object, kind, unit));
    brightness_.push_back(Within(brightness, 0, kMost, 1));
  }
  return place->second;
}

}  // namespace engine
