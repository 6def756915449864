#include "program/commandline/DemoStates.h"

#include <vector>

#include "engine/editing/LayerCommands.h"
#include "engine/editing/MaterialCommands.h"
#include "engine/editing/RenderSettingsCommands.h"
#include "engine/scene/Nodes.h"
#include "program/commandline/Addressing.h"
#include "program/commandline/FramingCamera.h"

namespace commandline {

using host::BaseDocument;
using host::BaseObject;

namespace {

constexpr const char* kFront = "Overview camera";
constexpr const char* kSide = "Side camera";
constexpr const char* kLayer = "Props";
constexpr const char* kClay = "Clay";

// Objects with geometry, in tree order.
std::vector<BaseObject*> MeshObjects(const BaseDocument& doc) {
  std::vector<BaseObject*> objects;
  for (BaseObject* object = doc.GetFirstObject(); object; object = engine::NextInTree(object)) {
    if (engine::MeshOf(*object)) objects.push_back(object);
  }
  return objects;
}

bool HasTextureTag(const BaseObject& object) {
  for (host::BaseTag* tag = object.GetFirstTag(); tag; tag = tag->GetNext()) {
    if (tag->GetType() == host::Ttexture) return true;
  }
  return false;
}

void LookThrough(BaseDocument& doc, const char* camera) {
  if (const auto found = FindObject(doc, camera))
    doc.GetRenderBaseDraw()->SetSceneCamera(found.Value(), host::FALSE);
}

void Show(BaseDocument& doc, BaseObject& object, host::LONG mode) {
  doc.AddUndo(host::UNDO_CHANGE, &object);
  object.SetEditorMode(mode);
  object.SetRenderMode(mode);
}

void MakeOverview(BaseDocument& doc) { LookThrough(doc, kFront); }

void MakeEmptier(BaseDocument& doc) {
  LookThrough(doc, kSide);
  const auto meshes = MeshObjects(doc);
  for (std::size_t i = 0; i < meshes.size(); i += 3) Show(doc, *meshes[i], host::MODE_OFF);
  engine::SetRenderSize(doc, 1920, 1080);
}

void MakeClay(BaseDocument& doc) {
  const auto clay = FindMaterial(doc, kClay);
  const auto layer = FindLayer(doc, kLayer);
  if (!clay || !layer) return;
  for (BaseObject* object : MeshObjects(doc)) {
    engine::GiveMaterial(doc, *object, clay.Value());
    Show(doc, *object, host::MODE_UNDEF);
  }
  engine::SetLayerSwitch(doc, {layer.Value()}, *engine::FindLayerSwitch("render"), false);
  engine::SetRenderSize(doc, 1080, 1080);
}

constexpr DemoState kStates[kDemoStates] = {
    {"Overview", "everything, from above", MakeOverview},
    {"Emptier", "every third object hidden, another camera, a wider picture", MakeEmptier},
    {"Clay", "one plain material, the layer \"Props\" left out, a square picture", MakeClay},
};

}  // namespace

const DemoState& GetDemoState(std::size_t index) { return kStates[index]; }

void PrepareDemo(BaseDocument& doc) {
  MakeFramingCamera(doc, kFront);
  MakeFramingCamera(doc, kSide, 2.2);
  engine::MakeMaterial(doc, kClay, {0.36, 0.32, 0.28});
  host::LayerObject* props = engine::MakeLayer(doc, kLayer);
  const auto meshes = MeshObjects(doc);
  for (BaseObject* object : meshes) {
    if (!HasTextureTag(*object)) engine::GiveMaterial(doc, *object, nullptr);
  }
  for (std::size_t i = 1; i < meshes.size(); i += 4) engine::PutOnLayer(doc, *meshes[i], props);
}

}  // namespace commandline
