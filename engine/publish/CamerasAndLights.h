// CamerasAndLights: cameras (glTF 2.0, section 3.10) and the lights of the extension for them, each
// written when the first node uses it. Main thread.
#pragma once

#include <nlohmann/json.hpp>
#include <unordered_map>

#include "engine/scene/NodeIds.h"
#include "host/BaseDocument.h"

namespace engine {

// A brightness of 1 in the format's units, for lights without such a number of their own: the
// largest of the scene's other lights, else 1.
struct LightUnits {
  double candela = 1;
  double lux = 1;  // of suns
};
LightUnits LightUnitsOf(const host::BaseDocument& doc);

class CamerasAndLights {
 public:
  using Json = nlohmann::ordered_json;
  // `aspect`: width over height of the pictures.
  CamerasAndLights(double aspect, const LightUnits& units) : aspect_(aspect), units_(units) {}

  // Index of a camera object's camera.
  std::size_t CameraOf(const host::BaseObject& object);
  // Index of a light object's light, which is no ambient one.
  std::size_t LightOf(const host::BaseObject& object);
  // These are written as point lights: the format has none.
  bool HasAreaLights() const { return hasAreaLights_; }

  const Json& Cameras() const { return cameras_; }
  const Json& Lights() const { return lights_; }
  // Of each light in the order of Lights: how bright it is in the pictures of this program, where 1
  // is full, whatever the unit of its intensity.
  const Json& Brightness() const { return brightness_; }

 private:
  double aspect_;
  LightUnits units_;
  std::unordered_map<NodeId, std::size_t> cameraIndices_;
  std::unordered_map<NodeId, std::size_t> lightIndices_;
  Json cameras_ = Json::array();
  Json lights_ = Json::array();
  Json brightness_ = Json::array();
  bool hasAreaLights_ = false;
};

}  // namespace engine
