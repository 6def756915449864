// Taking what can be seen out of a document.
#include <cmath>
#include <unordered_map>

#include "engine/scene/Frames.h"
#include "engine/render/LookReading.h"
#include "engine/render/Primitives.h"
#include "engine/render/ScenePicture.h"
#include "engine/scene/Nodes.h"
#include "host/Parameters.h"

namespace engine {

namespace {

using host::BaseObject;
using host::Matrix;

// What children take over from their parents.
struct Inherited {
  Matrix frame;
  bool shown = true;
  std::uint32_t look = 0;
  std::array<float, 2> uvOffset{0, 0};
  std::array<float, 2> uvTiles{1, 1};
  const host::BaseTag* compositing = nullptr;
};

// What the layers let through, each layer looked at once.
class LayerSwitches {
 public:
  LayerSwitches(const host::BaseDocument& doc, bool editorView) : editorView_(editorView) {
    for (host::GeListNode* node = doc.GetLayerObjectRoot()->GetFirst(); node; node = NextInTree(node)) {
      if (const host::LayerObject* layer = AsLayer(node)) Read(*layer);
    }
  }

  struct Effect {
    bool shown = true;
    bool generators = true;
    bool solo = false;
  };
  // Of the layer of an object; while any layer is solo only objects on solo layers are shown.
  Effect EffectOn(const BaseObject& object) const {
    Effect effect;
    if (const NodeId layer = LayerIdOf(object)) {
      const auto it = effects_.find(layer);
      if (it != effects_.end()) effect = it->second;
    }
    if (anySolo_ && !effect.solo) effect.shown = false;
    return effect;
  }

 private:
  // A layer has what the layer above it lets through; the walk comes to that one first.
  void Read(const host::LayerObject& layer) {
    const host::LayerData& flags = OwnLayerData(layer);
    Effect effect{editorView_ ? flags.view : flags.render, flags.generators, flags.solo};
    if (const host::LayerObject* above = layer.GetUp()) {
      const Effect& outer = effects_[IdOf(*above)];
      effect = {effect.shown && outer.shown, effect.generators && outer.generators, effect.solo || outer.solo};
    }
    effects_[IdOf(layer)] = effect;
    anySolo_ = anySolo_ || effect.solo;
  }

  bool editorView_;
  bool anySolo_ = false;
  std::unordered_map<NodeId, Effect> effects_;
};

bool IsSwitchedOn(const host::BaseTag* tag, host::LONG parameter) {
  return !tag || tag->GetDataInstance()->GetBool(parameter, host::TRUE);
}

// The ray tracer turns rays into the frames of objects and bears no numbers near the end of what a float holds there.
constexpr double kFarthest = 1e9;
constexpr double kLargestScale = 1e6;
constexpr double kSmallestScale = 1e-8;

double LargestOf(const host::Vector& v) { return std::max({std::abs(v.x), std::abs(v.y), std::abs(v.z)}); }

bool IsUsableFrame(const Matrix& m) {
  if (!(LargestOf(m.off) < kFarthest)) return false;
  for (const host::Vector* axis : {&m.v1, &m.v2, &m.v3}) {
    if (!(LargestOf(*axis) < kLargestScale)) return false;
  }
  // The rows of the inverse are these products over the volume.
  const double largest =
      std::max({LargestOf(CrossOf(m.v2, m.v3)), LargestOf(CrossOf(m.v3, m.v1)), LargestOf(CrossOf(m.v1, m.v2))});
  return std::abs(Determinant(m)) > largest * kSmallestScale;
}

class Reader {
 public:
  Reader(const host::BaseDocument& doc, const SceneReading& how, RenderCaches& caches)
      : doc_(doc), how_(how), caches_(caches), layers_(doc, how.editorView), looks_(doc, caches, picture_) {}

  ScenePicture Run() {
    std::vector<Inherited> above(1);
    for (const BaseObject* object = doc_.GetFirstObject(); object;) {
      const Inherited here = Visit(*object, above.back());
      if (object->GetDown()) {
        above.push_back(here);
        object = object->GetDown();
        continue;
      }
      while (object && !object->GetNext()) {
        object = object->GetUp();
        if (object) above.pop_back();
      }
      if (object) object = object->GetNext();
    }
    ReadCamera();
    AddNotes();
    return std::move(picture_);
  }

 private:
  Inherited Visit(const BaseObject& object, const Inherited& above) {
    Inherited here = above;
    here.frame = Combined(above.frame, object.GetMl());
    const host::LONG mode = how_.editorView ? object.GetEditorMode() : object.GetRenderMode();
    if (mode != host::MODE_UNDEF) here.shown = mode == host::MODE_ON;
    ReadTags(object, here);
    const LayerSwitches::Effect layer = layers_.EffectOn(object);
    if (here.shown && layer.shown) Show(object, here, layer.generators);
    return here;
  }

  void ReadTags(const BaseObject& object, Inherited& here) {
    for (host::BaseTag* tag = object.GetFirstTag(); tag; tag = tag->GetNext()) {
      if (tag->GetType() == host::Tcompositing) here.compositing = tag;
      const host::TextureTag* texture = AsTextureTag(tag);
      const host::BaseMaterial* material = texture ? texture->GetMaterial() : nullptr;
      if (!material) continue;
      here.look = looks_.LookOf(*material);
      const host::BaseContainer& data = *texture->GetDataInstance();
      const host::Vector offset = data.GetVector(host::TEXTURETAG_OFFSET);
      const host::Vector tiles = data.GetVector(host::TEXTURETAG_TILES);
      here.uvOffset = {static_cast<float>(offset.x), static_cast<float>(offset.y)};
      here.uvTiles = {static_cast<float>(tiles.x == 0 ? 1 : tiles.x), static_cast<float>(tiles.y == 0 ? 1 : tiles.y)};
    }
  }

