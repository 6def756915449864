#include "program/commandline/FramingCamera.h"

#include <algorithm>
#include <vector>

#include "engine/editing/ObjectCommands.h"
#include "engine/render/ScenePicture.h"
#include "engine/scene/Mesh.h"
#include "engine/scene/TreeWalk.h"
#include "engine/scene/Vectors.h"

namespace commandline {

using host::BaseDocument;
using host::BaseObject;
using host::LONG;

namespace {

// All points of meshes in the world that are numbers. Points that are no numbers would make
// everything else vanish in the picture.
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

// By the shape of the picture that the render settings ask for.
engine::PictureCamera FramingView(const BaseDocument& doc, double turn) {
  const host::BaseContainer& settings = *doc.GetActiveRenderData()->GetDataInstance();
  const double width = std::max<LONG>(1, settings.GetLong(host::RDATA_XRES));
  const double height = std::max<LONG>(1, settings.GetLong(host::RDATA_YRES));
  return engine::FramingCamera(PointsOf(doc), width / height, turn);
}

BaseObject* MakeFramingCamera(BaseDocument& doc, const std::string& name, double turn) {
  const engine::PictureCamera view = FramingView(doc, turn);
  BaseObject* camera = engine::MakeCamera(doc, name, view.frame);
  camera->GetDataInstance()->SetReal(host::CAMERA_FOV, view.fov);
  return camera;
}

}  // namespace commandline
