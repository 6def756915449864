// Facts that are read from a glTF file itself, which the library drops or changes (glTF 2.0,
// sections 3.5 and 3.10, and the extensions KHR_lights_punctual, KHR_node_visibility,
// KHR_materials_emissive_strength): the library knows one
// user of each camera and light only, gives wrong angles, and drops scenes, visibility and emissive
// strength.
#include <algorithm>
#include <array>
#include <cmath>
#include <nlohmann/json.hpp>

#include "engine/import/SceneFacts.h"

namespace engine {
namespace {

using Json = nlohmann::json;

// The member of an object, null where it is missing or `value` is no object.
const Json& Member(const Json& value, const char* key) {
  static const Json none;
  if (!value.is_object()) return none;
  const auto found = value.find(key);
  return found == value.end() ? none : *found;
}

double Number(const Json& value, const char* key, double preset) {
  const Json& member = Member(value, key);
  const double number = member.is_number() ? member.get<double>() : preset;
  return std::isfinite(number) ? number : preset;
}

std::string Text(const Json& value, const char* key) {
  const Json& member = Member(value, key);
  return member.is_string() ? member.get<std::string>() : std::string();
}

// An element of an array by an index member; null where there is none.
const Json& At(const Json& list, std::size_t index) {
  static const Json none;
  return list.is_array() && index < list.size() ? list[index] : none;
}

constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);

std::size_t IndexOf(const Json& value, const char* key) {
  const Json& member = Member(value, key);
  return member.is_number_unsigned() ? member.get<std::size_t>() : kNowhere;
}

SourceCamera CameraOf(const Json& camera) {
  SourceCamera result;
  result.parallel = Text(camera, "type") == "orthographic";
  const Json& lens = Member(camera, result.parallel ? "orthographic" : "perspective");
  result.nearPlane = Number(lens, "znear", 0);
  result.farPlane = Number(lens, "zfar", 0);
  result.width = result.parallel ? 2 * Number(lens, "xmag", 1) : 0;
  result.vertical = result.parallel ? 0 : Number(lens, "yfov", 0);
  const double aspect = Number(lens, "aspectRatio", 0);
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
  const Json& color = Member(light, "color");
  const auto channel = [&](std::size_t i) {
    return At(color, i).is_number() ? At(color, i).get<double>() : 1.0;
  };
  result.color = host::Vector(channel(0), channel(1), channel(2));
  // The file has half angles.
  const Json& spot = Member(light, "spot");
  result.innerAngle = 2 * Number(spot, "innerConeAngle", 0);
  result.outerAngle = 2 * Number(spot, "outerConeAngle", std::acos(-1.0) / 4);
  return result;
}

template <class T, class Read>
void ReadList(const Json& list, std::vector<T>& into, Read read) {
  if (!list.is_array()) return;
  for (const Json& entry : list) into.push_back(read(entry));
}

std::array<double, 2> Pair(const Json& value, const char* key, std::array<double, 2> preset) {
  const Json& list = Member(value, key);
  for (std::size_t i = 0; i < 2; ++i) {
    if (At(list, i).is_number()) preset[i] = At(list, i).get<double>();
  }
  return preset;
}

unsigned ChannelOf(double number) {
  return number > 0 && number < 64 ? static_cast<unsigned>(number) : 0;
}

// KHR_texture_transform: scaled, then turned anticlockwise, then moved.
UvUse UvUseOf(const Json& texture) {
  const Json& transform = Member(Member(texture, "extensions"), "KHR_texture_transform");
  UvUse use;
  use.channel = ChannelOf(Number(transform, "texCoord", Number(texture, "texCoord", 0)));
  use.offset = Pair(transform, "offset", use.offset);
  use.scale = Pair(transform, "scale", use.scale);
  use.rotation = Number(transform, "rotation", 0);
  return use;
}

// A mesh has one set of coordinates: that of the first texture counts.
UvUse UvUseOfMaterial(const Json& material) {
  const Json& color = Member(Member(material, "pbrMetallicRoughness"), "baseColorTexture");
  if (!color.is_null()) return UvUseOf(color);
  const Json& normal = Member(material, "normalTexture");
  return UvUseOf(normal.is_null() ? Member(material, "emissiveTexture") : normal);
}

MaterialFacts MaterialOf(const Json& material) {
  MaterialFacts facts;
  const Json& extensions = Member(material, "extensions");
  facts.emissiveStrength =
      Number(Member(extensions, "KHR_materials_emissive_strength"), "emissiveStrength", 1);
  facts.uvs = UvUseOfMaterial(material);
  return facts;
}

NodeFacts FactsOf(const Json& node, const SceneFacts& scene) {
  NodeFacts facts;
  const Json& extensions = Member(node, "extensions");
  const std::size_t camera = IndexOf(node, "camera");
  const std::size_t light = IndexOf(Member(extensions, "KHR_lights_punctual"), "light");
  if (camera < scene.cameras.size()) facts.cameras.push_back(camera);
  if (light < scene.lights.size()) facts.lights.push_back(light);
  facts.isNamed = !Text(node, "name").empty();
  facts.layer = Text(Member(node, "extras"), "layer");
  const Json& visible = Member(Member(extensions, "KHR_node_visibility"), "visible");
  facts.isVisible = !visible.is_boolean() || visible.get<bool>();
  return facts;
}

// Walks the file's nodes beside the library's, which keep the order of the file.
class NodeMatch {
 public:
  NodeMatch(const Json& file, SceneFacts& facts) : nodes_(Member(file, "nodes")), facts_(facts) {}