  void Show(const BaseObject& object, const Inherited& here, bool generators) {
    const host::LONG type = object.GetType();
    if (type == host::Olight) return AddLight(object, here.frame);
    const bool primitive = IsPrimitive(type);
    if (primitive && !(object.GetDeformMode() && generators)) return;
    const std::shared_ptr<const Mesh> mesh = primitive ? caches_.PrimitiveOf(type, *object.GetDataInstance()) : MeshOf(object);
    if (mesh) AddInstance(object, mesh, here);
  }

  void AddInstance(const BaseObject& object, const std::shared_ptr<const Mesh>& mesh, const Inherited& here) {
    if (!IsUsableFrame(here.frame)) {
      ++flatObjects_;
      return;
    }
    Instance instance;
    instance.geometry = caches_.GeometryOf(mesh);
    if (!instance.geometry) {
      emptyObjects_ += !mesh->polygons.empty();
      return;
    }
    // The poles of generated forms are flat by nature.
    if (!IsPrimitive(object.GetType())) droppedTriangles_ += instance.geometry->dropped;
    instance.frame = here.frame;
    instance.look = here.look;
    instance.object = IdOf(object);
    instance.castsShadows = IsSwitchedOn(here.compositing, host::COMPOSITINGTAG_CASTSHADOW);
    instance.receivesShadows = IsSwitchedOn(here.compositing, host::COMPOSITINGTAG_RECEIVESHADOW);
    instance.seenByCamera = IsSwitchedOn(here.compositing, host::COMPOSITINGTAG_SEENBYCAMERA);
    instance.uvOffset = here.uvOffset;
    instance.uvTiles = here.uvTiles;
    AddToBounds(instance);
    picture_.instances.push_back(std::move(instance));
  }

  void AddToBounds(const Instance& instance) {
    for (int i = 0; i < 8; ++i) {
      const Vec corner = instance.geometry->bounds.Corner(i);
      picture_.bounds.Add(ToVec(PlacedBy(instance.frame, {corner.x, corner.y, corner.z})));
    }
  }

  void AddLight(const BaseObject& object, const Matrix& frame) {
    const host::BaseContainer& data = *object.GetDataInstance();
    LightSource light;
    light.kind = static_cast<LightSource::Kind>(std::clamp<host::LONG>(data.GetLong(host::LIGHT_TYPE), 0, 4));
    const bool colored = data.FindIndex(host::LIGHT_COLOR) != host::NOTOK;
    const Vec color = colored ? ToVec(data.GetVector(host::LIGHT_COLOR)) : Vec{1, 1, 1};
    light.color = color * static_cast<float>(data.GetReal(host::LIGHT_BRIGHTNESS, 1));
    light.position = ToVec(frame.off);
    light.direction = ToVec(UnitOf(frame.v3));
    light.castsShadows = data.GetLong(host::LIGHT_SHADOW, 1) != 0;
    const double outer = std::clamp(data.GetReal(host::LIGHT_OUTER_ANGLE, 0.785), 0.0, 6.2831);
    const double inner = std::clamp(data.GetReal(host::LIGHT_INNER_ANGLE, 0.523), 0.0, outer);
    light.outerCosine = static_cast<float>(std::cos(outer / 2));
    light.innerCosine = static_cast<float>(std::cos(inner / 2));
    light.range = static_cast<float>(std::max(0.0, data.GetReal(host::LIGHT_RANGE)));
    if (IsFinite(light.color) && IsFinite(light.position) && IsFinite(light.direction)) picture_.lights.push_back(light);
  }

  void ReadCamera() {
    const BaseObject* object = doc_.GetRenderBaseDraw()->GetSceneCamera(&doc_);
    if (!object || !(LargestOf(object->GetMg().off) < kFarthest)) return;
    const host::BaseContainer& data = *object->GetDataInstance();
    PictureCamera& camera = picture_.camera;
    camera.frame = object->GetMg();
    camera.isParallel = data.GetLong(host::CAMERA_PROJECTION) == 1;
    camera.fov = data.GetReal(host::CAMERA_FOV, camera.fov);
    camera.fovVertical = data.GetReal(host::CAMERA_FOV_VERTICAL);
    camera.width = data.GetReal(host::CAMERA_WIDTH, camera.width);
    camera.near = std::max(0.0, data.GetReal(host::CAMERA_NEAR));
    camera.far = std::max(0.0, data.GetReal(host::CAMERA_FAR));
    picture_.hasSceneCamera = true;
  }

  void AddNotes() {
    const auto note = [&](std::size_t count, const char* text) {
      if (count > 0) picture_.notes.push_back(std::to_string(count) + text);
    };
    note(droppedTriangles_, " triangles without an area or with impossible corners were left out.");
    note(emptyObjects_, " objects had no usable polygon and were left out.");
    note(flatObjects_, " objects are scaled to nothing or placed beyond all bounds and were left out.");
  }

  const host::BaseDocument& doc_;
  const SceneReading& how_;
  RenderCaches& caches_;
  ScenePicture picture_;
  LayerSwitches layers_;
  LookReading looks_;
  std::size_t droppedTriangles_ = 0;
  std::size_t emptyObjects_ = 0;
  std::size_t flatObjects_ = 0;
};

}  // namespace

ScenePicture ReadScene(const host::BaseDocument& doc, const SceneReading& how, RenderCaches& caches) {
  ScenePicture picture = Reader(doc, how, caches).Run();
  caches.Tidy();
  return picture;
}

}  // namespace engine
