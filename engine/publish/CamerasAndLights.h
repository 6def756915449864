// CamerasAndLights: cameras (glTF 2.0, section 3.10) and the lights of the extension for them, each
// written when the first node uses it. Main thread.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <unordered_map>

#include "engine/scene/NodeIds.h"
#include "host/BaseObject.h"

namespace engine {

class CamerasAndLights {
 public:
  using Json = nlohmann::ordered_json;
  // `aspect`: width over height of the pictures.
  explicit CamerasAndLights(double aspect) : aspect_(aspect) {}

  // Index of a camera object's camera.
  std::size_t CameraOf(const host::BaseObject& object);
  // Index of a light object's light; nothing for a kind that the format does not have.
  std::optional<std::size_t> LightOf(const host::BaseObject& object);
  // What is written otherwise than it is, or not at all: a sentence each, each once.
  const std::vector<std::string>& Notes() const { return notes_; }

  const Json& Cameras() const { return cameras_; }
  const Json& Lights() const { return lights_; }

 private:
  void Note(const char* sentence);

  double aspect_;
  std::unordered_map<NodeId, std::size_t> cameraIndices_;
  std::unordered_map<NodeId, std::size_t> lightIndices_;
  Json cameras_ = Json::array();
  Json lights_ = Json::array();
  std::vector<std::string> notes_;
};

}  // namespace engine
