#include "program/desktop/SceneCommands.h"

#include "engine/scene/JointCopy.h"
#include "host/Application.h"
#include "program/desktop/FreeNames.h"

namespace desktop {

using host::BaseDocument;
using host::BaseList2D;
using host::BaseObject;
using host::BaseTag;
using host::LONG;

namespace {

bool IsSelected(const BaseList2D& node) { return node.GetBit(host::BIT_ACTIVE); }

std::vector<BaseTag*> SelectedTags(const BaseDocument& doc) {
  host::AtomArray tags;
  doc.GetActiveTags(tags);
  std::vector<BaseTag*> selected;
  for (LONG i = 0; i < tags.GetCount(); ++i) selected.push_back(engine::AsTag(tags.GetIndex(i)));
  return selected;
}

void Deselect(BaseList2D& root) {
  for (host::GeListNode* node = &root; node; node = engine::NextInside(*node, root)) {
    static_cast<BaseList2D*>(node)->DelBit(host::BIT_ACTIVE);
  }
}

void Assign(BaseDocument& doc, BaseObject& object, host::BaseMaterial& material) {
  auto* tag = engine::AsTextureTag(object.GetTag(host::Ttexture));
  if (tag && tag->GetMaterial() == &material) return;
  if (tag) {
    doc.AddUndo(host::UNDO_CHANGE, tag);
  } else {
    tag = engine::AsTextureTag(object.MakeTag(host::Ttexture));
    doc.AddUndo(host::UNDO_NEW, tag);
  }
  tag->SetMaterial(&material);
}

// Copies all, then turns the links of each copy to the other copies, then puts them in.
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
    BaseObject* copy = made.emplace_back(engine::AsObject(copies.Take(i)));
    Deselect(*copy);
    names.Give(*copy);
    doc.InsertObject(copy, originals[i]->GetUp(), originals[i]);
    doc.AddUndo(host::UNDO_NEW, copy);
  }

  BaseDocument& doc;
  std::vector<BaseObject*> originals;
  engine::JointCopy copies;
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

}  // namespace

std::vector<BaseObject*> SelectedObjects(const BaseDocument& doc) {
  std::vector<BaseObject*> selected;
  for (BaseObject* object = doc.GetFirstObject(); object; object = engine::NextInTree(object)) {
    if (IsSelected(*object)) selected.push_back(object);
  }
  return selected;
}

std::vector<BaseObject*> TopmostSelected(const BaseDocument& doc) {
  std::vector<BaseObject*> topmost;
  BaseObject* object = doc.GetFirstObject();
  while (object) {
    if (!IsSelected(*object)) {
      object = engine::NextInTree(object);
      continue;
    }
    topmost.push_back(object);
    while (object && !object->GetNext()) object = object->GetUp();
    if (object) object = object->GetNext();
  }
  return topmost;
}

std::vector<BaseList2D*> Topmost(const std::vector<BaseList2D*>& nodes) {
  const std::unordered_set<const host::GeListNode*> given(nodes.begin(), nodes.end());
  // Of some others: whether they are below one that is given
  std::unordered_map<const host::GeListNode*, bool> known;
  std::vector<BaseList2D*> topmost;
  for (BaseList2D* node : nodes) {
    std::vector<const host::GeListNode*> way;
    const host::GeListNode* above = node->GetUp();
    for (; above && !given.contains(above) && !known.contains(above); above = above->GetUp())
      way.push_back(above);
    const bool isBelow = above && (given.contains(above) || known.at(above));
    for (const host::GeListNode* passed : way) known.emplace(passed, isBelow);
    if (!isBelow) topmost.push_back(node);
  }
  return topmost;
}

void SelectAll(BaseDocument& doc) {
  for (BaseObject* object = doc.GetFirstObject(); object; object = engine::NextInTree(object)) {
    if (!IsSelected(*object)) doc.SetActiveObject(object, host::SELECTION_ADD);
  }
  host::EventAdd();
}

void SelectNone(BaseDocument& doc) {
  doc.SetActiveObject(nullptr);
  doc.SetActiveTag(nullptr);
  host::EventAdd();
}

void SelectOnly(BaseDocument& doc, const std::vector<BaseObject*>& objects) {
  SelectNone(doc);
  for (BaseObject* object : objects) doc.SetActiveObject(object, host::SELECTION_ADD);
}

void SelectTag(BaseTag& tag, bool add) {
  BaseDocument* doc = tag.GetDocument();
  if (!doc) return;
  if (!add) SelectNone(*doc);
  doc->SetActiveTag(&tag, add && IsSelected(tag) ? host::SELECTION_SUB : host::SELECTION_ADD);
  host::EventAdd();
}

engine::StepwiseEdit DeleteSelected(BaseDocument& doc) {
  std::vector<BaseTag*> tags = SelectedTags(doc);
  std::vector<BaseObject*> objects = TopmostSelected(doc);
  const std::size_t steps = tags.size() + objects.size();
  return {"Delete", steps,
          [&doc, tags = std::move(tags), objects = std::move(objects)](std::size_t i) {
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

engine::StepwiseEdit DuplicateSelected(BaseDocument& doc) {
  const auto work = std::make_shared<Duplication>(doc);
  if (work->originals.empty()) return {"Duplicate", 0, {}, {}};
  return {"Duplicate", 3 * work->originals.size(), [work](std::size_t i) { work->Step(i); },
          [&doc, work] { SelectOnly(doc, work->made); }};
}

engine::StepwiseEdit AssignMaterial(host::BaseMaterial& material,
                                    std::vector<BaseObject*> objects) {
  const std::size_t steps = objects.size();
  return {"Assign Material", steps,
          [&material, objects = std::move(objects)](std::size_t i) {
            Assign(*material.GetDocument(), *objects[i], material);
          },
          [] { host::EventAdd(); }};
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

engine::StepwiseEdit SetSwitch(BaseDocument& doc, std::vector<BaseObject*> objects, Switch which,
                               LONG value) {
  const std::size_t steps = objects.size();
  return {SwitchStep(which), steps,
          [&doc, objects = std::move(objects), which, value](std::size_t i) {
            ChangeSwitch(doc, {objects[i]}, which, value);
          },
          [] { host::EventAdd(); }};
}

}  // namespace desktop
