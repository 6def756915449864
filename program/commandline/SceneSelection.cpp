#include "program/commandline/SceneSelection.h"

#include <algorithm>
#include <set>

#include "engine/scene/TreeWalk.h"

namespace commandline {

using host::BaseObject;
using host::BaseTag;
using host::LayerObject;

namespace {

using Objects = std::vector<BaseObject*>;
using Tags = std::vector<BaseTag*>;

int Refuse(Session& session, const std::string& why) {
  session.GetProgram().terminal.Error(why);
  return kUsage;
}

int NothingSelected(Session& session, const std::string& what) {
  return Refuse(session, "No " + what + " is selected in this scene. Name those that are meant.");
}

// A name in any case, or a number.
bool IsOfType(const BaseTag& tag, const std::string& type) {
  const std::string name = tag.GetTypeName().ToUtf8();
  const bool named = std::equal(
      name.begin(), name.end(), type.begin(), type.end(),
      [](unsigned char a, unsigned char b) { return std::tolower(a) == std::tolower(b); });
  return named || std::to_string(tag.GetType()) == type;
}

// For the message, so that a person sees what he could have typed.
std::string TypesOn(const Objects& objects) {
  std::set<std::string> types;
  for (const BaseObject* object : objects) {
    for (const BaseTag* tag = object->GetFirstTag(); tag; tag = tag->GetNext()) {
      types.insert(tag->GetTypeName().ToUtf8() + " (" + std::to_string(tag->GetType()) + ")");
    }
  }
  std::string text;
  for (const std::string& type : types) text += (text.empty() ? "" : ", ") + type;
  return text.empty() ? "none" : text;
}

Tags TagsOfType(const Objects& objects, const std::string& type) {
  Tags tags;
  for (const BaseObject* object : objects) {
    for (BaseTag* tag = object->GetFirstTag(); tag; tag = tag->GetNext()) {
      if (type.empty() || IsOfType(*tag, type)) tags.push_back(tag);
    }
  }
  return tags;
}

std::size_t SelectedLayers(const host::BaseDocument& doc) {
  std::size_t count = 0;
  for (const LayerObject* layer = FirstLayerOf(doc); layer; layer = engine::NextInTree(layer)) {
    count += layer->GetBit(host::BIT_ACTIVE) ? 1 : 0;
  }
  return count;
}

}  // namespace

// All or none: the first name that means nothing is refused.
int FindAllObjects(Session& session, const std::vector<std::string>& typed, Objects& found) {
  for (const std::string& pattern : typed) {
    const auto some = FindObjects(session.Document(), pattern);
    if (!some) return Refuse(session, some.Message());
    found.insert(found.end(), some.Value().begin(), some.Value().end());
  }
  return kDone;
}

// Nothing typed leaves the selection of the scene, as at the desktop. What is counted are the
// selected ones as the plug-in will see them.
int SelectObjects(Session& session, const std::vector<std::string>& typed, std::string& selected) {
  host::BaseDocument& doc = session.Document();
  Objects objects;
  if (const int status = FindAllObjects(session, typed, objects); status != kDone) return status;
  if (!typed.empty()) doc.SetActiveObject(nullptr);
  for (BaseObject* object : objects) doc.SetActiveObject(object, host::SELECTION_ADD);
  const host::AutoAlloc<host::AtomArray> selection;
  doc.GetActiveObjects(*selection, host::GETACTIVEOBJECTFLAGS_CHILDREN);
  selected = Counted(static_cast<std::size_t>(selection->GetCount()), "object");
  return selection->GetCount() > 0 ? kDone : NothingSelected(session, "object");
}

// Each type must be there on one of the objects at least, or it was mistyped.
int SelectTags(Session& session, const std::vector<std::string>& typed,
               const std::vector<std::string>& types, std::string& selected) {
  host::BaseDocument& doc = session.Document();
  Objects objects;
  if (const int status = FindAllObjects(session, typed, objects); status != kDone) return status;
  Tags tags;
  for (const std::string& type : types.empty() ? std::vector<std::string>{""} : types) {
    const Tags some = TagsOfType(objects, type);
    if (some.empty() && !typed.empty()) {
      return Refuse(session, (type.empty() ? "These objects have no tags."
                                           : "None of these objects has a tag \"" + type + "\".") +
                                 " Tags there are: " + TypesOn(objects) + ".");
    }
    tags.insert(tags.end(), some.begin(), some.end());
  }
  if (!typed.empty()) doc.SetActiveTag(nullptr);
  for (BaseTag* tag : tags) doc.SetActiveTag(tag, host::SELECTION_ADD);
  const host::AutoAlloc<host::AtomArray> selection;
  doc.GetActiveTags(*selection);
  selected = Counted(static_cast<std::size_t>(selection->GetCount()), "tag");
  return selection->GetCount() > 0 ? kDone : NothingSelected(session, "tag");
}

int SelectLayers(Session& session, const std::vector<std::string>& typed, std::string& selected) {
  const host::BaseDocument& doc = session.Document();
  std::vector<LayerObject*> layers;
  for (const std::string& pattern : typed) {
    const auto some = FindLayers(doc, pattern);
    if (!some) return Refuse(session, some.Message());
    layers.insert(layers.end(), some.Value().begin(), some.Value().end());
  }
  for (LayerObject* layer = typed.empty() ? nullptr : FirstLayerOf(doc); layer;
       layer = engine::NextInTree(layer)) {
    layer->DelBit(host::BIT_ACTIVE);
  }
  for (LayerObject* layer : layers) layer->SetBit(host::BIT_ACTIVE);
  selected = Counted(SelectedLayers(doc), "layer");
  return SelectedLayers(doc) > 0 ? kDone : NothingSelected(session, "layer");
}

int SelectCamera(Session& session, const std::string& typed, std::string& selected) {
  const auto camera = FindObject(session.Document(), typed);
  if (!camera) return Refuse(session, camera.Message());
  if (camera.Value()->GetType() != host::Ocamera)
    return Refuse(session, "\"" + typed + "\" is no camera.");
  session.Document().SetActiveObject(camera.Value());
  selected = "the camera " + PathOf(*camera.Value());
  return kDone;
}

}  // namespace commandline
