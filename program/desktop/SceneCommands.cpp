#include "program/desktop/SceneCommands.h"

#include "host/Application.h"
#include "program/desktop/FreeNames.h"
#include "program/desktop/LongEdit.h"

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

void DeleteSelected(BaseDocument& doc) {
  const std::vector<BaseTag*> tags = SelectedTags(doc);
  const std::vector<BaseObject*> objects = TopmostSelected(doc);
  LongEdit edit(doc, "Delete", tags.size() + objects.size());
  for (BaseTag* tag : tags) {
    if (!edit.Step()) return;
    doc.AddUndo(host::UNDO_DELETE, tag);
    BaseTag::Free(tag);
  }
  for (BaseObject* object : objects) {
    if (!edit.Step()) return;
    doc.AddUndo(host::UNDO_DELETE, object);
    BaseObject::Free(object);
  }
  host::EventAdd();
}

void DuplicateSelected(BaseDocument& doc) {
  const std::vector<BaseObject*> originals = TopmostSelected(doc);
  if (originals.empty()) return;
  LongEdit edit(doc, "Duplicate", 2 * originals.size());
  const auto goOn = [&](double done) { return edit.Reach(done, originals.size()); };
  std::vector<BaseList2D*> copies =
      engine::CopyTogether({originals.begin(), originals.end()}, goOn);
  if (copies.empty()) return;
  FreeNames names(doc.GetFirstObject());
  std::vector<BaseObject*> made;
  for (std::size_t i = 0; i < copies.size(); ++i) {
    if (!edit.Step()) {
      for (; i < copies.size(); ++i) engine::DestroyNode(copies[i]);
      return;
    }
    BaseObject* copy = made.emplace_back(engine::AsObject(copies[i]));
    Deselect(*copy);
    names.Give(*copy);
    doc.InsertObject(copy, originals[i]->GetUp(), originals[i]);
    doc.AddUndo(host::UNDO_NEW, copy);
  }
  SelectOnly(doc, made);
}

bool AssignMaterial(BaseDocument& doc, engine::NodeId material,
                    const std::vector<BaseObject*>& objects) {
  host::BaseMaterial* found = engine::AsMaterial(engine::FindNode(&doc, material));
  if (!found) return false;
  LongEdit edit(doc, "Assign Material", objects.size());
  for (BaseObject* object : objects) {
    if (!edit.Step()) return false;
    Assign(doc, *object, *found);
  }
  host::EventAdd();
  return true;
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

void SetSwitch(BaseDocument& doc, const std::vector<BaseObject*>& objects, Switch which,
               LONG value) {
  LongEdit edit(doc, SwitchStep(which), objects.size());
  for (BaseObject* object : objects) {
    if (!edit.Step()) return;
    ChangeSwitch(doc, {object}, which, value);
  }
  host::EventAdd();
}

}  // namespace desktop
