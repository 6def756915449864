// Cameras, lights and facts of nodes (glTF 2.0, sections 3.5 and 3.10, KHR_lights_punctual and
// KHR_node_visibility), and what a file says that it needs.
#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <string_view>

#include "engine/import/GltfReader.h"

namespace engine {
namespace {

SourceCamera CameraOf(const Json& camera) {
  SourceCamera result;
  result.parallel = Text(camera, "type") == "orthographic";
  const Json& lens = Object(camera, result.parallel ? "orthographic" : "perspective");
  result.nearPlane = Number(lens, "znear", 0);
  result.farPlane = Number(lens, "zfar", 0);
  result.width = result.parallel ? 2 * Number(lens, "xmag", 1) : 0;
  result.vertical = result.parallel ? 0 : Number(lens, "yfov", 0);
  const double aspect = Number(lens, "aspectRatio", 0);
  // A lens without an aspect has no horizontal angle: it follows the picture (SceneConversion).
  if (aspect > 0) result.horizontal = 2 * std::atan(aspect * std::tan(result.vertical / 2));
  return result;
}

LightKind KindOf(const std::string& type) {
  if (type == "directional") return LightKind::Sun;
  return type == "spot" ? LightKind::Spot : LightKind::Point;
}

SourceLight LightOf(const Json& light) {
  SourceLight result;
  result.kind = KindOf(Text(light, "type"));
  result.brightness = Number(light, "intensity", 1);
  result.range = Number(light, "range", 0);
  // Extras are anybody's: what is no number is none of ours.
  const Json& radius = Member(Member(light, "extras"), "radius");
  if (radius.is_number()) result.radius = std::max(radius.get<double>(), 0.0);
  const auto color = Numbers<3>(light, "color", {1, 1, 1});
  result.color = host::Vector(color[0], color[1], color[2]);
  // The file has half angles.
  const Json& spot = Object(light, "spot");
  result.innerAngle = 2 * Number(spot, "innerConeAngle", 0);
  result.outerAngle = 2 * Number(spot, "outerConeAngle", std::acos(-1.0) / 4);
  return result;
}

// Extensions that the reader supports, in whole or as far as the scene has a place for them.
constexpr std::array kKnown = {"KHR_lights_punctual",        "KHR_node_visibility",
                               "KHR_texture_transform",      "KHR_materials_emissive_strength",
                               "KHR_draco_mesh_compression", "KHR_materials_unlit",
                               "KHR_mesh_quantization",      "KHR_materials_pbrSpecularGlossiness",
                               "EXT_meshopt_compression",    "KHR_materials_specular",
                               "KHR_materials_variants",     "EXT_texture_webp",
                               "KHR_materials_transmission"};
// Prefixes of extensions that only change how surfaces look or move: without them there is still a
// scene to work on.
constexpr std::array kAboutLooks = {"KHR_materials_", "KHR_texture_",  "EXT_texture_",
                                    "MSFT_texture_",  "KHR_technique", "KHR_animation_",
                                    "KHR_xmp"};

bool IsKnown(const std::string& extension) {
  return std::find(kKnown.begin(), kKnown.end(), std::string_view(extension)) != kKnown.end();
}

bool IsAboutLooks(const std::string& extension) {
  return std::any_of(kAboutLooks.begin(), kAboutLooks.end(),
                     [&](const char* start) { return extension.rfind(start, 0) == 0; });
}

// How often each extension is used, wherever it stands; at any depth, without recursion. The file's
// own list says only that one is used, not how much is lost without it.
std::map<std::string, std::size_t> UsesOfExtensions(const Json& top) {
  std::map<std::string, std::size_t> uses;
  std::vector<const Json*> pending{&top};
  while (!pending.empty()) {
    const Json& value = *pending.back();
    pending.pop_back();
    const Json& extensions = Member(value, "extensions");
    if (extensions.is_object()) {
      for (const auto& [name, ignored] : extensions.items()) ++uses[name];
    }
    for (const Json& below : value) {
      if (below.is_structured()) pending.push_back(&below);
    }
  }
  return uses;
}

std::vector<std::string> Texts(const Json& list) {
  std::vector<std::string> texts;
  for (std::size_t i = 0; i < SizeOf(list); ++i) {
    if (list[i].is_string()) texts.push_back(list[i].get<std::string>());
  }
  return texts;
}

}  // namespace

void CheckExtensions(const GltfFile& file, Notes& notes) {
  const std::vector<std::string> required = Texts(List(file.Top(), "extensionsRequired"));
  for (const std::string& extension : required) {
    if (!IsKnown(extension) && !IsAboutLooks(extension))
      throw UnreadableFile("it needs the extension " + extension + ", which is not known here.");
  }
  std::vector<std::string> unknown = Texts(List(file.Top(), "extensionsUsed"));
  std::erase_if(unknown, IsKnown);
  if (unknown.empty()) return;
  const std::map<std::string, std::size_t> uses = UsesOfExtensions(file.Top());
  for (const std::string& extension : unknown) {
    const bool needed = std::find(required.begin(), required.end(), extension) != required.end();
    const std::string what = "The extension " + extension + " is left out" +
                             (needed ? ", although the file requires it" : "");
    const auto found = uses.find(extension);
    if (found == uses.end()) {
      notes.Add(what + ".");
    } else {
      notes.Count(what + ", uses", found->second);
    }
  }
}

// Bytes that are no UTF-8 are replaced: the text has to be read again.
std::string ExtrasText(const Json& value) {
  const Json& extras = Member(value, "extras");
  const bool isEmpty = extras.is_null() || (extras.is_structured() && extras.empty());
  return isEmpty ? std::string() : extras.dump(-1, ' ', false, Json::error_handler_t::replace);
}

void AddCamerasAndLights(const GltfFile& file, SceneFacts& facts) {
  const Json& cameras = List(file.Top(), "cameras");
  for (std::size_t i = 0; i < SizeOf(cameras); ++i) facts.cameras.push_back(CameraOf(cameras[i]));
  const Json& lights = List(Extension(file.Top(), "KHR_lights_punctual"), "lights");
  for (std::size_t i = 0; i < SizeOf(lights); ++i) facts.lights.push_back(LightOf(lights[i]));
}

NodeFacts NodeFactsOf(const GltfFile& file, const Json& node) {
  NodeFacts facts;
  const std::size_t camera = Index(node, "camera");
  if (!file.Entry("cameras", camera).is_null()) facts.cameras.push_back(camera);
  const Json& lights = List(Extension(file.Top(), "KHR_lights_punctual"), "lights");
  const std::size_t light = Index(Extension(node, "KHR_lights_punctual"), "light");
  if (!Element(lights, light, "lights").is_null()) facts.lights.push_back(light);
  facts.name = Text(node, "name");
  facts.isVisible = Truth(Extension(node, "KHR_node_visibility"), "visible", true);
  // Extras are anybody's: what is no text is none of ours.
  const Json& layer = Member(Member(node, "extras"), "layer");
  if (layer.is_string()) facts.layer = layer.get<std::string>();
  facts.extras = ExtrasText(node);
  facts.meshExtras = ExtrasText(file.Entry("meshes", Index(node, "mesh")));
  return facts;
}

}  // namespace engine
