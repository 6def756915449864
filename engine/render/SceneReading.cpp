// Taking what can be seen out of a document.
#include <algorithm>
#include <bit>
#include <cmath>
#include <unordered_map>

#include "engine/render/LookReading.h"
#include "engine/render/PreparedScene.h"
#include "engine/render/Primitives.h"
#include "engine/render/SceneScan.h"
#include "engine/scene/ElementState.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/NodeIds.h"
#include "engine/scene/NodeTypes.h"
#include "engine/scene/PictureParameters.h"
#include "engine/scene/TreeWalk.h"
#include "engine/scene/Vectors.h"
#include "host/Parameters.h"

namespace engine {

namespace {

using host::BaseObject;
using host::Matrix;

// A number that tells whether two scenes look alike. What is shared is told by its address, so that
// it holds while one of the scenes lives.
class Fingerprint {
 public:
  void Add(const Instance& instance);
  void Add(const SurfaceLook& look);
  void Add(const TextureUse& use);
  void Add(const TextureWish& wish);
  void Add(const LightSource& light);
  std::uint64_t Value() const { return value_; }

 private:
  void Word(std::uint64_t word) {
    value_ = (std::rotl(value_, 23) ^ word) * 0x9e3779b97f4a7c15U;
    value_ ^= value_ >> 29;
  }
  void Number(double number) { Word(std::bit_cast<std::uint64_t>(number)); }
  void Color(Vec color) {
    for (const float part : {color.x, color.y, color.z}) Number(part);
  }

