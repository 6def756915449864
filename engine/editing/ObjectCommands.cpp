#include "engine/editing/ObjectCommands.h"

#include <cmath>

#include "engine/editing/FreeNames.h"
#include "engine/editing/Selection.h"
#include "engine/scene/JointCopy.h"
#include "engine/scene/NewNodes.h"
#include "engine/scene/TreeWalk.h"
#include "engine/scene/Vectors.h"
#include "host/Application.h"
#include "host/Parameters.h"

namespace engine {

using host::BaseDocument;
using host::BaseList2D;
using host::BaseObject;
using host::BaseTag;
using host::LONG;
using host::Vector;

namespace {

std::vector<BaseTag*> SelectedTags(const BaseDocument& doc) {
  host::AtomArray tags;
  doc.GetActiveTags(tags);
  std::vector<BaseTag*> selected;
  selected.reserve(static_cast<std::size_t>(tags.GetCount()));
  for (LONG i = 0; i < tags.GetCount(); ++i) selected.push_back(AsTag(tags.GetIndex(i)));
  return selected;
}

void Deselect(BaseList2D& root) {
  for (host::GeListNode* node = &root; node; node = NextInside(*node, root)) {
    static_cast<BaseList2D*>(node)->DelBit(host::BIT_ACTIVE);
  }
}

// Copies all, then turns the links of each copy to the other copies, then puts them in. In three
// rounds, since a link may lead to an element that is copied later; and the first two change
// nothing in the document.
struct Duplication {
  explicit Duplication(BaseDocument& document)
      : doc(document), originals(TopmostSelected(document)), names(document.GetFirstObject()) {}

  void Step(std::size_t i) {
    const std::size_t count = originals.size();
    if (i < count) {
      copies.Add(*originals[i]);
    } else if (i < 2 * count) {
      copies.FollowLinks(i - count);
    } else {
      Insert(i - 2 * count);
    }
  }

  void Insert(std::size_t i) {
    BaseObject* copy = made.emplace_back(AsObject(copies.Take(i)));
    Deselect(*copy);
    names.Give(*copy);
    doc.InsertObject(copy, originals[i]->GetUp(), originals[i]);
    doc.AddUndo(host::UNDO_NEW, copy);
  }

