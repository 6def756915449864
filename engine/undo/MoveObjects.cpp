#include "engine/undo/MoveObjects.h"

#include <unordered_map>
#include <unordered_set>

#include "engine/scene/Frames.h"
#include "engine/undo/Undo.h"
#include "engine/undo/UndoHistory.h"

namespace engine {

using host::BaseDocument;
using host::BaseObject;
using host::Matrix;

namespace {

using Moved = std::unordered_set<const BaseObject*>;

// Frames in the world, each reckoned once however many objects ask for it.
class WorldFrames {
 public:
  const Matrix& Of(const BaseObject* object) {
    std::vector<const BaseObject*> way;
    for (; object && frames_.count(object) == 0; object = object->GetUp()) way.push_back(object);
    const Matrix* frame = object ? &frames_.at(object) : &identity_;
    for (auto at = way.rbegin(); at != way.rend(); ++at) {
      frame = &frames_.emplace(*at, Combined(*frame, (*at)->GetMl())).first->second;
    }
    return *frame;
  }

 private:
  const Matrix identity_;
  std::unordered_map<const BaseObject*, Matrix> frames_;
};

bool MayMove(const BaseDocument& doc, const Moved& moved, const BaseObject* parent) {
  if (moved.empty() || (parent && parent->GetDocument() != &doc)) return false;
  for (const BaseObject* object : moved) {
    if (!object || object->GetDocument() != &doc) return false;
  }
  while (parent && moved.count(parent) == 0) parent = parent->GetUp();
  return !parent;
}

BaseObject* StayingPred(const Moved& moved, const BaseObject* parent, BaseObject* pred) {
  if (pred && pred->GetUp() != parent) return nullptr;
  while (pred && moved.count(pred) == 1) pred = pred->GetPred();
  return pred;
}

}  // namespace

bool MoveObjects(BaseDocument& doc, const std::vector<BaseObject*>& objects, BaseObject* parent, BaseObject* pred) {
  const Moved moved(objects.begin(), objects.end());
  if (moved.size() != objects.size() || !MayMove(doc, moved, parent)) return false;
  pred = StayingPred(moved, parent, pred);
  WorldFrames frames;
  std::vector<Matrix> worlds;
  for (const BaseObject* object : objects) worlds.push_back(frames.Of(object));
  const Matrix above = frames.Of(parent);
  const UndoScope scope(doc, "Move");
  UndoHistory& history = UndoHistory::Of(doc);
  BaseObject* const active = doc.GetActiveObject();
  for (std::size_t i = 0; i < objects.size(); ++i) {
    BaseObject& object = *objects[i];
    const bool staysInside = object.GetUp() == parent;
    history.Move(object, parent ? static_cast<host::BaseList2D&>(*parent) : doc, pred);
    pred = &object;
    const auto inside = staysInside ? std::nullopt : FrameInside(above, worlds[i]);
    if (!inside || *inside == object.GetMl()) continue;
    doc.AddUndo(host::UNDO_CHANGE, &object);
    object.SetMl(*inside);
  }
  doc.SetActiveObject(active, host::SELECTION_ADD);
  return true;
}

}  // namespace engine
