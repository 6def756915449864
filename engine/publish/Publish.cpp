#include "engine/publish/Publish.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <tuple>
#include <unordered_map>

#include "engine/publish/GltfBuffer.h"
#include "engine/publish/GltfMaterials.h"
#include "engine/render/SceneScan.h"
#include "engine/scene/ElementState.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/Ownership.h"
#include "engine/scene/TreeWalk.h"
#include "host/Parameters.h"
#include "host/RenderData.h"

namespace engine {

using host::BaseDocument;
using host::BaseObject;
using Json = nlohmann::ordered_json;

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kNearest = 0.01;   // metres, where a camera has no near limit
constexpr double kFarthest = 1000;  // metres, of a parallel camera without a limit

ScenePicture Scan(const BaseDocument& doc, FileSystem& files, RenderCaches& caches) {
  SceneScan scan(doc, files, {}, caches);
  scan.Advance(std::numeric_limits<std::size_t>::max());
  return scan.Take();
}

// A copy of the document in which everything renders.
OwnedDocument WithAllShown(const BaseDocument& doc) {
  OwnedDocument copy(static_cast<BaseDocument*>(
      const_cast<BaseDocument&>(doc).GetClone(host::COPY_DOCUMENT, nullptr)));
  for (BaseObject* object = copy->GetFirstObject(); object; object = NextInTree(object))
    SetModes(*object, host::MODE_ON, host::MODE_ON, true);
  for (host::GeListNode* node = copy->GetLayerObjectRoot()->GetFirst(); node;
       node = NextInTree(node)) {
    auto& layer = static_cast<host::LayerObject&>(*node);
    host::LayerData data = OwnLayerData(layer);
    data.solo = host::FALSE;
    data.render = data.generators = host::TRUE;
    SetOwnLayerData(layer, data);
  }
  return copy;
}

bool IsUsable(const host::Matrix& m) {
  for (const host::Vector* v : {&m.off, &m.v1, &m.v2, &m.v3}) {
    if (!std::isfinite(v->x) || !std::isfinite(v->y) || !std::isfinite(v->z)) return false;
  }
  return true;
}

// Columns of the frame, its z axis and everything's z mirrored, lengths in metres.
Json FrameOf(const host::Matrix& m) {
  return Json::array({m.v1.x, m.v1.y, 0.0 - m.v1.z, 0.0, m.v2.x, m.v2.y, 0.0 - m.v2.z, 0.0,
                      0.0 - m.v3.x, 0.0 - m.v3.y, m.v3.z, 0.0, m.off.x * kMetresPerUnit,
                      m.off.y * kMetresPerUnit, 0.0 - m.off.z * kMetresPerUnit, 1.0});
}

std::string NameOf(const host::BaseList2D& element) {
  const std::string name = element.GetName().ToUtf8();
  return name.empty() ? element.GetTypeName().ToUtf8() : name;
}

class SceneWriter {
 public:
  SceneWriter(const BaseDocument& doc, FileSystem& files, const PublishOptions& options,
              RenderCaches& caches, GltfGeometries& geometries)
      : doc_(doc),
        options_(options),
        geometries_(geometries),
        all_(options.omitHidden ? OwnedDocument() : WithAllShown(doc)),
        picture_(Scan(all_ ? *all_ : doc, files, caches)),
        materials_(doc, files, picture_, buffer_) {
    Index(options.omitHidden ? picture_ : Scan(doc, files, caches));
    const host::BaseContainer& settings = *doc.GetActiveRenderData()->GetDataInstance();
    width_ = std::max(settings.GetLong(host::RDATA_XRES, 1280), 1);
    height_ = std::max(settings.GetLong(host::RDATA_YRES, 720), 1);
  }

  Result<PublishedScene> Run() {
    MarkWanted();
    AddObjects();
    const auto written = buffer_.AsBinary(Head());
    if (!written) return written.GetStatus();
    result_.bytes = written.Value();
    for (std::string& note : materials_.TakeNotes()) result_.notes.push_back(std::move(note));
    return std::move(result_);
  }

 private:
  void Index(const ScenePicture& shown) {
    for (std::size_t i = 0; i < picture_.instances.size(); ++i)
      instances_.emplace(picture_.instances[i].object, i);
    for (const Instance& instance : shown.instances) shown_.insert(instance.object);
    for (const LightSource& light : shown.lights) shown_.insert(light.object);
    for (const LightSource& light : picture_.lights) lights_.insert(light.object);
  }

  bool HasContent(const BaseObject& object) const {
    return instances_.contains(IdOf(object)) || lights_.contains(IdOf(object)) ||
           object.GetType() == host::Ocamera;
  }

  // What has content, and everything above it.
  void MarkWanted() {
    for (const BaseObject* object = doc_.GetFirstObject(); object; object = NextInTree(object)) {
      if (!HasContent(*object)) continue;
      for (const BaseObject* up = object; up && wanted_.insert(IdOf(*up)).second;
           up = up->GetUp()) {
      }
    }
  }