  BaseDocument& doc;
  std::vector<BaseObject*> originals;
  JointCopy copies;
  FreeNames names;
  std::vector<BaseObject*> made;
};

void Set(BaseObject& object, Switch which, LONG value) {
  switch (which) {
    case Switch::kEditor:
      return object.SetEditorMode(value);
    case Switch::kRender:
      return object.SetRenderMode(value);
    case Switch::kGenerator:
      return object.SetDeformMode(value != 0);
  }
}

BaseObject* Put(BaseDocument& doc, BaseObject* object) {
  const host::String type = TypeName(object->GetType());
  object->SetName(type);
  MakeNameUnique(*object, doc.GetFirstObject());
  {
    const UndoScope scope(doc, "New " + type.ToUtf8());
    doc.AppendObject(object);
    doc.AddUndo(host::UNDO_NEW, object);
  }
  doc.SetActiveTag(nullptr);
  doc.SetActiveObject(object);
  host::EventAdd();
  return object;
}

}  // namespace

BaseObject* AddObject(BaseDocument& doc, host::LONG type) {
  return Put(doc, BaseObject::Alloc(type));
}

BaseObject* AddLight(BaseDocument& doc, const PictureCamera& view) {
  BaseObject* light = BaseObject::Alloc(host::Olight);
  host::Matrix frame = view.frame;
  // A view may be scaled; a light that is would have another size.
  for (host::Vector* axis : {&frame.v1, &frame.v2, &frame.v3}) *axis = UnitOf(*axis);
  light->SetMl(frame);
  return Put(doc, light);
}

BaseObject* AddCamera(BaseDocument& doc, const PictureCamera& view) {
  BaseObject* camera = BaseObject::Alloc(host::Ocamera);
  camera->SetMl(view.frame);
  host::BaseContainer& data = *camera->GetDataInstance();
  data.SetLong(host::CAMERA_PROJECTION, view.isParallel ? 1 : 0);
  data.SetReal(host::CAMERA_FOV, view.fov);
  data.SetReal(host::CAMERA_FOV_VERTICAL, view.fovVertical);
  data.SetReal(host::CAMERA_WIDTH, view.width);
  data.SetReal(host::CAMERA_NEAR, view.near);
  data.SetReal(host::CAMERA_FAR, view.far);
  return Put(doc, camera);
}

void MakeSceneCamera(BaseDocument& doc, BaseObject& camera) {
  {
    const UndoScope scope(doc, "Scene Camera");
    // Nothing is registered: the undo group remembers the scene's camera itself.
    doc.GetRenderBaseDraw()->SetSceneCamera(&camera, host::FALSE);
  }
  host::EventAdd();
}

host::Matrix LookAt(const Vector& at, const Vector& target) {
  host::Matrix frame;
  frame.off = at;
  const Vector way = UnitOf({target.x - at.x, target.y - at.y, target.z - at.z});
  if (way != Vector()) frame.v3 = way;
  // Straight up or down "upright" says nothing; another axis takes its place.
  const bool upright = std::abs(frame.v3.y) < 0.9999;
  frame.v1 = UnitOf(CrossOf(upright ? Vector(0, 1, 0) : Vector(0, 0, 1), frame.v3));
  frame.v2 = CrossOf(frame.v3, frame.v1);
  return frame;
}

BaseObject* MakeCamera(BaseDocument& doc, const std::string& name, const host::Matrix& frame) {
  BaseObject* camera = BaseObject::Alloc(host::Ocamera);
  camera->SetName(host::String(std::string_view(name)));
  camera->SetMl(frame);
  doc.AppendObject(camera);
  doc.AddUndo(host::UNDO_NEW, camera);
  return camera;
}

StepwiseEdit DeleteSelected(BaseDocument& doc) {
  std::vector<BaseTag*> tags = SelectedTags(doc);
  std::vector<BaseObject*> objects = TopmostSelected(doc);
  const std::size_t steps = tags.size() + objects.size();
  return {"Delete", steps,
          [&doc, tags = std::move(tags), objects = std::move(objects)](std::size_t i) {
            // Tags first: those of deleted objects would be gone with them.
            if (i < tags.size()) {
              doc.AddUndo(host::UNDO_DELETE, tags[i]);
              BaseTag* tag = tags[i];
              BaseTag::Free(tag);
            } else {
              BaseObject* object = objects[i - tags.size()];
              doc.AddUndo(host::UNDO_DELETE, object);
              BaseObject::Free(object);
            }
          },
          [] { host::EventAdd(); }};
}

StepwiseEdit DuplicateSelected(BaseDocument& doc) {
  // Shared by the steps and the end of the edit; ended with them, it destroys copies that did not
  // get into the scene.
  const auto work = std::make_shared<Duplication>(doc);
  if (work->originals.empty()) return {"Duplicate", 0, {}, {}};
  return {"Duplicate", 3 * work->originals.size(), [work](std::size_t i) { work->Step(i); },
          [&doc, work] { SelectOnly(doc, work->made); }};
}

LONG SwitchOf(const BaseObject& object, Switch which) {
  switch (which) {
    case Switch::kEditor:
      return object.GetEditorMode();
    case Switch::kRender:
      return object.GetRenderMode();
    default:
      return object.GetDeformMode() ? 1 : 0;
  }
}

std::string SwitchStep(Switch which) {
  return which == Switch::kGenerator ? "Generator" : "Visibility";
}

void ChangeSwitch(BaseDocument& doc, const std::vector<BaseObject*>& objects, Switch which,
                  LONG value) {
  for (BaseObject* object : objects) {
    if (SwitchOf(*object, which) == value) continue;
    doc.AddUndo(host::UNDO_CHANGE, object);
    Set(*object, which, value);
  }
}

StepwiseEdit SetSwitch(BaseDocument& doc, std::vector<BaseObject*> objects, Switch which,
                       LONG value) {
  const std::size_t steps = objects.size();
  return {SwitchStep(which), steps,
          [&doc, objects = std::move(objects), which, value](std::size_t i) {
            ChangeSwitch(doc, {objects[i]}, which, value);
          },
          [] { host::EventAdd(); }};
}

}  // namespace engine
