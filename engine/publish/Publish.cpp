#include "engine/publish/Publish.h"

#include <algorithm>
#include <set>

#include "engine/publish/GltfFile.h"
#include "engine/publish/GltfNodes.h"
#include "engine/render/SceneScan.h"
#include "engine/scene/ElementState.h"
#include "engine/scene/Extras.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/TreeWalk.h"
#include "host/Parameters.h"
#include "host/RenderData.h"

namespace engine {
namespace {

using Json = nlohmann::ordered_json;

// Between two questions whether to go on.
constexpr std::size_t kObjectsAtOnce = 5000;

// Names of the layers whose objects render.
std::vector<std::string> LayersThatShow(const host::BaseDocument& doc) {
  struct Shows {
    bool render;
    bool solo;
  };
  std::unordered_map<const host::GeListNode*, Shows> layers;
  std::vector<const host::LayerObject*> order;
  bool anySolo = false;
  for (host::GeListNode* node = doc.GetLayerObjectRoot()->GetFirst(); node;
       node = NextInTree(node)) {
    const host::LayerObject* layer = AsLayer(node);
    if (!layer) continue;
    const host::LayerData& own = OwnLayerData(*layer);
    const auto above = layers.find(layer->GetUp());
    const Shows outer = above == layers.end() ? Shows{true, false} : above->second;
    // As pictures take it: layers below a hidden one are hidden, below a solo one solo.
    const Shows shows{own.render && outer.render, own.solo || outer.solo};
    anySolo = anySolo || shows.solo;
    layers.emplace(node, shows);
    order.push_back(layer);
  }
  std::vector<std::string> names;
  for (const host::LayerObject* layer : order) {
    const Shows& shows = layers[layer];
    if (shows.render && (shows.solo || !anySolo)) names.push_back(NodeNameOf(*layer));
  }
  return names;
}

}  // namespace

class Publication::Maker {
 public:
  Maker(const host::BaseDocument& doc, FileSystem& files, const PublishOptions& options,
        RenderCaches& renderCaches, PublishCaches& caches)
      : doc_(doc),
        files_(files),
        options_(options),
        renderCaches_(renderCaches),
        caches_(caches),
        materials_(doc, files, looks_.All(), buffer_),
        parts_(materials_, looks_, !options.omitHidden) {}

  Status AddState(const StateFacts& state, const ProgressCallback& progress) {
    // Hidden things, too: another state may show them.
    SceneScan scan(doc_, files_, {.hiddenToo = true}, renderCaches_);
    while (!scan.Advance(kObjectsAtOnce)) {
      if (progress && !progress(0)) return Status::Failure("Publishing was stopped.");
    }
    parts_.AddState(scan.Take());
    states_.push_back(Read(state));
    return {};
  }

  Result<PublishedScene> Finish(const ProgressCallback& progress) {
    if (states_.empty()) return Status::Failure("There is no state to publish.");
    CamerasAndLights camerasAndLights(static_cast<double>(states_[0].width) / states_[0].height,
                                      LightUnitsOf(doc_));
    for (const ReadState& state : states_) {
      if (state.camera && state.camera->GetType() == host::Ocamera)
        camerasAndLights.CameraOf(*state.camera);
    }
    PublishedMeshes meshes(parts_, materials_, caches_.geometries, buffer_);
    GltfNodes nodes(parts_, meshes, camerasAndLights, caches_.nodes);
    if (Status written = nodes.Write(doc_, progress); !written) return written;
    Result<PublishedScene> file =
        FinishGltfFile({Head(nodes, camerasAndLights), nodes, meshes}, buffer_, options_);
    if (!file) return file;
    PublishedScene& scene = file.Value();
    scene.objects = nodes.Meshes();
    scene.triangles = nodes.Triangles();
    scene.notes = materials_.TakeNotes();
    const auto note = [&](bool isSo, const char* sentence) {
      if (isSo) scene.notes.emplace_back(sentence);
    };
    note(parts_.HasAmbientLights(), "Ambient lights are left out: the format has none.");
    note(camerasAndLights.HasAreaLights(),
         "Area lights are written as point lights: the format has none.");
    note(nodes.HasResetFrames(), "Frames that are no numbers were set back.");
    return file;
  }

 private:
  struct ReadState {
    StateFacts facts;
    int width = 1;
    int height = 1;
    const host::BaseObject* camera = nullptr;
    std::vector<std::string> layers;
  };

  ReadState Read(const StateFacts& facts) const {
    const host::BaseContainer& settings = *doc_.GetActiveRenderData()->GetDataInstance();
    return {facts, std::max(settings.GetLong(host::RDATA_XRES, 1280), 1),
            std::max(settings.GetLong(host::RDATA_YRES, 720), 1),
            doc_.GetRenderBaseDraw()->GetSceneCamera(&doc_), LayersThatShow(doc_)};
  }

