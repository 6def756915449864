#include "program/commandline/SceneEdits.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "engine/render/ScenePicture.h"
#include "engine/scene/Frames.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/Nodes.h"

namespace commandline {

using host::BaseDocument;
using host::BaseObject;
using host::Bool;
using host::LayerData;
using host::LONG;
using host::Vector;

namespace {

constexpr std::pair<const char*, Bool LayerData::*> kLayerFlags[] = {
    {"solo", &LayerData::solo},           {"view", &LayerData::view},
    {"render", &LayerData::render},       {"manager", &LayerData::manager},
    {"locked", &LayerData::locked},       {"generators", &LayerData::generators},
    {"deformers", &LayerData::deformers}, {"expressions", &LayerData::expressions},
    {"animation", &LayerData::animation},
};

host::String Text(const std::string& text) { return host::String(std::string_view(text)); }

host::TextureTag* LastTextureTag(BaseObject& object) {
  host::TextureTag* last = nullptr;
  for (host::BaseTag* tag = object.GetFirstTag(); tag; tag = tag->GetNext()) {
    if (tag->GetType() == host::Ttexture) last = static_cast<host::TextureTag*>(tag);
  }
  return last;
}

// All points of meshes in the world that are numbers.
std::vector<engine::Vec> PointsOf(const BaseDocument& doc) {
  std::vector<engine::Vec> points;
  for (BaseObject* object = doc.GetFirstObject(); object; object = engine::NextInTree(object)) {
    const auto& mesh = engine::MeshOf(*object);
    if (!mesh) continue;
    const host::Matrix frame = object->GetMg();
    for (const auto& p : mesh->points) {
      const engine::Vec place = engine::ToVec(engine::PlacedBy(frame, {p[0], p[1], p[2]}));
      if (engine::IsFinite(place)) points.push_back(place);
    }
  }
  return points;
}

}  // namespace

host::Matrix LookAt(const Vector& at, const Vector& target) {
  host::Matrix frame;
  frame.off = at;
  const Vector way = engine::UnitOf({target.x - at.x, target.y - at.y, target.z - at.z});
  if (way != Vector()) frame.v3 = way;
  const bool upright = std::abs(frame.v3.y) < 0.9999;
  frame.v1 = engine::UnitOf(engine::CrossOf(upright ? Vector(0, 1, 0) : Vector(0, 0, 1), frame.v3));
  frame.v2 = engine::CrossOf(frame.v3, frame.v1);
  return frame;
}

BaseObject* MakeCamera(BaseDocument& doc, const std::string& name, const host::Matrix& frame) {
  BaseObject* camera = BaseObject::Alloc(host::Ocamera);
  camera->SetName(Text(name));
  camera->SetMl(frame);
  doc.AppendObject(camera);
  doc.AddUndo(host::UNDO_NEW, camera);
  return camera;
}

BaseObject* MakeFramingCamera(BaseDocument& doc, const std::string& name, double turn) {
  const host::BaseContainer& settings = *doc.GetActiveRenderData()->GetDataInstance();
  const double width = std::max<LONG>(1, settings.GetLong(host::RDATA_XRES));
  const double height = std::max<LONG>(1, settings.GetLong(host::RDATA_YRES));
  const engine::PictureCamera view = engine::FramingCamera(PointsOf(doc), width / height, turn);
  BaseObject* camera = MakeCamera(doc, name, view.frame);
  camera->GetDataInstance()->SetReal(host::CAMERA_FOV, view.fov);
  return camera;
}

host::BaseMaterial* MakeMaterial(BaseDocument& doc, const std::string& name, const Vector& color) {
  host::BaseMaterial* material = host::BaseMaterial::Alloc(host::Mmaterial);
  material->SetName(Text(name));
  material->GetDataInstance()->SetVector(host::MATERIAL_COLOR, color);
  doc.AppendMaterial(material);
  doc.AddUndo(host::UNDO_NEW, material);
  return material;
}

host::LayerObject* MakeLayer(BaseDocument& doc, const std::string& name) {
  host::LayerObject* layer = host::LayerObject::Alloc();
  layer->SetName(Text(name));
  doc.AppendLayer(layer);
  doc.AddUndo(host::UNDO_NEW, layer);
  return layer;
}

void AssignMaterial(BaseDocument& doc, BaseObject& object, host::BaseMaterial* material) {
  host::TextureTag* tag = LastTextureTag(object);
  if (tag) {
    doc.AddUndo(host::UNDO_CHANGE, tag);
  } else {
    tag = static_cast<host::TextureTag*>(object.MakeTag(host::Ttexture));
    doc.AddUndo(host::UNDO_NEW, tag);
  }
  tag->SetMaterial(material);
}

void AssignLayer(BaseDocument& doc, BaseObject& object, host::LayerObject* layer) {
  doc.AddUndo(host::UNDO_CHANGE, &object);
  object.SetLayerObject(layer);
}

bool SetLayerFlag(BaseDocument& doc, host::LayerObject& layer, const std::string& flag, bool on) {
  for (const auto& [name, member] : kLayerFlags) {
    if (flag != name) continue;
    doc.AddUndo(host::UNDO_CHANGE, &layer);
    LayerData data = layer.GetLayerData(&doc, host::TRUE);
    data.*member = on;
    return layer.SetLayerData(&doc, data);
  }
  return false;
}

void SetRenderSize(BaseDocument& doc, LONG width, LONG height) {
  host::RenderData* settings = doc.GetActiveRenderData();
  doc.AddUndo(host::UNDO_CHANGE, settings);
  settings->GetDataInstance()->SetLong(host::RDATA_XRES, width);
  settings->GetDataInstance()->SetLong(host::RDATA_YRES, height);
}

void SetRenderFrames(BaseDocument& doc, LONG from, LONG to) {
  host::RenderData* settings = doc.GetActiveRenderData();
  doc.AddUndo(host::UNDO_CHANGE, settings);
  host::BaseContainer& data = *settings->GetDataInstance();
  const LONG rate = data.GetLong(host::RDATA_FRAMERATE, 30);
  data.SetLong(host::RDATA_FRAMESEQUENCE, 0);
  data.SetTime(host::RDATA_FRAMEFROM, host::BaseTime(from, rate));
  data.SetTime(host::RDATA_FRAMETO, host::BaseTime(to, rate));
}

}  // namespace commandline
