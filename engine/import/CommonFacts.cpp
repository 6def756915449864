// Facts that the library's own scene holds: cameras and lights by the names of their nodes, and the
// nodes' metadata.
#include <assimp/ColladaMetaData.h>
#include <strings.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <sstream>

#include "engine/import/Axes.h"
#include "engine/import/ForeignText.h"
#include "engine/import/SceneFacts.h"

namespace engine {
namespace {

using NodesByName = std::unordered_map<std::string, std::vector<const aiNode*>>;

NodesByName NodesOf(const aiScene& scene) {
  NodesByName names;
  std::vector<const aiNode*> pending{scene.mRootNode};
  while (!pending.empty()) {
    const aiNode* node = pending.back();
    pending.pop_back();
    names[node->mName.C_Str()].push_back(node);
    for (unsigned i = node->mNumChildren; i > 0; --i) pending.push_back(node->mChildren[i - 1]);
  }
  // A camera or light sits on a node without a mesh first of all.
  for (auto& [name, nodes] : names) {
    std::stable_partition(nodes.begin(), nodes.end(),
                          [](const aiNode* node) { return node->mNumMeshes == 0; });
  }
  return names;
}

// The nodes of a name take turns: the first camera of that name sits on the first of them, and so
// on.
template <class Assign>
void AssignByName(const NodesByName& names, std::unordered_map<std::string, std::size_t>& taken,
                  const char* name, Assign assign) {
  const auto found = names.find(name);
  if (found != names.end()) assign(found->second[taken[name]++ % found->second.size()]);
}

// glTF has cameras look along -z, which the library does not say, and of the first version it takes
// the angles of a picture for its sides.
void MendOldGltf(const aiCamera& camera, SourceCamera& result) {
  result.frame = host::Matrix();
  if (result.parallel || !(camera.mAspect > 0)) return;
  const auto aspect = static_cast<double>(camera.mAspect);
  result.vertical = result.horizontal / aspect;
  result.horizontal = 2 * std::atan(aspect * std::tan(result.vertical / 2));
}

// The library puts cameras and lights where their nodes are.
SourceCamera CameraOf(const aiCamera& camera, SourceFormat format) {
  SourceCamera result;
  result.frame = FrameLooking(camera.mLookAt, camera.mUp);
  result.parallel = camera.mOrthographicWidth > 0;
  result.width = 2 * static_cast<double>(camera.mOrthographicWidth);
  result.horizontal = result.parallel ? 0 : static_cast<double>(camera.mHorizontalFOV);
  result.nearPlane = camera.mClipPlaneNear;
  result.farPlane = camera.mClipPlaneFar;
  if (IsGltf(format)) MendOldGltf(camera, result);
  return result;
}

LightKind KindOf(aiLightSourceType type) {
  switch (type) {
    case aiLightSource_DIRECTIONAL:
      return LightKind::Sun;
    case aiLightSource_SPOT:
      return LightKind::Spot;
    case aiLightSource_AREA:
      return LightKind::Area;
    case aiLightSource_AMBIENT:
      return LightKind::Ambient;
    default:
      return LightKind::Point;
  }
}

bool IsDirected(LightKind kind) {
  return kind == LightKind::Sun || kind == LightKind::Spot || kind == LightKind::Area;
}

void SetAngles(const aiLight& light, SourceFormat format, SourceLight& result) {
  // COLLADA gives one full angle and an exponent; what the library computes from that is wider than
  // the cone.
  const bool one = format == SourceFormat::Collada;
  result.innerAngle = light.mAngleInnerCone;
  result.outerAngle = one ? light.mAngleInnerCone : light.mAngleOuterCone;
}

SourceLight LightOf(const aiLight& light, SourceFormat format) {
  SourceLight result;
  result.kind = KindOf(light.mType);
  // The library keeps the color of an ambient light in another member.
  const bool isDark = light.mColorDiffuse.IsBlack();
  const aiColor3D& color = isDark ? light.mColorAmbient : light.mColorDiffuse;
  result.color = host::Vector(color.r, color.g, color.b);
  if (IsDirected(result.kind)) result.frame = FrameLooking(light.mDirection, light.mUp);
  if (result.kind == LightKind::Spot) SetAngles(light, format, result);
  return result;
}

// The text of a node's metadata under a key, letter case aside.
std::string MetadataText(const aiNode& node, const char* key) {
  const aiMetadata* data = node.mMetaData;
  for (unsigned i = 0; data != nullptr && i < data->mNumProperties; ++i) {
    const bool same = ::strcasecmp(data->mKeys[i].C_Str(), key) == 0;
    if (same && data->mValues[i].mType == AI_AISTRING)
      return static_cast<aiString*>(data->mValues[i].mData)->C_Str();
  }
  return {};
}

// The factor is in centimeters already.
double FbxUnit(const aiScene& scene) {
  float unit = 1;
  if (scene.mMetaData != nullptr) scene.mMetaData->Get("UnitScaleFactor", unit);
  return std::isfinite(unit) && unit > 0 ? static_cast<double>(unit) : 1;
}

// Scene units are centimeters.
double UnitsPerFileUnit(const aiScene& scene, SourceFormat format) {
  switch (format) {
    case SourceFormat::Fbx:
      return FbxUnit(scene);
    case SourceFormat::Obj:
      return 1;
    default:
      return 100;
  }
}

// Names that the library invents where the file has none: the node's id, or the file's own name.
std::string BetterName(const aiNode& node, SourceFormat format, const std::string& path) {
  const std::string_view name(node.mName.data, node.mName.length);
  if (format == SourceFormat::Collada && name.rfind("$ColladaAutoName$", 0) == 0) {
    const std::string id = MetadataText(node, AI_METADATA_COLLADA_ID);
    return id.empty() ? "Node" : id;
  }
  const bool isNameless = format == SourceFormat::Obj && name == "defaultobject";
  return isNameless ? std::filesystem::path(path).stem().string() : std::string();
}

// The names of the materials that the OBJ's own files describe.
std::set<std::string> DescribedMaterials(const FolderFiles& files) {
  std::set<std::string> names;
  for (const std::string& file : files.Opened()) {
    if (FormatOf(file) == SourceFormat::Obj) continue;
    const std::string bytes = files.ReadWhole(file);
    std::istringstream text(IsMarkedUtf16(bytes) ? FromUtf16(bytes) : bytes);
    for (std::string line; std::getline(text, line);) {
      std::istringstream words(line);
      std::string word;
      std::string name;
      if (words >> word >> name && word == "newmtl") names.insert(name);
    }
  }
  return names;
}

// The library gives what an OBJ names and nothing describes a darker gray than any program means.
void FindUndefined(const aiScene& scene, FolderFiles& files, SceneFacts& facts, Notes& notes) {
  const std::set<std::string> described = DescribedMaterials(files);
  for (unsigned i = 0; i < scene.mNumMaterials; ++i) {
    const std::string name = scene.mMaterials[i]->GetName().C_Str();
    // Of a name with blanks the library keeps all, while a line of the .mtl is read by words here.
    if (described.count(name.substr(0, name.find(' '))) != 0) continue;
    facts.undefined.insert(i);
    notes.Count("Materials that no .mtl file describes are plain gray",
                name != AI_DEFAULT_MATERIAL_NAME);
  }
}

// Suns apart from all others: lux and candela have nothing to do with one another.
double Largest(const std::vector<SourceLight>& lights, bool suns) {
  double largest = 0;
  for (const SourceLight& light : lights) {
    if ((light.kind == LightKind::Sun) == suns) largest = std::max(largest, light.brightness);
  }
  return largest;
}

// A color brighter than white is a brightness; the strongest part of the color becomes 1.
void SplitBrightness(SourceLight& light) {
  const double most = std::max({light.color.x, light.color.y, light.color.z, 0.0});
  if (!(most > 0) || !std::isfinite(most)) return;
  light.color = host::Vector(light.color.x / most, light.color.y / most, light.color.z / most);
  light.brightness *= most;
}

}  // namespace

void AddCommonFacts(const aiScene& scene, SourceFormat format, SceneFacts& facts) {
  const NodesByName names = NodesOf(scene);
  for (const auto& [name, nodes] : names) {
    for (const aiNode* node : nodes) facts.nodes[node].layer = MetadataText(*node, "layer");
  }
  std::unordered_map<std::string, std::size_t> cameras;
  std::unordered_map<std::string, std::size_t> lights;
  for (unsigned i = 0; i < scene.mNumCameras; ++i) {
    facts.cameras.push_back(CameraOf(*scene.mCameras[i], format));
    AssignByName(names, cameras, scene.mCameras[i]->mName.C_Str(),
                 [&](const aiNode* node) { facts.nodes[node].cameras.push_back(i); });
  }
  for (unsigned i = 0; i < scene.mNumLights; ++i) {
    facts.lights.push_back(LightOf(*scene.mLights[i], format));
    AssignByName(names, lights, scene.mLights[i]->mName.C_Str(),
                 [&](const aiNode* node) { facts.nodes[node].lights.push_back(i); });
  }
}

// Candela and lux of a physical scene cannot be shown without an exposure: the brightest light of a
// kind becomes a plain one and the others keep their proportion to it. Lights given in plain
// numbers stay as they are.
void NormalizeLights(SourceFormat format, std::vector<SourceLight>& lights) {
  constexpr double kPlain = 4;  // numbers above that are physical ones
  for (SourceLight& light : lights) SplitBrightness(light);
  for (const bool suns : {false, true}) {
    const double largest = Largest(lights, suns);
    const bool candela = !suns && IsGltf(format);
    if (!(largest > 0) || !std::isfinite(largest) || (largest <= kPlain && !candela)) continue;
    for (SourceLight& light : lights) {
      if ((light.kind == LightKind::Sun) != suns) continue;
      light.brightness /= largest;
      light.unit = largest;
    }
  }
}

SceneFacts GatherFacts(const aiScene& scene, SourceFormat format, const std::string& path,
                       FolderFiles& files, Notes& notes) {
  SceneFacts facts;
  facts.unitsPerFileUnit = UnitsPerFileUnit(scene, format);
  AddCommonFacts(scene, format, facts);
  for (auto& [node, known] : facts.nodes) known.name = BetterName(*node, format, path);
  if (format == SourceFormat::Obj) FindUndefined(scene, files, facts, notes);
  if (format == SourceFormat::Collada && scene.mNumCameras > 0) {
    const std::string xml = files.ReadWhole(path);
    MendColladaCameras(IsMarkedUtf16(xml) ? FromUtf16(xml) : xml, facts, notes);
  }
  NormalizeLights(format, facts.lights);
  return facts;
}

}  // namespace engine