  std::uint64_t value_ = 0x2545f4914f6cdd1dU;
};

void Fingerprint::Add(const Instance& instance) {
  Word(reinterpret_cast<std::uintptr_t>(instance.mesh.get()));
  Word(instance.object);
  Word(instance.look | std::uint64_t{instance.castsShadows} << 32U |
       std::uint64_t{instance.receivesShadows} << 33U |
       std::uint64_t{instance.seenByCamera} << 34U);
  for (const host::Vector* v :
       {&instance.frame.off, &instance.frame.v1, &instance.frame.v2, &instance.frame.v3}) {
    for (const double number : {v->x, v->y, v->z}) Number(number);
  }
  for (const float number :
       {instance.uvOffset[0], instance.uvOffset[1], instance.uvTiles[0], instance.uvTiles[1]})
    Number(number);
}

void Fingerprint::Add(const SurfaceLook& look) {
  Color(look.color);
  Color(look.luminance);
  for (const float number : {look.alpha, look.cutoff, look.specular, look.roughness, look.metallic,
                             look.transmission, look.normalStrength, look.occlusion})
    Number(number);
  for (const auto place : kTexturePlaces) Add(look.*place);
  Word(static_cast<std::uint64_t>(look.alphaMode) << 1U | std::uint64_t{look.isDoubleSided});
}

void Fingerprint::Add(const TextureUse& use) {
  Word(static_cast<std::uint64_t>(use.sampling.u) << 3U |
       static_cast<std::uint64_t>(use.sampling.v) << 1U | std::uint64_t{use.sampling.isSharp});
  for (const float number :
       {use.offset[0], use.offset[1], use.tiles[0], use.tiles[1], use.rotation})
    Number(number);
}

void Fingerprint::Add(const TextureWish& wish) {
  Word(wish.look);
  Word(static_cast<std::uint64_t>(std::ranges::find(kTexturePlaces, wish.place) -
                                  std::begin(kTexturePlaces)));
  for (const auto& file : wish.files) Word(reinterpret_cast<std::uintptr_t>(file.get()));
}

void Fingerprint::Add(const LightSource& light) {
  Word(static_cast<std::uint64_t>(light.kind) << 1U | std::uint64_t{light.castsShadows});
  for (const Vec v : {light.color, light.position, light.direction}) Color(v);
  for (const float number : {light.innerCosine, light.outerCosine, light.range, light.radius})
    Number(number);
}

// State that children take over from their parents.
struct Inherited {
  Matrix frame;
  bool shown = true;
  std::uint32_t look = 0;
  std::array<float, 2> uvOffset{0, 0};
  std::array<float, 2> uvTiles{1, 1};
  const host::BaseTag* compositing = nullptr;
  bool selected = false;
};

// Which objects the layers let through; each layer is looked at once.
class LayerSwitches {
 public:
  LayerSwitches(const host::BaseDocument& doc, bool editorView) : editorView_(editorView) {
    for (host::GeListNode* node = doc.GetLayerObjectRoot()->GetFirst(); node;
         node = NextInTree(node)) {
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
      effect = {effect.shown && outer.shown, effect.generators && outer.generators,
                effect.solo || outer.solo};
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

// The ray tracer turns rays into the frames of objects and bears no numbers near the end of what a
// float holds there.
constexpr double kFarthest = 1e9;
constexpr double kLargestScale = 1e6;
constexpr double kSmallestScale = 1e-8;

double LargestOf(const host::Vector& v) {
  return std::max({std::abs(v.x), std::abs(v.y), std::abs(v.z)});
}

bool IsUsableFrame(const Matrix& m) {
  if (!(LargestOf(m.off) < kFarthest)) return false;
  for (const host::Vector* axis : {&m.v1, &m.v2, &m.v3}) {
    if (!(LargestOf(*axis) < kLargestScale)) return false;
  }
  // The rows of the inverse are these products over the volume.
  const double largest = std::max({LargestOf(CrossOf(m.v2, m.v3)), LargestOf(CrossOf(m.v3, m.v1)),
                                   LargestOf(CrossOf(m.v1, m.v2))});
  return std::abs(Determinant(m)) > largest * kSmallestScale;
}

}  // namespace

class SceneScan::Reader {
 public:
  Reader(const host::BaseDocument& doc, FileSystem& files, const SceneReading& how,
         RenderCaches& caches)
      : doc_(doc),
        editorView_(how.editorView),
        hiddenToo_(how.hiddenToo),
        caches_(caches),
        layers_(doc, how.editorView),
        looks_(doc, files, caches, picture_),
        next_(doc.GetFirstObject()) {}

  bool Advance(std::size_t objects) {
    for (; next_ && objects > 0; --objects) {
      const Inherited here = Visit(*next_, above_.back());
      if (next_->GetDown()) {
        above_.push_back(here);
        next_ = next_->GetDown();
        continue;
      }
      while (next_ && !next_->GetNext()) {
        next_ = next_->GetUp();
        if (next_) above_.pop_back();
      }
      if (next_) next_ = next_->GetNext();
    }
    return !next_;
  }

  ScenePicture Take() {
    ReadCamera();
    AddNotes();
    Mark();
    caches_.TidyTextures();
    return std::move(picture_);
  }

 private:
  Inherited Visit(const BaseObject& object, const Inherited& above) {
    Inherited here = above;
    here.frame = Combined(above.frame, object.GetMl());
    here.selected = here.selected || object.GetBit(host::BIT_ACTIVE);
    const host::LONG mode = editorView_ ? object.GetEditorMode() : object.GetRenderMode();
    if (mode != host::MODE_UNDEF) here.shown = mode == host::MODE_ON;
    ReadTags(object, here);
    const LayerSwitches::Effect layer = layers_.EffectOn(object);
    const bool shown = here.shown && layer.shown;
    if (shown || hiddenToo_) Show(object, here, layer.generators, shown);
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
      here.uvTiles = {static_cast<float>(tiles.x == 0 ? 1 : tiles.x),
                      static_cast<float>(tiles.y == 0 ? 1 : tiles.y)};
    }
  }

  void Show(const BaseObject& object, const Inherited& here, bool generators, bool shown) {
    const host::LONG type = object.GetType();
    if (type == host::Olight) return AddLight(object, here.frame, shown);
    const bool primitive = IsPrimitive(type);
    if (primitive && !(object.GetDeformMode() && generators)) shown = false;
    if (!shown && !hiddenToo_) return;
    const std::shared_ptr<const Mesh> mesh =
        primitive ? caches_.PrimitiveOf(type, *object.GetDataInstance()) : MeshOf(object);
    if (mesh) AddInstance(object, mesh, here, shown);
  }

  void AddInstance(const BaseObject& object, const std::shared_ptr<const Mesh>& mesh,
                   const Inherited& here, bool shown) {
    if (!IsUsableFrame(here.frame)) {
      ++flatObjects_;
      return;
    }
    Instance instance;
    instance.mesh = mesh;
    instance.shown = shown;
    instance.isGenerated = IsPrimitive(object.GetType());
    instance.frame = here.frame;
    instance.look = here.look;
    instance.object = IdOf(object);
    instance.castsShadows = IsSwitchedOn(here.compositing, host::COMPOSITINGTAG_CASTSHADOW);
    instance.receivesShadows = IsSwitchedOn(here.compositing, host::COMPOSITINGTAG_RECEIVESHADOW);
    instance.seenByCamera = IsSwitchedOn(here.compositing, host::COMPOSITINGTAG_SEENBYCAMERA);
    instance.uvOffset = here.uvOffset;
    instance.uvTiles = here.uvTiles;
    picture_.selected.push_back(here.selected);
    picture_.instances.push_back(std::move(instance));
  }

  void AddLight(const BaseObject& object, const Matrix& frame, bool shown) {
    const host::BaseContainer& data = *object.GetDataInstance();
    LightSource light;
    light.object = IdOf(object);
    light.shown = shown;
    light.kind = static_cast<LightSource::Kind>(
        std::clamp<host::LONG>(data.GetLong(host::LIGHT_TYPE), 0, 4));
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
    light.radius = static_cast<float>(std::clamp(data.GetReal(kLightRadius), 0.0, kFarthest));
    if (IsFinite(light.color) && IsFinite(light.position) && IsFinite(light.direction))
      picture_.lights.push_back(light);
  }

  void ReadCamera() {
    const BaseObject* object = doc_.GetRenderBaseDraw()->GetSceneCamera(&doc_);
    const std::optional<PictureCamera> camera = object ? CameraOf(*object) : std::nullopt;
    if (camera) picture_.camera = *camera;
    picture_.hasSceneCamera = camera.has_value();
    picture_.editorView = EditorViewOf(doc_);
  }

  void AddNotes() {
    if (flatObjects_ == 0) return;
    picture_.notes.push_back(
        std::to_string(flatObjects_) +
        " objects are scaled to nothing or placed beyond all bounds and were left out.");
  }

  void Mark() {
    Fingerprint print;
    for (const Instance& instance : picture_.instances) print.Add(instance);
    for (const SurfaceLook& look : picture_.looks) print.Add(look);
    for (const TextureWish& wish : picture_.textures) print.Add(wish);
    for (const LightSource& light : picture_.lights) print.Add(light);
    picture_.fingerprint = print.Value();
  }

  const host::BaseDocument& doc_;
  bool editorView_;
  bool hiddenToo_;
  RenderCaches& caches_;
  ScenePicture picture_;
  LayerSwitches layers_;
  LookReading looks_;
  std::size_t flatObjects_ = 0;
  std::vector<Inherited> above_{1};
  const BaseObject* next_;
};

SceneScan::SceneScan(const host::BaseDocument& doc, FileSystem& files, const SceneReading& how,
                     RenderCaches& caches)
    : reader_(std::make_unique<Reader>(doc, files, how, caches)) {}

SceneScan::~SceneScan() = default;

bool SceneScan::Advance(std::size_t objects) { return reader_->Advance(objects); }

ScenePicture SceneScan::Take() { return reader_->Take(); }

std::optional<PictureCamera> CameraOf(const BaseObject& object) {
  if (!(LargestOf(object.GetMg().off) < kFarthest)) return std::nullopt;
  const host::BaseContainer& data = *object.GetDataInstance();
  PictureCamera camera;
  camera.frame = object.GetMg();
  camera.isParallel = data.GetLong(host::CAMERA_PROJECTION) == 1;
  camera.fov = data.GetReal(host::CAMERA_FOV, camera.fov);
  camera.fovVertical = data.GetReal(host::CAMERA_FOV_VERTICAL);
  camera.width = data.GetReal(host::CAMERA_WIDTH, camera.width);
  camera.near = std::max(0.0, data.GetReal(host::CAMERA_NEAR));
  camera.far = std::max(0.0, data.GetReal(host::CAMERA_FAR));
  return camera;
}

ScenePicture ReadScenePicture(const host::BaseDocument& doc, FileSystem& files,
                              const SceneReading& how, RenderCaches& caches) {
  SceneScan scan(doc, files, how, caches);
  scan.Advance(std::numeric_limits<std::size_t>::max());
  ScenePicture picture = scan.Take();
  Prepare(picture, caches);
  return picture;
}

}  // namespace engine