  // Children come behind their parents, which are told of them as they come.
  void AddObjects() {
    Json roots = Json::array();
    for (const BaseObject* object = doc_.GetFirstObject(); object; object = NextInTree(object)) {
      if (!wanted_.contains(IdOf(*object))) continue;
      const std::size_t index = nodes_.size();
      places_.emplace(IdOf(*object), index);
      nodes_.push_back(NodeOf(*object));
      const BaseObject* up = object->GetUp();
      if (!up) {
        roots.push_back(index);
      } else {
        nodes_[places_.at(IdOf(*up))]["children"].push_back(index);
      }
      AddHidden(*object, index);
    }
    roots_ = std::move(roots);
  }

  Json NodeOf(const BaseObject& object) {
    Json node = {{"name", NameOf(object)}};
    const host::Matrix frame = object.GetMl();
    if (!IsUsable(frame)) {
      Note("Frames that are no numbers were set back.");
    } else if (frame != host::Matrix()) {
      node["matrix"] = FrameOf(frame);
    }
    const bool isShown = shown_.contains(IdOf(object));
    if (isShown && instances_.contains(IdOf(object))) PutMesh(object, node);
    if (isShown && lights_.contains(IdOf(object))) AddLight(object, node);
    if (object.GetType() == host::Ocamera) node["camera"] = CameraIndex(object);
    return node;
  }

  // An object may show though the one above it does not, which the extension has no way to say: what
  // is hidden becomes a child of its own.
  void AddHidden(const BaseObject& object, std::size_t parent) {
    const NodeId id = IdOf(object);
    if (shown_.contains(id) || !(instances_.contains(id) || lights_.contains(id))) return;
    Json node = {{"name", NameOf(object)}};
    if (instances_.contains(id)) PutMesh(object, node);
    if (lights_.contains(id)) AddLight(object, node);
    node["extensions"]["KHR_node_visibility"]["visible"] = false;
    extensions_.insert("KHR_node_visibility");
    nodes_[parent]["children"].push_back(nodes_.size());
    nodes_.push_back(std::move(node));
  }

  // One mesh for each pair of geometry and material; the geometry stands in the file once. A node
  // whose mesh has nothing that can be seen has none.
  void PutMesh(const BaseObject& object, Json& node) {
    const Instance& instance = picture_.instances[instances_.at(IdOf(object))];
    const GltfGeometry& geometry = geometries_.Of(instance.mesh);
    if (geometry.corners == 0) return;
    const std::size_t material = materials_.IndexOf(instance);
    ++result_.objects;
    result_.triangles += geometry.corners / 3;
    const auto [place, isNew] =
        meshIndices_.try_emplace({instance.mesh.get(), material}, meshes_.size());
    if (isNew) {
      Json primitive =
          buffer_.PrimitiveOf(instance.mesh.get(), geometry, materials_.HasNormalMap(material));
      primitive["material"] = material;
      meshes_.push_back({{"name", NameOf(object)}, {"primitives", Json::array({primitive})}});
    }
    node["mesh"] = place->second;
  }

  void AddLight(const BaseObject& object, Json& node) {
    static constexpr const char* kKinds[] = {"point", "spot", "directional", "point", ""};
    const host::BaseContainer& data = *object.GetDataInstance();
    const auto kind = std::clamp<host::LONG>(data.GetLong(host::LIGHT_TYPE), 0, 4);
    if (kind == 4) return Note("Ambient lights are left out: the format has none.");
    if (kind == 3) Note("Area lights are written as point lights: the format has none.");
    const bool colored = data.FindIndex(host::LIGHT_COLOR) != host::NOTOK;
    const host::Vector color = colored ? data.GetVector(host::LIGHT_COLOR) : host::Vector(1);
    const auto share = [](double value) { return std::clamp(value, 0.0, 1.0); };
    Json light = {{"name", NameOf(object)},
                  {"type", kKinds[kind]},
                  {"color", Json::array({share(color.x), share(color.y), share(color.z)})},
                  {"intensity", std::max(0.0, data.GetReal(host::LIGHT_BRIGHTNESS, 1))}};
    const double range = data.GetReal(host::LIGHT_RANGE) * kMetresPerUnit;
    if (range > 0 && kind != 2) light["range"] = range;
    if (kind == 1) light["spot"] = SpotOf(data);
    node["extensions"]["KHR_lights_punctual"]["light"] = lightList_.size();
    lightList_.push_back(std::move(light));
    extensions_.insert("KHR_lights_punctual");
  }

  // The format has half angles, the inner one smaller than the outer.
  static Json SpotOf(const host::BaseContainer& data) {
    const double outer =
        std::clamp(data.GetReal(host::LIGHT_OUTER_ANGLE, 0.785) / 2, 0.001, kPi / 2);
    const double inner = data.GetReal(host::LIGHT_INNER_ANGLE, 0.523) / 2;
    return {{"innerConeAngle", std::clamp(inner, 0.0, outer * 0.999)}, {"outerConeAngle", outer}};
  }