  // Members without anything in them are not allowed.
  Json Head(const GltfNodes& nodes, const CamerasAndLights& camerasAndLights) {
    Json head = {{"asset", {{"version", "2.0"}, {"generator", kGltfGenerator}}}};
    std::set<std::string> extensions = materials_.Extensions();
    if (!camerasAndLights.Lights().empty()) extensions.insert("KHR_lights_punctual");
    if (nodes.HasHidden()) extensions.insert("KHR_node_visibility");
    if (options_.asVariants) extensions.insert("KHR_materials_variants");
    const auto put = [&](const char* key, Json list) {
      if (!list.empty()) head[key] = std::move(list);
    };
    put("extensionsUsed", extensions);
    if (options_.asVariants) head["extras"]["stagemarks"] = StatesOf(nodes);
    if (options_.asVariants && !camerasAndLights.Brightness().empty())
      head["extras"]["stagemarks"]["brightness"] = camerasAndLights.Brightness();
    head["scene"] = 0;
    head["scenes"] = Json::array({SceneOf(nodes)});
    put("cameras", camerasAndLights.Cameras());
    put("materials", WithExtras(materials_.Materials()));
    put("textures", materials_.Textures());
    put("images", materials_.Images());
    put("samplers", materials_.Samplers());
    if (!camerasAndLights.Lights().empty())
      head["extensions"]["KHR_lights_punctual"]["lights"] = camerasAndLights.Lights();
    if (!options_.asVariants) return head;
    for (const ReadState& state : states_)
      head["extensions"]["KHR_materials_variants"]["variants"].push_back({{"name", NameOf(state)}});
    return head;
  }

  // Without what is nested too deep for other programs, and for the writer.
  static Json Parsed(const std::string& extras) {
    constexpr int kDeepest = 100;
    const auto isWanted = [](int depth, Json::parse_event_t, Json&) { return depth < kDeepest; };
    return extras.empty() ? Json() : Json::parse(extras, isWanted, false);
  }

  // Looks are known by the names of their materials.
  Json WithExtras(Json materials) const {
    std::unordered_map<std::string, Json> extras;
    for (const host::BaseMaterial* material = doc_.GetFirstMaterial(); material;
         material = material->GetNext()) {
      Json parsed = Parsed(ExtrasOf(*material));
      if (!parsed.is_null() && !parsed.is_discarded())
        extras.try_emplace(NodeNameOf(*material), std::move(parsed));
    }
    for (Json& material : materials) {
      const auto found = extras.find(material.value("name", std::string()));
      if (found != extras.end()) material["extras"] = found->second;
    }
    return materials;
  }

  const std::string& NameOf(const ReadState& state) const {
    return state.facts.name.empty() ? options_.scene : state.facts.name;
  }

  Json SceneOf(const GltfNodes& nodes) const {
    const ReadState& first = states_[0];
    Json scene = {{"name", options_.asVariants ? options_.scene : NameOf(first)}};
    if (!nodes.Roots().empty()) scene["nodes"] = nodes.Roots();
    if (Json kept = Parsed(ExtrasOf(doc_)); kept.is_object()) scene["extras"] = std::move(kept);
    scene["extras"]["scene"] = options_.scene;
    if (options_.asVariants) return scene;
    scene["extras"]["stagemark"] = first.facts.name;
    if (!first.facts.date.empty()) scene["extras"]["date"] = first.facts.date;
    scene["extras"]["renderSize"] = {first.width, first.height};
    return scene;
  }

  Json StatesOf(const GltfNodes& nodes) const {
    Json states = Json::array();
    for (std::size_t i = 0; i < states_.size(); ++i) {
      const ReadState& read = states_[i];
      Json state = {{"name", NameOf(read)}, {"id", read.facts.id}};
      if (!read.facts.date.empty()) state["date"] = read.facts.date;
      state["variant"] = i;
      const auto camera = read.camera ? nodes.CameraNode(IdOf(*read.camera)) : std::nullopt;
      if (camera) state["camera"] = *camera;
      state["hidden"] = nodes.HiddenIn(i);
      state["size"] = {read.width, read.height};
      state["layers"] = read.layers;
      states.push_back(std::move(state));
    }
    return {{"version", 1}, {"scene", options_.scene}, {"states", std::move(states)}};
  }

  const host::BaseDocument& doc_;
  FileSystem& files_;
  const PublishOptions options_;
  RenderCaches& renderCaches_;
  PublishCaches& caches_;
  MergedLooks looks_;
  GltfBuffer buffer_;
  GltfMaterials materials_;
  VisibleParts parts_;
  std::vector<ReadState> states_;
};

Publication::Publication(const host::BaseDocument& doc, FileSystem& files,
                         const PublishOptions& options, RenderCaches& renderCaches,
                         PublishCaches& caches)
    : maker_(std::make_unique<Maker>(doc, files, options, renderCaches, caches)) {}

Publication::~Publication() = default;

Status Publication::AddState(const StateFacts& state, const ProgressCallback& progress) {
  return maker_->AddState(state, progress);
}

Result<PublishedScene> Publication::Finish(const ProgressCallback& progress) {
  return maker_->Finish(progress);
}

}  // namespace engine
