#include "engine/import/SceneConversion.h"

#include <algorithm>
#include <cmath>
#include <unordered_set>

#include "engine/import/Axes.h"
#include "engine/import/ForeignText.h"
#include "engine/import/MeshConversion.h"
#include "engine/scene/DocumentState.h"
#include "engine/scene/ElementState.h"
#include "engine/scene/Extras.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/PictureParameters.h"
#include "host/BaseTag.h"
#include "host/Parameters.h"
#include "host/RenderData.h"

namespace engine {
namespace {

using host::BaseObject;

constexpr std::size_t kNodesPerProgress = 256;
constexpr const char* kRenderSettings = "My Render Setting";

const NodeFacts& FactsOf(const SceneFacts& facts, const aiNode& node) {
  static const NodeFacts plain;
  const auto found = facts.nodes.find(&node);
  return found == facts.nodes.end() ? plain : found->second;
}

// The horizontal angle that a vertical one comes to in the picture that the document renders; 0 for
// none. glTF has the vertical angle and the scene both: the horizontal one serves where the picture
// has the shape of the settings.
double HorizontalAngle(double vertical, const host::BaseDocument& doc) {
  const host::BaseContainer& settings = *doc.GetActiveRenderData()->GetDataInstance();
  const double width = settings.GetLong(host::RDATA_XRES, 1280);
  const double height = std::max(settings.GetLong(host::RDATA_YRES, 720), 1);
  return 2 * std::atan(std::tan(vertical / 2) * width / height);
}

// The scene has no place for points and lines.
const char* WhyLeftOut(const aiMesh* mesh) {
  const unsigned kinds = mesh == nullptr ? 0 : mesh->mPrimitiveTypes;
  if ((kinds & aiPrimitiveType_LINE) != 0) return "Lines are left out, meshes";
  if ((kinds & aiPrimitiveType_POINT) != 0) return "Points are left out, meshes";
  return "Meshes without anything in them are left out";
}

std::size_t NodeCount(const aiNode* root) {
  std::size_t count = 0;
  std::vector<const aiNode*> pending{root};
  while (!pending.empty()) {
    const aiNode* node = pending.back();
    pending.pop_back();
    ++count;
    pending.insert(pending.end(), node->mChildren, node->mChildren + node->mNumChildren);
  }
  return count;
}

}  // namespace

SceneConversion::SceneConversion(const aiScene& scene, SourceFormat format, const SceneFacts& facts,
                                 host::BaseDocument& doc, Notes& notes)
    : scene_(scene),
      facts_(facts),
      doc_(doc),
      notes_(notes),
      materials_(scene, format, facts, doc, notes),
      scale_(facts.unitsPerFileUnit),
      meshes_(scene.mNumMeshes) {
  // The root holds the file's unit and axes: its scale goes into the lengths, its turn into the
  // objects below it.
  const double unit = UniformScale(scene.mRootNode->mTransformation);
  rootFrame_ = ConvertFrame(scene.mRootNode->mTransformation, scale_);
  if (unit > 0) {
    scale_ *= unit;
    rootFrame_ = WithoutScale(rootFrame_);
  }
  if (!IsFinite(rootFrame_)) rootFrame_ = host::Matrix();
}

bool SceneConversion::Convert(const std::function<bool(double)>& progress) {
  doc_.GetActiveRenderData()->SetName(kRenderSettings);
  materials_.Convert();
  SetExtras(doc_, facts_.extras);
  for (unsigned i = 0; i < facts_.materials.size(); ++i) {
    if (host::BaseMaterial* material = materials_.At(i))
      SetExtras(*material, facts_.materials[i].extras);
  }
  const double total = static_cast<double>(NodeCount(scene_.mRootNode));
  const NodeFacts& root = FactsOf(facts_, *scene_.mRootNode);
  // A root that bears something becomes an object; mostly it is only there to hold the others.
  if (scene_.mRootNode->mNumMeshes > 0 || !root.cameras.empty() || !root.lights.empty()) {
    pending_.push_back({scene_.mRootNode, nullptr, false});
  } else {
    PushChildren(*scene_.mRootNode, nullptr, true);
  }
  for (std::size_t done = 0; !pending_.empty(); ++done) {
    if (done % kNodesPerProgress == 0 && !progress(static_cast<double>(done) / total)) return false;
    const Pending next = pending_.back();
    pending_.pop_back();
    BaseObject* object = Place(next);
    if (object != nullptr) PushChildren(*next.node, object, false);
  }
  if (firstCamera_ != nullptr) doc_.GetRenderBaseDraw()->SetSceneCamera(firstCamera_, false);
  KeepStates();
  NoteLosses();
  return true;
}

// The last one pushed is placed first, so they go in from the end.
void SceneConversion::PushChildren(const aiNode& node, BaseObject* parent, bool isTop) {
  for (unsigned i = node.mNumChildren; i > 0; --i)
    pending_.push_back({node.mChildren[i - 1], parent, isTop});
}

SceneConversion::Parts SceneConversion::PartsOf(const aiNode& node) {
  Parts parts{{}, &FactsOf(facts_, node)};
  for (unsigned i = 0; i < node.mNumMeshes; ++i) {
    const unsigned mesh = node.mMeshes[i];
    const bool usable = mesh < scene_.mNumMeshes && HasPolygons(*scene_.mMeshes[mesh]);
    if (!usable)
      notes_.Count(WhyLeftOut(mesh < scene_.mNumMeshes ? scene_.mMeshes[mesh] : nullptr));
    if (usable) parts.meshes.push_back(mesh);
  }
  return parts;
}

// Objects at the top take over the turn of a root that is no object.
host::Matrix SceneConversion::FrameOf(const aiNode& node, bool isTop) {
  if (&node == scene_.mRootNode) return rootFrame_;
  const host::Matrix frame = ConvertFrame(node.mTransformation, scale_);
  if (IsFinite(frame)) return isTop ? Product(rootFrame_, frame) : frame;
  notes_.Count("Frames that are no numbers were set back");
  return {};
}

BaseObject* SceneConversion::Place(const Pending& pending) {
  const aiNode& node = *pending.node;
  const Parts parts = PartsOf(node);
  host::Matrix frame = FrameOf(node, pending.isTop);
  BaseObject* object = MakeSingle(node, parts, frame);
  const bool isGroup = object == nullptr;
  if (isGroup) object = BaseObject::Alloc(host::Onull);
  if (object == nullptr) return nullptr;
  object->SetName(NameOf(node, *parts.facts, *object));
  object->SetMl(frame);
  doc_.AppendObject(object, pending.parent);
  ApplyFacts(*parts.facts, *object);
  if (!facts_.states.empty()) placed_.emplace(&node, object);
  if (isGroup) AddParts(parts, *object);
  return object;
}

// The object of a node that is one thing. Null where it is none or several, or where its children
// would have to follow a turn that is the camera's or light's alone.
BaseObject* SceneConversion::MakeSingle(const aiNode& node, const Parts& parts,
                                        host::Matrix& frame) {
  if (parts.Count() != 1) return nullptr;
  if (!parts.meshes.empty()) return MakePolygons(parts.meshes.front());
  const bool isCamera = !parts.facts->cameras.empty();
  const host::Matrix own = isCamera ? facts_.cameras[parts.facts->cameras.front()].frame
                                    : facts_.lights[parts.facts->lights.front()].frame;
  const bool turns = own != host::Matrix();
  if (turns && node.mNumChildren > 0) return nullptr;
  frame = Product(frame, own);
  // Children still need the scale.
  if (node.mNumChildren == 0) frame = WithoutScale(frame);
  return isCamera ? MakeCamera(facts_.cameras[parts.facts->cameras.front()])
                  : MakeLight(facts_.lights[parts.facts->lights.front()]);
}

void SceneConversion::AddParts(const Parts& parts, BaseObject& under) {
  const auto add = [&](BaseObject* part, const host::String& name, const host::Matrix& frame) {
    if (part == nullptr) return;
    part->SetName(name);
    part->SetMl(frame);
    doc_.AppendObject(part, &under);
  };
  const host::String name = under.GetName();
  for (const unsigned mesh : parts.meshes) {
    const host::BaseMaterial* material = materials_.At(scene_.mMeshes[mesh]->mMaterialIndex);
    const host::String own = material ? material->GetName() : TextOf(scene_.mMeshes[mesh]->mName);
    BaseObject* part = MakePolygons(mesh);
    if (part != nullptr) SetExtras(*part, parts.facts->meshExtras, kMeshExtras);
    add(part, parts.meshes.size() == 1 ? name : name + " (" + own + ")", host::Matrix());
  }
  for (const std::size_t i : parts.facts->cameras) {
    add(MakeCamera(facts_.cameras[i]), name, facts_.cameras[i].frame);
  }
  for (const std::size_t i : parts.facts->lights) {
    add(MakeLight(facts_.lights[i]), name, facts_.lights[i].frame);
  }
}

BaseObject* SceneConversion::MakePolygons(unsigned mesh) {
  BaseObject* object = BaseObject::Alloc(host::Opolygon);
  if (object == nullptr) return nullptr;
  const aiMesh& source = *scene_.mMeshes[mesh];
  // Nodes that bear one mesh share it in the scene, too.
  if (!meshes_[mesh]) {
    const UvUse uvs = materials_.UvUseOf(source.mMaterialIndex);
    meshes_[mesh] = std::make_shared<const Mesh>(ConvertMesh(source, scale_, uvs, notes_));
  }
  SetMesh(*object, meshes_[mesh]);
  SetTags(*object, mesh);
  return object;
}

void SceneConversion::SetTags(BaseObject& object, unsigned mesh) {
  if (!meshes_[mesh]->normals.empty()) object.MakeTag(host::Tphong);
  host::BaseMaterial* material = materials_.At(scene_.mMeshes[mesh]->mMaterialIndex);
  if (material == nullptr) return;
  host::TextureTag* tag = AsTextureTag(object.MakeTag(host::Ttexture));
  if (tag == nullptr) return;
  tag->SetMaterial(material);
  const bool varies = mesh < facts_.variants.size() && !facts_.variants[mesh].empty();
  if (varies) varied_.emplace_back(IdOf(*tag), mesh);
}

BaseObject* SceneConversion::MakeCamera(const SourceCamera& camera) {
  BaseObject* object = BaseObject::Alloc(host::Ocamera);
  if (object == nullptr) return nullptr;
  host::BaseContainer& data = *object->GetDataInstance();
  data.SetLong(host::CAMERA_PROJECTION, camera.parallel);
  const double horizontal =
      camera.horizontal > 0 ? camera.horizontal : HorizontalAngle(camera.vertical, doc_);
  if (horizontal > 0) data.SetReal(host::CAMERA_FOV, horizontal);
  data.SetReal(host::CAMERA_FOV_VERTICAL, camera.vertical);
  if (camera.width > 0) data.SetReal(host::CAMERA_WIDTH, camera.width * scale_);
  data.SetReal(host::CAMERA_NEAR, std::max(camera.nearPlane, 0.0) * scale_);
  data.SetReal(host::CAMERA_FAR, std::max(camera.farPlane, 0.0) * scale_);
  if (firstCamera_ == nullptr) firstCamera_ = object;
  return object;
}

BaseObject* SceneConversion::MakeLight(const SourceLight& light) {
  BaseObject* object = BaseObject::Alloc(host::Olight);
  if (object == nullptr) return nullptr;
  host::BaseContainer& data = *object->GetDataInstance();
  data.SetLong(host::LIGHT_TYPE, static_cast<host::LONG>(light.kind));
  data.SetVector(host::LIGHT_COLOR, light.color);
  data.SetReal(host::LIGHT_BRIGHTNESS, light.brightness);
  data.SetLong(host::LIGHT_SHADOW, light.kind != LightKind::Ambient);
  if (light.kind == LightKind::Spot) {
    data.SetReal(host::LIGHT_INNER_ANGLE, light.innerAngle);
    data.SetReal(host::LIGHT_OUTER_ANGLE, light.outerAngle);
  }
  if (light.unit != 1) data.SetReal(kLightUnit, light.unit);
  data.SetReal(host::LIGHT_RANGE, std::max(light.range, 0.0) * scale_);
  if (light.radius > 0) data.SetReal(kLightRadius, light.radius * scale_);
  return object;
}

void SceneConversion::ApplyFacts(const NodeFacts& facts, BaseObject& object) {
  SetExtras(object, facts.extras);
  if (MeshOf(object)) SetExtras(object, facts.meshExtras, kMeshExtras);
  if (!facts.isVisible) SetModes(object, host::MODE_OFF, host::MODE_OFF, object.GetDeformMode());
  if (facts.layer.empty()) return;
  if (host::LayerObject* layer = LayerNamed(facts.layer)) object.SetLayerObject(layer);
}

host::LayerObject* SceneConversion::LayerNamed(const std::string& name) {
  host::LayerObject*& layer = layers_[name];
  if (layer != nullptr) return layer;
  layer = host::LayerObject::Alloc();
  if (layer == nullptr) return nullptr;
  layer->SetName(host::String(std::string_view(name)));
  doc_.AppendLayer(layer);
  return layer;
}

host::String SceneConversion::NameOf(const aiNode& node, const NodeFacts& facts,
                                     const BaseObject& object) const {
  if (!facts.name.empty()) return host::String(std::string_view(facts.name));
  return node.mName.length > 0 ? TextOf(node.mName) : object.GetTypeName();
}

NodeId SceneConversion::ObjectOf(std::size_t node) const {
  if (node >= facts_.numbered.size()) return 0;
  const auto found = placed_.find(facts_.numbered[node]);
  return found == placed_.end() ? 0 : IdOf(*found->second);
}

// The camera of a node that bears more than it is one of its parts.
NodeId SceneConversion::CameraOf(const SourceState& source) const {
  const BaseObject* object = AsObject(FindNode(&doc_, ObjectOf(source.camera)));
  if (object == nullptr || object->GetType() == host::Ocamera) return object ? IdOf(*object) : 0;
  for (const BaseObject* part = object->GetDown(); part != nullptr; part = part->GetNext()) {
    if (part->GetType() == host::Ocamera) return IdOf(*part);
  }
  return 0;
}

ImportedState SceneConversion::StateOf(const SourceState& source) const {
  ImportedState state;
  state.name = source.name;
  state.date = source.date;
  state.camera = CameraOf(source);
  state.width = source.width;
  state.height = source.height;
  for (const std::size_t node : source.hidden) {
    if (const NodeId object = ObjectOf(node)) state.hidden.push_back(object);
  }
  // Every state says of every tag that varies which material it has, also its own: what one state
  // changes the next must change back.
  for (const auto& [tag, mesh] : varied_) {
    const std::vector<unsigned>& variants = facts_.variants[mesh];
    unsigned index = source.variant < variants.size() ? variants[source.variant] : kOwnMaterial;
    if (index == kOwnMaterial) index = scene_.mMeshes[mesh]->mMaterialIndex;
    if (const host::BaseMaterial* material = materials_.At(index))
      state.looks.emplace_back(tag, IdOf(*material));
  }
  return state;
}

void SceneConversion::KeepStates() {
  ImportedStates kept;
  std::unordered_set<NodeId> switched;
  for (const SourceState& source : facts_.states) {
    kept.states.push_back(StateOf(source));
    for (const NodeId object : kept.states.back().hidden) {
      if (switched.insert(object).second) kept.switched.push_back(object);
    }
  }
  KeepImportedStates(doc_, kept);
}

void SceneConversion::NoteLosses() {
  if (doc_.GetFirstObject() == nullptr) notes_.Add("The file holds no objects.");
  notes_.Count(kAnimationsLeftOut, scene_.mNumAnimations);
}

}  // namespace engine