  // The scene camera is the first one of the file.
  std::size_t CameraIndex(const BaseObject& object) {
    const BaseObject* first = doc_.GetRenderBaseDraw()->GetSceneCamera(&doc_);
    if (cameras_.empty() && first) {
      cameraIndices_.emplace(IdOf(*first), 0);
      cameras_.push_back(CameraJson(*first));
    }
    const auto [place, isNew] = cameraIndices_.try_emplace(IdOf(object), cameras_.size());
    if (isNew) cameras_.push_back(CameraJson(object));
    return place->second;
  }

  Json CameraJson(const BaseObject& object) const {
    const host::BaseContainer& data = *object.GetDataInstance();
    const double aspect = static_cast<double>(width_) / height_;
    const double near = std::max(data.GetReal(host::CAMERA_NEAR) * kMetresPerUnit, 0.0);
    const double far = data.GetReal(host::CAMERA_FAR) * kMetresPerUnit;
    Json camera = {{"name", NameOf(object)}};
    if (data.GetLong(host::CAMERA_PROJECTION) == 1) {
      const double wide =
          std::max(data.GetReal(host::CAMERA_WIDTH, 1000) * kMetresPerUnit, 1e-6) / 2;
      camera["type"] = "orthographic";
      camera["orthographic"] = {{"xmag", wide},
                                {"ymag", wide / aspect},
                                {"zfar", far > near ? far : near + kFarthest},
                                {"znear", near}};
      return camera;
    }
    const double fov = std::clamp(data.GetReal(host::CAMERA_FOV, 0.9273), 0.001, kPi - 0.001);
    const double vertical = data.GetReal(host::CAMERA_FOV_VERTICAL);
    const bool own = vertical > 0 && vertical < kPi;
    const double high = own ? vertical : 2 * std::atan(std::tan(fov / 2) / aspect);
    camera["type"] = "perspective";
    camera["perspective"] = {
        {"aspectRatio", own ? std::tan(fov / 2) / std::tan(vertical / 2) : aspect},
        {"yfov", high},
        {"znear", near > 0 ? near : kNearest}};
    if (far > (near > 0 ? near : kNearest)) camera["perspective"]["zfar"] = far;
    return camera;
  }

  // Members without anything in them are not allowed.
  Json Head() {
    Json head = {{"asset", {{"version", "2.0"}, {"generator", kGltfGenerator}}}};
    for (const std::string& extension : materials_.Extensions()) extensions_.insert(extension);
    if (!extensions_.empty()) head["extensionsUsed"] = extensions_;
    Json scene = {{"name", options_.state.empty() ? options_.scene : options_.state}};
    if (!roots_.empty()) scene["nodes"] = roots_;
    scene["extras"] = {{"scene", options_.scene},
                       {"stagemark", options_.state},
                       {"renderSize", Json::array({width_, height_})}};
    head["scene"] = 0;
    head["scenes"] = Json::array({std::move(scene)});
    const auto put = [&](const char* key, Json list) {
      if (!list.empty()) head[key] = std::move(list);
    };
    put("nodes", std::move(nodes_));
    put("meshes", std::move(meshes_));
    put("cameras", std::move(cameras_));
    put("materials", materials_.Materials());
    put("textures", materials_.Textures());
    put("images", materials_.Images());
    if (!lightList_.empty()) head["extensions"]["KHR_lights_punctual"]["lights"] = lightList_;
    return head;
  }

  void Note(const char* sentence) {
    if (said_.insert(sentence).second) result_.notes.emplace_back(sentence);
  }

  const BaseDocument& doc_;
  const PublishOptions& options_;
  GltfGeometries& geometries_;
  OwnedDocument all_;     // where hidden objects are wanted, too
  ScenePicture picture_;  // of everything that is wanted
  GltfBuffer buffer_;
  GltfMaterials materials_;
  PublishedScene result_;
  int width_ = 1;
  int height_ = 1;

  std::unordered_map<NodeId, std::size_t> instances_;  // into those of the picture
  std::set<NodeId> lights_;
  std::set<NodeId> shown_;
  std::set<NodeId> wanted_;
  std::unordered_map<NodeId, std::size_t> places_;  // of nodes
  std::unordered_map<NodeId, std::size_t> cameraIndices_;
  std::map<std::pair<const Mesh*, std::size_t>, std::size_t> meshIndices_;
  std::set<std::string> extensions_;
  std::set<std::string> said_;
  Json roots_ = Json::array();
  Json nodes_ = Json::array();
  Json meshes_ = Json::array();
  Json cameras_ = Json::array();
  Json lightList_ = Json::array();
};

}  // namespace

Result<PublishedScene> PublishGltf(const BaseDocument& doc, FileSystem& files,
                                   const PublishOptions& options, RenderCaches& caches,
                                   GltfGeometries& geometries) {
  return SceneWriter(doc, files, options, caches, geometries).Run();
}

}  // namespace engine