  void AddRoots(const aiNode* root, const Json& list) {
    if (facts_.rootIsNode) {
      Add(root, At(list, 0));
    } else {
      AddChildren(root, list);
    }
    while (!pending_.empty()) {
      const Pair pair = pending_.back();
      pending_.pop_back();
      facts_.nodes[pair.node] = FactsOf(*pair.json, facts_);
      AddChildren(pair.node, Member(*pair.json, "children"));
    }
  }

 private:
  struct Pair {
    const aiNode* node;
    const Json* json;
  };
  void Add(const aiNode* node, const Json& index) {
    if (index.is_number_unsigned())
      pending_.push_back({node, &At(nodes_, index.get<std::size_t>())});
  }
  void AddChildren(const aiNode* node, const Json& list) {
    for (unsigned i = 0; i < node->mNumChildren; ++i) Add(node->mChildren[i], At(list, i));
  }

  const Json& nodes_;
  SceneFacts& facts_;
  std::vector<Pair> pending_;
};

bool IsKnown(const std::string& extension) {
  static const std::array<const char*, 7> known = {
      "KHR_lights_punctual",   "KHR_node_visibility",        "KHR_materials_emissive_strength",
      "KHR_texture_transform", "KHR_draco_mesh_compression", "KHR_materials_unlit",
      "KHR_mesh_quantization"};
  return std::find(known.begin(), known.end(), extension) != known.end();
}

void NoteLosses(const Json& file, Notes& notes) {
  const Json& scenes = Member(file, "scenes");
  if (scenes.is_array() && scenes.size() > 1)
    notes.Count("Other scenes of the file are left out", scenes.size() - 1);
  const Json& used = Member(file, "extensionsUsed");
  if (!used.is_array()) return;
  for (const Json& extension : used) {
    if (!extension.is_string() || IsKnown(extension.get<std::string>())) continue;
    notes.Add("The extension " + extension.get<std::string>() + " is left out.");
  }
}

}  // namespace

bool AddGltfFacts(const aiScene& scene, const std::string& json, SceneFacts& facts, Notes& notes) {
  const Json file = Json::parse(json, nullptr, false);
  if (Member(file, "nodes").is_object()) return false;
  ReadList(Member(file, "cameras"), facts.cameras, CameraOf);
  ReadList(Member(Member(Member(file, "extensions"), "KHR_lights_punctual"), "lights"),
           facts.lights, LightOf);
  ReadList(Member(file, "materials"), facts.materials, MaterialOf);
  const std::size_t chosen = IndexOf(file, "scene");
  const Json& roots = Member(At(Member(file, "scenes"), chosen == kNowhere ? 0 : chosen), "nodes");
  facts.rootIsNode = roots.is_array() && roots.size() == 1;
  NodeMatch(file, facts).AddRoots(scene.mRootNode, roots);
  NoteLosses(file, notes);
  return true;
}

}  // namespace engine
